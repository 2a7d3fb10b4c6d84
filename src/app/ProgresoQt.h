#pragma once
// Progress of a long step on a form: its caption label and its bar. The
// yield point pumps the events so that both repaint while the form is
// disabled.

#include <QElapsedTimer>
#include <QLabel>
#include <QProgressBar>

#include "session/Interaccion.h"

namespace velmorant::app {

class ProgresoQt : public Progreso {
public:
    ProgresoQt(QLabel* etiqueta, QProgressBar* barra);

    void etiqueta(const std::string& texto) override;
    void maximo(long n) override;
    void valor(long n) override;
    void visible(bool si) override;
    /// Pumps the events, at most every few hundredths of a second: a
    /// reader calls it for each row.
    void cede() override;

private:
    QLabel* etiqueta_;
    QProgressBar* barra_;
    QElapsedTimer ultimaCesion_;
};

}  // namespace velmorant::app
