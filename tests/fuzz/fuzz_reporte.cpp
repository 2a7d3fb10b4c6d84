// Printed reports saved as text, read by the report engine under each of
// the shipped descriptions: the first byte chooses the description and the
// month, the rest is the report. Vouchers go to a destination that counts.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "Apoyo.h"
#include "importers/Limpieza.h"
#include "importers/reportes/LectorReporte.h"
#include "platform/ErrorLectura.h"
#include "platform/fuentes/FuenteLineas.h"

using namespace velmorant;

namespace {

class DestinoContado : public DestinoReporte {
public:
    long nuevaPoliza(const PolizaLeida&) override { return ++polizas; }
    long poliza(const PolizaLeida&) override { return ++polizas; }
    void agregaPartida(long id, const PartidaLeida&) override {
        fuzz::Exige(id >= 1 && id <= polizas, "partida de una póliza que no se dio");
    }
    void partidaDudosa(const PolizaLeida&, const std::string&, const std::string&) override {}
    long polizas = 0;
};

const std::vector<DescripcionReporte>& Descripciones() {
    static const std::vector<DescripcionReporte> lista = [] {
        std::vector<DescripcionReporte> r;
        std::vector<std::filesystem::path> rutas;
        for (const auto& e : std::filesystem::directory_iterator(VELMORANT_REPORTES))
            if (e.path().extension() == ".toml") rutas.push_back(e.path());
        std::sort(rutas.begin(), rutas.end());
        for (const auto& p : rutas) r.push_back(CargaDescripcion(p.string()));
        return r;
    }();
    return lista;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    if (largo < 1) return -1;
    const auto& descripciones = Descripciones();
    const DescripcionReporte& d = descripciones[datos[0] % descripciones.size()];
    int mes = datos[0] / descripciones.size() % 13 + 1;
    std::string ruta = fuzz::EscribeArchivo(datos + 1, largo - 1, "reporte.txt");
    DestinoContado destino;
    try {
        LectorReporte lector(fuzz::SesionFuzz(), d, destino, mes);
        FuenteLineas lineas(ruta);
        Fila fila;
        while (lineas.siguiente(fila)) {
            try {
                (void)lector.procesa(fila.texto);
            } catch (const FalloFila&) {
                // the row loop reports it with the file and line
            }
        }
    } catch (const ErrorLectura&) {
    }
    return 0;
}
