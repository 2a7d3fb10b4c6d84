#include "app/ProgresoQt.h"

#include <QCoreApplication>

#include <algorithm>
#include <limits>

namespace velmorant::app {

namespace {

int Acotado(long n) {
    return static_cast<int>(std::clamp<long>(n, 0, std::numeric_limits<int>::max()));
}

}  // namespace

ProgresoQt::ProgresoQt(QLabel* etiqueta, QProgressBar* barra) : etiqueta_(etiqueta), barra_(barra) {}

void ProgresoQt::etiqueta(const std::string& texto) {
    etiqueta_->setText(QString::fromStdString(texto));
    etiqueta_->repaint();
}

void ProgresoQt::maximo(long n) {
    barra_->setMaximum(std::max(1, Acotado(n)));
    barra_->setValue(0);
}

void ProgresoQt::valor(long n) { barra_->setValue(std::min(Acotado(n), barra_->maximum())); }

void ProgresoQt::visible(bool si) {
    etiqueta_->setVisible(si);
    barra_->setVisible(si);
    if (!si) {
        etiqueta_->clear();
        barra_->reset();
    }
}

void ProgresoQt::cede() {
    if (ultimaCesion_.isValid() && ultimaCesion_.elapsed() < 30) return;
    QCoreApplication::processEvents();
    ultimaCesion_.restart();
}

}  // namespace velmorant::app
