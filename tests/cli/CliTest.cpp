// The command-line program run as a user would: a fresh process with its
// own XDG_CONFIG_HOME, checked by exit status and output.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/BaseDatos.h"
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

TEST_F(CliTest, LaAyudaDescribeCadaComandoConUnaFraseEntera) {
    auto ayuda = Corre("--help");
    ASSERT_EQ(ayuda.estado, 0) << ayuda.salida;
    EXPECT_EQ(Corre("-h").salida, ayuda.salida);
    // Each command's summary, wrapped or not, ends its sentence.
    std::istringstream lineas(ayuda.salida.substr(ayuda.salida.find("Comandos:")));
    std::string linea, resumen;
    int comandos = 0;
    auto cierra = [&] {
        if (resumen.empty()) return;
        ++comandos;
        EXPECT_EQ(resumen.back(), '.') << resumen;
        resumen.clear();
    };
    std::getline(lineas, linea);
    while (std::getline(lineas, linea) && !linea.empty()) {
        if (linea.rfind("  ", 0) == 0 && linea[2] != ' ') cierra();  // a new command
        resumen += linea;
        EXPECT_LE(linea.size(), 90u) << linea;
    }
    cierra();
    EXPECT_GE(comandos, 16);

    auto version = Corre("--version");
    EXPECT_EQ(version.estado, 0);
    EXPECT_EQ(version.salida.rfind("velmorant-cli 1.", 0), 0u) << version.salida;

    // A group word alone lists what follows it; with --help, as a success.
    for (auto [grupo, subcomandos] : {std::pair<std::string, std::vector<std::string>>{
                                          "configuracion", {"configuracion listar", "configuracion mostrar",
                                                            "configuracion crear"}},
                                      {"empresa", {"empresa crear", "empresa abrir"}},
                                      {"base", {"base crear"}}}) {
        auto r = Corre(grupo);
        EXPECT_EQ(r.estado, 2) << r.salida;
        for (auto& s : subcomandos) EXPECT_NE(r.salida.find("  " + s + " "), std::string::npos) << r.salida;
        EXPECT_EQ(r.salida.find("comando desconocido"), std::string::npos) << r.salida;
        EXPECT_EQ(Corre(grupo + " --help").estado, 0);
        auto otro = Corre(grupo + " borrar");
        EXPECT_EQ(otro.estado, 2);
        EXPECT_NE(otro.salida.find(subcomandos[0]), std::string::npos) << otro.salida;
    }
}

TEST_F(CliTest, PolizasAceptaElMesTreceComoLaBalanza) {
    CreaDemo();
    std::string empresa = "--base '" + base() + "' --empresa DEMO --ejercicio 2025 ";
    auto balanza = Corre(empresa + "balanza --mes 13");
    EXPECT_EQ(balanza.estado, 0) << balanza.salida;
    {
        velmorant::BaseDatos db(base() + "/2025_DEMO/DEMO_2025.sqlite");
        db.ejecuta("INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha, Concepto, Cuadrada, Poliza_Mes13) VALUES "
                   "(1, 'D-31', 'Dr', '2025-12-31', 'Depreciación', -1, 0), "
                   "(2, 'C-1', 'Dr', '2025-12-31', 'Cierre del ejercicio', -1, -1)");
    }
    auto cierre = Corre(empresa + "polizas --mes 13");
    EXPECT_EQ(cierre.estado, 0) << cierre.salida;
    EXPECT_NE(cierre.salida.find("Cierre del ejercicio"), std::string::npos) << cierre.salida;
    EXPECT_EQ(cierre.salida.find("Depreciación"), std::string::npos) << cierre.salida;
    auto diciembre = Corre(empresa + "polizas --mes 12");
    EXPECT_NE(diciembre.salida.find("Depreciación"), std::string::npos) << diciembre.salida;
    EXPECT_EQ(diciembre.salida.find("Cierre del ejercicio"), std::string::npos) << diciembre.salida;
    EXPECT_EQ(Corre(empresa + "polizas --mes 14").estado, 2);
}

TEST_F(CliTest, ElReadmeNombraCadaOpcionDeCadaComando) {
    std::ifstream f(std::string(VELMORANT_FUENTES) + "/README.md");
    std::string readme((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    ASSERT_FALSE(readme.empty());
    auto ayuda = Corre("--help").salida;
    std::istringstream lineas(ayuda.substr(ayuda.find("Comandos:")));
    std::string linea;
    std::getline(lineas, linea);
    while (std::getline(lineas, linea) && !linea.empty()) {
        if (linea.rfind("  ", 0) != 0 || linea[2] == ' ') continue;
        std::string comando = linea.substr(2, linea.find("  ", 2) - 2);
        std::istringstream opciones(Corre(comando + " --help").salida);
        for (std::string o; std::getline(opciones, o);) {
            if (o.rfind("  --", 0) != 0) continue;
            std::string opcion = o.substr(2, o.find_first_of(" ", 2) - 2);
            if (opcion == "--help") continue;
            // As a whole word: --saldos is not --saldos-iniciales.
            bool nombrada = false;
            for (size_t p = readme.find(opcion); p != std::string::npos && !nombrada; p = readme.find(opcion, p + 1)) {
                char despues = p + opcion.size() < readme.size() ? readme[p + opcion.size()] : ' ';
                nombrada = !(std::isalnum(static_cast<unsigned char>(despues)) || despues == '-');
            }
            EXPECT_TRUE(nombrada) << comando << " " << opcion;
        }
    }
}

TEST_F(CliTest, UnErrorDelMotorSeDiceEnUnaFraseQueNombraLoQueNoSeHizoYElArchivo) {
    CreaDemo();
    std::string log = base() + "/2025_DEMO/InconsisImpTmp.sqlite";
    std::ofstream(log, std::ios::trunc) << std::string(4096, '#');
    auto r = Corre("--base '" + base() + "' --empresa DEMO --ejercicio 2025 resumen");
    EXPECT_EQ(r.estado, 3) << r.salida;
    EXPECT_NE(r.salida.find("No fue posible completar 'resumen': la base de datos " + log +
                            " está dañada o no es una base de datos"),
              std::string::npos)
        << r.salida;
    EXPECT_NE(r.salida.find("file is not a database"), std::string::npos) << "the engine's own words follow";

    // A folder that cannot be made: a file stands where a folder should.
    std::ofstream(dir.texto() + "archivo") << "x";
    auto b = Corre("base crear '" + dir.texto() + "archivo/base'");
    EXPECT_EQ(b.estado, 3) << b.salida;
    EXPECT_NE(b.salida.find("No fue posible completar 'base crear': "), std::string::npos) << b.salida;
    EXPECT_NE(b.salida.find(dir.texto() + "archivo/base"), std::string::npos) << b.salida;
    EXPECT_EQ(b.salida.find("filesystem error"), std::string::npos) << b.salida;
}

TEST_F(CliTest, LoQueNoSePuedeGuardarSeDiceYLoQueNoSirveSeRehusaEnEspanol) {
    CreaDemo();
    // The settings folder cannot be made: a file stands where it should be.
    std::ofstream(dir.texto() + "no-es-carpeta") << "x";
    auto abrir = velmorant::prueba::CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "no-es-carpeta/config' '" +
                                                 VELMORANT_CLI + "' --base '" + base() + "' empresa abrir DEMO 2025");
    EXPECT_NE(abrir.estado, 0) << abrir.salida;
    EXPECT_NE(abrir.salida.find("No fue posible guardar los ajustes"), std::string::npos) << abrir.salida;
    EXPECT_EQ(abrir.salida.find("Empresa abierta"), std::string::npos) << abrir.salida;

    // A short name too long for its field, or not text at all.
    auto entradas = std::distance(std::filesystem::directory_iterator(base()), std::filesystem::directory_iterator());
    std::string crear = "--base '" + base() + "' empresa crear --nombre X --ejercicio 2025 --formato 9 --niveles 1 "
                        "--nombre-corto ";
    auto largo = Corre(crear + std::string(300, 'A'));
    EXPECT_EQ(largo.estado, 1) << largo.salida;
    EXPECT_NE(largo.salida.find("El nombre corto tiene 300 caracteres y caben 50"), std::string::npos) << largo.salida;
    auto bytes = Corre(crear + "'AB\xff\xfe" "C'");
    EXPECT_EQ(bytes.estado, 1) << bytes.salida;
    EXPECT_NE(bytes.salida.find("El nombre corto no es un texto válido"), std::string::npos) << bytes.salida;
    EXPECT_EQ(bytes.salida.find("\xff"), std::string::npos) << "no raw bytes in the message";
    velmorant::BaseDatos empresas(base() + "/Empresas.sqlite", velmorant::BaseDatos::Modo::SoloLectura);
    EXPECT_EQ(empresas.escalar("SELECT COUNT(*) FROM Empresas").entero(), 1);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(base()), std::filesystem::directory_iterator()),
              entradas) << "no company folder was made";
}

TEST_F(CliTest, ElGeneradorDeLaDemoMuestraSuUsoEnLugarDeEscribirEnUnaCarpetaLlamadaHelp) {
    for (std::string opcion : {"--help", "-h"}) {
        auto r = velmorant::prueba::CorreProceso("cd '" + dir.texto() + "' && '" VELMORANT_GENERA_DEMO "' " + opcion);
        EXPECT_EQ(r.estado, 0) << r.salida;
        EXPECT_NE(r.salida.find("Uso: velmorant-genera-demo DIR"), std::string::npos) << r.salida;
        EXPECT_FALSE(std::filesystem::exists(dir.ruta() / opcion)) << opcion;
    }
    auto r = velmorant::prueba::CorreProceso("cd '" + dir.texto() + "' && '" VELMORANT_GENERA_DEMO "' --variante 2");
    EXPECT_EQ(r.estado, 2) << r.salida;
    EXPECT_FALSE(std::filesystem::exists(dir.ruta() / "--variante"));
}
