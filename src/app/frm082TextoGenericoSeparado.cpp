#include "app/frm082TextoGenericoSeparado.h"

#include "app/frm083ParametrosTextoGenerico.h"
#include "layouts/Configuraciones.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"

namespace velmorant::app {

DescripcionMarco DescripcionTextoGenerico() { return DescripcionDesde(DescriptorTextoDelimitado()); }

frm082TextoGenericoSeparado::frm082TextoGenericoSeparado(Sesion& sesion, QWidget* padre)
    : MarcoUnArchivo(sesion, DescripcionTextoGenerico(), false, padre) {
    setObjectName("frm082TextoGenericoSeparado");

    fraSeparador = new QGroupBox("Separador de columnas", this);
    fraSeparador->setObjectName("fraSeparador");
    optTabulacion = new QRadioButton("Texto separado por Tabuladores", fraSeparador);
    optTabulacion->setObjectName("optTabulacion");
    optOtro = new QRadioButton("Texto separado por:", fraSeparador);
    optOtro->setObjectName("optOtro");
    cboSeparador = new QComboBox(fraSeparador);
    cboSeparador->setObjectName("cboSeparador");
    cboSeparador->setEditable(true);
    cboSeparador->addItems({"^", "|", "~"});
    cboSeparador->setCurrentIndex(0);
    cboSeparador->setMinimumContentsLength(4);
    auto* zonaSeparador = new QHBoxLayout(fraSeparador);
    zonaSeparador->addWidget(optTabulacion);
    zonaSeparador->addSpacing(24);
    zonaSeparador->addWidget(optOtro);
    zonaSeparador->addWidget(cboSeparador);
    zonaSeparador->addStretch();
    zonaPropia()->addWidget(fraSeparador);

}

std::string frm082TextoGenericoSeparado::Separador() const {
    if (optTabulacion->isChecked()) return "\t";
    if (optOtro->isChecked()) return cboSeparador->currentText().toStdString();
    return "";
}

bool frm082TextoGenericoSeparado::ValidaPropios() {
    if (optTabulacion->isChecked() || optOtro->isChecked()) return true;
    MsgAviso(sesion_, "Especifique por favor el caracter separador");
    optOtro->setFocus();
    return false;
}

void frm082TextoGenericoSeparado::Form_Load() {
    sesion_.IdSistemaElegido = kEnlaceTextoGenerico;
    Configuracion_ = IniciaConfiguraciones(sesion_).Configuracion;
}

bool frm082TextoGenericoSeparado::PreparaImportacion() {
    EntradaParametros entrada = EntradaDeParametros(Configuracion_);
    entrada.separador = Separador();
    frm083ParametrosTextoGenerico parametros(sesion_, entrada, this);
    if (parametros.exec() != QDialog::Accepted) throw ProgramaTerminado("Definir Parametros: cancelado");
    Configuracion_ = parametros.Configuracion();
    lectura_.separador = entrada.separador;
    lectura_.Titulos = parametros.Titulos();
    CargaConfigEmpresa(sesion_, Configuracion_, lectura_.config);
    // The delimiter no longer changes once the layout was read with it.
    fraSeparador->setEnabled(false);
    return true;
}

std::unique_ptr<Importador> frm082TextoGenericoSeparado::CreaImportador() {
    return std::make_unique<ImportadorTextoDelimitado>(lectura_, chkUnArchivo->isChecked());
}

}  // namespace velmorant::app
