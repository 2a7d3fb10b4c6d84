// enlaces [--todos] [--buscar TEXTO]

#include <ostream>

#include "cli/Comando.h"
#include "importers/RegistroSistemas.h"
#include "session/Enlaces.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant::cli {
namespace {

class EnlacesComando : public Comando {
public:
    std::string nombre() const override { return "enlaces"; }
    std::string resumen() const override { return "Lista los enlaces (sistemas contables) liberados."; }
    std::string descripcion() const override {
        return "Lista los enlaces (sistemas contables) liberados como los muestra la lista del programa\n"
               "de escritorio, sólo los comerciales. Con --todos, el registro completo: cada enlace con\n"
               "las clases de fuente que lee y si su importador está en este programa.";
    }
    std::vector<Opcion> opciones() const override {
        return {{"todos", "", "todos los enlaces del registro, con sus fuentes y su estado"},
                {"buscar", "TEXTO", "sólo los que contienen TEXTO (* y ? son comodines)"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        std::string base = BaseRequerida(ctx);
        BaseDatos catalogo(RutaBaseDatos(base, kArchivoEnlaces), BaseDatos::Modo::SoloLectura);
        const std::string buscar = args.valor("buscar").value_or("");
        if (args.tiene("todos")) return Todos(catalogo, buscar, ctx);
        auto lista = ListaEnlaces(catalogo, true, buscar);
        ctx.salida << "SISTEMA CONTABLE\n";
        for (auto& e : lista) ctx.salida << e.IdSistema << "\t" << e.Descripcion << "\n";
        if (lista.empty()) ctx.errores << "(ningún enlace liberado coincide)\n";
        return kHecho;
    }

private:
    static int Todos(BaseDatos& catalogo, const std::string& buscar, Contexto& ctx) {
        auto lista = TodosLosEnlaces(catalogo, buscar);
        ctx.salida << "ENLACE\tFUENTES\tESTADO\t\tSISTEMA CONTABLE\n";
        for (auto& e : lista) {
            const SistemaRegistrado* r = BuscaSistema(e.IdSistema);
            ctx.salida << e.IdSistema << "\t" << (r ? r->fuentes : "?") << "\t"
                       << (e.Liberado ? "liberado\t" : "sin importador") << "\t" << e.Descripcion << "\n";
        }
        if (lista.empty()) ctx.errores << "(ningún enlace coincide)\n";
        ctx.salida << "\nFuentes: T " << FuentesDescritas("T") << ", C " << FuentesDescritas("C") << ", E "
                   << FuentesDescritas("E") << ", X " << FuentesDescritas("X") << ", D " << FuentesDescritas("D")
                   << ", F " << FuentesDescritas("F") << ",\n  V " << FuentesDescritas("V") << ", P "
                   << FuentesDescritas("P") << ", B " << FuentesDescritas("B") << ", M " << FuentesDescritas("M")
                   << ".\n";
        return kHecho;
    }
};

RegistraComando registro([] { return std::make_unique<EnlacesComando>(); });

}  // namespace
}  // namespace velmorant::cli
