// Descriptions of printed reports (TOML), as a user may write or damage one.
#include <string>

#include "Apoyo.h"
#include "importers/reportes/DescripcionReporte.h"

using namespace velmorant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    std::string texto(reinterpret_cast<const char*>(datos), largo);
    try {
        (void)CargaDescripcionDeTexto(texto, "fuzz.toml");
    } catch (const ErrorDescripcion&) {
    }
    return 0;
}
