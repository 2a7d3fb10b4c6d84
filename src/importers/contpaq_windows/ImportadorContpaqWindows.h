#pragma once
// Link 40: the dBase tables of a ContPAQ Windows company. One pick, the
// accounts table CTW10001.DBF, finds the four others in its folder:
//
//  - CTW10001, the accounts ("cuentas de registro"): `Cuenta`, `Nombre`,
//    `Tipo` (the ContPAQ account type, one letter, which gives the nature
//    through the store NatContpaq) and `SISTORIG` (0: a record carried from
//    another system, left out unless the user clears the filter); codes
//    beginning with "_" are ContPAQ's own records and never accounts;
//  - CTW10002, the parent links ("cuentas de control"): `SUBCTADE` the
//    child, `CTASUP` the parent;
//  - CTW10005, the balances by year (`EJE`): `SALDOINI` the opening balance
//    of rows of `TIPO` 1, `IMP13` the closing one (the prior-year run);
//  - CTW10004, the voucher lines: `PERIODO` (13 and 14 are the closing
//    periods), `TIPOPOL`, `NUMPOL`, `MOVTO`, `Fecha`, `Cuenta`,
//    `Referencia`, `Concepto`, `TipoMov` (0 a debit), `Importe`;
//  - CTW10009, the voucher types: `NUMERO`, `DESCRIP`.
//
// The tables are loaded into memory and read with their queries there. This
// link always works with accounts without separators and a flat chart; the
// company is set so, the voucher types replaced by CTW10009 and the data of
// earlier versions brought to the present form (the Adapta... steps) only in
// the run's commit, so a refused or cancelled run leaves the company as it
// was.

#include <array>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "importers/Descriptor.h"
#include "importers/FilasTabla.h"
#include "platform/BaseDatos.h"

namespace velmorant {

inline constexpr int kEnlaceContpaqWindows = 40;

/// The user's choices for a run.
struct OpcionesContpaqWindows {
    /// The last month whose vouchers are read, 1 to 12, or 13 for the row
    /// "Mes cierre" (all twelve by date, the closing periods with them); 0
    /// when none was given.
    int hastaMes = 0;
    /// `chkSistOrigFiltroCtas`: only accounts with `SISTORIG` not 0.
    bool filtroSistOrig = true;
    /// `chkInlcuirRef`: the line's text is its reference and its concept.
    bool incluirReferencia = false;
    /// `chkCtasRellenas` when the user set it; nothing keeps the company's.
    std::optional<bool> ctasRellenas;
    /// Natures given beforehand for account types NatContpaq does not know
    /// ("D" or "A", by type); the user is asked for the others.
    std::map<std::string, std::string> naturalezas;
};

/// The five tables of a company, by the file's role.
struct ArchivosContpaq {
    std::string cuentas;      // CTW10001
    std::string controles;    // CTW10002
    std::string saldos;       // CTW10005
    std::string movimientos;  // CTW10004
    std::string tiposPoliza;  // CTW10009
};

/// The tables beside the accounts table `rutaCatalogo` (any case of their
/// names); a role stays empty when its file is not there.
ArchivosContpaq ArchivosJuntoAlCatalogo(const std::string& rutaCatalogo);

// ------------------------------------------------------------ NatContpaq

/// "NatContpaq" in the folder "0000_AAAA" (company number, year) beside the
/// company folders.
std::string RutaNatContpaq(const Sesion& s);
/// Creates the store with its predetermined rows when it is missing.
void CreaBDNatContpaq(Sesion& s);
/// `cmdRestablecer`: every nature in force back to the predetermined one.
void RestableceNatContpaq(Sesion& s);

/// The natures by account type of the company, open for a run or the form.
class NaturalezasContpaq {
public:
    /// Opens the store, creating it first when missing.
    explicit NaturalezasContpaq(Sesion& s);
    /// The nature in force of a type; "" for a type whose nature is not
    /// known. An unknown type gets a row with no nature.
    std::string busca(const std::string& tipo);
    /// Stores the nature of a type, predetermined and in force alike.
    void fija(const std::string& tipo, const std::string& naturaleza);
    /// Every row: type, predetermined and in force.
    std::vector<std::array<std::string, 3>> filas();
    /// Sets the nature in force of a type (the grid's edit).
    void modifica(const std::string& tipo, const std::string& naturaleza);
    BaseDatos& base() { return db_; }

private:
    BaseDatos db_;
};

/// The text of `frm036ImportarContpaqDBFMsg` for an account of unknown type.
std::string TextoNaturalezaDesconocida(const std::string& cuenta, const std::string& nombre, const std::string& tipo);

// ------------------------------------------------------------ Readers

/// The tables of a run, loaded into memory, with the kinds of their fields.
struct TablasContpaq {
    BaseDatos memoria;
    std::map<std::string, std::string> rutas;
    std::map<std::string, FilasTabla::Almacenes> almacenes;  // by table

    /// Loads the file at `ruta` as table `tabla`; throws ErrorLectura.
    void carga(const std::string& tabla, const std::string& ruta);
};

/// The accounts, their parents and natures (asking for unknown types).
/// Returns the nature of each account read, by code. Throws
/// ProgramaTerminado when a type gets no nature.
std::map<std::string, std::string> ImportaCatalogoContpaq(Sesion& s, DestinoTmp& d, TablasContpaq& t,
                                                          const OpcionesContpaqWindows& o, NaturalezasContpaq& n);
/// The opening balances of the year, signed by the account's nature.
void ImportaSaldosContpaq(Sesion& s, DestinoTmp& d, TablasContpaq& t,
                          const std::map<std::string, std::string>& naturalezas);
/// The voucher lines of the year up to the month chosen.
void ImportaPolizasContpaq(Sesion& s, DestinoTmp& d, TablasContpaq& t, const OpcionesContpaqWindows& o);
/// The voucher types (type, description), for the commit.
std::vector<std::pair<std::string, std::string>> ImportaTiposPolizaContpaq(TablasContpaq& t);
/// The prior year's closing balances (`IMP13`), signed by the nature of the
/// company's account; an account the company lacks is logged and added.
void ImportaSaldosAnioAntContpaq(Sesion& s, DestinoTmp& d, TablasContpaq& t);

/// The month list of the form from CTW10004: the months whose period the
/// year has, by name, and "Mes cierre" (13) for the closing periods.
std::vector<std::pair<std::string, int>> MesesContpaq(const Sesion& s, const std::string& rutaMovimientos);

// ------------------------------------------------------------ Upgrade steps

/// The voucher numbers of an earlier version, written at one fixed width
/// (blanks or zeros in front), brought to the number itself in `Polizas`,
/// `CedAnalitica` and `CedNoDeducibles`; nothing when the first 14
/// vouchers do not share one width. Returns the rows changed.
int AdaptaLongitudPoliza(BaseDatos& db);
/// The same for the voucher types.
int AdaptaLongitudTipoPoliza(BaseDatos& db);
/// Line texts an earlier version joined as reference " - " concept, in
/// `Polizas_Detalle`, `CedAnalitica` and `CedNoDeducibles`, made as the
/// reader makes them now; nothing unless every line with a text was so
/// joined. Returns the rows changed.
int AdaptaRefyConceptoMovtoPoliza(BaseDatos& db, bool incluirReferencia);

// ------------------------------------------------------------ The importer

class ImportadorContpaqWindows : public Importador {
public:
    explicit ImportadorContpaqWindows(OpcionesContpaqWindows o) : opciones_(std::move(o)) {}

    int idSistema() const override { return kEnlaceContpaqWindows; }
    TipoImportacion tipo() const override { return TipoImportacion::ArchivoUnico; }
    ReglasDestino reglasDestino() const override;
    /// The five files in order, then the month, each in its own words.
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;
    /// The chart and its opening balances.
    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    /// The vouchers, and the voucher types for the commit.
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) override;
    /// At the commit's start: the upgrade steps, the company's settings for
    /// this link and its voucher types.
    void confirmaPropio(Sesion& s, MomentoConfirmacion momento) override;

    const OpcionesContpaqWindows& opciones() const { return opciones_; }

private:
    OpcionesContpaqWindows opciones_;
    std::vector<std::pair<std::string, std::string>> tipos_;
    bool conTipos_ = false;

    /// The session as this link reads: no separator, a flat chart, the
    /// padding chosen.
    void ajustaSesion(Sesion& s) const;
};

/// The choices from the options `hasta-mes`, `naturaleza`, and the flags;
/// throws ParametroInvalido for a month out of range or a nature that is
/// not TIPO=D or TIPO=A.
OpcionesContpaqWindows OpcionesContpaqDe(const ArchivosImportacion& a);

DescriptorImportador DescriptorContpaqWindows();

}  // namespace velmorant
