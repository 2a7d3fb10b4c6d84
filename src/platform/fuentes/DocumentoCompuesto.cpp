#include "platform/fuentes/DocumentoCompuesto.h"

#include <algorithm>
#include <cstring>
#include <ostream>

namespace velmorant {

namespace {

constexpr unsigned char kFirma[8] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr uint32_t kFinCadena = 0xFFFFFFFE;
constexpr uint32_t kLibre = 0xFFFFFFFF;
constexpr size_t kCabecera = 512;

uint16_t U16(std::string_view d, size_t p) {
    return static_cast<uint16_t>(static_cast<unsigned char>(d[p]) | static_cast<unsigned char>(d[p + 1]) << 8);
}

uint32_t U32(std::string_view d, size_t p) {
    return static_cast<uint32_t>(U16(d, p)) | static_cast<uint32_t>(U16(d, p + 2)) << 16;
}

[[noreturn]] void Falla(const std::string& porque) { throw ErrorDocumentoCompuesto(porque); }

bool MismoNombre(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

}  // namespace

bool DocumentoCompuesto::EsDocumentoCompuesto(std::string_view inicio) {
    return inicio.size() >= 8 && std::memcmp(inicio.data(), kFirma, 8) == 0;
}

std::string_view DocumentoCompuesto::sector(uint32_t n) const {
    if (n >= sectores_) Falla("sector fuera del archivo");
    // The header fills sector -1, whatever the sector size.
    return datos_.substr((static_cast<size_t>(n) + 1) * tamSector_, tamSector_);
}

// The first `limite` sectors of a chain (fewer if it ends before), each
// checked against the table; a chain that loops is refused.
std::vector<uint32_t> DocumentoCompuesto::cadena(uint32_t inicio, const std::vector<uint32_t>& tabla,
                                                 uint64_t limite) const {
    std::vector<uint32_t> r;
    std::vector<bool> visto(tabla.size());
    uint32_t n = inicio;
    while (n != kFinCadena && r.size() < limite) {
        if (n >= tabla.size()) Falla("cadena de sectores rota");
        if (visto[n]) Falla("cadena de sectores circular");
        visto[n] = true;
        r.push_back(n);
        n = tabla[n];
    }
    return r;
}

std::string DocumentoCompuesto::leeCadena(uint32_t inicio, uint64_t tamanio) const {
    uint64_t necesarios = (tamanio + tamSector_ - 1) / tamSector_;
    std::vector<uint32_t> sectores = cadena(inicio, fat_, necesarios == 0 ? 1 : necesarios);
    if (sectores.size() < necesarios) Falla("flujo más corto que su tamaño");
    std::string r;
    r.reserve(static_cast<size_t>(tamanio));
    for (uint32_t s : sectores) {
        std::string_view v = sector(s);
        size_t falta = static_cast<size_t>(tamanio - r.size());
        r.append(v.substr(0, falta < v.size() ? falta : v.size()));
        if (r.size() == tamanio) break;
    }
    return r;
}

DocumentoCompuesto::DocumentoCompuesto(std::string_view datos) : datos_(datos) {
    if (datos.size() < kCabecera || !EsDocumentoCompuesto(datos)) Falla("no es un documento compuesto");
    if (U16(datos, 0x1C) != 0xFFFE) Falla("orden de bytes desconocido");
    uint16_t desplazamiento = U16(datos, 0x1E);
    if (desplazamiento != 9 && desplazamiento != 12) Falla("tamaño de sector no válido");
    if (U16(datos, 0x20) != 6) Falla("tamaño de sector menor no válido");
    tamSector_ = 1u << desplazamiento;
    if (datos.size() < tamSector_) Falla("archivo incompleto");
    sectores_ = static_cast<uint32_t>((datos.size() - tamSector_) / tamSector_);
    corteMini_ = U32(datos, 0x38);
    const uint32_t porSector = tamSector_ / 4;

    // The sectors of the allocation table: 109 in the header, the rest in
    // a chain of their own.
    uint32_t sectoresFat = U32(datos, 0x2C);
    if (sectoresFat > sectores_ / porSector + 1) Falla("tabla de asignación mayor que el archivo");
    std::vector<uint32_t> listaFat;
    for (uint32_t i = 0; i < 109 && listaFat.size() < sectoresFat; ++i) listaFat.push_back(U32(datos, 0x4C + 4 * i));
    uint32_t dif = U32(datos, 0x44);
    for (uint32_t vueltas = 0; listaFat.size() < sectoresFat && dif != kFinCadena && dif != kLibre; ++vueltas) {
        if (vueltas > sectores_) Falla("cadena de sectores circular");
        std::string_view s = sector(dif);
        for (uint32_t i = 0; i + 1 < porSector && listaFat.size() < sectoresFat; ++i) listaFat.push_back(U32(s, 4 * i));
        dif = U32(s, tamSector_ - 4);
    }
    if (listaFat.size() < sectoresFat) Falla("tabla de asignación incompleta");
    fat_.reserve(static_cast<size_t>(sectoresFat) * porSector);
    for (uint32_t f : listaFat) {
        std::string_view s = sector(f);
        for (uint32_t i = 0; i < porSector; ++i) fat_.push_back(U32(s, 4 * i));
    }

    // The directory: 128-byte entries in a chain of sectors.
    for (uint32_t s : cadena(U32(datos, 0x30), fat_, sectores_)) {
        std::string_view v = sector(s);
        for (size_t p = 0; p + 128 <= v.size(); p += 128) {
            Entrada e;
            e.tipo = static_cast<unsigned char>(v[p + 0x42]);
            size_t largo = U16(v, p + 0x40);
            if (largo > 64) largo = 64;
            for (size_t i = 0; i + 1 < largo; i += 2) {
                uint16_t c = U16(v, p + i);
                if (c == 0) break;
                e.nombre += c < 0x80 ? static_cast<char>(c) : '?';
            }
            e.inicio = U32(v, p + 0x74);
            e.tamanio = U32(v, p + 0x78);
            if (tamSector_ == 4096) e.tamanio |= static_cast<uint64_t>(U32(v, p + 0x7C)) << 32;
            entradas_.push_back(std::move(e));
        }
    }
    if (entradas_.empty() || entradas_[0].tipo != 5) Falla("sin directorio raíz");

    // The small streams live in sectors of 64 bytes inside the root's own
    // stream, with a table of their own.
    uint32_t inicioMiniFat = U32(datos, 0x3C);
    if (inicioMiniFat != kFinCadena && inicioMiniFat != kLibre) {
        for (uint32_t s : cadena(inicioMiniFat, fat_, sectores_)) {
            std::string_view v = sector(s);
            for (uint32_t i = 0; i < porSector; ++i) miniFat_.push_back(U32(v, 4 * i));
        }
    }
    const Entrada& raiz = entradas_[0];
    if (raiz.tamanio > 0 && raiz.inicio != kFinCadena) {
        if (raiz.tamanio > datos.size()) Falla("flujo mayor que el archivo");
        miniFlujo_ = leeCadena(raiz.inicio, raiz.tamanio);
    }
}

const DocumentoCompuesto::Entrada* DocumentoCompuesto::busca(std::string_view nombre) const {
    for (const auto& e : entradas_)
        if (e.tipo == 2 && MismoNombre(e.nombre, nombre)) return &e;
    return nullptr;
}

bool DocumentoCompuesto::tiene(std::string_view nombre) const { return busca(nombre) != nullptr; }

std::string DocumentoCompuesto::lee(std::string_view nombre, size_t limite) const {
    const Entrada* e = busca(nombre);
    if (!e) Falla("falta el flujo " + std::string(nombre));
    if (e->tamanio > limite) Falla("flujo demasiado grande");
    if (e->tamanio > datos_.size()) Falla("flujo mayor que el archivo");
    if (e->tamanio >= corteMini_) return leeCadena(e->inicio, e->tamanio);

    const uint64_t necesarios = (e->tamanio + 63) / 64;
    std::vector<uint32_t> minis = cadena(e->inicio, miniFat_, necesarios == 0 ? 1 : necesarios);
    if (minis.size() < necesarios) Falla("flujo más corto que su tamaño");
    std::string r;
    for (uint32_t m : minis) {
        size_t p = static_cast<size_t>(m) * 64;
        if (p + 64 > miniFlujo_.size()) Falla("sector menor fuera de su flujo");
        size_t falta = static_cast<size_t>(e->tamanio - r.size());
        r.append(miniFlujo_, p, falta < 64 ? falta : 64);
        if (r.size() == e->tamanio) break;
    }
    return r;
}

void DocumentoCompuesto::EscribeConUnFlujo(std::ostream& salida, std::string_view nombre, std::string_view flujo) {
    constexpr uint32_t kSector = 512, kPorSector = kSector / 4, kFat = 0xFFFFFFFD, kDifat = 0xFFFFFFFC;
    const size_t largo = std::max<size_t>(flujo.size(), 4096);
    const uint32_t deFlujo = static_cast<uint32_t>((largo + kSector - 1) / kSector);
    // Tables, their extension beyond the header's 109 and the directory
    // come first; their count depends on the total, so settle it.
    uint32_t fat = 1, difat = 0;
    for (;;) {
        uint32_t total = fat + difat + 1 + deFlujo;
        uint32_t f = (total + kPorSector - 1) / kPorSector;
        uint32_t x = f > 109 ? (f - 109 + kPorSector - 2) / (kPorSector - 1) : 0;
        if (f == fat && x == difat) break;
        fat = f, difat = x;
    }
    const uint32_t directorio = fat + difat, primeroFlujo = directorio + 1;

    // The header and the sectors before the stream; the stream follows.
    std::string d(static_cast<size_t>(primeroFlujo + 1) * kSector, '\0');
    auto u16 = [&](size_t p, uint16_t v) {
        d[p] = static_cast<char>(v & 0xFF);
        d[p + 1] = static_cast<char>(v >> 8);
    };
    auto u32 = [&](size_t p, uint32_t v) {
        u16(p, static_cast<uint16_t>(v & 0xFFFF));
        u16(p + 2, static_cast<uint16_t>(v >> 16));
    };
    auto en = [&](uint32_t sector) { return static_cast<size_t>(sector + 1) * kSector; };

    std::memcpy(d.data(), kFirma, 8);
    u16(0x18, 0x3E), u16(0x1A, 3), u16(0x1C, 0xFFFE), u16(0x1E, 9), u16(0x20, 6);
    u32(0x2C, fat), u32(0x30, directorio), u32(0x38, 4096), u32(0x3C, kFinCadena), u32(0x40, 0);
    u32(0x44, difat ? fat : kFinCadena), u32(0x48, difat);
    for (uint32_t i = 0; i < 109; ++i) u32(0x4C + 4 * i, i < fat ? i : kLibre);
    for (uint32_t k = 0; k < difat; ++k) {  // the table sectors beyond 109, 127 to a sector and a link
        size_t p = en(fat + k);
        for (uint32_t i = 0; i < kPorSector - 1; ++i) {
            uint32_t n = 109 + k * (kPorSector - 1) + i;
            u32(p + 4 * i, n < fat ? n : kLibre);
        }
        u32(p + kSector - 4, k + 1 < difat ? fat + k + 1 : kFinCadena);
    }
    auto entrada = [&](uint32_t sector, uint32_t valor) {
        u32(en(sector / kPorSector) + 4 * (sector % kPorSector), valor);
    };
    for (uint32_t i = 0; i < fat * kPorSector; ++i) entrada(i, kLibre);
    for (uint32_t i = 0; i < fat; ++i) entrada(i, kFat);
    for (uint32_t i = 0; i < difat; ++i) entrada(fat + i, kDifat);
    entrada(directorio, kFinCadena);
    for (uint32_t i = 0; i < deFlujo; ++i)
        entrada(primeroFlujo + i, i + 1 < deFlujo ? primeroFlujo + i + 1 : kFinCadena);

    auto nombra = [&](size_t p, std::string_view n, int tipo, uint32_t inicio, uint32_t tamanio, uint32_t hijo) {
        for (size_t i = 0; i < n.size() && i < 31; ++i) u16(p + 2 * i, static_cast<unsigned char>(n[i]));
        u16(p + 0x40, static_cast<uint16_t>(2 * (std::min<size_t>(n.size(), 31) + 1)));
        d[p + 0x42] = static_cast<char>(tipo);
        d[p + 0x43] = 1;  // black
        u32(p + 0x44, kLibre), u32(p + 0x48, kLibre), u32(p + 0x4C, hijo);
        u32(p + 0x74, inicio), u32(p + 0x78, tamanio);
    };
    size_t dir = en(directorio);
    nombra(dir, "Root Entry", 5, kFinCadena, 0, 1);
    nombra(dir + 128, nombre, 2, primeroFlujo, static_cast<uint32_t>(largo), kLibre);
    for (size_t p = dir + 256; p < dir + kSector; p += 128)
        u32(p + 0x44, kLibre), u32(p + 0x48, kLibre), u32(p + 0x4C, kLibre);
    salida.write(d.data(), static_cast<std::streamsize>(d.size()));
    salida.write(flujo.data(), static_cast<std::streamsize>(flujo.size()));
    std::string relleno(static_cast<size_t>(deFlujo) * kSector - flujo.size(), '\0');
    salida.write(relleno.data(), static_cast<std::streamsize>(relleno.size()));
}

}  // namespace velmorant
