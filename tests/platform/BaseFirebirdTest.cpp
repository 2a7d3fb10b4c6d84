#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>

#include "platform/ErrorLectura.h"
#include "platform/fuentes/BaseFirebird.h"
#include "support/Entorno.h"

using namespace velmorant;
using velmorant::prueba::CarpetaTemporal;
namespace fs = std::filesystem;

namespace {

std::string BuscaIsql() {
    const char* ruta = std::getenv("PATH");
    std::stringstream partes(ruta ? ruta : "/usr/bin");
    for (std::string carpeta; std::getline(partes, carpeta, ':');) {
        fs::path p = fs::path(carpeta) / "isql-fb";
        if (fs::exists(p)) return p.string();
    }
    return "";
}

const char* const kSinIsql =
    "isql-fb no está instalado (paquete firebird3.0-utils): no se pueden crear bases de Firebird de prueba";

/// Creates `archivo` in the folder with isql-fb (embedded engine, no server)
/// and runs `sql` on it. The script is written as bytes: text literals go
/// to the columns as they stand (1252 bytes to a NONE column, UTF-8 to a
/// UTF8 one). `dialecto` 1 makes a database of the old SQL dialect.
std::string CreaBase(const CarpetaTemporal& c, const std::string& archivo, const std::string& sql, int dialecto = 3) {
    std::string ruta = c.texto() + archivo;
    std::string guion = c.texto() + archivo + ".sql";
    std::ofstream(guion, std::ios::binary) << "SET SQL DIALECT " << dialecto << ";\nCREATE DATABASE '" << ruta
                                           << "' USER 'SYSDBA' PASSWORD 'x' DEFAULT CHARACTER SET NONE;\n"
                                           << sql << "\nCOMMIT;\n";
    fs::create_directories(c.ruta() / "bloqueos-isql");
    auto r = prueba::CorreProceso("FIREBIRD_LOCK='" + c.texto() + "bloqueos-isql' '" + BuscaIsql() + "' -q -bail -i '" +
                                  guion + "'");
    EXPECT_EQ(r.estado, 0) << r.salida;
    EXPECT_TRUE(fs::exists(ruta)) << r.salida;
    return ruta;
}

std::string LeeBytes(const std::string& ruta) {
    std::ifstream f(ruta, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), {});
}

/// Points the process's temporary folder ($TMPDIR) elsewhere while it lives.
class CarpetaTemporalDelProceso {
public:
    explicit CarpetaTemporalDelProceso(const fs::path& carpeta) {
        if (const char* t = std::getenv("TMPDIR")) anterior_ = t;
        setenv("TMPDIR", carpeta.c_str(), 1);
    }
    ~CarpetaTemporalDelProceso() {
        if (anterior_)
            setenv("TMPDIR", anterior_->c_str(), 1);
        else
            unsetenv("TMPDIR");
    }

private:
    std::optional<std::string> anterior_;
};

std::vector<Fila> Filas(FuenteRegistros& fuente) {
    std::vector<Fila> r;
    for (Fila f; fuente.siguiente(f);) r.push_back(f);
    return r;
}

std::string MensajeAlAbrir(const std::string& ruta) {
    try {
        BaseFirebird b(ruta);
    } catch (const ErrorLectura& e) {
        EXPECT_EQ(e.linea(), 0);
        return e.what();
    }
    return "(se abrió)";
}

const char* kTiposSql = R"(
CREATE TABLE MOVIMIENTOS (
  ID INTEGER NOT NULL, CHICO SMALLINT, GRANDE BIGINT,
  MONTO NUMERIC(15,2), TASA DECIMAL(9,4), REAL_D DOUBLE PRECISION, REAL_F FLOAT,
  FECHA DATE, MOMENTO TIMESTAMP, HORA TIME,
  CONCEPTO CHAR(12), NOMBRE VARCHAR(20) CHARACTER SET UTF8, CLAVE CHAR(3) CHARACTER SET UTF8,
  NOTA BLOB SUB_TYPE TEXT, ACTIVO BOOLEAN);
INSERT INTO MOVIMIENTOS VALUES (1, -7, 9000000000123, -1234.56, 0.0625, 1.1, 2.5,
  '2024-03-05', '2024-12-31 23:59:58.9999', '07:08:09', 'Descripci)"
                        "\xF3n"
                        R"(', 'Ñandú €', 'ñ', 'Nota con a)"
                        "\xF1o"
                        R"( larga', TRUE);
INSERT INTO MOVIMIENTOS VALUES (2, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL);
INSERT INTO MOVIMIENTOS (ID, MONTO, FECHA, CONCEPTO) VALUES (3, 9999999999999.99, '1899-12-30', '');
INSERT INTO MOVIMIENTOS (ID, MONTO, TASA) VALUES (4, -0.05, -0.0001);
)";

TEST(BaseFirebird, LeeCadaTipoDeColumna) {
    if (BuscaIsql().empty()) GTEST_SKIP() << kSinIsql;
    CarpetaTemporal c;
    std::string ruta = CreaBase(c, "TIPOS.FDB", kTiposSql);
    BaseFirebird base(ruta, "", "");
    auto fuente = base.consulta("SELECT * FROM MOVIMIENTOS ORDER BY ID");
    EXPECT_EQ(fuente->ruta(), ruta);
    EXPECT_EQ(fuente->nombresColumnas(),
              (std::vector<std::string>{"ID", "CHICO", "GRANDE", "MONTO", "TASA", "REAL_D", "REAL_F", "FECHA",
                                        "MOMENTO", "HORA", "CONCEPTO", "NOMBRE", "CLAVE", "NOTA", "ACTIVO"}));
    auto filas = Filas(*fuente);
    ASSERT_EQ(filas.size(), 4u);

    const Fila& f = filas[0];
    EXPECT_EQ(f.numero, 1);
    EXPECT_EQ(fuente->lugar(f), "archivo " + ruta + ", registro 1");
    EXPECT_EQ(f[1], Celda::numero("1"));
    EXPECT_EQ(f[2], Celda::numero("-7"));
    EXPECT_EQ(f[3], Celda::numero("9000000000123"));
    EXPECT_EQ(f[4], Celda::numero("-1234.56"));
    EXPECT_EQ(f[4].comoMoneda(), Moneda::desdeTexto("-1234.56"));
    EXPECT_EQ(f[5], Celda::numero("0.0625"));
    EXPECT_EQ(f[6], Celda::numero("1.1"));
    EXPECT_EQ(f[7], Celda::numero("2.5"));
    EXPECT_EQ(f[8], Celda::fecha(Fecha(2024, 3, 5)));
    EXPECT_EQ(f[9], Celda::fecha(Fecha(2024, 12, 31), 23 * 3600 + 59 * 60 + 58));
    EXPECT_EQ(f[10].comoTexto(), "30/12/1899 07:08:09");
    EXPECT_EQ(f[11], Celda::texto("Descripción "));  // CHAR(12) keeps its padding
    EXPECT_EQ(f.campo(11), "Descripción");
    EXPECT_EQ(f[12], Celda::texto("Ñandú €"));
    EXPECT_EQ(f[13], Celda::texto("ñ  "));  // CHAR(3) of UTF8: three characters, not twelve bytes
    EXPECT_EQ(f[14], Celda::texto("Nota con año larga"));
    EXPECT_EQ(f[15], Celda::logico(true));

    for (int i = 2; i <= 15; ++i) EXPECT_TRUE(filas[1][i].esNula()) << "columna " << i;
    EXPECT_EQ(filas[1].numero, 2);

    EXPECT_EQ(filas[2][4], Celda::numero("9999999999999.99"));
    EXPECT_EQ(filas[2][4].comoMoneda(), Moneda::desdeTexto("9999999999999.99"));
    EXPECT_EQ(filas[2][8], Celda::fecha(Fecha(1899, 12, 30)));
    EXPECT_EQ(filas[2][11], Celda::texto(std::string(12, ' ')));

    EXPECT_EQ(filas[3][4], Celda::numero("-0.05"));
    EXPECT_EQ(filas[3][5], Celda::numero("-0.0001"));
}

TEST(BaseFirebird, CodigoDePaginaYDialectoAntiguo) {
    if (BuscaIsql().empty()) GTEST_SKIP() << kSinIsql;
    CarpetaTemporal c;
    // A dialect 1 database keeps NUMERIC(15,2) as a double with scale -2.
    std::string ruta = CreaBase(c, "D1.FDB",
                                "CREATE TABLE T (MONTO NUMERIC(15,2), TEXTO VARCHAR(10));\n"
                                "INSERT INTO T VALUES (-1234.56, 'Cami\xA2n');\n"
                                "INSERT INTO T VALUES (1234.567, 'x');",
                                1);
    BaseFirebird base(ruta);
    auto filas = Filas(*base.consulta("SELECT MONTO, TEXTO FROM T"));
    ASSERT_EQ(filas.size(), 2u);
    EXPECT_EQ(filas[0][1], Celda::numero("-1234.56"));
    EXPECT_EQ(filas[1][1], Celda::numero("1234.57"));  // the double holds 1234.567
    EXPECT_EQ(filas[0][2], Celda::texto("Cami¢n"));    // 0xA2 in Windows-1252

    BaseFirebird dos(ruta, "", "", "IBM850");
    EXPECT_EQ(Filas(*dos.consulta("SELECT TEXTO FROM T"))[0][1], Celda::texto("Camión"));  // 0xA2 in 850
    EXPECT_THROW(BaseFirebird(ruta, "", "", "no-existe"), std::invalid_argument);
}

const char* kCoi = R"(
CREATE TABLE POLIZAS (EJERCICIO INTEGER, PERIODO SMALLINT, NUM_POLIZ CHAR(5), TIPO_POLI CHAR(2),
  CONCEP_PO VARCHAR(30));
CREATE TABLE AUXILIAR (EJERCICIO INTEGER, PERIODO SMALLINT, NUM_POLIZ CHAR(5), TIPO_POLI CHAR(2),
  NUM_PART INTEGER, NUM_CTA CHAR(10), DEBE_HABER CHAR(1), MONTOMOV NUMERIC(15,2));
CREATE VIEW V_POLIZAS AS SELECT * FROM POLIZAS;
INSERT INTO POLIZAS VALUES (2024, 1, '    1', 'Dr', 'Apertura');
INSERT INTO POLIZAS VALUES (2024, 2, '    2', 'Eg', 'Pago de renta a Pe)"
                   "\xF1"
                   R"(asco');
INSERT INTO POLIZAS VALUES (2024, 13, '    3', 'Dr', 'Cierre');
INSERT INTO POLIZAS VALUES (2023, 1, '    9', 'Dr', 'Otro año');
INSERT INTO AUXILIAR VALUES (2024, 1, '    1', 'Dr', 1, '1101', 'D', 100.10);
INSERT INTO AUXILIAR VALUES (2024, 1, '    1', 'Dr', 2, '2101', 'H', 100.10);
INSERT INTO AUXILIAR VALUES (2024, 2, '    2', 'Eg', 1, '6101', 'D', 5000.00);
INSERT INTO AUXILIAR VALUES (2024, 2, '    2', 'Eg', 2, '1102', 'H', 5000.00);
INSERT INTO AUXILIAR VALUES (2024, 13, '    3', 'Dr', 1, '4101', 'D', 1.00);
)";

std::string TablasCon(const std::string& sufijo) {
    std::string r;
    for (const char* t : {"POLIZAS", "AUXILIAR", "CUENTAS", "SALDOS"})
        r += "CREATE TABLE " + std::string(t) + sufijo + " (X INTEGER);\n";
    return r;
}

TEST(BaseFirebird, TablasDeCoi7YCoi8) {
    if (BuscaIsql().empty()) GTEST_SKIP() << kSinIsql;
    CarpetaTemporal c;
    {
        BaseFirebird coi7(CreaBase(
            c, "COI7.FDB", TablasCon("2401") + TablasCon("2301") + "CREATE VIEW V AS SELECT X FROM SALDOS2401;"));
        EXPECT_EQ(coi7.tablas(), (std::vector<std::string>{"AUXILIAR2301", "AUXILIAR2401", "CUENTAS2301", "CUENTAS2401",
                                                           "POLIZAS2301", "POLIZAS2401", "SALDOS2301", "SALDOS2401"}));
    }
    BaseFirebird coi8(CreaBase(c, "COI8.FDB", kCoi));
    EXPECT_EQ(coi8.tablas(), (std::vector<std::string>{"AUXILIAR", "POLIZAS"}));
}

TEST(BaseFirebird, ParametrosYDosLecturasALaVez) {
    if (BuscaIsql().empty()) GTEST_SKIP() << kSinIsql;
    CarpetaTemporal c;
    BaseFirebird base(CreaBase(c, "COI.FDB", kCoi));

    // Heads and lines read side by side, as the two passes of a voucher import.
    auto polizas = base.consulta("SELECT * FROM POLIZAS WHERE EJERCICIO = ? AND PERIODO <= ? ORDER BY PERIODO",
                                 {Valor(2024), Valor(13)});
    auto lineas = base.consulta(
        "SELECT NUM_POLIZ, NUM_PART, MONTOMOV FROM AUXILIAR WHERE EJERCICIO = ? AND PERIODO <= ? "
        "ORDER BY PERIODO, NUM_PART",
        {Valor(2024), Valor(2)});
    Fila p, l;
    ASSERT_TRUE(polizas->siguiente(p));
    ASSERT_TRUE(lineas->siguiente(l));
    EXPECT_EQ(p.campo(3), "1");
    EXPECT_EQ(l[3], Celda::numero("100.1"));
    auto resto = Filas(*lineas);
    ASSERT_EQ(resto.size(), 3u);
    EXPECT_EQ(resto.back()[3], Celda::numero("5000"));
    EXPECT_EQ(resto.back().numero, 4);
    ASSERT_TRUE(polizas->siguiente(p));
    EXPECT_EQ(p[5], Celda::texto("Pago de renta a Peñasco"));
    ASSERT_TRUE(polizas->siguiente(p));
    EXPECT_EQ(p[2], Celda::numero("13"));
    EXPECT_FALSE(polizas->siguiente(p));
    EXPECT_FALSE(polizas->siguiente(p));  // stays at the end

    // A text parameter meets a column without character set in the code page's bytes.
    EXPECT_EQ(
        Filas(*base.consulta("SELECT EJERCICIO FROM POLIZAS WHERE CONCEP_PO = ?", {Valor("Pago de renta a Peñasco")}))
            .size(),
        1u);
    EXPECT_EQ(
        Filas(*base.consulta("SELECT * FROM POLIZAS WHERE TIPO_POLI = ? AND ? IS NULL", {Valor("Eg"), Valor()})).size(),
        1u);
    EXPECT_EQ(Filas(*base.consulta("SELECT * FROM POLIZAS WHERE PERIODO = ?", {Valor()})).size(), 0u);
    EXPECT_EQ(Filas(*base.consulta("SELECT * FROM AUXILIAR WHERE MONTOMOV = ?", {Valor(5000.0)})).size(), 2u);

    EXPECT_THROW(base.consulta("SELECT * FROM POLIZAS WHERE EJERCICIO = ?"), std::invalid_argument);
    try {
        base.consulta("SELECT * FROM POLIZAS2024");
        ADD_FAILURE() << "una tabla que no existe";
    } catch (const ErrorLectura& e) {
        EXPECT_NE(std::string(e.what()).find("POLIZAS2024"), std::string::npos) << e.what();
        EXPECT_EQ(e.archivo(), base.ruta());
    }

    // The sources keep the database open after the BaseFirebird is gone.
    std::unique_ptr<FuenteRegistros> sola;
    {
        BaseFirebird otra(base.ruta());
        sola = otra.consulta("SELECT COUNT(*) FROM AUXILIAR");
    }
    ASSERT_TRUE(sola->siguiente(p));
    EXPECT_EQ(p[1], Celda::numero("5"));
}

TEST(BaseFirebird, ElArchivoDelClienteNoSeToca) {
    if (BuscaIsql().empty()) GTEST_SKIP() << kSinIsql;
    CarpetaTemporal c;
    std::string ruta = CreaBase(c, "SOLO LECTURA.FDB", kCoi);
    { BaseFirebird(ruta).tablas(); }  // the engine is up before the temporary folder changes below
    fs::permissions(ruta, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read,
                    fs::perm_options::replace);
    std::string antes = LeeBytes(ruta);
    auto fecha = fs::last_write_time(ruta);

    CarpetaTemporal temporal;
    {
        CarpetaTemporalDelProceso cambio(temporal.ruta());
        auto copias = [&] { return std::distance(fs::directory_iterator(temporal.ruta()), fs::directory_iterator()); };
        {
            BaseFirebird base("  " + ruta + " ");
            EXPECT_EQ(base.ruta(), ruta);
            EXPECT_EQ(Filas(*base.consulta("SELECT * FROM AUXILIAR")).size(), 5u);
            EXPECT_EQ(copias(), 1);
        }
        EXPECT_EQ(copias(), 0) << "la copia temporal queda al cerrar";
    }

    EXPECT_TRUE(LeeBytes(ruta) == antes) << "el motor escribió en el archivo del cliente";
    EXPECT_EQ(fs::last_write_time(ruta), fecha);
}

TEST(BaseFirebird, ArchivosQueNoSonUnaBaseDeFirebird3) {
    CarpetaTemporal c;
    EXPECT_EQ(MensajeAlAbrir(c.texto() + "NOEXISTE.FDB"), "Confirme la Ruta del archivo de Base de Datos.");
    EXPECT_EQ(MensajeAlAbrir("   "), "Confirme la Ruta del archivo de Base de Datos.");
    EXPECT_EQ(MensajeAlAbrir(c.texto()), "Confirme la Ruta del archivo de Base de Datos.");  // a folder

    std::string texto = c.texto() + "TEXTO.FDB";
    std::ofstream(texto) << "CUENTA,DESCRIPCION\n1101,Caja\n";
    EXPECT_EQ(MensajeAlAbrir(texto), "El archivo " + texto + " no es una base de datos de Firebird.");
    std::string vacio = c.texto() + "VACIO.FDB";
    std::ofstream(vacio).flush();
    EXPECT_EQ(MensajeAlAbrir(vacio), "El archivo " + vacio + " no es una base de datos de Firebird.");

    // Header pages: type 1, page size 4096, on-disk structure as given.
    auto encabezado = [&](const std::string& nombre, unsigned char odsBajo, unsigned char odsAlto) {
        std::string bytes(4096, '\0');
        bytes[0] = 1;
        bytes[0x11] = 0x10;
        bytes[0x12] = static_cast<char>(odsBajo);
        bytes[0x13] = static_cast<char>(odsAlto);
        std::string ruta = c.texto() + nombre;
        std::ofstream(ruta, std::ios::binary) << bytes;
        return ruta;
    };
    std::string fb25 = MensajeAlAbrir(encabezado("FB25.FDB", 0x0B, 0x80));
    EXPECT_NE(fb25.find("versión anterior de Firebird (estructura en disco ODS 11, de Firebird 2.x)"),
              std::string::npos)
        << fb25;
    EXPECT_NE(fb25.find("Firebird 2.5"), std::string::npos) << fb25;
    EXPECT_NE(fb25.find("gbak"), std::string::npos) << fb25;
    EXPECT_NE(fb25.find("FB25.FDB"), std::string::npos) << fb25;
    std::string fb4 = MensajeAlAbrir(encabezado("FB4.FDB", 0x0D, 0x80));
    EXPECT_NE(fb4.find("versión más reciente de Firebird (estructura en disco ODS 13)"), std::string::npos) << fb4;
}

TEST(BaseFirebird, ArchivosDanadosNoDerribanElPrograma) {
    if (BuscaIsql().empty()) GTEST_SKIP() << kSinIsql;
    CarpetaTemporal c;
    // A header of the right structure over a file that is not a database
    // reaches the engine, which refuses it.
    std::string bytes(4096, '\0');
    bytes[0] = 1;
    bytes[0x11] = 0x10;
    bytes[0x12] = 0x0C;
    bytes[0x13] = static_cast<char>(0x80);
    std::string falso = c.texto() + "FALSO.FDB";
    std::ofstream(falso, std::ios::binary) << bytes;
    std::string m = MensajeAlAbrir(falso);
    EXPECT_EQ(m.find("No se pudo abrir la base de datos " + falso + ": "), 0u) << m;

    // A database cut short.
    std::string ruta = CreaBase(c, "ENTERA.FDB", kCoi);
    std::string cortada = c.texto() + "CORTADA.FDB";
    std::ofstream(cortada, std::ios::binary) << LeeBytes(ruta).substr(0, 3 * 8192);
    m = MensajeAlAbrir(cortada);
    EXPECT_EQ(m.find("No se pudo abrir la base de datos " + cortada + ": "), 0u) << m;
    EXPECT_EQ(m.find("velmorant-fdb"), std::string::npos) << "the engine's text names the temporary copy: " << m;
}

/// Runs in a child process: with the client library missing, the diagnosis
/// and the attempt to open say the same, and exit 0 only then.
void AbreSinBiblioteca() {
    setenv("VELMORANT_FBCLIENT", "/no/existe/libfbclient.so.2", 1);
    bool igual = [] {
        std::string diagnostico = DiagnosticoMotorFirebird();
        CarpetaTemporal c;
        std::string ruta = c.texto() + "X.FDB";
        std::string bytes(4096, '\0');
        bytes[0] = 1;
        bytes[0x11] = 0x10;
        bytes[0x12] = 0x0C;
        bytes[0x13] = static_cast<char>(0x80);
        std::ofstream(ruta, std::ios::binary) << bytes;
        std::string alAbrir = MensajeAlAbrir(ruta);
        std::fprintf(stderr, "%s\n", diagnostico.c_str());
        return diagnostico == alAbrir && !diagnostico.empty();
    }();
    std::exit(igual ? 0 : 1);
}

TEST(BaseFirebird, SinBibliotecaDelMotorLoDiceYNombraElPaquete) {
    // In a fresh process: the engine is loaded once per process.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(AbreSinBiblioteca(), ::testing::ExitedWithCode(0),
                "No se encontró la biblioteca cliente de Firebird.*paquete libfbclient2");
}

TEST(BaseFirebird, DiagnosticoVacioConElMotorInstalado) {
    if (BuscaIsql().empty()) GTEST_SKIP() << kSinIsql;  // the setup installs the engine with the tool
    EXPECT_EQ(DiagnosticoMotorFirebird(), "");
}

}  // namespace
