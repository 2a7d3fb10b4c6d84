// empresa crear ..., empresa abrir NOMBRE_CORTO AAAA

#include <ostream>
#include <stdexcept>

#include "cli/Comando.h"
#include "platform/Ajustes.h"
#include "session/Funciones.h"
#include "store/AltaBase.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant::cli {
namespace {

class EmpresaCrear : public Comando {
public:
    std::string nombre() const override { return "empresa crear"; }
    std::string resumen() const override { return "Da de alta una empresa y ejercicio en la base."; }
    std::string descripcion() const override {
        return "Da de alta una empresa y ejercicio en la base, con su carpeta y su base de datos.";
    }
    std::vector<Opcion> opciones() const override {
        return {{"nombre-corto", "X", "nombre corto de la empresa"},
                {"nombre", "TEXTO", "nombre completo"},
                {"ejercicio", "AAAA", "ejercicio fiscal"},
                {"formato", "MASCARA", "formato de cuenta, p. ej. 999-99-99"},
                {"separador", "C", "separador de niveles (vacío: sin separador)"},
                {"niveles", "N,N,...", "caracteres de cada nivel, p. ej. 3,2,2"},
                {"cat-arbol", "", "el catálogo es un árbol con las cuentas padre"},
                {"rellena-ceros", "", "los niveles de la cuenta origen se rellenan con ceros"},
                {"mes13", "", "los saldos finales incluyen el mes 13"},
                {"meses-revision", "P1,P2,P3,F", "meses de las revisiones previas y final"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        DatosEmpresaNueva d;
        d.nombreCorto = args.requerido("nombre-corto");
        d.nombre = args.requerido("nombre");
        // The global --ejercicio names the session's year; here the option is the command's own.
        d.ejercicio = EnteroDeOpcion(args.requerido("ejercicio"), "ejercicio", 1, 9999);
        d.formatoCta = args.requerido("formato");
        d.separador = args.valor("separador").value_or("");
        d.niveles = ListaDeEnteros(args.requerido("niveles"), "niveles", 1, 50);
        d.catArbol = args.tiene("cat-arbol");
        d.rellenaCeros = args.tiene("rellena-ceros");
        d.saldosConMes13 = args.tiene("mes13");
        if (auto m = args.valor("meses-revision")) {
            auto meses = ListaDeEnteros(*m, "meses-revision", 0, 12);
            if (meses.size() != 4) throw ErrorUso("--meses-revision lleva cuatro meses: P1,P2,P3,F");
            d.mesPrevia1 = meses[0], d.mesPrevia2 = meses[1], d.mesPrevia3 = meses[2], d.mesFinal = meses[3];
        }
        std::string base = BaseRequerida(ctx);
        try {
            int id = CreaEmpresa(base, d);
            ctx.salida << "Empresa " << d.nombreCorto << " (" << d.ejercicio << ") creada con IdEmpresa " << id << "\n";
        } catch (const std::invalid_argument& e) {
            throw Rehusado(e.what());
        }
        return kHecho;
    }
};

class EmpresaAbrir : public Comando {
public:
    std::string nombre() const override { return "empresa abrir"; }
    std::string resumen() const override { return "Deja la empresa abierta como lo hace el producto de auditoría."; }
    std::string descripcion() const override {
        return "Deja la empresa abierta como lo hace el producto de auditoría: guarda la base,\n"
               "el nombre corto y el ejercicio en sus ajustes, para que el programa de escritorio\n"
               "inicie en ella.";
    }
    std::vector<std::string> argumentos() const override { return {"NOMBRE_CORTO", "AAAA"}; }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        std::string nombreCorto = args.posicionales()[0];
        int ejercicio = EnteroDeOpcion(args.posicionales()[1], "ejercicio", 1, 9999);
        std::string base = BaseRequerida(ctx);
        BaseDatos empresas(RutaBaseDatos(base, kArchivoEmpresas), BaseDatos::Modo::SoloLectura);
        if (empresas.escalar("SELECT IdEmpresa FROM Empresas WHERE NombCorto=? AND Ejercicio=?", nombreCorto, ejercicio)
                .esNulo())
            throw Rehusado("La empresa " + nombreCorto + " (" + std::to_string(ejercicio) + ") no existe en " + base);
        bool guardado = GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "RutaAcceso", base) &&
                        GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "EmpresaActual_NombreCorto", nombreCorto) &&
                        GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "EmpresaActual_Ejercicio",
                                     std::to_string(ejercicio));
        if (!guardado)
            throw std::runtime_error("No fue posible guardar los ajustes del producto de auditoría en " +
                                     LugarAjustes(kAplicacionAuditoria) + ": la empresa no quedó abierta.");
        ctx.salida << "Empresa abierta: " << nombreCorto << " (" << ejercicio << ") en " << base << "\n";
        return kHecho;
    }
};

RegistraComando registroCrear([] { return std::make_unique<EmpresaCrear>(); });
RegistraComando registroAbrir([] { return std::make_unique<EmpresaAbrir>(); });

}  // namespace
}  // namespace velmorant::cli
