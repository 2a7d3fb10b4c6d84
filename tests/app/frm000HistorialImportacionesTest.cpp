// The history window: the runs with the selected one whole, its constancia
// (and a picture of it as a PDF page), the undo after a confirmation, and
// the button of the importer frame that opens it.

#include <QProcess>

#include "app/Escenario.h"
#include "app/MarcoImportador.h"
#include "app/frm000HistorialImportaciones.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "pipeline/ConstanciaImportacion.h"
#include "pipeline/Importacion.h"
#include "pipeline/Reportes.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm000HistorialImportaciones;

namespace {

// The company with two imports of the delimited layout: January and
// February, then February again with one voucher more.
struct EscenarioHistorial : Escenario {
    ArchivosImportacion archivos;

    EscenarioHistorial() {
        archivos.catalogo = Archivo("cliente/catalogo.txt",
                                    "Cuenta|Descripcion|Naturaleza|Saldo\n1101-00-00|Caja|D|500\n"
                                    "1101-01-00|Caja general|D|500\n1101-01-01|Caja matriz|D|500\n"
                                    "4100-00-00|Ventas|A|-500\n4100-01-00|Ventas nacionales|A|-500\n"
                                    "4100-01-01|Mostrador|A|-500\n");
        mes(1, 2);
        mes(2, 2);
        importa({});
        mes(2, 3);
        importa({DecisionInconsistencias::Continuar});
    }
    void mes(int m, int polizas) {
        std::string t = "Poliza|Tipo|Dia|Mes|Anio|Cuenta|Ref|Concepto|Cargo|Abono\n";
        for (int p = 1; p <= polizas; ++p) {
            std::string f = std::to_string(p) + "|" + std::to_string(m) + "|2023";
            t += std::to_string(p) + "|Dr|" + f + "|1101-01-01|cobro|Venta|1500.25|0\n";
            t += std::to_string(p) + "|Dr|" + f + "|4100-01-01|venta|Venta|0|1500.25\n";
        }
        archivos.meses[static_cast<size_t>(m - 1)] = Archivo("cliente/pol" + std::to_string(m) + ".txt", t);
    }
    void importa(std::deque<DecisionInconsistencias> decisiones) {
        LecturaDelimitada l;
        l.separador = "|";
        auto& c = l.config;
        c.PIniCuenta = 1, c.PIniDescripcion = 2, c.PIniNaturaleza = 3, c.PIniSdoIni = 4;
        c.PIniNumPol = 1, c.PIniTipo = 2, c.PIniDia = 3, c.PIniMes = 4, c.PIniAnio = 5, c.PIniCtaPol = 6;
        c.PIniRef = 7, c.PIniConcept = 8, c.PIniCargo = 9, c.PIniAbono = 10;
        ImportadorTextoDelimitado imp(l, false);
        ui.decisiones = std::move(decisiones);
        QCOMPARE(EjecutaImportacion(sesion, imp, archivos), ResultadoImportacion::Terminada);
    }
    long long polizas() { return sesion.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas").entero(); }
};

QString Celda(const frm000HistorialImportaciones& f, int fila, int columna) {
    return f.tdbgHistorial->item(fila, columna)->text();
}

}  // namespace

class frm000HistorialImportacionesTest : public QObject {
    Q_OBJECT
private slots:
    void muestraLasCorridasYLaConstancia() {
        EscenarioHistorial e;
        frm000HistorialImportaciones f(e.sesion);
        f.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f));
        QCOMPARE(f.windowTitle(), QString("Historial de importaciones - Comercializadora Acme, S.A. de C.V. (2023)"));
        QCOMPARE(f.tdbgHistorial->rowCount(), 2);
        QCOMPARE(Celda(f, 0, 0), QString("1"));
        QCOMPARE(Celda(f, 1, 3), QString("Importación"));
        QCOMPARE(Celda(f, 1, 5), QString("5"));
        QCOMPARE(Celda(f, 1, 6), QString("Continuar"));
        QCOMPARE(Celda(f, 1, 7), QString("Confirmada"));
        // The newest run is selected and shown whole, hashes and totals.
        QCOMPARE(f.Seleccionado()->id, 2L);
        const QString detalle = f.txtDetalle->toPlainText();
        QVERIFY(detalle.contains("Constancia de importación número 2"));
        QVERIFY(detalle.contains(QString::fromStdString(Sha256Archivo(e.archivos.catalogo))));
        QVERIFY2(detalle.contains("$4,500.75") && detalle.contains("$7,501.25"), qPrintable(detalle));
        QVERIFY(f.cmdDeshacer->isEnabled());
        GuardaCaptura(&f, "historial");

        // The constancia goes to the report viewer; as a PDF, its first page
        // is pictured beside the form's.
        f.tdbgHistorial->selectRow(0);
        QCOMPARE(f.Seleccionado()->id, 1L);
        QTest::mouseClick(f.cmdConstancia, Qt::LeftButton);
        const QString carpeta = QCoreApplication::applicationDirPath() + "/capturas";
        const std::string pdf = (carpeta + "/constancia.pdf").toStdString();
        GuardaReporte(ConstanciaImportacion(*f.Seleccionado(), e.sesion.FechaSesion), pdf);
        QProcess pdftoppm;
        pdftoppm.start("pdftoppm", {"-png", "-r", "90", "-singlefile", QString::fromStdString(pdf),
                                    carpeta + "/constancia"});
        QVERIFY(pdftoppm.waitForFinished(30000));
        QCOMPARE(pdftoppm.exitCode(), 0);
        QVERIFY(QFile::exists(carpeta + "/constancia.png"));
    }

    void deshaceLaUltimaImportacionSoloTrasConfirmar() {
        EscenarioHistorial e;
        QCOMPARE(e.polizas(), 5LL);
        frm000HistorialImportaciones f(e.sesion);
        f.show();
        e.ui.respuestas = {false};
        QTest::mouseClick(f.cmdDeshacer, Qt::LeftButton);
        QCOMPARE(e.polizas(), 5LL);
        QCOMPARE(f.tdbgHistorial->rowCount(), 2);

        e.ui.respuestas = {true};
        QTest::mouseClick(f.cmdDeshacer, Qt::LeftButton);
        QCOMPARE(e.polizas(), 4LL);
        QCOMPARE(f.tdbgHistorial->rowCount(), 3);
        QCOMPARE(Celda(f, 2, 3), QString("Deshacer"));
        QCOMPARE(Celda(f, 2, 7), QString("Restaurada de la importación 2"));
        QCOMPARE(Celda(f, 1, 7), QString("Confirmada (deshecha por 3)"));
        QVERIFY(Textos(e.ui).last().startsWith("Se deshizo la importación 2"));

        // Then the first import, and nothing more.
        e.ui.respuestas = {true};
        QTest::mouseClick(f.cmdDeshacer, Qt::LeftButton);
        QCOMPARE(e.polizas(), 0LL);
        QVERIFY(!f.cmdDeshacer->isEnabled());
    }

    void elMarcoDelImportadorAbreElHistorial() {
        EscenarioHistorial e;
        app::DescripcionMarco d;
        d.idSistema = 82;
        d.titulo = "Importador de prueba";
        app::MarcoImportador marco(e.sesion, d);
        marco.show();
        QCOMPARE(marco.cmdHistorial->text(), QString("&Historial..."));
        QString abierta;
        AlAbrirseModal([&abierta](QDialog* modal) {
            abierta = modal->objectName();
            modal->accept();
        });
        QTest::mouseClick(marco.cmdHistorial, Qt::LeftButton);
        QCOMPARE(abierta, QString("frm000HistorialImportaciones"));
        // Not while a run works.
        marco.AlternaFormulario();
        QVERIFY(!marco.cmdHistorial->isEnabled());
        marco.AlternaFormulario();
        QVERIFY(marco.cmdHistorial->isEnabled());
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm000HistorialImportacionesTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm000HistorialImportacionesTest.moc"
