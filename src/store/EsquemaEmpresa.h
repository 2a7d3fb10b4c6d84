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
void CreaEsquemaEmpresa(BaseDatos& db);

}  // namespace velmorant
