// Workbooks: the bytes as an .xlsx or .xls (the reader tells them by their
// content), read whole, first with the used area and then with a stated
// range and no header.
#include <string>

#include "Apoyo.h"
#include "platform/ErrorLectura.h"
#include "platform/fuentes/FuenteLibro.h"

using namespace velmorant;

namespace {
void Lee(const std::string& ruta, const OpcionesLibro& o) {
    try {
        FuenteLibro libro(ruta, o);
        (void)libro.hojas();
        (void)libro.nombresColumnas();
        (void)libro.totalEstimado();
        Fila fila;
        while (libro.siguiente(fila)) {
            (void)libro.lugar(fila);
            fuzz::UsaFila(fila);
        }
    } catch (const ErrorLectura&) {
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    std::string ruta = fuzz::EscribeArchivo(datos, largo, "libro.xlsx");
    (void)PrimeraHojaExcel(ruta);
    Lee(ruta, {});
    Lee(ruta, {.hoja = "", .rango = "$B2:D", .encabezado = false});
    return 0;
}
