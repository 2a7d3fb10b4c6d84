// `velmorant-cli inconsistencias` run as a user would, on a company whose
// log has rows.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "store/AlmacenesTemporales.h"
#include "support/Entorno.h"
#include "support/Muerte.h"

using namespace velmorant;
namespace fs = std::filesystem;

namespace {

class InconsistenciasCli : public ::testing::Test {
protected:
    prueba::CarpetaTemporal dir;

    prueba::ResultadoProceso Corre(const std::string& argumentos) {
        return prueba::CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' '" VELMORANT_CLI "' --base '" + base() +
                          "' --empresa DEMO --ejercicio 2025 " + argumentos);
    }
    std::string base() { return dir.texto() + "base"; }
    std::string empresa() { return base() + "/2025_DEMO/"; }

    void SetUp() override {
        std::string crea = "XDG_CONFIG_HOME='" + dir.texto() + "config' '" VELMORANT_CLI "' base crear '" + base() +
                           "' >/dev/null 2>&1 && XDG_CONFIG_HOME='" + dir.texto() + "config' '" VELMORANT_CLI
                           "' --base '" + base() +
                           "' empresa crear --nombre-corto DEMO --nombre 'Demo, S.A.' --ejercicio 2025 "
                           "--formato 999-99-99 --separador - --niveles 3,2,2 >/dev/null 2>&1";
        ASSERT_EQ(std::system(crea.c_str()), 0);
        Sesion s;
        s.RutaEmpresa = empresa();
        CreaInconsisImpTmp(s);
        BaseDatos log(RutaAlmacen(s, kInconsisImpTmp));
        log.ejecuta("INSERT INTO InconsisImpTmp (Referencia, FuenteError, ClasifError, Poliza, Tipo, Fecha, Cuenta, "
                    "Cuenta_Fmtda) VALUES ('Póliza nueva.', 'Pólizas', 'A', '15', 'Diario', '2025-02-28', "
                    "'1000102', '100-01-02')");
        log.ejecuta("INSERT INTO InconsisImpTmp (Referencia, FuenteError, ClasifError, Cuenta, Cuenta_Fmtda) VALUES "
                    "('Se dió de Alta una nueva Cuenta: 1050000', 'Catálogo de Cuentas', 'A', '1050000', "
                    "'105-00-00')");
    }
};

std::string Lee(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    std::ostringstream o;
    o << f.rdbuf();
    return o.str();
}

TEST_F(InconsistenciasCli, SinSalidaMuestraElLogComoTabla) {
    auto r = Corre("inconsistencias");
    ASSERT_EQ(r.estado, 0) << r.salida;
    for (const char* esperado : {"Empresa: Demo, S.A.", "Origen", "Pólizas", "28/02/2025", "100-01-02",
                                 "Se dió de Alta una nueva Cuenta: 1050000", "2 registros"})
        EXPECT_NE(r.salida.find(esperado), std::string::npos) << esperado << "\n" << r.salida;

    auto d = Corre("inconsistencias --detalle");
    ASSERT_EQ(d.estado, 0) << d.salida;
    EXPECT_NE(d.salida.find("No hay registros de cédulas analíticas perdidos."), std::string::npos) << d.salida;
}

TEST_F(InconsistenciasCli, ConSalidaEscribePdfYCsv) {
    std::string pdf = dir.texto() + "resumen.pdf";
    auto r = Corre("inconsistencias --salida '" + pdf + "'");
    ASSERT_EQ(r.estado, 0) << r.salida;
    EXPECT_NE(r.salida.find("2 registros"), std::string::npos) << r.salida;
    ASSERT_EQ(std::system(("pdftotext '" + pdf + "' '" + pdf + ".txt'").c_str()), 0);
    std::string texto = Lee(pdf + ".txt");
    EXPECT_NE(texto.find("Demo, S.A."), std::string::npos) << texto;
    EXPECT_NE(texto.find("Póliza nueva."), std::string::npos) << texto;

    std::string csv = dir.texto() + "resumen.csv";
    ASSERT_EQ(Corre("inconsistencias --salida '" + csv + "'").estado, 0);
    std::string t = Lee(csv);
    EXPECT_EQ(t.rfind("\xEF\xBB\xBF" "Descripción,Origen,Clase,", 0), 0u) << t;
    EXPECT_NE(t.find("Catálogo de Cuentas"), std::string::npos) << t;
}

TEST_F(InconsistenciasCli, ErroresDeUsoYPlantillaAusente) {
    auto mal = Corre("inconsistencias --salida '" + dir.texto() + "r.txt'");
    EXPECT_EQ(mal.estado, 2) << mal.salida;
    EXPECT_NE(mal.salida.find(".pdf, .html o .csv"), std::string::npos) << mal.salida;

    fs::remove(base() + "/055.html");
    auto sin = Corre("inconsistencias --detalle --salida '" + dir.texto() + "d.pdf'");
    EXPECT_EQ(sin.estado, 1) << sin.salida;
    EXPECT_NE(sin.salida.find("El archivo 055.html fue removido de su ubicación original"), std::string::npos)
        << sin.salida;
    EXPECT_FALSE(fs::exists(dir.texto() + "d.pdf"));
}

TEST_F(InconsistenciasCli, TrasUnProcesoMuertoElLogSeLeeDeshechoSuUltimoCambio) {
    const std::string log = empresa() + "InconsisImpTmp.sqlite";
    // A run killed while it wrote the log: its journal stays behind.
    ASSERT_TRUE(prueba::MuereAlBorrar("-journal", [&] {
        BaseDatos db(log);
        db.ejecutaScript("BEGIN; INSERT INTO InconsisImpTmp (Referencia, ClasifError) VALUES ('a medias', 'D'); COMMIT");
    }));
    ASSERT_TRUE(fs::exists(log + "-journal"));
    auto resumen = Corre("resumen");
    EXPECT_EQ(resumen.estado, 0) << resumen.salida;
    EXPECT_NE(resumen.salida.find("A (nuevo en el origen): 2"), std::string::npos) << resumen.salida;
    EXPECT_EQ(resumen.salida.find("D ("), std::string::npos) << resumen.salida;
    auto detalle = Corre("inconsistencias");
    EXPECT_EQ(detalle.estado, 0) << detalle.salida;
    EXPECT_EQ(detalle.salida.find("a medias"), std::string::npos) << detalle.salida;
}

}  // namespace
