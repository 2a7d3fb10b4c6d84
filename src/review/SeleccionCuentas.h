#pragma once
// The auditor's selection of accounts to review, rebuilt after a re-import.
//
// For each review month `SeleccionMaster` keeps the rules (one row per rule,
// integration account and month) and `SeleccionDetalle` the accounts they
// picked. A re-import moves the balances, so each month's picked accounts
// are thrown away and picked again with the same rules from the new closing
// balances (`Balanzas.SdoFinMM`); accounts chosen by hand (rule 4) or by
// draw (rule 10) come back for as long as they are still candidates.
//
// Rules (`IdCriterio`): 1 and 7 by amount, 2 and 8 by percentage of the
// integration account's total, 4 by hand, 10 a random sample; 7 and 8 look
// at balances against the account's nature. Any other number is left alone.
//
// Everything works on the company connection (`Sesion::DbEmpresa`) and opens
// no transaction of its own: the run calls it inside its own. The two work
// stores, `SeleccionDetalleTmp` (the month's candidates) and
// `SeleccPreviaCtasBalTmp` (the selection as it stood before the delete),
// are attached to that connection; SQLite cannot attach a file inside a
// transaction, so a run that holds one calls PreparaAlmacenesSeleccion
// before opening it. Months are 1 to 13; a month's balance column is
// "SdoFin" and the month in two digits.

#include <string>
#include <vector>

#include "platform/Moneda.h"
#include "review/Sorteo.h"
#include "session/Sesion.h"

namespace velmorant {

// ------------------------------------------------------------- The run

/// Creates both work stores afresh and attaches them to the company
/// connection. Call outside a transaction, before the run opens its own;
/// each month's rebuild then empties them instead of replacing the files.
void PreparaAlmacenesSeleccion(Sesion& s);

/// Sets `TotalCta` of every rule, of every month, to the `SdoFinMM` of its
/// integration account in `Balanzas`; a rule whose account has no row there
/// keeps its total.
void ActualizaTotalCtaSeleccion(Sesion& s, int mes);

/// The review months' loop of a re-import: for each entry of `MesesRevision`
/// from index 1 (an empty entry is month 0), copies the rules of the entry
/// before when the month has none, then rebuilds the month's selection.
void ReconstruyeSeleccionesDeRevision(Sesion& s, const FuenteSemilla& semillas = SemillaDelReloj());

/// True when `SeleccionMaster` holds a rule for the month.
bool ExistenCriteriosDelMes(Sesion& s, int mes);

/// Adds again every rule of `mesOrigen` with `MesRevision` = `mesDestino`;
/// a Null number becomes 0 and a Null text an empty one.
void CopiaCriteriosDelMes(Sesion& s, int mesOrigen, int mesDestino);

/// Rebuilds the month: candidates from the new balances, a copy of the old
/// selection, the delete of the month's rows, then every rule of the month
/// in table order. A month without rules keeps its rows untouched. Rewrites
/// `Porcentaje`, `TotalCta` and `Descripcion` of rules 2 and 8, and
/// `Descripcion` of rule 10 when it draws; sets `Cuentas.PorRevisar`.
void ReconstruyeSeleccionCuentas(Sesion& s, int mes, const FuenteSemilla& semillas = SemillaDelReloj());

// ------------------------------------------------------- The month's steps

/// Fills `SeleccionDetalleTmp` with the detail accounts of level 2 and below
/// that have a `Balanzas` row, with the month's closing balance, its absolute
/// value, whether it runs against the nature, and `ConMovtos`.
void LlenaSeleccionDetalleTmp(Sesion& s, int mes);

/// Copies every row of `SeleccionDetalle`, of all months, to
/// `SeleccPreviaCtasBalTmp`.
void GuardaSeleccionPrevia(Sesion& s);

/// Rules 1 (`contraNat` false) and 7 (true): registers every candidate of the
/// integration account on that side of its nature whose absolute balance is
/// at least `monto`, largest first.
void SeleccionaCuentasPorSaldo(Sesion& s, long idCriterio, Moneda monto, const std::string& ctaIntegracion, int mes,
                               bool contraNat);

/// Rules 2 and 8: registers candidates, largest absolute balance first (ties
/// by account), until the running signed sum passes `objetivo` in absolute
/// value; the row that passes it is registered too.
void SeleccionaCuentasPorPorcentaje(Sesion& s, long idCriterio, Moneda objetivo, const std::string& ctaIntegracion,
                                    int mes, bool contraNat);

/// Rule 4: registers again, with the new balance, each account chosen by hand
/// for the integration account in any month that is still a candidate.
void SeleccionaCuentasManuales(Sesion& s, const std::string& ctaIntegracion, int mes);

/// Rule 10: registers again the accounts drawn before that are still
/// candidates; in the last review month alone, tops the sample up to
/// `Porcentaje` % of its population by a draw of at least three accounts,
/// writes the new `Descripcion` and records the draw in `HistorialSorteos`.
void SeleccionaCuentasAleatorias(Sesion& s, const std::string& ctaIntegracion, int mes,
                                 const std::string& descripcion, double porcentaje,
                                 const FuenteSemilla& semillas = SemillaDelReloj());

// ------------------------------------------------------------- Look-ups

/// "Saldo Mayor a" for rule 1, "% del total de la cuenta" for rule 2, and an
/// empty text for any other rule or when no rule of that number exists for
/// the integration account in any month.
std::string NombreCriterioCuentas(Sesion& s, long idCriterio, const std::string& ctaIntegracion);

/// Sum of `SaldoFin` of the candidates whose code starts with the integration
/// account, on the given side of their nature; 0 when there is none.
Moneda TotalSaldosCuentaIntegracion(Sesion& s, const std::string& ctaIntegracion, bool contraNat);

/// Sum of `Saldo` of the rule's rows of the month that are selections and not
/// remarks (`VerObs` 0); 0 when there is none.
Moneda TotalSeleccionadoCriterio(Sesion& s, long idCriterio, const std::string& ctaIntegracion, int mes);

/// `Naturaleza` of the account in `Cuentas`; empty when it is not there.
std::string NaturalezaDeCuenta(Sesion& s, const std::string& cuenta);

/// Positions, counted from 1, of each occurrence of `separador` in `texto`.
std::vector<int> PosicionesDeSeparador(const std::string& texto, const std::string& separador);

// ------------------------------------------------- The texts of the rules

/// Percentage covered by a rule by percentage: |100 × selected / total|,
/// 0 for a total of 0, rounded to two decimals with halves to the even digit.
double PorcentajeSeleccionado(Moneda seleccionado, Moneda total);

/// "el 62.5 % de $1,600.00", and for rule 8 the words about the sign.
std::string DescripcionPorcentaje(double porcentaje, Moneda total, bool contraNat);

/// What rule 10 keeps in its `Descripcion` besides the figures. "<" in the
/// text stands before the amount a balance must exceed (`inferior`), ">"
/// before the amount it must stay under (`superior`); 0 is no limit.
struct LimitesAleatoria {
    bool saldoAnterior = false;  // the text ends in "Sdo.Ant.": population by balance, not by movements
    Moneda inferior;
    Moneda superior;
};

/// Reads the limits and the mark back out of a rule 10 text.
LimitesAleatoria LeeDescripcionAleatoria(const std::string& descripcion);

/// "Aleatoria del P%, S cuentas de M" with ", < inferior" and ", > superior"
/// when not 0. The "Sdo.Ant." mark is never written.
std::string DescripcionAleatoria(int porcentaje, long muestra, long poblacion, const LimitesAleatoria& limites);

/// Sample size: porcentaje × poblacion / 100, halves to the even number.
long MuestraAleatoria(int porcentaje, long poblacion);

}  // namespace velmorant
