// Reading speed of the delimited voucher reader: writes a voucher file of
// 100,000 lines (20,000 vouchers of five lines on 300 accounts) in a
// temporary folder, reads it into the run's stores and prints lines per
// second and the peak resident memory.
//
//   bench_lectura_texto [lines]

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "importers/texto_delimitado/LectorTextoDelimitado.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"

using namespace velmorant;

namespace {

class SinMensajes : public Interaccion {
public:
    bool mensaje(TipoMensaje, const std::string&, const std::string& texto) override {
        std::cerr << texto << "\n";
        return false;
    }
    std::string eligeArchivo(const std::string&, const std::string&) override { return ""; }
};

std::string PicoMemoria() {
    std::ifstream estado("/proc/self/status");
    for (std::string linea; std::getline(estado, linea);)
        if (linea.rfind("VmHWM:", 0) == 0) return linea.substr(6);
    return " ?";
}

// CPU seconds of the process: unlike the wall clock, not stretched by other
// work on a shared machine.
double SegundosCpu() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

std::string Cuenta(int i) {
    char t[16];
    std::snprintf(t, sizeof t, "%03d%02d00", 100 + i / 10, i % 10 + 1);
    return t;
}

void EscribeArchivos(const std::string& catalogo, const std::string& polizas, long lineas) {
    std::ofstream cat(catalogo, std::ios::binary);
    cat << "Cuenta|Nivel|Descripcion|Saldo\r\n";
    for (int i = 0; i < 300; ++i) cat << Cuenta(i) << "|2|Cuenta de prueba número " << i << "|0\r\n";
    std::ofstream pol(polizas, std::ios::binary);
    pol << "Numero|Cuenta|Fecha|Tipo|x|Concepto|Indicador|Importe|Referencia\r\n";
    for (long n = 0; n < lineas; ++n) {
        long poliza = n / 5;
        int dia = static_cast<int>(poliza % 28) + 1;
        pol << poliza << "|" << Cuenta(static_cast<int>((n * 7) % 300)) << "|" << (dia < 10 ? "0" : "") << dia
            << "/01/2024|" << (poliza % 3 == 0 ? "Dr" : poliza % 3 == 1 ? "Ig" : "Eg") << "||Concepto de la póliza "
            << poliza << "|" << (n % 5 == 4 ? "2" : "1") << "|" << (n % 5 == 4 ? 4 * (poliza % 1000 + 1) : poliza % 1000 + 1)
            << ".25|Factura " << n << "\r\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    long lineas = argc > 1 ? std::atol(argv[1]) : 100000;
    namespace fs = std::filesystem;
    fs::path carpeta = fs::temp_directory_path() / ("velmorant-bench-" + std::to_string(getpid()));
    fs::create_directories(carpeta);
    std::string base = carpeta.string() + "/";

    SinMensajes ui;
    Sesion s;
    s.interaccion = &ui;
    s.VersionPrograma = "bench";
    s.RutaEmpresa = base;
    s.FormatoCtaEmpresa = "999-99-99";
    s.SeparadorEmpresa = "-";
    s.NumeroNiveles = 3;
    s.LongitudesNivel = {3, 2, 2};
    s.RellenaCeros = true;
    s.CatalogoArbol = true;
    s.DbEmpresa = std::make_unique<BaseDatos>(base + "BENCH_2024.sqlite", BaseDatos::Modo::Crear);
    CreaEsquemaEmpresa(*s.DbEmpresa);
    CreaInconsisImpTmp(s);
    CreaCuentasTmp(s);
    CreaPolizasTmp(s);
    CreaPolizasDetalleTmp(s);
    if (!AbreInconsistencias(s) || !AbreCuentasTmp(s) || !AbrePolizasTmp(s)) {
        std::cerr << "no se pudieron abrir los almacenes temporales\n";
        return 1;
    }

    LecturaDelimitada l;
    l.separador = "|";
    l.Titulos = true;
    auto& c = l.config;
    c.PIniCuenta = 1, c.PIniNivel = 2, c.PIniDescripcion = 3, c.PIniSdoIni = 4;
    c.PIniNumPol = 1, c.PIniCtaPol = 2, c.PIniDia = 3, c.PIniTipo = 4, c.PIniConcept = 6;
    c.PIniTipoMov = 7, c.PIniImporte = 8, c.PIniRef = 9;

    std::string catalogo = base + "catalogo.txt", polizas = base + "polizas.txt";
    EscribeArchivos(catalogo, polizas, lineas);
    DestinoTmp destino(s, ReglasTextoDelimitado());
    ImportaCatalogoTexto(s, destino, catalogo, l, false);

    auto inicio = std::chrono::steady_clock::now();
    double cpuInicio = SegundosCpu();
    ImportaPolizasTexto(s, destino, polizas, l);
    double segundos = std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
    double cpu = SegundosCpu() - cpuInicio;

    long leidas = s.DbEmpresa->escalar("SELECT count(*) FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp").entero();
    long vouchers = s.DbEmpresa->escalar("SELECT count(*) FROM Polizas_Tmp.Polizas_Tmp").entero();
    std::cout << "Lineas de poliza leidas: " << leidas << " (" << vouchers << " polizas) en " << segundos << " s\n"
              << "Lineas por segundo:      " << static_cast<long>(static_cast<double>(leidas) / segundos)
              << " (reloj); " << static_cast<long>(static_cast<double>(leidas) / cpu) << " por segundo de CPU (" << cpu
              << " s)\n"
              << "Pico de memoria (VmHWM):" << PicoMemoria() << "\n";

    BorraTemporales(s);
    s.DbEmpresa.reset();
    fs::remove_all(carpeta);
    return leidas == lineas ? 0 : 1;
}
