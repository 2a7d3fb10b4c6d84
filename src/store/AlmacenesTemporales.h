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

/// Full path of a store in the company folder.
std::string RutaAlmacen(const Sesion& s, const std::string& nombreBase);
/// Full path of `SelecPolizas_DetalleTmp`, in the program's data folder.
std::string RutaSelecPolizasDetalleTmp();

// Creators: each deletes an old file first (but CreaInconsisImpTmpDet, which
// creates only when missing), then creates table, fields and indexes.
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

// Open and close: attach to / detach from the company connection.
bool AbreCuentasTmp(Sesion& s);
void CierraCuentasTmp(Sesion& s);
bool AbrePolizasTmp(Sesion& s);
void CierraPolizasTmp(Sesion& s);
bool AbreInconsistencias(Sesion& s);
void CierraInconsistencias(Sesion& s);
/// Attaches any other store of the company folder under its base name.
bool AbreAlmacen(Sesion& s, const std::string& nombreBase);
void CierraAlmacen(Sesion& s, const std::string& nombreBase);

/// Opens the log in `ruta` (a company folder) by itself and counts its rows.
bool HayInconsistencias(const std::string& ruta);
bool HayInconsistenciasDet(const std::string& ruta);

/// Deletes the session's temporary stores; the two logs only when empty.
void BorraTemporales(Sesion& s);

}  // namespace velmorant
