#pragma once
// The link of the electronic-accounting XML files (ArchivosSat.h), which
// every accounting system of the country must produce: one chart of
// accounts, the monthly trial balances the user has (optional), and one or
// more voucher files, all of one company and one fiscal year.
//
// What goes where:
//  - chart: `NumCta` through the company's account rules (blanks and the
//    company's separator out, zero padding, cut to the levels it uses) to
//    `CuentaSinSeparadores`, formatted to `Cuenta`; `Desc`; `SubCtaDe`
//    through the same rules to `CuentaAcumulativa`; `Nivel` (the code's own
//    level when the file gives none); `Natur` "D" or "A";
//  - opening balances: `SaldoIni` of the balance of month 01, when given,
//    made debit positive (a balance file signs balances by the account's
//    nature, or debit positive throughout: ConciliacionBalanza.h tells how
//    it is told apart);
//  - vouchers: `Poliza` to a voucher with its number, date and concept; its
//    type from the number by the type rule (ReglaTipoPoliza), else, in
//    version 1.1, the file's `Tipo` code, else empty. `Transaccion` to a line
//    "D" with `Debe` and a line "H" with `Haber` (one line each when both
//    are not zero; a line with neither is one "D" line of zero), the
//    account through the chart's rules, the reference its `Concepto` with
//    the line's fiscal folios after it, one blank between each;
//  - month 13: a voucher file whose `Mes` is "13" holds the closing
//    vouchers: each is marked `Poliza_Mes13` and must be dated in December.
//    A balance whose `Mes` is "13" is reconciled with them.
//  - after the vouchers, each balance given is reconciled with the books
//    read (ConciliacionBalanza.h); the findings go to the log.
//
// Before anything is read, every file is checked by its root: its kind, its
// version (1.1 or 1.3), its year, its month, one balance per month, and one
// RFC for all (the one given with --rfc, else the chart's): the company
// table holds no RFC, so without --rfc the files are only checked against
// each other. A file that fails says so by name and the run stops untouched.

#include <optional>
#include <regex>
#include <string>
#include <unordered_map>
#include <vector>

#include "importers/Descriptor.h"
#include "importers/contabilidad_electronica/ArchivosSat.h"
#include "importers/contabilidad_electronica/ConciliacionBalanza.h"

namespace velmorant {

inline constexpr int kEnlaceContabilidadElectronica = 135;

/// Where a client's system writes the voucher type inside the voucher's
/// number (`NumUnIdenPol`), as the command line's --tipo-prefijo (and the
/// form's box) gives it:
///  - empty: nowhere; the type stays empty (or the 1.1 file's `Tipo`);
///  - a number N: the first N characters ("Dr0012" with 2: "Dr", "0012");
///  - "letras": the leading letters ("Ig-12": "Ig", "12");
///  - anything else, a regular expression (ECMAScript) that the whole
///    number must match, whose first group is the type and whose second
///    group, when it has one, is the number ("^(\w+)/(\d+)$").
/// What is left as the number loses the blanks, "-", "/", "_" and "." it
/// starts with. A number the rule does not fit (too short, no match, nothing
/// left after the type) keeps itself whole and an empty type.
class ReglaTipoPoliza {
public:
    ReglaTipoPoliza() = default;
    /// Throws ParametroInvalido for a rule it cannot use.
    static ReglaTipoPoliza Desde(const std::string& regla);

    struct Partes {
        std::string tipo, numero;
    };
    Partes separa(const std::string& numero) const;
    bool vacia() const { return clase_ == Clase::Ninguna; }

private:
    enum class Clase { Ninguna, Longitud, Letras, Expresion };
    Clase clase_ = Clase::Ninguna;
    size_t largo_ = 0;
    std::regex expresion_;
};

class ImportadorContabilidadElectronica : public Importador {
public:
    /// `rfc`: the company's RFC, when the user knows it (compared without
    /// case or surrounding blanks); empty otherwise.
    ImportadorContabilidadElectronica(ReglaTipoPoliza regla, const std::string& rfc);

    int idSistema() const override { return kEnlaceContabilidadElectronica; }
    TipoImportacion tipo() const override { return TipoImportacion::ArchivoUnico; }
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;

    /// The chart, then the balances (kept for the reconciliation), and the
    /// accounts with the opening balances of the balance of month 01.
    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    /// Every voucher file in the order given, then the reconciliation.
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;

private:
    ReglaTipoPoliza regla_;
    std::string rfc_;
    // What the readers leave for the reconciliation.
    CatalogoConciliacion catalogo_;
    std::unordered_map<std::string, Moneda> saldosIniciales_;
    std::vector<BalanzaLeida> balanzas_;
    MovimientosPorMes movimientos_;

    BalanzaLeida leeBalanza(Sesion& s, const std::string& ruta);
    void leePolizas(Sesion& s, DestinoTmp& d, const std::string& ruta);
};

/// An account code of these files through the company's account rules:
/// blanks and the company's separator out, zero padding of a numeric code,
/// cut to the levels it uses. Empty stays empty.
std::string CuentaDeArchivoSat(Sesion& s, const std::string& numCta);

/// The descriptor of the link: its files, pickers, messages and options.
DescriptorImportador DescriptorContabilidadElectronica();

}  // namespace velmorant
