#pragma once
// Which months a voucher table holds: the switch between a first import and
// a re-import, and the period check of a run.

#include "platform/BaseDatos.h"

namespace velmorant {

/// Highest month with rows in `Polizas`, 0 when empty. A month-13 voucher
/// bears a December date and so counts as month 12.
int MesesConPolizas(BaseDatos& dbEmpresa);
/// The same on `Polizas_Tmp`.
int MesesConPolizasTmp(BaseDatos& dbPolizasTmp);
/// Lowest month with rows in `Polizas`, 0 when empty.
int PrimerMesConPolizas(BaseDatos& dbEmpresa);

}  // namespace velmorant
