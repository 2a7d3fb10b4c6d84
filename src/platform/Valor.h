#pragma once
// A field value as the stores hold it: Null, an integer, a real or a text.
// The storage mapping of the domain types lives here and only here:
// money is an integer of ten-thousandths, a boolean is -1 or 0, a date is
// ISO text. Reads where Null matters test esNulo() first.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/Fecha.h"
#include "platform/Moneda.h"

namespace velmorant {

class Valor {
public:
    Valor() = default;  // Null
    Valor(std::nullptr_t) {}
    Valor(int v) : v_(static_cast<std::int64_t>(v)) {}
    Valor(long v) : v_(static_cast<std::int64_t>(v)) {}
    Valor(long long v) : v_(static_cast<std::int64_t>(v)) {}
    Valor(unsigned v) : v_(static_cast<std::int64_t>(v)) {}
    Valor(double v) : v_(v) {}
    Valor(float v) : v_(static_cast<double>(v)) {}
    Valor(bool v) : v_(static_cast<std::int64_t>(v ? -1 : 0)) {}
    Valor(const char* v) : v_(std::string(v)) {}
    Valor(std::string v) : v_(std::move(v)) {}
    Valor(std::string_view v) : v_(std::string(v)) {}
    Valor(Moneda m) : v_(m.diezmilesimas()) {}
    Valor(const Fecha& f) : v_(f.iso()) {}
    template <class T>
    Valor(const std::optional<T>& o) {
        if (o) *this = Valor(*o);
    }

    bool esNulo() const { return std::holds_alternative<std::monostate>(v_); }
    bool esEntero() const { return std::holds_alternative<std::int64_t>(v_); }
    bool esReal() const { return std::holds_alternative<double>(v_); }
    bool esTexto() const { return std::holds_alternative<std::string>(v_); }

    /// Plain text conversion; Null gives "".
    std::string texto() const;
    /// Integer value; Null and non-numeric text give 0.
    std::int64_t entero() const;
    double real() const;
    /// Money from a money column (integer of ten-thousandths); a real or a
    /// text is taken as a plain amount. Null gives 0.
    Moneda moneda() const;
    /// Non-zero is true; Null is false.
    bool booleano() const;
    /// The date of an ISO text; nothing for Null or anything else.
    std::optional<Fecha> fecha() const;

    /// Makes the value the text `t`, in the room of the text it holds, if
    /// any: for values refilled row after row.
    void asignaTexto(std::string_view t) {
        if (auto p = std::get_if<std::string>(&v_)) p->assign(t);
        else v_ = std::string(t);
    }

    bool operator==(const Valor& o) const { return v_ == o.v_; }

    using Variante = std::variant<std::monostate, std::int64_t, double, std::string>;
    const Variante& variante() const { return v_; }

private:
    Variante v_;
};

}  // namespace velmorant
