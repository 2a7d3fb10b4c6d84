#pragma once
// The command-line program's frame: every command is a subclass of Comando
// that declares its words, options and arguments, so that --help is
// generated and every command parses alike. Commands register themselves.

#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/InteraccionTerminal.h"
#include "session/Inicio.h"

namespace velmorant::cli {

/// Exit statuses of the command-line program.
enum Salida { kHecho = 0, kRehusado = 1, kUsoIncorrecto = 2, kProgramaTerminado = 3 };

/// Wrong usage: unknown option, missing argument. Exits with status 2.
class ErrorUso : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An input file that cannot serve as given: missing, a folder, unreadable,
/// or not split as the options say. Status 2, like any wrong usage, but
/// without the command's help: the message names the option and the file.
class ErrorArchivoEntrada : public ErrorUso {
public:
    using ErrorUso::ErrorUso;
};

/// A refusal the user can fix (a bad value, an existing company). Status 1.
class Rehusado : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Opcion {
    std::string nombre;       // without the leading "--"
    std::string valor;        // name of its value, empty for a flag
    std::string descripcion;
    bool repetible = false;
};

/// Parsed arguments of one command.
class Argumentos {
public:
    bool tiene(const std::string& opcion) const { return valores_.count(opcion) > 0; }
    std::optional<std::string> valor(const std::string& opcion) const;
    std::vector<std::string> valores(const std::string& opcion) const;
    /// The option's value or an ErrorUso naming it.
    std::string requerido(const std::string& opcion) const;
    const std::vector<std::string>& posicionales() const { return posicionales_; }

    void agrega(const std::string& opcion, const std::string& v) { valores_[opcion].push_back(v); }
    void agregaPosicional(const std::string& v) { posicionales_.push_back(v); }

private:
    std::map<std::string, std::vector<std::string>> valores_;
    std::vector<std::string> posicionales_;
};

struct Contexto {
    OpcionesInicio inicio;
    std::ostream& salida;
    std::ostream& errores;
    InteraccionTerminal& interaccion;
};

class Comando {
public:
    virtual ~Comando() = default;
    /// The command's words, e.g. "empresa crear".
    virtual std::string nombre() const = 0;
    virtual std::string descripcion() const = 0;
    /// One whole sentence for the list of commands; by default the first
    /// sentence of the description.
    virtual std::string resumen() const;
    virtual std::vector<Opcion> opciones() const { return {}; }
    /// Positional arguments as shown in the usage line, e.g. "DIR"; a last one
    /// written "NAME..." takes one or more values.
    virtual std::vector<std::string> argumentos() const { return {}; }
    virtual int ejecuta(const Argumentos& args, Contexto& ctx) = 0;
    /// Sees the command's arguments before its help or its parsing, for a
    /// command whose options depend on one of them (importar --enlace N).
    virtual void conoceArgumentos(const std::vector<std::string>& argv) { (void)argv; }

    std::string ayuda() const;
    /// Parses argv after the command's words; throws ErrorUso.
    Argumentos analiza(const std::vector<std::string>& argv) const;
};

using FabricaComando = std::function<std::unique_ptr<Comando>()>;
std::vector<FabricaComando>& RegistroComandos();

struct RegistraComando {
    explicit RegistraComando(FabricaComando f) { RegistroComandos().push_back(std::move(f)); }
};

/// The first sentence of a text written over several lines, on one line.
std::string PrimeraFrase(const std::string& texto);

/// `texto` cut into lines of at most `ancho` characters at blanks, every
/// line after the first indented by `sangria` blanks (the first is
/// preceded by whatever the caller wrote). Ends without a line break.
std::string Envuelve(const std::string& texto, size_t sangria, size_t ancho = 79);

/// An error of the database engine, of the file system or of the library,
/// as the user reads it: one Spanish sentence with what could not be done
/// (the command) and which file, the engine's own text after it:
/// "No fue posible completar 'resumen': la base de datos X está dañada o no
/// es una base de datos (file is not a database)."
std::string TextoErrorMotor(const std::exception& error, const std::string& comando);

/// Starts the session as the desktop program would, with the global options
/// in place of the settings.
void IniciaSesionCli(Sesion& s, Contexto& ctx);

/// The base folder: --base, else the stored `RutaAcceso`. Refuses when the
/// folder holds no company table.
std::string BaseRequerida(Contexto& ctx);

/// Refuses, before anything runs, an input path given to `opcion` (written
/// without its dashes, e.g. "catalogo" or "mes 03") that is empty, does
/// not exist, is a folder or another thing than a plain file, or cannot be
/// read: ErrorArchivoEntrada naming the option and the path.
void VerificaArchivoEntrada(const std::string& ruta, const std::string& opcion);

/// Refuses, before anything runs, a delimited text file that `separador`
/// (the text of --separador, or a tab for --tabulador) does not split, as the
/// desktop's preview of the layout does: ErrorArchivoEntrada with the
/// system's "no se encuentra delimitado" message, the line and a hint.
void VerificaSeparadorEntrada(const std::string& ruta, const std::string& separador);

/// A whole number within limits, or ErrorUso naming the option.
int EnteroDeOpcion(const std::string& texto, const std::string& opcion, int minimo, int maximo);
std::vector<int> ListaDeEnteros(const std::string& texto, const std::string& opcion, int minimo, int maximo);

}  // namespace velmorant::cli
