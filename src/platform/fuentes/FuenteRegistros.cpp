#include "platform/fuentes/FuenteRegistros.h"

#include "platform/Texto.h"

namespace velmorant {

namespace {
const Celda kCeldaNula;
}

const Celda& Fila::operator[](int columna) const {
    if (columna < 1 || static_cast<size_t>(columna) > celdas.size()) return kCeldaNula;
    return celdas[static_cast<size_t>(columna) - 1];
}

std::string Fila::campo(int columna) const { return RecortaEspacios((*this)[columna].comoTexto()); }

bool Fila::vacia() const {
    for (const auto& c : celdas)
        if (!c.esNula() && !RecortaEspacios(c.comoTexto()).empty()) return false;
    return true;
}

std::string FuenteRegistros::lugar(const Fila& fila) const {
    return "archivo " + ruta() + ", línea " + std::to_string(fila.numero);
}

}  // namespace velmorant
