#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "importers/Limpieza.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"
#include "platform/fuentes/FuenteTexto.h"
#include "platform/ErrorLectura.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/AlmacenesLectura.h"
#include "support/Entorno.h"

using namespace velmorant;
using velmorant::prueba::AjustesAislados;
using velmorant::prueba::CarpetaTemporal;
using velmorant::prueba::InteraccionGuionada;

namespace {

class ProgresoAnotado : public Progreso {
public:
    std::vector<std::string> etiquetas;
    long maximoVisto = -1;
    void etiqueta(const std::string& t) override { etiquetas.push_back(t); }
    void maximo(long n) override { maximoVisto = n; }
    void valor(long) override {}
    void visible(bool) override {}
};

class LecturaTexto : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    InteraccionGuionada ui;
    ProgresoAnotado progreso;
    Sesion s;

    void SetUp() override {
        AbreAlmacenesDeLectura(s, ui, carpeta, 2024);
        s.progreso = &progreso;
        destino = std::make_unique<DestinoTmp>(s, ReglasTextoDelimitado());
    }

    // The run's writer; a case that empties the stores starts a new one.
    std::unique_ptr<DestinoTmp> destino;
    DestinoTmp& Destino() { return *destino; }
    void VaciaPolizas() {
        s.DbEmpresa->ejecutaScript(
            "DELETE FROM Polizas_Tmp.Polizas_Tmp; DELETE FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp");
        destino = std::make_unique<DestinoTmp>(s, ReglasTextoDelimitado());
    }

    std::string Archivo(const std::string& nombre, const std::string& contenido) {
        std::string ruta = carpeta.texto() + nombre;
        std::ofstream(ruta, std::ios::binary) << contenido;
        return ruta;
    }

    // The predetermined delimited layout, with the voucher type in column 4.
    static LecturaDelimitada Lectura(bool titulos = false) {
        LecturaDelimitada l;
        l.separador = "|";
        l.Titulos = titulos;
        auto& c = l.config;
        c.PIniCuenta = 1, c.PIniNivel = 2, c.PIniDescripcion = 3, c.PIniSdoIni = 4;
        c.PIniNumPol = 1, c.PIniCtaPol = 2, c.PIniDia = 3, c.PIniTipo = 4, c.PIniConcept = 6;
        c.PIniTipoMov = 7, c.PIniImporte = 8, c.PIniRef = 9;
        c.PIniCtaSdoAnt = 1, c.PIniDescSdoAnt = 3, c.PIniSdoFinAnt = 7;
        return l;
    }

    std::vector<std::string> Filas(const std::string& sql) { return prueba::FilasComoTexto(*s.DbEmpresa, sql); }

    std::vector<std::string> Cuentas() {
        return Filas("SELECT Cuenta, Nivel, Descripcion, Saldo FROM CuentasTmp.Cuentas ORDER BY rowid");
    }
    std::vector<std::string> Partidas() {
        return Filas(
            "SELECT p.IdPoliza, p.Poliza, p.Tipo, p.Fecha, d.Partida, d.Cuenta, d.TipoMov, d.Importe FROM "
            "Polizas_Detalle_Tmp.Polizas_Detalle_Tmp d JOIN Polizas_Tmp.Polizas_Tmp p ON p.IdPoliza = d.IdPoliza "
            "ORDER BY d.rowid");
    }
    std::vector<std::string> Textos() const {
        std::vector<std::string> r;
        for (auto& m : ui.mensajes) r.push_back(m.texto);
        return r;
    }
};

TEST_F(LecturaTexto, CatalogoLineaPorLinea) {
    struct Caso {
        const char* nombre;
        bool titulos;
        const char* contenido;
        std::vector<std::string> cuentas;  // Cuenta|Nivel|Descripcion|Saldo (ten-thousandths)
    } casos[] = {
        {"titulos", true, "Cuenta|Nivel|Nombre|Saldo\r\n1000000|9|Caja|10\r\n\r\n1000100|0|Caja chica|-5\r\n",
         {"100|1|Caja|100000", "10001|2|Caja chica|-50000"}},
        {"titulos sobre linea en blanco", true, "\n1000000|1|Caja|1\n", {"100|1|Caja|10000"}},
        {"sin titulos", false, "2|3|Corto\n", {"002|3|Corto|0"}},
        {"linea corta", false, "2\n", {"002|0||0"}},
        {"separador y blancos", false, "100-01 -\t00|7|Bancos|1\n", {"10001|2|Bancos|10000"}},
        {"comillas y apostrofes", false, "\"1000000\"|\"1\"|\"Caja 'A'\"|\"1,234.5\"\n", {"100|1|Caja A|12345000"}},
        {"moneda antes del menos", false, "3|1|Signo|$-7.5\n", {"003|1|Signo|-75000"}},
        {"letras antes del menos", false, "3|1|Letras|MXN-7.5\n", {"003|1|Letras|-75000"}},
        {"menos al final", false, "3|1|Final|7.5-\n", {"003|1|Final|"}},
        {"cuenta vacia", false, " |1|Sin cuenta|5\n", {}},
    };
    for (auto& c : casos) {
        s.DbEmpresa->ejecuta("DELETE FROM CuentasTmp.Cuentas");
        ImportaCatalogoTexto(s, Destino(), Archivo("cat.txt", c.contenido), Lectura(c.titulos), false);
        EXPECT_EQ(Cuentas(), c.cuentas) << c.nombre;
    }
    EXPECT_TRUE(ui.mensajes.empty());

    // With a file of opening balances the catalogue's column is not read.
    s.DbEmpresa->ejecuta("DELETE FROM CuentasTmp.Cuentas");
    ImportaCatalogoTexto(s, Destino(), Archivo("cat.txt", "1000000|1|Caja|10\n"), Lectura(), true);
    EXPECT_EQ(Cuentas(), std::vector<std::string>{"100|1|Caja|"});
    EXPECT_EQ(progreso.maximoVisto, 1);

    ImportaCatalogoTexto(s, Destino(), carpeta.texto() + "no-esta.txt", Lectura(), false);
    EXPECT_EQ(Textos(), std::vector<std::string>{"No se pudo encontrar el archivo " + carpeta.texto() + "no-esta.txt\r"});
}

TEST_F(LecturaTexto, ImporteYDireccionDeCadaPartida) {
    ImportaCatalogoTexto(s, Destino(), Archivo("cat.txt", "1000000|1|Caja\n"), Lectura(), false);
    struct Caso {
        const char* nombre;
        bool indicador;
        const char* contenido;  // number|account|date|type|-|concept|indicator-or-debit|amount-or-credit
        std::vector<std::string> movimientos;  // TipoMov|Importe of each line in order
    } casos[] = {
        {"indicadores", true,
         "1|1000000|01/01/2024|D||c|1|10\n1|1000000|01/01/2024|D||c|2|20\n1|1000000|01/01/2024|D||c|H|30\n"
         "1|1000000|01/01/2024|D||c|A|40\n1|1000000|01/01/2024|D||c||50\n",
         {"D|100000", "H|200000", "H|300000", "H|400000", "|0"}},
        {"importe no numerico con indicador", true, "1|1000000|01/01/2024|D||c|1|abc\n", {"D|0"}},
        {"cargo y abono", false,
         "1|1000000|01/01/2024|D||c|100|0\n1|1000000|01/01/2024|D||c|0|50\n1|1000000|01/01/2024|D||c|0|0\n"
         "1|1000000|01/01/2024|D||c||\n",
         {"D|1000000", "H|500000", "H|0", "H|0"}},
        {"menos al final conserva lo anterior", false,
         "1|1000000|01/01/2024|D||c|$-30|0\n1|1000000|01/01/2024|D||c|12-|0\n1|1000000|01/01/2024|D||c|X-2|0\n",
         {"D|-300000", "D|-300000", "D|-20000"}},
    };
    for (auto& c : casos) {
        VaciaPolizas();
        LecturaDelimitada l = Lectura();
        if (!c.indicador) l.config.PIniTipoMov = 0, l.config.PIniImporte = 0, l.config.PIniCargo = 7, l.config.PIniAbono = 8;
        ImportaPolizasTexto(s, Destino(), Archivo("pol.txt", c.contenido), l);
        std::vector<std::string> movimientos;
        for (auto& f : Filas("SELECT TipoMov, Importe FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp ORDER BY rowid"))
            movimientos.push_back(f);
        EXPECT_EQ(movimientos, c.movimientos) << c.nombre;
    }
    EXPECT_TRUE(ui.mensajes.empty());
}

TEST_F(LecturaTexto, PolizasAgrupadasPorNumeroTipoYFechaEntreArchivos) {
    ImportaCatalogoTexto(s, Destino(), Archivo("cat.txt", "1000000|1|Caja\n1000100|2|Caja chica\n"), Lectura(), false);
    LecturaDelimitada l = Lectura(true);
    ImportaPolizasTexto(s, Destino(), Archivo("ene.txt",
                                   "Num|Cta|Fecha|Tipo|x|Concepto|Ind|Importe|Ref\n"
                                   "7|1000000|31/01/2024|Dr||Primera|1|10|r1\n"
                                   "8|1000100|31/01/2024|Dr||Otra|1|5|\n"
                                   "|1000000|31/01/2024|Dr||Sin numero|1|5|\n"
                                   "9|1000000||Dr||Sin fecha|1|5|\n"
                                   "7|1000100|31/01/2024|Dr||Se pierde|2|10|r'2\n"),
                        l);
    ImportaPolizasTexto(s, Destino(), Archivo("feb.txt",
                                   "Num|Cta|Fecha|Tipo|x|Concepto|Ind|Importe|Ref\n"
                                   "7|1000000|31/01/2024|Dr||Febrero|2|3|\n"
                                   "7|1000000|01/02/2024|Dr||Otra fecha|1|3|\n"
                                   "7|1000100|31/01/2024|DR||Sin distinguir mayúsculas|1|2|\n"),
                        l);
    EXPECT_EQ(Partidas(), (std::vector<std::string>{
                              "1|7|Dr|2024-01-31|1|100|D|100000", "2|8|Dr|2024-01-31|1|10001|D|50000",
                              "1|7|Dr|2024-01-31|2|10001|H|100000", "1|7|Dr|2024-01-31|3|100|H|30000",
                              "3|7|Dr|2024-02-01|1|100|D|30000", "1|7|Dr|2024-01-31|4|10001|D|20000"}));
    EXPECT_EQ(Filas("SELECT Concepto FROM Polizas_Tmp.Polizas_Tmp WHERE IdPoliza = 1"),
              std::vector<std::string>{"Primera"});
    EXPECT_EQ(Filas("SELECT Referencia FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp WHERE Partida = 2"),
              std::vector<std::string>{"r2"});
    EXPECT_EQ(Destino().polizasEscritas(), 3);
    EXPECT_EQ(Destino().partidasEscritas(), 6);
    EXPECT_TRUE(ui.mensajes.empty());

    // A date in day, month and year columns; a type longer than ten characters
    // is stored cut and so never found again.
    l.Titulos = false;
    l.config.PIniDia = 3, l.config.PIniMes = 10, l.config.PIniAnio = 11;
    ImportaPolizasTexto(s, Destino(), Archivo("mar.txt",
                                   "20|1000000|5|Tipo largo 12||c|1|1||3|2024\n20|1000000|5|Tipo largo 12||c|1|1||3|2024\n"
                                   "21|1000000|5|Dr||c|1|1||3|\n"),
                        l);
    EXPECT_EQ(Filas("SELECT IdPoliza, Tipo, Fecha FROM Polizas_Tmp.Polizas_Tmp WHERE Poliza = '20'"),
              (std::vector<std::string>{"4|Tipo largo|2024-03-05", "5|Tipo largo|2024-03-05"}));
    EXPECT_TRUE(Filas("SELECT 1 FROM Polizas_Tmp.Polizas_Tmp WHERE Poliza = '21'").empty());
}

TEST_F(LecturaTexto, CuentaDesconocidaSeRegistraUnaSolaVez) {
    ImportaCatalogoTexto(s, Destino(), Archivo("cat.txt", "1000000|1|Caja\n"), Lectura(), false);
    ImportaPolizasTexto(s, Destino(),
                        Archivo("pol.txt", "1|9990000|02/01/2024|Dr||c|1|100|\n2|999|03/01/2024|Dr||c|2|5|\n"
                                           "3|1000000|03/01/2024|Dr||c|2|5|\n"),
                        Lectura());
    EXPECT_EQ(Filas("SELECT Referencia, FuenteError, ClasifError, Poliza, Tipo, Fecha, Cuenta FROM "
                    "InconsisImpTmp.InconsisImpTmp"),
              std::vector<std::string>{"No se registró  el movimiento D ,$100.00 de la Póliza, ya que la Cuenta no "
                                       "existe.|Pólizas|O|1|Dr|2024-01-02|999"});
    EXPECT_EQ(Partidas().size(), 3u);  // the lines stay
}

TEST_F(LecturaTexto, SaldosInicialesConservanLasComillas) {
    ImportaCatalogoTexto(s, Destino(), Archivo("cat.txt", "1000000|1|Caja\n1000100|2|Chica\n1000200|2|Otra\n"), Lectura(), true);
    ImportaSaldosInicialesTexto(s, Destino(), Archivo("si.txt", "1000000||Caja|1,500.25\n100-02-00||Otra|\n5550000||Nada|x\n"),
                                Lectura());
    EXPECT_EQ(Cuentas(), (std::vector<std::string>{"100|1|Caja|15002500", "10001|2|Chica|", "10002|2|Otra|0"}));

    ImportaSaldosInicialesTexto(s, Destino(), Archivo("vacio.txt", ""), Lectura());
    EXPECT_EQ(Textos(), std::vector<std::string>{"El archivo de Saldos Iniciales está vacío.\r"});
}

TEST_F(LecturaTexto, SaldosDelAnioAnterior) {
    s.DbEmpresa->ejecuta("INSERT INTO Cuentas (Cuenta, Descripcion) VALUES ('100', 'Caja')");
    ImportaSaldosAnioAntTexto(s, Destino(), Archivo("saa.txt", "1000000||Caja'||||100\n2000000||Proveedores||||-50\n"),
                              Lectura());
    EXPECT_EQ(Filas("SELECT Cuenta, Nivel, Descripcion, SaldoFinAnioAnt FROM CuentasTmp.Cuentas"),
              (std::vector<std::string>{"100|1|Caja|1000000", "200|1|Proveedores|-500000"}));
    EXPECT_EQ(Filas("SELECT Referencia, ClasifError, Cuenta FROM InconsisImpTmp.InconsisImpTmp"),
              std::vector<std::string>{"La Cuenta 100 no existe, contiene el saldo final del año anterior y será "
                                       "agregará al catalogo actual|O|100"});
    EXPECT_EQ(progreso.etiquetas.back(), "Verificando Saldos Finales año anterior ...");
    ImportaSaldosAnioAntTexto(s, Destino(), Archivo("vacio.txt", ""), Lectura());
    EXPECT_EQ(Textos().back(), "El archivo está vacío: " + carpeta.texto() + "vacio.txt\r");
}

// A file that cannot be read ends the reader with the file and line named,
// the reader's rows rolled back, and nothing of the company database changed.
TEST_F(LecturaTexto, ArchivoMalFormadoNoDejaNadaEscrito) {
    ImportaCatalogoTexto(s, Destino(), Archivo("cat.txt", "1000000|1|Caja\n"), Lectura(), true);
    struct Caso {
        const char* nombre;
        int lector;  // 0 vouchers, 1 opening balances, 2 prior year
        const char* contenido;
        long linea;
        std::string mensaje;  // the last message shown
    } casos[] = {
        {"fecha indescifrable", 0, "1|1000000|01/01/2024|Dr||c|1|10|\n\n2|1000000|32/13/2024|Dr||c|1|10|\n", 3,
         "Error al leer la línea: 2|1000000|32/13/2024|Dr||c|1|10|\r"},
        {"importe fuera de rango", 0, "1|1000000|01/01/2024|Dr||c|1|99999999999999999999|\n", 1,
         "Error al leer la línea: 1|1000000|01/01/2024|Dr||c|1|99999999999999999999|\r"},
        {"saldo entre comillas", 1, "1000000||Caja|\"100\"\n", 1, ""},
        {"columnas de menos", 2, "1000000||Caja\n", 1, ""},
    };
    for (auto& c : casos) {
        ui.mensajes.clear();
        auto antes = Partidas();
        auto cuentasAntes = Cuentas();
        std::string ruta = Archivo("malo.txt", c.contenido);
        LecturaDelimitada l = Lectura();
        try {
            if (c.lector == 0) ImportaPolizasTexto(s, Destino(), ruta, l);
            if (c.lector == 1) ImportaSaldosInicialesTexto(s, Destino(), ruta, l);
            if (c.lector == 2) ImportaSaldosAnioAntTexto(s, Destino(), ruta, l);
            ADD_FAILURE() << c.nombre << ": no falló";
        } catch (const ErrorLectura& e) {
            EXPECT_EQ(e.archivo(), ruta) << c.nombre;
            EXPECT_EQ(e.linea(), c.linea) << c.nombre;
        }
        ASSERT_FALSE(ui.mensajes.empty()) << c.nombre;
        if (!c.mensaje.empty()) {
            ASSERT_EQ(ui.mensajes.size(), 2u);
            EXPECT_EQ(ui.mensajes[0].texto.rfind("Error :  1 ", 0), 0u) << ui.mensajes[0].texto;
            EXPECT_NE(ui.mensajes[0].texto.find("línea " + std::to_string(c.linea)), std::string::npos);
            EXPECT_EQ(ui.mensajes[1].texto, c.mensaje) << c.nombre;
        } else {
            EXPECT_NE(ui.mensajes[0].texto.find(ruta + ", línea " + std::to_string(c.linea)), std::string::npos)
                << ui.mensajes[0].texto;
        }
        EXPECT_EQ(Partidas(), antes) << c.nombre;
        EXPECT_EQ(Cuentas(), cuentasAntes) << c.nombre;
        EXPECT_TRUE(Filas("SELECT 1 FROM main.Cuentas").empty());
        EXPECT_TRUE(Filas("SELECT 1 FROM main.Polizas").empty());
    }
}

TEST_F(LecturaTexto, VistaPreviaYArchivoSinDelimitador) {
    auto vista = VistaPreviaTexto(s, Archivo("v.txt", "a|b|c\n\nd|e|f\ng|h\n"), "|");
    EXPECT_EQ(vista.columnas, (std::vector<std::string>{"Columna 1", "Columna 2", "Columna 3"}));
    EXPECT_EQ(vista.filas, (std::vector<std::vector<std::string>>{{"a", "b", "c"}, {"d", "e", "f"}, {}}));
    std::string ruta = Archivo("sin.txt", "a|b\n\nuna linea sin separador\n");
    try {
        VistaPreviaTexto(s, ruta, "|");
        ADD_FAILURE() << "no falló";
    } catch (const ErrorLectura& e) {
        EXPECT_EQ(e.linea(), 3);
        EXPECT_EQ(e.archivo(), ruta);
    }
    EXPECT_EQ(Textos(), std::vector<std::string>{"El archivo " + ruta +
                                                 " no se encuentra delimitado por el caracter que indico.\r"});
}

TEST_F(LecturaTexto, DivisionYCampos) {
    struct Caso {
        const char* linea;
        const char* separador;
        std::vector<std::string> partes;
    } casos[] = {
        {"a|b||c", "|", {"a", "b", "", "c"}},
        {"aXyb xyc", "xy", {"a", "b ", "c"}},  // compared without case
        {"a<>b<>", "<>", {"a", "b", ""}},
        {"sin", "|", {"sin"}},
        {"", "|", {}},
        {"a\tb", "\t", {"a", "b"}},
    };
    for (auto& c : casos) EXPECT_EQ(DivideLinea(c.linea, c.separador), c.partes) << c.linea;

    // One row filled again for each line: a narrower line keeps no cell of
    // the wider one before it, and the quotes go before the split.
    for (const char* separador : {"|", "Xy"}) {
        std::string sep = separador, sepOtro = sep == "|" ? "|" : "xY";
        std::string ruta = Archivo("filas.txt", "a" + sep + "b" + sepOtro + "c\n\"x\"" + sep + "y\n\"\"\nsolo\n");
        FuenteTextoDelimitado fuente(ruta, sep, true);
        EXPECT_EQ(fuente.totalEstimado(), 4);
        std::vector<std::vector<std::string>> leidas;
        Fila f;
        while (fuente.siguiente(f)) {
            leidas.emplace_back();
            for (auto& celda : f.celdas) leidas.back().push_back(celda.comoTexto());
        }
        EXPECT_EQ(leidas, (std::vector<std::vector<std::string>>{{"a", "b", "c"}, {"x", "y"}, {}, {"solo"}}))
            << separador;
    }

    Fila fila;
    fila.celdas = {Celda::texto(" a "), Celda::texto("b")};
    EXPECT_EQ(fila.campo(1), "a");
    EXPECT_EQ(fila.campo(0), "");
    EXPECT_EQ(fila.campo(3), "");
    EXPECT_EQ(LimpiaImporte("", "0.00"), "0.00");
    EXPECT_EQ(LimpiaImporte("MXN-5", "0"), "-5");
    EXPECT_EQ(LimpiaImporte("5-", "0"), "-");
    EXPECT_EQ(LimpiaImporte("$-5", "0"), "$-5");
}

}  // namespace

// A voucher the writer could not store leaves no trace of itself: the same
// voucher asked again is written then, and its lines, given out of order
// with another's, keep their own numbering.
TEST_F(LecturaTexto, PolizaQueNoSePudoEscribirNoQuedaComoEscrita) {
    PolizaLeida a;
    a.Poliza = "7", a.Tipo = "Dr", a.Fecha = Fecha(2024, 1, 5), a.Concepto = "Caja 'chica'";
    PolizaLeida b = a;
    b.Poliza = "8";
    BaseDatos* detalle = s.DbPolizasDetalleTmp;
    s.DbPolizasDetalleTmp = nullptr;
    EXPECT_THROW(Destino().poliza(a), std::logic_error);
    s.DbPolizasDetalleTmp = detalle;
    PartidaLeida l;
    l.Cuenta = "1000000", l.TipoMov = "D", l.Importe = Moneda::desdeEntero(1), l.Referencia = "r|1";
    long idA = Destino().poliza(a);
    Destino().agregaPartida(idA, l);
    long idB = Destino().poliza(b);
    Destino().agregaPartida(idB, l);
    EXPECT_EQ(Destino().poliza(a), idA);
    Destino().agregaPartida(idA, l);
    EXPECT_NE(idA, idB);
    EXPECT_EQ(Filas("SELECT Poliza, Concepto FROM Polizas_Tmp.Polizas_Tmp ORDER BY rowid"),
              (std::vector<std::string>{"7|Caja chica", "8|Caja chica"}));
    EXPECT_EQ(Filas("SELECT IdPoliza = " + std::to_string(idA) +
                    ", Partida, Referencia FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp ORDER BY rowid"),
              (std::vector<std::string>{"1|1|r1", "0|1|r1", "1|2|r1"}));
}

// Ids from a counter of the importer's own need not follow one another: each
// voucher still keeps its own line numbers and is found again by identity.
TEST_F(LecturaTexto, PolizasConIdsQueNoSeSiguenConservanSusPartidas) {
    long contador = 40;
    ReglasDestino reglas = ReglasTextoDelimitado();
    reglas.contadorIdPoliza = &contador;
    DestinoTmp d(s, reglas);
    auto cabeza = [](const char* numero) {
        PolizaLeida p;
        p.Poliza = numero, p.Tipo = "Dr", p.Fecha = Fecha(2024, 1, 5);
        return p;
    };
    PartidaLeida linea;
    linea.Cuenta = "1000000", linea.TipoMov = "D", linea.Importe = Moneda::desdeEntero(1);
    const long a = d.poliza(cabeza("1"));
    contador = 10;
    const long b = d.poliza(cabeza("2"));
    contador = 90;
    const long c = d.nuevaPoliza(cabeza("3"));
    EXPECT_EQ(std::vector<long>({a, b, c}), std::vector<long>({41, 11, 91}));
    for (long id : {a, b, c, b, a}) d.agregaPartida(id, linea);
    EXPECT_EQ(Filas("SELECT IdPoliza || ':' || Partida FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp ORDER BY rowid"),
              (std::vector<std::string>{"41:1", "11:1", "91:1", "11:2", "41:2"}));
    EXPECT_EQ(d.polizasEscritas(), 3);
    EXPECT_EQ(d.poliza(cabeza("2")), 11);
    EXPECT_THROW(d.agregaPartida(12, linea), std::logic_error);
}
