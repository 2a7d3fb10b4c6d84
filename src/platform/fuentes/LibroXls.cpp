// The .xls reader: FreeXL reads the cells. Before it opens the file, a
// survey of our own walks the workbook stream's records, because FreeXL
// neither reports formulas (it gives their cells as empty, though the file
// stores their results), nor tells a logical value or an error from a
// number, nor bounds its memory (it allocates every sheet's whole declared
// dimension at once). The survey finds each sheet's formula, logical and
// error cells, the encryption record and the cells the sheets declare.

#include <freexl.h>

#include <algorithm>
#include <cstdio>

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

struct ErrorCenso {};

// Record types.
constexpr uint16_t kBof8 = 0x0809, kEof = 0x000A, kFilepass = 0x002F, kBoundsheet = 0x0085;
constexpr uint16_t kFormula = 0x0006, kBoolErr = 0x0205, kDimensions = 0x0200, kMulRk = 0x00BD, kMulBlank = 0x00BE;

bool EsBof(uint16_t tipo) { return tipo == kBof8 || tipo == 0x0409 || tipo == 0x0209 || tipo == 0x0009; }

bool EsCelda(uint16_t tipo) {
    switch (tipo) {
        case kFormula: case kBoolErr: case 0x00FD: case 0x0203: case 0x027E: case 0x0201: case 0x0204: case 0x00D6:
            return true;
        default: return false;
    }
}

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

// A sheet's name in its BOUNDSHEET record: BIFF8 writes UTF-16 or its low
// bytes, BIFF5 bytes of the workbook's code page.
std::string NombreBiff(std::string_view d, bool biff8) {
    if (d.size() < 7) return "";
    size_t largo = static_cast<unsigned char>(d[6]);
    if (!biff8) return DecodificaWindows1252(d.substr(7, largo));
    if (d.size() < 8) return "";
    bool ancho = d[7] & 1;
    std::string_view chars = d.substr(8);
    if (!ancho) return Latin1(chars.substr(0, largo));
    std::string r;
    for (size_t i = 0; i < largo && 2 * i + 1 < chars.size(); ++i) {
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

/// Walks the workbook stream: the globals, then each sheet's records.
Censo CensaLibro(std::string_view flujo) {
    Censo censo;
    auto registro = [&](size_t p, uint16_t& tipo, std::string_view& datos) {
        if (p + 4 > flujo.size()) throw ErrorCenso{};
        tipo = U16(flujo, p);
        size_t largo = U16(flujo, p + 2);
        if (p + 4 + largo > flujo.size()) throw ErrorCenso{};
        datos = flujo.substr(p + 4, largo);
        return p + 4 + largo;
    };
    uint16_t tipo;
    std::string_view d;
    size_t p = registro(0, tipo, d);
    if (!EsBof(tipo)) throw ErrorCenso{};
    bool biff8 = d.size() >= 2 && U16(d, 0) == 0x0600;
    while (true) {
        p = registro(p, tipo, d);
        if (tipo == kEof) break;
        if (tipo == kFilepass) {
            censo.cifrado = true;
            return censo;
        }
        if (tipo == kBoundsheet && d.size() >= 6) {
            HojaBiff h;
            h.inicio = U32(d, 0);
            h.tipo = static_cast<unsigned char>(d[5]);
            h.nombre = NombreBiff(d, biff8);
            censo.hojas.push_back(std::move(h));
        }
    }
    for (auto& h : censo.hojas) {
        if (h.inicio >= flujo.size()) continue;
        uint64_t filasDeclaradas = 0, columnasDeclaradas = 0, filas = 0, columnas = 0;
        int nivel = 0;
        size_t q = h.inicio;
        do {
            q = registro(q, tipo, d);
            if (EsBof(tipo)) {
                ++nivel;
            } else if (tipo == kEof) {
                --nivel;
            } else if (nivel == 1 && tipo == kDimensions) {
                if (d.size() >= 14) filasDeclaradas = U32(d, 4), columnasDeclaradas = U16(d, 10);
                else if (d.size() >= 8) filasDeclaradas = U16(d, 2), columnasDeclaradas = U16(d, 6);
            } else if (nivel == 1 && (EsCelda(tipo) || tipo == kMulRk || tipo == kMulBlank) && d.size() >= 4) {
                uint32_t fila = U16(d, 0);
                uint16_t columna = U16(d, 2);
                if ((tipo == kMulRk || tipo == kMulBlank) && d.size() >= 6) columna = U16(d, d.size() - 2);
                filas = std::max<uint64_t>(filas, fila + 1ull);
                columnas = std::max<uint64_t>(columnas, columna + 1ull);
                uint16_t columna1 = static_cast<uint16_t>(U16(d, 2) + 1);
                if (tipo == kFormula) h.especiales.push_back({fila + 1, columna1, CeldaEspecial::Formula, 0});
                if (tipo == kBoolErr && d.size() >= 8)
                    h.especiales.push_back({fila + 1, columna1, d[7] ? CeldaEspecial::Error : CeldaEspecial::Logico,
                                            static_cast<uint8_t>(d[6])});
            }
        } while (nivel > 0);
        std::sort(h.especiales.begin(), h.especiales.end());
        censo.celdasDeclaradas += std::max(filasDeclaradas, filas) * std::max(columnasDeclaradas, columnas);
    }
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

class LibroXls : public Libro {
public:
    explicit LibroXls(const std::string& ruta) : ruta_(ruta) {
        Censo censo;
        {
            std::string datos = LeeArchivo(ruta);
            std::string flujo;
            try {
                DocumentoCompuesto doc(datos);
                if (doc.tiene("EncryptedPackage")) FallaLibro(ruta, "está protegido con contraseña");
                const char* nombre = doc.tiene("Workbook") ? "Workbook" : doc.tiene("Book") ? "Book" : nullptr;
                if (!nombre) FallaLibro(ruta, "no es un libro de Excel (.xlsx o .xls)");
                flujo = doc.lee(nombre, datos.size());
            } catch (const ErrorDocumentoCompuesto& e) {
                FallaLibro(ruta, std::string(kDanado) + " (" + e.what() + ")");
            }
            try {
                censo = CensaLibro(flujo);
            } catch (const ErrorCenso&) {
                FallaLibro(ruta, kDanado);
            }
        }
        if (censo.cifrado) FallaLibro(ruta, "está protegido con contraseña");
        if (censo.celdasDeclaradas > kMaxCeldasDeclaradas)
            FallaLibro(ruta, "declara más celdas de las que se pueden leer de un libro .xls; guárdelo como libro "
                             ".xlsx y vuelva a intentarlo");

        int r = freexl_open(ruta.c_str(), &manejador_);
        if (r != FREEXL_OK) {
            freexl_close(manejador_);
            manejador_ = nullptr;
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
        for (unsigned i = 0; i < cuantas && i <= 0xFFFF; ++i) {
            const char* nombre = nullptr;
            if (freexl_get_worksheet_name(manejador_, static_cast<unsigned short>(i), &nombre) != FREEXL_OK) continue;
            std::string n = nombre ? nombre : "";
            // The sheet of the survey that is this one: by name, else by place.
            size_t k = censo.hojas.size();
            for (size_t j = 0; j < censo.hojas.size() && k == censo.hojas.size(); ++j)
                if (!usada[j] && censo.hojas[j].nombre == n) k = j;
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
    }
    ~LibroXls() override { cierra(); }

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
