// Link 40 over the five tables of a ContPAQ Windows company, written by
// python3-dbf in three formats: the accounts and the voucher lines as
// dBase III, the parent links as FoxPro with a memo, the balances as Visual
// FoxPro with integer, currency and double fields. What lands in the company
// after whole runs, what a re-import reports, and that a refused run leaves
// the company file as it was.

#include <gtest/gtest.h>

#include <filesystem>

#include "importers/contpaq_windows/ImportadorContpaqWindows.h"
#include "pipeline/Importacion.h"
#include "platform/TablasDbfPrueba.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"
#include "store/AltaBase.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

// Types C and J are not among the predetermined rows: each is asked once.
// "_SISTEMA" is ContPAQ's own record; 9000101 came from another system.
const char* const kCuentas = R"(
[('_SISTEMA', 'Registro del sistema', 'A', 1),
 ('1000000', 'Activo', 'A', 1),
 ('1000100', 'Bancos', 'A', 1),
 ('1000101', 'Banco uno', 'A', 1),
 ('1000102', 'Banco dos', 'C', 1),
 ('1000103', 'Banco tres', 'C', 1),
 ('2000000', 'Pasivo', 'B', 1),
 ('2000101', 'Proveedor uno', 'B', 1),
 ('4000000', 'Ingresos', 'J', 1),
 ('4000101', 'Ventas', 'J', 1),
 ('9000101', 'Migrada', 'A', 0)])";

// The parent of 2000101 is a system record: it has none.
const char* const kControles = R"(
[('1000100', '1000000', 'bancos del grupo'),
 ('1000101', '1000100', ''),
 ('1000102', '1000100', ''),
 ('1000103', '1000100', ''),
 ('2000101', '_RAIZ', ''),
 ('4000101', '4000000', ''),
 ('9000101', '1000000', '')])";

// ContPAQ keeps the balance of every account, its control accounts too.
// TIPO 2 rows are not opening balances; 2024 is the prior year.
const char* const kSaldos = R"(
[(2025, 1, '1000000', D('1000'), 0.0),
 (2025, 1, '1000100', D('1000'), 0.0),
 (2025, 1, '1000101', D('1000'), 0.0),
 (2025, 1, '2000000', D('1000'), 0.0),
 (2025, 1, '2000101', D('1000'), 0.0),
 (2025, 2, '1000102', D('5'), 0.0),
 (2024, 1, '1000101', D('0'), 900.25),
 (2024, 1, '2000101', D('0'), 400.0),
 (2024, 1, '5000101', D('0'), 7.0)])";

struct Movimiento {
    int eje, periodo, tipo, numero, movto;
    std::string fecha, cuenta, referencia, concepto;
    int tipoMov;
    std::string importe;
};

std::string Fila(const Movimiento& m) {
    return "(" + std::to_string(m.eje) + ", " + std::to_string(m.periodo) + ", " + std::to_string(m.tipo) + ", " +
           std::to_string(m.numero) + ", " + std::to_string(m.movto) + ", d(" + m.fecha + "), '" + m.cuenta + "', '" +
           m.referencia + "', '" + m.concepto + "', " + std::to_string(m.tipoMov) + ", D('" + m.importe + "'))";
}

// Voucher 1 of type 1 in January and again in February (another voucher),
// a closing voucher of period 13, one of period 14, a line of the prior year.
std::vector<Movimiento> Movimientos() {
    return {
        {2025, 1, 1, 1, 1, "2025, 1, 10", "1000101", "F-1", "Venta uno", 0, "300"},
        {2025, 1, 1, 1, 2, "2025, 1, 10", "4000101", "F-1", "Venta uno", 1, "300"},
        {2025, 2, 1, 1, 1, "2025, 2, 5", "1000102", "", "Venta dos", 0, "200"},
        {2025, 2, 1, 1, 2, "2025, 2, 5", "4000101", "", "Venta dos", 1, "200"},
        {2025, 13, 3, 1, 1, "2025, 12, 31", "4000101", "", "Cierre", 0, "500"},
        {2025, 13, 3, 1, 2, "2025, 12, 31", "1000103", "", "Cierre", 1, "500"},
        {2025, 14, 3, 2, 1, "2025, 12, 31", "1000101", "", "Cierre 2", 0, "1"},
        {2025, 14, 3, 2, 2, "2025, 12, 31", "1000102", "", "Cierre 2", 1, "1"},
        {2024, 5, 1, 9, 1, "2024, 5, 1", "1000101", "", "Año anterior", 0, "7"},
    };
}

class ImportacionContpaq : public EntornoImportacion {
protected:
    std::string base;

    void SetUp() override {
        DatosEmpresaNueva d = EmpresaAcme();
        d.rellenaCeros = true;
        d.mesFinal = 12;
        base = AbreEmpresaNueva(s, ui, dir, d);
        std::filesystem::create_directories(dir.texto() + "datos");
        archivos.catalogo = dir.texto() + "datos/CTW10001.DBF";
        archivos.parametros["hasta-mes"] = "13";
    }

    void Tablas(const std::vector<Movimiento>& movimientos = Movimientos()) {
        std::string filas;
        for (const auto& m : movimientos) filas += (filas.empty() ? "" : ", ") + Fila(m);
        std::string guion = std::string(R"(
import os
os.chdir('datos')
d = datetime.date
D = Decimal
def tabla(nombre, tipo, campos, filas):
    t = dbf.Table(nombre, campos, dbf_type=tipo, codepage='cp1252')
    t.open(dbf.READ_WRITE)
    for f in filas:
        t.append(f)
    t.close()
tabla('CTW10001.DBF', 'db3', 'CUENTA C(20); NOMBRE C(40); TIPO C(1); SISTORIG N(1,0)', )") +
                             kCuentas + R"()
tabla('CTW10002.DBF', 'fp', 'SUBCTADE C(20); CTASUP C(20); NOTAS M', )" + kControles + R"()
tabla('CTW10005.DBF', 'vfp', 'EJE I; TIPO I; CUENTA C(20); SALDOINI Y; IMP13 B', )" + kSaldos + R"()
tabla('CTW10004.DBF', 'db3', 'EJE N(4,0); PERIODO N(2,0); TIPOPOL N(2,0); NUMPOL N(8,0); MOVTO N(4,0); FECHA D; '
      'CUENTA C(20); REFERENCIA C(20); CONCEPTO C(40); TIPOMOV N(1,0); IMPORTE N(16,2)', [)" +
                             filas + R"(])
tabla('CTW10009.DBF', 'db3', 'NUMERO N(2,0); DESCRIP C(20)', [(1, 'Ingresos'), (2, 'Egresos'), (3, 'Diario')])
)";
        ASSERT_TRUE(EscribeConPython(dir, guion));
    }

    ResultadoImportacion Importa() {
        ui.decisiones = {DecisionInconsistencias::Continuar};
        ImportadorContpaqWindows imp(OpcionesContpaqDe(archivos));
        return EjecutaImportacion(s, imp, archivos);
    }
    std::string Ultimo() const {
        std::string t = ui.mensajes.empty() ? "" : ui.mensajes.back().texto;
        while (!t.empty() && (t.back() == '\r' || t.back() == '\n')) t.pop_back();
        return t;
    }

    Valor escalar(const std::string& sql) { return s.DbEmpresa->escalar(sql); }
    std::string filas(const std::string& sql) {
        return escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
    }
    std::string log(const std::string& where) {
        BaseDatos b(RutaAlmacen(s, kInconsisImpTmp));
        return b.escalar("SELECT group_concat(Referencia || ' ' || COALESCE(Poliza, '') || ' ' || COALESCE(Cuenta, ''), "
                         "' | ') FROM (SELECT * FROM InconsisImpTmp WHERE " +
                         where + " ORDER BY rowid)")
            .texto();
    }
};

}  // namespace

TEST_F(ImportacionContpaq, ElCatalogoLosSaldosYLasPolizasDeLasCincoTablas) {
    Tablas();
    ui.naturalezas = {"D", "A"};
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << Ultimo();

    // Each unknown type was asked once, in the order met; the answers stay.
    EXPECT_EQ(ui.tiposPreguntados, (std::vector<std::string>{"C", "J"}));
    {
        NaturalezasContpaq n(s);
        EXPECT_EQ(n.busca("C"), "D");
        EXPECT_EQ(n.busca("J"), "A");
        EXPECT_EQ(n.busca("b"), "A");
    }
    // No system record, no account of another system; parents cut to their
    // level, none for a system parent; natures by type.
    EXPECT_EQ(filas("SELECT Cuenta || ':' || Naturaleza || ':' || COALESCE(CuentaAcumulativa, '') AS f FROM Cuentas "
                    "ORDER BY Cuenta"),
              "100:D: | 10001:D:100 | 1000101:D:10001 | 1000102:D:10001 | 1000103:D:10001 | 200:A: | 2000101:A: | "
              "400:A: | 4000101:A:400");
    // Opening balances signed by nature; the TIPO 2 row is none.
    EXPECT_EQ(filas("SELECT Cuenta || '=' || SaldoInicial AS f FROM Balanzas WHERE SaldoInicial <> 0 ORDER BY Cuenta"),
              "100=10000000 | 10001=10000000 | 1000101=10000000 | 200=-10000000 | 2000101=-10000000");
    // The same number in January and February is two vouchers; periods 13
    // and 14 are the closing month; the prior year's line is not read.
    EXPECT_EQ(filas("SELECT Tipo || '/' || Poliza || ' ' || Fecha || ' ' || Poliza_Mes13 || ' ' || Concepto AS f "
                    "FROM Polizas ORDER BY Fecha, Tipo, Poliza"),
              "1/1 2025-01-10 0 Venta uno | 1/1 2025-02-05 0 Venta dos | 3/1 2025-12-31 -1 Cierre | "
              "3/2 2025-12-31 -1 Cierre 2");
    EXPECT_EQ(filas("SELECT p.Poliza || ':' || d.Partida || d.TipoMov || d.Cuenta || '=' || d.Importe || ':' || "
                    "d.Referencia AS f FROM Polizas_Detalle d JOIN Polizas p ON p.IdPoliza = d.IdPoliza "
                    "WHERE p.Fecha = '2025-01-10' ORDER BY d.Partida"),
              "1:1D1000101=3000000:Venta uno | 1:2H4000101=3000000:Venta uno");
    EXPECT_EQ(escalar("SELECT C13 FROM Balanzas WHERE Cuenta = '4000101'").moneda().texto(), "500");
    EXPECT_EQ(filas("SELECT Tipo || '=' || Descripcion AS f FROM CatTipoPoliza ORDER BY Tipo"),
              "1=Ingresos | 2=Egresos | 3=Diario");
    EXPECT_EQ(s.DbEmpresas->escalar("SELECT Separador || '|' || CatArbol FROM Empresas").texto(), "|0");
}

TEST_F(ImportacionContpaq, LasOpcionesCambianLoQueSeLee) {
    Tablas();
    archivos.casillas = {"sin-filtro-sistorig", "incluir-referencia"};
    archivos.parametros["naturaleza"] = "c=D\nJ = a";
    archivos.parametros["hasta-mes"] = "01";
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << Ultimo();
    EXPECT_TRUE(ui.tiposPreguntados.empty());  // answered beforehand
    EXPECT_EQ(escalar("SELECT CuentaAcumulativa FROM Cuentas WHERE Cuenta = '9000101'").texto(), "100");
    EXPECT_EQ(filas("SELECT Referencia AS f FROM Polizas_Detalle ORDER BY rowid"), "F-1 Venta uno | F-1 Venta uno");
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Polizas").entero(), 1);

    archivos.parametros["naturaleza"] = "C=X";
    EXPECT_THROW(OpcionesContpaqDe(archivos), ParametroInvalido);
    archivos.parametros["naturaleza"] = "";
    archivos.parametros["hasta-mes"] = "14";
    EXPECT_THROW(OpcionesContpaqDe(archivos), ParametroInvalido);
}

TEST_F(ImportacionContpaq, UnaReimportacionReportaSoloLaPolizaQueCambio) {
    Tablas();
    ui.naturalezas = {"D", "A"};
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << Ultimo();
    auto movimientos = Movimientos();
    movimientos[2].importe = movimientos[3].importe = "250";
    Tablas(movimientos);
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << Ultimo();
    EXPECT_TRUE(ui.tiposPreguntados.size() == 2);  // not asked again
    EXPECT_EQ(log("ClasifError = 'C'"),
              "La Póliza cambió en : 1  | Partida: 1 Importe -> Anterior: $200.00 Nuevo: $250.00 1 1000102 | "
              "Partida: 2 Importe -> Anterior: $200.00 Nuevo: $250.00 1 4000101");
    EXPECT_EQ(escalar("SELECT SUM(Importe) FROM Polizas_Detalle d JOIN Polizas p ON p.IdPoliza = d.IdPoliza "
                      "WHERE p.Fecha = '2025-02-05'")
                  .moneda()
                  .texto(),
              "500");
}

TEST_F(ImportacionContpaq, UnaCorridaRehusadaOCanceladaNoCambiaLaEmpresa) {
    Tablas();
    const std::string archivo = s.DbEmpresa->ruta().string();
    const std::string antes = ContenidoEmpresaSinHistorial(archivo);
    // No answer for type C: refused with the dialog's text.
    {
        ImportadorContpaqWindows imp(OpcionesContpaqDe(archivos));
        EXPECT_THROW(EjecutaImportacion(s, imp, archivos), ProgramaTerminado);
    }
    bool nombrado = false;
    for (const auto& m : ui.mensajes)
        nombrado = nombrado || m.texto.find("conforme al Tipo de cuenta 'C'") != std::string::npos;
    EXPECT_TRUE(nombrado);
    EXPECT_EQ(ContenidoEmpresaSinHistorial(archivo), antes);
    // Cancelled at the inconsistencies (a line on an account the chart lacks).
    auto movimientos = Movimientos();
    movimientos[0].cuenta = "7000101";
    Tablas(movimientos);
    ui.naturalezas = {"D", "A"};
    ui.decisiones = {DecisionInconsistencias::Cancelar};
    {
        ImportadorContpaqWindows imp(OpcionesContpaqDe(archivos));
        EXPECT_THROW(EjecutaImportacion(s, imp, archivos), ProgramaTerminado);
    }
    EXPECT_NE(log("1").find("La Cuenta 7000101 no existe en el catálogo."), std::string::npos) << log("1");
    EXPECT_EQ(ContenidoEmpresaSinHistorial(archivo), antes);
}

TEST_F(ImportacionContpaq, FaltaUnaTablaOElMes) {
    Tablas();
    std::filesystem::remove(dir.texto() + "datos/CTW10009.DBF");
    ImportadorContpaqWindows imp(OpcionesContpaqDe(archivos));
    EXPECT_EQ(EjecutaImportacion(s, imp, archivos), ResultadoImportacion::ArchivosFaltantes);
    EXPECT_EQ(Ultimo(), "Especifique por favor el archivo que contiene el catálogo de tipos de póliza");
    Tablas();
    archivos.parametros.erase("hasta-mes");
    ImportadorContpaqWindows sinMes(OpcionesContpaqDe(archivos));
    EXPECT_EQ(EjecutaImportacion(s, sinMes, archivos), ResultadoImportacion::ArchivosFaltantes);
    EXPECT_EQ(Ultimo(), "Especifique por favor el mes hasta el cual deberá importarse el detalle de pólizas");
}

TEST_F(ImportacionContpaq, LaListaDeMesesYLosSaldosDelAnioAnterior) {
    Tablas();
    auto meses = MesesContpaq(s, dir.texto() + "datos/CTW10004.DBF");
    ASSERT_EQ(meses.size(), 3u);
    EXPECT_EQ(meses[0], (std::pair<std::string, int>{"Enero", 1}));
    EXPECT_EQ(meses[1].second, 2);
    EXPECT_EQ(meses[2], (std::pair<std::string, int>{"Mes cierre", 13}));

    ui.naturalezas = {"D", "A"};
    ASSERT_EQ(Importa(), ResultadoImportacion::Terminada) << Ultimo();
    ImportadorContpaqWindows imp(OpcionesContpaqDe(archivos));
    EXPECT_THROW(EjecutaSaldosAnioAnterior(s, imp, dir.texto() + "datos/CTW10004.DBF"), ProgramaTerminado);
    EXPECT_EQ(Ultimo(), "Error: El nombre del archivo no coincide.");
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaSaldosAnioAnterior(s, imp, dir.texto() + "datos/CTW10005.DBF"), ResultadoImportacion::Terminada)
        << Ultimo();
    // IMP13 of 2024, signed by the company's nature; an account it lacks is
    // logged and added.
    EXPECT_EQ(filas("SELECT Cuenta || '=' || Saldo_Anterior_Final || ':' || COALESCE(Descripcion, '') AS f FROM Cuentas "
                    "WHERE Saldo_Anterior_Final <> 0 AND length(Cuenta) = 7 ORDER BY Cuenta"),
              "1000101=9002500:Banco uno | 2000101=-4000000:Proveedor uno | 5000101=70000:Sin Descripción");
    EXPECT_EQ(log("Cuenta = '5000101'"),
              "La Cuenta 5000101 no existe, contiene el saldo final del año anterior y será necesario agregarla al "
              "catalogo actual  5000101");
}

TEST_F(ImportacionContpaq, LaLineaDeOrdenes) {
    Tablas();
    auto corre = [&](const std::string& argumentos) {
        return CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' '" VELMORANT_CLI "' --base '" + base +
                            "' --empresa ACME --ejercicio 2025 " + argumentos + " </dev/null");
    };
    auto ayuda = corre("importar --enlace 40 --help");
    for (const char* opcion : {"--catalogo", "--hasta-mes", "--naturaleza", "--sin-filtro-sistorig",
                               "--incluir-referencia", "--ctas-rellenas"})
        EXPECT_NE(ayuda.salida.find(opcion), std::string::npos) << opcion << "\n" << ayuda.salida;
    const std::string importar = "importar --enlace 40 --catalogo '" + archivos.catalogo + "' --hasta-mes 13 ";
    // Without an answer for type C and without a terminal: refused, untouched.
    const std::string archivo = s.DbEmpresa->ruta().string();
    const std::string antes = ContenidoEmpresaSinHistorial(archivo);
    auto sinRespuesta = corre(importar + "--continuar");
    EXPECT_EQ(sinRespuesta.estado, 1) << sinRespuesta.salida;
    EXPECT_NE(sinRespuesta.salida.find("conforme al Tipo de cuenta 'C'"), std::string::npos) << sinRespuesta.salida;
    EXPECT_EQ(ContenidoEmpresaSinHistorial(archivo), antes);
    EXPECT_EQ(corre(importar + "--naturaleza C=Q --continuar").estado, 2);

    auto r = corre(importar + "--naturaleza C=D --naturaleza J=A --continuar");
    ASSERT_EQ(r.estado, 0) << r.salida;
    auto anterior = corre("saldos-anterior --enlace 40 --archivo '" + dir.texto() + "datos/CTW10005.DBF' --continuar");
    ASSERT_EQ(anterior.estado, 0) << anterior.salida;
    BaseDatos empresa(archivo);
    EXPECT_EQ(empresa.escalar("SELECT COUNT(*) FROM Polizas").entero(), 4);
    EXPECT_EQ(empresa.escalar("SELECT Saldo_Anterior_Final FROM Cuentas WHERE Cuenta = '2000101'").moneda().texto(),
              "-400");
}

// What an earlier version left in the company: numbers and types at one
// width, line texts joined as reference " - " concept.
TEST_F(ImportacionContpaq, LosPasosDeActualizacionPorSuEfecto) {
    BaseDatos& db = *s.DbEmpresa;
    for (int i = 1; i <= 3; ++i) {
        db.ejecuta("INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha) VALUES (?, ?, ?, '2025-01-10')", i,
                   std::string(i == 1 ? 5 : 4, ' ') + std::to_string(i * 5), " 1");
        db.ejecuta("INSERT INTO Polizas_Detalle (IdPoliza, Cuenta, Referencia, Partida) VALUES (?, '1000101', ?, 1)", i,
                   i == 3 ? " - Pago" : "F-" + std::to_string(i) + " - Venta");
    }
    db.ejecuta("INSERT INTO CedAnalitica (IdPoliza, Poliza, Tipo, Referencia) VALUES (2, '    10', ' 1', 'F-2 - Venta')");
    EXPECT_EQ(AdaptaLongitudPoliza(db), 4);
    EXPECT_EQ(AdaptaLongitudTipoPoliza(db), 4);
    EXPECT_EQ(filas("SELECT Poliza || '/' || Tipo AS f FROM Polizas ORDER BY IdPoliza"), "5/1 | 10/1 | 15/1");
    EXPECT_EQ(filas("SELECT Poliza || '/' || Tipo AS f FROM CedAnalitica"), "10/1");
    EXPECT_EQ(AdaptaLongitudPoliza(db), 0);  // widths differ now: done once
    EXPECT_EQ(AdaptaRefyConceptoMovtoPoliza(db, true), 4);
    EXPECT_EQ(filas("SELECT Referencia AS f FROM Polizas_Detalle ORDER BY IdPoliza"), "F-1 Venta | F-2 Venta | Pago");
    EXPECT_EQ(filas("SELECT Referencia AS f FROM CedAnalitica"), "F-2 Venta");
    // A concept of today that holds " - " is not split: not every line is joined.
    db.ejecuta("UPDATE Polizas_Detalle SET Referencia = 'Pago - enero' WHERE IdPoliza = 1");
    EXPECT_EQ(AdaptaRefyConceptoMovtoPoliza(db, false), 0);
    EXPECT_EQ(escalar("SELECT Referencia FROM Polizas_Detalle WHERE IdPoliza = 1").texto(), "Pago - enero");
}
