#include "platform/ArchivoTexto.h"

#include <algorithm>
#include <bit>
#include <cstdint>
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

// Length of the well-made UTF-8 sequence that starts at `p` (2 to 4 bytes;
// no overlong forms, no surrogates, nothing above U+10FFFF); 0 when the
// bytes there start none; -1 when the `n` bytes given end before it could
// be told.
int SecuenciaUtf8(const unsigned char* p, size_t n) {
    unsigned char b = p[0], minimo = 0x80, maximo = 0xBF;
    int largo;
    if (b >= 0xC2 && b <= 0xDF) largo = 2;
    else if (b == 0xE0) largo = 3, minimo = 0xA0;  // no overlong forms
    else if (b == 0xED) largo = 3, maximo = 0x9F;  // no surrogates
    else if (b >= 0xE1 && b <= 0xEF) largo = 3;
    else if (b == 0xF0) largo = 4, minimo = 0x90;
    else if (b == 0xF4) largo = 4, maximo = 0x8F;  // up to U+10FFFF
    else if (b >= 0xF1 && b <= 0xF3) largo = 4;
    else return 0;
    for (int i = 1; i < largo; ++i) {
        if (static_cast<size_t>(i) >= n) return -1;
        unsigned char c = p[i];
        if (c < (i == 1 ? minimo : 0x80) || c > (i == 1 ? maximo : 0xBF)) return 0;
    }
    return largo;
}

// Windows-1252 of one byte, appended as UTF-8.
void Agrega1252(std::string& r, unsigned char b) {
    if (b < 0x80) r += static_cast<char>(b);
    else if (b < 0xA0) AgregaUtf8(r, kAltos1252[b - 0x80]);
    else AgregaUtf8(r, b);
}

constexpr char kBom[] = "\xEF\xBB\xBF";

// Eight bytes at a time: most of a text file is plain ASCII between line
// ends, and is passed over a word at a time. Each mask has the top bit of
// the bytes it names set, and those only.
constexpr std::uint64_t kBajos = 0x7F7F7F7F7F7F7F7FULL, kAltos = 0x8080808080808080ULL;
constexpr std::uint64_t Repite(unsigned char b) { return 0x0101010101010101ULL * b; }

std::uint64_t Palabra(const char* p) {
    std::uint64_t w;
    std::memcpy(&w, p, sizeof w);
    if constexpr (std::endian::native == std::endian::big) w = __builtin_bswap64(w);
    return w;
}

// The bytes of `w` that are 0.
std::uint64_t Ceros(std::uint64_t w) { return ~(((w & kBajos) + kBajos) | w) & kAltos; }

// The bytes that end a line.
std::uint64_t FinesDe(std::uint64_t w) { return Ceros(w ^ Repite('\r')) | Ceros(w ^ Repite('\n')); }

// The first CR or LF in [p, fin); `fin` when there is none.
const char* BuscaFinDeLinea(const char* p, const char* fin) {
    for (; fin - p >= 8; p += 8)
        if (std::uint64_t m = FinesDe(Palabra(p))) return p + std::countr_zero(m) / 8;
    while (p < fin && *p != '\n' && *p != '\r') ++p;
    return p;
}

// True when a byte of [p, fin) is above 127.
bool TieneAltos(const char* p, const char* fin) {
    std::uint64_t o = 0;
    for (; fin - p >= 8; p += 8) o |= Palabra(p);
    for (; p < fin; ++p) o |= static_cast<unsigned char>(*p);
    return (o & kAltos) != 0;
}

std::FILE* Abre(const std::string& ruta) { return std::fopen(ruta.c_str(), "rb"); }

[[noreturn]] void NoSePuedeAbrir(const std::string& ruta) {
    throw ErrorLectura("No se pudo abrir el archivo " + ruta, ruta, 0);
}

// DecodificaWindows1252 into `r`, whose room is kept: runs of ASCII are
// copied whole.
void Decodifica1252En(std::string& r, std::string_view bytes) {
    r.clear();
    r.reserve(bytes.size() + bytes.size() / 8);
    const char* p = bytes.data();
    const char* fin = p + bytes.size();
    while (p < fin) {
        const char* q = p;
        while (q < fin && static_cast<unsigned char>(*q) < 0x80) ++q;
        r.append(p, q);
        if (q == fin) break;
        Agrega1252(r, static_cast<unsigned char>(*q));
        p = q + 1;
    }
}

}  // namespace

std::string DecodificaWindows1252(std::string_view bytes) {
    std::string r;
    Decodifica1252En(r, bytes);
    return r;
}

std::string DecodificaUtf8Mixto(std::string_view bytes) {
    std::string r;
    r.reserve(bytes.size());
    auto p = reinterpret_cast<const unsigned char*>(bytes.data());
    for (size_t i = 0; i < bytes.size();) {
        if (p[i] < 0x80) {
            r += static_cast<char>(p[i++]);
            continue;
        }
        int largo = SecuenciaUtf8(p + i, bytes.size() - i);
        if (largo > 0) {
            r.append(bytes.data() + i, static_cast<size_t>(largo));
            i += static_cast<size_t>(largo);
        } else {
            Agrega1252(r, p[i++]);
        }
    }
    return r;
}

bool EsUtf8Valido(std::string_view bytes) {
    auto p = reinterpret_cast<const unsigned char*>(bytes.data());
    for (size_t i = 0; i < bytes.size();) {
        if (p[i] < 0x80) {
            ++i;
            continue;
        }
        int largo = SecuenciaUtf8(p + i, bytes.size() - i);
        if (largo <= 0) return false;
        i += static_cast<size_t>(largo);
    }
    return true;
}

namespace {

// The encoding a byte order mark gives, and its length; 0 without one.
size_t Marca(std::string_view inicio, CodificacionTexto& c) {
    if (inicio.substr(0, 3) == kBom) {
        c = CodificacionTexto::Utf8;
        return 3;
    }
    if (inicio.substr(0, 2) == "\xFF\xFE" || inicio.substr(0, 2) == "\xFE\xFF") {
        c = inicio[0] == '\xFF' ? CodificacionTexto::Utf16LE : CodificacionTexto::Utf16BE;
        return 2;
    }
    return 0;
}

std::string Cuenta(long n, const char* uno, const char* varios) {
    return n == 1 ? std::string(uno) : std::to_string(n) + " " + varios;
}

}  // namespace

DiagnosticoTexto AnalizaTexto(const std::string& ruta) {
    std::FILE* f = Abre(ruta);
    if (!f) NoSePuedeAbrir(ruta);
    DiagnosticoTexto d;
    std::vector<char> bloque(kBloque);
    std::string resto;  // the start of a sequence cut by the end of a block
    long linea = 1;
    bool trasCR = false, primero = true;
    char ultimo = '\n';  // the file's last byte: a line open at the end counts
    for (size_t n; (n = std::fread(bloque.data(), 1, bloque.size(), f)) > 0;) {
        ultimo = bloque[n - 1];
        // The block is looked at where it was read; only a sequence cut by
        // the block before is joined to it.
        std::string unido;
        if (!resto.empty()) unido = resto + std::string(bloque.data(), n);
        const std::string_view trozo = resto.empty() ? std::string_view(bloque.data(), n) : std::string_view(unido);
        resto.clear();
        size_t desde = 0;
        if (primero) {
            primero = false;
            desde = Marca(trozo, d.codificacion);
            d.conMarca = desde > 0;
            if (d.codificacion == CodificacionTexto::Utf16LE || d.codificacion == CodificacionTexto::Utf16BE) break;
        }
        auto p = reinterpret_cast<const unsigned char*>(trozo.data());
        for (size_t i = desde; i < trozo.size();) {
            const size_t antes = i;
            for (; trozo.size() - i >= 8; i += 8) {
                const std::uint64_t w = Palabra(trozo.data() + i);
                if (const std::uint64_t m = (w & kAltos) | Ceros(w) | FinesDe(w)) {
                    i += static_cast<size_t>(std::countr_zero(m) / 8);
                    break;
                }
            }
            if (i != antes) trasCR = false;
            if (i >= trozo.size()) break;
            unsigned char b = p[i];
            if (b < 0x80) {
                if (b == 0 && d.nulos++ == 0) d.lineaPrimerNulo = linea;
                if (b == '\n' && !trasCR) ++linea;
                if (b == '\r') ++linea;
                trasCR = b == '\r';
                ++i;
                continue;
            }
            trasCR = false;
            int largo = SecuenciaUtf8(p + i, trozo.size() - i);
            if (largo < 0) {  // finished by the next block
                resto = std::string(trozo.substr(i));
                break;
            }
            if (largo > 0) {
                ++d.secuenciasUtf8;
                i += static_cast<size_t>(largo);
            } else {
                ++d.bytesSueltos;
                ++i;
            }
        }
    }
    std::fclose(f);
    d.bytesSueltos += static_cast<long>(resto.size());  // cut short by the end of the file
    if (d.codificacion != CodificacionTexto::Utf16LE && d.codificacion != CodificacionTexto::Utf16BE)
        d.lineas = linea - 1 + (ultimo != '\n' && ultimo != '\r' ? 1 : 0);
    if (!d.conMarca)
        d.codificacion = d.secuenciasUtf8 > 0 && d.secuenciasUtf8 >= d.bytesSueltos ? CodificacionTexto::Utf8
                                                                                      : CodificacionTexto::Windows1252;
    return d;
}

CodificacionTexto DetectaCodificacion(const std::string& ruta) { return AnalizaTexto(ruta).codificacion; }

std::string AvisoLecturaTexto(const std::string& ruta, const DiagnosticoTexto& d) {
    std::string aviso;
    if (d.mixta()) {
        aviso = "El archivo " + ruta + " mezcla codificaciones: " +
                Cuenta(d.secuenciasUtf8, "un carácter escrito en UTF-8", "caracteres escritos en UTF-8") + " y " +
                Cuenta(d.bytesSueltos, "un byte que no lo es", "bytes que no lo son") + ". ";
        aviso += d.codificacion == CodificacionTexto::Utf8
                     ? "Se leyó como UTF-8, y cada byte que no lo es como Windows-1252."
                     : "Se leyó como Windows-1252; revise los acentos de lo que estaba escrito en UTF-8.";
    }
    if (d.nulos > 0) {
        if (!aviso.empty()) aviso += "\r\n";
        aviso += "El archivo " + ruta + " contiene " +
                 Cuenta(d.nulos, "un carácter nulo", "caracteres nulos") + " (" +
                 (d.nulos == 1 ? "en la línea " : "el primero en la línea ") + std::to_string(d.lineaPrimerNulo) +
                 "): se omiti" + (d.nulos == 1 ? "ó" : "eron") + " y se conservó el resto de cada línea.";
    }
    return aviso;
}

ArchivoTexto::ArchivoTexto(const std::string& ruta) : ruta_(ruta), bufer_(kBloque) {
    diagnostico_ = AnalizaTexto(ruta);
    archivo_ = Abre(ruta);
    if (!archivo_) NoSePuedeAbrir(ruta);
    if (diagnostico_.conMarca) {  // the mark is no part of the text
        char marca[3];
        size_t largo = diagnostico_.codificacion == CodificacionTexto::Utf8 ? 3 : 2;
        if (std::fread(marca, 1, largo, archivo_) != largo) finArchivo_ = true;
    }
}

ArchivoTexto::~ArchivoTexto() {
    if (archivo_) std::fclose(archivo_);
}

bool ArchivoTexto::esUtf16() const {
    return diagnostico_.codificacion == CodificacionTexto::Utf16LE ||
           diagnostico_.codificacion == CodificacionTexto::Utf16BE;
}

bool ArchivoTexto::llena() {
    if (inicio_ < fin_) return true;
    inicio_ = fin_ = 0;
    if (!esUtf16()) {
        if (finArchivo_) return false;
        fin_ = std::fread(bufer_.data(), 1, bufer_.size(), archivo_);
        if (fin_ == 0) finArchivo_ = true;
        return fin_ > 0;
    }
    // UTF-16: each block read is made UTF-8 here, so that lines split on
    // the bytes CR and LF as in any other file. A surrogate pair may
    // straddle two blocks; a lone surrogate becomes U+FFFD.
    const bool le = diagnostico_.codificacion == CodificacionTexto::Utf16LE;
    std::string texto;
    while (texto.empty() && !finArchivo_) {
        char bloque[kBloque / 2];
        size_t n = std::fread(bloque, 1, sizeof bloque, archivo_);
        if (n == 0) finArchivo_ = true;
        crudo_.append(bloque, n);
        size_t i = 0;
        for (; i + 1 < crudo_.size(); i += 2) {
            auto a = static_cast<unsigned char>(crudo_[i]), b = static_cast<unsigned char>(crudo_[i + 1]);
            char32_t u = le ? static_cast<char32_t>(a | (b << 8)) : static_cast<char32_t>((a << 8) | b);
            if (altoPendiente_) {
                if (u >= 0xDC00 && u <= 0xDFFF) {
                    char32_t c = 0x10000 + ((altoPendiente_ - 0xD800) << 10) + (u - 0xDC00);
                    texto += static_cast<char>(0xF0 | (c >> 18));
                    texto += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
                    texto += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
                    texto += static_cast<char>(0x80 | (c & 0x3F));
                    altoPendiente_ = 0;
                    continue;
                }
                AgregaUtf8(texto, 0xFFFD);
                altoPendiente_ = 0;
            }
            if (u >= 0xD800 && u <= 0xDBFF) altoPendiente_ = u;
            else if (u >= 0xDC00 && u <= 0xDFFF) AgregaUtf8(texto, 0xFFFD);
            else AgregaUtf8(texto, u);
        }
        crudo_.erase(0, i);
        if (finArchivo_ && altoPendiente_) {
            AgregaUtf8(texto, 0xFFFD);
            altoPendiente_ = 0;
        }
    }
    if (texto.empty()) return false;
    if (bufer_.size() < texto.size()) bufer_.resize(texto.size());
    std::memcpy(bufer_.data(), texto.data(), texto.size());
    fin_ = texto.size();
    return true;
}

bool ArchivoTexto::leeLinea(std::string& linea) {
    // The line is decoded where it stands in the buffer; only a line cut by
    // the end of a block is gathered first.
    std::string_view bytes;
    bool hayLinea = false, partida = false;
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
        const char* p = BuscaFinDeLinea(desde, hasta);
        hayLinea = true;
        if (p == hasta) {
            if (!partida) pendiente_.clear();
            pendiente_.append(desde, hasta);
            partida = true;
            inicio_ = fin_;
            continue;
        }
        if (partida) pendiente_.append(desde, p);
        else bytes = std::string_view(desde, static_cast<size_t>(p - desde));
        saltaLF_ = *p == '\r';
        inicio_ = static_cast<size_t>(p + 1 - bufer_.data());
        break;
    }
    if (!hayLinea) return false;
    ++numero_;
    if (partida) bytes = pendiente_;
    // A NUL would end the field early wherever the text is stored or shown.
    if (diagnostico_.nulos > 0 && bytes.find('\0') != std::string_view::npos) {
        std::string sinNulos(bytes);
        sinNulos.erase(std::remove(sinNulos.begin(), sinNulos.end(), '\0'), sinNulos.end());
        pendiente_ = std::move(sinNulos);
        bytes = pendiente_;
    }
    switch (diagnostico_.codificacion) {
        case CodificacionTexto::Windows1252:
            if (TieneAltos(bytes.data(), bytes.data() + bytes.size())) Decodifica1252En(linea, bytes);
            else linea.assign(bytes);
            break;
        case CodificacionTexto::Utf8:
            if (diagnostico_.bytesSueltos == 0) linea.assign(bytes);
            else linea = DecodificaUtf8Mixto(bytes);
            break;
        default:  // UTF-16, made UTF-8 as it was read
            linea.assign(bytes);
    }
    return true;
}

long CuentaLineasTexto(const std::string& ruta) {
    std::FILE* f = Abre(ruta);
    if (!f) return 0;
    char marca[2] = {0, 0};
    bool utf16 = std::fread(marca, 1, 2, f) == 2 &&
                 ((marca[0] == '\xFF' && marca[1] == '\xFE') || (marca[0] == '\xFE' && marca[1] == '\xFF'));
    if (utf16) {  // its line ends are two bytes wide: the reader counts them
        std::fclose(f);
        ArchivoTexto a(ruta);
        std::string linea;
        while (a.leeLinea(linea)) {
        }
        return a.numeroLinea();
    }
    std::rewind(f);
    std::vector<char> bloque(kBloque);
    long lineas = 0;
    bool abierta = false;  // bytes read since the last line end
    bool trasCR = false;
    for (size_t n; (n = std::fread(bloque.data(), 1, bloque.size(), f)) > 0;) {
        const char* p = bloque.data();
        const char* fin = p + n;
        if (trasCR && *p == '\n') ++p;  // the LF of a CR LF cut by the block
        trasCR = false;
        while (p < fin) {
            const char* q = BuscaFinDeLinea(p, fin);
            if (q == fin) {
                abierta = abierta || q > p;
                break;
            }
            ++lineas;
            abierta = false;
            trasCR = *q == '\r';
            p = q + 1;
            if (trasCR && p < fin && *p == '\n') {
                ++p;
                trasCR = false;
            }
        }
    }
    std::fclose(f);
    return lineas + (abierta ? 1 : 0);
}

}  // namespace velmorant
