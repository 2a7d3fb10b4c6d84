// Fixed-position text and plain lines: the first byte gives the number of
// fields, the next pairs of bytes their positions and lengths (below 1
// included), the rest is the file.
#include <string>
#include <utility>
#include <vector>

#include "Apoyo.h"
#include "platform/ErrorLectura.h"
#include "platform/fuentes/FuenteLineas.h"
#include "platform/fuentes/FuenteTexto.h"

using namespace velmorant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    if (largo < 1) return -1;
    size_t campos = datos[0] % 8, p = 1;
    std::vector<std::pair<int, int>> lugares;
    for (size_t i = 0; i < campos && p + 1 < largo; ++i, p += 2)
        lugares.emplace_back(static_cast<signed char>(datos[p]), static_cast<signed char>(datos[p + 1]));
    if (p > largo) return -1;
    std::string ruta = fuzz::EscribeArchivo(datos + p, largo - p, "fijo.txt");
    try {
        FuenteTextoFijo fuente(ruta, lugares);
        Fila fila;
        while (fuente.siguiente(fila)) fuzz::UsaFila(fila);
        FuenteLineas lineas(ruta);
        while (lineas.siguiente(fila))
            for (auto [posicion, ancho] : lugares) (void)TextoEnPosicion(fila.texto, posicion, ancho);
    } catch (const ErrorLectura&) {
    }
    return 0;
}
