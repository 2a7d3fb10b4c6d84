#pragma once
// The record layouts of the text files that ContPAQ i exports, as data: for
// each record mark, the columns of its fields. Columns count characters from
// 1 on the line trimmed of blanks at both ends; a field runs from `desde`
// through `hasta` (0: to the end of the line) and is read trimmed.
//
//   CATALOGO.TXT   "C "  an account
//   CPOLIZAS.TXT   "P "  a voucher head (its date, type and number are the
//                        first tokens after the mark; see LectorContpaqI)
//                  "M1"  a movement of the current layout
//                  "M "  a movement of the earlier layout
//                  "MC"  more concept text of the voucher being read

#include <string>
#include <string_view>
#include <vector>

namespace velmorant::contpaqi {

struct CampoDiseno {
    const char* nombre;
    int desde;      // first column, from 1
    int hasta = 0;  // last column; 0: to the end of the line
};

struct DisenoRegistro {
    const char* marca;  // columns 1 and 2 of the trimmed line
    std::vector<CampoDiseno> campos;

    const CampoDiseno& campo(std::string_view nombre) const;
};

/// "C ": "cuenta", "nombre", "cuenta-padre", "tipo".
const DisenoRegistro& DisenoCuenta();
/// "P ": "concepto", "uuid".
const DisenoRegistro& DisenoPoliza();
/// "M1": "referencia", "importe", "concepto", "uuid"; the account starts at
/// column 3 and is as long as a whole code of the company.
const DisenoRegistro& DisenoMovimiento();
/// "M ": "cuenta", "referencia", "tipo-mov", "importe", "concepto".
const DisenoRegistro& DisenoMovimientoAnterior();
/// The column where the account of an "M1" line starts.
inline constexpr int kColumnaCuentaMovimiento = 3;

/// The characters `desde` through `hasta` (from 1; 0: to the end) of a
/// UTF-8 text, counted as characters; "" when the text is shorter.
std::string Columnas(std::string_view texto, int desde, int hasta);

/// A field of a line by its layout, trimmed.
std::string Campo(const DisenoRegistro& d, std::string_view linea, std::string_view nombre);

/// The record mark of a trimmed line: its first two characters, with a
/// one-character line padded by a blank.
std::string Marca(std::string_view linea);

}  // namespace velmorant::contpaqi
