#include "platform/fuentes/FuenteLibro.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "platform/ErrorLectura.h"
#include "platform/Numeros.h"
#include "platform/Texto.h"
#include "platform/fuentes/DocumentoCompuesto.h"
#include "platform/fuentes/LibroInterno.h"

namespace velmorant {

namespace libro {

void FallaLibro(const std::string& ruta, const std::string& detalle, long fila) {
    throw ErrorLectura("No se pudo leer el libro " + ruta + ": " + detalle, ruta, fila);
}

std::string NombreCelda(long fila, int columna) {
    std::string letras;
    for (int c = columna; c > 0; c = (c - 1) / 26) letras.insert(letras.begin(), static_cast<char>('A' + (c - 1) % 26));
    return letras + std::to_string(fila);
}

std::optional<std::string> DecimalExacto(std::string_view almacenado) {
    // Only a plain number: sign, digits, point, exponent. Grouping, "$"
    // and blanks are for texts, not for a stored value.
    if (almacenado.empty() || almacenado.find_first_not_of("+-0123456789.eE") != std::string_view::npos)
        return std::nullopt;
    auto d = LeeDecimal(almacenado);
    if (!d) return std::nullopt;
    std::string digitos = d->digitos;
    long exponente = d->exponente;
    if (digitos.size() > 15) {
        bool sube = digitos[15] >= '5';
        exponente += static_cast<long>(digitos.size()) - 15;
        digitos.resize(15);
        for (size_t i = digitos.size(); sube && i-- > 0;) {
            if (digitos[i] == '9') {
                digitos[i] = '0';
            } else {
                ++digitos[i];
                sube = false;
            }
        }
        if (sube) digitos.insert(digitos.begin(), '1');
    }
    while (!digitos.empty() && digitos.back() == '0') {
        digitos.pop_back();
        ++exponente;
    }
    if (digitos.empty()) return std::string("0");
    std::string r = d->negativo ? "-" : "";
    if (exponente >= 0) return r + digitos + std::string(static_cast<size_t>(exponente), '0');
    long entero = static_cast<long>(digitos.size()) + exponente;  // digits before the point
    if (entero <= 0) return r + "0." + std::string(static_cast<size_t>(-entero), '0') + digitos;
    return r + digitos.substr(0, static_cast<size_t>(entero)) + "." + digitos.substr(static_cast<size_t>(entero));
}

std::string DecimalDeDoble(double v) {
    if (!std::isfinite(v)) return "0";
    char buf[64];
    auto [fin, ec] = std::to_chars(buf, buf + sizeof buf, v);  // the shortest text that reads back the same
    if (ec != std::errc()) return "0";
    return DecimalExacto(std::string_view(buf, static_cast<size_t>(fin - buf))).value_or("0");
}

std::optional<Celda> FechaDeSerial(double serial, bool sistema1904) {
    // The last day a workbook can show, 31/12/9999, is serial 2958465.
    if (!std::isfinite(serial) || serial < 0 || serial >= 2958466) return std::nullopt;
    double dias = std::floor(serial);
    long segundos = std::lround((serial - dias) * 86400.0);
    long dia = static_cast<long>(dias);
    if (segundos >= 86400) {
        ++dia;
        segundos = 0;
    }
    if (sistema1904) dia += 1462;  // 1904-01-01 is day 1462 of the 1900 count
    Fecha f = Fecha::desdeSerial(dia);
    if (!f.valida()) return std::nullopt;
    return Celda::fecha(f, static_cast<int>(segundos));
}

bool EsFormatoFecha(std::string_view f) {
    for (size_t i = 0; i < f.size(); ++i) {
        char c = f[i];
        switch (c) {
            case ';': return false;  // the first section decides
            case '"': {
                size_t cierre = f.find('"', i + 1);
                if (cierre == std::string_view::npos) return false;
                i = cierre;
                break;
            }
            case '\\':
            case '_':
            case '*': ++i; break;  // a literal, a space as wide as a character, a fill
            case '[': {
                size_t cierre = f.find(']', i + 1);
                if (cierre == std::string_view::npos) return false;
                // [h], [mm], [ss]: elapsed time; [Red], [$-80A], [>100]: not a date
                std::string_view dentro = f.substr(i + 1, cierre - i - 1);
                if (!dentro.empty() && dentro.find_first_not_of("hHmMsS") == std::string_view::npos) return true;
                i = cierre;
                break;
            }
            default:
                if (std::strchr("dDmMyYhHsS", c) && c != '\0') return true;
        }
    }
    return false;
}

}  // namespace libro

namespace {

using namespace libro;

enum class Clase { Xlsx, Xls, Otra };

Clase ClaseDeArchivo(const std::string& ruta) {
    std::FILE* f = std::fopen(ruta.c_str(), "rb");
    if (!f) throw ErrorLectura("No se pudo abrir el archivo " + ruta, ruta, 0);
    char inicio[8] = {};
    size_t n = std::fread(inicio, 1, sizeof inicio, f);
    std::fclose(f);
    std::string_view v(inicio, n);
    if (v.size() >= 4 && v.substr(0, 2) == "PK" &&
        (v.substr(2, 2) == "\x03\x04" || v.substr(2, 2) == "\x05\x06" || v.substr(2, 2) == "\x07\x08"))
        return Clase::Xlsx;
    if (DocumentoCompuesto::EsDocumentoCompuesto(v)) return Clase::Xls;
    return Clase::Otra;
}

std::unique_ptr<Libro> AbreLibro(const std::string& ruta) {
    switch (ClaseDeArchivo(ruta)) {
        case Clase::Xlsx: return AbreXlsx(ruta);
        case Clase::Xls: return AbreXls(ruta);
        case Clase::Otra: break;
    }
    FallaLibro(ruta, "no es un libro de Excel (.xlsx o .xls)");
}

struct Rango {
    bool dado = false;
    long fila1 = 1, fila2 = kMaxFilas;
    int columna1 = 1, columna2 = kMaxColumnas;
    bool conColumnaFinal = false;
};

// One end of a range, "$B$7", "L", "7": letters then digits, either may
// be missing; false when it is neither.
bool LeeExtremo(std::string_view t, int& columna, long& fila, bool& hayColumna, bool& hayFila) {
    size_t i = 0;
    auto saltaPesos = [&] {
        while (i < t.size() && t[i] == '$') ++i;
    };
    saltaPesos();
    long c = 0;
    size_t letras = 0;
    while (i < t.size() && std::isalpha(static_cast<unsigned char>(t[i]))) {
        c = c * 26 + (std::toupper(static_cast<unsigned char>(t[i])) - 'A' + 1);
        if (++letras > 3) return false;
        ++i;
    }
    saltaPesos();
    long f = 0;
    size_t digitos = 0;
    while (i < t.size() && std::isdigit(static_cast<unsigned char>(t[i]))) {
        f = f * 10 + (t[i] - '0');
        if (++digitos > 7) return false;
        ++i;
    }
    if (i != t.size() || (letras == 0 && digitos == 0)) return false;
    if (letras && (c < 1 || c > kMaxColumnas)) return false;
    if (digitos && (f < 1 || f > kMaxFilas)) return false;
    hayColumna = letras > 0, hayFila = digitos > 0;
    if (hayColumna) columna = static_cast<int>(c);
    if (hayFila) fila = f;
    return true;
}

Rango LeeRango(const std::string& ruta, std::string texto) {
    Rango r;
    while (!texto.empty() && (texto.back() == ']' || texto.back() == ' ')) texto.pop_back();
    while (!texto.empty() && texto.front() == ' ') texto.erase(texto.begin());
    if (texto.empty()) return r;
    r.dado = true;
    std::string_view t = texto;
    size_t dos = t.find(':');
    bool hayC, hayF;
    bool bien = LeeExtremo(t.substr(0, dos), r.columna1, r.fila1, hayC, hayF);
    if (bien && dos != std::string_view::npos) {
        bien = LeeExtremo(t.substr(dos + 1), r.columna2, r.fila2, hayC, hayF);
        r.conColumnaFinal = hayC;
    }
    if (!bien || r.columna2 < r.columna1 || r.fila2 < r.fila1)
        throw ErrorLectura("Rango de hoja no válido: " + texto + " (archivo " + ruta + ")", ruta, 0);
    return r;
}

size_t EligeHoja(const std::string& ruta, const Libro& libro, const std::string& nombre) {
    const auto& hojas = libro.hojas();
    if (hojas.empty()) FallaLibro(ruta, "no tiene hojas de cálculo");
    if (nombre.empty()) return 0;
    for (size_t i = 0; i < hojas.size(); ++i)
        if (hojas[i] == nombre) return i;
    for (size_t i = 0; i < hojas.size(); ++i)
        if (Mayusculas(hojas[i]) == Mayusculas(nombre)) return i;
    FallaLibro(ruta, "no tiene la hoja \"" + nombre + "\"");
}

[[noreturn]] void FallaFormula(const std::string& ruta, FormatoLibro formato, long fila, int columna) {
    std::string celda = NombreCelda(fila, columna);
    if (formato == FormatoLibro::Xls)
        FallaLibro(ruta,
                   "la celda " + celda +
                       " tiene una fórmula y de un libro .xls no se lee su resultado; guárdelo como libro .xlsx, "
                       "o pegue los valores en lugar de las fórmulas, y vuelva a intentarlo",
                   fila);
    FallaLibro(ruta,
               "la celda " + celda +
                   " tiene una fórmula sin su resultado guardado; ábralo en Excel, guárdelo para que calcule "
                   "sus fórmulas y vuelva a intentarlo",
               fila);
}

}  // namespace

struct FuenteLibro::Estado {
    std::unique_ptr<Libro> libro;
    std::unique_ptr<LectorHoja> lector;
    std::string nombreHoja;
    long filaInicio = 1, filaFin = 0, siguiente = 1, total = 0;
    int columnaInicio = 1, columnaFin = 0;
    FilaHoja pendiente;
    bool hayPendiente = false, finLector = false;
    std::vector<std::string> nombres;

    // The cells of sheet row `numero` inside the area, by position from 1.
    void celdasDe(long numero, std::vector<Celda>& celdas) {
        celdas.clear();
        while (!finLector && (!hayPendiente || pendiente.numero < numero)) {
            hayPendiente = lector->siguiente(pendiente);
            finLector = !hayPendiente;
        }
        if (!hayPendiente || pendiente.numero != numero) return;
        for (auto& c : pendiente.celdas) {
            if (c.columna < columnaInicio || c.columna > columnaFin || c.valor.esNula()) continue;
            size_t posicion = static_cast<size_t>(c.columna - columnaInicio);
            if (celdas.size() <= posicion) celdas.resize(posicion + 1);
            celdas[posicion] = std::move(c.valor);
        }
    }
};

FuenteLibro::FuenteLibro(std::string ruta, OpcionesLibro opciones) : ruta_(std::move(ruta)), e_(new Estado) {
    Rango rango = LeeRango(ruta_, opciones.rango);
    e_->libro = AbreLibro(ruta_);
    size_t hoja = EligeHoja(ruta_, *e_->libro, opciones.hoja);
    e_->nombreHoja = e_->libro->hojas()[hoja];

    // A first pass finds the area's bounds and counts its rows, and refuses
    // a formula without its result before a single row is given.
    long primeraFila = 0, ultimaFila = 0;
    int primeraColumna = kMaxColumnas + 1, ultimaColumna = 0;
    {
        auto lector = e_->libro->abreHoja(hoja);
        FilaHoja fila;
        while (lector->siguiente(fila) && fila.numero <= rango.fila2) {
            if (fila.numero < rango.fila1) continue;
            for (const auto& c : fila.celdas) {
                if (c.columna < rango.columna1 || c.columna > rango.columna2) continue;
                if (c.formulaSinValor) FallaFormula(ruta_, e_->libro->formato(), fila.numero, c.columna);
                if (c.valor.esNula()) continue;
                if (primeraFila == 0) primeraFila = fila.numero;
                ultimaFila = fila.numero;
                if (c.columna < primeraColumna) primeraColumna = c.columna;
                if (c.columna > ultimaColumna) ultimaColumna = c.columna;
            }
        }
    }
    if (rango.dado) {
        e_->filaInicio = rango.fila1;
        e_->columnaInicio = rango.columna1;
        e_->columnaFin = rango.conColumnaFinal ? rango.columna2 : std::max(ultimaColumna, rango.columna1);
    } else if (primeraFila > 0) {
        e_->filaInicio = primeraFila;
        e_->columnaInicio = primeraColumna;
        e_->columnaFin = ultimaColumna;
    }
    e_->filaFin = ultimaFila;
    e_->siguiente = e_->filaInicio;
    e_->lector = e_->libro->abreHoja(hoja);

    if (opciones.encabezado && e_->filaInicio <= e_->filaFin) {
        std::vector<Celda> celdas;
        e_->celdasDe(e_->filaInicio, celdas);
        e_->nombres.resize(static_cast<size_t>(e_->columnaFin - e_->columnaInicio + 1));
        for (size_t i = 0; i < celdas.size(); ++i) e_->nombres[i] = celdas[i].comoTexto();
        ++e_->siguiente;
    }
    e_->total = std::max(0L, e_->filaFin - e_->siguiente + 1);
}

FuenteLibro::~FuenteLibro() = default;

bool FuenteLibro::siguiente(Fila& fila) {
    if (e_->siguiente > e_->filaFin) return false;
    fila.numero = e_->siguiente++;
    fila.texto.clear();
    e_->celdasDe(fila.numero, fila.celdas);
    return true;
}

long FuenteLibro::totalEstimado() const { return e_->total; }

std::vector<std::string> FuenteLibro::nombresColumnas() const { return e_->nombres; }

std::string FuenteLibro::lugar(const Fila& fila) const {
    return "archivo " + ruta_ + ", fila " + std::to_string(fila.numero);
}

const std::string& FuenteLibro::nombreHoja() const { return e_->nombreHoja; }

const std::vector<std::string>& FuenteLibro::hojas() const { return e_->libro->hojas(); }

std::string PrimeraHojaExcel(const std::string& ruta) {
    try {
        auto libro = AbreLibro(ruta);
        return libro->hojas().empty() ? std::string() : libro->hojas().front();
    } catch (const ErrorLectura&) {
        return "";
    }
}

}  // namespace velmorant
