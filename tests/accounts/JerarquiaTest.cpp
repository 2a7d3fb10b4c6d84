#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "accounts/Jerarquia.h"
#include "accounts/EmpresaPrueba.h"
#include "session/Funciones.h"

using namespace velmorant;
using prueba::EmpresaPrueba;
using prueba::Inconsistencia;

namespace {

const char* kSinPadre = "No fue posible determinar la cuenta acumulativa.";

struct Nodo {
    const char* cuenta;
    int nivel;
};

}  // namespace

TEST(Jerarquia, ElPadreEsElAncestroExistenteMasCercano) {
    struct Caso {
        const char* nombre;
        std::vector<Nodo> cuentas;
        std::map<std::string, std::string> padres;  // expected CuentaAcumulativa
        std::vector<std::string> sinPadre;           // accounts logged
    } casos[] = {
        {"arbol completo", {{"100", 1}, {"10002", 2}, {"1000200", 3}},
         {{"100", ""}, {"10002", "100"}, {"1000200", "10002"}}, {}},
        {"falta el nivel 2", {{"100", 1}, {"1000200", 3}}, {{"100", ""}, {"1000200", "100"}}, {}},
        {"faltan los ancestros", {{"1000200", 3}, {"200", 1}}, {{"1000200", ""}, {"200", ""}}, {"1000200"}},
        {"dos hermanos", {{"300", 1}, {"30001", 2}, {"30002", 2}, {"3000201", 3}},
         {{"30001", "300"}, {"30002", "300"}, {"3000201", "30002"}}, {}},
        {"letras de dos bytes", {{"AÑO", 1}, {"AÑO01", 2}, {"AÑO0101", 3}},
         {{"AÑO01", "AÑO"}, {"AÑO0101", "AÑO01"}}, {}},
    };
    for (auto& c : casos) {
        EmpresaPrueba e;
        for (auto& n : c.cuentas) e.Cuenta(n.cuenta, "", "D", n.nivel);
        DeterminaCuentasAcumulativas(e.s, e.barra);
        for (auto& [cuenta, padre] : c.padres)
            EXPECT_EQ(SiNuloTexto(e.Campo("Cuentas", cuenta, "CuentaAcumulativa")), padre) << c.nombre << " " << cuenta;
        std::vector<Inconsistencia> esperadas;
        for (auto& cuenta : c.sinPadre) esperadas.push_back({kSinPadre, "Catálogo de Cuentas", "C", cuenta});
        EXPECT_EQ(e.Bitacora(), esperadas) << c.nombre;
        EXPECT_EQ(e.barra.etiquetas, std::vector<std::string>{"Determinando cuentas acumulativas..."}) << c.nombre;
    }
}

TEST(Jerarquia, UnPadreDadoSeRespetaYSinArbolNadaCambia) {
    EmpresaPrueba e;
    e.Cuenta("100", "", "D", 1);
    e.Cuenta("10002", "", "D", 2, "999");  // names a parent that does not exist
    e.Cuenta("1000200", "", "D", 3, "");   // an empty text counts as no parent
    DeterminaCuentasAcumulativas(e.s, e.barra);
    EXPECT_EQ(e.Campo("Cuentas", "10002", "CuentaAcumulativa").texto(), "999");
    EXPECT_EQ(e.Campo("Cuentas", "1000200", "CuentaAcumulativa").texto(), "10002");
    EXPECT_TRUE(e.Campo("Cuentas", "100", "CuentaAcumulativa").esNulo());

    EmpresaPrueba sinArbol;
    sinArbol.s.CatalogoArbol = false;
    sinArbol.Cuenta("100", "", "D", 1);
    sinArbol.Cuenta("10002", "", "D", 2);
    DeterminaCuentasAcumulativas(sinArbol.s, sinArbol.barra);
    EXPECT_TRUE(sinArbol.Campo("Cuentas", "10002", "CuentaAcumulativa").esNulo());
    EXPECT_TRUE(sinArbol.barra.etiquetas.empty());
}

TEST(Jerarquia, BuscaCuentaAcumulativaSubeCambiandoSusArgumentos) {
    EmpresaPrueba e;
    e.Cuenta("100", "", "D", 1);
    std::string cuenta = "1000200";
    int nivel = 3;
    EXPECT_EQ(BuscaCuentaAcumulativa(e.s, cuenta, nivel), "100");
    EXPECT_EQ(cuenta, "10002");
    EXPECT_EQ(nivel, 2);

    cuenta = "2000100";
    nivel = 3;
    EXPECT_EQ(BuscaCuentaAcumulativa(e.s, cuenta, nivel), "");
    EXPECT_EQ(cuenta, "200");
    EXPECT_EQ(nivel, 1);
    EXPECT_EQ(e.Bitacora(), (std::vector<Inconsistencia>{{kSinPadre, "Catálogo de Cuentas", "C", "2000100"}}));
}

TEST(Jerarquia, TiposSeDeducenDeLosPadres) {
    struct Caso {
        const char* cuenta;
        const char* padre;
        const char* tipoDado;  // "~" for none
        const char* tipoFinal;
    } casos[] = {
        {"100", "~", "~", "A"},          {"10002", "100", "~", "A"},   {"1000200", "10002", "~", "D"},
        {"200", "~", "D", "A"},          // came as "D", is a parent: turns "A"
        {"20001", "200", "D", "D"},      {"300", "~", "A", "A"},       // "A" without children keeps "A"
        {"400", "", "~", "D"},           // an empty parent names nothing
    };
    EmpresaPrueba e;
    for (auto& c : casos) e.Cuenta(c.cuenta, "", "D", 0, c.padre, c.tipoDado);
    DeterminaTipoCuentas(e.s, e.barra);
    for (auto& c : casos) EXPECT_EQ(e.Campo("Cuentas", c.cuenta, "Tipo").texto(), c.tipoFinal) << c.cuenta;
    EXPECT_EQ(e.barra.etiquetas, std::vector<std::string>{"Determinando tipo de cuentas ..."});
}

TEST(Jerarquia, VerificaTipoCuentasRegistraCadaAncestroMarcadoDetalle) {
    auto mensaje = [](const std::string& cuenta) {
        return Inconsistencia{"La asignación del tipo de cuenta es incorrecta, la cuenta " + cuenta +
                                  " debe ser una cuenta acumulativa",
                              "Catálogo de Cuentas", "0", cuenta};
    };
    EmpresaPrueba e;
    e.s.CatalogoArbol = false;
    e.Tmp("100", "", "", "D", 1, "~", "D");
    e.Tmp("10002", "", "", "D", 2, "100", "D");
    e.Tmp("1000200", "", "", "D", 3, "10002", "D");
    e.Tmp("200", "", "", "D", 1, "~", "A");
    e.Tmp("20001", "", "", "D", 2, "200", "D");  // a right parent: nothing logged
    e.Tmp("300", "", "", "D", 1, "300", "D");    // names itself: logged once, no endless walk
    VerificaTipoCuentas(e.s, e.barra);
    // The higher wrong ancestor of 1000200 is logged under its direct parent.
    EXPECT_EQ(e.Bitacora(), (std::vector<Inconsistencia>{mensaje("100"), mensaje("10002"), mensaje("10002"),
                                                          mensaje("300")}));
    EXPECT_EQ(e.CampoTmp("10002", "Tipo").texto(), "D");  // the log is the only effect

    EmpresaPrueba arbol;
    arbol.Tmp("100", "", "", "D", 1, "~", "D");
    arbol.Tmp("10002", "", "", "D", 2, "100", "D");
    VerificaTipoCuentas(arbol.s, arbol.barra);
    EXPECT_TRUE(arbol.Bitacora().empty());
}

TEST(Jerarquia, CuentasDeControlParaLosAncestrosQueFaltan) {
    EmpresaPrueba e;
    e.Tmp("1000200", "Caja", "10");
    e.Tmp("1000201", "Bancos", "20");
    e.Tmp("200", "Clientes", "30");
    e.Tmp("2000100", "Cliente uno", "40");
    CreaCuentasDeControl(e.s, e.barra, kCreandoCuentasDeControl);
    struct Esperada {
        const char* cuenta;
        const char* padre;
        int nivel;
    } esperadas[] = {{"10002", "100", 2}, {"100", "", 1}, {"20001", "200", 2}};
    Consulta c = e.db().consulta(
        "SELECT Cuenta, CuentaSinSeparadores, Descripcion, CuentaAcumulativa, Tipo, Nivel FROM CuentasTmp.Cuentas "
        "WHERE Descripcion = 'CUENTA DE CONTROL' ORDER BY rowid");
    ASSERT_EQ(c.cuentaRegistros(), std::size(esperadas));
    for (auto& x : esperadas) {
        ASSERT_FALSE(c.eof());
        EXPECT_EQ(c["Cuenta"].texto(), x.cuenta);
        EXPECT_EQ(c["CuentaSinSeparadores"].texto(), x.cuenta);
        EXPECT_EQ(c["CuentaAcumulativa"].texto(), x.padre) << x.cuenta;
        EXPECT_EQ(c["Tipo"].texto(), "A");
        EXPECT_EQ(c["Nivel"].entero(), x.nivel) << x.cuenta;
        c.siguiente();
    }
    EXPECT_EQ(e.db().escalar("SELECT COUNT(*) FROM CuentasTmp.Cuentas").entero(), 7);
    EXPECT_EQ(e.barra.etiquetas, std::vector<std::string>{"Creando Cuentas de Control"});

    // A second pass finds every ancestor present.
    CreaCuentasDeControl(e.s, e.barra, kCalculandoCuentasDeControl);
    EXPECT_EQ(e.db().escalar("SELECT COUNT(*) FROM CuentasTmp.Cuentas").entero(), 7);
    EXPECT_EQ(e.barra.etiquetas.back(), "Calculando Cuentas de Control...");
}
