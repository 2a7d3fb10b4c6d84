#pragma once
// Link 102: a client's accounting data in Excel workbooks, one sheet to a
// file, the columns given by a saved layout. Month by month (with a
// thirteenth month of closing vouchers) or one voucher file for the year.

#include <memory>
#include <optional>

#include "importers/Descriptor.h"
#include "importers/excel_columnas/LectorExcelColumnas.h"

namespace velmorant {

class ImportadorExcelColumnas : public Importador {
public:
    /// `unArchivo`: one voucher file holds the year ("Un solo archivo"); a
    /// month-13 file may still stand beside it.
    ImportadorExcelColumnas(LecturaExcel lectura, bool unArchivo) : lectura_(std::move(lectura)), unArchivo_(unArchivo) {}

    int idSistema() const override { return kEnlaceExcelGenerico; }
    TipoImportacion tipo() const override {
        return unArchivo_ ? TipoImportacion::ArchivoUnico : TipoImportacion::MesPorMes;
    }
    bool saldosInicialesAparte() const override { return true; }
    ReglasDestino reglasDestino() const override { return ReglasExcelColumnas(); }
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;

    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) override;
    void ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) override;

    const LecturaExcel& lectura() const { return lectura_; }

private:
    LecturaExcel lectura_;
    bool unArchivo_;
};

/// The workbook filter of every picker of this link.
inline constexpr const char* kFiltroExcel = "*.xls;*.xlsx|*.xls;*.xlsx";

/// How the files of a run are read, from the command line's choices (the
/// title row, the saved layout). Throws ParametroInvalido without a layout
/// name; nothing when the saved layout refuses (its message shown).
std::optional<LecturaExcel> LecturaExcelElegida(Sesion& s, const ArchivosImportacion& a);

/// The descriptor of link 102: its files, pickers, messages and options.
DescriptorImportador DescriptorExcelColumnas();

}  // namespace velmorant
