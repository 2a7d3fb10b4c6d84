#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "pipeline/Reportes.h"
#include "pipeline/ReportesDecisiones.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"
#include "store/AltaBase.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;
namespace fs = std::filesystem;

namespace {

class InteraccionConVisor : public InteraccionGuionada {
public:
    std::vector<Reporte> mostrados;
    void muestraReporte(const Reporte& r) override { mostrados.push_back(r); }
};

std::string Lee(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    std::ostringstream o;
    o << f.rdbuf();
    return o.str();
}

// The text of a PDF as pdftotext reads it.
std::string TextoPdf(const fs::path& pdf, const std::string& opciones = "") {
    fs::path txt = pdf;
    txt += ".txt";
    std::string orden = "pdftotext " + opciones + " '" + pdf.string() + "' '" + txt.string() + "'";
    EXPECT_EQ(std::system(orden.c_str()), 0) << orden;
    return Lee(txt);
}

class ReportesInconsistencias : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    InteraccionConVisor interaccion;
    Sesion s;

    ReportesInconsistencias() {
        s.RutaBase = CreaBase((carpeta.ruta() / "base").string());
        s.RutaEmpresa = s.RutaBase + "2023_ACME/";
        fs::create_directories(s.RutaEmpresa);
        s.DbEmpresa = std::make_unique<BaseDatos>(s.RutaEmpresa + "ACME_2023.sqlite", BaseDatos::Modo::Crear);
        s.NombreEmpresa = "Comercializadora Ñandú, S.A. de C.V.";
        s.FechaSesion = Fecha(2024, 1, 5);
        s.interaccion = &interaccion;
        CreaInconsisImpTmp(s);
        CreaInconsisImpTmpDet(s);
        EXPECT_TRUE(AbreInconsistencias(s));
    }

    void registra(const std::string& ref, const std::string& fuente, const std::string& clasif, const Valor& fecha,
                  const std::string& cuenta) {
        s.DbInconsistencias->ejecuta(
            "INSERT INTO InconsisImpTmp (Referencia, FuenteError, ClasifError, Poliza, Tipo, Fecha, Cuenta, "
            "Cuenta_Fmtda) VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
            ref, fuente, clasif, "P-7", "Diario", fecha, cuenta, cuenta);
    }

    void tresFilas() {
        registra("Póliza nueva.", "Pólizas", "A", Fecha(2023, 3, 31), "1000102");
        registra("Se dió de Alta una nueva Cuenta: 1050000 <Bancos & Cajas>", "Catálogo de Cuentas", "A", Valor(),
                 "1050000");
        registra("Póliza no balanceada Importe de diferencia $10.00", "Pólizas", "D", Fecha(2023, 4, 2), "");
    }

    void pierdeCedula(const std::string& cuenta, Moneda importe) {
        BaseDatos det(RutaAlmacen(s, kInconsisImpTmpDet));
        det.ejecuta("INSERT INTO InconsisImpTmpDet (Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe, "
                    "Modificado, Marca1) VALUES ('12', 'Egresos', '2023-02-14', ?, 'Pago a proveedor', 'D', ?, -1, "
                    "'OK')",
                    cuenta, importe);
    }
};

TEST(FechaReporte, DiaMesAbreviadoEnEspanolYAnio) {
    const std::vector<std::pair<Fecha, std::string>> casos = {{Fecha(2024, 1, 5), "05/ene/2024"},
                                                              {Fecha(2023, 3, 9), "09/mar/2023"},
                                                              {Fecha(2023, 9, 30), "30/sep/2023"},
                                                              {Fecha(2023, 12, 31), "31/dic/2023"}};
    for (auto& [f, texto] : casos) EXPECT_EQ(FechaReporte(f), texto);
}

TEST_F(ReportesInconsistencias, ElResumenLeeElLogConSusVariables) {
    tresFilas();
    Reporte r;
    ASSERT_TRUE(PreparaResumenInconsistencias(s, kPlantillaResumen, r));
    EXPECT_EQ(r.columnas, (std::vector<std::string>{"Referencia", "FuenteError", "ClasifError", "Poliza", "Tipo",
                                                    "Fecha", "Cuenta", "Cuenta_Fmtda"}));
    ASSERT_EQ(r.filas.size(), 3u);
    EXPECT_EQ(r.filas[0][r.columna("Fecha")], "31/03/2023");
    EXPECT_EQ(r.filas[1][r.columna("Fecha")], "");
    EXPECT_EQ(r.filas[2][r.columna("ClasifError")], "D");
    EXPECT_EQ(r.variable("NombreEmp"), s.NombreEmpresa);
    EXPECT_EQ(r.variable("impFecha"), "05/ene/2024");
    EXPECT_EQ(r.variable("descRevision"), "");
    EXPECT_EQ(r.variable("sTitulo"), "");
    EXPECT_FALSE(r.horizontal);
}

TEST_F(ReportesInconsistencias, ElResumenSeImprimeEnPdf) {
    tresFilas();
    Reporte r;
    ASSERT_TRUE(PreparaResumenInconsistencias(s, kPlantillaResumen, r));
    fs::path pdf = carpeta.ruta() / "resumen.pdf";
    GuardaReporte(r, pdf.string());
    std::string texto = TextoPdf(pdf);
    for (const char* esperado : {"Comercializadora Ñandú, S.A. de C.V.", "05/ene/2024", "Póliza nueva.",
                                 "<Bancos & Cajas>", "31/03/2023", "1000102", "Registros: 3"})
        EXPECT_NE(texto.find(esperado), std::string::npos) << esperado << "\n" << texto;
}

// The lines of a CSV file after its UTF-8 mark.
std::vector<std::string> LineasCsv(const fs::path& csv) {
    std::string t = Lee(csv);
    EXPECT_EQ(t.substr(0, 3), "\xEF\xBB\xBF");
    std::vector<std::string> lineas;
    for (size_t p = 3, q; p < t.size(); p = q + 2) {
        q = t.find("\r\n", p);
        if (q == std::string::npos) q = t.size();
        lineas.push_back(t.substr(p, q - p));
    }
    return lineas;
}

TEST_F(ReportesInconsistencias, ElCsvEsUnaTablaConUnSoloEncabezadoDeNombresLegibles) {
    tresFilas();
    Reporte r;
    ASSERT_TRUE(PreparaResumenInconsistencias(s, kPlantillaResumen, r));
    fs::path csv = carpeta.ruta() / "resumen.CSV";
    GuardaReporte(r, csv.string());
    auto lineas = LineasCsv(csv);
    ASSERT_EQ(lineas.size(), 4u);  // the header and the three rows, nothing before
    EXPECT_EQ(lineas[0], "Descripción,Origen,Clase,Póliza,Tipo,Fecha,Cuenta sin separadores,Cuenta");
    EXPECT_EQ(lineas[1], "Póliza nueva.,Pólizas,A,P-7,Diario,31/03/2023,1000102,1000102");

    pierdeCedula("6010001", *Moneda::desdeTexto("-1234.5678"));
    ASSERT_TRUE(PreparaDetalleInconsistencias(s, kPlantillaDetalle, r));
    GuardaReporte(r, csv.string());
    lineas = LineasCsv(csv);
    ASSERT_EQ(lineas.size(), 2u);
    for (const char* titulo : {"Póliza", "Fecha", "Cuenta", "Referencia", "Importe", "Marca 1", "Observaciones"})
        EXPECT_NE(("," + lineas[0] + ",").find(std::string(",") + titulo + ","), std::string::npos)
            << titulo << "\n" << lineas[0];
    EXPECT_EQ(lineas[0].find("IdCedAnalitica"), std::string::npos) << lineas[0];
    EXPECT_EQ(lineas[0].find("_"), std::string::npos) << lineas[0];
    // An amount is a number a spreadsheet sums, exact to the ten-thousandth.
    EXPECT_NE(lineas[1].find(",-1234.5678,"), std::string::npos) << lineas[1];
}

TEST_F(ReportesInconsistencias, ElCsvNoDejaQueUnTextoDelClienteSeaUnaFormula) {
    for (const char* t : {"=HYPERLINK(\"http://x\",\"y\")", "=1+2", "+52 55 1234", "-5 pesos", "@SUM(1)", "\tCaja",
                          "\rCaja"})
        registra(t, "Pólizas", "O", Fecha(2023, 3, 31), t);
    Reporte r;
    ASSERT_TRUE(PreparaResumenInconsistencias(s, kPlantillaResumen, r));
    fs::path csv = carpeta.ruta() / "resumen.csv";
    GuardaReporte(r, csv.string());
    std::string t = Lee(csv);
    for (const char* esperado : {"\"'=HYPERLINK(\"\"http://x\"\",\"\"y\"\")\"", ",'=1+2,", ",'+52 55 1234,",
                                 ",'-5 pesos,", ",'@SUM(1),", "'\tCaja,", "\"'\rCaja\""})
        EXPECT_NE(t.find(esperado), std::string::npos) << esperado << "\n" << t;
    // A field never starts with a formula character, quoted or not.
    auto lineas = LineasCsv(csv);
    for (auto& l : lineas)
        for (size_t p = 0; p < l.size(); p = l.find(',', p) + 1) {
            size_t i = l[p] == '"' ? p + 1 : p;
            EXPECT_EQ(std::string("=+-@").find(l[i]), std::string::npos) << l;
            if (l.find(',', p) == std::string::npos) break;
        }

    // A real negative amount stays a number.
    pierdeCedula("6010001", *Moneda::desdeTexto("-10"));
    ASSERT_TRUE(PreparaDetalleInconsistencias(s, kPlantillaDetalle, r));
    GuardaReporte(r, csv.string());
    EXPECT_NE(Lee(csv).find(",-10,"), std::string::npos) << Lee(csv);
}

TEST_F(ReportesInconsistencias, ElDetalleMuestraLaCuentaConFormatoComoElResumen) {
    s.FormatoCtaEmpresa = "999-99-99";
    s.SeparadorEmpresa = "-";
    s.NumeroNiveles = 3;
    s.LongitudesNivel = {3, 2, 2};
    s.CatalogoArbol = true;
    pierdeCedula("6010001", Moneda::desdeEntero(5));
    Reporte r;
    ASSERT_TRUE(PreparaDetalleInconsistencias(s, kPlantillaDetalle, r));
    ASSERT_EQ(r.filas.size(), 1u);
    ASSERT_GE(r.columna("Cuenta_Fmtda"), 0);
    EXPECT_EQ(r.filas[0][r.columna("Cuenta_Fmtda")], "601-00-01");
    EXPECT_EQ(r.filas[0][r.columna("Cuenta")], "6010001");
    fs::path pdf = carpeta.ruta() / "detalle.pdf";
    GuardaReporte(r, pdf.string());
    EXPECT_NE(TextoPdf(pdf).find("601-00-01"), std::string::npos);
}

TEST_F(ReportesInconsistencias, UnRenglonDeLaTablaNoSeParteEntreDosPaginas) {
    // Rows of several lines each, enough for three pages.
    for (int i = 0; i < 90; ++i) {
        std::string texto = "INICIO" + std::to_string(i) + " ";
        for (int k = 0; k < 12; ++k) texto += "Se dió de Alta una nueva Cuenta en el catálogo del cliente ";
        texto += "FINAL" + std::to_string(i);
        registra(texto, "Catálogo de Cuentas", "A", Fecha(2023, 3, 31), "1000102");
    }
    Reporte r;
    ASSERT_TRUE(PreparaResumenInconsistencias(s, kPlantillaResumen, r));
    fs::path pdf = carpeta.ruta() / "largo.pdf";
    GuardaReporte(r, pdf.string());
    std::string info = (carpeta.ruta() / "info.txt").string();
    ASSERT_EQ(std::system(("pdfinfo '" + pdf.string() + "' > '" + info + "'").c_str()), 0);
    std::string datos = Lee(info);
    int total = std::atoi(datos.c_str() + datos.find("Pages:") + 6);
    ASSERT_GE(total, 3) << datos;
    std::vector<std::string> paginas;
    for (int p = 1; p <= total; ++p) {
        paginas.push_back(TextoPdf(pdf, "-f " + std::to_string(p) + " -l " + std::to_string(p)));
        // Each page bears its number, and the table's header goes on with the table.
        EXPECT_NE(paginas.back().find(std::to_string(p)), std::string::npos);
        if (p > 1 && p < total) {
            EXPECT_NE(paginas.back().find("Descripción"), std::string::npos) << paginas.back();
        }
    }
    auto pagina = [&](const std::string& marca) {
        for (size_t p = 0; p < paginas.size(); ++p) {
            auto i = paginas[p].find(marca);
            // "INICIO1" is also the start of "INICIO10".
            while (i != std::string::npos && std::isdigit(static_cast<unsigned char>(paginas[p][i + marca.size()])))
                i = paginas[p].find(marca, i + 1);
            if (i != std::string::npos) return static_cast<int>(p);
        }
        return -1;
    };
    for (int i = 0; i < 90; ++i) {
        int inicio = pagina("INICIO" + std::to_string(i)), fin = pagina("FINAL" + std::to_string(i));
        ASSERT_GE(inicio, 0) << i;
        EXPECT_EQ(inicio, fin) << "row " << i << " split across pages";
    }
}

TEST_F(ReportesInconsistencias, LaPlantillaDelDespachoDecideLoQueSeMuestra) {
    tresFilas();
    std::ofstream(s.RutaBase + kPlantillaResumen)
        << "<html><body><img src=\"logo.png\"><h1>Despacho Ruiz</h1><p>{{NombreEmp}} {{impFecha}} {{Desconocida}}</p>"
           "<ul><!-- INICIO FILA --><li>{{Cuenta}}: {{Referencia}}</li><!-- FIN FILA --></ul></body></html>";
    Reporte r;
    ASSERT_TRUE(PreparaResumenInconsistencias(s, kPlantillaResumen, r));
    std::string html = HtmlDeReporte(r);
    EXPECT_NE(html.find("<h1>Despacho Ruiz</h1><p>Comercializadora Ñandú, S.A. de C.V. 05/ene/2024 {{Desconocida}}"),
              std::string::npos)
        << html;
    EXPECT_NE(html.find("<li>1050000: Se dió de Alta una nueva Cuenta: 1050000 &lt;Bancos &amp; Cajas&gt;</li>"),
              std::string::npos)
        << html;
    EXPECT_EQ(html.find("INICIO FILA"), std::string::npos);

    CreaBase(s.RutaBase);  // installing again never overwrites a firm's template
    EXPECT_NE(Lee(s.RutaBase + kPlantillaResumen).find("Despacho Ruiz"), std::string::npos);
}

TEST_F(ReportesInconsistencias, SinPlantillaSeAvisaYNoSeMuestraNada) {
    fs::remove(s.RutaBase + kPlantillaResumen);
    ResumenInconsistencias(s, "3", kPlantillaResumen);
    ASSERT_EQ(interaccion.mensajes.size(), 1u);
    EXPECT_EQ(interaccion.mensajes[0].tipo, TipoMensaje::Critico);
    EXPECT_EQ(interaccion.mensajes[0].texto,
              "El archivo 054.html fue removido de su ubicación original, favor de llamar a soporte técnico\r");
    EXPECT_TRUE(interaccion.mostrados.empty());
}

TEST_F(ReportesInconsistencias, ElDetalleMuestraLasCedulasPerdidasEnHorizontal) {
    pierdeCedula("6010001", *Moneda::desdeTexto("1234.5"));
    DetalleInconsistencias(s, "", kPlantillaDetalle);
    ASSERT_EQ(interaccion.mostrados.size(), 1u);
    const Reporte& r = interaccion.mostrados[0];
    EXPECT_TRUE(r.horizontal);
    ASSERT_EQ(r.filas.size(), 1u);
    EXPECT_EQ(r.filas[0][r.columna("Importe")], "$1,234.50");
    EXPECT_EQ(r.filas[0][r.columna("Modificado")], "Sí");
    fs::path pdf = carpeta.ruta() / "detalle.pdf";
    GuardaReporte(r, pdf.string());
    std::string texto = TextoPdf(pdf);
    for (const char* esperado : {"6010001", "Pago a proveedor", "$1,234.50", "14/02/2023", "05/ene/2024"})
        EXPECT_NE(texto.find(esperado), std::string::npos) << esperado << "\n" << texto;
    std::string info = TextoPdf(pdf, "-f 1 -l 1 -bbox");
    EXPECT_NE(info.find("<page width=\"792"), std::string::npos) << "landscape letter";
}

TEST_F(ReportesInconsistencias, OtraExtensionEsUnError) {
    Reporte r;
    ASSERT_TRUE(PreparaResumenInconsistencias(s, kPlantillaResumen, r));
    EXPECT_THROW(GuardaReporte(r, (carpeta.ruta() / "r.txt").string()), std::invalid_argument);
    EXPECT_THROW(GuardaReporte(r, (carpeta.ruta() / "no" / "existe.csv").string()), std::runtime_error);
}

TEST_F(ReportesInconsistencias, ElMensajeDeInconsistenciasMuestraElReporteLasVecesQueSePida) {
    tresFilas();
    using D = DecisionInconsistencias;
    interaccion.decisiones = {D::VerReporte, D::VerReporte, D::Continuar};
    EXPECT_TRUE(MuestraMsgInconsistencias(s));
    EXPECT_TRUE(s.ContinuaImportacion);
    ASSERT_EQ(interaccion.mostrados.size(), 2u);
    EXPECT_EQ(interaccion.mostrados[1].filas.size(), 3u);
    EXPECT_TRUE(interaccion.mensajes.empty());
}

TEST_F(ReportesInconsistencias, LaDecisionSeTomaViendoCuantasHayDeCadaClase) {
    tresFilas();  // A, A, D
    registra("La Póliza se dio de baja.", "Pólizas", "B", Fecha(2023, 2, 1), "");
    registra("La descripción de la cuenta ha cambiado: Anterior -> Caja Nuevo -> Cajas", "Catálogo de Cuentas", "C",
             Valor(), "1010000");
    registra("No se registró  el movimiento D ,$5.00 de la Póliza, ya que la Cuenta no existe.", "Pólizas", "O",
             Fecha(2023, 2, 1), "999");
    interaccion.decisiones = {DecisionInconsistencias::VerReporte, DecisionInconsistencias::Continuar};
    EXPECT_TRUE(MuestraMsgInconsistencias(s));
    ASSERT_EQ(interaccion.conteos.size(), 2u);  // shown again after the report
    for (auto& c : interaccion.conteos) {
        EXPECT_EQ(c.nuevas, 2);
        EXPECT_EQ(c.cambios, 1);
        EXPECT_EQ(c.bajas, 1);
        EXPECT_EQ(c.otras, 2);  // the defect and the reader's remark
    }
    EXPECT_EQ(TextoConteoInconsistencias(interaccion.conteos[0]),
              "Nuevas: 2, con cambios: 1, dadas de baja: 1, otras: 2 (6 en total).");
}

TEST_F(ReportesInconsistencias, SinPlantillaElUsuarioAunPuedeContinuarOCancelar) {
    fs::remove(s.RutaBase + kPlantillaResumen);
    using D = DecisionInconsistencias;
    interaccion.decisiones = {D::VerReporte, D::Continuar};
    EXPECT_TRUE(MuestraMsgInconsistencias(s));
    ASSERT_EQ(interaccion.mensajes.size(), 1u);
    EXPECT_EQ(interaccion.mensajes[0].tipo, TipoMensaje::Critico);
}

TEST_F(ReportesInconsistencias, CancelarTerminaElProgramaYDejaElLog) {
    tresFilas();
    s.ContinuaImportacion = true;
    interaccion.decisiones = {DecisionInconsistencias::Cancelar};
    EXPECT_THROW(MuestraMsgInconsistencias(s), ProgramaTerminado);
    EXPECT_FALSE(s.ContinuaImportacion);
    ASSERT_EQ(interaccion.mensajes.size(), 1u);
    EXPECT_EQ(interaccion.mensajes[0].tipo, TipoMensaje::Informacion);
    EXPECT_EQ(interaccion.mensajes[0].texto, "La importación ha sido cancelada.");
    EXPECT_TRUE(HayInconsistencias(s.RutaEmpresa));
}

TEST_F(ReportesInconsistencias, CerrarLaVentanaNoFijaNadaNiTermina) {
    for (bool antes : {false, true}) {
        s.ContinuaImportacion = antes;
        interaccion.decisiones = {DecisionInconsistencias::Cerrar};
        EXPECT_EQ(MuestraMsgInconsistencias(s), antes);
        EXPECT_EQ(s.ContinuaImportacion, antes);
    }
    EXPECT_TRUE(interaccion.mensajes.empty());
}

TEST_F(ReportesInconsistencias, AlFinalSeVeElDetalleHastaFinalizar) {
    pierdeCedula("6010001", Moneda::desdeEntero(5));
    interaccion.decisionesFinales = {DecisionFinal::VerDetalle, DecisionFinal::VerDetalle, DecisionFinal::Terminar};
    MuestraMsgInconsistenciasFin(s);
    ASSERT_EQ(interaccion.mostrados.size(), 2u);
    EXPECT_EQ(interaccion.mostrados[0].plantilla, "055.html");
    EXPECT_TRUE(interaccion.decisionesFinales.empty());
}

}  // namespace
