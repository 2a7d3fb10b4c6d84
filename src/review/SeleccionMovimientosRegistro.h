#pragma once
// How a rule puts one movement of the store into the schedule, shared by the
// rules by amount, percentage and kind and by the random ones.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "review/Sorteo.h"
#include "session/Sesion.h"

namespace velmorant::cedula {

inline constexpr const char* kAlmacenMovimientos = "SelecPolizas_DetalleTmp";

/// One row of `SelecPolizas_DetalleTmp` as the rules read it.
struct FilaMovimiento {
    Valor idPoliza, cuenta, tipoMov, referencia, fecha, movRevisado;
    Moneda importe;
};

/// The rows of a query over the store ("SELECT * FROM SelecPolizas_DetalleTmp ...").
std::vector<FilaMovimiento> Movimientos(Consulta c);

/// False for a movement of a month already reviewed (not after
/// `UltimoMesImportado`) that the earlier schedule did not hold: a walk never
/// adds such a row. A row without a voucher date counts as usable.
bool Utilizable(const Sesion& s, const FilaMovimiento& f);

/// Registration of movements by one rule. Built at the rule's start, it
/// takes the schedule as earlier rules left it as the view in which a
/// movement already chosen is recognised; the rows the rule adds go to the
/// schedule itself and are not seen by that view.
class RegistroCedula {
public:
    /// `observa` false: rows go in without looking at the schedule
    /// (`VerObs` 0 and no remark).
    explicit RegistroCedula(Sesion& s, bool observa = true);

    /// A row ready to be added: the remark settled and the voucher data fetched.
    struct Preparado {
        const FilaMovimiento* fila = nullptr;
        int verObs = 0;
        std::string obs;
        std::string poliza, tipo, fecha;
    };
    Preparado prepara(const FilaMovimiento& f);
    void agrega(const Preparado& p, int idCriterio);
    void registra(const FilaMovimiento& f, int idCriterio) { agrega(prepara(f), idCriterio); }

private:
    Sesion& s_;
    bool observa_;
    std::int64_t ultimoIdVista_;  // the last row of the schedule when the rule began
};

/// The sample of the new months' movements of a random rule (10, 11): when
/// three or more stand to be drawn, `porcentaje` of them (halves to even) are
/// drawn, each found again by voucher, amount and text and registered, and
/// the draw is recorded in `HistorialSorteos` with what `h` brings (rule,
/// account, text, population, earlier movements). Returns how many were
/// drawn, or nothing when fewer than three stood to be drawn.
std::optional<int> SorteaMovimientosNuevos(Sesion& s, RegistroCedula& registro,
                                           const std::vector<FilaMovimiento>& nuevos, double porcentaje,
                                           RegistroSorteo& h, const FuenteSemilla& semillas);

}  // namespace velmorant::cedula
