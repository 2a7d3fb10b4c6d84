// The desktop program's message boxes: the program's title, the system's
// line breaks, and the answer of a question.

#include <QAbstractButton>
#include <QMessageBox>

#include "app/Escenario.h"
#include "app/InteraccionQt.h"
#include "session/Funciones.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

struct Caja {
    QString titulo, texto;
    QStringList botones;
    QMessageBox::Icon icono = QMessageBox::NoIcon;
};

// Reads the next box and presses its button of that text.
void Responde(Caja& vista, const QString& boton) {
    AlAbrirseModal([&vista, boton](QDialog* d) {
        auto* caja = qobject_cast<QMessageBox*>(d);
        QVERIFY(caja);
        vista.titulo = caja->windowTitle();
        vista.texto = caja->text();
        vista.icono = caja->icon();
        for (auto* b : caja->buttons()) vista.botones << b->text();
        for (auto* b : caja->buttons())
            if (b->text() == boton) b->click();
    });
}

}  // namespace

class InteraccionQtTest : public QObject {
    Q_OBJECT
private slots:
    void lasCajasLlevanElTituloDelProgramaYSusPalabras() {
        app::InteraccionQt ui;
        Sesion s;
        s.VersionPrograma = "1.0.0";
        s.interaccion = &ui;
        struct Caso {
            std::function<bool()> muestra;
            QMessageBox::Icon icono;
            QString boton;
            bool respuesta;
        };
        const Caso casos[] = {
            {[&] { MsgCritico(s, "No fue posible abrir la Base temporal de Inconsistencias"); return false; },
             QMessageBox::Critical, "Aceptar", false},
            {[&] { MsgAviso(s, "El archivo ya ha sido seleccionado"); return false; }, QMessageBox::Warning, "Aceptar",
             false},
            {[&] { MsgInformacion(s, "La importación ha sido cancelada."); return false; }, QMessageBox::Information,
             "Aceptar", false},
            {[&] { return MsgPregunta(s, "¿ Desea indicar la ubicación de la base?"); }, QMessageBox::Question, "&Sí",
             true},
            {[&] { return MsgPregunta(s, "¿ Desea indicar la ubicación de la base?"); }, QMessageBox::Question, "&No",
             false},
        };
        for (const auto& c : casos) {
            Caja vista;
            Responde(vista, c.boton);
            QCOMPARE(c.muestra(), c.respuesta);
            QCOMPARE(vista.titulo, QString("VELMORANT Ver. 1.0.0"));
            QCOMPARE(vista.icono, c.icono);
            QVERIFY(vista.botones.contains(c.boton));
            QVERIFY(!vista.texto.endsWith('\r') && !vista.texto.endsWith('\n'));
        }
    }

    void losSaltosDelSistemaSonSaltosDeLinea() {
        QCOMPARE(app::TextoDeMensaje("Esta empresa ya cuenta con una importación Previa.\r\nPara no perder\r"),
                 QString("Esta empresa ya cuenta con una importación Previa.\nPara no perder"));
        QCOMPARE(app::TextoDeMensaje("uno\r\r\ndos"), QString("uno\n\ndos"));
    }

    void elFiltroDelDialogo() {
        QCOMPARE(app::FiltroQt("*.txt|*.txt"), QString("*.txt (*.txt)"));
        QCOMPARE(app::FiltroQt("Libros|*.xls;*.xlsx|Todos|*.*"), QString("Libros (*.xls *.xlsx);;Todos (*.*)"));
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    InteraccionQtTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "InteraccionQtTest.moc"
