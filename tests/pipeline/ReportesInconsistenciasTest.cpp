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

TEST_F(ReportesInconsistencias, ElCsvLlevaEmpresaFechaYFilas) {
    tresFilas();
    Reporte r;
    ASSERT_TRUE(PreparaResumenInconsistencias(s, kPlantillaResumen, r));
    fs::path csv = carpeta.ruta() / "resumen.CSV";
    GuardaReporte(r, csv.string());
    std::string t = Lee(csv);
    EXPECT_EQ(t.substr(0, 3), "\xEF\xBB\xBF");
    EXPECT_NE(t.find("Empresa,\"Comercializadora Ñandú, S.A. de C.V.\"\r\n"), std::string::npos) << t;
    EXPECT_NE(t.find("Fecha,05/ene/2024\r\n"), std::string::npos) << t;
    EXPECT_NE(t.find("\r\nReferencia,FuenteError,ClasifError,Poliza,Tipo,Fecha,Cuenta,Cuenta_Fmtda\r\n"),
              std::string::npos);
    EXPECT_NE(t.find("Póliza nueva.,Pólizas,A,P-7,Diario,31/03/2023,1000102,1000102\r\n"), std::string::npos) << t;
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
