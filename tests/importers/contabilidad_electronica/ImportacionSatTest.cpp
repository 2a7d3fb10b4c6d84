// Whole runs through link 135: the engine on a small year of XML files
// (chart, two balances, two voucher files), and the command line as a user
// runs it, refused for another company's files and then accepted.

#include <gtest/gtest.h>

#include <fstream>

#include "importers/contabilidad_electronica/ImportadorContabilidadElectronica.h"
#include "importers/contabilidad_electronica/XmlSat.h"
#include "pipeline/Importacion.h"
#include "session/Inicio.h"
#include "store/AlmacenesTemporales.h"
#include "store/AltaBase.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

std::string Transaccion(const std::string& cuenta, const std::string& debe, const std::string& haber,
                        const std::string& folios = "") {
    return " <sat:Transaccion NumCta=\"" + cuenta + "\" DesCta=\"d\" Concepto=\"Mov\" Debe=\"" + debe + "\" Haber=\"" +
           haber + "\"" + (folios.empty() ? "/>\n" : ">\n" + folios + " </sat:Transaccion>\n");
}

std::string Poliza(const std::string& numero, const std::string& fecha, const std::string& lineas) {
    return "<sat:Poliza NumUnIdenPol=\"" + numero + "\" Fecha=\"" + fecha + "\" Concepto=\"Venta " + numero + "\">\n" +
           lineas + "</sat:Poliza>\n";
}

class ImportacionSat : public EntornoImportacion {
protected:
    void SetUp() override {
        std::string base = CreaBase(dir.texto() + "base");
        DatosEmpresaNueva d = EmpresaAcme();
        CreaEmpresa(base, d);
        // January opens with 1000 in the bank and sells 300; February sells
        // 200, but its filed balance says 250 of sales.
        archivos.catalogo = escribe("CT.xml", CatalogoSat(CuerpoCatalogo()));
        std::string enero, febrero;
        for (const char* cuenta : {"100-00-00", "100-01-00", "100-01-01"}) {
            enero += RenglonSat(cuenta, "1000", "300", "0", "1300");
            febrero += RenglonSat(cuenta, "1300", "200", "0", "1500");
        }
        for (const char* cuenta : {"400-00-00", "400-01-00", "400-01-01"}) {
            enero += RenglonSat(cuenta, "1000", "0", "300", "1300");
            febrero += std::string(cuenta) == "400-01-01" ? RenglonSat(cuenta, "1300", "0", "250", "1550")
                                                           : RenglonSat(cuenta, "1300", "0", "200", "1500");
        }
        archivos.fija("balanza", escribe("BN01.xml", BalanzaSat("01", enero)));
        archivos.fija("balanza", escribe("BN02.xml", BalanzaSat("02", febrero)));
        archivos.fija("polizas", escribe("PL01.xml", PolizasSat("01", Poliza("Ig-1", "2025-01-10",
            Transaccion("100-01-01", "300", "0", "  <sat:CompNal UUID_CFDI=\"11111111-2222-4333-8444-555555555555\" "
                                                 "RFC=\"XAXX010101000\" MontoTotal=\"300\"/>\n") +
            Transaccion("400-01-01", "0", "300")))));
        archivos.fija("polizas", escribe("PL02.xml", PolizasSat("02", Poliza("Ig-2", "2025-02-03",
            Transaccion("100-01-01", "200", "0") + Transaccion("400-01-01", "0", "200")))));
        s.interaccion = &ui;
        IniciaSesion(s, {dir.texto() + "base", "ACME", "2025"});
    }
    std::string escribe(const std::string& nombre, const std::string& texto) {
        std::ofstream(dir.texto() + nombre, std::ios::binary) << texto;
        return dir.texto() + nombre;
    }
    Valor escalar(const std::string& sql) { return s.DbEmpresa->escalar(sql); }
};

}  // namespace

TEST_F(ImportacionSat, UnAnioDeArchivosXmlDejaCatalogoPolizasBalanzaYLaConciliacion) {
    ImportadorContabilidadElectronica imp(ReglaTipoPoliza::Desde("letras"), "aaa010101aaa");
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaImportacion(s, imp, archivos), ResultadoImportacion::Terminada) << ui.mensajes.back().texto;
    EXPECT_EQ(s.DbEmpresas->escalar("SELECT IdSistema FROM Empresas").entero(), kEnlaceContabilidadElectronica);
    EXPECT_EQ(escalar("SELECT COUNT(*) FROM Cuentas").entero(), 6);
    EXPECT_EQ(escalar("SELECT group_concat(Poliza || Tipo || Fecha, ' ') FROM Polizas").texto(),
              "1Ig2025-01-10 2Ig2025-02-03");
    EXPECT_EQ(escalar("SELECT Referencia FROM Polizas_Detalle WHERE Cuenta='1000101' AND Importe=3000000").texto(),
              "Mov 11111111-2222-4333-8444-555555555555");
    EXPECT_EQ(escalar("SELECT SaldoInicial FROM Balanzas WHERE Cuenta='400'").moneda().texto(), "-1000");
    EXPECT_EQ(escalar("SELECT SdoFin02 FROM Balanzas WHERE Cuenta='1000101'").moneda().texto(), "1500");
    EXPECT_EQ(escalar("SELECT SdoFin02 FROM Balanzas WHERE Cuenta='400'").moneda().texto(), "-1500");

    // The log of the run keeps the one difference of February's balance.
    BaseDatos log(RutaAlmacen(s, kInconsisImpTmp));
    EXPECT_EQ(log.escalar("SELECT group_concat(Referencia || ' | ' || FuenteError || ' | ' || ClasifError || ' | ' || "
                          "Cuenta, '\n') FROM InconsisImpTmp")
                  .texto(),
              "Los abonos de la cuenta en la balanza de Febrero suman $250.00 y según las pólizas $200.00 | Pólizas | O "
              "| 4000101");
}

TEST_F(ImportacionSat, LaLineaDeOrdenes) {
    const std::string base = dir.texto() + "base";
    auto corre = [&](const std::string& argumentos) {
        return CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' '" VELMORANT_CLI "' --base '" + base +
                            "' --empresa ACME --ejercicio 2025 " + argumentos);
    };
    auto ayuda = corre("importar --enlace 135 --help");
    for (const char* opcion : {"--catalogo", "--balanza", "--polizas", "--tipo-prefijo", "--rfc"})
        EXPECT_NE(ayuda.salida.find(opcion), std::string::npos) << opcion << "\n" << ayuda.salida;
    EXPECT_NE(ayuda.salida.find("Contabilidad electrónica (XML)"), std::string::npos);

    std::string argumentos = "importar --enlace 135 --catalogo '" + archivos.catalogo + "'";
    for (auto& r : archivos.rutas("balanza")) argumentos += " --balanza '" + r + "'";
    for (auto& r : archivos.rutas("polizas")) argumentos += " --polizas '" + r + "'";
    auto otraEmpresa = corre(argumentos + " --rfc BBB020202BBB --continuar");
    EXPECT_EQ(otraEmpresa.estado, 1) << otraEmpresa.salida;
    EXPECT_NE(otraEmpresa.salida.find("es del RFC AAA010101AAA y no del RFC BBB020202BBB de la empresa."),
              std::string::npos)
        << otraEmpresa.salida;

    auto r = corre(argumentos + " --tipo-prefijo letras --continuar");
    ASSERT_EQ(r.estado, 0) << r.salida;
    auto balanza = corre("balanza --mes 02 --csv");
    EXPECT_NE(balanza.salida.find("100-01-01,Banco uno,3,1000,200,0,1500"), std::string::npos) << balanza.salida;
    EXPECT_NE(balanza.salida.find("400-01-01,Mostrador,3,-1000,0,200,-1500"), std::string::npos) << balanza.salida;
    auto bitacora = corre("inconsistencias");
    EXPECT_NE(bitacora.salida.find("Los abonos de la cuenta en la balanza de Febrero suman $250.00"), std::string::npos)
        << bitacora.salida;
}
