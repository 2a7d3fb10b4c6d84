#pragma once
// What the layout parameter forms share (fixed positions, delimited
// columns, workbook columns): the list of layouts `cboConfiguraciones` with
// its rules for choosing a row and typing a name, the numeric boxes and
// their keys, the check boxes that enable their boxes, and the accept that
// validates and saves by the layout store's rules (layouts/
// ParametrosConfiguracion.h), with the focus on the faulty box. Each form
// adds its tabs, its boxes and how they map to the layout record.

#include <QAbstractTableModel>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>

#include <initializer_list>
#include <vector>

#include "importers/VistaPrevia.h"
#include "layouts/ParametrosConfiguracion.h"
#include "session/Sesion.h"

namespace velmorant::app {

/// A file preview as a read-only table model. With a fixed-width first
/// column, that column and its head use the fixed-pitch font, so that a
/// ruler in its head stands over the characters of the lines.
class ModeloVistaPrevia : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;
    void muestra(VistaPrevia vista);
    void primeraColumnaFija(bool fija) { primeraFija_ = fija; }
    int rowCount(const QModelIndex& padre = {}) const override;
    int columnCount(const QModelIndex& padre = {}) const override;
    QVariant data(const QModelIndex& indice, int rol) const override;
    QVariant headerData(int seccion, Qt::Orientation orientacion, int rol) const override;

private:
    VistaPrevia vista_;
    bool primeraFija_ = false;
};

class FormaParametros : public QDialog {
    Q_OBJECT
public:
    /// The layout in use once the form is accepted.
    std::string Configuracion() const { return f_.Configuracion; }
    /// The third tab.
    PestanaSaldos pestana() const { return f_.cajas.pestana; }

    QComboBox* cboConfiguraciones;
    QTabWidget* tboConfigArchivos;
    QPushButton* cmdAceptar;
    QPushButton* cmdCancelar;

    /// The boxes as the store's logic reads them.
    virtual CajasParametros LeeCajas() const = 0;
    /// The box that fills a record member ("PIniCuenta", "LongCuenta", ...;
    /// "Nombre" is the list), by the form's state.
    virtual QWidget* CajaDe(const std::string& miembro) const = 0;

protected:
    /// Opens the layout store for the form's link (a catalogue that cannot
    /// be opened ends the program after its message) and loads the layout
    /// `configuracion` (the link's predetermined one when empty).
    FormaParametros(Sesion& sesion, FormularioParametros tipo, const std::string& configuracion,
                    PestanaSaldos pestana, QWidget* padre);
    /// Lays the form out around its tabs (already in `tboConfigArchivos`),
    /// shows the layout and connects the list and the buttons. The form's
    /// constructor calls it last.
    void Arma(QLayout* antesDeBotones = nullptr);

    /// Shows the boxes as `c` holds them.
    virtual void MuestraCajas(const CajasParametros& c) = 0;
    /// Enables and shows the boxes by the check boxes.
    virtual void ActualizaEstado() = 0;
    /// `cmdCancelar`: closes the form without accepting.
    virtual void cmdCancelar_Click() { reject(); }

    /// A numeric box: digits only, enter moves to the next enabled box.
    QLineEdit* Caja(QWidget* padre, const char* nombre);
    /// A check box that enables `cajas`: clearing it empties them, ticking
    /// it puts the focus on the first.
    QCheckBox* Casilla(QWidget* padre, const char* nombre, const QString& texto,
                       std::initializer_list<QLineEdit*> cajas);
    /// A preview grid of its own model.
    QTableView* Vista(QWidget* padre, const char* nombre, const std::string& ruta);
    static ModeloVistaPrevia* ModeloDe(QTableView* vista);
    /// A group box with a grid of two columns of boxes.
    static QGroupBox* Grupo(QWidget* padre, const QString& titulo, QGridLayout*& rejilla);
    static std::int16_t Valor16(const QLineEdit* caja);
    /// A value in a box, 0 as empty.
    static void Muestra(QLineEdit* caja, std::int16_t valor);

    bool eventFilter(QObject* objeto, QEvent* evento) override;
    /// Escape does not close the form.
    void keyPressEvent(QKeyEvent* evento) override;

    Sesion& sesion_;
    FormularioConfiguracion f_;
    bool actualizando_ = false;

private:
    void MuestraLista();
    void EnfocaCaja(const CajaFallida& caja);
    void cboConfiguraciones_Click(int indice);
    void cboConfiguraciones_Change(const QString& texto);
    void cmdAceptar_Click();
};

}  // namespace velmorant::app
