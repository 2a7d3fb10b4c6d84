#pragma once
// Vouchers from the run's stores to the company: each voucher's balance is
// checked in `Polizas_Tmp` while the run reads, then, in the commit, the
// month's vouchers and lines are copied to `Polizas` and `Polizas_Detalle`
// and each line is checked against the trial balance. A voucher that must
// not post is kept, flagged `Poliza_Deshabilitada`, and logged.
//
// The stores `Polizas_Tmp`, `Polizas_Detalle_Tmp` and `CuentasTmp` are
// attached to `Sesion::DbEmpresa`; the steps need them open (a closed store
// throws std::logic_error). Months travel as two-digit text, "01" to "13".
// Progress goes to `Sesion::progreso` when there is one; faults go to the
// log through `RegistraInconsistencia`.

#include <map>
#include <string>

#include "platform/Fecha.h"
#include "session/Sesion.h"

namespace velmorant {

/// Marks each voucher of `mes` in `Polizas_Tmp` `Cuadrada` when its lines on
/// known accounts (in `CuentasTmp` or `Cuentas`) add up to exactly zero,
/// debits less credits; otherwise logs the difference and disables it.
/// "13" takes the month-13 vouchers, other months leave them out. A balanced
/// voucher already cancelled in the source is logged as such.
void VerificaCuadrePolizas(Sesion& s, const std::string& mes);

/// Copies the vouchers of `mes` (by the month of their date, so month-13
/// vouchers go with "12") and their lines from the stores to `Polizas` and
/// `Polizas_Detalle`, cleaning concept (cut to 255 characters) and line text.
void GuardaPolizas(Sesion& s, const std::string& mes);

/// Checks every line of the balanced vouchers of `mes` in `Polizas` against
/// `Balanzas`: a line on an account without a balance row or on an
/// accumulative account is logged and disables its whole voucher. Does
/// nothing while `Balanzas` is empty.
void VerificaConsistenciaPolizas(Sesion& s, const std::string& mes);

/// The next `IdPoliza` of `Polizas_Tmp`: its highest plus one, 1 when empty.
long SiguienteIdPoliza(Sesion& s);

/// True when `Polizas_Tmp` has a voucher of that number, type and date
/// (and, with `esMes13`, flagged as a month-13 voucher).
bool ExistePolizaTmp(Sesion& s, const std::string& poliza, const std::string& tipo, const Fecha& fecha, bool esMes13);

/// Adds to `CatTipoPoliza` each voucher type of `Polizas_Tmp` it lacks, with
/// the type as its own description. Existing rows stay as they are. The run
/// calls it inside the commit's transaction, so that a refused or cancelled
/// run adds nothing.
void RegistraTiposPoliza(Sesion& s);

/// When `CatTipoPoliza` holds the letter codes "Dr", "Ig" or "Eg", rewrites
/// them as 1, 2 and 3 in `Polizas`, `CedAnalitica`, `CedNoDeducibles` and
/// the catalogue, whose descriptions become "Ingresos", "Egresos" and
/// "Diario" in that order. Other codes stay.
void NormalizaTiposPoliza(Sesion& s);

/// The letter codes a company's earlier normalization has already turned
/// into numbers (its `CatTipoPoliza` holds the number and not the letters),
/// letter to number. A reader applies it to the types it reads, so that a
/// re-import compares "1" with "1" and not "Dr" with "1".
std::map<std::string, std::string> TiposPolizaNormalizados(Sesion& s);

}  // namespace velmorant
