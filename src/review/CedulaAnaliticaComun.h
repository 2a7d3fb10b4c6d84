#pragma once
// Pieces shared by the schedule's rebuild and its restoration: the movement
// key by which a schedule row is found again, and the renewal of a store
// that may still be attached to the company connection.

#include <initializer_list>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/BaseDatos.h"
#include "session/Sesion.h"

namespace velmorant::cedula {

/// A movement's identity across imports: voucher number, type and date,
/// account, line text, kind and amount. `IdPoliza` is no part of it, since a
/// re-import numbers the vouchers anew. Built from a row with every Null read
/// as the system reads it: texts as empty, the amount as 0, a blank date as
/// 1 January 1900.
struct ClaveMovimiento {
    std::string poliza, tipo, fecha, cuenta, referencia, tipoMov;
    Moneda importe;
};

/// The key of the current row of `c` (fields `Poliza` ... `Importe`).
ClaveMovimiento ClaveDe(const Consulta& c);

/// The rows of a recordset by movement key, so that a search per saved row
/// costs no scan of a schedule or a store that may hold tens of thousands of
/// rows of one account. Keys compare as the SQL of the system compares them:
/// texts without case (the engine's NOCASE, ASCII letters), the date as
/// stored, the amount exactly; a row with a Null in its key matches nothing.
class IndiceMovimientos {
public:
    /// `c` holds the seven key fields; positions are those of its rows.
    explicit IndiceMovimientos(const Consulta& c);
    /// Positions of the rows with the key, in the recordset's order.
    const std::vector<size_t>& busca(const ClaveMovimiento& k) const;

private:
    std::unordered_map<std::string, std::vector<size_t>> filas_;
};

/// The key's seven values followed by `extra`, for binding.
std::vector<Valor> ParametrosClave(const ClaveMovimiento& k, std::initializer_list<Valor> extra = {});

/// A query whose parameters are given as a list.
Consulta ConsultaCon(BaseDatos& db, const std::string& sql, const std::vector<Valor>& parametros);

/// The text without leading and trailing blanks (blanks only, not tabs).
std::string Recorta(const std::string& t);

/// Plain number-to-text conversion: no grouping, "." as decimal sign, no
/// trailing zeros ("12.5", "0").
std::string TextoNumero(double v);

/// True when `alias` is attached to the company connection.
bool Adjunto(Sesion& s, const std::string& alias);

/// Makes a store fresh and attaches it: created anew by `crea`, or, when it
/// is already attached inside the caller's transaction (where it cannot be
/// detached and replaced), emptied table by table. Throws when the new store
/// cannot be opened.
void RenuevaAlmacen(Sesion& s, const std::string& alias, void (*crea)(Sesion&),
                    std::initializer_list<const char*> tablas);

}  // namespace velmorant::cedula
