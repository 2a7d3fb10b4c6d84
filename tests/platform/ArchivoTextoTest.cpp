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
        // Mixed evidence: the larger side wins, stray bytes read as 1252.
        {"utf8 con un byte suelto", "Cami\xC3\xB3n \xE9xito caf\xC3\xA9", CodificacionTexto::Utf8, "Camión éxito café"},
        {"1252 con una secuencia", "Cami\xF3n a\xF1o \xC3\xA9", CodificacionTexto::Windows1252, "Camión año Ã©"},
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
        {std::string(65535, 'x') + "\r\n\ny", {std::string(65535, 'x'), "", "y"}},
        {std::string(65535, 'x') + "\r\r\r", {std::string(65535, 'x'), "", ""}},
        {"a\rb\rc\r", {"a", "b", "c"}},
        {"\xEF\xBB\xBF", {}},  // the mark alone: no line, yet counted as one, as it always was
    };
    for (auto& caso : casos) {
        std::string ruta = Escribe(c, caso.bytes);
        const long esperadas = caso.bytes == "\xEF\xBB\xBF" ? 1 : static_cast<long>(caso.lineas.size());
        EXPECT_EQ(Lineas(ruta), caso.lineas) << caso.bytes.substr(0, 10);
        EXPECT_EQ(CuentaLineasTexto(ruta), esperadas) << caso.bytes.substr(0, 10);
        // The encoding's pass counts them too, so that a reader needs no third.
        EXPECT_EQ(AnalizaTexto(ruta).lineas, esperadas) << caso.bytes.substr(0, 10);
    }
    // A line cut by the end of a block keeps its accents and drops its NULs.
    std::string ruta = Escribe(c, std::string(65530, 'a') + "\xE9\xE9\xE9" + std::string(1, '\0') + "\xE9\xE9\xE9\xE9\xE9\xE9\nfin\xF1");
    EXPECT_EQ(Lineas(ruta), (std::vector<std::string>{std::string(65530, 'a') + "ééééééééé", "finñ"}));
    EXPECT_EQ(AnalizaTexto(ruta).nulos, 1);
    EXPECT_EQ(CuentaLineasTexto(c.texto() + "no-esta.txt"), 0);
    EXPECT_THROW(ArchivoTexto(c.texto() + "no-esta.txt"), ErrorLectura);
}

TEST(ArchivoTexto, LaEvidenciaSeDecideSobreTodoElArchivoYSeAvisaCuandoEsMixta) {
    CarpetaTemporal c;
    // A long UTF-8 file with one stray byte near its end: every line before
    // and after it keeps its accents.
    std::string bytes;
    for (int i = 0; i < 3000; ++i) bytes += "P\xC3\xB3liza " + std::to_string(i) + "|Dise\xC3\xB1o\n";
    bytes += "Caf\xE9 de la ma\xC3\xB1" "ana\n";
    bytes += "\xC3\x9Altima\n";
    std::string ruta = Escribe(c, bytes);
    DiagnosticoTexto d = AnalizaTexto(ruta);
    EXPECT_EQ(d.codificacion, CodificacionTexto::Utf8);
    EXPECT_EQ(d.secuenciasUtf8, 6002);
    EXPECT_EQ(d.bytesSueltos, 1);
    auto lineas = Lineas(ruta);
    ASSERT_EQ(lineas.size(), 3002u);
    EXPECT_EQ(lineas[0], "Póliza 0|Diseño");
    EXPECT_EQ(lineas[3000], "Café de la mañana");
    EXPECT_EQ(lineas[3001], "Última");
    EXPECT_EQ(AvisoLecturaTexto(ruta, d),
              "El archivo " + ruta + " mezcla codificaciones: 6002 caracteres escritos en UTF-8 y un byte que no lo "
                                     "es. Se leyó como UTF-8, y cada byte que no lo es como Windows-1252.");
    EXPECT_EQ(ArchivoTexto(ruta).aviso(), AvisoLecturaTexto(ruta, d));

    // Clean evidence says nothing.
    EXPECT_EQ(ArchivoTexto(Escribe(c, "Cami\xC3\xB3n\n")).aviso(), "");
    EXPECT_EQ(ArchivoTexto(Escribe(c, "Cami\xF3n\n")).aviso(), "");
    // A sequence cut by the end of a block is joined to the rest of it.
    d = AnalizaTexto(Escribe(c, std::string(65535, 'a') + "\xC3\xB1" + std::string(65535, 'b') + "\xE2\x82\xAC\n"));
    EXPECT_EQ(d.secuenciasUtf8, 2);
    EXPECT_EQ(d.bytesSueltos, 0);
    EXPECT_EQ(d.lineas, 1);
    // A sequence cut by the end of the file is a stray byte, not a sequence.
    d = AnalizaTexto(Escribe(c, "a\xC3\xB1o \xE2\x82"));
    EXPECT_EQ(d.secuenciasUtf8, 1);
    EXPECT_EQ(d.bytesSueltos, 2);
    EXPECT_EQ(d.codificacion, CodificacionTexto::Windows1252);
}

TEST(ArchivoTexto, UnNuloNoCortaElCampo) {
    CarpetaTemporal c;
    const char bytes[] = "a|b\r\n1|Caja\0\0 chica|9\r\n2|x\0|8";
    std::string ruta = Escribe(c, std::string(bytes, sizeof bytes - 1));
    EXPECT_EQ(Lineas(ruta), (std::vector<std::string>{"a|b", "1|Caja chica|9", "2|x|8"}));
    EXPECT_EQ(AvisoLecturaTexto(ruta, AnalizaTexto(ruta)),
              "El archivo " + ruta + " contiene 3 caracteres nulos (el primero en la línea 2): se omitieron y se "
                                     "conservó el resto de cada línea.");
}

TEST(ArchivoTexto, Utf16ConSuMarca) {
    CarpetaTemporal c;
    auto utf16 = [](const std::u16string& t, bool le) {
        std::string r = le ? "\xFF\xFE" : "\xFE\xFF";
        for (char16_t u : t) {
            char alto = static_cast<char>(u >> 8), bajo = static_cast<char>(u & 0xFF);
            r += le ? bajo : alto;
            r += le ? alto : bajo;
        }
        return r;
    };
    const std::u16string texto = u"Cuenta|Descripci\u00F3n\r\n100|Caf\u00E9 \u20AC \U0001F600\r\n\r\n200|\u00D1";
    for (bool le : {true, false}) {
        SCOPED_TRACE(le ? "little-endian" : "big-endian");
        std::string ruta = Escribe(c, utf16(texto, le));
        EXPECT_EQ(DetectaCodificacion(ruta), le ? CodificacionTexto::Utf16LE : CodificacionTexto::Utf16BE);
        EXPECT_EQ(Lineas(ruta), (std::vector<std::string>{"Cuenta|Descripción", "100|Café € 😀", "", "200|Ñ"}));
        EXPECT_EQ(CuentaLineasTexto(ruta), 4);
        EXPECT_EQ(ArchivoTexto(ruta).aviso(), "");
    }
    // Long enough to cross blocks, a surrogate pair split between two.
    std::u16string largo(32767, u'x');
    largo += u"\U0001F600\n";
    EXPECT_EQ(Lineas(Escribe(c, utf16(largo, true))), std::vector<std::string>{std::string(32767, 'x') + "😀"});
}

}  // namespace
