#pragma once
// The import history of the company in hand: its runs, newest last, with
// the selected one shown whole as its constancia; the constancia on screen
// to print or save as PDF; and the undo of the last committed import.

#include <QDialog>
#include <QPushButton>
#include <QTableWidget>
#include <QTextBrowser>

#include <vector>

#include "pipeline/Historial.h"
#include "session/Sesion.h"

namespace velmorant::app {

class frm000HistorialImportaciones : public QDialog {
    Q_OBJECT
public:
    explicit frm000HistorialImportaciones(Sesion& sesion, QWidget* padre = nullptr);

    QTableWidget* tdbgHistorial;
    QTextBrowser* txtDetalle;
    QPushButton* cmdConstancia;
    QPushButton* cmdDeshacer;
    QPushButton* cmdCerrar;

    /// Reads the history again and selects the newest run.
    void Actualiza();
    /// The run of the selected row; nothing when none is selected.
    std::optional<RegistroHistorial> Seleccionado() const;

private:
    Sesion& sesion_;
    std::vector<RegistroHistorial> corridas_;

    void MuestraDetalle();
    void cmdConstancia_Click();
    void cmdDeshacer_Click();
};

}  // namespace velmorant::app
