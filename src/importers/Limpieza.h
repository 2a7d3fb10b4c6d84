#pragma once
// How readers clean what a source gives them before it becomes a record:
// account codes (blanks, the company's separator, zero padding, the
// full-length rule) and amounts (the empty text, a sign after a currency
// mark, the range of Currency). The rules are the same for every importer;
// where importers apply them in another order, the order is a named option.

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>

#include "accounts/CodigosCuenta.h"
#include "platform/Fecha.h"
#include "platform/Moneda.h"
#include "session/Sesion.h"

namespace velmorant {

/// A fault of one row of a source: its cause, in Spanish, for the messages
/// of the row loop (importers/Recorrido.h), which add the file and line.
class FalloFila : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The order in which an account code is cleaned.
enum class OrdenLimpieza {
    SeparadorYRelleno,  // separator out, then RellenaCuenta on a numeric code (chart readers)
    RellenoYSeparador,  // RellenaCuenta on a numeric code, then separator out (voucher lines)
    RellenoSiempre,     // RellenaCuenta on any non-empty code, then separator out (workbooks)
    /// A code that holds the separator: RellenaCuenta, then separator out;
    /// then, only with the company's RellenaCtaCeros, RellenaCuenta on a
    /// numeric code (fixed-position charts).
    RellenoConSeparador,
};

/// Removes spaces (and tabs, with `quitaTabuladores`) and cleans the code in
/// the given order. An empty code stays empty, so that its row adds nothing.
std::string LimpiaCuenta(Sesion& s, std::string texto, OrdenLimpieza orden, bool quitaTabuladores);
/// The same on the company's format as a value.
std::string LimpiaCuenta(const FormatoCuenta& f, std::string texto, OrdenLimpieza orden, bool quitaTabuladores);

/// Characters of a whole code: the company's account format without its "-".
size_t LongitudCompleta(const Sesion& s);

/// A code as long as a whole code is cut to the levels it uses
/// (CalculaNivelCuenta, CuentaHastaNivel), and `nivel` becomes that count.
/// Any other code is left alone.
void ReglaLongitudCompleta(Sesion& s, std::string& cuenta, int& nivel);

/// The accounts of one reading's voucher lines: each distinct text of the
/// source cleaned once, by LimpiaCuenta in `orden` and then, with
/// `cortaCompletas`, ReglaLongitudCompleta, as a line reader applies them.
/// A year's lines repeat a few hundred accounts; the rules read the
/// company's format, which does not change while a file is read.
class CuentasDeLineas {
public:
    CuentasDeLineas(Sesion& s, OrdenLimpieza orden, bool cortaCompletas);
    /// The cleaned code; good until the next call.
    const std::string& limpia(std::string_view texto);

private:
    Sesion& s_;
    FormatoCuenta formato_;
    OrdenLimpieza orden_;
    bool cortaCompletas_;
    // Looked up by the field's text as it stands in the row, without a copy.
    struct Hash {
        using is_transparent = void;
        size_t operator()(std::string_view t) const { return std::hash<std::string_view>{}(t); }
    };
    std::unordered_map<std::string, std::string, Hash, std::equal_to<>> hechas_;
    std::string sinGuardar_;  // past the limit: the code of the last call
};

/// Amount text as every reader cleans it: empty gives `vacio`; a text that
/// is not numeric and holds a "-" is cut to start at it.
std::string LimpiaImporte(const std::string& texto, const std::string& vacio);

/// The Currency value of a cleaned amount; nothing when the text is not
/// numeric. A numeric text beyond Currency's range throws FalloFila.
std::optional<Moneda> ConvierteImporte(const std::string& texto);

/// ConvierteImporte(LimpiaImporte(texto, vacio)), without a copy for the
/// plain amounts most files hold ("1234.5", "-0.25", "0").
std::optional<Moneda> ImporteLimpio(std::string_view texto, std::string_view vacio);

/// As ConvierteImporte, but a text that is not numeric throws FalloFila.
Moneda ImporteRequerido(const std::string& texto);

/// An amount a reader could not read and so does not store (a voucher line
/// keeps the amount before it, an account its balance unset): logged for
/// the auditor, naming the place (`lugar`: "archivo X, línea N") and what
/// became of it, so that no amount is lost without a word.
void RegistraImporteIlegible(Sesion& s, const std::string& lugar, const std::string& importe, int fuente,
                             const std::string& consecuencia, const std::string& poliza = "",
                             const std::string& tipo = "", const std::optional<Fecha>& fecha = std::nullopt,
                             const std::string& cuenta = "");

/// The leading whole number of a text, 0 when it has none.
int ValEntero(const std::string& texto);

/// Characters (not bytes) of a UTF-8 text.
size_t LongitudCaracteres(const std::string& texto);

/// The first `caracteres` characters of a UTF-8 text.
std::string Izquierda(const std::string& texto, size_t caracteres);

}  // namespace velmorant
