// Whole runs of links 36 and 95 over ContPAQ i files the tests write: what
// the books hold after a run (vouchers found again, concept text, codes,
// line texts, the options of link 95), what a re-import reports, the
// refresh of the schedule's references, and the command line, where a
// company stays with the ContPAQ i link that first imported it.

#include <gtest/gtest.h>

#include "importers/contpaq_i/ArchivosContpaqI.h"
#include "importers/contpaq_i/ImportadorContpaqI.h"
#include "pipeline/Importacion.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"
#include "store/AltaBase.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;
using namespace velmorant::contpaqi;

namespace {

const std::vector<std::string> kCatalogo = {
    "Catalogo de cuentas",
    Cuenta("1000000", "Activo", "", "A"),
    Cuenta("1000100", "Bancos", "1000000", "A"),
    Cuenta("1000101", "Banco uno", "1000100", "A"),
    Cuenta("1000102", "Banco dos", "1000100", "A"),
    Cuenta("4000000", "Ingresos", "", "B"),
    Cuenta("4000100", "Ventas", "4000000", "B"),
    Cuenta("4000101", "Mostrador", "4000100", "B"),
    Cuenta("4000102", "Servicios", "4000100", "B"),
};

class ImportacionContpaqI : public EntornoImportacion {
protected:
    void SetUp() override {
        DatosEmpresaNueva d = EmpresaAcme();
        d.rellenaCeros = true;
        d.mesFinal = 12;
        AbreEmpresaNueva(s, ui, dir, d);
        archivos.catalogo = dir.texto() + "CATALOGO.TXT";
        archivos.fija("polizas", dir.texto() + "CPOLIZAS.TXT");
        Escribe(archivos.catalogo, kCatalogo);
    }

    ResultadoImportacion Importa(int enlace, const std::vector<std::string>& polizas,
                                 const std::set<std::string>& casillas = {}, const OpcionesEjecucion& opciones = {}) {
        Escribe(archivos.ruta("polizas"), polizas);
        archivos.casillas = casillas;
        ui.decisiones = {DecisionInconsistencias::Continuar};
        ImportadorContpaqI imp(enlace, OpcionesDe(archivos));
        return EjecutaImportacion(s, imp, archivos, opciones);
    }

    std::string filas(const std::string& sql) {
        return s.DbEmpresa->escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
    }
    std::string lineas() {
        return filas("SELECT p.Poliza || '/' || d.Partida || ' ' || d.Cuenta || d.TipoMov || ' ' || d.Importe || ' ' || "
                     "d.Referencia AS f FROM Polizas p JOIN Polizas_Detalle d ON d.IdPoliza = p.IdPoliza "
                     "ORDER BY p.IdPoliza, d.Partida");
    }
    std::string bitacora(const std::string& condicion = "1") {
        BaseDatos log(RutaAlmacen(s, kInconsisImpTmp));
        return log.escalar("SELECT group_concat(Referencia || ' [' || ifnull(Poliza, '') || '|' || Cuenta || ']', '\n') FROM "
                           "(SELECT * FROM InconsisImpTmp WHERE " + condicion + " ORDER BY rowid)")
            .texto();
    }
};

// January: a sale that comes in two pieces, a transfer with more concept
// text, a line on a code shorter than a whole code, one on an account the
// chart lacks, and the texts of reference and concept.
const std::vector<std::string> kEnero = {
    Poliza("20250110", "Ig", "1", "Venta de mostrador", "UUID-P-1"),
    Movimiento("1000101", "F-1", "0", "300.00", "Cobro", "UUID-A"),
    Movimiento("4000101", "F-1", "1", "300.00", ""),
    Poliza("20250115", "Dr", "2", "Traspaso"),
    "MC  entre bancos",
    Movimiento("1000102", "", "0", "1,200.505", "Deposito"),
    Movimiento("1000100", "T-9", "1", "1,200.505", ""),
    Poliza("20250110", "Ig", "1", "Venta de mostrador"),
    Movimiento("1000101", "F-2", "0", "50.00", ""),
    Movimiento("400", "F-2", "1", "40.00", "Corto"),
    Movimiento("9990101", "F-2", "1", "10.00", "Fuera"),
};

}  // namespace

TEST_F(ImportacionContpaqI, UnaPolizaQueVuelveSeCompletaYLosTextosSeArmanComoEnElArchivo) {
    ASSERT_EQ(Importa(36, kEnero), ResultadoImportacion::Terminada) << (ui.mensajes.empty() ? "" : ui.mensajes.back().texto);
    // The chart: codes cut to their levels, parents for the tree, natures by type.
    EXPECT_EQ(filas("SELECT Cuenta || ' ' || Naturaleza || ' ' || Tipo AS f FROM Cuentas ORDER BY Cuenta"),
              "100 D A | 10001 D A | 1000101 D D | 1000102 D D | 400 A A | 40001 A A | 4000101 A D | 4000102 A D");
    // The voucher that comes twice is one, its lines numbered on; "MC" adds
    // to the concept; cents are rounded, halves to the even cent.
    EXPECT_EQ(filas("SELECT Poliza || ' ' || Tipo || ' ' || Fecha || ' ' || Concepto AS f FROM Polizas ORDER BY IdPoliza"),
              "1 Ig 2025-01-10 Venta de mostrador | 2 Dr 2025-01-15 Traspaso MC- entre bancos");
    EXPECT_EQ(lineas(),
              "1/1 1000101D 3000000 F-1 - Cobro | 1/2 4000101H 3000000 F-1 | 1/3 1000101D 500000 F-2 | "
              "1/4 400H 400000 F-2 - Corto | 1/5 9990101H 100000 F-2 - Fuera | "
              "2/1 1000102D 12005000 Deposito | 2/2 10001H 12005000 T-9");
    // Without the option the fiscal folios stay out; the unknown account is
    // logged once, without a voucher.
    EXPECT_EQ(bitacora("Cuenta = '9990101'"), "La Cuenta 9990101 no existe en el catálogo. [|9990101]");
}

TEST_F(ImportacionContpaqI, LasOpcionesDelEnlace95CambianLosTextos) {
    ASSERT_EQ(Importa(95, kEnero, {"incluir-uuid"}), ResultadoImportacion::Terminada);
    EXPECT_EQ(filas("SELECT Concepto AS f FROM Polizas WHERE Poliza = '1'"), "Venta de mostrador UUID-P-1");
    EXPECT_EQ(filas("SELECT Referencia AS f FROM Polizas_Detalle WHERE IdPoliza = 1 AND Partida <= 2 ORDER BY Partida"),
              "F-1 - Cobro UUID-A | F-1");

    // The voucher's concept, as read from its head, is every line's reference.
    ASSERT_EQ(Importa(95, kEnero, {"replica-conceptos"}), ResultadoImportacion::Terminada);
    EXPECT_EQ(filas("SELECT p.Poliza || ': ' || group_concat(DISTINCT d.Referencia) AS f FROM Polizas p JOIN "
                    "Polizas_Detalle d ON d.IdPoliza = p.IdPoliza GROUP BY p.Poliza ORDER BY p.Poliza"),
              "1: Venta de mostrador | 2: Traspaso");
}

TEST_F(ImportacionContpaqI, ElFormatoAnteriorLeeElTipoDeMovimientoComoSeElija) {
    const std::vector<std::string> uno_dos = {
        Poliza("20250120", "Eg", "7", "Pago"),
        MovimientoAnterior("4000102", "CH-1", "1", "75.25", "Servicio"),
        MovimientoAnterior("1000101", "CH-1", "2", "75.25", ""),
    };
    ASSERT_EQ(Importa(95, uno_dos, {"tipo-12"}), ResultadoImportacion::Terminada);
    EXPECT_EQ(lineas(), "7/1 4000102D 752500 CH-1 - Servicio | 7/2 1000101H 752500 CH-1");

    // With the other coding a "2" is no kind at all: the file is refused,
    // naming its line, and the company keeps the vouchers it had.
    EXPECT_THROW(Importa(95, uno_dos, {"tipo-01"}), ProgramaTerminado);
    EXPECT_NE(ui.mensajes.back().texto.find("línea 3"), std::string::npos) << ui.mensajes.back().texto;
    EXPECT_EQ(lineas(), "7/1 4000102D 752500 CH-1 - Servicio | 7/2 1000101H 752500 CH-1");

    // A file of the current layout is read as such whatever the coding says.
    ASSERT_EQ(Importa(95, kEnero, {"tipo-12"}), ResultadoImportacion::Terminada);
    EXPECT_EQ(filas("SELECT count(*) AS f FROM Polizas_Detalle"), "7");
}

TEST_F(ImportacionContpaqI, UnaReimportacionConUnaPolizaCambiadaInformaSoloEseCambio) {
    std::vector<std::string> polizas = {
        Poliza("20250110", "Ig", "1", "Venta"),
        Movimiento("1000101", "F-1", "0", "300.00", ""),
        Movimiento("4000101", "F-1", "1", "300.00", ""),
        Poliza("20250211", "Ig", "2", "Otra venta"),
        Movimiento("1000102", "F-2", "0", "80.00", ""),
        Movimiento("4000102", "F-2", "1", "80.00", ""),
    };
    ASSERT_EQ(Importa(95, polizas), ResultadoImportacion::Terminada);
    polizas[4] = Movimiento("1000102", "F-2", "0", "90.00", "");
    polizas[5] = Movimiento("4000102", "F-2", "1", "90.00", "");
    ASSERT_EQ(Importa(95, polizas), ResultadoImportacion::Terminada);
    const std::string log = bitacora();
    EXPECT_NE(log.find("La Póliza cambió en :"), std::string::npos) << log;
    EXPECT_EQ(bitacora("ifnull(Poliza, '') <> '2'"), "") << log;
    EXPECT_EQ(lineas(), "1/1 1000101D 3000000 F-1 | 1/2 4000101H 3000000 F-1 | 2/1 1000102D 900000 F-2 | "
                        "2/2 4000102H 900000 F-2");
}

TEST_F(ImportacionContpaqI, LaBalanzaDaLosSaldosInicialesYLaDelAnioAnteriorSusSaldosFinales) {
    const std::string balanza = dir.texto() + "BALANZA.TXT";
    Escribe(balanza, Balanza({{"1000101", "Banco uno", "1,000.00", "1,300.00"},
                              {"4000101", "Mostrador", "-250.50", ""},
                              {"1000102", "Banco dos", "", "5.00"}}));
    archivos.fija("balanza", balanza);
    Escribe(dir.texto() + "CATALOGO.TXT", {Cuenta("1000101", "Banco uno", "", "A"), Cuenta("1000102", "Banco dos", "", "Z"),
                                           Cuenta("4000101", "Mostrador", "", "B")});
    ASSERT_EQ(Importa(36, {Poliza("20250110", "Ig", "1", "Venta"), Movimiento("1000101", "F", "0", "1.00", ""),
                           Movimiento("4000101", "F", "1", "1.00", "")}),
              ResultadoImportacion::Terminada);
    EXPECT_EQ(filas("SELECT Cuenta || ' ' || SaldoInicial AS f FROM Balanzas WHERE Cuenta IN ('1000101', '1000102', "
                    "'4000101') ORDER BY Cuenta"),
              "1000101 10000000 | 1000102 0 | 4000101 -2505000");
    // An account type with no nature is said, not guessed, by the chart and by the balance.
    EXPECT_EQ(bitacora("Referencia LIKE '%Naturaleza%'"),
              "La Cuenta 1000102 no tiene asignada Naturaleza. [|1000102]\n"
              "La Cuenta 1000102 no tiene asignada Naturaleza. [|1000102]");

    ImportadorContpaqI imp(36, {});
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaSaldosAnioAnterior(s, imp, balanza), ResultadoImportacion::Terminada);
    EXPECT_EQ(filas("SELECT Cuenta || ' ' || Saldo_Anterior_Final AS f FROM Cuentas WHERE Tipo = 'D' ORDER BY Cuenta"),
              "1000101 13000000 | 1000102 50000 | 4000101 0");
}

TEST_F(ImportacionContpaqI, LasReferenciasNuevasLlegaALaCedulaUnaLineaPorRenglon) {
    // Two equal lines (account, kind and amount) in one voucher, and the
    // schedule rows the auditor reviewed on them under the old references.
    ASSERT_EQ(Importa(95, {Poliza("20250110", "Ig", "1", "Venta"), Movimiento("1000101", "A-nueva", "0", "100.00", ""),
                           Movimiento("1000101", "B-nueva", "0", "100.00", ""),
                           Movimiento("4000101", "C-nueva", "1", "200.00", ""), Poliza("20250211", "Ig", "2", "Otra"),
                           Movimiento("1000101", "D-nueva", "0", "5.00", ""),
                           Movimiento("4000101", "D-nueva", "1", "5.00", "")}),
              ResultadoImportacion::Terminada);
    BaseDatos& db = *s.DbEmpresa;
    auto renglon = [&](const std::string& poliza, const std::string& fecha, const std::string& cuenta,
                       const std::string& tipoMov, long importe, const std::string& referencia) {
        db.ejecuta("INSERT INTO CedAnalitica (Poliza, Tipo, Fecha, Cuenta, TipoMov, Importe, Referencia, Observaciones) "
                   "VALUES (?, 'Ig', ?, ?, ?, ?, ?, ?)",
                   poliza, fecha, cuenta, tipoMov, importe, referencia, "revisado " + referencia);
        return db.escalar("SELECT last_insert_rowid()").entero();
    };
    renglon("1", "2025-01-10", "1000101", "D", 1000000, "A-vieja");
    const auto segundo = renglon("1", "2025-01-10", "1000101", "D", 1000000, "B-vieja");
    renglon("1", "2025-01-10", "1000101", "D", 1000000, "sobra");   // a third row finds no line left
    renglon("9", "2025-01-10", "1000101", "D", 1000000, "sin-poliza");
    renglon("2", "2025-02-11", "1000101", "D", 50000, "febrero");
    db.ejecuta("INSERT INTO CedNoDeducibles (Poliza, Tipo, Fecha, Cuenta, TipoMov, Importe, Referencia, IdCedAnalitica) "
               "VALUES ('1', 'Ig', '2025-01-10', '1000101', 'D', 1000000, 'B-vieja', ?)",
               segundo);

    ActualizaReferenciasMes(s, 1);
    EXPECT_EQ(filas("SELECT Referencia || ' (' || Observaciones || ')' AS f FROM CedAnalitica ORDER BY IdCedAnalitica"),
              "A-nueva (revisado A-vieja) | B-nueva (revisado B-vieja) | sobra (revisado sobra) | "
              "sin-poliza (revisado sin-poliza) | febrero (revisado febrero)");
    EXPECT_EQ(filas("SELECT Referencia AS f FROM CedNoDeducibles"), "B-nueva");
    // Each month stands alone: running it again serves the lines afresh.
    ActualizaReferenciasMes(s, 2);
    ActualizaReferenciasMes(s, 1);
    EXPECT_EQ(filas("SELECT Referencia AS f FROM CedAnalitica ORDER BY IdCedAnalitica"),
              "A-nueva | B-nueva | sobra | sin-poliza | D-nueva");
}

TEST_F(ImportacionContpaqI, ConReferenciasActualizadasElTrabajoDeRevisionSigueASuPartida) {
    auto venta = [](const std::string& a, const std::string& b) {
        return std::vector<std::string>{Poliza("20250110", "Ig", "1", "Venta"), Movimiento("1000101", a, "0", "100.00", ""),
                                        Movimiento("1000101", b, "0", "100.00", ""),
                                        Movimiento("4000101", "C", "1", "200.00", "")};
    };
    ASSERT_EQ(Importa(95, venta("A-vieja", "B-vieja")), ResultadoImportacion::Terminada);
    // Every movement of the bank is in the schedule, each with its review.
    BaseDatos& db = *s.DbEmpresa;
    db.ejecuta("INSERT INTO CedAnaliticaMaster (IdCriterio, CtaIntegracion) VALUES (4, '1000101')");
    for (auto [partida, obs] : {std::pair{1, "uno"}, std::pair{2, "dos"}})
        db.ejecuta("INSERT INTO CedAnalitica (IdCriterio, IdPoliza, Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, "
                   "Importe, Observaciones, VerObs) SELECT 4, d.IdPoliza, p.Poliza, p.Tipo, p.Fecha, d.Cuenta, "
                   "d.Referencia, d.TipoMov, d.Importe, ?, 0 FROM Polizas p JOIN Polizas_Detalle d ON d.IdPoliza = "
                   "p.IdPoliza WHERE d.Partida = ?",
                   obs, partida);
    auto cedula = [&] {
        return filas("SELECT Referencia || ' (' || ifnull(Observaciones, '') || ')' AS f FROM CedAnalitica "
                     "ORDER BY Referencia");
    };

    // A commit that fails at its very end leaves the schedule as it was.
    OpcionesEjecucion rompe;
    rompe.antesDePaso = [](const std::string& paso) {
        if (paso == "confirmación") throw std::runtime_error("disco lleno");
    };
    ASSERT_EQ(Importa(95, venta("A-nueva", "B-nueva"), {"actualiza-referencia"}, rompe), ResultadoImportacion::Fallida);
    EXPECT_EQ(cedula(), "A-vieja (uno) | B-vieja (dos)");

    // The client renamed both references: refreshed in the commit, the
    // schedule finds its two equal movements again, each with its own work.
    ASSERT_EQ(Importa(95, venta("A-nueva", "B-nueva"), {"actualiza-referencia"}), ResultadoImportacion::Terminada)
        << bitacora();
    EXPECT_EQ(cedula(), "A-nueva (uno) | B-nueva (dos)");

    // Without the refresh the same change loses them.
    ASSERT_EQ(Importa(95, venta("A-3", "B-3")), ResultadoImportacion::ConPerdidas);
    EXPECT_EQ(cedula(), "A-3 () | B-3 ()");
}

// ------------------------------------------------------------ Command line

namespace {

struct Cli {
    CarpetaTemporal& dir;
    std::string base = dir.texto() + "base";
    ResultadoProceso operator()(const std::string& argumentos) const {
        return CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' VELMORANT_DATOS='" + dir.texto() + "datos' '" +
                            VELMORANT_CLI + "' " + argumentos);
    }
};

}  // namespace

TEST(ImportarContpaqICli, UnaEmpresaSeQuedaConElEnlaceQueLaImportoPrimero) {
    CarpetaTemporal dir;
    AjustesAislados ajustes;
    Cli cli{dir};
    ASSERT_EQ(cli("base crear '" + cli.base + "'").estado, 0);
    for (std::string empresa : {"UNO", "DOS"}) {
        auto r = cli("--base '" + cli.base + "' empresa crear --nombre-corto " + empresa + " --nombre " + empresa +
                     " --ejercicio 2025 --formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros");
        ASSERT_EQ(r.estado, 0) << r.salida;
    }
    Escribe(dir.texto() + "CATALOGO.TXT", kCatalogo);
    Escribe(dir.texto() + "CPOLIZAS.TXT", {Poliza("20250110", "Ig", "1", "Venta"),
                                           Movimiento("1000101", "F-1", "0", "300.00", ""),
                                           Movimiento("4000101", "F-1", "1", "300.00", "")});
    auto importa = [&](const std::string& empresa, int enlace, const std::string& mas = "") {
        return cli("--base '" + cli.base + "' --empresa " + empresa + " --ejercicio 2025 importar --enlace " +
                   std::to_string(enlace) + " --catalogo '" + dir.texto() + "CATALOGO.TXT' --polizas '" + dir.texto() +
                   "CPOLIZAS.TXT' --continuar" + mas);
    };
    auto r = importa("UNO", 36);
    ASSERT_EQ(r.estado, 0) << r.salida;
    r = importa("UNO", 95, " --actualiza-referencia");
    EXPECT_EQ(r.estado, 1) << r.salida;
    EXPECT_NE(r.salida.find("Esta empresa ya cuenta con una importación Previa utilizando el enlace de CONPAQ i - Anterior."),
              std::string::npos)
        << r.salida;
    ASSERT_EQ(importa("UNO", 36).estado, 0);

    ASSERT_EQ(importa("DOS", 95, " --replica-conceptos").estado, 0);
    r = importa("DOS", 36);
    EXPECT_EQ(r.estado, 1) << r.salida;
    EXPECT_NE(r.salida.find("enlace de CONPAQ i - Mejorado."), std::string::npos) << r.salida;
    EXPECT_EQ(importa("DOS", 95).estado, 0);

    // Both codings of the movement kind at once are wrong usage.
    EXPECT_EQ(importa("DOS", 95, " --tipo-01 --tipo-12").estado, 2);
    // The help names each option with its check box's caption.
    auto ayuda = cli("importar --enlace 95 --help");
    ASSERT_EQ(ayuda.estado, 0) << ayuda.salida;
    for (const char* t : {"--catalogo", "--polizas", "--balanza", "--incluir-uuid", "Incorporar UUID del archivo de Pólizas.",
                          "--replica-conceptos", "Replica Concepto de Póliza en Referencia", "--actualiza-referencia",
                          "Actualiza Referencia", "--tipo-01", "--tipo-12"})
        EXPECT_NE(ayuda.salida.find(t), std::string::npos) << t << "\n" << ayuda.salida;
    EXPECT_EQ(cli("importar --enlace 36 --help").salida.find("--incluir-uuid"), std::string::npos);
}
