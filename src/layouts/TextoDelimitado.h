#pragma once
// The readers of the delimited text importer: chart of accounts, opening
// balances, vouchers and prior-year closing balances, each from a text file
// whose columns are split by a delimiter text, with the columns of a layout
// record (only the `PIni...` members, as 1-based column numbers).
//
// The readers write only to the run's temporary stores (attached to the
// session's company connection) and to the inconsistency log; each works
// inside one transaction of its own. A line that cannot be read shows its
// messages through the session, rolls the reader's rows back and throws
// ErrorLectura naming the file and the line: the run stops there, before
// anything is committed, and the program ends without a further message.

#include <optional>
#include <string>
#include <vector>

#include "layouts/Configuraciones.h"
#include "platform/Fecha.h"
#include "session/Sesion.h"

namespace velmorant {

/// How the files of a run are read: the delimiter text (used whole, of any
/// length; "\t" for tabs), whether the first line of every file holds
/// titles (`Titulos`), and the layout.
struct LecturaDelimitada {
    std::string separador = "^";
    bool Titulos = true;
    EstructuraDatosTxt config;
};

/// Lines of the file, for the progress bar; 0 when it is empty or missing.
long CuentaLineasArchivo(const std::string& ruta);

/// The parts of a line split at every occurrence of `separador`, compared
/// without case; no quoting rule. An empty line has no parts.
std::vector<std::string> DivideLinea(const std::string& linea, const std::string& separador);

/// The part in 1-based `columna`, trimmed of spaces; empty for 0 or a
/// column beyond the parts.
std::string CampoColumna(const std::vector<std::string>& partes, int columna);

/// Amount text as all readers clean it: empty gives `vacio`; a text that is
/// not numeric and holds a "-" is cut to start at it.
std::string LimpiaImporte(const std::string& texto, const std::string& vacio);

/// Fills `Cuentas` of `CuentasTmp` from the chart file. The balance comes
/// from `PIniSdoIni` only when no opening-balance file was chosen. A missing
/// file says "No se pudo encontrar el archivo " and the path and reads nothing.
void ImportaCatalogoTexto(Sesion& s, const std::string& ruta, const LecturaDelimitada& l,
                          bool conArchivoSaldosIniciales);

/// Sets `Saldo` of the `CuentasTmp` accounts listed in the opening-balance
/// file; accounts not in the chart are skipped. An empty file says "El
/// archivo de Saldos Iniciales está vacío." and reads nothing.
void ImportaSaldosInicialesTexto(Sesion& s, const std::string& ruta, const LecturaDelimitada& l);

/// Adds the file's vouchers to `Polizas_Tmp` and their lines to
/// `Polizas_Detalle_Tmp`, grouping lines by number, type and date across
/// files; lines on accounts missing from `CuentasTmp` are logged once per
/// account and kept. A missing file reads nothing, quietly.
void ImportaPolizasTexto(Sesion& s, const std::string& ruta, const LecturaDelimitada& l);

/// Adds one `CuentasTmp` row with `SaldoFinAnioAnt` per line of the
/// prior-year file, logging the accounts the company's chart holds. An empty
/// file says "El archivo está vacío: " and the path.
void ImportaSaldosAnioAntTexto(Sesion& s, const std::string& ruta, const LecturaDelimitada& l);

/// The preview grid of a file in the parameter form: columns "Columna 1"...
/// as many as the first non-empty line has parts, and one row per non-empty
/// line, filled (each cell cut to 255 characters) only when the line has as
/// many parts as the first. A line without the delimiter shows "El archivo "
/// path " no se encuentra delimitado por el caracter que indico." and ends
/// the program (ErrorLectura naming the file and line).
struct VistaPrevia {
    std::vector<std::string> columnas;
    std::vector<std::vector<std::string>> filas;  // an empty row stands for a line of another shape
};
VistaPrevia VistaPreviaTexto(Sesion& s, const std::string& ruta, const std::string& separador);

/// `IdPoliza` of the voucher in `Polizas_Tmp` with that number, type and
/// date; 0 when there is none.
long BuscaPolizaTmp(Sesion& s, const std::string& poliza, const std::string& tipo, const Fecha& fecha);

/// The highest `Partida` of the voucher's lines in `Polizas_Detalle_Tmp`;
/// 0 when it has none.
int UltimaPartidaTmp(Sesion& s, long idPoliza);

}  // namespace velmorant
