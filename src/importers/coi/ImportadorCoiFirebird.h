#pragma once
// Link 129, COI 7 and COI 8: the client's company database, a Firebird
// ".FDB" file, opened in this process through the embedded engine
// (platform/fuentes/BaseFirebird.h): no server and, for a local file, no
// password; an empty user is "SYSDBA".
//
// The tables of one fiscal year are named by a stem (`CUENTAS`, `SALDOS`,
// `POLIZAS`, `AUXILIAR`), the last two digits of the year and, in COI 7,
// the two digits of the company that end the file's name before its "."
// ("EMPRE03.FDB", 2024: `CUENTAS2403`); COI 8 leaves those out (`CUENTAS24`).
//
// What goes where:
//  - chart (`CUENTAS`): `NUM_CTA` cut to `NIVEL` levels (CuentaHastaNivel),
//    formatted, and only a code that fits the company's format is kept;
//    `NOMBRE` the description, `NATURALEZA` 0 debtor "D", anything else
//    creditor "A", `NIVEL`;
//  - opening balances (`SALDOS`): `INICIAL` onto the chart's account with
//    the same `NUM_CTA`; a balance that is no number counts as 0;
//  - vouchers, in two passes: the heads of `POLIZAS` of the year up to the
//    month chosen (`EJERCICIO`, `PERIODO`, `FECHA_POL`, `NUM_POLIZ`,
//    `TIPO_POLI`, `CONCEP_PO`), then the lines of `AUXILIAR` by `NUM_PART`,
//    each finding its head by number, type and date (`DEBE_HABER`,
//    `NUM_CTA`, `MONTOMOV`). Period 13 holds the closing vouchers: dated
//    31/12 of the year and flagged `Poliza_Mes13`. A line whose code does
//    not fit the company's format is left out.

#include <map>
#include <string>

#include "importers/Descriptor.h"

namespace velmorant {

class BaseFirebird;

inline constexpr int kEnlaceCoiFirebird = 129;

struct OpcionesCoiFirebird {
    /// The last period whose vouchers are read, 1 to 13; 0 when none was given.
    int hastaMes = 0;
    /// COI 8: table names without the company digits.
    bool version8 = false;
    std::string usuario;     // empty: "SYSDBA"
    std::string contrasena;  // empty: the engine's default
};

/// The names of the year's tables for one stem.
struct TablasCoi {
    std::string cuentas, saldos, polizas, auxiliar;
};

/// The table names of database `ruta` for fiscal year `ejercicio`. Throws
/// ParametroInvalido when a COI 7 file's name does not end in two digits.
TablasCoi NombresTablasCoi(const std::string& ruta, int ejercicio, bool version8);

/// The chart and, when the database has them, the opening balances. Returns
/// the formatted code of each account kept, by its `NUM_CTA`.
std::map<std::string, std::string> ImportaCatalogoCoi(Sesion& s, DestinoTmp& d, BaseFirebird& base,
                                                      const TablasCoi& t);
void ImportaSaldosInicialesCoi(Sesion& s, DestinoTmp& d, BaseFirebird& base, const TablasCoi& t,
                               const std::map<std::string, std::string>& cuentas);
/// The vouchers of the session's year up to period `hastaMes` (1..13).
void ImportaPolizasCoi(Sesion& s, DestinoTmp& d, BaseFirebird& base, const TablasCoi& t, int hastaMes);

class ImportadorCoiFirebird : public Importador {
public:
    explicit ImportadorCoiFirebird(OpcionesCoiFirebird o) : o_(std::move(o)) {}
    int idSistema() const override { return kEnlaceCoiFirebird; }
    TipoImportacion tipo() const override { return TipoImportacion::ArchivoUnico; }
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;
    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;

private:
    OpcionesCoiFirebird o_;
};

/// The user's choices; throws ParametroInvalido for a month out of range.
OpcionesCoiFirebird OpcionesCoiFirebirdDe(const ArchivosImportacion& a);

/// The descriptor of link 129.
DescriptorImportador DescriptorCoiFirebird();

}  // namespace velmorant
