#pragma once
// COI 7's exports to workbooks (frm014ImportarCOI7Excel): the chart, the
// opening balances and the vouchers, each a workbook walked row by row from
// its first data row, reading fixed columns (one table, kColumnasCoi7Excel).
// A run of more than 5 rows without data ends a sheet: what stands below
// it is not read. A code holding "." (COI's own separator in its exports)
// loses it before the company's rules clean it.
//
// The vouchers' types come as COI's names ("Dr", "Ig", "Eg") or their
// descriptions ("Diario", "Ingresos", "Egresos") and are stored as the
// codes "003", "002" and "001" (TrduceTiposContaFiscal); after the commit
// the same change reaches the review work that earlier runs left with the
// names (`CedAnalitica`, `CedNoDeducibles`) and the voucher-type catalogue
// takes the descriptions.
//
// The program's link list gives this importer no link of its own, so it is
// not in the register: it is reached from code (and the tests).

#include <string>

#include "importers/Descriptor.h"

namespace velmorant {

/// Where each field stands in the exports (columns from 1).
struct ColumnasCoi7Excel {
    int filaInicial = 2;  // the first row of data; the rows above are titles
    int filasVaciasMaximas = 5;
    // Chart.
    int catCuenta = 1, catNombre = 2, catNivel = 3, catNaturaleza = 4;
    // Opening balances.
    int sdoCuenta = 1, sdoInicial = 3;
    // Vouchers, one row per line.
    int polTipo = 1, polNumero = 2, polFecha = 3, polConcepto = 4, polCuenta = 5, polReferencia = 6, polDebe = 7,
        polHaber = 8;
};
inline constexpr ColumnasCoi7Excel kColumnasCoi7Excel{};

/// COI's type name or description as its code: "Dr"/"Diario" "003",
/// "Ig"/"Ingresos" "002", "Eg"/"Egresos" "001"; any other text as it is.
std::string CodigoTipoContaFiscal(const std::string& tipo);
/// The change of CodigoTipoContaFiscal made in the company: `Polizas`,
/// `CedAnalitica`, `CedNoDeducibles`, and the catalogue of voucher types.
void TrduceTiposContaFiscal(Sesion& s);

void ImpCatCuentasCoi7(Sesion& s, DestinoTmp& d, const std::string& ruta);
void ImpSaldIniCoi7(Sesion& s, DestinoTmp& d, const std::string& ruta);
void ImportPolizasCOI7(Sesion& s, DestinoTmp& d, const std::string& ruta);
/// The same vouchers exported as text (`optPolCSV`): the same columns split
/// by commas, the first line of titles; a line that cannot be read says
/// "Error al leer la línea: " and the line.
void ImportPolizasCOI7Texto(Sesion& s, DestinoTmp& d, const std::string& ruta);

class ImportadorCoi7Excel : public Importador {
public:
    /// No link of its own; `idSistema` is the link a caller runs it under.
    /// `polizasEnTexto`: the vouchers come as text (`optPolCSV`), not as a
    /// workbook (`optPolXLS`).
    explicit ImportadorCoi7Excel(int idSistema, bool polizasEnTexto = false)
        : id_(idSistema), polizasEnTexto_(polizasEnTexto) {}
    int idSistema() const override { return id_; }
    TipoImportacion tipo() const override { return TipoImportacion::ArchivoUnico; }
    bool saldosInicialesAparte() const override { return true; }
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;
    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void confirmaPropio(Sesion& s, MomentoConfirmacion momento) override;

private:
    int id_;
    bool polizasEnTexto_;
};

}  // namespace velmorant
