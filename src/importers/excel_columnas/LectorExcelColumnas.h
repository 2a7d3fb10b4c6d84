#pragma once
// The readers of the workbook importer (link 102): chart of accounts,
// opening balances, vouchers and prior-year closing balances, each from the
// first sheet of an .xlsx or .xls file, with the columns of a layout record
// (the `PIni...` members, as 1-based column numbers).
//
// A sheet's first row always names its columns and is never data. The
// title flag (`Titulos`) drops, besides, the first row under it in the
// chart and balance sheets; the voucher sheets read every row. The lines
// of the vouchers follow those of the delimited importer (Movimiento,
// TextoFecha), with a thirteenth month of closing vouchers.

#include <string>

#include "importers/DestinoTmp.h"
#include "importers/VistaPrevia.h"
#include "layouts/Configuraciones.h"
#include "session/Sesion.h"

namespace velmorant {

/// How the workbooks of a run are read: the title flag and the layout.
struct LecturaExcel {
    bool Titulos = true;
    EstructuraDatosTxt config;
};

/// The run's writer as this importer stores: descriptions cut to 60
/// characters, the voucher type cut to 10 before a line looks for its
/// voucher, so that the search and the store use the same text.
ReglasDestino ReglasExcelColumnas();

/// "Mes 13" for 13, the month's name otherwise.
std::string NombreMesExcel(int mes);

/// The month words of a date text in English that the host reads in
/// Spanish: the text upper-cased and the first of "JAN", "APR", "AUG",
/// "DEC" that it holds replaced, once, by "ENE", "ABR", "AGO", "DEC". The
/// last word maps to itself, so a December written "DEC" is not read.
std::string TraduceMesFecha(const std::string& fecha);

/// Fills `Cuentas` of `CuentasTmp` from the chart sheet; the balance comes
/// from `PIniSdoIni` only when no opening-balance file was chosen. A missing
/// file says "No se pudo encontrar el archivo " and the path and reads nothing.
void ImportaCatalogoExcel(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaExcel& l,
                          bool conArchivoSaldosIniciales);

/// Sets `Saldo` of the `CuentasTmp` accounts the opening-balance sheet
/// lists; accounts not in the chart are skipped, a balance that is not a
/// number fails its row.
void ImportaSaldosInicialesExcel(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaExcel& l);

/// Adds the sheet's vouchers and lines, grouping lines by number, type and
/// date across files. `mes` 13 reads the closing vouchers: each is dated
/// December 31 of the fiscal year, whatever the sheet says, and flagged
/// `Poliza_Mes13`. A row that cannot be read shows "Error al leer la fila: "
/// and its number and stops the run. A missing file reads nothing, quietly.
void ImportaPolizasExcel(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaExcel& l, int mes,
                         const std::string& etiqueta);

/// Adds one `CuentasTmp` row with `SaldoFinAnioAnt` per row of the
/// prior-year sheet, logging the accounts that the company's chart lacks.
void ImportaSaldosAnioAntExcel(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaExcel& l);

/// The preview grid of a workbook in the parameter form: one column
/// "Columna N" per column of the sheet, every row under the header copied,
/// an empty cell empty.
VistaPrevia VistaPreviaExcel(const std::string& ruta);

}  // namespace velmorant
