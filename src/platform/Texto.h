#pragma once
// Small text helpers shared by the record sources, the layout store and the
// readers.

#include <string>
#include <string_view>

namespace velmorant {

/// The text without leading and trailing blanks (spaces only, as the
/// sources' Trim does; a tab is kept).
std::string RecortaEspacios(std::string_view texto);

/// Upper case of a UTF-8 text, accented letters included.
std::string Mayusculas(const std::string& texto);

}  // namespace velmorant
