#include "platform/Valor.h"

#include <cmath>
#include <cstdio>

#include "platform/Numeros.h"

namespace velmorant {

std::string Valor::texto() const {
    if (auto p = std::get_if<std::string>(&v_)) return *p;
    if (auto p = std::get_if<std::int64_t>(&v_)) return std::to_string(*p);
    if (auto p = std::get_if<double>(&v_)) {
        char b[40];
        std::snprintf(b, sizeof b, "%.15g", *p);
        return b;
    }
    return {};
}

std::int64_t Valor::entero() const {
    if (auto p = std::get_if<std::int64_t>(&v_)) return *p;
    if (auto p = std::get_if<double>(&v_)) return static_cast<std::int64_t>(std::llround(*p));
    if (auto p = std::get_if<std::string>(&v_)) {
        auto d = ValorNumerico(*p);
        return d ? static_cast<std::int64_t>(std::llround(*d)) : 0;
    }
    return 0;
}

double Valor::real() const {
    if (auto p = std::get_if<double>(&v_)) return *p;
    if (auto p = std::get_if<std::int64_t>(&v_)) return static_cast<double>(*p);
    if (auto p = std::get_if<std::string>(&v_)) return ValorNumerico(*p).value_or(0.0);
    return 0;
}

Moneda Valor::moneda() const {
    if (auto p = std::get_if<std::int64_t>(&v_)) return Moneda::desdeDiezmilesimas(*p);
    if (auto p = std::get_if<double>(&v_)) return Moneda::desdeDouble(*p);
    if (auto p = std::get_if<std::string>(&v_)) return Moneda::desdeTexto(*p).value_or(Moneda());
    return Moneda();
}

bool Valor::booleano() const {
    if (auto p = std::get_if<std::int64_t>(&v_)) return *p != 0;
    if (auto p = std::get_if<double>(&v_)) return *p != 0;
    if (auto p = std::get_if<std::string>(&v_)) return ValorNumerico(*p).value_or(0.0) != 0;
    return false;
}

std::optional<Fecha> Valor::fecha() const {
    if (auto p = std::get_if<std::string>(&v_)) return Fecha::desdeIso(*p);
    return std::nullopt;
}

}  // namespace velmorant
