#pragma once
// The readers of the delimited text importer (link 82): chart of accounts,
// opening balances, vouchers and prior-year closing balances, each from a
// text file whose columns are split by a delimiter text, with the columns
// of a layout record (only the `PIni...` members, as 1-based column numbers).
//
// Each reader walks its file with the shared row loop (importers/Recorrido.h)
// and hands its records to the run's writer: a line that cannot be read
// shows its messages, rolls the reader's rows back and throws ErrorLectura
// naming the file and the line.

#include <string>
#include <vector>

#include "importers/DestinoTmp.h"
#include "importers/VistaPrevia.h"
#include "layouts/Configuraciones.h"
#include "session/Sesion.h"

namespace velmorant {

struct Fila;

/// How the files of a run are read: the delimiter text (used whole, of any
/// length; "\t" for tabs), whether the first line of every file holds
/// titles (`Titulos`), and the layout.
struct LecturaDelimitada {
    std::string separador = "^";
    bool Titulos = true;
    EstructuraDatosTxt config;
    /// Charts and balances that must be split by the delimiter on every
    /// line (those of the COI reports): a chart or balance line without it
    /// says the file, ", no está delimitado con el caracter: ( " the
    /// delimiter " )" and stops the reading; a balance line with fewer parts
    /// than the columns the layout reads stops it with ", no contiene los
    /// campos mínimos necesarios para la importación de los Saldos
    /// iniciales.".
    bool exigeDelimitador = false;
};

/// The amount and direction of a voucher line. They live across the lines
/// of a file: a line whose amounts cannot be read keeps those of the line
/// before.
struct Movimiento {
    std::string TipoMov;
    Moneda Importe;
};

/// Reads a line's amount and direction into `m`: by the indicator column
/// ("1" a debit, any other text a credit; empty leaves no direction and 0),
/// or by the debit and credit columns (both zero keeps the direction).
/// Returns the amount text, as the file has it, that could not be read
/// (the line then keeps what `m` held); empty when none.
std::string LeeMovimiento(const EstructuraDatosTxt& c, const Fila& fila, Movimiento& m);

/// The date text of a line: the whole column `PIniDia` when the month or
/// year column is absent, else day "/" month "/" year ("" when one is empty).
std::string TextoFecha(const EstructuraDatosTxt& c, const Fila& fila);

/// The run's writer as this importer stores: descriptions cut to 60
/// characters, the voucher type compared whole and stored cut to 10.
ReglasDestino ReglasTextoDelimitado();

/// Fills `Cuentas` of `CuentasTmp` from the chart file. The balance comes
/// from `PIniSdoIni` only when no opening-balance file was chosen. A missing
/// file says "No se pudo encontrar el archivo " and the path and reads nothing.
void ImportaCatalogoTexto(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaDelimitada& l,
                          bool conArchivoSaldosIniciales);

/// Sets `Saldo` of the `CuentasTmp` accounts listed in the opening-balance
/// file; accounts not in the chart are skipped. An empty file says "El
/// archivo de Saldos Iniciales está vacío." and reads nothing.
void ImportaSaldosInicialesTexto(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaDelimitada& l);

/// Adds the file's vouchers and lines, grouping lines by number, type and
/// date across files; lines on accounts missing from `CuentasTmp` are logged
/// once per account and kept. A missing file reads nothing, quietly.
/// `etiqueta` is the progress caption (the month being read).
void ImportaPolizasTexto(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaDelimitada& l,
                         const std::string& etiqueta = "");

/// Adds one `CuentasTmp` row with `SaldoFinAnioAnt` per line of the
/// prior-year file, logging the accounts the company's chart holds. An empty
/// file says "El archivo está vacío: " and the path.
void ImportaSaldosAnioAntTexto(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaDelimitada& l);

/// The preview grid of a file in the parameter form: columns "Columna 1"...
/// as many as the first non-empty line has parts, and one row per non-empty
/// line, filled (each cell cut to 255 characters) only when the line has as
/// many parts as the first. A line without the delimiter shows "El archivo "
/// path " no se encuentra delimitado por el caracter que indico." and ends
/// the program (ErrorLectura naming the file and line).
VistaPrevia VistaPreviaTexto(Sesion& s, const std::string& ruta, const std::string& separador);

}  // namespace velmorant
