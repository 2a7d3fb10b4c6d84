#pragma once
// A record source over a dBase or FoxPro table (.DBF): dBase III and IV,
// FoxPro 2.x and Visual FoxPro. Each live record is a row, its fields the
// cells in the order of the header; deleted records are skipped, and a
// row's number is the record's number in the file (deleted ones counted),
// as RECNO() gives it.
//
// Cells by field type:
//   C        text, decoded from the table's code page, trailing blanks cut;
//   V        text of its stored length (Visual FoxPro);
//   N, F     number as exact decimal text, never through floating point,
//            with no trailing zeros ("1234.5"); blank is null; a text that
//            is not a number (an overflow "***") stays a text cell;
//   I        number (32-bit integer);
//   Y        number: the 64-bit count of ten-thousandths as decimal text;
//   B        number: the double written as the shortest decimal text that
//            reads back to it (Visual FoxPro; in dBase IV, B is a binary
//            memo and reads as null);
//   D        date; blank (or zeros) is null; a text that is not a date
//            stays a text cell, for the reader to report;
//   T        date with its time of day (to the second);
//   L        logical value; "?" or blank is null;
//   M        text of the memo (.DBT of dBase III or IV, .FPT of FoxPro);
//            no memo is null;
//   G, P, Q  binary contents, and any other type: null.
// A Visual FoxPro field that can be null reads as null when its bit of the
// hidden _NullFlags field is set; _NullFlags itself is not a column.
//
// A file that is not a table, a header that contradicts itself, a table
// shorter than its header says or a memo pointer outside its memo file
// throw ErrorLectura naming the file (and the record, once reading).

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "platform/fuentes/FuenteRegistros.h"
#include "platform/fuentes/PaginaCodigos.h"

namespace velmorant {

/// A field of a table as its header describes it.
struct CampoDbf {
    std::string nombre;
    char tipo = 'C';
    int largo = 0;
    int decimales = 0;
    int desplazamiento = 0;  // from the start of the record (the deleted flag is byte 0)
    int bitNulo = -1;        // bit of _NullFlags marking null; -1 when it cannot be null
    int bitLargo = -1;       // bit of _NullFlags marking a V field shorter than its width
};

class FuenteDbf : public FuenteRegistros {
public:
    explicit FuenteDbf(const std::string& ruta);

    bool siguiente(Fila& fila) override;
    const std::string& ruta() const override { return ruta_; }
    /// Records of the header, deleted ones included.
    long totalEstimado() const override { return static_cast<long>(registros_); }
    std::vector<std::string> nombresColumnas() const override;
    /// "archivo X, registro N".
    std::string lugar(const Fila& fila) const override;

    /// The visible fields, in the order of the cells.
    const std::vector<CampoDbf>& campos() const { return campos_; }
    /// The code page the texts are decoded from.
    int paginaCodigos() const { return decodificador_.pagina(); }
    /// The memo file read, empty when the table has no memo fields.
    const std::string& rutaMemos() const { return rutaMemos_; }

private:
    enum class Memos { Ninguno, Dbase3, Dbase4, FoxPro };

    std::string ruta_;
    std::ifstream archivo_;
    std::uint32_t registros_ = 0;
    int largoEncabezado_ = 0;
    int largoRegistro_ = 0;
    bool visualFoxPro_ = false;
    std::vector<CampoDbf> campos_;
    int inicioNulos_ = -1, largoNulos_ = 0;  // the _NullFlags field in the record
    DecodificadorPaginaCodigos decodificador_;
    std::uint32_t leidos_ = 0;
    std::string registro_;

    Memos memos_ = Memos::Ninguno;
    std::string rutaMemos_;
    std::ifstream archivoMemos_;
    std::uint64_t largoMemos_ = 0;
    std::uint32_t bloqueMemos_ = 512;

    [[noreturn]] void falla(const std::string& detalle, long registro) const;
    void leeEncabezado(std::uint64_t largoArchivo);
    void abreMemos();
    Celda celda(const CampoDbf& campo, long registro);
    Celda memo(const CampoDbf& campo, std::string_view bytes, long registro);
    bool bitEncendido(int bit) const;
};

}  // namespace velmorant
