// deshacer [--si]

#include <ostream>

#include "cli/Comando.h"
#include "pipeline/Respaldo.h"

namespace velmorant::cli {
namespace {

class DeshacerComando : public Comando {
public:
    std::string nombre() const override { return "deshacer"; }
    std::string descripcion() const override {
        return "Deshace la última importación confirmada: restaura la empresa como estaba antes de ella,\n"
               "desde la copia que se guardó junto a su base (se conservan las de las últimas 5), y lo\n"
               "registra en el historial. Pregunta antes en la terminal; sin terminal hace falta --si.";
    }
    std::vector<Opcion> opciones() const override {
        return {{"si", "", "confirma sin preguntar"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        Sesion s;
        IniciaSesionCli(s, ctx);
        switch (DeshaceUltimaImportacion(s, args.tiene("si"))) {
            case ResultadoDeshacer::Deshecha:
                return kHecho;
            case ResultadoDeshacer::NoConfirmada:
                ctx.errores << "velmorant-cli: no se deshizo la importación"
                            << (args.tiene("si") || ctx.interaccion.hayTerminal() ? "" : " (sin terminal, use --si)")
                            << ".\n";
                return kRehusado;
            case ResultadoDeshacer::Fallida:
                return kProgramaTerminado;
            default:
                return kRehusado;
        }
    }
};

RegistraComando registro([] { return std::make_unique<DeshacerComando>(); });

}  // namespace
}  // namespace velmorant::cli
