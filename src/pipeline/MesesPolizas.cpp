#include "pipeline/MesesPolizas.h"

#include <string>

namespace velmorant {

namespace {

int UltimoMes(BaseDatos& db, const std::string& tabla) {
    Consulta c = db.consulta("SELECT Month(Fecha) as MesFecha FROM " + tabla +
                             " GROUP BY Month(Fecha) ORDER BY Month(Fecha) ASC");
    if (c.vacia()) return 0;
    c.ultimo();
    return static_cast<int>(c["MesFecha"].entero());
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
