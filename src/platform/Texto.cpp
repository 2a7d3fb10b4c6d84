#include "platform/Texto.h"

#include <QString>

namespace velmorant {

std::string RecortaEspacios(std::string_view texto) {
    size_t a = texto.find_first_not_of(' ');
    if (a == std::string_view::npos) return "";
    size_t b = texto.find_last_not_of(' ');
    return std::string(texto.substr(a, b - a + 1));
}

std::string Mayusculas(const std::string& texto) {
    for (unsigned char c : texto)
        if (c >= 0x80) return QString::fromStdString(texto).toUpper().toStdString();
    std::string r = texto;
    for (char& c : r)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return r;
}

}  // namespace velmorant
