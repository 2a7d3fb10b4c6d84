#pragma once
// "Month(Fecha)=?" over a table with an index on Fecha, answered through that
// index instead of a walk of the whole table for every month. The dates
// Month reads are ISO texts, so one month's dates of year AAAA all lie in
// ["AAAA-MM-", "AAAA-MM."): the condition keeps Month(Fecha)=? as it is and
// adds those ranges for every year between the table's first and last date.
// It picks exactly the rows the month's condition alone picks; the engine
// reads only the month's. A table whose dates do not start with a year, or
// that spans more years than is worth a range each, keeps the plain
// condition.
//
// FiltroDeMesTmp gives the run's voucher store the index it needs first.

#include <cstdio>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"

namespace velmorant {

struct FiltroMes {
    std::string condicion;       // to be ANDed with the rest of a WHERE
    std::vector<Valor> valores;  // its parameters, in order
};

namespace detalle_mes {

/// The year a date text starts with, -1 when its first four characters are
/// not digits.
inline int AnioInicial(const Valor& v) {
    if (v.esNulo()) return -1;
    const std::string t = v.texto();
    if (t.size() < 4) return -1;
    int anio = 0;
    for (size_t i = 0; i < 4; ++i) {
        if (t[i] < '0' || t[i] > '9') return -1;
        anio = anio * 10 + (t[i] - '0');
    }
    return anio;
}

}  // namespace detalle_mes

/// `tabla` is a name of this program's own, not a value from outside.
inline FiltroMes FiltroDeMes(BaseDatos& db, const std::string& tabla, int mes) {
    FiltroMes f{"Month(Fecha)=?", {Valor(mes)}};
    if (mes < 1 || mes > 12) return f;
    // Every text a valid date can be sorts between these two. Each end is a
    // query of its own: one seek of the index each, where MIN and MAX
    // together would walk all of it.
    const std::string extremo = "SELECT Fecha FROM " + tabla + " WHERE Fecha >= ? AND Fecha < ? ORDER BY Fecha ";
    const Valor primera = db.escalar(extremo + "ASC LIMIT 1", "0000", "9999.");
    if (primera.esNulo()) return f;
    const Valor ultima = db.escalar(extremo + "DESC LIMIT 1", "0000", "9999.");
    const int desde = detalle_mes::AnioInicial(primera), hasta = detalle_mes::AnioInicial(ultima);
    constexpr int kMaximoAnios = 20;
    if (desde < 0 || hasta < desde || hasta - desde >= kMaximoAnios) return f;
    f.condicion += " AND (";
    for (int anio = desde; anio <= hasta; ++anio) {
        char inicio[16], fin[16];
        std::snprintf(inicio, sizeof inicio, "%04d-%02d-", anio, mes);
        std::snprintf(fin, sizeof fin, "%04d-%02d.", anio, mes);
        f.condicion += std::string(anio == desde ? "" : " OR ") + "(Fecha >= ? AND Fecha < ?)";
        f.valores.emplace_back(std::string(inicio));
        f.valores.emplace_back(std::string(fin));
    }
    f.condicion += ")";
    return f;
}

/// The same over a table of this run's stores, which are made without an
/// index on Fecha: one is added, once, to the store that holds `tabla` (the
/// store itself is rebuilt by the next run). The rows are those of the
/// plain condition either way.
inline FiltroMes FiltroDeMesTmp(BaseDatos& db, const std::string& tabla, int mes) {
    Consulta bases = db.consulta("PRAGMA database_list");
    for (bases.primero(); !bases.eof(); bases.siguiente()) {
        const std::string esquema = bases["name"].texto();
        if (db.escalar("SELECT 1 FROM \"" + esquema + "\".sqlite_master WHERE type='table' AND name=?", tabla).esNulo())
            continue;
        const std::string indice = tabla + "_Fecha";
        if (db.escalar("SELECT 1 FROM \"" + esquema + "\".sqlite_master WHERE type='index' AND name=?", indice)
                .esNulo())
            db.ejecutaScript("CREATE INDEX \"" + esquema + "\".\"" + indice + "\" ON \"" + tabla + "\" (Fecha)");
        break;
    }
    return FiltroDeMes(db, tabla, mes);
}

/// The kept statement of `sql`, reset, with the parameters given as a list:
/// for reading its rows one by one (paso, columna), then reinicia.
inline Sentencia& PreparaCon(BaseDatos& db, const std::string& sql, const std::vector<Valor>& valores) {
    Sentencia& st = db.preparada(sql);
    st.reinicia();
    for (size_t i = 0; i < valores.size(); ++i) st.liga(static_cast<int>(i) + 1, valores[i]);
    return st;
}

/// A query whose parameters are given as a list.
inline Consulta ConsultaCon(BaseDatos& db, const std::string& sql, const std::vector<Valor>& valores) {
    return Consulta(PreparaCon(db, sql, valores));
}

/// The last voucher, by IdPoliza, of `tabla` under `condicion`: its Poliza,
/// Tipo and Fecha, for the progress label of a step that takes a month at
/// once, the label a walk voucher by voucher would have ended on. Empty
/// when the month has none.
inline Consulta UltimaPolizaDelMes(BaseDatos& db, const std::string& tabla, const std::string& condicion,
                                   const std::vector<Valor>& valores) {
    return ConsultaCon(db,
                       "SELECT Poliza, Tipo, Fecha FROM " + tabla + " WHERE " + condicion +
                           " ORDER BY IdPoliza DESC, rowid DESC LIMIT 1",
                       valores);
}

/// A statement whose parameters are given as a list; the rows it changed.
inline int EjecutaCon(BaseDatos& db, const std::string& sql, const std::vector<Valor>& valores) {
    return PreparaCon(db, sql, valores).ejecuta();
}

}  // namespace velmorant
