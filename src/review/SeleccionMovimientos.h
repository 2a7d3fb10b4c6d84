#pragma once
// Movement selection: after a re-import, the analytic schedule (`CedAnalitica`)
// is saved, emptied and picked again from the new vouchers with the rules of
// `CedAnaliticaMaster`. Movements that the earlier schedule held are found
// first and preferred, so that reviewed work stays in the schedule; the
// restoration of the reviewer's fields follows (CedulaAnalitica.h).
//
// Everything here works on the session's company connection, inside whatever
// transaction its caller holds. The one account's lines of a rule live in
// `SelecPolizas_DetalleTmp`, attached to that connection under its base name
// while the rebuild runs; the saved schedule is `CedAnaliticaTmp`.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Moneda.h"
#include "review/Sorteo.h"
#include "session/Sesion.h"

namespace velmorant {

/// Refreshes `TotalCta` of every `CedAnaliticaMaster` row: column "SdoFin"+mes
/// of the account in `Balanzas`; when that is 0 or the account is absent, the
/// sum of its `Importe` in `Polizas_Detalle`. `mes` is 1 to 13.
void ActualizaTotalCtaAnalitica(Sesion& s, int mes);

/// Rebuilds `CedAnalitica` from the new vouchers with the rules of
/// `CedAnaliticaMaster`, saving it first and bringing the reviewer's work back
/// after. With no rule the schedule is left untouched. Marks `PorRevisar` of
/// each rule's account. Reads `UltimoMesImportado` and `UltimoMesNuevo`.
/// `semillas` seeds the draws of criteria 10 and 11 (the clock in a run).
void ReconstruyeCedulaAnalitica(Sesion& s, const FuenteSemilla& semillas = SemillaDelReloj());

/// Drops a trailing "*" from each `Descripcion` of `CedAnaliticaMaster`
/// (blanks trimmed first; the text left is not trimmed again).
void QuitaMarcaDescripcion(Sesion& s);

/// Copies the account's voucher lines with an amount into the store, with
/// `ImporteAbs` and `SaldoContraNat` by the account's `Naturaleza`.
void LlenaMovimientosCuenta(Sesion& s, const std::string& cuenta);
/// Writes `NumMesFechaPol`, `Poliza`, `Tipo`, `Fecha` of each store row from
/// its voucher in `Polizas`; rows whose voucher is missing keep them Null.
void CompletaDatosPoliza(Sesion& s);
/// Matches the account's saved schedule rows with the store by the seven-part
/// movement key: a matched store row gets `MovRevisado` 1 and the saved row
/// `MovtoExistente` true. Does nothing without the file of `CedAnaliticaTmp`.
void MarcaMovimientosRevisados(Sesion& s, const std::string& cuenta);

// The rules. Each registers store rows into `CedAnalitica`; a row that an
// earlier rule already put there comes in again as a remark (`VerObs` 1).

/// Criteria 1 and 7: rows of normal (7: contrary) sign with `ImporteAbs` at
/// least `importe`. Both store `IdCriterio` 1.
void SeleccionaMovimientosPorImporte(Sesion& s, Moneda importe, const std::string& cuenta, bool contraNaturaleza);
/// The percentage walk over months `mesInicial`..`mesFinal`: reviewed rows
/// first, then by size, until the signed sum crosses `objetivo`; rows of an
/// already reviewed month that the earlier schedule did not hold are skipped.
void SeleccionaMovimientosPorPorcentaje(Sesion& s, Moneda objetivo, const std::string& cuenta, int mesInicial,
                                        int mesFinal, int idCriterio, bool contraNaturaleza);
/// Criterion 4: every row with an amount, largest first.
void SeleccionaTodosLosMovimientos(Sesion& s, const std::string& cuenta, int idCriterio);
/// Criteria 5 (debits) and 6 (credits): the walk by kind up to `porcentaje`
/// of the kind's total, stopping at the first unusable row; rewrites the
/// rule's `Porcentaje`, `TotalCta` and `Descripcion`.
void SeleccionaMovimientosPorTipo(Sesion& s, const std::string& cuenta, double porcentaje, int idCriterio);
/// Criterion 9: the rows matched with the earlier schedule, up to `ultimoMes`.
void SeleccionaMovimientosRevisados(Sesion& s, const std::string& cuenta, int idCriterio, int ultimoMes);
/// Criterion 10: earlier rows of normal sign, then a sample of the new months,
/// drawn as the account samples are and recorded in `HistorialSorteos`.
void SeleccionaMovimientosAleatorios(Sesion& s, double porcentaje, const std::string& cuenta, int idCriterio,
                                     int ultimoMesImportado, int ultimoMesNuevo, const std::string& descripcion,
                                     const FuenteSemilla& semillas = SemillaDelReloj());
/// Criterion 11: as 10 over all signs, optionally debits or credits only;
/// rows are added without remarks.
void SeleccionaMovimientosAleatoriosTipo(Sesion& s, double porcentaje, const std::string& cuenta, int idCriterio,
                                         int ultimoMesImportado, int ultimoMesNuevo, const std::string& descripcion,
                                         const FuenteSemilla& semillas = SemillaDelReloj());

/// Criteria 2 and 8 whole: one or two percentage walks across
/// `UltimoMesImportado`, then the rule's `Porcentaje`, `TotalCta` and
/// `Descripcion` rewritten with what was reached (the next re-import takes
/// that percentage as its input).
void SeleccionaMovimientosPorcentajeCuenta(Sesion& s, const std::string& cuenta, int idCriterio, double porcentaje,
                                           Moneda totalCta);
/// Criterion 3 whole: one walk per month named in `descripcion`.
void SeleccionaMovimientosMensuales(Sesion& s, const std::string& cuenta, const std::string& descripcion);

/// The months and percentage texts of a "Selección mensual" text.
struct MesesDescripcion {
    std::vector<int> meses;
    std::vector<std::string> porcentajes;
};
MesesDescripcion LeeMesesDescripcion(const std::string& descripcion);

/// "Saldo Mayor a", "% del total de la cuenta", ... for criteria 1 to 6 of the
/// account's rule; empty for other numbers and when the account has no such rule.
std::string NombreCriterioMovimientos(Sesion& s, int idCriterio, const std::string& cuenta);
/// A field (`Poliza`, `Tipo`, `Fecha`...) of the voucher as text; empty when
/// the voucher is missing or the field Null. A date is ISO text.
std::string DatoDePoliza(Sesion& s, std::int64_t idPoliza, const std::string& campo);

}  // namespace velmorant
