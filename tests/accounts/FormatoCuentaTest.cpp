#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"

using namespace velmorant;

namespace {

FormatoCuenta Formato(const std::string& mascara, const std::string& separador, std::vector<int> longitudes) {
    FormatoCuenta f;
    f.mascara = mascara;
    f.separador = separador;
    f.niveles = static_cast<int>(longitudes.size());
    f.longitudes = std::move(longitudes);
    f.rellenaCeros = f.catalogoArbol = true;
    return f;
}

}  // namespace

// The code functions work on the format alone: a session without a front
// end (any message would have nowhere to go) is never needed.
TEST(FormatoCuenta, ElFormatoDeLaSesionDaLosMismosCodigos) {
    Sesion s;
    s.FormatoCtaEmpresa = "999-99-99";
    s.SeparadorEmpresa = "-";
    s.NumeroNiveles = 3;
    s.LongitudesNivel = {3, 2, 2};
    s.RellenaCeros = s.CatalogoArbol = true;
    FormatoCuenta f = FormatoCuenta::De(s);
    EXPECT_EQ(f.mascara, "999-99-99");
    EXPECT_EQ(f.niveles, 3);
    for (std::string codigo : {"1-1-1", "100-01", "1000101", "10001", "A-1"}) {
        EXPECT_EQ(RellenaCuenta(f, codigo), RellenaCuenta(s, codigo)) << codigo;
        EXPECT_EQ(LimpiaCuenta(f, codigo, OrdenLimpieza::RellenoConSeparador, true),
                  LimpiaCuenta(s, codigo, OrdenLimpieza::RellenoConSeparador, true))
            << codigo;
    }
    EXPECT_EQ(RellenaCuenta(f, "1-1-1"), "0010101");
    EXPECT_EQ(FormateaCuenta(f, "1000100"), "100-01-00");
    EXPECT_EQ(FormateaCuenta(f, "10001"), FormateaCuenta(s, "10001"));
    EXPECT_EQ(NivelesDeCuenta(f, "1000100", true).niveles, 2);
    EXPECT_EQ(CuentaHastaNivel(f, "1000101", 2), "10001");
    EXPECT_EQ(QuitaSeparadores(f, "100-01-01"), "1000101");
}

TEST(FormatoCuenta, LosProblemasSeDevuelvenSinMostrarNada) {
    FormatoCuenta f = Formato("99999-99", "-", {5, 2});
    try {
        (void)NivelesDeCuenta(f, "1E99901", false);
        FAIL() << "an alphanumeric overflow must be refused";
    } catch (const CuentaAlfanumerica& e) {
        EXPECT_NE(std::string(e.what()).find("cuentas alfanuméricas"), std::string::npos);
    }
    EXPECT_THROW((void)FormateaCuenta(f, "1D999"), CuentaAlfanumerica);

    FormatoCuenta largo = Formato("999-" + std::string(320, '9'), "-", {3, 320});
    NivelesCuenta n = NivelesDeCuenta(largo, "100" + std::string(320, '9'), false);
    EXPECT_EQ(n.niveles, 1);
    EXPECT_TRUE(n.desbordamiento);

    try {
        (void)CuentaHastaNivel(Formato("999-99-99", "-", {3, 2, 2}), "1000200", 4);
        FAIL() << "a level above the format must be refused";
    } catch (const NivelFueraDeFormato& e) {
        EXPECT_EQ(std::string(e.what()),
                  "Error al leer el nivel de la Cuenta: 1000200 - Nivel: 4\r\n"
                  "El nivel sobrepasa al formato definido: 999-99-99 - Nivel: 3");
    }
}
