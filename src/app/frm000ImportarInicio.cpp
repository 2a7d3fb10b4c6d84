#include "app/frm000ImportarInicio.h"

#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QScreen>
#include <QVBoxLayout>

namespace velmorant::app {

namespace {
QLineEdit* CajaDeSoloLectura(QWidget* padre, const char* nombre) {
    auto* caja = new QLineEdit(padre);
    caja->setObjectName(nombre);
    caja->setReadOnly(true);
    caja->setFocusPolicy(Qt::NoFocus);
    return caja;
}
}  // namespace

frm000ImportarInicio::frm000ImportarInicio(Sesion& sesion, QWidget* padre) : QDialog(padre), sesion_(sesion) {
    setObjectName("frm000ImportarInicio");
    eloEmpresa = CajaDeSoloLectura(this, "eloEmpresa");
    eloEjercicio = CajaDeSoloLectura(this, "eloEjercicio");
    eloEstrucCta = CajaDeSoloLectura(this, "eloEstrucCta");

    auto* datos = new QFormLayout;
    datos->addRow("Empresa:", eloEmpresa);
    datos->addRow("Ejercicio:", eloEjercicio);
    datos->addRow("Estructura de cuenta:", eloEstrucCta);

    cmdContinuar = new QPushButton("&Continuar", this);
    cmdContinuar->setObjectName("cmdContinuar");
    cmdSalir = new QPushButton("&Salir", this);
    cmdSalir->setObjectName("cmdSalir");
    connect(cmdSalir, &QPushButton::clicked, this, &QDialog::reject);

    auto* botones = new QHBoxLayout;
    botones->addStretch();
    botones->addWidget(cmdContinuar);
    botones->addWidget(cmdSalir);

    auto* principal = new QVBoxLayout(this);
    principal->addLayout(datos);
    principal->addStretch();
    principal->addLayout(botones);
    resize(560, 420);
}

void frm000ImportarInicio::muestraSesion() {
    setWindowTitle(QString::fromStdString(sesion_.TituloInicio));
    if (sesion_.IdEmpresaActual != 0) {
        eloEmpresa->setText(QString::fromStdString(sesion_.NombreEmpresa));
        eloEjercicio->setText(QString::number(sesion_.EjercicioActual));
        eloEstrucCta->setText(QString::fromStdString(sesion_.FormatoCtaEmpresa));
    }
    centra();
}

void frm000ImportarInicio::centra() {
    QScreen* pantalla = screen() ? screen() : QGuiApplication::primaryScreen();
    if (!pantalla) return;
    QRect area = pantalla->availableGeometry();
    move(area.x() + (area.width() - width()) / 2, area.y() + (area.height() - height()) / 2);
}

}  // namespace velmorant::app
