// base crear DIR

#include <ostream>

#include "cli/Comando.h"
#include "store/AltaBase.h"

namespace velmorant::cli {
namespace {

class BaseCrear : public Comando {
public:
    std::string nombre() const override { return "base crear"; }
    std::string resumen() const override { return "Crea la base: la tabla de empresas y el catálogo de enlaces."; }
    std::string descripcion() const override {
        return "Crea la base en DIR: la tabla de empresas y el catálogo de enlaces.\n"
               "Si ya existen, sólo actualiza el catálogo de enlaces.";
    }
    std::vector<std::string> argumentos() const override { return {"DIR"}; }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        std::string base = CreaBase(args.posicionales().at(0));
        ctx.salida << "Base creada en " << base << "\n";
        return kHecho;
    }
};

RegistraComando registro([] { return std::make_unique<BaseCrear>(); });

}  // namespace
}  // namespace velmorant::cli
