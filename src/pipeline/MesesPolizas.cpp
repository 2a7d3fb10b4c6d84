#include "pipeline/MesesPolizas.h"

#include "pipeline/MesPorIndice.h"

namespace velmorant {

namespace {

std::bitset<13> MesesLeyendoTodo(BaseDatos& db, const std::string& tabla) {
    std::bitset<13> meses;
    Consulta c = db.consulta("SELECT DISTINCT Month(Fecha) FROM " + tabla + " WHERE Month(Fecha) BETWEEN 1 AND 12");
    for (c.primero(); !c.eof(); c.siguiente()) meses.set(static_cast<size_t>(c.campo(0).entero()));
    return meses;
}

}  // namespace

std::bitset<13> MesesConFilas(BaseDatos& db, const std::string& tabla) {
    std::bitset<13> meses;
    for (int mes = 1; mes <= 12; ++mes) {
        const FiltroMes delMes =
            tabla == "Polizas_Tmp" ? FiltroDeMesTmp(db, tabla, mes) : FiltroDeMes(db, tabla, mes);
        // The plain condition alone would read the whole table each month.
        if (delMes.valores.size() < 2) return MesesLeyendoTodo(db, tabla);
        if (!ConsultaCon(db, "SELECT 1 FROM " + tabla + " WHERE " + delMes.condicion + " LIMIT 1", delMes.valores)
                 .vacia())
            meses.set(static_cast<size_t>(mes));
    }
    return meses;
}

int UltimoMesDe(const std::bitset<13>& meses) {
    for (int mes = 12; mes >= 1; --mes)
        if (meses.test(static_cast<size_t>(mes))) return mes;
    return 0;
}

int MesesConPolizas(BaseDatos& db) { return UltimoMesDe(MesesConFilas(db, "Polizas")); }
int MesesConPolizasTmp(BaseDatos& db) { return UltimoMesDe(MesesConFilas(db, "Polizas_Tmp")); }

int PrimerMesConPolizas(BaseDatos& db) {
    Consulta c = db.consulta("SELECT Month(Fecha) as MesFecha FROM Polizas GROUP BY Month(Fecha) ORDER BY Month(Fecha) ASC");
    if (c.vacia()) return 0;
    return static_cast<int>(c["MesFecha"].entero());
}

}  // namespace velmorant
