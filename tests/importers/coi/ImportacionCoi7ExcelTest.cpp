// A whole run over COI 7's workbook exports written here by libxlsxwriter:
// codes with COI's ".", rows below a run of more than five empty rows left
// unread, voucher types stored as their codes and the review work of an
// earlier run brought to them.

#include <gtest/gtest.h>
#include <xlsxwriter.h>

#include <fstream>
#include <functional>

#include "importers/coi/ImportadorCoi7Excel.h"
#include "pipeline/Importacion.h"
#include "session/Inicio.h"
#include "store/AltaBase.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;

namespace {

std::string EscribeXlsx(const CarpetaTemporal& c, const std::string& nombre,
                        const std::function<void(lxw_worksheet*)>& llena) {
    std::string ruta = c.texto() + nombre;
    lxw_workbook* libro = workbook_new(ruta.c_str());
    lxw_worksheet* hoja = workbook_add_worksheet(libro, "Hoja1");
    llena(hoja);
    EXPECT_EQ(workbook_close(libro), LXW_NO_ERROR);
    return ruta;
}

// Row `fila` (from 1) of texts and numbers; an empty text leaves the cell blank.
void Fila(lxw_worksheet* h, int fila, const std::vector<std::string>& celdas) {
    for (size_t i = 0; i < celdas.size(); ++i) {
        const std::string& v = celdas[i];
        if (v.empty()) continue;
        const auto r = static_cast<lxw_row_t>(fila - 1);
        const auto c = static_cast<lxw_col_t>(i);
        if (v[0] == '#')
            worksheet_write_number(h, r, c, std::stod(v.substr(1)), nullptr);
        else
            worksheet_write_string(h, r, c, v.c_str(), nullptr);
    }
}

class ImportacionCoi7Excel : public EntornoImportacion {
protected:
    void SetUp() override {
        std::string base = CreaBase(dir.texto() + "base");
        DatosEmpresaNueva d = EmpresaAcme();
        d.ejercicio = 2024;
        d.rellenaCeros = true;
        d.mesFinal = 12;
        CreaEmpresa(base, d);
        s.interaccion = &ui;
        IniciaSesion(s, {dir.texto() + "base", "ACME", "2024"});

        archivos.catalogo = EscribeXlsx(dir, "catalogo.xlsx", [](lxw_worksheet* h) {
            Fila(h, 1, {"Cuenta", "Nombre", "Nivel", "Naturaleza"});
            Fila(h, 2, {"100", "Activo", "#1", "Deudora"});
            Fila(h, 3, {"100.01", "Bancos", "#2", "Deudora"});
            Fila(h, 4, {"100.01.01", "Banco uno", "#3", "Deudora"});
            Fila(h, 5, {"400", "Ingresos", "#1", "Acreedora"});
            Fila(h, 6, {"400.01", "Ventas", "#2", "Acreedora"});
            Fila(h, 7, {"400.01.01", "Mostrador", "#3", "Acreedora"});
            // Five empty rows do not end the sheet...
            Fila(h, 13, {"100.01.02", "Banco dos", "#3", "Deudora"});
            // ...six do.
            Fila(h, 20, {"100.01.03", "Tras el hueco", "#3", "Deudora"});
        });
        archivos.saldosIniciales = EscribeXlsx(dir, "saldos.xlsx", [](lxw_worksheet* h) {
            Fila(h, 1, {"Cuenta", "Nombre", "Saldo inicial"});
            Fila(h, 2, {"100.01.01", "Banco uno", "#1500.25"});
            Fila(h, 3, {"400.01.01", "Mostrador", "-1500.25"});
        });
        archivos.fija("polizas", EscribeXlsx(dir, "polizas.xlsx", [](lxw_worksheet* h) {
            Fila(h, 1, {"Tipo", "Número", "Fecha", "Concepto", "Cuenta", "Referencia", "Debe", "Haber"});
            Fila(h, 2, {"Dr", "1", "15/01/2024", "Venta", "100.01.01", "F-1", "#300.1", ""});
            Fila(h, 3, {"Dr", "1", "15/01/2024", "Venta", "400.01.01", "F-1", "", "#300.1"});
            Fila(h, 4, {"Ingresos", "2", "03/02/2024", "Cobro", "100.01.02", "", "#0", "#20"});
            Fila(h, 5, {"Ingresos", "2", "03/02/2024", "Cobro", "100.01.01", "", "#20", ""});
        }));
    }

    std::string filas(const std::string& sql) {
        return s.DbEmpresa->escalar("SELECT group_concat(f, ' | ') FROM (" + sql + ")").texto();
    }
};

TEST(TiposContaFiscal, NombresYDescripcionesDanSuCodigo) {
    EXPECT_EQ(CodigoTipoContaFiscal("Dr"), "003");
    EXPECT_EQ(CodigoTipoContaFiscal(" INGRESOS "), "002");
    EXPECT_EQ(CodigoTipoContaFiscal("eg"), "001");
    EXPECT_EQ(CodigoTipoContaFiscal("Ch"), "Ch");
}

TEST_F(ImportacionCoi7Excel, LeeLasHojasHastaElHuecoYTraduceLosTipos) {
    // Review work of an earlier run, with the names.
    s.DbEmpresa->ejecuta("INSERT INTO CedAnalitica (IdCriterio, Tipo) VALUES (1, 'Dr')");
    s.DbEmpresa->ejecuta("INSERT INTO CedNoDeducibles (IdCedAnalitica, Tipo) VALUES (1, 'Egresos')");
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ImportadorCoi7Excel imp(100);
    ASSERT_EQ(EjecutaImportacion(s, imp, archivos), ResultadoImportacion::Terminada)
        << (ui.mensajes.empty() ? "" : ui.mensajes.back().texto);

    EXPECT_EQ(filas("SELECT Cuenta || ':' || Naturaleza AS f FROM Cuentas WHERE Nivel = 3 ORDER BY Cuenta"),
              "1000101:D | 1000102:D | 4000101:A");
    EXPECT_EQ(filas("SELECT Cuenta || '=' || SaldoInicial AS f FROM Balanzas WHERE Cuenta LIKE '_000101' "
                    "ORDER BY Cuenta"),
              "1000101=15002500 | 4000101=-15002500");
    EXPECT_EQ(filas("SELECT Poliza || ':' || Tipo || ':' || Fecha || ':' || Concepto AS f FROM Polizas ORDER BY Poliza"),
              "1:003:2024-01-15:Venta | 2:002:2024-02-03:Cobro");
    // A zero debit is no debit. Amounts in ten-thousandths.
    EXPECT_EQ(filas("SELECT p.Poliza || ':' || d.Partida || d.TipoMov || ':' || d.Cuenta || ':' || d.Importe AS f "
                    "FROM Polizas_Detalle d JOIN Polizas p ON p.IdPoliza = d.IdPoliza ORDER BY p.Poliza, d.Partida"),
              "1:1D:1000101:3001000 | 1:2H:4000101:3001000 | 2:1H:1000102:200000 | 2:2D:1000101:200000");
    EXPECT_EQ(filas("SELECT Tipo AS f FROM CedAnalitica UNION ALL SELECT Tipo FROM CedNoDeducibles"), "003 | 001");
    EXPECT_EQ(filas("SELECT Tipo || '=' || Descripcion AS f FROM CatTipoPoliza ORDER BY Tipo"),
              "002=Ingresos | 003=Diario");
}

TEST_F(ImportacionCoi7Excel, UnaFechaIlegibleDiceArchivoYFila) {
    archivos.otros.erase("polizas");
    archivos.fija("polizas", EscribeXlsx(dir, "malas.xlsx", [](lxw_worksheet* h) {
        Fila(h, 1, {"Tipo", "Número", "Fecha"});
        Fila(h, 2, {"Dr", "1", "15/01/2024", "Venta", "100.01.01", "", "#1", ""});
        Fila(h, 3, {"Dr", "1", "pendiente", "Venta", "400.01.01", "", "", "#1"});
    }));
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ImportadorCoi7Excel imp(100);
    EXPECT_ANY_THROW(EjecutaImportacion(s, imp, archivos));
    std::string todo;
    for (auto& m : ui.mensajes) todo += m.texto + "\n";
    EXPECT_NE(todo.find("la fecha pendiente de la póliza 1 no es válida"), std::string::npos) << todo;
    EXPECT_NE(todo.find("Error al leer la fila: 3"), std::string::npos) << todo;
    EXPECT_EQ(s.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas").entero(), 0);
}

TEST_F(ImportacionCoi7Excel, LasPolizasEnTextoLeenLasMismasColumnas) {
    const std::string ruta = dir.texto() + "polizas.csv";
    std::ofstream(ruta) << "Tipo,Numero,Fecha,Concepto,Cuenta,Referencia,Debe,Haber\n"
                           "Diario,1,15/01/2024,\"Venta\",100.01.01,F-1,300.10,\n"
                           "Diario,1,15/01/2024,Venta,400.01.01,F-1,,300.10\n";
    archivos.otros.erase("polizas");
    archivos.fija("polizas", ruta);
    ui.decisiones = {DecisionInconsistencias::Continuar};
    ImportadorCoi7Excel imp(100, true);
    ASSERT_EQ(EjecutaImportacion(s, imp, archivos), ResultadoImportacion::Terminada)
        << (ui.mensajes.empty() ? "" : ui.mensajes.back().texto);
    EXPECT_EQ(filas("SELECT p.Poliza || p.Tipo || ':' || d.TipoMov || ':' || d.Cuenta || ':' || d.Importe AS f "
                    "FROM Polizas_Detalle d JOIN Polizas p ON p.IdPoliza = d.IdPoliza ORDER BY d.Partida"),
              "1003:D:1000101:3001000 | 1003:H:4000101:3001000");

    std::ofstream(ruta) << "Tipo,Numero,Fecha\nDiario,1,15/01/2024,Venta,100.01.01,F-1,tres,\n";
    ImportadorCoi7Excel otra(100, true);
    EXPECT_ANY_THROW(EjecutaImportacion(s, otra, archivos));
    std::string todo;
    for (auto& m : ui.mensajes) todo += m.texto + "\n";
    EXPECT_NE(todo.find("Error al leer la línea: "), std::string::npos) << todo;
}

}  // namespace
