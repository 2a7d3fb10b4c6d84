// velmorant: the desktop program. It takes no arguments: the company and
// year come from the settings the audit product leaves behind.

#include <QApplication>

#include "app/InteraccionQt.h"
#include "app/frm000ImportarInicio.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"

using namespace velmorant;

int main(int argc, char** argv) {
    QApplication aplicacion(argc, argv);
    app::InteraccionQt interaccion;
    Sesion sesion;
    sesion.interaccion = &interaccion;
    try {
        IniciaSesion(sesion);
    } catch (const ProgramaTerminado&) {
        return 3;  // the message has been shown
    } catch (const std::exception& e) {
        interaccion.mensaje(TipoMensaje::Critico, "VELMORANT Ver. " + VersionDelPrograma(), e.what());
        return 3;
    }
    app::frm000ImportarInicio inicio(sesion);
    interaccion.padre(&inicio);
    inicio.muestraSesion();
    inicio.exec();
    return 0;
}
