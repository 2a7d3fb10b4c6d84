#include "session/Despacho.h"

#include <gtest/gtest.h>

#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

namespace velmorant {
namespace {

class DespachoTest : public ::testing::Test {
protected:
    void SetUp() override {
        s.VersionPrograma = "1.0.0";
        s.interaccion = &guion;
        s.DbEmpresas = std::make_unique<BaseDatos>();
        CreaEsquemaEmpresas(*s.DbEmpresas);
        s.DbEmpresa = std::make_unique<BaseDatos>();
        CreaEsquemaEmpresa(*s.DbEmpresa);
        s.IdEmpresaActual = 7;
    }
    void EmpresaConEnlace(int idSistema) {
        s.DbEmpresas->ejecuta("INSERT INTO Empresas (IdEmpresa, NombCorto, Ejercicio, IdSistema) VALUES (7, 'ACME', 2023, ?)",
                              idSistema);
    }
    Sesion s;
    prueba::InteraccionGuionada guion;
};

TEST_F(DespachoTest, HayCatalogoSoloConCuentas) {
    EXPECT_FALSE(HayCatalogo(s));
    s.DbEmpresa->ejecuta("INSERT INTO Cuentas (Cuenta) VALUES ('1101')");
    EXPECT_TRUE(HayCatalogo(s));
}

TEST_F(DespachoTest, EnlaceAnteriorPorIdSistema) {
    EXPECT_EQ(EnlaceAnterior(s), "");  // no row for the company
    for (auto [id, esperado] : {std::pair{36, "Anterior"}, {95, "Mejorado"}, {82, ""}, {0, ""}}) {
        s.DbEmpresas->ejecuta("DELETE FROM Empresas");
        EmpresaConEnlace(id);
        EXPECT_EQ(EnlaceAnterior(s), esperado) << id;
    }
}

// The two ContPAQ i links exclude each other; every other change of link
// is allowed.
TEST_F(DespachoTest, LosEnlacesContPaqISeExcluyen) {
    struct Caso {
        int empresa, elegido;
        bool acepta;
        const char* otro;
    };
    const Caso casos[] = {
        {36, 36, true, ""},          {36, 95, false, "Anterior"}, {95, 95, true, ""},
        {95, 36, false, "Mejorado"}, {82, 36, true, ""},          {0, 95, true, ""},
        {36, 82, true, ""},          {95, 25, true, ""},
    };
    for (const auto& c : casos) {
        s.DbEmpresas->ejecuta("DELETE FROM Empresas");
        EmpresaConEnlace(c.empresa);
        guion.mensajes.clear();
        EXPECT_EQ(AceptaEnlace(s, c.elegido), c.acepta) << c.empresa << " -> " << c.elegido;
        EXPECT_EQ(s.IdSistemaElegido, c.elegido);
        if (c.acepta) {
            EXPECT_TRUE(guion.mensajes.empty());
            continue;
        }
        ASSERT_EQ(guion.mensajes.size(), 1u);
        EXPECT_EQ(guion.mensajes[0].tipo, TipoMensaje::Informacion);
        EXPECT_EQ(guion.mensajes[0].titulo, "VELMORANT Ver. 1.0.0");
        EXPECT_EQ(guion.mensajes[0].texto,
                  std::string("Esta empresa ya cuenta con una importación Previa utilizando el enlace de CONPAQ i - ") +
                      c.otro +
                      ".\r\nPara no perder la integridad de su información (Trabajo de Revisión), deberá utlizar el "
                      "mismo enlace.");
    }
}

}  // namespace
}  // namespace velmorant
