#include "platform/Numeros.h"

#include <cctype>
#include <cstdlib>

namespace velmorant {

namespace {
bool EsBlanco(char c) { return c == ' ' || c == '\t'; }
}  // namespace

std::optional<NumeroDecimal> LeeDecimal(std::string_view t) {
    size_t i = 0, n = t.size();
    auto saltaBlancos = [&] {
        while (i < n && EsBlanco(t[i])) ++i;
    };
    NumeroDecimal r;
    saltaBlancos();
    bool signo = false, moneda = false;
    // Sign and currency sign may come in either order: "-$5", "$-5", "$ -5".
    for (int vuelta = 0; vuelta < 2 && i < n; ++vuelta) {
        if (!signo && (t[i] == '-' || t[i] == '+')) {
            signo = true;
            r.negativo = t[i] == '-';
            ++i;
            saltaBlancos();
        } else if (!moneda && t[i] == '$') {
            moneda = true;
            ++i;
            saltaBlancos();
        }
    }
    std::string digitos;
    int decimales = 0;
    bool hayDigito = false, punto = false;
    for (; i < n; ++i) {
        char c = t[i];
        if (std::isdigit(static_cast<unsigned char>(c))) {
            digitos += c;
            hayDigito = true;
            if (punto) ++decimales;
        } else if (c == ',' && !punto) {
            if (!hayDigito) return std::nullopt;  // grouping needs a digit before it
        } else if (c == '.' && !punto) {
            punto = true;
        } else {
            break;
        }
    }
    if (!hayDigito) return std::nullopt;
    int exponente = 0;
    if (i < n && (t[i] == 'e' || t[i] == 'E' || t[i] == 'd' || t[i] == 'D')) {
        size_t j = i + 1;
        bool negExp = false;
        if (j < n && (t[j] == '+' || t[j] == '-')) negExp = t[j++] == '-';
        size_t inicio = j;
        long e = 0;
        while (j < n && std::isdigit(static_cast<unsigned char>(t[j]))) {
            e = e * 10 + (t[j] - '0');
            if (e > 400) e = 400;
            ++j;
        }
        if (j == inicio) return std::nullopt;
        exponente = static_cast<int>(negExp ? -e : e);
        i = j;
    }
    saltaBlancos();
    if (i != n) return std::nullopt;
    size_t p = digitos.find_first_not_of('0');
    if (p == std::string::npos) {
        r.digitos.clear();
        r.negativo = false;
        r.exponente = 0;
        return r;
    }
    r.digitos = digitos.substr(p);
    r.exponente = exponente - decimales;
    return r;
}

bool EsNumerico(std::string_view texto) { return LeeDecimal(texto).has_value(); }

std::optional<double> ValorNumerico(std::string_view texto) {
    auto d = LeeDecimal(texto);
    if (!d) return std::nullopt;
    std::string s = (d->negativo ? "-" : "") + (d->digitos.empty() ? std::string("0") : d->digitos) + "e" +
                    std::to_string(d->exponente);
    return std::strtod(s.c_str(), nullptr);
}

}  // namespace velmorant
