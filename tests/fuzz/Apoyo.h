#pragma once
// What the fuzz targets share: the input written to a file of this process
// (the readers open files by path), a session with a company format and a
// silent front end, the cleaning every reader applies to a row's cells, and
// a check that stops the run with a message when a property fails.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "accounts/CodigosCuenta.h"
#include "platform/fuentes/FuenteRegistros.h"
#include "session/Sesion.h"

namespace velmorant::fuzz {

/// Writes `bytes` to the file `nombre` in this process's own folder and
/// returns its path. The folder is removed when the process ends.
std::string EscribeArchivo(std::string_view bytes, const std::string& nombre);
inline std::string EscribeArchivo(const std::uint8_t* datos, size_t largo, const std::string& nombre) {
    return EscribeArchivo(std::string_view(reinterpret_cast<const char*>(datos), largo), nombre);
}

/// A company with mask "999-99-99" (levels 3, 2, 2, padding on), fiscal
/// year 2024, a front end that answers nothing and no database.
Sesion& SesionFuzz();

/// The format of a mask as the company's structure stores it: the
/// separator is its one character that is not 9, X or A; levels are the
/// runs between separators (one level when there is none).
FormatoCuenta FormatoDeMascara(const std::string& mascara);

/// Every cell of the row through what readers do with a cell: its text,
/// amount and date, the amount cleaning and conversion, the account
/// cleaning in every order on the fuzz company's format.
void UsaFila(const Fila& fila);

/// Ends the run with `que` when `condicion` is false: a property of the
/// code that an input broke.
void Exige(bool condicion, const std::string& que);

}  // namespace velmorant::fuzz
