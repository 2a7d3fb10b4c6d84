#include "app/frm000ImportadorReporte.h"

#include "app/frm000PruebaReporte.h"
#include "importers/reportes/ImportadorReporte.h"

namespace velmorant::app {

frm000ImportadorReporte::frm000ImportadorReporte(Sesion& sesion, const DescriptorImportador& descriptor,
                                                 QWidget* padre)
    : frm000ImportadorDescrito(sesion, descriptor, padre) {
    cmdVistaPrevia = new QPushButton("&Vista previa del reporte...", this);
    cmdVistaPrevia->setObjectName("cmdVistaPrevia");
    zonaPropia()->addWidget(cmdVistaPrevia);
    connect(cmdVistaPrevia, &QPushButton::clicked, this, &frm000ImportadorReporte::cmdVistaPrevia_Click);
}

void frm000ImportadorReporte::cmdVistaPrevia_Click() {
    const auto& cargadas = Descripciones();
    auto it = cargadas.porEnlace.find(descriptor().IdSistema);
    QString descripcion = it == cargadas.porEnlace.end() ? QString() : QString::fromStdString(it->second.ruta);
    QString muestra;
    for (const auto& ruta : Archivos().meses)
        if (!ruta.empty()) {
            muestra = QString::fromStdString(ruta);
            break;
        }
    frm000PruebaReporte vista(sesion_, descripcion, muestra, this);
    if (!descripcion.isEmpty() && !muestra.isEmpty()) vista.Prueba();
    vista.exec();
}

}  // namespace velmorant::app
