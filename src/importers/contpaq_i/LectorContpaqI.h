#pragma once
// The readers of the text files that ContPAQ i exports (links 36 and 95):
//
//  - CATALOGO.TXT, an account per "C " line by columns (DisenosContpaqI.h):
//    code and parent cut to the levels they use, name, and the nature of
//    the account's type from the store NatContpaq;
//  - CPOLIZAS.TXT, by record marks: a "P " head opens (or finds again) a
//    voucher by number, type and date; its "M1" or "M " lines follow, and
//    "MC" lines add to its concept. Which movement layout a file uses is
//    told by its first movement line;
//  - the trial balance printed to text, read by the columns of its headings
//    "Saldos  Iniciales" and "Saldos  Actuales": the opening balances, and
//    the same report of the prior year for its closing balances.
//
// A file that is not there is said ("No se pudo encontrar el archivo ")
// and the reader ends; a line that cannot be read stops the run naming the
// file and the line.

#include <string>

#include "importers/DestinoTmp.h"
#include "session/Sesion.h"

namespace velmorant::contpaqi {

/// The movement layout of a voucher file.
enum class DisenoPolizas {
    Actual,    // "M1" lines
    Anterior,  // "M " lines
};

/// How the earlier layout codes the kind of a movement.
enum class CodigoTipoMov {
    CeroUno,  // "0" debit, "1" credit
    UnoDos,   // "1" debit, "2" credit
};

/// What the user chose for the vouchers.
struct OpcionesPolizasContpaqI {
    bool incluirUuid = false;       // fiscal folios into the texts
    bool replicaConceptos = false;  // each line's reference is its voucher's concept
    CodigoTipoMov codigoTipoMov = CodigoTipoMov::CeroUno;
};

/// The layout of a voucher file, by its first movement line; the earlier
/// one when no line is a movement.
DisenoPolizas DeterminaDisenoPolizas(Sesion& s, const std::string& ruta);

void ImportaCatalogoContpaqI(Sesion& s, DestinoTmp& d, const std::string& ruta);
void ImportaPolizasContpaqI(Sesion& s, DestinoTmp& d, const std::string& ruta, const OpcionesPolizasContpaqI& o);
/// The opening balances, onto the accounts of the temporary chart.
void ImportaSaldosInicialesContpaqI(Sesion& s, DestinoTmp& d, const std::string& ruta);
/// The closing balances of the prior year's report.
void ImportaSaldosAnioAnteriorContpaqI(Sesion& s, DestinoTmp& d, const std::string& ruta);

/// The amount of a "M1" line's field (column 56 on, or found by its
/// markers): "D" or "H", and the amount rounded to cents; nothing when the
/// field holds no amount. Throws FalloFila for an amount that is not a number.
struct ImporteMovimiento {
    std::string TipoMov;
    Moneda Importe;
};
std::optional<ImporteMovimiento> LeeImporteMovimiento(const std::string& linea);

/// The text of a movement: reference and concept joined by " - " when both
/// have text, by a blank otherwise, trimmed.
std::string TextoMovimiento(const std::string& referencia, const std::string& concepto);

}  // namespace velmorant::contpaqi
