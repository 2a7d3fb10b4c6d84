// Link 25 through the whole run: a date that cannot be converted ending the
// run with nothing committed, the same client
// delivered as delimited (link 82), as fixed-width files and as workbooks
// (link 102) importing to the same books, and the command line from the
// saved layout to the trial balance.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "importers/excel_columnas/ImportadorExcelColumnas.h"
#include "importers/excel_columnas/LibroPrueba.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "importers/texto_fijo/ImportadorTextoFijo.h"
#include "importers/texto_fijo/LineaFija.h"
#include "pipeline/Importacion.h"
#include "session/Funciones.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"
#include "store/AltaBase.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;
using prueba::LineaFija;

namespace {

// One client's year, written as either kind of file.
struct CuentaCliente {
    std::string cuenta, nivel, descripcion, naturaleza, saldo;
};
struct LineaCliente {
    std::string poliza, tipo, dia, mes, cuenta, referencia, concepto, cargo, abono;
};

const std::vector<CuentaCliente> kCuentas = {
    {"100-00-00", "1", "Activo", "D", "1500"},      {"100-01-00", "2", "Bancos", "D", "1500"},
    {"100-01-01", "3", "Banco uno", "D", "1000"},   {"100-01-02", "3", "Banco dos", "D", "500"},
    {"400-00-00", "1", "Ventas", "A", "-1500"},     {"400-01-00", "2", "Ventas nacionales", "A", "-1500"},
    {"400-01-01", "3", "Mostrador", "A", "-1500"},
};

const std::vector<LineaCliente> kLineas = {
    {"1", "Dr", "05", "01", "100-01-01", "F-001", "Venta de mostrador", "250.50", "0"},
    {"1", "Dr", "05", "01", "400-01-01", "F-001", "Venta de mostrador", "0", "250.50"},
    {"2", "Eg", "20", "01", "400-01-01", "CH-17", "Devolución", "40", "0"},
    // The second line of a voucher keeps its own concept beside its reference.
    {"2", "Eg", "20", "01", "100-01-02", "CH-17", "Cheque 17", "0", "40"},
    {"3", "Dr", "31", "01", "100-01-01", "", "Venta sin referencia", "10", "0"},
    {"3", "Dr", "31", "01", "400-01-01", "", "Venta sin referencia", "0", "10"},
    {"1", "Dr", "03", "02", "100-01-02", "F-002", "Cobranza", "1,000.00", "0"},
    {"1", "Dr", "03", "02", "400-01-01", "F-002", "Cobranza", "0", "1,000.00"},
    // An account the chart lacks: logged, kept, the voucher left unbalanced.
    {"2", "Dr", "14", "02", "999-01-01", "X", "Cuenta perdida", "5", "0"},
};

std::string TextoDelimitado(bool catalogo, const std::string& mes = "") {
    std::string t;
    if (catalogo)
        for (auto& c : kCuentas) t += c.cuenta + "|" + c.nivel + "|" + c.descripcion + "|" + c.naturaleza + "|" + c.saldo + "\n";
    for (auto& l : kLineas)
        if (!catalogo && l.mes == mes)
            t += l.poliza + "|" + l.tipo + "|" + l.dia + "|" + l.mes + "|2025|" + l.cuenta + "|" + l.referencia + "|" +
                 l.concepto + "|" + l.cargo + "|" + l.abono + "\n";
    return t;
}

// Chart: account 1-10, level 11, nature 12, balance 13-27, description 28-67.
// Vouchers: number 1-5, type 6-8, day 9-10, month 11-12, year 13-16, account
// 17-26, reference 27-34, concept 35-59, debit 60-71, credit 72-83.
EstructuraDatosTxt DisenoFijo() {
    EstructuraDatosTxt c;
    c.PIniCuenta = 1, c.LongCuenta = 10, c.PIniNivel = 11, c.LongNivel = 1, c.PIniNaturaleza = 12,
    c.LongNaturaleza = 1, c.PIniSdoIni = 13, c.LongSdoIni = 15, c.PIniDescripcion = 28, c.LongDescripcion = 40;
    c.PIniNumPol = 1, c.LongNumPol = 5, c.PIniTipo = 6, c.LongTipo = 3, c.PIniDia = 9, c.LongDia = 2, c.PIniMes = 11,
    c.LongMes = 2, c.PIniAnio = 13, c.LongAnio = 4, c.PIniCtaPol = 17, c.LongCtaPol = 10, c.PIniRef = 27,
    c.LongRef = 8, c.PIniConcept = 35, c.LongConcept = 25, c.PIniCargo = 60, c.LongCargo = 12, c.PIniAbono = 72,
    c.LongAbono = 12;
    return c;
}

std::string TextoFijo(bool catalogo, const std::string& mes = "") {
    std::string t;
    if (catalogo)
        for (auto& c : kCuentas)
            t += LineaFija({{1, c.cuenta}, {11, c.nivel}, {12, c.naturaleza}, {13, c.saldo}, {28, c.descripcion}}) +
                 "\r\n";
    for (auto& l : kLineas)
        if (!catalogo && l.mes == mes)
            t += LineaFija({{1, l.poliza}, {6, l.tipo}, {9, l.dia}, {11, l.mes}, {13, "2025"}, {17, l.cuenta},
                            {27, l.referencia}, {35, l.concepto}, {60, l.cargo}, {72, l.abono}}) +
                 "\r\n";
    return t;
}

// The same client as workbooks: one date column whose cells carry a time of
// day, accounts of the detail level delivered as numbers, amounts as numbers.
prueba::HojaLibro HojaExcel(bool catalogo, const std::string& mes = "") {
    using namespace prueba;
    auto importe = [](const std::string& t) {
        std::string limpio;
        for (char c : t)
            if (c != ',') limpio += c;
        return N(std::stod(limpio));
    };
    auto cuenta = [](const std::string& c) {
        if (c.substr(c.size() - 2) == "00" || c.rfind("999", 0) == 0) return T(c);
        return N(std::stod(c.substr(0, 3) + c.substr(4, 2) + c.substr(7, 2)));
    };
    HojaLibro h;
    if (catalogo) {
        h.push_back({T("Cuenta"), T("Nivel"), T("Descripción"), T("Naturaleza"), T("Saldo")});
        for (auto& c : kCuentas)
            h.push_back({cuenta(c.cuenta), N(std::stod(c.nivel)), T(c.descripcion), T(c.naturaleza), importe(c.saldo)});
        return h;
    }
    h.push_back({T("Póliza"), T("Tipo"), T("Fecha"), T("Cuenta"), T("Referencia"), T("Concepto"), T("Cargo"), T("Abono")});
    for (auto& l : kLineas)
        if (l.mes == mes)
            h.push_back({N(std::stod(l.poliza)), T(l.tipo), F(2025, std::stoi(l.mes), std::stoi(l.dia), 18, 5),
                         cuenta(l.cuenta), l.referencia.empty() ? V() : T(l.referencia), T(l.concepto),
                         importe(l.cargo), importe(l.abono)});
    return h;
}

LecturaExcel LecturaExcelDelCliente() {
    LecturaExcel l;
    l.Titulos = false;
    auto& c = l.config;
    c.PIniCuenta = 1, c.PIniNivel = 2, c.PIniDescripcion = 3, c.PIniNaturaleza = 4, c.PIniSdoIni = 5;
    c.PIniNumPol = 1, c.PIniTipo = 2, c.PIniDia = 3, c.PIniCtaPol = 4, c.PIniRef = 5, c.PIniConcept = 6,
    c.PIniCargo = 7, c.PIniAbono = 8;
    return l;
}

LecturaDelimitada LecturaDelCliente() {
    LecturaDelimitada l;
    l.separador = "|";
    l.Titulos = false;
    auto& c = l.config;
    c.PIniCuenta = 1, c.PIniNivel = 2, c.PIniDescripcion = 3, c.PIniNaturaleza = 4, c.PIniSdoIni = 5;
    c.PIniNumPol = 1, c.PIniTipo = 2, c.PIniDia = 3, c.PIniMes = 4, c.PIniAnio = 5, c.PIniCtaPol = 6, c.PIniRef = 7,
    c.PIniConcept = 8, c.PIniCargo = 9, c.PIniAbono = 10;
    return l;
}

// A base with company ACME (2025) whose codes are padded with zeros.
class EmpresaFija {
public:
    explicit EmpresaFija(const std::string& carpeta) : carpeta_(carpeta) {
        base = CreaBase(carpeta + "base");
        DatosEmpresaNueva d = prueba::EmpresaAcme();
        d.rellenaCeros = true;
        CreaEmpresa(base, d);
    }
    void inicia(prueba::InteraccionGuionada& ui) {
        s = Sesion();
        s.interaccion = &ui;
        IniciaSesion(s, {base, "ACME", "2025"});
    }
    std::string escribe(const std::string& nombre, const std::string& texto) {
        std::ofstream(carpeta_ + nombre, std::ios::binary) << texto;
        return carpeta_ + nombre;
    }
    std::vector<std::vector<std::string>> tabla(const std::string& sql) {
        std::vector<std::vector<std::string>> r;
        auto c = s.DbEmpresa->consulta(sql);
        for (c.primero(); !c.eof(); c.siguiente()) {
            r.emplace_back();
            for (int i = 0; i < c.numCampos(); ++i) r.back().push_back(c.campo(i).texto());
        }
        return r;
    }
    std::string archivoEmpresa() { return ArchivoEmpresa(s.RutaEmpresa, "ACME", 2025); }

    std::string base;
    Sesion s;

private:
    std::string carpeta_;
};

class ImportacionFija : public ::testing::Test {
protected:
    prueba::AjustesAislados ajustes;
    prueba::CarpetaTemporal dir;
    prueba::InteraccionGuionada ui;

    ArchivosImportacion ArchivosFijos(EmpresaFija& e) {
        ArchivosImportacion a;
        a.catalogo = e.escribe("cat.txt", TextoFijo(true));
        a.meses[0] = e.escribe("ene.txt", TextoFijo(false, "01"));
        a.meses[1] = e.escribe("feb.txt", TextoFijo(false, "02"));
        return a;
    }
};

}  // namespace

// A second delivery whose February holds a date that cannot be converted:
// the run ends with the file and line named, and the company stays as the
// first import left it.
TEST_F(ImportacionFija, UnaFechaIlegibleTerminaLaCorridaSinTocarLaEmpresa) {
    EmpresaFija e(dir.texto());
    e.inicia(ui);
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ArchivosImportacion a = ArchivosFijos(e);
    {
        ImportadorTextoFijo imp(DisenoFijo());
        ASSERT_EQ(EjecutaImportacion(e.s, imp, a), ResultadoImportacion::Terminada);
    }
    const std::string mala = LineaFija({{1, "9"}, {6, "Dr"}, {9, "30"}, {11, "02"}, {13, "2025"}, {17, "100-01-01"},
                                        {35, "Treinta de febrero"}, {60, "1"}, {72, "0"}});
    e.escribe("feb.txt", TextoFijo(false, "02") + mala + "\r\n");
    e.inicia(ui);
    const std::string antes = prueba::ContenidoEmpresaSinHistorial(e.archivoEmpresa());
    ui.mensajes.clear();
    ImportadorTextoFijo imp(DisenoFijo());
    EXPECT_THROW(EjecutaImportacion(e.s, imp, a), ProgramaTerminado);
    ASSERT_EQ(ui.mensajes.size(), 2u);
    EXPECT_NE(ui.mensajes[0].texto.find(a.meses[1] + ", línea 4"), std::string::npos) << ui.mensajes[0].texto;
    EXPECT_EQ(ui.mensajes[1].texto, "Error al leer la línea: " + mala + "\r");
    e.s.DbEmpresa.reset();
    e.s.DbEmpresas.reset();
    EXPECT_EQ(prueba::ContenidoEmpresaSinHistorial(e.archivoEmpresa()), antes);
}

// The same client as delimited and fixed-width files and as workbooks: the
// same books, but that each line of the fixed files carries its concept
// beside its reference.
TEST_F(ImportacionFija, ElMismoClienteDelimitadoFijoYEnExcelDaLosMismosLibros) {
    prueba::CarpetaTemporal otra, tercera;
    EmpresaFija delimitada(dir.texto()), fija(otra.texto()), libro(tercera.texto());

    delimitada.inicia(ui);
    ArchivosImportacion a82;
    a82.catalogo = delimitada.escribe("cat.txt", TextoDelimitado(true));
    a82.meses[0] = delimitada.escribe("ene.txt", TextoDelimitado(false, "01"));
    a82.meses[1] = delimitada.escribe("feb.txt", TextoDelimitado(false, "02"));
    ImportadorTextoDelimitado imp82(LecturaDelCliente(), false);
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaImportacion(delimitada.s, imp82, a82), ResultadoImportacion::Terminada);

    fija.inicia(ui);
    ImportadorTextoFijo imp25(DisenoFijo());
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaImportacion(fija.s, imp25, ArchivosFijos(fija)), ResultadoImportacion::Terminada);

    libro.inicia(ui);
    ArchivosImportacion a102;
    a102.catalogo = libro.escribe("cat.xlsx", "");
    prueba::EscribeLibro(a102.catalogo, HojaExcel(true));
    a102.meses[0] = libro.escribe("ene.xls", "");
    prueba::EscribeLibro(a102.meses[0], HojaExcel(false, "01"));
    a102.meses[1] = libro.escribe("feb.xlsx", "");
    prueba::EscribeLibro(a102.meses[1], HojaExcel(false, "02"));
    ImportadorExcelColumnas imp102(LecturaExcelDelCliente(), false);
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ASSERT_EQ(EjecutaImportacion(libro.s, imp102, a102), ResultadoImportacion::Terminada);

    for (const char* sql : {"SELECT * FROM Cuentas ORDER BY Cuenta", "SELECT * FROM Polizas ORDER BY IdPoliza",
                            "SELECT * FROM Balanzas ORDER BY Cuenta",
                            "SELECT IdPoliza, Partida, Cuenta, TipoMov, Importe FROM Polizas_Detalle "
                            "ORDER BY IdPoliza, Partida"}) {
        auto filas = fija.tabla(sql);
        EXPECT_FALSE(filas.empty()) << sql;
        EXPECT_EQ(filas, delimitada.tabla(sql)) << sql;
        EXPECT_EQ(libro.tabla(sql), delimitada.tabla(sql)) << sql;
    }
    const std::string referencias = "SELECT Referencia FROM Polizas_Detalle ORDER BY IdPoliza, Partida";
    auto ref82 = delimitada.tabla(referencias), ref25 = fija.tabla(referencias);
    EXPECT_EQ(libro.tabla(referencias), ref82);
    ASSERT_EQ(ref82.size(), kLineas.size());
    ASSERT_EQ(ref25.size(), kLineas.size());
    for (size_t i = 0; i < kLineas.size(); ++i) {
        EXPECT_EQ(ref82[i][0], kLineas[i].referencia);
        EXPECT_EQ(ref25[i][0], kLineas[i].referencia + " " + kLineas[i].concepto);
    }
    EXPECT_EQ(imp25.contadorIdPoliza(), 5);
    // 1000 opening, 250.50 + 10 in January.
    EXPECT_EQ(fija.tabla("SELECT SdoFin01 FROM Balanzas WHERE Cuenta = '1000101'")[0][0], "12605000");
    EXPECT_EQ(fija.s.DbEmpresas->escalar("SELECT IdSistema FROM Empresas").entero(), 25);
}

// The command line: the layout saved with positions and lengths, the run
// from it, and the faults a user can make on the way.
TEST_F(ImportacionFija, DesdeLaLineaDeOrdenes) {
    EmpresaFija e(dir.texto());
    auto cli = [&](const std::string& argumentos) {
        return prueba::CorreProceso(std::string(VELMORANT_CLI) + " --base '" + e.base +
                                    "' --empresa ACME --ejercicio 2025 " + argumentos);
    };
    const std::string posiciones =
        " PIniCuenta=1 LongCuenta=10 PIniNivel=11 LongNivel=1 PIniNaturaleza=12 LongNaturaleza=1 PIniSdoIni=13 "
        "LongSdoIni=15 PIniDescripcion=28 LongDescripcion=40 PIniNumPol=1 LongNumPol=5 PIniTipo=6 LongTipo=3 "
        "PIniDia=9 LongDia=2 PIniMes=11 LongMes=2 PIniAnio=13 LongAnio=4 PIniCtaPol=17 LongCtaPol=10 PIniRef=27 "
        "LongRef=8 PIniConcept=35 LongConcept=25 PIniCargo=60 LongCargo=12 PIniAbono=72 LongAbono=12";
    auto sinLongitud = cli("configuracion crear fijo --enlace 25 PIniCuenta=1");
    EXPECT_EQ(sinLongitud.estado, 1);
    EXPECT_NE(sinLongitud.salida.find("Es necesario indicar la Longitud para la Cuenta"), std::string::npos)
        << sinLongitud.salida;
    auto creada = cli("configuracion crear fijo --enlace 25" + posiciones);
    ASSERT_EQ(creada.estado, 0) << creada.salida;
    auto muestra = cli("configuracion mostrar FIJO");
    EXPECT_NE(muestra.salida.find("IdEnlace: 25\nPIniCuenta=1\tLongCuenta=10\n"), std::string::npos) << muestra.salida;
    EXPECT_EQ(cli("configuracion listar --enlace 25").salida, "CONFIGURACION PREDETERMINADA\nFIJO\n");
    ASSERT_EQ(cli("configuracion crear columnas --enlace 82 PIniCuenta=1 PIniDescripcion=2 PIniNumPol=1 "
                  "PIniConcept=2 PIniTipo=3 PIniDia=4 PIniCtaPol=5 PIniTipoMov=6 PIniImporte=7")
                  .estado,
              0);

    const std::string cat = e.escribe("cat.txt", TextoFijo(true)), ene = e.escribe("ene.txt", TextoFijo(false, "01")),
                      feb = e.escribe("feb.txt", TextoFijo(false, "02"));
    const std::string archivos = "--catalogo '" + cat + "' --mes 01='" + ene + "' --mes 02='" + feb + "' ";
    struct Caso {
        std::string argumentos;
        int estado;
        std::string texto;
    } casos[] = {
        {archivos, 2, "falta la opción --configuracion"},
        {archivos + "--configuracion NADA --continuar", 1, "No se encontro la configuracion actual"},
        {archivos + "--configuracion COLUMNAS --continuar", 1,
         "es del enlace 82, no del enlace 25"},
        {"--catalogo '" + cat + "' --mes 01='" + ene + "' --mes 02='" + ene + "' --configuracion FIJO --continuar", 2,
         "El archivo ya ha sido seleccionado"},
        {archivos + "--configuracion FIJO --continuar", 0, "finalizó con éxito"},
    };
    for (auto& c : casos) {
        auto r = cli("importar --enlace 25 " + c.argumentos);
        EXPECT_EQ(r.estado, c.estado) << c.argumentos << "\n" << r.salida;
        EXPECT_NE(r.salida.find(c.texto), std::string::npos) << c.argumentos << "\n" << r.salida;
    }
    auto resumen = cli("resumen");
    EXPECT_NE(resumen.salida.find("Pólizas:   5 (meses 1 a 2"), std::string::npos) << resumen.salida;
    EXPECT_NE(resumen.salida.find("Partidas:  9"), std::string::npos) << resumen.salida;

    // A date that cannot be converted: the program ends naming file and line.
    e.escribe("feb.txt", TextoFijo(false, "02") + "    9Dr 30022025\r\n");
    auto mala = cli("importar --enlace 25 " + archivos + "--configuracion FIJO --continuar");
    EXPECT_EQ(mala.estado, 3) << mala.salida;
    EXPECT_NE(mala.salida.find(feb + ", línea 4"), std::string::npos) << mala.salida;
    EXPECT_NE(mala.salida.find("Error al leer la línea:     9Dr 30022025"), std::string::npos) << mala.salida;
    // The books are as before; only the log of the last run is new.
    auto libros = [](const std::string& resumen) {
        std::string r;
        for (size_t i = 0, fin; i < resumen.size(); i = fin + 1) {
            fin = resumen.find('\n', i);
            std::string linea = resumen.substr(i, fin - i);
            for (const char* inicio : {"Cuentas:", "Pólizas:", "Partidas:", "Balanza:"})
                if (linea.rfind(inicio, 0) == 0) r += linea + "\n";
        }
        return r;
    };
    EXPECT_EQ(libros(cli("resumen").salida), libros(resumen.salida));
    auto antes = libros(resumen.salida);
    EXPECT_EQ(std::count(antes.begin(), antes.end(), '\n'), 4) << antes;
}
