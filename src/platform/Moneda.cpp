#include "platform/Moneda.h"

#include <cmath>
#include <limits>
#include <stdexcept>

#include "platform/Numeros.h"

namespace velmorant {

namespace {

std::int64_t SumaSegura(std::int64_t a, std::int64_t b) {
    std::int64_t r;
    if (__builtin_add_overflow(a, b, &r)) throw std::overflow_error("Desbordamiento en importe");
    return r;
}

std::int64_t RestaSegura(std::int64_t a, std::int64_t b) {
    std::int64_t r;
    if (__builtin_sub_overflow(a, b, &r)) throw std::overflow_error("Desbordamiento en importe");
    return r;
}

std::int64_t RedondeaLongDouble(long double v, Redondeo r) {
    long double entero = std::floor(v);
    long double resto = v - entero;
    long double res;
    if (resto > 0.5L) {
        res = entero + 1;
    } else if (resto < 0.5L) {
        res = entero;
    } else if (r == Redondeo::MitadAlPar) {
        res = std::fmod(entero, 2.0L) == 0 ? entero : entero + 1;
    } else {
        res = v < 0 ? entero : entero + 1;
    }
    if (res > static_cast<long double>(std::numeric_limits<std::int64_t>::max()) ||
        res < static_cast<long double>(std::numeric_limits<std::int64_t>::min()))
        throw std::overflow_error("Desbordamiento en importe");
    return static_cast<std::int64_t>(res);
}

// Digits of |d| / 10^4 as "entero" and four decimals.
void Partes(std::int64_t d, unsigned long long& entero, unsigned& decimales) {
    unsigned long long a = d < 0 ? 0ULL - static_cast<unsigned long long>(d) : static_cast<unsigned long long>(d);
    entero = a / Moneda::kEscala;
    decimales = static_cast<unsigned>(a % Moneda::kEscala);
}

std::string Agrupa(unsigned long long n) {
    std::string s = std::to_string(n);
    std::string out;
    int cuenta = 0;
    for (auto it = s.rbegin(); it != s.rend(); ++it) {
        if (cuenta && cuenta % 3 == 0) out.insert(out.begin(), ',');
        out.insert(out.begin(), *it);
        ++cuenta;
    }
    return out;
}

}  // namespace

Moneda Moneda::desdeEntero(std::int64_t unidades) {
    std::int64_t r;
    if (__builtin_mul_overflow(unidades, kEscala, &r)) throw std::overflow_error("Desbordamiento en importe");
    return Moneda(r);
}

std::optional<Moneda> Moneda::desdeTexto(std::string_view texto) {
    auto decimal = LeeDecimal(texto);
    if (!decimal) return std::nullopt;
    // mantissa × 10^exponente, brought to ten-thousandths exactly while it fits.
    const NumeroDecimal& n = *decimal;
    int desplazamiento = n.exponente + 4;
    std::string digitos = n.digitos.empty() ? "0" : n.digitos;
    std::string enteros, resto;
    if (desplazamiento >= 0) {
        enteros = digitos + std::string(static_cast<size_t>(desplazamiento), '0');
    } else {
        size_t corte = static_cast<size_t>(-desplazamiento);
        if (corte >= digitos.size()) {
            resto = std::string(corte - digitos.size(), '0') + digitos;
            enteros = "0";
        } else {
            enteros = digitos.substr(0, digitos.size() - corte);
            resto = digitos.substr(digitos.size() - corte);
        }
    }
    size_t p = enteros.find_first_not_of('0');
    enteros = p == std::string::npos ? "0" : enteros.substr(p);
    if (enteros.size() > 19) return std::nullopt;
    unsigned long long valor = std::stoull(enteros);
    if (valor > static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
    // Half to even on the dropped digits.
    if (!resto.empty()) {
        char primero = resto[0];
        bool masDeMitad = primero > '5' ||
                          (primero == '5' && resto.find_first_not_of('0', 1) != std::string::npos);
        bool mitad = primero == '5' && !masDeMitad;
        if (masDeMitad || (mitad && (valor % 2 == 1))) ++valor;
        // Rounding up may carry the value past the range.
        if (valor > static_cast<unsigned long long>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
    }
    auto firmado = static_cast<std::int64_t>(valor);
    return Moneda(n.negativo ? -firmado : firmado);
}

Moneda Moneda::desdeDouble(double valor) {
    if (!std::isfinite(valor)) throw std::overflow_error("Importe no finito");
    return Moneda(RedondeaLongDouble(static_cast<long double>(valor) * kEscala, Redondeo::MitadLejosDeCero));
}

Moneda Moneda::operator+(Moneda o) const { return Moneda(SumaSegura(d_, o.d_)); }
Moneda Moneda::operator-(Moneda o) const { return Moneda(RestaSegura(d_, o.d_)); }
Moneda Moneda::operator-() const { return Moneda(RestaSegura(0, d_)); }

Moneda Moneda::multiplica(double factor, Redondeo r) const {
    return Moneda(RedondeaLongDouble(static_cast<long double>(d_) * factor, r));
}

double Moneda::proporcion(Moneda divisor) const {
    if (divisor.d_ == 0) return 0;
    return static_cast<double>(static_cast<long double>(d_) / divisor.d_);
}

std::string Moneda::formatoMoneda() const {
    // Two decimals, halves away from zero, on the exact value.
    unsigned long long entero;
    unsigned dec;
    Partes(d_, entero, dec);
    unsigned centavos = dec / 100;
    if (dec % 100 >= 50) ++centavos;
    if (centavos == 100) {
        centavos = 0;
        ++entero;
    }
    std::string s = (d_ < 0 && (entero || centavos)) ? "-$" : "$";
    s += Agrupa(entero);
    s += '.';
    s += static_cast<char>('0' + centavos / 10);
    s += static_cast<char>('0' + centavos % 10);
    return s;
}

std::string Moneda::texto() const {
    unsigned long long entero;
    unsigned dec;
    Partes(d_, entero, dec);
    std::string s = d_ < 0 ? "-" : "";
    s += std::to_string(entero);
    if (dec) {
        std::string f = std::to_string(dec);
        f = std::string(4 - f.size(), '0') + f;
        while (!f.empty() && f.back() == '0') f.pop_back();
        s += '.' + f;
    }
    return s;
}

double RedondeaAlPar(double valor, int decimales) {
    long double escala = std::pow(10.0L, decimales);
    // Scale through text-exact long double; ties are judged after scaling.
    long double v = static_cast<long double>(valor) * escala;
    long double entero = std::floor(v);
    long double resto = v - entero;
    constexpr long double eps = 1e-9L;
    long double res;
    if (std::fabs(resto - 0.5L) < eps)
        res = std::fmod(entero, 2.0L) == 0 ? entero : entero + 1;
    else
        res = std::round(v);
    return static_cast<double>(res / escala);
}

}  // namespace velmorant
