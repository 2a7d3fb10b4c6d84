#pragma once
// A record source: the rows of a client's file, one at a time, as cells by
// position, each row with its place in the file for messages. Every kind
// of source the importers read (delimited and fixed-width text, workbooks,
// dBase and FoxPro tables, Access and Firebird databases) stands behind
// this one interface, so that a reader mirrors its source's layout and
// never its file format.
//
// Contract of every implementation:
//  - the constructor opens the file and throws ErrorLectura (naming the
//    file, line 0) when it cannot be opened or is not of its kind;
//  - `siguiente` fills the next row and returns false at the end; a row
//    that cannot be decoded throws ErrorLectura naming file and row;
//  - rows come in the file's order; nothing is skipped unless the source's
//    own rules say so (deleted records of a table);
//  - cells are addressed from 1; a position beyond the row is a null cell.

#include <string>
#include <string_view>
#include <vector>

#include "platform/fuentes/Celda.h"

namespace velmorant {

/// One row of a source.
struct Fila {
    std::vector<Celda> celdas;
    /// Line of a text file, row of a sheet (the sheet's own numbering), or
    /// record of a table, from 1.
    long numero = 0;
    /// The line as read (decoded), for text sources; empty otherwise.
    std::string texto;

    /// The cell at `columna` (from 1); a null cell outside the row.
    const Celda& operator[](int columna) const;
    /// The cell's text trimmed of spaces (RecortaEspacios); "" outside.
    std::string campo(int columna) const;
    /// campo() without a copy where the cell holds its text (text, number,
    /// null): a view into the row, good until the row is read again. Any
    /// other cell's text is made in `apoyo`, which the view then shows.
    std::string_view campoVista(int columna, std::string& apoyo) const;
    /// True when every cell is null or blank text.
    bool vacia() const;
};

class FuenteRegistros {
public:
    virtual ~FuenteRegistros() = default;

    /// Fills `fila` with the next row; false at the end of the source.
    virtual bool siguiente(Fila& fila) = 0;
    /// The file (or table) read, as the user named it.
    virtual const std::string& ruta() const = 0;
    /// Rows expected, for a progress bar; 0 when unknown.
    virtual long totalEstimado() const { return 0; }
    /// Names of the columns where the source has them (a table's fields, a
    /// sheet's header row when the source was asked to take it as names);
    /// empty otherwise. Position i names cell i + 1.
    virtual std::vector<std::string> nombresColumnas() const { return {}; }

    /// "archivo X, línea N" (or "fila N", "registro N"): where a row stands,
    /// in the words of the messages.
    virtual std::string lugar(const Fila& fila) const;
    /// What the user should know of how the file was read before its rows
    /// are used (a text file of mixed encoding, NUL bytes left out); empty
    /// when nothing.
    virtual std::string aviso() const { return ""; }
};

}  // namespace velmorant
