// Link 102 through the whole run: a year with its closing month posted to
// C13/A13 and a re-import of it that finds nothing new, and the command line
// from the saved layout to the run, with one voucher file for the year, and
// to the prior-year balances.

#include <gtest/gtest.h>

#include "importers/excel_columnas/ImportadorExcelColumnas.h"
#include "importers/excel_columnas/LibroPrueba.h"
#include "pipeline/Importacion.h"
#include "session/Inicio.h"
#include "store/AltaBase.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

// A base with company ACME (2025) whose codes are padded with zeros.
class EmpresaExcel {
public:
    explicit EmpresaExcel(const std::string& carpeta) : carpeta_(carpeta) {
        base = CreaBase(carpeta + "base");
        DatosEmpresaNueva d = EmpresaAcme();
        d.rellenaCeros = true;
        CreaEmpresa(base, d);
    }
    void inicia(InteraccionGuionada& ui) {
        s = Sesion();
        s.interaccion = &ui;
        IniciaSesion(s, {base, "ACME", "2025"});
    }
    std::string libro(const std::string& nombre, const HojaLibro& hoja) {
        EscribeLibro(carpeta_ + nombre, hoja);
        return carpeta_ + nombre;
    }
    std::string valor(const std::string& sql) { return s.DbEmpresa->escalar(sql).texto(); }

    std::string base;
    Sesion s;

private:
    std::string carpeta_;
};

// Chart: account, description, level, balance. Vouchers: number, type,
// date, account, concept, debit, credit.
LecturaExcel Lectura() {
    LecturaExcel l;
    l.Titulos = false;
    auto& c = l.config;
    c.PIniCuenta = 1, c.PIniDescripcion = 2, c.PIniNivel = 3, c.PIniSdoIni = 4;
    c.PIniNumPol = 1, c.PIniTipo = 2, c.PIniDia = 3, c.PIniCtaPol = 4, c.PIniConcept = 5, c.PIniCargo = 6,
    c.PIniAbono = 7;
    return l;
}

const std::vector<CeldaLibro> kEncabezadoPolizas = {T("Poliza"), T("Tipo"),  T("Fecha"), T("Cuenta"),
                                                    T("Concepto"), T("Cargo"), T("Abono")};

HojaLibro Catalogo() {
    return {{T("Cuenta"), T("Nombre"), T("Nivel"), T("Saldo")},
            {T("100-00-00"), T("Activo"), N(1), N(1000)},
            {T("100-01-00"), T("Caja"), N(2), N(1000)},
            {N(1000101), T("Caja general"), N(3), N(1000)},
            {T("300-00-00"), T("Capital"), N(1), N(-1000)},
            {T("300-01-00"), T("Resultados"), N(2), N(-1000)},
            {T("300-01-01"), T("Del ejercicio"), N(3), N(-1000)},
            {T("400-00-00"), T("Ventas"), N(1), V()},
            {T("400-01-00"), T("Nacionales"), N(2), V()},
            {T("400-01-01"), T("Mostrador"), N(3), V()}};
}

HojaLibro Mes(int mes) {
    return {kEncabezadoPolizas,
            {N(mes), T("Dr"), F(2025, mes, 10, 16, 20), N(1000101), T("Venta"), N(100.25), N(0)},
            {N(mes), T("Dr"), F(2025, mes, 10, 16, 20), T("400-01-01"), T("Venta"), N(0), N(100.25)}};
}

// The closing voucher moves the year's sales to the result.
HojaLibro Cierre() {
    return {kEncabezadoPolizas,
            {T("C1"), T("Cierre"), V(), T("400-01-01"), T("Cierre del ejercicio"), N(1203), N(0)},
            {T("C1"), T("Cierre"), V(), T("300-01-01"), T("Cierre del ejercicio"), N(0), N(1203)}};
}

class ImportacionExcel : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal dir;
    InteraccionGuionada ui;

    ArchivosImportacion Anio(EmpresaExcel& e) {
        ArchivosImportacion a;
        a.catalogo = e.libro("cat.xlsx", Catalogo());
        for (int mes = 1; mes <= 12; ++mes)
            a.meses[static_cast<size_t>(mes - 1)] = e.libro("pol" + std::to_string(mes) + (mes % 2 ? ".xls" : ".xlsx"), Mes(mes));
        a.meses[12] = e.libro("cierre.xlsx", Cierre());
        return a;
    }
};

}  // namespace

// A whole year with its closing month, twice: the closing voucher posts to
// C13/A13, balanced, dated December 31 and flagged; the same files again
// find nothing new to report.
TEST_F(ImportacionExcel, ElMes13SePostaYUnaReimportacionNoReportaNada) {
    EmpresaExcel e(dir.texto());
    e.inicia(ui);
    ui.decisiones = {DecisionInconsistencias::Continuar};
    const ArchivosImportacion a = Anio(e);
    {
        ImportadorExcelColumnas imp(Lectura(), false);
        ASSERT_EQ(EjecutaImportacion(e.s, imp, a), ResultadoImportacion::Terminada);
    }
    EXPECT_EQ(e.valor("SELECT COUNT(*) FROM Polizas"), "13");
    EXPECT_EQ(e.valor("SELECT Fecha || ',' || Poliza_Mes13 || ',' || Cuadrada FROM Polizas WHERE Poliza='C1'"),
              "2025-12-31,-1,-1");
    EXPECT_EQ(e.valor("SELECT COUNT(*) FROM Polizas WHERE NOT Cuadrada"), "0");
    EXPECT_EQ(e.valor("SELECT C13 FROM Balanzas WHERE Cuenta='4000101'"), "12030000");
    EXPECT_EQ(e.valor("SELECT A13 FROM Balanzas WHERE Cuenta='3000101'"), "12030000");
    EXPECT_EQ(e.valor("SELECT SUM(C13) - SUM(A13) FROM Balanzas WHERE Cuenta IN ('4000101', '3000101')"), "0");
    EXPECT_EQ(e.valor("SELECT SUM(C12) FROM Balanzas WHERE Cuenta='1000101'"), "1002500");
    EXPECT_EQ(e.s.DbEmpresas->escalar("SELECT IdSistema FROM Empresas").entero(), 102);

    e.inicia(ui);
    const auto decisionesAntes = ui.conteos.size();
    ImportadorExcelColumnas otra(Lectura(), false);
    ASSERT_EQ(EjecutaImportacion(e.s, otra, a), ResultadoImportacion::Terminada);
    EXPECT_EQ(ui.conteos.size(), decisionesAntes) << "a re-import of the same year has nothing to decide";
    EXPECT_EQ(e.valor("SELECT COUNT(*) FROM Polizas WHERE Poliza_Mes13"), "1");
    EXPECT_EQ(e.valor("SELECT C13 FROM Balanzas WHERE Cuenta='4000101'"), "12030000");
}

// The command line: the layout saved by columns, the year as one file with
// the closing month beside it, the title flag, and the faults on the way.
TEST_F(ImportacionExcel, DesdeLaLineaDeOrdenes) {
    EmpresaExcel e(dir.texto());
    auto cli = [&](const std::string& argumentos) {
        return CorreProceso(std::string(VELMORANT_CLI) + " --base '" + e.base + "' --empresa ACME --ejercicio 2025 " +
                            argumentos);
    };
    auto creada = cli(
        "configuracion crear libro --enlace 102 PIniCuenta=1 PIniDescripcion=2 PIniNivel=3 PIniSdoIni=4 "
        "PIniNumPol=1 PIniTipo=2 PIniDia=3 PIniCtaPol=4 PIniConcept=5 PIniCargo=6 PIniAbono=7 "
        "--saldos anio-anterior PIniCtaSdoAnt=1 PIniDescSdoAnt=2 PIniSdoFinAnt=4");
    ASSERT_EQ(creada.estado, 0) << creada.salida;

    // The year in one sheet; with titles on, the chart's first data row is
    // a second title row and is dropped, the vouchers' first row is not.
    HojaLibro catalogo = Catalogo();
    catalogo.insert(catalogo.begin() + 1, {T("Código"), T("Descripción"), T("Nivel"), T("Saldo inicial")});
    HojaLibro anio{kEncabezadoPolizas};
    for (int mes = 1; mes <= 12; ++mes) {
        HojaLibro m = Mes(mes);
        anio.insert(anio.end(), m.begin() + 1, m.end());
    }
    const std::string cat = e.libro("cat.xlsx", catalogo), todo = e.libro("anio.xls", anio),
                      cierre = e.libro("cierre.xlsx", Cierre());
    struct Caso {
        std::string argumentos;
        int estado;
        std::string texto;
    } casos[] = {
        {"--un-archivo '" + todo + "' --mes 01='" + cierre + "' --configuracion LIBRO", 2,
         "indique las pólizas con --mes MM=ARCHIVO o con --un-archivo ARCHIVO"},
        {"--mes 14='" + cierre + "' --configuracion LIBRO", 2, "--mes"},
        {"--un-archivo '" + todo + "' --mes 13='" + cierre + "' --configuracion NADA --continuar", 1,
         "No se encontro la configuracion actual"},
        {"--un-archivo '" + todo + "' --mes 13='" + cierre + "' --configuracion LIBRO --continuar", 0,
         "finalizó con éxito"},
        // The same again: nothing to decide, so --cancelar never applies.
        {"--un-archivo '" + todo + "' --mes 13='" + cierre + "' --configuracion LIBRO --cancelar", 0,
         "finalizó con éxito"},
    };
    for (auto& c : casos) {
        auto r = cli("importar --enlace 102 --catalogo '" + cat + "' " + c.argumentos);
        EXPECT_EQ(r.estado, c.estado) << c.argumentos << "\n" << r.salida;
        EXPECT_NE(r.salida.find(c.texto), std::string::npos) << c.argumentos << "\n" << r.salida;
    }
    auto resumen = cli("resumen");
    EXPECT_NE(resumen.salida.find("Pólizas:   13"), std::string::npos) << resumen.salida;
    EXPECT_NE(resumen.salida.find("Partidas:  26"), std::string::npos) << resumen.salida;
    auto cuentas = cli("balanza --mes 13");
    EXPECT_EQ(cuentas.estado, 0) << cuentas.salida;

    // The prior-year balances: the second title row dropped, the account
    // that the company lacks reported and, on continuing, added.
    const std::string saa = e.libro("saa.xlsx", {{T("Cuenta"), T("Nombre"), V(), T("Saldo")},
                                                 {T("Cuenta"), T("Nombre"), V(), T("Saldo final")},
                                                 {N(1000101), T("Caja general"), V(), N(900)},
                                                 {T("500-01-01"), T("Nueva"), V(), N(-900)}});
    auto anterior = cli("saldos-anterior --enlace 102 --configuracion LIBRO --archivo '" + saa + "' --cancelar");
    EXPECT_EQ(anterior.estado, 1) << anterior.salida;
    anterior = cli("saldos-anterior --enlace 102 --configuracion LIBRO --archivo '" + saa + "' --continuar");
    EXPECT_EQ(anterior.estado, 0) << anterior.salida;
    e.inicia(ui);
    EXPECT_EQ(e.valor("SELECT Saldo_Anterior_Final FROM Cuentas WHERE Cuenta='1000101'"), "9000000");
    EXPECT_EQ(e.valor("SELECT Saldo_Anterior_Final FROM Cuentas WHERE Cuenta='5000101'"), "-9000000");
    e.s = Sesion();

    // Without titles the second title row of the chart is read as an
    // account, which the company never had: the run reports it.
    auto sinTitulos = cli("importar --enlace 102 --catalogo '" + cat + "' --un-archivo '" + todo +
                          "' --configuracion LIBRO --sin-titulos --cancelar");
    EXPECT_EQ(sinTitulos.estado, 1) << sinTitulos.salida;
}
