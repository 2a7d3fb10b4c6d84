// velmorant-cli: the core, headless, for automation and support.

#include <QGuiApplication>

#include <filesystem>
#include <iostream>
#include <memory>

#include "cli/Comando.h"
#include "importers/reportes/ImportadorReporte.h"
#include "platform/BaseDatos.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"

using namespace velmorant;
using namespace velmorant::cli;

namespace {

// The first word of a command's name: "empresa" of "empresa crear".
std::string PrimeraPalabra(const std::string& nombre) { return nombre.substr(0, nombre.find(' ')); }

// One line per command (of `grupo` only, when given): its name and its
// summary, wrapped under itself.
void ListaComandos(std::ostream& o, const std::string& grupo) {
    constexpr size_t kColumna = 24;
    for (auto& f : RegistroComandos()) {
        auto c = f();
        if (!grupo.empty() && PrimeraPalabra(c->nombre()) != grupo) continue;
        std::string n = "  " + c->nombre() + " ";
        if (n.size() < kColumna) n += std::string(kColumna - n.size(), ' ');
        o << n << Envuelve(c->resumen(), kColumna) << "\n";
    }
}

void AyudaGeneral(std::ostream& o) {
    o << "velmorant-cli " << VersionDelPrograma()
      << ": importación de información contable a la base de la empresa.\n\n"
         "Uso: velmorant-cli [--base DIR] [--empresa NOMBRE_CORTO] [--ejercicio AAAA] COMANDO ...\n\n"
         "Opciones globales (sustituyen a los ajustes que deja el producto de auditoría):\n"
         "  --base DIR                carpeta de la base (Empresas y catálogo de enlaces)\n"
         "  --empresa NOMBRE_CORTO    empresa\n"
         "  --ejercicio AAAA          ejercicio\n\n"
         "Comandos:\n";
    ListaComandos(o, "");
    o << "\nSalida: 0 hecho, 1 rehusado o cancelado, 2 uso incorrecto, 3 el programa terminó.\n"
         "'velmorant-cli COMANDO --help' describe cada comando.\n";
}

// True when some command's name has more than one word and starts with `grupo`.
bool EsGrupo(const std::string& grupo) {
    for (auto& f : RegistroComandos()) {
        auto c = f();
        if (c->nombre().find(' ') != std::string::npos && PrimeraPalabra(c->nombre()) == grupo) return true;
    }
    return false;
}

// What follows a group word ("empresa", "configuracion", "base").
void AyudaGrupo(std::ostream& o, const std::string& grupo) {
    o << "Uso: velmorant-cli [opciones globales] " << grupo << " SUBCOMANDO ...\n\nSubcomandos:\n";
    ListaComandos(o, grupo);
    o << "\n'velmorant-cli " << grupo << " SUBCOMANDO --help' describe cada uno.\n";
}

// The command whose words start `resto`, the longest match first.
std::unique_ptr<Comando> BuscaComando(std::vector<std::string>& resto) {
    std::unique_ptr<Comando> mejor;
    size_t palabrasMejor = 0;
    for (auto& f : RegistroComandos()) {
        auto c = f();
        std::vector<std::string> palabras;
        std::string n = c->nombre();
        for (size_t a = 0, b; a <= n.size(); a = b + 1) {
            b = n.find(' ', a);
            if (b == std::string::npos) b = n.size();
            palabras.push_back(n.substr(a, b - a));
        }
        if (palabras.size() > resto.size() || palabras.size() <= palabrasMejor) continue;
        if (std::equal(palabras.begin(), palabras.end(), resto.begin())) {
            mejor = std::move(c);
            palabrasMejor = palabras.size();
        }
    }
    if (mejor) resto.erase(resto.begin(), resto.begin() + static_cast<long>(palabrasMejor));
    return mejor;
}

int Ejecuta(std::vector<std::string> args) {
    InteraccionTerminal interaccion(std::cout, std::cerr);
    Contexto ctx{{}, std::cout, std::cerr, interaccion};
    while (!args.empty() && args.front().rfind("-", 0) == 0) {
        std::string op = args.front();
        if (op == "--help" || op == "-h") {
            AyudaGeneral(std::cout);
            return kHecho;
        }
        if (op == "--version") {
            std::cout << "velmorant-cli " << VersionDelPrograma() << "\n";
            return kHecho;
        }
        if (args.size() < 2) throw ErrorUso("la opción " + op + " necesita un valor");
        std::string valor = args[1];
        if (op == "--base") ctx.inicio.base = valor;
        else if (op == "--empresa") ctx.inicio.empresa = valor;
        else if (op == "--ejercicio") ctx.inicio.ejercicio = valor;
        else throw ErrorUso("opción global desconocida: " + op);
        args.erase(args.begin(), args.begin() + 2);
    }
    if (args.empty()) {
        AyudaGeneral(std::cerr);
        return kUsoIncorrecto;
    }
    auto comando = BuscaComando(args);
    if (!comando && EsGrupo(args.front())) {
        bool ayuda = args.size() > 1 && (args[1] == "--help" || args[1] == "-h");
        if (ayuda) {
            AyudaGrupo(std::cout, args.front());
            return kHecho;
        }
        if (args.size() > 1)
            std::cerr << "velmorant-cli: subcomando desconocido: " << args.front() << " " << args[1] << "\n\n";
        AyudaGrupo(std::cerr, args.front());
        return kUsoIncorrecto;
    }
    if (!comando) throw ErrorUso("comando desconocido: " + args.front());
    comando->conoceArgumentos(args);
    for (auto& a : args)
        if (a == "--help" || a == "-h") {
            std::cout << comando->ayuda();
            return kHecho;
        }
    // A description of a printed report that cannot be used is refused at
    // start, naming its file and line; its link then has no importer to run.
    for (const auto& error : Descripciones().errores) std::cerr << "velmorant-cli: aviso: " << error << "\n";
    try {
        return comando->ejecuta(comando->analiza(args), ctx);
    } catch (const ErrorArchivoEntrada& e) {
        std::cerr << "velmorant-cli: " << e.what() << "\n";
        return kUsoIncorrecto;
    } catch (const ErrorUso& e) {
        std::cerr << "velmorant-cli: " << e.what() << "\n\n" << comando->ayuda();
        return kUsoIncorrecto;
    } catch (const ErrorBaseDatos& e) {
        std::cerr << "velmorant-cli: " << TextoErrorMotor(e, comando->nombre()) << "\n";
        return kProgramaTerminado;
    } catch (const std::filesystem::filesystem_error& e) {
        std::cerr << "velmorant-cli: " << TextoErrorMotor(e, comando->nombre()) << "\n";
        return kProgramaTerminado;
    }
}

// The offscreen platform warns when a headless session has no runtime
// folder; that says nothing to the user of a command line.
QtMessageHandler gManejadorQt = nullptr;
void FiltraMensajesQt(QtMsgType tipo, const QMessageLogContext& contexto, const QString& texto) {
    if (texto.startsWith("QStandardPaths: XDG_RUNTIME_DIR not set")) return;
    if (gManejadorQt) gManejadorQt(tipo, contexto, texto);
}

}  // namespace

int main(int argc, char** argv) {
    // A gui application renders the reports to PDF; offscreen, it needs no
    // display (Windows always has its own platform).
#ifndef _WIN32
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    gManejadorQt = qInstallMessageHandler(FiltraMensajesQt);
    QGuiApplication app(argc, argv);
    std::vector<std::string> args(argv + 1, argv + argc);
    try {
        return Ejecuta(args);
    } catch (const ErrorUso& e) {
        std::cerr << "velmorant-cli: " << e.what() << "\n'velmorant-cli --help' lista los comandos.\n";
        return kUsoIncorrecto;
    } catch (const Rehusado& e) {
        std::cerr << "velmorant-cli: " << e.what() << "\n";
        return kRehusado;
    } catch (const ProgramaTerminado& e) {
        std::cerr << "velmorant-cli: el programa terminó: " << e.what() << "\n";
        return kProgramaTerminado;
    } catch (const ErrorBaseDatos& e) {
        std::cerr << "velmorant-cli: error de la base de datos: " << e.what() << "\n";
        return kProgramaTerminado;
    } catch (const std::exception& e) {
        std::cerr << "velmorant-cli: " << e.what() << "\n";
        return kProgramaTerminado;
    }
}
