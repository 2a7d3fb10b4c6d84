// Inputs at the edges of what a client's file can hold, each one a fault
// the readers once had: a value must be refused or read, never wrapped,
// and a damaged file must be named, never end the program.
#include <gtest/gtest.h>

#include <string>

#include "platform/BaseDatos.h"
#include "platform/ErrorLectura.h"
#include "platform/Moneda.h"
#include "platform/fuentes/CargaTablas.h"
#include "platform/fuentes/FuenteDbf.h"
#include "platform/TablasDbfPrueba.h"
#include "session/Funciones.h"

using namespace velmorant;

// An amount whose rounding to ten-thousandths carries it one past the
// largest Currency became the most negative one.
TEST(EntradasExtremas, ImporteQueAlRedondearSaleDelRangoSeRechaza) {
    EXPECT_FALSE(Moneda::desdeTexto("922337203685477.58079"));
    EXPECT_FALSE(Moneda::desdeTexto("-922337203685477.58079"));
    EXPECT_FALSE(Moneda::desdeTexto("922337203685477.58075"));
    // The largest value, reached by rounding down or exactly, stays readable.
    auto maximo = Moneda::desdeTexto("922337203685477.58071");
    ASSERT_TRUE(maximo);
    EXPECT_EQ(maximo->texto(), "922337203685477.5807");
    EXPECT_EQ(Moneda::desdeTexto("-922337203685477.5807")->texto(), "-922337203685477.5807");
    EXPECT_EQ(Moneda::desdeTexto("0.00005")->texto(), "0");
    EXPECT_EQ(Moneda::desdeTexto("0.00015")->texto(), "0.0002");
}

// A year-first date with a month of many digits threw std::out_of_range
// out of the date reader.
TEST(EntradasExtremas, FechaConMesDeMuchasCifrasNoEsFecha) {
    EXPECT_FALSE(LeeFecha("2024-" + std::string(40, '4') + "01-15"));
    EXPECT_FALSE(LeeFecha("2024-001-15"));
    EXPECT_FALSE(LeeFecha(std::string(30, '9') + "/01/2024"));
    EXPECT_FALSE(LeeFecha("15/01/" + std::string(30, '9')));
    ASSERT_TRUE(LeeFecha("2024-1-15"));
    EXPECT_EQ(LeeFecha("2024-01-15")->iso(), "2024-01-15");
}

// Two fields of one name (or names that differ only in case) made the
// in-memory table fail with the engine's English message.
TEST(EntradasExtremas, TablaConCamposRepetidosSeNombraComoDaniada) {
    using namespace prueba;
    CarpetaTemporal carpeta;
    std::string ruta = carpeta.texto() + "CUENTAS.DBF";
    EscribeBytes(ruta, TablaDbf(0x03, 0x03, {{"CUENTA", 'C', 4}, {"cuenta", 'C', 3}}, {" 100 abc"}));
    {
        FuenteDbf fuente(ruta);  // as a record source, by position, it reads
        Fila fila;
        ASSERT_TRUE(fuente.siguiente(fila));
        EXPECT_EQ(fila.campo(2), "abc");
    }
    BaseDatos memoria;
    try {
        CargaTablaDbf(memoria, ruta, "CUENTAS");
        FAIL() << "a table with a repeated field must be refused";
    } catch (const ErrorLectura& e) {
        EXPECT_EQ(std::string(e.what()),
                  "El archivo " + ruta + " está dañado: el campo cuenta está repetido en el encabezado.");
        EXPECT_EQ(e.archivo(), ruta);
    }
}
