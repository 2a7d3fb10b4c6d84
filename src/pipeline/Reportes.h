#pragma once
// The reports of the two inconsistency logs. A report is a model (template,
// variables, rows as display texts) that each front end shows its own way;
// the core renders it to HTML, PDF and CSV. Templates are HTML files of the
// base folder that a firm may edit (logo, header, columns):
//   - `{{NombreEmp}}`, `{{descRevision}}`, `{{sTitulo}}`, `{{impFecha}}` and
//     `{{Registros}}` (the row count) are replaced by their values;
//   - the text between `<!-- INICIO FILA -->` and `<!-- FIN FILA -->` is
//     repeated for each row, with `{{Campo}}` replaced by the row's field;
//   - `<meta name="orientacion" content="horizontal">` prints landscape.
// Unknown placeholders stay as written, so a misspelt one shows on paper.

#include <string>
#include <utility>
#include <vector>

#include "platform/Fecha.h"
#include "session/Sesion.h"

class QPagedPaintDevice;

namespace velmorant {

inline constexpr const char* kPlantillaResumen = "054.html";
inline constexpr const char* kPlantillaDetalle = "055.html";

struct Reporte {
    std::string titulo;              // "Resumen de inconsistencias", for a window or a file
    std::string plantilla;           // the template's file name, e.g. "054.html"
    std::string carpetaPlantilla;    // its folder: images of the template are relative to it
    std::string textoPlantilla;      // the template's HTML
    bool horizontal = false;         // landscape pages
    std::vector<std::pair<std::string, std::string>> variables;  // NombreEmp, descRevision, sTitulo, impFecha
    std::vector<std::string> columnas;                // field names, in query order
    std::vector<std::string> titulos;                 // readable Spanish name of each column (CSV header)
    std::vector<std::vector<std::string>> filas;      // display texts, one per column
    /// The rows as a spreadsheet takes them: the display texts but for
    /// amounts, which are exact plain numbers ("-1234.5"). Empty: `filas`.
    std::vector<std::vector<std::string>> filasHoja;

    /// The value of a variable, empty when absent.
    std::string variable(const std::string& nombre) const;
    /// Index of a column by name, -1 when absent.
    int columna(const std::string& nombre) const;
};

/// The rows of `InconsisImpTmp` by `ClasifError`: new in the source ("A"),
/// changed ("C"), gone from it ("B"), and the others (defects "D", remarks
/// of the readers "O", anything else).
struct ConteoInconsistencias {
    long nuevas = 0;
    long cambios = 0;
    long bajas = 0;
    long otras = 0;
    long total() const { return nuevas + cambios + bajas + otras; }
};

/// Counts the log by a connection of its own; a missing log counts nothing.
ConteoInconsistencias CuentaInconsistencias(Sesion& s);
/// "Nuevas: 3, con cambios: 2, dadas de baja: 1, otras: 4 (10 en total)."
std::string TextoConteoInconsistencias(const ConteoInconsistencias& c);

/// "dd/mmm/yyyy" with the Spanish month abbreviation: "05/ene/2024".
std::string FechaReporte(const Fecha& f);

/// The variables and rows of the summary of `InconsisImpTmp` ("SELECT
/// I.Referencia, ... From InconsisImpTmp I"), read by a connection of its
/// own, without a template. A missing log gives a report without rows.
Reporte LeeResumenInconsistencias(Sesion& s);
/// The same for `InconsisImpTmpDet` ("SELECT * FROM InconsisImpTmpDet"),
/// with one more column, `Cuenta_Fmtda`: the account formatted as the
/// summary shows it (separators when the company has them).
Reporte LeeDetalleInconsistencias(Sesion& s);

/// The summary of `InconsisImpTmp` ("SELECT I.Referencia, ... From
/// InconsisImpTmp I"), read by a connection of its own. When the template
/// `RutaBase` + `plantilla` is missing: MsgCritico with the system's words and
/// false. A missing log gives a report without rows.
bool PreparaResumenInconsistencias(Sesion& s, const std::string& plantilla, Reporte& reporte);
/// The same for `InconsisImpTmpDet` ("SELECT * FROM InconsisImpTmpDet").
bool PreparaDetalleInconsistencias(Sesion& s, const std::string& plantilla, Reporte& reporte);

/// Prepares the summary and hands it to the front end's viewer. `mes` is
/// accepted for the callers' sake and has no effect.
void ResumenInconsistencias(Sesion& s, const std::string& mes, const std::string& plantilla);
void DetalleInconsistencias(Sesion& s, const std::string& mes, const std::string& plantilla);

/// The template filled with the variables and rows.
std::string HtmlDeReporte(const Reporte& r);
/// Writes the report by the extension of `ruta`: ".html", ".pdf" or ".csv"
/// (any case). Throws std::invalid_argument for another extension and
/// std::runtime_error when the file cannot be written. PDF needs a
/// QGuiApplication.
void GuardaReporte(const Reporte& r, const std::string& ruta);
void GuardaReporteHtml(const Reporte& r, const std::string& ruta);
void GuardaReportePdf(const Reporte& r, const std::string& ruta);
/// Prints the report on the pages of a PDF writer or a printer already set
/// up (size, orientation, margins): pages are cut between lines of text and
/// between table rows, never inside a row that fits on a page; a table's
/// header rows repeat on each page it goes on to; pages are numbered.
void ImprimeReporte(const Reporte& r, QPagedPaintDevice& dispositivo);
/// CSV in UTF-8 (with its mark) that opens in a spreadsheet as a table: one
/// header row of the columns' readable names, then the rows; amounts as
/// plain numbers. A text that a spreadsheet would take for a formula (it
/// starts with =, +, -, @, a tab or a carriage return and is not a plain
/// number) is written after an apostrophe, so client data never runs.
void GuardaReporteCsv(const Reporte& r, const std::string& ruta);
/// One CSV field: neutralised as above, then quoted when it must be.
std::string CampoCsv(const std::string& texto);

/// The templates the system ships, installed by CreaBase when missing.
const std::string& PlantillaResumenPredeterminada();
const std::string& PlantillaDetallePredeterminada();
/// Writes the shipped templates into `carpetaBase` where they are missing;
/// a firm's edited template is never overwritten.
void InstalaPlantillasReporte(const std::string& carpetaBase);

}  // namespace velmorant
