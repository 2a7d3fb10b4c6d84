#pragma once
// Links 36 ("ContPAQ i") and 95 ("ContPAQ i - Mejorado"): the text files
// that ContPAQ i exports (LectorContpaqI.h), the whole year's vouchers in
// one file. A company stays with the one of the two links that first
// imported it (session/Despacho.h).
//
// Link 95 adds its options: the fiscal folios in the texts, the voucher's
// concept as every line's reference, the coding of the movement kind in a
// file of the earlier layout, and the refresh of references: once the new
// vouchers are committed, each row of the analytic schedule takes the
// reference of the line it stands for, so that the review work is found
// again when the references of the source changed.

#include <memory>

#include "importers/Descriptor.h"
#include "importers/contpaq_i/LectorContpaqI.h"

namespace velmorant::contpaqi {

inline constexpr int kEnlaceContpaqIAnterior = 36;
inline constexpr int kEnlaceContpaqIMejorado = 95;

struct OpcionesContpaqI {
    OpcionesPolizasContpaqI polizas;
    bool actualizaReferencia = false;
};

/// The options of link 95 from the user's choices; throws ParametroInvalido
/// when both codings of the movement kind are chosen.
OpcionesContpaqI OpcionesDe(const ArchivosImportacion& a);

class ImportadorContpaqI : public Importador {
public:
    ImportadorContpaqI(int idSistema, OpcionesContpaqI o) : id_(idSistema), o_(o) {}
    int idSistema() const override { return id_; }
    TipoImportacion tipo() const override { return TipoImportacion::ArchivoUnico; }
    ReglasDestino reglasDestino() const override;
    /// The chart, then the opening balances of the trial balance when given.
    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) override;
    /// With the refresh of references, once the vouchers and balances are
    /// committed and before the review work is rebuilt, month by month.
    void confirmaPropio(Sesion& s, MomentoConfirmacion momento) override;

private:
    int id_;
    OpcionesContpaqI o_;
};

/// Month `mes` of the refresh of references: each schedule row of the
/// month whose voucher is in `Polizas` takes the reference of the first
/// line of that voucher with its account, kind and amount that no earlier
/// row took; so does its non-deductible item. Runs on the open company.
void ActualizaReferenciasMes(Sesion& s, int mes);

DescriptorImportador DescriptorContpaqIAnterior();
DescriptorImportador DescriptorContpaqIMejorado();

}  // namespace velmorant::contpaqi
