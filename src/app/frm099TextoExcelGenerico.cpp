#include "app/frm099TextoExcelGenerico.h"

#include "app/frm099ParametrosExcelGenerico.h"
#include "importers/excel_columnas/ImportadorExcelColumnas.h"
#include "layouts/Configuraciones.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"

namespace velmorant::app {

DescripcionMarco DescripcionExcelGenerico() { return DescripcionDesde(DescriptorExcelColumnas()); }

frm099TextoExcelGenerico::frm099TextoExcelGenerico(Sesion& sesion, QWidget* padre)
    : MarcoImportador(sesion, DescripcionExcelGenerico(), padre) {
    setObjectName("frm099TextoExcelGenerico");
    chkUnArchivo = new QCheckBox("Un solo archivo", this);
    chkUnArchivo->setObjectName("chkUnArchivo");
    cabeceraMeses()->addWidget(chkUnArchivo);
    cabeceraMeses()->addStretch();
    connect(chkUnArchivo, &QCheckBox::clicked, this,
            [this](bool marcado) { Protege([this, marcado] { chkUnArchivo_Click(marcado); }); });
}

bool frm099TextoExcelGenerico::mesDisponible(int mes) const {
    return mes == 1 || mes == 13 || !chkUnArchivo->isChecked();
}

void frm099TextoExcelGenerico::chkUnArchivo_Click(bool marcado) {
    // With one file for the year only January's row and the closing month's
    // stay; the others are hidden and forget their files.
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

bool frm099TextoExcelGenerico::ValidaPolizas() {
    if (!chkUnArchivo->isChecked()) return MarcoImportador::ValidaPolizas();
    if (!eloPathMes[0]->text().isEmpty()) return true;
    MsgAviso(sesion_, "Especifique por favor la ubicación del archivo que contiene las pólizas");
    cmdAbrirMes[0]->setFocus();
    return false;
}

void frm099TextoExcelGenerico::Form_Load() {
    sesion_.IdSistemaElegido = kEnlaceExcelGenerico;
    Configuracion_ = IniciaConfiguraciones(sesion_).Configuracion;
}

bool frm099TextoExcelGenerico::PreparaImportacion() {
    const ArchivosImportacion a = Archivos();
    EntradaParametros entrada;
    entrada.catalogo = a.catalogo;
    entrada.saldosIniciales = a.saldosIniciales;
    entrada.polizas = a.polizas;
    for (const auto& ruta : a.meses)
        if (entrada.polizas.empty()) entrada.polizas = ruta;
    entrada.saldosAnioAnterior = a.saldosAnioAnterior;
    entrada.anioAnterior = EnAnioAnterior();
    entrada.configuracion = Configuracion_;
    frm099ParametrosExcelGenerico parametros(sesion_, entrada, this);
    if (parametros.exec() != QDialog::Accepted) throw ProgramaTerminado("Definir Parametros: cancelado");
    Configuracion_ = parametros.Configuracion();
    lectura_.Titulos = parametros.Titulos();
    CargaConfigEmpresa(sesion_, Configuracion_, lectura_.config);
    return true;
}

std::unique_ptr<Importador> frm099TextoExcelGenerico::CreaImportador() {
    return std::make_unique<ImportadorExcelColumnas>(lectura_, chkUnArchivo->isChecked());
}

ArchivosImportacion frm099TextoExcelGenerico::Archivos() const {
    ArchivosImportacion a = MarcoImportador::Archivos();
    if (chkUnArchivo->isChecked()) {
        // The one file of the year stands in January's row.
        a.polizas = eloPathMes[0]->text().toStdString();
        const std::string cierre = a.meses[12];
        a.meses = {};
        a.meses[12] = cierre;
    }
    return a;
}

}  // namespace velmorant::app
