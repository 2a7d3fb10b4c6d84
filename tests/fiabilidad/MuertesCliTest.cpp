// A run of `velmorant-cli importar` (link 82, the generated demo year) killed
// with SIGKILL at points spread over its phases, a first import and a
// re-import on the auditor's review work. After each kill, and again on a
// copy of the disk taken at the kill (a power cut, the journals included):
// the next command opens the company, which is as it was before the run or
// as the run commits it, never between; both files pass the engine's
// integrity check; and a new import runs to the end.
//
// The points come from the run itself (VELMORANT_PUNTO_PRUEBA_LISTA), picked
// evenly with every phase among them. CI kills at 8 points; for more:
//   VELMORANT_MUERTES=50 build/tests/velmorant_tests --gtest_filter='MuertesCli.*'
// VELMORANT_FIABILIDAD_CIFRAS=ARCHIVO appends the figures of the run there
// (tools/fiabilidad.sh writes docs/fiabilidad.md from them).

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include "platform/BaseDatos.h"
#include "support/Cli.h"
#include "support/Entorno.h"

namespace fs = std::filesystem;
using velmorant::BaseDatos;

namespace {

std::vector<std::string> Lineas(const std::string& archivo) {
    std::vector<std::string> r;
    std::ifstream f(archivo);
    for (std::string l; std::getline(f, l);)
        if (!l.empty()) r.push_back(l);
    return r;
}

// The points to kill at: `n` of `puntos`, shared out among the phases in
// turn (so that the few of phases C and F are all taken before the many rows
// of A), and evenly spread within each.
std::vector<std::string> Elige(const std::vector<std::string>& puntos, size_t n) {
    std::map<char, std::vector<std::string>> porFase;
    for (const auto& p : puntos) porFase[p[0]].push_back(p);
    std::map<char, size_t> cuota;
    for (size_t total = 0, antes = 1; total < n && total != antes;) {
        antes = total;
        for (auto& [fase, lista] : porFase)
            if (total < n && cuota[fase] < lista.size()) ++cuota[fase], ++total;
    }
    std::vector<std::string> r;
    for (auto& [fase, lista] : porFase)
        for (size_t k = 0; k < cuota[fase]; ++k) r.push_back(lista[(2 * k + 1) * lista.size() / (2 * cuota[fase])]);
    return r;
}

std::string Integridad(const std::string& archivo) {
    BaseDatos db(archivo, BaseDatos::Modo::SoloLectura);
    return db.escalar("PRAGMA integrity_check").texto();
}

class MuertesCli : public ::testing::Test {
protected:
    velmorant::prueba::CarpetaTemporal dir;
    std::string base() { return dir.texto() + "base"; }
    std::string empresa() { return base() + "/2025_DEMO/DEMO_2025.sqlite"; }
    std::string empresas() { return base() + "/Empresas.sqlite"; }

    velmorant::prueba::ResultadoProceso Corre(const std::string& argumentos, const std::string& entorno = "") {
        return velmorant::prueba::CorreCli(dir, argumentos, entorno);
    }
    std::string importar(const std::string& entrega) {
        const char* meses[] = {"ENE", "FEB", "MZO", "ABR", "MAY", "JUN", "JUL", "AGO", "SEP", "OCT", "NOV", "DIC"};
        std::string r = "importar --enlace 82 --separador '|' --configuracion DEMO --continuar --catalogo '" +
                        dir.texto() + entrega + "/catalogo.txt'";
        for (int i = 0; i < 12; ++i)
            r += " --mes " + std::string(i < 9 ? "0" : "") + std::to_string(i + 1) + "='" + dir.texto() + entrega +
                 "/pol_" + meses[i] + ".txt'";
        return r;
    }
    // Company and company table together: a commit writes both or neither.
    std::string contenido() {
        return velmorant::prueba::ContenidoEmpresaSinHistorial(empresa()) + "\n--\n" +
               velmorant::prueba::ContenidoEmpresaSinHistorial(empresas());
    }
    void guarda(const std::string& destino) {
        fs::remove_all(destino);
        fs::copy(base(), destino, fs::copy_options::recursive);
    }
    void restaura(const std::string& origen) {
        fs::remove_all(base());
        fs::copy(origen, base(), fs::copy_options::recursive);
    }

    void SetUp() override {
        const std::string genera = VELMORANT_GENERA_DEMO;
        // A small year: a few lines a month keep a run near a second.
        ASSERT_EQ(velmorant::prueba::CorreProceso("'" + genera + "' '" + dir.texto() + "e1' --lineas 40").estado, 0);
        ASSERT_EQ(velmorant::prueba::CorreProceso("'" + genera + "' '" + dir.texto() + "e2' --variante 2 --lineas 40")
                      .estado,
                  0);
        ASSERT_EQ(Corre("base crear '" + base() + "'").estado, 0);
        auto r = Corre("--base '" + base() +
                       "' empresa crear --nombre-corto DEMO --nombre Demo --ejercicio 2025 --formato 999-99-99 "
                       "--separador - --niveles 3,2,2 --cat-arbol --rellena-ceros --meses-revision 6,0,0,12");
        ASSERT_EQ(r.estado, 0) << r.salida;
        ASSERT_EQ(Corre("--base '" + base() + "' empresa abrir DEMO 2025").estado, 0);
        r = Corre("configuracion crear DEMO --enlace 82 --si PIniCuenta=1 PIniDescripcion=2 PIniNaturaleza=3 "
                  "PIniNivel=4 PIniSdoIni=6 PIniNumPol=1 PIniTipo=2 PIniDia=3 PIniMes=4 PIniAnio=5 PIniCtaPol=6 "
                  "PIniRef=7 PIniConcept=8 PIniCargo=9 PIniAbono=10");
        ASSERT_EQ(r.estado, 0) << r.salida;
    }

    struct Cifras {
        int puntos = 0, muertes = 0, sobrevividas = 0, cortes = 0, cortesSobrevividos = 0;
        std::map<char, int> porFase;
    };

    // After a kill, with the files as the kill or the cut left them: the
    // company is the one before or the committed one, whole, and the run
    // can be made again.
    bool Sobrevive(const std::string& punto, const std::string& antes, const std::string& despues,
                   const std::string& despuesDeOtra, const std::string& entrega) {
        SCOPED_TRACE(punto);
        auto r = Corre("polizas");
        EXPECT_EQ(r.estado, 0) << r.salida;
        if (r.estado != 0) return false;
        const std::string ahora = contenido();
        const bool comoAntes = ahora == antes, confirmada = ahora == despues;
        EXPECT_TRUE(comoAntes || confirmada) << "the company is neither as before nor as committed";
        EXPECT_EQ(Integridad(empresa()), "ok");
        EXPECT_EQ(Integridad(empresas()), "ok");
        r = Corre(importar(entrega));
        EXPECT_EQ(r.estado, 0) << r.salida;
        EXPECT_EQ(contenido(), confirmada ? despuesDeOtra : despues);
        // Nothing of the killed run is left behind the new one.
        for (const auto& e : fs::recursive_directory_iterator(base())) {
            const std::string nombre = e.path().filename().string();
            EXPECT_TRUE(nombre.find("-journal") == std::string::npos && nombre.find("-mj") == std::string::npos)
                << e.path();
        }
        return (comoAntes || confirmada) && r.estado == 0 && !HasFailure();
    }

    // Kills a run of `entrega` over the state saved in `inicial` at `n` points.
    Cifras Mata(const std::string& inicial, const std::string& entrega, size_t n) {
        Cifras c;
        restaura(inicial);
        const std::string antes = contenido();
        const std::string lista = dir.texto() + "puntos.txt";
        fs::remove(lista);
        auto r = Corre(importar(entrega), "VELMORANT_PUNTO_PRUEBA_LISTA='" + lista + "'");
        EXPECT_EQ(r.estado, 0) << r.salida;
        const std::string despues = contenido();
        EXPECT_NE(antes, despues);
        r = Corre(importar(entrega));
        EXPECT_EQ(r.estado, 0) << r.salida;
        const std::string despuesDeOtra = contenido();
        const auto puntos = Lineas(lista);
        EXPECT_GT(puntos.size(), n);
        c.puntos = static_cast<int>(puntos.size());
        const std::string copia = dir.texto() + "corte";
        for (const auto& punto : Elige(puntos, n)) {
            restaura(inicial);
            fs::remove(lista);
            fs::remove_all(copia);
            r = Corre(importar(entrega), "VELMORANT_PUNTO_PRUEBA='" + punto + "' VELMORANT_PUNTO_PRUEBA_LISTA='" +
                                             lista + "' VELMORANT_PUNTO_PRUEBA_COPIA='" + copia + "'");
            auto alcanzados = Lineas(lista);
            // Killed by its own signal: the shell's 128 + 9, or the signal itself.
            EXPECT_TRUE(r.estado == 137 || r.estado == -1) << punto << " " << r.estado << "\n" << r.salida;
            EXPECT_TRUE(!alcanzados.empty() && alcanzados.back() == punto) << punto;
            ++c.muertes;
            ++c.porFase[punto[0]];
            if (Sobrevive(punto, antes, despues, despuesDeOtra, entrega)) ++c.sobrevividas;
            if (!fs::exists(copia)) {
                ADD_FAILURE() << "no copy at " << punto;
                continue;
            }
            ++c.cortes;
            restaura(copia);
            if (Sobrevive(punto + " (corte)", antes, despues, despuesDeOtra, entrega)) ++c.cortesSobrevividos;
        }
        return c;
    }

    static void Anota(const std::string& corrida, const Cifras& c) {
        const char* archivo = std::getenv("VELMORANT_FIABILIDAD_CIFRAS");
        if (!archivo || !*archivo) return;
        std::ofstream f(archivo, std::ios::app);
        f << "muertes " << corrida << " puntos=" << c.puntos << " muertes=" << c.muertes
          << " sobrevividas=" << c.sobrevividas << " cortes=" << c.cortes
          << " cortes_sobrevividos=" << c.cortesSobrevividos;
        for (auto [fase, n] : c.porFase) f << " fase_" << fase << "=" << n;
        f << "\n";
    }
};

size_t MuertesPedidas() {
    const char* v = std::getenv("VELMORANT_MUERTES");
    long n = v ? std::atol(v) : 0;
    return n > 1 ? static_cast<size_t>(n) : 8;
}

}  // namespace

TEST_F(MuertesCli, UnaImportacionMatadaEnCualquierPuntoDejaLaEmpresaEnteraYSePuedeRepetir) {
    const size_t n = MuertesPedidas();
    guarda(dir.texto() + "vacia");
    Cifras primera = Mata(dir.texto() + "vacia", "e1", n / 2);
    EXPECT_EQ(primera.sobrevividas, primera.muertes);
    EXPECT_EQ(primera.cortesSobrevividos, primera.cortes);
    // Both files of the first import as the run commits it, and the
    // auditor's review work on it: a re-import has phase C to go through.
    restaura(dir.texto() + "vacia");
    ASSERT_EQ(Corre(importar("e1")).estado, 0);
    ASSERT_EQ(velmorant::prueba::CorreProceso("'" VELMORANT_GENERA_DEMO "' --trabajo-revision '" + empresa() + "'")
                  .estado,
              0);
    guarda(dir.texto() + "revisada");
    Cifras segunda = Mata(dir.texto() + "revisada", "e2", n - n / 2);
    EXPECT_EQ(segunda.sobrevividas, segunda.muertes);
    EXPECT_EQ(segunda.cortesSobrevividos, segunda.cortes);
    EXPECT_GT(segunda.porFase['C'], 0);
    EXPECT_GT(segunda.porFase['B'], 0);
    EXPECT_GT(primera.porFase['A'], 0);
    Anota("primera", primera);
    Anota("reimportacion", segunda);
}
