// importar --enlace N ... and saldos-anterior --enlace N ...: a run of any
// importer of this program from the command line, through the same run
// engine as the desktop program. The options of each link (its files, its
// check boxes, its valued options) come from the importer's descriptor, so
// `importar --enlace N --help` lists that link's own.

#include <filesystem>
#include <ostream>

#include "cli/Comando.h"
#include "cli/ProgresoTerminal.h"
#include "importers/Descriptor.h"
#include "importers/Registro.h"
#include "pipeline/Importacion.h"
#include "pipeline/Reportes.h"
#include "pipeline/ReportesDecisiones.h"
#include "session/Despacho.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant::cli {
namespace {

// The link named by --enlace among the arguments; null when none is given
// or this program has no importer for it.
const DescriptorImportador* EnlaceDeArgumentos(const std::vector<std::string>& argv) {
    for (size_t i = 0; i < argv.size(); ++i) {
        std::string valor;
        if (argv[i] == "--enlace" && i + 1 < argv.size()) valor = argv[i + 1];
        else if (argv[i].rfind("--enlace=", 0) == 0) valor = argv[i].substr(9);
        else continue;
        try {
            return BuscaImportador(std::stoi(valor));
        } catch (...) {
            return nullptr;
        }
    }
    return nullptr;
}

std::vector<Opcion> OpcionesDeDecision() {
    return {{"continuar", "", "si hay inconsistencias, continuar sin preguntar"},
            {"cancelar", "", "si hay inconsistencias, cancelar sin preguntar"},
            {"reporte", "ARCHIVO", "escribe el reporte de inconsistencias (.pdf, .html o .csv) antes de decidir"},
            {"reporte-detalle", "ARCHIVO",
             "si se perdieron renglones de la cédula, escribe su reporte (.pdf, .html o .csv)"}};
}

std::string ListaDeEnlaces() {
    std::string r;
    for (const auto& d : Importadores()) r += (r.empty() ? "" : ", ") + std::to_string(d.IdSistema);
    return r;
}

// The link's check boxes and valued options.
void AgregaOpcionesPropias(const DescriptorImportador& d, std::vector<Opcion>& o) {
    for (const auto& p : d.parametros)
        o.push_back({p.opcionCli, p.valor, p.descripcion + (p.requerido ? " (requerida)" : ""), p.repetible});
    for (const auto& c : d.casillas) o.push_back({c.opcionCli, "", c.titulo});
}

std::vector<Opcion> OpcionesDeImportar(const DescriptorImportador* d) {
    std::vector<Opcion> o{{"enlace", "N", "enlace del sistema contable (" + ListaDeEnlaces() + ")"}};
    if (!d) return o;
    for (const auto& a : d->archivos)
        o.push_back({a.papel, a.carpeta ? "CARPETA" : "ARCHIVO", a.etiqueta, a.repetible});
    if (d->meses)
        o.push_back({"mes", "MM=ARCHIVO", std::string("pólizas del mes MM (01 a 12") + (d->mes13 ? "; 13 el cierre" : "") + ")",
                     true});
    if (d->unArchivo) o.push_back({"un-archivo", "ARCHIVO", "todas las pólizas del ejercicio en un archivo"});
    AgregaOpcionesPropias(*d, o);
    auto decision = OpcionesDeDecision();
    o.insert(o.end(), decision.begin(), decision.end());
    return o;
}

// A file the user named must be there before anything runs: a mistyped
// path would otherwise reach a reader that ends quietly on a missing file.
void VerificaEntrada(const std::string& ruta, const std::string& opcion, bool carpeta) {
    if (!carpeta) return VerificaArchivoEntrada(ruta, opcion);
    std::error_code ec;
    if (!std::filesystem::is_directory(ruta, ec)) throw ErrorArchivoEntrada("--" + opcion + ": " + ruta + " no es una carpeta");
}

// The user's choices, in the terms of the importer.
ArchivosImportacion Eleccion(const DescriptorImportador& d, const Argumentos& args, bool conPolizas,
                             ArchivosImportacion a = {}) {
    for (const auto& archivo : d.archivos)
        for (const auto& ruta : args.valores(archivo.papel)) {
            VerificaEntrada(ruta, archivo.papel, archivo.carpeta);
            a.fija(archivo.papel, ruta);
        }
    for (const auto& m : args.valores("mes")) {
        auto igual = m.find('=');
        if (igual == std::string::npos) throw ErrorUso("--mes espera MM=ARCHIVO: " + m);
        int mes = EnteroDeOpcion(m.substr(0, igual), "mes", 1, d.mes13 ? 13 : 12);
        std::string ruta = m.substr(igual + 1);
        VerificaEntrada(ruta, "mes " + DosDigitos(mes), false);
        // As in the form, one file cannot serve two months.
        for (const auto& elegida : a.meses)
            if (elegida == ruta) throw ErrorUso("--mes: El archivo ya ha sido seleccionado: " + ruta);
        a.meses[static_cast<size_t>(mes - 1)] = ruta;
    }
    if (auto unArchivo = args.valor("un-archivo")) {
        VerificaEntrada(*unArchivo, "un-archivo", false);
        a.polizas = *unArchivo;
    }
    // The closing month's file may stand beside the year's one file.
    bool conMeses = false;
    for (const auto& m : args.valores("mes"))
        if (!(d.mes13 && m.rfind("13=", 0) == 0)) conMeses = true;
    if (conPolizas && d.meses && d.unArchivo && args.tiene("un-archivo") == conMeses)
        throw ErrorUso("indique las pólizas con --mes MM=ARCHIVO o con --un-archivo ARCHIVO, una de las dos");
    for (const auto& c : d.casillas)
        if (args.tiene(c.opcionCli)) a.casillas.insert(c.opcionCli);
    for (const auto& p : d.parametros) {
        if (p.repetible) {
            std::string valores;
            for (const auto& v : args.valores(p.opcionCli)) valores += (valores.empty() ? "" : "\n") + v;
            if (!valores.empty()) a.parametros[p.opcionCli] = valores;
            continue;
        }
        auto v = args.valor(p.opcionCli);
        if (!v) {
            if (p.requerido) throw ErrorUso("falta la opción --" + p.opcionCli);
            continue;
        }
        if (p.tipo == ParametroDescrito::Tipo::Mes) EnteroDeOpcion(*v, p.opcionCli, 1, 13);
        a.parametros[p.opcionCli] = *v;
    }
    // What the importer checks of the files themselves before it runs (a
    // delimiter missing from a file, say).
    if (d.verificaEntradas) {
        try {
            d.verificaEntradas(a);
        } catch (const ParametroInvalido& e) {
            throw ErrorArchivoEntrada(e.what());
        }
    }
    return a;
}

const DescriptorImportador& Descriptor(const Argumentos& args) {
    int enlace = EnteroDeOpcion(args.requerido("enlace"), "enlace", 1, 999);
    const DescriptorImportador* d = BuscaImportador(enlace);
    if (!d)
        throw Rehusado("El enlace " + std::to_string(enlace) + " no tiene importador en este programa; se importan: " +
                       ListaDeEnlaces() + ".");
    return *d;
}

// The importer of the run, built by its descriptor from the choices.
std::unique_ptr<Importador> CreaImportador(Sesion& s, const DescriptorImportador& d, const ArchivosImportacion& a) {
    std::unique_ptr<Importador> imp;
    try {
        imp = d.crea(s, a);
    } catch (const ParametroInvalido& e) {
        throw ErrorUso(e.what());
    }
    if (!imp) throw Rehusado("El enlace " + std::to_string(d.IdSistema) + " no pudo preparar la importación.");
    return imp;
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
        std::string d =
            "Importa el ejercicio de la empresa desde los archivos del cliente por el enlace de su sistema\n"
            "contable. Cuando hay inconsistencias pregunta en la terminal; sin terminal obedece --continuar\n"
            "o --cancelar, y sin ninguna de las dos cancela.";
        if (enlace_) return d + "\n\nEnlace " + std::to_string(enlace_->IdSistema) + ": " + enlace_->titulo + ".";
        return d + "\n\n'importar --enlace N --help' lista los archivos y opciones de cada enlace.";
    }
    std::vector<Opcion> opciones() const override { return OpcionesDeImportar(enlace_); }
    void conoceArgumentos(const std::vector<std::string>& argv) override { enlace_ = EnlaceDeArgumentos(argv); }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        const DescriptorImportador& d = Descriptor(args);
        ArchivosImportacion archivos = Eleccion(d, args, true);
        Sesion s;
        ProgresoTerminal progreso;
        s.progreso = &progreso;
        IniciaSesionCli(s, ctx);
        // As the link selector does: a company stays with its ContPAQ i link.
        if (!AceptaEnlace(s, d.IdSistema)) return kRehusado;
        PreparaDecision(ctx.interaccion, args, s);
        auto importador = CreaImportador(s, d, archivos);
        return Corre(s, [&] { return EjecutaImportacion(s, *importador, archivos); });
    }

private:
    const DescriptorImportador* enlace_ = nullptr;
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
        std::vector<Opcion> o{{"enlace", "N", "enlace del sistema contable"},
                              {"archivo", "ARCHIVO", "saldos finales del año anterior"}};
        if (enlace_) AgregaOpcionesPropias(*enlace_, o);
        auto decision = OpcionesDeDecision();
        o.insert(o.end(), decision.begin(), decision.end());
        return o;
    }
    void conoceArgumentos(const std::vector<std::string>& argv) override { enlace_ = EnlaceDeArgumentos(argv); }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        const DescriptorImportador& d = Descriptor(args);
        if (!d.anioAnterior)
            throw Rehusado("El enlace " + std::to_string(d.IdSistema) + " no importa saldos del año anterior.");
        std::string ruta = args.valor("archivo").value_or("");
        if (args.tiene("archivo")) VerificaEntrada(ruta, "archivo", false);
        ArchivosImportacion archivos;
        archivos.saldosAnioAnterior = ruta;
        archivos = Eleccion(d, args, false, std::move(archivos));
        Sesion s;
        ProgresoTerminal progreso;
        s.progreso = &progreso;
        IniciaSesionCli(s, ctx);
        // As the link selector does: a company stays with its ContPAQ i link.
        if (!AceptaEnlace(s, d.IdSistema)) return kRehusado;
        PreparaDecision(ctx.interaccion, args, s);
        auto importador = CreaImportador(s, d, archivos);
        return Corre(s, [&] { return EjecutaSaldosAnioAnterior(s, *importador, ruta); });
    }

private:
    const DescriptorImportador* enlace_ = nullptr;
};

RegistraComando registroImportar([] { return std::make_unique<ImportarComando>(); });
RegistraComando registroSaldos([] { return std::make_unique<SaldosAnteriorComando>(); });

}  // namespace
}  // namespace velmorant::cli
