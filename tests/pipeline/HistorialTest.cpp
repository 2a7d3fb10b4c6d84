// The import history: the row of a committed run with its files, hashes and
// exact control totals; the rows of runs refused for their period,
// cancelled or closed at the inconsistency form, which change nothing else
// of the company; and the constancia of a run.

#include <filesystem>

#include "pipeline/ConstanciaImportacion.h"
#include "pipeline/ReportesDecisiones.h"
#include "pipeline/Respaldo.h"
#include "session/ProgramaTerminado.h"
#include "pipeline/EntornoHistorial.h"

using namespace velmorant;
namespace fs = std::filesystem;

namespace {

class Historial : public prueba::EntornoHistorial {};

// The hash as another program computes it.
std::string Sha256Sum(const std::string& ruta) {
    auto r = prueba::CorreProceso("sha256sum '" + ruta + "'");
    return r.estado == 0 ? r.salida.substr(0, 64) : "";
}

}  // namespace

TEST(HuellaArchivo, Sha256ConocidosYArchivosQueNoEstan) {
    prueba::CarpetaTemporal dir;
    std::ofstream(dir.texto() + "abc.txt", std::ios::binary) << "abc";
    std::ofstream(dir.texto() + "vacio.txt", std::ios::binary);
    EXPECT_EQ(Sha256Archivo(dir.texto() + "abc.txt"),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Sha256Archivo(dir.texto() + "vacio.txt"),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(Sha256Archivo(dir.texto() + "no-esta.txt"), "");

    // Roles in their order; a folder is each file under it, by name; a
    // path that is not there is kept without size or hash.
    fs::create_directories(dir.ruta() / "empresa" / "sub");
    std::ofstream(dir.texto() + "empresa/b.dbf") << "bb";
    std::ofstream(dir.texto() + "empresa/sub/a.dbf") << "a";
    ArchivosImportacion a;
    a.catalogo = dir.texto() + "abc.txt";
    a.meses[12] = dir.texto() + "no-esta.txt";
    a.fija("base-datos", dir.texto() + "empresa");
    auto r = ArchivosDeCorrida(a);
    ASSERT_EQ(r.size(), 4u);
    EXPECT_EQ(r[0].papel, "catalogo");
    EXPECT_EQ(r[0].tamano, std::optional<std::int64_t>(3));
    EXPECT_EQ(r[1].papel, "mes 13");
    EXPECT_FALSE(r[1].tamano);
    EXPECT_EQ(r[1].sha256, "");
    EXPECT_EQ(r[2].ruta, dir.texto() + "empresa/b.dbf");
    EXPECT_EQ(r[3].ruta, dir.texto() + "empresa/sub/a.dbf");
    EXPECT_EQ(r[3].papel, "base-datos");
}

TEST_F(Historial, UnaImportacionConfirmadaDejaArchivosHuellasYTotalesExactos) {
    // Amounts beyond a double's exact range and with four decimals.
    usaMes(1, 2, "12345678901234.5678");
    usaMes(3, 1, "0.0001");
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    auto filas = historial();
    ASSERT_EQ(filas.size(), 1u);
    auto r = *LeeRegistroHistorial(*s.DbEmpresa, filas[0].id);
    EXPECT_EQ(r.id, 1);
    EXPECT_EQ(r.operacion, kOperacionImportacion);
    EXPECT_EQ(r.idSistema, 82);
    EXPECT_EQ(r.resultado, kResultadoConfirmada);
    EXPECT_EQ(r.decision, "Sin inconsistencias");
    EXPECT_EQ(r.usuario, UsuarioDelSistema());
    EXPECT_FALSE(r.usuario.empty());
    EXPECT_EQ(r.nombCorto, "ACME");
    EXPECT_EQ(r.ejercicio, 2025);
    EXPECT_EQ(r.fechaHora.size(), 19u);
    EXPECT_EQ(r.cuentas, std::optional<std::int64_t>(6));
    EXPECT_EQ(r.polizas, std::optional<std::int64_t>(5));
    EXPECT_EQ(r.partidas, std::optional<std::int64_t>(10));
    EXPECT_TRUE(r.inconsistencias.empty());
    EXPECT_EQ(r.respaldo, fs::path(RutaRespaldo(s, 1)).filename().string());

    ASSERT_EQ(r.archivos.size(), 4u);
    const char* papeles[] = {"catalogo", "mes 01", "mes 02", "mes 03"};
    for (size_t i = 0; i < r.archivos.size(); ++i) {
        const auto& a = r.archivos[i];
        EXPECT_EQ(a.papel, papeles[i]);
        EXPECT_EQ(a.tamano, std::optional<std::int64_t>(static_cast<std::int64_t>(fs::file_size(a.ruta))));
        EXPECT_EQ(a.sha256, Sha256Sum(a.ruta)) << a.ruta;
    }
    EXPECT_EQ(r.archivos[0].ruta, archivos.catalogo);

    ASSERT_EQ(r.totales.size(), 3u);
    EXPECT_EQ(r.totales[0].mes, 1);
    EXPECT_EQ(r.totales[0].polizas, 2);
    EXPECT_EQ(r.totales[0].partidas, 4);
    EXPECT_EQ(r.totales[0].cargos.texto(), "24691357802469.1356");
    EXPECT_EQ(r.totales[0].abonos.texto(), "24691357802469.1356");
    EXPECT_EQ(r.totales[1].cargos.texto(), "400");
    EXPECT_EQ(r.totales[2].cargos.texto(), "0.0001");
    EXPECT_EQ(r.totales[2].abonos.texto(), "0.0001");

    // The constancia names the company, the files with their hashes and the
    // totals to the last decimal.
    Reporte c = ConstanciaImportacion(r, Fecha(2025, 3, 5));
    std::string html = HtmlDeReporte(c);
    for (const std::string& esperado :
         {std::string("Constancia de importación número 1"), std::string("Acme, S.A."), std::string("2025"),
          r.archivos[0].sha256, r.archivos[0].ruta, std::string("$24,691,357,802,469.1356"),
          std::string("$24,691,357,802,869.1357"), std::string("82 - Texto Generico delimitado por caracter")})
        EXPECT_NE(html.find(esperado), std::string::npos) << esperado;
    std::string pdf = dir.texto() + "constancia.pdf";
    GuardaReporte(c, pdf);
    auto texto = prueba::CorreProceso("pdftotext -layout '" + pdf + "' -");
    ASSERT_EQ(texto.estado, 0);
    EXPECT_NE(texto.salida.find("Constancia de importación número 1"), std::string::npos) << texto.salida;
    EXPECT_NE(texto.salida.find("$24,691,357,802,869.1357"), std::string::npos) << texto.salida;
}

TEST_F(Historial, LasCorridasQueNoConfirmanDejanSuFilaYNadaMas) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    const std::string antes = contenidoEmpresa();

    // March's file holds February's vouchers: the period stops before the
    // last imported month.
    const std::string marzo = archivos.meses[2];
    archivos.meses[2] = archivos.meses[1];
    EXPECT_EQ(importa(), ResultadoImportacion::PeriodoInvalido);
    archivos.meses[2] = marzo;

    usaMes(3, 1);  // a voucher dropped in March: one class-B finding
    EXPECT_THROW(importa({DecisionInconsistencias::Cancelar}), ProgramaTerminado);
    EXPECT_EQ(importa({DecisionInconsistencias::Cerrar}), ResultadoImportacion::NoContinuada);

    EXPECT_EQ(contenidoEmpresa(), antes);
    auto filas = historial();
    ASSERT_EQ(filas.size(), 4u);
    struct Esperado {
        const char* resultado;
        const char* decision;
        std::int64_t bajas;
    } esperados[] = {{kResultadoPeriodoInvalido, "", 2},  // March's two vouchers not found
                     {kResultadoCancelada, "Cancelar", 1},
                     {kResultadoNoContinuada, "Cerrada sin continuar", 1}};
    for (size_t i = 0; i < 3; ++i) {
        const auto& f = filas[i + 1];
        const auto& e = esperados[i];
        EXPECT_EQ(f.id, static_cast<long>(i + 2));
        EXPECT_EQ(f.resultado, e.resultado);
        EXPECT_EQ(f.decision, e.decision);
        EXPECT_EQ(f.inconsistencias.count("B") ? f.inconsistencias.at("B") : 0, e.bajas) << f.resultado;
        EXPECT_EQ(f.respaldo, "") << "no copy is made for a run that never reaches the commit";
        EXPECT_TRUE(f.polizas.has_value()) << "what was read is counted all the same";
        EXPECT_EQ(LeeRegistroHistorial(*s.DbEmpresa, f.id)->archivos.size(), 4u);
    }
    // Only the committed run's copy exists.
    auto copias = RespaldosDeEmpresa(s);
    ASSERT_EQ(copias.size(), 1u);
    EXPECT_EQ(copias[0].numero, 1);
}

TEST_F(Historial, UnaConfirmacionQueFallaQuedaComoFallidaSinCopia) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    usaMes(2, 3);
    const std::string antes = contenidoEmpresa();
    OpcionesEjecucion falla;
    falla.antesDePaso = [](const std::string& paso) {
        if (paso == "confirmación") throw std::runtime_error("disco lleno");
    };
    EXPECT_EQ(importa({DecisionInconsistencias::Continuar}, falla), ResultadoImportacion::Fallida);
    EXPECT_EQ(contenidoEmpresa(), antes);
    auto filas = historial();
    ASSERT_EQ(filas.size(), 2u);
    EXPECT_EQ(filas[1].resultado, kResultadoFallida);
    EXPECT_EQ(filas[1].decision, "Continuar");
    EXPECT_EQ(filas[1].detalle, "Falló el paso confirmación: disco lleno");
    EXPECT_EQ(RespaldosDeEmpresa(s).size(), 1u);
    EXPECT_EQ(ImportacionPorDeshacer(*s.DbEmpresa)->id, 1);
}

TEST_F(Historial, LosSaldosDelAnioAnteriorQuedanComoSuOperacion) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    escribe("anterior.txt", "Cuenta|Descripcion|Saldo\n100-01-01|Banco uno|750.25\n400-01-01|Mostrador|-750.25\n");
    LecturaDelimitada l = importador().lectura();
    l.config.PIniCtaSdoAnt = 1, l.config.PIniDescSdoAnt = 2, l.config.PIniSdoFinAnt = 3;
    ImportadorTextoDelimitado imp(l, false);
    inicia();
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaSaldosAnioAnterior(s, imp, dir.texto() + "anterior.txt"), ResultadoImportacion::Terminada);
    auto r = *LeeRegistroHistorial(*s.DbEmpresa, 2);
    EXPECT_EQ(r.operacion, kOperacionSaldosAnioAnterior);
    EXPECT_EQ(r.resultado, kResultadoConfirmada);
    EXPECT_EQ(r.saldosAnioAnterior, std::optional<std::int64_t>(2));
    EXPECT_FALSE(r.polizas.has_value());
    ASSERT_EQ(r.archivos.size(), 1u);
    EXPECT_EQ(r.archivos[0].papel, "saldos-anterior");
    EXPECT_EQ(r.archivos[0].sha256, Sha256Sum(dir.texto() + "anterior.txt"));
    EXPECT_EQ(ImportacionPorDeshacer(*s.DbEmpresa)->id, 2) << "a prior-year run is undone like an import";
}
