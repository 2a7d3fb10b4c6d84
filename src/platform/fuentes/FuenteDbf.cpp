#include "platform/fuentes/FuenteDbf.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "platform/ErrorLectura.h"
#include "platform/Texto.h"
#include "platform/fuentes/DecimalExacto.h"

namespace velmorant {

namespace fs = std::filesystem;

namespace {

std::uint32_t U16(const unsigned char* p) { return p[0] | (static_cast<std::uint32_t>(p[1]) << 8); }
std::uint32_t U32(const unsigned char* p) {
    return p[0] | (static_cast<std::uint32_t>(p[1]) << 8) | (static_cast<std::uint32_t>(p[2]) << 16) |
           (static_cast<std::uint32_t>(p[3]) << 24);
}
std::uint32_t U32Be(const unsigned char* p) {
    return (static_cast<std::uint32_t>(p[0]) << 24) | (static_cast<std::uint32_t>(p[1]) << 16) |
           (static_cast<std::uint32_t>(p[2]) << 8) | p[3];
}
std::int64_t I64(const unsigned char* p) {
    std::uint64_t v = 0;
    for (int i = 7; i >= 0; --i) v = (v << 8) | p[i];
    return static_cast<std::int64_t>(v);
}
const unsigned char* Bytes(std::string_view s) { return reinterpret_cast<const unsigned char*>(s.data()); }

// Julian day number of 1899-12-30, the day 0 of `Fecha::desdeSerial`.
constexpr long kJulianoSerialCero = 2415019;

bool EsVersionConocida(unsigned char v) {
    switch (v) {
        case 0x03:  // dBase III, FoxPro and FoxBASE+ without memo
        case 0x30:  // Visual FoxPro
        case 0x31:  // Visual FoxPro with an autoincrement field
        case 0x32:  // Visual FoxPro with Varchar or Varbinary fields
        case 0x43:  // dBase IV SQL table
        case 0x63:  // dBase IV SQL system table
        case 0x83:  // dBase III with memo
        case 0x8B:  // dBase IV with memo
        case 0xCB:  // dBase IV SQL table with memo
        case 0xF5:  // FoxPro 2.x with memo
        case 0xFB:  // FoxBASE with memo
            return true;
        default:
            return false;
    }
}

// Cuts the trailing blanks and NULs that pad a field.
std::string_view SinRellenoFinal(std::string_view s) {
    size_t n = s.size();
    while (n > 0 && (s[n - 1] == ' ' || s[n - 1] == '\0')) --n;
    return s.substr(0, n);
}

std::string_view SinRelleno(std::string_view s) {
    s = SinRellenoFinal(s);
    size_t i = 0;
    while (i < s.size() && (s[i] == ' ' || s[i] == '\0')) ++i;
    return s.substr(i);
}

// The memo file beside the table: the table's name with `extension` in the
// case of the table's own extension, in upper or lower case, or any case
// found in the folder.
std::string BuscaMemos(const std::string& ruta, const std::string& extension) {
    fs::path p(ruta);
    std::string ext = p.extension().string();
    bool minusculas = !ext.empty() && std::islower(static_cast<unsigned char>(ext.back()));
    std::string mayus = extension, minus = extension;
    for (auto& c : mayus) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    for (auto& c : minus) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    for (const auto& e : minusculas ? std::vector{minus, mayus} : std::vector{mayus, minus}) {
        fs::path candidato = p;
        candidato.replace_extension(e);
        std::error_code ec;
        if (fs::is_regular_file(candidato, ec)) return candidato.string();
    }
    fs::path buscado = p;
    buscado.replace_extension(mayus);
    std::string nombreBuscado = Mayusculas(buscado.filename().string());
    std::error_code ec;
    fs::path carpeta = p.parent_path().empty() ? fs::path(".") : p.parent_path();
    for (fs::directory_iterator it(carpeta, ec), fin; !ec && it != fin; it.increment(ec)) {
        if (Mayusculas(it->path().filename().string()) == nombreBuscado && it->is_regular_file(ec))
            return it->path().string();
    }
    return "";
}

}  // namespace

void FuenteDbf::falla(const std::string& detalle, long registro) const {
    std::string mensaje = "El archivo " + ruta_ + " está dañado: " + detalle;
    if (registro > 0) mensaje += " (registro " + std::to_string(registro) + ")";
    throw ErrorLectura(mensaje + ".", ruta_, registro);
}

FuenteDbf::FuenteDbf(const std::string& ruta) : ruta_(ruta) {
    std::error_code ec;
    auto largo = fs::file_size(ruta, ec);
    if (!ec) archivo_.open(ruta, std::ios::binary);
    if (ec || !archivo_) throw ErrorLectura("No se pudo abrir el archivo " + ruta, ruta, 0);
    leeEncabezado(largo);
    abreMemos();
    registro_.resize(static_cast<size_t>(largoRegistro_));
    archivo_.seekg(largoEncabezado_);
}

void FuenteDbf::leeEncabezado(std::uint64_t largoArchivo) {
    const std::string noEsTabla = "El archivo " + ruta_ + " no es una tabla de dBase o FoxPro.";
    unsigned char h[32];
    if (largoArchivo < 32 || !archivo_.read(reinterpret_cast<char*>(h), 32)) throw ErrorLectura(noEsTabla, ruta_, 0);
    unsigned char version = h[0];
    if (version == 0x04 || version == 0x8C)
        throw ErrorLectura("El archivo " + ruta_ +
                               " es una tabla de dBase 7, que no se puede leer; guárdela como dBase IV o FoxPro.",
                           ruta_, 0);
    if (!EsVersionConocida(version))
        throw ErrorLectura(noEsTabla, ruta_, 0);
    visualFoxPro_ = version >= 0x30 && version <= 0x32;
    registros_ = U32(h + 4);
    largoEncabezado_ = static_cast<int>(U16(h + 8));
    largoRegistro_ = static_cast<int>(U16(h + 10));
    if (largoEncabezado_ < 33 || largoRegistro_ < 1) throw ErrorLectura(noEsTabla, ruta_, 0);
    if (largoArchivo < static_cast<std::uint64_t>(largoEncabezado_))
        falla("termina dentro de su encabezado", 0);
    decodificador_ = DecodificadorPaginaCodigos(PaginaCodigosDeMarca(h[29]));

    std::string resto(static_cast<size_t>(largoEncabezado_ - 32), '\0');
    if (!archivo_.read(resto.data(), static_cast<std::streamsize>(resto.size())))
        falla("termina dentro de su encabezado", 0);
    const auto* d = Bytes(resto);
    size_t pos = 0;
    struct Bruto {
        CampoDbf campo;
        int largoBajo, largoAlto;
        unsigned char banderas;
    };
    std::vector<Bruto> brutos;
    for (;;) {
        if (pos >= resto.size()) falla("la lista de campos no tiene fin", 0);
        if (d[pos] == 0x0D) break;
        if (pos + 32 > resto.size()) falla("la lista de campos no tiene fin", 0);
        const unsigned char* c = d + pos;
        size_t largoNombre = 0;
        while (largoNombre < 11 && c[largoNombre] != 0) ++largoNombre;
        Bruto b;
        b.campo.nombre = std::string(SinRelleno(decodificador_.decodifica(
            std::string_view(reinterpret_cast<const char*>(c), largoNombre))));
        b.campo.tipo = static_cast<char>(std::toupper(c[11]));
        b.largoBajo = c[16];
        b.largoAlto = c[17];
        b.banderas = c[18];
        brutos.push_back(b);
        pos += 32;
    }
    if (brutos.empty()) falla("no tiene campos", 0);

    // Character fields longer than 255 keep the high byte of their length
    // where other types keep their decimals (FoxPro and Clipper); read so
    // only when the record's length agrees.
    long sumaSimple = 0, sumaLarga = 0;
    for (const auto& b : brutos) {
        sumaSimple += b.largoBajo;
        sumaLarga += b.largoBajo + (b.campo.tipo == 'C' ? 256 * b.largoAlto : 0);
    }
    bool largosExtendidos = !visualFoxPro_ && sumaLarga != sumaSimple && sumaLarga + 1 <= largoRegistro_;
    int desplazamiento = 1;
    int bit = 0;
    for (auto& b : brutos) {
        CampoDbf& c = b.campo;
        bool extendido = largosExtendidos && c.tipo == 'C';
        c.largo = b.largoBajo + (extendido ? 256 * b.largoAlto : 0);
        c.decimales = extendido ? 0 : b.largoAlto;
        c.desplazamiento = desplazamiento;
        desplazamiento += c.largo;
        auto exige = [&](bool bien) {
            if (!bien)
                falla("el campo " + c.nombre + " de tipo " + std::string(1, c.tipo) + " tiene un largo de " +
                          std::to_string(c.largo),
                      0);
        };
        switch (c.tipo) {
            case 'D': exige(c.largo == 8); break;
            case 'L': exige(c.largo == 1); break;
            case 'I': exige(c.largo == 4); break;
            case 'Y':
            case 'T': exige(c.largo == 8); break;
            case 'B': exige(!visualFoxPro_ || c.largo == 8); break;
            case 'M':
            case 'G':
            case 'P': exige(c.largo == 10 || c.largo == 4); break;
            case 'N':
            case 'F':
            case 'C':
            case 'V': exige(c.largo > 0); break;
            default: break;
        }
        if (b.campo.tipo == '0' || (visualFoxPro_ && (b.banderas & 0x01))) {
            // A hidden system field; _NullFlags holds the bits of the others.
            if (Mayusculas(c.nombre) == "_NULLFLAGS") inicioNulos_ = c.desplazamiento, largoNulos_ = c.largo;
            continue;
        }
        if (visualFoxPro_) {
            if (c.tipo == 'V' || c.tipo == 'Q') c.bitLargo = bit++;
            if (b.banderas & 0x02) c.bitNulo = bit++;
        }
        campos_.push_back(c);
    }
    if (desplazamiento > largoRegistro_)
        falla("sus campos suman " + std::to_string(desplazamiento - 1) + " bytes y su registro " +
                  std::to_string(largoRegistro_ - 1),
              0);
    if (bit > 0 && bit > 8 * largoNulos_) falla("le faltan las marcas de nulos de sus campos (_NullFlags)", 0);
    if (campos_.empty()) falla("no tiene campos", 0);

    std::uint64_t necesario = static_cast<std::uint64_t>(largoEncabezado_) +
                              static_cast<std::uint64_t>(registros_) * static_cast<std::uint64_t>(largoRegistro_);
    if (largoArchivo < necesario) {
        std::uint64_t completos = (largoArchivo - static_cast<std::uint64_t>(largoEncabezado_)) /
                                  static_cast<std::uint64_t>(largoRegistro_);
        throw ErrorLectura("El archivo " + ruta_ + " está incompleto: su encabezado anuncia " +
                               std::to_string(registros_) + " registros y solo contiene " +
                               std::to_string(completos) + ".",
                           ruta_, 0);
    }
    switch (version) {
        case 0x83: memos_ = Memos::Dbase3; break;
        case 0x8B:
        case 0xCB: memos_ = Memos::Dbase4; break;
        default: memos_ = Memos::FoxPro; break;
    }
}

void FuenteDbf::abreMemos() {
    bool conMemos = false;
    for (const auto& c : campos_)
        if (c.tipo == 'M') conMemos = true;
    if (!conMemos) {
        memos_ = Memos::Ninguno;
        return;
    }
    if (memos_ == Memos::FoxPro) {
        rutaMemos_ = BuscaMemos(ruta_, ".fpt");
        if (rutaMemos_.empty() && !visualFoxPro_) {
            // A table of another writer that marks no memo kind: its .DBT.
            rutaMemos_ = BuscaMemos(ruta_, ".dbt");
            if (!rutaMemos_.empty()) memos_ = Memos::Dbase3;
        }
    } else {
        rutaMemos_ = BuscaMemos(ruta_, ".dbt");
    }
    if (rutaMemos_.empty()) {
        fs::path esperado(ruta_);
        esperado.replace_extension(memos_ == Memos::FoxPro ? ".FPT" : ".DBT");
        throw ErrorLectura("No se encontró el archivo de memos " + esperado.filename().string() + " de la tabla " +
                               ruta_ + ".",
                           ruta_, 0);
    }
    std::error_code ec;
    largoMemos_ = fs::file_size(rutaMemos_, ec);
    if (!ec) archivoMemos_.open(rutaMemos_, std::ios::binary);
    if (ec || !archivoMemos_) throw ErrorLectura("No se pudo abrir el archivo " + rutaMemos_, ruta_, 0);
    unsigned char h[32] = {};
    archivoMemos_.read(reinterpret_cast<char*>(h), 32);
    archivoMemos_.clear();
    if (memos_ == Memos::FoxPro) {
        bloqueMemos_ = (static_cast<std::uint32_t>(h[6]) << 8) | h[7];
        if (bloqueMemos_ == 0) bloqueMemos_ = 64;
    } else if (memos_ == Memos::Dbase4) {
        // The block length at bytes 20-21; some writers keep it at 4-7 only.
        bloqueMemos_ = U16(h + 20);
        if (bloqueMemos_ == 0) bloqueMemos_ = U32(h + 4);
        if (bloqueMemos_ < 64 || bloqueMemos_ > 65536) bloqueMemos_ = 512;
    } else {
        bloqueMemos_ = 512;
    }
}

std::vector<std::string> FuenteDbf::nombresColumnas() const {
    std::vector<std::string> r;
    for (const auto& c : campos_) r.push_back(c.nombre);
    return r;
}

std::string FuenteDbf::lugar(const Fila& fila) const {
    return "archivo " + ruta_ + ", registro " + std::to_string(fila.numero);
}

bool FuenteDbf::siguiente(Fila& fila) {
    while (leidos_ < registros_) {
        long numero = static_cast<long>(++leidos_);
        if (!archivo_.read(registro_.data(), static_cast<std::streamsize>(registro_.size())))
            throw ErrorLectura("El archivo " + ruta_ + " terminó antes del registro " + std::to_string(numero) + ".",
                               ruta_, numero);
        if (registro_[0] == '*') continue;  // deleted
        fila.numero = numero;
        fila.texto.clear();
        fila.celdas.clear();
        fila.celdas.reserve(campos_.size());
        for (const auto& c : campos_) fila.celdas.push_back(celda(c, numero));
        return true;
    }
    return false;
}

bool FuenteDbf::bitEncendido(int bit) const {
    if (bit < 0 || inicioNulos_ < 0 || bit >= 8 * largoNulos_) return false;
    auto byte = static_cast<unsigned char>(registro_[static_cast<size_t>(inicioNulos_ + bit / 8)]);
    return (byte >> (bit % 8)) & 1;
}

Celda FuenteDbf::celda(const CampoDbf& campo, long registro) {
    if (bitEncendido(campo.bitNulo)) return Celda();
    std::string_view bytes =
        std::string_view(registro_).substr(static_cast<size_t>(campo.desplazamiento), static_cast<size_t>(campo.largo));
    const unsigned char* b = Bytes(bytes);
    switch (campo.tipo) {
        case 'C': return Celda::texto(decodificador_.decodifica(SinRellenoFinal(bytes)));
        case 'V': {
            size_t largo = bytes.size();
            if (bitEncendido(campo.bitLargo)) {
                largo = b[bytes.size() - 1];
                if (largo >= bytes.size())
                    falla("el campo " + campo.nombre + " dice medir más que su ancho", registro);
            }
            return Celda::texto(decodificador_.decodifica(bytes.substr(0, largo)));
        }
        case 'N':
        case 'F': {
            std::string_view t = SinRelleno(bytes);
            if (t.empty()) return Celda();
            if (auto decimal = DecimalExacto(t)) return Celda::numero(*decimal);
            return Celda::texto(decodificador_.decodifica(t));
        }
        case 'I': return Celda::numero(std::to_string(static_cast<std::int32_t>(U32(b))));
        case 'Y': return Celda::numero(Moneda::desdeDiezmilesimas(I64(b)).texto());
        case 'B': {
            if (!visualFoxPro_) return Celda();  // binary memo of dBase IV
            std::uint64_t bitsDoble = static_cast<std::uint64_t>(I64(b));
            double v;
            std::memcpy(&v, &bitsDoble, sizeof v);
            if (!std::isfinite(v)) return Celda();
            char texto[400];
            auto r = std::to_chars(texto, texto + sizeof texto, v, std::chars_format::fixed);
            return Celda::numero(std::string(texto, r.ptr));
        }
        case 'D': {
            std::string_view t = SinRelleno(bytes);
            if (t.empty() || t.find_first_not_of('0') == std::string_view::npos) return Celda();
            if (t.size() == 8 && t.find_first_not_of("0123456789") == std::string_view::npos) {
                auto n = [&](size_t a, size_t k) { return std::stoi(std::string(t.substr(a, k))); };
                Fecha f(n(0, 4), n(4, 2), n(6, 2));
                if (f.valida()) return Celda::fecha(f);
            }
            return Celda::texto(decodificador_.decodifica(t));
        }
        case 'T': {
            if (SinRelleno(bytes).empty()) return Celda();
            auto dia = static_cast<std::int32_t>(U32(b));
            auto ms = static_cast<std::int32_t>(U32(b + 4));
            if (dia == 0 && ms == 0) return Celda();
            if (ms < 0 || ms > 86400000)
                falla("el campo " + campo.nombre + " tiene una hora fuera del día", registro);
            long segundos = (ms + 500) / 1000;  // the engine stores 12:00:00 as 11:59:59.999 at times
            long serial = static_cast<long>(dia) - kJulianoSerialCero + segundos / 86400;
            segundos %= 86400;
            Fecha f = Fecha::desdeSerial(serial);
            if (dia <= 0 || !f.valida())
                falla("el campo " + campo.nombre + " tiene una fecha fuera del calendario", registro);
            return Celda::fecha(f, static_cast<int>(segundos));
        }
        case 'L':
            switch (bytes[0]) {
                case 'T':
                case 't':
                case 'Y':
                case 'y': return Celda::logico(true);
                case 'F':
                case 'f':
                case 'N':
                case 'n': return Celda::logico(false);
                default: return Celda();
            }
        case 'M': return memo(campo, bytes, registro);
        default: return Celda();
    }
}

Celda FuenteDbf::memo(const CampoDbf& campo, std::string_view bytes, long registro) {
    std::uint64_t bloque = 0;
    if (bytes.size() == 4) {
        bloque = U32(Bytes(bytes));
    } else {
        std::string_view t = SinRelleno(bytes);
        if (t.find_first_not_of("0123456789") != std::string_view::npos)
            falla("el campo " + campo.nombre + " no apunta a un memo", registro);
        for (char c : t) bloque = bloque * 10 + static_cast<std::uint64_t>(c - '0');
    }
    if (bloque == 0) return Celda();
    const std::string fuera = "el memo del campo " + campo.nombre + " queda fuera del archivo " + rutaMemos_;
    std::uint64_t inicio = bloque * bloqueMemos_;
    if (inicio >= largoMemos_) falla(fuera, registro);
    archivoMemos_.clear();
    archivoMemos_.seekg(static_cast<std::streamoff>(inicio));
    std::uint64_t largo = 0;
    bool conTerminador = memos_ == Memos::Dbase3;
    if (memos_ == Memos::FoxPro || memos_ == Memos::Dbase4) {
        unsigned char h[8];
        if (inicio + 8 > largoMemos_ || !archivoMemos_.read(reinterpret_cast<char*>(h), 8)) falla(fuera, registro);
        if (memos_ == Memos::FoxPro) {
            largo = U32Be(h + 4);
        } else if (h[0] == 0xFF && h[1] == 0xFF && h[2] == 0x08 && h[3] == 0x00) {
            largo = U32(h + 4);
            if (largo < 8) falla(fuera, registro);
            largo -= 8;  // the length counts the block's own eight bytes
        } else {
            conTerminador = true;  // a dBase III memo in a dBase IV table
            archivoMemos_.seekg(static_cast<std::streamoff>(inicio));
        }
        if (!conTerminador && inicio + 8 + largo > largoMemos_) falla(fuera, registro);
    }
    std::string texto;
    if (conTerminador) {
        // Up to the first end-of-file mark, or the end of the memo file.
        char trozo[512];
        for (;;) {
            archivoMemos_.read(trozo, sizeof trozo);
            std::streamsize n = archivoMemos_.gcount();
            if (n <= 0) break;
            const void* fin = std::memchr(trozo, 0x1A, static_cast<size_t>(n));
            if (fin) {
                texto.append(trozo, static_cast<size_t>(static_cast<const char*>(fin) - trozo));
                break;
            }
            texto.append(trozo, static_cast<size_t>(n));
        }
    } else {
        texto.resize(static_cast<size_t>(largo));
        if (!archivoMemos_.read(texto.data(), static_cast<std::streamsize>(largo))) falla(fuera, registro);
    }
    return Celda::texto(decodificador_.decodifica(texto));
}

}  // namespace velmorant
