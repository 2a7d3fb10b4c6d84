#pragma once
// The readers of the fixed-position text importer (link 25): the chart of
// accounts and one voucher file per month, each field at the character
// position and of the length its layout record gives (both members of each
// pair). A field is the text at that place of the line, trimmed of spaces;
// a place beyond the end of the line gives an empty text.
//
// The line rules are those of the delimited importer, with the ways of this
// source: every non-empty line is data (no title row), the chart pads a code
// that holds the separator before taking the separator out, a line without
// a readable level keeps the level of the line before, the indicator of
// debit or credit is taken untrimmed (a blank means credit), direction and
// amount texts start afresh on every line, each line's concept goes beside
// its reference, the voucher type is kept whole, and a date that cannot be
// converted is a fault of the line, which ends the run.
//
// Each reader walks its file with the shared row loop (importers/Recorrido.h)
// and hands its records to the run's writer.

#include <string>
#include <vector>

#include "importers/DestinoTmp.h"
#include "importers/VistaPrevia.h"
#include "layouts/Configuraciones.h"
#include "session/Sesion.h"

namespace velmorant {

/// The run's writer as this importer stores: descriptions and voucher types
/// whole, and `IdPoliza` from the importer's own counter (`contadorIdPoliza`,
/// which must outlive the run).
ReglasDestino ReglasTextoFijo(long* contadorIdPoliza);

/// Fills `Cuentas` of `CuentasTmp` from the chart file; the opening balance
/// comes from the layout's `PIniSdoIni` field. A missing file says "No se
/// pudo encontrar el archivo " and the path and ends the run (ErrorLectura).
void ImportaCatalogoFijo(Sesion& s, DestinoTmp& d, const std::string& ruta, const EstructuraDatosTxt& c);

/// Adds the vouchers and lines of one month file, grouping lines by number,
/// type and date across files; lines on accounts missing from `CuentasTmp`
/// are logged once per account and kept. A line whose date cannot be
/// converted shows the error report and "Error al leer la línea: " with the
/// line, rolls the file's rows back and throws ErrorLectura naming file and
/// line. A missing file says so and ends the run as well. `etiqueta` is the
/// progress caption.
void ImportaPolizasFijo(Sesion& s, DestinoTmp& d, const std::string& ruta, const EstructuraDatosTxt& c,
                        const std::string& etiqueta = "");

// ------------------------------------------------------------ Preview

/// A field of the preview: its caption and its place in the line.
struct CampoFijo {
    std::string nombre;
    int posicion = 0;
    int largo = 0;
};

/// The fields of the chart and of the voucher files that a layout gives
/// (those with a position and a length), in the order of the record.
std::vector<CampoFijo> CamposCatalogoFijo(const EstructuraDatosTxt& c);
std::vector<CampoFijo> CamposPolizasFijo(const EstructuraDatosTxt& c);

/// The non-empty lines of a file, decoded, at most `maximo` of them; none
/// when the file is missing.
std::vector<std::string> LineasTextoFijo(const std::string& ruta, size_t maximo = 2000);

/// The preview grid: a first column "Línea" with each line as it stands,
/// then one column per field with the text the reader would take there.
VistaPrevia VistaPreviaTextoFijo(const std::vector<std::string>& lineas, const std::vector<CampoFijo>& campos);

/// A ruler of character positions as wide as `largo`: a line of tens over a
/// line of units, for the head of the preview's first column.
std::string ReglaPosiciones(size_t largo);

}  // namespace velmorant
