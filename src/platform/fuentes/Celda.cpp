#include "platform/fuentes/Celda.h"

#include <cstdio>

#include "platform/Numeros.h"

namespace velmorant {

Celda Celda::texto(std::string t) {
    Celda c;
    c.tipo_ = Tipo::Texto;
    c.texto_ = std::move(t);
    return c;
}

void Celda::asignaTexto(std::string_view t) {
    tipo_ = Tipo::Texto;
    texto_.assign(t);
    fecha_ = Fecha();
    segundos_ = 0;
    logico_ = false;
}

Celda Celda::numero(std::string decimal) {
    Celda c;
    c.tipo_ = Tipo::Numero;
    c.texto_ = std::move(decimal);
    return c;
}

Celda Celda::fecha(const Fecha& f, int segundos) {
    Celda c;
    c.tipo_ = Tipo::Fecha;
    c.fecha_ = f;
    c.segundos_ = segundos < 0 || segundos > 86399 ? 0 : segundos;
    return c;
}

Celda Celda::logico(bool v) {
    Celda c;
    c.tipo_ = Tipo::Logico;
    c.logico_ = v;
    return c;
}

std::string Celda::comoTexto() const {
    switch (tipo_) {
        case Tipo::Nula: return "";
        case Tipo::Texto:
        case Tipo::Numero: return texto_;
        case Tipo::Logico: return logico_ ? "Verdadero" : "Falso";
        case Tipo::Fecha: break;
    }
    std::string t = fecha_.ddmmaaaa();
    if (segundos_ == 0) return t;
    char hora[32];
    std::snprintf(hora, sizeof hora, " %02d:%02d:%02d", segundos_ / 3600, segundos_ / 60 % 60, segundos_ % 60);
    return t + hora;
}

std::optional<Fecha> Celda::comoFecha() const {
    if (tipo_ != Tipo::Fecha) return std::nullopt;
    return fecha_;
}

std::optional<Moneda> Celda::comoMoneda() const {
    if (tipo_ != Tipo::Numero && tipo_ != Tipo::Texto) return std::nullopt;
    if (!EsNumerico(texto_)) return std::nullopt;
    return Moneda::desdeTexto(texto_);
}

}  // namespace velmorant
