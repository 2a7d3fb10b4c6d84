#pragma once
// The chart of accounts and opening balances on their way from the
// temporary chart ("CuentasTmp.Cuentas", attached to the company
// connection) into the company's `Cuentas` and `Balanzas`; on a re-import
// the comparison first logs what is going to change. `Cuentas.Cuenta` of the
// company always holds the unseparated code, the store's key is
// `CuentaSinSeparadores`. Balances are debit positive, credit negative.
//
// Each step shows its caption (if it has one) on `barra`, sets the bar's
// maximum to its row count and its value row by row, and yields at its end.

#include <string>

#include "platform/BaseDatos.h"
#include "session/Interaccion.h"
#include "session/Sesion.h"

namespace velmorant {

// --------------------------------------------------------- Existence tests

/// True when the company's `Cuentas` has the code.
bool ExisteCuenta(Sesion& s, const std::string& cuenta);
/// The same test; the importers' variant.
bool ExisteCuentaConsulta(Sesion& s, const std::string& cuenta);
/// True only when the company has the code and its `Tipo` is "A".
bool EsCuentaAcumulativa(Sesion& s, const std::string& cuenta);
/// "A" when some account of `tabla` on `db` names `cuenta` as its parent,
/// else "D".
std::string TipoPorReferencia(BaseDatos& db, const std::string& cuenta, const std::string& tabla = "Cuentas");
/// True when the temporary chart has the code as `CuentaSinSeparadores`:
/// through the open store, or by opening the file alone when it is closed.
bool ExisteCuentaTmp(Sesion& s, const std::string& cuenta);

/// The connection that holds the open temporary chart; throws when closed.
BaseDatos& CuentasTmpAbierto(Sesion& s);

}  // namespace velmorant
