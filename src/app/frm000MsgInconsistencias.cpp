#include "app/frm000MsgInconsistencias.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QStyle>
#include <QVBoxLayout>

#include "pipeline/Reportes.h"
#include "pipeline/ReportesDecisiones.h"

namespace velmorant::app {

namespace {

QPushButton* Boton(QWidget* padre, const char* nombre, const char* texto) {
    auto* boton = new QPushButton(QString::fromUtf8(texto), padre);
    boton->setObjectName(nombre);
    return boton;
}

QLabel* Icono(QWidget* padre, QStyle::StandardPixmap cual) {
    auto* icono = new QLabel(padre);
    int lado = padre->style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    icono->setPixmap(padre->style()->standardIcon(cual).pixmap(lado, lado));
    icono->setAlignment(Qt::AlignTop);
    return icono;
}

}  // namespace

// ------------------------------------------------------- FormularioDecision

int FormularioDecision::Espera() {
    setWindowModality(Qt::ApplicationModal);
    if (!isVisible()) show();
    raise();
    activateWindow();
    QEventLoop espera;
    espera_ = &espera;
    espera.exec(QEventLoop::DialogExec);
    espera_ = nullptr;
    return respuesta_;
}

void FormularioDecision::Decide(int respuesta, bool sigueVisible) {
    respuesta_ = respuesta;
    if (!sigueVisible) hide();
    if (espera_) espera_->quit();
}

void FormularioDecision::closeEvent(QCloseEvent* evento) {
    evento->ignore();
    Decide(RespuestaAlCerrar(), false);
}

void FormularioDecision::reject() { Decide(RespuestaAlCerrar(), false); }

// ------------------------------------------------- frm000MsgInconsistencias

frm000MsgInconsistencias::frm000MsgInconsistencias(const QString& titulo, QWidget* padre)
    : FormularioDecision(padre) {
    setObjectName("frm000MsgInconsistencias");
    setWindowTitle(titulo);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    lblMensaje = new QLabel(QString::fromUtf8(kTextoMsgInconsistencias), this);
    lblMensaje->setObjectName("lblMensaje");
    lblMensaje->setWordWrap(true);
    lblConteo = new QLabel(this);
    lblConteo->setObjectName("lblConteo");
    lblConteo->setWordWrap(true);
    cmdMostrar = Boton(this, "cmdMostrar", kCaptionVerInconsistencias);
    cmdContinuar = Boton(this, "cmdContinuar", kCaptionContinuar);
    cmdCancelar = Boton(this, "cmdCancelar", kCaptionCancelar);
    cmdMostrar->setDefault(true);

    auto* mensaje = new QHBoxLayout;
    mensaje->addWidget(Icono(this, QStyle::SP_MessageBoxWarning));
    auto* textos = new QVBoxLayout;
    textos->addWidget(lblMensaje);
    textos->addWidget(lblConteo);
    textos->addStretch();
    mensaje->addLayout(textos, 1);
    auto* botones = new QHBoxLayout;
    botones->addWidget(cmdMostrar);
    botones->addStretch();
    botones->addWidget(cmdContinuar);
    botones->addWidget(cmdCancelar);
    auto* principal = new QVBoxLayout(this);
    principal->addLayout(mensaje);
    principal->addSpacing(12);
    principal->addLayout(botones);
    setMinimumWidth(560);

    connect(cmdMostrar, &QPushButton::clicked, this,
            [this] { Decide(static_cast<int>(DecisionInconsistencias::VerReporte), true); });
    connect(cmdContinuar, &QPushButton::clicked, this,
            [this] { Decide(static_cast<int>(DecisionInconsistencias::Continuar), false); });
    connect(cmdCancelar, &QPushButton::clicked, this,
            [this] { Decide(static_cast<int>(DecisionInconsistencias::Cancelar), false); });
}

void frm000MsgInconsistencias::MuestraConteo(const ConteoInconsistencias& conteo) {
    lblConteo->setText(QString::fromStdString(TextoConteoInconsistencias(conteo)));
}

DecisionInconsistencias frm000MsgInconsistencias::Pregunta() {
    return static_cast<DecisionInconsistencias>(Espera());
}

// ---------------------------------------------- frm000MsgInconsistenciasFin

frm000MsgInconsistenciasFin::frm000MsgInconsistenciasFin(const QString& titulo, QWidget* padre)
    : FormularioDecision(padre) {
    setObjectName("frm000MsgInconsistenciasFin");
    setWindowTitle(titulo);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    auto* grupo = new QGroupBox(QString::fromUtf8(kGrupoMsgInconsistenciasFin), this);
    grupo->setObjectName("fraDetalle");
    lblDetalle = new QLabel(QString::fromUtf8(kTextoMsgInconsistenciasFin), grupo);
    lblDetalle->setObjectName("lblDetalle");
    lblDetalle->setWordWrap(true);
    auto* zonaGrupo = new QHBoxLayout(grupo);
    zonaGrupo->addWidget(Icono(this, QStyle::SP_MessageBoxInformation));
    zonaGrupo->addWidget(lblDetalle, 1);

    cmdDetalle = Boton(this, "cmdDetalle", kCaptionVerDetalle);
    cmdAceptar = Boton(this, "cmdAceptar", kCaptionFinalizar);
    cmdAceptar->setDefault(true);
    auto* botones = new QHBoxLayout;
    botones->addWidget(cmdDetalle);
    botones->addStretch();
    botones->addWidget(cmdAceptar);
    auto* principal = new QVBoxLayout(this);
    principal->addWidget(grupo);
    principal->addLayout(botones);
    setMinimumWidth(520);

    connect(cmdDetalle, &QPushButton::clicked, this,
            [this] { Decide(static_cast<int>(DecisionFinal::VerDetalle), true); });
    connect(cmdAceptar, &QPushButton::clicked, this,
            [this] { Decide(static_cast<int>(DecisionFinal::Terminar), false); });
}

DecisionFinal frm000MsgInconsistenciasFin::Pregunta() { return static_cast<DecisionFinal>(Espera()); }

}  // namespace velmorant::app
