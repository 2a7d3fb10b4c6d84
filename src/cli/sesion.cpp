// sesion: what start-up learned.

#include <ostream>

#include "cli/Comando.h"
#include "session/Funciones.h"

namespace velmorant::cli {
namespace {

class SesionComando : public Comando {
public:
    std::string nombre() const override { return "sesion"; }
    std::string resumen() const override { return "Inicia la sesión como el programa de escritorio y muestra lo que aprendió."; }
    std::string descripcion() const override {
        return "Inicia la sesión como el programa de escritorio y muestra lo que aprendió:\n"
               "título, empresa, ejercicio, formato de cuenta, separador, niveles, último mes\n"
               "importado y carpeta de la empresa.";
    }
    int ejecuta(const Argumentos&, Contexto& ctx) override {
        Sesion s;
        IniciaSesionCli(s, ctx);
        std::string niveles;
        for (int i = 0; i < s.NumeroNiveles; ++i)
            niveles += (i ? "," : "") + std::to_string(s.LongitudesNivel[static_cast<size_t>(i)]);
        auto& o = ctx.salida;
        o << "Título:               " << s.TituloInicio << "\n"
          << "Empresa:              " << s.NombreEmpresa << " (" << s.NombCortoEmpresa << ", IdEmpresa "
          << s.IdEmpresaActual << ")\n"
          << "Ejercicio:            " << s.EjercicioTexto << "\n"
          << "Formato de cuenta:    " << s.FormatoCtaEmpresa << "\n"
          << "Separador:            " << (s.SeparadorEmpresa.empty() ? "(ninguno)" : s.SeparadorEmpresa) << "\n"
          << "Niveles:              " << s.NumeroNiveles << (niveles.empty() ? "" : " (" + niveles + ")") << "\n"
          << "Último mes importado: " << s.UltimoMesImportado << "\n"
          << "Carpeta de la base:   " << s.RutaBase << "\n"
          << "Carpeta de empresa:   " << s.RutaEmpresa << "\n";
        return kHecho;
    }
};

RegistraComando registro([] { return std::make_unique<SesionComando>(); });

}  // namespace
}  // namespace velmorant::cli
