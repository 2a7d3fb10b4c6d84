#pragma once
// The preview of a printed report: a description tried on a sample report
// with the company's account format, line by line, with the vouchers it
// yields; nothing is imported. The same dry run as `velmorant-cli reporte
// probar`, for a user who adjusts a layout.

#include <QDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

#include "session/Sesion.h"

namespace velmorant::app {

class frm000PruebaReporte : public QDialog {
    Q_OBJECT
public:
    frm000PruebaReporte(Sesion& sesion, const QString& descripcion, const QString& muestra, QWidget* padre = nullptr);

    QLineEdit* txtDescripcion;
    QLineEdit* txtMuestra;
    QPushButton* cmdDescripcion;
    QPushButton* cmdMuestra;
    QPushButton* cmdProbar;
    QPushButton* cmdCerrar;
    QPlainTextEdit* txtResultado;

    /// Reads the description and the sample and shows the dry run, or why
    /// it could not be made (a description's fault names its file and line).
    void Prueba();

private:
    Sesion& sesion_;
};

}  // namespace velmorant::app
