// Dates as sources and printed reports write them.
#include <string>

#include "Apoyo.h"
#include "importers/reportes/LectorReporte.h"
#include "platform/Fecha.h"
#include "session/Funciones.h"

using namespace velmorant;

namespace {
void Revisa(const std::optional<Fecha>& f, const std::string& lector) {
    if (!f) return;
    fuzz::Exige(f->valida(), lector + " dio una fecha que no existe: " + f->iso());
    auto iso = Fecha::desdeIso(f->iso());
    fuzz::Exige(iso && *iso == *f, lector + ": la fecha no se lee de vuelta de " + f->iso());
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    std::string t(reinterpret_cast<const char*>(datos), largo);
    Revisa(LeeFecha(t), "LeeFecha");
    Revisa(LeeFechaReporte(t), "LeeFechaReporte");
    Revisa(Fecha::desdeIso(t), "Fecha::desdeIso");
    (void)FechaDesdeTexto(t);
    return 0;
}
