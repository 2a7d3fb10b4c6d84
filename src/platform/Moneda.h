#pragma once
// Exact money: a signed 64-bit count of ten-thousandths, the "Currency" of the
// audit data model. Never a double: sums, comparisons and the commit are
// exact, and an overflow throws instead of wrapping.

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmorant {

enum class Redondeo { MitadLejosDeCero, MitadAlPar };

class Moneda {
public:
    static constexpr std::int64_t kEscala = 10000;

    constexpr Moneda() = default;
    static constexpr Moneda desdeDiezmilesimas(std::int64_t d) { return Moneda(d); }
    /// Whole units (pesos); throws std::overflow_error when out of range.
    static Moneda desdeEntero(std::int64_t unidades);
    /// Parses plain decimal text ("-1234.5", "1,234.56", "$ 10", "1e3").
    /// Digits beyond the fourth decimal are rounded half to even, as a
    /// Currency conversion does. Returns nothing when the text is not numeric.
    static std::optional<Moneda> desdeTexto(std::string_view texto);
    /// A double rounded to four decimals (half away from zero); for values
    /// that reach us as floating point from a source driver only.
    static Moneda desdeDouble(double valor);

    constexpr std::int64_t diezmilesimas() const { return d_; }
    double comoDouble() const { return static_cast<double>(d_) / kEscala; }

    Moneda operator+(Moneda o) const;
    Moneda operator-(Moneda o) const;
    Moneda operator-() const;
    Moneda& operator+=(Moneda o) { return *this = *this + o; }
    Moneda& operator-=(Moneda o) { return *this = *this - o; }
    Moneda abs() const { return d_ < 0 ? -*this : *this; }
    constexpr bool esCero() const { return d_ == 0; }
    constexpr auto operator<=>(const Moneda&) const = default;

    /// this × factor, rounded to ten-thousandths with the given rule.
    Moneda multiplica(double factor, Redondeo r = Redondeo::MitadLejosDeCero) const;
    /// this ÷ divisor as a plain ratio; 0 when the divisor is zero.
    double proporcion(Moneda divisor) const;

    /// "Currency" format of messages: "$1,234.56", "-$1,234.56".
    std::string formatoMoneda() const;
    /// Plain number-to-text conversion: "1234.5", "-0.01", "0".
    std::string texto() const;

private:
    constexpr explicit Moneda(std::int64_t d) : d_(d) {}
    std::int64_t d_ = 0;
};

/// Rounds a value to `decimales` places, halves to the even digit.
double RedondeaAlPar(double valor, int decimales);

}  // namespace velmorant
