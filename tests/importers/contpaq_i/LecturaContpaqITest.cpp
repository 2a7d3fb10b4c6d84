// The pieces of a ContPAQ i line that a whole run does not reach one by
// one: where a movement's amount field is and where its amount ends, and
// columns counted as characters in a line with accented letters.

#include <gtest/gtest.h>

#include "importers/Limpieza.h"
#include "importers/contpaq_i/ArchivosContpaqI.h"
#include "importers/contpaq_i/DisenosContpaqI.h"
#include "importers/contpaq_i/LectorContpaqI.h"

using namespace velmorant;
using namespace velmorant::contpaqi;
using velmorant::prueba::En;

TEST(LecturaContpaqI, ElImporteDeUnMovimiento) {
    struct Caso {
        std::string campo;  // from column 56
        std::string esperado;  // "D 12.5", or "" for no line
    };
    const Caso casos[] = {
        {"0 300.00          concepto", "D 300"},
        {"1 1,234.50", "H 1234.5"},
        // Without seven blanks in a row the amount is cut two places after its point.
        {"0 10.257 X", "D 10.25"},
        // Ended by a blank, it is rounded to cents, halves to the even cent.
        {"0 10.255        X", "D 10.26"},
        {"0 10.245        X", "D 10.24"},
        {"2 7", "H 7"},
        {"0", ""},
        {"", ""},
    };
    for (const auto& c : casos) {
        auto r = LeeImporteMovimiento(En({{1, "M1"}, {3, "1000101"}, {56, c.campo}}));
        EXPECT_EQ(r ? r->TipoMov + " " + r->Importe.texto() : "", c.esperado) << c.campo;
    }
    EXPECT_THROW(LeeImporteMovimiento(En({{1, "M1"}, {56, "0 abc"}})), FalloFila);
}

TEST(LecturaContpaqI, UnaLineaConTabuladorSeLeePorSusMarcas) {
    // The tab moves every column: the field starts at the kind marker.
    auto r = LeeImporteMovimiento("M1 1000101\tF-1  1 250.00       X");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->TipoMov + " " + r->Importe.texto(), "H 250");
    r = LeeImporteMovimiento("M1 1000101\tF-1  0 99.90");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->TipoMov + " " + r->Importe.texto(), "D 99.9");
    EXPECT_FALSE(LeeImporteMovimiento("M1 1000101\tF-1 sin marca"));
}

TEST(LecturaContpaqI, LasColumnasCuentanCaracteres) {
    const std::string linea = En({{1, "C"}, {4, "1000101"}, {35, "Compañía"}}) + "  x";
    EXPECT_EQ(Campo(DisenoCuenta(), linea, "nombre"), "Compañía  x");
    EXPECT_EQ(Columnas("añob", 2, 3), "ño");
    EXPECT_EQ(Columnas("ab", 3, 0), "");
    EXPECT_EQ(Marca("M"), "M ");
}
