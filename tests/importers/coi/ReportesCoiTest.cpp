// The COI 5 and COI 6 reports (links 2 and 100) from the command line, with
// the descriptions shipped beside the program: page breaks that carry a
// voucher on ("CONTINUA EN EL FOLIO" and the head again), headings spelt
// "Número", "N?mero" and "Nzmero" at moving positions, totals and rules. The
// company must end with the same vouchers as link 82 reading a clean
// delimited file of the same client; and the chart and balance files of
// these links must hold the delimiter on every line.

#include <gtest/gtest.h>

#include <fstream>

#include "importers/reportes/DescripcionReporte.h"
#include "platform/BaseDatos.h"
#include "support/AlmacenesLectura.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

std::vector<std::string> PolizasDeLaEmpresa(const std::string& ruta) {
    BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
    return prueba::FilasComoTexto(
        db, "SELECT p.Poliza, p.Tipo, p.Fecha, p.Concepto, p.Cuadrada, p.Poliza_Mes13, d.Partida, d.Cuenta, d.TipoMov, "
        "d.Importe, d.Referencia FROM Polizas p JOIN Polizas_Detalle d ON d.IdPoliza = p.IdPoliza "
        "ORDER BY p.IdPoliza, d.Partida");
}

class ReportesCoi : public ::testing::Test {
protected:
    prueba::CarpetaTemporal dir;
    const std::string base = dir.texto() + "base";
    const std::string muestras = std::string(VELMORANT_FUENTES) + "/tests/data/reportes/";

    prueba::ResultadoProceso cli(const std::string& argumentos) {
        return prueba::CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' VELMORANT_DATOS='" + dir.texto() +
                                    "datos' '" + VELMORANT_CLI + "' " + argumentos);
    }
    void SetUp() override {
        ASSERT_EQ(cli("base crear '" + base + "'").estado, 0);
        for (std::string empresa : {"TEXTO", "COI"}) {
            auto r = cli("--base '" + base + "' empresa crear --nombre-corto " + empresa + " --nombre " + empresa +
                         " --ejercicio 2024 --formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol "
                         "--rellena-ceros");
            ASSERT_EQ(r.estado, 0) << r.salida;
        }
        auto layout = cli("--base '" + base + "' --empresa TEXTO --ejercicio 2024 configuracion crear MUESTRA "
                          "--enlace 82 PIniCuenta=1 PIniDescripcion=2 PIniNaturaleza=3 PIniNivel=4 PIniSdoIni=5 "
                          "PIniCtaSdoAnt=1 PIniNumPol=1 PIniCtaPol=2 PIniDia=3 PIniTipo=4 PIniConcept=5 PIniRef=6 "
                          "PIniCargo=7 PIniAbono=8");
        ASSERT_EQ(layout.estado, 0) << layout.salida;
    }
    std::string comunes(const std::string& catalogo) {
        return " --separador '|' --configuracion MUESTRA --catalogo '" + catalogo + "'";
    }
    prueba::ResultadoProceso importa(const std::string& empresa, int enlace, const std::string& argumentos) {
        return cli("--base '" + base + "' --empresa " + empresa + " --ejercicio 2024 importar --enlace " +
                   std::to_string(enlace) + argumentos);
    }
};

TEST_F(ReportesCoi, LosReportesDejanLasMismasPolizasQueElTextoDelimitado) {
    for (auto [enlace, muestra] : {std::pair{2, "002_coi50_ene"}, std::pair{100, "100_coi60_ene"}}) {
        SCOPED_TRACE(muestra);
        auto texto = importa("TEXTO", 82, comunes(muestras + "catalogo.txt") + " --mes 01='" + muestras + muestra +
                                              ".polizas.txt' --continuar");
        ASSERT_EQ(texto.estado, 0) << texto.salida;
        auto reporte = importa("COI", enlace, comunes(muestras + "catalogo.txt") + " --mes 01='" + muestras + muestra +
                                                  ".txt' --continuar --reporte '" + dir.texto() + "inc.csv'");
        ASSERT_EQ(reporte.estado, 0) << reporte.salida;

        auto esperadas = PolizasDeLaEmpresa(base + "/2024_TEXTO/TEXTO_2024.sqlite");
        EXPECT_EQ(esperadas.size(), 13u);
        EXPECT_EQ(PolizasDeLaEmpresa(base + "/2024_COI/COI_2024.sqlite"), esperadas);
        std::ifstream csv(dir.texto() + "inc.csv");
        std::string inconsistencias((std::istreambuf_iterator<char>(csv)), {});
        EXPECT_NE(inconsistencias.find("La cuenta 6990101 no existe en el catálogo"), std::string::npos)
            << inconsistencias;
    }
}

TEST_F(ReportesCoi, ElMes13FechaLasPolizasAlCierre) {
    auto r = importa("COI", 2, comunes(muestras + "catalogo.txt") + " --mes 13='" + muestras +
                                   "002_coi50_ene.txt' --continuar");
    ASSERT_EQ(r.estado, 0) << r.salida;
    auto polizas = PolizasDeLaEmpresa(base + "/2024_COI/COI_2024.sqlite");
    ASSERT_EQ(polizas.size(), 13u);
    for (const auto& p : polizas) EXPECT_NE(p.find("|2024-12-31|"), std::string::npos) << p;
    EXPECT_NE(polizas[0].find("|-1|1|6010101|D|150000000|"), std::string::npos) << polizas[0];
}

TEST_F(ReportesCoi, CatalogoYSaldosDebenLlevarElDelimitador) {
    const std::string catalogo = dir.texto() + "catalogo.txt";
    std::ofstream(catalogo) << "Cuenta|Descripcion|Naturaleza|Nivel|Saldo\n1010101|Caja chica|D|3|5000\n"
                               "1020101 Banco del Norte D 3 120000\n";
    const std::string mes = " --mes 01='" + muestras + "002_coi50_ene.txt' --continuar";
    auto r = importa("COI", 2, comunes(catalogo) + mes);
    EXPECT_NE(r.estado, 0);
    EXPECT_NE(r.salida.find(catalogo + ", no está delimitado con el caracter: ( | )"), std::string::npos) << r.salida;

    // Link 82 reads the same file as before: the rule is the COI links'.
    EXPECT_EQ(importa("TEXTO", 82, comunes(catalogo) + mes).salida.find("no está delimitado"), std::string::npos);

    const std::string saldos = dir.texto() + "saldos.txt";
    std::ofstream(saldos) << "Cuenta|a|b|c|Saldo\n1010101|x|x|x|10\n1020101|20\n";
    r = importa("COI", 100, comunes(muestras + "catalogo.txt") + " --saldos-iniciales '" + saldos + "'" + mes);
    EXPECT_NE(r.estado, 0);
    EXPECT_NE(r.salida.find(saldos + ", no contiene los campos mínimos necesarios para la importación de los "
                                     "Saldos iniciales."),
              std::string::npos)
        << r.salida;
    EXPECT_TRUE(PolizasDeLaEmpresa(base + "/2024_COI/COI_2024.sqlite").empty());
}

// A condition at a learnt column: only with texto, numerico or caracter,
// and only on a column some heading learns.
TEST(DescripcionReporteCoi, LasCondicionesEnColumnaSeRevisanAlCargar) {
    const std::string titulos = "enlace = 900\n[[linea]]\nclase = \"titulos\"\naprende = { Numero = \"Número\" }\n";
    auto carga = [&](const std::string& condicion) {
        return CargaDescripcionDeTexto(titulos + "[[linea]]\nclase = \"encabezado\"\ncuando = [ " + condicion +
                                           " ]\nnumero = { en = 1, largo = 3 }\nfecha = { en = 5, largo = 10 }\n"
                                           "[[linea]]\nclase = \"partida\"\ncuenta = { en = 1, largo = 9 }\n"
                                           "debe = { en = 20, largo = 9 }\nhaber = { en = 30, largo = 9 }\n",
                                       "x.toml");
    };
    auto d = carga("{ columna = \"Numero\", numerico = [-1, 6] }");
    ASSERT_EQ(d.lineas.size(), 3u);
    EXPECT_EQ(d.lineas[1].cuando[0].columna, "Numero");
    EXPECT_EQ(d.lineas[1].cuando[0].en, -1);
    EXPECT_THROW(carga("{ columna = \"Numero\", contiene = \"x\" }"), ErrorDescripcion);
    EXPECT_THROW(carga("{ columna = \"Fecha\", caracter = [2, \"/\"] }"), ErrorDescripcion);
    EXPECT_THROW(carga("{ numerico = [-1, 6] }"), ErrorDescripcion);
}

}  // namespace
