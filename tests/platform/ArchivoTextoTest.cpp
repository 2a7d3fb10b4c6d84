#include <gtest/gtest.h>

#include <fstream>

#include "platform/ArchivoTexto.h"
#include "platform/ErrorLectura.h"
#include "support/Entorno.h"

using namespace velmorant;
using velmorant::prueba::CarpetaTemporal;

namespace {

std::string Escribe(const CarpetaTemporal& c, const std::string& bytes) {
    std::string ruta = c.texto() + "t.txt";
    std::ofstream(ruta, std::ios::binary) << bytes;
    return ruta;
}

std::vector<std::string> Lineas(const std::string& ruta) {
    ArchivoTexto a(ruta);
    std::vector<std::string> r;
    std::string l;
    while (a.leeLinea(l)) {
        r.push_back(l);
        EXPECT_EQ(a.numeroLinea(), static_cast<long>(r.size()));
    }
    return r;
}

TEST(ArchivoTexto, DecideLaCodificacionPorArchivo) {
    CarpetaTemporal c;
    struct Caso {
        const char* nombre;
        std::string bytes;
        CodificacionTexto codificacion;
        std::string primera;
    } casos[] = {
        {"1252", "Descripci\xF3n \x80 \x96", CodificacionTexto::Windows1252, "Descripción € –"},
        {"utf8 con marca", "\xEF\xBB\xBF" "A\xC3\xB1o", CodificacionTexto::Utf8, "Año"},
        {"utf8 sin marca", "Cami\xC3\xB3n\n", CodificacionTexto::Utf8, "Camión"},
        {"ascii", "plano", CodificacionTexto::Windows1252, "plano"},
        {"utf8 roto", "Cami\xC3\xB3n \xF3", CodificacionTexto::Windows1252, "CamiÃ³n ó"},
        {"secuencia larga", "\xC0\xAF", CodificacionTexto::Windows1252, "À¯"},
        {"sustituto", "\xED\xA0\x80", CodificacionTexto::Windows1252, "í\xC2\xA0\xE2\x82\xAC"},
    };
    for (auto& caso : casos) {
        std::string ruta = Escribe(c, caso.bytes);
        EXPECT_EQ(DetectaCodificacion(ruta), caso.codificacion) << caso.nombre;
        auto lineas = Lineas(ruta);
        ASSERT_FALSE(lineas.empty()) << caso.nombre;
        EXPECT_EQ(lineas[0], caso.primera) << caso.nombre;
    }
    EXPECT_TRUE(EsUtf8Valido("\xF0\x9F\x98\x80"));
    EXPECT_FALSE(EsUtf8Valido("\xF4\x90\x80\x80"));  // beyond U+10FFFF
    EXPECT_FALSE(EsUtf8Valido("\xE2\x82"));          // cut short
}

TEST(ArchivoTexto, FinesDeLinea) {
    CarpetaTemporal c;
    struct Caso {
        std::string bytes;
        std::vector<std::string> lineas;
    } casos[] = {
        {"a\r\nb\rc\nd", {"a", "b", "c", "d"}},
        {"a\r\n", {"a"}},
        {"\n\n", {"", ""}},
        {"\r\r\n", {"", ""}},
        {"", {}},
        {std::string(65535, 'x') + "\r\ny", {std::string(65535, 'x'), "y"}},  // CR LF across two blocks
        {std::string(65536, 'x') + "\n", {std::string(65536, 'x')}},
    };
    for (auto& caso : casos) {
        std::string ruta = Escribe(c, caso.bytes);
        EXPECT_EQ(Lineas(ruta), caso.lineas) << caso.bytes.substr(0, 10);
        EXPECT_EQ(CuentaLineasTexto(ruta), static_cast<long>(caso.lineas.size())) << caso.bytes.substr(0, 10);
    }
    EXPECT_EQ(CuentaLineasTexto(c.texto() + "no-esta.txt"), 0);
    EXPECT_THROW(ArchivoTexto(c.texto() + "no-esta.txt"), ErrorLectura);
}

}  // namespace
