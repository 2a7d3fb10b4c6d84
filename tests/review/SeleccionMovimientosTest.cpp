#include <gtest/gtest.h>


#include "review/CedulaAnalitica.h"
#include "review/EntornoCedula.h"
#include "review/SeleccionMovimientos.h"
#include "review/SeleccionMovimientosRegistro.h"
#include "session/Funciones.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

using Lista = std::vector<std::string>;

class SeleccionMovimientos : public EntornoCedula {
protected:
    // The saved schedule of an earlier import: these movements were reviewed.
    void Revisados(const std::vector<Mov>& movs, int idCriterio = 4) {
        for (auto& m : movs) Cedula(m, idCriterio);
    }
    std::string Descripcion(int id, const std::string& cuenta = "1101") {
        return db().escalar("SELECT Descripcion FROM CedAnaliticaMaster WHERE IdCriterio = ? AND CtaIntegracion = ?",
                            id, cuenta)
            .texto();
    }
    double Porcentaje(int id, const std::string& cuenta = "1101") {
        return db().escalar("SELECT Porcentaje FROM CedAnaliticaMaster WHERE IdCriterio = ? AND CtaIntegracion = ?",
                            id, cuenta)
            .real();
    }
    Moneda TotalCta(int id, const std::string& cuenta = "1101") {
        return db().escalar("SELECT TotalCta FROM CedAnaliticaMaster WHERE IdCriterio = ? AND CtaIntegracion = ?",
                            id, cuenta)
            .moneda();
    }
    void AbreAlmacenMovimientos() {
        CreaSelecPolizasDetalleTmp(s);
        ASSERT_TRUE(AbreAlmacen(s, kSelecPolizasDetalleTmp));
    }
};

Mov D(const std::string& poliza, const std::string& fecha, const std::string& importe, const std::string& ref = "") {
    return {poliza, "Dr", fecha, "1101", "D", importe, ref.empty() ? "ref " + poliza : ref};
}
Mov H(const std::string& poliza, const std::string& fecha, const std::string& importe) {
    return {poliza, "Dr", fecha, "1101", "H", importe, "ref " + poliza};
}

// ------------------------------------------------------------- The store

TEST_F(SeleccionMovimientos, ElSignoContrarioDependeDeLaNaturalezaDelTipoYDelSignoDelImporte) {
    struct Caso {
        std::string naturaleza, tipoMov, importe;
        bool contrario;
    } casos[] = {
        {"D", "D", "100", false}, {"D", "H", "100", true},  {"D", "D", "-100", true},  {"D", "H", "-100", true},
        {"A", "H", "100", false}, {"A", "D", "100", true},  {"A", "H", "-100", true},  {"A", "D", "-100", true},
        {"", "H", "100", false},  {"D", "X", "100", false}, {"A", "X", "100", false},
    };
    AbreAlmacenMovimientos();
    std::vector<Mov> movs;
    int n = 0;
    for (auto& c : casos) {
        std::string cuenta = "C" + std::to_string(n++);
        if (!c.naturaleza.empty()) Cuenta(cuenta, c.naturaleza);
        movs.push_back({"1", "Dr", "2024-01-05", cuenta, c.tipoMov, c.importe, "x"});
    }
    Carga(movs);
    n = 0;
    for (auto& c : casos) {
        std::string cuenta = "C" + std::to_string(n++);
        SCOPED_TRACE(cuenta + " " + c.naturaleza + " " + c.tipoMov + " " + c.importe);
        db().ejecuta("DELETE FROM SelecPolizas_DetalleTmp");
        LlenaMovimientosCuenta(s, cuenta);
        Consulta r = db().consulta("SELECT SaldoContraNat, ImporteAbs FROM SelecPolizas_DetalleTmp");
        ASSERT_EQ(r.cuentaRegistros(), 1u);
        EXPECT_EQ(r["SaldoContraNat"].booleano(), c.contrario);
        EXPECT_EQ(r["ImporteAbs"].moneda(), M(c.importe).abs());
    }
}

TEST_F(SeleccionMovimientos, ElAlmacenTomaLasPartidasConImporteLimpiaLaReferenciaYCompletaLaPoliza) {
    Cuenta("1101");
    Carga({{"7", "Eg", "2024-02-29", "1101", "D", "10", "Pago 'A' | x~"},
           {"7", "Eg", "2024-02-29", "1101", "D", "0", "sin importe"},
           {"8", "Dr", "2024-03-01", "1102", "D", "5", "otra cuenta"}});
    db().ejecuta("INSERT INTO Polizas_Detalle (IdPoliza, Cuenta, TipoMov, Importe, Referencia) "
                 "VALUES (99, '1101', 'H', 30000, 'sin póliza')");
    AbreAlmacenMovimientos();
    LlenaMovimientosCuenta(s, "1101");
    CompletaDatosPoliza(s);
    Consulta r = db().consulta(
        "SELECT Referencia, NumMesFechaPol, Poliza, Tipo, Fecha FROM SelecPolizas_DetalleTmp ORDER BY rowid");
    ASSERT_EQ(r.cuentaRegistros(), 2u);
    EXPECT_EQ(r["Referencia"].texto(), "Pago A  x");
    EXPECT_EQ(r["NumMesFechaPol"].entero(), 2);
    EXPECT_EQ(r["Poliza"].texto(), "7");
    EXPECT_EQ(r["Tipo"].texto(), "Eg");
    EXPECT_EQ(r["Fecha"].texto(), "2024-02-29");
    r.siguiente();  // the line whose voucher is missing keeps Nulls and falls out of every month test
    EXPECT_TRUE(r["NumMesFechaPol"].esNulo());
    EXPECT_TRUE(r["Poliza"].esNulo());
    EXPECT_TRUE(r["Fecha"].esNulo());
}

TEST_F(SeleccionMovimientos, LaMarcaDeRevisadosReclamaUnMovimientoPorRenglonGuardadoConVerObsCero) {
    Cuenta("1101");
    Mov uno = D("1", "2024-01-10", "100");
    Carga({uno, D("2", "2024-01-11", "200")});
    Cedula(uno, 1);              // claims the one movement
    Cedula(uno, 4, {}, 1);       // a remark claims nothing and counts as found
    Cedula(uno, 2);              // a second claim on the same movement finds none
    SaldoInicial("1101", {});    // an opening balance line needs no search
    GuardaCedulaAnalitica(s);
    AbreAlmacenMovimientos();
    LlenaMovimientosCuenta(s, "1101");
    CompletaDatosPoliza(s);
    MarcaMovimientosRevisados(s, "1101");

    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM SelecPolizas_DetalleTmp WHERE MovRevisado = 1"), 1);
    Consulta g = db().consulta("SELECT IdCriterio, Referencia, MovtoExistente FROM CedAnaliticaTmp ORDER BY IdCedAnalitica");
    std::vector<bool> existentes;
    for (g.primero(); !g.eof(); g.siguiente()) existentes.push_back(g["MovtoExistente"].booleano());
    EXPECT_EQ(existentes, (std::vector<bool>{true, true, false, true}));
    EXPECT_TRUE(ExistenMovimientosPerdidos(s));
}

TEST_F(SeleccionMovimientos, SinCedulaGuardadaLaMarcaNoHaceNada) {
    Cuenta("1101");
    Carga({D("1", "2024-01-10", "100")});
    AbreAlmacenMovimientos();
    LlenaMovimientosCuenta(s, "1101");
    MarcaMovimientosRevisados(s, "1101");
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM SelecPolizas_DetalleTmp WHERE MovRevisado IS NOT NULL"), 0);
    EXPECT_FALSE(ExistenMovimientosPerdidos(s));
}

// ------------------------------------------------------------- The driver

TEST_F(SeleccionMovimientos, SinReglasLaCedulaNoSeGuardaNiSeBorra) {
    Cuenta("1101");
    Mov m = D("1", "2024-01-10", "100");
    Carga({m});
    Trabajo t;
    t.marca1 = "X";
    Cedula(m, 4, t);
    ReconstruyeCedulaAnalitica(s);
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM CedAnalitica WHERE Marca1 = 'X'"), 1);
    EXPECT_FALSE(ExisteArchivo(RutaAlmacen(s, kCedAnaliticaTmp)));
    EXPECT_FALSE(ExisteArchivo(RutaSelecPolizasDetalleTmp()));
}

TEST_F(SeleccionMovimientos, QuitaElAsteriscoFinalTrasRecortarLosBlancos) {
    struct Caso {
        std::string antes, despues;
    } casos[] = {{"abc*", "abc"}, {"  abc * ", "abc "}, {"abc", "abc"}, {"*", ""}, {"a*b", "a*b"}, {"", ""}};
    for (auto& c : casos) Regla(4, c.antes.empty() ? "vacia" : c.antes, 0, "0", "0", c.antes);
    QuitaMarcaDescripcion(s);
    for (auto& c : casos) {
        SCOPED_TRACE("'" + c.antes + "'");
        // The trimmed text loses its last character; what is left is not trimmed again.
        EXPECT_EQ(Descripcion(4, c.antes.empty() ? "vacia" : c.antes), c.despues);
    }
}

TEST_F(SeleccionMovimientos, LasReglasUnoYSieteGuardanUnoYUnCriterioDesconocidoSoloMarcaLaCuenta) {
    Cuenta("1101");
    Cuenta("1102");
    Carga({D("1", "2024-01-10", "500"), D("2", "2024-02-10", "1000"), H("3", "2024-02-11", "800"),
           D("4", "2024-03-01", "999.99"), D("5", "2024-03-02", "0"),
           {"6", "Dr", "2024-03-03", "1102", "D", "5000", "x"}});
    Regla(1, "1101", 0, "1000");
    Regla(7, "1101", 0, "500");
    Regla(12, "1102");
    Reconstruye();
    EXPECT_EQ(Filas(), (Lista{"1|2|1000|0|", "1|3|800|0|"}));
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM Cuentas WHERE PorRevisar <> 0"), 2);
}

TEST_F(SeleccionMovimientos, UnMovimientoQueOtraReglaYaEligioVuelveComoNotaSalvoEnLaOnce) {
    Cuenta("1101");
    Mov a = D("1", "2024-01-10", "500"), b = D("2", "2024-02-10", "1000"), c = H("3", "2024-02-11", "800");
    Carga({a, b, c}, 1);
    Revisados({a, b, c});  // so that rule 11 takes them again
    Carga({a, b, c}, 50);
    s.UltimoMesImportado = 2;
    Regla(1, "1101", 0, "600");
    Regla(4, "1101");
    Regla(11, "1101", 10, "0", "0", "Aleatoria de Cargos y Abonos del 10%, 3 partidas de 3");
    Reconstruye();
    const std::string nota = "Cuenta ya seleccionada por el criterio: Saldo Mayor a";
    EXPECT_EQ(Filas(), (Lista{"1|2|1000|0|", "4|2|1000|1|" + nota, "4|3|800|0|", "4|1|500|0|", "11|1|500|0|",
                              "11|2|1000|0|", "11|3|800|0|"}));
}

TEST_F(SeleccionMovimientos, LaNotaDeUnMovimientoElegidoPorLaSieteNoNombraCriterio) {
    Cuenta("1101");
    Carga({H("3", "2024-02-11", "800")});
    s.UltimoMesImportado = 1;
    Regla(7, "1101", 0, "100");
    Regla(8, "1101", 100, "0", "0");
    Reconstruye();
    EXPECT_EQ(Filas(), (Lista{"1|3|800|0|", "8|3|800|1|Cuenta ya seleccionada por el criterio: "}));
}

// --------------------------------------------------------- Percentage walks

TEST_F(SeleccionMovimientos, LaReglaDosPrefiereLosRevisadosCruzaElObjetivoYReescribeSuPorcentaje) {
    struct Caso {
        double porcentaje;
        Lista filas;
        double alcanzado;
        std::string texto;
    } casos[] = {
        // Reviewed first by size (D 200, B 100); A and C, of reviewed months but not held before, never enter.
        {50, {"2|D|200|0|", "2|B|100|0|"}, 30, "el 30 % de $1,000.00"},
        {25, {"2|D|200|0|", "2|B|100|0|"}, 30, "el 30 % de $1,000.00"},  // B crosses 250 and goes in
        {0, {"2|D|200|0|"}, 20, "el 20 % de $1,000.00"},                  // the first row crosses a target of 0
    };
    Cuenta("1101");
    std::vector<Mov> movs{D("A", "2024-01-05", "400"), D("B", "2024-01-06", "100"), D("C", "2024-02-01", "300"),
                          D("D", "2024-03-01", "200")};
    for (auto& c : casos) {
        SCOPED_TRACE(c.porcentaje);
        db().ejecuta("DELETE FROM CedAnalitica");
        db().ejecuta("DELETE FROM CedAnaliticaMaster");
        Carga(movs, 1);
        Revisados({movs[1], movs[3]});
        Carga(movs, 20);
        Regla(2, "1101", c.porcentaje, "0", "1000");
        Reconstruye();
        EXPECT_EQ(Filas(), c.filas);
        EXPECT_DOUBLE_EQ(Porcentaje(2), c.alcanzado);  // the next import starts from what was reached
        EXPECT_EQ(TotalCta(2), M("1000"));
        EXPECT_EQ(Descripcion(2), c.texto);
    }
}

TEST_F(SeleccionMovimientos, LaReglaDosCaminaDosVecesCuandoHayMesesNuevos) {
    Cuenta("1101");
    std::vector<Mov> movs{D("A", "2024-01-05", "400"), D("C", "2024-02-01", "300"), D("E", "2024-03-01", "600"),
                          D("F", "2024-04-01", "200"), H("G", "2024-04-02", "900")};
    Carga(movs, 1);
    Revisados({movs[0]});
    Carga(movs, 30);
    s.UltimoMesImportado = 2;
    s.UltimoMesNuevo = 4;
    // First walk to 350 over months 1-2: A crosses. New months hold 800: second walk to 400, E crosses.
    Regla(2, "1101", 50, "0", "700");
    Reconstruye();
    EXPECT_EQ(Filas(), (Lista{"2|A|400|0|", "2|E|600|0|"}));
    EXPECT_DOUBLE_EQ(Porcentaje(2), 66.67);
    EXPECT_EQ(TotalCta(2), M("1500"));
    EXPECT_EQ(Descripcion(2), "el 66.67 % de $1,500.00");
}

TEST_F(SeleccionMovimientos, LaReglaOchoTomaElSignoContrarioYLoDiceEnSuTexto) {
    Cuenta("1101");
    std::vector<Mov> movs{D("A", "2024-03-05", "400"), H("G", "2024-03-06", "900"), H("K", "2024-03-07", "100")};
    Carga(movs, 1);
    s.UltimoMesImportado = 2;
    s.UltimoMesNuevo = 3;
    Regla(8, "1101", 50, "0", "0");
    Reconstruye();
    EXPECT_EQ(Filas(), (Lista{"8|G|900|0|"}));
    EXPECT_EQ(Descripcion(8), "el 90 % de $1,000.00 en movimientos con signo contrario a su naturaleza");
}

TEST_F(SeleccionMovimientos, UnaCaminataSinRenglonesEscribeCeroEnLaRegla) {
    Cuenta("1101");
    Carga({});
    Regla(2, "1101", 40, "0", "500");
    Reconstruye();
    EXPECT_TRUE(Filas().empty());
    EXPECT_DOUBLE_EQ(Porcentaje(2), 0);
    EXPECT_EQ(TotalCta(2), Moneda());
    EXPECT_EQ(Descripcion(2), "el 0 % de $0.00");
}

TEST_F(SeleccionMovimientos, LasReglasPorTipoSeDetienenEnElPrimerRenglonInutilizable) {
    Cuenta("1101");
    std::vector<Mov> movs{D("m", "2024-01-05", "500"), D("u", "2024-02-01", "400"), D("n1", "2024-03-01", "300"),
                          D("n2", "2024-03-02", "100"), H("h1", "2024-03-03", "300"), H("h2", "2024-03-04", "100")};
    Carga(movs, 1);
    Revisados({movs[0]});
    Carga(movs, 40);
    s.UltimoMesImportado = 2;
    Regla(5, "1101", 100);
    Regla(6, "1101", 50);
    Reconstruye();
    // u, of a reviewed month and not held before, ends the debit walk: n1 and n2 are never reached.
    EXPECT_EQ(Filas(), (Lista{"5|m|500|0|", "6|h1|300|0|"}));
    EXPECT_DOUBLE_EQ(Porcentaje(5), 38.46);
    EXPECT_EQ(Descripcion(5), "el 38.46 % de Cargos de un total de $1,300.00");
    EXPECT_EQ(TotalCta(5), M("1300"));
    EXPECT_EQ(Descripcion(6), "el 75 % de Abonos de un total de $400.00");
}

TEST_F(SeleccionMovimientos, LaSeleccionMensualLeeSusMesesYNoReescribeLaRegla) {
    Cuenta("1101");
    Carga({D("ene", "2024-01-03", "999"), D("f1", "2024-02-01", "300"), D("f2", "2024-02-02", "100"),
           D("m1", "2024-03-01", "200"), D("m2", "2024-03-02", "50")});
    s.UltimoMesImportado = 1;
    const std::string texto = "Selección mensual [FEB - 050%; MAR - 100%]";
    Regla(3, "1101", 12, "0", "77", texto);
    Reconstruye();
    EXPECT_EQ(Filas(), (Lista{"3|f1|300|0|", "3|m1|200|0|", "3|m2|50|0|"}));
    EXPECT_EQ(Descripcion(3), texto);
    EXPECT_DOUBLE_EQ(Porcentaje(3), 12);
    EXPECT_EQ(TotalCta(3), M("77"));
}

TEST_F(SeleccionMovimientos, LeeLosMesesYPorcentajesDeLaDescripcion) {
    struct Caso {
        std::string texto;
        std::vector<int> meses;
        std::vector<std::string> porcentajes;
    } casos[] = {
        {"Selección mensual [ENE - 010%; FEB - 020%; MAR - 030%]", {1, 2, 3}, {"010", "020", "030"}},
        {"  [dic - 100%]  ", {12}, {"100"}},
        {"[MZO - 010%;ABR - 5.5%]", {0, 4}, {"010", "5.5"}},
        {"ENE 10%;feb 5%]", {1, 2}, {" 10", "5%]"}},
        {"", {0}, {""}},
    };
    for (auto& c : casos) {
        SCOPED_TRACE(c.texto);
        auto r = LeeMesesDescripcion(c.texto);
        EXPECT_EQ(r.meses, c.meses);
        EXPECT_EQ(r.porcentajes, c.porcentajes);
    }
}

// ------------------------------------------------- Reviewed and random rules

TEST_F(SeleccionMovimientos, LaReglaNueveTomaSoloLosRevisadosHastaElUltimoMesImportado) {
    Cuenta("1101");
    std::vector<Mov> movs{D("x", "2024-01-05", "10"), D("z", "2024-02-05", "20"), D("y", "2024-03-05", "30")};
    Carga(movs, 1);
    Revisados({movs[0], movs[2]});
    Carga(movs, 10);
    s.UltimoMesImportado = 2;
    Regla(9, "1101");
    Reconstruye();
    EXPECT_EQ(Filas(), (Lista{"9|x|10|0|"}));
}

TEST_F(SeleccionMovimientos, LaReglaDiezTomaLosRevisadosYNoSorteaNadaNuevo) {
    Cuenta("1101");
    std::vector<Mov> movs{D("x", "2024-01-05", "10"), H("z", "2024-02-05", "20"), D("n1", "2024-03-01", "1"),
                          D("n2", "2024-03-02", "2"), D("n3", "2024-03-03", "3")};
    Carga(movs, 1);
    Revisados({movs[0], movs[1]});
    Carga(movs, 10);
    s.UltimoMesImportado = 2;
    const std::string texto = "Aleatoria del 50%, 2 partidas de 4, < 1";
    Regla(10, "1101", 50, "0", "2", texto);
    int semillas = 0;
    Reconstruye([&] { return static_cast<std::uint64_t>(++semillas); });
    // "MovRevisado=NULL" selects no new movement, so nothing is drawn and the rule is left as it was.
    EXPECT_EQ(Filas(), (Lista{"10|x|10|0|"}));
    EXPECT_EQ(semillas, 0);
    EXPECT_EQ(Descripcion(10), texto);
    EXPECT_EQ(TotalCta(10), M("2"));
}

TEST_F(SeleccionMovimientos, UnSorteoDeMovimientosRegistraLaMuestraYQuedaEnElHistorial) {
    Cuenta("1101");
    std::vector<Mov> movs{D("n1", "2024-03-01", "10"), D("n2", "2024-03-02", "20"), D("n3", "2024-03-03", "30"),
                          D("n4", "2024-03-04", "40"), D("n5", "2024-03-05", "50")};
    Carga(movs, 1);
    Regla(10, "1101", 40);
    AbreAlmacenMovimientos();
    LlenaMovimientosCuenta(s, "1101");
    CompletaDatosPoliza(s);
    auto nuevos = cedula::Movimientos(db().consulta("SELECT * FROM SelecPolizas_DetalleTmp ORDER BY rowid"));

    RegistroSorteo h;
    h.idCriterio = 10;
    h.ctaIntegracion = "1101";
    h.descripcion = "Aleatoria del 40%, 3 partidas de 6";
    h.poblacion = 6;
    h.previas = 1;
    std::uint64_t reloj = 1000;
    FuenteSemilla semillas = [&] { return reloj += 7; };
    cedula::RegistroCedula registro(s);
    ASSERT_EQ(cedula::SorteaMovimientosNuevos(s, registro, nuevos, 40, h, semillas), 2);  // 40 % of 5

    Consulta hs = db().consulta("SELECT * FROM HistorialSorteos");
    ASSERT_EQ(hs.cuentaRegistros(), 1u);
    EXPECT_EQ(hs["IdCriterio"].entero(), 10);
    EXPECT_EQ(hs["CtaIntegracion"].texto(), "1101");
    EXPECT_EQ(hs["Descripcion"].texto(), "Aleatoria del 40%, 3 partidas de 6");
    EXPECT_EQ(hs["Muestra"].entero(), 2);
    EXPECT_EQ(hs["Disponibles"].entero(), 5);
    EXPECT_EQ(hs["Previas"].entero(), 1);
    EXPECT_FALSE(hs["Semillas"].texto().empty());
    // The rows registered are the positions drawn, in the order drawn, and the history names them.
    const std::string posiciones = hs["Posiciones"].texto();
    ASSERT_EQ(posiciones.size(), 3u) << posiciones;
    Lista esperadas, nombres;
    for (size_t p : {static_cast<size_t>(posiciones[0] - '0'), static_cast<size_t>(posiciones[2] - '0')}) {
        esperadas.push_back("10|" + movs[p].poliza + "|" + movs[p].importe + "|0|");
        nombres.push_back("Dr " + movs[p].poliza + " " + movs[p].fecha + " " + movs[p].importe);
    }
    EXPECT_EQ(Filas(), esperadas);
    EXPECT_EQ(hs["Cuentas"].texto(), nombres[0] + "," + nombres[1]);

    // With fewer than three movements to draw from, nothing is drawn nor recorded.
    std::vector<cedula::FilaMovimiento> pocos(nuevos.begin(), nuevos.begin() + 2);
    RegistroSorteo otro = h;
    EXPECT_FALSE(cedula::SorteaMovimientosNuevos(s, registro, pocos, 100, otro, semillas).has_value());
    EXPECT_EQ(Cuantos("SELECT COUNT(*) FROM HistorialSorteos"), 1);
}

// ------------------------------------------------------- Totals and lookups

TEST_F(SeleccionMovimientos, ElTotalDeLaCuentaEsSuSaldoDelMesOLaSumaDeSusMovimientos) {
    struct Caso {
        std::string cuenta;
        bool enBalanza;
        std::string saldo, esperado;
    } casos[] = {{"A", true, "1500", "1500"}, {"B", true, "0", "150"}, {"C", false, "", "70"}, {"N", false, "", "0"}};
    Carga({{"1", "Dr", "2024-01-01", "A", "D", "9", "x"},
           {"1", "Dr", "2024-01-01", "B", "D", "100", "x"},
           {"1", "Dr", "2024-01-01", "B", "H", "50", "x"},
           {"1", "Dr", "2024-01-01", "C", "D", "70", "x"}});
    for (auto& c : casos) {
        if (c.enBalanza) db().ejecuta("INSERT INTO Balanzas (Cuenta, SdoFin03, SdoFin04) VALUES (?, ?, 1)", c.cuenta, M(c.saldo));
        Regla(1, c.cuenta, 0, "0", "12345");
    }
    ActualizaTotalCtaAnalitica(s, 3);
    for (auto& c : casos) EXPECT_EQ(TotalCta(1, c.cuenta), M(c.esperado)) << c.cuenta;
    EXPECT_THROW(ActualizaTotalCtaAnalitica(s, 0), std::invalid_argument);
}

TEST_F(SeleccionMovimientos, NombraLosCriteriosDeLaCuentaYLeeDatosDeLaPoliza) {
    for (int id = 1; id <= 8; ++id) Regla(id, "1101");
    const char* nombres[] = {"", "Saldo Mayor a", "% del total de la cuenta", "Selección mensual",
                             "Todos los movimientos", "% del total de CARGOS", "% del total de ABONOS", "", ""};
    for (int id = 1; id <= 8; ++id) EXPECT_EQ(NombreCriterioMovimientos(s, id, "1101"), nombres[id]) << id;
    EXPECT_EQ(NombreCriterioMovimientos(s, 1, "9999"), "");

    Carga({{"P-7", "Eg", "2024-05-31", "1101", "D", "1", "x"}}, 7);
    EXPECT_EQ(DatoDePoliza(s, 7, "Poliza"), "P-7");
    EXPECT_EQ(DatoDePoliza(s, 7, "Tipo"), "Eg");
    EXPECT_EQ(DatoDePoliza(s, 7, "Fecha"), "2024-05-31");
    EXPECT_EQ(DatoDePoliza(s, 8, "Poliza"), "");
    EXPECT_THROW(DatoDePoliza(s, 7, "Poliza; DROP TABLE Polizas"), std::invalid_argument);
}

}  // namespace
