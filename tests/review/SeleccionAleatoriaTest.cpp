// The random sample: its text, its population, the draw and its history.

#include <algorithm>
#include <deque>

#include "review/SeleccionEmpresaPrueba.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

TEST(TextoAleatoria, LosLimitesSeLeenConSusSignosInvertidos) {
    const std::string base = "Aleatoria del 10%, 3 cuentas de 30";
    struct {
        std::string resto;
        bool marca;
        const char *inferior, *superior;
    } casos[] = {
        {"", false, "0", "0"},
        {", < 100", false, "100", "0"},
        {", > 5000.5", false, "0", "5000.5"},
        {", < -100, > 5000", false, "-100", "5000"},
        {" Sdo.Ant.", true, "0", "0"},
        {", < 100 Sdo.Ant.", true, "100", "0"},
        {", Sdo.Ant.", true, "0", "0"},
        {", < 1, > 2, > 3", false, "0", "0"},  // more than three commas: no limits
        {", < abc", false, "0", "0"},
        {",", false, "0", "0"},
    };
    for (auto& c : casos) {
        LimitesAleatoria l = LeeDescripcionAleatoria(base + c.resto);
        EXPECT_EQ(l.saldoAnterior, c.marca) << c.resto;
        EXPECT_EQ(l.inferior, M(c.inferior)) << c.resto;
        EXPECT_EQ(l.superior, M(c.superior)) << c.resto;
    }
    for (std::string t : {base, base + ", < 100", base + ", > 5000.5", base + ", < -100, > 5000"})
        EXPECT_EQ(DescripcionAleatoria(10, 3, 30, LeeDescripcionAleatoria(t)), t);
    EXPECT_EQ(DescripcionAleatoria(10, 3, 30, LeeDescripcionAleatoria(base + ", < 100 Sdo.Ant.")), base + ", < 100")
        << "the mark is read, never written";
    EXPECT_EQ(PosicionesDeSeparador(base + ", < 1", ","), (std::vector<int>{18, 35}));
}

TEST(TextoAleatoria, LaMuestraRedondeaAlPar) {
    struct {
        int p;
        long m, s;
    } casos[] = {{50, 5, 2}, {50, 7, 4}, {10, 25, 2}, {10, 35, 4}, {33, 10, 3}, {100, 0, 0}, {0, 9, 0}};
    for (auto& c : casos) EXPECT_EQ(MuestraAleatoria(c.p, c.m), c.s) << c.p << "% de " << c.m;
}

// The first seed, counting from 1, that gives `posicion` in a pool of `n`.
std::uint64_t SemillaPara(int posicion, int n, std::uint64_t desde = 1) {
    for (std::uint64_t s = desde;; ++s)
        if (PosicionSorteada(s, n) == posicion) return s;
}

FuenteSemillaCedula DeLista(std::deque<std::uint64_t> semillas) {
    auto q = std::make_shared<std::deque<std::uint64_t>>(std::move(semillas));
    return [q] {
        std::uint64_t s = q->front();
        q->pop_front();
        return s;
    };
}

TEST(Sorteo, RepiteLaTiradaAnteUnaPosicionYaSalidaYLaPrimeraNuncaDaCero) {
    const int n = 5;
    std::uint64_t cero = SemillaPara(0, n), tres = SemillaPara(3, n), otraTres = SemillaPara(3, n, tres + 1),
                  uno = SemillaPara(1, n);
    // cero twice in a row (the clock did not move), then the rest.
    Sorteo r = SorteaPosiciones(n, 3, DeLista({cero, cero, tres, otraTres, cero, uno}));
    EXPECT_EQ(r.posiciones, (std::vector<int>{3, 0, 1}));
    EXPECT_EQ(r.semillas, (std::vector<std::uint64_t>{cero, tres, otraTres, cero, uno}));
    EXPECT_FALSE(r.poolCompleto);

    for (int p = 0; p < 7; ++p) EXPECT_EQ(PosicionSorteada(SemillaPara(p, 7), 7), p);
    for (std::uint64_t s = 0; s < 500; ++s) {
        int p = PosicionSorteada(s, 7);
        ASSERT_TRUE(p >= 0 && p < 7) << s;
    }
    EXPECT_TRUE(ExisteEnArreglo({4, 0, 2}, 0));
    EXPECT_FALSE(ExisteEnArreglo({4, 2}, 0));
}

TEST(Sorteo, UnPoolMenorQueLoQueFaltaSeTomaEntero) {
    struct {
        int pool, cuantas;
        std::vector<int> posiciones;
        bool completo;
    } casos[] = {{2, 3, {0, 1}, true}, {0, 3, {}, true}, {1, 1, {0}, true}, {4, 0, {}, false}};
    for (auto& c : casos) {
        Sorteo r = SorteaPosiciones(c.pool, c.cuantas, DeLista({}));
        EXPECT_EQ(r.posiciones, c.posiciones) << c.pool << " " << c.cuantas;
        EXPECT_EQ(r.poolCompleto, c.completo);
        EXPECT_TRUE(r.semillas.empty());
    }
    Sorteo todo = SorteaPosiciones(4, 4, SemillasContadas());
    std::sort(todo.posiciones.begin(), todo.posiciones.end());
    EXPECT_EQ(todo.posiciones, (std::vector<int>{0, 1, 2, 3}));
}

// A sampled account 120 in the last review month (12).
class Aleatorias : public EmpresaSeleccion {
protected:
    Aleatorias() {
        struct {
            const char* cuenta;
            bool conMovtos;
            const char* saldo;
        } cuentas[] = {{"1200101", true, "100"}, {"1200102", false, "200"}, {"1200103", false, "0"},
                       {"1200104", true, "0"},   {"1200105", true, "399"},  {"1200106", true, "400"},
                       {"1200107", true, "150"}, {"1200108", true, "-50"}};
        for (auto& c : cuentas) {
            Cuenta(c.cuenta, "D", c.conMovtos);
            Saldo(c.cuenta, 12, M(c.saldo));
        }
    }
    /// The accounts of rule 10 in month 12, sorted.
    std::vector<std::string> Muestra() {
        std::vector<std::string> r;
        Consulta c = db().consulta("SELECT Cuenta FROM SeleccionDetalle WHERE IdCriterio = 10 AND MesRevision = 12");
        for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c.campo(0).texto());
        std::sort(r.begin(), r.end());
        return r;
    }
};

TEST_F(Aleatorias, LaPoblacionSaleDelTextoYElTextoSeReescribe) {
    const std::string base = "Aleatoria del 100%, 1 cuentas de 1";
    struct Caso {
        std::string descripcion;
        double porcentaje;
        std::string nueva;
        std::vector<std::string> muestra;
    } casos[] = {
        {base, 100, "Aleatoria del 100%, 5 cuentas de 5",  // with movements, of normal sign
         {"1200101", "1200104", "1200105", "1200106", "1200107"}},
        {base + " Sdo.Ant.", 100, "Aleatoria del 100%, 5 cuentas de 5",  // with a balance
         {"1200101", "1200102", "1200105", "1200106", "1200107"}},
        {base + ", < 99, > 400", 100, "Aleatoria del 100%, 3 cuentas de 3, < 99, > 400",
         {"1200101", "1200105", "1200107"}},
        {base + ", > 400", 99.5, "Aleatoria del 100%, 4 cuentas de 4, > 400",
         {"1200101", "1200104", "1200105", "1200107"}},
        {base + ", < 99 Sdo.Ant.", 100, "Aleatoria del 100%, 5 cuentas de 5, < 99",
         {"1200101", "1200102", "1200105", "1200106", "1200107"}},
        {base + ", < 1, > 2, > 3", 100, "Aleatoria del 100%, 5 cuentas de 5",
         {"1200101", "1200104", "1200105", "1200106", "1200107"}},
        {base, 50, base, {}},  // 2.5 rounds to 2: too few to draw
        {base, 70.5, "Aleatoria del 70%, 4 cuentas de 5", {}},  // 3.5 rounds to 4, drawn below
    };
    for (auto& caso : casos) {
        SCOPED_TRACE(caso.descripcion + " " + std::to_string(caso.porcentaje));
        db().ejecuta("DELETE FROM SeleccionMaster");
        db().ejecuta("DELETE FROM SeleccionDetalle");
        db().ejecuta("DELETE FROM HistorialSorteos");
        Aleatoria("120", 12, caso.porcentaje, caso.descripcion);
        ReconstruyeSeleccionCuentas(s, 12, SemillasContadas());
        EXPECT_EQ(Descripcion(10, "120", 12), caso.nueva);
        if (caso.nueva == base) {
            EXPECT_EQ(Sorteos(), 0);
            EXPECT_TRUE(Muestra().empty());
        } else if (caso.muestra.empty()) {
            EXPECT_EQ(Muestra().size(), 4u);
        } else {
            EXPECT_EQ(Muestra(), caso.muestra);
        }
    }
}

TEST_F(Aleatorias, SoloSeCompletaLaMuestraConTresOMas) {
    // Population: the five with movements and normal sign; 100% of them.
    struct {
        int previas;
        bool sortea;
    } casos[] = {{0, true}, {2, true}, {3, false}, {4, false}, {5, false}};
    const char* elegidas[] = {"1200101", "1200104", "1200105", "1200106", "1200107"};
    for (auto& c : casos) {
        SCOPED_TRACE(c.previas);
        db().ejecuta("DELETE FROM SeleccionMaster");
        db().ejecuta("DELETE FROM SeleccionDetalle");
        db().ejecuta("DELETE FROM HistorialSorteos");
        const std::string texto = "Aleatoria del 100%, 0 cuentas de 0";
        Aleatoria("120", 12, 100, texto);
        for (int i = 0; i < c.previas; ++i) Seleccionada(10, elegidas[i], 3);
        ReconstruyeSeleccionCuentas(s, 12, SemillasContadas());
        EXPECT_EQ(Sorteos(), c.sortea ? 1 : 0);
        EXPECT_EQ(Descripcion(10, "120", 12), c.sortea ? "Aleatoria del 100%, 5 cuentas de 5" : texto);
        EXPECT_EQ(Muestra().size(), c.sortea ? 5u : static_cast<size_t>(c.previas))
            << "earlier draws of any month come back";
    }
}

TEST_F(Aleatorias, UnPoolMenorQueLoQueFaltaSeTomaEnteroYQuedaEnElHistorial) {
    Regla(1, "120", 12, M("150"));  // takes 1200102, 1200105, 1200106, 1200107 first
    Aleatoria("120", 12, 100, "Aleatoria del 100%, 0 cuentas de 0");
    ReconstruyeSeleccionCuentas(s, 12, SemillasContadas());
    EXPECT_EQ(Muestra(), (std::vector<std::string>{"1200101", "1200104"}));
    EXPECT_EQ(Descripcion(10, "120", 12), "Aleatoria del 100%, 5 cuentas de 5");
    Consulta h = db().consulta("SELECT * FROM HistorialSorteos");
    ASSERT_EQ(h.cuentaRegistros(), 1u);
    EXPECT_EQ(h["PorSortear"].entero(), 5);
    EXPECT_EQ(h["Disponibles"].entero(), 2);
    EXPECT_TRUE(h["PoolCompleto"].booleano());
    EXPECT_EQ(h["Semillas"].texto(), "");
    EXPECT_EQ(h["Posiciones"].texto(), "0,1");
    EXPECT_EQ(h["Cuentas"].texto(), "1200101,1200104");
    EXPECT_EQ(h["TotalPoblacion"].moneda(), M("1049"));
}

TEST_F(Aleatorias, ElHistorialGuardaCadaSemillaYLoSorteado) {
    Aleatoria("120", 12, 60, "Aleatoria del 60%, 0 cuentas de 0");
    ReconstruyeSeleccionCuentas(s, 12, SemillasContadas());
    Consulta h = db().consulta("SELECT * FROM HistorialSorteos");
    ASSERT_EQ(h.cuentaRegistros(), 1u);
    EXPECT_EQ(h["Porcentaje"].entero(), 60);
    EXPECT_EQ(h["Muestra"].entero(), 3);
    // Seeds 1, 2, 3 ... were used in turn; each drawn position names an
    // account of the pool (the population in table order).
    EXPECT_EQ(h["Semillas"].texto().rfind("1,2,3", 0), 0u) << h["Semillas"].texto();
    const char* pool[] = {"1200101", "1200104", "1200105", "1200106", "1200107"};
    std::string posiciones = h["Posiciones"].texto(), esperadas;
    for (size_t i = 0; i < posiciones.size(); i += 2)
        esperadas += std::string(i ? "," : "") + pool[posiciones[i] - '0'];
    EXPECT_EQ(h["Cuentas"].texto(), esperadas);
    EXPECT_EQ(Muestra().size(), 3u);
}

}  // namespace
