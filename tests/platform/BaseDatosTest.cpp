#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/BaseDatos.h"
#include "session/Funciones.h"
#include "support/Entorno.h"
#include "support/Muerte.h"

using namespace velmorant;

namespace {

void CreaTablaPrueba(BaseDatos& db) {
    db.ejecutaScript(
        "CREATE TABLE Movs (Cuenta TEXT COLLATE NOCASE, Mes INTEGER, Importe INTEGER, Fecha TEXT, Activo INTEGER);"
        "CREATE INDEX Movs_CuentaMes ON Movs (Cuenta, Mes);");
}

}  // namespace

TEST(BaseDatos, LosTresModosDeAcceso) {
    BaseDatos db;
    CreaTablaPrueba(db);
    // Statement access, every value bound.
    EXPECT_EQ(db.ejecuta("INSERT INTO Movs VALUES (?, ?, ?, ?, ?)", "100", 1, Moneda::desdeTexto("10.5").value(),
                         Fecha(2025, 1, 31), true),
              1);
    db.ejecuta("INSERT INTO Movs VALUES (?, ?, ?, ?, ?)", "100", 2, Moneda::desdeTexto("-3").value(), Fecha(2025, 2, 1),
               false);
    db.ejecuta("INSERT INTO Movs VALUES (?, ?, ?, ?, ?)", "200", 1, Valor(), Valor(), Valor());

    // Query access: count, first/last/next, fields by name and position.
    Consulta c = db.consulta("SELECT * FROM Movs ORDER BY Cuenta, Mes");
    ASSERT_EQ(c.cuentaRegistros(), 3u);
    EXPECT_EQ(c.nombreCampo(2), "Importe");
    EXPECT_EQ(c["Importe"].moneda().texto(), "10.5");
    EXPECT_EQ(c.campo(3).fecha(), Fecha(2025, 1, 31));
    EXPECT_TRUE(c["Activo"].booleano());
    EXPECT_EQ(c["Activo"].entero(), -1);
    c.ultimo();
    EXPECT_TRUE(c["Importe"].esNulo());
    EXPECT_EQ(c["Importe"].moneda(), Moneda());
    c.siguiente();
    EXPECT_TRUE(c.eof());
    EXPECT_THROW(c["Importe"], ErrorBaseDatos);

    // Table access by a named index: seek on one and on two values, edit, add.
    Tabla t(db, "Movs");
    t.indice("CuentaMes");
    ASSERT_TRUE(t.busca("100", 2));
    EXPECT_EQ(t.campo("Importe").moneda().texto(), "-3");
    t.edita();
    t.fija("Importe", Moneda::desdeTexto("7.25").value());
    t.actualiza();
    EXPECT_EQ(db.escalar("SELECT Importe FROM Movs WHERE Cuenta='100' AND Mes=2").entero(), 72500);
    ASSERT_TRUE(t.busca("100"));
    int vistos = 0;
    for (; !t.eof(); t.siguiente()) ++vistos;
    EXPECT_EQ(vistos, 2);
    EXPECT_FALSE(t.busca("999"));
    EXPECT_TRUE(t.sinCoincidencia());
    EXPECT_TRUE(t.busca("  ") == false);
    t.agrega();
    t.fija("Cuenta", "300");
    t.fija("Mes", 5);
    t.actualiza();
    EXPECT_TRUE(t.busca("300", 5));
    // The legacy engine's text comparison ignores case.
    db.ejecuta("INSERT INTO Movs (Cuenta, Mes) VALUES ('ABC', 1)");
    EXPECT_TRUE(t.busca("abc", 1));
}

TEST(BaseDatos, FuncionesRegistradasYParametrosLiteralesSeguros) {
    BaseDatos db;
    EXPECT_EQ(db.escalar("SELECT Month(?)", Fecha(2025, 12, 31)).entero(), 12);
    EXPECT_EQ(db.escalar("SELECT Year(?)", Fecha(2024, 2, 29)).entero(), 2024);
    EXPECT_TRUE(db.escalar("SELECT Month(NULL)").esNulo());
    EXPECT_TRUE(db.escalar("SELECT Month('31/12/2025')").esNulo());
    EXPECT_EQ(db.escalar("SELECT [Left](?, 3)", "Añejo").texto(), "Añe");
    EXPECT_EQ(db.escalar("SELECT [Left](?, 10)", "ab").texto(), "ab");
    // The cleaning of a copy inside the engine is the program's own.
    for (const std::string t : {"Pago a O'Brien | ~ñandú", "sin nada", "''||~~", ""})
        EXPECT_EQ(db.escalar("SELECT QuitaCaracteresEspeciales(?)", t).texto(), QuitaCaracteresEspeciales(t)) << t;
    const Valor nulo = db.escalar("SELECT QuitaCaracteresEspeciales(NULL)");
    EXPECT_TRUE(nulo.esTexto() && nulo.texto().empty());
    // A quote in a value is data, never SQL.
    db.ejecutaScript("CREATE TABLE T (x TEXT)");
    db.ejecuta("INSERT INTO T VALUES (?)", "O'Brien'); DROP TABLE T; --");
    EXPECT_EQ(db.escalar("SELECT x FROM T").texto(), "O'Brien'); DROP TABLE T; --");
}

TEST(BaseDatos, ErroresLlevanMensajeYSql) {
    BaseDatos db;
    try {
        db.ejecuta("SELECT * FROM NoExiste WHERE a = ?", 1);
        FAIL();
    } catch (const ErrorBaseDatos& e) {
        EXPECT_NE(std::string(e.what()).find("no such table: NoExiste"), std::string::npos);
        EXPECT_EQ(e.sql(), "SELECT * FROM NoExiste WHERE a = ?");
    }
    prueba::CarpetaTemporal dir;
    EXPECT_THROW(BaseDatos(dir.ruta() / "falta.sqlite"), ErrorBaseDatos);
    std::ofstream(dir.ruta() / "corrupta.sqlite") << "esto no es una base de datos, aunque lo parezca por su nombre";
    EXPECT_THROW(BaseDatos(dir.ruta() / "corrupta.sqlite"), ErrorBaseDatos);
}

TEST(BaseDatos, TransaccionDeshaceSiNoSeConfirmaTambienEnArchivosAdjuntos) {
    prueba::CarpetaTemporal dir;
    {
        BaseDatos otra(dir.ruta() / "otra.sqlite", BaseDatos::Modo::Crear);
        otra.ejecutaScript("CREATE TABLE B (x INTEGER); INSERT INTO B VALUES (1)");
    }
    BaseDatos db(dir.ruta() / "principal.sqlite", BaseDatos::Modo::Crear);
    db.ejecutaScript("CREATE TABLE A (x INTEGER)");
    db.adjunta(dir.ruta() / "otra.sqlite", "Otra");
    {
        Transaccion t(db);
        db.ejecuta("INSERT INTO A VALUES (1)");
        db.ejecuta("DELETE FROM Otra.B");
        {
            Transaccion interior(db);  // a savepoint
            db.ejecuta("INSERT INTO A VALUES (2)");
            interior.confirma();
        }
    }  // not confirmed: both files roll back
    EXPECT_EQ(db.escalar("SELECT COUNT(*) FROM A").entero(), 0);
    EXPECT_EQ(db.escalar("SELECT COUNT(*) FROM Otra.B").entero(), 1);
    {
        Transaccion t(db);
        db.ejecuta("INSERT INTO A VALUES (3)");
        {
            Transaccion interior(db);
            db.ejecuta("INSERT INTO A VALUES (4)");
        }  // only the savepoint rolls back
        t.confirma();
    }
    EXPECT_EQ(db.escalar("SELECT group_concat(x) FROM A").texto(), "3");
    EXPECT_EQ(db.escalar("PRAGMA journal_mode").texto(), "delete");
    db.separa("Otra");
    EXPECT_THROW(db.escalar("SELECT COUNT(*) FROM Otra.B"), ErrorBaseDatos);
}

TEST(BaseDatos, UnaBaseBloqueadaEsUnErrorNoUnaEspera) {
    prueba::CarpetaTemporal dir;
    BaseDatos a(dir.ruta() / "b.sqlite", BaseDatos::Modo::Crear);
    a.ejecutaScript("CREATE TABLE T (x INTEGER)");
    Transaccion t(a);
    a.ejecuta("INSERT INTO T VALUES (1)");
    BaseDatos b(dir.ruta() / "b.sqlite");
    b.ejecutaScript("PRAGMA busy_timeout=50");
    EXPECT_THROW(b.ejecuta("INSERT INTO T VALUES (2)"), ErrorBaseDatos);
}

TEST(BaseDatos, LeerDeshaceLoQueDejoUnEscritorMuertoYNoEscribeNadaMas) {
    prueba::CarpetaTemporal dir;
    const auto ruta = dir.ruta() / "log.sqlite";
    {
        BaseDatos db(ruta, BaseDatos::Modo::Crear);
        db.ejecutaScript("CREATE TABLE T (x INTEGER); INSERT INTO T VALUES (1)");
    }
    // A writer killed as its commit removes the journal: the file holds the
    // new rows, the journal what must come back.
    ASSERT_TRUE(prueba::MuereAlBorrar("-journal", [&] {
        BaseDatos db(ruta);
        db.ejecutaScript("BEGIN; INSERT INTO T VALUES (2); INSERT INTO T VALUES (3); COMMIT");
    }));
    ASSERT_TRUE(std::filesystem::exists(ruta.string() + "-journal"));
    BaseDatos lector(ruta, BaseDatos::Modo::SoloLectura);
    EXPECT_EQ(lector.escalar("SELECT COUNT(*) FROM T").entero(), 1);
    EXPECT_FALSE(std::filesystem::exists(ruta.string() + "-journal"));
    EXPECT_THROW(lector.ejecuta("INSERT INTO T VALUES (4)"), ErrorBaseDatos);
}

// Values bound without building a Valor are stored as a Valor stores them;
// a text bound without its copy is dropped once its row is written; a kept
// statement knows when the connection has let its statements go.
TEST(BaseDatos, LigasDirectasYSentenciasGuardadas) {
    BaseDatos db;
    CreaTablaPrueba(db);
    const std::string cuenta = "200";
    db.ejecuta("INSERT INTO Movs VALUES (?, ?, ?, ?, ?)", cuenta, 7L, Moneda::desdeTexto("-1.25").value(), nullptr,
               false);
    db.ejecuta("INSERT INTO Movs VALUES (?, ?, ?, ?, ?)", std::string("201"), 8LL, Valor(3.5), std::optional<int>(),
               true);
    Consulta c = db.consulta("SELECT Cuenta, Mes, Importe, Fecha, Activo, typeof(Cuenta) FROM Movs ORDER BY rowid");
    EXPECT_EQ(c.campo(0).texto(), "200");
    EXPECT_EQ(c.campo(2).entero(), -12500);
    EXPECT_TRUE(c.campo(3).esNulo());
    EXPECT_EQ(c.campo(4).entero(), 0);
    EXPECT_EQ(c.campo(5).texto(), "text");
    c.siguiente();
    EXPECT_EQ(c.campo(1).entero(), 8);
    EXPECT_EQ(c.campo(2).real(), 3.5);
    EXPECT_EQ(c.campo(4).entero(), -1);

    const std::uint64_t antes = db.generacionPreparadas();
    Sentencia& st = db.preparada("INSERT INTO Movs (Cuenta, Mes) VALUES (?, ?)");
    {
        std::string temporal = "300";
        st.reinicia();
        st.ligaTexto(1, temporal, false).ligaEntero(2, 9);
        EXPECT_EQ(st.ejecutaYOlvida(), 1);
    }
    st.ejecuta();  // nothing bound any more: a row of nulls, never the text that is gone
    EXPECT_EQ(db.escalar("SELECT count(*) FROM Movs WHERE Cuenta = '300' AND Mes = 9").entero(), 1);
    EXPECT_EQ(db.escalar("SELECT count(*) FROM Movs WHERE Cuenta IS NULL AND Mes IS NULL").entero(), 1);
    EXPECT_EQ(db.generacionPreparadas(), antes);
    db.olvidaPreparadas();
    EXPECT_NE(db.generacionPreparadas(), antes);
    BaseDatos otra;
    EXPECT_NE(otra.generacionPreparadas(), db.generacionPreparadas());
}

// The reads in place give what columna() gives, for every kind of value.
TEST(BaseDatos, LecturaEnSitioComoLaDeColumna) {
    BaseDatos db;
    Sentencia& st = db.preparada("SELECT 7, 2.5, 'año', x'4142', NULL, -9223372036854775807 - 1");
    st.reinicia();
    ASSERT_TRUE(st.paso());
    using C = Sentencia::Clase;
    EXPECT_EQ(st.clase(0), C::Entero);
    EXPECT_EQ(st.entero(0), st.columna(0).entero());
    EXPECT_EQ(st.clase(1), C::Real);
    EXPECT_EQ(st.clase(2), C::Texto);
    EXPECT_EQ(std::string(st.texto(2)), st.columna(2).texto());
    EXPECT_EQ(st.clase(3), C::Texto);  // a blob, read as its bytes
    EXPECT_EQ(std::string(st.texto(3)), "AB");
    EXPECT_EQ(st.clase(4), C::Nulo);
    EXPECT_EQ(st.entero(5), INT64_MIN);
    for (int i : {0, 1, 4}) EXPECT_EQ(st.moneda(i), st.columna(i).moneda()) << i;
    // Refilled in place, a value ends as columna() gives it, whatever it held.
    Valor v(std::string("un texto más largo que el nuevo"));
    for (int i : {2, 0, 3, 4, 1, 2}) {
        st.columnaEn(i, v);
        EXPECT_EQ(v, st.columna(i)) << i;
    }
    st.reinicia();
}
