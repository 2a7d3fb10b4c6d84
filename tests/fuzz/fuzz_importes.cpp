// Amounts as sources write them: the cleaning and conversion of every
// reader, exact money read back from its own text, the cell of a workbook
// or table that holds the text.
#include <string>

#include "Apoyo.h"
#include "importers/Limpieza.h"
#include "platform/Moneda.h"
#include "platform/Numeros.h"
#include "platform/fuentes/Celda.h"

using namespace velmorant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    std::string t(reinterpret_cast<const char*>(datos), largo);
    (void)EsNumerico(t);
    try {
        (void)ConvierteImporte(LimpiaImporte(t, "0"));
    } catch (const FalloFila&) {
    }
    if (auto m = Moneda::desdeTexto(t)) {
        // What a value writes of itself reads back to the same value.
        auto otra = Moneda::desdeTexto(m->texto());
        fuzz::Exige(otra && *otra == *m, "Moneda::texto no se lee de vuelta: " + m->texto());
        (void)m->formatoMoneda();
        (void)m->abs();
    }
    (void)Celda::texto(t).comoMoneda();
    (void)Celda::numero(t).comoMoneda();
    (void)ValEntero(t);
    return 0;
}
