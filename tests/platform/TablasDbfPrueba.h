#pragma once
// Test support for dBase and FoxPro tables: fixtures written by Debian's
// python3-dbf (run with /usr/bin/python3, where Debian's modules are), and
// a byte writer for what that module does not write (dBase IV memo blocks,
// Visual FoxPro null bits numbered as the format numbers them, damaged
// files).

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/Entorno.h"

namespace velmorant::prueba {

/// Runs `guion` with the python3-dbf module imported as `dbf` (and
/// `datetime`, `decimal`) in folder `carpeta`. False, with the output as a
/// test failure, when it does not succeed.
inline bool EscribeConPython(const CarpetaTemporal& carpeta, const std::string& guion) {
    std::string ruta = carpeta.texto() + "escribe.py";
    std::ofstream(ruta) << "import dbf, datetime, decimal\nfrom decimal import Decimal\n" << guion;
    auto r = CorreProceso("cd '" + carpeta.texto() + "' && /usr/bin/python3 escribe.py");
    if (r.estado != 0) ADD_FAILURE() << "python3-dbf: " << r.salida;
    return r.estado == 0;
}

/// Writes a new file (removing any old one first: rewriting a file in place
/// makes ext4 flush it to disk on close, which a loop of cases feels).
inline void EscribeBytes(const std::string& ruta, const std::string& bytes) {
    std::filesystem::remove(ruta);
    std::ofstream(ruta, std::ios::binary) << bytes;
}

inline std::string LeeBytes(const std::string& ruta) {
    std::ifstream f(ruta, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), {});
}

inline std::string Le16(std::uint32_t v) { return {static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF)}; }
inline std::string Le32(std::uint32_t v) { return Le16(v & 0xFFFF) + Le16(v >> 16); }
inline std::string Le64(std::int64_t v) {
    auto u = static_cast<std::uint64_t>(v);
    return Le32(static_cast<std::uint32_t>(u)) + Le32(static_cast<std::uint32_t>(u >> 32));
}
inline std::string Be32(std::uint32_t v) {
    return {static_cast<char>(v >> 24), static_cast<char>((v >> 16) & 0xFF), static_cast<char>((v >> 8) & 0xFF),
            static_cast<char>(v & 0xFF)};
}

struct CampoPrueba {
    std::string nombre;
    char tipo;
    int largo;
    int decimales = 0;
    unsigned char banderas = 0;  // Visual FoxPro: 0x01 system, 0x02 may be null, 0x04 binary
};

/// The bytes of a table: its header (version byte, code-page mark, fields;
/// Visual FoxPro versions get their 263-byte back link) and the records,
/// each given whole, deletion flag first.
inline std::string TablaDbf(unsigned char version, unsigned char marca, const std::vector<CampoPrueba>& campos,
                            const std::vector<std::string>& registros) {
    bool vfp = version >= 0x30 && version <= 0x32;
    int largoRegistro = 1;
    for (const auto& c : campos) largoRegistro += c.largo;
    int largoEncabezado = 32 + 32 * static_cast<int>(campos.size()) + 1 + (vfp ? 263 : 0);
    std::string h(32, '\0');
    h[0] = static_cast<char>(version);
    h[1] = 124, h[2] = 3, h[3] = 15;
    h.replace(4, 4, Le32(static_cast<std::uint32_t>(registros.size())));
    h.replace(8, 2, Le16(static_cast<std::uint32_t>(largoEncabezado)));
    h.replace(10, 2, Le16(static_cast<std::uint32_t>(largoRegistro)));
    h[29] = static_cast<char>(marca);
    int desplazamiento = 1;
    for (const auto& c : campos) {
        std::string d(32, '\0');
        d.replace(0, c.nombre.size(), c.nombre);
        d[11] = c.tipo;
        d.replace(12, 4, Le32(static_cast<std::uint32_t>(desplazamiento)));
        d[16] = static_cast<char>(c.largo & 0xFF);
        d[17] = static_cast<char>(c.decimales);
        d[18] = static_cast<char>(c.banderas);
        h += d;
        desplazamiento += c.largo;
    }
    h += '\x0D';
    if (vfp) h += std::string(263, '\0');
    for (const auto& r : registros) {
        EXPECT_EQ(static_cast<int>(r.size()), largoRegistro) << "registro de prueba mal medido";
        h += r;
    }
    return h + '\x1A';
}

/// `texto` padded with blanks (or cut) to `largo` bytes.
inline std::string Ancho(const std::string& texto, size_t largo, bool derecha = false) {
    if (texto.size() >= largo) return texto.substr(0, largo);
    std::string relleno(largo - texto.size(), ' ');
    return derecha ? relleno + texto : texto + relleno;
}

}  // namespace velmorant::prueba
