#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "accounts/CodigosCuenta.h"
#include "session/ProgramaTerminado.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

/// A company with mask "999-99-99": three levels of 3, 2 and 2 characters.
Sesion Estructura(const std::string& formato = "999-99-99", const std::string& separador = "-",
                  std::vector<int> longitudes = {3, 2, 2}) {
    Sesion s;
    s.VersionPrograma = "1.0.0";
    s.FormatoCtaEmpresa = formato;
    s.SeparadorEmpresa = separador;
    s.NumeroNiveles = static_cast<std::int16_t>(longitudes.size());
    s.LongitudesNivel = std::move(longitudes);
    s.CatalogoArbol = true;
    s.RellenaCeros = true;
    return s;
}

}  // namespace

TEST(CodigosCuenta, RellenaCuentaPorPiezasYPorLongitudes) {
    struct Caso {
        const char* texto;
        const char* esperado;
    } casos[] = {
        {"1-2", "00102"},       {"1-2-3", "0010203"},   {"1-2-3-4", "0010203"},  // the surplus level is dropped
        {"1234-5", "23405"},    {"AB-1", "0AB01"},      {"100-2-0", "1000200"},  // long piece cut, letters kept
        {"1-", "001"},          {" 7-3 ", "00703"},     {"1002", "10002"},       // by lengths: "2" becomes "02"
        {"1000200", "1000200"}, {"12345678", "1234567"}, {"1", "001"},
        {"2.6-1", "00301"},  // a numeric piece is number-formatted, rounded
    };
    Sesion s = Estructura();
    for (auto& c : casos) EXPECT_EQ(RellenaCuenta(s, c.texto), c.esperado) << c.texto;

    s.RellenaCeros = false;
    EXPECT_EQ(RellenaCuenta(s, " 1-2 "), "1-2");
    EXPECT_EQ(RellenaCuenta(s, "1002"), "1002");

    // A company without separator pads by lengths only.
    Sesion sin = Estructura("9999999", "");
    EXPECT_EQ(RellenaCuenta(sin, "1-2"), "1-200");
    EXPECT_EQ(RellenaCuenta(sin, "1002"), "10002");
}

TEST(CodigosCuenta, NivelesPorLongitudYReglaDelGuion) {
    Sesion punto = Estructura("999.99.99", ".");
    struct Caso {
        const char* texto;
        int niveles;
    } casos[] = {
        {"", 1},      {"123", 1},    {"1234", 2},     {"12345", 2}, {"123456", 3},
        {"12345678", 4},  // past the last level: NumeroNiveles + 1, the caller limits it
        {"1-2", 2},   {"1-2-3-4-5", 5},  // hyphens are counted whatever the separator
    };
    for (auto& c : casos) EXPECT_EQ(NivelesPorLongitud(punto, c.texto), c.niveles) << c.texto;

    EXPECT_EQ(LongitudNivel(punto, 2), 2);
    EXPECT_EQ(LongitudNivel(punto, 4), 0);
    EXPECT_EQ(LongitudNivel(punto, 0), 0);
    EXPECT_EQ(CerosDeNivel(punto, 1), "000");
    EXPECT_EQ(CerosDeNivel(punto, 4), "");
}

TEST(CodigosCuenta, SeparadoresQuitadosYPuestos) {
    Sesion s = Estructura();
    struct Caso {
        const char* formateada;
        const char* sinSeparadores;
    } ida[] = {
        {"100-02-00", "1000200"}, {"100-02", "10002"}, {"100", "100"},
        {"1000200", "10020"},  // not following the mask: cut in the wrong places
    };
    for (auto& c : ida) EXPECT_EQ(QuitaSeparadores(s, c.formateada), c.sinSeparadores) << c.formateada;

    struct Vuelta {
        const char* cuenta;
        const char* formateada;
    } vuelta[] = {
        {"1000200", "100-02-00"}, {"1000000", "100-00-00"}, {"10002", "100-02"},
        {"100", "100"},           {"", ""},                 {"0000000", "000-00-00"},
    };
    for (auto& c : vuelta) EXPECT_EQ(FormateaCuenta(s, c.cuenta), c.formateada) << c.cuenta;

    Sesion sinArbol = Estructura();
    sinArbol.CatalogoArbol = false;
    EXPECT_EQ(FormateaCuenta(sinArbol, "1000200"), "1000200");

    Sesion sinSeparador = Estructura("9999999", "");
    EXPECT_EQ(QuitaSeparadores(sinSeparador, "100-02-00"), "100-02-00");
    EXPECT_EQ(FormateaCuenta(sinSeparador, "1000200"), "1000200");
}

TEST(CodigosCuenta, PosicionesCuentanCaracteresNoBytes) {
    // Two-byte letters in an alphanumeric first level: every step that cuts
    // by position must cut after the "Ñ", not inside it.
    Sesion s = Estructura("XXX-99-99");
    EXPECT_EQ(FormateaCuenta(s, "AÑO0100"), "AÑO-01-00");
    EXPECT_EQ(FormateaCuenta(s, "AÑO01"), "AÑO-01");
    EXPECT_EQ(QuitaSeparadores(s, "AÑO-01-01"), "AÑO0101");
    EXPECT_EQ(RellenaCuenta(s, "AÑO-1-1"), "AÑO0101");
    EXPECT_EQ(RellenaCuenta(s, "Ñ-1"), "00Ñ01");       // a short piece is padded to three characters
    EXPECT_EQ(RellenaCuenta(s, "ÑAÑO-1"), "AÑO01");    // a long piece loses its leftmost character
    EXPECT_EQ(RellenaCuenta(s, "AÑO01"), "AÑO01");     // by lengths: five characters, two levels
    EXPECT_EQ(NivelesPorLongitud(s, "AÑO01"), 2);
    EXPECT_EQ(CalculaNivelCuenta(s, "AÑO0100", true), 2);
    EXPECT_EQ(CalculaNivelCuenta(s, "AÑO0100", false), 3);
    // The tree of AÑO / AÑO-01 / AÑO-01-01.
    EXPECT_EQ(CuentaHastaNivel(s, "AÑO0101", 1), "AÑO");
    EXPECT_EQ(CuentaHastaNivel(s, "AÑO0101", 2), "AÑO01");
    EXPECT_EQ(CuentaHastaNivel(s, "AÑO0101", 3), "AÑO0101");
    // The mask is walked character by character too; "Ñ" is not in its set.
    EXPECT_TRUE(CuentaCumpleFormato(s, "ABC-01-01", PosicionesSeparador(s)));
    EXPECT_FALSE(CuentaCumpleFormato(s, "AÑO-01-01", PosicionesSeparador(s)));
    EXPECT_FALSE(CuentaCumpleFormato(s, "AÑ-01", PosicionesSeparador(s)));
}

TEST(CodigosCuenta, NivelesUsadosConYSinCeros) {
    Sesion s = Estructura();
    struct Caso {
        const char* cuenta;
        bool ignoraCeros;
        int nivel;
    } casos[] = {
        {"1000200", true, 2},  {"1000200", false, 3}, {"1000000", true, 1}, {"1000000", false, 3},
        {"0000000", true, 0},  {"0000000", false, 3}, {"", false, 0},       {"", true, 0},
        {"10002", false, 2},   {"1000201", true, 3},
        {"100W", false, 1},  // W is not significant unless zeros are ignored
        {"100W", true, 2},
        {"100w", false, 1},    {"100w", true, 1},    // lower case never counts
        {"100Z", false, 2},
    };
    for (auto& c : casos)
        EXPECT_EQ(CalculaNivelCuenta(s, c.cuenta, c.ignoraCeros), c.nivel) << c.cuenta << " " << c.ignoraCeros;

    // A level whose mask is alphanumeric counts only by significant characters.
    Sesion alfa = Estructura("XXX-99-99");
    EXPECT_EQ(CalculaNivelCuenta(alfa, "ABC0000", true), 1);
    EXPECT_EQ(CalculaNivelCuenta(alfa, "0000000", true), 0);

    struct Ancestro {
        int nivel;
        const char* cuenta;
    } ancestros[] = {{0, ""}, {1, "100"}, {2, "10002"}, {3, "1000200"}};
    for (auto& a : ancestros) EXPECT_EQ(CuentaHastaNivel(s, "1000200", a.nivel), a.cuenta) << a.nivel;
}

TEST(CodigosCuenta, MascaraYConjuntosDeCaracteres) {
    Sesion s = Estructura();
    auto lista = PosicionesSeparador(s);
    EXPECT_EQ(lista, (std::vector<int>{4, 7}));
    EXPECT_EQ(UltimoIndiceLista(lista), 1);
    Sesion sin = Estructura("9999999", "");
    EXPECT_EQ(PosicionesSeparador(sin), std::vector<int>{0});
    EXPECT_EQ(UltimoIndiceLista(PosicionesSeparador(sin)), 0);

    struct Formato {
        const char* mascara;
        const char* texto;
        bool cumple;
    } formatos[] = {
        {"999-99-99", "100-02-00", true},  {"999-99-99", "100 02 00", true},  // a blank stands for the separator
        {"999-99-99", "", true},           {"999-99-99", "1A0-02-00", false},
        {"999-99-99", "100-02-001", false},  // past the mask
        {"999-99-99", "100.02", false},    {"XXX-99-99", "ab1-02", true},    // X upper-cases first
        {"AAA-99-99", "A 1-0", true},      {"xxx-99-99", "A", false},        // mask letters are exact by case
    };
    for (auto& f : formatos) {
        Sesion m = Estructura(f.mascara);
        EXPECT_EQ(CuentaCumpleFormato(m, f.texto, PosicionesSeparador(m)), f.cumple) << f.mascara << " " << f.texto;
    }
    EXPECT_FALSE(EsPosicionSeparador(s, 4, "", lista));
    EXPECT_FALSE(EsPosicionSeparador(s, 5, "-", lista));
    EXPECT_FALSE(CaracterCumpleMascara(s, 0, "1"));
    EXPECT_FALSE(CaracterCumpleMascara(s, 4, "-"));

    struct Texto {
        const char* texto;
        bool numerico;
    } textos[] = {{"", true}, {"123", true}, {"1-2", true}, {"$5.0", true}, {"1 2", false}, {"a1", false}, {"1E5", false}};
    for (auto& t : textos) EXPECT_EQ(EsTextoNumerico(t.texto), t.numerico) << t.texto;

    struct Significativo {
        const char* texto;
        bool ignoraCeros;
        bool esperado;
    } significativos[] = {
        {"000", true, false}, {"000", false, true}, {"W", false, false}, {"W", true, true},
        {"a", true, false},   {"a", false, false},  {"Z", false, true},  {"", false, false},
    };
    for (auto& c : significativos)
        EXPECT_EQ(TieneCaracterSignificativo(c.texto, c.ignoraCeros), c.esperado) << c.texto << " " << c.ignoraCeros;
}

TEST(CodigosCuenta, MesesEnSusTablas) {
    struct Nombre {
        const char* texto;
        const char* mes;
        const char* mesDosDigitos;
    } nombres[] = {
        {"1", "Enero", ""},      {"01", "", "Enero"},          {"9", "Septiembre", ""},
        {"12", "Diciembre", "Diciembre"}, {"13", "", "Mes 13"}, {"0", "", ""},
        {"", "", ""},            {"09", "", "Septiembre"},
    };
    for (auto& n : nombres) {
        EXPECT_EQ(NombreMes(n.texto), n.mes) << n.texto;
        EXPECT_EQ(NombreMesDosDigitos(n.texto), n.mesDosDigitos) << n.texto;
    }

    struct Numero {
        int mes;
        const char* abreviatura;
        const char* mayusculas;
    } numeros[] = {{1, "ENE", "ENERO"}, {3, "MZO", "MARZO"}, {9, "SEP", "SEPTIEMBRE"}, {12, "DIC", "DICIEMBRE"},
                   {0, "", ""},         {13, "", ""}};
    for (auto& n : numeros) {
        EXPECT_EQ(AbreviaturaMes(n.mes), n.abreviatura) << n.mes;
        EXPECT_EQ(NombreMesMayusculas(n.mes), n.mayusculas) << n.mes;
    }

    struct Lectura {
        const char* texto;
        int mes;
    } lecturas[] = {{"ENE", 1}, {"mar", 3}, {"Dic", 12}, {"MZO", 0}, {"MARZO", 0}, {"", 0}};
    for (auto& l : lecturas) EXPECT_EQ(NumeroDeMes(l.texto), l.mes) << l.texto;
    EXPECT_EQ(NumeroDeMes(AbreviaturaMes(3)), 0);  // the two tables do not round-trip

    Sesion s;
    struct Dia {
        const char* ejercicio;
        int mes;
        const char* texto;
    } dias[] = {
        {"2023", 1, "31/ENE/"}, {"2023", 3, "31/MZO/"}, {"2023", 2, "28/FEB/"}, {"2024", 2, "29/FEB/"},
        {"1900", 2, "29/FEB/"},  // no rule for centuries
        {"2023", 11, "30/NOV/"}, {"2024", 0, ""},
    };
    for (auto& d : dias) {
        s.EjercicioTexto = d.ejercicio;
        EXPECT_EQ(UltimoDiaDelMes(s, d.mes), d.texto) << d.ejercicio << " " << d.mes;
    }
}

TEST(CodigosCuenta, DesbordamientoDeUnaPiezaAlfanumericaTerminaElPrograma) {
    prueba::InteraccionGuionada guion;
    Sesion s = Estructura("99999-99", "-", {5, 2});
    s.interaccion = &guion;
    const std::string aviso =
        "Es posible que su catálogo contenga cuentas alfanuméricas.\r\n"
        "Asegúrese de haber definido de forma correcta la estructura de su cuenta.";
    EXPECT_EQ(CalculaNivelCuenta(s, "1E300", true), 1);  // large but representable
    EXPECT_TRUE(guion.mensajes.empty());
    try {
        CalculaNivelCuenta(s, "1E99901", false);
        FAIL() << "the program should have ended";
    } catch (const ProgramaTerminado& fin) {
        EXPECT_EQ(fin.what(), aviso);
    }
    ASSERT_EQ(guion.mensajes.size(), 1u);
    EXPECT_EQ(guion.mensajes[0].tipo, TipoMensaje::Aviso);
    EXPECT_EQ(guion.mensajes[0].titulo, "VELMORANT Ver. 1.0.0");
    EXPECT_EQ(guion.mensajes[0].texto, aviso + "\r");

    // Through FormateaCuenta the same trap ends the program.
    EXPECT_THROW(FormateaCuenta(s, "1D999"), ProgramaTerminado);
}

TEST(CodigosCuenta, DesbordamientoDeUnaPiezaNumericaSeReportaYDevuelveLoContado) {
    prueba::InteraccionGuionada guion;
    // A first level of 3 and a second of 320 digits: 10^320 does not fit.
    std::string mascara = "999-" + std::string(320, '9');
    Sesion s = Estructura(mascara, "-", {3, 320});
    s.interaccion = &guion;
    EXPECT_EQ(CalculaNivelCuenta(s, "100" + std::string(320, '9'), false), 1);
    ASSERT_EQ(guion.mensajes.size(), 1u);
    EXPECT_EQ(guion.mensajes[0].tipo, TipoMensaje::Critico);
    EXPECT_EQ(guion.mensajes[0].texto, "Error :  1 Overflow\r");
}

TEST(CodigosCuenta, NivelFueraDelFormatoTerminaElPrograma) {
    prueba::InteraccionGuionada guion;
    Sesion s = Estructura();
    s.interaccion = &guion;
    const std::string texto =
        "Error al leer el nivel de la Cuenta: 1000200 - Nivel: 4\r\n"
        "El nivel sobrepasa al formato definido: 999-99-99 - Nivel: 3";
    try {
        CuentaHastaNivel(s, "1000200", 4);
        FAIL() << "the program should have ended";
    } catch (const ProgramaTerminado& fin) {
        EXPECT_EQ(fin.what(), texto);
    }
    ASSERT_EQ(guion.mensajes.size(), 1u);
    EXPECT_EQ(guion.mensajes[0].tipo, TipoMensaje::Critico);
    EXPECT_EQ(guion.mensajes[0].texto, texto + "\r");
}
