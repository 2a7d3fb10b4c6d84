#include "app/frm014ImportarCOI70.h"

#include <QEvent>

#include "platform/fuentes/BaseFirebird.h"
#include "session/Funciones.h"

namespace velmorant::app {

namespace {

const char* const kMotorListo = "Motor de Firebird: disponible (integrado, sin servidor)";
const char* const kAyudaMotor =
    "La base de datos de COI (*.FDB) se abre con el motor de Firebird 3 integrado en este programa: no hace falta un "
    "servidor en marcha ni contraseña para un archivo local. En Debian o Ubuntu el motor lo dan los paquetes "
    "libfbclient2 y firebird3.0-server-core.";

}  // namespace

frm014ImportarCOI70::frm014ImportarCOI70(Sesion& sesion, const DescriptorImportador& descriptor, QWidget* padre)
    : frm000ImportadorDescrito(sesion, descriptor, padre), diagnostico_(DiagnosticoMotorFirebird()) {
    lblControlador = new QLabel(this);
    lblControlador->setObjectName("lblControlador");
    lblControlador->setWordWrap(true);
    lblControlador->setText(QString::fromStdString(diagnostico_.empty() ? kMotorListo : diagnostico_));
    lblControlador->setToolTip(QString::fromStdString(kAyudaMotor));
    lblControlador->setCursor(Qt::PointingHandCursor);
    lblControlador->installEventFilter(this);
    zonaPropia()->addWidget(lblControlador);
}

void frm014ImportarCOI70::lblControlador_Click() {
    diagnostico_ = DiagnosticoMotorFirebird();
    lblControlador->setText(QString::fromStdString(diagnostico_.empty() ? kMotorListo : diagnostico_));
    if (diagnostico_.empty())
        MsgInformacion(sesion_, std::string(kMotorListo) + ".\n\n" + kAyudaMotor);
    else
        MsgAviso(sesion_, diagnostico_ + "\n\n" + kAyudaMotor);
}

bool frm014ImportarCOI70::eventFilter(QObject* objeto, QEvent* evento) {
    if (objeto == lblControlador && evento->type() == QEvent::MouseButtonRelease) {
        lblControlador_Click();
        return true;
    }
    return frm000ImportadorDescrito::eventFilter(objeto, evento);
}

}  // namespace velmorant::app
