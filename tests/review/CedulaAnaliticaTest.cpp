#include <gtest/gtest.h>

#include "review/CedulaAnalitica.h"
#include "review/EntornoCedula.h"
#include "session/Funciones.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

using Lista = std::vector<std::string>;

const std::string kPerdidoCargo1000 =
    "No se encontró el movimiento Cargo por 1000 de la Póliza, por lo que no se pudo reestablecer en la cédula "
    "analítica.";

// A company whose account 1101 has the rule "every movement", so that every
// movement of the new vouchers comes back to the schedule.
class CedulaAnalitica : public EntornoCedula {
protected:
    CedulaAnalitica() {
        Cuenta("1101");
        Regla(4, "1101");
    }

    static Trabajo Completo(const std::string& marca) {
        Trabajo t;
        t.marca1 = marca;
        t.marca7 = "Z";
        t.observaciones = "Cotejado contra factura " + marca;
        t.sugerencias = "Pedir contrato";
        t.infoAdd1 = "Proveedor 12";
        t.infoAdd2 = "Exp. 7";
        t.notas = "Revisó JLM";
        t.refModificada = "Anticipo a proveedor " + marca;
        t.aplicaIVA = true;
        t.porIVA = 16;
        t.iva = "160";
        t.aplicaRetISR = true;
        t.tasaRetISR = 10;
        t.impteRetISR = "100";
        t.aplicaRetIVA = true;
        t.tasaRetIVA = 10.6667;
        t.impteRetIVA = "106.67";
        t.modificado = true;
        return t;
    }

    static Trabajo Marca(const std::string& marca) {
        Trabajo t;
        t.marca1 = marca;
        return t;
    }

    /// The reviewer's fields of a row, joined.
    std::string TrabajoDe(std::int64_t id) {
        Consulta c = db().consulta(
            "SELECT Refmodificada, AplicaIVA, PorIVA, IVA, AplicaRetISR, TasaRetISR, ImpteRetISR, AplicaRetIVA, "
            "TasaRetIVA, ImpteRetIVA, Marca1, Marca2, Marca3, Marca4, Marca5, Marca6, Marca7, Observaciones, "
            "Sugerencias, InfoAdd1, InfoAdd2, Notas, Modificado FROM CedAnalitica WHERE IdCedAnalitica = ?",
            id);
        std::string t;
        for (int i = 0; i < c.numCampos(); ++i) t += c.campo(i).texto() + "|";
        return t;
    }

    Lista FoliosDe(std::int64_t id) {
        Lista r;
        Consulta c = db().consulta("SELECT UUID FROM UUIDAnalitica WHERE IdCedAnalitica = ? ORDER BY rowid", id);
        for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c.campo(0).texto());
        return r;
    }

    /// The schedule rows of a voucher, in row order.
    std::vector<std::int64_t> IdsDe(const std::string& poliza) {
        std::vector<std::int64_t> r;
        Consulta c = db().consulta("SELECT IdCedAnalitica FROM CedAnalitica WHERE Poliza = ? ORDER BY IdCedAnalitica",
                                   poliza);
        for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c.campo(0).entero());
        return r;
    }

    Lista Marcas() {
        Lista r;
        Consulta c = db().consulta("SELECT Marca1 FROM CedAnalitica ORDER BY IdCedAnalitica");
        for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c.campo(0).texto());
        return r;
    }

    /// Empties the schedule, its satellites and both logs, between the cases of a table.
    void Reinicia() {
        for (auto t : {"CedAnalitica", "UUIDAnalitica", "CedNoDeducibles", "InconsisImpTmp"})
            db().ejecuta(std::string("DELETE FROM ") + t);
        if (AbreAlmacen(s, kInconsisImpTmpDet)) db().ejecuta("DELETE FROM InconsisImpTmpDet");
    }
};

Mov X{"20", "Dr", "2024-02-01", "1101", "D", "1000", "Anticipo"};

TEST_F(CedulaAnalitica, UnMovimientoEncontradoPorSuClaveRecuperaTodoSuTrabajoAunqueCambieDeCriterio) {
    Mov con{"15", "Dr", "2024-01-15", "1101", "D", "1000", "Pago 'A'|x"};
    Mov otro{"16", "Ig", "2024-01-16", "1101", "H", "30", "Cobro"};
    Carga({con, otro}, 1);
    auto id = Cedula(con, 9, Completo("✓"));  // a rule that no longer exists
    Folio(id, "UUID-1");
    Folio(id, "");
    Folio(id, "UUID-2");
    const std::string antes = TrabajoDe(id);

    Carga({con, otro}, 101);
    Reconstruye();

    auto nuevos = IdsDe("15");
    ASSERT_EQ(nuevos.size(), 1u);
    EXPECT_GT(nuevos[0], id);
    EXPECT_EQ(TrabajoDe(nuevos[0]), antes);
    EXPECT_EQ(Cuantos("SELECT IdCriterio FROM CedAnalitica WHERE Poliza = '15'"), 4);
    EXPECT_EQ(Cuantos("SELECT IdPoliza FROM CedAnalitica WHERE Poliza = '15'"), 101);
    EXPECT_EQ(FoliosDe(nuevos[0]), (Lista{"UUID-1", "UUID-2"}));
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM UUIDAnalitica"), 2);
    // A new movement has no work: its tax amounts hold the column's default.
    EXPECT_EQ(TrabajoDe(IdsDe("16").at(0)), "Cobro|||0|||0|||0" + std::string(14, '|'));
    EXPECT_TRUE(Log().empty());
    EXPECT_FALSE(ExistenMovimientosPerdidos(s));
    EXPECT_EQ(PerdidosGuardados(), 0);
}

TEST_F(CedulaAnalitica, LaClaveNoDistingueMayusculasComoElMotor) {
    Carga({X}, 1);
    Folio(Cedula(X, 4, Marca("M")), "F-1");
    Mov otro = X;
    otro.referencia = "ANTICIPO";
    otro.tipo = "DR";
    Carga({otro}, 9);
    Reconstruye();
    EXPECT_EQ(Marcas(), Lista{"M"});
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM UUIDAnalitica"), 1);
    EXPECT_TRUE(Log().empty());
}

TEST_F(CedulaAnalitica, DosRenglonesGuardadosIgualesNecesitanDosMovimientosIguales) {
    struct Caso {
        int nuevos;
        Lista marcas;
        Lista log;
        long perdidos;
    } casos[] = {
        {2, {"A1", "A2"}, {}, 0},
        {1, {"A1"}, {kPerdidoCargo1000}, 1},
    };
    for (auto& c : casos) {
        SCOPED_TRACE(c.nuevos);
        Reinicia();
        Carga({X, X}, 1);
        Cedula(X, 4, Marca("A1"));
        Cedula(X, 4, Marca("A2"));
        Carga(std::vector<Mov>(static_cast<size_t>(c.nuevos), X), 10);
        Reconstruye();
        EXPECT_EQ(Marcas(), c.marcas);
        EXPECT_EQ(Log(), c.log);
        EXPECT_EQ(PerdidosGuardados(), c.perdidos);
        EXPECT_EQ(ExistenMovimientosPerdidos(s), c.perdidos > 0);
    }
    BaseDatos det(RutaAlmacen(s, kInconsisImpTmpDet), BaseDatos::Modo::SoloLectura);
    EXPECT_EQ(det.escalar("SELECT Marca1 FROM InconsisImpTmpDet").texto(), "A2");
}

TEST_F(CedulaAnalitica, UnCambioEnCualquierPartedeLaClavePierdeElRenglonYLoConservaYLoReporta) {
    Cuenta("1102");
    Regla(4, "1102");
    struct Caso {
        std::string que;
        Mov nuevo;
    } casos[] = {
        {"fecha", {"20", "Dr", "2024-02-02", "1101", "D", "1000", "Anticipo"}},
        {"cuenta", {"20", "Dr", "2024-02-01", "1102", "D", "1000", "Anticipo"}},
        {"importe", {"20", "Dr", "2024-02-01", "1101", "D", "1000.01", "Anticipo"}},
        {"referencia", {"20", "Dr", "2024-02-01", "1101", "D", "1000", "Anticipo 2"}},
        {"tipo", {"20", "Eg", "2024-02-01", "1101", "D", "1000", "Anticipo"}},
        {"poliza", {"21", "Dr", "2024-02-01", "1101", "D", "1000", "Anticipo"}},
        {"cargo o abono", {"20", "Dr", "2024-02-01", "1101", "H", "1000", "Anticipo"}},
    };
    for (auto& c : casos) {
        SCOPED_TRACE(c.que);
        Reinicia();
        Carga({X}, 1);
        Folio(Cedula(X, 4, Completo("P")), "F-1");
        Carga({c.nuevo}, 50);
        Reconstruye();

        EXPECT_EQ(Log(), Lista{kPerdidoCargo1000});
        Consulta l = db().consulta("SELECT FuenteError, ClasifError, Poliza, Tipo, Fecha, Cuenta FROM InconsisImpTmp");
        EXPECT_EQ(l["FuenteError"].texto() + l["ClasifError"].texto() + l["Poliza"].texto() + l["Tipo"].texto() +
                      l["Fecha"].texto() + l["Cuenta"].texto(),
                  "PólizasD20Dr2024-02-011101");
        EXPECT_EQ(PerdidosGuardados(), 1);
        EXPECT_TRUE(ExistenMovimientosPerdidos(s));
        EXPECT_EQ(Marcas(), Lista{""}) << "the new movement comes in bare";
        EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM UUIDAnalitica"), 0) << "the lost row's folios are not kept";
    }
    // The log keeps the movement and the work that could be kept, but not the notes.
    BaseDatos det(RutaAlmacen(s, kInconsisImpTmpDet), BaseDatos::Modo::SoloLectura);
    Consulta r = det.consulta("SELECT * FROM InconsisImpTmpDet");
    EXPECT_EQ(r["Marca1"].texto(), "P");
    EXPECT_EQ(r["RefModificada"].texto(), "Anticipo a proveedor P");
    EXPECT_EQ(r["ImpteRetIVA"].moneda(), M("106.67"));
    EXPECT_EQ(r["Importe"].moneda(), M("1000"));
    EXPECT_EQ(r["IdCriterio"].entero(), 4);
    EXPECT_FALSE(r["MovtoExistente"].booleano());
    EXPECT_FALSE(ExisteCampo(det, "InconsisImpTmpDet", "Notas"));
}

TEST_F(CedulaAnalitica, UnMovimientoPerdidoSeConservaUnaVezAunqueSePierdaEnDosCorridasYBajoDosReglas) {
    Regla(1, "1101", 0, "0");
    Carga({X}, 1);
    Cedula(X, 1, Marca("R1"));
    Cedula(X, 4, Marca("R4"), 1);
    Carga({}, 1);  // the account has no movement left

    Reconstruye();
    EXPECT_EQ(Log(), Lista{kPerdidoCargo1000}) << "one line for the movement, whatever rules held it";
    EXPECT_EQ(PerdidosGuardados(), 2) << "one row per rule";
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM CedAnalitica"), 0);

    // The next run finds an empty schedule and works again on the saved copy left behind.
    Reconstruye();
    EXPECT_EQ(PerdidosGuardados(), 2);
    EXPECT_TRUE(ExistenMovimientosPerdidos(s));
}

TEST_F(CedulaAnalitica, LosRenglonesDeSaldoInicialSiempreVuelven) {
    Cuenta("1199");  // an account with no rule
    Carga({X}, 1);
    Trabajo t;
    t.refModificada = "Saldo inicial conciliado";
    t.marca1 = "S";
    t.observaciones = "Cuadra con la balanza";
    t.notas = "ver papel A-1";
    t.modificado = true;
    SaldoInicial("1101", t);
    SaldoInicial("1199", t);
    Cedula(X, 4, Marca("M"));
    Carga({X}, 7);
    Reconstruye();

    Consulta c = db().consulta(
        "SELECT Cuenta, Refmodificada, Marca1, Observaciones, Notas, Modificado, Importe, IdCriterio, IdPoliza, "
        "AplicaIVA, Poliza FROM CedAnalitica WHERE Referencia = 'Saldo Inicial' ORDER BY Cuenta");
    ASSERT_EQ(c.cuentaRegistros(), 2u);
    for (std::string cuenta : {"1101", "1199"}) {
        SCOPED_TRACE(cuenta);
        EXPECT_EQ(c["Cuenta"].texto(), cuenta);
        EXPECT_EQ(c["Refmodificada"].texto() + "|" + c["Marca1"].texto() + "|" + c["Observaciones"].texto() + "|" +
                      c["Notas"].texto(),
                  "Saldo inicial conciliado|S|Cuadra con la balanza|ver papel A-1");
        EXPECT_TRUE(c["Modificado"].booleano());
        for (auto campo : {"IdCriterio", "IdPoliza", "AplicaIVA", "Poliza"}) EXPECT_TRUE(c[campo].esNulo()) << campo;
        EXPECT_EQ(c["Importe"].moneda(), Moneda()) << "no amount: the column's default";
        c.siguiente();
    }
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM CedAnalitica WHERE Marca1 = 'M'"), 1);
}

TEST_F(CedulaAnalitica, LosFoliosSiguenASuRenglon) {
    Mov x{"1", "Dr", "2024-01-02", "1101", "D", "100", "x"}, y{"2", "Dr", "2024-01-03", "1101", "D", "200", "y"},
        z{"3", "Dr", "2024-01-04", "1101", "D", "50", "z"};
    Carga({x, y, z}, 1);
    auto cx = Cedula(x, 4), cy = Cedula(y, 4), cz = Cedula(z, 4);
    Folio(cx, "UX-1");
    Folio(cy, "UY-1");
    Folio(cx, "UX-2");
    Folio(cz, "UZ-1");
    Carga({y, x}, 30);  // z is gone; the rebuild puts y (the larger) first
    Reconstruye();
    ASSERT_EQ(IdsDe("1").size(), 1u);
    ASSERT_EQ(IdsDe("2").size(), 1u);
    EXPECT_LT(IdsDe("2")[0], IdsDe("1")[0]);
    EXPECT_EQ(FoliosDe(IdsDe("1")[0]), (Lista{"UX-1", "UX-2"}));
    EXPECT_EQ(FoliosDe(IdsDe("2")[0]), (Lista{"UY-1"}));
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM UUIDAnalitica"), 3);
}

TEST_F(CedulaAnalitica, DosReglasQueEligenUnMovimientoRecibenCadaUnaSuRenglonGuardado) {
    Regla(1, "1101", 0, "0");
    Carga({X}, 1);
    Cedula(X, 1, Marca("R1"));
    Cedula(X, 4, Marca("R4"), 1);
    Carga({X}, 5);
    Reconstruye();
    EXPECT_EQ(Filas(), (Lista{"1|20|1000|0|", "4|20|1000|1|Cuenta ya seleccionada por el criterio: Saldo Mayor a"}));
    EXPECT_EQ(Marcas(), (Lista{"R1", "R4"}));
    EXPECT_TRUE(Log().empty());
}

TEST_F(CedulaAnalitica, LosNoDeduciblesSeReligandoOSeReportanYSeBorran) {
    Mov x{"1", "Dr", "2024-01-02", "1101", "D", "100", "x"}, y{"2", "Dr", "2024-01-03", "1101", "D", "200", "y"},
        z{"3", "Dr", "2024-01-04", "1101", "H", "50", "z"};
    Carga({x, y, z}, 1);
    auto cx = Cedula(x, 4), cy = Cedula(y, 4), cz = Cedula(z, 4);
    NoDeducible(x, cx);
    NoDeducible(y, cy);
    NoDeducible(y, cy);  // two items, one row
    NoDeducible(z, cz);  // its movement disappears
    Carga({x, y}, 40);
    Reconstruye();

    auto nx = IdsDe("1").at(0), ny = IdsDe("2").at(0);
    Consulta nd = db().consulta("SELECT Poliza, IdCedAnalitica FROM CedNoDeducibles ORDER BY rowid");
    ASSERT_EQ(nd.cuentaRegistros(), 2u);
    EXPECT_EQ(nd["IdCedAnalitica"].entero(), nx);
    nd.siguiente();
    EXPECT_EQ(nd["IdCedAnalitica"].entero(), ny);
    EXPECT_EQ(Log(), (Lista{
                         "No se encontró el movimiento Abono por 50 de la Póliza, por lo que no se pudo reestablecer "
                         "en la cédula analítica.",
                         "No se pudo integrar el movimiento. Cargo por 200 No Deducible ya que no se encontró en la "
                         "cédula analítica.",
                         "No se pudo integrar el mov. Abono por 50 No Deducible ya que no se encontró en la cédula "
                         "analítica.",
                     }));
    // The working mark ends on the rows that took an item, and on no other.
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM CedAnalitica WHERE Aplicado <> 0"), 2);
}

TEST_F(CedulaAnalitica, UnNoDeducibleSinCedulaSeReportaYSeBorra) {
    NoDeducible(X, 77);
    db().ejecuta("UPDATE CedNoDeducibles SET Poliza = NULL, Fecha = NULL");
    ReintegraNoDeducibles(s);
    EXPECT_EQ(Log(), Lista{"No se pudo integrar el mov. Cargo por 1000 No Deducible ya que no se encontró en la "
                           "cédula analítica."});
    EXPECT_TRUE(db().escalar("SELECT Fecha FROM InconsisImpTmp").esNulo());
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM CedNoDeducibles"), 0);
}

TEST_F(CedulaAnalitica, LaCopiaGuardadaConservaElNumeroAnteriorYUnaCedulaVaciaNoTocaLaCopiaVieja) {
    Carga({X}, 1);
    CreaCedAnaliticaTmp(s);
    {
        BaseDatos vieja(RutaAlmacen(s, kCedAnaliticaTmp));
        vieja.ejecuta("INSERT INTO CedAnaliticaTmp (Cuenta) VALUES ('de una corrida anterior')");
    }
    GuardaCedulaAnalitica(s);  // nothing to save
    {
        BaseDatos vieja(RutaAlmacen(s, kCedAnaliticaTmp), BaseDatos::Modo::SoloLectura);
        EXPECT_EQ(vieja.escalar("SELECT Cuenta FROM CedAnaliticaTmp").texto(), "de una corrida anterior");
    }
    Mov raro = X;
    raro.referencia = "Pago 'B' | y~z";
    auto id = Cedula(raro, 4, Completo("Q"));
    GuardaCedulaAnalitica(s);
    Consulta g = db().consulta("SELECT * FROM CedAnaliticaTmp");
    ASSERT_EQ(g.cuentaRegistros(), 1u);
    EXPECT_EQ(g["IdCedAnaliticaAnt"].entero(), id);
    EXPECT_EQ(g["Referencia"].texto(), "Pago B  yz");
    EXPECT_EQ(g["RefModificada"].texto(), "Anticipo a proveedor Q");
    EXPECT_EQ(g["Notas"].texto(), "Revisó JLM");
    EXPECT_FALSE(g["MovtoExistente"].booleano());
}

TEST_F(CedulaAnalitica, UnaCorridaDeshechaDejaLaCedulaComoEstaba) {
    Carga({X}, 1);
    auto id = Cedula(X, 4, Completo("K"));
    Folio(id, "U-1");
    NoDeducible(X, id);
    const std::string antes = TrabajoDe(id);
    Carga({}, 1);
    {
        Transaccion t(db());
        ReconstruyeCedulaAnalitica(s);
        ReintegraNoDeducibles(s);
        EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM CedAnalitica"), 0);
        t.deshace();
    }
    EXPECT_EQ(IdsDe("20"), std::vector<std::int64_t>{id});
    EXPECT_EQ(TrabajoDe(id), antes);
    EXPECT_EQ(FoliosDe(id), Lista{"U-1"});
    EXPECT_EQ(Cuantos("SELECT IdCedAnalitica FROM CedNoDeducibles"), id);

    // Imported again, the same work lands on the new movement.
    Carga({X}, 60);
    Reconstruye();
    auto nuevo = IdsDe("20").at(0);
    EXPECT_EQ(TrabajoDe(nuevo), antes);
    EXPECT_EQ(FoliosDe(nuevo), Lista{"U-1"});
    EXPECT_EQ(Cuantos("SELECT IdCedAnalitica FROM CedNoDeducibles"), nuevo);
}

}  // namespace
