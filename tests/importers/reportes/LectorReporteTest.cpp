// The report engine on the shipped descriptions and on small descriptions
// written here: each shipped description reads its synthetic sample (page
// breaks with repeated heads, titles, rules and totals) into the same
// vouchers as the clean delimited file of the same data.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "importers/reportes/ImportadorReporte.h"
#include "importers/reportes/LectorReporte.h"
#include "importers/reportes/PruebaReporte.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"
#include "platform/ErrorLectura.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/AlmacenesLectura.h"
#include "support/Entorno.h"

using namespace velmorant;
namespace fs = std::filesystem;

namespace {

const fs::path kDescripciones = fs::path(VELMORANT_FUENTES) / "data" / "reportes";
const fs::path kMuestras = fs::path(VELMORANT_FUENTES) / "tests" / "data" / "reportes";

class Reportes : public ::testing::Test {
protected:
    prueba::AjustesAislados ajustes;
    prueba::CarpetaTemporal carpeta;
    prueba::InteraccionGuionada ui;
    Sesion s;

    void SetUp() override {
        prueba::AbreAlmacenesDeLectura(s, ui, carpeta, 2024);
    }

    // The layout of the samples' delimited files.
    static LecturaDelimitada Lectura() {
        LecturaDelimitada l;
        l.separador = "|";
        auto& c = l.config;
        c.PIniCuenta = 1, c.PIniDescripcion = 2, c.PIniNaturaleza = 3, c.PIniNivel = 4, c.PIniSdoIni = 5;
        c.PIniNumPol = 1, c.PIniCtaPol = 2, c.PIniDia = 3, c.PIniTipo = 4, c.PIniConcept = 5, c.PIniRef = 6;
        c.PIniCargo = 7, c.PIniAbono = 8;
        return l;
    }

    std::vector<std::string> Filas(const std::string& sql) { return prueba::FilasComoTexto(*s.DbEmpresa, sql); }
    // Every voucher with its lines, as the stores hold them.
    std::vector<std::string> Polizas() {
        return Filas(
            "SELECT p.IdPoliza, p.Poliza, p.Tipo, p.Fecha, p.Concepto, p.Poliza_Mes13, d.Partida, d.Cuenta, "
            "d.TipoMov, d.Importe, d.Referencia FROM Polizas_Tmp.Polizas_Tmp p LEFT JOIN "
            "Polizas_Detalle_Tmp.Polizas_Detalle_Tmp d ON p.IdPoliza = d.IdPoliza ORDER BY p.IdPoliza, d.Partida");
    }
    std::vector<std::string> Bitacora() {
        return Filas("SELECT Referencia, Poliza, Cuenta FROM InconsisImpTmp ORDER BY rowid");
    }
    void Vacia() {
        s.DbEmpresa->ejecutaScript(
            "DELETE FROM Polizas_Tmp.Polizas_Tmp; DELETE FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp; "
            "DELETE FROM InconsisImpTmp");
    }
    std::string Archivo(const std::string& nombre, const std::string& contenido) {
        std::string ruta = carpeta.texto() + nombre;
        std::ofstream(ruta, std::ios::binary) << contenido;
        return ruta;
    }
    // Reads `reporte` with the description written in `toml` (as month `mes`).
    std::vector<std::string> Lee(const std::string& toml, const std::string& reporte, int mes = 1) {
        Vacia();
        DescripcionReporte d = CargaDescripcionDeTexto(toml, "prueba.toml");
        DestinoTmp destino(s, ImportadorReporte(d, Lectura()).reglasDestino());
        ImportaPolizasReporte(s, destino, d, mes, Archivo("reporte.txt", reporte));
        return Polizas();
    }
};

TEST_F(Reportes, CadaDescripcionInstaladaLeeSuMuestraComoElArchivoDelimitado) {
    DestinoTmp catalogo(s, ReglasTextoDelimitado());
    ImportaCatalogoTexto(s, catalogo, (kMuestras / "catalogo.txt").string(), Lectura(), false);
    auto cargadas = CargaDescripciones(kDescripciones.string());
    ASSERT_TRUE(cargadas.errores.empty()) << cargadas.errores.front();
    ASSERT_GE(cargadas.porEnlace.size(), 2u);
    for (const auto& [enlace, d] : cargadas.porEnlace) {
        const std::string base = fs::path(d.ruta).stem().string() + "_ene";
        const fs::path reporte = kMuestras / (base + ".txt"), delimitado = kMuestras / (base + ".polizas.txt");
        ASSERT_TRUE(fs::exists(reporte) && fs::exists(delimitado)) << "falta la muestra de " << d.ruta;
        // The sample has page breaks: a voucher's head comes again on the next page.
        std::ifstream f(reporte, std::ios::binary);
        std::string texto((std::istreambuf_iterator<char>(f)), {});
        EXPECT_GE(std::count(texto.begin(), texto.end(), '\f'), 2) << base;

        Vacia();
        {
            DestinoTmp destino(s, ReglasTextoDelimitado());
            LecturaDelimitada l = Lectura();
            ImportaPolizasTexto(s, destino, delimitado.string(), l);
        }
        auto esperadas = Polizas();
        Vacia();
        {
            DestinoTmp destino(s, ImportadorReporte(d, Lectura()).reglasDestino());
            ImportaPolizasReporte(s, destino, d, 1, reporte.string());
        }
        EXPECT_EQ(Polizas(), esperadas) << base;
        EXPECT_GE(esperadas.size(), 10u) << base;
    }
    EXPECT_TRUE(ui.mensajes.empty());
}

TEST_F(Reportes, CuentaInexistenteYPartidaDudosaEnElRegistro) {
    DestinoTmp catalogo(s, ReglasTextoDelimitado());
    ImportaCatalogoTexto(s, catalogo, (kMuestras / "catalogo.txt").string(), Lectura(), false);
    DescripcionReporte arpon = CargaDescripcion((kDescripciones / "098_arpon.toml").string());
    DestinoTmp destino(s, ImportadorReporte(arpon, Lectura()).reglasDestino());
    ImportaPolizasReporte(s, destino, arpon, 1, (kMuestras / "098_arpon_ene.txt").string());
    EXPECT_EQ(Bitacora(), (std::vector<std::string>{
                              "La cuenta 6990101 no existe en el catálogo|00002|6990101",
                              "La partida de la póliza: 00002 , con Fecha: 20/01/2024 No se leyó de forma correcta. "
                              "Cuenta: 101-99-XX|00002|101-99-XX"}));

    // Link 76 drops what it cannot read without a word.
    Vacia();
    DescripcionReporte pasc = CargaDescripcion((kDescripciones / "076_pasc.toml").string());
    DestinoTmp otro(s, ImportadorReporte(pasc, Lectura()).reglasDestino());
    ImportaPolizasReporte(s, otro, pasc, 1, (kMuestras / "076_pasc_ene.txt").string());
    EXPECT_EQ(Bitacora(), std::vector<std::string>{"La cuenta 6990101 no existe en el catálogo|002|6990101"});
}

const char* kGrupoCE = R"(
enlace = 76
[[linea]]
clase = "encabezado"
cuando = [ { en = 3, texto = "POLIZA NUMERO" } ]
tipo = { en = 19, largo = 2 }
numero = { en = 21, largo = 3 }
fecha = { en = 44, largo = 11 }
concepto_siguiente = { en = 19, largo = 80 }
[[linea]]
clase = "partida"
cuenta = { en = 1, largo = 16 }
referencia = { en = 44, largo = 55 }
debe = { en = 100, largo = 14 }
haber = { en = 116, largo = 17 }
)";

// A line of the fixed layout above: account at 1, reference at 44, debit at 100, credit at 116.
std::string Renglon(const std::string& cuenta, const std::string& debe, const std::string& haber,
                    const std::string& ref = "r") {
    std::string l = cuenta;
    l.resize(43, ' ');
    l += ref;
    l.resize(99, ' ');
    l += debe;
    l.resize(115, ' ');
    return l + haber + "\n";
}

TEST_F(Reportes, PosicionesFijasDelEncabezadoYElConceptoEnLaLineaSiguiente) {
    const std::string cabeza = "  POLIZA NUMERO   Dr001                    31/12/2024\n";
    // The head counts only at position 3; the concept line may look like anything.
    const std::string concepto(18, ' ');
    auto r = Lee(kGrupoCE, cabeza + concepto + "1010101 concepto que parece cuenta\n" + Renglon("1010101", "10.00", "") +
                               "   POLIZA NUMERO  Dr002                    31/12/2024\n" + Renglon("1010101", "", "5.00") +
                               "  POLIZA NUMERO   Dr001                    31/12/2024\nPagina 2\n" +
                               Renglon("101-01-01", "x", "7.00") + Renglon("1010101", "abc", "xyz") +
                               Renglon("1019X", "1.00", ""));
    EXPECT_EQ(r, (std::vector<std::string>{
                     "1|001|Dr|2024-12-31|1010101 concepto que parece cuenta|0|1|1010101|D|100000|r",
                     "1|001|Dr|2024-12-31|1010101 concepto que parece cuenta|0|2|1010101|H|50000|r",
                     "1|001|Dr|2024-12-31|1010101 concepto que parece cuenta|0|3|1010101|H|70000|r"}));

    // The key is the last voucher's: the same head after another makes a new voucher.
    r = Lee(kGrupoCE, cabeza + concepto + "uno\n" + Renglon("101", "1", "") +
                          "  POLIZA NUMERO   Dr002                    31/12/2024\n" + concepto + "dos\n" +
                          Renglon("101", "2", "") + cabeza + concepto + "tres\n" + Renglon("101", "3", ""));
    EXPECT_EQ(r, (std::vector<std::string>{"1|001|Dr|2024-12-31|uno|0|1|101|D|10000|r",
                                           "2|002|Dr|2024-12-31|dos|0|1|101|D|20000|r",
                                           "3|001|Dr|2024-12-31|tres|0|1|101|D|30000|r"}));
}

TEST_F(Reportes, UnaFechaIlegibleDetieneLaLecturaConArchivoYLinea) {
    EXPECT_EQ(LeeFechaReporte("31/ENE/2024"), Fecha(2024, 1, 31));
    EXPECT_EQ(LeeFechaReporte("5-Mzo-2024"), Fecha(2024, 3, 5));
    EXPECT_EQ(LeeFechaReporte("01 DICIEMBRE 2024"), Fecha(2024, 12, 1));
    EXPECT_EQ(LeeFechaReporte("31/02/2024"), std::nullopt);
    EXPECT_EQ(LeeFechaReporte("30/FOO/2024"), std::nullopt);
    try {
        Lee(kGrupoCE, "titulo\n  POLIZA NUMERO   Dr001                    32/ENE/2024\n");
        FAIL() << "se esperaba ErrorLectura";
    } catch (const ErrorLectura& e) {
        EXPECT_EQ(e.linea(), 2);
        EXPECT_EQ(e.archivo(), carpeta.texto() + "reporte.txt");
    }
    EXPECT_EQ(Polizas(), std::vector<std::string>{});  // the reader's rows rolled back
}

// The method of a report whose columns move between versions: positions
// learnt from its heading, a voucher found again among those read, skipped
// lines, and amounts read right-aligned under their heading.
const char* kColumnasAprendidas = R"(
enlace = 900
[polizas]
agrupa = "busca"
mes13 = true
[[linea]]
clase = "titulos"
cuando = [ { sin_aprender = ["Debe", "Haber"] }, { en = 1, largo = 14, texto = "No. de cuenta" } ]
aprende = { Debe = "Debe", Haber = "Haber" }
[[linea]]
clase = "titulos"
cuando = [ { no = { contiene = "Total de la pó" } }, { contiene = ["Nzmero", "Número", "N?mero"] } ]
aprende = { Numero = ["Nzmero", "Número", "N?mero"], Tipo = "Tipo" }
[[linea]]
clase = "encabezado"
cuando = [ { en = 1, largo = 7, texto = "Póliza" } ]
tipo = { columna = "Tipo", largo = 2 }
numero = { columna = "Numero", largo = 6 }
fecha = { en = 35, largo = 11 }
concepto = { en = 57 }
[[linea]]
clase = "continuacion"
cuando = [ { empieza = "CONTINUA EN EL FOLIO" } ]
[[linea]]
clase = "regla"
cuando = [ { empieza = ["-------", "Total de la póliza"] } ]
[[linea]]
clase = "partida"
cuando = [ { aprendidas = ["Debe", "Haber"] } ]
cuenta = { en = 1, largo = "formato" }
debe = { columna = "Debe", alineado = true }
haber = { decimal = [-6, 8], columna = "Haber" }
)";

TEST_F(Reportes, PosicionesAprendidasDelTituloYPolizaBuscadaEntreLasLeidas) {
    //                          1         2         3         4         5         6
    //                 123456789012345678901234567890123456789012345678901234567890
    const std::string titulos =
        "No. de cuenta          Debe         Haber\n"
        "Póliza Tipo Número\n";
    const std::string cabeza = "Póliza Dr   000001                01/MAR/2024           Compra de equipo\n";
    auto r = Lee(kColumnasAprendidas,
                 "Línea antes de los títulos 1010101 99.00\n" + titulos + cabeza +
                     "101-01-01          1,250.00\n"
                     "201-01-01                    500.50\n"
                     "CONTINUA EN EL FOLIO 2\n" + titulos + cabeza +
                     "201-01-01                    749.50\n"
                     "------------------------------------------\n"
                     "Total de la póliza     1,250.00      1,250.00\n");
    EXPECT_EQ(r, (std::vector<std::string>{"1|000001|Dr|2024-03-01|Compra de equipo|0|1|1010101|D|12500000|",
                                           "1|000001|Dr|2024-03-01|Compra de equipo|0|2|2010101|H|5005000|",
                                           "1|000001|Dr|2024-03-01|Compra de equipo|0|3|2010101|H|7495000|"}));

    // The spelling "N?mero" of another version is read as "Número"; month 13 dates every voucher 31/12.
    r = Lee(kColumnasAprendidas,
            "No. de cuenta     Debe     Haber\nPóliza Tipo    N?mero\n"
            "Póliza Cr      000007             xx/xx/xxxx            Cierre\n"
            "101-01-01       10.00\n",
            13);
    EXPECT_EQ(r, std::vector<std::string>{"1|000007|Cr|2024-12-31|Cierre|-1|1|1010101|D|100000|"});
}

TEST_F(Reportes, LaPruebaDiceLaClaseDeCadaLineaYLasPolizasSinTocarAlmacenes) {
    DescripcionReporte d = CargaDescripcion((kDescripciones / "098_arpon.toml").string());
    PruebaReporte p = PruebaDescripcion(s, d, (kMuestras / "098_arpon_ene.txt").string());
    ASSERT_EQ(p.polizas.size(), 3u);
    EXPECT_EQ(p.polizas[1].cabeza.Tipo, "Egresos");
    EXPECT_EQ(p.polizas[1].partidas.size(), 7u);
    EXPECT_EQ(p.dudosas.size(), 1u);
    EXPECT_EQ(p.lineas[4].clase, "encabezado");
    EXPECT_EQ(p.lineas[3].clase, "regla");
    std::string texto = TextoPrueba(p);
    EXPECT_NE(texto.find("Pólizas: 3"), std::string::npos);
    EXPECT_NE(texto.find("cargos $9,630.50, abonos $9,630.50"), std::string::npos) << texto;
    EXPECT_EQ(Polizas(), std::vector<std::string>{});
}

}  // namespace
