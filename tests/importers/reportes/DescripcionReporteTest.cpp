// Descriptions of printed reports: a malformed one is refused with its
// file and line, at load and from the command line; the folder loads the
// good ones and keeps the faults of the others.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "importers/reportes/DescripcionReporte.h"
#include "importers/reportes/ImportadorReporte.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

const char* kBuena = R"(enlace = 76
[[linea]]
clase = "encabezado"
numero = { en = 21, largo = 3 }
fecha = { en = 44, largo = 11 }
[[linea]]
clase = "partida"
cuenta = { en = 1, largo = 16 }
debe = { en = 100, largo = 14 }
haber = { en = 116, largo = 17 }
)";

// kBuena with its line `n` (from 1) replaced.
std::string Cambia(int n, const std::string& linea) {
    std::string t = kBuena, r;
    int i = 1;
    for (size_t a = 0, b; a < t.size(); a = b + 1, ++i) {
        b = t.find('\n', a);
        r += (i == n ? linea : t.substr(a, b - a)) + "\n";
    }
    return r;
}

TEST(DescripcionReporte, UnaDescripcionMalFormadaDiceArchivoYLinea) {
    EXPECT_NO_THROW(CargaDescripcionDeTexto(kBuena, "buena.toml"));
    struct Caso {
        std::string texto;
        long linea;
        std::string causa;
    } casos[] = {
        {Cambia(4, "numero = { en = 21, largo = 3"), 4, ""},  // TOML itself
        {Cambia(4, "numro = { en = 21, largo = 3 }"), 4, "la clave numro no se conoce en un encabezado"},
        {Cambia(3, "clase = \"cabeza\""), 3, "la clase cabeza no existe"},
        {Cambia(5, "fecha = { en = 0, largo = 11 }"), 5, "en debe ser un número entero de 1 en adelante"},
        {Cambia(5, "fecha = \"44\""), 5, "fecha debe ser una tabla"},
        {Cambia(5, "fecha = { en = 44, tras = \"Fecha\" }"), 5, "necesita una sola forma"},
        {Cambia(5, "tipo = { en = 19 }"), 2, "un encabezado necesita el campo fecha"},
        {Cambia(10, ""), 6, "una partida necesita los campos debe y haber"},
        {Cambia(9, "debe = { columna = \"Debe\" }"), 9, "la columna Debe no la aprende ningún título"},
        {Cambia(8, "cuando = [ { contiene = [] } ]\ncuenta = { en = 1 }"), 8, "contiene no puede ser una lista vacía"},
        {Cambia(8, "cuando = [ { texto = \"X\" } ]\ncuenta = { en = 1 }"), 8, "texto necesita en = posición"},
        {Cambia(1, "enlace = \"76\""), 1, "enlace debe ser un número entero"},
        {Cambia(1, "#"), 1, "falta enlace"},
    };
    for (auto& c : casos) {
        try {
            CargaDescripcionDeTexto(c.texto, "/r/076.toml");
            ADD_FAILURE() << "aceptada:\n" << c.texto;
        } catch (const ErrorDescripcion& e) {
            EXPECT_EQ(e.linea(), c.linea) << e.what();
            EXPECT_EQ(e.archivo(), "/r/076.toml");
            std::string m = e.what();
            EXPECT_EQ(m.rfind("La descripción de reporte /r/076.toml, línea " + std::to_string(c.linea) + ": ", 0), 0u) << m;
            EXPECT_NE(m.find(c.causa), std::string::npos) << m;
        }
    }
}

TEST(DescripcionReporte, LaCarpetaCargaLasBuenasYGuardaLasFallasDeLasDemas) {
    prueba::CarpetaTemporal dir;
    std::ofstream(dir.texto() + "076_buena.toml") << kBuena;
    std::ofstream(dir.texto() + "077_mala.toml") << Cambia(9, "debe = { en = -1 }");
    std::ofstream(dir.texto() + "078_repetida.toml") << kBuena;
    std::ofstream(dir.texto() + "leeme.txt") << "no es una descripción";
    auto r = CargaDescripciones(dir.texto());
    ASSERT_EQ(r.porEnlace.size(), 1u);
    EXPECT_EQ(r.porEnlace.at(76).ruta, dir.texto() + "076_buena.toml");
    ASSERT_EQ(r.errores.size(), 2u);
    EXPECT_NE(r.errores[0].find("077_mala.toml, línea 9: "), std::string::npos) << r.errores[0];
    EXPECT_NE(r.errores[1].find("078_repetida.toml, línea 1: el enlace 76 ya lo describe"), std::string::npos)
        << r.errores[1];
    EXPECT_TRUE(CargaDescripciones(dir.texto() + "no-existe").porEnlace.empty());
}

TEST(DescripcionReporte, ReporteProbarDesdeLaLineaDeOrdenes) {
    prueba::CarpetaTemporal dir;
    const std::string cli = std::string("XDG_CONFIG_HOME='") + dir.texto() + "config' '" + VELMORANT_CLI + "' ";
    const std::string muestras = std::string(VELMORANT_FUENTES) + "/tests/data/reportes/";
    auto bien = prueba::CorreProceso(cli + "reporte probar '" + VELMORANT_FUENTES +
                                     "/data/reportes/076_pasc.toml' '" + muestras + "076_pasc_ene.txt' --formato 999-99-99");
    EXPECT_EQ(bien.estado, 0) << bien.salida;
    EXPECT_NE(bien.salida.find("6     encabezado   |  POLIZA NUMERO   Dr001"), std::string::npos) << bien.salida;
    EXPECT_NE(bien.salida.find("(la misma que la anterior)"), std::string::npos);
    EXPECT_NE(bien.salida.find("Pólizas: 3"), std::string::npos);

    // The installed description of a link, by its number.
    auto instalada = prueba::CorreProceso("VELMORANT_REPORTES='" + std::string(VELMORANT_FUENTES) + "/data/reportes' " +
                                          cli + "reporte probar 98 '" + muestras + "098_arpon_ene.txt' --formato 999-99-99");
    EXPECT_EQ(instalada.estado, 0) << instalada.salida;
    EXPECT_NE(instalada.salida.find("Dudosa: La partida de la póliza: 00002"), std::string::npos) << instalada.salida;

    std::ofstream(dir.texto() + "mala.toml") << Cambia(5, "fecha = { en = 44, largo = -2 }");
    auto mala = prueba::CorreProceso(cli + "reporte probar '" + dir.texto() + "mala.toml' '" + muestras +
                                     "076_pasc_ene.txt' --formato 999-99-99");
    EXPECT_EQ(mala.estado, 1) << mala.salida;
    EXPECT_NE(mala.salida.find(dir.texto() + "mala.toml, línea 5: largo debe ser"), std::string::npos) << mala.salida;

    // Installed, it is refused when the program starts, and its link has no description to run.
    auto alInicio = prueba::CorreProceso("VELMORANT_REPORTES='" + dir.texto() + "' " + cli + "reporte probar 76 '" +
                                         muestras + "076_pasc_ene.txt' --formato 999-99-99");
    EXPECT_EQ(alInicio.estado, 1) << alInicio.salida;
    EXPECT_NE(alInicio.salida.find("velmorant-cli: aviso: La descripción de reporte " + dir.texto() +
                                   "mala.toml, línea 5: "),
              std::string::npos)
        << alInicio.salida;
    EXPECT_NE(alInicio.salida.find("El enlace 76 no tiene descripción de reporte"), std::string::npos);
}

}  // namespace
