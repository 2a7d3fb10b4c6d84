#pragma once
// One value of a source row, as a record source delivers it: nothing (a
// null or blank cell), a text, a number, a date (with its time of day when
// the source keeps one) or a logical value. Numbers travel as their exact
// decimal text, so that an amount reaches `Moneda` without passing through
// floating point, and so that an account delivered as a number keeps the
// digits the source holds.

#include <optional>
#include <string>
#include <string_view>

#include "platform/Fecha.h"
#include "platform/Moneda.h"

namespace velmorant {

class Celda {
public:
    enum class Tipo { Nula, Texto, Numero, Fecha, Logico };

    Celda() = default;  // Nula
    static Celda texto(std::string t);
    /// `decimal` is plain decimal text: "-1234.5", "12", "0.0001".
    static Celda numero(std::string decimal);
    /// A date; `segundos` is its time of day (0 to 86399).
    static Celda fecha(const Fecha& f, int segundos = 0);
    static Celda logico(bool v);
    /// Makes this cell Celda::texto(t), keeping the room of its text: a
    /// source that refills the cells of one row for each line allocates
    /// nothing for the fields that fit.
    void asignaTexto(std::string_view t);

    Tipo tipo() const { return tipo_; }
    bool esNula() const { return tipo_ == Tipo::Nula; }

    /// The cell as text, the way the legacy drivers turned a value into a
    /// string: Null "", a text as it stands, a number as its decimal text,
    /// a date "dd/mm/yyyy" followed by " hh:mm:ss" when it has a time of
    /// day, a logical value "Verdadero" or "Falso".
    std::string comoTexto() const;
    /// The text a text or number cell holds, without a copy; empty for a
    /// null cell. Only those kinds have one: for any other, nothing.
    std::optional<std::string_view> textoPropio() const {
        if (tipo_ == Tipo::Texto || tipo_ == Tipo::Numero) return std::string_view(texto_);
        if (tipo_ == Tipo::Nula) return std::string_view();
        return std::nullopt;
    }
    /// The date of a date cell; nothing for any other kind.
    std::optional<Fecha> comoFecha() const;
    int segundos() const { return segundos_; }
    /// The exact amount of a number cell, or of a text cell that is numeric
    /// by the reference locale's rules; nothing otherwise.
    std::optional<Moneda> comoMoneda() const;
    bool comoLogico() const { return tipo_ == Tipo::Logico && logico_; }

    bool operator==(const Celda&) const = default;

private:
    Tipo tipo_ = Tipo::Nula;
    std::string texto_;  // text, or a number's decimal text
    Fecha fecha_;
    int segundos_ = 0;
    bool logico_ = false;
};

}  // namespace velmorant
