#include "app/frm000PruebaReporte.h"

#include <QFileDialog>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "importers/reportes/PruebaReporte.h"
#include "platform/ErrorLectura.h"

namespace velmorant::app {

frm000PruebaReporte::frm000PruebaReporte(Sesion& sesion, const QString& descripcion, const QString& muestra,
                                         QWidget* padre)
    : QDialog(padre), sesion_(sesion) {
    setObjectName("frm000PruebaReporte");
    setWindowTitle("Vista previa del reporte");
    auto* rejilla = new QGridLayout;
    txtDescripcion = new QLineEdit(descripcion, this);
    txtDescripcion->setObjectName("txtDescripcion");
    cmdDescripcion = new QPushButton("...", this);
    cmdDescripcion->setObjectName("cmdDescripcion");
    txtMuestra = new QLineEdit(muestra, this);
    txtMuestra->setObjectName("txtMuestra");
    cmdMuestra = new QPushButton("...", this);
    cmdMuestra->setObjectName("cmdMuestra");
    rejilla->addWidget(new QLabel("Descripción del reporte:", this), 0, 0);
    rejilla->addWidget(txtDescripcion, 0, 1);
    rejilla->addWidget(cmdDescripcion, 0, 2);
    rejilla->addWidget(new QLabel("Reporte de muestra:", this), 1, 0);
    rejilla->addWidget(txtMuestra, 1, 1);
    rejilla->addWidget(cmdMuestra, 1, 2);

    txtResultado = new QPlainTextEdit(this);
    txtResultado->setObjectName("txtResultado");
    txtResultado->setReadOnly(true);
    txtResultado->setLineWrapMode(QPlainTextEdit::NoWrap);
    txtResultado->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));

    cmdProbar = new QPushButton("&Probar", this);
    cmdProbar->setObjectName("cmdProbar");
    cmdCerrar = new QPushButton("&Cerrar", this);
    cmdCerrar->setObjectName("cmdCerrar");
    auto* botones = new QHBoxLayout;
    botones->addStretch();
    botones->addWidget(cmdProbar);
    botones->addWidget(cmdCerrar);

    auto* todo = new QVBoxLayout(this);
    todo->addLayout(rejilla);
    todo->addWidget(txtResultado, 1);
    todo->addLayout(botones);
    resize(900, 560);

    connect(cmdProbar, &QPushButton::clicked, this, &frm000PruebaReporte::Prueba);
    connect(cmdCerrar, &QPushButton::clicked, this, &QDialog::accept);
    connect(cmdDescripcion, &QPushButton::clicked, this, [this] {
        QString r = QFileDialog::getOpenFileName(this, "Descripción del reporte", txtDescripcion->text(),
                                                 "Descripciones (*.toml)");
        if (!r.isEmpty()) txtDescripcion->setText(r);
    });
    connect(cmdMuestra, &QPushButton::clicked, this, [this] {
        QString r = QFileDialog::getOpenFileName(this, "Reporte de muestra", txtMuestra->text(),
                                                 "Reportes (*.txt *.prn *.pol);;Todos (*)");
        if (!r.isEmpty()) txtMuestra->setText(r);
    });
}

void frm000PruebaReporte::Prueba() {
    std::string texto;
    try {
        DescripcionReporte d = CargaDescripcion(txtDescripcion->text().toStdString());
        texto = TextoPrueba(PruebaDescripcion(sesion_, d, txtMuestra->text().toStdString()));
    } catch (const ErrorDescripcion& e) {
        texto = e.what();
    } catch (const ErrorLectura& e) {
        texto = e.what();
    }
    txtResultado->setPlainText(QString::fromStdString(texto));
}

}  // namespace velmorant::app
