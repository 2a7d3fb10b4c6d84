// The workbook readers against sheets written as .xlsx and .xls: the
// header row, the title flag, blank rows, accounts delivered as numbers,
// dates with a time of day, the closing month, the English month words and
// the rows that stop a run with the sheet's rows rolled back.

#include <gtest/gtest.h>

#include <memory>

#include "importers/excel_columnas/LectorExcelColumnas.h"
#include "importers/excel_columnas/LibroPrueba.h"
#include "platform/ErrorLectura.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/AlmacenesLectura.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

class ProgresoMudoAnotado : public Progreso {
public:
    std::vector<std::string> etiquetas;
    void etiqueta(const std::string& t) override { etiquetas.push_back(t); }
    void maximo(long) override {}
    void valor(long) override {}
    void visible(bool) override {}
};

class LecturaExcel_ : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    InteraccionGuionada ui;
    ProgresoMudoAnotado progreso;
    Sesion s;
    std::unique_ptr<DestinoTmp> destino;

    void SetUp() override {
        AbreAlmacenesDeLectura(s, ui, carpeta, 2025);
        s.progreso = &progreso;
        destino = std::make_unique<DestinoTmp>(s, ReglasExcelColumnas());
    }

    void Vacia() {
        s.DbEmpresa->ejecutaScript(
            "DELETE FROM Polizas_Tmp.Polizas_Tmp; DELETE FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp; "
            "DELETE FROM CuentasTmp.Cuentas; DELETE FROM InconsisImpTmp.InconsisImpTmp");
        destino = std::make_unique<DestinoTmp>(s, ReglasExcelColumnas());
    }

    std::string Libro(const std::string& nombre, const HojaLibro& hoja) {
        std::string ruta = carpeta.texto() + nombre;
        EscribeLibro(ruta, hoja);
        return ruta;
    }

    // Chart: account, level, description, balance. Vouchers: number, account,
    // date, type, -, concept, indicator, amount, reference. Balances:
    // account, -, description, ..., balance in 7.
    static LecturaExcel Lectura(bool titulos) {
        LecturaExcel l;
        l.Titulos = titulos;
        auto& c = l.config;
        c.PIniCuenta = 1, c.PIniNivel = 2, c.PIniDescripcion = 3, c.PIniSdoIni = 4;
        c.PIniNumPol = 1, c.PIniCtaPol = 2, c.PIniDia = 3, c.PIniTipo = 4, c.PIniConcept = 6;
        c.PIniTipoMov = 7, c.PIniImporte = 8, c.PIniRef = 9;
        c.PIniCtaSdoAnt = 1, c.PIniDescSdoAnt = 3, c.PIniSdoFinAnt = 7;
        return l;
    }

    std::vector<std::string> Filas(const std::string& sql) { return FilasComoTexto(*s.DbEmpresa, sql); }
    std::vector<std::string> Cuentas() {
        return Filas("SELECT Cuenta, Nivel, Descripcion, Saldo FROM CuentasTmp.Cuentas ORDER BY rowid");
    }
    std::vector<std::string> Partidas() {
        return Filas(
            "SELECT p.Poliza, p.Tipo, p.Fecha, IFNULL(p.Poliza_Mes13, 0), d.Partida, d.Cuenta, d.TipoMov, d.Importe "
            "FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp d JOIN Polizas_Tmp.Polizas_Tmp p ON p.IdPoliza = d.IdPoliza "
            "ORDER BY d.rowid");
    }
};

const std::vector<CeldaLibro> kEncabezadoCatalogo = {T("Cuenta"), T("Nivel"), T("Nombre"), T("Saldo")};

}  // namespace

// The chart sheet in both formats: the header row is never data, the title
// flag drops the next row too, blank rows add nothing, and a code the sheet
// holds as a number arrives as its digits (padded by RellenaCuenta, zeros
// already lost in the sheet not restored).
TEST_F(LecturaExcel_, CatalogoPorFilas) {
    struct Caso {
        const char* nombre;
        bool titulos;
        HojaLibro filas;  // under the header row
        std::vector<std::string> cuentas;  // Cuenta|Nivel|Descripcion|Saldo (ten-thousandths)
    } casos[] = {
        {"sin titulos", false,
         {{T("100-00-00"), N(1), T("Caja"), N(1500.25)}, {N(1000101), N(3), T("Banco"), T("-7.5")}},
         {"100|1|Caja|15002500", "1000101|3|Banco|-75000"}},
        {"titulos quitan la primera fila de datos", true,
         {{T("Código"), T("Nivel"), T("Nombre"), T("Saldo")}, {T("100-00-00"), N(1), T("Caja"), N(1)}},
         {"100|1|Caja|10000"}},
        {"titulos sobre una fila en blanco", true, {{}, {T("100-00-00"), N(1), T("Caja"), N(1)}}, {"100|1|Caja|10000"}},
        {"filas en blanco y sin cuenta", false,
         {{T("200-00-00"), N(1), T("Pasivo"), V()}, {}, {V(), N(2), T("Sin cuenta"), N(5)},
          {T(" 200-01 -\t00"), N(9), T("  Proveedores  "), T("$-3")}},
         {"200|1|Pasivo|0", "20001|2|Proveedores|-30000"}},
        {"numero sin ceros a la izquierda", false, {{N(10101), V(), T("Corta"), V()}}, {"10101|0|Corta|0"}},
    };
    for (const char* extension : {".xlsx", ".xls"})
        for (auto& c : casos) {
            Vacia();
            HojaLibro hoja{kEncabezadoCatalogo};
            hoja.insert(hoja.end(), c.filas.begin(), c.filas.end());
            ImportaCatalogoExcel(s, *destino, Libro(std::string("cat") + extension, hoja), Lectura(c.titulos), false);
            EXPECT_EQ(Cuentas(), c.cuentas) << c.nombre << extension;
        }
    EXPECT_TRUE(ui.mensajes.empty());
    EXPECT_EQ(progreso.etiquetas.back(), "Importando Catálogo de Cuentas ...");
}

// The voucher sheet: the title flag does not touch it, a date cell keeps
// only its day, English month words are translated by their table (so that
// "DEC" stays unreadable), the type is cut before the search, and the
// closing month dates its vouchers December 31 and flags them.
TEST_F(LecturaExcel_, PolizasPorFilas) {
    ImportaCatalogoExcel(s, *destino, Libro("cat.xlsx", {kEncabezadoCatalogo, {T("100-01-01"), N(3), T("Caja")}}),
                         Lectura(false), false);
    const std::vector<CeldaLibro> encabezado = {T("Num"), T("Cuenta"), T("Fecha"), T("Tipo"), V(),
                                                T("Concepto"), T("DH"),  T("Importe")};
    struct Caso {
        const char* nombre;
        int mes;
        HojaLibro filas;
        std::vector<std::string> partidas;  // Poliza|Tipo|Fecha|Mes13|Partida|Cuenta|TipoMov|Importe
    } casos[] = {
        {"fecha con hora y titulos sin efecto", 1,
         {{N(1), N(1000101), F(2025, 1, 5, 13, 45), T("Dr"), V(), T("Venta"), N(1), N(250.5)},
          {N(1), T("100-01-01"), F(2025, 1, 5, 9, 0), T("Dr"), V(), T("Venta"), N(2), N(250.5)}},
         {"1|Dr|2025-01-05|0|1|1000101|D|2505000", "1|Dr|2025-01-05|0|2|1000101|H|2505000"}},
        {"meses en ingles", 1,
         {{N(2), T("1000101"), T("5-jan-2025"), T("Eg"), V(), T("c"), N(1), N(1)},
          {N(3), T("1000101"), T("7-Aug-25"), T("Eg"), V(), T("c"), N(1), N(1)}},
         {"2|Eg|2025-01-05|0|1|1000101|D|10000", "3|Eg|2025-08-07|0|1|1000101|D|10000"}},
        {"tipo largo cortado antes de buscar", 1,
         {{N(4), T("1000101"), T("10/02/2025"), T("Diario general"), V(), T("c"), N(1), N(3)},
          {N(4), T("1000101"), T("10/02/2025"), T("Diario general"), V(), T("c"), N(2), N(3)}},
         {"4|Diario gen|2025-02-10|0|1|1000101|D|30000", "4|Diario gen|2025-02-10|0|2|1000101|H|30000"}},
        {"sin indicador, sin cuenta, sin numero, en blanco", 1,
         {{N(5), T("1000101"), T("11/02/2025"), T("Dr"), V(), T("c"), V(), N(9)},
          {N(5), V(), T("11/02/2025"), T("Dr"), V(), T("c"), N(1), N(9)},
          {V(), T("1000101"), T("11/02/2025"), T("Dr"), V(), T("c"), N(1), N(9)},
          {}},
         {"5|Dr|2025-02-11|0|1|1000101||0"}},
        {"mes 13 sin fecha de la hoja", 13,
         {{T("C1"), T("1000101"), V(), T("Cierre"), V(), T("c"), N(1), N(7)},
          {T("C1"), T("1000101"), T("15/06/2025"), T("Cierre"), V(), T("c"), N(2), N(7)}},
         {"C1|Cierre|2025-12-31|-1|1|1000101|D|70000", "C1|Cierre|2025-12-31|-1|2|1000101|H|70000"}},
    };
    for (const char* extension : {".xlsx", ".xls"})
        for (auto& c : casos) {
            Vacia();
            ImportaCatalogoExcel(s, *destino, Libro("cat.xlsx", {kEncabezadoCatalogo, {T("100-01-01"), N(3), T("Caja")}}),
                                 Lectura(false), false);
            HojaLibro hoja{encabezado};
            hoja.insert(hoja.end(), c.filas.begin(), c.filas.end());
            ImportaPolizasExcel(s, *destino, Libro(std::string("pol") + extension, hoja), Lectura(true), c.mes, "");
            EXPECT_EQ(Partidas(), c.partidas) << c.nombre << extension;
        }
    EXPECT_TRUE(ui.mensajes.empty());
    EXPECT_EQ(TraduceMesFecha("1-apr-2025"), "1-ABR-2025");
    EXPECT_EQ(TraduceMesFecha("31-Dec-2025"), "31-DEC-2025");
}

// A voucher row that cannot be read stops the reader with the row's number
// named and the sheet's rows rolled back; so does a balance that is no number.
TEST_F(LecturaExcel_, FilaIlegibleDetieneLaLectura) {
    ImportaCatalogoExcel(s, *destino, Libro("cat.xlsx", {kEncabezadoCatalogo, {T("100-01-01"), N(3), T("Caja")}}),
                         Lectura(false), false);
    const std::vector<CeldaLibro> buena = {N(1), T("1000101"), T("02/01/2025"), T("Dr"), V(), T("c"), N(1), N(1)};
    struct Caso {
        const char* nombre;
        std::vector<CeldaLibro> mala;
        bool saldos;
    } casos[] = {
        {"diciembre en ingles", {N(2), T("1000101"), T("31-DEC-2025"), T("Dr"), V(), T("c"), N(1), N(1)}, false},
        {"fecha imposible", {N(2), T("1000101"), T("30/02/2025"), T("Dr"), V(), T("c"), N(1), N(1)}, false},
        {"saldo que no es numero", {T("100-01-01"), V(), T("Caja"), V(), V(), V(), T("cien")}, true},
    };
    for (auto& c : casos) {
        ui.mensajes.clear();
        const std::string ruta = Libro("malo.xlsx", {{T("A")}, buena, {}, c.mala});
        try {
            if (c.saldos) ImportaSaldosAnioAntExcel(s, *destino, ruta, Lectura(false));
            else ImportaPolizasExcel(s, *destino, ruta, Lectura(false), 1, "");
            ADD_FAILURE() << c.nombre << ": no falló";
        } catch (const ErrorLectura& e) {
            EXPECT_EQ(e.archivo(), ruta) << c.nombre;
            EXPECT_EQ(e.linea(), 4) << c.nombre;
        }
        ASSERT_FALSE(ui.mensajes.empty()) << c.nombre;
        if (!c.saldos) {
            EXPECT_EQ(ui.mensajes.back().texto, "Error al leer la fila: 4\r") << c.nombre;
        }
        EXPECT_TRUE(Partidas().empty()) << c.nombre;
        EXPECT_TRUE(Filas("SELECT 1 FROM CuentasTmp.Cuentas WHERE SaldoFinAnioAnt IS NOT NULL").empty()) << c.nombre;
    }
}

// Opening and prior-year balances; here an account the company lacks is the
// one logged.
TEST_F(LecturaExcel_, SaldosInicialesYDelAnioAnterior) {
    ImportaCatalogoExcel(s, *destino, Libro("cat.xlsx", {kEncabezadoCatalogo, {T("100-00-00"), N(1), T("Caja"), N(9)}}),
                         Lectura(false), true);
    LecturaExcel l = Lectura(true);
    ImportaSaldosInicialesExcel(
        s, *destino,
        Libro("si.xls", {{T("Cuenta"), V(), V(), T("Saldo")}, {T("Titulo"), V(), V(), T("x")},
                         {N(1000000), V(), T("Caja"), N(1500.25)}, {T("5550000"), V(), T("Nada"), N(3)}}),
        l);
    EXPECT_EQ(Cuentas(), std::vector<std::string>{"100|1|Caja|15002500"});

    Vacia();
    s.DbEmpresa->ejecuta("INSERT INTO Cuentas (Cuenta, Descripcion) VALUES ('100', 'Caja')");
    HojaLibro saa = {{T("Cuenta")}, {T("Titulo")},
                     {N(1000000), V(), T("Caja"), V(), V(), V(), N(100)},
                     {T("200-00-00"), V(), T("Proveedores"), V(), V(), V(), T("-50")}};
    ImportaSaldosAnioAntExcel(s, *destino, Libro("saa.xlsx", saa), l);
    EXPECT_EQ(Filas("SELECT Cuenta, Nivel, Descripcion, SaldoFinAnioAnt FROM CuentasTmp.Cuentas"),
              (std::vector<std::string>{"100|1|Caja|1000000", "200|1|Proveedores|-500000"}));
    EXPECT_EQ(Filas("SELECT Referencia, ClasifError, Cuenta FROM InconsisImpTmp.InconsisImpTmp"),
              std::vector<std::string>{"La Cuenta 200 no existe, contiene el saldo final del año anterior y será "
                                       "agregará al catalogo actual|O|200"});
    EXPECT_EQ(progreso.etiquetas.back(), "Importando Saldos del Año Anterior Final ");
}
