#include "app/InteraccionQt.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QStringList>

#include "app/frm000MsgInconsistencias.h"
#include "app/frm000VisorReporte.h"
#include "session/Inicio.h"

namespace velmorant::app {

InteraccionQt::InteraccionQt(QWidget* padre) : padre_(padre) {}

InteraccionQt::~InteraccionQt() = default;

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
    QMessageBox caja(ventana());
    caja.setWindowTitle(QString::fromStdString(titulo));
    caja.setText(TextoDeMensaje(texto));
    caja.setTextFormat(Qt::PlainText);
    if (tipo == TipoMensaje::Pregunta) {
        caja.setIcon(QMessageBox::Question);
        QPushButton* si = caja.addButton("&Sí", QMessageBox::YesRole);
        caja.addButton("&No", QMessageBox::NoRole);
        caja.setDefaultButton(si);
        caja.exec();
        return caja.clickedButton() == si;
    }
    caja.setIcon(tipo == TipoMensaje::Critico ? QMessageBox::Critical
                 : tipo == TipoMensaje::Aviso ? QMessageBox::Warning
                                              : QMessageBox::Information);
    caja.setEscapeButton(caja.addButton("Aceptar", QMessageBox::AcceptRole));
    caja.exec();
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

DecisionInconsistencias InteraccionQt::decideInconsistencias(const std::string& titulo,
                                                             const ConteoInconsistencias& conteo) {
    if (!msgInconsistencias_)
        msgInconsistencias_ = std::make_unique<frm000MsgInconsistencias>(QString::fromStdString(titulo), ventana());
    msgInconsistencias_->MuestraConteo(conteo);
    DecisionInconsistencias d = msgInconsistencias_->Pregunta();
    if (d != DecisionInconsistencias::VerReporte) msgInconsistencias_.reset();
    return d;
}

std::string InteraccionQt::decideNaturaleza(const std::string& titulo, const std::string& texto, const std::string&) {
    QDialog dialogo(ventana());
    dialogo.setObjectName("frm036ImportarContpaqDBFMsg");
    dialogo.setWindowTitle(QString::fromStdString(titulo));
    auto* capa = new QVBoxLayout(&dialogo);
    capa->addWidget(new QLabel(TextoDeMensaje(texto), &dialogo));
    auto* lista = new QListWidget(&dialogo);
    lista->setObjectName("lstNaturaleza");
    lista->addItems({"Deudora", "Acreedora"});
    capa->addWidget(lista);
    auto* botones = new QDialogButtonBox(QDialogButtonBox::Ok, &dialogo);
    capa->addWidget(botones);
    QObject::connect(botones, &QDialogButtonBox::accepted, &dialogo, [&] {
        if (lista->currentRow() < 0) {
            QMessageBox::information(&dialogo, QString::fromStdString(titulo),
                                     "Especifique por favor la naturaleza de la cuenta");
            return;
        }
        dialogo.accept();
    });
    if (dialogo.exec() != QDialog::Accepted) return "";
    return lista->currentRow() == 0 ? "D" : "A";
}

DecisionFinal InteraccionQt::decideFinal(const std::string& titulo) {
    if (!msgInconsistenciasFin_)
        msgInconsistenciasFin_ = std::make_unique<frm000MsgInconsistenciasFin>(QString::fromStdString(titulo), ventana());
    DecisionFinal d = msgInconsistenciasFin_->Pregunta();
    if (d != DecisionFinal::VerDetalle) msgInconsistenciasFin_.reset();
    return d;
}

void InteraccionQt::muestraReporte(const Reporte& reporte) {
    frm000VisorReporte visor(reporte, *this, "VELMORANT Ver. " + VersionDelPrograma(), ventana());
    visor.exec();
}

}  // namespace velmorant::app
