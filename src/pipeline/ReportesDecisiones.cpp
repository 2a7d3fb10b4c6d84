#include "pipeline/ReportesDecisiones.h"

#include <stdexcept>

#include "pipeline/MesesPolizas.h"
#include "pipeline/Reportes.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"

namespace velmorant {

bool MuestraMsgInconsistencias(Sesion& s) {
    if (!s.interaccion) throw std::logic_error("MuestraMsgInconsistencias sin interacción");
    const ConteoInconsistencias conteo = CuentaInconsistencias(s);
    for (;;) {
        switch (s.interaccion->decideInconsistencias(kTituloMsgInconsistencias, conteo)) {
            case DecisionInconsistencias::VerReporte: {
                // The month is handed over as it always was; the report ignores it.
                std::string mes = s.DbPolizasTmp ? std::to_string(MesesConPolizasTmp(*s.DbPolizasTmp)) : "";
                ResumenInconsistencias(s, mes, kPlantillaResumen);
                break;
            }
            case DecisionInconsistencias::Continuar:
                s.ContinuaImportacion = true;
                return true;
            case DecisionInconsistencias::Cancelar:
                s.ContinuaImportacion = false;
                MsgInformacion(s, kMensajeImportacionCancelada);
                throw ProgramaTerminado(kMensajeImportacionCancelada);
            case DecisionInconsistencias::Cerrar:
                return s.ContinuaImportacion;
        }
    }
}

void MuestraMsgInconsistenciasFin(Sesion& s) {
    if (!s.interaccion) throw std::logic_error("MuestraMsgInconsistenciasFin sin interacción");
    while (s.interaccion->decideFinal(kTituloMsgInconsistenciasFin) == DecisionFinal::VerDetalle)
        DetalleInconsistencias(s, "", kPlantillaDetalle);
}

}  // namespace velmorant
