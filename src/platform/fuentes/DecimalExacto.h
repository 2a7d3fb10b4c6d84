#pragma once
// Numbers that tables keep as text (dBase N and F fields, the decimals of a
// database engine), brought to one plain decimal form without passing
// through floating point.

#include <optional>
#include <string>
#include <string_view>

namespace velmorant {

/// The plain decimal text of a number written as an optional sign, digits
/// with an optional point, and an optional exponent ("  -001.250",
/// "1.5E+3", ".5"): no leading zeros, no trailing decimal zeros, no point
/// when nothing follows it, "0" for any zero ("-1.25", "1500", "0.5").
/// Surrounding blanks are allowed; anything else gives nothing.
std::optional<std::string> DecimalExacto(std::string_view texto);

}  // namespace velmorant
