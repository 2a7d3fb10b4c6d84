// The readers of links 56 and 57 over their tables as the loaders leave
// them in memory (texts, integers, amounts in ten-thousandths, ISO dates),
// made here directly in SQLite: nothing on Debian writes an Access file, and
// the readers do not know which file a table came from.

#include <gtest/gtest.h>

#include "accounts/EmpresaPrueba.h"
#include "importers/quorvel/ImportadorQuorvel.h"
#include "platform/ErrorLectura.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

class LecturaQuorvel : public ::testing::Test {
protected:
    EmpresaPrueba e;
    TablasQuorvel t;

    void SetUp() override {
        e.s.EjercicioActual = 2024;
        t.rutas = {{"B9CATCUE", "B9CATCUE.DBF"}, {"B2UNIPOL", "B2UNIPOL.DBF"}, {"B9SALANT", "B9SALANT.DBF"}};
        t.memoria.ejecutaScript(
            "CREATE TABLE B2UNIPOL (CPOTIPO TEXT, CPONUMERO TEXT, CUENUMERO TEXT, CPOCONCEP TEXT, CPOREFERE1 TEXT, "
            "CPOREFERE2 TEXT, CPOMOVIM INTEGER, CPOIMPORTE INTEGER, CPOFECHA TEXT);");
        for (const char* cuenta : {"1000101", "1000102", "2000101"}) e.Tmp(cuenta);
        CreaAjYRclTmp(e.s);
    }

    void Linea(const std::string& tipo, const std::string& numero, const std::string& cuenta, int movim,
               const std::string& importe, const std::string& fecha, const std::string& concepto = "c") {
        t.memoria.ejecuta("INSERT INTO B2UNIPOL VALUES (?, ?, ?, ?, 'ref uno', 'ref dos', ?, ?, ?)", tipo, numero,
                          cuenta, concepto, movim, Importe(importe), fecha);
    }

    std::string Filas(const std::string& sql) {
        return e.db().escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
    }
};

}  // namespace

TEST_F(LecturaQuorvel, UnAjusteYUnaReclasificacionDelMismoNumeroSonDosGrupos) {
    Linea("AJ", "1", "1000102", 1, "50", "2024-12-31", "Ajuste de bancos");
    Linea("AJ", "1", "2000101", 2, "50", "2024-12-31");
    Linea("RC", "1", "2000101", 1, "20", "2024-12-31", "Reclasificación");
    Linea("RC", "1", "1000101", 2, "20", "2024-12-31");
    Linea("AJ", "7", "9990101", 1, "5", "2024-06-30");
    Linea("AJ", "7", "9990101", 2, "5", "2024-06-30");
    Linea("AJ", "8", "1000101", 1, "9", "2023-12-31");  // another year
    Linea("Dr", "1", "1000101", 1, "3", "2024-01-10");  // a voucher, not an adjustment

    DestinoTmp d(e.s, ImportadorQuorvel5({}).reglasDestino());
    ImportaAjustesQuorvel(e.s, d, t);

    // Each type numbers its entries from 1; the lines keep their sides as "C"
    // (debit) and "A" (credit).
    BaseDatos almacen(RutaAlmacen(e.s, kAjYRclTmp));
    auto filas = [&](const std::string& sql) {
        return almacen.escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
    };
    EXPECT_EQ(filas("SELECT Tipo || IdAjRc || '/' || AjRc || ' ' || Cuenta || TipoMov || Importe || ' ' || Concepto "
                    "AS f FROM AjYRcl_Tmp ORDER BY rowid"),
              "AJ1/1 1000102C500000 Ajuste de bancos | AJ1/1 2000101A500000 c | AJ2/7 9990101C50000 c | "
              "AJ2/7 9990101A50000 c | RC1/1 2000101C200000 Reclasificación | RC1/1 1000101A200000 c");
    EXPECT_EQ(almacen.escalar("SELECT COUNT(*) FROM AjYRcl_Tmp WHERE Estatus = -1").entero(), 6);
    EXPECT_EQ(e.Bitacora(), (std::vector<Inconsistencia>{
                                {"La Cuenta 9990101 no existe en el catálogo.", "Pólizas", "O", "9990101"}}));
}

TEST_F(LecturaQuorvel, LasPolizasHastaElMesPorTipoYNumeroOPorFecha) {
    Linea("Dr", "1", "100-01-01", 1, "100", "2024-01-10", "Renta");
    Linea("Dr", "1", "2000101", 2, "100", "2024-01-12");  // the same voucher, another date
    Linea("Ig", "5", "1000102", 1, "80.5", "2024-02-01", "Cobro");
    Linea("Ig", "5", "9990101", 0, "80.5", "2024-02-01");
    Linea("Dr", "2", "1000101", 1, "1", "2024-03-05");  // after the month asked for
    Linea("Dr", "3", "1000101", 1, "1", "2023-12-31");  // another year
    Linea("AJ", "1", "1000101", 1, "1", "2024-01-31");
    Linea("rc", "1", "1000101", 1, "1", "2024-01-31");  // adjustments whatever the case

    struct Caso {
        bool fechaDiferente;
        const char* polizas;
        const char* lineas;
    } casos[] = {
        {false, "Dr 1 2024-01-10 Renta | Ig 5 2024-02-01 Cobro",
         "1.1 1000101D1000000 ref uno ref dos | 1.2 2000101H1000000 ref uno ref dos | "
         "5.1 1000102D805000 ref uno ref dos | 5.2 9990101H805000 ref uno ref dos"},
        {true, "Dr 1 2024-01-10 Renta | Dr 1 2024-01-12 c | Ig 5 2024-02-01 Cobro",
         "1.1 1000101D1000000 ref uno ref dos | 1.1 2000101H1000000 ref uno ref dos | "
         "5.1 1000102D805000 ref uno ref dos | 5.2 9990101H805000 ref uno ref dos"},
    };
    for (const auto& c : casos) {
        SCOPED_TRACE(c.fechaDiferente);
        CreaPolizasTmp(e.s);
        CreaPolizasDetalleTmp(e.s);
        ASSERT_TRUE(AbrePolizasTmp(e.s));
        e.VaciaBitacora();
        DestinoTmp d(e.s, ImportadorQuorvel4({}).reglasDestino());
        ImportaPolizasQuorvel(e.s, d, t, {.hastaMes = 2, .polizaFechaDiferente = c.fechaDiferente});
        EXPECT_EQ(Filas("SELECT Tipo || ' ' || Poliza || ' ' || Fecha || ' ' || Concepto AS f FROM Polizas_Tmp "
                        "ORDER BY IdPoliza"),
                  c.polizas);
        EXPECT_EQ(Filas("SELECT p.Poliza || '.' || d.Partida || ' ' || d.Cuenta || d.TipoMov || d.Importe || ' ' || "
                        "d.Referencia AS f FROM Polizas_Detalle_Tmp d JOIN Polizas_Tmp p ON p.IdPoliza = d.IdPoliza "
                        "ORDER BY d.rowid"),
                  c.lineas);
        EXPECT_EQ(e.Bitacora(), (std::vector<Inconsistencia>{
                                    {"La Cuenta 9990101 no existe en el catálogo.", "Pólizas", "O", "9990101"}}));
    }
}

TEST_F(LecturaQuorvel, UnImporteQueNoEsNumeroDetieneLaLecturaNombrandoTablaYFila) {
    Linea("Dr", "1", "1000101", 1, "1", "2024-01-10");
    t.memoria.ejecuta(
        "INSERT INTO B2UNIPOL VALUES ('Dr', '1', '2000101', 'c', '', '', 2, '12x', '2024-01-10')");
    DestinoTmp d(e.s, ImportadorQuorvel4({}).reglasDestino());
    try {
        ImportaPolizasQuorvel(e.s, d, t, {.hastaMes = 12});
        ADD_FAILURE() << "se leyó";
    } catch (const ErrorLectura& x) {
        EXPECT_EQ(std::string(x.what()),
                  "Error al leer la tabla B2UNIPOL del archivo B2UNIPOL.DBF, fila 2: el campo CPOIMPORTE tiene "
                  "\"12x\", que no es un importe.");
        EXPECT_EQ(x.linea(), 2);
    }
}

TEST_F(LecturaQuorvel, ElCatalogoYLosSaldosDelAnioAnterior) {
    t.memoria.ejecutaScript(
        "CREATE TABLE B9CATCUE (CUENUMERO TEXT, CUEDESCRI TEXT, CUECONTROL TEXT, CUENIVEL INTEGER, CUENATUR TEXT, "
        "CUECLASE TEXT, CUESALINI INTEGER);"
        "INSERT INTO B9CATCUE VALUES ('1000101', ' Banco uno ', '1000100', 3, 'D', 'D', 15005000);"
        "INSERT INTO B9CATCUE VALUES ('1000100', 'Bancos', '1000000', 2, 'D', 'A', NULL);"
        "INSERT INTO B9CATCUE VALUES ('1000000', 'Activo', NULL, NULL, 'D', 'a', 0);"
        "INSERT INTO B9CATCUE VALUES (NULL, 'Sin código', NULL, 1, 'D', 'D', 0);"
        "CREATE TABLE B9SALANT (CUENUMERO TEXT, CUESALDO12 INTEGER, CUENIVEL INTEGER);"
        "INSERT INTO B9SALANT VALUES ('1000101', 12000000, 3);"
        "INSERT INTO B9SALANT VALUES ('5000000', NULL, 1);");
    e.db().ejecuta("DELETE FROM CuentasTmp.Cuentas");
    DestinoTmp d(e.s, ImportadorQuorvel4({}).reglasDestino());
    ImportaCatalogoQuorvel(e.s, d, t);
    // Codes of the whole length are cut to the levels they use, the parent too.
    EXPECT_EQ(Filas("SELECT Cuenta || ' ' || CuentaSinSeparadores || ' ' || Descripcion || ' ' || "
                    "IFNULL(CuentaAcumulativa, '-') || ' ' || Nivel || Tipo || Naturaleza || ' ' || IFNULL(Saldo, '-') "
                    "AS f FROM CuentasTmp.Cuentas ORDER BY rowid"),
                  "100 100 Activo - 0AD 0 | 100-01 10001 Bancos 100 2AD 0 | "
                  "100-01-01 1000101 Banco uno 10001 3DD 15005000");

    auto saldos = ImportaSaldosAnterioresQuorvel(e.s, d, t);
    EXPECT_EQ(saldos, (std::vector<std::pair<std::string, Moneda>>{{"1000101", Moneda::desdeEntero(1200)},
                                                                    {"500", Moneda()}}));
    EXPECT_EQ(e.CampoTmp("500", "Cuenta").texto(), "500");
    EXPECT_EQ(e.Bitacora(),
              (std::vector<Inconsistencia>{{"La Cuenta 500 no existe, contiene el saldo final del año anterior y será "
                                            "agregará al catalogo actual",
                                            "Catálogo de Cuentas", "O", "500"}}));
}
