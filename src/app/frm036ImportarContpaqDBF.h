#pragma once
// Link 40, ContPAQ Windows: the frame with one pick (CTW10001.DBF) that
// finds the four other tables in its folder and fills the month list from
// the voucher lines, the natures by account type (NatContpaq) in a grid
// that edits the nature in force, `cmdRestablecer`, and the options.

#include <QComboBox>
#include <QPushButton>
#include <QTableWidget>

#include "app/frm000ImportadorDescrito.h"

namespace velmorant::app {

class frm036ImportarContpaqDBF : public frm000ImportadorDescrito {
    Q_OBJECT
public:
    explicit frm036ImportarContpaqDBF(Sesion& sesion, QWidget* padre = nullptr);

    QLineEdit* eloRutaCatDetalle;
    QLineEdit* eloRutaArchSaldosIni;
    QLineEdit* eloPathPolizas;
    QLineEdit* eloPathCatTipoPolizas;
    QComboBox* cboMeses;
    QCheckBox* chkSistOrigFiltroCtas;
    QCheckBox* chkCtasRellenas;
    QTableWidget* tdbgNatContpaq;
    QPushButton* cmdRestablecer;

    /// The filter and the padding as the form shows them, over the
    /// descriptor's choices.
    ArchivosImportacion Archivos() const override;
    /// Reloads the grid from NatContpaq.
    void CargaNaturalezas();

protected:
    /// "¿Confirma que desea importar los movimientos de pólizas hasta el mes de: ..."
    bool PreparaImportacion() override;

private:
    bool cargando_ = false;
    void CatalogoElegido(const QString& ruta);
    void cmdRestablecer_Click();
    void chkSistOrigFiltroCtas_Click(bool marcado);
    void NaturalezaEditada(QTableWidgetItem* celda);
};

}  // namespace velmorant::app
