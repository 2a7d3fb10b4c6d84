#include "app/InteraccionQt.h"

#include <QFileDialog>
#include <QMessageBox>
#include <QStringList>

namespace velmorant::app {

bool InteraccionQt::mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) {
    QString t = QString::fromStdString(titulo);
    QString x = QString::fromStdString(texto);
    switch (tipo) {
        case TipoMensaje::Critico:
            QMessageBox::critical(padre_, t, x);
            return false;
        case TipoMensaje::Aviso:
            QMessageBox::warning(padre_, t, x);
            return false;
        case TipoMensaje::Informacion:
            QMessageBox::information(padre_, t, x);
            return false;
        case TipoMensaje::Pregunta:
            return QMessageBox::question(padre_, t, x, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
    }
    return false;
}

QString FiltroQt(const std::string& filtro) {
    QStringList partes = QString::fromStdString(filtro).split('|');
    QStringList filtros;
    for (int i = 0; i + 1 < partes.size(); i += 2) {
        QString patrones = partes[i + 1];
        patrones.replace(';', ' ');
        filtros << partes[i] + " (" + patrones + ")";
    }
    return filtros.join(";;");
}

std::string InteraccionQt::eligeArchivo(const std::string& filtro, const std::string& titulo) {
    return QFileDialog::getOpenFileName(padre_, QString::fromStdString(titulo), QString(), FiltroQt(filtro))
        .toStdString();
}

}  // namespace velmorant::app
