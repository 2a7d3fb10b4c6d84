// The command-line program run as a user would: a fresh process with its
// own XDG_CONFIG_HOME, checked by exit status and output.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "support/Entorno.h"

namespace {

using Resultado = velmorant::prueba::ResultadoProceso;

class CliTest : public ::testing::Test {
protected:
    velmorant::prueba::CarpetaTemporal dir;

    Resultado Corre(const std::string& argumentos, const std::string& programa = VELMORANT_CLI) {
        return velmorant::prueba::CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' '" + programa + "' " +
                                               argumentos);
    }
    std::string base() { return dir.texto() + "base"; }
    void CreaDemo() {
        ASSERT_EQ(Corre("base crear '" + base() + "'").estado, 0);
        auto r = Corre("--base '" + base() +
                       "' empresa crear --nombre-corto DEMO --nombre 'Demo, S.A.' --ejercicio 2025 "
                       "--formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros");
        ASSERT_EQ(r.estado, 0) << r.salida;
    }
};

}  // namespace

TEST_F(CliTest, EmpresaAbrirDejaLosAjustesYSesionLosLee) {
    CreaDemo();
    auto abrir = Corre("--base '" + base() + "' empresa abrir DEMO 2025");
    ASSERT_EQ(abrir.estado, 0) << abrir.salida;
    // The settings file is where the audit product's settings live.
    std::ifstream ini(dir.texto() + "config/VB and VBA Program Settings/Brevanta 13.conf");
    std::string contenido((std::istreambuf_iterator<char>(ini)), std::istreambuf_iterator<char>());
    EXPECT_NE(contenido.find("[BaseDatos]"), std::string::npos) << contenido;
    EXPECT_NE(contenido.find("EmpresaActual_NombreCorto=DEMO"), std::string::npos) << contenido;
    EXPECT_NE(contenido.find("EmpresaActual_Ejercicio=2025"), std::string::npos) << contenido;

    auto sesion = Corre("sesion");  // no options: everything from the settings
    ASSERT_EQ(sesion.estado, 0) << sesion.salida;
    EXPECT_NE(sesion.salida.find("VELMORANT Ver. "), std::string::npos);
    EXPECT_NE(sesion.salida.find(" - Demo, S.A. (2025)"), std::string::npos) << sesion.salida;
    EXPECT_NE(sesion.salida.find("Niveles:              3 (3,2,2)"), std::string::npos) << sesion.salida;
    EXPECT_NE(sesion.salida.find("2025_DEMO/"), std::string::npos);
}

TEST_F(CliTest, EntradasMalasDanUnMensajeClaroYUnEstadoDistintoDeCero) {
    CreaDemo();
    struct Caso {
        std::string argumentos;
        int estado;
        std::string texto;
    } casos[] = {
        {"--base '" + dir.texto() + "no-existe' enlaces", 1, "no contiene la base"},
        {"--base '" + base() + "' empresa abrir NADIE 2025", 1, "no existe"},
        {"--base '" + base() + "' --empresa NADIE --ejercicio 2025 sesion", 3, "unable to open database file"},
        {"--base '" + base() + "' --empresa DEMO --ejercicio dosmil sesion", 3,
         "El ejercicio de la empresa actual no es válido"},
        {"--base '" + base() + "' empresa crear --nombre-corto DEMO --nombre X --ejercicio 2025 --formato 9 "
                               "--niveles 1",
         1, "ya existe"},
        {"--base '" + base() + "' empresa crear --nombre-corto Y --nombre X --ejercicio 2025 --formato 9 "
                               "--niveles 1,x",
         2, "--niveles"},
        {"comando-que-no-existe", 2, "comando desconocido"},
        {"empresa abrir DEMO", 2, "espera NOMBRE_CORTO AAAA"},
        {"enlaces --opcion-rara", 2, "opción desconocida"},
    };
    for (auto& c : casos) {
        auto r = Corre(c.argumentos);
        EXPECT_EQ(r.estado, c.estado) << c.argumentos << "\n" << r.salida;
        EXPECT_NE(r.salida.find(c.texto), std::string::npos) << c.argumentos << "\n" << r.salida;
    }
    // A corrupt company database and a locked one.
    {
        std::ofstream f(base() + "/2025_DEMO/DEMO_2025.sqlite", std::ios::trunc);
        f << std::string(8192, '#');
    }
    auto r = Corre("--base '" + base() + "' --empresa DEMO --ejercicio 2025 sesion");
    EXPECT_EQ(r.estado, 3) << r.salida;
    EXPECT_NE(r.salida.find("not a database"), std::string::npos) << r.salida;
}

TEST_F(CliTest, LaBaseJuntoAlProgramaGanaALaRutaGuardada) {
    CreaDemo();
    // A copy of the program beside its own base.
    std::filesystem::path local = dir.ruta() / "instalado";
    std::filesystem::create_directories(local);
    std::filesystem::copy_file(VELMORANT_CLI, local / "velmorant-cli");
    ASSERT_EQ(Corre("base crear '" + local.string() + "'").estado, 0);
    ASSERT_EQ(Corre("--base '" + base() + "' empresa abrir DEMO 2025").estado, 0);
    auto r = Corre("enlaces --todos", (local / "velmorant-cli").string());
    EXPECT_EQ(r.estado, 0) << r.salida;
    auto s = Corre("sesion", (local / "velmorant-cli").string());
    // The local base has no company DEMO: start-up used the program's folder.
    EXPECT_NE(s.salida.find(local.string()), std::string::npos) << s.salida;
}
