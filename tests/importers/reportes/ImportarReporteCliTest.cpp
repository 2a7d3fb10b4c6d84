// A whole run of a report link from the command line, its chart through a
// saved layout of link 82 and the descriptions found beside the program:
// the company ends with the same vouchers as a run of link 82 on the
// clean delimited file of the same data.

#include <gtest/gtest.h>

#include <fstream>

#include "platform/BaseDatos.h"
#include "support/AlmacenesLectura.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

std::vector<std::string> PolizasDeLaEmpresa(const std::string& ruta) {
    BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
    return prueba::FilasComoTexto(
        db, "SELECT p.Poliza, p.Tipo, p.Fecha, p.Concepto, p.Cuadrada, d.Partida, d.Cuenta, d.TipoMov, d.Importe, "
        "d.Referencia FROM Polizas p JOIN Polizas_Detalle d ON d.IdPoliza = p.IdPoliza ORDER BY p.IdPoliza, d.Partida");
}

TEST(ImportarReporte, ElEnlace76DejaLasMismasPolizasQueElTextoDelimitado) {
    prueba::CarpetaTemporal dir;
    const std::string base = dir.texto() + "base";
    const std::string muestras = std::string(VELMORANT_FUENTES) + "/tests/data/reportes/";
    auto cli = [&](const std::string& argumentos) {
        return prueba::CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' VELMORANT_DATOS='" + dir.texto() +
                                    "datos' '" + VELMORANT_CLI + "' " + argumentos);
    };
    ASSERT_EQ(cli("base crear '" + base + "'").estado, 0);
    for (std::string empresa : {"TEXTO", "PASC"}) {
        auto r = cli("--base '" + base + "' empresa crear --nombre-corto " + empresa + " --nombre " + empresa +
                     " --ejercicio 2024 --formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros");
        ASSERT_EQ(r.estado, 0) << r.salida;
    }
    auto layout = cli("--base '" + base + "' --empresa TEXTO --ejercicio 2024 configuracion crear MUESTRA --enlace 82 PIniCuenta=1 PIniDescripcion=2 PIniNaturaleza=3 "
                      "PIniNivel=4 PIniSdoIni=5 PIniNumPol=1 PIniCtaPol=2 PIniDia=3 PIniTipo=4 PIniConcept=5 "
                      "PIniRef=6 PIniCargo=7 PIniAbono=8");
    ASSERT_EQ(layout.estado, 0) << layout.salida;
    const std::string comunes = " --separador '|' --configuracion MUESTRA --catalogo '" + muestras + "catalogo.txt'";
    auto texto = cli("--base '" + base + "' --empresa TEXTO --ejercicio 2024 importar --enlace 82" + comunes +
                     " --mes 01='" + muestras + "076_pasc_ene.polizas.txt' --continuar");
    ASSERT_EQ(texto.estado, 0) << texto.salida;
    auto reporte = cli("--base '" + base + "' --empresa PASC --ejercicio 2024 importar --enlace 76" + comunes +
                       " --mes 01='" + muestras + "076_pasc_ene.txt' --continuar --reporte '" + dir.texto() + "inc.csv'");
    ASSERT_EQ(reporte.estado, 0) << reporte.salida;

    auto esperadas = PolizasDeLaEmpresa(base + "/2024_TEXTO/TEXTO_2024.sqlite");
    EXPECT_EQ(esperadas.size(), 13u);
    EXPECT_EQ(PolizasDeLaEmpresa(base + "/2024_PASC/PASC_2024.sqlite"), esperadas);
    std::ifstream csv(dir.texto() + "inc.csv");
    std::string inconsistencias((std::istreambuf_iterator<char>(csv)), {});
    EXPECT_NE(inconsistencias.find("La cuenta 6990101 no existe en el catálogo"), std::string::npos) << inconsistencias;

    // The link's options come from its descriptor: the chart's layout is required.
    auto sin = cli("--base '" + base + "' --empresa PASC --ejercicio 2024 importar --enlace 76 --separador '|' "
                   "--catalogo '" + muestras + "catalogo.txt' --mes 01='" + muestras + "076_pasc_ene.txt'");
    EXPECT_EQ(sin.estado, 2) << sin.salida;
    EXPECT_NE(sin.salida.find("--configuracion"), std::string::npos) << sin.salida;
}

}  // namespace
