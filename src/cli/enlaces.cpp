// enlaces [--todos] [--buscar TEXTO]

#include <ostream>

#include "cli/Comando.h"
#include "session/Enlaces.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant::cli {
namespace {

class EnlacesComando : public Comando {
public:
    std::string nombre() const override { return "enlaces"; }
    std::string resumen() const override { return "Lista los enlaces (sistemas contables) liberados."; }
    std::string descripcion() const override {
        return "Lista los enlaces (sistemas contables) liberados como los muestra la lista del\n"
               "programa de escritorio: sólo los comerciales, salvo con --todos.";
    }
    std::vector<Opcion> opciones() const override {
        return {{"todos", "", "también los sistemas propios de despacho (casilla sin marcar)"},
                {"buscar", "TEXTO", "sólo los que contienen TEXTO (* y ? son comodines)"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        std::string base = BaseRequerida(ctx);
        BaseDatos catalogo(RutaBaseDatos(base, kArchivoEnlaces), BaseDatos::Modo::SoloLectura);
        auto lista = ListaEnlaces(catalogo, !args.tiene("todos"), args.valor("buscar").value_or(""));
        ctx.salida << "SISTEMA CONTABLE\n";
        for (auto& e : lista) ctx.salida << e.IdSistema << "\t" << e.Descripcion << "\n";
        if (lista.empty()) ctx.errores << "(ningún enlace liberado coincide)\n";
        return kHecho;
    }
};

RegistraComando registro([] { return std::make_unique<EnlacesComando>(); });

}  // namespace
}  // namespace velmorant::cli
