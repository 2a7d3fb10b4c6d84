#include "app/frm099TextoExcelGenerico.h"

#include "app/frm099ParametrosExcelGenerico.h"
#include "importers/excel_columnas/ImportadorExcelColumnas.h"
#include "layouts/Configuraciones.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"

namespace velmorant::app {

DescripcionMarco DescripcionExcelGenerico() { return DescripcionDesde(DescriptorExcelColumnas()); }

frm099TextoExcelGenerico::frm099TextoExcelGenerico(Sesion& sesion, QWidget* padre)
    : MarcoUnArchivo(sesion, DescripcionExcelGenerico(), true, padre) {
    setObjectName("frm099TextoExcelGenerico");
}

void frm099TextoExcelGenerico::Form_Load() {
    sesion_.IdSistemaElegido = kEnlaceExcelGenerico;
    Configuracion_ = IniciaConfiguraciones(sesion_).Configuracion;
}

bool frm099TextoExcelGenerico::PreparaImportacion() {
    frm099ParametrosExcelGenerico parametros(sesion_, EntradaDeParametros(Configuracion_), this);
    if (parametros.exec() != QDialog::Accepted) throw ProgramaTerminado("Definir Parametros: cancelado");
    Configuracion_ = parametros.Configuracion();
    lectura_.Titulos = parametros.Titulos();
    CargaConfigEmpresa(sesion_, Configuracion_, lectura_.config);
    return true;
}

std::unique_ptr<Importador> frm099TextoExcelGenerico::CreaImportador() {
    return std::make_unique<ImportadorExcelColumnas>(lectura_, chkUnArchivo->isChecked());
}

}  // namespace velmorant::app
