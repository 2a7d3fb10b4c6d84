#pragma once
// A civil date (no time of day), stored as ISO "YYYY-MM-DD" text in SQLite.

#include <optional>
#include <string>
#include <string_view>

namespace velmorant {

class Fecha {
public:
    constexpr Fecha() = default;
    constexpr Fecha(int anio, int mes, int dia) : anio_(anio), mes_(mes), dia_(dia) {}

    /// A real calendar date between years 100 and 9999.
    bool valida() const;
    int anio() const { return anio_; }
    int mes() const { return mes_; }
    int dia() const { return dia_; }

    /// "YYYY-MM-DD".
    std::string iso() const;
    /// "mm/dd/yyyy", the form that `FechaSql` gives.
    std::string mmddaaaa() const;
    /// "dd/mm/yyyy".
    std::string ddmmaaaa() const;

    /// Parses "YYYY-MM-DD" (a trailing time part is ignored); nothing if invalid.
    static std::optional<Fecha> desdeIso(std::string_view texto);
    /// Days since 1899-12-30, the serial of the legacy engine and of workbooks.
    static Fecha desdeSerial(long serial);
    long serial() const;
    static Fecha hoy();

    static bool EsBisiesto(int anio);
    static int DiasDelMes(int anio, int mes);

    auto operator<=>(const Fecha&) const = default;

private:
    int anio_ = 0, mes_ = 0, dia_ = 0;
};

}  // namespace velmorant
