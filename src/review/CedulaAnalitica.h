#pragma once
// Restoration of the analytic schedule: the reviewer's work on each movement
// (marks, observations, notes, tax figures and, in `UUIDAnalitica`, the
// fiscal folios) is saved before the schedule is rebuilt and put back on the
// same movements of the new vouchers. What cannot land is kept in the
// lost-rows log `InconsisImpTmpDet` and reported in `InconsisImpTmp`.
//
// All of it runs on the session's company connection, inside whatever
// transaction its caller holds; `CedAnaliticaTmp` and `InconsisImpTmpDet`
// are attached to that connection while they are used.

#include "session/Sesion.h"

namespace velmorant {

/// Copies `CedAnalitica` into a fresh `CedAnaliticaTmp`, with the old row
/// number in `IdCedAnaliticaAnt`, `Referencia` cleaned and `MovtoExistente`
/// false. An empty schedule creates no store and leaves an old one alone.
void GuardaCedulaAnalitica(Sesion& s);

/// Adds each saved row not found again (`MovtoExistente` false) to
/// `InconsisImpTmpDet`, unless the log already holds that movement under the
/// same rule, so a row lost over several runs stays once.
void ConservaRenglonesPerdidos(Sesion& s);

/// One line of the inconsistency log per distinct movement not found again.
void ReportaMovimientosPerdidos(Sesion& s);

/// Puts the saved work back on the rebuilt schedule: "Saldo Inicial" rows are
/// added again; every other saved row lands on the first row of its movement
/// that has not received work yet (`Aplicado`), and its folios follow it
/// under the new row number. `UUIDAnalitica` is replaced by the folios that
/// landed.
void RestauraDatosCedula(Sesion& s);

/// Clears `Aplicado` of the schedule and ties each item of `CedNoDeducibles`
/// to a schedule row of its movement, one item per row; an item that finds
/// none is reported and deleted. Runs with or without a saved schedule.
void ReintegraNoDeducibles(Sesion& s);

/// True when the saved schedule holds a row not found again; false without
/// a saved schedule.
bool ExistenMovimientosPerdidos(Sesion& s);

}  // namespace velmorant
