// The layout form of the workbook importer: the predetermined layout of
// link 102, the sheets previewed by their columns, a new layout saved under
// its link, and a file that is no workbook.

#include "app/Escenario.h"
#include "app/LibroXls.h"
#include "app/frm099ParametrosExcelGenerico.h"
#include "layouts/Configuraciones.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::EntradaParametros;
using velmorant::app::frm099ParametrosExcelGenerico;

namespace {

QStringList Columnas(QTableView* vista) {
    QStringList r;
    for (int i = 0; i < vista->model()->columnCount(); ++i)
        r << vista->model()->headerData(i, Qt::Horizontal).toString();
    return r;
}

struct EscenarioLibro : Escenario {
    EscenarioLibro() {
        sesion.IdSistemaElegido = 102;
        catalogo = dir.texto() + "cliente/catalogo.xls";
        enero = dir.texto() + "cliente/enero.xls";
        EscribeXls(catalogo, "[['Cuenta', 'Nivel', 'Descripcion', 'Saldo'], [1101, 1, 'Caja y bancos', 0],"
                             " [], [110101, 2, 'Caja chica', 1000.5]]");
        EscribeXls(enero, "[['Poliza', 'Cuenta', 'Fecha', 'x', 'Tipo', 'Concepto', 'Mov', 'Importe', 'Ref'],"
                          " [1, 110102, fecha(2023, 1, 15, 9, 5), None, 'D', 'Deposito', 1, 250, 'F1']]");
    }
    EntradaParametros Entrada() const {
        EntradaParametros e;
        e.catalogo = catalogo;
        e.polizas = enero;
        return e;
    }
    std::string catalogo, enero;
};

}  // namespace

class frm099ParametrosExcelGenericoTest : public QObject {
    Q_OBJECT
private slots:
    void init() { std::filesystem::remove(RutaBaseConfiguraciones()); }

    void muestraLaConfiguracionPredeterminadaYLasHojas() {
        EscenarioLibro e;
        frm099ParametrosExcelGenerico f(e.sesion, e.Entrada());
        f.show();
        QCOMPARE(f.objectName(), QString("frm099ParametrosExcelGenerico"));
        QCOMPARE(f.windowTitle(), QString("Definir Parametros"));
        QCOMPARE(f.Configuracion(), std::string("CONFIGURACION PREDETERMINADA EXCEL GENERICO"));
        QCOMPARE(f.cboConfiguraciones->count(), 1);
        QCOMPARE(f.txtCtaPIni->text(), QString("1"));
        QCOMPARE(f.txtImportePIni->text(), QString("8"));
        QVERIFY(f.Titulos());
        // No text-file suggestions for a workbook.
        QVERIFY(!f.lblSugerencias->isVisible());
        QVERIFY(!f.cmdSugerir->isVisible());
        // The header row names the columns and is not shown; blank rows are.
        QCOMPARE(Columnas(f.tdbgCuentas), QStringList({"Columna 1", "Columna 2", "Columna 3", "Columna 4"}));
        QCOMPARE(f.tdbgCuentas->model()->rowCount(), 3);
        QCOMPARE(f.tdbgCuentas->model()->index(0, 0).data().toString(), QString("1101"));
        QCOMPARE(f.tdbgCuentas->model()->index(1, 2).data().toString(), QString());
        QCOMPARE(f.tdbgCuentas->model()->index(2, 3).data().toString(), QString("1000.5"));
        QCOMPARE(f.tdbgPolizas->model()->columnCount(), 9);
        QCOMPARE(f.tdbgPolizas->model()->index(0, 2).data().toString(), QString("15/01/2023 09:05:00"));
        GuardaCaptura(&f, "parametros_excel");
    }

    void unaConfiguracionNuevaQuedaEnElEnlace102() {
        EscenarioLibro e;
        frm099ParametrosExcelGenerico f(e.sesion, e.Entrada());
        f.show();
        f.tboConfigArchivos->setCurrentIndex(1);
        f.txtTipoPIni->setText("5");
        f.cboConfiguraciones->lineEdit()->clear();
        QTest::keyClicks(f.cboConfiguraciones->lineEdit(), "hoja acme");
        QTest::mouseClick(f.cmdAceptar, Qt::LeftButton);
        QCOMPARE(f.result(), int(QDialog::Accepted));
        QCOMPARE(f.Configuracion(), std::string("HOJA ACME"));
        BaseDatos catalogo(RutaBaseConfiguraciones());
        QCOMPARE(catalogo.escalar("SELECT IdEnlace FROM Configuraciones WHERE Nombre='HOJA ACME'").entero(), 102);
        QCOMPARE(catalogo.escalar("SELECT PIniTipo FROM Configuraciones WHERE Nombre='HOJA ACME'").entero(), 5);
    }

    void unArchivoQueNoEsLibroSeDiceYSuRejillaQuedaVacia() {
        EscenarioLibro e;
        EntradaParametros entrada = e.Entrada();
        entrada.catalogo = e.Archivo("cliente/catalogo.xlsx", "Cuenta,Nivel\n1101,1\n");
        frm099ParametrosExcelGenerico f(e.sesion, entrada);
        QCOMPARE(e.ui.mensajes.size(), size_t(1));
        QVERIFY2(Textos(e.ui).first().contains("catalogo.xlsx"), qPrintable(Textos(e.ui).join(" | ")));
        QCOMPARE(f.tdbgCuentas->model()->rowCount(), 0);
        QCOMPARE(f.tdbgPolizas->model()->rowCount(), 1);
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm099ParametrosExcelGenericoTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm099ParametrosExcelGenericoTest.moc"
