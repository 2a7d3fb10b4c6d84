// Delimited text: the first byte chooses the delimiter and the quote rule,
// the rest is the file. Rows go through the cleaning every reader applies,
// and the check for a file that does not hold the delimiter.
#include <array>
#include <string>

#include "Apoyo.h"
#include "importers/texto_delimitado/DelimitadorArchivo.h"
#include "platform/ErrorLectura.h"
#include "platform/fuentes/FuenteTexto.h"

using namespace velmorant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    if (largo < 1) return -1;
    static const std::array<const char*, 8> kSeparadores = {",", "|", "\t", ";", "||", "~", "", "ab"};
    std::string separador = kSeparadores[datos[0] % kSeparadores.size()];
    bool comillas = datos[0] & 0x80;
    std::string ruta = fuzz::EscribeArchivo(datos + 1, largo - 1, "delimitado.txt");
    try {
        FuenteTextoDelimitado fuente(ruta, separador, comillas);
        (void)fuente.aviso();
        Fila fila;
        while (fuente.siguiente(fila)) {
            (void)fuente.lugar(fila);
            fuzz::UsaFila(fila);
        }
        (void)LineaSinDelimitador(ruta, separador);
    } catch (const ErrorLectura&) {
    }
    return 0;
}
