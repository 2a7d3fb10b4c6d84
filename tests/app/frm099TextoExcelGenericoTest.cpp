// The workbook importer on the importer frame: its controls with the
// thirteenth month, the workbook pickers, one file for the year beside the
// closing month, and a whole run from the form through its layout form.

#include "app/Escenario.h"
#include "app/LibroXls.h"
#include "app/frm099ParametrosExcelGenerico.h"
#include "app/frm099TextoExcelGenerico.h"
#include "layouts/Configuraciones.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm099ParametrosExcelGenerico;
using velmorant::app::frm099TextoExcelGenerico;

namespace {

std::string Ruta(QLineEdit* caja) { return caja->text().toStdString(); }

void Escribe(QLineEdit* caja, const QString& texto) {
    caja->clear();
    QTest::keyClicks(caja, texto);
}

}  // namespace

class frm099TextoExcelGenericoTest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        std::filesystem::remove(RutaBaseConfiguraciones());
        for (const char* clave : {"ImpCatalogo", "ImpSI", "ImpSFAA", "DirPolizas"})
            GuardaAjuste("VELMORANT", "Configuracion", clave, "");
    }

    void muestraElMarcoConElMes13() {
        Escenario e;
        frm099TextoExcelGenerico f(e.sesion);
        f.show();
        QCOMPARE(f.windowTitle(), QString("Excel Genérico por Columnas"));
        QVERIFY(f.tboBase);
        QCOMPARE(f.tboBase->count(), 2);
        QVERIFY(f.chkMes[12]);
        QCOMPARE(f.chkMes[12]->objectName(), QString("chkMes13"));
        QCOMPARE(f.chkMes[12]->text(), QString("Mes 13"));
        QCOMPARE(f.chkUnArchivo->text(), QString("Un solo archivo"));
        // Every picker asks for workbooks.
        const std::string cierre = e.Archivo("cliente/cierre.xlsx");
        e.ui.archivos = {cierre};
        QTest::mouseClick(f.cmdAbrirMes[12], Qt::LeftButton);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del Archivo de Pólizas del mes de Mes 13"));
        QCOMPARE(e.ui.filtrosPedidos.back(), std::string("*.xls;*.xlsx|*.xls;*.xlsx"));
        QCOMPARE(Ruta(f.eloPathMes[12]), cierre);
        QVERIFY(f.chkMes[12]->isChecked());
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QCOMPARE(e.ui.filtrosPedidos.back(), std::string("*.xls;*.xlsx|*.xls;*.xlsx"));
        GuardaCaptura(&f, "importador_excel");

        // One file for the year: February to December give way, the
        // closing month stays beside January's row.
        const std::string anio = e.Archivo("cliente/anio.xls"), marzo = e.Archivo("cliente/marzo.xls");
        e.ui.archivos = {marzo};
        QTest::mouseClick(f.cmdAbrirMes[2], Qt::LeftButton);
        QCOMPARE(Ruta(f.eloPathMes[2]), marzo);
        f.chkUnArchivo->click();
        QVERIFY(!f.chkMes[1]->isVisible());
        QVERIFY(!f.cmdAbrirMes[11]->isVisible());
        QVERIFY(f.chkMes[12]->isVisible());
        QVERIFY(f.cmdAbrirMes[12]->isVisible());
        QCOMPARE(Ruta(f.eloPathMes[2]), std::string());
        e.ui.archivos = {anio};
        QTest::mouseClick(f.cmdAbrirMes[0], Qt::LeftButton);
        auto a = f.Archivos();
        QCOMPARE(a.polizas, anio);
        QCOMPARE(a.meses[0], std::string());
        QCOMPARE(a.meses[12], cierre);
        GuardaCaptura(&f, "importador_excel_un_archivo");
    }

    void unaImportacionCompletaConElCierre() {
        Escenario e;
        const std::string cat = e.dir.texto() + "cliente/catalogo.xls", ene = e.dir.texto() + "cliente/enero.xls",
                          cierre = e.dir.texto() + "cliente/cierre.xls";
        QVERIFY(EscribeXls(cat, "[['Cuenta', 'Nivel', 'Descripcion', 'Saldo'],"
                                " [1101, 1, 'Caja y bancos', 0], [110101, 2, 'Caja chica', 1000], [110102, 2, 'Bancos', 0]]"));
        QVERIFY(EscribeXls(ene, "[['Poliza', 'Cuenta', 'Fecha', 'x', 'Tipo', 'Concepto', 'Mov', 'Importe'],"
                                " [1, 110102, fecha(2023, 1, 15, 17, 30), None, 'D', 'Deposito', 1, 250.5],"
                                " [1, 110101, fecha(2023, 1, 15, 17, 30), None, 'D', 'Deposito', 2, 250.5]]"));
        QVERIFY(EscribeXls(cierre, "[['Poliza', 'Cuenta', 'Fecha', 'x', 'Tipo', 'Concepto', 'Mov', 'Importe'],"
                                   " ['C1', 110101, None, None, 'C', 'Cierre', 1, 10],"
                                   " ['C1', 110102, None, None, 'C', 'Cierre', 2, 10]]"));
        frm099TextoExcelGenerico f(e.sesion);
        f.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f));
        QCoreApplication::processEvents();  // the form's load
        QCOMPARE(f.Configuracion(), std::string("CONFIGURACION PREDETERMINADA EXCEL GENERICO"));
        e.ui.archivos = {cat, ene, cierre};
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QTest::mouseClick(f.cmdAbrirMes[0], Qt::LeftButton);
        QTest::mouseClick(f.cmdAbrirMes[12], Qt::LeftButton);
        e.ui.decisiones = {DecisionInconsistencias::Continuar, DecisionInconsistencias::Continuar};
        AlAbrirseModal(
            [](QDialog* d) {
                auto* p = static_cast<frm099ParametrosExcelGenerico*>(d);
                p->tboConfigArchivos->setCurrentIndex(1);
                Escribe(p->txtTipoPIni, "5");
                p->cboConfiguraciones->lineEdit()->clear();
                QTest::keyClicks(p->cboConfiguraciones->lineEdit(), "LIBRO ACME");
                GuardaCaptura(p, "parametros_excel_polizas");
                QTest::mouseClick(p->cmdAceptar, Qt::LeftButton);
            },
            "frm099ParametrosExcelGenerico");
        QTest::mouseClick(f.cmdImportar, Qt::LeftButton);
        QStringList mensajes = Textos(e.ui);
        QVERIFY2(!mensajes.isEmpty() && mensajes.last().contains("finalizó con éxito"),
                 qPrintable(mensajes.join(" | ")));
        QCOMPARE(f.Configuracion(), std::string("LIBRO ACME"));
        QVERIFY(f.lectura().Titulos);
        BaseDatos& db = *e.sesion.DbEmpresa;
        QCOMPARE(db.escalar("SELECT COUNT(*) FROM Cuentas").entero(), 2);  // the title flag took "Caja y bancos"
        QCOMPARE(db.escalar("SELECT COUNT(*) FROM Polizas").entero(), 2);
        QCOMPARE(db.escalar("SELECT Fecha FROM Polizas WHERE Poliza_Mes13").texto(), std::string("2023-12-31"));
        QCOMPARE(db.escalar("SELECT Fecha FROM Polizas WHERE Poliza='1'").texto(), std::string("2023-01-15"));
        QCOMPARE(db.escalar("SELECT C13 FROM Balanzas WHERE Cuenta='110101'").texto(), std::string("100000"));
        QCOMPARE(db.escalar("SELECT A13 FROM Balanzas WHERE Cuenta='110102'").texto(), std::string("100000"));
        QCOMPARE(e.sesion.DbEmpresas->escalar("SELECT IdSistema FROM Empresas WHERE IdEmpresa=?",
                                              e.sesion.IdEmpresaActual).entero(), 102);
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm099TextoExcelGenericoTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm099TextoExcelGenericoTest.moc"
