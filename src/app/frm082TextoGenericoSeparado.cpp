#include "app/frm082TextoGenericoSeparado.h"

#include "app/frm083ParametrosTextoGenerico.h"
#include "layouts/Configuraciones.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"

namespace velmorant::app {

DescripcionMarco DescripcionTextoGenerico() { return DescripcionDesde(DescriptorTextoDelimitado()); }

frm082TextoGenericoSeparado::frm082TextoGenericoSeparado(Sesion& sesion, QWidget* padre)
    : MarcoImportador(sesion, DescripcionTextoGenerico(), padre) {
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

    chkUnArchivo = new QCheckBox("Un solo archivo", this);
    chkUnArchivo->setObjectName("chkUnArchivo");
    cabeceraMeses()->addWidget(chkUnArchivo);
    cabeceraMeses()->addStretch();
    connect(chkUnArchivo, &QCheckBox::clicked, this,
            [this](bool marcado) { Protege([this, marcado] { chkUnArchivo_Click(marcado); }); });
}

std::string frm082TextoGenericoSeparado::Separador() const {
    if (optTabulacion->isChecked()) return "\t";
    if (optOtro->isChecked()) return cboSeparador->currentText().toStdString();
    return "";
}

bool frm082TextoGenericoSeparado::mesDisponible(int mes) const { return mes == 1 || !chkUnArchivo->isChecked(); }

void frm082TextoGenericoSeparado::chkUnArchivo_Click(bool marcado) {
    // With one file for the year only the first row stays; the others are
    // hidden and forget their files.
    for (int i = 1; i < 12; ++i) {
        if (marcado) {
            chkMes[i]->setChecked(false);
            MuestraRuta(eloPathMes[i], "");
        }
        chkMes[i]->setVisible(!marcado);
        eloPathMes[i]->setVisible(!marcado);
        cmdAbrirMes[i]->setVisible(!marcado);
    }
}

bool frm082TextoGenericoSeparado::ValidaPropios() {
    if (optTabulacion->isChecked() || optOtro->isChecked()) return true;
    MsgAviso(sesion_, "Especifique por favor el caracter separador");
    optOtro->setFocus();
    return false;
}

bool frm082TextoGenericoSeparado::ValidaPolizas() {
    if (!chkUnArchivo->isChecked()) return MarcoImportador::ValidaPolizas();
    if (!eloPathMes[0]->text().isEmpty()) return true;
    MsgAviso(sesion_, "Especifique por favor la ubicación del archivo que contiene las pólizas");
    cmdAbrirMes[0]->setFocus();
    return false;
}

void frm082TextoGenericoSeparado::Form_Load() {
    sesion_.IdSistemaElegido = kEnlaceTextoGenerico;
    Configuracion_ = IniciaConfiguraciones(sesion_).Configuracion;
}

bool frm082TextoGenericoSeparado::PreparaImportacion() {
    const ArchivosImportacion a = Archivos();
    EntradaParametros entrada;
    entrada.catalogo = a.catalogo;
    entrada.saldosIniciales = a.saldosIniciales;
    entrada.polizas = a.polizas;
    for (const auto& ruta : a.meses)
        if (entrada.polizas.empty()) entrada.polizas = ruta;
    entrada.saldosAnioAnterior = a.saldosAnioAnterior;
    entrada.anioAnterior = EnAnioAnterior();
    entrada.separador = Separador();
    entrada.configuracion = Configuracion_;
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

ArchivosImportacion frm082TextoGenericoSeparado::Archivos() const {
    ArchivosImportacion a = MarcoImportador::Archivos();
    if (chkUnArchivo->isChecked()) {
        // The one file of the year stands in January's row.
        a.polizas = eloPathMes[0]->text().toStdString();
        a.meses = {};
    }
    return a;
}

}  // namespace velmorant::app
