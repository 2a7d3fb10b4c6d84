#pragma once
// How the core talks to the person at the desk. Each front end implements
// these two interfaces: the desktop program with dialogs and a progress bar,
// the command line with flags, stderr and (when attached) the terminal.

#include <string>

namespace velmorant {

enum class TipoMensaje { Critico, Aviso, Informacion, Pregunta };

/// A report ready to be shown: rows, variables and template (pipeline/Reportes.h).
struct Reporte;
/// The log's rows by class, shown before the decision (pipeline/Reportes.h).
struct ConteoInconsistencias;

/// The answer at the inconsistency form (`frm000MsgInconsistencias`).
/// `Cerrar`: the form was closed by its window frame, which sets nothing.
enum class DecisionInconsistencias { VerReporte, Continuar, Cancelar, Cerrar };
/// The answer at the end-of-run form (`frm000MsgInconsistenciasFin`).
enum class DecisionFinal { VerDetalle, Terminar };

class Interaccion {
public:
    virtual ~Interaccion() = default;

    /// Shows a message box whose title and text are final. For a question
    /// returns true when the answer is Yes; otherwise the result is unused.
    virtual bool mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) = 0;

    /// The common file dialog: `filtro` is "description|pattern[|...]".
    /// Returns the chosen path, or an empty text when the user cancels.
    virtual std::string eligeArchivo(const std::string& filtro, const std::string& titulo) = 0;

    /// The same dialog, opened in `carpeta` (an importer's picker). By
    /// default the folder is ignored.
    virtual std::string eligeArchivoEn(const std::string& filtro, const std::string& titulo,
                                       const std::string& carpeta) {
        (void)carpeta;
        return eligeArchivo(filtro, titulo);
    }

    /// The modal decision after the log has rows, with how many there are of
    /// each class to show before asking. `VerReporte` is answered by showing
    /// the summary report and asking again.
    virtual DecisionInconsistencias decideInconsistencias(const std::string& titulo,
                                                          const ConteoInconsistencias& conteo) {
        (void)titulo;
        (void)conteo;
        return DecisionInconsistencias::Cancelar;
    }

    /// The decision at the end of a run that lost movements.
    virtual DecisionFinal decideFinal(const std::string& titulo) {
        (void)titulo;
        return DecisionFinal::Terminar;
    }

    /// `frm036ImportarContpaqDBFMsg`: the nature of an account whose type
    /// (`tipo`) the link does not know, "D" (Deudora) or "A" (Acreedora);
    /// empty when there is no answer (no one to ask), which refuses the run.
    virtual std::string decideNaturaleza(const std::string& titulo, const std::string& texto,
                                         const std::string& tipo) {
        (void)titulo;
        (void)texto;
        (void)tipo;
        return "";
    }

    /// Shows a report on screen, where the user may print or save it, and
    /// returns when it is closed. A front end without a viewer does nothing.
    virtual void muestraReporte(const Reporte& reporte) { (void)reporte; }
};

/// Progress of a long step: a label, a bar, and a yield point where the
/// desktop program pumps its events so that the bar repaints.
class Progreso {
public:
    virtual ~Progreso() = default;
    virtual void etiqueta(const std::string& texto) = 0;
    virtual void maximo(long n) = 0;
    virtual void valor(long n) = 0;
    virtual void visible(bool si) = 0;
    virtual void cede() {}
};

/// A progress that shows nothing; for tests and quiet runs.
class ProgresoMudo : public Progreso {
public:
    void etiqueta(const std::string&) override {}
    void maximo(long) override {}
    void valor(long) override {}
    void visible(bool) override {}
};

}  // namespace velmorant
