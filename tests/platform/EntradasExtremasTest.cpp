// Inputs at the edges of what a client's file can hold, each one a fault
// the readers once had: a value must be refused or read, never wrapped,
// and a damaged file must be named, never end the program.
#include <gtest/gtest.h>

#include <string>

#include "importers/Limpieza.h"
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

// The usual forms of a date and an amount take a short way: it must read
// every such text as the general way does, valid or not. A blank in front
// sends the same text the general way.
TEST(EntradasExtremas, LaViaCortaDeFechasEImportesLeeComoLaGeneral) {
    for (const char* fecha : {"1/1/2025", "31/12/2025", "29/2/2024", "29/2/2025", "31/4/2025", "0/1/2025",
                              "1/0/2025", "1/13/2025", "01/01/0000", "7/07/1999", "1/1/25", "1/1/20250",
                              "123/1/2025", "1//2025", "1/1/2O25", "1/1/2025/"}) {
        SCOPED_TRACE(fecha);
        auto corta = LeeFecha(fecha), general = LeeFecha(std::string(" ") + fecha);
        ASSERT_EQ(corta.has_value(), general.has_value());
        if (corta) {
            EXPECT_EQ(corta->iso(), general->iso());
        }
    }
    for (const char* importe : {"0", "0.00", "-0", "-0.00", "5.", "1234.5", "-1234.56", "0.0001", "1.23456",
                                "99999999999999.9999", "922337203685477.5807", "-99999999999999.9999", "007.50",
                                "1,234.50", "$5", "-", ".5", "1e3", "MXN-5", "5-", "", "abc", "1.2.3"}) {
        SCOPED_TRACE(importe);
        std::optional<Moneda> corta, general;
        try {
            corta = ImporteLimpio(importe, "0.00");
            general = ConvierteImporte(LimpiaImporte(importe, "0.00"));
        } catch (const FalloFila&) {
            ADD_FAILURE() << "no cabe";
            continue;
        }
        ASSERT_EQ(corta.has_value(), general.has_value());
        if (corta) {
            EXPECT_EQ(corta->diezmilesimas(), general->diezmilesimas());
        }
    }
    EXPECT_EQ(ImporteLimpio("-12.5", "0")->diezmilesimas(), -125000);
    EXPECT_EQ(ImporteLimpio("", "0")->diezmilesimas(), 0);
    EXPECT_THROW(ImporteLimpio("999999999999999.9999", "0"), FalloFila);
}
