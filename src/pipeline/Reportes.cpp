#include "pipeline/Reportes.h"

#include <QGuiApplication>
#include <QMarginsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPdfWriter>
#include <QTextDocument>
#include <QUrl>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "accounts/CodigosCuenta.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

namespace {

constexpr const char* kInicioFila = "<!-- INICIO FILA -->";
constexpr const char* kFinFila = "<!-- FIN FILA -->";

// ------------------------------------------------------------ Reading

// A stored value as the report shows it, by the field's type in the log.
std::string TextoDeCampo(const Valor& v, const DefTabla& tabla, const std::string& campo) {
    if (v.esNulo()) return "";
    for (auto& c : tabla.campos) {
        if (c.nombre != campo) continue;
        switch (c.tipo) {
            case TipoCampo::Fecha:
                if (auto f = v.fecha()) return f->ddmmaaaa();
                return v.texto();
            case TipoCampo::Moneda:
                return v.moneda().formatoMoneda();
            case TipoCampo::Booleano:
                return v.booleano() ? "Sí" : "No";
            default:
                return v.texto();
        }
    }
    return v.texto();
}

// A stored value as a spreadsheet takes it: amounts as exact plain numbers,
// anything else as the report shows it.
std::string TextoHojaDeCampo(const Valor& v, const DefTabla& tabla, const std::string& campo) {
    for (auto& c : tabla.campos)
        if (c.nombre == campo && c.tipo == TipoCampo::Moneda && !v.esNulo()) return v.moneda().texto();
    return TextoDeCampo(v, tabla, campo);
}

// Runs the report's query on its own connection to the log, as a second
// reader beside the run's attachment.
void LeeFilas(const std::string& ruta, const std::string& sql, const DefTabla& tabla, Reporte& r) {
    if (!ExisteArchivo(ruta)) {
        for (auto& c : tabla.campos) r.columnas.push_back(c.nombre);
        return;
    }
    BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
    Sentencia st = db.prepara(sql);
    for (int i = 0; i < st.columnas(); ++i) r.columnas.push_back(st.nombreColumna(i));
    while (st.paso()) {
        std::vector<std::string> fila, hoja;
        for (int i = 0; i < st.columnas(); ++i) {
            fila.push_back(TextoDeCampo(st.columna(i), tabla, r.columnas[static_cast<size_t>(i)]));
            hoja.push_back(TextoHojaDeCampo(st.columna(i), tabla, r.columnas[static_cast<size_t>(i)]));
        }
        r.filas.push_back(std::move(fila));
        r.filasHoja.push_back(std::move(hoja));
    }
}

// Readable names of the logs' fields, for a spreadsheet's header. A field
// not listed keeps its name.
const std::vector<std::pair<std::string, std::string>>& TitulosResumen() {
    static const std::vector<std::pair<std::string, std::string>> t = {
        {"Referencia", "Descripción"}, {"FuenteError", "Origen"}, {"ClasifError", "Clase"},
        {"Poliza", "Póliza"},          {"Tipo", "Tipo"},          {"Fecha", "Fecha"},
        {"Cuenta", "Cuenta sin separadores"}, {"Cuenta_Fmtda", "Cuenta"}};
    return t;
}

const std::vector<std::pair<std::string, std::string>>& TitulosDetalle() {
    static const std::vector<std::pair<std::string, std::string>> t = [] {
        std::vector<std::pair<std::string, std::string>> v = {
            {"IdCedAnalitica", "Id. cédula analítica"},
            {"IdCriterio", "Criterio"},
            {"IdPoliza", "Id. póliza"},
            {"Poliza", "Póliza"},
            {"Tipo", "Tipo"},
            {"Fecha", "Fecha"},
            {"Cuenta", "Cuenta sin separadores"},
            {"Cuenta_Fmtda", "Cuenta"},
            {"Referencia", "Referencia"},
            {"TipoMov", "Cargo o abono"},
            {"Importe", "Importe"},
            {"Modificado", "Modificado"},
            {"RefModificada", "Referencia modificada"},
            {"AplicaIVA", "Aplica IVA"},
            {"PorIVA", "Porcentaje de IVA"},
            {"IVA", "IVA"},
            {"AplicaRetISR", "Aplica retención de ISR"},
            {"TasaRetISR", "Tasa de retención de ISR"},
            {"ImpteRetISR", "Retención de ISR"},
            {"AplicaRetIVA", "Aplica retención de IVA"},
            {"TasaRetIVA", "Tasa de retención de IVA"},
            {"ImpteRetIVA", "Retención de IVA"},
            {"Observaciones", "Observaciones"},
            {"Sugerencias", "Sugerencias"},
            {"MovtoExistente", "Movimiento existente"}};
        for (int i = 1; i <= 7; ++i) v.push_back({"Marca" + std::to_string(i), "Marca " + std::to_string(i)});
        return v;
    }();
    return t;
}

void PonTitulos(Reporte& r, const std::vector<std::pair<std::string, std::string>>& titulos) {
    r.titulos.clear();
    for (auto& c : r.columnas) {
        std::string t = c;
        for (auto& [campo, titulo] : titulos)
            if (campo == c) t = titulo;
        r.titulos.push_back(t);
    }
}

std::string LeeArchivo(const std::string& ruta) {
    std::ifstream f(ruta, std::ios::binary);
    if (!f) throw std::runtime_error("No se pudo leer " + ruta);
    std::ostringstream o;
    o << f.rdbuf();
    return o.str();
}

// The variables and the rows of one log.
Reporte Lee(Sesion& s, const std::string& titulo, const std::string& log, const std::string& sql,
            const DefTabla& tabla) {
    Reporte r;
    r.titulo = titulo;
    r.variables = {{"NombreEmp", s.NombreEmpresa},
                   {"descRevision", ""},
                   {"sTitulo", ""},
                   {"impFecha", FechaReporte(s.FechaSesion)}};
    LeeFilas(RutaAlmacen(s, log), sql, tabla, r);
    return r;
}

// True when the template is in the base folder; else false after the message.
bool HayPlantilla(Sesion& s, const std::string& plantilla) {
    if (ExisteArchivo(s.RutaBase + plantilla)) return true;
    MsgCritico(s, "El archivo " + plantilla + " fue removido de su ubicación original, favor de llamar a soporte técnico");
    return false;
}

void CargaPlantilla(const Sesion& s, const std::string& plantilla, Reporte& r) {
    r.plantilla = plantilla;
    r.carpetaPlantilla = s.RutaBase;
    r.textoPlantilla = LeeArchivo(s.RutaBase + plantilla);
    r.horizontal = r.textoPlantilla.find("content=\"horizontal\"") != std::string::npos;
}

// ------------------------------------------------------------ Rendering

std::string EscapaHtml(const std::string& t) {
    std::string r;
    for (char c : t) {
        switch (c) {
            case '&': r += "&amp;"; break;
            case '<': r += "&lt;"; break;
            case '>': r += "&gt;"; break;
            case '"': r += "&quot;"; break;
            case '\n': r += "<br>"; break;
            case '\r': break;
            default: r += c;
        }
    }
    return r;
}

void Reemplaza(std::string& texto, const std::string& marca, const std::string& valor) {
    for (size_t p = texto.find(marca); p != std::string::npos; p = texto.find(marca, p + valor.size()))
        texto.replace(p, marca.size(), valor);
}

std::string Marca(const std::string& nombre) { return "{{" + nombre + "}}"; }

// A plain number a spreadsheet reads as such: an optional minus, digits,
// and decimals after a point.
bool EsNumeroPlano(const std::string& t) {
    size_t i = t.size() > 1 && t[0] == '-' ? 1 : 0, digitos = 0;
    bool punto = false;
    for (; i < t.size(); ++i) {
        if (std::isdigit(static_cast<unsigned char>(t[i]))) {
            ++digitos;
        } else if (t[i] == '.' && !punto && digitos > 0 && i + 1 < t.size()) {
            punto = true;
        } else {
            return false;
        }
    }
    return digitos > 0;
}

void LineaCsv(std::ostream& o, const std::vector<std::string>& campos) {
    for (size_t i = 0; i < campos.size(); ++i) o << (i ? "," : "") << CampoCsv(campos[i]);
    o << "\r\n";
}

void EscribeTexto(const std::string& ruta, const std::string& texto) {
    std::ofstream f(ruta, std::ios::binary | std::ios::trunc);
    f << texto;
    f.close();
    if (!f) throw std::runtime_error("No se pudo escribir el archivo " + ruta);
}

std::string Minusculas(std::string t) {
    std::transform(t.begin(), t.end(), t.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return t;
}

}  // namespace

// ------------------------------------------------------------ Model

std::string Reporte::variable(const std::string& nombre) const {
    for (auto& [n, v] : variables)
        if (n == nombre) return v;
    return "";
}

int Reporte::columna(const std::string& nombre) const {
    for (size_t i = 0; i < columnas.size(); ++i)
        if (columnas[i] == nombre) return static_cast<int>(i);
    return -1;
}

std::string FechaReporte(const Fecha& f) {
    static const char* const kMeses[] = {"ene", "feb", "mar", "abr", "may", "jun",
                                         "jul", "ago", "sep", "oct", "nov", "dic"};
    if (f.mes() < 1 || f.mes() > 12) return "";
    std::string dd = (f.dia() < 10 ? "0" : "") + std::to_string(f.dia());
    std::string aaaa = std::to_string(f.anio());
    return dd + "/" + kMeses[f.mes() - 1] + "/" + std::string(aaaa.size() < 4 ? 4 - aaaa.size() : 0, '0') + aaaa;
}

ConteoInconsistencias CuentaInconsistencias(Sesion& s) {
    ConteoInconsistencias c;
    std::string ruta = RutaAlmacen(s, kInconsisImpTmp);
    if (!ExisteArchivo(ruta)) return c;
    BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
    Sentencia st = db.prepara("SELECT ClasifError, COUNT(*) FROM InconsisImpTmp GROUP BY ClasifError");
    while (st.paso()) {
        std::string clase = st.columna(0).texto();
        long n = static_cast<long>(st.columna(1).entero());
        (clase == "A" ? c.nuevas : clase == "C" ? c.cambios : clase == "B" ? c.bajas : c.otras) += n;
    }
    return c;
}

std::string TextoConteoInconsistencias(const ConteoInconsistencias& c) {
    return "Nuevas: " + std::to_string(c.nuevas) + ", con cambios: " + std::to_string(c.cambios) +
           ", dadas de baja: " + std::to_string(c.bajas) + ", otras: " + std::to_string(c.otras) + " (" +
           std::to_string(c.total()) + " en total).";
}

Reporte LeeResumenInconsistencias(Sesion& s) {
    Reporte r = Lee(s, "Resumen de inconsistencias", kInconsisImpTmp,
                    "SELECT I.Referencia, I.FuenteError, I.ClasifError, I.Poliza, I.Tipo, I.Fecha, I.Cuenta, "
                    "I.Cuenta_Fmtda From InconsisImpTmp I",
                    TablaInconsisImpTmp());
    PonTitulos(r, TitulosResumen());
    return r;
}

Reporte LeeDetalleInconsistencias(Sesion& s) {
    Reporte r = Lee(s, "Detalle de inconsistencias", kInconsisImpTmpDet, "SELECT * FROM InconsisImpTmpDet",
                    TablaInconsisImpTmpDet());
    // The log keeps the account bare; show it as the summary does.
    int cuenta = r.columna("Cuenta");
    r.columnas.push_back("Cuenta_Fmtda");
    for (auto* filas : {&r.filas, &r.filasHoja})
        for (auto& fila : *filas) {
            std::string c = cuenta < 0 ? "" : fila[static_cast<size_t>(cuenta)];
            fila.push_back(s.SeparadorEmpresa.empty() || c.empty() ? c : FormateaCuenta(s, c));
        }
    PonTitulos(r, TitulosDetalle());
    return r;
}

// The template is looked for first: without it nothing is read.
bool PreparaResumenInconsistencias(Sesion& s, const std::string& plantilla, Reporte& r) {
    if (!HayPlantilla(s, plantilla)) return false;
    r = LeeResumenInconsistencias(s);
    CargaPlantilla(s, plantilla, r);
    return true;
}

bool PreparaDetalleInconsistencias(Sesion& s, const std::string& plantilla, Reporte& r) {
    if (!HayPlantilla(s, plantilla)) return false;
    r = LeeDetalleInconsistencias(s);
    CargaPlantilla(s, plantilla, r);
    return true;
}

void ResumenInconsistencias(Sesion& s, const std::string& mes, const std::string& plantilla) {
    (void)mes;
    Reporte r;
    if (PreparaResumenInconsistencias(s, plantilla, r) && s.interaccion) s.interaccion->muestraReporte(r);
}

void DetalleInconsistencias(Sesion& s, const std::string& mes, const std::string& plantilla) {
    (void)mes;
    Reporte r;
    if (PreparaDetalleInconsistencias(s, plantilla, r) && s.interaccion) s.interaccion->muestraReporte(r);
}

// ------------------------------------------------------------ Output

std::string HtmlDeReporte(const Reporte& r) {
    std::string html = r.textoPlantilla;
    size_t inicio = html.find(kInicioFila);
    size_t fin = inicio == std::string::npos ? std::string::npos : html.find(kFinFila, inicio);
    if (fin != std::string::npos) {
        size_t desde = inicio + std::string(kInicioFila).size();
        std::string modelo = html.substr(desde, fin - desde), filas;
        for (auto& fila : r.filas) {
            std::string f = modelo;
            for (size_t i = 0; i < r.columnas.size() && i < fila.size(); ++i)
                Reemplaza(f, Marca(r.columnas[i]), EscapaHtml(fila[i]));
            filas += f;
        }
        html.replace(inicio, fin + std::string(kFinFila).size() - inicio, filas);
    }
    for (auto& [nombre, valor] : r.variables) Reemplaza(html, Marca(nombre), EscapaHtml(valor));
    Reemplaza(html, Marca("Registros"), std::to_string(r.filas.size()));
    return html;
}

void GuardaReporteHtml(const Reporte& r, const std::string& ruta) { EscribeTexto(ruta, HtmlDeReporte(r)); }

void GuardaReportePdf(const Reporte& r, const std::string& ruta) {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        throw std::logic_error("Para generar un PDF se necesita una QGuiApplication");
    std::error_code ec;
    std::filesystem::remove(ruta, ec);
    {
        QPdfWriter pdf(QString::fromStdString(ruta));
        pdf.setTitle(QString::fromStdString(r.titulo));
        pdf.setCreator("VELMORANT");
        pdf.setPageLayout(QPageLayout(QPageSize(QPageSize::Letter),
                                      r.horizontal ? QPageLayout::Landscape : QPageLayout::Portrait,
                                      QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter));
        ImprimeReporte(r, pdf);
    }
    if (std::filesystem::file_size(ruta, ec) == 0 || ec)
        throw std::runtime_error("No se pudo escribir el archivo " + ruta);
}

std::string CampoCsv(const std::string& texto) {
    std::string t = texto;
    if (!t.empty() && std::string("=+-@\t\r").find(t.front()) != std::string::npos && !EsNumeroPlano(t))
        t.insert(t.begin(), '\'');
    if (t.find_first_of(",\"\r\n") == std::string::npos && (t.empty() || (t.front() != ' ' && t.back() != ' ')))
        return t;
    std::string r = "\"";
    for (char c : t) r += c == '"' ? std::string("\"\"") : std::string(1, c);
    return r + "\"";
}

void GuardaReporteCsv(const Reporte& r, const std::string& ruta) {
    std::ostringstream o;
    o << "\xEF\xBB\xBF";  // UTF-8 mark, so spreadsheets read the accents
    LineaCsv(o, r.titulos.size() == r.columnas.size() ? r.titulos : r.columnas);
    for (auto& fila : r.filasHoja.size() == r.filas.size() ? r.filasHoja : r.filas) LineaCsv(o, fila);
    EscribeTexto(ruta, o.str());
}

void GuardaReporte(const Reporte& r, const std::string& ruta) {
    std::string ext = Minusculas(std::filesystem::path(ruta).extension().string());
    if (ext == ".html" || ext == ".htm") return GuardaReporteHtml(r, ruta);
    if (ext == ".pdf") return GuardaReportePdf(r, ruta);
    if (ext == ".csv") return GuardaReporteCsv(r, ruta);
    throw std::invalid_argument("El reporte se guarda como .pdf, .html o .csv, no como '" + ext + "'");
}

// ------------------------------------------------------------ Templates

const std::string& PlantillaResumenPredeterminada() {
    static const std::string t = R"(<!DOCTYPE html>
<html>
<head>
<meta charset="utf-8">
<title>Resumen de inconsistencias</title>
<!--
  Reporte de inconsistencias de la importación (VELMORANT).
  El despacho puede modificar esta plantilla: logotipo, encabezado, columnas.
  Para el logotipo, ponga la imagen en esta misma carpeta y escriba, por ejemplo,
  <img src="logo.png" height="50"> donde deba aparecer.
  Las variables y los campos se escriben entre llaves dobles; la fila marcada
  se repite por cada registro. Campos: Referencia, FuenteError, ClasifError,
  Poliza, Tipo, Fecha, Cuenta, Cuenta_Fmtda.
-->
<style>
  body { font-family: "DejaVu Sans", Arial, sans-serif; font-size: 8pt; }
  .empresa { font-size: 12pt; font-weight: bold; }
  .titulo { font-size: 11pt; font-weight: bold; }
  th { background-color: #d9d9d9; font-weight: bold; }
</style>
</head>
<body>
<table width="100%" cellspacing="0" cellpadding="0">
  <tr>
    <td><span class="empresa">{{NombreEmp}}</span></td>
    <td align="right">{{impFecha}}</td>
  </tr>
  <tr><td colspan="2"><span class="titulo">Inconsistencias de la importación</span></td></tr>
  <tr><td colspan="2">{{sTitulo}} {{descRevision}}</td></tr>
</table>
<br>
<table width="100%" border="1" cellspacing="0" cellpadding="3">
  <thead>
    <tr><th>Origen</th><th>Clase</th><th>Póliza</th><th>Tipo</th><th>Fecha</th><th>Cuenta</th><th>Descripción</th></tr>
  </thead>
<!-- INICIO FILA -->
  <tr><td>{{FuenteError}}</td><td align="center">{{ClasifError}}</td><td>{{Poliza}}</td><td>{{Tipo}}</td><td>{{Fecha}}</td><td>{{Cuenta_Fmtda}}</td><td>{{Referencia}}</td></tr>
<!-- FIN FILA -->
</table>
<p>Registros: {{Registros}}</p>
<p>Clases: A alta, B baja, C cambio, D error que afecta lo registrado, O observación.</p>
</body>
</html>
)";
    return t;
}

const std::string& PlantillaDetallePredeterminada() {
    static const std::string t = R"(<!DOCTYPE html>
<html>
<head>
<meta charset="utf-8">
<meta name="orientacion" content="horizontal">
<title>Detalle de inconsistencias</title>
<!--
  Detalle de los registros de cédulas analíticas que no fue posible conservar
  (VELMORANT). El despacho puede modificar esta plantilla: logotipo, encabezado,
  columnas. Para el logotipo, ponga la imagen en esta misma carpeta y escriba,
  por ejemplo, <img src="logo.png" height="50"> donde deba aparecer.
  Las variables y los campos se escriben entre llaves dobles; la fila marcada
  se repite por cada registro. Campos: los de la tabla InconsisImpTmpDet
  (IdCedAnalitica, IdCriterio, IdPoliza, Poliza, Tipo, Fecha, Cuenta, Referencia,
  TipoMov, Importe, Modificado, RefModificada, AplicaIVA, PorIVA, IVA, ...,
  Marca1 a Marca7, Observaciones, Sugerencias, MovtoExistente) y Cuenta_Fmtda,
  la cuenta con los separadores de la empresa.
-->
<style>
  body { font-family: "DejaVu Sans", Arial, sans-serif; font-size: 8pt; }
  .empresa { font-size: 12pt; font-weight: bold; }
  .titulo { font-size: 11pt; font-weight: bold; }
  th { background-color: #d9d9d9; font-weight: bold; }
</style>
</head>
<body>
<table width="100%" cellspacing="0" cellpadding="0">
  <tr>
    <td><span class="empresa">{{NombreEmp}}</span></td>
    <td align="right">{{impFecha}}</td>
  </tr>
  <tr><td colspan="2"><span class="titulo">Registros de cédulas analíticas que no fue posible conservar</span></td></tr>
  <tr><td colspan="2">{{sTitulo}} {{descRevision}}</td></tr>
</table>
<br>
<table width="100%" border="1" cellspacing="0" cellpadding="3">
  <thead>
    <tr><th>Cuenta</th><th>Póliza</th><th>Tipo</th><th>Fecha</th><th>Referencia</th><th>Mov.</th><th>Importe</th><th>Marcas</th><th>Observaciones</th></tr>
  </thead>
<!-- INICIO FILA -->
  <tr><td>{{Cuenta_Fmtda}}</td><td>{{Poliza}}</td><td>{{Tipo}}</td><td>{{Fecha}}</td><td>{{Referencia}}</td><td align="center">{{TipoMov}}</td><td align="right">{{Importe}}</td><td>{{Marca1}} {{Marca2}} {{Marca3}} {{Marca4}} {{Marca5}} {{Marca6}} {{Marca7}}</td><td>{{Observaciones}}</td></tr>
<!-- FIN FILA -->
</table>
<p>Registros: {{Registros}}</p>
</body>
</html>
)";
    return t;
}

void InstalaPlantillasReporte(const std::string& carpetaBase) {
    std::string base = ConSeparadorFinal(carpetaBase);
    for (auto& [nombre, texto] : {std::pair<const char*, const std::string&>{kPlantillaResumen,
                                                                           PlantillaResumenPredeterminada()},
                                  {kPlantillaDetalle, PlantillaDetallePredeterminada()}})
        if (!ExisteArchivo(base + nombre)) EscribeTexto(base + nombre, texto);
}

}  // namespace velmorant
