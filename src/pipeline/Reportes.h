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
    std::vector<std::vector<std::string>> filas;      // display texts, one per column

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
/// The same for `InconsisImpTmpDet` ("SELECT * FROM InconsisImpTmpDet").
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
/// CSV in UTF-8: title, company name, date (and the other variables when
/// not empty), a blank line, then the field names and the rows.
void GuardaReporteCsv(const Reporte& r, const std::string& ruta);

/// The templates the system ships, installed by CreaBase when missing.
const std::string& PlantillaResumenPredeterminada();
const std::string& PlantillaDetallePredeterminada();
/// Writes the shipped templates into `carpetaBase` where they are missing;
/// a firm's edited template is never overwritten.
void InstalaPlantillasReporte(const std::string& carpetaBase);

}  // namespace velmorant
