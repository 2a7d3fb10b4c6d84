#pragma once
// The command-line program as the tests that drive it run it: its settings
// and its data in the test's folder, as on a machine of its own.

#include <gtest/gtest.h>

#include <string>

#include "support/Entorno.h"

namespace velmorant::prueba {

/// Runs the program with `argumentos`; `entorno` (variables) goes before it.
inline ResultadoProceso CorreCli(const CarpetaTemporal& dir, const std::string& argumentos,
                                 const std::string& entorno = "") {
    return CorreProceso("XDG_CONFIG_HOME='" + dir.texto() + "config' VELMORANT_DATOS='" + dir.texto() + "datos' " +
                        entorno + " '" VELMORANT_CLI "' " + argumentos);
}

/// A base in `dir` + "base" with the company DEMO of 2025 (codes 999-99-99
/// in levels of 3, 2 and 2, a tree), opened, and the delimited layout "T" of
/// link 82 on the columns the command-line tests write (account,
/// description, nature, balance; number, type, day, month, year, account,
/// reference, concept, debit, credit).
inline void PreparaEmpresaDemoCli(const CarpetaTemporal& dir) {
    const std::string base = dir.texto() + "base";
    ASSERT_EQ(CorreCli(dir, "base crear '" + base + "'").estado, 0);
    auto r = CorreCli(dir, "--base '" + base +
                               "' empresa crear --nombre-corto DEMO --nombre Demo --ejercicio 2025 --formato 999-99-99 "
                               "--separador - --niveles 3,2,2 --cat-arbol");
    ASSERT_EQ(r.estado, 0) << r.salida;
    ASSERT_EQ(CorreCli(dir, "--base '" + base + "' empresa abrir DEMO 2025").estado, 0);
    r = CorreCli(dir, "configuracion crear T --enlace 82 --si PIniCuenta=1 PIniDescripcion=2 PIniNaturaleza=3 "
                      "PIniSdoIni=4 PIniNumPol=1 PIniTipo=2 PIniDia=3 PIniMes=4 PIniAnio=5 PIniCtaPol=6 PIniRef=7 "
                      "PIniConcept=8 PIniCargo=9 PIniAbono=10");
    ASSERT_EQ(r.estado, 0) << r.salida;
}

}  // namespace velmorant::prueba
