#include "pipeline/Catalogo.h"

#include <stdexcept>

#include "session/Funciones.h"

#include "store/AlmacenesTemporales.h"

namespace velmorant {

BaseDatos& CuentasTmpAbierto(Sesion& s) {
    if (!s.DbCuentasTmp) throw std::logic_error("La base temporal de cuentas no está abierta");
    return *s.DbCuentasTmp;
}

// --------------------------------------------------------- Existence tests

bool ExisteCuenta(Sesion& s, const std::string& cuenta) {
    return !s.DbEmpresa->escalar("SELECT Cuenta FROM main.Cuentas WHERE Cuenta = ? LIMIT 1", cuenta).esNulo();
}

bool ExisteCuentaConsulta(Sesion& s, const std::string& cuenta) {
    return !s.DbEmpresa->escalar("SELECT 1 FROM main.Cuentas WHERE Cuenta = ? LIMIT 1", cuenta).esNulo();
}

bool EsCuentaAcumulativa(Sesion& s, const std::string& cuenta) {
    Consulta c = s.DbEmpresa->consulta("SELECT Tipo FROM main.Cuentas WHERE Cuenta = ? ORDER BY rowid LIMIT 1", cuenta);
    return !c.vacia() && SiNuloTexto(c["Tipo"]) == "A";
}

std::string TipoPorReferencia(BaseDatos& db, const std::string& cuenta, const std::string& tabla) {
    bool esPadre =
        !db.escalar("SELECT 1 FROM " + tabla + " WHERE CuentaAcumulativa = ? LIMIT 1", cuenta).esNulo();
    return esPadre ? "A" : "D";
}

bool ExisteCuentaTmp(Sesion& s, const std::string& cuenta) {
    if (s.DbCuentasTmp)
        return !s.DbCuentasTmp->escalar("SELECT 1 FROM CuentasTmp.Cuentas WHERE CuentaSinSeparadores = ? LIMIT 1", cuenta)
                    .esNulo();
    BaseDatos solo(RutaAlmacen(s, kCuentasTmp), BaseDatos::Modo::SoloLectura);
    return !solo.escalar("SELECT 1 FROM Cuentas WHERE CuentaSinSeparadores = ? LIMIT 1", cuenta).esNulo();
}

}  // namespace velmorant
