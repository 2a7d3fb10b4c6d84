#include "review/SeleccionCuentasRegistro.h"

#include "review/SeleccionCuentas.h"
#include "session/Funciones.h"

namespace velmorant {

std::string ClaveCuenta(const std::string& cuenta) {
    std::string r = cuenta;
    for (char& c : r)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return r;
}

int LongitudIntegracion(const Sesion& s) { return s.LongitudesNivel.empty() ? 0 : s.LongitudesNivel[0]; }

std::string CandidatasDeIntegracion(bool contraNat) {
    return std::string(" FROM SeleccionDetalleTmp WHERE [Left](Cuenta, ?) = ? COLLATE NOCASE AND ") +
           (contraNat ? "SaldoContraNat" : "NOT SaldoContraNat");
}

RegistroSeleccion::RegistroSeleccion(Sesion& s, const std::string& ctaIntegracion, int mes) : s_(s), mes_(mes) {
    Consulta c = s.DbEmpresa->consulta(
        "SELECT Cuenta, IdCriterio, CtaIntegracion, VerObs FROM SeleccionDetalle "
        "WHERE CtaIntegracion = ? AND MesRevision = ? ORDER BY rowid",
        ctaIntegracion, mes);
    for (c.primero(); !c.eof(); c.siguiente())
        vista_.emplace(ClaveCuenta(SiNuloTexto(c["Cuenta"])),
                       FilaVista{static_cast<long>(SiNuloCero(c["IdCriterio"]).entero()),
                                 SiNuloTexto(c["CtaIntegracion"]), static_cast<int>(SiNuloCero(c["VerObs"]).entero())});
}

RegistroSeleccion::Marca RegistroSeleccion::marca(const std::string& cuenta) const {
    Marca m;
    auto [desde, hasta] = vista_.equal_range(ClaveCuenta(cuenta));
    for (auto it = desde; it != hasta; ++it) {
        if (it->second.verObs == 1) continue;
        m.yaSeleccionada = true;
        m.verObs = 1;
        m.nombreCriterio = NombreCriterioCuentas(s_, it->second.idCriterio, it->second.ctaIntegracion);
        break;
    }
    return m;
}

void RegistroSeleccion::registra(const std::string& cuenta, Moneda saldo, long idCriterio, const Marca& marca) {
    BaseDatos& db = *s_.DbEmpresa;
    std::string obs;
    bool enTabla = !db.escalar("SELECT 1 FROM SeleccionDetalle WHERE Cuenta = ? AND MesRevision = ? LIMIT 1", cuenta,
                               mes_)
                        .esNulo();
    if (enTabla && marca.yaSeleccionada) obs = kYaSeleccionada + marca.nombreCriterio;
    db.ejecuta(
        "INSERT INTO SeleccionDetalle (Saldo, IdCriterio, CtaIntegracion, Cuenta, VerObs, Obs, MesRevision) "
        "VALUES (?, ?, [Left](?, ?), ?, ?, ?, ?)",
        saldo, idCriterio, cuenta, LongitudIntegracion(s_), cuenta, marca.verObs, obs, mes_);
    db.ejecuta(
        "UPDATE Cuentas SET PorRevisar = -1 "
        "WHERE rowid = (SELECT rowid FROM Cuentas WHERE Cuenta = ? ORDER BY rowid LIMIT 1)",
        cuenta);
}

}  // namespace velmorant
