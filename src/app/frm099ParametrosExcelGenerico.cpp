#include "app/frm099ParametrosExcelGenerico.h"

#include "importers/excel_columnas/LectorExcelColumnas.h"
#include "platform/ErrorLectura.h"
#include "session/Funciones.h"

namespace velmorant::app {

namespace {

// A workbook that cannot be read has an empty grid; its reader says the rest
// when the run reaches it.
VistaPrevia VistaDeLibro(Sesion& s, const std::string& ruta) {
    try {
        return VistaPreviaExcel(ruta);
    } catch (const ErrorLectura& e) {
        MsgAviso(s, e.what());
        return {};
    }
}

}  // namespace

frm099ParametrosExcelGenerico::frm099ParametrosExcelGenerico(Sesion& sesion, const EntradaParametros& entrada,
                                                             QWidget* padre)
    : frm083ParametrosTextoGenerico(sesion, entrada, FormularioParametros::ExcelGenerico, VistaDeLibro, false, padre) {
    setObjectName("frm099ParametrosExcelGenerico");
    // The first row of a sheet always names its columns; the flag drops
    // one more row of the chart and balance sheets.
    const QString titulos = "La primera fila de datos del catálogo y de los saldos contiene títulos";
    chkTitulosCtas->setText(titulos);
    if (chkTitulosSaldos) chkTitulosSaldos->setText(titulos);
}

}  // namespace velmorant::app
