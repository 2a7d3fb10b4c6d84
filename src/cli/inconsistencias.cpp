// inconsistencias [--detalle] [--salida ARCHIVO.pdf|.html|.csv]

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "cli/Comando.h"
#include "pipeline/Reportes.h"

namespace velmorant::cli {
namespace {

// Characters of a UTF-8 text, for lining up columns.
size_t Ancho(const std::string& t) {
    return static_cast<size_t>(std::count_if(t.begin(), t.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

struct Columna {
    const char* campo;
    const char* titulo;
};

// The log as a table on the terminal: the columns that read well, the
// longest text last so that it may run on.
void EscribeTabla(std::ostream& o, const Reporte& r, const std::vector<Columna>& columnas) {
    std::vector<int> indices;
    std::vector<size_t> anchos;
    for (auto& c : columnas) {
        int i = r.columna(c.campo);
        size_t ancho = Ancho(c.titulo);
        for (auto& f : r.filas) ancho = std::max(ancho, i < 0 ? 0 : Ancho(f[static_cast<size_t>(i)]));
        indices.push_back(i);
        anchos.push_back(ancho);
    }
    auto linea = [&](auto texto) {
        std::string l;
        for (size_t k = 0; k < columnas.size(); ++k) {
            std::string t = texto(k);
            l += t;
            if (k + 1 < columnas.size()) l += std::string(anchos[k] - Ancho(t) + 2, ' ');
        }
        o << l << "\n";
    };
    linea([&](size_t k) { return std::string(columnas[k].titulo); });
    linea([&](size_t k) { return std::string(anchos[k], '-'); });
    for (auto& f : r.filas)
        linea([&](size_t k) { return indices[k] < 0 ? std::string() : f[static_cast<size_t>(indices[k])]; });
}

class InconsistenciasComando : public Comando {
public:
    std::string nombre() const override { return "inconsistencias"; }
    std::string resumen() const override { return "Muestra o escribe el reporte de inconsistencias de la última importación."; }
    std::string descripcion() const override {
        return "Muestra las inconsistencias de la última importación (InconsisImpTmp) o, con\n"
               "--detalle, los registros de cédulas analíticas que no fue posible conservar\n"
               "(InconsisImpTmpDet). Con --salida escribe el reporte con la plantilla 054.html\n"
               "o 055.html de la carpeta de la base: PDF, HTML o CSV según la extensión.";
    }
    std::vector<Opcion> opciones() const override {
        return {{"detalle", "", "el detalle de cédulas analíticas perdidas en lugar del resumen"},
                {"salida", "ARCHIVO", "escribe el reporte en ARCHIVO.pdf, ARCHIVO.html o ARCHIVO.csv"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        bool detalle = args.tiene("detalle");
        std::optional<std::string> salida = args.valor("salida");
        if (salida) ValidaExtension(*salida);
        Sesion s;
        IniciaSesionCli(s, ctx);
        if (!salida) {
            Reporte r = detalle ? LeeDetalleInconsistencias(s) : LeeResumenInconsistencias(s);
            Muestra(ctx.salida, r, detalle);
            return kHecho;
        }
        Reporte r;
        std::string plantilla = detalle ? kPlantillaDetalle : kPlantillaResumen;
        bool listo = detalle ? PreparaDetalleInconsistencias(s, plantilla, r)
                             : PreparaResumenInconsistencias(s, plantilla, r);
        if (!listo) return kRehusado;  // the message named the missing template
        try {
            GuardaReporte(r, *salida);
        } catch (const std::runtime_error& e) {
            throw Rehusado(e.what());
        }
        ctx.salida << r.titulo << " de " << s.NombreEmpresa << ": " << r.filas.size() << " registros en " << *salida
                   << "\n";
        return kHecho;
    }

private:
    static void ValidaExtension(const std::string& ruta) {
        std::string ext = std::filesystem::path(ruta).extension().string();
        std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
        if (ext != ".pdf" && ext != ".html" && ext != ".htm" && ext != ".csv")
            throw ErrorUso("--salida: el reporte se escribe como .pdf, .html o .csv ('" + ruta + "')");
    }

    static void Muestra(std::ostream& o, const Reporte& r, bool detalle) {
        o << r.titulo << "\nEmpresa: " << r.variable("NombreEmp") << "\nFecha:   " << r.variable("impFecha")
          << "\n\n";
        if (r.filas.empty()) {
            o << (detalle ? "No hay registros de cédulas analíticas perdidos.\n" : "No hay inconsistencias.\n");
            return;
        }
        if (detalle)
            EscribeTabla(o, r,
                         {{"Cuenta_Fmtda", "Cuenta"}, {"Poliza", "Póliza"}, {"Tipo", "Tipo"}, {"Fecha", "Fecha"},
                          {"TipoMov", "Mov."}, {"Importe", "Importe"}, {"Referencia", "Referencia"}});
        else
            EscribeTabla(o, r,
                         {{"FuenteError", "Origen"}, {"ClasifError", "Clase"}, {"Poliza", "Póliza"},
                          {"Tipo", "Tipo"}, {"Fecha", "Fecha"}, {"Cuenta_Fmtda", "Cuenta"},
                          {"Referencia", "Referencia"}});
        o << "\n" << r.filas.size() << " registros\n";
    }
};

RegistraComando registro([] { return std::make_unique<InconsistenciasComando>(); });

}  // namespace
}  // namespace velmorant::cli
