#pragma once
// Link 20, Softex: one Access database holds the chart (`Cuentas`), the
// voucher heads (`PolizasEnc`) and their lines (`PolizasPar`). The tables are
// loaded into memory (BaseAccess.h) and read there by their own queries.
//
// What goes where:
//  - chart: the code is `Cve_Cuenta`, `Cve_SCuenta` and `Cve_SSCuenta`
//    trimmed and joined, cut to `Nivel` levels (CuentaHastaNivel), and
//    formatted for `Cuenta`; `Descripcion`, `Tipo_Cta` as the nature and
//    `Saldo` as the opening balance. A row without code adds nothing.
//  - vouchers: one per head, in the order of `F_EMISION`, `CVE_TIPO`,
//    `NO_POL`; `F_EMISION` is a text yyyymmdd; the concept is `Concepto`
//    and `CONCEPT2` joined. Its lines are the rows of `PolizasPar` with its
//    number, type and the very text of `F_EMISION` in `FECHA`: `CVE_CTA` cut
//    to the levels it uses, `D_H`, `Importe`, `Concepto` as the reference.
//    A head without lines stays a voucher without lines.

#include <string>
#include <vector>

#include "importers/Descriptor.h"
#include "platform/BaseDatos.h"

namespace velmorant {

inline constexpr int kEnlaceSoftex = 20;

/// The chart of the Softex tables in `tablas` (table `Cuentas`); `ruta`
/// names the database in messages.
void ImportaCatalogoSoftex(Sesion& s, DestinoTmp& d, BaseDatos& tablas, const std::string& ruta);
/// The vouchers of the Softex tables in `tablas` (`PolizasEnc`, `PolizasPar`).
void ImportaPolizasSoftex(Sesion& s, DestinoTmp& d, BaseDatos& tablas, const std::string& ruta);

class ImportadorSoftex : public Importador {
public:
    int idSistema() const override { return kEnlaceSoftex; }
    TipoImportacion tipo() const override { return TipoImportacion::ArchivoUnico; }

    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;

protected:
    /// Loads `tablas` of the database at `ruta` into `memoria`; throws
    /// ErrorLectura. Through mdbtools here; a test gives the tables itself.
    virtual void cargaTablas(BaseDatos& memoria, const std::string& ruta, const std::vector<std::string>& tablas);

private:
    // Loads, then reads; a source that cannot be read is shown and ends the run.
    template <class F>
    void lee(Sesion& s, const std::string& ruta, const std::vector<std::string>& tablas, F&& lector);
};

/// The descriptor of link 20.
DescriptorImportador DescriptorSoftex();

}  // namespace velmorant
