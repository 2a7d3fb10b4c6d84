// reporte probar DESCRIPCION ARCHIVO: a description of a printed report
// tried on a sample report, line by line, without importing anything.

#include <ostream>

#include "cli/Comando.h"
#include "importers/reportes/ImportadorReporte.h"
#include "importers/reportes/PruebaReporte.h"
#include "platform/ErrorLectura.h"

namespace velmorant::cli {
namespace {

// The account structure of a mask given on the command line: levels split
// at the separator, which is the mask's one character that is not 9, X or A.
void FormatoDeOpciones(Sesion& s, const std::string& mascara, const Argumentos& args) {
    s.FormatoCtaEmpresa = mascara;
    s.SeparadorEmpresa.clear();
    for (char c : mascara)
        if (c != '9' && c != 'X' && c != 'A') {
            s.SeparadorEmpresa = std::string(1, c);
            break;
        }
    s.LongitudesNivel.clear();
    int largo = 0;
    for (char c : mascara + (s.SeparadorEmpresa.empty() ? std::string("|") : s.SeparadorEmpresa)) {
        if (std::string(1, c) == s.SeparadorEmpresa || c == '|') {
            if (largo == 0) throw ErrorUso("--formato: un nivel vacío en " + mascara);
            s.LongitudesNivel.push_back(largo);
            largo = 0;
        } else {
            ++largo;
        }
    }
    if (s.SeparadorEmpresa.empty() && args.valor("niveles")) {
        s.LongitudesNivel = ListaDeEnteros(*args.valor("niveles"), "niveles", 1, 30);
        int suma = 0;
        for (int n : s.LongitudesNivel) suma += n;
        if (suma != static_cast<int>(mascara.size())) throw ErrorUso("--niveles no suma el largo de --formato");
    }
    s.NumeroNiveles = static_cast<std::int16_t>(s.LongitudesNivel.size());
    s.CatalogoArbol = true;
    s.RellenaCeros = true;
}

class ReporteProbar : public Comando {
public:
    std::string nombre() const override { return "reporte probar"; }
    std::string descripcion() const override {
        return "Prueba la descripción de un reporte impreso sobre un reporte de muestra: dice de cada línea\n"
               "qué clase es y qué se leyó de ella, y luego las pólizas que resultan, sin importar nada.\n"
               "DESCRIPCION es un archivo .toml o el número de un enlace con descripción instalada.\n"
               "Las cuentas se prueban con el formato de la empresa actual, o con --formato sin empresa.";
    }
    std::vector<std::string> argumentos() const override { return {"DESCRIPCION", "ARCHIVO"}; }
    std::vector<Opcion> opciones() const override {
        return {{"formato", "MASCARA", "formato de cuenta sin empresa (p. ej. 999-99-99)"},
                {"niveles", "L1,L2,...", "largos de los niveles, con un formato sin separador"},
                {"mes", "MM", "mes que se leería (01 a 13); 01 si no se indica"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        const auto& pos = args.posicionales();
        DescripcionReporte d;
        bool esEnlace = !pos[0].empty() && pos[0].find_first_not_of("0123456789") == std::string::npos;
        if (esEnlace) {
            const auto& todas = Descripciones();
            auto it = todas.porEnlace.find(EnteroDeOpcion(pos[0], "DESCRIPCION", 1, 999));
            if (it == todas.porEnlace.end())
                throw Rehusado("El enlace " + pos[0] + " no tiene descripción de reporte en " + todas.carpeta);
            d = it->second;
        } else {
            try {
                d = CargaDescripcion(pos[0]);
            } catch (const ErrorDescripcion& e) {
                throw Rehusado(e.what());
            }
        }
        int mes = args.valor("mes") ? EnteroDeOpcion(*args.valor("mes"), "mes", 1, 13) : 1;
        Sesion s;
        s.interaccion = &ctx.interaccion;
        if (auto mascara = args.valor("formato")) {
            FormatoDeOpciones(s, *mascara, args);
            s.EjercicioTexto = ctx.inicio.ejercicio.value_or("2000");
        } else {
            IniciaSesionCli(s, ctx);
        }
        try {
            ctx.salida << TextoPrueba(PruebaDescripcion(s, d, pos[1], mes));
        } catch (const ErrorLectura& e) {
            throw Rehusado(e.what());
        }
        return kHecho;
    }
};

RegistraComando registro([] { return std::make_unique<ReporteProbar>(); });

}  // namespace
}  // namespace velmorant::cli
