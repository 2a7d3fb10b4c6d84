#pragma once
// Test support: a fixed-position line with each text at its place.

#include <string>
#include <utility>
#include <vector>

namespace velmorant::prueba {

/// A line with each text at its position (from 1), blanks between.
/// Positions count characters of the UTF-8 text, as the reader does.
inline std::string LineaFija(std::initializer_list<std::pair<size_t, std::string>> campos) {
    std::vector<std::string> caracteres;
    for (const auto& [posicion, texto] : campos) {
        size_t i = posicion - 1;
        for (size_t b = 0; b < texto.size(); ++i) {
            size_t largo = 1;
            while (b + largo < texto.size() && (static_cast<unsigned char>(texto[b + largo]) & 0xC0) == 0x80) ++largo;
            if (caracteres.size() <= i) caracteres.resize(i + 1, " ");
            caracteres[i] = texto.substr(b, largo);
            b += largo;
        }
        if (caracteres.size() < i) caracteres.resize(i, " ");
    }
    std::string l;
    for (auto& c : caracteres) l += c;
    return l;
}

}  // namespace velmorant::prueba
