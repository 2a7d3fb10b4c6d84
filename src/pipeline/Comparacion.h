#pragma once
// Comparison of a re-import with the company's stored vouchers. Before the
// vouchers are replaced, these steps tell voucher by voucher and line by line
// what the new source changes: vouchers dropped, vouchers new, fields
// changed, lines dropped, changed or added. They never write to `Polizas` or
// `Polizas_Detalle`: their only results are rows of the log (source
// "Pólizas") and the `Revisado` mark in `Polizas_Tmp`.
//
// "Old" is the company's `Polizas`/`Polizas_Detalle` in `Sesion::DbEmpresa`;
// "new" is `Polizas_Tmp`/`Polizas_Detalle_Tmp`, attached to that connection.
// A voucher pairs by its key: in months "01" to "12" number, type and date;
// in "13" number, type, a December date and the month-13 flag. When two
// vouchers share a key, the first one in table order is the partner.
//
// Each step takes the month as two-digit text ("01" to "12", or "13") and
// reports progress through `Sesion::progreso` when it is set. For one month
// they run in this order: ComparaPolizas, ComparaPolizasNuevas,
// ComparaPartidasNuevas (the second reads the marks the first sets).

#include <string>

#include "session/Sesion.h"

namespace velmorant {

/// Walks the month's old vouchers: logs the ones dropped ("B"), the changes
/// of concept, date and lines of the paired ones ("C"), and marks each new
/// partner `Revisado`. Reads all months of `Polizas_Tmp` as partners.
void ComparaPolizas(Sesion& s, const std::string& mes);

/// Logs "Póliza nueva." ("A") for each new voucher of the month not
/// `Revisado`, unless the company had no voucher in that month.
void ComparaPolizasNuevas(Sesion& s, const std::string& mes);

/// For each new voucher of the month with an old partner, logs the lines past
/// the old line count whose account the old voucher does not have ("C").
void ComparaPartidasNuevas(Sesion& s, const std::string& mes);

}  // namespace velmorant
