#pragma once
// Link 82: a client's accounting data in text files whose columns are split
// by one character. Besides the frame's files it offers one voucher file
// for the whole year and the choice of the delimiter.

#include <QButtonGroup>
#include <QComboBox>
#include <QRadioButton>

#include "app/MarcoImportador.h"

namespace velmorant::app {

class frm082TextoGenericoSeparado : public MarcoImportador {
    Q_OBJECT
public:
    explicit frm082TextoGenericoSeparado(Sesion& sesion, QWidget* padre = nullptr);

    QCheckBox* chkUnArchivo;
    QGroupBox* fraSeparador;
    QRadioButton* optTabulacion;
    QRadioButton* optOtro;
    QComboBox* cboSeparador;

    /// The delimiter chosen: a tab, or the text of `cboSeparador` whole
    /// (any length); empty when neither option is on.
    std::string Separador() const;

protected:
    bool ValidaPropios() override;
    bool ValidaPolizas() override;
    bool mesDisponible(int mes) const override;

private:
    void chkUnArchivo_Click(bool marcado);
};

/// The form's description: its files, pickers, keys and messages.
DescripcionMarco DescripcionTextoGenerico();

}  // namespace velmorant::app
