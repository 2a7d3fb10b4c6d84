#include "platform/fuentes/DecimalExacto.h"

namespace velmorant {

namespace {
bool EsDigito(char c) { return c >= '0' && c <= '9'; }
}  // namespace

std::optional<std::string> DecimalExacto(std::string_view t) {
    size_t i = 0, n = t.size();
    while (i < n && t[i] == ' ') ++i;
    while (n > i && t[n - 1] == ' ') --n;
    bool negativo = false;
    if (i < n && (t[i] == '-' || t[i] == '+')) negativo = t[i++] == '-';
    std::string digitos;
    long punto = -1;  // digits before the point
    for (; i < n && (EsDigito(t[i]) || (t[i] == '.' && punto < 0)); ++i) {
        if (t[i] == '.')
            punto = static_cast<long>(digitos.size());
        else
            digitos += t[i];
    }
    if (digitos.empty()) return std::nullopt;
    if (punto < 0) punto = static_cast<long>(digitos.size());
    if (i < n && (t[i] == 'e' || t[i] == 'E')) {
        ++i;
        bool expNegativo = false;
        if (i < n && (t[i] == '-' || t[i] == '+')) expNegativo = t[i++] == '-';
        if (i == n) return std::nullopt;
        long exponente = 0;
        for (; i < n && EsDigito(t[i]); ++i) {
            exponente = exponente * 10 + (t[i] - '0');
            if (exponente > 4000) return std::nullopt;
        }
        punto += expNegativo ? -exponente : exponente;
    }
    if (i != n) return std::nullopt;
    // Place the point among the digits, padding with zeros either side.
    if (punto < 0) {
        digitos.insert(0, static_cast<size_t>(-punto), '0');
        punto = 0;
    } else if (punto > static_cast<long>(digitos.size())) {
        digitos.append(static_cast<size_t>(punto) - digitos.size(), '0');
    }
    std::string enteros = digitos.substr(0, static_cast<size_t>(punto));
    std::string decimales = digitos.substr(static_cast<size_t>(punto));
    size_t p = enteros.find_first_not_of('0');
    enteros = p == std::string::npos ? "0" : enteros.substr(p);
    while (!decimales.empty() && decimales.back() == '0') decimales.pop_back();
    if (enteros == "0" && decimales.empty()) return "0";
    std::string r = negativo ? "-" : "";
    r += enteros;
    if (!decimales.empty()) r += "." + decimales;
    return r;
}

}  // namespace velmorant
