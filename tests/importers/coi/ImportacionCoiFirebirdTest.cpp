// Whole runs through link 129 over Firebird databases made here by isql-fb
// with the embedded engine (no server): the tables of COI 7 (named with the
// company's digits) and of COI 8 (without them), the closing vouchers of
// period 13, and the command line as a user runs it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "importers/coi/ImportadorCoiFirebird.h"
#include "pipeline/Importacion.h"
#include "session/ProgramaTerminado.h"
#include "session/Inicio.h"
#include "store/AlmacenesTemporales.h"
#include "store/AltaBase.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;
namespace fs = std::filesystem;

namespace {

std::string BuscaIsql() {
    const char* ruta = std::getenv("PATH");
    std::stringstream partes(ruta ? ruta : "/usr/bin");
    for (std::string carpeta; std::getline(partes, carpeta, ':');) {
        fs::path p = fs::path(carpeta) / "isql-fb";
        if (fs::exists(p)) return p.string();
    }
    return "";
}

// The year's tables of a COI company; `s` is the name's tail ("2501", "25").
std::string TablasCoi(const std::string& s) {
    return "CREATE TABLE CUENTAS" + s +
           " (NUM_CTA CHAR(21), NOMBRE VARCHAR(40), NIVEL SMALLINT, NATURALEZA SMALLINT);\n"
           "CREATE TABLE SALDOS" + s + " (NUM_CTA CHAR(21), INICIAL NUMERIC(18,2));\n"
           "CREATE TABLE POLIZAS" + s +
           " (EJERCICIO INTEGER, PERIODO SMALLINT, FECHA_POL TIMESTAMP, NUM_POLIZ CHAR(5), TIPO_POLI CHAR(2), "
           "CONCEP_PO VARCHAR(120));\n"
           "CREATE TABLE AUXILIAR" + s +
           " (EJERCICIO INTEGER, PERIODO SMALLINT, NUM_POLIZ CHAR(5), TIPO_POLI CHAR(2), FECHA_POL TIMESTAMP, "
           "CONCEP_PO VARCHAR(120), NUM_PART INTEGER, DEBE_HABER CHAR(1), NUM_CTA CHAR(21), MONTOMOV DOUBLE PRECISION);\n";
}

// A client: a chart of three levels with a code that does not fit the
// company's format ("10A0101"), opening balances, two vouchers of 2025
// (January and February), one closing voucher (period 13) and one of the
// year before. The lines are stored out of their NUM_PART order; one is
// on an account the chart lacks and one on a code that fits no format.
std::string DatosCoi(const std::string& s) {
    auto cuenta = [&](const char* num, const char* nombre, int nivel, int nat) {
        return "INSERT INTO CUENTAS" + s + " VALUES ('" + num + "', '" + nombre + "', " + std::to_string(nivel) + ", " +
               std::to_string(nat) + ");\n";
    };
    auto saldo = [&](const char* num, const char* imp) {
        return "INSERT INTO SALDOS" + s + " VALUES ('" + num + "', " + imp + ");\n";
    };
    auto poliza = [&](int anio, int periodo, const char* fecha, const char* num, const char* tipo, const char* concepto) {
        return "INSERT INTO POLIZAS" + s + " VALUES (" + std::to_string(anio) + ", " + std::to_string(periodo) + ", '" +
               fecha + "', '" + num + "', '" + tipo + "', '" + concepto + "');\n";
    };
    auto linea = [&](int anio, int periodo, const char* fecha, const char* num, const char* tipo, int part,
                     const char* dh, const char* cta, const char* monto) {
        return "INSERT INTO AUXILIAR" + s + " VALUES (" + std::to_string(anio) + ", " + std::to_string(periodo) +
               ", '" + num + "', '" + tipo + "', '" + fecha + "', 'Mov " + num + "', " + std::to_string(part) + ", '" +
               dh + "', '" + cta + "', " + monto + ");\n";
    };
    return TablasCoi(s) + cuenta("1000000", "Activo", 1, 0) + cuenta("1000100", "Bancos", 2, 0) +
           cuenta("1000101", "Banco uno", 3, 0) + cuenta("10A0101", "Mal formada", 3, 0) +
           cuenta("4000000", "Ingresos", 1, 1) + cuenta("4000100", "Ventas", 2, 1) +
           cuenta("4000101", "Mostrador", 3, 1) + saldo("1000101", "1500.25") + saldo("4000101", "-1500.25") +
           saldo("9999999", "7") +
           poliza(2025, 1, "2025-01-10 00:00:00", "    1", "Ig", "Venta enero") +
           poliza(2025, 2, "2025-02-03 00:00:00", "    2", "Dr", "Venta febrero") +
           poliza(2025, 13, "2025-12-31 00:00:00", "    1", "Dr", "Cierre") +
           poliza(2024, 1, "2024-01-05 00:00:00", "    9", "Dr", "Otro ejercicio") +
           linea(2025, 1, "2025-01-10 00:00:00", "    1", "Ig", 2, "H", "4000101", "300.1") +
           linea(2025, 1, "2025-01-10 00:00:00", "    1", "Ig", 1, "D", "1000101", "300.1") +
           linea(2025, 1, "2025-01-10 00:00:00", "    1", "Ig", 3, "D", "10A0101", "5") +
           linea(2025, 2, "2025-02-03 00:00:00", "    2", "Dr", 1, "D", "1000102", "200") +
           linea(2025, 2, "2025-02-03 00:00:00", "    2", "Dr", 2, "H", "4000101", "200") +
           linea(2025, 13, "2025-12-31 00:00:00", "    1", "Dr", 1, "D", "4000101", "500") +
           linea(2025, 13, "2025-12-31 00:00:00", "    1", "Dr", 2, "H", "1000101", "500") +
           linea(2024, 1, "2024-01-05 00:00:00", "    9", "Dr", 1, "D", "1000101", "1");
}

class ImportacionCoiFirebird : public EntornoImportacion {
protected:
    void SetUp() override {
        if (BuscaIsql().empty()) GTEST_SKIP() << "isql-fb no está instalado (paquete firebird3.0-utils)";
        DatosEmpresaNueva d = EmpresaAcme();
        d.rellenaCeros = true;
        d.mesFinal = 12;
        AbreEmpresaNueva(s, ui, dir, d);
    }

    // Makes `archivo` in the test's folder with the tables named by `sufijo`.
    std::string CreaFdb(const std::string& archivo, const std::string& sufijo) {
        const std::string ruta = dir.texto() + archivo;
        const std::string guion = ruta + ".sql";
        std::ofstream(guion, std::ios::binary) << "SET SQL DIALECT 3;\nCREATE DATABASE '" << ruta
                                               << "' USER 'SYSDBA' PASSWORD 'x' DEFAULT CHARACTER SET NONE;\n"
                                               << DatosCoi(sufijo) << "COMMIT;\n";
        fs::create_directories(dir.ruta() / "bloqueos-isql");
        auto r = CorreProceso("FIREBIRD_LOCK='" + dir.texto() + "bloqueos-isql' '" + BuscaIsql() + "' -q -bail -i '" +
                              guion + "'");
        EXPECT_EQ(r.estado, 0) << r.salida;
        return ruta;
    }

    ResultadoImportacion Importa(const std::string& hastaMes, bool version8) {
        archivos.parametros["hasta-mes"] = hastaMes;
        if (version8) archivos.casillas.insert("ver8");
        ui.decisiones = {DecisionInconsistencias::Continuar};
        ImportadorCoiFirebird imp(OpcionesCoiFirebirdDe(archivos));
        return EjecutaImportacion(s, imp, archivos);
    }

    std::string filas(const std::string& sql) {
        return s.DbEmpresa->escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
    }
    std::string ultimoMensaje() const { return ui.mensajes.empty() ? "" : ui.mensajes.back().texto; }
};

TEST(NombresTablasCoi, SeFormanConElEjercicioYLosDigitosDeLaEmpresa) {
    auto t = NombresTablasCoi("/datos/coi/EMPRE03.FDB", 2024, false);
    EXPECT_EQ(t.cuentas, "CUENTAS2403");
    EXPECT_EQ(t.auxiliar, "AUXILIAR2403");
    EXPECT_EQ(NombresTablasCoi("/datos/coi/EMPRE03.FDB", 2024, true).polizas, "POLIZAS24");
    EXPECT_EQ(NombresTablasCoi("  /datos/EMPRE07  ", 2009, false).saldos, "SALDOS0907");
    EXPECT_THROW(NombresTablasCoi("/datos/coi/EMPRESA.FDB", 2024, false), ParametroInvalido);
    EXPECT_EQ(NombresTablasCoi("/datos/coi/EMPRESA.FDB", 2024, true).cuentas, "CUENTAS24");
}

TEST_F(ImportacionCoiFirebird, Coi7ConElCierreDelEjercicio) {
    archivos.fija("base-datos", CreaFdb("EMPRE01.FDB", "2501"));
    ASSERT_EQ(Importa("13", false), ResultadoImportacion::Terminada) << ultimoMensaje();

    // The badly formed code is left out; natures by NATURALEZA.
    EXPECT_EQ(filas("SELECT Cuenta || ':' || Naturaleza || ':' || Nivel AS f FROM Cuentas ORDER BY Cuenta"),
              "100:D:1 | 10001:D:2 | 1000101:D:3 | 400:A:1 | 40001:A:2 | 4000101:A:3");
    EXPECT_EQ(filas("SELECT Cuenta || '=' || SaldoInicial AS f FROM Balanzas WHERE Cuenta LIKE '_000101' "
                    "ORDER BY Cuenta"),
              "1000101=15002500 | 4000101=-15002500");

    // Only the year's vouchers; the closing one dated at the close and flagged.
    EXPECT_EQ(filas("SELECT Poliza || ':' || Tipo || ':' || Fecha || ':' || Poliza_Mes13 || ':' || Concepto AS f "
                    "FROM Polizas ORDER BY Fecha, Poliza_Mes13"),
              "1:Ig:2025-01-10:0:Venta enero | 2:Dr:2025-02-03:0:Venta febrero | 1:Dr:2025-12-31:-1:Cierre");
    // Lines in NUM_PART order (amounts in ten-thousandths); the unknown
    // account kept, the unformattable code dropped.
    EXPECT_EQ(filas("SELECT p.Poliza || p.Tipo || ':' || d.Partida || d.TipoMov || ':' || d.Cuenta || ':' || d.Importe "
                    "AS f FROM Polizas_Detalle d JOIN Polizas p ON p.IdPoliza = d.IdPoliza "
                    "ORDER BY p.Fecha, p.Poliza_Mes13, d.Partida"),
              "1Ig:1D:1000101:3001000 | 1Ig:2H:4000101:3001000 | 2Dr:1D:1000102:2000000 | 2Dr:2H:4000101:2000000 | "
              "1Dr:1D:4000101:5000000 | 1Dr:2H:1000101:5000000");
}

TEST_F(ImportacionCoiFirebird, HastaElMesElegido) {
    archivos.fija("base-datos", CreaFdb("EMPRE01.FDB", "2501"));
    ASSERT_EQ(Importa("01", false), ResultadoImportacion::Terminada) << ultimoMensaje();
    EXPECT_EQ(filas("SELECT Poliza || Tipo AS f FROM Polizas ORDER BY Poliza"), "1Ig");
}

TEST_F(ImportacionCoiFirebird, Coi8SinLosDigitosDeLaEmpresa) {
    const std::string ruta = CreaFdb("EMPRESA.FDB", "25");
    archivos.fija("base-datos", ruta);
    // As COI 7 the name lacks the company's digits: refused before reading.
    EXPECT_NE(Importa("13", false), ResultadoImportacion::Terminada);
    EXPECT_NE(ultimoMensaje().find("no termina en los dos dígitos de la empresa"), std::string::npos) << ultimoMensaje();

    ASSERT_EQ(Importa("13", true), ResultadoImportacion::Terminada) << ultimoMensaje();
    EXPECT_EQ(filas("SELECT COUNT(*) || ':' || SUM(Poliza_Mes13 <> 0) AS f FROM Polizas"), "3:1");
}

TEST_F(ImportacionCoiFirebird, TablasDeOtroEjercicioSeNombranEnElMensaje) {
    // The tables of 2024 in a company of 2025.
    archivos.fija("base-datos", CreaFdb("EMPRE01.FDB", "2401"));
    EXPECT_THROW(Importa("12", false), ProgramaTerminado);
    EXPECT_NE(ultimoMensaje().find("no contiene la tabla CUENTAS2501 del ejercicio 2025"), std::string::npos)
        << ultimoMensaje();
    EXPECT_EQ(s.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas").entero(), 0);
}

TEST_F(ImportacionCoiFirebird, LaLineaDeOrdenes) {
    const std::string ruta = CreaFdb("EMPRE01.FDB", "2501");
    const std::string base = dir.texto() + "base";
    auto corre = [&](const std::string& argumentos) {
        return CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' '" VELMORANT_CLI "' --base '" + base +
                            "' --empresa ACME --ejercicio 2025 " + argumentos);
    };
    auto ayuda = corre("importar --enlace 129 --help");
    for (const char* opcion : {"--base-datos", "--hasta-mes", "--ver8", "--usuario", "--contrasena"})
        EXPECT_NE(ayuda.salida.find(opcion), std::string::npos) << opcion << "\n" << ayuda.salida;
    EXPECT_EQ(corre("importar --enlace 129 --base-datos '" + ruta + "' --hasta-mes 14 --continuar").estado, 2);

    auto r = corre("importar --enlace 129 --base-datos '" + ruta + "' --hasta-mes 13 --usuario sysdba --continuar");
    ASSERT_EQ(r.estado, 0) << r.salida;
    auto balanza = corre("balanza --mes 12 --csv");
    EXPECT_NE(balanza.salida.find("100-01-01,Banco uno,3,"), std::string::npos) << balanza.salida;
}

}  // namespace
