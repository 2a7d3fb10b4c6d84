#include <gtest/gtest.h>
#include <xlsxwriter.h>
#include <zip.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <list>
#include <map>
#include <sstream>

#include "platform/ErrorLectura.h"
#include "platform/fuentes/DocumentoCompuesto.h"
#include "platform/fuentes/FuenteLibro.h"
#include "platform/fuentes/LibroInterno.h"
#include "support/Entorno.h"

using namespace velmorant;
using velmorant::prueba::CarpetaTemporal;

namespace {

// A workbook written by libxlsxwriter; `llena` fills its first sheet.
std::string EscribeXlsx(const CarpetaTemporal& c, const std::string& nombre,
                        const std::function<void(lxw_workbook*, lxw_worksheet*)>& llena) {
    std::string ruta = c.texto() + nombre;
    lxw_workbook* libro = workbook_new(ruta.c_str());
    lxw_worksheet* hoja = workbook_add_worksheet(libro, "Catálogo");
    llena(libro, hoja);
    EXPECT_EQ(workbook_close(libro), LXW_NO_ERROR);
    return ruta;
}

// A zip package written part by part, as tools other than the spreadsheet
// write them.
std::string EscribeZip(const CarpetaTemporal& c, const std::string& nombre,
                       const std::map<std::string, std::string>& partes) {
    std::string ruta = c.texto() + nombre;
    int error = 0;
    zip_t* z = zip_open(ruta.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    EXPECT_NE(z, nullptr);
    for (const auto& [parte, texto] : partes) {
        zip_source_t* s = zip_source_buffer(z, texto.data(), texto.size(), 0);
        EXPECT_GE(zip_file_add(z, parte.c_str(), s, ZIP_FL_OVERWRITE), 0);
    }
    EXPECT_EQ(zip_close(z), 0);
    return ruta;
}

std::vector<Fila> Filas(FuenteLibro& f) {
    std::vector<Fila> r;
    Fila fila;
    while (f.siguiente(fila)) r.push_back(fila);
    return r;
}

// Every cell's text, "|" between cells: a row at a glance.
std::string Texto(const Fila& f) {
    std::string r;
    for (size_t i = 0; i < f.celdas.size(); ++i) r += (i ? "|" : "") + f.celdas[i].comoTexto();
    return r;
}

std::string MensajeDe(const std::function<void()>& abre) {
    try {
        abre();
    } catch (const ErrorLectura& e) {
        return e.what();
    }
    return "(sin error)";
}

// A compound document of 512-byte sectors whose directory holds the
// streams given (name, first sector, size) and whose allocation table is
// `fat` from sector 2 on; sectors 0 and 1 are the table and the directory.
std::string DocumentoCompuestoAMano(const std::vector<std::tuple<std::string, uint32_t, uint32_t>>& flujos,
                                    const std::vector<uint32_t>& fat, size_t sectores) {
    std::string d(512 * (1 + sectores), '\0');
    auto u16 = [&](size_t p, uint16_t v) { d[p] = static_cast<char>(v & 0xFF), d[p + 1] = static_cast<char>(v >> 8); };
    auto u32 = [&](size_t p, uint32_t v) { u16(p, v & 0xFFFF), u16(p + 2, v >> 16); };
    const char firma[] = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
    d.replace(0, 8, firma, 8);
    u16(0x1A, 3), u16(0x1C, 0xFFFE), u16(0x1E, 9), u16(0x20, 6);
    u32(0x2C, 1), u32(0x30, 1), u32(0x38, 4096), u32(0x3C, 0xFFFFFFFE), u32(0x44, 0xFFFFFFFE);
    for (int i = 0; i < 109; ++i) u32(0x4C + 4 * i, i == 0 ? 0 : 0xFFFFFFFF);
    size_t tabla = 512, directorio = 1024;
    for (size_t i = 0; i < 128; ++i) u32(tabla + 4 * i, 0xFFFFFFFF);
    u32(tabla, 0xFFFFFFFD), u32(tabla + 4, 0xFFFFFFFE);
    for (size_t i = 0; i < fat.size(); ++i) u32(tabla + 4 * (i + 2), fat[i]);
    auto entrada = [&](size_t n, const std::string& nombre, int tipo, uint32_t inicio, uint32_t tamanio) {
        size_t p = directorio + 128 * n;
        for (size_t i = 0; i < nombre.size(); ++i) u16(p + 2 * i, static_cast<unsigned char>(nombre[i]));
        u16(p + 0x40, static_cast<uint16_t>(2 * (nombre.size() + 1)));
        d[p + 0x42] = static_cast<char>(tipo);
        u32(p + 0x44, 0xFFFFFFFF), u32(p + 0x48, 0xFFFFFFFF), u32(p + 0x4C, n == 0 ? 1 : 0xFFFFFFFF);
        u32(p + 0x74, inicio), u32(p + 0x78, tamanio);
    };
    entrada(0, "Root Entry", 5, 0xFFFFFFFE, 0);
    for (size_t i = 0; i < flujos.size(); ++i)
        entrada(i + 1, std::get<0>(flujos[i]), 2, std::get<1>(flujos[i]), std::get<2>(flujos[i]));
    return d;
}

// The package with some bytes of the sheet's compressed data scrambled;
// its directory intact.
std::string AlteraHoja(std::string b) {
    const std::string parte = "xl/worksheets/sheet1.xml";
    size_t p = b.find(parte);  // the first is the entry's local header
    for (size_t i = p + parte.size() + 30; i < p + parte.size() + 70 && i < b.size(); ++i)
        b[i] = static_cast<char>(b[i] ^ 0x55);
    return b;
}

// The bytes with those at `desplazamiento` from the first record that
// starts with `cabecera` (type and length) replaced.
std::string Parchea(std::string b, const std::string& cabecera, size_t desplazamiento, const std::string& nuevos) {
    size_t p = b.find(cabecera);
    EXPECT_NE(p, std::string::npos);
    b.replace(p + desplazamiento, nuevos.size(), nuevos);
    return b;
}

std::string EscribeBytes(const CarpetaTemporal& c, const std::string& nombre, const std::string& bytes) {
    std::string ruta = c.texto() + nombre;
    std::ofstream(ruta, std::ios::binary) << bytes;
    return ruta;
}

// A workbook in the older format, written by python-xlwt.
std::string EscribeXls(const CarpetaTemporal& c, const std::string& nombre, const std::string& cuerpo) {
    std::string guion = c.texto() + nombre + ".py";
    std::string ruta = c.texto() + nombre;
    std::ofstream(guion) << "import xlwt, datetime\n"
                            "wb = xlwt.Workbook(encoding='utf-8')\n"
                            "ws = wb.add_sheet('Catálogo')\n"
                            "fecha = xlwt.easyxf(num_format_str='dd/mm/yyyy')\n"
                            "fechaHora = xlwt.easyxf(num_format_str='dd/mm/yyyy hh:mm:ss')\n"
                         << cuerpo << "wb.save('" << ruta << "')\n";
    auto r = prueba::CorreProceso("/usr/bin/python3 " + guion);
    EXPECT_EQ(r.estado, 0) << r.salida;
    return ruta;
}

}  // namespace

TEST(FuenteLibro, XlsxCadaTipoDeCeldaConSuFila) {
    CarpetaTemporal c;
    std::string ruta = EscribeXlsx(c, "catalogo.xlsx", [](lxw_workbook* libro, lxw_worksheet* h) {
        lxw_format* fechaHora = workbook_add_format(libro);
        format_set_num_format(fechaHora, "dd/mm/yyyy hh:mm:ss");
        lxw_format* fecha = workbook_add_format(libro);
        format_set_num_format_index(fecha, 14);
        const char* titulos[] = {"Cuenta", "Nombre", "Importe", "Fecha", "Activa", "Total"};
        for (int i = 0; i < 6; ++i) worksheet_write_string(h, 0, static_cast<lxw_col_t>(i), titulos[i], nullptr);
        lxw_datetime conHora = {2023, 1, 31, 10, 30, 15}, sinHora = {2023, 2, 1, 0, 0, 0};
        worksheet_write_number(h, 1, 0, 1010001, nullptr);
        worksheet_write_string(h, 1, 1, "Caja y bancos, ñandú", nullptr);
        worksheet_write_number(h, 1, 2, 0.1, nullptr);
        worksheet_write_datetime(h, 1, 3, &conHora, fechaHora);
        worksheet_write_boolean(h, 1, 4, 1, nullptr);
        worksheet_write_formula_num(h, 1, 5, "=C2+C3", nullptr, 1234567.99);
        worksheet_write_string(h, 2, 0, "1020", nullptr);
        worksheet_write_number(h, 2, 2, 1234567.89, nullptr);
        worksheet_write_datetime(h, 2, 3, &sinHora, fecha);
        // row 4 blank; row 5 only its third and sixth cells
        worksheet_write_number(h, 4, 2, -5, nullptr);
        worksheet_write_number(h, 4, 5, 1e-7, nullptr);
        lxw_format* negrita = workbook_add_format(libro);
        format_set_bold(negrita);
        lxw_rich_string_tuple a = {nullptr, const_cast<char*>("Pólizas ")},
                              b = {negrita, const_cast<char*>("de diario")};
        lxw_rich_string_tuple* partes[] = {&a, &b, nullptr};
        worksheet_write_rich_string(h, 5, 1, partes, nullptr);
    });

    FuenteLibro f(ruta);
    EXPECT_EQ(f.nombreHoja(), "Catálogo");
    EXPECT_EQ(f.nombresColumnas(),
              (std::vector<std::string>{"Cuenta", "Nombre", "Importe", "Fecha", "Activa", "Total"}));
    EXPECT_EQ(f.totalEstimado(), 5);
    auto filas = Filas(f);
    ASSERT_EQ(filas.size(), 5u);
    EXPECT_EQ(Texto(filas[0]), "1010001|Caja y bancos, ñandú|0.1|31/01/2023 10:30:15|Verdadero|1234567.99");
    EXPECT_EQ(filas[0][1].tipo(), Celda::Tipo::Numero);
    EXPECT_EQ(filas[0][4].tipo(), Celda::Tipo::Fecha);
    EXPECT_EQ(filas[0][4].segundos(), 37815);
    EXPECT_EQ(Texto(filas[1]), "1020||1234567.89|01/02/2023");
    EXPECT_EQ(filas[1][4].tipo(), Celda::Tipo::Fecha);
    EXPECT_TRUE(filas[1][2].esNula());
    EXPECT_TRUE(filas[2].vacia());
    EXPECT_EQ(Texto(filas[3]), "||-5|||0.0000001");
    EXPECT_EQ(filas[4].campo(2), "Pólizas de diario");
    // The sheet's own row numbers, for the messages.
    EXPECT_EQ(filas[0].numero, 2);
    EXPECT_EQ(filas[4].numero, 6);
    EXPECT_EQ(f.lugar(filas[3]), "archivo " + ruta + ", fila 5");
    EXPECT_EQ(filas[0][3].comoMoneda(), Moneda::desdeDiezmilesimas(1000));
    EXPECT_EQ(PrimeraHojaExcel(ruta), "Catálogo");
}

TEST(FuenteLibro, RangoEncabezadoYAreaUsada) {
    CarpetaTemporal c;
    // A report: a title, a period line, the column heads on row 7 (A..L),
    // something beside the table in column M.
    std::string ruta = EscribeXlsx(c, "reporte.xlsx", [](lxw_workbook*, lxw_worksheet* h) {
        worksheet_write_string(h, 0, 0, "Balanza de comprobación", nullptr);
        worksheet_write_string(h, 2, 1, "Enero 2023", nullptr);
        for (int i = 0; i < 12; ++i)
            worksheet_write_string(h, 6, static_cast<lxw_col_t>(i), ("C" + std::to_string(i + 1)).c_str(), nullptr);
        worksheet_write_string(h, 7, 0, "1101", nullptr);
        worksheet_write_number(h, 7, 11, 150.5, nullptr);
        worksheet_write_string(h, 7, 12, "nota al margen", nullptr);
        worksheet_write_string(h, 9, 1, "2101", nullptr);
        worksheet_write_string(h, 11, 12, "solo al margen", nullptr);
    });

    FuenteLibro conRango(ruta, {"", "$A7:L", true});
    auto nombres = conRango.nombresColumnas();
    ASSERT_EQ(nombres.size(), 12u);
    EXPECT_EQ(nombres.front(), "C1");
    EXPECT_EQ(nombres.back(), "C12");
    auto filas = Filas(conRango);
    ASSERT_EQ(filas.size(), 3u);  // rows 8 to 10; row 12 holds nothing inside A..L
    EXPECT_EQ(filas[0].numero, 8);
    EXPECT_EQ(filas[0].celdas.size(), 12u);  // column M left out
    EXPECT_EQ(filas[0].campo(12), "150.5");
    EXPECT_TRUE(filas[1].vacia());
    EXPECT_EQ(filas[2].campo(2), "2101");

    // Columns count from the range's first column; without a header the
    // first row of the range is data.
    FuenteLibro desdeB(ruta, {"", "B7:D9", false});
    filas = Filas(desdeB);
    ASSERT_EQ(filas.size(), 1u);
    EXPECT_EQ(filas[0].numero, 7);
    EXPECT_EQ(Texto(filas[0]), "C2|C3|C4");
    EXPECT_TRUE(desdeB.nombresColumnas().empty());

    // Without a range the used area starts at the first row and column
    // holding a value: the title is the header.
    FuenteLibro todo(ruta);
    EXPECT_EQ(todo.nombresColumnas().size(), 13u);
    EXPECT_EQ(todo.nombresColumnas()[0], "Balanza de comprobación");
    EXPECT_EQ(todo.totalEstimado(), 11);
    filas = Filas(todo);
    ASSERT_EQ(filas.size(), 11u);
    EXPECT_EQ(filas.front().numero, 2);
    EXPECT_EQ(filas.back().campo(13), "solo al margen");

    std::string enB3 = EscribeXlsx(c, "enB3.xlsx", [](lxw_workbook*, lxw_worksheet* h) {
        worksheet_write_string(h, 2, 1, "Cuenta", nullptr);
        worksheet_write_string(h, 3, 1, "1101", nullptr);
        worksheet_write_string(h, 3, 2, "Caja", nullptr);
    });
    FuenteLibro usado(enB3);
    EXPECT_EQ(usado.nombresColumnas(), (std::vector<std::string>{"Cuenta", ""}));
    filas = Filas(usado);
    ASSERT_EQ(filas.size(), 1u);
    EXPECT_EQ(Texto(filas[0]), "1101|Caja");

    EXPECT_NE(MensajeDe([&] {
                  FuenteLibro(ruta, {"", "L7:A", true});
              }).find("Rango de hoja no válido"),
              std::string::npos);
    EXPECT_NE(MensajeDe([&] {
                  FuenteLibro(ruta, {"Mayor", "", true});
              }).find("no tiene la hoja \"Mayor\""),
              std::string::npos);
}

// A package written by another program: absolute targets, inline strings,
// prefixed element names, the 1904 date system, rows without numbers, and
// a formula saved without its result.
TEST(FuenteLibro, XlsxDeOtroProgramaYFormulaSinResultado) {
    CarpetaTemporal c;
    const std::string ns =
        "xmlns:x=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\" "
        "xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\"";
    const std::string rel = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
    auto partes = [&](const std::string& celdaC3) {
        return std::map<std::string, std::string>{
            {"[Content_Types].xml", "<Types/>"},
            {"_rels/.rels", "<Relationships><Relationship Id=\"rId1\" Type=\"" + rel +
                                "officeDocument\" Target=\"/xl/workbook.xml\"/></Relationships>"},
            {"xl/workbook.xml", "<x:workbook " + ns +
                                    "><x:workbookPr date1904=\"true\"/><x:sheets>"
                                    "<x:sheet name=\"Gráfica\" sheetId=\"2\" r:id=\"rId9\"/>"
                                    "<x:sheet name=\"Pólizas\" sheetId=\"1\" r:id=\"rId1\"/></x:sheets></x:workbook>"},
            {"xl/_rels/workbook.xml.rels",
             "<Relationships><Relationship Id=\"rId1\" Type=\"" + rel +
                 "worksheet\" Target=\"/xl/worksheets/hoja.xml\"/><Relationship Id=\"rId9\" Type=\"" + rel +
                 "chartsheet\" Target=\"/xl/chartsheets/sheet1.xml\"/><Relationship Id=\"rId2\" Type=\"" + rel +
                 "styles\" Target=\"/xl/styles.xml\"/></Relationships>"},
            {"xl/styles.xml", "<x:styleSheet " + ns +
                                  "><x:cellXfs count=\"2\"><x:xf numFmtId=\"0\"/><x:xf numFmtId=\"14\"/>"
                                  "</x:cellXfs></x:styleSheet>"},
            {"xl/worksheets/hoja.xml",
             "<?xml version=\"1.0\"?><x:worksheet " + ns +
                 "><x:dimension ref=\"A1:XFD1048576\"/><x:sheetData>"
                 "<x:row><x:c r=\"A1\" t=\"inlineStr\"><x:is><x:t>Fecha</x:t></x:is></x:c>"
                 "<x:c r=\"B1\" t=\"inlineStr\"><x:is><x:r><x:t xml:space=\"preserve\">Con</x:t></x:r>"
                 "<x:r><x:t xml:space=\"preserve\">cepto</x:t></x:r></x:is></x:c></x:row>"
                 "<x:row><x:c r=\"A2\" s=\"1\"><x:v>43830</x:v></x:c><x:c r=\"B2\" t=\"inlineStr\"><x:is>"
                 "<x:t>Línea_x000D_ dos</x:t></x:is></x:c></x:row>"
                 "<x:row>" +
                 celdaC3 +
                 "</x:row>"
                 "</x:sheetData></x:worksheet>"},
        };
    };
    std::string ruta = EscribeZip(c, "otro.xlsx", partes("<x:c r=\"A3\" s=\"1\"><x:v>0</x:v></x:c>"));
    FuenteLibro f(ruta);
    EXPECT_EQ(f.hojas(), std::vector<std::string>{"Pólizas"});
    EXPECT_EQ(f.nombresColumnas(), (std::vector<std::string>{"Fecha", "Concepto"}));
    auto filas = Filas(f);
    ASSERT_EQ(filas.size(), 2u);
    EXPECT_EQ(Texto(filas[0]), "01/01/2024|Línea\r dos");  // 43830 days after 01/01/1904
    EXPECT_EQ(filas[1].campo(1), "01/01/1904");
    EXPECT_EQ(filas[1].numero, 3);

    std::string sinResultado = EscribeZip(
        c, "formula.xlsx", partes("<x:c r=\"A3\"><x:v>5</x:v></x:c><x:c r=\"C3\"><x:f>SUM(C1:C2)</x:f></x:c>"));
    try {
        FuenteLibro mal(sinResultado);
        FAIL() << "una fórmula sin resultado no puede leerse en blanco";
    } catch (const ErrorLectura& e) {
        EXPECT_NE(std::string(e.what()).find(sinResultado), std::string::npos);
        EXPECT_NE(std::string(e.what()).find("la celda C3 tiene una fórmula sin su resultado"), std::string::npos);
        EXPECT_EQ(e.linea(), 3);
    }
    // Outside the area read, the same formula does not matter.
    FuenteLibro soloAyB(sinResultado, {"", "A1:B", true});
    EXPECT_EQ(Filas(soloAyB).size(), 2u);
}

TEST(FuenteLibro, XlsDeOtroPrograma) {
    CarpetaTemporal c;
    std::string ruta = EscribeXls(c, "catalogo.xls",
                                  "ws.write(0,0,'Cuenta'); ws.write(0,1,'Nombre'); ws.write(0,2,'Importe')\n"
                                  "ws.write(0,3,'Fecha')\n"
                                  "ws.write(1,0,1010001); ws.write(1,1,'Caja y bancos ñ'); ws.write(1,2,0.1)\n"
                                  "ws.write(1,3,datetime.datetime(2023,1,31,10,30,15),fechaHora)\n"
                                  "ws.write(2,0,'1020'); ws.write(2,2,1234567.89)\n"
                                  "ws.write(2,3,datetime.date(2023,2,1),fecha)\n"
                                  "ws.write(4,2,-5); ws.write(4,3,True); ws.write(4,4,False)\n"
                                  "ws.row(4).set_cell_error(5,'#DIV/0!')\n"
                                  "otra = wb.add_sheet('Saldos'); otra.write(0,0,'Saldo'); otra.write(1,0,-12.5)\n");
    FuenteLibro f(ruta);
    EXPECT_EQ(f.nombreHoja(), "Catálogo");
    EXPECT_EQ(f.hojas(), (std::vector<std::string>{"Catálogo", "Saldos"}));
    EXPECT_EQ(f.nombresColumnas(), (std::vector<std::string>{"Cuenta", "Nombre", "Importe", "Fecha", "", ""}));
    auto filas = Filas(f);
    ASSERT_EQ(filas.size(), 4u);
    EXPECT_EQ(Texto(filas[0]), "1010001|Caja y bancos ñ|0.1|31/01/2023 10:30:15");
    EXPECT_EQ(Texto(filas[1]), "1020||1234567.89|01/02/2023");
    EXPECT_EQ(filas[1][4].tipo(), Celda::Tipo::Fecha);
    EXPECT_TRUE(filas[2].vacia());
    // Logical and error values, which FreeXL gives as numbers.
    EXPECT_EQ(Texto(filas[3]), "||-5|Verdadero|Falso|#DIV/0!");
    EXPECT_EQ(filas[3].numero, 5);

    FuenteLibro saldos(ruta, {"saldos", "", true});
    filas = Filas(saldos);
    ASSERT_EQ(filas.size(), 1u);
    EXPECT_EQ(filas[0].campo(1), "-12.5");

    std::string conFormula = EscribeXls(c, "formula.xls",
                                        "wb.dates_1904 = True\n"
                                        "ws.write(0,0,'Importe'); ws.write(1,0,datetime.date(2023,2,1),fecha)\n"
                                        "ws.write(2,0,5); ws.write(3,0,xlwt.Formula('A2+A3'))\n");
    try {
        FuenteLibro mal(conFormula);
        FAIL() << "una fórmula de un .xls no puede leerse en blanco";
    } catch (const ErrorLectura& e) {
        EXPECT_NE(std::string(e.what()).find(conFormula), std::string::npos);
        EXPECT_NE(std::string(e.what()).find("la celda A4 tiene una fórmula"), std::string::npos);
        EXPECT_EQ(e.linea(), 4);
    }
    FuenteLibro arriba(conFormula, {"", "A1:A3", true});
    filas = Filas(arriba);
    ASSERT_EQ(filas.size(), 2u);
    EXPECT_EQ(filas[0].campo(1), "01/02/2023");  // a workbook of the 1904 date system
}

TEST(FuenteLibro, ArchivosQueNoSeLeen) {
    CarpetaTemporal c;
    std::string bueno = EscribeXlsx(c, "bueno.xlsx", [](lxw_workbook*, lxw_worksheet* h) {
        for (int i = 0; i < 200; ++i) worksheet_write_number(h, static_cast<lxw_row_t>(i), 0, i, nullptr);
    });
    std::string bytes;
    {
        std::ifstream in(bueno, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), {});
    }
    std::string xls = EscribeXls(c, "bueno.xls", "ws.write(0,0,'x'); ws.write(1,0,datetime.date(2023,1,1),fecha)\n");
    std::string bytesXls;
    {
        std::ifstream in(xls, std::ios::binary);
        bytesXls.assign(std::istreambuf_iterator<char>(in), {});
    }
    const std::string rel = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
    struct Caso {
        std::string nombre, ruta, mensaje;
        std::string hoja;  // the first sheet's name when the workbook opens and a row fails
        Caso(std::string n, std::string r, std::string m, std::string h = "")
            : nombre(std::move(n)), ruta(std::move(r)), mensaje(std::move(m)), hoja(std::move(h)) {}
    } casos[] = {
        {"no existe", c.texto() + "no.xlsx", "No se pudo abrir el archivo"},
        {"texto", EscribeBytes(c, "texto.xls", "Cuenta,Nombre\n1101,Caja\n"), "no es un libro de Excel"},
        {"vacío", EscribeBytes(c, "vacio.xlsx", ""), "no es un libro de Excel"},
        {"xlsx cortado", EscribeBytes(c, "cortado.xlsx", bytes.substr(0, bytes.size() / 2)), "dañado"},
        {"xlsx sin su final", EscribeBytes(c, "sinfinal.xlsx", bytes.substr(0, bytes.size() - 30)), "dañado"},
        {"xlsx alterado", EscribeBytes(c, "alterado.xlsx", AlteraHoja(bytes)),
         "dañado o incompleto (xl/worksheets/sheet1.xml)", "Catálogo"},
        {"xls cortado", EscribeBytes(c, "cortado.xls", bytesXls.substr(0, 1500)), "dañado"},
        {"zip que no es libro", EscribeZip(c, "otro.zip", {{"leeme.txt", "hola"}}), "no es un libro de Excel"},
        {"con contraseña",
         EscribeBytes(
             c, "cifrado.xlsx",
             DocumentoCompuestoAMano({{"EncryptionInfo", 0xFFFFFFFE, 0}, {"EncryptedPackage", 0xFFFFFFFE, 0}}, {}, 2)),
         "está protegido con contraseña"},
        // The code-page record (type 0x42, 2 bytes) turned into the encryption record (0x2F).
        {"xls con contraseña",
         EscribeBytes(c, "cifrado.xls", Parchea(bytesXls, std::string("\x42\x00\x02\x00", 4), 0, "\x2F")),
         "está protegido con contraseña"},
        // Records that FreeXL would trust: a number format (0x41E) whose text
        // claims 65287 wide characters in a record of a few bytes; a sheet's
        // dimensions (0x200) smaller than its cells.
        {"xls con un texto más largo que su registro",
         EscribeBytes(c, "formato.xls", Parchea(bytesXls, "\x1E\x04", 6, "\x07\xFF\xFF")),
         "dañado o incompleto (registro ilegible en la posición"},
        {"xls con celdas fuera de su dimensión",
         EscribeBytes(c, "dimension.xls",
                      Parchea(bytesXls, std::string("\x00\x02\x0E\x00", 4), 8, std::string("\x01\x00\x00\x00", 4))),
         "dañado o incompleto (registro ilegible en la posición"},
        {"cadena circular", EscribeBytes(c, "ciclo.xls", DocumentoCompuestoAMano({{"Workbook", 2, 8192}}, {3, 2}, 20)),
         "cadena de sectores circular"},
        {"documento sin libro",
         EscribeBytes(c, "carta.doc",
                      DocumentoCompuestoAMano({{"WordDocument", 2, 4096}}, {3, 4, 5, 6, 7, 8, 9, 0xFFFFFFFE}, 10)),
         "no es un libro de Excel"},
        {"texto que no existe",
         EscribeZip(c, "indice.xlsx",
                    {{"xl/workbook.xml", "<workbook><sheets><sheet name=\"H\" r:id=\"b\"/></sheets></workbook>"},
                     {"xl/_rels/workbook.xml.rels", "<Relationships><Relationship Id=\"b\" Type=\"" + rel +
                                                        "worksheet\" Target=\"h.xml\"/></Relationships>"},
                     {"xl/h.xml",
                      "<worksheet><sheetData><row r=\"3\"><c r=\"B3\" t=\"s\"><v>7</v></c></row>"
                      "</sheetData></worksheet>"}}),
         "la celda B3 remite a un texto que no existe", "H"},
        {"fila fuera de orden",
         EscribeZip(c, "orden.xlsx",
                    {{"_rels/.rels", "<Relationships><Relationship Id=\"a\" Type=\"" + rel +
                                         "officeDocument\" Target=\"xl/workbook.xml\"/></Relationships>"},
                     {"xl/workbook.xml", "<workbook><sheets><sheet name=\"H\" r:id=\"b\"/></sheets></workbook>"},
                     {"xl/_rels/workbook.xml.rels", "<Relationships><Relationship Id=\"b\" Type=\"" + rel +
                                                        "worksheet\" Target=\"h.xml\"/></Relationships>"},
                     {"xl/h.xml",
                      "<worksheet><sheetData><row r=\"5\"><c><v>1</v></c></row>"
                      "<row r=\"2\"><c><v>2</v></c></row></sheetData></worksheet>"}}),
         "fuera de orden", "H"},
    };
    for (const auto& caso : casos) {
        std::string m = MensajeDe([&] { FuenteLibro f(caso.ruta); });
        EXPECT_NE(m.find(caso.mensaje), std::string::npos) << caso.nombre << ": " << m;
        EXPECT_NE(m.find(caso.ruta), std::string::npos) << caso.nombre << ": " << m;
        EXPECT_EQ(PrimeraHojaExcel(caso.ruta), caso.hoja) << caso.nombre;
    }
}

// Sizes written in the file are never trusted: a dimension of the whole
// sheet, a cell in the last column, entities declared to expand a
// billion-fold.
TEST(FuenteLibro, TamaniosHostilesNoAgotanLaMemoria) {
    CarpetaTemporal c;
    const std::string rel = "http://schemas.openxmlformats.org/officeDocument/2006/relationships/";
    std::string bomba = "<?xml version=\"1.0\"?><!DOCTYPE sst [<!ENTITY a \"aaaaaaaaaa\">";
    for (char e = 'b'; e <= 'j'; ++e) {
        std::string previa(1, static_cast<char>(e - 1));
        bomba += std::string("<!ENTITY ") + e + " \"";
        for (int i = 0; i < 10; ++i) bomba += "&" + previa + ";";
        bomba += "\">";
    }
    bomba += "]><sst><si><t>&j;</t></si><si><t>normal &amp; bien</t></si></sst>";
    std::string ruta = EscribeZip(
        c, "hostil.xlsx",
        {{"xl/workbook.xml", "<workbook><sheets><sheet name=\"H\" r:id=\"b\"/></sheets></workbook>"},
         {"xl/_rels/workbook.xml.rels", "<Relationships><Relationship Id=\"b\" Type=\"" + rel +
                                            "worksheet\" Target=\"h.xml\"/>" + "<Relationship Id=\"s\" Type=\"" + rel +
                                            "sharedStrings\" Target=\"cadenas.xml\"/></Relationships>"},
         {"xl/cadenas.xml", bomba},
         {"xl/h.xml",
          "<worksheet><dimension ref=\"A1:XFD1048576\"/><sheetData>"
          "<row r=\"1\"><c r=\"A1\" t=\"s\"><v>0</v></c><c r=\"XFD1\" t=\"s\"><v>1</v></c></row>"
          "<row r=\"3\"><c r=\"B3\"><v>7</v></c></row>"
          "</sheetData></worksheet>"}});
    FuenteLibro f(ruta, {"", "", false});
    Fila fila;
    ASSERT_TRUE(f.siguiente(fila));
    EXPECT_LT(fila[1].comoTexto().size(), 100u);  // the entity is left as written, not expanded
    EXPECT_EQ(fila.celdas.size(), 16384u);
    EXPECT_EQ(fila[16384].comoTexto(), "normal & bien");
    EXPECT_TRUE(f.siguiente(fila));
    EXPECT_TRUE(fila.vacia());
    ASSERT_TRUE(f.siguiente(fila));
    EXPECT_EQ(fila.campo(2), "7");
    EXPECT_FALSE(f.siguiente(fila));

    // FreeXL would take 16 bytes for each cell of both sheets' dimensions.
    std::string dosHojasLlenas = EscribeXls(c, "grande.xls",
                                            "ws.write(65535,255,'x')\n"
                                            "otra = wb.add_sheet('Otra'); otra.write(65535,255,'y')\n");
    std::string m = MensajeDe([&] { FuenteLibro g(dosHojasLlenas); });
    EXPECT_NE(m.find("declara más celdas de las que se pueden leer"), std::string::npos) << m;
}

TEST(FuenteLibro, NumerosComoSuTextoExacto) {
    struct {
        const char* guardado;
        const char* texto;
    } casos[] = {
        {"0.1", "0.1"},
        {"1234567.89", "1234567.89"},
        {"-5", "-5"},
        {"5.0", "5"},
        {"1E-07", "0.0000001"},
        {"1.5E+3", "1500"},
        {"-0", "0"},
        {"1010001", "1010001"},
        {"0.30000000000000004", "0.3"},
        {"1234567.8899999999", "1234567.89"},
        {"99999999999999999", "100000000000000000"},
        {"123456789012345", "123456789012345"},
    };
    for (const auto& caso : casos) EXPECT_EQ(libro::DecimalExacto(caso.guardado), caso.texto) << caso.guardado;
    for (const char* malo : {"", "abc", "1,000", "$5", " 5", "1e"})
        EXPECT_FALSE(libro::DecimalExacto(malo).has_value()) << malo;
    EXPECT_EQ(libro::DecimalDeDoble(0.1 + 0.2), "0.3");
    EXPECT_EQ(libro::DecimalDeDoble(-1234567.89), "-1234567.89");

    // Which custom formats show a date.
    for (const char* f : {"dd/mm/yyyy", "[$-80A]dddd, d \"de\" mmmm", "h:mm AM/PM", "[h]:mm:ss", "yy"})
        EXPECT_TRUE(libro::EsFormatoFecha(f)) << f;
    for (const char* f :
         {"General", "#,##0.00", "[Red]0.00", "\"Días:\" 0", "0.00E+00", "0.00_);(0.00)", "\\d0", "[$MXN]#,##0"})
        EXPECT_FALSE(libro::EsFormatoFecha(f)) << f;

    // Serial days, the time of day rounded to the second.
    EXPECT_EQ(libro::FechaDeSerial(44957.43767361111, false)->comoTexto(), "31/01/2023 10:30:15");
    EXPECT_EQ(libro::FechaDeSerial(44957.99999999, false)->comoTexto(), "01/02/2023");
    EXPECT_EQ(libro::FechaDeSerial(0, true)->comoTexto(), "01/01/1904");
    EXPECT_FALSE(libro::FechaDeSerial(-1, false).has_value());
    EXPECT_FALSE(libro::FechaDeSerial(3e6, false).has_value());
}

// The container FreeXL reads is of our own writing: a stream as large as
// needs the table's extension beyond the header (over 7 MB), and one
// smaller than a sector run, read back whole.
TEST(FuenteLibro, DocumentoCompuestoDeUnFlujo) {
    for (size_t tamanio : {size_t{100}, size_t{9} << 20}) {
        std::string flujo(tamanio, '\0');
        for (size_t i = 0; i < tamanio; ++i) flujo[i] = static_cast<char>((i * 7919) >> 3);
        std::ostringstream salida;
        DocumentoCompuesto::EscribeConUnFlujo(salida, "Workbook", flujo);
        std::string archivo = salida.str();
        DocumentoCompuesto doc(archivo);
        ASSERT_TRUE(doc.tiene("workbook")) << tamanio;
        std::string leido = doc.lee("Workbook", archivo.size());
        EXPECT_EQ(leido.size(), std::max<size_t>(tamanio, 4096)) << tamanio;
        EXPECT_EQ(leido.substr(0, tamanio), flujo) << tamanio;
        EXPECT_EQ(leido.find_first_not_of('\0', tamanio), std::string::npos) << tamanio;  // padded with zeros
    }
}
