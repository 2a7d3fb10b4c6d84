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

// ------------------------------------------------------------------- Steps

/// Re-import: logs company accounts gone from the store ("B"), changed
/// descriptions and opening balances ("C"); copies the company's nature into
/// the store and marks the store rows found (`Revisado`). Nothing when
/// either chart is empty. Writes only the store and the log.
void ComparaCatalogo(Sesion& s, Progreso& barra);
/// Re-import: logs each store account not marked by ComparaCatalogo ("A").
/// Nothing when the company has no accounts (a first import).
void RegistraCuentasNuevas(Sesion& s, Progreso& barra);
/// For sources with positive balances on credit accounts: a store account
/// whose company twin is of nature "A" gets its `Saldo` negated and nature
/// "A"; of nature "D", nature "D". Others stay. Nothing on an empty company.
void AjustaSignoSaldo(Sesion& s, Progreso& barra);
/// Rebuilds the store's `CuentaSinSeparadores` from `Cuenta`, dropping what
/// lies past the last level used.
void RecalculaSinSeparadores(Sesion& s, Progreso& barra);
/// Deletes company accounts (and their `Balanzas` row) that nothing refers
/// to any more: not in the store, no prior-year balance, no child, no line
/// in the new vouchers, adjustments or reclassifications.
void DepuraCatalogo(Sesion& s, Progreso& barra);
/// Store to company `Cuentas`: new accounts are added whole; existing ones
/// take only the new description and nature.
void GuardaCatalogo(Sesion& s, Progreso& barra);
/// Opening balances to `Balanzas`: a missing row is added (with the store's
/// `Saldo` when the store has the account); an existing row is overwritten
/// only when the store has the account.
void GuardaSaldoInicial(Sesion& s, Progreso& barra);
/// Prior-year closing balances (`SaldoFinAnioAnt`) to
/// `Cuentas.Saldo_Anterior_Final`, adding the accounts the company lacks.
void GuardaSaldosAnioAnterior(Sesion& s, Progreso& barra);

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
