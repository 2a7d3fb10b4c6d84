#include "platform/Texto.h"

#include <QString>

namespace velmorant {

std::string RecortaEspacios(std::string_view texto) {
    size_t a = texto.find_first_not_of(' ');
    if (a == std::string_view::npos) return "";
    size_t b = texto.find_last_not_of(' ');
    return std::string(texto.substr(a, b - a + 1));
}

// Each of the three is a single byte that no UTF-8 sequence holds.
std::string SinCaracteresEspeciales(std::string_view texto) {
    std::string r;
    r.reserve(texto.size());
    for (char c : texto)
        if (c != '\'' && c != '|' && c != '~') r += c;
    return r;
}

std::string SinMayusculasAscii(std::string texto) {
    for (char& c : texto)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return texto;
}

std::string Mayusculas(const std::string& texto) {
    for (unsigned char c : texto)
        if (c >= 0x80) return QString::fromStdString(texto).toUpper().toStdString();
    std::string r = texto;
    for (char& c : r)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return r;
}

namespace {

// Byte offset of character `n` (from 0); the size of the text past its end.
// A character is a lead byte and the continuation bytes after it.
size_t ByteDeCaracter(std::string_view t, size_t n) {
    size_t i = 0;
    for (size_t contados = 0; i < t.size(); ++i) {
        if (i > 0 && (static_cast<unsigned char>(t[i]) & 0xC0) == 0x80) continue;
        if (contados++ == n) return i;
    }
    return t.size();
}

}  // namespace

size_t LongitudCaracteres(std::string_view texto) {
    size_t n = 0;
    for (size_t i = 0; i < texto.size(); ++i)
        if ((static_cast<unsigned char>(texto[i]) & 0xC0) != 0x80 || i == 0) ++n;
    return n;
}

std::string IzquierdaCaracteres(std::string_view texto, size_t n) {
    return std::string(texto.substr(0, ByteDeCaracter(texto, n)));
}

std::string DerechaCaracteres(std::string_view texto, size_t n) {
    size_t largo = LongitudCaracteres(texto);
    if (n >= largo) return std::string(texto);
    return std::string(texto.substr(ByteDeCaracter(texto, largo - n)));
}

std::string MedioCaracteres(std::string_view texto, size_t inicio, size_t largo) {
    if (inicio < 1) return "";
    size_t desde = ByteDeCaracter(texto, inicio - 1);
    if (desde >= texto.size()) return "";
    std::string_view resto = texto.substr(desde);
    if (largo == std::string::npos) return std::string(resto);
    return std::string(resto.substr(0, ByteDeCaracter(resto, largo)));
}

}  // namespace velmorant
