#pragma once
// Start-up: where the base is, which company and year are in hand, and the
// session record filled from the company's row.

#include <optional>
#include <string>

#include "platform/BaseDatos.h"
#include "session/Sesion.h"

namespace velmorant {

/// What a front end may put in place of the audit product's settings.
struct OpcionesInicio {
    std::optional<std::string> base;       // replaces the stored `RutaAcceso`
    std::optional<std::string> empresa;    // replaces `EmpresaActual_NombreCorto`
    std::optional<std::string> ejercicio;  // replaces `EmpresaActual_Ejercicio`
};

inline constexpr const char* kAplicacionAuditoria = "Brevanta 13";
inline constexpr const char* kSeccionBaseDatos = "BaseDatos";
inline constexpr const char* kAplicacionPropia = "VELMORANT";
inline constexpr const char* kSeccionConfiguracion = "Configuracion";

/// "major.minor.revision" of this build.
std::string VersionDelPrograma();

/// Runs the start-up steps in order and fills `s`. Throws ProgramaTerminado
/// (after its message) when the session cannot be used: a non-numeric year,
/// or a company that cannot be opened.
void IniciaSesion(Sesion& s, const OpcionesInicio& opciones = {});

/// The folder that holds `archivo`: beside the program, else the stored
/// path, else asked for. Empty when the user refuses.
std::string ResuelveRutaBase(Sesion& s, const std::string& archivo, const std::string& seccion,
                             const std::string& clave, const std::optional<std::string>& rutaImpuesta = {});
std::string LeeRutaGuardada(Sesion& s, const std::string& seccion, const std::string& clave);
/// Saves the folder of `ruta` (through its last separator) and returns it.
std::string GuardaRuta(Sesion& s, const std::string& ruta, const std::string& seccion, const std::string& clave);
std::string EligeArchivo(Sesion& s, const std::string& filtro);

/// base + year "0000" + "_" + short name + separator.
std::string RutaEmpresa(const std::string& rutaBase, int ejercicio, const std::string& nombCorto);
/// The company database: `rutaEmpresa` + short name + "_" + year, plain.
std::string ArchivoEmpresa(const std::string& rutaEmpresa, const std::string& nombCorto, int ejercicio);

/// Opens the company database into `s.DbEmpresa` and fills the company
/// variables and the start form's title from the `Empresas` row. The schema
/// is written only when missing or older (PreparaEsquemaEmpresa). An empty
/// (0-byte) file or one without company tables is reported and left as it
/// is; engine errors go to ReportaError. Either way the procedure ends with
/// `s.DbEmpresa` empty and the variables as they were.
void AbreEmpresaActual(Sesion& s, const std::string& nombCorto, int ejercicio);

/// Levels in use: the first of Nivel12 down to Nivel1 neither Null nor 0.
int CuentaNiveles(const Consulta& fila);
/// Nivel1 .. Nivel`n`, from index 0.
std::vector<int> LeeLongitudesNivel(const Consulta& fila, int n);

std::string NotaSaldosAnioAnterior();
bool LeeImprimeFechaReporte();

}  // namespace velmorant
