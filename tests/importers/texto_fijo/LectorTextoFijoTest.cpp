// The readers of the fixed-position importer on small files written here:
// the chart's cleaning order and its level carried from line to line, the
// voucher lines' direction and amount, the reference joined to the concept,
// the type kept whole, the importer's own voucher counter, and the dates
// that end the run.

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "importers/texto_fijo/LectorTextoFijo.h"
#include "platform/ErrorLectura.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/AlmacenesLectura.h"
#include "support/Entorno.h"
#include "importers/texto_fijo/LineaFija.h"

using namespace velmorant;
using velmorant::prueba::AjustesAislados;
using velmorant::prueba::CarpetaTemporal;
using velmorant::prueba::InteraccionGuionada;

namespace {

using prueba::LineaFija;

// Chart: account 1-10, level 11-12, nature 13, parent 14-23, balance 24-35,
// description from 36.
EstructuraDatosTxt Diseno() {
    EstructuraDatosTxt c;
    c.PIniCuenta = 1, c.LongCuenta = 10;
    c.PIniNivel = 11, c.LongNivel = 2;
    c.PIniNaturaleza = 13, c.LongNaturaleza = 1;
    c.PIniCtaAcum = 14, c.LongCtaAcum = 10;
    c.PIniSdoIni = 24, c.LongSdoIni = 12;
    c.PIniDescripcion = 36, c.LongDescripcion = 80;
    // Vouchers: number 1-6, day 7-8, month 9-10, year 11-14, account 15-24,
    // reference 25-32, concept 33-52, indicator 53 and amount 54-65 (or
    // debit 53-64 and credit 66-77), type 90-104.
    c.PIniNumPol = 1, c.LongNumPol = 6;
    c.PIniDia = 7, c.LongDia = 2;
    c.PIniMes = 9, c.LongMes = 2;
    c.PIniAnio = 11, c.LongAnio = 4;
    c.PIniCtaPol = 15, c.LongCtaPol = 10;
    c.PIniRef = 25, c.LongRef = 8;
    c.PIniConcept = 33, c.LongConcept = 20;
    c.PIniTipoMov = 53, c.LongTipoMov = 1;
    c.PIniImporte = 54, c.LongImporte = 12;
    c.PIniTipo = 90, c.LongTipo = 15;
    return c;
}

EstructuraDatosTxt DisenoCargoAbono() {
    EstructuraDatosTxt c = Diseno();
    c.PIniTipoMov = c.LongTipoMov = c.PIniImporte = c.LongImporte = 0;
    c.PIniCargo = 53, c.LongCargo = 12;
    c.PIniAbono = 66, c.LongAbono = 12;
    return c;
}

std::string Cta(const std::string& cuenta, const std::string& nivel, const std::string& descripcion,
                const std::string& saldo = "", const std::string& acumulativa = "", const std::string& naturaleza = "") {
    return LineaFija({{1, cuenta}, {11, nivel}, {13, naturaleza}, {14, acumulativa}, {24, saldo}, {36, descripcion}});
}

// A voucher line with the indicator scheme ("" leaves the line short of it).
std::string Pol(const std::string& numero, const std::string& fecha, const std::string& cuenta,
                const std::string& indicador, const std::string& importe, const std::string& concepto = "c",
                const std::string& referencia = "", const std::string& tipo = "Dr") {
    std::string dia = fecha.substr(0, 2), mes = fecha.substr(3, 2), anio = fecha.substr(6);
    if (indicador.empty() && importe.empty())
        return LineaFija({{1, numero}, {7, dia}, {9, mes}, {11, anio}, {15, cuenta}, {25, referencia}, {33, concepto}});
    return LineaFija({{1, numero}, {7, dia}, {9, mes}, {11, anio}, {15, cuenta}, {25, referencia}, {33, concepto},
                  {53, indicador}, {54, importe}, {90, tipo}});
}

std::string PolCargoAbono(const std::string& numero, const std::string& cuenta, const std::string& cargo,
                          const std::string& abono) {
    return LineaFija({{1, numero}, {7, "02"}, {9, "01"}, {11, "2024"}, {15, cuenta}, {33, "c"}, {53, cargo}, {66, abono},
                  {90, "Dr"}});
}

class LecturaFija : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    InteraccionGuionada ui;
    Sesion s;
    long contador = 0;
    std::unique_ptr<DestinoTmp> destino;

    void SetUp() override {
        AbreAlmacenesDeLectura(s, ui, carpeta, 2024);
        destino = std::make_unique<DestinoTmp>(s, ReglasTextoFijo(&contador));
    }

    // A new run's writer over emptied stores; the counter goes on.
    void NuevaLectura() {
        s.DbEmpresa->ejecutaScript(
            "DELETE FROM Polizas_Tmp.Polizas_Tmp; DELETE FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp; "
            "DELETE FROM CuentasTmp.Cuentas");
        destino = std::make_unique<DestinoTmp>(s, ReglasTextoFijo(&contador));
    }

    std::string Archivo(const std::string& nombre, const std::vector<std::string>& lineas) {
        std::string ruta = carpeta.texto() + nombre, texto;
        for (auto& l : lineas) texto += l + "\r\n";
        std::ofstream(ruta, std::ios::binary) << texto;
        return ruta;
    }

    std::vector<std::string> Filas(const std::string& sql) { return prueba::FilasComoTexto(*s.DbEmpresa, sql); }
    std::vector<std::string> Cuentas() {
        return Filas("SELECT Cuenta, Nivel, CuentaAcumulativa, Naturaleza, Saldo, Descripcion FROM CuentasTmp.Cuentas "
                     "ORDER BY rowid");
    }
    std::vector<std::string> Movimientos() {
        return Filas("SELECT TipoMov, Importe FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp ORDER BY rowid");
    }
    void Catalogo() {
        ImportaCatalogoFijo(s, *destino, Archivo("cat.txt", {Cta("1000000", "1", "Caja"), Cta("1000100", "2", "Chica")}),
                            Diseno());
    }
};

TEST_F(LecturaFija, CatalogoLineaPorLinea) {
    const std::string larga(70, 'x');
    struct Caso {
        const char* nombre;
        bool rellenaCeros;
        std::vector<std::string> lineas;
        std::vector<std::string> cuentas;  // Cuenta|Nivel|CuentaAcumulativa|Naturaleza|Saldo|Descripcion
    } casos[] = {
        // Padded with its separators, then without them: "1-1" is 001 and 01.
        {"separador antes del relleno", true, {Cta("1-1", "2", "Caja")}, {"00101|2|||0|Caja"}},
        {"sin RellenaCtaCeros", false, {Cta("100-01", "2", "Bancos"), Cta("1000100", "3", "Entera")},
         {"10001|2|||0|Bancos", "1000100|3|||0|Entera"}},
        {"longitud completa con RellenaCtaCeros", true, {Cta("1000100", "3", "Entera")}, {"10001|2|||0|Entera"}},
        {"nivel de la linea anterior", true,
         {Cta("100", "A", "a"), Cta("200", "1", "b"), Cta("20001", "x", "c"), Cta("20002", "", "d"),
          Cta("20003", "2", "e")},
         {"100|0|||0|a", "200|1|||0|b", "20001|1|||0|c", "20002|1|||0|d", "20003|2|||0|e"}},
        {"cuenta acumulativa sin separador", true,
         {Cta("10001", "2", "a", "", "100-00-00", "D"), Cta("1000101", "3", "b", "", "100-01", "D")},
         {"10001|2|100|D|0|a", "1000101|3|10001|D|0|b"}},
        {"linea corta", true, {"300"}, {"300|0|||0|"}},
        {"saldos", true, {Cta("100", "1", "a", "$-7.5"), Cta("200", "1", "b", "7.5-"), Cta("300", "1", "c", "1,234.50")},
         {"100|1|||-75000|a", "200|1||||b", "300|1|||12345000|c"}},
        {"lineas vacias y de blancos", true, {"", "     ", Cta("100", "1", "a")}, {"100|1|||0|a"}},
        {"descripcion completa", true, {Cta("100", "1", larga)}, {"100|1|||0|" + larga}},
    };
    for (auto& c : casos) {
        s.RellenaCeros = c.rellenaCeros;
        s.DbEmpresa->ejecuta("DELETE FROM CuentasTmp.Cuentas");
        ImportaCatalogoFijo(s, *destino, Archivo("cat.txt", c.lineas), Diseno());
        EXPECT_EQ(Cuentas(), c.cuentas) << c.nombre;
    }
    EXPECT_TRUE(ui.mensajes.empty());

    // Without a level in the layout every line keeps the first one's 0.
    EstructuraDatosTxt sinNivel = Diseno();
    sinNivel.LongNivel = 0;
    s.DbEmpresa->ejecuta("DELETE FROM CuentasTmp.Cuentas");
    ImportaCatalogoFijo(s, *destino, Archivo("cat.txt", {Cta("100", "1", "a"), Cta("10001", "2", "b")}), sinNivel);
    EXPECT_EQ(Cuentas(), (std::vector<std::string>{"100|0|||0|a", "10001|0|||0|b"}));
}

TEST_F(LecturaFija, DireccionEImporteDeCadaLinea) {
    Catalogo();
    struct Caso {
        const char* nombre;
        bool indicador;
        std::vector<std::string> lineas;
        std::vector<std::string> movimientos;  // TipoMov|Importe of each line
    } casos[] = {
        {"indicadores", true,
         {Pol("1", "02/01/2024", "1000000", "1", "10"), Pol("1", "02/01/2024", "1000000", "2", "20"),
          Pol("1", "02/01/2024", "1000000", "H", "30")},
         {"D|100000", "H|200000", "H|300000"}},
        // A blank indicator is not empty: a credit of the amount read.
        {"indicador en blanco", true, {Pol("1", "02/01/2024", "1000000", " ", "40")}, {"H|400000"}},
        // A line that ends before the indicator has neither direction nor amount.
        {"linea corta sin indicador", true, {Pol("1", "02/01/2024", "1000000", "", "")}, {"|0"}},
        {"cargo y abono", false,
         {PolCargoAbono("1", "1000000", "100", "0"), PolCargoAbono("1", "1000000", "0", "50")},
         {"D|1000000", "H|500000"}},
        // Direction starts afresh on every line: zero on both sides has none.
        {"ceros en ambos lados", false,
         {PolCargoAbono("1", "1000000", "100", "0"), PolCargoAbono("1", "1000000", "0", "0"),
          PolCargoAbono("1", "1000000", "", "")},
         {"D|1000000", "|0", "|0"}},
        // Neither amount numeric: the amount of the line before, no direction.
        {"importe ilegible", false,
         {PolCargoAbono("1", "1000000", "100", "0"), PolCargoAbono("1", "1000000", "12-", "0")},
         {"D|1000000", "|1000000"}},
    };
    for (auto& c : casos) {
        s.DbEmpresa->ejecutaScript(
            "DELETE FROM Polizas_Tmp.Polizas_Tmp; DELETE FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp");
        destino = std::make_unique<DestinoTmp>(s, ReglasTextoFijo(&contador));
        ImportaPolizasFijo(s, *destino, Archivo("pol.txt", c.lineas), c.indicador ? Diseno() : DisenoCargoAbono());
        EXPECT_EQ(Movimientos(), c.movimientos) << c.nombre;
    }
    EXPECT_TRUE(ui.mensajes.empty());
    // The amount not read is not lost without a word: the log names it,
    // with the file and the line.
    Consulta log = s.DbEmpresa->consulta("SELECT Referencia FROM InconsisImpTmp.InconsisImpTmp");
    ASSERT_EQ(log.cuentaRegistros(), 1u);
    const std::string texto = log.campo(0).texto();
    EXPECT_NE(texto.find("El importe 12- del archivo"), std::string::npos) << texto;
    EXPECT_NE(texto.find("pol.txt, línea 2"), std::string::npos) << texto;
}

TEST_F(LecturaFija, ReferenciaConConceptoTipoCompletoYContadorPropio) {
    Catalogo();
    contador = 5;  // a form that already ran once
    ImportaPolizasFijo(s, *destino,
                       Archivo("ene.txt", {Pol("7", "31/01/2024", "1000000", "1", "10", "Pago|x", "F'1", "Tipo largo 14"),
                                           Pol("7", "31/01/2024", "1000100", "2", "10", "Otro", "", "Tipo largo 14"),
                                           Pol("", "31/01/2024", "1000100", "1", "5", "Sin numero"),
                                           Pol("8", "31/01/2024", "1000100", "1", "5", "Otra")}),
                       Diseno(), "Importando Pólizas del mes de: Enero");
    ImportaPolizasFijo(s, *destino,
                       Archivo("feb.txt", {Pol("7", "31/01/2024", "1000000", "2", "3", "Febrero", "", "Tipo largo 14")}),
                       Diseno());
    EXPECT_EQ(Filas("SELECT IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas_Tmp.Polizas_Tmp ORDER BY IdPoliza"),
              (std::vector<std::string>{"6|7|Tipo largo 14|2024-01-31|Pagox", "7|8|Dr|2024-01-31|Otra"}));
    EXPECT_EQ(Filas("SELECT IdPoliza, Partida, Cuenta, Referencia FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp "
                    "ORDER BY rowid"),
              (std::vector<std::string>{"6|1|100|F1 Pagox", "6|2|10001| Otro", "7|1|10001| Otra",
                                        "6|3|100| Febrero"}));
    EXPECT_EQ(contador, 7);

    // A second run of the same form goes on counting.
    NuevaLectura();
    Catalogo();
    ImportaPolizasFijo(s, *destino, Archivo("mar.txt", {Pol("1", "01/03/2024", "1000000", "1", "1")}), Diseno());
    EXPECT_EQ(Filas("SELECT IdPoliza FROM Polizas_Tmp.Polizas_Tmp"), std::vector<std::string>{"8"});

    // Without a reference in the layout the concept still goes with a blank.
    EstructuraDatosTxt sinReferencia = Diseno();
    sinReferencia.PIniRef = 0;
    ImportaPolizasFijo(s, *destino, Archivo("abr.txt", {Pol("2", "01/04/2024", "1000000", "1", "1", "Abril", "R")}),
                       sinReferencia);
    EXPECT_EQ(Filas("SELECT Referencia FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp WHERE IdPoliza = 9"),
              std::vector<std::string>{" Abril"});
    EXPECT_TRUE(ui.mensajes.empty());
}

// A date that cannot be converted, however it came to be, ends the reader
// with the file and line named and its rows rolled back.
TEST_F(LecturaFija, FechaIlegibleTerminaLaLectura) {
    Catalogo();
    const std::string buena = Pol("1", "02/01/2024", "1000000", "1", "10");
    struct Caso {
        const char* nombre;
        std::string linea;
    } casos[] = {
        {"fecha imposible", Pol("2", "32/13/2024", "1000000", "1", "10")},
        {"dia vacio", Pol("2", "  /01/2024", "1000000", "1", "10")},
        // Shorter than the date's place: an empty date, which the delimited
        // importer would skip silently.
        {"linea corta", "000002"},
        {"sin numero tampoco", Pol("", "02/13/2024", "1000000", "1", "10")},
    };
    for (auto& c : casos) {
        ui.mensajes.clear();
        std::string ruta = Archivo("malo.txt", {buena, "", c.linea});
        try {
            ImportaPolizasFijo(s, *destino, ruta, Diseno());
            ADD_FAILURE() << c.nombre << ": no falló";
        } catch (const ErrorLectura& e) {
            EXPECT_EQ(e.archivo(), ruta) << c.nombre;
            EXPECT_EQ(e.linea(), 3) << c.nombre;
        }
        ASSERT_EQ(ui.mensajes.size(), 2u) << c.nombre;
        EXPECT_EQ(ui.mensajes[0].texto.rfind("Error :  1 ", 0), 0u) << ui.mensajes[0].texto;
        EXPECT_NE(ui.mensajes[0].texto.find(ruta + ", línea 3"), std::string::npos) << ui.mensajes[0].texto;
        EXPECT_EQ(ui.mensajes[1].texto, "Error al leer la línea: " + c.linea + "\r") << c.nombre;
        EXPECT_TRUE(Movimientos().empty()) << c.nombre;
        EXPECT_TRUE(Filas("SELECT 1 FROM Polizas_Tmp.Polizas_Tmp").empty()) << c.nombre;
    }

    // A file that is not there is no quiet month.
    ui.mensajes.clear();
    EXPECT_THROW(ImportaPolizasFijo(s, *destino, carpeta.texto() + "no-esta.txt", Diseno()), ErrorLectura);
    EXPECT_EQ(ui.mensajes.back().texto, "No se pudo encontrar el archivo " + carpeta.texto() + "no-esta.txt\r");
}

TEST_F(LecturaFija, VistaPreviaEnSusPosiciones) {
    std::string ruta = Archivo("v.txt", {Cta("100", "1", "Compañía", "10"), "", "12"});
    auto lineas = LineasTextoFijo(ruta);
    ASSERT_EQ(lineas.size(), 2u);
    auto vista = VistaPreviaTextoFijo(lineas, CamposCatalogoFijo(Diseno()));
    EXPECT_EQ(vista.columnas, (std::vector<std::string>{"Línea", "Cuenta", "Descripción", "Cuenta Acumulativa",
                                                        "Nivel", "Naturaleza", "Saldo Inicial"}));
    EXPECT_EQ(vista.filas[0], (std::vector<std::string>{lineas[0], "100", "Compañía", "", "1", "", "10"}));
    EXPECT_EQ(vista.filas[1], (std::vector<std::string>{"12", "12", "", "", "", "", ""}));
    EXPECT_EQ(CamposPolizasFijo(DisenoCargoAbono()).size(), 10u);  // no indicator, no single amount
    EXPECT_EQ(ReglaPosiciones(12), "         1  \n123456789012");
    EXPECT_TRUE(LineasTextoFijo(carpeta.texto() + "no-esta.txt").empty());
}

}  // namespace
