#include "cli/Comando.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "importers/texto_delimitado/DelimitadorArchivo.h"
#include "platform/Ajustes.h"
#include "platform/BaseDatos.h"
#include "platform/Numeros.h"
#include "session/Funciones.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant::cli {

std::optional<std::string> Argumentos::valor(const std::string& opcion) const {
    auto it = valores_.find(opcion);
    if (it == valores_.end() || it->second.empty()) return std::nullopt;
    return it->second.back();
}

std::vector<std::string> Argumentos::valores(const std::string& opcion) const {
    auto it = valores_.find(opcion);
    return it == valores_.end() ? std::vector<std::string>{} : it->second;
}

std::string Argumentos::requerido(const std::string& opcion) const {
    auto v = valor(opcion);
    if (!v || v->empty()) throw ErrorUso("falta la opción --" + opcion);
    return *v;
}

std::vector<FabricaComando>& RegistroComandos() {
    static std::vector<FabricaComando> registro;
    return registro;
}

std::string PrimeraFrase(const std::string& texto) {
    std::string r;
    for (size_t i = 0; i < texto.size(); ++i) {
        char c = texto[i] == '\n' ? ' ' : texto[i];
        r += c;
        // A period that ends the text or is followed by a blank ends the sentence.
        if (c == '.' && (i + 1 == texto.size() || texto[i + 1] == ' ' || texto[i + 1] == '\n')) break;
    }
    return r;
}

std::string Envuelve(const std::string& texto, size_t sangria, size_t ancho) {
    auto caracteres = [](const std::string& t) {
        return static_cast<size_t>(std::count_if(t.begin(), t.end(), [](char c) { return (c & 0xC0) != 0x80; }));
    };
    std::istringstream palabras(texto);
    std::string r, linea, palabra;
    size_t disponible = ancho > sangria ? ancho - sangria : 1;
    while (palabras >> palabra) {
        if (!linea.empty() && caracteres(linea) + 1 + caracteres(palabra) > disponible) {
            r += linea + "\n" + std::string(sangria, ' ');
            linea.clear();
        }
        linea += (linea.empty() ? "" : " ") + palabra;
    }
    return r + linea;
}

namespace {

// What went wrong with a database, by the engine's primary result code.
std::string CausaBaseDatos(int codigo, const std::string& archivo) {
    std::string base = archivo.empty() ? std::string("una base de datos") : "la base de datos " + archivo;
    std::string en = archivo.empty() ? std::string("en una base de datos") : "en la base de datos " + archivo;
    switch (codigo & 0xFF) {
        case 14: return "no se pudo abrir " + base;                               // CANTOPEN
        case 11:                                                                  // CORRUPT
        case 26: return base + " está dañada o no es una base de datos";          // NOTADB
        case 8: return "no se pudo escribir " + en + ", que está en sólo lectura";  // READONLY
        case 5:                                                                   // BUSY
        case 6: return base + " está ocupada por otro programa";                  // LOCKED
        case 13: return "no hay espacio en el disco para " + base;                // FULL
        case 10: return "falló la lectura o la escritura " + en;                  // IOERR
        case 3:                                                                   // PERM
        case 23: return "no hay permiso para usar " + base;                       // AUTH
        default: return "falló una operación " + en;
    }
}

// What went wrong with a file or folder, by the system's error number.
std::string CausaArchivo(const std::error_code& ec, const std::string& ruta) {
    std::string r = ruta.empty() ? std::string("un archivo o carpeta") : ruta;
    switch (static_cast<std::errc>(ec.value())) {
        case std::errc::no_such_file_or_directory: return "no existe la carpeta o el archivo " + r;
        case std::errc::not_a_directory: return "una parte de la ruta " + r + " es un archivo, no una carpeta";
        case std::errc::permission_denied:
        case std::errc::operation_not_permitted: return "no hay permiso para usar " + r;
        case std::errc::read_only_file_system: return r + " está en un disco de sólo lectura";
        case std::errc::no_space_on_device: return "no hay espacio en el disco para " + r;
        case std::errc::filename_too_long: return "el nombre " + r + " es demasiado largo";
        case std::errc::file_exists: return "ya existe " + r;
        case std::errc::is_a_directory: return r + " es una carpeta, no un archivo";
        default: return "falló una operación con " + r;
    }
}

}  // namespace

std::string TextoErrorMotor(const std::exception& error, const std::string& comando) {
    std::string inicio = "No fue posible completar '" + comando + "': ";
    if (auto e = dynamic_cast<const ErrorBaseDatos*>(&error)) {
        // The engine's text of a failed open ends with the path, said already.
        std::string motor = e->mensajeMotor();
        std::string cola = ": " + e->archivo();
        if (!e->archivo().empty() && motor.size() > cola.size() &&
            motor.compare(motor.size() - cola.size(), cola.size(), cola) == 0)
            motor.erase(motor.size() - cola.size());
        return inicio + CausaBaseDatos(e->codigo(), e->archivo()) + " (" + motor + ").";
    }
    if (auto e = dynamic_cast<const std::filesystem::filesystem_error*>(&error))
        return inicio + CausaArchivo(e->code(), e->path1().string()) + " (" + e->code().message() + ").";
    return inicio + error.what();
}

std::string Comando::resumen() const { return PrimeraFrase(descripcion()); }

std::string Comando::ayuda() const {
    std::ostringstream o;
    o << "Uso: velmorant-cli [opciones globales] " << nombre();
    for (auto& a : argumentos()) o << " " << a;
    if (!opciones().empty()) o << " [opciones]";
    o << "\n\n" << descripcion() << "\n";
    if (!opciones().empty()) {
        o << "\nOpciones:\n";
        for (auto& op : opciones()) {
            std::string izquierda = "  --" + op.nombre + (op.valor.empty() ? "" : " " + op.valor);
            if (izquierda.size() < 30) izquierda += std::string(30 - izquierda.size(), ' ');
            o << izquierda << " " << op.descripcion << (op.repetible ? " (repetible)" : "") << "\n";
        }
    }
    o << "  --help                       esta ayuda\n";
    return o.str();
}

Argumentos Comando::analiza(const std::vector<std::string>& argv) const {
    Argumentos r;
    auto ops = opciones();
    for (size_t i = 0; i < argv.size(); ++i) {
        const std::string& a = argv[i];
        if (a.rfind("--", 0) != 0 || a == "--") {
            r.agregaPosicional(a);
            continue;
        }
        std::string nombre = a.substr(2), valor;
        bool conIgual = false;
        if (auto p = nombre.find('='); p != std::string::npos) {
            valor = nombre.substr(p + 1);
            nombre = nombre.substr(0, p);
            conIgual = true;
        }
        const Opcion* op = nullptr;
        for (auto& o : ops)
            if (o.nombre == nombre) op = &o;
        if (!op) throw ErrorUso("opción desconocida: --" + nombre);
        if (op->valor.empty()) {
            if (conIgual) throw ErrorUso("la opción --" + nombre + " no lleva valor");
            r.agrega(nombre, "");
            continue;
        }
        if (!conIgual) {
            if (i + 1 >= argv.size()) throw ErrorUso("la opción --" + nombre + " necesita " + op->valor);
            valor = argv[++i];
        }
        if (r.tiene(nombre) && !op->repetible) throw ErrorUso("la opción --" + nombre + " se indicó dos veces");
        r.agrega(nombre, valor);
    }
    // A last argument written "NAME..." takes one or more values.
    auto esperados = argumentos();
    bool variable = !esperados.empty() && esperados.back().size() > 3 &&
                    esperados.back().compare(esperados.back().size() - 3, 3, "...") == 0;
    if (variable ? r.posicionales().size() < esperados.size() : r.posicionales().size() != esperados.size()) {
        std::string esperado;
        for (auto& a : argumentos()) esperado += " " + a;
        throw ErrorUso("'" + nombre() + "' espera" + (esperado.empty() ? " ningún argumento" : esperado));
    }
    return r;
}

void IniciaSesionCli(Sesion& s, Contexto& ctx) {
    s.interaccion = &ctx.interaccion;
    IniciaSesion(s, ctx.inicio);
}

std::string BaseRequerida(Contexto& ctx) {
    std::string base = ctx.inicio.base ? *ctx.inicio.base
                                       : LeeAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "RutaAcceso");
    if (base.empty()) throw Rehusado("No se indicó la base: use --base DIR o abra una empresa con 'empresa abrir'.");
    base = ConSeparadorFinal(base);
    if (!ExisteArchivo(RutaBaseDatos(base, kArchivoEmpresas)))
        throw Rehusado("La carpeta " + base + " no contiene la base " + kArchivoEmpresas + kExtensionBase +
                       "; créela con 'velmorant-cli base crear'.");
    return base;
}

void VerificaArchivoEntrada(const std::string& ruta, const std::string& opcion) {
    const std::string quien = "--" + opcion + ": ";
    if (ruta.empty()) throw ErrorArchivoEntrada(quien + "falta la ruta del archivo");
    std::error_code ec;
    auto estado = std::filesystem::status(ruta, ec);
    if (!std::filesystem::exists(estado)) throw ErrorArchivoEntrada(quien + "no existe el archivo " + ruta);
    if (std::filesystem::is_directory(estado))
        throw ErrorArchivoEntrada(quien + ruta + " es una carpeta, no un archivo");
    if (!std::filesystem::is_regular_file(estado))
        throw ErrorArchivoEntrada(quien + ruta + " no es un archivo común");
    if (!std::ifstream(ruta, std::ios::binary))
        throw ErrorArchivoEntrada(quien + "no se puede leer el archivo " + ruta + " (sin permiso de lectura)");
}

void VerificaSeparadorEntrada(const std::string& ruta, const std::string& separador) {
    long linea = LineaSinDelimitador(ruta, separador);
    if (linea == 0) return;
    std::string cual = separador == "\t" ? "el tabulador" : "'" + separador + "'";
    throw ErrorArchivoEntrada(MensajeArchivoSinDelimitar(ruta) + "\nLa línea " + std::to_string(linea) +
                              " no contiene el separador indicado (" + cual +
                              "); revise --separador o --tabulador.");
}

int EnteroDeOpcion(const std::string& texto, const std::string& opcion, int minimo, int maximo) {
    auto v = ValorNumerico(texto);
    if (!v || *v != static_cast<long long>(*v) || *v < minimo || *v > maximo)
        throw ErrorUso("--" + opcion + ": '" + texto + "' no es un número de " + std::to_string(minimo) + " a " +
                       std::to_string(maximo));
    return static_cast<int>(*v);
}

std::vector<int> ListaDeEnteros(const std::string& texto, const std::string& opcion, int minimo, int maximo) {
    std::vector<int> r;
    std::string pieza;
    std::istringstream in(texto);
    while (std::getline(in, pieza, ',')) r.push_back(EnteroDeOpcion(pieza, opcion, minimo, maximo));
    return r;
}

}  // namespace velmorant::cli
