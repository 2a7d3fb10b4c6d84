#pragma once
// The start form: the company in hand (read-only), the list of links, and
// the dispatch to the importer of the link chosen. When the importer form
// closes, or the user leaves, the session ends: there is no way back.

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>

#include <optional>

#include "session/Sesion.h"

namespace velmorant::app {

class frm000ImportarInicio : public QDialog {
    Q_OBJECT
public:
    explicit frm000ImportarInicio(Sesion& sesion, QWidget* padre = nullptr);

    /// Shows the session's company, year and account structure and the
    /// title that start-up set, fills the list of links and centres the
    /// form on the screen.
    void muestraSesion();

    /// `IdSistema` of the current row of the list; nothing when it is empty.
    std::optional<int> enlaceActual() const;
    /// True once the session has ended and the temporary stores were
    /// cleared (false when the program ended without clearing them).
    bool temporalesBorrados() const { return temporalesBorrados_; }

    QLineEdit* eloEmpresa;
    QLineEdit* eloEjercicio;
    QLineEdit* eloEstrucCta;
    QLineEdit* txtBuscar;
    QCheckBox* chkVerSisComer;
    QTableView* tdbgEnlaces;
    QStandardItemModel* datEnlaces;
    QPushButton* cmdContinuar;
    QPushButton* cmdSalir;

    /// Unloading the form ends the session: the temporary stores are
    /// cleared first, unless the importer ended the program.
    void done(int resultado) override;

private:
    Sesion& sesion_;
    bool terminado_ = false;
    bool borraAlTerminar_ = true;
    bool temporalesBorrados_ = false;

    void chkVerSisComer_Click();
    void txtBuscar_Change();
    void cmdContinuar_Click();
    void DespachaEnlace();
    /// Reloads the list from the link catalogue.
    void refrescaEnlaces(const std::string& buscar);
    void centra();
};

}  // namespace velmorant::app
