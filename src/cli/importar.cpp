// importar ... and saldos-anterior ...: a run of the delimited-text importer
// (link 82) from the command line, through the same run engine as the
// desktop program.

#include <ostream>

#include "cli/Comando.h"
#include "cli/ProgresoTerminal.h"
#include "layouts/ImportadorTextoDelimitado.h"
#include "pipeline/Importacion.h"
#include "pipeline/Reportes.h"
#include "pipeline/ReportesDecisiones.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant::cli {
namespace {

std::vector<Opcion> OpcionesDeLectura() {
    return {{"enlace", "N", "enlace del sistema contable; hoy sólo 82 (texto delimitado)"},
            {"separador", "C", "texto separador de columnas (p. ej. ^, | o ~)"},
            {"tabulador", "", "columnas separadas por tabuladores"},
            {"configuracion", "NOMBRE", "configuración de columnas guardada (ver 'configuracion listar')"},
            {"sin-titulos", "", "la primera línea de cada archivo no es de títulos"},
            {"continuar", "", "si hay inconsistencias, continuar sin preguntar"},
            {"cancelar", "", "si hay inconsistencias, cancelar sin preguntar"},
            {"reporte", "ARCHIVO", "escribe el reporte de inconsistencias (.pdf, .html o .csv) antes de decidir"},
            {"reporte-detalle", "ARCHIVO", "si se perdieron renglones de la cédula, escribe su reporte (.pdf, .html o .csv)"}};
}

// The delimiter text of the run: --separador C or --tabulador.
std::string SeparadorDeLectura(const Argumentos& args) {
    if (args.tiene("separador") == args.tiene("tabulador"))
        throw ErrorUso("indique --separador C o --tabulador, uno de los dos");
    return args.tiene("tabulador") ? "\t" : *args.valor("separador");
}

// The importer of the run, with its layout loaded. Refuses what it cannot use.
ImportadorTextoDelimitado Importador82(Sesion& s, const Argumentos& args, bool unArchivo) {
    if (EnteroDeOpcion(args.requerido("enlace"), "enlace", 1, 999) != 82)
        throw Rehusado("Sólo el enlace 82 (texto genérico delimitado) se importa por ahora.");
    LecturaDelimitada lectura;
    lectura.separador = SeparadorDeLectura(args);
    lectura.Titulos = !args.tiene("sin-titulos");
    if (!UsaConfiguracionTexto(s, args.requerido("configuracion"), lectura))
        throw Rehusado("La configuración '" + *args.valor("configuracion") + "' no existe; créela con "
                       "'velmorant-cli configuracion crear'.");
    return ImportadorTextoDelimitado(lectura, unArchivo);
}

void PreparaDecision(InteraccionTerminal& ui, const Argumentos& args, Sesion& s) {
    if (args.tiene("continuar") && args.tiene("cancelar")) throw ErrorUso("--continuar y --cancelar se excluyen");
    if (args.tiene("continuar")) ui.decisionInconsistencias(DecisionInconsistencias::Continuar);
    if (args.tiene("cancelar")) ui.decisionInconsistencias(DecisionInconsistencias::Cancelar);
    if (auto reporte = args.valor("reporte")) {
        std::string ruta = *reporte;
        ui.antesDeDecidir([&s, &ui, ruta] {
            Reporte r;
            if (!PreparaResumenInconsistencias(s, kPlantillaResumen, r)) return;
            GuardaReporte(r, ruta);
            ui.mensaje(TipoMensaje::Informacion, "", "Reporte de inconsistencias escrito en " + ruta);
        });
    }
    if (auto detalle = args.valor("reporte-detalle")) {
        std::string ruta = *detalle;
        ui.alTerminarConPerdidas([&s, &ui, ruta] {
            Reporte r;
            if (!PreparaDetalleInconsistencias(s, kPlantillaDetalle, r)) return;
            GuardaReporte(r, ruta);
            ui.mensaje(TipoMensaje::Informacion, "", "Reporte de renglones perdidos escrito en " + ruta);
        });
    }
}

int Salida(ResultadoImportacion r) {
    switch (r) {
        case ResultadoImportacion::Terminada:
        case ResultadoImportacion::ConPerdidas:
            return kHecho;
        case ResultadoImportacion::Fallida:
            return kProgramaTerminado;
        default:
            return kRehusado;
    }
}

// Runs `corrida` and turns the run's ends into exit statuses: a cancel at
// the inconsistency decision is a refusal (1), not a failure.
template <class F>
int Corre(Sesion& s, F&& corrida) {
    try {
        int r = Salida(corrida());
        BorraTemporales(s);
        return r;
    } catch (const ProgramaTerminado& e) {
        if (std::string(e.what()) == kMensajeImportacionCancelada) return kRehusado;
        throw;
    }
}

class ImportarComando : public Comando {
public:
    std::string nombre() const override { return "importar"; }
    std::string resumen() const override { return "Importa el ejercicio de la empresa desde los archivos del cliente."; }
    std::string descripcion() const override {
        return "Importa el ejercicio de la empresa desde los archivos del cliente: catálogo,\n"
               "saldos iniciales (opcional) y pólizas, por mes (--mes MM=ARCHIVO, repetible) o en\n"
               "un solo archivo (--un-archivo). Cuando hay inconsistencias pregunta en la terminal;\n"
               "sin terminal obedece --continuar o --cancelar, y sin ninguna de las dos cancela.";
    }
    std::vector<Opcion> opciones() const override {
        auto o = OpcionesDeLectura();
        o.insert(o.begin() + 1, {{"catalogo", "ARCHIVO", "catálogo de cuentas"},
                                 {"saldos-iniciales", "ARCHIVO", "saldos iniciales (si no, los del catálogo)"},
                                 {"mes", "MM=ARCHIVO", "pólizas del mes MM", true},
                                 {"un-archivo", "ARCHIVO", "todas las pólizas del ejercicio en un archivo"}});
        return o;
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        ArchivosImportacion archivos;
        archivos.catalogo = args.valor("catalogo").value_or("");
        if (args.tiene("catalogo")) VerificaArchivoEntrada(archivos.catalogo, "catalogo");
        archivos.saldosIniciales = args.valor("saldos-iniciales").value_or("");
        if (args.tiene("saldos-iniciales")) VerificaArchivoEntrada(archivos.saldosIniciales, "saldos-iniciales");
        bool unArchivo = args.tiene("un-archivo");
        if (unArchivo == !args.valores("mes").empty())
            throw ErrorUso("indique las pólizas con --mes MM=ARCHIVO o con --un-archivo ARCHIVO, una de las dos");
        archivos.polizas = args.valor("un-archivo").value_or("");
        if (unArchivo) VerificaArchivoEntrada(archivos.polizas, "un-archivo");
        for (auto& m : args.valores("mes")) {
            auto igual = m.find('=');
            if (igual == std::string::npos) throw ErrorUso("--mes espera MM=ARCHIVO: " + m);
            int mes = EnteroDeOpcion(m.substr(0, igual), "mes", 1, 12);
            archivos.meses[static_cast<size_t>(mes - 1)] = m.substr(igual + 1);
            VerificaArchivoEntrada(m.substr(igual + 1), "mes " + DosDigitos(mes));
        }
        // The files the desktop previews in the layout form: the chart, the
        // opening balances, the first voucher file.
        std::string separador = SeparadorDeLectura(args);
        std::string primeraPolizas = archivos.polizas;
        for (auto& m : archivos.meses)
            if (primeraPolizas.empty()) primeraPolizas = m;
        for (auto* ruta : {&archivos.catalogo, &archivos.saldosIniciales, &primeraPolizas})
            if (!ruta->empty()) VerificaSeparadorEntrada(*ruta, separador);
        Sesion s;
        ProgresoTerminal progreso;
        s.progreso = &progreso;
        IniciaSesionCli(s, ctx);
        PreparaDecision(ctx.interaccion, args, s);
        auto importador = Importador82(s, args, unArchivo);
        return Corre(s, [&] { return EjecutaImportacion(s, importador, archivos); });
    }
};

class SaldosAnteriorComando : public Comando {
public:
    std::string nombre() const override { return "saldos-anterior"; }
    std::string resumen() const override { return "Importa los saldos finales del ejercicio anterior."; }
    std::string descripcion() const override {
        return "Importa los saldos finales del ejercicio anterior (la pestaña del año anterior).\n"
               "La empresa ya debe tener pólizas importadas.";
    }
    std::vector<Opcion> opciones() const override {
        auto o = OpcionesDeLectura();
        o.insert(o.begin() + 1, {"archivo", "ARCHIVO", "saldos finales del año anterior"});
        return o;
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        std::string ruta = args.valor("archivo").value_or("");
        if (args.tiene("archivo")) VerificaArchivoEntrada(ruta, "archivo");
        if (!ruta.empty()) VerificaSeparadorEntrada(ruta, SeparadorDeLectura(args));
        Sesion s;
        ProgresoTerminal progreso;
        s.progreso = &progreso;
        IniciaSesionCli(s, ctx);
        PreparaDecision(ctx.interaccion, args, s);
        auto importador = Importador82(s, args, false);
        return Corre(s, [&] { return EjecutaSaldosAnioAnterior(s, importador, ruta); });
    }
};

RegistraComando registroImportar([] { return std::make_unique<ImportarComando>(); });
RegistraComando registroSaldos([] { return std::make_unique<SaldosAnteriorComando>(); });

}  // namespace
}  // namespace velmorant::cli
