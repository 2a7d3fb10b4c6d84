// Whole runs through links 56 and 57: the dBase tables of Quorvel 4.0
// written by python3-dbf, the same tables given to link 57 straight in
// memory, and the command line as a user runs it. What they check is what
// the adjustments and reclassifications leave in the company: their tables,
// the chart's stage balances with them, and what a re-import changes.

#include <gtest/gtest.h>

#include "importers/quorvel/ImportadorQuorvel.h"
#include "pipeline/Importacion.h"
#include "platform/TablasDbfPrueba.h"
#include "session/Inicio.h"
#include "store/AlmacenesTemporales.h"
#include "store/AltaBase.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

// The chart of the client, codes of the whole length: three levels of
// banks, suppliers and sales, and an account whose parent is not in it.
const char* const kCatalogo = R"(
[('1000000', 'Activo', '', 1, 'D', 'A', D(0)),
 ('1000100', 'Bancos', '1000000', 2, 'D', 'A', D(0)),
 ('1000101', 'Banco uno', '1000100', 3, 'D', 'D', D('1000')),
 ('1000102', 'Banco dos', '1000100', 3, 'D', 'D', D(0)),
 ('2000000', 'Pasivo', '', 1, 'A', 'A', D(0)),
 ('2000100', 'Proveedores', '2000000', 2, 'A', 'A', D(0)),
 ('2000101', 'Proveedor uno', '2000100', 3, 'A', 'D', D('-1000')),
 ('3000101', 'Capital suelto', '3000100', 3, 'A', 'D', D(0)),
 ('4000000', 'Ingresos', '', 1, 'A', 'A', D(0)),
 ('4000100', 'Ventas', '4000000', 2, 'A', 'A', D(0)),
 ('4000101', 'Mostrador', '4000100', 3, 'A', 'D', D(0))])";

// Two vouchers of January and February.
const char* const kPolizas = R"(
[('Ig', '1', '1000101', 'Venta uno', 'F-1', '', 1, D('300'), d(2025, 1, 10)),
 ('Ig', '1', '4000101', 'Venta uno', 'F-1', '', 2, D('300'), d(2025, 1, 10)),
 ('Dr', '2', '1000102', 'Traspaso', '', '', 1, D('200'), d(2025, 2, 3)),
 ('Dr', '2', '4000101', 'Traspaso', '', '', 2, D('200'), d(2025, 2, 3))])";

std::string Linea(const std::string& tipo, const std::string& numero, const std::string& cuenta, int movim,
                  const std::string& importe) {
    return "('" + tipo + "', '" + numero + "', '" + cuenta + "', '" + tipo + " " + numero + "', '', '', " +
           std::to_string(movim) + ", D('" + importe + "'), d(2025, 12, 31))";
}

class ImportacionQuorvel : public EntornoImportacion {
protected:
    void SetUp() override {
        DatosEmpresaNueva d = EmpresaAcme();
        d.rellenaCeros = true;
        d.mesFinal = 12;
        AbreEmpresaNueva(s, ui, dir, d);
        archivos.catalogo = dir.texto() + "B9CATCUE.DBF";
        archivos.fija("polizas", dir.texto() + "B2UNIPOL.DBF");
        archivos.parametros["hasta-mes"] = "12";
    }

    // Writes the three tables; `ajustes`, the "AJ" and "RC" lines after the
    // vouchers; `saldosAnteriores`, the rows of B9SALANT (none: no file).
    void Tablas(const std::vector<std::string>& ajustes, const std::string& saldosAnteriores = "") {
        std::string lineas;
        for (const auto& l : ajustes) lineas += ", " + l;
        std::string guion = std::string(R"(
d = datetime.date
D = Decimal
def tabla(nombre, campos, filas):
    t = dbf.Table(nombre, campos, dbf_type='db3', codepage='cp1252')
    t.open(dbf.READ_WRITE)
    for f in filas:
        t.append(f)
    t.close()
tabla('B9CATCUE.DBF', 'CUENUMERO C(20); CUEDESCRI C(40); CUECONTROL C(20); CUENIVEL N(2,0); CUENATUR C(1); '
      'CUECLASE C(1); CUESALINI N(16,2)', )") + kCatalogo + R"()
tabla('B2UNIPOL.DBF', 'CPOTIPO C(2); CPONUMERO C(8); CUENUMERO C(20); CPOCONCEP C(40); CPOREFERE1 C(20); '
      'CPOREFERE2 C(20); CPOMOVIM N(1,0); CPOIMPORTE N(16,2); CPOFECHA D', )" +
                            std::string(kPolizas).substr(0, std::string(kPolizas).size() - 1) + lineas + "])\n";
        if (!saldosAnteriores.empty())
            guion += "tabla('B9SALANT.DBF', 'CUENUMERO C(20); CUESALDO12 N(16,2); CUENIVEL N(2,0)', " +
                     saldosAnteriores + ")\n";
        ASSERT_TRUE(EscribeConPython(dir, guion));
    }

    ResultadoImportacion Importa() {
        ui.decisiones = {DecisionInconsistencias::Continuar};
        ImportadorQuorvel4 imp(OpcionesDe(archivos));
        return EjecutaImportacion(s, imp, archivos);
    }

    Valor escalar(const std::string& sql) { return s.DbEmpresa->escalar(sql); }
    std::string filas(const std::string& sql) {
        return escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
    }
    // The stage balances of an account: final, adjustments' debit and
    // credit, reclassifications' debit and credit, adjusted, audited.
    std::string etapa(const std::string& cuenta) {
        Consulta c = s.DbEmpresa->consulta(
            "SELECT Saldo_Final, Ajuste_Debe, Ajuste_Haber, RCL_Debe, RCL_Haber, Saldo_Ajustado, Saldo_Final_Aud "
            "FROM Cuentas WHERE Cuenta = ?",
            cuenta);
        std::string r;
        for (int i = 0; i < c.numCampos(); ++i) r += (i ? " " : "") + c.campo(i).moneda().texto();
        return r;
    }
};

}  // namespace

TEST_F(ImportacionQuorvel, AjustesYReclasificacionesLlegaALaCuentaMayorYUnaReimportacionLosCambia) {
    Tablas({Linea("AJ", "1", "1000102", 1, "50"), Linea("AJ", "1", "4000101", 2, "50"),
            Linea("RC", "1", "2000101", 1, "20"), Linea("RC", "1", "1000101", 2, "20"),
            Linea("AJ", "2", "3000101", 1, "10"), Linea("AJ", "2", "1000101", 2, "10")},
           "[('1000101', D('900'), 3), ('5000000', D('5'), 1)]");
    archivos.saldosAnioAnterior = dir.texto() + "B9SALANT.DBF";
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << (ui.mensajes.empty() ? "" : ui.mensajes.back().texto);

    EXPECT_EQ(filas("SELECT IdAjuste || '/' || Ajuste || ' ' || Concepto || ' ' || Estatus || Contabilizado AS f "
                    "FROM Ajustes ORDER BY IdAjuste"),
              "1/1 AJ 1 -10 | 2/2 AJ 2 -10");
    EXPECT_EQ(filas("SELECT IdAjuste || ' ' || Cuenta || Tipo || Importe AS f FROM Ajustes_Detalle ORDER BY rowid"),
              "1 1000102C500000 | 1 4000101A500000 | 2 3000101C100000 | 2 1000101A100000");
    EXPECT_EQ(filas("SELECT IdReclasificacion || '/' || Reclasificacion || ' ' || Concepto AS f FROM Reclasificaciones"),
              "1/1 RC 1");
    EXPECT_EQ(filas("SELECT IdReclasificacion || ' ' || Cuenta || Tipo || Importe AS f FROM Reclasificaciones_Detalle "
                    "ORDER BY rowid"),
              "1 2000101C200000 | 1 1000101A200000");

    // The stage is the final review: the balance at December, then each
    // entry's amounts on its account and every account above it.
    EXPECT_EQ(etapa("1000101"), "1300 0 10 0 20 1290 1270");
    EXPECT_EQ(etapa("1000102"), "200 50 0 0 0 250 250");
    EXPECT_EQ(etapa("10001"), "1500 50 10 0 20 1540 1520");
    EXPECT_EQ(etapa("100"), "1500 50 10 0 20 1540 1520");
    EXPECT_EQ(etapa("2000101"), "-1000 0 0 20 0 -1000 -980");
    EXPECT_EQ(etapa("200"), "-1000 0 0 20 0 -1000 -980");
    EXPECT_EQ(etapa("400"), "-500 0 50 0 0 -550 -550");
    EXPECT_EQ(etapa("3000101"), "0 10 0 0 0 10 10");
    // The trial balance took the same entries in the same commit.
    EXPECT_EQ(escalar("SELECT Saldo_Ajustado || ' ' || Saldo_Final_Aud FROM Balanzas WHERE Cuenta = '1000101'").texto(),
              "12900000 12700000");
    // The prior year's balances; the voucher types of the older data.
    EXPECT_EQ(escalar("SELECT Saldo_Anterior_Final FROM Cuentas WHERE Cuenta = '1000101'").moneda().texto(), "900");
    EXPECT_EQ(escalar("SELECT Saldo_Anterior_Final FROM Cuentas WHERE Cuenta = '500'").moneda().texto(), "5");
    EXPECT_EQ(filas("SELECT Poliza || ':' || Tipo AS f FROM Polizas ORDER BY Poliza"), "1:2 | 2:1");
    {
        BaseDatos log(RutaAlmacen(s, kInconsisImpTmp));
        EXPECT_EQ(log.escalar("SELECT group_concat(FuenteError || ' | ' || ClasifError || ' | ' || Cuenta, '\n') FROM "
                              "InconsisImpTmp WHERE Referencia = 'No se encontró la cuenta a la que acumula la cuenta'")
                      .texto(),
                  "Catálogo de Cuentas | O | 3000101");
    }

    // The client changes the adjustment and drops the rest.
    Tablas({Linea("AJ", "1", "1000102", 1, "70"), Linea("AJ", "1", "4000101", 2, "70")});
    archivos.saldosAnioAnterior.clear();
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << (ui.mensajes.empty() ? "" : ui.mensajes.back().texto);
    EXPECT_EQ(filas("SELECT IdAjuste || ' ' || Cuenta || Tipo || Importe AS f FROM Ajustes_Detalle ORDER BY rowid"),
              "1 1000102C700000 | 1 4000101A700000");
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Reclasificaciones").entero() +
                  escalar("SELECT COUNT(*) FROM Reclasificaciones_Detalle").entero(),
              0);
    EXPECT_EQ(etapa("1000101"), "1300 0 0 0 0 1300 1300");
    EXPECT_EQ(etapa("100"), "1500 70 0 0 0 1570 1570");
    EXPECT_EQ(etapa("400"), "-500 0 70 0 0 -570 -570");
}

// Link 57 reads the same tables from one database; here they are given in
// memory, as its loader leaves them.
class Quorvel5EnMemoria : public ImportadorQuorvel5 {
public:
    using ImportadorQuorvel5::ImportadorQuorvel5;
    std::string sql;

protected:
    void cargaTabla(TablasQuorvel& t, const ArchivosImportacion&, const std::string& tabla) override {
        if (t.memoria.existeTabla(tabla)) return;
        t.memoria.ejecutaScript(sql);
        t.rutas[tabla] = "QRV001.MDB";
    }
};

TEST_F(ImportacionQuorvel, UnAnioSinAjustesVaciaLasCuatroTablas) {
    // What an earlier import left.
    s.DbEmpresa->ejecutaScript(
        "INSERT INTO Ajustes VALUES (1, 1, 'viejo', -1, 0);"
        "INSERT INTO Ajustes_Detalle VALUES (1, '1000101', 'C', 10000);"
        "INSERT INTO Reclasificaciones VALUES (1, 1, 'viejo', -1, 0);"
        "INSERT INTO Reclasificaciones_Detalle VALUES (1, '1000101', 'A', 10000);");
    Quorvel5EnMemoria imp({.hastaMes = 13});
    imp.sql =
        "CREATE TABLE B9CATCUE (CUENUMERO TEXT, CUEDESCRI TEXT, CUECONTROL TEXT, CUENIVEL INTEGER, CUENATUR TEXT, "
        "CUECLASE TEXT, CUESALINI INTEGER);"
        "INSERT INTO B9CATCUE VALUES ('1000000', 'Activo', NULL, 1, 'D', 'A', 0);"
        "INSERT INTO B9CATCUE VALUES ('1000101', 'Caja', '1000000', 3, 'D', 'D', 10000000);"
        "INSERT INTO B9CATCUE VALUES ('1000102', 'Banco', '1000000', 3, 'D', 'D', -10000000);"
        "CREATE TABLE B2UNIPOL (CPOTIPO TEXT, CPONUMERO TEXT, CUENUMERO TEXT, CPOCONCEP TEXT, CPOREFERE1 TEXT, "
        "CPOREFERE2 TEXT, CPOMOVIM INTEGER, CPOIMPORTE INTEGER, CPOFECHA TEXT);"
        "INSERT INTO B2UNIPOL VALUES ('Dr', '1', '1000101', 'Depósito', '', '', 2, 4000000, '2025-03-01');"
        "INSERT INTO B2UNIPOL VALUES ('Dr', '1', '1000102', 'Depósito', '', '', 1, 4000000, '2025-03-01');";
    ArchivosImportacion a;
    a.fija("base-datos", dir.texto() + "QRV001.MDB");
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaImportacion(s, imp, a), ResultadoImportacion::Terminada) << ui.mensajes.back().texto;
    for (const char* tabla : {"Ajustes", "Ajustes_Detalle", "Reclasificaciones", "Reclasificaciones_Detalle"})
        EXPECT_EQ(escalar(std::string("SELECT COUNT(*) FROM ") + tabla).entero(), 0) << tabla;
    // Without entries the adjusted balances are the stage's own.
    EXPECT_EQ(etapa("1000101"), "600 0 0 0 0 600 600");
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Cuentas WHERE Saldo_Ajustado IS NOT Saldo_Final OR "
                      "Saldo_Final_Aud IS NOT Saldo_Final")
                  .entero(),
              0);
}

TEST_F(ImportacionQuorvel, LaLineaDeOrdenes) {
    Tablas({Linea("AJ", "1", "1000102", 1, "50"), Linea("AJ", "1", "4000101", 2, "50"),
            Linea("RC", "1", "2000101", 1, "20"), Linea("RC", "1", "1000101", 2, "20")});
    const std::string base = dir.texto() + "base";
    auto corre = [&](const std::string& argumentos) {
        return CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' '" VELMORANT_CLI "' --base '" + base +
                            "' --empresa ACME --ejercicio 2025 " + argumentos);
    };
    auto ayuda = corre("importar --enlace 56 --help");
    for (const char* opcion : {"--catalogo", "--polizas", "--saldos-anterior", "--hasta-mes", "--poliza-fecha-diferente"})
        EXPECT_NE(ayuda.salida.find(opcion), std::string::npos) << opcion << "\n" << ayuda.salida;
    EXPECT_NE(corre("importar --enlace 57 --help").salida.find("--base-datos"), std::string::npos);
    auto softex = corre("importar --enlace 20 --base-datos '" + archivos.catalogo + "' --cancelar");
    EXPECT_EQ(softex.estado, 3) << softex.salida;
    EXPECT_NE(softex.salida.find("No se pudo abrir la base de datos " + archivos.catalogo + "."), std::string::npos)
        << softex.salida;
    auto sinArchivo = corre("importar --enlace 20");
    EXPECT_EQ(sinArchivo.estado, 1) << sinArchivo.salida;
    EXPECT_NE(sinArchivo.salida.find("Indique la ruta del archivo CATCTAS.DBF para poder continuar."), std::string::npos)
        << sinArchivo.salida;

    const std::string archivosCli =
        "importar --enlace 56 --catalogo '" + archivos.catalogo + "' --polizas '" + archivos.ruta("polizas") + "'";
    auto sinMes = corre(archivosCli + " --continuar");
    EXPECT_EQ(sinMes.estado, 1) << sinMes.salida;
    EXPECT_NE(sinMes.salida.find("Especifique por favor el mes hasta el cual deberá importarse el detalle de pólizas"),
              std::string::npos)
        << sinMes.salida;
    EXPECT_EQ(corre(archivosCli + " --hasta-mes 14 --continuar").estado, 2);

    auto r = corre(archivosCli + " --hasta-mes 12 --poliza-fecha-diferente --continuar");
    ASSERT_EQ(r.estado, 0) << r.salida;
    auto lista = corre("ajustes");
    for (const char* parte : {"Ajustes: 1", "Ajuste 1  AJ 1", "100-01-02", "Banco dos", "$50.00", "Reclasificaciones: 1",
                              "Reclasificación 1  RC 1", "200-01-01"})
        EXPECT_NE(lista.salida.find(parte), std::string::npos) << parte << "\n" << lista.salida;
    auto balanza = corre("balanza --mes 12 --csv");
    EXPECT_NE(balanza.salida.find("SaldoFinal,SaldoAjustado,SaldoFinalAud\n"), std::string::npos) << balanza.salida;
    EXPECT_NE(balanza.salida.find("100-01-01,Banco uno,3,1000,0,0,1300,1300,1280\n"), std::string::npos)
        << balanza.salida;
    EXPECT_NE(balanza.salida.find("100-01-02,Banco dos,3,0,0,0,200,250,250\n"), std::string::npos) << balanza.salida;
}

// The first run turned the older data's letter types into numbers; the same
// data read again must meet them as the same vouchers, not as every voucher
// dropped and every voucher new.
TEST_F(ImportacionQuorvel, UnaReimportacionSinCambiosNoReportaPolizas) {
    Tablas({});
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << (ui.mensajes.empty() ? "" : ui.mensajes.back().texto);
    ASSERT_EQ(filas("SELECT Poliza || ':' || Tipo AS f FROM Polizas ORDER BY Poliza"), "1:2 | 2:1");
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << (ui.mensajes.empty() ? "" : ui.mensajes.back().texto);
    BaseDatos log(RutaAlmacen(s, kInconsisImpTmp));
    EXPECT_EQ(log.escalar("SELECT COUNT(*) FROM InconsisImpTmp WHERE Referencia IN "
                          "('La Póliza se dio de baja.', 'Póliza nueva.', 'La Póliza cambió en :') OR "
                          "Referencia LIKE 'Partida:%'")
                  .entero(),
              0);
    EXPECT_EQ(filas("SELECT Poliza || ':' || Tipo AS f FROM Polizas ORDER BY Poliza"), "1:2 | 2:1");
}
