#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "pipeline/Balanza.h"
#include "pipeline/EntornoBalanzaPolizas.h"
#include "pipeline/Polizas.h"

using namespace velmorant;
using velmorant::prueba::DatosPoliza;
using velmorant::prueba::EmpresaDePrueba;
using velmorant::prueba::M;

namespace {

constexpr const char* kCancelada =
    "La Póliza se encuentra indicada como CANCELADA en los archivos de origen, por lo que, los movimientos no se "
    "reflejaran en la Balanza.";

struct Linea {
    const char* cuenta;
    const char* tipoMov;
    const char* importe;
};

/// A company with "1101" and "1102" in its chart, "2101" only in the new
/// chart of the run, and the voucher stores open.
struct EmpresaConAlmacenes : EmpresaDePrueba {
    EmpresaConAlmacenes() {
        abrePolizasTmp();
        cuentaConSaldo("1101", M("0"));
        cuentaConSaldo("1102", M("0"));
        cuentaTmp("2101");
    }
    void polizaTmp(const DatosPoliza& p, const std::vector<Linea>& lineas) {
        poliza(p, "Polizas_Tmp");
        for (const Linea& l : lineas) linea(p.id, l.cuenta, l.tipoMov, M(l.importe), "Polizas_Detalle_Tmp");
    }
    bool bandera(const char* tabla, int id, const char* campo) {
        return s.DbEmpresa->escalar(std::string("SELECT ") + campo + " FROM " + tabla + " WHERE IdPoliza=?", id)
            .booleano();
    }
    std::vector<std::string> referencias() {
        std::vector<std::string> r;
        for (auto& i : inconsistencias()) r.push_back(i.referencia);
        return r;
    }
};

}  // namespace

TEST(Polizas, CuadreExactoConLasCuentasConocidas) {
    struct Caso {
        const char* nombre;
        std::vector<Linea> lineas;
        bool cancelada;
        bool cuadrada;
        const char* registro;  // nullptr: nothing logged
    } casos[] = {
        {"cuadra", {{"1101", "D", "100"}, {"1102", "H", "100"}}, false, true, nullptr},
        {"un centavo de más en el cargo",
         {{"1101", "D", "100.00"}, {"1102", "H", "99.99"}},
         false,
         false,
         "Póliza no balanceada Importe de diferencia $0.01"},
        {"un centavo de más en el abono",
         {{"1101", "D", "99.99"}, {"1102", "H", "100"}},
         false,
         false,
         "Póliza no balanceada Importe de diferencia -$0.01"},
        {"sin tolerancia",
         {{"1101", "D", "1"}, {"1102", "H", "0.9999"}},
         false,
         false,
         "Póliza no balanceada Importe de diferencia $0.00"},
        {"cualquier letra que no sea D abona", {{"1101", "D", "5"}, {"1102", "A", "5"}}, false, true, nullptr},
        {"cuenta nueva del catálogo de la corrida", {{"2101", "D", "7"}, {"1102", "H", "7"}}, false, true, nullptr},
        {"la línea de cuenta desconocida no suma: descuadra",
         {{"1101", "D", "100"}, {"1102", "H", "60"}, {"9999", "H", "40"}},
         false,
         false,
         "Póliza no balanceada Importe de diferencia $40.00"},
        {"la línea de cuenta desconocida no suma: cuadra",
         {{"1101", "D", "100"}, {"1102", "H", "100"}, {"9999", "D", "5"}},
         false,
         true,
         nullptr},
        {"sin líneas", {}, false, true, nullptr},
        {"cancelada que cuadra", {{"1101", "D", "3"}, {"1102", "H", "3"}}, true, true, kCancelada},
        {"cancelada que no cuadra",
         {{"1101", "D", "3"}},
         true,
         false,
         "Póliza no balanceada Importe de diferencia $3.00"},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        EmpresaConAlmacenes e;
        e.polizaTmp({.id = 5,
                     .poliza = "P-5",
                     .tipo = "Dr",
                     .fecha = {2023, 1, 20},
                     .cuadrada = false,
                     .deshabilitada = c.cancelada},
                    c.lineas);
        VerificaCuadrePolizas(e.s, "01");
        EXPECT_EQ(e.bandera("Polizas_Tmp", 5, "Cuadrada"), c.cuadrada);
        EXPECT_EQ(e.bandera("Polizas_Tmp", 5, "Poliza_Deshabilitada"), c.cancelada || !c.cuadrada);
        auto log = e.inconsistencias();
        if (!c.registro) {
            EXPECT_TRUE(log.empty());
            continue;
        }
        ASSERT_EQ(log.size(), 1u);
        EXPECT_EQ(log[0].referencia, c.registro);
        EXPECT_EQ(log[0].fuente, "Pólizas");
        EXPECT_EQ(log[0].clasif, "D");
        EXPECT_EQ(log[0].poliza, "P-5");
        EXPECT_EQ(log[0].tipo, "Dr");
        EXPECT_EQ(log[0].fecha, "2023-01-20");
        EXPECT_EQ(log[0].cuenta, "");
    }
}

TEST(Polizas, ElMes13SeVerificaAparteYSeGuardaConDiciembre) {
    EmpresaConAlmacenes e;
    e.polizaTmp({.id = 1, .poliza = "D1", .fecha = {2023, 12, 31}, .cuadrada = false}, {{"1101", "D", "1"}});
    e.polizaTmp({.id = 2, .poliza = "C1", .fecha = {2023, 12, 31}, .cuadrada = false, .mes13 = true},
                {{"1101", "D", "2"}});

    VerificaCuadrePolizas(e.s, "12");
    EXPECT_EQ(e.referencias(), std::vector<std::string>{"Póliza no balanceada Importe de diferencia $1.00"});
    EXPECT_NE(std::find(e.progreso.etiquetas.begin(), e.progreso.etiquetas.end(),
                        "Verificando cuadre de Pol. D1, Dr, Diciembre"),
              e.progreso.etiquetas.end());
    VerificaCuadrePolizas(e.s, "13");
    EXPECT_EQ(e.referencias().size(), 2u);
    EXPECT_EQ(e.referencias().back(), "Póliza no balanceada Importe de diferencia $2.00");
    EXPECT_EQ(e.progreso.etiquetas.back(), "Verificando cuadre de Pol. C1, Dr, Mes 13");

    GuardaPolizas(e.s, "13");
    EXPECT_EQ(e.s.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas").entero(), 0);
    GuardaPolizas(e.s, "12");
    EXPECT_EQ(e.s.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas").entero(), 2);
    EXPECT_TRUE(e.bandera("Polizas", 2, "Poliza_Mes13"));
}

// Amounts another writer left as plain reals (the column keeps a fraction
// so) count as the same money in the balance check and in the posting as
// the exact integers of this program's writer.
TEST(Polizas, ImportesQueNoSonEnterosCuadranYSeAplicanIgual) {
    EmpresaConAlmacenes e;
    e.polizaTmp({.id = 1, .poliza = "1", .tipo = "Dr", .fecha = {2023, 1, 10}, .cuadrada = false},
                {{"1101", "D", "100.5"}, {"1102", "H", "60.25"}, {"1102", "H", "40.25"}});
    e.s.DbEmpresa->ejecuta("UPDATE Polizas_Detalle_Tmp SET Importe = 60.25 WHERE Importe = ?", M("60.25"));
    e.s.DbEmpresa->ejecuta("UPDATE Polizas_Detalle_Tmp SET Importe = '40.25' WHERE Importe = ?", M("40.25"));
    EXPECT_EQ(e.s.DbEmpresa->escalar("SELECT count(*) FROM Polizas_Detalle_Tmp WHERE typeof(Importe)='real'").entero(),
              2);
    VerificaCuadrePolizas(e.s, "01");
    EXPECT_TRUE(e.referencias().empty());
    EXPECT_TRUE(e.bandera("Polizas_Tmp", 1, "Cuadrada"));
    e.s.UltimoMesNuevo = 1;
    GuardaPolizas(e.s, "01");
    VerificaConsistenciaPolizas(e.s, "01");
    AplicaPolizasABalanza(e.s, "01");
    EXPECT_EQ(e.celda("Balanzas", "1101", "C01"), M("100.5"));
    EXPECT_EQ(e.celda("Balanzas", "1102", "A01"), M("100.5"));
}

TEST(Polizas, GuardaPolizasCopiaElMesYLimpiaLosTextos) {
    EmpresaConAlmacenes e;
    std::string largo;
    for (int i = 0; i < 300; ++i) largo += "ñ";
    e.polizaTmp({.id = 3, .poliza = "7", .tipo = "Ig", .fecha = {2023, 2, 1}, .deshabilitada = true, .ajuste = true},
                {{"1101", "D", "1234.5678"}, {"1102", "H", "1234.5678"}});
    e.polizaTmp({.id = 4, .fecha = {2023, 3, 1}}, {{"1101", "D", "1"}});
    e.s.DbEmpresa->ejecuta("UPDATE Polizas_Tmp SET Concepto=? WHERE IdPoliza=3", "Pago a O'Brien | ~" + largo);
    e.s.DbEmpresa->ejecuta("UPDATE Polizas_Detalle_Tmp SET Referencia=? WHERE IdPoliza=3", "Ref|'~" + largo);
    e.s.DbEmpresa->ejecuta("UPDATE Polizas_Tmp SET Poliza_Mes13=NULL");

    GuardaPolizas(e.s, "02");

    Consulta p = e.s.DbEmpresa->consulta("SELECT * FROM Polizas");
    ASSERT_EQ(p.cuentaRegistros(), 1u);
    EXPECT_EQ(p["IdPoliza"].entero(), 3);
    EXPECT_EQ(p["Poliza"].texto(), "7");
    EXPECT_EQ(p["Tipo"].texto(), "Ig");
    EXPECT_EQ(p["Fecha"].texto(), "2023-02-01");
    std::string concepto = "Pago a OBrien  " + largo;
    size_t corte = 0;  // byte offset of the 256th character
    for (int caracteres = 0; caracteres < 255; ++caracteres)
        corte += static_cast<unsigned char>(concepto[corte]) < 0x80 ? 1 : 2;
    EXPECT_EQ(p["Concepto"].texto(), concepto.substr(0, corte));
    EXPECT_TRUE(p["Poliza_Deshabilitada"].booleano());
    EXPECT_TRUE(p["Cuadrada"].booleano());
    EXPECT_TRUE(p["Poliza_Ajuste"].booleano());
    EXPECT_EQ(p["Poliza_Mes13"].entero(), 0);

    Consulta l = e.s.DbEmpresa->consulta("SELECT * FROM Polizas_Detalle ORDER BY Partida");
    ASSERT_EQ(l.cuentaRegistros(), 2u);
    EXPECT_EQ(l["Cuenta"].texto(), "1101");
    EXPECT_EQ(l["TipoMov"].texto(), "D");
    EXPECT_EQ(l["Importe"].moneda(), M("1234.5678"));
    EXPECT_EQ(l["Referencia"].texto(), "Ref" + largo);
    EXPECT_EQ(l["Partida"].entero(), 1);
    l.siguiente();
    EXPECT_EQ(l["TipoMov"].texto(), "H");
    EXPECT_EQ(l["Partida"].entero(), 2);
    EXPECT_EQ(e.progreso.etiquetas.back(), "Importando Pol. 7, Ig, 01/02/2023");
}

TEST(Polizas, UnaLineaQueNoPuedeRegistrarseDeshabilitaLaPolizaEntera) {
    struct Caso {
        const char* nombre;
        const char* cuenta;
        const char* registro;
    } casos[] = {
        {"cuenta acumulativa", "11", "No es posible registrar el movimiento D, 40.5 en una cuenta Acumulativa."},
        {"cuenta sin renglón en la balanza", "9999",
         "No es posible registrar el movimiento D, 40.5 , ya que la Cuenta no Existe "},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        EmpresaConAlmacenes e;
        e.cuenta("11", "A");
        e.balanza("11", M("0"));
        e.polizaTmp({.id = 1, .poliza = "9", .tipo = "Eg", .fecha = {2023, 1, 31}},
                    {{"1101", "D", "10"}, {c.cuenta, "D", "40.5"}, {"1102", "H", "50.5"}});
        // Not balanced: never checked here, never posted.
        e.polizaTmp({.id = 2, .fecha = {2023, 1, 31}, .cuadrada = false}, {{"7777", "D", "1"}});
        e.s.UltimoMesNuevo = 1;
        GuardaPolizas(e.s, "01");
        VerificaConsistenciaPolizas(e.s, "01");
        AplicaPolizasABalanza(e.s, "01");

        auto log = e.inconsistencias();
        ASSERT_EQ(log.size(), 1u);
        EXPECT_EQ(log[0].referencia, c.registro);
        EXPECT_EQ(log[0].cuenta, c.cuenta);
        EXPECT_EQ(log[0].poliza, "9");
        EXPECT_EQ(log[0].tipo, "Eg");
        EXPECT_EQ(log[0].fecha, "2023-01-31");
        EXPECT_TRUE(e.bandera("Polizas", 1, "Poliza_Deshabilitada"));
        EXPECT_FALSE(e.bandera("Polizas", 2, "Poliza_Deshabilitada"));
        EXPECT_EQ(e.celda("Balanzas", "1101", "C01"), M("0"));
        EXPECT_EQ(e.celda("Balanzas", "1102", "A01"), M("0"));
        EXPECT_EQ(e.progreso.etiquetas.back(), "Verificando consistencia en póliza num. 9 de Eg Enero");
    }
}

// A month is checked on its own lines even when the company's lines of an
// earlier month use an account that cannot take them, with the index on
// Cuenta (accounts looked up once each) and without it (the month read).
TEST(Polizas, LaConsistenciaDeUnMesNoSeContagiaDeOtro) {
    for (const bool conIndice : {true, false}) {
        SCOPED_TRACE(conIndice ? "con índice en Cuenta" : "sin índice en Cuenta");
        EmpresaConAlmacenes e;
        if (!conIndice) e.s.DbEmpresa->ejecuta("DROP INDEX Polizas_Detalle_Cuenta");
        e.polizaTmp({.id = 1, .poliza = "1", .tipo = "Dr", .fecha = {2023, 1, 10}},
                    {{"1101", "D", "5"}, {"9999", "H", "5"}});
        e.polizaTmp({.id = 2, .poliza = "2", .tipo = "Dr", .fecha = {2023, 2, 10}},
                    {{"1101", "D", "7"}, {"1102", "H", "7"}});
        // Not balanced: its unknown account is no reason to reject February.
        e.polizaTmp({.id = 3, .poliza = "3", .tipo = "Dr", .fecha = {2023, 2, 11}, .cuadrada = false},
                    {{"8888", "D", "1"}});
        e.s.UltimoMesNuevo = 2;
        for (const char* mes : {"01", "02"}) {
            GuardaPolizas(e.s, mes);
            VerificaConsistenciaPolizas(e.s, mes);
        }
        EXPECT_EQ(e.referencias(),
                  std::vector<std::string>{"No es posible registrar el movimiento H, 5 , ya que la Cuenta no Existe "});
        EXPECT_TRUE(e.bandera("Polizas", 1, "Poliza_Deshabilitada"));
        EXPECT_FALSE(e.bandera("Polizas", 2, "Poliza_Deshabilitada"));
        EXPECT_FALSE(e.bandera("Polizas", 3, "Poliza_Deshabilitada"));
        EXPECT_EQ(e.progreso.etiquetas.back(), "Verificando consistencia en póliza num. 2 de Dr Febrero");
    }
}

TEST(Polizas, SinBalanzaNoSeVerificaLaConsistencia) {
    EmpresaConAlmacenes e;
    e.s.DbEmpresa->ejecuta("DELETE FROM Balanzas");
    e.polizaTmp({.id = 1, .fecha = {2023, 1, 31}}, {{"9999", "D", "1"}});
    GuardaPolizas(e.s, "01");
    VerificaConsistenciaPolizas(e.s, "01");
    EXPECT_TRUE(e.inconsistencias().empty());
    EXPECT_FALSE(e.bandera("Polizas", 1, "Poliza_Deshabilitada"));
}

TEST(Polizas, PolizaDeCentavoDescuadradaSeAnotaYNoSeAplica) {
    EmpresaConAlmacenes e;
    e.polizaTmp({.id = 1, .fecha = {2023, 1, 31}, .cuadrada = false},
                {{"1101", "D", "100.00"}, {"1102", "H", "99.99"}});
    VerificaCuadrePolizas(e.s, "01");
    e.s.UltimoMesNuevo = 1;
    GuardaPolizas(e.s, "01");
    VerificaConsistenciaPolizas(e.s, "01");
    AplicaPolizasABalanza(e.s, "01");
    ObtieneSaldosBalanza(e.s, "01");
    EXPECT_EQ(e.referencias(), std::vector<std::string>{"Póliza no balanceada Importe de diferencia $0.01"});
    EXPECT_EQ(e.s.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas").entero(), 1);
    EXPECT_EQ(e.celda("Balanzas", "1101", "C01"), M("0"));
    EXPECT_EQ(e.celda("Balanzas", "1102", "SdoFin13"), M("0"));
}

TEST(Polizas, SiguienteIdYExistenciaEnElAlmacen) {
    EmpresaConAlmacenes e;
    EXPECT_EQ(SiguienteIdPoliza(e.s), 1);
    e.polizaTmp({.id = 3, .poliza = "O'Neil", .tipo = "Dr", .fecha = {2023, 12, 31}}, {});
    e.polizaTmp({.id = 7, .poliza = "8", .tipo = "Eg", .fecha = {2023, 12, 31}, .mes13 = true}, {});
    EXPECT_EQ(SiguienteIdPoliza(e.s), 8);

    struct Caso {
        const char* poliza;
        const char* tipo;
        Fecha fecha;
        bool mes13;
        bool existe;
    } casos[] = {
        {"O'Neil", "Dr", {2023, 12, 31}, false, true},  {"O'Neil", "Dr", {2023, 12, 31}, true, false},
        {"O'Neil", "Eg", {2023, 12, 31}, false, false}, {"O'Neil", "Dr", {2023, 12, 30}, false, false},
        {"8", "Eg", {2023, 12, 31}, true, true},        {"8", "Eg", {2023, 12, 31}, false, true},
    };
    for (const Caso& c : casos)
        EXPECT_EQ(ExistePolizaTmp(e.s, c.poliza, c.tipo, c.fecha, c.mes13), c.existe)
            << c.poliza << " " << c.tipo << " " << c.fecha.iso() << " " << c.mes13;
}

TEST(Polizas, RegistraTiposPolizaAgregaSoloLosQueFaltan) {
    EmpresaConAlmacenes e;
    e.s.DbEmpresa->ejecuta("INSERT INTO CatTipoPoliza (Tipo, Descripcion) VALUES ('Dr', 'Diario')");
    e.polizaTmp({.id = 1, .tipo = "Dr"}, {});
    e.polizaTmp({.id = 2, .tipo = "Ig"}, {});
    e.polizaTmp({.id = 3, .tipo = "Ig"}, {});
    e.polizaTmp({.id = 4, .tipo = "Eg"}, {});
    e.s.DbEmpresa->ejecuta("UPDATE Polizas_Tmp SET Tipo=NULL WHERE IdPoliza=4");
    e.polizaTmp({.id = 5, .tipo = "Eg"}, {});

    RegistraTiposPoliza(e.s);
    RegistraTiposPoliza(e.s);

    Consulta c = e.s.DbEmpresa->consulta("SELECT Tipo, Descripcion FROM CatTipoPoliza ORDER BY Tipo");
    std::vector<std::string> filas;
    for (c.primero(); !c.eof(); c.siguiente()) filas.push_back(c["Tipo"].texto() + "=" + c["Descripcion"].texto());
    EXPECT_EQ(filas, (std::vector<std::string>{"Dr=Diario", "Eg=Eg", "Ig=Ig"}));
}

TEST(Polizas, NormalizaTiposPolizaSoloConCodigosDeLetras) {
    struct Caso {
        const char* nombre;
        std::vector<const char*> catalogo;
        std::vector<const char*> polizas;
        std::vector<std::string> catalogoFinal;
        std::vector<std::string> polizasFinal;
    } casos[] = {
        {"códigos de letras",
         {"Dr", "Ig", "Eg", "Ch"},
         {"Dr", "Ig", "Eg", "DR", "Ch"},
         {"1=Ingresos", "2=Egresos", "3=Diario", "Ch=Ch"},
         {"1", "2", "3", "DR", "Ch"}},
        {"sin códigos de letras", {"1", "DR"}, {"Dr", "Ig"}, {"1=1", "DR=DR"}, {"Dr", "Ig"}},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        EmpresaDePrueba e;
        for (const char* t : c.catalogo)
            e.s.DbEmpresa->ejecuta("INSERT INTO CatTipoPoliza (Tipo, Descripcion) VALUES (?, ?)", t, t);
        int id = 0;
        for (const char* t : c.polizas) {
            e.poliza({.id = ++id, .tipo = t});
            e.s.DbEmpresa->ejecuta("INSERT INTO CedAnalitica (IdPoliza, Tipo) VALUES (?, ?)", id, t);
            e.s.DbEmpresa->ejecuta("INSERT INTO CedNoDeducibles (Tipo) VALUES (?)", t);
        }
        NormalizaTiposPoliza(e.s);
        std::vector<std::string> catalogo;
        Consulta cat = e.s.DbEmpresa->consulta("SELECT Tipo, Descripcion FROM CatTipoPoliza ORDER BY rowid");
        for (cat.primero(); !cat.eof(); cat.siguiente())
            catalogo.push_back(cat["Tipo"].texto() + "=" + cat["Descripcion"].texto());
        EXPECT_EQ(catalogo, c.catalogoFinal);
        for (const char* tabla : {"Polizas", "CedAnalitica", "CedNoDeducibles"}) {
            std::vector<std::string> tipos;
            Consulta p = e.s.DbEmpresa->consulta(std::string("SELECT Tipo FROM ") + tabla + " ORDER BY rowid");
            for (p.primero(); !p.eof(); p.siguiente()) tipos.push_back(p["Tipo"].texto());
            EXPECT_EQ(tipos, c.polizasFinal) << tabla;
        }
    }
}

TEST(Polizas, SinAlmacenesAbiertosLosPasosSeNiegan) {
    EmpresaDePrueba e;
    EXPECT_THROW(VerificaCuadrePolizas(e.s, "01"), std::logic_error);
    EXPECT_THROW(GuardaPolizas(e.s, "01"), std::logic_error);
    EXPECT_THROW(SiguienteIdPoliza(e.s), std::logic_error);
}
