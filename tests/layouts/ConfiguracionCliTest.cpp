#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "support/Entorno.h"

namespace {

using velmorant::prueba::AjustesAislados;
using velmorant::prueba::CarpetaTemporal;

velmorant::prueba::ResultadoProceso Cli(const std::string& argumentos) {
    return velmorant::prueba::CorreProceso(std::string(VELMORANT_CLI) + " " + argumentos);
}

TEST(ConfiguracionCli, CreaListaYMuestraConLasReglasDeLaForma) {
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    const std::string base = carpeta.texto() + "base";
    ASSERT_EQ(Cli("base crear " + base).estado, 0);
    ASSERT_EQ(Cli("--base " + base +
                  " empresa crear --nombre-corto ACME --nombre Acme --ejercicio 2024 --formato 999-99 --separador - "
                  "--niveles 3,2")
                  .estado,
              0);
    const std::string empresa = "--base " + base + " --empresa ACME --ejercicio 2024 ";
    const std::string campos =
        " PIniCuenta=1 PIniDescripcion=2 PIniNumPol=3 PIniConcept=4 PIniTipo=5 PIniDia=6 PIniCtaPol=7"
        " PIniTipoMov=8 PIniImporte=9";

    auto falta = Cli(empresa + "configuracion crear mia --enlace 82 PIniCuenta=1 PIniDescripcion=2");
    EXPECT_EQ(falta.estado, 1);
    EXPECT_NE(falta.salida.find("Es necesario indicar el número de la Columna para el Número de la Póliza"),
              std::string::npos)
        << falta.salida;

    auto creada = Cli(empresa + "configuracion crear mia --enlace 82" + campos);
    EXPECT_EQ(creada.estado, 0) << creada.salida;
    EXPECT_NE(creada.salida.find("Configuración actual: MIA"), std::string::npos);

    // The same values under another name: the question, answered No without a terminal.
    auto otra = Cli(empresa + "configuracion crear otra --enlace 82" + campos);
    EXPECT_EQ(otra.estado, 0);
    EXPECT_NE(otra.salida.find("ya existe con otro nombre: - MIA - "), std::string::npos) << otra.salida;
    EXPECT_NE(otra.salida.find("Configuración actual: MIA"), std::string::npos);

    auto lista = Cli("configuracion listar --enlace 82");
    EXPECT_EQ(lista.salida, "CONFIGURACION PREDETERMINADA TEXTO GENERICO\nMIA\n");
    auto muestra = Cli("configuracion mostrar MIA");
    EXPECT_EQ(muestra.estado, 0);
    EXPECT_NE(muestra.salida.find("IdEnlace: 82\nPIniCuenta=1\tLongCuenta=0\n"), std::string::npos) << muestra.salida;
    EXPECT_NE(muestra.salida.find("PIniImporte=9\tLongImporte=0\n"), std::string::npos);
    EXPECT_EQ(Cli("configuracion mostrar NADA").estado, 1);
    EXPECT_EQ(Cli(empresa + "configuracion crear x --enlace 82 PIniNada=1").estado, 2);
}

}  // namespace
