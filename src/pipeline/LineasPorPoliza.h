#pragma once
// The lines of a month's vouchers, read in one query instead of one query
// per voucher: the rows come ordered by voucher and, within a voucher, in
// table order, and each voucher's lines are found by its IdPoliza. A walk
// over the vouchers then sees, for each, exactly the rows a per-voucher
// "WHERE IdPoliza=? ORDER BY rowid" would give it.

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>

#include "platform/BaseDatos.h"

namespace velmorant {

/// The IdPoliza values of a recordset's column as a JSON array, for a
/// query's "IdPoliza IN (SELECT value FROM json_each(?))": the lines of the
/// vouchers already read are then found by index, with no second pass over
/// the vouchers' table. Empty when some value is neither Null nor an integer
/// (the caller then repeats the vouchers' condition instead).
inline std::string ListaDeIds(Consulta& polizas, int columna) {
    std::string lista = "[";
    for (polizas.primero(); !polizas.eof(); polizas.siguiente()) {
        const Valor& id = polizas.campo(columna);
        if (id.esNulo()) continue;
        if (!id.esEntero()) return "";
        if (lista.size() > 1) lista += ',';
        lista += std::to_string(id.entero());
    }
    polizas.primero();
    return lista + "]";
}

class LineasPorPoliza {
public:
    /// `consulta` must return the lines ordered by IdPoliza and then rowid,
    /// with IdPoliza as its first column.
    explicit LineasPorPoliza(Consulta consulta) : lineas_(std::move(consulta)) {
        for (lineas_.primero(); !lineas_.eof(); lineas_.siguiente()) {
            const Valor& id = lineas_.campo(0);
            if (id.esNulo()) continue;
            auto [it, nuevo] = rangos_.try_emplace(id.entero(), lineas_.posicion(), lineas_.posicion() + 1);
            if (!nuevo) it->second.second = lineas_.posicion() + 1;
        }
    }

    /// Places the cursor on the voucher's first line; false when it has none.
    /// The lines are walked with linea() and siguiente() while quedan().
    bool de(const Valor& idPoliza) {
        fin_ = 0;
        if (idPoliza.esNulo()) return false;
        auto it = rangos_.find(idPoliza.entero());
        if (it == rangos_.end()) return false;
        lineas_.mueveA(it->second.first);
        fin_ = it->second.second;
        return true;
    }
    bool quedan() const { return lineas_.posicion() < fin_; }
    void siguiente() { lineas_.siguiente(); }
    const Consulta& linea() const { return lineas_; }

private:
    Consulta lineas_;
    std::unordered_map<std::int64_t, std::pair<size_t, size_t>> rangos_;
    size_t fin_ = 0;
};

}  // namespace velmorant
