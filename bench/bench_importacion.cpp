// Times a first import of a generated year through link 82, then a
// re-import of the client's second delivery of the same year, and prints
// lines per second, the re-import/first-import ratio and peak memory.
//
//   bench_importacion [LINEAS]      (default 200000 voucher lines)
//
// The year is written by velmorant-genera-demo, found beside this program's
// build folder (../tools/).

#include <QGuiApplication>

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "AnioGenerado.h"
#include "pipeline/Importacion.h"
#include "platform/Ajustes.h"
#include "session/Inicio.h"
#include "store/AltaBase.h"

using namespace velmorant;
using namespace velmorant::bench;
namespace fs = std::filesystem;

namespace {

long PicoMemoriaKb() {
    std::ifstream f("/proc/self/status");
    for (std::string l; std::getline(f, l);)
        if (l.rfind("VmHWM:", 0) == 0) return std::atol(l.c_str() + 6);
    return 0;
}

// Wall seconds; `cpu` receives the process's CPU seconds of the run, the
// figure that does not depend on what else the machine is doing.
double Importa(const fs::path& base, const fs::path& archivos, long& lineas, double& cpu) {
    Callada ui;
    Sesion s;
    s.interaccion = &ui;
    IniciaSesion(s, {base.string(), "BENCH", "2025"});
    auto importador = ImportadorDelAnio();
    auto inicio = std::chrono::steady_clock::now();
    std::clock_t cpuInicio = std::clock();
    auto r = EjecutaImportacion(s, importador, Archivos(archivos));
    cpu = static_cast<double>(std::clock() - cpuInicio) / CLOCKS_PER_SEC;
    std::chrono::duration<double> t = std::chrono::steady_clock::now() - inicio;
    if (r != ResultadoImportacion::Terminada) {
        std::cerr << "la importación no terminó (" << static_cast<int>(r) << ")\n";
        std::exit(1);
    }
    lineas = s.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas_Detalle").entero();
    return t.count();
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    long pedidas = argc > 1 ? std::atol(argv[1]) : 200000;
    auto anio = bench::GeneraAnio(pedidas);
    if (!anio) return 1;
    const fs::path dir = anio->dir;
    const std::string base = anio->base;

    long lineas1 = 0, lineas2 = 0;
    double cpu1 = 0, cpu2 = 0;
    double t1 = Importa(base, dir / "entrega1", lineas1, cpu1);
    double t2 = Importa(base, dir / "entrega2", lineas2, cpu2);
    std::cout << "Primera importación: " << lineas1 << " partidas en " << t1 << " s (" << cpu1 << " s de CPU), "
              << static_cast<long>(lineas1 / t1) << " partidas/s\n"
              << "Reimportación:       " << lineas2 << " partidas en " << t2 << " s (" << cpu2 << " s de CPU), "
              << static_cast<long>(lineas2 / t2) << " partidas/s\n"
              << "Reimportación / primera: " << t2 / t1 << " (CPU " << cpu2 / cpu1 << ")\n"
              << "Memoria pico (VmHWM): " << PicoMemoriaKb() / 1024 << " MB\n";
    fs::remove_all(dir);
    return 0;
}
