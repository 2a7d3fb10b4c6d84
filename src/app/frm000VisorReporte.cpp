#include "app/frm000VisorReporte.h"

#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPrintDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QScreen>
#include <QTextDocument>
#include <QUrl>
#include <QVBoxLayout>

namespace velmorant::app {

namespace {

QPushButton* Boton(QWidget* padre, const char* nombre, const QString& texto) {
    auto* boton = new QPushButton(texto, padre);
    boton->setObjectName(nombre);
    boton->setAutoDefault(false);
    return boton;
}

// A file name from the report's title: "Resumen de inconsistencias.pdf".
QString NombreSugerido(const Reporte& r, const QString& extension) {
    QString nombre = QString::fromStdString(r.titulo).trimmed();
    nombre.replace(QRegularExpression("[\\\\/:*?\"<>|]"), "_");
    return (nombre.isEmpty() ? QString("Reporte") : nombre) + extension;
}

}  // namespace

frm000VisorReporte::frm000VisorReporte(const Reporte& reporte, Interaccion& interaccion, std::string tituloMensajes,
                                       QWidget* padre)
    : QDialog(padre), reporte_(reporte), interaccion_(interaccion), tituloMensajes_(std::move(tituloMensajes)) {
    setObjectName("frm000VisorReporte");
    setWindowTitle(QString::fromStdString(reporte_.titulo));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowFlag(Qt::WindowMaximizeButtonHint, true);

    txtReporte = new QTextBrowser(this);
    txtReporte->setObjectName("txtReporte");
    txtReporte->setOpenLinks(false);
    txtReporte->setSearchPaths({QString::fromStdString(reporte_.carpetaPlantilla)});
    txtReporte->document()->setBaseUrl(QUrl::fromLocalFile(QString::fromStdString(reporte_.carpetaPlantilla)));
    txtReporte->setHtml(QString::fromStdString(HtmlDeReporte(reporte_)));

    cmdImprimir = Boton(this, "cmdImprimir", "&Imprimir...");
    cmdGuardarPdf = Boton(this, "cmdGuardarPdf", "Guardar como &PDF...");
    cmdGuardarCsv = Boton(this, "cmdGuardarCsv", "Guardar como C&SV...");
    cmdGuardarCsv->setVisible(!reporte_.columnas.empty());  // a report without rows (a constancia) has no CSV
    cmdCerrar = Boton(this, "cmdCerrar", "C&errar");
    cmdCerrar->setDefault(true);
    auto* botones = new QHBoxLayout;
    botones->addWidget(cmdImprimir);
    botones->addWidget(cmdGuardarPdf);
    botones->addWidget(cmdGuardarCsv);
    botones->addStretch();
    botones->addWidget(cmdCerrar);
    auto* principal = new QVBoxLayout(this);
    principal->addWidget(txtReporte, 1);
    principal->addLayout(botones);

    connect(cmdImprimir, &QPushButton::clicked, this, &frm000VisorReporte::Imprime);
    connect(cmdGuardarPdf, &QPushButton::clicked, this, [this] { GuardaComo("PDF (*.pdf)", ".pdf"); });
    connect(cmdGuardarCsv, &QPushButton::clicked, this, [this] { GuardaComo("CSV (*.csv)", ".csv"); });
    connect(cmdCerrar, &QPushButton::clicked, this, &QDialog::accept);

    QScreen* pantalla = padre && padre->screen() ? padre->screen() : QGuiApplication::primaryScreen();
    QSize area = pantalla ? pantalla->availableSize() : QSize(1024, 768);
    resize(std::min(reporte_.horizontal ? 1100 : 900, area.width() * 9 / 10), area.height() * 8 / 10);
}

bool frm000VisorReporte::Guarda(const std::string& ruta) {
    try {
        GuardaReporte(reporte_, ruta);
        return true;
    } catch (const std::exception& e) {
        interaccion_.mensaje(TipoMensaje::Critico, tituloMensajes_,
                             "No fue posible guardar el reporte en " + ruta + ":\r\n" + e.what());
        return false;
    }
}

void frm000VisorReporte::GuardaComo(const QString& filtro, const QString& extension) {
    QString sugerido = QDir(QDir::homePath()).filePath(NombreSugerido(reporte_, extension));
    QString ruta = QFileDialog::getSaveFileName(this, windowTitle(), sugerido, filtro);
    if (ruta.isEmpty()) return;
    if (!ruta.endsWith(extension, Qt::CaseInsensitive)) ruta += extension;
    Guarda(QDir::toNativeSeparators(ruta).toStdString());
}

void frm000VisorReporte::Imprime() {
    QPrinter impresora(QPrinter::HighResolution);
    impresora.setDocName(QString::fromStdString(reporte_.titulo));
    impresora.setPageOrientation(reporte_.horizontal ? QPageLayout::Landscape : QPageLayout::Portrait);
    QPrintDialog dialogo(&impresora, this);
    dialogo.setWindowTitle(windowTitle());
    if (dialogo.exec() != QDialog::Accepted) return;
    ImprimeReporte(reporte_, impresora);
}

}  // namespace velmorant::app
