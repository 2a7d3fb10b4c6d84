#pragma once
// A workbook as a record source: the rows of one sheet of an .xlsx or .xls
// file, the way the legacy program saw them through its spreadsheet
// driver: the sheet's used area (or a stated range such as "$A7:L", which
// skips a report's heading rows), its first row taken as the columns'
// names, then one row per sheet row down to the last that holds a value,
// blank rows included. Numbers come as their exact decimal text, dates as
// dates with their time of day, empty cells as null cells.
//
// The kind of file is told by its content, not its name: a zip package is
// read as .xlsx, a compound document as .xls. A formula whose result the
// file does not hold in a readable form is an error naming the file and
// the cell, never a blank: an .xlsx saved without calculating, or any
// formula of an .xls (the library that reads them does not deliver their
// results).

#include <memory>
#include <string>
#include <vector>

#include "platform/fuentes/FuenteRegistros.h"

namespace velmorant {

struct OpcionesLibro {
    /// The sheet to read, by name; empty: the workbook's first sheet.
    std::string hoja;
    /// The area to read: first cell, then after ":" the last column and
    /// optionally the last row ("A7:L", "$A8:L", "B2:F100", "A5"; "$"
    /// ignored). Columns of the row count from the first column of the
    /// range. Empty: the sheet's used area, from its first row and first
    /// column holding a value.
    std::string rango;
    /// The first row of the area holds the columns' names (the legacy
    /// opened every workbook so); with it off that row is data.
    bool encabezado = true;
};

class FuenteLibro : public FuenteRegistros {
public:
    /// Opens the workbook and surveys the sheet; throws ErrorLectura naming
    /// the file when it cannot be opened, is not a workbook, is damaged or
    /// protected, lacks the sheet, or holds a formula without a readable
    /// result inside the area (then naming the cell and its row).
    explicit FuenteLibro(std::string ruta, OpcionesLibro opciones = {});
    ~FuenteLibro() override;
    FuenteLibro(const FuenteLibro&) = delete;
    FuenteLibro& operator=(const FuenteLibro&) = delete;

    bool siguiente(Fila& fila) override;
    const std::string& ruta() const override { return ruta_; }
    /// The rows `siguiente` will give, counted when the file was opened.
    long totalEstimado() const override;
    /// The header row's cells as text, one per column of the area; empty
    /// without a header.
    std::vector<std::string> nombresColumnas() const override;
    /// "archivo X, fila N", N the sheet's own row number.
    std::string lugar(const Fila& fila) const override;

    /// The name of the sheet being read.
    const std::string& nombreHoja() const;
    /// Every worksheet's name, in the workbook's order.
    const std::vector<std::string>& hojas() const;

private:
    struct Estado;
    std::string ruta_;
    std::unique_ptr<Estado> e_;
};

/// The name of a workbook's first sheet; "" when the file cannot be read as
/// a workbook.
std::string PrimeraHojaExcel(const std::string& ruta);

}  // namespace velmorant
