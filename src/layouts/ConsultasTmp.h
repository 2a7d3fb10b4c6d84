#pragma once
// What the generic readers need of the run's voucher store beyond the
// pipeline's shared look-ups.

#include <string>

#include "session/Sesion.h"

namespace velmorant {

/// Makes sure `Polizas_Tmp` can be searched by `IdPoliza` and by number,
/// type and date through an index, whichever creator made it.
void AseguraIndicesPolizasTmp(Sesion& s);

}  // namespace velmorant
