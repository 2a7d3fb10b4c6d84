#include "importers/Limpieza.h"

#include <cstdint>

#include "accounts/CodigosCuenta.h"
#include "pipeline/Inconsistencias.h"
#include "platform/Numeros.h"
#include "session/Funciones.h"

namespace velmorant {

std::string LimpiaCuenta(Sesion& s, std::string texto, OrdenLimpieza orden, bool quitaTabuladores) {
    return LimpiaCuenta(FormatoCuenta::De(s), std::move(texto), orden, quitaTabuladores);
}

std::string LimpiaCuenta(const FormatoCuenta& f, std::string t, OrdenLimpieza orden, bool quitaTabuladores) {
    if (quitaTabuladores) t = QuitaCaracter(t, "\t");
    t = QuitaCaracter(t, " ");
    if (t.empty()) return t;
    const std::string& sep = f.separador;
    auto quitaSeparador = [&] {
        if (!sep.empty() && t.find(sep) != std::string::npos) t = QuitaCaracter(t, sep);
    };
    switch (orden) {
        case OrdenLimpieza::SeparadorYRelleno:
            quitaSeparador();
            if (EsTextoNumerico(t)) t = RellenaCuenta(f, t);
            return t;
        case OrdenLimpieza::RellenoYSeparador:
            if (EsTextoNumerico(t)) t = RellenaCuenta(f, t);
            quitaSeparador();
            return QuitaCaracter(t, " ");
        case OrdenLimpieza::RellenoSiempre:
            t = RellenaCuenta(f, t);
            quitaSeparador();
            return t;
        case OrdenLimpieza::RellenoConSeparador:
            if (!sep.empty() && t.find(sep) != std::string::npos) {
                t = RellenaCuenta(f, t);
                quitaSeparador();
            }
            if (f.rellenaCeros && EsTextoNumerico(t)) t = RellenaCuenta(f, t);
            return t;
    }
    return t;
}

size_t LongitudCompleta(const Sesion& s) {
    size_t n = 0;
    for (char c : s.FormatoCtaEmpresa)
        if (c != '-') ++n;
    return n;
}

void ReglaLongitudCompleta(Sesion& s, std::string& cuenta, int& nivel) {
    if (cuenta.empty() || LongitudCaracteres(cuenta) != LongitudCompleta(s)) return;
    nivel = CalculaNivelCuenta(s, cuenta, true);
    cuenta = CuentaHastaNivel(s, cuenta, nivel);
}

CuentasDeLineas::CuentasDeLineas(Sesion& s, OrdenLimpieza orden, bool cortaCompletas)
    : s_(s), formato_(FormatoCuenta::De(s)), orden_(orden), cortaCompletas_(cortaCompletas) {}

const std::string& CuentasDeLineas::limpia(std::string_view texto) {
    if (auto it = hechas_.find(texto); it != hechas_.end()) return it->second;
    std::string cuenta = LimpiaCuenta(formato_, std::string(texto), orden_, false);
    int nivel = 0;
    if (cortaCompletas_) ReglaLongitudCompleta(s_, cuenta, nivel);
    // A source of endless distinct codes is cleaned line by line past this.
    constexpr size_t kMaximo = 100000;
    if (hechas_.size() < kMaximo) return hechas_.emplace(std::string(texto), std::move(cuenta)).first->second;
    sinGuardar_ = std::move(cuenta);
    return sinGuardar_;
}

std::string LimpiaImporte(const std::string& texto, const std::string& vacio) {
    if (texto.empty()) return vacio;
    if (!EsNumerico(texto)) {
        size_t menos = texto.find('-');
        if (menos != std::string::npos) return texto.substr(menos);
    }
    return texto;
}

std::optional<Moneda> ConvierteImporte(const std::string& t) {
    if (!EsNumerico(t)) return std::nullopt;
    auto m = Moneda::desdeTexto(t);
    if (!m) throw FalloFila("Desbordamiento: el importe " + t + " excede el rango de la moneda");
    return m;
}

namespace {

// The exact value of a plain amount: an optional "-", 1 to 14 digits, and
// optionally "." with up to 4 more; what Moneda::desdeTexto gives for it.
// Nothing for any other text, which takes the general way.
std::optional<Moneda> ImporteSencillo(std::string_view t) {
    size_t i = 0;
    const size_t n = t.size();
    const bool negativo = n > 0 && t[0] == '-';
    if (negativo) ++i;
    const size_t inicio = i;
    std::int64_t v = 0;
    for (; i < n && t[i] >= '0' && t[i] <= '9'; ++i) v = v * 10 + (t[i] - '0');
    if (i == inicio || i - inicio > 14) return std::nullopt;
    int decimales = 0;
    if (i < n && t[i] == '.')
        for (++i; i < n && t[i] >= '0' && t[i] <= '9' && decimales < 4; ++i, ++decimales) v = v * 10 + (t[i] - '0');
    if (i != n) return std::nullopt;
    for (; decimales < 4; ++decimales) v *= 10;
    return Moneda::desdeDiezmilesimas(negativo ? -v : v);
}

}  // namespace

std::optional<Moneda> ImporteLimpio(std::string_view texto, std::string_view vacio) {
    if (texto.empty()) {
        if (auto m = ImporteSencillo(vacio)) return m;
        return ConvierteImporte(std::string(vacio));
    }
    if (auto m = ImporteSencillo(texto)) return m;
    return ConvierteImporte(LimpiaImporte(std::string(texto), std::string(vacio)));
}

Moneda ImporteRequerido(const std::string& t) {
    auto m = ConvierteImporte(t);
    if (!m) throw FalloFila("No coinciden los tipos: el importe " + t + " no es numérico");
    return *m;
}

void RegistraImporteIlegible(Sesion& s, const std::string& lugar, const std::string& importe, int fuente,
                             const std::string& consecuencia, const std::string& poliza, const std::string& tipo,
                             const std::optional<Fecha>& fecha, const std::string& cuenta) {
    RegistraInconsistencia(s, "El importe " + importe + " del " + lugar + ", no es numérico; " + consecuencia, fuente,
                           "O", poliza, tipo, fecha, cuenta);
}

int ValEntero(const std::string& t) {
    size_t i = t.find_first_not_of(" \t");
    if (i == std::string::npos) return 0;
    bool negativo = false;
    if (t[i] == '-' || t[i] == '+') negativo = t[i++] == '-';
    long v = 0;
    for (; i < t.size() && t[i] >= '0' && t[i] <= '9' && v < 100000; ++i) v = v * 10 + (t[i] - '0');
    return static_cast<int>(negativo ? -v : v);
}

size_t LongitudCaracteres(const std::string& t) {
    size_t n = 0;
    for (unsigned char c : t)
        if ((c & 0xC0) != 0x80) ++n;
    return n;
}

std::string Izquierda(const std::string& t, size_t caracteres) {
    size_t n = 0;
    for (size_t i = 0; i < t.size(); ++i) {
        if ((static_cast<unsigned char>(t[i]) & 0xC0) != 0x80 && n++ == caracteres) return t.substr(0, i);
    }
    return t;
}

}  // namespace velmorant
