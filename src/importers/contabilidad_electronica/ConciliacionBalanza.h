#pragma once
// The auditor's reconciliation of the trial balances the client filed with
// the books it delivered: for each month whose balance XML was given, the
// opening balance, debits, credits and closing balance of every account of
// the balance are set against the same figures computed from the opening
// balances and the vouchers read, rolled up the chart to the accumulative
// accounts. What differs becomes a row of the inconsistency log (class "O").
//
// The computation is pure: it takes the chart, the opening balances, the
// movements and the balances as read, and returns the findings in order;
// the importer logs them. Every amount is exact. Balances here are debit
// positive, credit negative, as in the company's stores; the figures of a
// finding are shown as the balance file signs them.

#include <array>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Moneda.h"

namespace velmorant {

/// The chart as the reconciliation needs it: every account (code without
/// separators) with its nature and its parent ("" for a top account), in
/// the chart's order.
struct CatalogoConciliacion {
    struct Cuenta {
        std::string naturaleza;
        std::string padre;
    };
    std::vector<std::string> orden;
    std::unordered_map<std::string, Cuenta> cuentas;

    void agrega(const std::string& cuenta, const std::string& naturaleza, const std::string& padre);
    bool tiene(const std::string& cuenta) const { return cuentas.count(cuenta) > 0; }
    /// "D" when the account is unknown or has no nature.
    const std::string& naturaleza(const std::string& cuenta) const;
};

/// How a balance file signs its balances: by the account's nature (an
/// account of nature "A" in credit shows a positive balance, as the
/// accounting systems of the country write them), or debit positive
/// throughout.
enum class SignoBalanza { PorNaturaleza, DeudorPositivo };

/// A balance as the store keeps it (debit positive), from a balance as
/// the file signs it; the same function turns it back.
Moneda SaldoDeudor(Moneda saldo, const std::string& naturaleza, SignoBalanza signo);

/// One account of a balance file.
struct RenglonBalanza {
    std::string cuenta;  // code without separators
    Moneda SaldoIni, Debe, Haber, SaldoFin;
};

/// How a file signs its balances, from its own arithmetic: among the
/// accounts of nature "A" whose debits and credits differ, the closing
/// balance follows the opening balance minus debits plus credits when the
/// file signs by nature, plus debits minus credits when it is debit
/// positive. The sign that more rows follow wins; by nature on a tie (a
/// file that cannot tell, as one with no movement on credit accounts).
/// Rows are as the file writes them.
SignoBalanza DeduceSignoBalanza(const std::vector<RenglonBalanza>& renglones, const CatalogoConciliacion& catalogo);

/// A balance file as read: its month (1 to 13), its accounts of the chart
/// with balances made debit positive, in the file's order, and the accounts
/// it names that the chart lacks.
struct BalanzaLeida {
    int mes = 0;
    std::string ruta;
    SignoBalanza signo = SignoBalanza::PorNaturaleza;
    std::vector<RenglonBalanza> renglones;
    std::vector<std::string> fueraDeCatalogo;
};

/// Debits and credits of the vouchers read, by account and month (13 for
/// the closing vouchers).
class MovimientosPorMes {
public:
    /// `tipoMov` "D" is a debit; any other letter a credit.
    void agrega(const std::string& cuenta, int mes, const std::string& tipoMov, Moneda importe);

    struct Mes {
        Moneda debe, haber;
    };
    const std::unordered_map<std::string, std::array<Mes, 13>>& porCuenta() const { return cuentas_; }

private:
    std::unordered_map<std::string, std::array<Mes, 13>> cuentas_;
};

/// One finding, for RegistraInconsistencia.
struct DiferenciaBalanza {
    std::string cuenta;
    int fuente = 0;  // kFuentePolizas, or kFuenteCatalogo for an account the chart lacks
    std::string referencia;
    bool operator==(const DiferenciaBalanza&) const = default;
};

/// The findings of every balance given, month by month in ascending order;
/// within a month, the accounts of the file in its order, then those of the
/// chart it leaves out. For an account of the file: its opening balance,
/// debits and credits against those computed, and its closing balance
/// against its own opening balance, debits and credits (a difference in the
/// opening balance or the movements shows once, not again in the closing
/// balance). For an account of the chart the file leaves out: any figure
/// computed that is not zero. Computed as the trial balance computes it:
/// `saldosIniciales` are the opening balances of the run (debit positive;
/// an account missing from it opens at zero), of which an accumulative
/// account takes the sum of the detail accounts below it rather than its
/// own; every voucher line on an account of the chart counts, on its
/// account and on every account above it.
std::vector<DiferenciaBalanza> ConciliaBalanzas(const CatalogoConciliacion& catalogo,
                                                const std::unordered_map<std::string, Moneda>& saldosIniciales,
                                                const MovimientosPorMes& movimientos,
                                                const std::vector<BalanzaLeida>& balanzas);

}  // namespace velmorant
