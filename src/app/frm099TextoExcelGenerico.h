#pragma once
// Link 102: a client's accounting data in Excel workbooks, the columns of
// each sheet given by a saved layout. Besides the frame's files (with the
// thirteenth month of closing vouchers) it offers one voucher file for the
// whole year.

#include "app/MarcoImportador.h"
#include "importers/excel_columnas/LectorExcelColumnas.h"

namespace velmorant::app {

class frm099TextoExcelGenerico : public MarcoImportador {
    Q_OBJECT
public:
    explicit frm099TextoExcelGenerico(Sesion& sesion, QWidget* padre = nullptr);

    QCheckBox* chkUnArchivo;

    /// How the workbooks will be read: title flag and layout, as the
    /// parameters form left them.
    const LecturaExcel& lectura() const { return lectura_; }
    /// The current layout's name.
    const std::string& Configuracion() const { return Configuracion_; }
    /// With "Un solo archivo" the January row is the year's one file; the
    /// closing month keeps its own row.
    ArchivosImportacion Archivos() const override;

protected:
    bool ValidaPolizas() override;
    bool mesDisponible(int mes) const override;
    /// The layout store opened as every generic importer opens it.
    void Form_Load() override;
    /// The parameters form: its layout becomes the form's; its cancel ends
    /// the program.
    bool PreparaImportacion() override;
    std::unique_ptr<Importador> CreaImportador() override;

private:
    LecturaExcel lectura_;
    std::string Configuracion_;

    void chkUnArchivo_Click(bool marcado);
};

/// The form's description: its files, pickers, keys and messages.
DescripcionMarco DescripcionExcelGenerico();

}  // namespace velmorant::app
