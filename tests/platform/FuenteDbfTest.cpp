#include <gtest/gtest.h>

#include "platform/ErrorLectura.h"
#include "platform/TablasDbfPrueba.h"
#include "platform/fuentes/DecimalExacto.h"
#include "platform/fuentes/FuenteDbf.h"
#include "platform/fuentes/PaginaCodigos.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

std::vector<Fila> LeeTodo(FuenteDbf& f) {
    std::vector<Fila> filas;
    Fila fila;
    while (f.siguiente(fila)) filas.push_back(fila);
    return filas;
}

std::vector<Fila> LeeTodo(const std::string& ruta) {
    FuenteDbf f(ruta);
    return LeeTodo(f);
}

// The message of the ErrorLectura that opening and reading the whole table
// throws, which must name the table; "" when it reads.
std::string ErrorAlLeer(const std::string& ruta) {
    try {
        LeeTodo(ruta);
    } catch (const ErrorLectura& e) {
        EXPECT_EQ(e.archivo(), ruta);
        EXPECT_NE(std::string(e.what()).find(ruta), std::string::npos) << e.what();
        return e.what();
    }
    return "";
}

bool Contiene(const std::string& texto, const std::string& parte) { return texto.find(parte) != std::string::npos; }

std::string MemoLargo() {
    std::string s;
    for (int i = 1; i <= 40; ++i) s += "Línea " + std::to_string(i) + " de la póliza; ";
    return s;
}

// A Visual FoxPro table with a memo, the binary types and nulls. python3-dbf
// numbers the bits of _NullFlags by field position where the format numbers
// them by nullable field: with the nullable fields first both agree.
bool EscribeVisualFoxPro(const CarpetaTemporal& c) {
    return EscribeConPython(c, R"(
t = dbf.Table('VFP.DBF', 'NOM C(12) NULL; CUANDO T NULL; DINERO Y NULL; VAL B NULL; NUM N(12,4) NULL; '
              'NOTA M NULL; ID I; SALDO Y; ALTA T; TASA B', dbf_type='vfp', codepage='cp1252')
t.open(dbf.READ_WRITE)
t.append(('Camión', datetime.datetime(2023, 1, 2, 3, 4, 5), Decimal('12345.6789'), 0.1, Decimal('-0.0001'),
          'memo de Visual FoxPro', -7, Decimal('922337203685477.5807'), datetime.datetime(2024, 12, 31, 0, 0, 0), 1e21))
t.append((dbf.Null, dbf.Null, dbf.Null, dbf.Null, dbf.Null, dbf.Null, 2147483646, Decimal('-922337203685477.5807'),
          datetime.datetime(1899, 12, 30, 23, 59, 59), -2.5))
t.close()
)");
}

}  // namespace

TEST(FuenteDbf, Dbase3ConMemoEnWindows1252) {
    CarpetaTemporal c;
    const std::string memo = MemoLargo();
    std::ofstream(c.texto() + "memo.txt") << memo;
    ASSERT_TRUE(EscribeConPython(c, R"(
t = dbf.Table('CLIENTES.DBF', 'NOMBRE C(20); IMPORTE N(12,2); FECHA D; ACTIVO L; NOTA M', dbf_type='db3', codepage='cp1252')
t.open(dbf.READ_WRITE)
t.append(('Peña Ñandú', Decimal('1234.50'), datetime.date(2023, 3, 15), True, open('memo.txt', encoding='utf-8').read()))
t.append(('Borrado', Decimal('1'), datetime.date(2023, 1, 1), True, 'x'))
t.append(('Sin fecha', Decimal('-0.01'), None, False, ''))
t.append(('Sin importe', None, datetime.date(2024, 2, 29), None, 'corto'))
dbf.delete(t[1])
t.close()
)"));
    std::string ruta = c.texto() + "CLIENTES.DBF";
    ASSERT_EQ(LeeBytes(ruta)[0], '\x83');  // dBase III with a .DBT
    FuenteDbf f(ruta);
    EXPECT_EQ(f.nombresColumnas(), (std::vector<std::string>{"NOMBRE", "IMPORTE", "FECHA", "ACTIVO", "NOTA"}));
    EXPECT_EQ(f.paginaCodigos(), 1252);
    EXPECT_EQ(f.totalEstimado(), 4);
    auto filas = LeeTodo(f);
    ASSERT_EQ(filas.size(), 3u);    // the deleted record is skipped...
    EXPECT_EQ(filas[1].numero, 3);  // ...and still counted in the numbering
    EXPECT_EQ(f.lugar(filas[1]), "archivo " + ruta + ", registro 3");

    EXPECT_EQ(filas[0][1], Celda::texto("Peña Ñandú"));
    EXPECT_EQ(filas[0][2], Celda::numero("1234.5"));
    EXPECT_EQ(filas[0][3], Celda::fecha(Fecha(2023, 3, 15)));
    EXPECT_EQ(filas[0][4], Celda::logico(true));
    EXPECT_EQ(filas[0][5].comoTexto(), memo);  // several 512-byte blocks, up to the end mark

    EXPECT_EQ(filas[1][2], Celda::numero("-0.01"));
    EXPECT_TRUE(filas[1][3].esNula());  // a blank date
    EXPECT_EQ(filas[1][4], Celda::logico(false));

    EXPECT_TRUE(filas[2][2].esNula());  // a blank number
    EXPECT_EQ(filas[2][3], Celda::fecha(Fecha(2024, 2, 29)));
    EXPECT_TRUE(filas[2][4].esNula());  // "?"
    EXPECT_EQ(filas[2][5], Celda::texto("corto"));
}

TEST(FuenteDbf, FoxProConMemoEnPaginasDeMsDos) {
    CarpetaTemporal c;
    ASSERT_TRUE(EscribeConPython(c, R"(
for nombre, pagina, letras in (('F850.DBF', 'cp850', 'Á ø'), ('f437.dbf', 'cp437', 'É ¢')):
    t = dbf.Table(nombre, 'NOM C(10); NOTA M', dbf_type='fp', codepage=pagina)
    t.open(dbf.READ_WRITE)
    t.append(('Canción', 'Año, señor, acción: ' + letras))
    t.append(('vacío', ''))
    t.close()
)"));
    // Byte 0x9B is "ø" in 850 and "¢" in 437: each table decodes it by the
    // page its header names.
    for (auto [tabla, memos, pagina, letras] : {std::tuple{"F850.DBF", "F850.FPT", 850, "Á ø"},
                                               std::tuple{"f437.dbf", "f437.fpt", 437, "É ¢"}}) {
        std::string ruta = c.texto() + tabla;
        ASSERT_EQ(LeeBytes(ruta)[0], '\xF5') << tabla;  // FoxPro 2 with a .FPT
        FuenteDbf f(ruta);
        EXPECT_EQ(f.paginaCodigos(), pagina);
        EXPECT_EQ(f.rutaMemos(), c.texto() + memos);
        auto filas = LeeTodo(f);
        ASSERT_EQ(filas.size(), 2u);
        EXPECT_EQ(filas[0][1], Celda::texto("Canción")) << tabla;
        EXPECT_EQ(filas[0][2], Celda::texto(std::string("Año, señor, acción: ") + letras)) << tabla;
        EXPECT_EQ(filas[1][1], Celda::texto("vacío")) << tabla;
    }
    EXPECT_NE(LeeBytes(c.texto() + "F850.FPT").find('\x9B'), std::string::npos);
    EXPECT_NE(LeeBytes(c.texto() + "f437.fpt").find('\x9B'), std::string::npos);
}

TEST(FuenteDbf, VisualFoxProTiposBinariosYNulos) {
    CarpetaTemporal c;
    ASSERT_TRUE(EscribeVisualFoxPro(c));
    FuenteDbf f(c.texto() + "VFP.DBF");
    EXPECT_EQ(f.nombresColumnas(), (std::vector<std::string>{"NOM", "CUANDO", "DINERO", "VAL", "NUM", "NOTA", "ID",
                                                              "SALDO", "ALTA", "TASA"}));  // no _NullFlags
    auto filas = LeeTodo(f);
    ASSERT_EQ(filas.size(), 2u);
    const Fila& a = filas[0];
    EXPECT_EQ(a[1], Celda::texto("Camión"));
    EXPECT_EQ(a[2], Celda::fecha(Fecha(2023, 1, 2), 3 * 3600 + 4 * 60 + 5));
    EXPECT_EQ(a[3], Celda::numero("12345.6789"));
    EXPECT_EQ(a[4], Celda::numero("0.1"));  // the shortest text of the double
    EXPECT_EQ(a[5], Celda::numero("-0.0001"));
    EXPECT_EQ(a[6], Celda::texto("memo de Visual FoxPro"));
    EXPECT_EQ(a[7], Celda::numero("-7"));
    EXPECT_EQ(a[8], Celda::numero("922337203685477.5807"));  // exact at the top of the range
    EXPECT_EQ(a[9], Celda::fecha(Fecha(2024, 12, 31)));
    EXPECT_EQ(a[10], Celda::numero("1000000000000000000000"));

    const Fila& b = filas[1];
    for (int i = 1; i <= 6; ++i) EXPECT_TRUE(b[i].esNula()) << "campo " << i;
    EXPECT_EQ(b[7], Celda::numero("2147483646"));  // the writer refuses the very top
    EXPECT_EQ(b[8], Celda::numero("-922337203685477.5807"));
    EXPECT_EQ(b[9], Celda::fecha(Fecha(1899, 12, 30), 86399));
    EXPECT_EQ(b[10], Celda::numero("-2.5"));
}

TEST(FuenteDbf, VisualFoxProMarcaNulosSoloEnCamposQueLosAdmiten) {
    // Written byte by byte: bits of _NullFlags go to the fields that may be
    // null or vary in length, in order (a Varchar's length bit before its
    // null bit), not by position; ID, which may not be null, has none.
    CarpetaTemporal c;
    std::vector<CampoPrueba> campos = {{"ID", 'I', 4},
                                       {"NOM", 'V', 10, 0, 0x02},
                                       {"FEC", 'D', 8, 0, 0x02},
                                       {"_NullFlags", '0', 1, 0, 0x05}};
    auto registro = [](int id, std::string nom, std::string fec, unsigned char marcas) {
        return " " + Le32(static_cast<std::uint32_t>(id)) + nom + fec + std::string(1, static_cast<char>(marcas));
    };
    std::string corto = "abc" + std::string(6, '\0') + "\x03";
    EscribeBytes(c.texto() + "V.DBF", TablaDbf(0x32, 0x03, campos,
                                               {registro(1, corto, "20230131", 0b001),
                                                registro(2, "abcdefghij", "        ", 0b100),
                                                registro(3, std::string(10, ' '), "20230201", 0b010)}));
    auto filas = LeeTodo(c.texto() + "V.DBF");
    ASSERT_EQ(filas.size(), 3u);
    EXPECT_EQ(filas[0][2], Celda::texto("abc"));
    EXPECT_EQ(filas[0][3], Celda::fecha(Fecha(2023, 1, 31)));
    EXPECT_EQ(filas[1][2], Celda::texto("abcdefghij"));
    EXPECT_TRUE(filas[1][3].esNula());
    EXPECT_TRUE(filas[2][2].esNula());
    EXPECT_EQ(filas[2][3], Celda::fecha(Fecha(2023, 2, 1)));
    for (const auto& f : filas) EXPECT_EQ(f[1].tipo(), Celda::Tipo::Numero);
}

TEST(FuenteDbf, Dbase4ConBloquesDeMemoYValoresQueNoSonDeSuTipo) {
    // python3-dbf writes no dBase IV memos: the .DBT is written here, with
    // its block length at bytes 20-21 and each memo behind FF FF 08 00 and
    // its length; a memo left in the dBase III way reads up to its end mark.
    CarpetaTemporal c;
    std::vector<CampoPrueba> campos = {{"NOM", 'C', 6}, {"IMPORTE", 'N', 10, 2}, {"FECHA", 'D', 8}, {"NOTA", 'M', 10}};
    const std::string largo = std::string(700, 'x') + "\xF1";  // "ñ" in 1252
    std::string dbt(512, '\0');
    dbt.replace(0, 4, Le32(6));
    dbt.replace(20, 2, Le16(512));
    auto bloque = [](const std::string& texto) {
        std::string b = std::string("\xFF\xFF\x08\x00", 4) + Le32(static_cast<std::uint32_t>(texto.size() + 8)) + texto;
        return b + std::string((512 - b.size() % 512) % 512, '\0');
    };
    dbt += bloque(largo);                                    // blocks 1 and 2
    dbt += bloque("Nota 1");                                 // block 3
    dbt += "a la antigua\x1A\x1A" + std::string(498, '\0');  // block 4
    EscribeBytes(c.texto() + "D4.DBT", dbt);
    EscribeBytes(c.texto() + "D4.DBF",
                 TablaDbf(0x8B, 0x00, campos,
                          {" uno   " + Ancho("1.5E+03", 10, true) + "20230105" + Ancho("1", 10, true),
                           " dos   " + Ancho("***", 10, true) + "20231305" + Ancho("3", 10, true),
                           " tres  " + Ancho("-000.50", 10, true) + "00000000" + Ancho("4", 10, true),
                           " cuatro" + Ancho("", 10) + "        " + Ancho("", 10)}));
    FuenteDbf f(c.texto() + "D4.DBF");
    EXPECT_EQ(f.paginaCodigos(), 1252);  // no page recorded
    auto filas = LeeTodo(f);
    ASSERT_EQ(filas.size(), 4u);
    EXPECT_EQ(filas[0][4].comoTexto(), std::string(700, 'x') + "ñ");
    EXPECT_EQ(filas[1][4], Celda::texto("Nota 1"));
    EXPECT_EQ(filas[2][4], Celda::texto("a la antigua"));
    EXPECT_TRUE(filas[3][4].esNula());

    EXPECT_EQ(filas[0][2], Celda::numero("1500"));
    EXPECT_EQ(filas[1][2], Celda::texto("***"));       // an overflow mark, for the reader to report
    EXPECT_EQ(filas[1][3], Celda::texto("20231305"));  // not a date: the text as it stands
    EXPECT_EQ(filas[2][2], Celda::numero("-0.5"));
    EXPECT_TRUE(filas[2][3].esNula());  // zeros: no date
    EXPECT_TRUE(filas[3][2].esNula());
}

TEST(FuenteDbf, ArchivosDanadosDanUnMensajeConSuNombre) {
    CarpetaTemporal c;
    ASSERT_TRUE(EscribeVisualFoxPro(c));
    const std::string ruta = c.texto() + "T.DBF";
    const std::string tabla = LeeBytes(c.texto() + "VFP.DBF");
    const std::string memos = LeeBytes(c.texto() + "VFP.FPT");
    auto prueba = [&](const std::string& bytesTabla, const std::string& bytesMemos) {
        EscribeBytes(ruta, bytesTabla);
        EscribeBytes(c.texto() + "T.FPT", bytesMemos);
        return ErrorAlLeer(ruta);
    };
    ASSERT_EQ(prueba(tabla, memos), "");

    EXPECT_TRUE(Contiene(prueba(tabla.substr(0, tabla.size() - 6), memos), "está incompleto"));
    EXPECT_TRUE(Contiene(prueba("Cuenta,Nombre\n1101,Caja\n", memos), "no es una tabla de dBase o FoxPro"));
    EXPECT_TRUE(Contiene(prueba("", memos), "no es una tabla"));
    std::string dbase7 = tabla;
    dbase7[0] = '\x04';
    EXPECT_TRUE(Contiene(prueba(dbase7, memos), "dBase 7"));
    std::string sinFin = tabla;
    for (size_t i = 32; i < 32 + 32 * 11 + 1; ++i)
        if (sinFin[i] == '\x0D') sinFin[i] = ' ';
    EXPECT_TRUE(Contiene(prueba(sinFin, memos), "la lista de campos no tiene fin"));
    std::string registroCorto = tabla;
    registroCorto.replace(10, 2, Le16(20));
    EXPECT_TRUE(Contiene(prueba(registroCorto, memos), "sus campos suman"));

    // The memo of the first record points past a memo file cut short.
    EXPECT_TRUE(Contiene(prueba(tabla, memos.substr(0, 520)), "queda fuera del archivo"));
    std::filesystem::remove(c.texto() + "T.FPT");
    EscribeBytes(ruta, tabla);
    EXPECT_TRUE(Contiene(ErrorAlLeer(ruta), "No se encontró el archivo de memos T.FPT"));
    EXPECT_THROW(FuenteDbf(c.texto() + "no-esta.dbf"), ErrorLectura);
}

TEST(FuenteDbf, NingunCorteNiByteCambiadoLeeFueraDelArchivo) {
    // Every prefix of the table and of its memo file, and every byte of the
    // header set to 0xFF, either reads or gives ErrorLectura: nothing else
    // escapes, nothing reads out of bounds (the build's sanitizer runs see
    // the same cases).
    CarpetaTemporal c;
    ASSERT_TRUE(EscribeVisualFoxPro(c));
    const std::string tabla = LeeBytes(c.texto() + "VFP.DBF");
    const std::string memos = LeeBytes(c.texto() + "VFP.FPT");
    const std::string ruta = c.texto() + "T.DBF";
    auto intenta = [&](const std::string& t, const std::string& m) {
        EscribeBytes(ruta, t);
        EscribeBytes(c.texto() + "T.FPT", m);
        try {
            LeeTodo(ruta);
            return true;
        } catch (const ErrorLectura&) {
            return false;
        }
    };
    const auto* h = reinterpret_cast<const unsigned char*>(tabla.data());
    size_t completa = (h[8] | h[9] << 8) + (h[10] | h[11] << 8) * 2u;  // header and two records
    for (size_t n = 0; n < tabla.size(); ++n) EXPECT_EQ(intenta(tabla.substr(0, n), memos), n >= completa) << n;
    for (size_t n = 0; n < memos.size(); ++n) intenta(tabla, memos.substr(0, n));
    for (size_t i = 0; i < 32 * 12 + 1; ++i) {
        std::string t = tabla;
        t[i] = '\xFF';
        intenta(t, memos);
    }
    for (size_t i = 0; i < memos.size(); ++i) {
        std::string m = memos;
        m[i] = '\xFF';
        intenta(tabla, m);
    }
}

TEST(DecimalExacto, FormaUnicaSinPasarPorDoble) {
    struct Caso {
        const char* texto;
        const char* esperado;  // null: not a number
    } casos[] = {
        {"  1234.50", "1234.5"}, {"-0.01", "-0.01"}, {"-000.00", "0"}, {"+12", "12"}, {".5", "0.5"},
        {"5.", "5"}, {"1.5E+03", "1500"}, {"25e-4", "0.0025"}, {"12345678901234567890.123456789", "12345678901234567890.123456789"},
        {"0.1000000000000000055511151231257827", "0.1000000000000000055511151231257827"},
        {"***", nullptr}, {"", nullptr}, {"-", nullptr}, {"1.2.3", nullptr}, {"1,234", nullptr}, {"12-", nullptr},
        {"1e", nullptr}, {"1e99999", nullptr},
    };
    for (const auto& caso : casos) {
        auto r = DecimalExacto(caso.texto);
        if (caso.esperado)
            EXPECT_EQ(r, std::optional<std::string>(caso.esperado)) << caso.texto;
        else
            EXPECT_EQ(r, std::nullopt) << caso.texto;
    }
}

TEST(PaginaCodigos, MarcasDelEncabezadoYDecodificacion) {
    EXPECT_EQ(PaginaCodigosDeMarca(0x00), 1252);
    EXPECT_EQ(PaginaCodigosDeMarca(0x01), 437);
    EXPECT_EQ(PaginaCodigosDeMarca(0x02), 850);
    EXPECT_EQ(PaginaCodigosDeMarca(0x14), 850);  // dBase's Spanish driver
    EXPECT_EQ(PaginaCodigosDeMarca(0x59), 1252);
    EXPECT_EQ(PaginaCodigosDeMarca(0xC8), 1250);
    EXPECT_EQ(PaginaCodigosDeMarca(0xEE), 1252);  // unknown
    EXPECT_EQ(DecodificadorPaginaCodigos(850).decodifica("\xA4\x82\xB5\x90"), "ñéÁÉ");
    EXPECT_EQ(DecodificadorPaginaCodigos(437).decodifica("\xA4\x82\x9B"), "ñé¢");
    EXPECT_EQ(DecodificadorPaginaCodigos(1252).decodifica("\xF1\x80"), "ñ€");
    EXPECT_EQ(DecodificadorPaginaCodigos(1251).decodifica("\xC0"), "А");
    EXPECT_EQ(DecodificadorPaginaCodigos(99999).pagina(), 1252);
}
