#pragma once
// Links 56 and 57: the data of the earlier audit products Quorvel 4.0
// (dBase tables, each file apart) and Quorvel 5.0 (one Access database with
// the same tables). The tables are loaded into memory and read there with
// the same queries, whichever file they came from:
//
//  - `B9CATCUE`, the chart, by `CUENUMERO`: the code (through the company's
//    account rules), `CUEDESCRI`, `CUECONTROL` as the parent, `CUENIVEL`,
//    `CUENATUR`, `CUECLASE` ("A" accumulative, anything else detail) and
//    `CUESALINI` as the opening balance;
//  - `B2UNIPOL`, a row per voucher line, `CPOTIPO`, `CPONUMERO`,
//    `CUENUMERO`, `CPOCONCEP`, `CPOREFERE1` and `CPOREFERE2` (joined by one
//    blank), `CPOMOVIM` (1 a debit), `CPOIMPORTE`, `CPOFECHA`: the vouchers
//    of the year up to the month asked for, grouped by type and number
//    (and date, when one voucher may hold several dates), but those of type
//    "AJ" and "RC", which are the auditor's adjustments and
//    reclassifications of the year: they go to the store `AjYRcl_Tmp` and,
//    in the commit, to the company's `Ajustes` and `Reclasificaciones`,
//    then onto the chart's stage balances (pipeline/AjustesAuditoria.h);
//  - `B9SALANT`, the prior year's closing balances (`CUESALDO12`), when
//    given: to `Saldo_Anterior_Final` of each account; an account the chart
//    lacks is logged and added to it.
//
// A line on an account the chart lacks is logged once, "La Cuenta X no
// existe en el catálogo.", and kept. After the commit the voucher types of
// the older data are brought to the company's (NormalizaTiposPoliza).

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "importers/Descriptor.h"
#include "platform/BaseDatos.h"

namespace velmorant {

inline constexpr int kEnlaceQuorvel4 = 56;
inline constexpr int kEnlaceQuorvel5 = 57;

/// The user's choices for a run.
struct OpcionesQuorvel {
    /// The last month whose vouchers are read, 1 to 13 (13: the whole year);
    /// 0 when none was given.
    int hastaMes = 0;
    /// One voucher may hold lines of several dates (`chkPolizaFechaDiff`):
    /// the rows are taken by date first, and each date makes a voucher.
    bool polizaFechaDiferente = false;
};

/// The tables of a run, loaded into memory, with what messages and amounts
/// need to know of their files.
struct TablasQuorvel {
    BaseDatos memoria;
    /// The file of each table, by table name, for messages.
    std::map<std::string, std::string> rutas;
    /// The number fields the files keep without decimals, and those they
    /// keep with decimals, by table (upper case), where the files say so.
    std::map<std::string, std::set<std::string>> enteros, decimales;

    std::string ruta(const std::string& tabla) const;
};

/// The chart (`B9CATCUE`).
void ImportaCatalogoQuorvel(Sesion& s, DestinoTmp& d, TablasQuorvel& t);
/// The prior-year closing balances (`B9SALANT`), unseparated code and
/// amount; accounts the temporary chart lacks are logged and added to it.
std::vector<std::pair<std::string, Moneda>> ImportaSaldosAnterioresQuorvel(Sesion& s, DestinoTmp& d,
                                                                          TablasQuorvel& t);
/// The vouchers of `B2UNIPOL` up to the month chosen, "AJ" and "RC" left out.
void ImportaPolizasQuorvel(Sesion& s, DestinoTmp& d, TablasQuorvel& t, const OpcionesQuorvel& o);
/// The "AJ" and "RC" rows of the year into `AjYRcl_Tmp` (which must exist):
/// an entry for each change of type and number, numbered by type.
void ImportaAjustesQuorvel(Sesion& s, DestinoTmp& d, TablasQuorvel& t);

class ImportadorQuorvel : public Importador {
public:
    ImportadorQuorvel(int idSistema, OpcionesQuorvel opciones) : id_(idSistema), opciones_(opciones) {}

    int idSistema() const override { return id_; }
    TipoImportacion tipo() const override { return TipoImportacion::ArchivoUnico; }
    ReglasDestino reglasDestino() const override;
    /// The files, then the month: "Especifique por favor el mes hasta el cual
    /// deberá importarse el detalle de pólizas".
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;

    /// The chart, and the prior-year balances when their file is given.
    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    /// The vouchers, then the adjustments and reclassifications into their
    /// store, made afresh.
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    /// At the start of the commit the adjustments and reclassifications
    /// replace the company's; after the stage balances they are applied to
    /// the chart, the prior-year balances written and the voucher types
    /// normalized.
    void confirmaPropio(Sesion& s, MomentoConfirmacion momento) override;

    const OpcionesQuorvel& opciones() const { return opciones_; }

protected:
    /// Loads table `tabla` ("B9CATCUE", "B2UNIPOL", "B9SALANT") of the
    /// chosen files into `t`; throws ErrorLectura.
    virtual void cargaTabla(TablasQuorvel& t, const ArchivosImportacion& a, const std::string& tabla) = 0;
    /// True when the user gave the prior-year balances.
    virtual bool conSaldosAnteriores(const ArchivosImportacion& a) const = 0;

private:
    int id_;
    OpcionesQuorvel opciones_;
    std::vector<std::pair<std::string, Moneda>> saldosAnteriores_;

    template <class F>
    void lee(Sesion& s, const ArchivosImportacion& a, const std::vector<std::string>& tablas, F&& lector);
};

/// Link 56: each table from its own dBase file (`catalogo`, `polizas`,
/// `saldos-anterior`).
class ImportadorQuorvel4 : public ImportadorQuorvel {
public:
    explicit ImportadorQuorvel4(OpcionesQuorvel o) : ImportadorQuorvel(kEnlaceQuorvel4, o) {}

protected:
    void cargaTabla(TablasQuorvel& t, const ArchivosImportacion& a, const std::string& tabla) override;
    bool conSaldosAnteriores(const ArchivosImportacion& a) const override { return !a.saldosAnioAnterior.empty(); }
};

/// Link 57: the tables of one Access database (`base-datos`); it brings no
/// prior-year balances.
class ImportadorQuorvel5 : public ImportadorQuorvel {
public:
    explicit ImportadorQuorvel5(OpcionesQuorvel o) : ImportadorQuorvel(kEnlaceQuorvel5, o) {}

protected:
    void cargaTabla(TablasQuorvel& t, const ArchivosImportacion& a, const std::string& tabla) override;
    bool conSaldosAnteriores(const ArchivosImportacion&) const override { return false; }
};

/// The choices of a run from its options `hasta-mes` and
/// `poliza-fecha-diferente`; throws ParametroInvalido for a month out of range.
OpcionesQuorvel OpcionesDe(const ArchivosImportacion& a);

DescriptorImportador DescriptorQuorvel4();
DescriptorImportador DescriptorQuorvel5();

}  // namespace velmorant
