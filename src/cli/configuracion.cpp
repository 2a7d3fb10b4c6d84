// configuracion listar [--enlace N], configuracion mostrar NOMBRE,
// configuracion crear NOMBRE --enlace N CAMPO=VALOR...

#include <ostream>

#include "cli/Comando.h"
#include "layouts/Configuraciones.h"
#include "layouts/ParametrosConfiguracion.h"
#include "session/Funciones.h"

namespace velmorant::cli {
namespace {

FormularioParametros FormularioDeEnlace(int enlace) {
    switch (enlace) {
        case kEnlaceTxtPersonalizado: return FormularioParametros::TxtPersonalizado;
        case kEnlaceTextoGenerico: return FormularioParametros::TextoGenerico;
        case kEnlaceExcelGenerico: return FormularioParametros::ExcelGenerico;
        default: throw ErrorUso("--enlace: sólo los enlaces 25, 82 y 102 tienen configuraciones");
    }
}

// A session for the catalogue alone: messages and the link, no company.
void SesionDeCatalogo(Sesion& s, Contexto& ctx, int enlace) {
    s.interaccion = &ctx.interaccion;
    s.VersionPrograma = VersionDelPrograma();
    s.IdSistemaElegido = enlace;
    PreparaCatalogoConfiguraciones(s);
}

class ConfiguracionListar : public Comando {
public:
    std::string nombre() const override { return "configuracion listar"; }
    std::string resumen() const override { return "Lista las configuraciones de columnas guardadas."; }
    std::string descripcion() const override {
        return "Lista las configuraciones guardadas en el catálogo de configuraciones.\n"
               "Con --enlace, sólo las de ese enlace, como las ofrece la lista del importador.";
    }
    std::vector<Opcion> opciones() const override {
        return {{"enlace", "N", "25 texto personalizado, 82 texto delimitado, 102 Excel"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        Sesion s;
        if (auto e = args.valor("enlace")) {
            int enlace = EnteroDeOpcion(*e, "enlace", 0, 32767);
            FormularioDeEnlace(enlace);
            SesionDeCatalogo(s, ctx, enlace);
            for (auto& n : LlenaComboConfiguraciones(s)) ctx.salida << n << "\n";
            return kHecho;
        }
        SesionDeCatalogo(s, ctx, 0);
        ctx.salida << "CONFIGURACION\tENLACE\n";
        for (auto& f : TodasLasConfiguraciones(*s.DbConfiguraciones))
            ctx.salida << f.Nombre << "\t" << f.IdEnlace << "\n";
        return kHecho;
    }
};

class ConfiguracionMostrar : public Comando {
public:
    std::string nombre() const override { return "configuracion mostrar"; }
    std::string resumen() const override { return "Muestra los 21 pares de una configuración guardada."; }
    std::string descripcion() const override {
        return "Muestra los 21 pares de una configuración del catálogo, en el orden de la tabla,\n"
               "en la forma CAMPO=VALOR que acepta 'configuracion crear'.";
    }
    std::vector<std::string> argumentos() const override { return {"NOMBRE"}; }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        Sesion s;
        SesionDeCatalogo(s, ctx, 0);
        const std::string& nombre = args.posicionales()[0];
        auto fila = LeeConfiguracion(*s.DbConfiguraciones, nombre);
        if (!fila) throw Rehusado("No existe la configuración " + nombre + " en el catálogo.");
        ctx.salida << "Nombre:   " << fila->Nombre << "\nIdEnlace: " << fila->IdEnlace << "\n";
        for (auto& par : ParesConfiguracion())
            ctx.salida << "PIni" << par.nombre << "=" << fila->pares.*par.pIni << "\tLong" << par.nombre << "="
                       << fila->pares.*par.longitud << "\n";
        return kHecho;
    }
};

class ConfiguracionCrear : public Comando {
public:
    std::string nombre() const override { return "configuracion crear"; }
    std::string resumen() const override { return "Guarda una configuración de columnas nueva."; }
    std::string descripcion() const override {
        return "Guarda una configuración nueva como lo hace la forma de parámetros al aceptar\n"
               "un nombre tecleado: valida los campos en su orden, revisa si los mismos valores\n"
               "ya existen con otro nombre y la guarda en la base de la empresa y en el catálogo.\n"
               "Cada CAMPO=VALOR es una columna de la tabla: con --enlace 25 la posición inicial y la\n"
               "longitud de cada campo (PIniCuenta=1 LongCuenta=12 ...); con 82 y 102 sólo el número de\n"
               "columna (PIniCuenta=1 ...). Los campos no indicados quedan en 0 (ausentes). Requiere la\n"
               "empresa de la sesión.";
    }
    std::vector<std::string> argumentos() const override { return {"NOMBRE", "CAMPO=VALOR..."}; }
    std::vector<Opcion> opciones() const override {
        return {{"enlace", "N", "25 texto personalizado, 82 texto delimitado, 102 Excel"},
                {"saldos", "TIPO", "tercera pestaña: 'anio-anterior' o 'iniciales' (sólo 82 y 102)"},
                {"si", "", "responde Sí a las preguntas"},
                {"no", "", "responde No a las preguntas"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        int enlace = EnteroDeOpcion(args.requerido("enlace"), "enlace", 0, 32767);
        FormularioConfiguracion f;
        f.tipo = FormularioDeEnlace(enlace);
        f.textoLista = args.posicionales()[0];
        f.cajas = InicializaParametros(f.tipo, LeeCampos(args), LeePestana(args, f.tipo));
        if (args.tiene("si") && args.tiene("no")) throw ErrorUso("--si y --no se excluyen");
        if (args.tiene("si") || args.tiene("no")) ctx.interaccion.respuestaPreguntas(args.tiene("si"));

        Sesion s;
        IniciaSesionCli(s, ctx);
        s.IdSistemaElegido = enlace;
        f.Configuracion = IniciaConfiguraciones(s).Configuracion;
        CargaConfigEmpresa(s, f.Configuracion, f.registro);
        f.lista = LlenaComboConfiguraciones(s);

        Aceptacion a = AceptaParametros(s, f);
        if (a.cierra) {
            ctx.salida << "Configuración actual: " << f.Configuracion << "\n";
            return kHecho;
        }
        if (auto problema = ProblemaNombreConfiguracion(f.textoLista); a.foco && !problema.empty())
            throw Rehusado(problema + "; no se guardó nada.");
        if (a.foco) throw Rehusado("falta el campo " + a.foco->caja + "; no se guardó nada.");
        throw Rehusado("no se guardó nada.");
    }

private:
    static EstructuraDatosTxt LeeCampos(const Argumentos& args) {
        EstructuraDatosTxt valores;
        const auto& pos = args.posicionales();
        for (size_t i = 1; i < pos.size(); ++i) {
            size_t igual = pos[i].find('=');
            if (igual == std::string::npos) throw ErrorUso("se esperaba CAMPO=VALOR: " + pos[i]);
            std::string campo = pos[i].substr(0, igual);
            auto miembro = CampoConfiguracion(campo);
            if (!miembro) throw ErrorUso("campo desconocido: " + campo + " (campos: " + ListaColumnasPares() + ")");
            valores.*miembro = static_cast<std::int16_t>(EnteroDeOpcion(pos[i].substr(igual + 1), campo, 0, 32767));
        }
        return valores;
    }

    static PestanaSaldos LeePestana(const Argumentos& args, FormularioParametros tipo) {
        auto v = args.valor("saldos");
        if (!v) return PestanaSaldos::Ninguna;
        if (tipo == FormularioParametros::TxtPersonalizado)
            throw ErrorUso("--saldos: la forma de posiciones fijas no tiene pestaña de saldos");
        if (*v == "anio-anterior") return PestanaSaldos::SaldosFinalesAnioAnterior;
        if (*v == "iniciales") return PestanaSaldos::SaldosIniciales;
        throw ErrorUso("--saldos: 'anio-anterior' o 'iniciales'");
    }
};

RegistraComando registroListar([] { return std::make_unique<ConfiguracionListar>(); });
RegistraComando registroMostrar([] { return std::make_unique<ConfiguracionMostrar>(); });
RegistraComando registroCrear([] { return std::make_unique<ConfiguracionCrear>(); });

}  // namespace
}  // namespace velmorant::cli
