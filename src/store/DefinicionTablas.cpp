#include "store/DefinicionTablas.h"

namespace velmorant {

std::string NombreIndiceSqlite(const std::string& tabla, const std::string& indice) { return tabla + "_" + indice; }

static std::string TipoSql(TipoCampo t) {
    switch (t) {
        case TipoCampo::Texto:
        case TipoCampo::Memo:
            return "TEXT COLLATE NOCASE";
        case TipoCampo::Fecha:
            return "TEXT";
        case TipoCampo::Single:
            return "REAL";
        case TipoCampo::Contador:
            return "INTEGER PRIMARY KEY AUTOINCREMENT";
        default:
            return "INTEGER";  // Long, Integer, Byte, Currency (ten-thousandths), Boolean (-1/0)
    }
}

std::string DefinicionColumna(const DefCampo& c) {
    std::string r = "\"" + c.nombre + "\" " + TipoSql(c.tipo);
    if (!c.predeterminado.empty()) r += " DEFAULT " + c.predeterminado;
    return r;
}

void CreaTabla(BaseDatos& db, const DefTabla& tabla, const std::string& esquema) {
    std::string sql = "CREATE TABLE IF NOT EXISTS \"" + esquema + "\".\"" + tabla.nombre + "\" (";
    const DefIndice* primario = nullptr;
    for (auto& i : tabla.indices)
        if (i.primario) primario = &i;
    for (size_t i = 0; i < tabla.campos.size(); ++i) sql += (i ? ", " : "") + DefinicionColumna(tabla.campos[i]);
    if (primario) {
        sql += ", PRIMARY KEY (";
        for (size_t i = 0; i < primario->campos.size(); ++i) sql += (i ? ", \"" : "\"") + primario->campos[i] + "\"";
        sql += ")";
    }
    sql += ")";
    db.ejecutaScript(sql);
    for (auto& indice : tabla.indices) {
        if (indice.primario) continue;
        std::string s = "CREATE INDEX IF NOT EXISTS \"" + esquema + "\".\"" +
                        NombreIndiceSqlite(tabla.nombre, indice.nombre) + "\" ON \"" + tabla.nombre + "\" (";
        for (size_t i = 0; i < indice.campos.size(); ++i) s += (i ? ", \"" : "\"") + indice.campos[i] + "\"";
        db.ejecutaScript(s + ")");
    }
}

int LongitudCampo(const DefTabla& tabla, const std::string& campo) {
    for (auto& c : tabla.campos)
        if (c.nombre == campo) return c.longitud;
    return 0;
}

}  // namespace velmorant
