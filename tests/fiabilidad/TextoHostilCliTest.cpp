// Hostile text wherever a person or a file types it, through
// `velmorant-cli importar` (link 82) on a company that already holds a
// committed import: quotes and LIKE wildcards, NUL bytes, bytes that are not
// UTF-8, very long fields and lines, every kind of line end, empty and
// binary files, amounts no accounting system writes. Whatever the input,
// the program ends by its own exit status with no engine error on the
// screen; a refused run names the file and the line and leaves the company
// as it was; an accepted one leaves it whole.
//
// VELMORANT_FIABILIDAD_CIFRAS=ARCHIVO appends the count of inputs tried.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>

#include "fiabilidad/EmpresaCli.h"

namespace fs = std::filesystem;
using velmorant::BaseDatos;

using namespace velmorant::prueba;

namespace {

std::string Binario(size_t n) {
    std::mt19937 g(20251123);
    std::string r(n, '\0');
    for (auto& c : r) c = static_cast<char>(g() & 0xFF);
    return r;
}

class TextoHostilCli : public EmpresaCli {
protected:
    void SetUp() override {
        EmpresaCli::SetUp();
        fs::copy(ruta("base"), ruta("guardada"), fs::copy_options::recursive);
    }
    void restaura() {
        fs::remove_all(ruta("base"));
        fs::copy(ruta("guardada"), ruta("base"), fs::copy_options::recursive);
    }

    struct Caso {
        std::string nombre;
        std::string catalogo;  // bytes after the title line; empty keeps the good one
        std::string polizas;   // bytes after the title line; empty keeps the good one
        bool conTitulos = true;
        // Accepted amounts: the debits then in the company ("count:sum" in
        // ten-thousandths), or "ilegible" when the log must say it was not read.
        std::string importe = "";
    };

    // One input: the run ends by its own status, no engine text, a refusal
    // naming file and line with the company unchanged, a whole company file.
    // Returns the exit status.
    int Prueba(const Caso& c) {
        SCOPED_TRACE(c.nombre);
        restaura();
        const std::string antes = contenido();
        const std::string cat = ruta("cat_hostil.txt"), pol = ruta("pol_hostil.txt");
        escribe("cat_hostil.txt", c.catalogo.empty() ? kTitulosCatalogo + kCatalogo
                                                     : (c.conTitulos ? kTitulosCatalogo : "") + c.catalogo);
        escribe("pol_hostil.txt",
                c.polizas.empty() ? kTitulosPolizas + Partidas() : (c.conTitulos ? kTitulosPolizas : "") + c.polizas);
        auto r = Corre(importar(cat, pol));
        const std::string salida = r.salida.substr(0, 4000);
        EXPECT_TRUE(r.estado >= 0 && r.estado <= 3) << r.estado << "\n" << salida;
        EXPECT_FALSE(PareceErrorDelMotor(r.salida)) << salida;
        if (r.estado != 0) {
            EXPECT_EQ(contenido(), antes) << salida;
            const bool nombraArchivo =
                r.salida.find(cat) != std::string::npos || r.salida.find(pol) != std::string::npos;
            EXPECT_TRUE(nombraArchivo) << salida;
            EXPECT_NE(r.salida.find("línea"), std::string::npos) << salida;
        }
        EXPECT_EQ(integridad(empresa()), "ok");
        if (r.estado == 0 && c.importe == "ilegible") {
            auto log = Corre("inconsistencias");
            EXPECT_NE(log.salida.find("no es numérico"), std::string::npos) << log.salida;
        } else if (r.estado == 0 && !c.importe.empty()) {
            EXPECT_EQ(cargos(), c.importe);
        }
        AnotaCifra("hostil estado=" + std::to_string(r.estado) + " " + c.nombre);
        return r.estado;
    }

    // The sum of the amounts of January's lines in the company, as text.
    std::string cargos() {
        BaseDatos db(empresa(), BaseDatos::Modo::SoloLectura);
        return db.escalar("SELECT COUNT(*) || ':' || SUM(Importe) FROM Polizas_Detalle WHERE TipoMov='D'").texto();
    }

    static void Anota(const std::string& que, int n) {
        AnotaCifra("hostiles " + que + " entradas=" + std::to_string(n));
    }
};

}  // namespace

TEST_F(TextoHostilCli, TextoQueRompeElSqlOLosLimitesNuncaLlegaAlMotorComoError) {
    const std::string nul("\0", 1);
    const std::string largo(10 * 1024, 'x');
    const std::string linea(1024 * 1024, 'y');
    std::vector<Caso> casos = {
        {"comillas y comodines en la descripción", "100-00-00|Act'ivo \"%_ ~ ' OR 1=1 --|D|1000\n" + kCatalogo, ""},
        {"comillas y comodines en el concepto", "", Partidas("O'Brien \"100%\" _x_ ~ ; DROP TABLE Polizas; --")},
        {"comodines como cuenta", "%%%-__-__|Todo|D|0\n" + kCatalogo, ""},
        {"comillas en número y tipo de póliza", "", "1'|D'r|3|1|2025|100-01-01|c|V|200|0\n"
                                                    "1'|D'r|3|1|2025|400-01-01|v|V|0|200\n"},
        {"NUL en la descripción", "100-00-00|Ac" + nul + "tivo|D|1000\n" + kCatalogo, ""},
        {"NUL en la cuenta de una partida", "", "1|Dr|3|1|2025|100-01" + nul + "-01|c|V|200|0\n" + Partidas()},
        {"bytes que no son UTF-8", "100-00-00|Act\xff\xfe\xc3 ivo\x80|D|1000\n" + kCatalogo,
         Partidas("Venta \xe9\xe8\xc3")},
        {"campo de 10 kB", "100-00-00|" + largo + "|D|1000\n" + kCatalogo, Partidas(largo)},
        {"línea de 1 MB", kCatalogo + linea + "\n", ""},
        {"línea de 1 MB de campos", kCatalogo + std::string(1024 * 1024 / 2, '|') + "\n", ""},
        {"sin salto de línea final", kCatalogo.substr(0, kCatalogo.size() - 1),
         Partidas().substr(0, Partidas().size() - 1)},
        {"CRLF", "100-00-00|Activo|D|1000\r\n100-01-00|Bancos|D|1000\r\n100-01-01|Banco uno|D|1000\r\n"
                 "400-00-00|Ventas|A|-1000\r\n400-01-00|Ventas nacionales|A|-1000\r\n400-01-01|Mostrador|A|-1000\r\n",
         "1|Dr|3|1|2025|100-01-01|c|V|200|0\r\n1|Dr|3|1|2025|400-01-01|v|V|0|200\r\n"},
        {"CR solo", "100-00-00|Activo|D|1000\r100-01-00|Bancos|D|1000\r100-01-01|Banco uno|D|1000\r",
         "1|Dr|3|1|2025|100-01-01|c|V|200|0\r1|Dr|3|1|2025|400-01-01|v|V|0|200\r"},
        {"binario como catálogo", Binario(4096), "", false},
        {"binario como pólizas", "", Binario(4096), false},
        {"binario con NUL y saltos", "", std::string("\0\n\0\r\n|||\n\0", 10) + Binario(300), false},
        {"importe 1e20", "", Partidas("V", "1e20")},
        {"importe 1e400", "", Partidas("V", "1e400")},
        {"importe 99999999999999999999", "", Partidas("V", "99999999999999999999")},
        {"importe 1,234.50", "", Partidas("V", "1,234.50"), true, "1:12345000"},
        {"importe (100.00)", "", Partidas("V", "(100.00)"), true, "ilegible"},
        {"importe NaN", "", Partidas("V", "NaN"), true, "ilegible"},
        {"importe inf", "", Partidas("V", "inf"), true, "ilegible"},
        {"importe 0x10", "", Partidas("V", "0x10"), true, "ilegible"},
        {"importe solo signo", "", Partidas("V", "-"), true, "ilegible"},
        {"saldo 1e20", "100-00-00|Activo|D|1e20\n" + kCatalogo.substr(kCatalogo.find('\n') + 1), ""},
        {"saldo (100.00)", "100-00-00|Activo|D|(100.00)\n" + kCatalogo.substr(kCatalogo.find('\n') + 1), "", true,
         "ilegible"},
        {"fecha imposible", "", "1|Dr|31|2|2025|100-01-01|c|V|200|0\n1|Dr|99|99|99999|400-01-01|v|V|0|200\n"},
    };
    int aceptados = 0;
    for (const auto& c : casos)
        if (Prueba(c) == 0) ++aceptados;
    EXPECT_GT(aceptados, 0);
    Anota("archivos", static_cast<int>(casos.size()));
}

// An empty file given as the catalogue, and a folder or a device given as a
// file: refused before the run with the path named.
TEST_F(TextoHostilCli, UnArchivoVacioUnaCarpetaOUnDispositivoSeRehusanNombrandolos) {
    escribe("vacio.txt", "");
    fs::create_directories(ruta("carpeta.txt"));
    const std::string antes = contenido();
    for (const auto& [catalogo, mes] : std::vector<std::pair<std::string, std::string>>{
             {ruta("vacio.txt"), ruta("vacio.txt.no")},
             {ruta("carpeta.txt"), ruta("ene.txt")},
             {ruta("catalogo.txt"), ruta("carpeta.txt")},
             {"/dev/zero", ruta("ene.txt")}}) {
        auto r = Corre(importar(catalogo, mes));
        EXPECT_NE(r.estado, 0) << r.salida;
        EXPECT_TRUE(r.salida.find(catalogo) != std::string::npos || r.salida.find(mes) != std::string::npos)
            << r.salida;
        EXPECT_FALSE(PareceErrorDelMotor(r.salida)) << r.salida;
    }
    auto r = Corre(importar(ruta("vacio.txt"), ruta("ene.txt")));
    EXPECT_FALSE(PareceErrorDelMotor(r.salida)) << r.salida;
    if (r.estado != 0) {
        EXPECT_EQ(contenido(), antes);
    }
    Anota("rutas", 5);
}

// What a person types: names of layouts and companies, paths, with quotes,
// wildcards and separators in them.
TEST_F(TextoHostilCli, LoQueEscribeElUsuarioLlegaComoTextoYNoComoSql) {
    int n = 0;
    const std::vector<std::string> nombres = {"T%", "T_", "T\"; DROP TABLE Configuraciones; --", "TÑ",
                                              std::string(300, 'L')};
    for (const auto& nombre : nombres) {
        ++n;
        // Values of their own (an unused accumulative-account column), so
        // that none is the same layout under another name.
        auto r = Corre("configuracion crear " + Comillas(nombre) + " --enlace 82 --si PIniCuenta=1 PIniDescripcion=2 "
                       "PIniNaturaleza=3 PIniSdoIni=4 PIniNumPol=1 PIniTipo=2 PIniDia=3 PIniMes=4 PIniAnio=5 "
                       "PIniCtaPol=6 PIniRef=7 PIniConcept=8 PIniCargo=9 PIniAbono=10 PIniCtaAcum=" +
                       std::to_string(20 + n));
        EXPECT_EQ(r.estado, 0) << nombre << "\n" << r.salida;
        EXPECT_FALSE(PareceErrorDelMotor(r.salida)) << nombre << "\n" << r.salida;
        r = Corre(importar(ruta("catalogo.txt"), ruta("ene.txt"), nombre));
        EXPECT_EQ(r.estado, 0) << nombre << "\n" << r.salida;
    }
    // Each found by its own name only: the wildcards match nothing else.
    auto r = Corre("configuracion listar");
    EXPECT_EQ(r.estado, 0) << r.salida;
    EXPECT_NE(r.salida.find("\nT\t82\n"), std::string::npos) << r.salida;
    EXPECT_NE(Corre("configuracion mostrar 'T%x'").estado, 0);
    EXPECT_NE(Corre("configuracion mostrar 'T_'").salida.find("PIniCtaAcum=22"), std::string::npos);
    // The characters every stored text loses, or bytes that are not text,
    // would make a name that cannot be found again: refused, saying why.
    for (const std::string nombre : {"T'1", "T|2", "T~3", "T\xff\xfe"}) {
        ++n;
        r = Corre("configuracion crear " + Comillas(nombre) + " --enlace 82 --si PIniCuenta=1 PIniDescripcion=2 "
                  "PIniNaturaleza=3 PIniSdoIni=4 PIniNumPol=1 PIniTipo=2 PIniDia=3 PIniMes=4 PIniAnio=5 "
                  "PIniCtaPol=6 PIniRef=7 PIniConcept=8 PIniCargo=9 PIniAbono=10 PIniCtaAcum=40");
        EXPECT_EQ(r.estado, 1) << nombre << "\n" << r.salida;
        EXPECT_NE(r.salida.find("El nombre de la configuración"), std::string::npos) << r.salida;
    }
    for (const auto& nombre : std::vector<std::string>{"O'Brien %_ |~ S.A.", "N\xff\xfeO", std::string(5000, 'E')}) {
        ++n;
        r = Corre("--base '" + ruta("base") + "' empresa crear --nombre-corto 'X%_" + std::to_string(n) +
                  "' --nombre " + Comillas(nombre) + " --ejercicio 2026 --formato 999-99-99 --separador - --niveles 3,2,2");
        EXPECT_FALSE(PareceErrorDelMotor(r.salida)) << r.salida;
    }
    // A file path with every awkward character in it.
    const std::string raro = ruta("a'b %_|~ \"c\".txt");
    escribe("a'b %_|~ \"c\".txt", kTitulosPolizas + Partidas());
    ++n;
    r = Corre(importar(ruta("catalogo.txt"), raro));
    EXPECT_EQ(r.estado, 0) << r.salida;
    // One debit line of 200, kept in ten-thousandths.
    EXPECT_EQ(cargos(), "1:2000000");
    Anota("tecleado", n);
}
