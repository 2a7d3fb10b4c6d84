// `velmorant-cli seleccion` run as a user would, over a company whose
// selection is written straight into its database.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>

#include "platform/BaseDatos.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

class SeleccionCli : public ::testing::Test {
protected:
    prueba::CarpetaTemporal dir;

    std::pair<int, std::string> Corre(const std::string& argumentos) {
        std::string cmd = "XDG_CONFIG_HOME='" + dir.texto() + "config' '" VELMORANT_CLI "' --base '" + dir.texto() +
                          "base' " + argumentos + " </dev/null 2>&1";
        std::string salida;
        FILE* p = popen(cmd.c_str(), "r");
        if (!p) return {-1, ""};
        std::array<char, 4096> b;
        size_t n;
        while ((n = fread(b.data(), 1, b.size(), p)) > 0) salida.append(b.data(), n);
        int st = pclose(p);
        return {WIFEXITED(st) ? WEXITSTATUS(st) : -1, salida};
    }
    void SetUp() override {
        ASSERT_EQ(Corre("base crear '" + dir.texto() + "base'").first, 0);
        auto r = Corre("empresa crear --nombre-corto DEMO --nombre Demo --ejercicio 2025 --formato 999-99-99 "
                       "--separador - --niveles 3,2,2 --cat-arbol --rellena-ceros");
        ASSERT_EQ(r.first, 0) << r.second;
    }
    BaseDatos Empresa() { return BaseDatos(dir.ruta() / "base" / "2025_DEMO" / "DEMO_2025.sqlite"); }
};

TEST_F(SeleccionCli, MuestraCadaMesConSusCriteriosYCuentas) {
    {
        BaseDatos db = Empresa();
        db.ejecuta("INSERT INTO SeleccionMaster (IdCriterio, CtaIntegracion, Descripcion, MesRevision) "
                   "VALUES (2, '110', 'el 32.61 % de $1,840.00', 9)");
        db.ejecuta("INSERT INTO SeleccionDetalle (IdCriterio, CtaIntegracion, Cuenta, Saldo, VerObs, Obs, MesRevision) "
                   "VALUES (2, '110', '1100101', ?, 1, 'Cuenta ya seleccionada por el criterio: Saldo Mayor a', 9)",
                   *Moneda::desdeTexto("1000"));
        db.ejecuta("INSERT INTO SeleccionDetalle (IdCriterio, CtaIntegracion, Cuenta, Saldo, VerObs, Obs, MesRevision) "
                   "VALUES (1, '210', '2100104', ?, 0, '', 12)",
                   *Moneda::desdeTexto("-1234.5"));
    }
    auto [estado, salida] = Corre("--empresa DEMO --ejercicio 2025 seleccion");
    ASSERT_EQ(estado, 0) << salida;
    for (auto texto : {"Mes 09", "Criterio 2   110          el 32.61 % de $1,840.00", "110-01-01", "$1,000.00",
                       "Cuenta ya seleccionada por el criterio: Saldo Mayor a", "Mes 12", "210-01-04", "-$1,234.50"})
        EXPECT_NE(salida.find(texto), std::string::npos) << texto << "\n" << salida;

    auto [estado9, solo9] = Corre("--empresa DEMO --ejercicio 2025 seleccion --mes 9");
    ASSERT_EQ(estado9, 0) << solo9;
    EXPECT_EQ(solo9.find("Mes 12"), std::string::npos) << solo9;

    auto [estado3, vacio] = Corre("--empresa DEMO --ejercicio 2025 seleccion --mes 3");
    EXPECT_EQ(estado3, 0);
    EXPECT_NE(vacio.find("(ninguna cuenta seleccionada)"), std::string::npos) << vacio;

    EXPECT_EQ(Corre("--empresa DEMO --ejercicio 2025 seleccion --mes 14").first, 2);
}

}  // namespace
