// detectar ARCHIVO

#include <filesystem>
#include <ostream>

#include "cli/Comando.h"
#include "layouts/DeteccionFormato.h"
#include "platform/ErrorLectura.h"

namespace velmorant::cli {
namespace {

class DetectarComando : public Comando {
public:
    std::string nombre() const override { return "detectar"; }
    std::string descripcion() const override {
        return "Examina un archivo de texto del cliente y dice lo que parece: codificación, separador,\n"
               "fila de títulos, orden de las fechas (día o mes primero; si ningún día pasa de 12 no lo\n"
               "adivina) y, sin separador, las columnas fijas; cada dato con qué tan seguro es y por qué.\n"
               "Son sugerencias para definir el formato: no cambia ninguna configuración.";
    }
    std::vector<std::string> argumentos() const override { return {"ARCHIVO"}; }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        const std::string ruta = args.posicionales().front();
        std::error_code ec;
        if (!std::filesystem::is_regular_file(ruta, ec)) throw Rehusado("No existe el archivo " + ruta + ".");
        DeteccionTexto d;
        try {
            d = DetectaFormatoTexto(ruta);
        } catch (const ErrorLectura& e) {
            throw Rehusado(e.what());
        }
        ctx.salida << "Archivo: " << ruta << " (" << d.lineasExaminadas << " líneas examinadas)\n";
        for (const auto& linea : DescribeDeteccion(d)) ctx.salida << linea << "\n";
        return kHecho;
    }
};

RegistraComando registro([] { return std::make_unique<DetectarComando>(); });

}  // namespace
}  // namespace velmorant::cli
