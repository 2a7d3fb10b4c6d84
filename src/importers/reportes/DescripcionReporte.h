#pragma once
// The description of a printed report: what tells its lines apart and
// where each field stands, as data that the report engine
// (LectorReporte.h) interprets. One file per importer, in TOML, shipped
// beside the program (docs/reportes.md documents the format); a user can
// change a layout, or try a new one with `velmorant-cli reporte probar`,
// without a new build.
//
// A description is checked whole when it is loaded: an unknown key, a
// value of the wrong kind, a position below 1, a field that names a column
// no heading learns, a class without the fields it needs. Each fault is an
// ErrorDescripcion that names the file and the line.

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velmorant {

/// A description that cannot be used: the message names the file and line.
class ErrorDescripcion : public std::runtime_error {
public:
    ErrorDescripcion(const std::string& archivo, long linea, const std::string& causa);
    const std::string& archivo() const { return archivo_; }
    long linea() const { return linea_; }

private:
    std::string archivo_;
    long linea_;
};

/// Where a field's text is read from a line. Positions count characters
/// from 1; every text read is trimmed of blanks.
struct CampoReporte {
    enum class Forma {
        Ninguna,   // not in the description
        Posicion,  // `en` (and `largo`; 0 to the end of the line)
        Marcador,  // behind the text `tras`, up to `hasta` when it follows, else to the end
        Columna,   // at a position learnt from a heading (`columna`, moved by `desplaza`)
        Decimal,   // the number whose decimal point stands between `desde` and `hasta`
    };
    Forma forma = Forma::Ninguna;
    int en = 0;
    /// Characters read; 0 to the end of the line, or up to the next blank
    /// for a column; kLargoFormato: as long as the company's account format.
    int largo = 0;
    static constexpr int kLargoFormato = -1;
    std::string tras, hasta;
    std::string columna;
    int desplaza = 0;
    /// Column form: amounts stand right-aligned under their heading, so a
    /// text holding "." is read again from the last blank before the column.
    bool alineado = false;
    /// Decimal form: the window of the point, absolute, or relative to
    /// `columna` when it is given.
    int desde = 0, hastaPos = 0;
    long linea = 0;  // of the description, for messages

    bool definido() const { return forma != Forma::Ninguna; }
};

/// A test on a line's text or on the reader's state.
struct Condicion {
    enum class Tipo {
        Texto,          // the text `textos[0]` stands exactly at `en`
        TextoRecortado, // the `largo` characters at `en`, trimmed, equal `textos[0]`
        Contiene,       // one of `textos` is found anywhere in the line
        Empieza,        // the line, without its leading blanks, starts with one of `textos`
        Numerico,       // the `largo` characters at `en`, trimmed, are a number
        Caracter,       // the character at `en` is one of those of `textos[0]`
        Decimal,        // a decimal point with a digit after it stands in [`desde`, `hasta`] (0: anywhere)
        PolizaAbierta,  // a voucher is open (`valor`) or not
        Aprendidas,     // the columns `textos` are known, in that order from left to right
        SinAprender,    // some of the columns `textos` is not known yet
        No,             // `hijas[0]` does not hold
        Alguna,         // one of `hijas` holds
        Todas,          // all of `hijas` hold
    };
    Tipo tipo = Tipo::Texto;
    int en = 0, largo = 0, desde = 0, hasta = 0;
    /// Texto, TextoRecortado, Numerico and Caracter: `en` counts from the
    /// position learnt for this column (0: at it); an unknown column fails.
    std::string columna;
    bool valor = true;
    std::vector<std::string> textos;
    std::vector<Condicion> hijas;
};

/// What a line is.
enum class ClaseLinea {
    Encabezado,    // voucher head
    Concepto,      // the concept of the head before it (concept-on-next-line readers)
    Partida,       // voucher line
    Totales,       // totals of a voucher
    Regla,         // a rule line
    Continuacion,  // a page that carries on the same voucher
    Titulos,       // column headings (positions may be learnt from them)
    Pie,           // other page furniture: titles, page numbers, dates
    Vacia,         // nothing but blanks
    SinClase,      // no class of the description: page furniture
};

/// The name of a class as the descriptions and the preview write it.
const char* NombreClase(ClaseLinea c);

/// One class of lines: how it is recognised and what is read from it.
struct ReglaLinea {
    ClaseLinea clase = ClaseLinea::SinClase;
    long linea = 0;
    /// All must hold; none: the rule takes any line that reaches it.
    std::vector<Condicion> cuando;
    // Voucher head.
    CampoReporte numero, tipo, fecha, concepto;
    /// The concept stands on the next line, here; the voucher is stored then.
    CampoReporte conceptoSiguiente;
    // Voucher line.
    CampoReporte cuenta, referencia, debe, haber;
    // Totals: the voucher is closed.
    bool cierra = false;
    // Headings: columns learnt, each by its name and the spellings searched.
    std::vector<std::pair<std::string, std::vector<std::string>>> aprende;
    /// Learn only when every column is found on the line.
    bool todas = true;
};

struct DescripcionReporte {
    std::string ruta;  // the file it was read from
    int enlace = 0;
    std::string nombre;
    std::string formulario;
    /// Filter of the month files' picker ("description|pattern").
    std::string filtro = "*.txt|*.txt";
    /// How a head finds its voucher: the key of the voucher last stored
    /// (date, number and type joined) must change for a new voucher, or the
    /// vouchers read so far are searched by number, type and date.
    enum class Agrupa { UltimaClave, Busca } agrupa = Agrupa::UltimaClave;
    /// An unknown account logs "La cuenta X no existe en el catálogo"
    /// rather than the common text of the voucher readers.
    bool cuentaNoExisteEnCatalogo = false;
    /// A voucher line that cannot be read is logged, not dropped.
    bool registraDudosas = false;
    /// A code as long as the whole account format is cut to its used levels.
    bool recortaNivel = false;
    /// Month 13 (closing vouchers): every voucher is dated 31/12 of the
    /// fiscal year and marked as of month 13.
    bool mes13 = false;
    /// Every line of the chart and balance files must hold the delimiter
    /// (LecturaDelimitada::exigeDelimitador).
    bool catalogoDelimitado = false;
    std::vector<ReglaLinea> lineas;
};

/// Reads and checks a description. Throws ErrorDescripcion.
DescripcionReporte CargaDescripcion(const std::string& ruta);
/// The same from text already in memory; `ruta` only names it in messages.
DescripcionReporte CargaDescripcionDeTexto(const std::string& texto, const std::string& ruta);

}  // namespace velmorant
