// `velmorant-cli importar` and `saldos-anterior` run as a user would, on a
// small company: what is refused before the run starts, and what the run
// says on the way.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/Cli.h"
#include "support/Entorno.h"

namespace fs = std::filesystem;

namespace {

using Resultado = velmorant::prueba::ResultadoProceso;

const char* kCatalogo =
    "Cuenta|Descripcion|Naturaleza|Saldo\n"
    "100-00-00|Activo|D|1000\n"
    "100-01-00|Bancos|D|1000\n"
    "100-01-01|Banco uno|D|1000\n"
    "400-00-00|Ventas|A|-1000\n"
    "400-01-00|Ventas nacionales|A|-1000\n"
    "400-01-01|Mostrador|A|-1000\n";

std::string Mes(int mes) {
    std::string fecha = "|" + std::to_string(mes) + "|2025";
    return "Poliza|Tipo|Dia|Mes|Anio|Cuenta|Ref|Concepto|Cargo|Abono\n"
           "1|Dr|3" + fecha + "|100-01-01|cobro|Venta|200|0\n"
           "1|Dr|3" + fecha + "|400-01-01|venta|Venta|0|200\n";
}

class ImportarCli : public ::testing::Test {
protected:
    velmorant::prueba::CarpetaTemporal dir;

    Resultado Corre(const std::string& argumentos) {
        return velmorant::prueba::CorreCli(dir, argumentos);
    }
    std::string ruta(const std::string& nombre) { return dir.texto() + nombre; }
    void escribe(const std::string& nombre, const std::string& texto) { std::ofstream(ruta(nombre)) << texto; }
    // The options of a run on the files written by SetUp, with `resto` after them.
    std::string importar(const std::string& resto) {
        return "importar --enlace 82 --separador '|' --configuracion T --catalogo '" + ruta("catalogo.txt") +
               "' --mes 01='" + ruta("ene.txt") + "' " + resto;
    }

    void SetUp() override {
        PreparaEmpresaDemoCli(dir);
        if (HasFatalFailure()) return;
        escribe("catalogo.txt", kCatalogo);
        escribe("ene.txt", Mes(1));
        escribe("feb.txt", Mes(2));
    }

    // Vouchers in the company, by the `polizas` command's closing line.
    std::string polizas() {
        auto r = Corre("polizas");
        auto p = r.salida.find("Pólizas: ");
        return p == std::string::npos ? r.salida : r.salida.substr(p);
    }
};

}  // namespace

TEST_F(ImportarCli, UnaRutaDeEntradaQueNoSirveSeRehusaAntesDeEmpezar) {
    ASSERT_EQ(Corre(importar("--continuar")).estado, 0);
    ASSERT_EQ(polizas(), "Pólizas: 1, partidas: 2\n");
    fs::create_directories(ruta("carpeta"));
    struct Caso {
        std::string argumentos;
        std::string nombrado;
    } casos[] = {
        // A typo in a month file would have logged every voucher of the month as dropped.
        {"importar --enlace 82 --separador '|' --configuracion T --catalogo '" + ruta("catalogo.txt") +
             "' --mes 01='" + ruta("nee.txt") + "' --continuar",
         "--mes 01: no existe el archivo " + ruta("nee.txt")},
        {"importar --enlace 82 --separador '|' --configuracion T --catalogo /no/existe --mes 01='" + ruta("ene.txt") +
             "' --continuar",
         "--catalogo: no existe el archivo /no/existe"},
        {importar("--saldos-iniciales '" + ruta("carpeta") + "' --continuar"),
         "--saldos-iniciales: " + ruta("carpeta") + " es una carpeta, no un archivo"},
        {"importar --enlace 82 --separador '|' --configuracion T --catalogo '" + ruta("catalogo.txt") +
             "' --un-archivo /dev/null --continuar",
         "--un-archivo: /dev/null no es un archivo común"},
        {"importar --enlace 82 --separador '|' --configuracion T --catalogo '" + ruta("catalogo.txt") +
             "' --mes 01= --continuar",
         "--mes 01: falta la ruta del archivo"},
        {"saldos-anterior --enlace 82 --separador '|' --configuracion T --archivo '" + ruta("no-hay.txt") +
             "' --continuar",
         "--archivo: no existe el archivo " + ruta("no-hay.txt")},
    };
    for (auto& c : casos) {
        auto r = Corre(c.argumentos);
        EXPECT_EQ(r.estado, 2) << c.argumentos << "\n" << r.salida;
        EXPECT_NE(r.salida.find(c.nombrado), std::string::npos) << c.argumentos << "\n" << r.salida;
        // Refused before the run: no session, no progress, no company touched.
        EXPECT_EQ(r.salida.find("VELMORANT Ver."), std::string::npos) << r.salida;
        EXPECT_EQ(r.salida.find("Uso: "), std::string::npos) << "no help after a file refused\n" << r.salida;
    }
    EXPECT_EQ(polizas(), "Pólizas: 1, partidas: 2\n");
}

TEST_F(ImportarCli, UnSeparadorEquivocadoDaElMensajeDelArchivoSinDelimitar) {
    // '|' files read with tabs: each line would be one long account code.
    auto r = Corre("importar --enlace 82 --tabulador --configuracion T --catalogo '" + ruta("catalogo.txt") +
                   "' --mes 01='" + ruta("ene.txt") + "' --continuar");
    EXPECT_EQ(r.estado, 2) << r.salida;
    EXPECT_NE(r.salida.find("El archivo " + ruta("catalogo.txt") +
                            " no se encuentra delimitado por el caracter que indico."),
              std::string::npos)
        << r.salida;
    EXPECT_NE(r.salida.find("--separador"), std::string::npos) << r.salida;
    EXPECT_EQ(r.salida.find("caracteres y caben"), std::string::npos) << r.salida;
    EXPECT_EQ(polizas(), "Pólizas: 0, partidas: 0\n");

    // The voucher file is looked at as well, and the prior-year file.
    escribe("ene-tab.txt", "Poliza\tTipo\n1\tDr\n");
    escribe("catalogo-tab.txt", "Cuenta\tDescripcion\n100-00-00\tActivo\n");
    r = Corre("importar --enlace 82 --tabulador --configuracion T --catalogo '" + ruta("catalogo-tab.txt") +
              "' --mes 01='" + ruta("ene.txt") + "' --mes 02='" + ruta("ene-tab.txt") + "' --continuar");
    EXPECT_EQ(r.estado, 2) << r.salida;
    EXPECT_NE(r.salida.find("El archivo " + ruta("ene.txt") + " no se encuentra delimitado"), std::string::npos)
        << r.salida;
    r = Corre("saldos-anterior --enlace 82 --separador '^' --configuracion T --archivo '" + ruta("catalogo.txt") +
              "' --continuar");
    EXPECT_EQ(r.estado, 2) << r.salida;
    EXPECT_NE(r.salida.find("El archivo " + ruta("catalogo.txt") + " no se encuentra delimitado"), std::string::npos)
        << r.salida;
}

TEST_F(ImportarCli, AntesDeDecidirSeDiceCuantasInconsistenciasHayDeCadaClase) {
    ASSERT_EQ(Corre(importar("--continuar")).estado, 0);
    // The second delivery: a new account, a new voucher in January, and a
    // February line on an account the chart lacks.
    escribe("catalogo.txt", std::string(kCatalogo) + "100-01-02|Banco dos|D|0\n");
    escribe("ene.txt", Mes(1) + "2|Dr|5|1|2025|100-01-02|x|Otra|5|0\n2|Dr|5|1|2025|400-01-01|x|Otra|0|5\n");
    escribe("feb.txt", Mes(2) + "2|Dr|4|2|2025|999-99-99|x|Otra|5|0\n");
    auto r = Corre(importar("--mes 02='" + ruta("feb.txt") + "' --cancelar"));
    EXPECT_EQ(r.estado, 1) << r.salida;
    auto texto = r.salida.find("Se encontraron inconsistencias, ¿ Desea continuar con la importación ?");
    auto conteo = r.salida.find("Nuevas: 2, con cambios: 0, dadas de baja: 0, otras: 1 (3 en total).");
    auto respuesta = r.salida.find("Respuesta: cancelar (--cancelar)");
    ASSERT_NE(texto, std::string::npos) << r.salida;
    ASSERT_NE(conteo, std::string::npos) << r.salida;
    ASSERT_NE(respuesta, std::string::npos) << r.salida;
    EXPECT_LT(texto, conteo);
    EXPECT_LT(conteo, respuesta);
}
