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

namespace {

std::string_view SinEspaciosAlRededor(std::string_view t) {
    size_t a = t.find_first_not_of(' ');
    if (a == std::string_view::npos) return {};
    return t.substr(a, t.find_last_not_of(' ') - a + 1);
}

}  // namespace

std::string Fila::campo(int columna) const {
    const Celda& c = (*this)[columna];
    if (auto propio = c.textoPropio()) return std::string(SinEspaciosAlRededor(*propio));
    return RecortaEspacios(c.comoTexto());
}

std::string_view Fila::campoVista(int columna, std::string& apoyo) const {
    const Celda& c = (*this)[columna];
    if (auto propio = c.textoPropio()) return SinEspaciosAlRededor(*propio);
    apoyo = RecortaEspacios(c.comoTexto());
    return apoyo;
}

bool Fila::vacia() const {
    for (const auto& c : celdas)
        if (!c.esNula() && !RecortaEspacios(c.comoTexto()).empty()) return false;
    return true;
}

std::string FuenteRegistros::lugar(const Fila& fila) const {
    return "archivo " + ruta() + ", línea " + std::to_string(fila.numero);
}

}  // namespace velmorant
