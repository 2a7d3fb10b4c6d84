#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "platform/Moneda.h"
#include "platform/Numeros.h"

using velmorant::Moneda;
using velmorant::Redondeo;

namespace {
Moneda M(const char* t) { return Moneda::desdeTexto(t).value(); }
}  // namespace

TEST(Moneda, LeeTextoConLasReglasDelLocaleDeReferencia) {
    struct Caso {
        const char* texto;
        long long diezmilesimas;
    } casos[] = {
        {"0", 0},           {"1234.5", 12345000},   {"-1234.5", -12345000}, {" 1,234.56 ", 12345600},
        {"$1,000", 10000000}, {"-$5.25", -52500},   {"$-5.25", -52500},     {"+7", 70000},
        {"1e3", 10000000},  {"1.5E-2", 150},        {"0.00005", 0},         {"0.00015", 2},
        {"0.000151", 2},    {"0.00025", 2},         {"-0.00035", -4},       {".5", 5000},
        {"922337203685477.5807", std::numeric_limits<long long>::max()},
    };
    for (auto& c : casos) {
        auto m = Moneda::desdeTexto(c.texto);
        ASSERT_TRUE(m) << c.texto;
        EXPECT_EQ(m->diezmilesimas(), c.diezmilesimas) << c.texto;
    }
    for (const char* malo : {"", " ", "-", "5-", "1.2.3", "abc", "1,2x", ",5", "$", "1e", "922337203685477.5808",
                             "99999999999999999999"})
        EXPECT_FALSE(Moneda::desdeTexto(malo)) << malo;
}

TEST(Moneda, AritmeticaExactaYDesbordamientoDetectado) {
    Moneda suma;
    for (int i = 0; i < 10; ++i) suma += M("0.1");
    EXPECT_EQ(suma, M("1"));
    EXPECT_EQ(M("100.00") - M("99.99"), M("0.01"));
    EXPECT_EQ(-M("3.5"), M("-3.5"));
    EXPECT_EQ(M("-3.5").abs(), M("3.5"));
    EXPECT_LT(M("-0.0001"), Moneda());
    auto maximo = Moneda::desdeDiezmilesimas(std::numeric_limits<long long>::max());
    auto minimo = Moneda::desdeDiezmilesimas(std::numeric_limits<long long>::min());
    EXPECT_THROW(maximo + M("0.0001"), std::overflow_error);
    EXPECT_THROW(minimo - M("0.0001"), std::overflow_error);
    EXPECT_THROW(-minimo, std::overflow_error);
    EXPECT_THROW(Moneda::desdeEntero(std::numeric_limits<long long>::max() / 1000), std::overflow_error);
}

TEST(Moneda, MultiplicaConElRedondeoPedido) {
    EXPECT_EQ(M("10").multiplica(0.5), M("5"));
    EXPECT_EQ(M("0.0001").multiplica(0.5, Redondeo::MitadLejosDeCero), M("0.0001"));
    EXPECT_EQ(M("0.0001").multiplica(0.5, Redondeo::MitadAlPar), M("0"));
    EXPECT_EQ(M("0.0003").multiplica(0.5, Redondeo::MitadAlPar), M("0.0002"));
    EXPECT_EQ(M("-0.0001").multiplica(0.5, Redondeo::MitadLejosDeCero), M("-0.0001"));
    EXPECT_DOUBLE_EQ(M("25").proporcion(M("100")), 0.25);
    EXPECT_DOUBLE_EQ(M("25").proporcion(Moneda()), 0.0);
}

TEST(Moneda, FormatosDeMensajeYConversionSimple) {
    struct Caso {
        const char* texto;
        const char* moneda;
        const char* simple;
    } casos[] = {
        {"1234.56", "$1,234.56", "1234.56"},   {"-1234.56", "-$1,234.56", "-1234.56"},
        {"0", "$0.00", "0"},                   {"1234.5", "$1,234.50", "1234.5"},
        {"0.005", "$0.01", "0.005"},           {"-0.005", "-$0.01", "-0.005"},
        {"0.0049", "$0.00", "0.0049"},         {"-0.0049", "$0.00", "-0.0049"},
        {"999.995", "$1,000.00", "999.995"},   {"1000000", "$1,000,000.00", "1000000"},
        {"0.01", "$0.01", "0.01"},
    };
    for (auto& c : casos) {
        EXPECT_EQ(M(c.texto).formatoMoneda(), c.moneda) << c.texto;
        EXPECT_EQ(M(c.texto).texto(), c.simple) << c.texto;
    }
}

TEST(Numeros, UnMinusFinalNoEsNumerico) {
    EXPECT_TRUE(velmorant::EsNumerico(" -12.5 "));
    EXPECT_FALSE(velmorant::EsNumerico("12.5-"));
    EXPECT_FALSE(velmorant::EsNumerico("--1"));
    EXPECT_DOUBLE_EQ(*velmorant::ValorNumerico("1,234.5"), 1234.5);
    EXPECT_DOUBLE_EQ(velmorant::RedondeaAlPar(2.5, 0), 2.0);
    EXPECT_DOUBLE_EQ(velmorant::RedondeaAlPar(3.5, 0), 4.0);
    EXPECT_DOUBLE_EQ(velmorant::RedondeaAlPar(12.345, 2), 12.34);
}
