#pragma once
// Inside the workbook source: one reader per file format (.xlsx, .xls)
// yields a sheet's rows sparsely, only the cells the file holds, and
// FuenteLibro turns them into the rows of the area a reader asked for.
// Not for use outside src/platform/fuentes.

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/fuentes/Celda.h"

namespace velmorant::libro {

/// One cell as the file holds it. A formula whose result cannot be read
/// (an .xlsx saved without calculating, or any formula of an .xls) is
/// marked so, never delivered as a blank.
struct CeldaHoja {
    int columna = 0;  // from 1
    Celda valor;
    bool formulaSinValor = false;
};

/// A row that holds at least one cell.
struct FilaHoja {
    long numero = 0;                // the sheet's own numbering, from 1
    std::vector<CeldaHoja> celdas;  // ascending columns, each column once
};

class LectorHoja {
public:
    virtual ~LectorHoja() = default;
    /// The next row holding cells, in ascending row order; false at the end.
    /// Throws ErrorLectura naming the file and row for a row that cannot be
    /// decoded.
    virtual bool siguiente(FilaHoja& fila) = 0;
};

enum class FormatoLibro { Xlsx, Xls };

class Libro {
public:
    virtual ~Libro() = default;
    virtual FormatoLibro formato() const = 0;
    /// The worksheets' names in the workbook's order.
    virtual const std::vector<std::string>& hojas() const = 0;
    /// A reader over worksheet `indice` from its first row. Only one reader
    /// of a workbook is in use at a time.
    virtual std::unique_ptr<LectorHoja> abreHoja(size_t indice) = 0;
};

/// Open a workbook of each kind; they throw ErrorLectura naming the file.
std::unique_ptr<Libro> AbreXlsx(const std::string& ruta);
std::unique_ptr<Libro> AbreXls(const std::string& ruta);

// Limits against hostile files.
constexpr long kMaxFilas = 1048576;  // the rows and columns a sheet can have
constexpr int kMaxColumnas = 16384;

/// "No se pudo leer el libro X: <detalle>", for the file and row given.
[[noreturn]] void FallaLibro(const std::string& ruta, const std::string& detalle, long fila = 0);

/// "C7": a cell's name from its row and column (both from 1).
std::string NombreCelda(long fila, int columna);

/// A number as stored in a file ("1E-07", "1234567.89", "5.0") as plain
/// decimal text ("0.0000001", "1234567.89", "5"); nothing when it is not a
/// number. More than 15 significant digits (a binary fraction written out
/// in full, "0.30000000000000004") round to 15, the precision of the
/// spreadsheet and of the legacy conversion to text.
std::optional<std::string> DecimalExacto(std::string_view almacenado);
/// The same for a binary double as an .xls holds it.
std::string DecimalDeDoble(double v);

/// A date cell from a workbook's serial day number (days since 1899-12-30,
/// or since 1904-01-01 in the 1904 system), the fraction giving the time of
/// day; nothing when the serial is not a date the program can hold.
std::optional<Celda> FechaDeSerial(double serial, bool sistema1904);

/// True when a custom number format shows a date or a time of day.
bool EsFormatoFecha(std::string_view formato);

}  // namespace velmorant::libro
