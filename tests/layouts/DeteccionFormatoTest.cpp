// What the detection makes of files the tests write: each delimiter, the
// title row, the encodings, the order of dates (refused when no day passes
// 12) and fixed-width columns.

#include <gtest/gtest.h>

#include <fstream>

#include "layouts/DeteccionFormato.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

class Deteccion : public ::testing::Test {
protected:
    prueba::CarpetaTemporal dir;
    std::string escribe(const std::string& nombre, const std::string& bytes) {
        std::ofstream(dir.texto() + nombre, std::ios::binary) << bytes;
        return dir.texto() + nombre;
    }
};

// Title and six vouchers, fields joined by `sep`.
std::string Polizas(const std::string& sep, bool titulos = true, const std::string& fecha = "dd/mm") {
    auto une = [&sep](std::initializer_list<std::string> campos) {
        std::string r;
        for (const auto& c : campos) r += (r.empty() ? "" : sep) + c;
        return r + "\r\n";
    };
    std::string t = titulos ? une({"Poliza", "Fecha", "Cuenta", "Concepto", "Cargo", "Abono"}) : "";
    for (int i = 1; i <= 6; ++i) {
        std::string dd = std::to_string(10 + i), mm = "0" + std::to_string(i % 9 + 1);
        std::string f = fecha == "dd/mm" ? dd + "/" + mm + "/2025" : fecha == "mm/dd" ? mm + "/" + dd + "/2025" : fecha;
        t += une({std::to_string(i), f, "1101-0" + std::to_string(i), "Venta de mostrador " + std::to_string(i),
                  std::to_string(i * 100) + ".50", "0"});
    }
    return t;
}

}  // namespace

TEST_F(Deteccion, CadaSeparadorOfrecidoConSusColumnasYSuFilaDeTitulos) {
    for (const char* sep : kSeparadoresDetectables) {
        auto d = DetectaFormatoTexto(escribe("p.txt", Polizas(sep)));
        EXPECT_EQ(d.separador, sep);
        EXPECT_EQ(d.columnas, 6) << NombreSeparador(sep);
        EXPECT_EQ(d.sobreSeparador.certeza, Certeza::Alta) << NombreSeparador(sep) << ": " << d.sobreSeparador.motivo;
        EXPECT_TRUE(d.titulos) << NombreSeparador(sep) << ": " << d.sobreTitulos.motivo;
        EXPECT_EQ(d.sobreTitulos.certeza, Certeza::Alta) << d.sobreTitulos.motivo;
        EXPECT_TRUE(d.columnasFijas.empty());
        EXPECT_EQ(d.lineasExaminadas, 7);
    }
    // Without the title row the first line types like the others.
    auto d = DetectaFormatoTexto(escribe("p.txt", Polizas("|", false)));
    EXPECT_FALSE(d.titulos);
    EXPECT_EQ(d.sobreTitulos.certeza, Certeza::Alta) << d.sobreTitulos.motivo;

    // Amounts grouped with commas in a "|" file: the comma is no rival.
    d = DetectaFormatoLineas({"1|Caja|1,234.50", "2|Banco|12,000.00", "3|Clientes|1,000,000.25"});
    EXPECT_EQ(d.separador, "|");
    EXPECT_EQ(d.sobreSeparador.certeza, Certeza::Alta) << d.sobreSeparador.motivo;
    // Lines that disagree leave no delimiter.
    d = DetectaFormatoLineas({"a|b|c", "a;b", "a^b^c^d", "abc", "a~b"});
    EXPECT_EQ(d.separador, "");
    EXPECT_EQ(d.sobreSeparador.certeza, Certeza::Ninguna);
}

TEST_F(Deteccion, CodificacionConBomEnUtf8YEnWindows1252) {
    auto d = DetectaFormatoTexto(escribe("bom.txt", "\xEF\xBB\xBFPoliza|Concepto\r\n1|Dep\xC3\xB3sito\r\n"));
    EXPECT_EQ(d.codificacion, CodificacionTexto::Utf8);
    EXPECT_TRUE(d.bom);
    EXPECT_EQ(d.sobreCodificacion.certeza, Certeza::Alta);

    d = DetectaFormatoTexto(escribe("utf8.txt", "1|Dep\xC3\xB3sito\n2|Compa\xC3\xB1\xC3\xAD" "a\n"));
    EXPECT_EQ(d.codificacion, CodificacionTexto::Utf8);
    EXPECT_FALSE(d.bom);
    EXPECT_EQ(d.sobreCodificacion.certeza, Certeza::Alta);

    d = DetectaFormatoTexto(escribe("1252.txt", "1|Dep\xF3sito\n2|Compa\xF1\xED" "a\n3|Se\xF1or\n"));
    EXPECT_EQ(d.codificacion, CodificacionTexto::Windows1252);
    EXPECT_EQ(d.sobreCodificacion.certeza, Certeza::Alta) << d.sobreCodificacion.motivo;

    // The same words in the DOS code page 850: not letters in 1252.
    d = DetectaFormatoTexto(escribe("850.txt", "1|Dep\xA2sito\n2|Compa\xA4\xA1" "a\n3|Se\xA4or\n"));
    EXPECT_EQ(d.codificacion, CodificacionTexto::Windows1252);
    EXPECT_EQ(d.sobreCodificacion.certeza, Certeza::Baja);
    EXPECT_NE(d.sobreCodificacion.motivo.find("850"), std::string::npos);

    d = DetectaFormatoTexto(escribe("ascii.txt", "1|Deposito\n"));
    EXPECT_TRUE(d.soloAscii);
    EXPECT_EQ(DescribeDeteccion(d).front().rfind("Codificación: ASCII — segura", 0), 0u) << DescribeDeteccion(d).front();
}

TEST_F(Deteccion, ElOrdenDeLasFechasSoloCuandoAlgunDiaPasaDe12) {
    struct Caso {
        std::string fecha;
        OrdenFecha orden;
        Certeza certeza;
    } casos[] = {
        {"dd/mm", OrdenFecha::DiaPrimero, Certeza::Alta},
        {"mm/dd", OrdenFecha::MesPrimero, Certeza::Alta},
        {"05/06/2025", OrdenFecha::Ambiguo, Certeza::Ninguna},  // no day passes 12: no guess
        {"2025-06-05", OrdenFecha::AnioPrimero, Certeza::Alta},
    };
    for (const auto& c : casos) {
        auto d = DetectaFormatoTexto(escribe("f.txt", Polizas("|", true, c.fecha)));
        EXPECT_EQ(d.fechas, c.orden) << c.fecha << ": " << d.sobreFechas.motivo;
        EXPECT_EQ(d.sobreFechas.certeza, c.certeza) << c.fecha;
        EXPECT_EQ(d.columnaFecha, 2) << c.fecha;
    }
    auto d = DetectaFormatoLineas({"1|13/01/2025", "2|01/13/2025", "3|02/02/2025"});
    EXPECT_EQ(d.fechas, OrdenFecha::Contradictorio);
    EXPECT_EQ(d.sobreFechas.certeza, Certeza::Ninguna);
    d = DetectaFormatoLineas({"1|Caja|100", "2|Banco|200"});
    EXPECT_EQ(d.fechas, OrdenFecha::SinFechas);
    // A day of 32 or a month and day both past 12 is no date.
    d = DetectaFormatoLineas({"1|32/01/2025", "2|13/13/2025", "3|1.5.7"});
    EXPECT_EQ(d.fechas, OrdenFecha::SinFechas);
}

TEST_F(Deteccion, ColumnasFijasPorLasColumnasEnBlanco) {
    // Account (1-10), description (12-31), date (33-42), amount right
    // aligned (44-55); a title that does not keep to the columns.
    std::string t = "CUENTA      DESCRIPCION DE LA CUENTA     FECHA       IMPORTE\n";
    const char* descripciones[] = {"Caja general", "Bancos", "Clientes nacionales", "IVA", "Proveedores",
                                   "Capital social", "Ventas", "Costo de ventas", "Gastos", "Otros ingresos",
                                   "Caja chica"};
    for (int i = 0; i < 11; ++i) {
        char linea[80];
        std::snprintf(linea, sizeof linea, "%-10s %-20s %02d/01/2025 %12s\n", ("1101-" + std::to_string(100 + i)).c_str(),
                      descripciones[i], 15 + i % 10, (std::to_string((i + 1) * 1234) + ".50").c_str());
        t += linea;
    }
    auto d = DetectaFormatoTexto(escribe("fijo.txt", t));
    EXPECT_EQ(d.separador, "");
    const std::vector<std::pair<int, int>> esperadas = {{1, 8}, {12, 19}, {33, 10}, {48, 8}};
    EXPECT_EQ(d.columnasFijas, esperadas) << DescribeDeteccion(d).back();
    EXPECT_EQ(d.sobreColumnasFijas.certeza, Certeza::Alta) << d.sobreColumnasFijas.motivo;
    EXPECT_TRUE(d.titulos) << d.sobreTitulos.motivo;
    EXPECT_EQ(d.fechas, OrdenFecha::DiaPrimero);
    EXPECT_EQ(d.columnaFecha, 3);

    // A delimited file has no fixed columns to offer.
    d = DetectaFormatoTexto(escribe("p.txt", Polizas("|")));
    EXPECT_TRUE(d.columnasFijas.empty());
    EXPECT_NE(d.sobreColumnasFijas.motivo.find("separador"), std::string::npos);
}
