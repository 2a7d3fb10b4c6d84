// The forms around the inconsistency logs, as the desktop program answers
// the run's decisions, and the report viewer they open.

#include <QGroupBox>
#include <QTextBrowser>

#include "app/Escenario.h"
#include "app/InteraccionQt.h"
#include "app/frm000MsgInconsistencias.h"
#include "app/frm000VisorReporte.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/ReportesDecisiones.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

// The desktop program's forms, with message boxes recorded instead of shown.
class InteraccionQtGuionada : public app::InteraccionQt {
public:
    bool mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) override {
        mensajes.push_back({tipo, titulo, texto});
        return false;
    }
    std::vector<MensajeMostrado> mensajes;
};

// A session whose log holds two rows and whose schedule lost one.
struct RunConInconsistencias {
    Escenario e;
    InteraccionQtGuionada ui;

    RunConInconsistencias() {
        e.sesion.interaccion = &ui;
        CreaInconsisImpTmp(e.sesion);
        AbreInconsistencias(e.sesion);
        RegistraInconsistencia(e.sesion, "Póliza nueva.", kFuentePolizas, "A", "15", "D", Fecha(2023, 3, 31), "110101");
        RegistraInconsistencia(e.sesion, "Se dió de Alta una nueva Cuenta: 110102", kFuenteCatalogo, "A", "", "",
                               std::nullopt, "110102");
        CreaInconsisImpTmpDet(e.sesion);
        BaseDatos det(RutaAlmacen(e.sesion, kInconsisImpTmpDet));
        det.ejecuta("INSERT INTO InconsisImpTmpDet (Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe) "
                    "VALUES ('7', 'E', '2023-02-28', '110101', 'Pago a proveedor', 'H', 12500000)");
    }
    ~RunConInconsistencias() { CierraInconsistencias(e.sesion); }
};

QString Informe(QDialog* visor) {
    return visor->findChild<QTextBrowser*>("txtReporte")->toPlainText();
}

}  // namespace

class frm000MsgInconsistenciasTest : public QObject {
    Q_OBJECT
private slots:
    void elFormularioYSusTextos() {
        app::frm000MsgInconsistencias f(QString::fromUtf8(kTituloMsgInconsistencias));
        QCOMPARE(f.windowTitle(), QString("Mensaje de inconsistencias"));
        QCOMPARE(f.lblMensaje->text(), QString("Se encontraron inconsistencias, ¿ Desea continuar con la importación ?"));
        QCOMPARE(f.cmdMostrar->text(), QString("&Ver Inconsistencias"));
        QCOMPARE(f.cmdContinuar->text(), QString("Con&tinuar"));
        QCOMPARE(f.cmdCancelar->text(), QString("&Cancelar"));
        ConteoInconsistencias conteo;
        conteo.nuevas = 12, conteo.cambios = 3, conteo.bajas = 1, conteo.otras = 2;
        f.MuestraConteo(conteo);
        f.show();
        GuardaCaptura(&f, "inconsistencias");

        app::frm000MsgInconsistenciasFin fin(QString::fromUtf8(kTituloMsgInconsistenciasFin));
        QCOMPARE(fin.windowTitle(), QString("Informe - Importación"));
        QCOMPARE(fin.findChild<QGroupBox*>("fraDetalle")->title(), QString("Detalle de Inconsistencias"));
        QCOMPARE(fin.lblDetalle->text(),
                 QString("Al procesar la informacióm de cédulas analíticas marcadas como revisadas,  no fue posible "
                         "mantener el trabajo realizado de algunos registros, debido a que desaparecieron dichos "
                         "registros de las pólizas importadas."));
        QCOMPARE(fin.cmdDetalle->text(), QString("Ver &Detalle de Registros"));
        QCOMPARE(fin.cmdAceptar->text(), QString("&Finalizar"));
        fin.show();
        GuardaCaptura(&fin, "inconsistencias_fin");
    }

    void continuarSigueConLaImportacion() {
        RunConInconsistencias r;
        QString conteo;
        AlAbrirseModal([&](QDialog* d) {
            conteo = d->findChild<QLabel*>("lblConteo")->text();
            QTest::mouseClick(d->findChild<QPushButton*>("cmdContinuar"), Qt::LeftButton);
        });
        QVERIFY(MuestraMsgInconsistencias(r.e.sesion));
        // The form says what it found before the user decides.
        QCOMPARE(conteo, QString("Nuevas: 2, con cambios: 0, dadas de baja: 0, otras: 0 (2 en total)."));
        QVERIFY(r.e.sesion.ContinuaImportacion);
        QVERIFY(r.ui.mensajes.empty());
        QVERIFY(!QApplication::activeModalWidget());
    }

    void verMuestraElResumenYElFormularioSigue() {
        RunConInconsistencias r;
        QString informe;
        bool formularioVisible = false;
        AlAbrirseModal([&](QDialog* d) {
            QTest::mouseClick(d->findChild<QPushButton*>("cmdMostrar"), Qt::LeftButton);
            AlAbrirseModal([&, d](QDialog* visor) {
                informe = Informe(visor);
                formularioVisible = d->isVisible();
                GuardaCaptura(visor, "reporte_resumen");
                visor->accept();
                AlAbrirseModal([](QDialog* otra) {
                    QTest::mouseClick(otra->findChild<QPushButton*>("cmdContinuar"), Qt::LeftButton);
                }, "frm000MsgInconsistencias");
            }, "frm000VisorReporte");
        }, "frm000MsgInconsistencias");
        QVERIFY(MuestraMsgInconsistencias(r.e.sesion));
        QVERIFY(formularioVisible);
        QVERIFY2(informe.contains("Póliza nueva."), qPrintable(informe));
        QVERIFY(informe.contains("Se dió de Alta una nueva Cuenta: 110102"));
        QVERIFY(informe.contains("Comercializadora Acme, S.A. de C.V."));
        QVERIFY(r.ui.mensajes.empty());
    }

    void cancelarTerminaElPrograma() {
        RunConInconsistencias r;
        AlAbrirseModal([](QDialog* d) { QTest::mouseClick(d->findChild<QPushButton*>("cmdCancelar"), Qt::LeftButton); });
        QVERIFY_THROWS_EXCEPTION(ProgramaTerminado, MuestraMsgInconsistencias(r.e.sesion));
        QVERIFY(!r.e.sesion.ContinuaImportacion);
        QCOMPARE(r.ui.mensajes.size(), size_t(1));
        QCOMPARE(r.ui.mensajes[0].texto, std::string("La importación ha sido cancelada."));
        QCOMPARE(r.ui.mensajes[0].tipo, TipoMensaje::Informacion);
        QVERIFY(!QApplication::activeModalWidget());
    }

    void cerrarLaVentanaNoDecideNada() {
        RunConInconsistencias r;
        AlAbrirseModal([](QDialog* d) { d->close(); });
        QVERIFY(!MuestraMsgInconsistencias(r.e.sesion));
        QVERIFY(!r.e.sesion.ContinuaImportacion);
        QVERIFY(r.ui.mensajes.empty());
        // Escape acts as the window's frame, never as "Cancelar".
        AlAbrirseModal([](QDialog* d) { QTest::keyClick(d, Qt::Key_Escape); });
        QVERIFY(!MuestraMsgInconsistencias(r.e.sesion));
        QVERIFY(r.ui.mensajes.empty());
    }

    void alFinalSeVeElDetalleDeLoPerdido() {
        RunConInconsistencias r;
        QString informe;
        AlAbrirseModal([&](QDialog* d) {
            QTest::mouseClick(d->findChild<QPushButton*>("cmdDetalle"), Qt::LeftButton);
            AlAbrirseModal([&](QDialog* visor) {
                informe = Informe(visor);
                GuardaCaptura(visor, "reporte_detalle");
                visor->accept();
                AlAbrirseModal([](QDialog* otra) {
                    QTest::mouseClick(otra->findChild<QPushButton*>("cmdAceptar"), Qt::LeftButton);
                }, "frm000MsgInconsistenciasFin");
            }, "frm000VisorReporte");
        }, "frm000MsgInconsistenciasFin");
        MuestraMsgInconsistenciasFin(r.e.sesion);
        QVERIFY2(informe.contains("Pago a proveedor"), qPrintable(informe));
        QVERIFY(!QApplication::activeModalWidget());
    }

    void elVisorGuardaPdfYCsv() {
        RunConInconsistencias r;
        Reporte reporte;
        QVERIFY(PreparaResumenInconsistencias(r.e.sesion, kPlantillaResumen, reporte));
        app::frm000VisorReporte visor(reporte, r.ui, "VELMORANT Ver. 1.0.0");
        QCOMPARE(visor.windowTitle().toStdString(), reporte.titulo);
        std::string pdf = r.e.dir.texto() + "resumen.pdf", csv = r.e.dir.texto() + "resumen.csv";
        QVERIFY(visor.Guarda(pdf));
        QVERIFY(visor.Guarda(csv));
        QVERIFY(std::filesystem::file_size(pdf) > 0);
        std::ifstream leido(csv);
        std::string contenido((std::istreambuf_iterator<char>(leido)), std::istreambuf_iterator<char>());
        QVERIFY(contenido.find("Póliza nueva.") != std::string::npos);
        // A file that cannot be written is said in a message, not thrown.
        QVERIFY(!visor.Guarda(r.e.dir.texto() + "no-existe/resumen.pdf"));
        QCOMPARE(r.ui.mensajes.size(), size_t(1));
        QCOMPARE(r.ui.mensajes[0].tipo, TipoMensaje::Critico);
        QCOMPARE(r.ui.mensajes[0].titulo, std::string("VELMORANT Ver. 1.0.0"));
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm000MsgInconsistenciasTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm000MsgInconsistenciasTest.moc"
