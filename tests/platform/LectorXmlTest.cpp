// The streaming XML reader: the events and their places, the encodings a
// declaration names, the faults of a file with their line, and that nothing
// outside the file is ever read.

#include <gtest/gtest.h>

#include <fstream>

#include "platform/ErrorLectura.h"
#include "platform/fuentes/LectorXml.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

class LectorXmlTest : public ::testing::Test {
protected:
    prueba::CarpetaTemporal dir;

    std::string archivo(const std::string& nombre, const std::string& bytes) {
        std::string ruta = dir.texto() + nombre;
        std::ofstream(ruta, std::ios::binary) << bytes;
        return ruta;
    }

    // Every event as "+name@line[depth]{a=v,...}" or "-name".
    std::vector<std::string> eventos(const std::string& ruta) {
        LectorXml lector(ruta);
        std::vector<std::string> r;
        ElementoXml e;
        while (lector.siguiente(e)) {
            if (e.evento == ElementoXml::Evento::Fin) {
                r.push_back("-" + e.nombre);
                continue;
            }
            std::string t = "+" + e.nombre + "@" + std::to_string(e.linea) + "[" + std::to_string(e.profundidad) + "]";
            std::string atributos;
            for (auto& [n, v] : e.atributos) atributos += (atributos.empty() ? "" : ",") + n + "=" + v;
            r.push_back(t + (atributos.empty() ? "" : "{" + atributos + "}"));
        }
        return r;
    }

    // The ErrorLectura of reading the whole file; a file read to its end fails the test.
    ErrorLectura falla(const std::string& ruta) {
        try {
            eventos(ruta);
        } catch (const ErrorLectura& e) {
            return e;
        }
        ADD_FAILURE() << ruta << " se leyó sin error";
        return ErrorLectura("", "", -1);
    }
};

}  // namespace

TEST_F(LectorXmlTest, EventosConAtributosNombresLocalesYLineas) {
    std::string ruta = archivo("c.xml",
                               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                               "<!-- comentario -->\n"
                               "<cc:Catalogo xmlns:cc=\"http://x/CatalogoCuentas\" xmlns:xsi=\"http://w3/xsi\"\n"
                               "    Version=\"1.3\" xsi:schemaLocation=\"a b\">\n"
                               "  <cc:Ctas NumCta=\"100\" Desc=\"Caja &amp; bancos\"/>\n"
                               "  <cc:Ctas NumCta=\"101\">texto <![CDATA[ignorado]]></cc:Ctas>\n"
                               "</cc:Catalogo>\n");
    EXPECT_EQ(eventos(ruta), (std::vector<std::string>{"+Catalogo@4[0]{Version=1.3,schemaLocation=a b}",
                                                      "+Ctas@5[1]{NumCta=100,Desc=Caja & bancos}", "-Ctas",
                                                      "+Ctas@6[1]{NumCta=101}", "-Ctas", "-Catalogo"}));
    LectorXml lector(ruta);
    ElementoXml e;
    ASSERT_TRUE(lector.siguiente(e));
    EXPECT_EQ(e.espacio, "http://x/CatalogoCuentas");
    EXPECT_EQ(e.atributo("Version"), "1.3");
    EXPECT_EQ(e.atributo("RFC"), "");
    EXPECT_FALSE(e.tieneAtributo("RFC"));
}

TEST_F(LectorXmlTest, DeclaracionesDeCodificacionSeDecodificanAUtf8) {
    // "Compañía €" in windows-1252; UTF-8 with a byte order mark.
    EXPECT_EQ(eventos(archivo("w.xml", "<?xml version=\"1.0\" encoding=\"windows-1252\"?>\n"
                                       "<r Desc=\"Compa\xF1\xED\x61 \x80\"/>")),
              (std::vector<std::string>{"+r@2[0]{Desc=Compañía €}", "-r"}));
    EXPECT_EQ(eventos(archivo("u.xml", "\xEF\xBB\xBF<r Desc=\"Peña\"/>")),
              (std::vector<std::string>{"+r@1[0]{Desc=Peña}", "-r"}));
}

TEST_F(LectorXmlTest, UnArchivoMalFormadoNombraArchivoYLinea) {
    struct Caso {
        const char* nombre;
        std::string bytes;
        long linea;
    } casos[] = {
        {"etiquetas cruzadas", "<?xml version=\"1.0\"?>\n<r>\n<a>\n<b x=\"1\">\n</a>\n</r>\n", 5},
        {"prefijo sin declarar", "<r>\n\n<p:a/>\n</r>\n", 3},
        {"vacio", "", 1},
        {"texto plano", "Cuenta|Descripcion\n100|Caja\n", 1},
        {"utf-8 invalido", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<r a=\"\xF1\"/>\n", 2},
    };
    for (auto& c : casos) {
        std::string ruta = archivo("m.xml", c.bytes);
        ErrorLectura e = falla(ruta);
        EXPECT_EQ(e.linea(), c.linea) << c.nombre;
        EXPECT_EQ(e.archivo(), ruta) << c.nombre;
        EXPECT_EQ(std::string(e.what()).rfind("Error al leer el archivo " + ruta + ", línea " + std::to_string(c.linea) +
                                                  ": el XML no está bien formado (",
                                              0),
                  0u)
            << c.nombre << ": " << e.what();
    }
    try {
        LectorXml lector(dir.texto() + "no-existe.xml");
        ADD_FAILURE() << "un archivo que no existe se abrió";
    } catch (const ErrorLectura& e) {
        EXPECT_EQ(e.linea(), 0);
        EXPECT_EQ(std::string(e.what()), "No se pudo abrir el archivo " + dir.texto() + "no-existe.xml");
    }
}

TEST_F(LectorXmlTest, NadaFueraDelArchivoSeLee) {
    archivo("secreto.txt", "SECRETO");
    archivo("defs.dtd", "<!ATTLIST Ctas Desc CDATA \"DEL DTD\">\n<!ENTITY s SYSTEM \"secreto.txt\">\n");
    // An external DTD, a parameter entity and an external entity: none is
    // loaded, so no default attribute appears and the entity stays a reference.
    const std::vector<std::string> sinDesc{"+r@3[0]", "+Ctas@3[1]", "-Ctas", "-r"};
    EXPECT_EQ(eventos(archivo("dtd.xml", "<?xml version=\"1.0\"?>\n<!DOCTYPE r SYSTEM \"defs.dtd\">\n<r><Ctas/></r>\n")),
              sinDesc);
    EXPECT_EQ(eventos(archivo("pe.xml", "<?xml version=\"1.0\"?>\n<!DOCTYPE r [<!ENTITY % p SYSTEM \"defs.dtd\"> %p;]>\n"
                                        "<r><Ctas/></r>\n")),
              sinDesc);
    EXPECT_EQ(eventos(archivo("ent.xml", "<?xml version=\"1.0\"?>\n<!DOCTYPE r [<!ENTITY s SYSTEM \"secreto.txt\">]>\n"
                                         "<r><Ctas>&s;</Ctas></r>\n")),
              sinDesc);
    // An external entity inside an attribute is a fault of the file.
    ErrorLectura e = falla(archivo("atr.xml", "<!DOCTYPE r [<!ENTITY s SYSTEM \"secreto.txt\">]>\n<r><Ctas Desc=\"&s;\"/></r>\n"));
    EXPECT_EQ(e.linea(), 2);
    EXPECT_EQ(std::string(e.what()).find("SECRETO"), std::string::npos);
}

TEST_F(LectorXmlTest, LineasMasAllaDeLasQueCabenEnElArbol) {
    std::string t = "<r>\n";
    for (int i = 0; i < 70000; ++i) t += "<a/>\n";
    t += "<b/>\n</r>\n";
    LectorXml lector(archivo("grande.xml", t));
    ElementoXml e;
    long lineaB = 0, eventos = 0;
    while (lector.siguiente(e)) {
        ++eventos;
        if (e.nombre == "b" && e.evento == ElementoXml::Evento::Inicio) lineaB = e.linea;
    }
    EXPECT_EQ(eventos, 2 * 70002);
    // Line 70002 holds <b/>; the parser's position may be a chunk ahead.
    EXPECT_GE(lineaB, 70002);
    EXPECT_LE(lineaB, 70004);
    EXPECT_EQ(lector.bytesLeidos(), lector.tamano());
}
