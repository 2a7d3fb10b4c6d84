#include "platform/fuentes/FuenteLineas.h"

namespace velmorant {

FuenteLineas::FuenteLineas(const std::string& ruta) : archivo_(ruta), total_(CuentaLineasTexto(ruta)) {}

bool FuenteLineas::siguiente(Fila& fila) {
    if (!archivo_.leeLinea(fila.texto)) return false;
    fila.numero = archivo_.numeroLinea();
    fila.celdas.clear();
    return true;
}

}  // namespace velmorant
