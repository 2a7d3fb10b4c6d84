// Link 1 (COI 3.5 exports) from the command line: records told apart by
// their mark, fields by their commas, the closing vouchers of "Mes 13", a
// voucher without its concept logged, a month file that holds another month
// refused before anything is read, and a record that cannot be read named
// with its file and line.

#include <gtest/gtest.h>

#include <fstream>

#include "platform/BaseDatos.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

class ImportacionCoi35 : public ::testing::Test {
protected:
    prueba::CarpetaTemporal dir;
    const std::string base = dir.texto() + "base";
    const std::string catalogo = std::string(VELMORANT_FUENTES) + "/tests/data/reportes/catalogo.txt";

    prueba::ResultadoProceso cli(const std::string& argumentos) {
        return prueba::CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' VELMORANT_DATOS='" + dir.texto() +
                                    "datos' '" + VELMORANT_CLI + "' " + argumentos);
    }
    void SetUp() override {
        ASSERT_EQ(cli("base crear '" + base + "'").estado, 0);
        auto r = cli("--base '" + base + "' empresa crear --nombre-corto COI --nombre COI --ejercicio 2024 "
                     "--formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros");
        ASSERT_EQ(r.estado, 0) << r.salida;
        r = cli("--base '" + base + "' --empresa COI --ejercicio 2024 configuracion crear MUESTRA --enlace 82 "
                "PIniCuenta=1 PIniDescripcion=2 PIniNaturaleza=3 PIniNivel=4 PIniSdoIni=5 PIniNumPol=1 PIniCtaPol=2 "
                "PIniDia=3 PIniTipo=4 PIniConcept=5 PIniRef=6 PIniCargo=7 PIniAbono=8");
        ASSERT_EQ(r.estado, 0) << r.salida;
    }
    std::string escribe(const std::string& nombre, const std::string& texto) {
        std::ofstream(dir.texto() + nombre, std::ios::binary) << texto;
        return dir.texto() + nombre;
    }
    prueba::ResultadoProceso importa(const std::string& meses) {
        return cli("--base '" + base + "' --empresa COI --ejercicio 2024 importar --enlace 1 --separador '|' "
                   "--configuracion MUESTRA --catalogo '" + catalogo + "' " + meses + " --continuar --reporte '" +
                   dir.texto() + "inc.csv'");
    }
    std::string filas(const std::string& sql) {
        BaseDatos db(base + "/2024_COI/COI_2024.sqlite", BaseDatos::Modo::SoloLectura);
        return db.escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
    }
};

const char* const kEnero =
    "1Dr,1,15/01/2024\r\n"
    "2,Provision de nomina, primera quincena\r\n"
    "3,601-01-01,D,15000.00,Nomina 1a quincena\r\n"
    "3,201-01-01,H,15000.00,Por pagar, al dia 15\r\n"
    "Fin del bloque\r\n"
    "\r\n"
    "1Eg,2,20/01/2024\r\n"
    "3,602-01-01,D,8000,Renta enero\r\n"
    "3,1020101,H,8000,Cheque 1234\r\n";

const char* const kCierre =
    "1Dr,9,Mes 13\r\n"
    "2,Cierre del ejercicio\r\n"
    "3,401-01-01,D,500.50,Ventas\r\n"
    "3,601-01-01,H,500.50,Gastos\r\n";

TEST_F(ImportacionCoi35, LeeLosRegistrosPorSuMarcaYElMes13) {
    auto r = importa("--mes 01='" + escribe("POLIZAS.A01", kEnero) + "' --mes 13='" +
                     escribe("POLIZAS.A13", kCierre) + "'");
    ASSERT_EQ(r.estado, 0) << r.salida;
    EXPECT_EQ(filas("SELECT Poliza || ':' || Tipo || ':' || Fecha || ':' || Poliza_Mes13 || ':' || Concepto AS f "
                    "FROM Polizas ORDER BY IdPoliza"),
              "1:Dr:2024-01-15:0:Provision de nomina, primera quincena | 2:Eg:2024-01-20:0: | "
              "9:Dr:2024-12-31:-1:Cierre del ejercicio");
    // Amounts in ten-thousandths; the reference keeps its commas.
    EXPECT_EQ(filas("SELECT p.Poliza || ':' || d.Partida || d.TipoMov || ':' || d.Cuenta || ':' || d.Importe || ':' || "
                    "d.Referencia AS f FROM Polizas_Detalle d JOIN Polizas p ON p.IdPoliza = d.IdPoliza "
                    "ORDER BY d.IdPoliza, d.Partida"),
              "1:1D:6010101:150000000:Nomina 1a quincena | 1:2H:2010101:150000000:Por pagar, al dia 15 | "
              "2:1D:6020101:80000000:Renta enero | 2:2H:1020101:80000000:Cheque 1234 | "
              "9:1D:4010101:5005000:Ventas | 9:2H:6010101:5005000:Gastos");
    std::ifstream csv(dir.texto() + "inc.csv");
    std::string inconsistencias((std::istreambuf_iterator<char>(csv)), {});
    EXPECT_NE(inconsistencias.find("No se logró leer el concepto de la póliza, revise por favor pólizas 2"),
              std::string::npos)
        << inconsistencias;
    EXPECT_EQ(inconsistencias.find("pólizas 1"), std::string::npos) << inconsistencias;
}

TEST_F(ImportacionCoi35, UnArchivoDeOtroMesSeRechazaAntesDeLeer) {
    const std::string enero = escribe("POLIZAS.A01", kEnero);
    auto r = importa("--mes 01='" + enero + "' --mes 02='" + escribe("OTRO.A02", kEnero) + "'");
    EXPECT_NE(r.estado, 0);
    EXPECT_NE(r.salida.find("no contiene pólizas del mes de Febrero: su primera póliza es del mes de Enero."),
              std::string::npos)
        << r.salida;
    EXPECT_EQ(filas("SELECT COUNT(*) AS f FROM Polizas"), "0");
}

TEST_F(ImportacionCoi35, UnRegistroIlegibleDiceArchivoYLinea) {
    for (const char* linea : {"3,601-01-01,X,10,Ni debe ni haber\r\n", "3,601-01-01,D,diez,Sin importe\r\n",
                              "1Dr,3\r\n", "1Dr,3,32/01/2024\r\n"}) {
        SCOPED_TRACE(linea);
        const std::string ruta = escribe("MALO.A01", std::string(kEnero) + linea);
        auto r = importa("--mes 01='" + ruta + "'");
        EXPECT_NE(r.estado, 0) << r.salida;
        EXPECT_NE(r.salida.find("Error al leer el archivo " + ruta + ", línea 10: "), std::string::npos) << r.salida;
        EXPECT_EQ(filas("SELECT COUNT(*) AS f FROM Polizas"), "0");
    }
}

}  // namespace
