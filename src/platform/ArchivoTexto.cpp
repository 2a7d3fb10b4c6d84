#include "platform/ArchivoTexto.h"

#include <cstring>

#include "platform/ErrorLectura.h"

namespace velmorant {

namespace {

constexpr size_t kBloque = 1 << 16;

// Code points of bytes 0x80 to 0x9F in Windows-1252; above 0x9F the byte is
// its own code point.
constexpr char16_t kAltos1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AgregaUtf8(std::string& r, char32_t c) {
    if (c < 0x80) {
        r += static_cast<char>(c);
    } else if (c < 0x800) {
        r += static_cast<char>(0xC0 | (c >> 6));
        r += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        r += static_cast<char>(0xE0 | (c >> 12));
        r += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        r += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// Validates UTF-8 fed in pieces; a sequence may straddle two pieces.
class ValidadorUtf8 {
public:
    void alimenta(std::string_view bytes) {
        for (unsigned char b : bytes) {
            if (!valido_) return;
            if (b >= 0x80) altos_ = true;
            if (faltan_ == 0) {
                inicia(b);
                continue;
            }
            if (b < minimo_ || b > maximo_) {
                valido_ = false;
                return;
            }
            minimo_ = 0x80, maximo_ = 0xBF;
            --faltan_;
        }
    }
    bool valido() const { return valido_ && faltan_ == 0; }
    bool roto() const { return !valido_; }
    bool conAltos() const { return altos_; }

private:
    bool valido_ = true, altos_ = false;
    int faltan_ = 0;
    unsigned char minimo_ = 0x80, maximo_ = 0xBF;  // range of the next continuation byte

    void inicia(unsigned char b) {
        minimo_ = 0x80, maximo_ = 0xBF;
        if (b < 0x80) return;
        if (b >= 0xC2 && b <= 0xDF) faltan_ = 1;
        else if (b == 0xE0) faltan_ = 2, minimo_ = 0xA0;               // no overlong forms
        else if (b == 0xED) faltan_ = 2, maximo_ = 0x9F;               // no surrogates
        else if (b >= 0xE1 && b <= 0xEF) faltan_ = 2;
        else if (b == 0xF0) faltan_ = 3, minimo_ = 0x90;
        else if (b == 0xF4) faltan_ = 3, maximo_ = 0x8F;               // up to U+10FFFF
        else if (b >= 0xF1 && b <= 0xF3) faltan_ = 3;
        else valido_ = false;
    }
};

constexpr char kBom[] = "\xEF\xBB\xBF";

std::FILE* Abre(const std::string& ruta) { return std::fopen(ruta.c_str(), "rb"); }

[[noreturn]] void NoSePuedeAbrir(const std::string& ruta) {
    throw ErrorLectura("No se pudo abrir el archivo " + ruta, ruta, 0);
}

}  // namespace

std::string DecodificaWindows1252(std::string_view bytes) {
    std::string r;
    r.reserve(bytes.size() + bytes.size() / 8);
    for (unsigned char b : bytes) {
        if (b < 0x80) r += static_cast<char>(b);
        else if (b < 0xA0) AgregaUtf8(r, kAltos1252[b - 0x80]);
        else AgregaUtf8(r, b);
    }
    return r;
}

bool EsUtf8Valido(std::string_view bytes) {
    ValidadorUtf8 v;
    v.alimenta(bytes);
    return v.valido();
}

CodificacionTexto DetectaCodificacion(const std::string& ruta) {
    std::FILE* f = Abre(ruta);
    if (!f) NoSePuedeAbrir(ruta);
    std::vector<char> bloque(kBloque);
    ValidadorUtf8 v;
    bool primero = true, conBom = false;
    for (size_t n; (n = std::fread(bloque.data(), 1, bloque.size(), f)) > 0;) {
        std::string_view trozo(bloque.data(), n);
        if (primero && trozo.substr(0, 3) == kBom) conBom = true;
        primero = false;
        if (conBom) break;
        v.alimenta(trozo);
        if (v.roto()) break;
    }
    std::fclose(f);
    if (conBom) return CodificacionTexto::Utf8;
    return v.valido() && v.conAltos() ? CodificacionTexto::Utf8 : CodificacionTexto::Windows1252;
}

ArchivoTexto::ArchivoTexto(const std::string& ruta) : ruta_(ruta), bufer_(kBloque) {
    codificacion_ = DetectaCodificacion(ruta);
    archivo_ = Abre(ruta);
    if (!archivo_) NoSePuedeAbrir(ruta);
    if (codificacion_ == CodificacionTexto::Utf8 && llena() && fin_ - inicio_ >= 3 &&
        std::memcmp(bufer_.data() + inicio_, kBom, 3) == 0)
        inicio_ += 3;
}

ArchivoTexto::~ArchivoTexto() {
    if (archivo_) std::fclose(archivo_);
}

bool ArchivoTexto::llena() {
    if (inicio_ < fin_) return true;
    if (finArchivo_) return false;
    inicio_ = 0;
    fin_ = std::fread(bufer_.data(), 1, bufer_.size(), archivo_);
    if (fin_ == 0) finArchivo_ = true;
    return fin_ > 0;
}

bool ArchivoTexto::leeLinea(std::string& linea) {
    std::string bytes;
    bool hayLinea = false;
    while (llena()) {
        if (saltaLF_) {
            saltaLF_ = false;
            if (bufer_[inicio_] == '\n') {
                ++inicio_;
                continue;
            }
        }
        const char* desde = bufer_.data() + inicio_;
        const char* hasta = bufer_.data() + fin_;
        const char* p = desde;
        while (p < hasta && *p != '\n' && *p != '\r') ++p;
        bytes.append(desde, p);
        hayLinea = true;
        if (p == hasta) {
            inicio_ = fin_;
            continue;
        }
        saltaLF_ = *p == '\r';
        inicio_ = static_cast<size_t>(p + 1 - bufer_.data());
        break;
    }
    if (!hayLinea) return false;
    ++numero_;
    linea = codificacion_ == CodificacionTexto::Utf8 ? std::move(bytes) : DecodificaWindows1252(bytes);
    return true;
}

long CuentaLineasTexto(const std::string& ruta) {
    std::FILE* f = Abre(ruta);
    if (!f) return 0;
    std::vector<char> bloque(kBloque);
    long lineas = 0;
    bool abierta = false;  // bytes read since the last line end
    bool trasCR = false;
    for (size_t n; (n = std::fread(bloque.data(), 1, bloque.size(), f)) > 0;) {
        for (size_t i = 0; i < n; ++i) {
            char c = bloque[i];
            if (c == '\n' && trasCR) {
                trasCR = false;
                continue;
            }
            trasCR = c == '\r';
            if (c == '\n' || c == '\r') {
                ++lineas;
                abierta = false;
            } else {
                abierta = true;
            }
        }
    }
    std::fclose(f);
    return lineas + (abierta ? 1 : 0);
}

}  // namespace velmorant
