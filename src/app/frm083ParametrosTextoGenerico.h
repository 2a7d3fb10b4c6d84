#pragma once
// The layout of the delimited text importer: which column of each file
// holds each field, saved by name in the layout store. Each file of the
// run is previewed in a grid, split at the importer's delimiter. Accepting
// saves the layout by the store's rules; cancelling ends the program.

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTableView>

#include "app/FormaParametros.h"
#include "layouts/DeteccionFormato.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"

#include <functional>
#include <optional>
#include <vector>

namespace velmorant::app {

/// What the importer hands to the form: its files, its delimiter, the
/// tab in hand and the current layout.
struct EntradaParametros {
    std::string catalogo;
    std::string saldosIniciales;
    std::string polizas;             // the first month file
    std::string saldosAnioAnterior;
    bool anioAnterior = false;       // the importer is on its prior-year tab
    std::string separador;
    std::string configuracion;       // the current layout's name
};

class frm083ParametrosTextoGenerico : public FormaParametros {
    Q_OBJECT
public:
    /// Opens the layout store (which may end the program after its
    /// message), loads the current layout and previews the files (a file
    /// that is not delimited by the separator ends the program after its
    /// message).
    frm083ParametrosTextoGenerico(Sesion& sesion, const EntradaParametros& entrada, QWidget* padre = nullptr);

    /// True when the first line of every file holds column titles.
    bool Titulos() const { return chkTitulosCtas->isChecked(); }

    QTableView* tdbgCuentas;
    QTableView* tdbgPolizas;
    QTableView* tdbgSaldos = nullptr;
    QCheckBox* chkTitulosCtas;
    QCheckBox* chkTitulosSaldos = nullptr;
    // Catalogue.
    QLineEdit* txtCtaPIni;
    QLineEdit* txtDescPIni;
    QCheckBox* chkCtaCtrl;
    QLineEdit* txtCtaCtrlPIni;
    QCheckBox* chkNivel;
    QLineEdit* txtNivelPIni;
    QCheckBox* chkNat;
    QLineEdit* txtNatPIni;
    QCheckBox* chkSaldosIni;
    QLineEdit* txtSdoIniPIni;
    // Vouchers.
    QLineEdit* txtNumPolPIni;
    QLineEdit* txtConceptPIni;
    QLineEdit* txtTipoPIni;
    QRadioButton* optFechaIn;
    QRadioButton* optFechaCompleta;
    QLineEdit* txtDiaPIni;
    QLineEdit* txtMesPIni;
    QLineEdit* txtAnioPIni;
    QLineEdit* txtColFechaCompleta;
    QLineEdit* txtCtaPolPIni;
    QCheckBox* chkReferencia;
    QLineEdit* txtRefPIni;
    QCheckBox* chkTipoMov;
    QLineEdit* txtTipoMovPIni;
    QLabel* lblImporte;
    QLineEdit* txtImportePIni;
    QLabel* lblAbono;
    QLineEdit* txtAbonoPIni;
    // Balances (third tab).
    QLineEdit* txtColCuenta = nullptr;
    QLineEdit* txtColDescripcion = nullptr;
    QLineEdit* txtColSaldo = nullptr;

    /// What the file of the tab in hand looks like (delimiter, titles,
    /// dates, encoding), as suggestions; `cmdSugerir` applies those this
    /// form holds (the title row, the column of the dates) when pressed,
    /// never by itself.
    QLabel* lblSugerencias;
    QPushButton* cmdSugerir;

    CajasParametros LeeCajas() const override;
    QWidget* CajaDe(const std::string& miembro) const override;

protected:
    /// How a file is shown in its tab's grid.
    using VistaArchivo = std::function<VistaPrevia(Sesion&, const std::string&)>;
    /// The same boxes over files of another kind: `tipo` says which link's
    /// layouts the form lists and saves, `vista` how each file is previewed;
    /// `sugerencias` offers what a text file looks like.
    frm083ParametrosTextoGenerico(Sesion& sesion, const EntradaParametros& entrada, FormularioParametros tipo,
                                  VistaArchivo vista, bool sugerencias, QWidget* padre);

    void MuestraCajas(const CajasParametros& c) override;
    void ActualizaEstado() override;

private:
    EntradaParametros entrada_;
    VistaArchivo vista_;
    std::vector<std::optional<DeteccionTexto>> detecciones_;  // by tab: the file's findings

    void DetectaArchivos();
    void MuestraSugerencias();
    void cmdSugerir_Click();

    QWidget* construyeCatalogo();
    QWidget* construyePolizas();
    QWidget* construyeSaldos(const QString& titulo);
    QTableView* construyeVista(QWidget* padre, const char* nombre, const std::string& ruta);
};

}  // namespace velmorant::app
