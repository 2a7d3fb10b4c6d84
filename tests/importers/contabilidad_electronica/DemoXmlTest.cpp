// The demo client written by the generator both ways, delimited text
// (link 82) and electronic-accounting XML (link 135), and imported into
// two companies: the same trial balance, the same vouchers, and filed
// balances that the reconciliation finds in agreement with the vouchers.

#include <gtest/gtest.h>

#include "EntregaGenerada.h"
#include "importers/contabilidad_electronica/ImportadorContabilidadElectronica.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "pipeline/Importacion.h"
#include "session/Inicio.h"
#include "store/AlmacenesTemporales.h"
#include "store/AltaBase.h"
#include "support/AlmacenesLectura.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

class DemoXml : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal dir;
    InteraccionGuionada ui;

    // A fresh base with the demo company, as scripts/demo.sh creates it.
    void Empresa(Sesion& s, const std::string& nombre) {
        std::string base = CreaBase(dir.texto() + nombre);
        DatosEmpresaNueva d;
        d.nombreCorto = "DEMO";
        d.nombre = "Comercializadora Demo, S.A. de C.V.";
        d.ejercicio = 2025;
        d.formatoCta = "999-99-99";
        d.separador = "-";
        d.niveles = {3, 2, 2};
        d.catArbol = true;
        d.rellenaCeros = true;
        CreaEmpresa(base, d);
        s.interaccion = &ui;
        IniciaSesion(s, {base, "DEMO", "2025"});
    }
};

}  // namespace

TEST_F(DemoXml, ElClienteDeLaDemoPorXmlYPorTextoDaLaMismaBalanza) {
    const std::string archivos = dir.texto() + "cliente/";
    auto genera = CorreProceso("'" VELMORANT_GENERA_DEMO "' '" + archivos + "' --lineas 600 --xml");
    ASSERT_EQ(genera.estado, 0) << genera.salida;

    Sesion texto;
    Empresa(texto, "base-texto");
    ImportadorTextoDelimitado porTexto(demo::LecturaDeEntrega(), false);
    const ArchivosImportacion deTexto = demo::ArchivosDeEntrega(archivos);
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaImportacion(texto, porTexto, deTexto), ResultadoImportacion::Terminada);

    Sesion xml;
    Empresa(xml, "base-xml");
    ImportadorContabilidadElectronica porXml(ReglaTipoPoliza::Desde("letras"), "CDE010101AB1");
    ArchivosImportacion deXml;
    deXml.catalogo = archivos + "catalogo.xml";
    for (int m = 1; m <= 12; ++m) {
        char mes[3];
        std::snprintf(mes, sizeof mes, "%02d", m);
        deXml.fija("balanza", archivos + "balanza_" + mes + ".xml");
        deXml.fija("polizas", archivos + "polizas_" + mes + ".xml");
    }
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaImportacion(xml, porXml, deXml), ResultadoImportacion::Terminada) << ui.mensajes.back().texto;

    const std::string balanza = "SELECT * FROM Balanzas ORDER BY Cuenta";
    const auto esperada = prueba::FilasComoTexto(*texto.DbEmpresa, balanza);
    EXPECT_EQ(esperada.size(), 237u);
    EXPECT_EQ(prueba::FilasComoTexto(*xml.DbEmpresa, balanza), esperada);
    const std::string polizas =
        "SELECT p.IdPoliza, p.Poliza, p.Tipo, p.Fecha, p.Concepto, p.Cuadrada, d.Partida, d.Cuenta, d.TipoMov, d.Importe "
        "FROM Polizas p JOIN Polizas_Detalle d ON d.IdPoliza = p.IdPoliza ORDER BY p.IdPoliza, d.Partida";
    EXPECT_EQ(prueba::FilasComoTexto(*xml.DbEmpresa, polizas), prueba::FilasComoTexto(*texto.DbEmpresa, polizas));
    // The sales' folios follow the references.
    EXPECT_EQ(xml.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas_Detalle WHERE Referencia LIKE "
                                     "'Factura A-% A0000000-0000-4000-8000-%'")
                  .entero(),
              texto.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas_Detalle WHERE Referencia LIKE 'Factura A-%'").entero());

    // The client's filed balances agree with its vouchers: the log holds the
    // demo's faults and nothing of the reconciliation.
    BaseDatos log(RutaAlmacen(xml, kInconsisImpTmp));
    EXPECT_GT(log.escalar("SELECT COUNT(*) FROM InconsisImpTmp").entero(), 0);
    EXPECT_EQ(prueba::FilasComoTexto(log, "SELECT Referencia FROM InconsisImpTmp WHERE Referencia LIKE '%balanza%'"),
              std::vector<std::string>{});
}
