#pragma once
// Small text helpers shared by the record sources, the layout store and the
// readers.

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace velmorant {

/// The text without leading and trailing blanks (spaces only, as the
/// sources' Trim does; a tab is kept).
std::string RecortaEspacios(std::string_view texto);

/// The text without apostrophes, vertical bars and tildes, the characters the
/// audit product's stores do not take in a text (QuitaCaracteresEspeciales).
std::string SinCaracteresEspeciales(std::string_view texto);
/// True when SinCaracteresEspeciales would change the text: one pass over
/// it (find_first_of searches the three characters at every byte).
inline bool TieneCaracteresEspeciales(std::string_view texto) {
    for (char c : texto)
        if (c == '\'' || c == '|' || c == '~') return true;
    return false;
}

/// A key as the stores' text columns compare it (COLLATE NOCASE): ASCII
/// letters in lower case, every other byte as it is.
std::string SinMayusculasAscii(std::string texto);

/// A map keyed by text that is also searched by a std::string_view without
/// building a std::string: for a look-up on every row read.
struct HashTexto {
    using is_transparent = void;
    size_t operator()(std::string_view t) const noexcept { return std::hash<std::string_view>()(t); }
};
template <class T>
using PorTexto = std::unordered_map<std::string, T, HashTexto, std::equal_to<>>;

/// Upper case of a UTF-8 text, accented letters included.
std::string Mayusculas(const std::string& texto);

// Positions and widths of UTF-8 texts count characters, never bytes: a code
// or a description cut in the middle of an "Ñ" would be neither.
/// Characters of a UTF-8 text (a stray byte counts as one).
size_t LongitudCaracteres(std::string_view texto);
/// The first `n` characters.
std::string IzquierdaCaracteres(std::string_view texto, size_t n);
/// The last `n` characters.
std::string DerechaCaracteres(std::string_view texto, size_t n);
/// Mid(texto, inicio, largo): `largo` characters from character `inicio`
/// (from 1); the rest of the text when `largo` is npos; empty past the end.
std::string MedioCaracteres(std::string_view texto, size_t inicio, size_t largo = std::string::npos);

}  // namespace velmorant
