// Reading speed and memory of the workbook source: writes an .xlsx of
// 200,000 voucher rows (nine columns: number, account, date, type,
// concept from the shared strings, indicator, amount, reference inline)
// in a temporary folder, reads it whole through FuenteLibro and prints
// rows per second and the peak resident memory, which should follow the
// shared strings and not the sheet's size.
//
//   bench_lectura_libro [rows]

#include <unistd.h>
#include <zip.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "platform/fuentes/FuenteLibro.h"

using namespace velmorant;

namespace {

std::string PicoMemoria() {
    std::ifstream estado("/proc/self/status");
    for (std::string linea; std::getline(estado, linea);)
        if (linea.rfind("VmHWM:", 0) == 0) return linea.substr(6);
    return " ?";
}

double SegundosCpu() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

// The sheet goes through a file of its own, so that writing it does not
// raise the peak memory that the reading is measured by.
void EscribeLibro(const std::string& ruta, long filas) {
    const std::string rel = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
    std::string rutaHoja = ruta + ".hoja.xml";
    std::ofstream salida(rutaHoja, std::ios::binary);
    std::string hoja = "<worksheet><sheetData><row r=\"1\">";
    const char* titulos[] = {"Numero", "Cuenta", "Fecha", "Tipo", "Concepto", "Indicador", "Importe", "Referencia"};
    char columna = 'A';
    for (const char* t : titulos)
        hoja += std::string("<c r=\"") + columna++ + "1\" t=\"inlineStr\"><is><t>" + t + "</t></is></c>";
    hoja += "</row>";
    std::string cadenas = "<sst>";
    for (int i = 0; i < 1000; ++i) cadenas += "<si><t>Concepto de la póliza " + std::to_string(i) + "</t></si>";
    cadenas += "</sst>";
    char linea[512];
    for (long n = 0; n < filas; ++n) {
        long poliza = n / 5, r = n + 2;
        std::snprintf(
            linea, sizeof linea,
            "<row r=\"%ld\"><c r=\"A%ld\"><v>%ld</v></c><c r=\"B%ld\"><v>%ld</v></c>"
            "<c r=\"C%ld\" s=\"1\"><v>%ld</v></c><c r=\"D%ld\" t=\"inlineStr\"><is><t>Dr</t></is></c>"
            "<c r=\"E%ld\" t=\"s\"><v>%ld</v></c><c r=\"F%ld\"><v>%d</v></c>"
            "<c r=\"G%ld\"><v>%ld.25</v></c><c r=\"H%ld\" t=\"inlineStr\"><is><t>Factura %ld</t></is></c></row>",
            r, r, poliza, r, 1010001 + (n * 7) % 300, r, 45292 + poliza % 28, r, r, poliza % 1000, r,
            n % 5 == 4 ? 2 : 1, r, poliza % 1000 + 1, r, n);
        salida << hoja << linea;
        hoja.clear();
    }
    salida << "</sheetData></worksheet>";
    salida.close();
    const std::pair<std::string, std::string> partes[] = {
        {"xl/workbook.xml", "<workbook><sheets><sheet name=\"Polizas\" r:id=\"h\"/></sheets></workbook>"},
        {"xl/_rels/workbook.xml.rels",
         "<Relationships><Relationship Id=\"h\" Type=\"" + rel + "worksheet\" Target=\"hoja.xml\"/>" +
             "<Relationship Id=\"c\" Type=\"" + rel + "sharedStrings\" Target=\"cadenas.xml\"/>" +
             "<Relationship Id=\"e\" Type=\"" + rel + "styles\" Target=\"estilos.xml\"/></Relationships>"},
        {"xl/estilos.xml", "<styleSheet><cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"14\"/></cellXfs></styleSheet>"},
        {"xl/cadenas.xml", cadenas},
    };
    int error = 0;
    zip_t* z = zip_open(ruta.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    for (const auto& [nombre, texto] : partes)
        zip_file_add(z, nombre.c_str(), zip_source_buffer(z, texto.data(), texto.size(), 0), 0);
    zip_file_add(z, "xl/hoja.xml", zip_source_file(z, rutaHoja.c_str(), 0, -1), 0);
    zip_close(z);
    std::filesystem::remove(rutaHoja);
}

}  // namespace

int main(int argc, char** argv) {
    long filas = argc > 1 ? std::atol(argv[1]) : 200000;
    namespace fs = std::filesystem;
    fs::path carpeta = fs::temp_directory_path() / ("velmorant-bench-" + std::to_string(getpid()));
    fs::create_directories(carpeta);
    std::string ruta = (carpeta / "polizas.xlsx").string();
    EscribeLibro(ruta, filas);
    std::cout << "Libro de " << filas << " filas: " << fs::file_size(ruta) / 1024
              << " KB; memoria al escribirlo:" << PicoMemoria() << "\n";

    auto inicio = std::chrono::steady_clock::now();
    double cpuInicio = SegundosCpu();
    long leidas = 0, conFecha = 0;
    FuenteLibro libro(ruta);
    double apertura = SegundosCpu() - cpuInicio;
    Fila fila;
    while (libro.siguiente(fila)) {
        ++leidas;
        if (fila[3].comoFecha()) ++conFecha;
    }
    double segundos = std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
    double cpu = SegundosCpu() - cpuInicio;

    std::cout << "Filas leidas: " << leidas << " (" << conFecha << " con fecha) en " << segundos << " s\n"
              << "Filas por segundo: " << static_cast<long>(static_cast<double>(leidas) / segundos) << " (reloj); "
              << static_cast<long>(static_cast<double>(leidas) / cpu) << " por segundo de CPU (" << cpu
              << " s, de ellos " << apertura << " s al abrir y contar)\n"
              << "Pico de memoria (VmHWM):" << PicoMemoria() << "\n";
    fs::remove_all(carpeta);
    return leidas == filas && conFecha == filas ? 0 : 1;
}
