#pragma once
// A report on screen: the summary or the detail of the inconsistency logs,
// rendered from its template, with printing and saving as PDF or CSV.

#include <QDialog>
#include <QPushButton>
#include <QTextBrowser>

#include "pipeline/Reportes.h"
#include "session/Interaccion.h"

namespace velmorant::app {

class frm000VisorReporte : public QDialog {
    Q_OBJECT
public:
    /// `interaccion` and `tituloMensajes` serve the messages of the viewer.
    frm000VisorReporte(const Reporte& reporte, Interaccion& interaccion, std::string tituloMensajes,
                       QWidget* padre = nullptr);

    QTextBrowser* txtReporte;
    QPushButton* cmdImprimir;
    QPushButton* cmdGuardarPdf;
    QPushButton* cmdGuardarCsv;
    QPushButton* cmdCerrar;

    /// Writes the report to `ruta` (its extension says the format); says
    /// so when the file cannot be written. True when written.
    bool Guarda(const std::string& ruta);

private:
    Reporte reporte_;
    Interaccion& interaccion_;
    std::string tituloMensajes_;

    void GuardaComo(const QString& filtro, const QString& extension);
    void Imprime();
};

}  // namespace velmorant::app
