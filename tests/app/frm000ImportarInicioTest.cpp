// The start form: company shown, links listed, searched and filtered, the
// backup reminder, the ContPAQ i exclusion and the end of the session.

#include "app/RegistroFormularios.h"
#include "app/frm000ImportarInicio.h"
#include "session/Despacho.h"
#include "store/AlmacenesTemporales.h"
#include "app/Escenario.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm000ImportarInicio;

namespace {

// Stands for an importer form: counts how often each link opened it and
// closes with the result it is given.
struct FormasDePrueba {
    std::map<int, int> abiertas;
    int resultado = QDialog::Accepted;

    void Registra(int idSistema) {
        app::RegistraFormulario(idSistema, [this, idSistema](Sesion&, QWidget* padre) {
            ++abiertas[idSistema];
            auto forma = std::make_unique<QDialog>(padre);
            int r = resultado;
            AlAbrirseModal([r](QDialog* d) { d->done(r); });
            return forma;
        });
    }
};

QStringList Lista(const frm000ImportarInicio& f) {
    QStringList r;
    for (int i = 0; i < f.datEnlaces->rowCount(); ++i) r << f.datEnlaces->item(i, 0)->text();
    return r;
}

void EligeFila(frm000ImportarInicio& f, const QString& descripcion) {
    auto filas = f.datEnlaces->findItems(descripcion);
    QVERIFY2(filas.size() == 1, qPrintable(descripcion));
    f.tdbgEnlaces->setCurrentIndex(filas[0]->index());
}

void DobleClic(frm000ImportarInicio& f, const QString& descripcion) {
    auto filas = f.datEnlaces->findItems(descripcion);
    QVERIFY(filas.size() == 1);
    QRect celda = f.tdbgEnlaces->visualRect(filas[0]->index());
    QTest::mouseClick(f.tdbgEnlaces->viewport(), Qt::LeftButton, {}, celda.center());
    QTest::mouseDClick(f.tdbgEnlaces->viewport(), Qt::LeftButton, {}, celda.center());
}

std::string TemporalDePrueba(Sesion& s) {
    std::string ruta = RutaAlmacen(s, kCuentasTmp);
    std::ofstream(ruta) << "";
    return ruta;
}

const char* kRecordatorio = "Antes de continuar, le recomendamos realizar un respaldo de su Empresa.";

}  // namespace

class frm000ImportarInicioTest : public QObject {
    Q_OBJECT
private slots:
    void muestraLaEmpresaYLosEnlacesComerciales() {
        Escenario e;
        frm000ImportarInicio f(e.sesion);
        f.muestraSesion();
        f.show();
        QCOMPARE(f.windowTitle(), QString("VELMORANT Ver. %1 - Comercializadora Acme, S.A. de C.V. (2023)")
                                      .arg(QString::fromStdString(VersionDelPrograma())));
        QCOMPARE(f.eloEmpresa->text(), QString("Comercializadora Acme, S.A. de C.V."));
        QCOMPARE(f.eloEjercicio->text(), QString("2023"));
        QCOMPARE(f.eloEstrucCta->text(), QString("9999-99-99"));
        QVERIFY(f.eloEmpresa->isReadOnly());
        QCOMPARE(f.datEnlaces->headerData(0, Qt::Horizontal).toString(), QString("SISTEMA CONTABLE"));
        QVERIFY(f.chkVerSisComer->isChecked());
        QCOMPARE(f.chkVerSisComer->text(), QString("Ver solo sistemas comerciales"));
        QCOMPARE(f.cmdContinuar->text(), QString("&Continuar"));
        QCOMPARE(f.cmdSalir->text(), QString("&Salir"));
        // Released and commercial, by description; Softex is not released.
        QCOMPARE(Lista(f), QStringList({"ContPAQ i", "ContPAQ i - Mejorado", "Texto Generico delimitado por caracter"}));
        QCOMPARE(f.enlaceActual(), std::optional<int>(36));
        GuardaCaptura(&f, "inicio");
    }

    void buscaYFiltraLosEnlaces() {
        Escenario e;
        frm000ImportarInicio f(e.sesion);
        f.muestraSesion();
        struct Paso {
            const char* accion;  // "escribe" or "casilla"
            QString texto;
            QStringList esperada;
        };
        const QStringList todos = {"ContPAQ i", "ContPAQ i - Mejorado", "Sistema propio de despacho 22",
                                   "Texto Generico delimitado por caracter"};
        const Paso pasos[] = {
            {"escribe", "mejor", {"ContPAQ i - Mejorado"}},
            {"escribe", "CONTPAQ", {"ContPAQ i", "ContPAQ i - Mejorado"}},
            {"escribe", "propio", {}},  // not commercial
            // Unticking lists every released link; the text is applied
            // again only when it changes.
            {"casilla", "", todos},
            {"escribe", "propio", {"Sistema propio de despacho 22"}},
            {"escribe", "Tex*car", {"Texto Generico delimitado por caracter"}},
            {"escribe", "o'B", {}},
            {"escribe", "100%", {}},
            {"escribe", "", todos},
            {"casilla", "", {"ContPAQ i", "ContPAQ i - Mejorado", "Texto Generico delimitado por caracter"}},
        };
        for (const auto& p : pasos) {
            if (QString(p.accion) == "escribe") {
                f.txtBuscar->clear();
                QTest::keyClicks(f.txtBuscar, p.texto);
            } else {
                QTest::mouseClick(f.chkVerSisComer, Qt::LeftButton);
            }
            QCOMPARE(Lista(f), p.esperada);
        }
        QVERIFY(e.ui.mensajes.empty());
    }

    void recordatorioSoloConCatalogoYNoEnDobleClic() {
        struct Caso {
            bool conCuentas;
            bool dobleClic;
            bool recordatorio;
        };
        for (auto c : {Caso{false, false, false}, Caso{true, false, true}, Caso{true, true, false}}) {
            Escenario e;
            FormasDePrueba formas;
            formas.Registra(82);
            if (c.conCuentas) e.sesion.DbEmpresa->ejecuta("INSERT INTO Cuentas (Cuenta) VALUES ('1101')");
            frm000ImportarInicio f(e.sesion);
            f.muestraSesion();
            f.show();
            QVERIFY(QTest::qWaitForWindowExposed(&f));
            if (c.dobleClic) {
                DobleClic(f, "Texto Generico delimitado por caracter");
            } else {
                EligeFila(f, "Texto Generico delimitado por caracter");
                QTest::mouseClick(f.cmdContinuar, Qt::LeftButton);
            }
            QCOMPARE(formas.abiertas[82], 1);
            QCOMPARE(Textos(e.ui).size(), c.recordatorio ? 1 : 0);
            if (c.recordatorio) {
                // The reminder as it always read, and that an import can be undone.
                QVERIFY(Textos(e.ui)[0].startsWith(QString(kRecordatorio) + "\r\n\r\n"));
                QVERIFY(Textos(e.ui)[0].contains("se puede deshacer"));
                QCOMPARE(e.ui.mensajes[0].tipo, TipoMensaje::Informacion);
            }
            QVERIFY(!f.isVisible());  // the session has ended
        }
    }

    void losEnlacesContPaqISeExcluyen() {
        struct Caso {
            int anterior, elegido;
            bool abre;
            const char* otro;
        };
        const Caso casos[] = {{36, 95, false, "Anterior"}, {95, 36, false, "Mejorado"}, {36, 36, true, ""},
                              {95, 95, true, ""},          {82, 36, true, ""},          {0, 95, true, ""}};
        for (const auto& c : casos) {
            Escenario e;
            e.ImportadaCon(c.anterior);
            FormasDePrueba formas;
            formas.Registra(36);
            formas.Registra(95);
            std::string temporal = TemporalDePrueba(e.sesion);
            frm000ImportarInicio f(e.sesion);
            f.muestraSesion();
            f.show();
            EligeFila(f, c.elegido == 36 ? "ContPAQ i" : "ContPAQ i - Mejorado");
            QTest::mouseClick(f.cmdContinuar, Qt::LeftButton);
            QCOMPARE(e.sesion.IdSistemaElegido, c.elegido);
            QCOMPARE(formas.abiertas[c.elegido], c.abre ? 1 : 0);
            if (!c.abre) {
                QCOMPARE(Textos(e.ui),
                         QStringList{QString("Esta empresa ya cuenta con una importación Previa utilizando el enlace "
                                             "de CONPAQ i - %1.\r\nPara no perder la integridad de su información "
                                             "(Trabajo de Revisión), deberá utlizar el mismo enlace.")
                                         .arg(c.otro)});
            } else {
                QVERIFY(e.ui.mensajes.empty());
            }
            // Refused or not, the session ends and the temporary stores go.
            QVERIFY(!f.isVisible());
            QVERIFY(f.temporalesBorrados());
            QVERIFY(!std::filesystem::exists(temporal));
        }
    }

    void sinEnlacesOSinFormularioTerminaSinMensaje() {
        for (bool listaVacia : {true, false}) {
            Escenario e;
            if (listaVacia)
                e.Enlaces({});
            else
                e.Enlaces({{22, "Sistema propio de despacho 22", true, true}});
            frm000ImportarInicio f(e.sesion);
            f.muestraSesion();
            f.show();
            QCOMPARE(f.enlaceActual().has_value(), !listaVacia);
            QTest::mouseClick(f.cmdContinuar, Qt::LeftButton);
            QVERIFY(e.ui.mensajes.empty());
            QVERIFY(!f.isVisible());
            QVERIFY(f.temporalesBorrados());
        }
    }

    void salirBorraLosTemporales() {
        Escenario e;
        std::string temporal = TemporalDePrueba(e.sesion);
        frm000ImportarInicio f(e.sesion);
        f.muestraSesion();
        f.show();
        QTest::mouseClick(f.cmdSalir, Qt::LeftButton);
        QVERIFY(!f.isVisible());
        QCOMPARE(f.result(), int(QDialog::Rejected));
        QVERIFY(!std::filesystem::exists(temporal));
    }

    void unImportadorQueTerminaElProgramaNoBorraLosTemporales() {
        Escenario e;
        FormasDePrueba formas;
        formas.resultado = app::kProgramaTerminado;
        formas.Registra(82);
        std::string temporal = TemporalDePrueba(e.sesion);
        frm000ImportarInicio f(e.sesion);
        f.muestraSesion();
        f.show();
        EligeFila(f, "Texto Generico delimitado por caracter");
        QTest::mouseClick(f.cmdContinuar, Qt::LeftButton);
        QCOMPARE(formas.abiertas[82], 1);
        QVERIFY(!f.isVisible());
        QVERIFY(!f.temporalesBorrados());
        QVERIFY(std::filesystem::exists(temporal));
    }
};

int main(int argc, char** argv) {
    // Settings go to a private folder before anything reads them.
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm000ImportarInicioTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm000ImportarInicioTest.moc"
