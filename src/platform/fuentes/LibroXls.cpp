// The .xls reader: FreeXL reads the cells. Before it opens the file, a
// survey of our own walks the workbook stream's records, because FreeXL
// neither reports formulas (it gives their cells as empty, though the file
// stores their results), nor tells a logical value or an error from a
// number, nor bounds its memory (it allocates every sheet's whole declared
// dimension at once). The survey finds each sheet's formula, logical and
// error cells, the encryption record and the cells the sheets declare.

#include <freexl.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "platform/ArchivoTexto.h"
#include "platform/ErrorLectura.h"
#include "platform/fuentes/DocumentoCompuesto.h"
#include "platform/fuentes/LibroInterno.h"

namespace velmorant::libro {

namespace {

constexpr size_t kMaxArchivo = 256u << 20;
// FreeXL holds 16 bytes for each declared cell of every sheet: at most one
// full sheet of the format (65536 rows by 256 columns, some 270 MB).
constexpr uint64_t kMaxCeldasDeclaradas = 65536ull * 256;

const char kDanado[] = "el archivo está dañado o incompleto";

uint16_t U16(std::string_view d, size_t p) {
    return static_cast<uint16_t>(static_cast<unsigned char>(d[p]) | static_cast<unsigned char>(d[p + 1]) << 8);
}
uint32_t U32(std::string_view d, size_t p) {
    return static_cast<uint32_t>(U16(d, p)) | static_cast<uint32_t>(U16(d, p + 2)) << 16;
}

/// A cell FreeXL does not deliver as it is: a formula, a logical value
/// or an error value (`valor` the value or the error's code).
struct CeldaEspecial {
    enum Clase : uint8_t { Formula, Logico, Error };
    uint32_t fila;  // from 1
    uint16_t columna;
    Clase clase;
    uint8_t valor;
    bool operator<(const CeldaEspecial& o) const { return fila != o.fila ? fila < o.fila : columna < o.columna; }
};

struct HojaBiff {
    std::string nombre;
    int tipo = 0;  // 0 worksheet, 2 chart, 6 module
    uint32_t inicio = 0;
    std::vector<CeldaEspecial> especiales;
};

struct Censo {
    bool cifrado = false;
    std::vector<HojaBiff> hojas;
    uint64_t celdasDeclaradas = 0;
};

/// A record FreeXL must not see, at `posicion` in the workbook stream (or
/// past its end when the stream's structure as a whole does not hold).
struct ErrorCenso {
    size_t posicion = SIZE_MAX;
};

// Record types.
constexpr uint16_t kBof8 = 0x0809, kEof = 0x000A, kFilepass = 0x002F, kBoundsheet = 0x0085, kFormat = 0x041E,
                   kXf = 0x00E0, kSst = 0x00FC, kContinue = 0x003C, kCodepage = 0x0042, kDatemode = 0x0022;
constexpr uint16_t kDimensions = 0x0200, kFormula = 0x0006, kBoolErr = 0x0205, kNumber = 0x0203, kRk = 0x027E,
                   kLabelSst = 0x00FD, kLabel = 0x0204, kRString = 0x00D6, kBlank = 0x0201, kMulRk = 0x00BD,
                   kMulBlank = 0x00BE;

bool EsBof(uint16_t tipo) { return tipo == kBof8 || tipo == 0x0409 || tipo == 0x0209 || tipo == 0x0009; }

std::string Latin1(std::string_view b) {
    std::string r;
    for (unsigned char c : b) {
        if (c < 0x80) {
            r += static_cast<char>(c);
        } else {
            r += static_cast<char>(0xC0 | (c >> 6));
            r += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return r;
}

// A sheet's name in its BOUNDSHEET record (already checked to fit): BIFF8
// writes UTF-16 or its low bytes, BIFF5 bytes of the workbook's code page.
std::string NombreBiff(std::string_view d, bool biff8) {
    size_t largo = static_cast<unsigned char>(d[6]);
    if (!biff8) return DecodificaWindows1252(d.substr(7, largo));
    std::string_view chars = d.substr(8);
    if (!(d[7] & 1)) return Latin1(chars.substr(0, largo));
    std::string r;
    for (size_t i = 0; i < largo; ++i) {
        unsigned c = U16(chars, 2 * i);
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
    return r;
}

void Exige(bool condicion) {
    if (!condicion) throw ErrorCenso{};
}

/// A string of a record ("cch" characters at `inicio`, of one or two bytes
/// by the flags at `banderas`) lies inside the record.
void CadenaCabe(std::string_view d, size_t banderas, size_t inicio, size_t cch) {
    Exige(banderas < d.size());
    Exige(inicio + cch * ((d[banderas] & 1) ? 2 : 1) <= d.size());
}

/// Reads the shared string table across its CONTINUE records as FreeXL
/// will, refusing a string that runs past them; gives the number of
/// strings.
class CursorSst {
public:
    CursorSst(std::string_view flujo, size_t p) {
        // The SST record, then the CONTINUE records that follow it.
        for (bool primero = true; p + 4 <= flujo.size(); primero = false) {
            uint16_t tipo = U16(flujo, p);
            size_t largo = U16(flujo, p + 2);
            if (!primero && tipo != kContinue) break;
            Exige(p + 4 + largo <= flujo.size());
            segmentos_.push_back(flujo.substr(p + 4, largo));
            p += 4 + largo;
        }
    }

    uint32_t valida() {
        salta(4);  // total count
        uint32_t unicas = u32();
        for (uint32_t i = 0; i < unicas; ++i) {
            uint16_t cch = u16();
            uint8_t banderas = u8();
            uint16_t corridas = (banderas & 0x08) ? u16() : 0;
            uint32_t extension = (banderas & 0x04) ? u32() : 0;
            caracteres(cch, banderas & 1);
            salta(4ull * corridas + extension);
        }
        return unicas;
    }

private:
    std::vector<std::string_view> segmentos_;
    size_t s_ = 0, o_ = 0;

    uint8_t u8() {
        while (s_ < segmentos_.size() && o_ >= segmentos_[s_].size()) ++s_, o_ = 0;
        Exige(s_ < segmentos_.size());
        return static_cast<uint8_t>(segmentos_[s_][o_++]);
    }
    uint16_t u16() {
        uint16_t a = u8();
        return static_cast<uint16_t>(a | u8() << 8);
    }
    uint32_t u32() {
        uint32_t a = u16();
        return a | static_cast<uint32_t>(u16()) << 16;
    }
    void salta(uint64_t n) {
        while (n > 0) {
            Exige(s_ < segmentos_.size());
            size_t disponibles = segmentos_[s_].size() - o_;
            if (disponibles == 0) {
                ++s_, o_ = 0;
                continue;
            }
            size_t k = static_cast<size_t>(std::min<uint64_t>(n, disponibles));
            o_ += k, n -= k;
        }
    }
    // Characters split by a CONTINUE go on after a new flags byte.
    void caracteres(uint32_t cch, bool ancho) {
        while (cch > 0) {
            Exige(s_ < segmentos_.size());
            size_t disponibles = segmentos_[s_].size() - o_;
            if (disponibles == 0) {
                ++s_, o_ = 0;
                Exige(s_ < segmentos_.size() && !segmentos_[s_].empty());
                ancho = segmentos_[s_][0] & 1;
                o_ = 1;
                continue;
            }
            size_t k = std::min<size_t>(cch, disponibles / (ancho ? 2 : 1));
            Exige(k > 0);
            o_ += k * (ancho ? 2 : 1), cch -= static_cast<uint32_t>(k);
        }
    }
};

/// Walks the whole workbook stream record by record, as FreeXL does, and
/// refuses (ErrorCenso) what FreeXL would read past a record's end or past
/// its own tables: it trusts the lengths, counts and indexes a file
/// writes. On the way it notes the sheets, their formula, logical and
/// error cells, encryption and the cells the sheets declare.
Censo CensaLibro(std::string_view flujo) {
    Censo censo;
    bool biff8 = true, conSst = false;
    size_t xfs = 0;
    uint32_t cadenas = 0;
    int nivel = 0;
    std::vector<size_t> inicios;        // where each substream starts
    std::map<uint32_t, size_t> hojaEn;  // a sheet by the start of its substream
    HojaBiff* hoja = nullptr;
    bool conDimension = false;
    uint64_t filas = 0, columnas = 0;  // the least declared, for the cells' test

    auto celda = [&](uint32_t fila, uint32_t columna, uint16_t xf) {
        Exige(conDimension && fila < filas && columna < columnas && xf < xfs);
    };
    size_t actual = 0;  // where the record being checked starts
    try {
        for (size_t p = 0; p + 4 <= flujo.size();) {
            actual = p;
            uint16_t tipo = U16(flujo, p);
            size_t largo = U16(flujo, p + 2);
            Exige(p + 4 + largo <= flujo.size());
            std::string_view d = flujo.substr(p + 4, largo);
            size_t inicio = p;
            p += 4 + largo;
            if (inicio == 0) {
                Exige(EsBof(tipo) && largo >= 4);
                biff8 = U16(d, 0) == 0x0600;
            }
            if (EsBof(tipo)) {
                Exige(largo >= 4);
                if (nivel++ == 0) {
                    inicios.push_back(inicio);
                    auto h = hojaEn.find(static_cast<uint32_t>(inicio));
                    hoja = h == hojaEn.end() ? nullptr : &censo.hojas[h->second];
                    conDimension = false;
                }
                continue;
            }
            if (tipo == kEof) {
                if (nivel > 0) --nivel;
                continue;
            }
            switch (tipo) {
                case kFilepass: censo.cifrado = true; return censo;
                case kCodepage:
                case kDatemode: Exige(largo >= 2); break;
                case kXf:
                    Exige(largo >= (biff8 ? 20u : 16u));
                    ++xfs;
                    break;
                case kFormat:
                    if (biff8)
                        CadenaCabe(d, 4, 5, largo >= 4 ? U16(d, 2) : 0);
                    else
                        Exige(largo >= 3 && 3u + static_cast<unsigned char>(d[2]) <= largo);
                    break;
                case kBoundsheet: {
                    if (biff8)
                        CadenaCabe(d, 7, 8, largo >= 7 ? static_cast<unsigned char>(d[6]) : 0);
                    else
                        Exige(largo >= 7 && 7u + static_cast<unsigned char>(d[6]) <= largo);
                    Exige(censo.hojas.size() < 0xFFFF);
                    HojaBiff h;
                    h.inicio = U32(d, 0);
                    h.tipo = static_cast<unsigned char>(d[5]);
                    h.nombre = NombreBiff(d, biff8);
                    hojaEn.emplace(h.inicio, censo.hojas.size());
                    censo.hojas.push_back(std::move(h));
                    break;
                }
                case kSst:
                    Exige(!conSst && largo >= 8);
                    conSst = true;
                    cadenas = CursorSst(flujo, inicio).valida();
                    break;
                case kDimensions: {
                    uint64_t f = 0, c = 0;
                    if (biff8)
                        Exige(largo >= 14), f = U32(d, 4), c = U16(d, 10);
                    else
                        Exige(largo >= 10), f = U16(d, 2), c = U16(d, 6);
                    censo.celdasDeclaradas += f * c;
                    filas = conDimension ? std::min(filas, f) : f;
                    columnas = conDimension ? std::min(columnas, c) : c;
                    conDimension = true;
                    break;
                }
                case kNumber: Exige(largo >= 14), celda(U16(d, 0), U16(d, 2), U16(d, 4)); break;
                case kRk: Exige(largo >= 10), celda(U16(d, 0), U16(d, 2), U16(d, 4)); break;
                case kBlank: Exige(largo >= 6), celda(U16(d, 0), U16(d, 2), U16(d, 4)); break;
                case kLabelSst:
                    Exige(largo >= 10 && conSst && U32(d, 6) < cadenas);
                    celda(U16(d, 0), U16(d, 2), U16(d, 4));
                    break;
                case kLabel:
                case kRString:
                    if (biff8)
                        CadenaCabe(d, 8, 9, largo >= 8 ? U16(d, 6) : 0);
                    else
                        Exige(largo >= 8 && 8u + U16(d, 6) <= largo);
                    celda(U16(d, 0), U16(d, 2), U16(d, 4));
                    break;
                case kFormula:
                case kBoolErr: {
                    Exige(largo >= (tipo == kFormula ? 20u : 8u));
                    uint32_t fila = U16(d, 0);
                    uint16_t columna = U16(d, 2);
                    celda(fila, columna, U16(d, 4));
                    if (!hoja || nivel != 1) break;
                    if (tipo == kFormula)
                        hoja->especiales.push_back(
                            {fila + 1, static_cast<uint16_t>(columna + 1), CeldaEspecial::Formula, 0});
                    else
                        hoja->especiales.push_back({fila + 1, static_cast<uint16_t>(columna + 1),
                                                    d[7] ? CeldaEspecial::Error : CeldaEspecial::Logico,
                                                    static_cast<uint8_t>(d[6])});
                    break;
                }
                case kMulRk:
                case kMulBlank: {
                    size_t ancho = tipo == kMulRk ? 6 : 2;
                    Exige(largo >= 6 + ancho && (largo - 6) % ancho == 0);
                    size_t n = (largo - 6) / ancho;
                    uint16_t primera = U16(d, 2);
                    Exige(U16(d, largo - 2) == primera + n - 1);
                    for (size_t i = 0; i < n; ++i)
                        celda(U16(d, 0), primera + static_cast<uint32_t>(i), U16(d, 4 + ancho * i));
                    break;
                }
                default: break;
            }
        }
    } catch (const ErrorCenso&) {
        throw ErrorCenso{actual};
    }
    Exige(nivel == 0);
    for (const auto& h : censo.hojas) Exige(std::binary_search(inicios.begin(), inicios.end(), h.inicio));
    for (auto& h : censo.hojas) std::sort(h.especiales.begin(), h.especiales.end());
    return censo;
}

std::string LeeArchivo(const std::string& ruta) {
    std::FILE* f = std::fopen(ruta.c_str(), "rb");
    if (!f) throw ErrorLectura("No se pudo abrir el archivo " + ruta, ruta, 0);
    std::string datos;
    char bloque[1 << 16];
    size_t n;
    while ((n = std::fread(bloque, 1, sizeof bloque, f)) > 0) {
        datos.append(bloque, n);
        if (datos.size() > kMaxArchivo) {
            std::fclose(f);
            FallaLibro(ruta, "es demasiado grande para un libro .xls; guárdelo como libro .xlsx y vuelva a intentarlo");
        }
    }
    std::fclose(f);
    return datos;
}

int Segundos(std::string_view hhmmss) {
    int h = 0, m = 0, s = 0;
    if (std::sscanf(std::string(hhmmss).c_str(), "%d:%d:%d", &h, &m, &s) != 3) return 0;
    if (h < 0 || h > 23 || m < 0 || m > 59 || s < 0 || s > 59) return 0;
    return h * 3600 + m * 60 + s;
}

Celda Convierte(const FreeXL_CellValue& v) {
    switch (v.type) {
        case FREEXL_CELL_INT: return Celda::numero(std::to_string(v.value.int_value));
        case FREEXL_CELL_DOUBLE: return Celda::numero(DecimalDeDoble(v.value.double_value));
        case FREEXL_CELL_TEXT:
        case FREEXL_CELL_SST_TEXT:
            if (!v.value.text_value || !*v.value.text_value) return {};
            return Celda::texto(v.value.text_value);
        case FREEXL_CELL_DATE:
        case FREEXL_CELL_DATETIME:
        case FREEXL_CELL_TIME: {
            std::string_view t = v.value.text_value ? v.value.text_value : "";
            if (v.type == FREEXL_CELL_TIME) return Celda::fecha(Fecha(1899, 12, 30), Segundos(t));
            auto f = Fecha::desdeIso(t);
            if (!f || !f->valida()) return Celda::texto(std::string(t));
            return Celda::fecha(*f, t.size() > 11 ? Segundos(t.substr(11)) : 0);
        }
        default: return {};
    }
}

std::string TextoDeError(uint8_t codigo) {
    switch (codigo) {
        case 0x00: return "#NULL!";
        case 0x07: return "#DIV/0!";
        case 0x0F: return "#VALUE!";
        case 0x17: return "#REF!";
        case 0x1D: return "#NAME?";
        case 0x24: return "#NUM!";
        case 0x2A: return "#N/A";
        default: return "#ERROR";
    }
}

CeldaHoja CeldaDe(const CeldaEspecial& e) {
    switch (e.clase) {
        case CeldaEspecial::Formula: return {e.columna, Celda(), true};
        case CeldaEspecial::Logico: return {e.columna, Celda::logico(e.valor != 0), false};
        case CeldaEspecial::Error: break;
    }
    return {e.columna, Celda::texto(TextoDeError(e.valor)), false};
}

class LectorHojaXls : public LectorHoja {
public:
    LectorHojaXls(const void* manejador, const std::string& ruta, unsigned filas, unsigned short columnas,
                  const std::vector<CeldaEspecial>& especiales)
        : manejador_(manejador), ruta_(ruta), filas_(filas), columnas_(columnas), especiales_(especiales) {}

    bool siguiente(FilaHoja& fila) override {
        while (siguiente_ < filas_) {
            unsigned r = siguiente_++;
            fila.numero = static_cast<long>(r) + 1;
            fila.celdas.clear();
            for (unsigned short c = 0; c < columnas_; ++c) {
                FreeXL_CellValue v;
                if (freexl_get_cell_value(manejador_, r, c, &v) != FREEXL_OK)
                    FallaLibro(ruta_, std::string(kDanado) + " (celda " + NombreCelda(fila.numero, c + 1) + ")",
                               fila.numero);
                Celda celda = Convierte(v);
                if (!celda.esNula()) fila.celdas.push_back({c + 1, std::move(celda), false});
            }
            // The survey's cells take the place of what FreeXL gave for them.
            bool agregadas = false;
            while (especial_ < especiales_.size() && especiales_[especial_].fila < fila.numero) ++especial_;
            for (; especial_ < especiales_.size() && especiales_[especial_].fila == fila.numero; ++especial_) {
                CeldaHoja celda = CeldaDe(especiales_[especial_]);
                auto igual = std::find_if(fila.celdas.begin(), fila.celdas.end(),
                                          [&](const CeldaHoja& c) { return c.columna == celda.columna; });
                if (igual != fila.celdas.end()) {
                    *igual = std::move(celda);
                } else {
                    fila.celdas.push_back(std::move(celda));
                    agregadas = true;
                }
            }
            if (agregadas)
                std::stable_sort(fila.celdas.begin(), fila.celdas.end(),
                                 [](const CeldaHoja& a, const CeldaHoja& b) { return a.columna < b.columna; });
            if (!fila.celdas.empty()) return true;
        }
        return false;
    }

private:
    const void* manejador_;
    const std::string& ruta_;
    unsigned filas_;
    unsigned short columnas_;
    const std::vector<CeldaEspecial>& especiales_;
    unsigned siguiente_ = 0;
    size_t especial_ = 0;
};

/// A file in the system's temporary folder, removed with this object.
class ArchivoTemporal {
public:
    ArchivoTemporal() {
        std::random_device azar;
        ruta_ = (std::filesystem::temp_directory_path() /
                 ("velmorant-" + std::to_string(azar()) + "-" + std::to_string(azar()) + ".xls"))
                    .string();
    }
    ~ArchivoTemporal() {
        std::error_code e;
        std::filesystem::remove(ruta_, e);
    }
    ArchivoTemporal(const ArchivoTemporal&) = delete;
    ArchivoTemporal& operator=(const ArchivoTemporal&) = delete;
    const std::string& ruta() const { return ruta_; }

private:
    std::string ruta_;
};

class LibroXls : public Libro {
public:
    explicit LibroXls(const std::string& ruta) : ruta_(ruta) {
        // FreeXL reads a copy: the workbook stream, checked record by record,
        // in a container of our own writing, so that neither a damaged
        // container nor a lying record reaches it.
        Censo censo;
        {
            std::string datos = LeeArchivo(ruta);
            std::string flujo;
            const char* nombre = nullptr;
            try {
                DocumentoCompuesto doc(datos);
                if (doc.tiene("EncryptedPackage")) FallaLibro(ruta, "está protegido con contraseña");
                nombre = doc.tiene("Workbook") ? "Workbook" : doc.tiene("Book") ? "Book" : nullptr;
                if (!nombre) FallaLibro(ruta, "no es un libro de Excel (.xlsx o .xls)");
                flujo = doc.lee(nombre, datos.size());
            } catch (const ErrorDocumentoCompuesto& e) {
                FallaLibro(ruta, std::string(kDanado) + " (" + e.what() + ")");
            }
            std::string().swap(datos);  // only the stream from here on
            try {
                censo = CensaLibro(flujo);
            } catch (const ErrorCenso& e) {
                FallaLibro(ruta, std::string(kDanado) +
                                     (e.posicion == SIZE_MAX
                                          ? " (sus hojas no están completas)"
                                          : " (registro ilegible en la posición " + std::to_string(e.posicion) + ")"));
            }
            if (censo.cifrado) FallaLibro(ruta, "está protegido con contraseña");
            if (censo.celdasDeclaradas > kMaxCeldasDeclaradas)
                FallaLibro(ruta,
                           "declara más celdas de las que se pueden leer de un libro .xls; guárdelo como libro "
                           ".xlsx y vuelva a intentarlo");
            std::ofstream copia(copia_.ruta(), std::ios::binary);
            DocumentoCompuesto::EscribeConUnFlujo(copia, nombre, flujo);
            if (!copia.flush()) FallaLibro(ruta, "no se pudo escribir su copia de trabajo en " + copia_.ruta());
        }

        int r = freexl_open(copia_.ruta().c_str(), &manejador_);
        if (r != FREEXL_OK) {
            cierra();
            FallaLibro(ruta, std::string(kDanado) + " (FreeXL " + std::to_string(r) + ")");
        }
        unsigned info = 0;
        if (freexl_get_info(manejador_, FREEXL_BIFF_PASSWORD, &info) == FREEXL_OK && info == FREEXL_BIFF_OBFUSCATED) {
            cierra();
            FallaLibro(ruta, "está protegido con contraseña");
        }
        unsigned cuantas = 0;
        freexl_get_info(manejador_, FREEXL_BIFF_SHEET_COUNT, &cuantas);
        std::vector<bool> usada(censo.hojas.size());
        std::multimap<std::string, size_t> porNombre;
        for (size_t j = 0; j < censo.hojas.size(); ++j) porNombre.emplace(censo.hojas[j].nombre, j);
        for (unsigned i = 0; i < cuantas && i <= 0xFFFF; ++i) {
            const char* nombre = nullptr;
            if (freexl_get_worksheet_name(manejador_, static_cast<unsigned short>(i), &nombre) != FREEXL_OK) continue;
            std::string n = nombre ? nombre : "";
            // The sheet of the survey that is this one: by name, else by place.
            size_t k = censo.hojas.size();
            for (auto [j, fin] = porNombre.equal_range(n); j != fin && k == censo.hojas.size(); ++j)
                if (!usada[j->second]) k = j->second;
            if (k == censo.hojas.size() && i < censo.hojas.size() && !usada[i]) k = i;
            if (k < censo.hojas.size()) {
                usada[k] = true;
                if (censo.hojas[k].tipo != 0) continue;  // a chart or a module, not a worksheet
                especiales_.push_back(std::move(censo.hojas[k].especiales));
            } else {
                especiales_.emplace_back();
            }
            hojas_.push_back(n);
            indices_.push_back(static_cast<unsigned short>(i));
        }
        // FreeXL gives no sheets at all for a workbook it finds inconsistent.
        bool conHojasDeCalculo =
            std::any_of(censo.hojas.begin(), censo.hojas.end(), [](const HojaBiff& h) { return h.tipo == 0; });
        if (hojas_.empty() && conHojasDeCalculo) {
            cierra();
            FallaLibro(ruta, std::string(kDanado) + " (FreeXL no reconoce sus hojas)");
        }
    }
    ~LibroXls() override { cierra(); }  // before the copy is removed

    FormatoLibro formato() const override { return FormatoLibro::Xls; }
    const std::vector<std::string>& hojas() const override { return hojas_; }
    std::unique_ptr<LectorHoja> abreHoja(size_t indice) override {
        unsigned filas = 0;
        unsigned short columnas = 0;
        if (freexl_select_active_worksheet(manejador_, indices_.at(indice)) != FREEXL_OK ||
            freexl_worksheet_dimensions(manejador_, &filas, &columnas) != FREEXL_OK)
            FallaLibro(ruta_, std::string(kDanado) + " (hoja " + hojas_[indice] + ")");
        return std::make_unique<LectorHojaXls>(manejador_, ruta_, filas, columnas, especiales_[indice]);
    }

private:
    std::string ruta_;
    ArchivoTemporal copia_;
    const void* manejador_ = nullptr;
    std::vector<std::string> hojas_;
    std::vector<unsigned short> indices_;  // FreeXL's number of each sheet
    std::vector<std::vector<CeldaEspecial>> especiales_;

    void cierra() {
        if (manejador_) freexl_close(manejador_);
        manejador_ = nullptr;
    }
};

}  // namespace

std::unique_ptr<Libro> AbreXls(const std::string& ruta) { return std::make_unique<LibroXls>(ruta); }

}  // namespace velmorant::libro
