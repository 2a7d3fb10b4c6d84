#pragma once
// The link selector's rules: whether the company was imported before, by
// which ContPAQ i link, and whether the link chosen may be followed.

#include <string>

#include "session/Sesion.h"

namespace velmorant {

/// The two ContPAQ i links, which exclude each other.
inline constexpr int kEnlaceContPaqIAnterior = 36;
inline constexpr int kEnlaceContPaqIMejorado = 95;

/// True when the company's chart (`Cuentas` of `DbEmpresa`) has rows: the
/// company has been imported before. False when the database is not open.
bool HayCatalogo(Sesion& s);

/// Reads `IdSistema` of the company's row in `DbEmpresas`: "Anterior" for
/// link 36, "Mejorado" for link 95, an empty text otherwise (or no row).
std::string EnlaceAnterior(Sesion& s);

/// The rule of `DespachaEnlace` for the link chosen: sets `IdSistemaElegido`
/// and answers true when its importer may open. A company imported through
/// one ContPAQ i link stays with it: the other one is refused, after its
/// message, and answers false.
bool AceptaEnlace(Sesion& s, int idSistema);

}  // namespace velmorant
