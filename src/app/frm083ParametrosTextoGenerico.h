#pragma once
// The layout of the delimited text importer: which column of each file
// holds each field, saved by name in the layout store. Each file of the
// run is previewed in a grid, split at the importer's delimiter. Accepting
// saves the layout by the store's rules; cancelling ends the program.

#include <QAbstractTableModel>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTableView>

#include "layouts/DeteccionFormato.h"
#include "layouts/ParametrosConfiguracion.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"
#include "session/Sesion.h"

#include <optional>
#include <vector>

namespace velmorant::app {

/// A file preview as a read-only table model.
class ModeloVistaPrevia : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;
    void muestra(VistaPrevia vista);
    int rowCount(const QModelIndex& padre = {}) const override;
    int columnCount(const QModelIndex& padre = {}) const override;
    QVariant data(const QModelIndex& indice, int rol) const override;
    QVariant headerData(int seccion, Qt::Orientation orientacion, int rol) const override;

private:
    VistaPrevia vista_;
};

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

class frm083ParametrosTextoGenerico : public QDialog {
    Q_OBJECT
public:
    /// Opens the layout store (which may end the program after its
    /// message), loads the current layout and previews the files (a file
    /// that is not delimited by the separator ends the program after its
    /// message).
    frm083ParametrosTextoGenerico(Sesion& sesion, const EntradaParametros& entrada, QWidget* padre = nullptr);

    /// The layout in use once the form is accepted.
    std::string Configuracion() const { return f_.Configuracion; }
    /// True when the first line of every file holds column titles.
    bool Titulos() const { return chkTitulosCtas->isChecked(); }
    /// The third tab.
    PestanaSaldos pestana() const { return f_.cajas.pestana; }

    QComboBox* cboConfiguraciones;
    QTabWidget* tboConfigArchivos;
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

    QPushButton* cmdAceptar;
    QPushButton* cmdCancelar;
    /// What the file of the tab in hand looks like (delimiter, titles,
    /// dates, encoding), as suggestions; `cmdSugerir` applies those this
    /// form holds (the title row, the column of the dates) when pressed,
    /// never by itself.
    QLabel* lblSugerencias;
    QPushButton* cmdSugerir;

    /// The boxes as the store's logic reads them.
    CajasParametros LeeCajas() const;
    /// The box that fills a record member ("PIniCuenta", ...; "Nombre" is
    /// the list), by the form's state.
    QWidget* CajaDe(const std::string& miembro) const;

protected:
    bool eventFilter(QObject* objeto, QEvent* evento) override;
    /// Escape does not cancel: cancelling ends the program.
    void keyPressEvent(QKeyEvent* evento) override;

private:
    Sesion& sesion_;
    EntradaParametros entrada_;
    FormularioConfiguracion f_;
    bool actualizando_ = false;
    std::vector<std::optional<DeteccionTexto>> detecciones_;  // by tab: the file's findings

    void DetectaArchivos();
    void MuestraSugerencias();
    void cmdSugerir_Click();

    QWidget* construyeCatalogo();
    QWidget* construyePolizas();
    QWidget* construyeSaldos(const QString& titulo);
    QTableView* construyeVista(QWidget* padre, const char* nombre, const std::string& ruta);
    QLineEdit* Caja(QWidget* padre, const char* nombre);
    QCheckBox* Casilla(QWidget* padre, const char* nombre, const QString& texto, QLineEdit* caja);

    void MuestraCajas(const CajasParametros& c);
    void MuestraLista();
    void ActualizaEstado();
    void EnfocaCaja(const CajaFallida& caja);

    void cboConfiguraciones_Click(int indice);
    void cboConfiguraciones_Change(const QString& texto);
    void cmdAceptar_Click();
};

}  // namespace velmorant::app
