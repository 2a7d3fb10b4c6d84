#pragma once
// The import run: the one fixed order of steps that every importer goes
// through. Phase A reads the sources into the temporary stores and checks
// them; nothing in the company changes. Phase B commits the chart, the
// vouchers and the trial balance; phase C rebuilds the auditor's review work.
// Phases B and C run in one transaction over the company database with the
// company table attached: a failure anywhere in them leaves the company
// exactly as it was, and the user is told which step failed.

#include <array>
#include <functional>
#include <string>

#include "importers/Importador.h"
#include "session/Sesion.h"

namespace velmorant {

enum class ResultadoImportacion {
    Terminada,          // committed; the success message was shown
    ConPerdidas,        // committed; review rows were lost and reported
    ArchivosFaltantes,  // a path was missing; nothing was touched
    PeriodoInvalido,    // the period check refused; nothing committed
    NoContinuada,       // the inconsistency form closed without continuing
    Fallida,            // the commit failed and was rolled back
};

struct OpcionesEjecucion {
    /// Called with each step's name before the step runs; a test may throw
    /// from it to break the run at a chosen point.
    std::function<void(const std::string& paso)> antesDePaso;
};

/// Runs an import through `importador` with the chosen files. Messages and
/// decisions go through the session's interaction. Throws ProgramaTerminado
/// where the run ends the program (a store that cannot be opened, a source
/// that cannot be read, a cancel at the inconsistency form).
ResultadoImportacion EjecutaImportacion(Sesion& s, Importador& importador, const ArchivosImportacion& archivos,
                                        const OpcionesEjecucion& opciones = {});

/// The prior-year run (tab 1): the closing balances of the prior year.
ResultadoImportacion EjecutaSaldosAnioAnterior(Sesion& s, Importador& importador, const std::string& ruta,
                                               const OpcionesEjecucion& opciones = {});

/// The period of the new vouchers reaches the last imported month and
/// overlaps what is imported.
bool ValidaPeriodo(Sesion& s);
bool ExisteInformacionActual(Sesion& s);
/// Records `mes` as a review month of the company (inside the run's
/// transaction, on the attached company table).
void ActualizaMesesRevision(Sesion& s, int mes);
/// Reads the review months into `s.MesesRevision`, index 0 left empty.
void LeeMesesRevision(Sesion& s);

}  // namespace velmorant
