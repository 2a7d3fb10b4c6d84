// dBase and FoxPro tables with their memo files: the input is the table,
// and after the first "#MEMO#" the memo file (written as both .DBT and
// .FPT). Read as a record source and loaded as the table loaders of the
// earlier audit products load it.
#include <string>
#include <string_view>

#include "Apoyo.h"
#include "platform/BaseDatos.h"
#include "platform/ErrorLectura.h"
#include "platform/fuentes/CargaTablas.h"
#include "platform/fuentes/FuenteDbf.h"

using namespace velmorant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    std::string_view todo(reinterpret_cast<const char*>(datos), largo);
    size_t marca = todo.find("#MEMO#");
    std::string_view tabla = todo.substr(0, marca);
    std::string_view memos = marca == std::string_view::npos ? std::string_view() : todo.substr(marca + 6);
    std::string ruta = fuzz::EscribeArchivo(tabla, "TABLA.DBF");
    fuzz::EscribeArchivo(memos, "TABLA.DBT");
    fuzz::EscribeArchivo(memos, "TABLA.FPT");
    try {
        FuenteDbf fuente(ruta);
        (void)fuente.nombresColumnas();
        Fila fila;
        while (fuente.siguiente(fila)) {
            (void)fuente.lugar(fila);
            fuzz::UsaFila(fila);
        }
    } catch (const ErrorLectura&) {
    }
    try {
        BaseDatos memoria;  // in memory
        (void)CargaTablaDbf(memoria, ruta, "TABLA");
    } catch (const ErrorLectura&) {
    }
    return 0;
}
