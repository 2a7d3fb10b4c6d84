#pragma once
// The persistent stores shared with the audit product: the company table
// (`Empresas`), the link catalogue (`Enlaces`) and the company database,
// one file per company and year. The audit product normally creates them;
// here the program creates them on demand, idempotently.

#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "store/DefinicionTablas.h"

namespace velmorant {

/// Base names of the stores; the engine's extension is added by RutaBaseDatos.
inline constexpr const char* kArchivoEmpresas = "Empresas";
inline constexpr const char* kArchivoEnlaces = "VELMORANT";
/// Alias under which a run's commit attaches `Empresas` to the company
/// connection, so that both files change in one transaction.
inline constexpr const char* kAliasEmpresasRun = "BaseEmpresas";

/// `carpeta` + `nombreBase` + the engine's extension.
std::string RutaBaseDatos(const std::string& carpeta, const std::string& nombreBase);

const DefTabla& TablaEmpresas();
const DefTabla& TablaEnlaces();
/// Every table of the company database, in creation order.
const std::vector<DefTabla>& TablasEmpresa();
/// One table of the company database by name; throws if unknown.
const DefTabla& TablaEmpresa(const std::string& nombre);

void CreaEsquemaEmpresas(BaseDatos& db);
void CreaEsquemaEnlaces(BaseDatos& db);

/// Version of the company schema this program writes, kept in the file's
/// header (PRAGMA user_version). 0 is a company made before versions were
/// kept; 1 gives every money column its default of 0, as the audit
/// product's Currency fields have, so that a row added without an amount
/// holds 0 and not Null; 2 adds the import history.
inline constexpr int kVersionEsquemaEmpresa = 2;

/// Creates the company tables that are missing and brings older ones up to
/// this version (missing columns added; a table whose money columns lack
/// their default rebuilt with it, its rows, indexes and counter kept, and,
/// in `Cuentas` and `Balanzas`, the Null amounts left by the missing default
/// set to 0), then records the version. One transaction; idempotent.
void CreaEsquemaEmpresa(BaseDatos& db);

enum class EstadoEsquema {
    Vigente,      // already at this version or newer: nothing was written
    Actualizado,  // older: brought up to this version
    SinTablas,    // the file holds no company table: not a company database
};

/// What a session does with a company database it opens: nothing when its
/// schema is current (a reading command takes no write lock), the update of
/// CreaEsquemaEmpresa when it is older. A file without any company table is
/// left as it is, for the caller to report.
EstadoEsquema PreparaEsquemaEmpresa(BaseDatos& db);

}  // namespace velmorant
