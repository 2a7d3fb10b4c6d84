// velmorant: the desktop program. It takes no arguments: the company and
// year come from the settings the audit product leaves behind. One run
// serves one company, one year and one importer: when the importer form
// closes, the program ends.

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include "app/InteraccionQt.h"
#include "app/frm000ImportarInicio.h"
#include "importers/reportes/ImportadorReporte.h"
#include "session/Funciones.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"

using namespace velmorant;

int main(int argc, char** argv) {
    QApplication aplicacion(argc, argv);
    QApplication::setApplicationName("VELMORANT");
    QApplication::setApplicationVersion(QString::fromStdString(VersionDelPrograma()));
    // The toolkit's own dialogs (files, printing) in Spanish where the
    // system has their translation.
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Mexico));
    QTranslator traduccion;
    if (traduccion.load(QLocale(), "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&traduccion);
    app::InteraccionQt interaccion;
    Sesion sesion;
    sesion.interaccion = &interaccion;
    try {
        IniciaSesion(sesion);
    } catch (const ProgramaTerminado&) {
        return 3;  // its message has been shown
    } catch (const std::exception& e) {
        ReportaError(sesion, e, true);
        return 3;
    }
    // A description of a printed report that cannot be used is refused now,
    // naming its file and line; its link then has no importer to run.
    for (const auto& error : Descripciones().errores) MsgAviso(sesion, error);
    app::frm000ImportarInicio inicio(sesion);
    interaccion.padre(&inicio);
    inicio.muestraSesion();
    inicio.exec();
    return inicio.temporalesBorrados() ? 0 : 3;
}
