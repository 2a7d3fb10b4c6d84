#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Texto.h"
#include "accounts/EmpresaPrueba.h"
#include "accounts/Jerarquia.h"
#include "pipeline/Catalogo.h"
#include "session/Funciones.h"

using namespace velmorant;
using prueba::EmpresaPrueba;
using prueba::Importe;
using prueba::Inconsistencia;

namespace {

const char* kCatalogo = "Catálogo de Cuentas";
const char* kSaldos = "Saldos Iniciales";
const char* kBaja = "Se dio de Baja la cuenta, no existe referencia de ésta en el Nuevo Catálogo.";

Moneda M(const char* t) { return Moneda::desdeTexto(t).value(); }

/// The run's commit of the chart, as the driver calls it.
void Confirma(EmpresaPrueba& e) {
    DepuraCatalogo(e.s, e.barra);
    GuardaCatalogo(e.s, e.barra);
    DeterminaCuentasAcumulativas(e.s, e.barra);
    DeterminaTipoCuentas(e.s, e.barra);
    GuardaSaldoInicial(e.s, e.barra);
}

}  // namespace

TEST(Catalogo, LaComparacionRegistraBajasCambiosYAltas) {
    const std::string sesenta(60, 'x');
    EmpresaPrueba e;
    e.Cuenta("100", "Caja", "D");
    e.Balanza("100", "1500.50");
    e.Cuenta("200", "Bancos");
    e.Cuenta("300", sesenta);
    e.Cuenta("400", "Clientes");
    e.Cuenta("500", "Deudores");
    e.Balanza("500", "100");
    e.Cuenta("600", "Anticipos");
    e.Balanza("600", "");
    e.Cuenta("700", "Gastos", "D", 0, "~", "~", "0");
    e.Balanza("700", "0");
    e.Cuenta("750", "Acreedores", "D", 0, "~", "~", "500");
    e.Cuenta("800", "Proveedores", "A");

    e.Tmp("100", "Caja", "1500.50", "A");
    e.Tmp("200", "Ban|cos", "");                           // differs only by "|"
    e.Tmp("300", sesenta + "yyyyyyyyyy", "");              // 70 characters, the first 60 equal
    e.Tmp("400", "Clientes nacionales", "");
    e.Tmp("500", "Deudores", "-250.75");
    e.Tmp("600", "Anticipos", "0");                        // Null and 0 are the same balance
    e.Tmp("800", "Proveedores", "", "D");
    e.Tmp("80001", "Proveedor 'uno'", "12");                // only in the new catalogue
    e.Tmp("1000200", "Caja chica", "");

    ComparaCatalogo(e.s, e.barra);
    RegistraCuentasNuevas(e.s, e.barra);

    std::vector<Inconsistencia> esperadas = {
        {"La descripción de la cuenta ha cambiado: Anterior -> Clientes Nueva -> Clientes nacionales.", kCatalogo, "C",
         "400"},
        {"El saldo inicial de la cuenta ha cambiado: el saldo $100.00 sera sustituido por -$250.75", kSaldos, "C",
         "500"},
        {kBaja, kCatalogo, "B", "700"},
        {kBaja, kCatalogo, "B", "750"},
        {"Se dió de Alta una nueva Cuenta: 800-01 Proveedor uno.", kCatalogo, "A", "80001"},
        {"Se dió de Alta una nueva Cuenta: 100-02-00 Caja chica.", kCatalogo, "A", "1000200"},
    };
    EXPECT_EQ(e.Bitacora(), esperadas);
    // The auditor's nature wins, silently; found rows are marked.
    EXPECT_EQ(e.CampoTmp("100", "Naturaleza").texto(), "D");
    EXPECT_EQ(e.CampoTmp("800", "Naturaleza").texto(), "A");
    EXPECT_TRUE(e.CampoTmp("500", "Revisado").booleano());
    EXPECT_FALSE(e.CampoTmp("80001", "Revisado").booleano());
    // The comparison writes nothing in the company.
    EXPECT_EQ(e.Campo("Cuentas", "400", "Descripcion").texto(), "Clientes");
    EXPECT_EQ(e.Campo("Balanzas", "500", "SaldoInicial").moneda(), M("100"));

    // Of the two accounts gone, the one with a prior-year balance survives.
    DepuraCatalogo(e.s, e.barra);
    EXPECT_EQ(e.Filas("Cuentas", "700") + e.Filas("Balanzas", "700"), 0);
    EXPECT_EQ(e.Filas("Cuentas", "750"), 1);
}

TEST(Catalogo, UnCambioDeDescripcionLargoMuestraLasDosMitadesDentroDelCampo) {
    EmpresaPrueba e;
    e.Cuenta("100", std::string(60, 'v'));
    e.Tmp("100", std::string(80, 'n'), "");
    e.Cuenta("200", "Caja");
    e.Tmp("200", "Caja general", "");
    ComparaCatalogo(e.s, e.barra);
    auto bitacora = e.Bitacora();
    ASSERT_EQ(bitacora.size(), 2u);
    // 150 characters: each value cut to its half of the room, with its mark.
    EXPECT_EQ(bitacora[0].referencia, "La descripción de la cuenta ha cambiado: Anterior -> " + std::string(42, 'v') +
                                          "… Nueva -> " + std::string(42, 'n') + "….");
    EXPECT_EQ(LongitudCaracteres(bitacora[0].referencia), 150u);
    // A text that fits is left whole.
    EXPECT_EQ(bitacora[1].referencia, "La descripción de la cuenta ha cambiado: Anterior -> Caja Nueva -> Caja general.");
}

TEST(Catalogo, SignoDelSaldoSegunLaNaturalezaDeLaEmpresa) {
    struct Caso {
        const char* cuenta;
        const char* naturalezaEmpresa;  // nullptr: the company lacks it
        const char* saldo;
        const char* naturalezaTmp;
        const char* saldoFinal;
        const char* naturalezaFinal;
    } casos[] = {
        {"100", "A", "1200.3456", "D", "-1200.3456", "A"},
        {"200", "A", "-5", "A", "5", "A"},
        {"300", "A", "", "D", "0", "A"},  // Null counts as 0
        {"400", "D", "50", "A", "50", "D"},
        {"500", nullptr, "75", "A", "75", "A"},
    };
    EmpresaPrueba e;
    for (auto& c : casos) {
        if (c.naturalezaEmpresa) e.Cuenta(c.cuenta, "", c.naturalezaEmpresa);
        e.Tmp(c.cuenta, "", c.saldo, c.naturalezaTmp);
    }
    AjustaSignoSaldo(e.s, e.barra);
    for (auto& c : casos) {
        EXPECT_EQ(e.CampoTmp(c.cuenta, "Saldo").moneda(), M(c.saldoFinal)) << c.cuenta;
        EXPECT_EQ(e.CampoTmp(c.cuenta, "Naturaleza").texto(), c.naturalezaFinal) << c.cuenta;
    }

    EmpresaPrueba vacia;
    vacia.Tmp("100", "", "10", "A");
    AjustaSignoSaldo(vacia.s, vacia.barra);
    EXPECT_EQ(vacia.CampoTmp("100", "Saldo").moneda(), M("10"));
}

TEST(Catalogo, SinSeparadoresSeRecalculaHastaElUltimoNivelUsado) {
    struct Caso {
        const char* cuenta;
        const char* sinSeparadores;
    } casos[] = {
        {"100-02-00", "1000200"}, {"100-02", "10002"}, {"100-02-  ", "10002"},
        {"100-02-ab", "10002"},  // lower case is not significant
        {"100-00-00", "1000000"},
    };
    EmpresaPrueba e;
    for (auto& c : casos) e.Tmp("x", "", "", "D", 0, "~", "~", c.cuenta);
    RecalculaSinSeparadores(e.s, e.barra);
    Consulta r = e.db().consulta("SELECT Cuenta, CuentaSinSeparadores FROM CuentasTmp.Cuentas ORDER BY rowid");
    for (auto& c : casos) {
        ASSERT_FALSE(r.eof());
        EXPECT_EQ(r["CuentaSinSeparadores"].texto(), c.sinSeparadores) << c.cuenta;
        r.siguiente();
    }
}

TEST(Catalogo, LaDepuracionSoloBorraLoQueNadaUsa) {
    struct Caso {
        const char* cuenta;
        const char* padre;
        const char* anterior;  // Saldo_Anterior_Final, "" for Null
        bool enTmp;
        const char* lineaEn;   // table with a line on it, or nullptr
        bool queda;
    } casos[] = {
        {"80001", "800", "0", false, nullptr, false},  // goes, yet still frees no parent in this run
        {"100", "~", "0", true, nullptr, true},
        {"200", "~", "500", false, nullptr, true},
        {"201", "~", "", false, nullptr, true},
        {"300", "~", "0", false, nullptr, true},     // parent of 30001
        {"30001", "300", "0", true, nullptr, true},
        {"400", "~", "0", false, "Polizas_Detalle_Tmp", true},
        {"500", "~", "0", false, "Ajustes_Detalle", true},
        {"600", "~", "0", false, "Reclasificaciones_Detalle", true},
        {"700", "~", "0", false, nullptr, false},
        {"800", "~", "0", false, nullptr, true},
    };
    EmpresaPrueba e;
    for (auto& c : casos) {
        e.Cuenta(c.cuenta, "", "D", 0, c.padre, "~", c.anterior);
        e.Balanza(c.cuenta, "1");
        if (c.enTmp) e.Tmp(c.cuenta);
        if (c.lineaEn) e.db().ejecuta(std::string("INSERT INTO ") + c.lineaEn + " (Cuenta) VALUES (?)", c.cuenta);
    }
    e.Cuenta("~");  // an account without code is always dropped
    DepuraCatalogo(e.s, e.barra);
    for (auto& c : casos) {
        EXPECT_EQ(e.Filas("Cuentas", c.cuenta), c.queda ? 1 : 0) << c.cuenta;
        EXPECT_EQ(e.Filas("Balanzas", c.cuenta), c.queda ? 1 : 0) << c.cuenta;
    }
    EXPECT_EQ(e.db().escalar("SELECT COUNT(*) FROM Cuentas WHERE Cuenta IS NULL").entero(), 0);
    EXPECT_EQ(e.barra.etiquetas, std::vector<std::string>{"Depurando el catálogo de cuentas..."});

    // At the next run the freed parent goes too.
    DepuraCatalogo(e.s, e.barra);
    EXPECT_EQ(e.Filas("Cuentas", "800"), 0);
}

TEST(Catalogo, GuardaCatalogoAgregaCompletasYActualizaSoloDescripcionYNaturaleza) {
    const std::string larga = "  Cuenta con nombre largo que pasa de los sesenta caracteres, y m|as ~todavia";
    EmpresaPrueba e;
    e.Cuenta("200", "Viejo nombre", "D", 1, "X", "A");
    e.Tmp("100", "  Caja 'general'  ", "", "D", 0);     // level computed
    e.Tmp("10002", larga, "", "A", 0, "100", "D");
    e.Tmp("1000200", "Fondo", "", "D", 2);              // a level given is taken on trust
    e.Tmp("200", "Nuevo|nombre", "", "A", 3, "999", "D");
    GuardaCatalogo(e.s, e.barra);

    struct Esperada {
        const char* cuenta;
        std::string descripcion;
        const char* naturaleza;
        int nivel;
        const char* padre;
        const char* tipo;  // "~": Null
    } esperadas[] = {
        {"100", "Caja general", "D", 1, "", "~"},
        {"10002", "Cuenta con nombre largo que pasa de los sesenta caracteres", "A", 2, "100", "D"},
        {"1000200", "Fondo", "D", 2, "", "~"},
        {"200", "Nuevonombre", "A", 1, "X", "A"},  // Tipo, Nivel and parent of an existing account stay
    };
    for (auto& x : esperadas) {
        EXPECT_EQ(e.Campo("Cuentas", x.cuenta, "Descripcion").texto(), x.descripcion) << x.cuenta;
        EXPECT_EQ(e.Campo("Cuentas", x.cuenta, "Naturaleza").texto(), x.naturaleza) << x.cuenta;
        EXPECT_EQ(e.Campo("Cuentas", x.cuenta, "Nivel").entero(), x.nivel) << x.cuenta;
        EXPECT_EQ(e.Campo("Cuentas", x.cuenta, "CuentaAcumulativa").texto(), x.padre) << x.cuenta;
        EXPECT_EQ(e.Campo("Cuentas", x.cuenta, "Tipo"), prueba::Texto(x.tipo)) << x.cuenta;
    }
    EXPECT_EQ(e.barra.etiquetas, std::vector<std::string>{"Guardando en catálogo de cuentas..."});
}

TEST(Catalogo, SaldoInicialSoloDondeElAlmacenTieneLaCuenta) {
    struct Caso {
        const char* cuenta;
        const char* balanza;  // nullptr: no Balanzas row
        const char* saldoTmp; // nullptr: not in the store
        const char* inicial;  // expected
        const char* original;
    } casos[] = {
        {"100", nullptr, "1234.5678", "1234.5678", "1234.5678"},
        {"200", nullptr, nullptr, "0", "0"},  // the table's defaults
        {"300", "5", "-7.25", "-7.25", "-7.25"},
        {"400", "9", nullptr, "9", "9"},
    };
    EmpresaPrueba e;
    for (auto& c : casos) {
        e.Cuenta(c.cuenta);
        if (c.balanza) e.Balanza(c.cuenta, c.balanza, c.balanza);
        if (c.saldoTmp) e.Tmp(c.cuenta, "", c.saldoTmp);
    }
    GuardaSaldoInicial(e.s, e.barra);
    for (auto& c : casos) {
        EXPECT_EQ(e.Filas("Balanzas", c.cuenta), 1) << c.cuenta;
        EXPECT_EQ(e.Campo("Balanzas", c.cuenta, "SaldoInicial"), Importe(c.inicial)) << c.cuenta;
        EXPECT_EQ(e.Campo("Balanzas", c.cuenta, "SaldoIniOrig"), Importe(c.original)) << c.cuenta;
    }
    EXPECT_EQ(e.barra.etiquetas, std::vector<std::string>{"Guardando el saldo inicial..."});
}

TEST(Catalogo, SaldosDelAnioAnteriorAgreganLasCuentasQueFaltan) {
    EmpresaPrueba e;
    e.Cuenta("100", "Caja", "D", 1, "~", "A", "1");
    e.Tmp("100", "Otro nombre", "", "D", 0, "~", "~", "", "-300.10");
    e.Tmp("10002", "Nueva 'cuenta'", "", "A", 0, "~", "~", "", "45.0001");
    GuardaSaldosAnioAnterior(e.s, e.barra);
    EXPECT_EQ(e.Campo("Cuentas", "100", "Saldo_Anterior_Final").moneda(), M("-300.10"));
    EXPECT_EQ(e.Campo("Cuentas", "100", "Descripcion").texto(), "Caja");
    EXPECT_EQ(e.Campo("Cuentas", "10002", "Saldo_Anterior_Final").moneda(), M("45.0001"));
    EXPECT_EQ(e.Campo("Cuentas", "10002", "Descripcion").texto(), "Nueva 'cuenta'");  // as read
    EXPECT_EQ(e.Campo("Cuentas", "10002", "Nivel").entero(), 2);
    for (const char* campo : {"Tipo", "Naturaleza", "CuentaAcumulativa"})
        EXPECT_TRUE(e.Campo("Cuentas", "10002", campo).esNulo()) << campo;
    EXPECT_EQ(e.barra.etiquetas, std::vector<std::string>{"Importando Saldos Finales año anterior..."});
}

TEST(Catalogo, PruebasDeExistencia) {
    EmpresaPrueba e;
    e.Cuenta("100", "", "D", 1, "~", "A");
    e.Cuenta("10002", "", "D", 2, "100", "D");
    e.Tmp("300");
    struct Caso {
        const char* cuenta;
        bool existe, acumulativa;
        const char* porReferencia;
        bool enTmp;
    } casos[] = {
        {"100", true, true, "A", false},
        {"10002", true, false, "D", false},
        {"300", false, false, "D", true},
        {"", false, false, "D", false},
    };
    for (auto& c : casos) {
        EXPECT_EQ(ExisteCuenta(e.s, c.cuenta), c.existe) << c.cuenta;
        EXPECT_EQ(ExisteCuentaConsulta(e.s, c.cuenta), c.existe) << c.cuenta;
        EXPECT_EQ(EsCuentaAcumulativa(e.s, c.cuenta), c.acumulativa) << c.cuenta;
        EXPECT_EQ(TipoPorReferencia(e.db(), c.cuenta), c.porReferencia) << c.cuenta;
        EXPECT_EQ(ExisteCuentaTmp(e.s, c.cuenta), c.enTmp) << c.cuenta;
    }
    // With the store closed the file is read by itself.
    CierraCuentasTmp(e.s);
    EXPECT_TRUE(ExisteCuentaTmp(e.s, "300"));
    EXPECT_FALSE(ExisteCuentaTmp(e.s, "100"));
}

TEST(Catalogo, UnaSegundaImportacionIgualNoRegistraNadaYConservaElArbol) {
    EmpresaPrueba e;
    auto catalogo = [&] {
        e.Tmp("100", "Activo", "0", "D");
        e.Tmp("10002", "Caja", "0", "D");
        e.Tmp("1000200", "Caja general", "1500.25", "D");
        e.Tmp("1000201", "Caja chica", "-0.25", "D");
        e.Tmp("200", "Pasivo", "0", "A");
        e.Tmp("2000100", "Proveedor", "-1500", "A");  // its level-2 ancestor is missing
    };
    catalogo();
    ComparaCatalogo(e.s, e.barra);
    RegistraCuentasNuevas(e.s, e.barra);
    EXPECT_TRUE(e.Bitacora().empty());
    Confirma(e);
    struct Arbol {
        const char* cuenta;
        const char* padre;
        const char* tipo;
        const char* saldo;
    } arbol[] = {
        {"100", "", "A", "0"},          {"10002", "100", "A", "0"},      {"1000200", "10002", "D", "1500.25"},
        {"1000201", "10002", "D", "-0.25"}, {"200", "", "A", "0"},     {"2000100", "200", "D", "-1500"},
    };
    auto revisa = [&](const char* cuando) {
        for (auto& a : arbol) {
            EXPECT_EQ(SiNuloTexto(e.Campo("Cuentas", a.cuenta, "CuentaAcumulativa")), a.padre) << cuando << a.cuenta;
            EXPECT_EQ(e.Campo("Cuentas", a.cuenta, "Tipo").texto(), a.tipo) << cuando << a.cuenta;
            EXPECT_EQ(e.Campo("Balanzas", a.cuenta, "SaldoInicial").moneda(), M(a.saldo)) << cuando << a.cuenta;
        }
    };
    revisa("primera ");
    EXPECT_TRUE(e.Bitacora().empty());

    // The auditor fixes a parent by hand; the same delivery comes again.
    e.db().ejecuta("UPDATE Cuentas SET CuentaAcumulativa = '100' WHERE Cuenta = '200'");
    arbol[4].padre = "100";
    CreaCuentasTmp(e.s);
    ASSERT_TRUE(AbreCuentasTmp(e.s));
    catalogo();
    ComparaCatalogo(e.s, e.barra);
    RegistraCuentasNuevas(e.s, e.barra);
    EXPECT_TRUE(e.Bitacora().empty());
    Confirma(e);
    revisa("segunda ");
    EXPECT_EQ(e.db().escalar("SELECT COUNT(*) FROM Cuentas").entero(), 6);
}
