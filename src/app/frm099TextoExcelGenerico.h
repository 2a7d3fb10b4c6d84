#pragma once
// Link 102: a client's accounting data in Excel workbooks, the columns of
// each sheet given by a saved layout. Besides the frame's files (with the
// thirteenth month of closing vouchers) it offers one voucher file for the
// whole year.

#include "app/MarcoUnArchivo.h"
#include "importers/excel_columnas/LectorExcelColumnas.h"

namespace velmorant::app {

class frm099TextoExcelGenerico : public MarcoUnArchivo {
    Q_OBJECT
public:
    explicit frm099TextoExcelGenerico(Sesion& sesion, QWidget* padre = nullptr);

    /// How the workbooks will be read: title flag and layout, as the
    /// parameters form left them.
    const LecturaExcel& lectura() const { return lectura_; }
    /// The current layout's name.
    const std::string& Configuracion() const { return Configuracion_; }

protected:
    /// The layout store opened as every generic importer opens it.
    void Form_Load() override;
    /// The parameters form: its layout becomes the form's; its cancel ends
    /// the program.
    bool PreparaImportacion() override;
    std::unique_ptr<Importador> CreaImportador() override;

private:
    LecturaExcel lectura_;
    std::string Configuracion_;
};

/// The form's description: its files, pickers, keys and messages.
DescripcionMarco DescripcionExcelGenerico();

}  // namespace velmorant::app
