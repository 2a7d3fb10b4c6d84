#include <gtest/gtest.h>

#include <functional>

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

TEST_F(RegistroInconsistencias, UnTextoMasLargoQueSuCampoEsUnErrorYNoSeEscribe) {
    std::string acentos;
    for (int i = 0; i < 150; ++i) acentos += "é";  // 150 characters, 300 bytes
    RegistraInconsistencia(s, acentos, kFuentePolizas, "D", std::string(20, 'P'), std::string(10, 'T'),
                           Fecha(2023, 1, 1), std::string(50, '1'));
    struct Caso {
        std::string campo;
        std::function<void()> registra;
    };
    std::vector<Caso> casos = {
        {"Referencia", [&] { RegistraInconsistencia(s, acentos + "x", 3, "D", "", "", {}, ""); }},
        {"ClasifError", [&] { RegistraInconsistencia(s, "r", 3, "DD", "", "", {}, ""); }},
        {"Poliza", [&] { RegistraInconsistencia(s, "r", 3, "D", std::string(21, 'P'), "", {}, ""); }},
        {"Tipo", [&] { RegistraInconsistencia(s, "r", 3, "D", "", std::string(11, 'T'), Fecha(2023, 1, 1), ""); }},
        {"Cuenta", [&] { RegistraInconsistencia(s, "r", 3, "D", "", "", {}, std::string(51, '1')); }},
    };
    for (auto& c : casos) {
        try {
            c.registra();
            ADD_FAILURE() << c.campo << " did not throw";
        } catch (const std::length_error& e) {
            EXPECT_NE(std::string(e.what()).find(c.campo), std::string::npos) << e.what();
        }
    }
    EXPECT_EQ(filas().cuentaRegistros(), 1u);
    // The cleaning happens before the check: "P'" * 11 cleans to 11 characters.
    std::string conApostrofes;
    for (int i = 0; i < 11; ++i) conApostrofes += "P'";
    EXPECT_NO_THROW(RegistraInconsistencia(s, "r", 3, "D", conApostrofes, "", Fecha(2023, 1, 1), ""));
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
