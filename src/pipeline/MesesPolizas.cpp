#include "pipeline/MesesPolizas.h"

#include <string>

namespace velmorant {

namespace {

// The last of the months "GROUP BY Month(Fecha) ORDER BY Month(Fecha)"
// lists is their maximum (a Null month sorts first and is no maximum unless
// it is the only one): one pass without the grouping's sort.
int UltimoMes(BaseDatos& db, const std::string& tabla) {
    return static_cast<int>(db.escalar("SELECT MAX(Month(Fecha)) FROM " + tabla).entero());
}

}  // namespace

int MesesConPolizas(BaseDatos& db) { return UltimoMes(db, "Polizas"); }
int MesesConPolizasTmp(BaseDatos& db) { return UltimoMes(db, "Polizas_Tmp"); }

int PrimerMesConPolizas(BaseDatos& db) {
    Consulta c = db.consulta("SELECT Month(Fecha) as MesFecha FROM Polizas GROUP BY Month(Fecha) ORDER BY Month(Fecha) ASC");
    if (c.vacia()) return 0;
    return static_cast<int>(c["MesFecha"].entero());
}

}  // namespace velmorant
