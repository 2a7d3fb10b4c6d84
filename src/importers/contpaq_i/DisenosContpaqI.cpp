#include "importers/contpaq_i/DisenosContpaqI.h"

#include <stdexcept>

#include "platform/Texto.h"

namespace velmorant::contpaqi {

const CampoDiseno& DisenoRegistro::campo(std::string_view nombre) const {
    for (const auto& c : campos)
        if (nombre == c.nombre) return c;
    throw std::logic_error("El registro " + std::string(marca) + " no tiene el campo " + std::string(nombre));
}

const DisenoRegistro& DisenoCuenta() {
    static const DisenoRegistro d{"C ", {{"cuenta", 4, 33}, {"nombre", 35, 84}, {"cuenta-padre", 137, 166}, {"tipo", 168, 168}}};
    return d;
}

const DisenoRegistro& DisenoPoliza() {
    static const DisenoRegistro d{"P ", {{"concepto", 35, 134}, {"uuid", 146, 0}}};
    return d;
}

const DisenoRegistro& DisenoMovimiento() {
    static const DisenoRegistro d{"M1", {{"referencia", 35, 45}, {"importe", 56, 0}, {"concepto", 100, 169}, {"uuid", 190, 0}}};
    return d;
}

// The earlier layout: the account in the catalogue's columns, a reference
// of ten, the movement's kind in one column and the amount right-aligned in
// twenty, then the concept to the end of the line.
const DisenoRegistro& DisenoMovimientoAnterior() {
    static const DisenoRegistro d{
        "M ",
        {{"cuenta", 4, 33}, {"referencia", 35, 44}, {"tipo-mov", 46, 46}, {"importe", 48, 67}, {"concepto", 69, 0}}};
    return d;
}

namespace {

// Byte offset of character `n` (from 0) of a UTF-8 text; the text's size
// when it has fewer characters.
size_t Desplazamiento(std::string_view t, size_t n) {
    size_t i = 0;
    while (i < t.size() && n > 0) {
        ++i;
        while (i < t.size() && (static_cast<unsigned char>(t[i]) & 0xC0) == 0x80) ++i;
        --n;
    }
    return i;
}

}  // namespace

std::string Columnas(std::string_view texto, int desde, int hasta) {
    if (desde < 1 || (hasta != 0 && hasta < desde)) return "";
    const size_t inicio = Desplazamiento(texto, static_cast<size_t>(desde - 1));
    if (inicio >= texto.size()) return "";
    if (hasta == 0) return std::string(texto.substr(inicio));
    const size_t fin = inicio + Desplazamiento(texto.substr(inicio), static_cast<size_t>(hasta - desde + 1));
    return std::string(texto.substr(inicio, fin - inicio));
}

std::string Campo(const DisenoRegistro& d, std::string_view linea, std::string_view nombre) {
    const CampoDiseno& c = d.campo(nombre);
    return RecortaEspacios(Columnas(linea, c.desde, c.hasta));
}

std::string Marca(std::string_view linea) {
    std::string m = Columnas(linea, 1, 2);
    if (m.size() == 1) m += ' ';
    return m;
}

}  // namespace velmorant::contpaqi
