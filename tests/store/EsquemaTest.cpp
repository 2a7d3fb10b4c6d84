#include <gtest/gtest.h>

#include "session/Enlaces.h"
#include "store/AltaBase.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {
std::string Columnas(BaseDatos& db, const std::string& tabla) {
    std::string r;
    for (auto& c : db.columnas(tabla)) r += (r.empty() ? "" : ",") + c;
    return r;
}
}  // namespace

TEST(Esquema, ElOrdenDeCamposEsElDelModeloDeDatos) {
    BaseDatos db;
    CreaEsquemaEmpresa(db);
    CreaEsquemaEmpresa(db);  // idempotent
    auto balanzas = db.columnas("Balanzas");
    ASSERT_EQ(balanzas.size(), 48u);
    EXPECT_EQ(balanzas.front(), "Cuenta");
    EXPECT_EQ(balanzas[1], "SaldoInicial");
    EXPECT_EQ(balanzas[2], "C01");
    EXPECT_EQ(balanzas[14], "C13");
    EXPECT_EQ(balanzas[15], "A01");
    EXPECT_EQ(balanzas[28], "SdoFin01");
    EXPECT_EQ(balanzas.back(), "SaldoIniOrig");
    EXPECT_EQ(Columnas(db, "Polizas"),
              "IdPoliza,Poliza,Tipo,Fecha,Concepto,Poliza_Deshabilitada,Cuadrada,Poliza_Mes13,Poliza_Ajuste");
    EXPECT_EQ(Columnas(db, "Polizas_Detalle"), "IdPoliza,Cuenta,TipoMov,Importe,Referencia,Partida");
    EXPECT_EQ(Columnas(db, "SeleccionDetalle"), "IdCriterio,CtaIntegracion,Cuenta,Saldo,VerObs,Obs,MesRevision");
    EXPECT_EQ(Columnas(db, "Cuentas").rfind("Cuenta,Descripcion,Naturaleza,Nivel,CuentaAcumulativa,Tipo,ConMovtos,PorRevisar,", 0), 0u);
    EXPECT_EQ(db.columnas("CedAnalitica").size(), 36u);
    EXPECT_EQ(Columnas(db, "CedNoDeducibles"), "Poliza,Tipo,Fecha,Cuenta,Referencia,TipoMov,Importe,IdCedAnalitica");
    // The index the selection seeks with two values.
    Tabla t(db, "SeleccionDetalle");
    EXPECT_NO_THROW(t.indice("Cuenta_MesRevision"));
    for (auto& tabla : TablasEmpresa()) EXPECT_TRUE(db.existeTabla(tabla.nombre)) << tabla.nombre;
}

TEST(Esquema, EmpresasYEnlaces) {
    prueba::CarpetaTemporal dir;
    std::string base = CreaBase(dir.texto() + "b");
    CreaBase(dir.texto() + "b");  // again: nothing breaks, nothing doubles
    BaseDatos empresas(RutaBaseDatos(base, kArchivoEmpresas));
    auto campos = empresas.columnas("Empresas");
    ASSERT_EQ(campos.size(), 28u);
    EXPECT_EQ(campos[0], "IdEmpresa");
    EXPECT_EQ(campos[6], "Nivel1");
    EXPECT_EQ(campos.back(), "IdSistema");

    BaseDatos enlaces(RutaBaseDatos(base, kArchivoEnlaces));
    auto todos = TodosLosEnlaces(enlaces);
    EXPECT_EQ(todos.size(), 131u);  // 1..135 but 5, 10, 99 and 133
    for (auto& e : todos) {
        EXPECT_NE(e.IdSistema, 5);
        EXPECT_NE(e.IdSistema, 133);
        EXPECT_EQ(e.Descripcion.rfind("Importar", 0), std::string::npos);
    }
    auto enlace = [&](int id) {
        for (auto& e : todos)
            if (e.IdSistema == id) return e;
        return Enlace{};
    };
    EXPECT_EQ(enlace(82).Descripcion, "Texto Generico delimitado por caracter");
    EXPECT_TRUE(enlace(82).Comercial);
    EXPECT_EQ(enlace(22).Descripcion, "Sistema propio de despacho 22");
    EXPECT_FALSE(enlace(22).Comercial);
    EXPECT_EQ(enlace(95).Descripcion, "ContPAQ i - Mejorado");
    EXPECT_EQ(enlace(135).Descripcion, "Contabilidad electrónica (XML)");
    EXPECT_TRUE(enlace(135).Liberado);
    EXPECT_TRUE(enlace(135).Comercial);
}

TEST(Esquema, ListaDeEnlacesFiltraBuscaYNoSeRompeConComillas) {
    BaseDatos db;
    CreaEsquemaEnlaces(db);
    db.ejecutaScript(
        "INSERT INTO Enlaces VALUES (1, 'COI WIN', -1, -1), (2, 'ContPAQ i', -1, -1), (3, 'Propio', -1, 0),"
        "(4, 'Oculto COI', 0, -1), (5, 'Cien % Conta', -1, -1), (6, 'O''Brien Conta', -1, -1)");
    auto ids = [](const std::vector<Enlace>& l) {
        std::string r;
        for (auto& e : l) r += std::to_string(e.IdSistema);
        return r;
    };
    EXPECT_EQ(ids(ListaEnlaces(db, true, "")), "5126");  // ordered by Descripcion
    EXPECT_EQ(ids(ListaEnlaces(db, false, "")), "51263");
    EXPECT_EQ(ids(ListaEnlaces(db, true, "coi")), "1");
    EXPECT_EQ(ids(ListaEnlaces(db, true, "%")), "5");
    EXPECT_EQ(ids(ListaEnlaces(db, true, "'")), "6");
    EXPECT_EQ(ids(ListaEnlaces(db, true, "c*i")), "512");
    EXPECT_EQ(ids(ListaEnlaces(db, false, "pro")), "3");
    EXPECT_EQ(ids(ListaEnlaces(db, true, "_")), "");
}

TEST(Esquema, UnaEmpresaAnteriorSeActualizaSinPerderNada) {
    prueba::CarpetaTemporal dir;
    const std::string ruta = dir.texto() + "VIEJA_2023.sqlite";
    {
        // A company made before money had its default: the same tables,
        // without defaults and without a version.
        BaseDatos vieja(ruta, BaseDatos::Modo::Crear);
        for (DefTabla t : TablasEmpresa()) {
            for (auto& c : t.campos) c.predeterminado.clear();
            CreaTabla(vieja, t);
        }
        vieja.ejecuta("INSERT INTO Cuentas (Cuenta, Descripcion, Saldo_Anterior_Final, Saldo_Final) VALUES "
                      "('100', 'Caja', NULL, 500), ('200', 'Bancos', 70, NULL)");
        vieja.ejecuta("INSERT INTO Balanzas (Cuenta, SaldoInicial) VALUES ('100', NULL)");
        vieja.ejecuta("INSERT INTO CedAnalitica (IdCedAnalitica, Cuenta, IVA) VALUES (41, '100', NULL)");
        vieja.ejecuta("DELETE FROM CedAnalitica");  // the counter stays at 41
        vieja.ejecuta("CREATE INDEX Cuentas_DelAuditor ON Cuentas (Descripcion)");  // an index of someone else
    }
    BaseDatos db(ruta);
    EXPECT_EQ(PreparaEsquemaEmpresa(db), EstadoEsquema::Actualizado);
    EXPECT_EQ(db.escalar("PRAGMA user_version").entero(), kVersionEsquemaEmpresa);
    EXPECT_EQ(db.escalar("SELECT dflt_value FROM pragma_table_info('Cuentas') WHERE name = 'Saldo_Anterior_Final'").texto(),
              "0");
    // The rows stay; the Nulls the missing default left in the chart and the
    // trial balance read 0, the amounts that were there are kept.
    EXPECT_EQ(db.escalar("SELECT group_concat(Cuenta || ':' || Descripcion || ':' || Saldo_Anterior_Final || ':' || "
                         "Saldo_Final, ' ') FROM Cuentas")
                  .texto(),
              "100:Caja:0:500 200:Bancos:70:0");
    EXPECT_EQ(db.escalar("SELECT SaldoInicial FROM Balanzas").entero(), 0);
    // Indexes, its own and another's, and the counter of the schedule.
    Tabla cuentas(db, "Cuentas");
    EXPECT_NO_THROW(cuentas.indice("Cuenta"));
    EXPECT_FALSE(db.escalar("SELECT name FROM sqlite_schema WHERE name = 'Cuentas_DelAuditor'").esNulo());
    db.ejecuta("INSERT INTO CedAnalitica (Cuenta) VALUES ('100')");
    EXPECT_EQ(db.escalar("SELECT IdCedAnalitica FROM CedAnalitica").entero(), 42);
    EXPECT_EQ(db.columnas("Balanzas").back(), "SaldoIniOrig");
    // Once current, a session writes nothing.
    EXPECT_EQ(PreparaEsquemaEmpresa(db), EstadoEsquema::Vigente);
}
