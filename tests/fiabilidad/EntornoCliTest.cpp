// The machine failing under `velmorant-cli`: a read-only base folder, a
// full disk, the company held by another program, the company file deleted
// or damaged between two commands. Each gives its own Spanish message and
// leaves what was committed before as it was.
//
// The full disk is a small tmpfs mounted over the base folder in a mount
// namespace of its own (unshare -m) when the machine allows it; otherwise
// the file-size limit (RLIMIT_FSIZE, with SIGXFSZ ignored so that writes
// fail with EFBIG), and the figures say which. VELMORANT_SIN_TMPFS=1 asks
// for the limit.

#include <sqlite3.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "fiabilidad/EmpresaCli.h"

namespace fs = std::filesystem;
using namespace velmorant::prueba;
using velmorant::BaseDatos;

namespace {

std::string Bytes(const std::string& archivo) {
    std::ifstream f(archivo, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

// A file's bytes but the header's change counter and the version that
// wrote it, which a transaction that changed nothing still moves.
std::string SinContador(std::string bytes) {
    if (bytes.size() >= 100) {
        bytes.replace(24, 4, 4, '\0');
        bytes.replace(92, 4, 4, '\0');
    }
    return bytes;
}

bool Contiene(const std::string& texto, const std::string& parte) { return texto.find(parte) != std::string::npos; }

class EntornoCli : public EmpresaCli {
protected:
    std::string antes;
    void SetUp() override {
        EmpresaCli::SetUp();
        escribe("feb.txt", kTitulosPolizas + Partidas() + Partidas("Feb", "300", 2));
        antes = contenido();
    }
    std::string reimportar() {
        return "importar --enlace 82 --separador '|' --configuracion T --catalogo '" + ruta("catalogo.txt") +
               "' --mes 01='" + ruta("ene.txt") + "' --mes 02='" + ruta("feb.txt") + "' --continuar";
    }
    // A refused command: its status, its message, no engine text alone.
    void EsperaRechazo(const ResultadoProceso& r, const std::vector<std::string>& alguna) {
        EXPECT_NE(r.estado, 0) << r.salida;
        EXPECT_TRUE(r.estado >= 1 && r.estado <= 3) << r.salida;
        bool dice = false;
        for (const auto& t : alguna) dice = dice || Contiene(r.salida, t);
        EXPECT_TRUE(dice) << r.salida;
        EXPECT_FALSE(PareceErrorDelMotor(r.salida)) << r.salida;
    }
};

void Permisos(const fs::path& carpeta, bool escritura) {
    const auto p = escritura ? fs::perms::owner_all : fs::perms::owner_read | fs::perms::owner_exec;
    for (const auto& e : fs::recursive_directory_iterator(carpeta))
        fs::permissions(e.path(), e.is_directory() ? p : p & ~fs::perms::owner_exec);
    fs::permissions(carpeta, p);
}

}  // namespace

TEST_F(EntornoCli, UnaCarpetaDeSoloLecturaRehusaLaImportacionSinPerderNada) {
    // Root writes anywhere; without the capabilities that let it, it obeys
    // the folder's permissions as a user would.
    const std::string comoUsuario =
        geteuid() == 0 ? "setpriv --bounding-set=-dac_override,-fowner,-dac_read_search " : "";
    Permisos(ruta("base"), false);
    auto r = Corre(reimportar(), comoUsuario);
    Permisos(ruta("base"), true);
    EsperaRechazo(r, {"sólo lectura", "permiso", "No fue posible"});
    EXPECT_TRUE(Contiene(r.salida, ruta("base"))) << r.salida;
    EXPECT_EQ(contenido(), antes);
    EXPECT_EQ(integridad(empresa()), "ok");
    r = Corre(reimportar());
    EXPECT_EQ(r.estado, 0) << r.salida;
    EXPECT_NE(contenido(), antes);
    AnotaCifra("entorno solo_lectura");
}

TEST_F(EntornoCli, UnDiscoLlenoEnCualquierMomentoDejaLaEmpresaComoEstabaOConfirmada) {
    // VELMORANT_SIN_TMPFS=1 takes the file-size limit where tmpfs would do.
    const bool tmpfs = !std::getenv("VELMORANT_SIN_TMPFS") && CorreProceso("unshare -m true").estado == 0;
    fs::copy(ruta("base"), ruta("guardada"), fs::copy_options::recursive);
    std::string confirmada;
    {
        auto r = Corre(reimportar());
        ASSERT_EQ(r.estado, 0) << r.salida;
        confirmada = contenido();
        fs::remove_all(ruta("base"));
        fs::copy(ruta("guardada"), ruta("base"), fs::copy_options::recursive);
    }
    const std::string entorno = "XDG_CONFIG_HOME='" + ruta("config") + "' VELMORANT_DATOS='" + ruta("datos") + "' ";
    int llenos = 0, completas = 0;
    // Free space (kB) left on the disk when the run starts: from none to
    // enough for the temporary stores but not the company's copy.
    for (int libre : {0, 8, 32, 96, 192, 320, 512, 1024}) {
        SCOPED_TRACE(libre);
        fs::remove_all(ruta("fuera"));
        fs::create_directories(ruta("fuera"));
        std::string guion;
        if (tmpfs) {
            guion = "mount -t tmpfs -o size=4m none '" + ruta("base") + "' && cp -a '" + ruta("guardada") +
                    "/.' '" + ruta("base") + "/' && (dd if=/dev/zero of='" + ruta("base") +
                    "/relleno' bs=4k 2>/dev/null; truncate -s -" + std::to_string(libre) + "k '" + ruta("base") +
                    "/relleno'; " + entorno + "'" VELMORANT_CLI "' " + reimportar() +
                    "; echo ESTADO=$?; rm -f '" + ruta("base") + "/relleno'; cp -a '" + ruta("base") + "/.' '" +
                    ruta("fuera") + "/')";
            guion = "unshare -m sh -c " + Comillas(guion);
        } else {
            // 512-byte blocks: the company's copy is larger than all of them.
            guion = "cp -a '" + ruta("guardada") + "/.' '" + ruta("fuera") + "/'; rm -rf '" + ruta("base") +
                    "'; mv '" + ruta("fuera") + "' '" + ruta("base") + "'; (trap '' XFSZ; ulimit -f " +
                    std::to_string(libre * 2 + 1) + "; " + entorno + "'" VELMORANT_CLI "' " + reimportar() +
                    "; echo ESTADO=$?); cp -a '" + ruta("base") + "' '" + ruta("fuera") + "'";
            guion = "sh -c " + Comillas(guion);
        }
        auto r = CorreProceso(guion);
        auto p = r.salida.rfind("ESTADO=");
        ASSERT_NE(p, std::string::npos) << r.salida;
        const int estado = std::stoi(r.salida.substr(p + 7));
        const std::string empresaFuera = ruta("fuera/2025_DEMO/DEMO_2025.sqlite");
        EXPECT_EQ(integridad(empresaFuera), "ok");
        const std::string ahora = ContenidoEmpresaSinHistorial(empresaFuera);
        if (estado == 0) {
            ++completas;
            EXPECT_EQ(ahora, confirmada);
            continue;
        }
        ++llenos;
        EXPECT_EQ(ahora, antes) << r.salida;
        // Past the size limit the engine sees a failed write, not a full disk.
        EXPECT_TRUE(Contiene(r.salida, "espacio") || (!tmpfs && Contiene(r.salida, "escritura"))) << r.salida;
        EXPECT_FALSE(PareceErrorDelMotor(r.salida)) << r.salida;
        // Room again: the same files import.
        fs::remove_all(ruta("base"));
        fs::copy(ruta("fuera"), ruta("base"), fs::copy_options::recursive);
        auto otra = Corre(reimportar());
        EXPECT_EQ(otra.estado, 0) << otra.salida;
        EXPECT_EQ(contenido(), confirmada);
    }
    EXPECT_GT(llenos, 0);
    AnotaCifra(std::string("entorno disco_lleno metodo=") + (tmpfs ? "tmpfs" : "RLIMIT_FSIZE") +
               " llenos=" + std::to_string(llenos) + " completas=" + std::to_string(completas));
}

TEST_F(EntornoCli, UnaEmpresaOcupadaPorOtroProgramaEsperaYLoDice) {
    // "EXCLUSIVE": not even read; "IMMEDIATE": read, but never written.
    for (const char* candado : {"BEGIN EXCLUSIVE", "BEGIN IMMEDIATE"}) {
        SCOPED_TRACE(candado);
        sqlite3* otro = nullptr;
        ASSERT_EQ(sqlite3_open(empresa().c_str(), &otro), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(otro, candado, nullptr, nullptr, nullptr), SQLITE_OK);
        auto r = Corre(reimportar());
        sqlite3_exec(otro, "ROLLBACK", nullptr, nullptr, nullptr);
        sqlite3_close(otro);
        EsperaRechazo(r, {"ocupada por otro programa", "en uso por otro programa"});
        EXPECT_TRUE(Contiene(r.salida, empresa()) || Contiene(r.salida, "empresa")) << r.salida;
        EXPECT_EQ(contenido(), antes);
    }
    auto r = Corre(reimportar());
    EXPECT_EQ(r.estado, 0) << r.salida;
    AnotaCifra("entorno ocupada");
}

TEST_F(EntornoCli, UnaEmpresaBorradaODanadaEntreOrdenesNoSeReemplazaEnSilencio) {
    fs::copy(ruta("base"), ruta("guardada"), fs::copy_options::recursive);
    auto restaura = [&] {
        fs::remove_all(ruta("base"));
        fs::copy(ruta("guardada"), ruta("base"), fs::copy_options::recursive);
    };
    // Deleted: said, and no empty company made in its place.
    fs::remove(empresa());
    for (const std::string& orden : std::vector<std::string>{"polizas", reimportar()}) {
        auto r = Corre(orden);
        EsperaRechazo(r, {"no existe", "No se encontró", "no se pudo abrir", "No fue posible"});
        EXPECT_FALSE(fs::exists(empresa())) << orden;
    }
    // Damaged header, damaged page, cut short: said, and the file left as
    // it is for whoever recovers it.
    const auto sana = Bytes(ruta("guardada/2025_DEMO/DEMO_2025.sqlite"));
    ASSERT_GT(sana.size(), 8192u);
    // The page of the chart of accounts: its cell pointers sent astray.
    size_t pagina;
    {
        BaseDatos db(ruta("guardada/2025_DEMO/DEMO_2025.sqlite"), BaseDatos::Modo::SoloLectura);
        const auto tamano = static_cast<size_t>(db.escalar("PRAGMA page_size").entero());
        pagina = tamano * static_cast<size_t>(
                              db.escalar("SELECT rootpage FROM sqlite_master WHERE name = 'Cuentas'").entero() - 1);
    }
    ASSERT_LT(pagina + 400, sana.size());
    std::vector<std::pair<std::string, std::string>> danos = {
        {"cabecera", std::string(100, '\x5a') + sana.substr(100)},
        {"página", sana.substr(0, pagina + 8) + std::string(300, '\xff') + sana.substr(pagina + 308)},
        {"cortada", sana.substr(0, sana.size() / 3)},
    };
    for (const auto& [nombre, bytes] : danos) {
        SCOPED_TRACE(nombre);
        restaura();
        escribe("base/2025_DEMO/DEMO_2025.sqlite", bytes);
        for (const std::string& orden : std::vector<std::string>{"polizas", reimportar()}) {
            auto r = Corre(orden);
            EXPECT_FALSE(PareceErrorDelMotor(r.salida)) << r.salida;
            if (r.estado != 0) {
                EXPECT_TRUE(Contiene(r.salida, "dañada") || Contiene(r.salida, "No fue posible")) << r.salida;
            }
            EXPECT_TRUE(SinContador(Bytes(empresa())) == SinContador(bytes)) << orden << "\n" << r.salida;
        }
    }
    // The copies taken before each import are still there to recover from.
    restaura();
    auto r = Corre("historial");
    EXPECT_EQ(r.estado, 0) << r.salida;
    AnotaCifra("entorno borrada_danada casos=" + std::to_string(1 + danos.size()));
}
