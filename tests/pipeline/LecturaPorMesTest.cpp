#include <gtest/gtest.h>

#include <bitset>
#include <cstdint>
#include <string>
#include <vector>

#include "pipeline/LineasPorPoliza.h"
#include "pipeline/MesPorIndice.h"
#include "pipeline/MesesPolizas.h"
#include "platform/BaseDatos.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

std::vector<std::int64_t> Filas(Consulta c) {
    std::vector<std::int64_t> r;
    for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c.campo(0).entero());
    return r;
}

/// The rows the month's filter picks against the rows Month(Fecha)=? picks
/// by a walk of the whole table, for every month.
void MismasFilasQueMonth(BaseDatos& db) {
    for (int mes = 0; mes <= 13; ++mes) {
        FiltroMes f = FiltroDeMes(db, "P", mes);
        auto conFiltro = Filas(ConsultaCon(db, "SELECT rowid FROM P WHERE " + f.condicion + " ORDER BY rowid", f.valores));
        auto completo = Filas(db.consulta("SELECT rowid FROM P WHERE Month(Fecha)=? ORDER BY rowid", mes));
        EXPECT_EQ(conFiltro, completo) << "mes " << mes;
    }
}

TEST(FiltroDeMes, PicksExactlyTheRowsOfMonthOverOddDates) {
    BaseDatos db;
    db.ejecutaScript("CREATE TABLE P (Fecha TEXT); CREATE INDEX P_Fecha ON P (Fecha);");
    // Years apart, a date with time, non-padded and impossible dates, texts
    // that start with digits but are no dates, numbers and Null.
    for (const char* f : {"2025-01-31", "2025-02-01", "2024-12-31", "2026-01-01", "2025-03-15 10:20:00", "2025-3-15",
                          "2025-02-30", "2025-13-01", "20250105", "2025-01", "abcd-01-02", ""})
        db.ejecuta("INSERT INTO P (Fecha) VALUES (?)", std::string(f));
    db.ejecuta("INSERT INTO P (Fecha) VALUES (NULL)");
    EXPECT_NE(FiltroDeMes(db, "P", 1).condicion, "Month(Fecha)=?");  // the ranges are in use
    MismasFilasQueMonth(db);

    // Many years apart the plain condition is kept, with the same rows; a
    // number in the text column is stored as its digits, a far "year".
    db.ejecuta("INSERT INTO P (Fecha) VALUES (?)", std::string("1900-01-10"));
    EXPECT_EQ(FiltroDeMes(db, "P", 1).condicion, "Month(Fecha)=?");
    MismasFilasQueMonth(db);
    db.ejecuta("DELETE FROM P WHERE Fecha = ?", std::string("1900-01-10"));
    db.ejecuta("INSERT INTO P (Fecha) VALUES (?)", 45000);
    MismasFilasQueMonth(db);
}

// The months a table holds, by index seeks or by a read of the table when
// its dates do not allow the seeks, are the months Month(Fecha) finds.
TEST(MesesConFilas, SameMonthsAsMonthOverEveryRowEitherWay) {
    BaseDatos db;
    db.ejecutaScript("CREATE TABLE P (Fecha TEXT); CREATE INDEX P_Fecha ON P (Fecha);");
    auto porMonth = [&] {
        std::bitset<13> r;
        for (int mes : Filas(db.consulta("SELECT DISTINCT Month(Fecha) FROM P WHERE Month(Fecha) IS NOT NULL")))
            r.set(static_cast<size_t>(mes));
        return r;
    };
    EXPECT_EQ(MesesConFilas(db, "P").to_ulong(), 0u);
    EXPECT_EQ(UltimoMesDe(MesesConFilas(db, "P")), 0);
    for (const char* f : {"2025-03-31", "2024-12-31", "2025-03-15 10:20:00", "2025-02-30", "2025-13-01", "abcd-01-02"})
        db.ejecuta("INSERT INTO P (Fecha) VALUES (?)", std::string(f));
    db.ejecuta("INSERT INTO P (Fecha) VALUES (NULL)");
    EXPECT_EQ(MesesConFilas(db, "P"), porMonth());
    EXPECT_EQ(UltimoMesDe(MesesConFilas(db, "P")), 12);
    db.ejecuta("INSERT INTO P (Fecha) VALUES (?)", std::string("1900-07-10"));  // too many years for seeks
    EXPECT_EQ(MesesConFilas(db, "P"), porMonth());
    EXPECT_TRUE(MesesConFilas(db, "P").test(7));
}

TEST(FiltroDeMes, EmptyTableAndTableWithoutDatesPickNothing) {
    BaseDatos db;
    db.ejecutaScript("CREATE TABLE P (Fecha TEXT); CREATE INDEX P_Fecha ON P (Fecha);");
    MismasFilasQueMonth(db);
    db.ejecuta("INSERT INTO P (Fecha) VALUES (?)", std::string("sin fecha"));
    MismasFilasQueMonth(db);
}

// A run's voucher store is attached to the company connection and made
// without an index on Fecha: the filter adds one there, once, and picks the
// rows Month picks, closing vouchers and all.
TEST(FiltroDeMes, RunStoreGetsItsDateIndexOnceInItsOwnFileAndTheSameRows) {
    prueba::CarpetaTemporal carpeta;
    BaseDatos db;
    {
        BaseDatos almacen(carpeta.ruta() / "Polizas_Tmp.sqlite", BaseDatos::Modo::Crear);
        almacen.ejecutaScript("CREATE TABLE Polizas_Tmp (IdPoliza INTEGER, Fecha TEXT, Poliza_Mes13 INTEGER);"
                              "CREATE INDEX IdPoliza ON Polizas_Tmp (IdPoliza);");
        int id = 0;
        for (const char* f : {"2025-01-31", "2025-02-01", "2025-12-31", "2025-12-31", "2024-12-01", "2025-2-03"}) {
            ++id;
            almacen.ejecuta("INSERT INTO Polizas_Tmp VALUES (?, ?, ?)", id, std::string(f), id == 4);
        }
        almacen.ejecuta("INSERT INTO Polizas_Tmp VALUES (7, NULL, 0)");
    }
    db.adjunta(carpeta.ruta() / "Polizas_Tmp.sqlite", "Polizas_Tmp");
    auto indices = [&](const std::string& esquema) {
        return db.escalar("SELECT COUNT(*) FROM \"" + esquema + "\".sqlite_master WHERE type='index' AND name LIKE "
                          "'%Fecha%'")
            .entero();
    };
    EXPECT_EQ(indices("Polizas_Tmp"), 0);
    for (int mes = 0; mes <= 13; ++mes) {
        FiltroMes f = FiltroDeMesTmp(db, "Polizas_Tmp", mes);
        if (mes >= 1 && mes <= 12) {
            EXPECT_NE(f.condicion, "Month(Fecha)=?");
        }
        auto conFiltro = Filas(ConsultaCon(db,
                                           "SELECT IdPoliza FROM Polizas_Tmp WHERE " + f.condicion +
                                               " AND NOT IFNULL(Poliza_Mes13,0) ORDER BY IdPoliza",
                                           f.valores));
        auto completo = Filas(db.consulta(
            "SELECT IdPoliza FROM Polizas_Tmp WHERE Month(Fecha)=? AND NOT IFNULL(Poliza_Mes13,0) ORDER BY IdPoliza",
            mes));
        EXPECT_EQ(conFiltro, completo) << "mes " << mes;
    }
    EXPECT_EQ(indices("Polizas_Tmp"), 1);
    EXPECT_EQ(indices("main"), 0);
    // The month's vouchers come from the index, not from a walk of the table.
    Consulta plan = ConsultaCon(db, "EXPLAIN QUERY PLAN SELECT IdPoliza FROM Polizas_Tmp WHERE " +
                                        FiltroDeMesTmp(db, "Polizas_Tmp", 2).condicion,
                                FiltroDeMesTmp(db, "Polizas_Tmp", 2).valores);
    std::string detalle;
    for (plan.primero(); !plan.eof(); plan.siguiente()) detalle += plan["detail"].texto() + "\n";
    EXPECT_NE(detalle.find("Polizas_Tmp_Fecha"), std::string::npos) << detalle;
}

TEST(LineasPorPoliza, EachVoucherSeesItsLinesInTableOrder) {
    BaseDatos db;
    db.ejecutaScript("CREATE TABLE D (IdPoliza INTEGER, Cuenta TEXT);");
    // Lines of voucher 2 interleaved with those of 1; a line without voucher.
    const std::vector<std::pair<Valor, std::string>> filas{
        {Valor(2), "a"}, {Valor(1), "b"}, {Valor(2), "c"}, {Valor(), "d"}, {Valor(1), "e"}, {Valor(2), "f"}};
    for (const auto& [id, cuenta] : filas) db.ejecuta("INSERT INTO D (IdPoliza, Cuenta) VALUES (?, ?)", id, cuenta);
    LineasPorPoliza lineas(db.consulta("SELECT IdPoliza, Cuenta FROM D ORDER BY IdPoliza, rowid"));
    auto de = [&](const Valor& id) {
        std::string r;
        for (lineas.de(id); lineas.quedan(); lineas.siguiente()) r += lineas.linea().campo(1).texto();
        return r;
    };
    EXPECT_EQ(de(Valor(2)), "acf");
    EXPECT_EQ(de(Valor(1)), "be");
    EXPECT_EQ(de(Valor(2)), "acf");  // asked again, as a voucher repeated in a month would
    EXPECT_EQ(de(Valor(3)), "");
    EXPECT_EQ(de(Valor()), "");
}

TEST(ListaDeIds, IntegersOnlyElseEmpty) {
    BaseDatos db;
    db.ejecutaScript("CREATE TABLE P (IdPoliza);");
    Consulta vacia = db.consulta("SELECT IdPoliza FROM P");
    EXPECT_EQ(ListaDeIds(vacia, 0), "[]");
    db.ejecutaScript("INSERT INTO P VALUES (3), (NULL), (10);");
    Consulta enteros = db.consulta("SELECT IdPoliza FROM P ORDER BY rowid");
    EXPECT_EQ(ListaDeIds(enteros, 0), "[3,10]");
    db.ejecutaScript("INSERT INTO P VALUES ('7');");
    Consulta conTexto = db.consulta("SELECT IdPoliza FROM P ORDER BY rowid");
    EXPECT_EQ(ListaDeIds(conTexto, 0), "");
}

}  // namespace
