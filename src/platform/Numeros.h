#pragma once
// The one place that decides whether a source text is a number, with the
// reference locale's rules: optional blanks, one leading sign, optional "$",
// "," grouping, "." decimals, an exponent. A trailing minus is not numeric.

#include <optional>
#include <string>
#include <string_view>

namespace velmorant {

/// A decimal number held as its digits: value = ±digitos × 10^exponente.
struct NumeroDecimal {
    bool negativo = false;
    std::string digitos;  // no leading zeros; empty for zero
    int exponente = 0;
};

std::optional<NumeroDecimal> LeeDecimal(std::string_view texto);

/// True when `texto` is numeric by the rules above (VB's IsNumeric on the
/// reference locale).
bool EsNumerico(std::string_view texto);

/// The numeric value as a double; nothing when not numeric.
std::optional<double> ValorNumerico(std::string_view texto);

}  // namespace velmorant
