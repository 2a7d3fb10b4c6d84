#include "app/InteraccionQt.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QMessageBox>
#include <QStringList>

namespace velmorant::app {

QWidget* InteraccionQt::ventana() const {
    if (QWidget* modal = QApplication::activeModalWidget()) return modal;
    if (QWidget* activa = QApplication::activeWindow()) return activa;
    return padre_;
}

QString TextoDeMensaje(const std::string& texto) {
    QString t = QString::fromStdString(texto);
    t.replace("\r\n", "\n");
    t.replace('\r', '\n');
    while (t.endsWith('\n')) t.chop(1);
    return t;
}

bool InteraccionQt::mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) {
    QString t = QString::fromStdString(titulo);
    QString x = TextoDeMensaje(texto);
    switch (tipo) {
        case TipoMensaje::Critico:
            QMessageBox::critical(ventana(), t, x);
            return false;
        case TipoMensaje::Aviso:
            QMessageBox::warning(ventana(), t, x);
            return false;
        case TipoMensaje::Informacion:
            QMessageBox::information(ventana(), t, x);
            return false;
        case TipoMensaje::Pregunta:
            return QMessageBox::question(ventana(), t, x, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
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
    return eligeArchivoEn(filtro, titulo, "");
}

std::string InteraccionQt::eligeArchivoEn(const std::string& filtro, const std::string& titulo,
                                          const std::string& carpeta) {
    QString ruta = QFileDialog::getOpenFileName(ventana(), QString::fromStdString(titulo),
                                                QString::fromStdString(carpeta), FiltroQt(filtro));
    return QDir::toNativeSeparators(ruta).toStdString();
}

}  // namespace velmorant::app
