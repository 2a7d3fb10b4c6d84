#pragma once
// The start form: the company in hand (read-only) and, in time, the list of
// links to choose an importer from.

#include <QDialog>
#include <QLineEdit>
#include <QPushButton>

#include "session/Sesion.h"

namespace velmorant::app {

class frm000ImportarInicio : public QDialog {
    Q_OBJECT
public:
    explicit frm000ImportarInicio(Sesion& sesion, QWidget* padre = nullptr);

    /// Shows the session's company, year and account structure and the
    /// title that start-up set, then centres the form on the screen.
    void muestraSesion();

    QLineEdit* eloEmpresa;
    QLineEdit* eloEjercicio;
    QLineEdit* eloEstrucCta;
    QPushButton* cmdContinuar;
    QPushButton* cmdSalir;

private:
    Sesion& sesion_;
    void centra();
};

}  // namespace velmorant::app
