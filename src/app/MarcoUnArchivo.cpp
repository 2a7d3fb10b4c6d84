#include "app/MarcoUnArchivo.h"

#include "session/Funciones.h"

namespace velmorant::app {

MarcoUnArchivo::MarcoUnArchivo(Sesion& sesion, DescripcionMarco descripcion, bool conservaCierre, QWidget* padre)
    : MarcoImportador(sesion, std::move(descripcion), padre), conservaCierre_(conservaCierre) {
    chkUnArchivo = new QCheckBox("Un solo archivo", this);
    chkUnArchivo->setObjectName("chkUnArchivo");
    cabeceraMeses()->addWidget(chkUnArchivo);
    cabeceraMeses()->addStretch();
    connect(chkUnArchivo, &QCheckBox::clicked, this,
            [this](bool marcado) { Protege([this, marcado] { chkUnArchivo_Click(marcado); }); });
}

bool MarcoUnArchivo::mesDisponible(int mes) const {
    return mes == 1 || (conservaCierre_ && mes == 13) || !chkUnArchivo->isChecked();
}

void MarcoUnArchivo::chkUnArchivo_Click(bool marcado) {
    // With one file for the year only January's row (and the closing
    // month's, where it is kept) stays; the others are hidden and forget
    // their files.
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

bool MarcoUnArchivo::ValidaPolizas() {
    if (!chkUnArchivo->isChecked()) return MarcoImportador::ValidaPolizas();
    if (!eloPathMes[0]->text().isEmpty()) return true;
    MsgAviso(sesion_, "Especifique por favor la ubicación del archivo que contiene las pólizas");
    cmdAbrirMes[0]->setFocus();
    return false;
}

ArchivosImportacion MarcoUnArchivo::Archivos() const {
    ArchivosImportacion a = MarcoImportador::Archivos();
    if (chkUnArchivo->isChecked()) {
        // The one file of the year stands in January's row.
        a.polizas = eloPathMes[0]->text().toStdString();
        const std::string cierre = a.meses[12];
        a.meses = {};
        if (conservaCierre_) a.meses[12] = cierre;
    }
    return a;
}

EntradaParametros MarcoUnArchivo::EntradaDeParametros(const std::string& configuracion) const {
    const ArchivosImportacion a = Archivos();
    EntradaParametros entrada;
    entrada.catalogo = a.catalogo;
    entrada.saldosIniciales = a.saldosIniciales;
    entrada.polizas = a.polizas;
    for (const auto& ruta : a.meses)
        if (entrada.polizas.empty()) entrada.polizas = ruta;
    entrada.saldosAnioAnterior = a.saldosAnioAnterior;
    entrada.anioAnterior = EnAnioAnterior();
    entrada.configuracion = configuracion;
    return entrada;
}

}  // namespace velmorant::app
