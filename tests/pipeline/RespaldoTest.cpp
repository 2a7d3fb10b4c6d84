// The copy of the company before each commit, kept five deep, and the undo
// of the last committed import: exact, recorded, and all or nothing.

#include <filesystem>

#include "pipeline/Respaldo.h"
#include "session/ProgramaTerminado.h"
#include "pipeline/EntornoHistorial.h"

using namespace velmorant;
namespace fs = std::filesystem;

namespace {

class Respaldo : public prueba::EntornoHistorial {
protected:
    /// Vouchers of March in the copy of run `n`.
    std::int64_t polizasDeMarzoEnCopia(long n) {
        BaseDatos copia(RutaRespaldo(s, n), BaseDatos::Modo::SoloLectura);
        return copia.escalar("SELECT COUNT(*) FROM Polizas WHERE Month(Fecha) = 3").entero();
    }
    ResultadoDeshacer deshace(bool respuesta) {
        inicia();
        ui.respuestas = {respuesta};
        return DeshaceUltimaImportacion(s);
    }
};

}  // namespace

TEST_F(Respaldo, CadaConfirmacionGuardaLaEmpresaDeAntesYSeConservanCinco) {
    // Run n brings n vouchers in March: the copy of run n holds n - 1.
    for (int n = 1; n <= 7; ++n) {
        usaMes(3, n);
        ASSERT_EQ(importa({DecisionInconsistencias::Continuar}), ResultadoImportacion::Terminada) << n;
    }
    auto copias = RespaldosDeEmpresa(s);
    ASSERT_EQ(copias.size(), 5u);
    for (size_t i = 0; i < copias.size(); ++i) {
        const long n = static_cast<long>(i + 3);
        EXPECT_EQ(copias[i].numero, n);
        EXPECT_EQ(fs::path(copias[i].ruta).parent_path(), fs::path(archivoEmpresa()).parent_path());
        EXPECT_EQ(fs::path(copias[i].ruta).filename().string(), "ACME_2025.respaldo-000" + std::to_string(n) + ".sqlite");
        EXPECT_EQ(polizasDeMarzoEnCopia(n), n - 1);
        EXPECT_EQ(LeeRegistroHistorial(*s.DbEmpresa, n)->respaldo, fs::path(copias[i].ruta).filename().string());
    }
    // The copy keeps the company's row as the run found it.
    BaseDatos copia(RutaRespaldo(s, 3), BaseDatos::Modo::SoloLectura);
    EXPECT_EQ(copia.escalar("SELECT IdSistema FROM Respaldo_Empresas").entero(), 82);
    EXPECT_FALSE(fs::exists(RutaRespaldo(s, 7) + ".parcial"));
}

// The copy is the company's file, copied under a read lock, or, for a file
// whose journal is not a rollback journal, the engine's online backup:
// either way the same rows.
TEST_F(Respaldo, LaCopiaDelArchivoYLaCopiaEnLineaGuardanLoMismo) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    const std::string archivo = RutaRespaldo(s, 90), enLinea = RutaRespaldo(s, 91);
    RespaldaEmpresa(s, archivo);
    s.DbEmpresa->ejecutaScript("PRAGMA journal_mode=WAL");
    s.DbEmpresa->ejecuta("UPDATE Polizas SET Concepto = 'cambio en el diario' WHERE rowid = 1");
    RespaldaEmpresa(s, enLinea);
    s.DbEmpresa->ejecutaScript("PRAGMA journal_mode=DELETE");
    EXPECT_EQ(BaseDatos(enLinea, BaseDatos::Modo::SoloLectura)
                  .escalar("SELECT Concepto FROM Polizas WHERE rowid = 1")
                  .texto(),
              "cambio en el diario");
    for (const std::string& ruta : {archivo, enLinea}) {
        SCOPED_TRACE(ruta);
        BaseDatos copia(ruta, BaseDatos::Modo::SoloLectura);
        EXPECT_EQ(copia.escalar("PRAGMA integrity_check").texto(), "ok");
        for (const char* sql : {"SELECT COUNT(*) FROM Polizas", "SELECT SUM(Importe) FROM Polizas_Detalle"})
            EXPECT_EQ(copia.escalar(sql).entero(), s.DbEmpresa->escalar(sql).entero()) << sql;
        EXPECT_EQ(copia.escalar("SELECT IdSistema FROM Respaldo_Empresas").entero(), 82);
    }
}

TEST_F(Respaldo, SiLaCopiaNoSePuedeHacerNoSeConfirmaNada) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    usaMes(2, 3);
    const std::string antes = contenidoEmpresa();
    // A folder with something in it where the copy of run 2 must go.
    fs::create_directories(RutaRespaldo(s, 2) + "/ocupado");
    EXPECT_THROW(importa({DecisionInconsistencias::Continuar}), ProgramaTerminado);
    ASSERT_FALSE(ui.mensajes.empty());
    EXPECT_NE(ui.mensajes.back().texto.find("No fue posible guardar la copia de la empresa"), std::string::npos)
        << ui.mensajes.back().texto;
    EXPECT_EQ(contenidoEmpresa(), antes);
    EXPECT_FALSE(fs::exists(RutaRespaldo(s, 2) + ".parcial"));
    EXPECT_EQ(historial().back().resultado, kResultadoTerminadaPorError);
}

TEST_F(Respaldo, DeshacerRestauraLaEmpresaExactamenteYQuedaEnElHistorial) {
    const std::string vacia = contenidoEmpresa();
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    const std::string primera = contenidoEmpresa();
    usaMes(2, 3);
    usaMes(4, 1);
    ASSERT_EQ(importa({DecisionInconsistencias::Continuar}), ResultadoImportacion::Terminada);
    const std::string segunda = contenidoEmpresa();
    ASSERT_NE(segunda, primera);

    EXPECT_EQ(deshace(false), ResultadoDeshacer::NoConfirmada);
    EXPECT_EQ(contenidoEmpresa(), segunda);
    EXPECT_EQ(ui.mensajes.back().tipo, TipoMensaje::Pregunta);
    EXPECT_NE(ui.mensajes.back().texto.find("antes de la importación 2"), std::string::npos);

    EXPECT_EQ(deshace(true), ResultadoDeshacer::Deshecha);
    EXPECT_EQ(contenidoEmpresa(), primera);
    EXPECT_EQ(s.UltimoMesImportado, 3) << "the session learns the restored months";
    auto filas = historial();
    ASSERT_EQ(filas.size(), 3u);
    EXPECT_EQ(filas[1].deshechaPor, std::optional<long>(3));
    auto r = *LeeRegistroHistorial(*s.DbEmpresa, 3);
    EXPECT_EQ(r.operacion, kOperacionDeshacer);
    EXPECT_EQ(r.resultado, kResultadoRestaurada);
    EXPECT_EQ(r.deshace, std::optional<long>(2));
    ASSERT_EQ(r.archivos.size(), 1u);
    EXPECT_EQ(r.archivos[0].ruta, RutaRespaldo(s, 2));
    EXPECT_EQ(r.archivos[0].sha256, Sha256Archivo(RutaRespaldo(s, 2)));

    // Undo again: back to before the first import, the history whole.
    EXPECT_EQ(deshace(true), ResultadoDeshacer::Deshecha);
    EXPECT_EQ(contenidoEmpresa(), vacia);
    EXPECT_EQ(deshace(true), ResultadoDeshacer::NadaQueDeshacer);
    EXPECT_EQ(historial().size(), 4u);

    // The company imports the first delivery again from there, numbering on.
    usaMes(2, 2);
    archivos.meses[3].clear();
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    EXPECT_EQ(contenidoEmpresa(), primera);
    EXPECT_EQ(historial().back().id, 5);
}

TEST_F(Respaldo, SinCopiaOConCopiaDanadaNoSeDeshaceNada) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    const std::string antes = contenidoEmpresa();
    std::ofstream(RutaRespaldo(s, 1), std::ios::binary | std::ios::trunc) << std::string(4096, 'x');
    EXPECT_EQ(deshace(true), ResultadoDeshacer::SinRespaldo);
    EXPECT_NE(ui.mensajes.back().texto.find("está dañada"), std::string::npos) << ui.mensajes.back().texto;
    fs::remove(RutaRespaldo(s, 1));
    EXPECT_EQ(deshace(true), ResultadoDeshacer::SinRespaldo);
    EXPECT_NE(ui.mensajes.back().texto.find("No se encontró la copia"), std::string::npos);
    EXPECT_EQ(contenidoEmpresa(), antes);
    EXPECT_EQ(historial().size(), 1u);
}
