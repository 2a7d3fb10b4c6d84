#include "pipeline/ConstanciaImportacion.h"

#include "importers/Marco.h"
#include "session/Enlaces.h"

namespace velmorant {

namespace {

std::string Escapa(const std::string& t) {
    std::string r;
    for (char c : t) {
        switch (c) {
            case '&': r += "&amp;"; break;
            case '<': r += "&lt;"; break;
            case '>': r += "&gt;"; break;
            case '"': r += "&quot;"; break;
            case '{': r += "&#123;"; break;  // never read as a placeholder of the template
            case '\n': r += "<br>"; break;
            case '\r': break;
            default: r += c;
        }
    }
    return r;
}

std::string ConMiles(std::uint64_t n) {
    std::string d = std::to_string(n), r;
    for (size_t i = 0; i < d.size(); ++i) {
        if (i > 0 && (d.size() - i) % 3 == 0) r += ',';
        r += d[i];
    }
    return r;
}

// Money as the totals must show it: every decimal the value has (two at
// least), never rounded.
std::string MonedaExacta(Moneda m) {
    std::int64_t d = m.diezmilesimas();
    std::uint64_t a = d < 0 ? 0 - static_cast<std::uint64_t>(d) : static_cast<std::uint64_t>(d);
    std::string frac = std::to_string(a % 10000);
    frac.insert(0, 4 - frac.size(), '0');
    while (frac.size() > 2 && frac.back() == '0') frac.pop_back();
    return std::string(d < 0 ? "-" : "") + "$" + ConMiles(a / 10000) + "." + frac;
}

std::string Cuenta(const std::optional<std::int64_t>& n) {
    return n ? ConMiles(static_cast<std::uint64_t>(std::max<std::int64_t>(*n, 0))) : "—";
}

std::string Fila(std::initializer_list<std::string> celdas, const char* alineacion = nullptr) {
    std::string r = "<tr>";
    size_t i = 0;
    for (const auto& c : celdas) {
        bool derecha = alineacion && alineacion[i] == 'd';
        r += std::string(derecha ? "<td align=\"right\">" : "<td>") + c + "</td>";
        ++i;
    }
    return r + "</tr>\n";
}

std::string Dato(const std::string& nombre, const std::string& valor) {
    return "<tr><td class=\"nombre\">" + Escapa(nombre) + "</td><td>" + Escapa(valor) + "</td></tr>\n";
}

const char* const kEstilo = R"(<style>
  body { font-family: "DejaVu Sans", Arial, sans-serif; font-size: 8pt; }
  .empresa { font-size: 12pt; font-weight: bold; }
  .titulo { font-size: 11pt; font-weight: bold; }
  h3 { font-size: 9pt; margin-top: 10px; margin-bottom: 3px; }
  th { background-color: #d9d9d9; font-weight: bold; }
  td.nombre { font-weight: bold; }
  .huella { font-family: "DejaVu Sans Mono", monospace; font-size: 7pt; }
</style>)";

}  // namespace

std::string NombreMesTotales(int mes) {
    if (mes == 13) return "Mes 13";
    std::string n = NombreDelMes(mes);
    return n.empty() ? "Sin fecha" : n;
}

std::string TextoEnlace(int idSistema) {
    for (const auto& e : EnlacesConocidos())
        if (e.IdSistema == idSistema) return std::to_string(idSistema) + " - " + e.Descripcion;
    return std::to_string(idSistema);
}

Reporte ConstanciaImportacion(const RegistroHistorial& r, const Fecha& impFecha) {
    Reporte rep;
    rep.titulo = kTituloConstancia;
    rep.plantilla = "";
    rep.variables = {{"NombreEmp", r.nombre}, {"descRevision", ""}, {"sTitulo", ""}, {"impFecha", FechaReporte(impFecha)}};

    std::string h = "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>" + std::string(kTituloConstancia) +
                    "</title>\n" + kEstilo + "\n</head>\n<body>\n";
    h += "<table width=\"100%\" cellspacing=\"0\" cellpadding=\"0\"><tr><td><span class=\"empresa\">" +
         Escapa(r.nombre) + "</span></td><td align=\"right\">" + Escapa(FechaReporte(impFecha)) +
         "</td></tr>\n<tr><td colspan=\"2\"><span class=\"titulo\">" + kTituloConstancia + " número " +
         std::to_string(r.id) + "</span></td></tr></table>\n";

    h += "<h3>Datos de la importación</h3>\n<table cellspacing=\"0\" cellpadding=\"2\">\n";
    h += Dato("Empresa", r.nombCorto + " - " + r.nombre);
    h += Dato("Ejercicio", std::to_string(r.ejercicio));
    h += Dato("Operación", r.operacion);
    h += Dato("Enlace", TextoEnlace(r.idSistema));
    h += Dato("Fecha y hora", r.fechaHora);
    h += Dato("Usuario", r.usuario + (r.equipo.empty() ? "" : " en " + r.equipo));
    h += Dato("Programa", "VELMORANT " + r.programa);
    h += Dato("Decisión del usuario", r.decision.empty() ? "—" : r.decision);
    h += Dato("Resultado", r.resultado);
    if (!r.detalle.empty()) h += Dato("Detalle", r.detalle);
    h += Dato("Duración", TextoDuracion(r.duracionMs));
    if (!r.respaldo.empty()) h += Dato("Copia previa de la empresa", r.respaldo);
    if (r.deshace) h += Dato("Deshace la importación", std::to_string(*r.deshace));
    if (r.deshechaPor) h += Dato("Deshecha por", "la operación " + std::to_string(*r.deshechaPor));
    h += "</table>\n";

    // The hash on a line of its own under each file, whole, so that it
    // reads and copies as one word.
    h += "<h3>Archivos</h3>\n<table width=\"100%\" border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n"
         "<thead><tr><th>Papel</th><th>Archivo y huella SHA-256</th><th>Bytes</th></tr></thead>\n";
    for (const auto& a : r.archivos)
        h += "<tr><td rowspan=\"2\">" + Escapa(a.papel) + "</td><td>" + Escapa(a.ruta) + "</td><td align=\"right\">" +
             (a.tamano ? ConMiles(static_cast<std::uint64_t>(*a.tamano)) : "no existe") +
             "</td></tr>\n<tr><td colspan=\"2\" class=\"huella\">" + (a.sha256.empty() ? "—" : Escapa(a.sha256)) +
             "</td></tr>\n";
    if (r.archivos.empty()) h += "<tr><td colspan=\"3\">Sin archivos</td></tr>\n";
    h += "</table>\n";

    if (r.operacion != kOperacionDeshacer) {
        h += "<h3>Registros leídos</h3>\n<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n";
        h += Fila({"Cuentas", Cuenta(r.cuentas)}, "id");
        h += Fila({"Cuentas con saldo inicial", Cuenta(r.saldosIniciales)}, "id");
        h += Fila({"Pólizas", Cuenta(r.polizas)}, "id");
        h += Fila({"Partidas", Cuenta(r.partidas)}, "id");
        if (r.saldosAnioAnterior) h += Fila({"Saldos del año anterior", Cuenta(r.saldosAnioAnterior)}, "id");
        h += "</table>\n";

        h += "<h3>Totales de control de las pólizas leídas</h3>\n"
             "<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n"
             "<thead><tr><th>Mes</th><th>Pólizas</th><th>Partidas</th><th>Cargos</th><th>Abonos</th>"
             "<th>Diferencia</th></tr></thead>\n";
        TotalMesHistorial suma;
        for (const auto& m : r.totales) {
            h += Fila({NombreMesTotales(m.mes), ConMiles(static_cast<std::uint64_t>(m.polizas)),
                       ConMiles(static_cast<std::uint64_t>(m.partidas)), MonedaExacta(m.cargos),
                       MonedaExacta(m.abonos), MonedaExacta(m.cargos - m.abonos)},
                      "idddddd");
            suma.polizas += m.polizas;
            suma.partidas += m.partidas;
            suma.cargos += m.cargos;
            suma.abonos += m.abonos;
        }
        h += Fila({"<b>Total</b>", ConMiles(static_cast<std::uint64_t>(suma.polizas)),
                   ConMiles(static_cast<std::uint64_t>(suma.partidas)), "<b>" + MonedaExacta(suma.cargos) + "</b>",
                   "<b>" + MonedaExacta(suma.abonos) + "</b>", MonedaExacta(suma.cargos - suma.abonos)},
                  "idddddd");
        h += "</table>\n";

        h += "<h3>Inconsistencias por clase</h3>\n<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\">\n";
        const std::pair<const char*, const char*> clases[] = {{"A", "alta"},
                                                               {"B", "baja"},
                                                               {"C", "cambio"},
                                                               {"D", "error que afecta lo registrado"},
                                                               {"O", "observación"}};
        for (const auto& [clase, nombre] : clases) {
            auto it = r.inconsistencias.find(clase);
            h += Fila({std::string(clase) + " " + nombre,
                       ConMiles(static_cast<std::uint64_t>(it == r.inconsistencias.end() ? 0 : it->second))},
                      "id");
        }
        h += "</table>\n";
    }
    h += "<p>La huella SHA-256 de cada archivo permite comprobar que el archivo que se conserva es el mismo que se "
         "importó.</p>\n</body>\n</html>\n";
    rep.textoPlantilla = h;
    return rep;
}

}  // namespace velmorant
