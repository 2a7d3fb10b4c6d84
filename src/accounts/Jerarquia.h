#pragma once
// The account tree: it exists only through `CuentaAcumulativa` (the parent's
// unseparated code), `Nivel` and `Tipo` ("A" sums its children, "D" takes
// movements) of `Cuentas`. These steps derive what a source did not give,
// check what it gave, and add the accumulating accounts that a source of
// leaves only lacks. The company chart is `Cuentas` on `Sesion::DbEmpresa`;
// the temporary chart is "CuentasTmp.Cuentas" on the same connection.

#include <string>

#include "session/Interaccion.h"
#include "session/Sesion.h"

namespace velmorant {

/// The two captions of CreaCuentasDeControl; each importer picks its own.
inline constexpr const char* kCalculandoCuentasDeControl = "Calculando Cuentas de Control...";
inline constexpr const char* kCreandoCuentasDeControl = "Creando Cuentas de Control";

/// Fills an empty `CuentaAcumulativa` of each company account above level 1
/// with its nearest existing ancestor. Nothing when CatalogoArbol is false;
/// accounts that already name a parent are left alone.
void DeterminaCuentasAcumulativas(Sesion& s, Progreso& barra);

/// The nearest ancestor of `cuenta` (level `nivel`) found in the company's
/// `Cuentas`. Climbs by changing both arguments; when it reaches level 1
/// without finding one it logs "No fue posible determinar la cuenta
/// acumulativa." for the account received and returns an empty text.
std::string BuscaCuentaAcumulativa(Sesion& s, std::string& cuenta, int& nivel);

/// Sets `Tipo` "A" on every company account named as a parent, then "D" on
/// every account still without a type. Never turns "A" back into "D".
void DeterminaTipoCuentas(Sesion& s, Progreso& barra);

/// Logs each ancestor marked "D" of a "D" account of the temporary chart;
/// the log is its only effect. Nothing when CatalogoArbol is true.
void VerificaTipoCuentas(Sesion& s, Progreso& barra);

/// Adds to the temporary chart every missing ancestor of its accounts, as
/// "CUENTA DE CONTROL" of type "A", showing `leyenda` (one of the two
/// captions above).
void CreaCuentasDeControl(Sesion& s, Progreso& barra, const std::string& leyenda);

}  // namespace velmorant
