#include "accounts/Jerarquia.h"

#include <set>

#include "accounts/CodigosCuenta.h"
#include "pipeline/Catalogo.h"
#include "pipeline/Inconsistencias.h"
#include "platform/Texto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

std::string RecortaBlancos(const std::string& t) {
    size_t a = t.find_first_not_of(' ');
    if (a == std::string::npos) return "";
    return t.substr(a, t.find_last_not_of(' ') - a + 1);
}

/// The first `niveles` levels of a code, cut with the session's lengths in
/// characters (a level past the structure adds nothing).
std::string Primeros(const Sesion& s, const std::string& cuenta, int niveles) {
    size_t largo = 0;
    for (int i = 1; i <= niveles; ++i) largo += static_cast<size_t>(LongitudNivel(s, i));
    return IzquierdaCaracteres(cuenta, largo);
}

bool ExisteEnCuentas(BaseDatos& db, const std::string& cuenta) {
    return !db.escalar("SELECT 1 FROM Cuentas WHERE Cuenta = ? LIMIT 1", cuenta).esNulo();
}

}  // namespace

void DeterminaCuentasAcumulativas(Sesion& s, Progreso& barra) {
    if (!s.CatalogoArbol) return;
    barra.etiqueta("Determinando cuentas acumulativas...");
    BaseDatos& db = *s.DbEmpresa;
    Transaccion t(db);
    Consulta c = db.consulta("SELECT rowid AS Fila, Cuenta, Nivel, CuentaAcumulativa FROM Cuentas ORDER BY Cuenta, rowid");
    barra.maximo(static_cast<long>(c.cuentaRegistros()));
    long n = 0;
    for (c.primero(); !c.eof(); c.siguiente()) {
        barra.valor(++n);
        if (!SiNuloTexto(c["CuentaAcumulativa"]).empty() || c["Nivel"].entero() <= 1) continue;
        std::string cuenta = SiNuloTexto(c["Cuenta"]);
        if (cuenta.empty()) continue;
        int nivel = static_cast<int>(c["Nivel"].entero());
        std::string padre = BuscaCuentaAcumulativa(s, cuenta, nivel);
        db.ejecuta("UPDATE Cuentas SET CuentaAcumulativa = ? WHERE rowid = ?", padre, c["Fila"]);
    }
    t.confirma();
    barra.cede();
}

std::string BuscaCuentaAcumulativa(Sesion& s, std::string& cuenta, int& nivel) {
    const std::string recibida = cuenta;
    for (;;) {
        std::string padre = Primeros(s, cuenta, nivel - 1);
        if (ExisteEnCuentas(*s.DbEmpresa, padre)) return padre;
        cuenta = padre;
        nivel = CalculaNivelCuenta(s, cuenta, false);
        if (nivel == 1) {
            RegistraInconsistencia(s, "No fue posible determinar la cuenta acumulativa.", kFuenteCatalogo, "C", "", "",
                                   std::nullopt, recibida);
            return "";
        }
        if (nivel == 0) return padre;
    }
}

void DeterminaTipoCuentas(Sesion& s, Progreso& barra) {
    barra.etiqueta("Determinando tipo de cuentas ...");
    BaseDatos& db = *s.DbEmpresa;
    Transaccion t(db);
    Consulta padres = db.consulta("SELECT DISTINCT CuentaAcumulativa FROM Cuentas");
    barra.maximo(static_cast<long>(padres.cuentaRegistros()));
    long n = 0;
    for (padres.primero(); !padres.eof(); padres.siguiente()) {
        barra.valor(++n);
        db.ejecuta("UPDATE Cuentas SET Tipo = 'A' WHERE rowid = "
                   "(SELECT rowid FROM Cuentas WHERE Cuenta = ? ORDER BY rowid LIMIT 1)",
                   padres.campo(0));
    }
    db.ejecuta("UPDATE Cuentas SET Tipo = 'D' WHERE Tipo IS NULL");
    t.confirma();
    barra.cede();
}

void VerificaTipoCuentas(Sesion& s, Progreso& barra) {
    if (s.CatalogoArbol) return;
    BaseDatos& db = CuentasTmpAbierto(s);
    Consulta c = db.consulta(
        "SELECT CuentaAcumulativa FROM CuentasTmp.Cuentas WHERE Tipo = 'D' ORDER BY CuentaSinSeparadores");
    barra.maximo(static_cast<long>(c.cuentaRegistros()));
    long n = 0;
    for (c.primero(); !c.eof(); c.siguiente()) {
        barra.valor(++n);
        const std::string directo = SiNuloTexto(c["CuentaAcumulativa"]);
        // A chain that comes back on itself is walked once, not for ever.
        std::set<std::string> vistos;
        for (std::string padre = directo; !padre.empty() && vistos.insert(padre).second;) {
            Consulta fila = db.consulta(
                "SELECT Tipo, CuentaAcumulativa FROM CuentasTmp.Cuentas WHERE CuentaSinSeparadores = ? "
                "ORDER BY rowid LIMIT 1",
                padre);
            if (fila.vacia()) break;
            if (SiNuloTexto(fila["Tipo"]) == "D")
                RegistraInconsistencia(s,
                                       "La asignación del tipo de cuenta es incorrecta, la cuenta " + directo +
                                           " debe ser una cuenta acumulativa",
                                       kFuenteCatalogo, "0", "", "", std::nullopt, directo);
            padre = RecortaBlancos(SiNuloTexto(fila["CuentaAcumulativa"]));
        }
    }
    barra.cede();
}

void CreaCuentasDeControl(Sesion& s, Progreso& barra, const std::string& leyenda) {
    barra.etiqueta(leyenda);
    BaseDatos& db = CuentasTmpAbierto(s);
    Transaccion t(db);
    Consulta c = db.consulta("SELECT Cuenta FROM CuentasTmp.Cuentas ORDER BY rowid");
    barra.maximo(static_cast<long>(c.cuentaRegistros()));
    long n = 0;
    for (c.primero(); !c.eof(); c.siguiente()) {
        barra.valor(++n);
        const std::string cuenta = SiNuloTexto(c["Cuenta"]);
        for (int i = s.NumeroNiveles; i >= 1; --i) {
            std::string prefijo = Primeros(s, cuenta, i);
            if (prefijo.empty() || ExisteCuentaTmp(s, prefijo)) continue;
            db.ejecuta(
                "INSERT INTO CuentasTmp.Cuentas (Cuenta, CuentaSinSeparadores, Descripcion, CuentaAcumulativa, Tipo, "
                "Nivel) VALUES (?, ?, 'CUENTA DE CONTROL', ?, 'A', ?)",
                prefijo, prefijo, Primeros(s, prefijo, i - 1), i);
        }
    }
    t.confirma();
    barra.cede();
}

}  // namespace velmorant
