#pragma once
// The layout of the fixed-position text importer: where each field of the
// chart and of the voucher files starts and how long it is, saved by name
// in the layout store. The chart and the first month file are previewed
// line by line under a ruler of positions, with the text each field of the
// boxes would take. Accepting saves the layout by the store's rules;
// cancelling also keeps a new, valid layout in the catalogue.

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>

#include "app/FormaParametros.h"

namespace velmorant::app {

/// What the importer hands to the form: its files and the current layout.
struct EntradaParametrosFijos {
    std::string catalogo;
    std::string polizas;        // the first month file
    std::string configuracion;  // the current layout's name
};

class frm022DefParaTxtPersonalizado : public FormaParametros {
    Q_OBJECT
public:
    /// Opens the layout store (which may end the program after its
    /// message), loads the current layout and previews the files.
    frm022DefParaTxtPersonalizado(Sesion& sesion, const EntradaParametrosFijos& entrada, QWidget* padre = nullptr);

    QTableView* tdbgCuentas;
    QTableView* tdbgPolizas;
    // Catalogue: position and length of each field.
    QLineEdit *txtCtaPIni, *txtCtaLong;
    QLineEdit *txtDescPIni, *txtDescLong;
    QCheckBox* chkCtaCtrl;
    QLineEdit *txtCtaCtrlPIni, *txtCtaCtrlLong;
    QCheckBox* chkNivel;
    QLineEdit *txtNivelPIni, *txtNivelLong;
    QCheckBox* chkNat;
    QLineEdit *txtNatPIni, *txtNatLong;
    QCheckBox* chkSaldosIni;
    QLineEdit *txtSdoIniPIni, *txtSdoIniLong;
    // Vouchers.
    QLineEdit *txtTipoPIni, *txtTipoLong;
    QLineEdit *txtNumPolPIni, *txtNumPolLong;
    QLineEdit *txtDiaPIni, *txtDiaLong;
    QLineEdit *txtMesPIni, *txtMesLong;
    QLineEdit *txtAnioPIni, *txtAnioLong;
    QLineEdit *txtCtaPolPIni, *txtCtaPolLong;
    QCheckBox* chkReferencia;
    QLineEdit *txtRefPIni, *txtRefLong;
    QLineEdit *txtConceptPIni, *txtConceptLong;
    QCheckBox* chkTipoMov;
    QLineEdit *txtTipoMovPIni, *txtTipoMovLong;
    QLabel* lblImporte;
    QLineEdit *txtImportePIni, *txtImporteLong;
    QLabel* lblAbono;
    QLineEdit *txtAbonoPIni, *txtAbonoLong;

    CajasParametros LeeCajas() const override;
    QWidget* CajaDe(const std::string& miembro) const override;

protected:
    void MuestraCajas(const CajasParametros& c) override;
    void ActualizaEstado() override;
    /// Saves a new, valid layout to the catalogue, then closes.
    void cmdCancelar_Click() override;

private:
    std::vector<std::string> lineasCatalogo_, lineasPolizas_;
    bool cargando_ = false;  // the boxes are being filled: no preview yet

    QWidget* construyeCatalogo(const std::string& ruta);
    QWidget* construyePolizas(const std::string& ruta);
    /// A row of the grid: caption (a label or a check box), position, length.
    void Renglon(QGridLayout* rejilla, int fila, int columna, QWidget* titulo, QLineEdit* pIni, QLineEdit* largo);
    /// The previews follow the boxes.
    void ActualizaVistas();
    void txtNatLong_Validate();
    void txtNivelLong_Validate();
};

}  // namespace velmorant::app
