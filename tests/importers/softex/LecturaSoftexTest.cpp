// The readers of link 20 over the Softex tables as the Access loader leaves
// them in memory, made here directly in SQLite (nothing on Debian writes an
// Access file): the code of three fields, the date of F_EMISION, the lines
// of each head by number, type and the very date text.

#include <gtest/gtest.h>

#include "accounts/EmpresaPrueba.h"
#include "importers/softex/ImportadorSoftex.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

std::string Filas(EmpresaPrueba& e, const std::string& sql) {
    return e.db().escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
}

}  // namespace

TEST(LecturaSoftex, ElCatalogoDeTresCamposCortadoASuNivel) {
    EmpresaPrueba e;
    BaseDatos tablas;
    tablas.ejecutaScript(
        "CREATE TABLE Cuentas (Cve_Cuenta TEXT, Cve_SCuenta TEXT, Cve_SSCuenta TEXT, Nivel TEXT, Descripcion TEXT, "
        "Tipo_Cta TEXT, Saldo INTEGER);"
        "INSERT INTO Cuentas VALUES ('100', '01', '01 ', ' 3', ' Caja chica ', 'D', 12345000);"
        "INSERT INTO Cuentas VALUES ('100', NULL, NULL, '1', 'Activo', 'D', NULL);"
        "INSERT INTO Cuentas VALUES ('200', '01', '00', '2', 'Proveedores', 'A', -5000000);"
        "INSERT INTO Cuentas VALUES (NULL, NULL, NULL, '3', 'Sin código', 'D', 0);");
    DestinoTmp d(e.s);
    ImportaCatalogoSoftex(e.s, d, tablas, "EMPRESA.MDB");
    EXPECT_EQ(Filas(e, "SELECT Cuenta || ' ' || CuentaSinSeparadores || ' ' || Descripcion || ' ' || Naturaleza || "
                       "' ' || Saldo AS f FROM CuentasTmp.Cuentas ORDER BY rowid"),
              "100-01-01 1000101 Caja chica D 12345000 | 100 100 Activo D 0 | 200-01 20001 Proveedores A -5000000");
    EXPECT_TRUE(e.guion.mensajes.empty());
    EXPECT_TRUE(e.Bitacora().empty());
}

TEST(LecturaSoftex, CadaEncabezadoEsUnaPolizaConSusPartidasYSinEllasTambien) {
    EmpresaPrueba e;
    for (const char* cuenta : {"1000101", "10001", "20001"}) e.Tmp(cuenta);
    BaseDatos tablas;
    tablas.ejecutaScript(
        "CREATE TABLE PolizasEnc (NO_POL INTEGER, CVE_TIPO TEXT, Concepto TEXT, CONCEPT2 TEXT, F_EMISION TEXT);"
        "INSERT INTO PolizasEnc VALUES (12, 'Dr', 'Pago de re', 'nta ', '20240115');"
        "INSERT INTO PolizasEnc VALUES (3, 'Ig', 'Sin partidas', NULL, '20240110');"
        "INSERT INTO PolizasEnc VALUES (12, 'Dr', 'Otra del mismo número', '', '20240220');"
        "CREATE TABLE PolizasPar (NO_POL INTEGER, CVE_TIPO TEXT, FECHA TEXT, CVE_CTA TEXT, Concepto TEXT, D_H TEXT, "
        "Importe INTEGER);"
        "INSERT INTO PolizasPar VALUES (12, 'Dr', '20240115', '1000101', ' Renta enero ', 'D', 50000000);"
        "INSERT INTO PolizasPar VALUES (12, 'Dr', '20240220', '1000100', 'Cargo', 'D', 10000);"
        "INSERT INTO PolizasPar VALUES (12, 'Dr', '20240115', '2000100', 'Renta enero', 'H', 50000000);"
        "INSERT INTO PolizasPar VALUES (12, 'Dr', '20240220', '   ', 'Sin cuenta', 'H', 10000);"
        "INSERT INTO PolizasPar VALUES (12, 'Dr', '20240220', '9990101', 'Desconocida', 'H', NULL);"
        "INSERT INTO PolizasPar VALUES (12, 'Dr', '20240116', '1000101', 'Fecha de ningún encabezado', 'D', 1);");
    DestinoTmp d(e.s);
    ImportaPolizasSoftex(e.s, d, tablas, "EMPRESA.MDB");

    // By date of issue; the voucher without lines stays.
    EXPECT_EQ(Filas(e, "SELECT Tipo || ' ' || Poliza || ' ' || Fecha || ' ' || Concepto AS f FROM Polizas_Tmp "
                       "ORDER BY IdPoliza"),
              "Ig 3 2024-01-10 Sin partidas | Dr 12 2024-01-15 Pago de renta | Dr 12 2024-02-20 Otra del mismo número");
    // Lines cut to the levels they use, numbered from 1 in each voucher; the
    // one without account is left out.
    EXPECT_EQ(Filas(e, "SELECT p.Fecha || '.' || d.Partida || ' ' || d.Cuenta || d.TipoMov || d.Importe || ' ' || "
                       "d.Referencia AS f FROM Polizas_Detalle_Tmp d JOIN Polizas_Tmp p ON p.IdPoliza = d.IdPoliza "
                       "ORDER BY d.IdPoliza, d.Partida"),
              "2024-01-15.1 1000101D50000000 Renta enero | 2024-01-15.2 20001H50000000 Renta enero | "
              "2024-02-20.1 10001D10000 Cargo | 2024-02-20.2 9990101H0 Desconocida");
    EXPECT_EQ(e.Bitacora(),
              (std::vector<Inconsistencia>{
                  {"No se registró  el movimiento H ,$0.00 de la Póliza, ya que la Cuenta no existe.", "Pólizas", "O",
                   "9990101"}}));
    EXPECT_EQ(e.barra.etiquetas.back(), "Importando Póliza: 12 Tipo: Dr Fecha: 20/02/2024");
}
