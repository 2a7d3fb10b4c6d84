#pragma once
// The two modal forms around the inconsistency logs, as logic over the front
// end's Interaccion: the decision after phase A (`frm000MsgInconsistencias`)
// and the report of lost schedule rows at the end (`frm000MsgInconsistenciasFin`).
// Their texts are here so that every front end shows the same words.

#include "session/Sesion.h"

namespace velmorant {

inline constexpr const char* kTituloMsgInconsistencias = "Mensaje de inconsistencias";
inline constexpr const char* kTextoMsgInconsistencias =
    "Se encontraron inconsistencias, ¿ Desea continuar con la importación ?";
inline constexpr const char* kCaptionVerInconsistencias = "&Ver Inconsistencias";
inline constexpr const char* kCaptionContinuar = "Con&tinuar";
inline constexpr const char* kCaptionCancelar = "&Cancelar";
inline constexpr const char* kMensajeImportacionCancelada = "La importación ha sido cancelada.";

inline constexpr const char* kTituloMsgInconsistenciasFin = "Informe - Importación";
inline constexpr const char* kGrupoMsgInconsistenciasFin = "Detalle de Inconsistencias";
inline constexpr const char* kTextoMsgInconsistenciasFin =
    "Al procesar la informacióm de cédulas analíticas marcadas como revisadas,  no fue posible mantener el trabajo "
    "realizado de algunos registros, debido a que desaparecieron dichos registros de las pólizas importadas.";
inline constexpr const char* kCaptionVerDetalle = "Ver &Detalle de Registros";
inline constexpr const char* kCaptionFinalizar = "&Finalizar";

/// The decision after phase A when the log has rows, asked with the count of
/// the rows by class. "Ver" shows the summary
/// (054) as often as asked; "Continuar" sets `ContinuaImportacion` and gives
/// true; closing the form sets nothing and gives `ContinuaImportacion` as it
/// was; "Cancelar" clears it, says "La importación ha sido cancelada." and
/// ends the program (ProgramaTerminado), leaving the temporary stores and
/// the log in place: the front end must not run BorraTemporales then.
bool MuestraMsgInconsistencias(Sesion& s);

/// The end of a run that lost schedule rows: shows the detail report (055)
/// as often as asked until the user finishes.
void MuestraMsgInconsistenciasFin(Sesion& s);

}  // namespace velmorant
