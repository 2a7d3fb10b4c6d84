#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Texto.h"
#include "pipeline/Comparacion.h"
#include "platform/BaseDatos.h"
#include "session/Sesion.h"
#include "store/AlmacenesTemporales.h"
#include "store/DefinicionTablas.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

// ------------------------------------------------------------ Data sets

struct L {
    int partida;
    const char* cuenta;
    const char* tipoMov;
    const char* importe;
    const char* referencia;
};

struct P {
    const char* poliza;
    const char* tipo;
    const char* fecha;
    const char* concepto;
    bool mes13;
    std::vector<L> lineas;
};

/// One expected row of the log: text, class, voucher, account.
struct Fila {
    std::string referencia, clasif, poliza, tipo, fecha, cuenta;
    bool operator==(const Fila&) const = default;
};

std::ostream& operator<<(std::ostream& o, const Fila& f) {
    return o << "{\"" << f.referencia << "\", " << f.clasif << ", " << f.poliza << ", " << f.tipo << ", " << f.fecha
             << ", \"" << f.cuenta << "\"}";
}

const char* const kCabecera = "La Póliza cambió en :";

// A few vouchers used by several cases.
const P kP1 = {"1", "Dr", "2023-01-10", "Compra de papeleria", false,
               {{1, "1101", "D", "100", "Factura 10"}, {2, "2101", "H", "100", "Proveedor"}}};
const P kP2 = {"2", "Ig", "2023-01-15", "Cobro", false,
               {{1, "1102", "D", "50.5", "Deposito"}, {2, "4101", "H", "50.5", "Venta"}}};
const P kFeb = {"7", "Dr", "2023-02-03", "Renta", false,
                {{1, "6101", "D", "20", "Renta"}, {2, "1102", "H", "20", "Pago"}}};

class Empresa {
public:
    Empresa() {
        s_.RutaEmpresa = carpeta_.texto();
        s_.DbEmpresa = std::make_unique<BaseDatos>(RutaBaseDatos(carpeta_.texto(), "EMPRESA"), BaseDatos::Modo::Crear);
        CreaEsquemaEmpresa(*s_.DbEmpresa);
        CreaPolizasTmp(s_);
        CreaPolizasDetalleTmp(s_);
        CreaInconsisImpTmp(s_);
        EXPECT_TRUE(AbrePolizasTmp(s_));
        EXPECT_TRUE(AbreInconsistencias(s_));
    }
    Sesion& sesion() { return s_; }
    BaseDatos& db() { return *s_.DbEmpresa; }

    void guarda(const std::vector<P>& polizas, bool enTmp) {
        const std::string encabezados = enTmp ? "Polizas_Tmp" : "Polizas";
        const std::string detalle = enTmp ? "Polizas_Detalle_Tmp" : "Polizas_Detalle";
        Transaccion t(db());
        int id = 0;
        for (auto& p : polizas) {
            ++id;
            db().ejecuta("INSERT INTO " + encabezados +
                             " (IdPoliza, Poliza, Tipo, Fecha, Concepto, Poliza_Deshabilitada, Cuadrada, Poliza_Mes13, "
                             "Poliza_Ajuste) VALUES (?, ?, ?, ?, ?, 0, -1, ?, 0)",
                         id, p.poliza, p.tipo, p.fecha, p.concepto, p.mes13);
            if (enTmp) db().ejecuta("UPDATE Polizas_Tmp SET Revisado=0 WHERE IdPoliza=?", id);
            for (auto& l : p.lineas)
                db().ejecuta("INSERT INTO " + detalle +
                                 " (IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida) VALUES (?, ?, ?, ?, ?, ?)",
                             id, l.cuenta, l.tipoMov, *Moneda::desdeTexto(l.importe), l.referencia, l.partida);
        }
        t.confirma();
    }

    void comparaMeses(const std::vector<std::string>& meses) {
        for (auto& mes : meses) {
            ComparaPolizas(s_, mes);
            ComparaPolizasNuevas(s_, mes);
            ComparaPartidasNuevas(s_, mes);
        }
    }

    std::vector<Fila> bitacora() {
        std::vector<Fila> r;
        Consulta c = db().consulta(
            "SELECT Referencia, ClasifError, Poliza, Tipo, Fecha, Cuenta, FuenteError FROM InconsisImpTmp ORDER BY rowid");
        for (c.primero(); !c.eof(); c.siguiente()) {
            EXPECT_EQ(c["FuenteError"].texto(), "Pólizas");
            r.push_back({c["Referencia"].texto(), c["ClasifError"].texto(), c["Poliza"].texto(), c["Tipo"].texto(),
                         c["Fecha"].texto(), c["Cuenta"].texto()});
        }
        return r;
    }

    /// `Revisado` of each new voucher, in IdPoliza order, as "S"/"N".
    std::string revisadas() {
        std::string r;
        Consulta c = db().consulta("SELECT Revisado FROM Polizas_Tmp ORDER BY IdPoliza");
        for (c.primero(); !c.eof(); c.siguiente()) r += c["Revisado"].booleano() ? "S" : "N";
        return r;
    }

private:
    prueba::CarpetaTemporal carpeta_;
    Sesion s_;
};

/// A copy of a voucher with some change applied.
template <class F>
P Con(P p, F cambio) {
    cambio(p);
    return p;
}

struct Caso {
    const char* nombre;
    std::vector<P> antes;
    std::vector<P> despues;
    std::vector<std::string> meses;
    std::vector<Fila> esperado;
    const char* revisadas;
};

void Verifica(const Caso& c) {
    SCOPED_TRACE(c.nombre);
    Empresa e;
    e.guarda(c.antes, false);
    e.guarda(c.despues, true);
    e.comparaMeses(c.meses);
    EXPECT_EQ(e.bitacora(), c.esperado);
    EXPECT_EQ(e.revisadas(), c.revisadas);
}

}  // namespace

TEST(Comparacion, PolizasDadasDeBajaYNuevasPorMes) {
    const P movida = Con(kP2, [](P& p) { p.fecha = "2023-02-01"; });
    const P cierre = {"99", "Dr", "2023-12-31", "Cierre", true, {{1, "3101", "D", "5", "Cierre"}}};
    const P diciembre = {"50", "Eg", "2023-12-15", "Pago", false, {{1, "2101", "D", "5", "Pago"}}};
    const Caso casos[] = {
        {"primera importacion", {}, {kP1, kP2, kFeb}, {"01", "02"}, {}, "NNN"},
        {"datos identicos", {kP1, kP2, kFeb, cierre}, {kP1, kP2, kFeb, cierre}, {"01", "02", "13"}, {}, "SSSS"},
        {"fecha movida en un mes normal: baja y nueva",
         {kP1, kP2, kFeb},
         {kP1, movida, kFeb},
         {"01", "02"},
         {{"La Póliza se dio de baja.", "B", "2", "Ig", "2023-01-15", ""},
          {"Póliza nueva.", "A", "2", "Ig", "2023-02-01", ""}},
         "SNS"},
        {"un mes que la empresa no tenia no da polizas nuevas",
         {kP1},
         {kP1, kFeb},
         {"01", "02"},
         {},
         "SN"},
        {"fecha movida en el mes 13: cambia en su lugar",
         {cierre},
         {Con(cierre, [](P& p) { p.fecha = "2023-12-30"; })},
         {"13"},
         {{kCabecera, "C", "99", "Dr", "2023-12-31", ""},
          {"Fecha, Anterior -> 31/12/2023 Nueva -> 30/12/2023.", "C", "99", "Dr", "2023-12-31", ""}},
         "S"},
        // December's turn leaves the closing vouchers to the turn of "13",
        // which pairs them: none is new.
        {"las de cierre no se ven nuevas en el paso de diciembre",
         {diciembre, cierre},
         {diciembre, cierre},
         {"12", "13"},
         {},
         "SS"},
        // Same number, type and date in December and in month 13: each pairs
        // with its own kind, whichever comes first in the table.
        {"numero repetido en diciembre y en el cierre",
         {Con(cierre, [](P& p) { p.poliza = "50"; p.tipo = "Eg"; p.fecha = "2023-12-15"; }), diciembre},
         {Con(cierre, [](P& p) { p.poliza = "50"; p.tipo = "Eg"; p.fecha = "2023-12-15"; }), diciembre},
         {"12", "13"},
         {},
         "SS"},
        {"poliza desaparecida y poliza agregada en el mismo mes",
         {kP1, kP2},
         {kP1, Con(kP2, [](P& p) { p.poliza = "3"; })},
         {"01"},
         {{"La Póliza se dio de baja.", "B", "2", "Ig", "2023-01-15", ""},
          {"Póliza nueva.", "A", "3", "Ig", "2023-01-15", ""}},
         "SN"},
        // Both old vouchers find the first new one; the second new one stays new.
        {"claves repetidas: el primero encontrado",
         {kP1, Con(kP1, [](P& p) { p.concepto = "Otra"; })},
         {kP1, Con(kP1, [](P& p) { p.concepto = "Otra"; })},
         {"01"},
         {{kCabecera, "C", "1", "Dr", "2023-01-10", ""},
          {"Concepto, Anterior -> Otra Nuevo -> Compra de papeleria.", "C", "1", "Dr", "2023-01-10", ""},
          {"Póliza nueva.", "A", "1", "Dr", "2023-01-10", ""}},
         "SN"},
        {"el numero se compara sin mayusculas", {Con(kP1, [](P& p) { p.poliza = "a-1"; })},
         {Con(kP1, [](P& p) { p.poliza = "A-1"; })}, {"01"}, {}, "S"},
    };
    for (auto& c : casos) Verifica(c);
}

TEST(Comparacion, ApostrofeEnElNumeroDePoliza) {
    const P conApostrofe = Con(kP1, [](P& p) { p.poliza = "A'1"; });
    const P cierreConApostrofe = {"C'1", "Dr", "2023-12-31", "Cierre", true, {{1, "3101", "D", "5", "Cierre"}}};
    const Caso casos[] = {
        // In the ordinary months the key drops the apostrophe: the new text
        // still holds it, so the stored voucher finds no partner.
        {"mes normal, la clave lo quita",
         {conApostrofe},
         {conApostrofe},
         {"01"},
         {{"La Póliza se dio de baja.", "B", "A1", "Dr", "2023-01-10", ""},
          {"Póliza nueva.", "A", "A1", "Dr", "2023-01-10", ""}},
         "N"},
        // A new number with the apostrophe finds the old one stored without it.
        {"mes normal, guardada sin apostrofe",
         {Con(kP1, [](P& p) { p.poliza = "A1"; })},
         {Con(conApostrofe, [](P& p) { p.lineas.push_back({3, "5101", "D", "1", "Nueva"}); })},
         {"01"},
         {{"La Póliza se dio de baja.", "B", "A1", "Dr", "2023-01-10", ""},
          {"Póliza nueva.", "A", "A1", "Dr", "2023-01-10", ""},
          {kCabecera, "C", "A1", "Dr", "2023-01-10", ""},
          {"Se incluyó una nueva partida.", "C", "A1", "Dr", "2023-01-10", "5101"}},
         "N"},
        {"mes 13, la clave lo conserva", {cierreConApostrofe}, {cierreConApostrofe}, {"13"}, {}, "S"},
    };
    for (auto& c : casos) Verifica(c);
}

TEST(Comparacion, PartidasDeUnaPolizaEmparejada) {
    const P tres = {"5", "Dr", "2023-03-08", "Gastos", false,
                    {{1, "6101", "D", "100", "Luz"}, {2, "6102", "D", "50", "Agua"}, {3, "1102", "H", "150", "Banco"}}};
    const char* F = "2023-03-08";
    const Caso casos[] = {
        {"lineas intercambiadas con la misma Partida",
         {tres},
         {Con(tres, [](P& p) { p.lineas = {{1, "6102", "D", "50", "Agua"}, {2, "6101", "D", "100", "Luz"},
                                           {3, "1102", "H", "150", "Banco"}}; })},
         {"03"},
         {{kCabecera, "C", "5", "Dr", F, ""},
          {"Partida: 1 Cuenta -> Anterior: 6101  Nueva: 6102", "C", "5", "Dr", F, "6101"},
          {"Partida: 1 Importe -> Anterior: $100.00 Nuevo: $50.00", "C", "5", "Dr", F, "6101"},
          {"Partida: 1 Referencia -> Anterior: Luz  Nuevo: Agua", "C", "5", "Dr", F, "6101"},
          {"Partida: 2 Cuenta -> Anterior: 6102  Nueva: 6101", "C", "5", "Dr", F, "6102"},
          {"Partida: 2 Importe -> Anterior: $50.00 Nuevo: $100.00", "C", "5", "Dr", F, "6102"},
          {"Partida: 2 Referencia -> Anterior: Agua  Nuevo: Luz", "C", "5", "Dr", F, "6102"}},
         "S"},
        {"lineas intercambiadas con su Partida",
         {tres},
         {Con(tres, [](P& p) { p.lineas = {{3, "1102", "H", "150", "Banco"}, {2, "6102", "D", "50", "Agua"},
                                           {1, "6101", "D", "100", "Luz"}}; })},
         {"03"},
         {},
         "S"},
        // Old 2 meets new 2 (the old third line); old 3 has no partner by
        // position and finds its content at new 2.
        {"linea de en medio borrada y el resto renumerado",
         {tres},
         {Con(tres, [](P& p) { p.lineas = {{1, "6101", "D", "100", "Luz"}, {2, "1102", "H", "150", "Banco"}}; })},
         {"03"},
         {{kCabecera, "C", "5", "Dr", F, ""},
          {"Partida: 2 Cuenta -> Anterior: 6102  Nueva: 1102", "C", "5", "Dr", F, "6102"},
          {"Partida: 2 Tipo de Movimiento -> Anterior: D  Nuevo: H", "C", "5", "Dr", F, "6102"},
          {"Partida: 2 Importe -> Anterior: $50.00 Nuevo: $150.00", "C", "5", "Dr", F, "6102"},
          {"Partida: 2 Referencia -> Anterior: Agua  Nuevo: Banco", "C", "5", "Dr", F, "6102"}},
         "S"},
        {"ultima linea borrada: baja sin cabecera",
         {tres},
         {Con(tres, [](P& p) { p.lineas.pop_back(); })},
         {"03"},
         {{"La Partida : 3, Referencia: Banco, Abono por $150.00 de la póliza se dió de baja.", "C", "5", "Dr", F,
           "1102"}},
         "S"},
        {"linea borrada con una gemela entre las nuevas",
         {Con(tres, [](P& p) { p.lineas.push_back({4, "6101", "D", "100", "Luz"}); })},
         {tres},
         {"03"},
         {},
         "S"},
        {"crece con una cuenta nueva",
         {kP1},
         {Con(kP1, [](P& p) { p.lineas.push_back({3, "1103", "D", "0", "IVA"}); })},
         {"01"},
         {{kCabecera, "C", "1", "Dr", "2023-01-10", ""},
          {"Se incluyó una nueva partida.", "C", "1", "Dr", "2023-01-10", "1103"}},
         "S"},
        {"crece con una cuenta que ya tenia",
         {kP1},
         {Con(kP1, [](P& p) { p.lineas.push_back({3, "1101", "D", "0", "Ajuste"}); })},
         {"01"},
         {},
         "S"},
        {"concepto y linea cambiados: una sola cabecera",
         {kP1},
         {Con(kP1, [](P& p) {
             p.concepto = "Compra de papeleria y toner";
             p.lineas[1].importe = "100.01";
         })},
         {"01"},
         {{kCabecera, "C", "1", "Dr", "2023-01-10", ""},
          {"Concepto, Anterior -> Compra de papeleria Nuevo -> Compra de papeleria y toner.", "C", "1", "Dr",
           "2023-01-10", ""},
          {"Partida: 2 Importe -> Anterior: $100.00 Nuevo: $100.01", "C", "1", "Dr", "2023-01-10", "2101"}},
         "S"},
        // The heading of a reference change carries the line's account.
        {"solo la referencia cambia",
         {kP1},
         {Con(kP1, [](P& p) { p.lineas[0].referencia = "Factura 11"; })},
         {"01"},
         {{kCabecera, "C", "1", "Dr", "2023-01-10", "1101"},
          {"Partida: 1 Referencia -> Anterior: Factura 10  Nuevo: Factura 11", "C", "1", "Dr", "2023-01-10",
           "1101"}},
         "S"},
        {"referencia nueva con blancos y apostrofe limpiados es igual",
         {Con(kP1, [](P& p) { p.lineas[0].referencia = "OBrien"; })},
         {Con(kP1, [](P& p) { p.lineas[0].referencia = " O'Brien  "; })},
         {"01"},
         {},
         "S"},
        // The concept is compared as it is, uncleaned: the stored one was cleaned.
        {"concepto nuevo con apostrofe",
         {Con(kP1, [](P& p) { p.concepto = "Pago a OBrien"; })},
         {Con(kP1, [](P& p) { p.concepto = "Pago a O'Brien"; })},
         {"01"},
         {{kCabecera, "C", "1", "Dr", "2023-01-10", ""},
          {"Concepto, Anterior -> Pago a OBrien Nuevo -> Pago a O'Brien.", "C", "1", "Dr", "2023-01-10", ""}},
         "S"},
    };
    for (auto& c : casos) Verifica(c);
}

// The order in which the tables hold vouchers and lines changes nothing:
// partners stored in the reverse order of the walk, lines stored out of
// Partida order, a line without Partida (compared first, by content only).
TEST(Comparacion, ElOrdenDeLasTablasNoCambiaLoQueSeEncuentra) {
    const P tres = {"5", "Dr", "2023-03-08", "Gastos", false,
                    {{3, "1102", "H", "150", "Banco"}, {1, "6101", "D", "100", "Luz"}, {2, "6102", "D", "50", "Agua"}}};
    const char* F = "2023-03-08";
    const Caso casos[] = {
        {"parejas guardadas al reves",
         {kP1, kP2, kFeb},
         {kFeb, Con(kP2, [](P& p) { p.lineas[0].importe = "60"; }), kP1},
         {"01", "02"},
         {{kCabecera, "C", "2", "Ig", "2023-01-15", ""},
          {"Partida: 1 Importe -> Anterior: $50.50 Nuevo: $60.00", "C", "2", "Ig", "2023-01-15", "1102"}},
         "SSS"},
        {"lineas viejas guardadas fuera de orden",
         {tres},
         {Con(tres, [](P& p) {
             p.lineas[0].importe = "151";
             p.lineas[1].importe = "101";
         })},
         {"03"},
         {{kCabecera, "C", "5", "Dr", F, ""},
          {"Partida: 1 Importe -> Anterior: $100.00 Nuevo: $101.00", "C", "5", "Dr", F, "6101"},
          {"Partida: 3 Importe -> Anterior: $150.00 Nuevo: $151.00", "C", "5", "Dr", F, "1102"}},
         "S"},
    };
    for (auto& c : casos) Verifica(c);

    Empresa e;
    e.guarda({kP1}, false);
    e.db().ejecuta("UPDATE Polizas_Detalle SET Partida=NULL WHERE Cuenta='2101'");
    e.guarda({Con(kP1, [](P& p) {
                 p.lineas[0].importe = "90";
                 p.lineas[1].referencia = "Proveedor 2";
             })},
             true);
    e.comparaMeses({"01"});
    EXPECT_EQ(e.bitacora(),
              (std::vector<Fila>{
                  {"La Partida : , Referencia: Proveedor, Abono por $100.00 de la póliza se dió de baja.", "C", "1",
                   "Dr", "2023-01-10", "2101"},
                  {kCabecera, "C", "1", "Dr", "2023-01-10", ""},
                  {"Partida: 1 Importe -> Anterior: $100.00 Nuevo: $90.00", "C", "1", "Dr", "2023-01-10", "1101"}}));
}

// The number pairs as the store compares it: in a store that tells case
// apart, "a-1" and "A-1" are two vouchers.
TEST(Comparacion, ElNumeroSeComparaComoLoComparaElAlmacen) {
    Empresa e;
    e.db().ejecutaScript(
        "DROP TABLE Polizas_Tmp.Polizas_Tmp; CREATE TABLE Polizas_Tmp.Polizas_Tmp (IdPoliza INTEGER, Poliza TEXT, "
        "Tipo TEXT COLLATE NOCASE, Fecha TEXT, Concepto TEXT, Poliza_Deshabilitada INTEGER, Poliza_Mes13 INTEGER, "
        "Poliza_Ajuste INTEGER, Cuadrada INTEGER, Revisado INTEGER)");
    e.guarda({Con(kP1, [](P& p) { p.poliza = "a-1"; }), kP2}, false);
    e.guarda({Con(kP1, [](P& p) { p.poliza = "A-1"; }), Con(kP2, [](P& p) { p.tipo = "IG"; })}, true);
    e.comparaMeses({"01"});
    EXPECT_EQ(e.bitacora(), (std::vector<Fila>{{"La Póliza se dio de baja.", "B", "a-1", "Dr", "2023-01-10", ""},
                                               {"Póliza nueva.", "A", "A-1", "Dr", "2023-01-10", ""}}));
    EXPECT_EQ(e.revisadas(), "NS");
}

TEST(Comparacion, UnConceptoLargoMuestraAnteriorYNuevoDentroDelCampo) {
    const std::string largo(200, 'x');
    Empresa e;
    e.guarda({kP1}, false);
    e.guarda({Con(kP1, [&](P& p) { p.concepto = largo.c_str(); })}, true);
    e.comparaMeses({"01"});
    auto filas = e.bitacora();
    ASSERT_EQ(filas.size(), 2u);
    // The short old concept stays whole; the new one takes the rest of the
    // 150 characters, so that "Nuevo ->" always shows.
    EXPECT_EQ(filas[1].referencia, "Concepto, Anterior -> Compra de papeleria Nuevo -> " + std::string(97, 'x') + "….");
    EXPECT_EQ(LongitudCaracteres(filas[1].referencia), 150u);
}

TEST(Comparacion, LaEtiquetaNombraLaPolizaAlcanzadaCadaTantasPolizas) {
    struct Grabado : ProgresoMudo {
        std::vector<std::string> etiquetas;
        int cesiones = 0;
        long ultimo = 0;
        void etiqueta(const std::string& t) override { etiquetas.push_back(t); }
        void valor(long n) override { ultimo = n; }
        void cede() override { ++cesiones; }
    } progreso;
    Empresa e;
    e.sesion().progreso = &progreso;
    // 300 vouchers: the label shows the first and the 257th.
    std::vector<std::string> numeros;
    for (int i = 1; i <= 300; ++i) numeros.push_back(std::to_string(i));
    std::vector<P> polizas;
    for (auto& n : numeros) polizas.push_back(Con(kP1, [&](P& p) { p.poliza = n.c_str(); }));
    e.guarda(polizas, false);
    e.guarda({kP1}, true);
    ComparaPolizas(e.sesion(), "01");
    EXPECT_EQ(progreso.etiquetas,
              (std::vector<std::string>{"Comparando Pol. 1, Dr, Enero", "Comparando Pol. 257, Dr, Enero"}));
    EXPECT_EQ(progreso.cesiones, 2);
    EXPECT_EQ(progreso.ultimo, 257);
}

// The comparison of new lines reads the month's pairing backwards when it
// can, and pairs again when it cannot (a number with a character the key
// cleans, two new vouchers on one key, an old voucher without lines): the
// log is the same either way.
TEST(Comparacion, LasPartidasNuevasIgualConElEmparejamientoLeidoAlReves) {
    const char* F = "2023-03-08";
    const P crece = {"5", "Dr", F, "Gastos", false, {{1, "6101", "D", "100", "Luz"}, {2, "1102", "H", "100", "Banco"}}};
    const P vacia = {"6", "Dr", F, "Sin lineas", false, {}};
    const P igual = {"7", "Ig", F, "Cobro", false, {{1, "1102", "D", "9", "x"}, {2, "4101", "H", "9", "y"}}};
    const std::vector<P> anteriores = {crece, vacia, igual, {"8", "Dr", F, "Solo antes", false, {}}};
    std::vector<P> nuevas = {
        Con(crece, [](P& p) { p.lineas.push_back({3, "6103", "D", "0", "Nueva"}); }),
        Con(vacia, [](P& p) { p.lineas = {{1, "1101", "D", "1", "a"}, {2, "1102", "H", "1", "b"}}; }), igual,
        {"9", "Dr", F, "Solo ahora", false, {{1, "1101", "D", "2", "c"}}}};
    struct Caso {
        const char* nombre;
        std::vector<P> nuevas;
        bool guardada;   // the month's comparison leaves its pairing (the new side is
                         // looked at again when it is read backwards)
        long agregadas;  // "Se incluyó una nueva partida." rows
    } casos[] = {
        {"se lee al revés", nuevas, true, 3},
        {"dos nuevas con una clave", [&] { auto v = nuevas; v.push_back(v[0]); return v; }(), false, 4},
        // "5'" pairs back with the old "5" by its cleaned number, and grew.
        {"un número con apóstrofo",
         [&] {
             auto v = nuevas;
             v.push_back(Con(v[0], [](P& p) { p.poliza = "5'"; }));
             return v;
         }(),
         true, 4},
    };
    for (const Caso& c : casos) {
        SCOPED_TRACE(c.nombre);
        std::vector<Fila> bitacoras[2];
        for (int guarda = 0; guarda < 2; ++guarda) {
            Empresa e;
            e.guarda(anteriores, false);
            e.guarda(c.nuevas, true);
            ComparaPolizas(e.sesion(), "03");
            EXPECT_EQ(e.sesion().ParesDelMes != nullptr, c.guardada);
            ComparaPolizasNuevas(e.sesion(), "03");
            if (!guarda) e.sesion().ParesDelMes.reset();
            ComparaPartidasNuevas(e.sesion(), "03");
            bitacoras[guarda] = e.bitacora();
        }
        EXPECT_EQ(bitacoras[0], bitacoras[1]);
        EXPECT_EQ(std::count_if(bitacoras[1].begin(), bitacoras[1].end(),
                                [](const Fila& f) { return f.referencia == "Se incluyó una nueva partida."; }),
                  c.agregadas);
    }
}
