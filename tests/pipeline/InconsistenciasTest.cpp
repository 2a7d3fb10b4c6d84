#include <gtest/gtest.h>

#include "platform/Texto.h"
#include "accounts/CodigosCuenta.h"
#include "pipeline/Inconsistencias.h"
#include "store/AlmacenesTemporales.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

class RegistroInconsistencias : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    Sesion s;

    RegistroInconsistencias() {
        s.RutaEmpresa = carpeta.texto();
        s.DbEmpresa = std::make_unique<BaseDatos>(carpeta.ruta() / "ACME_2023.sqlite", BaseDatos::Modo::Crear);
        CreaInconsisImpTmp(s);
        EXPECT_TRUE(AbreInconsistencias(s));
    }

    Consulta filas() {
        return s.DbEmpresa->consulta(
            "SELECT Referencia, FuenteError, ClasifError, Poliza, Tipo, Fecha, Cuenta, Cuenta_Fmtda FROM InconsisImpTmp "
            "ORDER BY rowid");
    }
};

TEST_F(RegistroInconsistencias, ElCodigoDeFuenteDaSuTexto) {
    const std::vector<std::pair<int, std::string>> casos = {
        {1, "Catálogo de Cuentas"}, {2, "Saldos Iniciales"}, {3, "Pólizas"}, {0, ""}, {4, ""}, {-1, ""}};
    for (auto& [codigo, texto] : casos) RegistraInconsistencia(s, "r", codigo, "O", "", "", {}, "");
    auto c = filas();
    for (auto& [codigo, texto] : casos) {
        EXPECT_EQ(c["FuenteError"].texto(), texto) << codigo;
        c.siguiente();
    }
}

TEST_F(RegistroInconsistencias, SoloLaFormaConFechaLimpiaLaPolizaYSinFechaDejaFechaNula) {
    RegistraInconsistencia(s, "Póliza nueva.", kFuentePolizas, "A", "P'1|~", "Ingresos", Fecha(2023, 3, 31),
                           "1000102");
    RegistraInconsistencia(s, "La Cuenta 9 no existe en el catálogo.", kFuentePolizas, "O", "P'1|~", "Ingresos", {},
                           "9");
    auto c = filas();
    EXPECT_EQ(c["Poliza"].texto(), "P1");
    EXPECT_EQ(c["Fecha"].texto(), "2023-03-31");
    EXPECT_EQ(c["Tipo"].texto(), "Ingresos");
    EXPECT_EQ(c["ClasifError"].texto(), "A");
    c.siguiente();
    EXPECT_EQ(c["Poliza"].texto(), "P'1|~");
    EXPECT_TRUE(c["Fecha"].esNulo());
    EXPECT_EQ(c["Cuenta"].texto(), "9");
}

TEST_F(RegistroInconsistencias, LaCuentaFormateadaUsaElSeparadorDeLaEmpresa) {
    RegistraInconsistencia(s, "sin separador", kFuenteCatalogo, "A", "", "", {}, "1000102");
    s.SeparadorEmpresa = "-";
    s.FormatoCtaEmpresa = "999-99-99";
    s.NumeroNiveles = 3;
    s.LongitudesNivel = {3, 2, 2};
    s.CatalogoArbol = true;
    RegistraInconsistencia(s, "con separador", kFuenteCatalogo, "A", "", "", {}, "1000102");
    auto c = filas();
    EXPECT_EQ(c["Cuenta_Fmtda"].texto(), "1000102");
    c.siguiente();
    EXPECT_EQ(c["Cuenta"].texto(), "1000102");
    EXPECT_EQ(c["Cuenta_Fmtda"].texto(), "100-01-02");
}

TEST_F(RegistroInconsistencias, LosTextosLleganIntactosComoParametros) {
    std::string referencia = "La descripción de la cuenta ha cambiado: Anterior -> 'Caja'; DROP TABLE x; --";
    RegistraInconsistencia(s, referencia, kFuenteCatalogo, "C", "", "", {}, "101");
    EXPECT_EQ(filas()["Referencia"].texto(), referencia);
}

TEST_F(RegistroInconsistencias, UnTextoMasLargoQueSuCampoSeGuardaCortadoConSuMarca) {
    std::string acentos;
    for (int i = 0; i < 150; ++i) acentos += "é";  // 150 characters, 300 bytes: fits
    RegistraInconsistencia(s, acentos, kFuentePolizas, "D", std::string(20, 'P'), std::string(10, 'T'),
                           Fecha(2023, 1, 1), std::string(50, '1'));
    // One character more in each field: the row is written all the same.
    RegistraInconsistencia(s, acentos + "x", kFuentePolizas, "DD", "F-2024-000012345-ABCD", std::string(11, 'T'),
                           Fecha(2023, 1, 1), std::string(50, '1') + "2");
    RegistraInconsistencia(s, "r", kFuentePolizas, "D", std::string(21, 'P'), "", {}, "");
    auto c = filas();
    ASSERT_EQ(c.cuentaRegistros(), 3u);
    EXPECT_EQ(c["Referencia"].texto(), acentos);
    EXPECT_EQ(c["Poliza"].texto(), std::string(20, 'P'));
    c.siguiente();
    std::string cortada;
    for (int i = 0; i < 149; ++i) cortada += "é";
    EXPECT_EQ(c["Referencia"].texto(), cortada + "…");
    EXPECT_EQ(c["ClasifError"].texto(), "D");
    EXPECT_EQ(c["Poliza"].texto(), "F-2024-000012345-AB…");
    EXPECT_EQ(c["Tipo"].texto(), std::string(9, 'T') + "…");
    EXPECT_EQ(c["Cuenta"].texto(), std::string(49, '1') + "…");
    EXPECT_EQ(c["Cuenta_Fmtda"].texto(), std::string(50, '1') + "2");  // 61 characters wide
    c.siguiente();
    EXPECT_EQ(c["Poliza"].texto(), std::string(19, 'P') + "…");
    // An account too long for the field is found again as it was stored,
    // so a reader that logs an account once still logs it once.
    EXPECT_TRUE(ExisteInconsistenciaCuenta(s, std::string(50, '1') + "2"));
    // The cleaning happens before the cut: "P'" * 11 cleans to 11 characters.
    std::string conApostrofes;
    for (int i = 0; i < 11; ++i) conApostrofes += "P'";
    RegistraInconsistencia(s, "r", 3, "D", conApostrofes, "", Fecha(2023, 1, 1), "");
    EXPECT_EQ(s.DbEmpresa->escalar("SELECT Poliza FROM InconsisImpTmp ORDER BY rowid DESC LIMIT 1").texto(),
              std::string(11, 'P'));
}

TEST(ComponeReferencia, LosValoresCitadosSeRepartenElAnchoYLasPalabrasQuedan) {
    auto x = [](size_t n) { return std::string(n, 'x'); };
    auto y = [](size_t n) { return std::string(n, 'y'); };
    struct Caso {
        const char* nombre;
        std::vector<PiezaReferencia> piezas;
        size_t ancho;
        std::string esperado;
    } casos[] = {
        {"cabe", {{"A: "}, Dato("uno"), {" B: "}, Dato("dos")}, 20, "A: uno B: dos"},
        {"dos largos", {{"A: "}, Dato(x(30)), {" B: "}, Dato(y(30))}, 27, "A: " + x(9) + "… B: " + y(9) + "…"},
        {"uno corto cede su resto", {{"A: "}, Dato("ab"), {" B: "}, Dato(y(30))}, 27, "A: ab B: " + y(17) + "…"},
        {"tres valores", {Dato(x(10)), {"|"}, Dato("é"), {"|"}, Dato(y(10))}, 12, x(3) + "…|é|" + y(4) + "…"},
        {"sin lugar para los valores", {{"Palabras largas "}, Dato(x(5))}, 10, "Palabras …"},
    };
    for (auto& c : casos) {
        std::string r = ComponeReferencia(c.piezas, c.ancho);
        EXPECT_EQ(r, c.esperado) << c.nombre;
        EXPECT_LE(LongitudCaracteres(r), c.ancho) << c.nombre;
    }
}

TEST_F(RegistroInconsistencias, SinElLogAbiertoEsUnError) {
    CierraInconsistencias(s);
    EXPECT_THROW(RegistraInconsistencia(s, "r", 3, "D", "", "", {}, ""), std::logic_error);
}

TEST_F(RegistroInconsistencias, ExisteInconsistenciaCuentaConElLogAbiertoYCerrado) {
    EXPECT_FALSE(ExisteInconsistenciaCuenta(s, "101"));
    RegistraInconsistencia(s, "r", 3, "O", "", "", {}, "101");
    EXPECT_TRUE(ExisteInconsistenciaCuenta(s, "101"));
    EXPECT_FALSE(ExisteInconsistenciaCuenta(s, "10"));
    CierraInconsistencias(s);
    EXPECT_TRUE(ExisteInconsistenciaCuenta(s, "101"));
    EXPECT_FALSE(ExisteInconsistenciaCuenta(s, "102"));
}

}  // namespace
