#include <gtest/gtest.h>

#include "platform/ErrorLectura.h"
#include "platform/TablasDbfPrueba.h"
#include "platform/fuentes/CargaTablas.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

std::string Tipos(BaseDatos& db, const std::string& tabla, const std::string& columna) {
    std::string r;
    auto c = db.consulta("SELECT DISTINCT typeof(" + columna + ") AS t FROM " + tabla + " ORDER BY 1");
    for (; !c.eof(); c.siguiente()) r += (r.empty() ? "" : ",") + c["t"].texto();
    return r;
}

}  // namespace

TEST(CargaTablaDbf, LaConsultaDelLectorCorreComoEstaEscrita) {
    CarpetaTemporal c;
    ASSERT_TRUE(EscribeConPython(c, R"(
t = dbf.Table('MOVS.DBF', 'EJE N(4,0); PERIODO N(2,0); FECHA D; CARGOS N(16,2); ABONOS N(16,2); CONCEPTO C(20); ACTIVO L',
              dbf_type='db3', codepage='cp1252')
t.open(dbf.READ_WRITE)
d = datetime.date
t.append((2023, 1, d(2023, 1, 10), Decimal('100.10'), Decimal('0'), 'Venta', True))
t.append((2023, 1, d(2023, 1, 31), Decimal('0.20'), Decimal('5.50'), 'Compra de café', False))
t.append((2023, 1, d(2023, 1, 20), Decimal('50000'), Decimal('0'), 'Borrada', True))
t.append((2023, 2, d(2023, 2, 15), Decimal('1000000.01'), Decimal('0'), 'Cobro', True))
t.append((2023, 3, d(2023, 3, 1), Decimal('7'), Decimal('0'), 'Marzo', True))
t.append((2022, 1, d(2022, 1, 5), Decimal('999'), Decimal('0'), 'Otro año', True))
t.append((2023, 2, None, Decimal('3'), Decimal('0'), 'Sin fecha', True))
dbf.delete(t[2])
t.close()
)"));
    BaseDatos memoria;
    EXPECT_EQ(CargaTablaDbf(memoria, c.texto() + "MOVS.DBF", "Movs"), 6);
    EXPECT_EQ(memoria.columnas("Movs"),
              (std::vector<std::string>{"EJE", "PERIODO", "FECHA", "CARGOS", "ABONOS", "CONCEPTO", "ACTIVO"}));

    auto r = memoria.consulta(
        "SELECT Periodo, Sum(Cargos) AS Cargos, Sum(Abonos) AS Abonos, Count(*) AS N FROM Movs "
        "WHERE EJE = ? AND Month(Fecha)<=? GROUP BY Periodo ORDER BY Periodo",
        2023, 2);
    ASSERT_EQ(r.cuentaRegistros(), 2u);
    EXPECT_EQ(r["PERIODO"].entero(), 1);
    EXPECT_EQ(r["Cargos"].moneda(), Moneda::desdeTexto("100.30"));  // exact: ten-thousandths summed
    EXPECT_EQ(r["Abonos"].moneda(), Moneda::desdeTexto("5.5"));
    EXPECT_EQ(r["N"].entero(), 2);  // the deleted record is not there
    r.siguiente();
    EXPECT_EQ(r["PERIODO"].entero(), 2);
    EXPECT_EQ(r["Cargos"].moneda(), Moneda::desdeTexto("1000000.01"));
    EXPECT_EQ(r["N"].entero(), 1);  // the blank date has no month

    EXPECT_EQ(Tipos(memoria, "Movs", "EJE"), "integer");
    EXPECT_EQ(Tipos(memoria, "Movs", "CARGOS"), "integer");
    EXPECT_EQ(Tipos(memoria, "Movs", "FECHA"), "null,text");
    EXPECT_EQ(memoria.escalar("SELECT Fecha FROM Movs WHERE Concepto = ?", "Compra de café").texto(), "2023-01-31");
    EXPECT_EQ(memoria.escalar("SELECT Sum(Activo) FROM Movs").entero(), -5);  // -1 for true, 0 for false
}

TEST(CargaTablaDbf, TiposDeVisualFoxProEnSusColumnas) {
    CarpetaTemporal c;
    ASSERT_TRUE(EscribeConPython(c, R"(
t = dbf.Table('VFP.DBF', 'DINERO Y NULL; CUANDO T NULL; VAL B NULL; TASA N(14,6) NULL; NOTA M NULL; ID I',
              dbf_type='vfp', codepage='cp1252')
t.open(dbf.READ_WRITE)
t.append((Decimal('12345.6789'), datetime.datetime(2023, 1, 2, 3, 4, 5), 0.1, Decimal('1.123456'), 'nota', 7))
t.append((Decimal('-0.0001'), datetime.datetime(2024, 12, 31), -2.5, Decimal('0.5'), '', 8))
t.append((dbf.Null, dbf.Null, dbf.Null, dbf.Null, dbf.Null, 9))
t.close()
)"));
    BaseDatos memoria;
    ASSERT_EQ(CargaTablaDbf(memoria, c.texto() + "VFP.DBF", "Vfp"), 3);
    auto r = memoria.consulta("SELECT * FROM Vfp ORDER BY ID");
    EXPECT_EQ(r["DINERO"], Valor(std::int64_t{123456789}));
    EXPECT_EQ(r["DINERO"].moneda(), Moneda::desdeTexto("12345.6789"));
    EXPECT_EQ(r["CUANDO"].texto(), "2023-01-02 03:04:05");
    EXPECT_EQ(r["VAL"], Valor(0.1));
    EXPECT_EQ(r["TASA"], Valor("1.123456"));  // six decimals: exact text
    EXPECT_EQ(r["NOTA"].texto(), "nota");
    r.siguiente();
    EXPECT_EQ(r["DINERO"], Valor(std::int64_t{-1}));
    EXPECT_EQ(r["CUANDO"].texto(), "2024-12-31");  // midnight: the date alone
    EXPECT_EQ(r["TASA"].moneda(), Moneda::desdeTexto("0.5"));
    r.siguiente();
    for (const char* campo : {"DINERO", "CUANDO", "VAL", "TASA", "NOTA"}) EXPECT_TRUE(r[campo].esNulo()) << campo;
    EXPECT_EQ(memoria.escalar("SELECT Count(*) FROM Vfp WHERE Month(Cuando) = ? AND Year(Cuando) = ?", 1, 2023).entero(), 1);
}

TEST(CargaTablaDbf, UnNumeroQueNoCabeDejaLaBaseComoEstaba) {
    CarpetaTemporal c;
    std::vector<CampoPrueba> campos = {{"EJE", 'N', 20}, {"IMPORTE", 'N', 20, 2}};
    EscribeBytes(c.texto() + "BIEN.DBF", TablaDbf(0x03, 0x03, campos, {" " + Ancho("2023", 20, true) + Ancho("1.5", 20, true)}));
    EscribeBytes(c.texto() + "MAL.DBF",
                 TablaDbf(0x03, 0x03, campos,
                          {" " + Ancho("2024", 20, true) + Ancho("1", 20, true),
                           " " + Ancho("2024", 20, true) + Ancho("99999999999999999.99", 20, true)}));
    EscribeBytes(c.texto() + "MAL2.DBF",
                 TablaDbf(0x03, 0x03, campos, {" " + Ancho("99999999999999999999", 20, true) + Ancho("1", 20, true)}));
    BaseDatos memoria;
    ASSERT_EQ(CargaTablaDbf(memoria, c.texto() + "BIEN.DBF", "T"), 1);
    for (const char* archivo : {"MAL.DBF", "MAL2.DBF"}) {
        std::string ruta = c.texto() + archivo;
        try {
            CargaTablaDbf(memoria, ruta, "T");
            ADD_FAILURE() << archivo << " se cargó";
        } catch (const ErrorLectura& e) {
            EXPECT_EQ(e.archivo(), ruta);
            EXPECT_NE(std::string(e.what()).find("no cabe"), std::string::npos) << e.what();
            EXPECT_NE(std::string(e.what()).find(ruta), std::string::npos) << e.what();
        }
        EXPECT_FALSE(memoria.enTransaccion());
        EXPECT_EQ(memoria.escalar("SELECT Count(*) FROM T WHERE EJE = ?", 2023).entero(), 1) << archivo;
        EXPECT_EQ(memoria.escalar("SELECT Count(*) FROM T").entero(), 1) << archivo;
    }
}
