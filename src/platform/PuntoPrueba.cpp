#include "platform/PuntoPrueba.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <unistd.h>

namespace velmorant {

namespace {

struct Estado {
    std::string objetivo;
    std::string lista;
    std::string copia;
    std::string carpeta;
    char fase = 'A';
    long filas = 0;
    bool activo = false;
    std::FILE* archivoLista = nullptr;

    Estado() {
        auto lee = [](const char* nombre) {
            const char* v = std::getenv(nombre);
            return std::string(v ? v : "");
        };
        objetivo = lee("VELMORANT_PUNTO_PRUEBA");
        lista = lee("VELMORANT_PUNTO_PRUEBA_LISTA");
        copia = lee("VELMORANT_PUNTO_PRUEBA_COPIA");
        activo = !objetivo.empty() || !lista.empty();
    }
};

Estado& Puntos() {
    static Estado e;
    return e;
}

// The disk as it stands: every file of the base folder, a journal left by
// an open transaction among them. Errors are ignored: the process dies next.
void CopiaCarpeta(const std::string& origen, const std::string& destino) {
    namespace fs = std::filesystem;
    std::error_code ec;
    fs::remove_all(destino, ec);
    fs::create_directories(destino, ec);
    fs::copy(origen, destino, fs::copy_options::recursive | fs::copy_options::overwrite_existing, ec);
    if (ec) std::fprintf(stderr, "copia de %s: %s\n", origen.c_str(), ec.message().c_str());
}

}  // namespace

bool PuntosPruebaActivos() { return Puntos().activo; }

void FasePuntoPrueba(char fase) { Puntos().fase = fase; }

void CarpetaPuntoPrueba(const std::string& carpeta) { Puntos().carpeta = carpeta; }

void FilaPuntoPrueba() {
    Estado& e = Puntos();
    if (e.activo && ++e.filas % 10 == 0) PuntoPrueba("fila " + std::to_string(e.filas));
}

void PuntoPrueba(const std::string& nombre) {
    Estado& e = Puntos();
    if (!e.activo) return;
    const std::string completo = std::string(1, e.fase) + " " + nombre;
    if (!e.lista.empty()) {
        if (!e.archivoLista) e.archivoLista = std::fopen(e.lista.c_str(), "a");
        if (e.archivoLista) {
            std::fprintf(e.archivoLista, "%s\n", completo.c_str());
            std::fflush(e.archivoLista);
        }
    }
    if (completo != e.objetivo) return;
    if (!e.copia.empty() && !e.carpeta.empty()) CopiaCarpeta(e.carpeta, e.copia);
    ::kill(::getpid(), SIGKILL);
}

}  // namespace velmorant
