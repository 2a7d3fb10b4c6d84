#pragma once
// Look-ups on the run's temporary stores that the generic readers need.
// They stand in for the pipeline's shared `ExisteCuentaTmp` and
// `SiguienteIdPoliza` until those exist; both are prepared statements on the
// company connection, where the stores are attached.

#include <string>

#include "session/Sesion.h"

namespace velmorant {

/// True when `Cuentas` of `CuentasTmp` holds the code in `CuentaSinSeparadores`.
bool ExisteCuentaTmpProvisional(Sesion& s, const std::string& cuenta);

/// The highest `IdPoliza` of `Polizas_Tmp` plus one; 1 when it is empty.
long SiguienteIdPolizaProvisional(Sesion& s);

/// Makes sure `Polizas_Tmp` can be searched by `IdPoliza` and by number,
/// type and date through an index, whichever creator made it.
void AseguraIndicesPolizasTmp(Sesion& s);

}  // namespace velmorant
