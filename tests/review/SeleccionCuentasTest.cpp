// The account selection rebuilt after a re-import: every rule over the
// review months, on balances that moved.

#include <algorithm>

#include "review/SeleccionEmpresaPrueba.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

const std::string kYa = "Cuenta ya seleccionada por el criterio: ";

class Reimportacion : public EmpresaSeleccion {
protected:
    Reimportacion() {
        // 110 bank accounts (debit nature), 120 a sampled account, 210 suppliers (credit nature).
        Cuenta("110", "D", false, "A", 1);
        Cuenta("11001", "D", false, "A", 2);
        for (auto c : {"1100101", "1100102", "1100103", "1100104", "1100105"}) Cuenta(c, "D");
        Cuenta("1100106", "D", false);
        Cuenta("1100107", "D");  // no trial balance row: not a candidate
        for (auto c : {"1200101", "1200102", "1200103", "1200104", "1200105"}) Cuenta(c, "D");
        for (auto c : {"2100101", "2100102", "2100103", "2100104"}) Cuenta(c, "a");
        db().ejecuta("UPDATE Cuentas SET PorRevisar = -1 WHERE Cuenta = '2100103'");

        // The new balances of months 9 and 12, as the re-import left them.
        struct {
            const char* cuenta;
            const char *mes9, *mes12;
        } saldos[] = {{"1100101", "1000", "900"}, {"1100102", "600", "700"}, {"1100103", "-50", "300"},
                      {"1100104", "200", "0"},    {"1100105", "-120", "-120"}, {"1100106", "40", "40"},
                      {"1200101", "100", "100"},  {"1200102", "200", "200"},  {"1200103", "300", "300"},
                      {"1200104", "400", "400"},  {"1200105", "500", "500"},  {"2100101", "-1000", "-1000"},
                      {"2100102", "300", "300"},  {"2100103", "100", "100"},  {"2100104", "-200", "-200"},
                      {"110", "1670", "1820"},    {"120", "1500", "1500"},    {"210", "-800", "-800"}};
        for (auto& x : saldos) {
            Saldo(x.cuenta, 9, M(x.mes9));
            Saldo(x.cuenta, 12, M(x.mes12));
        }

        // Month 9 holds a rule of every kind; month 12 none yet.
        Regla(1, "110", 9, M("800"));
        Regla(2, "110", 9, {}, 80);
        Regla(7, "110", 9, M("50"));
        Regla(8, "110", 9, {}, 50);
        Regla(4, "110", 9);
        Aleatoria("120", 9, 100, "Aleatoria del 100%, 2 cuentas de 5");
        Regla(8, "210", 9, {}, 60);
        Regla(2, "210", 9, {}, 100);
        Regla(3, "110", 9, M("1"), 0, 0, "a mano");

        // The selection before the re-import.
        Seleccionada(1, "1100101", 3, M("950"));  // month 3 is no longer a review month
        Seleccionada(1, "1100101", 9, M("990"));
        Seleccionada(4, "1100104", 9, M("150"));
        Seleccionada(4, "1100107", 9, M("10"));  // chosen by hand, now gone
        Seleccionada(10, "1200102", 9, M("180"));
        Seleccionada(10, "1200109", 9, M("10"));  // drawn, now gone
        Seleccionada(3, "1100105", 9, M("5"));
    }
};

TEST_F(Reimportacion, CadaMesSeReconstruyeConLasMismasReglasSobreLosSaldosNuevos) {
    ReconstruyeComoLaImportacion();

    EXPECT_EQ(Filas(3), std::vector<std::string>{"1 1100101 950 0|"}) << "a month outside the list is not touched";
    EXPECT_EQ(Filas(9), (std::vector<std::string>{
                            "1 1100101 1000 0|",
                            "2 1100101 1000 1|" + kYa + "Saldo Mayor a",
                            "2 1100102 600 0|",  // the row that passes 80% of 1840
                            "7 1100105 -120 0|",
                            "7 1100103 -50 0|",  // the amount itself is enough
                            "8 1100105 -120 1|" + kYa,
                            "4 1100104 200 0|",
                            "10 1200102 200 0|",
                            "8 2100102 300 0|",
                            "2 2100101 -1000 0|",
                            "2 2100104 -200 0|",
                        }));
    EXPECT_EQ(Figuras(2, "110", 9), "32.61|1840|el 32.61 % de $1,840.00");
    EXPECT_EQ(Figuras(8, "110", 9), "0|-170|el 0 % de -$170.00 en cuentas con signo contrario a su naturaleza");
    EXPECT_EQ(Figuras(8, "210", 9), "75|400|el 75 % de $400.00 en cuentas con signo contrario a su naturaleza");
    EXPECT_EQ(Figuras(2, "210", 9), "100|-1200|el 100 % de -$1,200.00");
    EXPECT_EQ(Descripcion(10, "120", 9), "Aleatoria del 100%, 2 cuentas de 5") << "month 9 is not the last: no draw";
    EXPECT_EQ(Figuras(3, "110", 9), "0|1820|a mano") << "an unknown rule keeps its text";

    // Month 12 had no rule: it got month 9's, and being the last it draws.
    std::vector<std::string> filas12 = Filas(12);
    ASSERT_EQ(filas12.size(), 14u);
    std::vector<std::string> sorteadas(filas12.begin() + 7, filas12.begin() + 11);
    filas12.erase(filas12.begin() + 7, filas12.begin() + 11);
    EXPECT_EQ(filas12, (std::vector<std::string>{
                           "1 1100101 900 0|",
                           "2 1100101 900 1|" + kYa + "Saldo Mayor a",
                           "2 1100102 700 0|",
                           "7 1100105 -120 0|",
                           "8 1100105 -120 1|" + kYa,
                           "4 1100104 0 0|",  // a zero balance is still a candidate
                           "10 1200102 200 0|",
                           "8 2100102 300 0|",
                           "2 2100101 -1000 0|",
                           "2 2100104 -200 0|",
                       }));
    std::sort(sorteadas.begin(), sorteadas.end());
    EXPECT_EQ(sorteadas, (std::vector<std::string>{"10 1200101 100 0|", "10 1200103 300 0|", "10 1200104 400 0|",
                                                   "10 1200105 500 0|"}));
    EXPECT_EQ(Figuras(2, "110", 12), "36.08|1940|el 36.08 % de $1,940.00");
    EXPECT_EQ(Figuras(8, "110", 12), "0|-120|el 0 % de -$120.00 en cuentas con signo contrario a su naturaleza");
    EXPECT_EQ(Descripcion(10, "120", 12), "Aleatoria del 100%, 5 cuentas de 5");
    EXPECT_EQ(Figuras(3, "110", 12), "0|1820|a mano");
    EXPECT_EQ(db().escalar("SELECT count(*) FROM SeleccionMaster").entero(), 18);

    Consulta h = db().consulta("SELECT * FROM HistorialSorteos");
    ASSERT_EQ(h.cuentaRegistros(), 1u);
    EXPECT_EQ(h["MesRevision"].entero(), 12);
    EXPECT_EQ(h["IdCriterio"].entero(), 10);
    EXPECT_EQ(h["CtaIntegracion"].texto(), "120");
    EXPECT_EQ(h["Descripcion"].texto(), "Aleatoria del 100%, 2 cuentas de 5");
    EXPECT_EQ(h["Poblacion"].entero(), 5);
    EXPECT_EQ(h["TotalPoblacion"].moneda(), M("1500"));
    EXPECT_EQ(h["Muestra"].entero(), 5);
    EXPECT_EQ(h["Previas"].entero(), 1);
    EXPECT_EQ(h["PorSortear"].entero(), 4);
    EXPECT_EQ(h["Disponibles"].entero(), 4);
    EXPECT_FALSE(h["PoolCompleto"].booleano());
    EXPECT_FALSE(h["Semillas"].texto().empty());
    EXPECT_EQ(h["FechaHora"].texto().size(), 19u);
    std::string cuentas = h["Cuentas"].texto();
    for (auto c : {"1200101", "1200103", "1200104", "1200105"}) EXPECT_NE(cuentas.find(c), std::string::npos) << c;

    Consulta marcadas = db().consulta("SELECT Cuenta FROM Cuentas WHERE PorRevisar ORDER BY Cuenta");
    std::vector<std::string> porRevisar;
    for (marcadas.primero(); !marcadas.eof(); marcadas.siguiente()) porRevisar.push_back(marcadas["Cuenta"].texto());
    EXPECT_EQ(porRevisar, (std::vector<std::string>{"1100101", "1100102", "1100103", "1100104", "1100105", "1200101",
                                                    "1200102", "1200103", "1200104", "1200105", "2100101", "2100102",
                                                    "2100103", "2100104"}))
        << "2100103 was never selected here and keeps its mark";
}

TEST_F(Reimportacion, UnMesSinReglasConservaSusFilasYElPrimeroNoCopiaNada) {
    db().ejecuta("DELETE FROM SeleccionMaster");
    Seleccionada(2, "1100102", 12, M("1"));
    s.MesesRevision = {0, 9, 12};
    ReconstruyeComoLaImportacion();
    EXPECT_FALSE(ExistenCriteriosDelMes(s, 9)) << "the month before the first is month 0, which has no rule";
    EXPECT_EQ(Filas(9).size(), 6u);
    EXPECT_EQ(Filas(12), std::vector<std::string>{"2 1100102 1 0|"});
}

TEST_F(Reimportacion, SinPrepararLosAlmacenesDentroDeLaTransaccionElErrorLoDice) {
    Transaccion t(db());
    try {
        ReconstruyeSeleccionCuentas(s, 9);
        FAIL() << "expected an error";
    } catch (const std::runtime_error& e) {
        EXPECT_NE(std::string(e.what()).find("debe abrirse antes de la transacción"), std::string::npos) << e.what();
    }
}

TEST_F(Reimportacion, FueraDeUnaTransaccionCadaMesCreaSusAlmacenes) {
    ReconstruyeSeleccionCuentas(s, 9);
    EXPECT_EQ(Filas(9).size(), 11u);
    EXPECT_EQ(db().escalar("SELECT count(*) FROM SeleccPreviaCtasBalTmp").entero(), 7)
        << "the copy of the selection before the delete, of every month";
}

TEST_F(EmpresaSeleccion, ActualizaTotalCtaSeleccionSoloDondeHayBalanza) {
    Saldo("110", 5, M("123.45"));
    Regla(1, "110", 3);
    Regla(1, "110", 9);
    Regla(2, "999", 9);
    db().ejecuta("UPDATE SeleccionMaster SET TotalCta = ?", M("7"));
    ActualizaTotalCtaSeleccion(s, 5);
    Consulta c = db().consulta("SELECT CtaIntegracion, TotalCta FROM SeleccionMaster ORDER BY rowid");
    std::vector<std::string> r;
    for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c.campo(0).texto() + "=" + c.campo(1).moneda().texto());
    EXPECT_EQ(r, (std::vector<std::string>{"110=123.45", "110=123.45", "999=7"}));
}

TEST_F(EmpresaSeleccion, CopiaCriteriosDelMesVuelveNuloEnCeroYEnVacio) {
    db().ejecuta("INSERT INTO SeleccionMaster (IdCriterio, CtaIntegracion, MesRevision) VALUES (1, '110', 4)");
    Regla(2, "110", 4, M("5"), 12.5, 3, "texto");
    CopiaCriteriosDelMes(s, 4, 7);
    Consulta c = db().consulta("SELECT * FROM SeleccionMaster WHERE MesRevision = 7 ORDER BY rowid");
    ASSERT_EQ(c.cuentaRegistros(), 2u);
    EXPECT_EQ(c["Descripcion"].texto(), "");
    EXPECT_FALSE(c["Descripcion"].esNulo());
    EXPECT_EQ(c["PorcentajeUsr"].real(), 0);
    c.siguiente();
    EXPECT_EQ(c["PorcentajeUsr"].real(), 12.5);
    EXPECT_EQ(c["SaldoMayorA"].moneda(), M("5"));
    EXPECT_EQ(c["Descripcion"].texto(), "texto");
}

// Rules by percentage on one integration account, from the user's
// percentage to the rows and the rewritten figures.
TEST_F(EmpresaSeleccion, PorcentajeDelTotal) {
    struct Caso {
        std::string nombre;
        std::vector<std::pair<const char*, const char*>> saldos;  // account, balance of month 12
        long criterio;
        double porcentajeUsr;
        std::vector<std::string> filas;
        std::string figuras;
    } casos[] = {
        {"total cero", {{"1100101", "0"}, {"1100102", "0"}}, 2, 50,
         {"2 1100101 0 0|", "2 1100102 0 0|"}, "0|0|el 0 % de $0.00"},
        {"sin candidatas", {}, 2, 50, {}, "0|0|el 0 % de $0.00"},
        {"objetivo cero toma la primera con saldo", {{"1100101", "10"}, {"1100102", "30"}}, 2, 0,
         {"2 1100102 30 0|"}, "75|40|el 75 % de $40.00"},
        {"empates por cuenta", {{"1100103", "10"}, {"1100101", "10"}, {"1100102", "10"}}, 2, 50,
         {"2 1100101 10 0|", "2 1100102 10 0|"}, "66.67|30|el 66.67 % de $30.00"},
        {"la primera ya pasa el objetivo", {{"1100101", "1"}, {"1100102", "7"}}, 2, 10,
         {"2 1100102 7 0|"}, "87.5|8|el 87.5 % de $8.00"},
        {"contrario a la naturaleza", {{"1100101", "-30"}, {"1100102", "-10"}, {"1100103", "5"}}, 8, 80,
         {"8 1100101 -30 0|", "8 1100102 -10 0|"}, "100|-40|el 100 % de -$40.00 en cuentas con signo contrario a su naturaleza"},
    };
    for (auto& caso : casos) {
        SCOPED_TRACE(caso.nombre);
        for (auto tabla : {"Cuentas", "Balanzas", "SeleccionMaster", "SeleccionDetalle"})
            db().ejecuta(std::string("DELETE FROM ") + tabla);
        for (auto& [cuenta, saldo] : caso.saldos) {
            Cuenta(cuenta, "D");
            Saldo(cuenta, 12, M(saldo));
        }
        Regla(caso.criterio, "110", 12, {}, caso.porcentajeUsr);
        ReconstruyeSeleccionCuentas(s, 12);
        EXPECT_EQ(Filas(12), caso.filas);
        EXPECT_EQ(Figuras(caso.criterio, "110", 12), caso.figuras);
    }
}

TEST(TextosDeSeleccion, PorcentajeSeleccionadoRedondeaAlPar) {
    struct {
        const char *seleccionado, *total;
        double esperado;
    } casos[] = {{"1", "8", 12.5},       {"1", "3", 33.33},   {"2", "3", 66.67},   {"-1", "8", 12.5},
                 {"1", "-8", 12.5},      {"0", "0", 0},       {"5", "0", 0},       {"0.125", "100", 0.12},
                 {"0.135", "100", 0.14}, {"600", "1840", 32.61}};
    for (auto& c : casos)
        EXPECT_DOUBLE_EQ(PorcentajeSeleccionado(M(c.seleccionado), M(c.total)), c.esperado)
            << c.seleccionado << "/" << c.total;
}

TEST_F(EmpresaSeleccion, NombreCriterioCuentas) {
    Regla(1, "110", 3);
    Regla(2, "110", 9);
    Regla(7, "110", 9);
    EXPECT_EQ(NombreCriterioCuentas(s, 1, "110"), "Saldo Mayor a") << "any month";
    EXPECT_EQ(NombreCriterioCuentas(s, 2, "110"), "% del total de la cuenta");
    EXPECT_EQ(NombreCriterioCuentas(s, 7, "110"), "");
    EXPECT_EQ(NombreCriterioCuentas(s, 1, "120"), "") << "no such rule for the account";
    Cuenta("1100101", "A");
    EXPECT_EQ(NaturalezaDeCuenta(s, "1100101"), "A");
    EXPECT_EQ(NaturalezaDeCuenta(s, "9"), "");
}

}  // namespace
