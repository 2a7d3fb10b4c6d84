#pragma once
// Link 82: a client's accounting data in text files whose columns are split
// by one character. Besides the frame's files it offers one voucher file
// for the whole year and the choice of the delimiter.

#include <QButtonGroup>
#include <QComboBox>
#include <QRadioButton>

#include "app/MarcoUnArchivo.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"

namespace velmorant::app {

class frm082TextoGenericoSeparado : public MarcoUnArchivo {
    Q_OBJECT
public:
    explicit frm082TextoGenericoSeparado(Sesion& sesion, QWidget* padre = nullptr);

    QGroupBox* fraSeparador;
    QRadioButton* optTabulacion;
    QRadioButton* optOtro;
    QComboBox* cboSeparador;

    /// The delimiter chosen: a tab, or the text of `cboSeparador` whole
    /// (any length); empty when neither option is on.
    std::string Separador() const;
    /// How the files will be read: delimiter, title row and layout, as the
    /// parameters form left them.
    const LecturaDelimitada& lectura() const { return lectura_; }
    /// The current layout's name.
    const std::string& Configuracion() const { return Configuracion_; }

protected:
    bool ValidaPropios() override;
    /// The layout store opened as every generic importer opens it.
    void Form_Load() override;
    /// The parameters form: its layout becomes the form's; its cancel ends
    /// the program.
    bool PreparaImportacion() override;
    std::unique_ptr<Importador> CreaImportador() override;

private:
    LecturaDelimitada lectura_;
    std::string Configuracion_;
};

/// The form's description: its files, pickers, keys and messages.
DescripcionMarco DescripcionTextoGenerico();

}  // namespace velmorant::app
