// The electronic-accounting readers on files of versions 1.1 and 1.3: what
// each leaves in the run's stores, the type rule, month 13, folios, the
// files refused before anything is read and a file broken halfway.

#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "importers/contabilidad_electronica/ImportadorContabilidadElectronica.h"
#include "importers/contabilidad_electronica/XmlSat.h"
#include "platform/ErrorLectura.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/AlmacenesLectura.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

class LecturaSat : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    InteraccionGuionada ui;
    Sesion s;
    std::unique_ptr<DestinoTmp> destino;
    ArchivosImportacion a;

    void SetUp() override {
        AbreAlmacenesDeLectura(s, ui, carpeta, 2025);
        destino = std::make_unique<DestinoTmp>(s);
        a = ArchivosImportacion{};
        a.catalogo = Archivo("catalogo.xml", CatalogoSat(CuerpoCatalogo()));
    }

    std::string Archivo(const std::string& nombre, const std::string& contenido) {
        std::string ruta = carpeta.texto() + nombre;
        std::ofstream(ruta, std::ios::binary) << contenido;
        return ruta;
    }

    std::vector<std::string> Filas(const std::string& sql) { return FilasComoTexto(*s.DbEmpresa, sql); }
    std::vector<std::string> Cuentas() {
        return Filas("SELECT Cuenta, CuentaSinSeparadores, Descripcion, Nivel, CuentaAcumulativa, Naturaleza, "
                     "Saldo / 10000 FROM CuentasTmp.Cuentas ORDER BY rowid");
    }
    std::vector<std::string> Partidas() {
        return Filas("SELECT p.Poliza, p.Tipo, p.Fecha, p.Poliza_Mes13, d.Partida, d.Cuenta, d.TipoMov, "
                     "d.Importe / 10000, d.Referencia FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp d JOIN Polizas_Tmp.Polizas_Tmp p "
                     "ON p.IdPoliza = d.IdPoliza ORDER BY d.rowid");
    }
    std::vector<std::string> Bitacora() { return Filas("SELECT Referencia, Cuenta FROM InconsisImpTmp ORDER BY rowid"); }

    ImportadorContabilidadElectronica Importador(const std::string& regla = "", const std::string& rfc = "") {
        return ImportadorContabilidadElectronica(ReglaTipoPoliza::Desde(regla), rfc);
    }
    void Lee(ImportadorContabilidadElectronica& imp) {
        imp.ImportaCatalogo(s, *destino, a);
        imp.ImportaPolizas(s, *destino, a);
    }
};

}  // namespace

TEST_F(LecturaSat, CatalogoDeLasDosVersionesYSaldosInicialesDeEnero) {
    const std::vector<std::string> esperadas{
        "100|100|Activo|1||D|1000", "100-01|10001|Bancos|2|100|D|1000",
        "100-01-01|1000101|Banco uno|3|10001|D|1000", "400|400|Ventas|1||A|-1000",
        "400-01|40001|Ventas nacionales|2|400|A|-1000", "400-01-01|4000101|Mostrador|3|40001|A|-1000"};
    // The credit accounts as the country's systems sign them (positive in
    // credit), then debit positive throughout: both give the same balances.
    const std::string porNaturaleza = RenglonSat("100-00-00", "1000", "500", "0", "1500") +
                                      RenglonSat("100-01-00", "1000", "500", "0", "1500") +
                                      RenglonSat("100-01-01", "1000", "500", "0", "1500") +
                                      RenglonSat("400-00-00", "1000", "0", "500", "1500") +
                                      RenglonSat("400-01-00", "1000", "0", "500", "1500") +
                                      RenglonSat("400-01-01", "1000", "0", "500", "1500");
    const std::string deudorPositivo = RenglonSat("100-00-00", "1000", "500", "0", "1500") +
                                       RenglonSat("100-01-00", "1000", "500", "0", "1500") +
                                       RenglonSat("100-01-01", "1000", "500", "0", "1500") +
                                       RenglonSat("400-00-00", "-1000", "0", "500", "-1500") +
                                       RenglonSat("400-01-00", "-1000", "0", "500", "-1500") +
                                       RenglonSat("400-01-01", "-1000", "0", "500", "-1500");
    for (const std::string version : {"1.1", "1.3"})
        for (const auto& cuerpo : {porNaturaleza, deudorPositivo}) {
            SetUp();
            a.catalogo = Archivo("cat.xml", CatalogoSat(CuerpoCatalogo(), version));
            a.fija("balanza", Archivo("bal01.xml", BalanzaSat("01", cuerpo, version)));
            Importador().ImportaCatalogo(s, *destino, a);
            EXPECT_EQ(Cuentas(), esperadas) << version << "\n" << cuerpo;
        }

    // A balance of another month gives no opening balance; a windows-1252
    // chart is decoded, and a chart without levels takes the code's own.
    SetUp();
    std::string cp1252 = CatalogoSat("<sat:Ctas NumCta=\"100 01 02\" Desc=\"Compa\xF1\xED" "a\" Natur=\"d\"/>\n");
    cp1252.replace(cp1252.find("UTF-8"), 5, "windows-1252");
    a.catalogo = Archivo("cat1252.xml", cp1252);
    a.fija("balanza", Archivo("bal03.xml", BalanzaSat("03", RenglonSat("100-01-02", "5", "0", "0", "5"))));
    Importador().ImportaCatalogo(s, *destino, a);
    EXPECT_EQ(Cuentas(), std::vector<std::string>{"100-01-02|1000102|Compañía|3||D|"});
}

TEST_F(LecturaSat, PolizasConTipoDelNumeroFoliosYUnaPartidaConCargoYAbono) {
    const std::string pol03 = Archivo("pol03.xml", PolizasSat("03",
        "<sat:Poliza NumUnIdenPol=\"Ig-7\" Fecha=\"2025-03-15\" Concepto=\"Venta mostrador\">\n"
        " <sat:Transaccion NumCta=\"100-01-01\" DesCta=\"Banco uno\" Concepto=\"Depósito\" Debe=\"1160.00\" Haber=\"0\">\n"
        "  <sat:CompNal UUID_CFDI=\"6F1A2B3C-0000-4000-8000-00000000000A\" RFC=\"XAXX010101000\" MontoTotal=\"1160.00\"/>\n"
        "  <sat:Transferencia CtaOri=\"0123\" BancoOriNal=\"002\" CtaDest=\"0456\" BancoDestNal=\"012\" Fecha=\"2025-03-15\""
        " Benef=\"Acme\" RFC=\"XAXX010101000\" Monto=\"1160.00\"/>\n"
        " </sat:Transaccion>\n"
        " <sat:Transaccion NumCta=\"400-01-01\" DesCta=\"Mostrador\" Concepto=\"Venta\" Debe=\"0\" Haber=\"1160.00\">\n"
        "  <sat:CompNalOtr CFD_CBB_Serie=\"A\" CFD_CBB_NumFol=\"77\" RFC=\"XAXX010101000\" MontoTotal=\"1.00\"/>\n"
        "  <sat:CompExt NumFactExt=\"INV-9\" TaxID=\"123\" MontoTotal=\"1.00\"/>\n"
        " </sat:Transaccion>\n"
        "</sat:Poliza>\n"
        "<sat:Poliza NumUnIdenPol=\"Dr-8\" Fecha=\"2025-03-31\" Concepto=\"Ajuste\">\n"
        " <sat:Transaccion NumCta=\"100-01-01\" DesCta=\"B\" Concepto=\"Ambos\" Debe=\"10\" Haber=\"4\"/>\n"
        " <sat:Transaccion NumCta=\"999-01-01\" DesCta=\"X\" Concepto=\"Inexistente\" Debe=\"0\" Haber=\"6\"/>\n"
        " <sat:Transaccion NumCta=\"400-01-01\" DesCta=\"M\" Concepto=\"Cero\" Debe=\"0\" Haber=\"0\"/>\n"
        "</sat:Poliza>\n"
        "<sat:Poliza NumUnIdenPol=\"15\" Fecha=\"2025-03-31\" Concepto=\"Sin tipo\"/>\n"));
    // Version 1.1: `Num`, the type code `Tipo`, and `Comprobantes`.
    const std::string pol04 = Archivo("pol04.xml", PolizasSat("04",
        "<sat:Poliza Tipo=\"2\" Num=\"31\" Fecha=\"2025-04-02\" Concepto=\"Pago\">\n"
        " <sat:Transaccion NumCta=\"400-01-01\" Concepto=\"Pago\" Debe=\"50\" Haber=\"0\" Moneda=\"MXN\" TipCamb=\"1\">\n"
        "  <sat:Comprobantes UUID_CFDI=\"AAAAAAAA-0000-4000-8000-000000000001\" Monto=\"50\" RFC=\"XAXX010101000\"/>\n"
        " </sat:Transaccion>\n"
        " <sat:Transaccion NumCta=\"100-01-01\" Concepto=\"Pago\" Debe=\"0\" Haber=\"50\" Moneda=\"MXN\" TipCamb=\"1\"/>\n"
        "</sat:Poliza>\n", "1.1"));
    a.otros["polizas"] = {pol03, pol04};
    auto imp = Importador();
    Lee(imp);
    const std::vector<std::string> sinRegla = Partidas();
    EXPECT_EQ(sinRegla.front(), "Ig-7||2025-03-15|0|1|1000101|D|1160|Depósito 6F1A2B3C-0000-4000-8000-00000000000A");
    EXPECT_EQ(sinRegla.back(), "31|2|2025-04-02|0|2|1000101|H|50|Pago");

    SetUp();
    a.otros["polizas"] = {pol03, pol04};
    imp = Importador("letras");
    Lee(imp);
    EXPECT_EQ(Partidas(), (std::vector<std::string>{
                              "7|Ig|2025-03-15|0|1|1000101|D|1160|Depósito 6F1A2B3C-0000-4000-8000-00000000000A",
                              "7|Ig|2025-03-15|0|2|4000101|H|1160|Venta A77 INV-9",
                              "8|Dr|2025-03-31|0|1|1000101|D|10|Ambos",
                              "8|Dr|2025-03-31|0|2|1000101|H|4|Ambos",
                              "8|Dr|2025-03-31|0|3|9990101|H|6|Inexistente",
                              "8|Dr|2025-03-31|0|4|4000101|D|0|Cero",
                              "31||2025-04-02|0|1|4000101|D|50|Pago AAAAAAAA-0000-4000-8000-000000000001",
                              "31||2025-04-02|0|2|1000101|H|50|Pago",
                          }));
    EXPECT_EQ(Filas("SELECT Poliza, Tipo, Concepto FROM Polizas_Tmp.Polizas_Tmp WHERE Poliza='15'"),
              std::vector<std::string>{"15||Sin tipo"});
    EXPECT_EQ(Bitacora(), (std::vector<std::string>{
                              "No se registró  el movimiento H ,$6.00 de la Póliza, ya que la Cuenta no existe.|9990101"}));
}

TEST_F(LecturaSat, ReglaDelTipoEnElNumero) {
    struct Caso {
        const char* regla;
        const char* numero;
        const char* tipo;
        const char* resto;
    } casos[] = {
        {"2", "Dr0012", "Dr", "0012"}, {"2", "Dr", "", "Dr"},        {"letras", "Ig-12", "Ig", "12"},
        {"letras", "12", "", "12"},    {"letras", "Eg", "", "Eg"},    {"^(\\w+)/(\\d+)$", "PD/0031", "PD", "0031"},
        {"^([A-Z])\\d+$", "E17", "E", "E17"}, {"^(\\w+)/(\\d+)$", "sin-diagonal", "", "sin-diagonal"},
        {"", "Ig-12", "", "Ig-12"},
    };
    for (auto& c : casos) {
        auto p = ReglaTipoPoliza::Desde(c.regla).separa(c.numero);
        EXPECT_EQ(p.tipo, c.tipo) << c.regla << " " << c.numero;
        EXPECT_EQ(p.numero, c.resto) << c.regla << " " << c.numero;
    }
    for (const char* mala : {"0", "25", "(sin cerrar", "^\\d+$"})
        EXPECT_THROW(ReglaTipoPoliza::Desde(mala), ParametroInvalido) << mala;
}

TEST_F(LecturaSat, PolizasDelMes13) {
    const std::string cierre = "<sat:Poliza NumUnIdenPol=\"C1\" Fecha=\"2025-12-31\" Concepto=\"Cierre\">\n"
                               " <sat:Transaccion NumCta=\"400-01-01\" Concepto=\"Cierre\" Debe=\"900\" Haber=\"0\"/>\n"
                               " <sat:Transaccion NumCta=\"100-01-01\" Concepto=\"Cierre\" Debe=\"0\" Haber=\"900\"/>\n"
                               "</sat:Poliza>\n";
    a.fija("polizas", Archivo("pol13.xml", PolizasSat("13", cierre)));
    auto imp = Importador();
    Lee(imp);
    EXPECT_EQ(Partidas(), (std::vector<std::string>{"C1||2025-12-31|-1|1|4000101|D|900|Cierre",
                                                   "C1||2025-12-31|-1|2|1000101|H|900|Cierre"}));

    // A closing voucher dated outside December is a fault of its file.
    SetUp();
    a.fija("polizas", Archivo("pol13b.xml", PolizasSat("13", cierre + [&] {
                                  std::string otra = cierre;
                                  otra.replace(otra.find("2025-12-31"), 10, "2025-11-30");
                                  return otra;
                              }())));
    imp = Importador();
    imp.ImportaCatalogo(s, *destino, a);
    try {
        imp.ImportaPolizas(s, *destino, a);
        ADD_FAILURE() << "se leyó una póliza del mes 13 con fecha de noviembre";
    } catch (const ErrorLectura& e) {
        EXPECT_EQ(e.linea(), 7);
        EXPECT_EQ(ui.mensajes.back().texto, "Error al leer el archivo " + a.ruta("polizas") +
                                                ", línea 7: la póliza C1 es del mes 13 y tiene fecha 30/11/2025; las "
                                                "pólizas del mes 13 llevan fecha de diciembre\r");
    }
    EXPECT_TRUE(Partidas().empty()) << "the file's vouchers are rolled back";
}

TEST_F(LecturaSat, UnaFallaAMitadDelArchivoNombraLaLineaYNoDejaNadaDeEl) {
    a.fija("polizas", Archivo("pol02.xml", PolizasSat("02",
        "<sat:Poliza NumUnIdenPol=\"3\" Fecha=\"2025-02-01\" Concepto=\"Tres\">\n"
        " <sat:Transaccion NumCta=\"100-01-01\" Concepto=\"x\" Debe=\"1\" Haber=\"0\"/>\n"
        "</sat:Poliza>\n"
        "<sat:Poliza NumUnIdenPol=\"4\" Fecha=\"2025-02-01\" Concepto=\"Cuatro\">\n"
        " <sat:Transaccion NumCta=\"100-01-01\" Concepto=\"x\" Debe=\"uno\" Haber=\"0\"/>\n"
        "</sat:Poliza>\n")));
    auto imp = Importador();
    imp.ImportaCatalogo(s, *destino, a);
    try {
        imp.ImportaPolizas(s, *destino, a);
        ADD_FAILURE() << "se leyó un importe que no es número";
    } catch (const ErrorLectura& e) {
        EXPECT_EQ(e.linea(), 7);
        EXPECT_EQ(ui.mensajes.back().tipo, TipoMensaje::Critico);
        EXPECT_EQ(ui.mensajes.back().texto, "Error al leer el archivo " + a.ruta("polizas") +
                                                ", línea 7: el importe Debe=\"uno\" no es numérico\r");
    }
    EXPECT_TRUE(Partidas().empty()) << "the file's vouchers are rolled back";
}

TEST_F(LecturaSat, ArchivosQueNoSonDeLaCorridaSeRehusanAntesDeLeer) {
    const std::string pol = PolizasSat("01", "");
    struct Caso {
        std::string nombre, papel, contenido, rfc, mensaje;
    } casos[] = {
        {"bal.xml", "polizas", BalanzaSat("01", ""), "",
         " no es las pólizas del periodo de la contabilidad electrónica: es la balanza de comprobación."},
        {"cfdi.xml", "polizas",
         "<cfdi:Comprobante xmlns:cfdi=\"http://www.sat.gob.mx/cfd/4\" Version=\"4.0\"/>", "",
         " no es las pólizas del periodo de la contabilidad electrónica: es un comprobante fiscal (CFDI)."},
        {"v12.xml", "polizas", [&] { std::string t = pol; t.replace(t.find("Version=\"1.3\""), 13, "Version=\"1.2\""); return t; }(),
         "", " es de la versión \"1.2\" de la contabilidad electrónica; se leen las versiones 1.1 y 1.3."},
        {"anio.xml", "polizas", XmlSat("Polizas", "PolizasPeriodo", "1.3", "01", "", "AAA010101AAA", "2024"), "",
         " es del ejercicio 2024 y se importa el ejercicio 2025."},
        {"mes.xml", "balanza", BalanzaSat("14", ""), "", " declara el mes \"14\"; los meses van de 01 a 13."},
        {"rfc.xml", "polizas", XmlSat("Polizas", "PolizasPeriodo", "1.3", "01", "", "BBB020202BBB"), "",
         " es del RFC BBB020202BBB y el archivo " + a.catalogo + " del RFC AAA010101AAA: los archivos deben ser de la "
         "misma empresa."},
        {"pol.xml", "polizas", XmlSat("Polizas", "PolizasPeriodo", "1.3", "01", "", "CCC030303CCC"), " aaa010101aaa ",
         " es del RFC CCC030303CCC y no del RFC AAA010101AAA de la empresa."},
        {"roto.xml", "polizas", "<?xml version=\"1.0\"?>\n\n<sat:Polizas>", "",
         ", línea 3: el XML no está bien formado (Namespace prefix sat on Polizas is not defined)"},
    };
    for (auto& c : casos) {
        ArchivosImportacion e;
        e.catalogo = a.catalogo;
        e.fija("polizas", Archivo("buena.xml", pol));
        if (c.papel == "polizas") e.otros["polizas"].clear();
        std::string ruta = Archivo(c.nombre, c.contenido);
        e.fija(c.papel, ruta);
        auto imp = Importador("", c.rfc);
        EXPECT_FALSE(imp.validaArchivos(s, e)) << c.nombre;
        std::string visto = ui.mensajes.empty() ? "" : ui.mensajes.back().texto;
        EXPECT_NE(visto.find(ruta + c.mensaje), std::string::npos) << c.nombre << ": " << visto;
    }
    // Two balances of one month, and one file given twice.
    ArchivosImportacion e;
    e.catalogo = a.catalogo;
    e.fija("polizas", Archivo("p.xml", pol));
    e.fija("balanza", Archivo("b1.xml", BalanzaSat("02", "")));
    e.fija("balanza", Archivo("b2.xml", BalanzaSat("2", "")));
    EXPECT_FALSE(Importador().validaArchivos(s, e));
    EXPECT_EQ(ui.mensajes.back().texto, "Las balanzas " + e.rutas("balanza")[0] + " y " + e.rutas("balanza")[1] +
                                            " son del mismo mes (02); indique una sola balanza por mes.\r");
    e.otros["balanza"].clear();
    e.otros["polizas"].push_back(e.ruta("polizas"));
    EXPECT_FALSE(Importador().validaArchivos(s, e));
    EXPECT_EQ(ui.mensajes.back().texto, "El archivo ya ha sido seleccionado: " + e.ruta("polizas") + "\r");
    e.otros["polizas"].pop_back();
    EXPECT_TRUE(Importador().validaArchivos(s, e)) << ui.mensajes.back().texto;
}
