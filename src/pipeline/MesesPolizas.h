#pragma once
// Which months a voucher table holds: the switch between a first import and
// a re-import, and the period check of a run.

#include <bitset>
#include <string>

#include "platform/BaseDatos.h"

namespace velmorant {

/// The months, 1 to 12, that rows of `tabla` (`Polizas` or `Polizas_Tmp`)
/// fall in by Month(Fecha), as bits 1 to 12. Each month costs one seek of
/// the index on Fecha (the run's store gets one, see FiltroDeMesTmp); a
/// table whose dates do not allow the seeks is read whole instead.
std::bitset<13> MesesConFilas(BaseDatos& db, const std::string& tabla);
/// The highest month of the set, 0 for none: what MAX(Month(Fecha)) gives,
/// a Null month being no maximum.
int UltimoMesDe(const std::bitset<13>& meses);

/// Highest month with rows in `Polizas`, 0 when empty. A month-13 voucher
/// bears a December date and so counts as month 12.
int MesesConPolizas(BaseDatos& dbEmpresa);
/// The same on `Polizas_Tmp`.
int MesesConPolizasTmp(BaseDatos& dbPolizasTmp);
/// Lowest month with rows in `Polizas`, 0 when empty.
int PrimerMesConPolizas(BaseDatos& dbEmpresa);

}  // namespace velmorant
