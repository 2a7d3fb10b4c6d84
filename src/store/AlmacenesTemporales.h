#pragma once
// The temporary stores of a run: one SQLite file per table in the company
// folder (one in the program's data folder), created afresh for each run.
//
// While a run works, its stores are ATTACHed to the session's company
// connection (`Sesion::DbEmpresa`) under the alias given below, so that a
// per-row look-up is a prepared statement and phases B and C can read them
// inside the commit's transaction. The session's pointers `DbPolizasTmp`,
// `DbPolizasDetalleTmp`, `DbInconsistencias` then point at that same
// connection; they are null while the store is closed.
//
// Table names are unique across the attached files but for the chart:
// the temporary chart is table `Cuentas` of alias "CuentasTmp", so SQL must
// write "CuentasTmp.Cuentas" for it (a bare "Cuentas" is the company's).

#include <string>

#include "session/Sesion.h"
#include "store/DefinicionTablas.h"

namespace velmorant {

// Base names of the files (the engine's extension is added), which are also
// the aliases under which they are attached.
inline constexpr const char* kCuentasTmp = "CuentasTmp";
inline constexpr const char* kPolizasTmp = "Polizas_Tmp";
inline constexpr const char* kPolizasDetalleTmp = "Polizas_Detalle_Tmp";
inline constexpr const char* kInconsisImpTmp = "InconsisImpTmp";
inline constexpr const char* kInconsisImpTmpDet = "InconsisImpTmpDet";
inline constexpr const char* kSeleccionDetalleTmp = "SeleccionDetalleTmp";
inline constexpr const char* kSeleccPreviaCtasBalTmp = "SeleccPreviaCtasBalTmp";
inline constexpr const char* kCedAnaliticaTmp = "CedAnaliticaTmp";
inline constexpr const char* kSelecPolizasDetalleTmp = "SelecPolizas_DetalleTmp";
/// The adjustments and reclassifications read from an earlier audit
/// product's vouchers, kept until the commit writes them to the company.
inline constexpr const char* kAjYRclTmp = "AjYRcl_Tmp";

// Table descriptions of the stores, for callers that check a width or a
// field list (LongitudCampo).
const DefTabla& TablaCuentasTmp();
const DefTabla& TablaPolizasTmp();
const DefTabla& TablaPolizasTmpPorIdentidad();
const DefTabla& TablaPolizasDetalleTmp();
const DefTabla& TablaInconsisImpTmp();
const DefTabla& TablaInconsisImpTmpDet();
const DefTabla& TablaSeleccionDetalleTmp();
const DefTabla& TablaSeleccPreviaCtasBalTmp();
const DefTabla& TablaCedAnaliticaTmp();
const DefTabla& TablaUUIDAnaliticaTmp();
const DefTabla& TablaSelecPolizasDetalleTmp();
const DefTabla& TablaAjYRclTmp();

/// Full path of a store in the company folder.
std::string RutaAlmacen(const Sesion& s, const std::string& nombreBase);
/// Full path of `SelecPolizas_DetalleTmp`, in the program's data folder.
std::string RutaSelecPolizasDetalleTmp();

// Creators: each deletes an old file first (but CreaInconsisImpTmpDet, which
// creates only when missing, and reports its own errors with ReportaError),
// then creates table, fields and indexes with a connection of its own. A
// store attached to the company connection is detached first; when that is
// impossible (inside a transaction) the creator throws, as an old store
// still in use cannot be replaced.
void CreaCuentasTmp(Sesion& s);
void CreaPolizasTmp(Sesion& s);
/// The variant for flat-line sources: index `IdPoliza` over Poliza, Tipo, Fecha.
void CreaPolizasTmpPorIdentidad(Sesion& s);
void CreaPolizasDetalleTmp(Sesion& s);
void CreaInconsisImpTmp(Sesion& s);
void CreaInconsisImpTmpDet(Sesion& s);
void CreaSeleccionDetalleTmp(Sesion& s);
void CreaSeleccPreviaCtasBalTmp(Sesion& s);
void CreaCedAnaliticaTmp(Sesion& s);
void CreaSelecPolizasDetalleTmp(Sesion& s);
/// The store of the adjustments and reclassifications. It is never attached
/// to the company connection (the commit of a re-import attaches as many
/// stores as the engine allows): its writer and the commit open it each with
/// a connection of their own. BorraTemporales leaves it; the next run of its
/// importers replaces it.
void CreaAjYRclTmp(Sesion& s);

/// A store of the company folder (or the data folder) that the engine
/// cannot read, not a database or with damaged pages, is renamed with its
/// journal to "<nombre>_danado_AAAAMMDD_HHMMSS", so that nothing is lost and
/// the store can be made anew; the user is told. A sound, missing, busy or
/// locked store is left alone. Returns the new path, or empty.
std::string ApartaAlmacenDanado(Sesion& s, const std::string& nombreBase);

// Open and close: attach to / detach from the company connection. An open
// fails (false) when the company is not open or the file is missing or
// unreadable. DETACH is refused inside a transaction, so a close asked while
// the company connection is in one clears the session pointer at once and
// leaves the file attached; the next open, close, creator or BorraTemporales
// outside a transaction detaches it. An open of a store still attached
// reuses that attachment.
bool AbreCuentasTmp(Sesion& s);
void CierraCuentasTmp(Sesion& s);
bool AbrePolizasTmp(Sesion& s);
void CierraPolizasTmp(Sesion& s);
bool AbreInconsistencias(Sesion& s);
void CierraInconsistencias(Sesion& s);
/// Attaches any other store of the company folder (SelecPolizas_DetalleTmp:
/// of the data folder) under its base name.
bool AbreAlmacen(Sesion& s, const std::string& nombreBase);
void CierraAlmacen(Sesion& s, const std::string& nombreBase);

/// Opens the log in `ruta` (a company folder) by itself and counts its rows.
bool HayInconsistencias(const std::string& ruta);
bool HayInconsistenciasDet(const std::string& ruta);

/// Detaches and deletes the session's temporary stores; the two logs only
/// when their table is empty, so that a log with rows outlives the program.
/// SeleccPreviaCtasBalTmp is left in place. A store that cannot be detached
/// (the company connection is inside a transaction) is left too.
void BorraTemporales(Sesion& s);

}  // namespace velmorant
