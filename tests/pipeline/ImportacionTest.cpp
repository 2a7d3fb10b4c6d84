// The whole run through link 82 on small files: what a first import
// leaves, the period check, the decision at the inconsistency form, and the
// commit's atomicity when it breaks midway or the process dies.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "pipeline/Historial.h"
#include "pipeline/Importacion.h"
#include "pipeline/ReportesDecisiones.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"
#include "store/AltaBase.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"
#include "support/Muerte.h"

using namespace velmorant;

namespace {

const char* kCatalogo =
    "Cuenta|Descripcion|Naturaleza|Saldo\n"
    "100-00-00|Activo|D|1000\n"
    "100-01-00|Bancos|D|1000\n"
    "100-01-01|Banco uno|D|1000\n"
    "100-01-02|Banco dos|D|0\n"
    "400-00-00|Ventas|A|-1000\n"
    "400-01-00|Ventas nacionales|A|-1000\n"
    "400-01-01|Mostrador|A|-1000\n";

std::string Mes(int mes, int polizas) {
    std::string t = "Poliza|Tipo|Dia|Mes|Anio|Cuenta|Ref|Concepto|Cargo|Abono\n";
    for (int p = 1; p <= polizas; ++p) {
        std::string fecha = std::to_string(p) + "|" + std::to_string(mes) + "|2025";
        t += std::to_string(p) + "|Dr|" + fecha + "|100-01-01|cobro|Venta " + std::to_string(p) + "|200|0\n";
        t += std::to_string(p) + "|Dr|" + fecha + "|400-01-01|venta|Venta " + std::to_string(p) + "|0|200\n";
    }
    return t;
}

std::string LeeBytes(const std::string& ruta) {
    std::ifstream f(ruta, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
}

class ImportacionTest : public ::testing::Test {
protected:
    prueba::AjustesAislados ajustes;
    prueba::CarpetaTemporal dir;
    prueba::InteraccionGuionada ui;
    Sesion s;
    ArchivosImportacion archivos;

    void SetUp() override {
        std::string base = CreaBase(dir.texto() + "base");
        DatosEmpresaNueva d = prueba::EmpresaAcme();
        CreaEmpresa(base, d);
        escribe("catalogo.txt", kCatalogo);
        archivos.catalogo = dir.texto() + "catalogo.txt";
        for (int mes = 1; mes <= 5; ++mes) usaMes(mes, 3);
        inicia();
    }
    void inicia() {
        s = Sesion();
        s.interaccion = &ui;
        IniciaSesion(s, {dir.texto() + "base", "ACME", "2025"});
    }
    void escribe(const std::string& nombre, const std::string& texto) { std::ofstream(dir.texto() + nombre) << texto; }
    void usaMes(int mes, int polizas) {
        std::string nombre = "pol" + std::to_string(mes) + ".txt";
        escribe(nombre, Mes(mes, polizas));
        archivos.meses[static_cast<size_t>(mes - 1)] = dir.texto() + nombre;
    }
    ImportadorTextoDelimitado importador() {
        LecturaDelimitada l;
        l.separador = "|";
        auto& c = l.config;
        c.PIniCuenta = 1, c.PIniDescripcion = 2, c.PIniNaturaleza = 3, c.PIniSdoIni = 4;
        c.PIniNumPol = 1, c.PIniTipo = 2, c.PIniDia = 3, c.PIniMes = 4, c.PIniAnio = 5, c.PIniCtaPol = 6;
        c.PIniRef = 7, c.PIniConcept = 8, c.PIniCargo = 9, c.PIniAbono = 10;
        return ImportadorTextoDelimitado(l, false);
    }
    ResultadoImportacion importa(const OpcionesEjecucion& op = {}) {
        auto imp = importador();
        return EjecutaImportacion(s, imp, archivos, op);
    }
    std::string archivoEmpresa() { return ArchivoEmpresa(s.RutaEmpresa, "ACME", 2025); }
    std::string archivoEmpresas() { return RutaBaseDatos(s.RutaBase, kArchivoEmpresas); }
    Valor escalar(const std::string& sql) { return s.DbEmpresa->escalar(sql); }
    /// Every row of every table of the company but the import history,
    /// which a run that does not commit still writes.
    std::string contenidoEmpresa() { return prueba::ContenidoEmpresaSinHistorial(archivoEmpresa()); }
    std::string ultimoResultado() {
        return escalar("SELECT Resultado FROM HistorialImportaciones ORDER BY IdImportacion DESC LIMIT 1").texto();
    }
};

}  // namespace

TEST_F(ImportacionTest, PrimeraImportacionDejaCatalogoPolizasYBalanza) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    EXPECT_EQ(ui.mensajes.back().texto,
              "La importación de la información correspondiente a la empresa \r\nAcme  finalizó con éxito.");
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Cuentas").entero(), 7);
    EXPECT_EQ(escalar("SELECT group_concat(Cuenta) FROM (SELECT Cuenta FROM Cuentas WHERE Tipo='A' ORDER BY 1)").texto(),
              "100,10001,400,40001");
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Polizas").entero(), 15);
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Polizas_Detalle").entero(), 30);
    // 1000 opening plus five months of 3 × 200 collected.
    EXPECT_EQ(escalar("SELECT SdoFin05 FROM Balanzas WHERE Cuenta='1000101'").moneda().texto(), "4000");
    EXPECT_EQ(escalar("SELECT SdoFin05 FROM Balanzas WHERE Cuenta='100'").moneda().texto(), "4000");
    EXPECT_EQ(escalar("SELECT SdoFin05 FROM Balanzas WHERE Cuenta='400'").moneda().texto(), "-4000");
    EXPECT_TRUE(escalar("SELECT name FROM pragma_database_list WHERE name='BaseEmpresas'").esNulo())
        << "the company table is detached after the commit";
    EXPECT_EQ(s.DbEmpresas->escalar("SELECT IdSistema FROM Empresas").entero(), 82);
}

TEST_F(ImportacionTest, UnaFallaEnMedioDelCommitDejaLaEmpresaIntacta) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    usaMes(2, 4);  // a second delivery: one voucher more in February
    inicia();
    ui.decisiones = {DecisionInconsistencias::Continuar};
    const std::string antesEmpresa = contenidoEmpresa(), antesEmpresas = LeeBytes(archivoEmpresas());
    OpcionesEjecucion falla;
    falla.antesDePaso = [](const std::string& paso) {
        if (paso == "AplicaPolizasABalanza 03") throw std::runtime_error("disco lleno");
    };
    EXPECT_EQ(importa(falla), ResultadoImportacion::Fallida);
    ASSERT_FALSE(ui.mensajes.empty());
    EXPECT_NE(ui.mensajes.back().texto.find("falló el paso AplicaPolizasABalanza 03"), std::string::npos)
        << ui.mensajes.back().texto;
    EXPECT_NE(ui.mensajes.back().texto.find("disco lleno"), std::string::npos);
    EXPECT_EQ(ultimoResultado(), kResultadoFallida);
    s.DbEmpresa.reset();
    s.DbEmpresas.reset();
    EXPECT_EQ(contenidoEmpresa(), antesEmpresa);
    EXPECT_EQ(LeeBytes(archivoEmpresas()), antesEmpresas);
}

TEST_F(ImportacionTest, SiLaTransaccionNoPuedeEmpezarElMensajeLoDice) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    usaMes(2, 4);  // a change, so that the user is asked
    inicia();
    s.DbEmpresa->ejecutaScript("PRAGMA busy_timeout=50");
    // While the user reads the inconsistencies, another program starts
    // writing on the company.
    struct Bloqueo : prueba::InteraccionGuionada {
        std::string archivo;
        std::unique_ptr<BaseDatos> otro;
        std::unique_ptr<Transaccion> escribe;
        DecisionInconsistencias decideInconsistencias(const std::string&, const ConteoInconsistencias&) override {
            otro = std::make_unique<BaseDatos>(archivo);
            escribe = std::make_unique<Transaccion>(*otro);
            return DecisionInconsistencias::Continuar;
        }
    } bloqueo;
    bloqueo.archivo = archivoEmpresa();
    s.interaccion = &bloqueo;
    EXPECT_EQ(importa(), ResultadoImportacion::Fallida);
    // The step's message; the history's row of the failed run cannot be
    // written either while the other program holds the company, and says so.
    bool dicho = false;
    for (const auto& m : bloqueo.mensajes) dicho = dicho || m.texto.find("falló el paso inicio de la transacción") != std::string::npos;
    EXPECT_TRUE(dicho);
    bloqueo.escribe.reset();
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Polizas").entero(), 15);
}

TEST_F(ImportacionTest, UnProcesoMuertoEnMedioDelCommitNoDejaLaEmpresaAMedias) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    usaMes(4, 1);
    inicia();
    ui.decisiones = {DecisionInconsistencias::Continuar};
    const std::string antes = LeeBytes(archivoEmpresa());
    OpcionesEjecucion muere;
    muere.antesDePaso = [](const std::string& paso) {
        if (paso == "GuardaPolizas 04") std::abort();
    };
    EXPECT_DEATH(importa(muere), "");
    // The next open finds the journal the dead process left and undoes it.
    inicia();
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Polizas").entero(), 15);
    s.DbEmpresa.reset();
    s.DbEmpresas.reset();
    EXPECT_EQ(LeeBytes(archivoEmpresa()), antes);
}

TEST_F(ImportacionTest, UnaCuentaDadaDeBajaYSinUsoSeBorraDeCatalogoYBalanza) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    EXPECT_EQ(escalar("SELECT Saldo_Anterior_Final FROM Cuentas WHERE Cuenta='1000102'").moneda().texto(), "0")
        << "an account added by the commit holds 0, not Null";
    // The second delivery no longer has "Banco dos", which nothing uses.
    std::string sinBancoDos = kCatalogo;
    sinBancoDos.erase(sinBancoDos.find("100-01-02|Banco dos|D|0\n"), std::string("100-01-02|Banco dos|D|0\n").size());
    escribe("catalogo.txt", sinBancoDos);
    inicia();
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Cuentas WHERE Cuenta='1000102'").entero(), 0);
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Balanzas WHERE Cuenta='1000102'").entero(), 0);
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Cuentas").entero(), 6);
    BaseDatos log(RutaAlmacen(s, kInconsisImpTmp), BaseDatos::Modo::SoloLectura);
    EXPECT_EQ(log.escalar("SELECT ClasifError FROM InconsisImpTmp WHERE Cuenta='1000102'").texto(), "B");
}

TEST_F(ImportacionTest, UnNumeroOUnaCuentaMasLargosQueSuCampoNoDetienenLaCorrida) {
    // An unbalanced voucher whose number has 21 characters, and a line on an
    // unknown account of 60: both reach the log, within its widths.
    escribe("pol1.txt", "Poliza|Tipo|Dia|Mes|Anio|Cuenta|Ref|Concepto|Cargo|Abono\n"
                        "F-2024-000012345-ABCD|Dr|1|1|2025|100-01-01|r|c|200|0\n"
                        "F-2024-000012345-ABCD|Dr|1|1|2025|400-01-01|r|c|0|100\n"
                        "2|Dr|2|1|2025|" + std::string(60, '7') + "|r|c|0|0\n");
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    EXPECT_EQ(escalar("SELECT Poliza FROM Polizas WHERE IdPoliza = 1").texto(), "F-2024-000012345-ABCD");
    BaseDatos log(RutaAlmacen(s, kInconsisImpTmp), BaseDatos::Modo::SoloLectura);
    EXPECT_EQ(log.escalar("SELECT Poliza FROM InconsisImpTmp WHERE ClasifError = 'D'").texto(), "F-2024-000012345-AB…");
    EXPECT_EQ(log.escalar("SELECT Cuenta FROM InconsisImpTmp WHERE ClasifError = 'O'").texto(),
              std::string(49, '7') + "…");
}

TEST_F(ImportacionTest, ElSuperJournalDeUnCommitMuertoSeQuitaAlIniciarYLoDemasSeDeshace) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    const std::string empresa = archivoEmpresa(), empresas = archivoEmpresas();
    const std::string trabajo = s.RutaEmpresa + "Trabajo.sqlite";  // stands for a store of the run
    auto superJournales = [&] {
        int n = 0;
        for (auto& f : std::filesystem::directory_iterator(s.RutaEmpresa))
            n += f.path().filename().string().find("-mj") != std::string::npos;
        return n;
    };
    for (bool almacenBorrado : {true, false}) {
        SCOPED_TRACE(almacenBorrado ? "the run's store deleted, as BorraTemporales does" : "the run's store kept");
        s.DbEmpresa.reset();
        s.DbEmpresas.reset();
        std::filesystem::remove(trabajo);
        {
            BaseDatos t(trabajo, BaseDatos::Modo::Crear);
            t.ejecutaScript("CREATE TABLE X (a)");
        }
        // Killed inside the commit over the three files, as it removes the
        // super-journal: the moment the commit would have become final.
        ASSERT_TRUE(prueba::MuereAlBorrar("-mj", [&] {
            BaseDatos db(empresa);
            db.adjunta(empresas, "E");
            db.adjunta(trabajo, "T");
            db.ejecutaScript("BEGIN; UPDATE main.Polizas SET Concepto = 'a medias'; "
                             "UPDATE E.Empresas SET Nombre = 'a medias'; INSERT INTO T.X VALUES (1); COMMIT");
        }));
        ASSERT_EQ(superJournales(), 1);
        if (almacenBorrado) {
            std::filesystem::remove(trabajo);
            std::filesystem::remove(trabajo + "-journal");
        }
        inicia();
        EXPECT_EQ(superJournales(), 0);
        EXPECT_EQ(escalar("SELECT COUNT(*) FROM Polizas WHERE Concepto = 'a medias'").entero(), 0);
        EXPECT_EQ(s.DbEmpresas->escalar("SELECT Nombre FROM Empresas").texto(), "Acme");
        if (!almacenBorrado) {
            BaseDatos t(trabajo, BaseDatos::Modo::SoloLectura);
            EXPECT_EQ(t.escalar("SELECT COUNT(*) FROM X").entero(), 0);
        }
    }
}

TEST_F(ImportacionTest, UnPeriodoQueNoLlegaAlUltimoMesImportadoSeRehusa) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    struct Caso {
        std::vector<int> meses;
        ResultadoImportacion esperado;
    } casos[] = {
        {{1, 2, 3}, ResultadoImportacion::ArchivosFaltantes},  // a re-import must cover months 1 to 5
    };
    for (auto& c : casos) {
        archivos.meses = {};
        for (int m : c.meses) usaMes(m, 3);
        inicia();
        ui.mensajes.clear();
        EXPECT_EQ(importa(), c.esperado);
        ASSERT_FALSE(ui.mensajes.empty());
        EXPECT_EQ(ui.mensajes.back().texto, "Es necesario completar la selección de archivos a importar");
    }
    // The months' files all given, but the one of May holds only April's
    // vouchers: the new period stops before the last imported month.
    escribe("pol5.txt", Mes(4, 1));
    for (int m = 1; m <= 5; ++m) archivos.meses[static_cast<size_t>(m - 1)] = dir.texto() + (m == 5 ? "pol5.txt" : "pol" + std::to_string(m) + ".txt");
    for (int m = 1; m <= 4; ++m) usaMes(m, 3);
    inicia();
    ui.mensajes.clear();
    EXPECT_EQ(importa(), ResultadoImportacion::PeriodoInvalido);
    ASSERT_FALSE(ui.mensajes.empty());
    EXPECT_NE(ui.mensajes.back().texto.find("la última importación se realizó al mes de MAYO"), std::string::npos)
        << ui.mensajes.back().texto;
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Polizas").entero(), 15);
}

TEST_F(ImportacionTest, UnLogDeCedulasDanadoNoDetieneLasImportaciones) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    const std::string log = RutaAlmacen(s, kInconsisImpTmpDet);
    std::ofstream(log, std::ios::binary | std::ios::trunc) << std::string(5000, '#');
    inicia();  // a re-import: the schedule's work stores are all opened
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    bool avisado = false;
    for (auto& m : ui.mensajes) avisado = avisado || m.texto.find("InconsisImpTmpDet_danado_") != std::string::npos;
    EXPECT_TRUE(avisado);
    EXPECT_NO_THROW(HayInconsistenciasDet(s.RutaEmpresa)) << "the new log reads";
}

TEST_F(ImportacionTest, UnCatalogoConCodificacionMixtaSeLeeYSeAvisa) {
    std::string catalogo = kCatalogo;
    catalogo.replace(catalogo.find("Banco uno"), 9, "Banco Espa\xC3\xB1" "a");
    catalogo.replace(catalogo.find("Banco dos"), 9, "Banco Dep\xF3sito");  // one byte in Windows-1252
    catalogo.replace(catalogo.find("Ventas nacionales"), 17, "Ventas M\xC3\xA9xico");
    escribe("catalogo.txt", catalogo);
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    EXPECT_EQ(escalar("SELECT Descripcion FROM Cuentas WHERE Cuenta='1000101'").texto(), "Banco España");
    EXPECT_EQ(escalar("SELECT Descripcion FROM Cuentas WHERE Cuenta='1000102'").texto(), "Banco Depósito");
    EXPECT_EQ(escalar("SELECT Descripcion FROM Cuentas WHERE Cuenta='40001'").texto(), "Ventas México");
    ASSERT_FALSE(ui.mensajes.empty());
    EXPECT_EQ(ui.mensajes[0].tipo, TipoMensaje::Aviso);
    EXPECT_NE(ui.mensajes[0].texto.find("catalogo.txt mezcla codificaciones"), std::string::npos) << ui.mensajes[0].texto;
    EXPECT_NE(ui.mensajes[0].texto.find("Se leyó como UTF-8"), std::string::npos) << ui.mensajes[0].texto;
}

TEST_F(ImportacionTest, LosTiposDePolizaNuevosSoloEntranConLaImportacion) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    auto tipos = [&] { return escalar("SELECT group_concat(Tipo, ',') FROM (SELECT Tipo FROM CatTipoPoliza ORDER BY 1)").texto(); };
    ASSERT_EQ(tipos(), "Dr");
    std::string conIngreso = Mes(3, 3);
    conIngreso += "9|Ig|9|3|2025|100-01-01|cobro|Ingreso|5|0\n9|Ig|9|3|2025|400-01-01|venta|Ingreso|0|5\n";
    escribe("pol3.txt", conIngreso);

    // Refused for its period: May is missing.
    archivos.meses[4].clear();
    archivos.meses[3].clear();
    inicia();
    EXPECT_EQ(importa(), ResultadoImportacion::ArchivosFaltantes);
    escribe("pol5.txt", Mes(4, 1));
    usaMes(4, 3);
    archivos.meses[4] = dir.texto() + "pol5.txt";
    inicia();
    EXPECT_EQ(importa(), ResultadoImportacion::PeriodoInvalido);
    EXPECT_EQ(tipos(), "Dr");

    // Cancelled at the inconsistency form.
    usaMes(5, 3);
    escribe("pol3.txt", conIngreso);
    inicia();
    ui.decisiones = {DecisionInconsistencias::Cancelar};
    EXPECT_THROW(importa(), ProgramaTerminado);
    inicia();
    EXPECT_EQ(tipos(), "Dr");

    // Committed.
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    EXPECT_EQ(tipos(), "Dr,Ig");
}

TEST_F(ImportacionTest, CancelarEnLasInconsistenciasDejaLaEmpresaYElLog) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    usaMes(3, 2);  // a voucher dropped in March
    inicia();
    const std::string antes = contenidoEmpresa();
    ui.decisiones = {DecisionInconsistencias::Cancelar};
    EXPECT_THROW(importa(), ProgramaTerminado);
    EXPECT_EQ(ui.mensajes.back().texto, kMensajeImportacionCancelada);
    EXPECT_TRUE(HayInconsistencias(s.RutaEmpresa));
    EXPECT_EQ(ultimoResultado(), kResultadoCancelada);
    s.DbEmpresa.reset();
    s.DbEmpresas.reset();
    EXPECT_EQ(contenidoEmpresa(), antes);

    // Continuing instead commits the second delivery.
    inicia();
    ui.decisiones = {DecisionInconsistencias::Continuar};
    EXPECT_EQ(importa(), ResultadoImportacion::Terminada);
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Polizas").entero(), 14);
}

TEST_F(ImportacionTest, SaldosDelAnioAnteriorSoloConInformacionActualYEnSuCampo) {
    escribe("anterior.txt", "Cuenta|Descripcion|Saldo\n100-01-01|Banco uno|750.25\n400-01-01|Mostrador|-750.25\n");
    const std::string ruta = dir.texto() + "anterior.txt";
    auto imp = importador();
    imp = ImportadorTextoDelimitado(
        [&] {
            LecturaDelimitada l = imp.lectura();
            l.config.PIniCtaSdoAnt = 1, l.config.PIniDescSdoAnt = 2, l.config.PIniSdoFinAnt = 3;
            return l;
        }(),
        false);
    // Without vouchers there is nothing to hang the prior year on.
    EXPECT_EQ(EjecutaSaldosAnioAnterior(s, imp, ruta), ResultadoImportacion::ArchivosFaltantes);
    EXPECT_EQ(ui.mensajes.back().texto, "Para importar los saldos finales del ejercicio anterior,\r\nes necesario que "
                                        "exista información actual\r");
    EXPECT_EQ(EjecutaSaldosAnioAnterior(s, imp, ""), ResultadoImportacion::ArchivosFaltantes);

    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    inicia();
    ui.decisiones = {DecisionInconsistencias::Continuar};  // the accounts exist: each one is remarked
    ASSERT_EQ(EjecutaSaldosAnioAnterior(s, imp, ruta), ResultadoImportacion::Terminada);
    EXPECT_EQ(ui.mensajes.back().texto,
              "La importación de los saldos finales del año anterior de la empresa \r\nAcme  finalizó con éxito.");
    EXPECT_EQ(escalar("SELECT Saldo_Anterior_Final FROM Cuentas WHERE Cuenta='1000101'").moneda().texto(), "750.25");
    EXPECT_EQ(escalar("SELECT Saldo_Anterior_Final FROM Cuentas WHERE Cuenta='4000101'").moneda().texto(), "-750.25");
    // The year's own figures are not touched.
    EXPECT_EQ(escalar("SELECT SdoFin05 FROM Balanzas WHERE Cuenta='1000101'").moneda().texto(), "4000");
}
