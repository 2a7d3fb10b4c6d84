#pragma once
// The two modal forms around the inconsistency logs: the decision after a
// run's checks (`frm000MsgInconsistencias`) and the notice of lost
// schedule rows at its end (`frm000MsgInconsistenciasFin`). Each stays on
// screen while the report it offers is shown, as often as wanted.

#include <QDialog>
#include <QEventLoop>
#include <QLabel>
#include <QPushButton>

#include "session/Interaccion.h"

namespace velmorant::app {

/// A modal form that answers with the button pressed. A button that shows
/// a report answers without hiding the form, so the report opens on top of
/// it and the form is there again when the report closes.
class FormularioDecision : public QDialog {
    Q_OBJECT
public:
    using QDialog::QDialog;

protected:
    /// Shows the form (application-modal) if hidden and waits for `Decide`.
    int Espera();
    /// Ends the wait with `respuesta`; hides the form unless `sigueVisible`.
    void Decide(int respuesta, bool sigueVisible);
    /// What the window's frame and the Escape key answer.
    virtual int RespuestaAlCerrar() const = 0;
    void closeEvent(QCloseEvent* evento) override;
    void reject() override;

private:
    QEventLoop* espera_ = nullptr;
    int respuesta_ = 0;
};

class frm000MsgInconsistencias : public FormularioDecision {
    Q_OBJECT
public:
    explicit frm000MsgInconsistencias(const QString& titulo, QWidget* padre = nullptr);

    /// "Ver" answers `VerReporte` and the form stays; "Continuar" and
    /// "Cancelar" answer and hide it; the window's frame answers `Cerrar`.
    DecisionInconsistencias Pregunta();
    /// The count of the log's rows by class, under the question.
    void MuestraConteo(const ConteoInconsistencias& conteo);

    QLabel* lblMensaje;
    QLabel* lblConteo;
    QPushButton* cmdMostrar;
    QPushButton* cmdContinuar;
    QPushButton* cmdCancelar;

protected:
    int RespuestaAlCerrar() const override { return static_cast<int>(DecisionInconsistencias::Cerrar); }
};

class frm000MsgInconsistenciasFin : public FormularioDecision {
    Q_OBJECT
public:
    explicit frm000MsgInconsistenciasFin(const QString& titulo, QWidget* padre = nullptr);

    /// "Ver Detalle" answers `VerDetalle` and the form stays; "Finalizar"
    /// (and the window's frame) answers `Terminar` and hides it.
    DecisionFinal Pregunta();

    QLabel* lblDetalle;
    QPushButton* cmdDetalle;
    QPushButton* cmdAceptar;

protected:
    int RespuestaAlCerrar() const override { return static_cast<int>(DecisionFinal::Terminar); }
};

}  // namespace velmorant::app
