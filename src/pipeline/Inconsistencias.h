#pragma once
// The inconsistency log (`InconsisImpTmp`): every step that finds a fault, a
// change or a loss writes one row and goes on.

#include <optional>
#include <string>
#include <vector>

#include "platform/Fecha.h"
#include "session/Sesion.h"

namespace velmorant {

/// Codes of `FuenteError`.
enum FuenteInconsistencia { kFuenteCatalogo = 1, kFuenteSaldosIniciales = 2, kFuentePolizas = 3 };

/// Writes one row through `s.DbInconsistencias`. With a date, `poliza` is
/// cleaned with QuitaCaracteresEspeciales; without, it is stored as given and
/// `Fecha` stays Null. `Cuenta_Fmtda` is FormateaCuenta(cuenta) when the
/// company has a separator. A text longer than its field is a fault of the
/// data, not of the run: it is stored cut to the field's width, its last
/// character a "…" (CortaAlAncho). Throws when the log is not open.
void RegistraInconsistencia(Sesion& s, const std::string& referencia, int fuente, const std::string& clasif,
                            const std::string& poliza, const std::string& tipo, const std::optional<Fecha>& fecha,
                            const std::string& cuenta);

/// True when the log has a row for the account (an account longer than the
/// field is sought as the log stores it).
bool ExisteInconsistenciaCuenta(Sesion& s, const std::string& cuenta);

/// The text within `ancho` characters: unchanged when it fits, else its
/// first `ancho` - 1 characters and "…" (a width of 1 just cuts).
std::string CortaAlAncho(const std::string& texto, size_t ancho);

/// Characters of `Referencia`.
inline constexpr size_t kLargoReferencia = 150;

/// A piece of a finding's text: the system's own words, or a value quoted
/// from the data (a description, a concept, a reference).
struct PiezaReferencia {
    std::string texto;
    bool dato = false;
};
inline PiezaReferencia Dato(std::string t) { return {std::move(t), true}; }

/// The finding within `Referencia`: when the whole is too long, the words
/// stay whole and each quoted value is cut (ending in "…") so that all of
/// them show, "Anterior -> XXXX… Nueva -> YYYY…". The room is shared
/// evenly; a value shorter than its share leaves the rest to the others.
std::string ComponeReferencia(const std::vector<PiezaReferencia>& piezas, size_t ancho = kLargoReferencia);

}  // namespace velmorant
