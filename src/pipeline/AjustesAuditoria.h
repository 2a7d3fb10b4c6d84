#pragma once
// The auditor's adjustments and reclassifications brought from an earlier
// audit product: committed from the run's store `AjYRcl_Tmp` to the company's
// `Ajustes`, `Reclasificaciones` and their lines, then applied to the chart,
// where each entry's amounts climb through `CuentaAcumulativa` and the
// balances of the stage reached take them on (`Saldo_Ajustado`,
// `Saldo_Final_Aud`).
//
// The steps run in the commit of a run, inside its transaction, on
// `Sesion::DbEmpresa`; progress goes to
// `Sesion::progreso`, faults to the log. Amounts are exact.

#include <string>
#include <utility>
#include <vector>

#include "platform/Moneda.h"
#include "session/Sesion.h"

namespace velmorant {

/// Empties `Ajustes`, `Ajustes_Detalle`, `Reclasificaciones` and
/// `Reclasificaciones_Detalle`, then fills them from `AjYRcl_Tmp`, walked by
/// `IdAjRc`: a head for each type ("AJ" or "RC") and `IdAjRc` (id and number
/// `AjRc`, the concept of its first line without "'|~", `Estatus`, not
/// booked), and a line for each row (`Cuenta`, `Tipo` from `TipoMov`,
/// `Importe`). The tables are emptied even when the store has no row. The
/// store is read through a connection of its own; a store that cannot be
/// opened throws ErrorBaseDatos.
void GuardaAjustesYReclasificaciones(Sesion& s);

/// Applies the entries in force (`Estatus`) to `Cuentas`, adjustments and
/// then reclassifications, each in two passes per entry: "Aplicando Ajuste N"
/// puts each line's amount on its own account (`Tipo` "C" on the debit side,
/// any other on the credit side), "Calculando Ajuste N" carries it up through
/// `CuentaAcumulativa` to the top account. A parent the chart lacks stops the
/// climb and is logged once for the account that names it ("No se encontró la
/// cuenta a la que acumula la cuenta", class "O"); a line on an account the
/// chart lacks is passed over (the reading logged it). The last step writes
/// every account: `Ajuste_Debe`, `Ajuste_Haber`, `RCL_Debe`, `RCL_Haber`,
/// `Saldo_Ajustado` (the balance of the stage reached, EtapaActual, plus the
/// adjustments' debits less credits) and `Saldo_Final_Aud` (that plus the
/// reclassifications').
void AplicaAjustesACuentas(Sesion& s);

/// The prior-year closing balance of each account given (unseparated code,
/// amount) into `Saldo_Anterior_Final` of `Cuentas`; codes the chart lacks
/// change nothing.
void GuardaSaldosFinalesAnteriores(Sesion& s, const std::vector<std::pair<std::string, Moneda>>& saldos);

}  // namespace velmorant
