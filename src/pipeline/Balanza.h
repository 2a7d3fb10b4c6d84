#pragma once
// The trial balance: vouchers posted month by month into `Balanzas`, the
// auditor's adjustments and reclassifications on top, the roll-up onto the
// accumulative accounts, and one balance per audit stage in `Cuentas`.
//
// Every amount is an exact integer of ten-thousandths; sums run in SQL
// integer arithmetic or in `Moneda`, never in floating point. Balances are
// debit positive, credit negative, whatever the account's nature. Months
// travel as two-digit text, "01" to "12", and "13" for the closing vouchers;
// any other text throws std::invalid_argument. The steps work on
// `Sesion::DbEmpresa` (and `DbEmpresas` for the company row), show their
// progress on `Sesion::progreso` when there is one, and log through
// `RegistraInconsistencia`, so the log must be open while vouchers post.

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "platform/Valor.h"
#include "session/Sesion.h"

namespace velmorant {

/// Posts the balanced, enabled vouchers of `mes` into `Balanzas`: month-13
/// vouchers to C13/A13, opening adjustments to `SaldoInicial`, the rest to
/// the month's columns, after clearing them. At `UltimoMesNuevo` it also
/// clears the later months and the audit sums, and applies adjustments and
/// reclassifications once. A line on an unknown or accumulative account is
/// logged and left out.
void AplicaPolizasABalanza(Sesion& s, const std::string& mes);

/// Adds the adjustments in force and not yet booked to `Ajuste_Debe` (lines
/// "C") and `Ajuste_Haber` (any other letter) of `tabla`, a table keyed by
/// `Cuenta`. Unknown and accumulative accounts are passed over silently.
void AplicaAjustes(Sesion& s, const std::string& tabla);
/// The same for reclassifications, into `RCL_Debe` and `RCL_Haber`.
void AplicaReclasificaciones(Sesion& s, const std::string& tabla);

/// Closing balance of `mes` for every row of `Balanzas`: the previous
/// month's (the opening balance for "01") plus debits minus credits. At
/// `UltimoMesNuevo` it carries the balance through month 13 and computes
/// `Saldo_Ajustado` and `Saldo_Final_Aud` on the month-13 balance.
void ObtieneSaldosBalanza(Sesion& s, const std::string& mes);

/// Builds the figures of the accumulative accounts: zeroes their rows, then
/// adds each detail account's value into every ancestor, for every column
/// of `Balanzas` between the first (the key) and the last (the opening
/// balance as read, which stays as it is). Ends with MarcaCuentasConMovimientos.
void CalculaSaldosFinales(Sesion& s);

/// Sets `Cuentas.ConMovtos` to whether the account has any voucher line,
/// posted or not.
void MarcaCuentasConMovimientos(Sesion& s);

/// For each review month of the company row in use (`MesPrevia1` to
/// `MesFinal`), computes that stage's balances and sets `AuditoriaActual`
/// to its code; a company with no review month is left as it was.
void CalculaSaldosEtapas(Sesion& s);

/// Writes into `Cuentas` the balance at the close of month `mes` (13 for
/// "FINAL" when the company closes with month 13) in the stage's column,
/// with the audit sums and the adjusted balances, except for the prior-year
/// column. Months beyond 13 count as 13. Throws std::invalid_argument for a
/// stage that has no column.
void ObtieneSaldosEtapa(Sesion& s, int mes, const std::string& etapa);

/// Column of `Cuentas` that holds a stage's balances; empty for an unknown name.
std::string CampoSaldoDeEtapa(const std::string& etapa);

/// Name of the stage whose code the company row holds; "PREVIA 1" for any
/// other code or when there is no row.
std::string EtapaActual(Sesion& s);

/// True when `Ajustes` or `Reclasificaciones` has any row.
bool HayAjustesOReclasificaciones(Sesion& s);

/// Number of a month text of the pipeline steps, "01" to "13"; any other
/// text throws std::invalid_argument.
int NumeroDeMesDeTexto(const std::string& mes);

/// Where a voucher line would post: the row of `Balanzas` of its account
/// (the first, if the account is repeated). When it cannot post, `fila` is
/// empty and `motivo` holds the log text: the account has no row, or it is
/// accumulative. Reads `Balanzas` and `Cuentas`.
struct DestinoLinea {
    std::optional<std::int64_t> fila;
    std::string motivo;
};
DestinoLinea DestinoEnBalanza(Sesion& s, const std::string& cuenta, const Valor& tipoMov, const Valor& importe);

/// The same answer for many lines, each account looked up once: for a walk
/// over a month's vouchers, during which neither `Balanzas` nor the types
/// in `Cuentas` change.
class DestinosEnBalanza {
public:
    explicit DestinosEnBalanza(Sesion& s) : s_(s) {}
    DestinoLinea destino(const std::string& cuenta, const Valor& tipoMov, const Valor& importe);

private:
    struct Cuenta {
        std::optional<std::int64_t> fila;
        bool acumulativa = false;
    };
    Sesion& s_;
    std::unordered_map<std::string, Cuenta> cuentas_;
};

}  // namespace velmorant
