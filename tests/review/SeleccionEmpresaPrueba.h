#pragma once
// A company for the account selection tests: schema in a private folder,
// a session filled by hand (levels 3,2,2), and short writers for accounts,
// balances, rules and selected rows.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "review/SeleccionCuentas.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

namespace velmorant::prueba {

inline Moneda M(const char* t) { return *Moneda::desdeTexto(t); }

/// Seeds 1, 2, 3 ... one per call.
inline FuenteSemillaCedula SemillasContadas() {
    auto n = std::make_shared<std::uint64_t>(0);
    return [n] { return ++*n; };
}

class EmpresaSeleccion : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    Sesion s;

    EmpresaSeleccion() {
        s.RutaEmpresa = carpeta.texto();
        s.DbEmpresa = std::make_unique<BaseDatos>(carpeta.ruta() / "ACME_2023.sqlite", BaseDatos::Modo::Crear);
        CreaEsquemaEmpresa(*s.DbEmpresa);
        s.DbEmpresa->ejecutaScript("PRAGMA synchronous = OFF");  // a test's company needs no durability
        s.NumeroNiveles = 3;
        s.LongitudesNivel = {3, 2, 2};
        s.MesesRevision = {0, 0, 0, 9, 12};  // MesPrevia3 set: the first two entries read as month 0
    }
    BaseDatos& db() { return *s.DbEmpresa; }

    /// A detail account of level 3 (or `tipo`/`nivel` as given).
    void Cuenta(const std::string& c, const std::string& nat, bool conMovtos = true, const std::string& tipo = "D",
                int nivel = 3) {
        db().ejecuta("INSERT INTO Cuentas (Cuenta, Naturaleza, Nivel, Tipo, ConMovtos, PorRevisar) "
                     "VALUES (?, ?, ?, ?, ?, 0)",
                     c, nat, nivel, tipo, conMovtos);
    }
    /// The closing balance of a month; the Balanzas row is added when missing.
    void Saldo(const std::string& c, int mes, Moneda saldo) {
        if (db().escalar("SELECT 1 FROM Balanzas WHERE Cuenta = ?", c).esNulo())
            db().ejecuta("INSERT INTO Balanzas (Cuenta) VALUES (?)", c);
        std::string col = std::string("SdoFin") + (mes < 10 ? "0" : "") + std::to_string(mes);
        db().ejecuta("UPDATE Balanzas SET " + col + " = ? WHERE Cuenta = ?", saldo, c);
    }
    void Regla(long id, const std::string& cta, int mes, Moneda saldoMayorA = {}, double porcentajeUsr = 0,
               double porcentaje = 0, const std::string& descripcion = "") {
        db().ejecuta("INSERT INTO SeleccionMaster (IdCriterio, Descripcion, CtaIntegracion, SaldoMayorA, Porcentaje, "
                     "PorcentajeUsr, TotalCta, MesRevision) VALUES (?, ?, ?, ?, ?, ?, 0, ?)",
                     id, descripcion, cta, saldoMayorA, porcentaje, porcentajeUsr, mes);
    }
    void Aleatoria(const std::string& cta, int mes, double porcentaje, const std::string& descripcion) {
        Regla(10, cta, mes, {}, 0, porcentaje, descripcion);
    }
    void Seleccionada(long id, const std::string& cuenta, int mes, Moneda saldo = {}) {
        db().ejecuta("INSERT INTO SeleccionDetalle (IdCriterio, CtaIntegracion, Cuenta, Saldo, VerObs, Obs, "
                     "MesRevision) VALUES (?, ?, ?, ?, 0, '', ?)",
                     id, cuenta.substr(0, 3), cuenta, saldo, mes);
    }

    /// The month's rows in table order, "id cuenta saldo verObs|obs".
    std::vector<std::string> Filas(int mes) {
        std::vector<std::string> r;
        Consulta c = db().consulta(
            "SELECT IdCriterio, CtaIntegracion, Cuenta, Saldo, VerObs, Obs FROM SeleccionDetalle "
            "WHERE MesRevision = ? ORDER BY rowid",
            mes);
        for (c.primero(); !c.eof(); c.siguiente()) {
            EXPECT_EQ(c["CtaIntegracion"].texto(), c["Cuenta"].texto().substr(0, 3));
            r.push_back(c["IdCriterio"].texto() + " " + c["Cuenta"].texto() + " " + c["Saldo"].moneda().texto() +
                        " " + c["VerObs"].texto() + "|" + c["Obs"].texto());
        }
        return r;
    }
    /// "Porcentaje|TotalCta|Descripcion" of the first rule of that number, account and month.
    std::string Figuras(long id, const std::string& cta, int mes) {
        Consulta c = db().consulta(
            "SELECT Porcentaje, TotalCta, Descripcion FROM SeleccionMaster WHERE IdCriterio = ? AND "
            "CtaIntegracion = ? AND MesRevision = ? ORDER BY rowid LIMIT 1",
            id, cta, mes);
        if (c.vacia()) return "(no existe)";
        char p[32];
        std::snprintf(p, sizeof p, "%g", c["Porcentaje"].real());
        return std::string(p) + "|" + c["TotalCta"].moneda().texto() + "|" + c["Descripcion"].texto();
    }
    std::string Descripcion(long id, const std::string& cta, int mes) {
        return db()
            .escalar("SELECT Descripcion FROM SeleccionMaster WHERE IdCriterio = ? AND CtaIntegracion = ? AND "
                     "MesRevision = ? ORDER BY rowid LIMIT 1",
                     id, cta, mes)
            .texto();
    }
    long Sorteos() { return static_cast<long>(db().escalar("SELECT count(*) FROM HistorialSorteos").entero()); }

    /// The rebuild as the run drives it: stores attached first, then every
    /// review month inside the run's transaction.
    void ReconstruyeComoLaImportacion(const FuenteSemillaCedula& semillas = SemillasContadas()) {
        PreparaAlmacenesSeleccion(s);
        Transaccion t(db());
        ActualizaTotalCtaSeleccion(s, s.MesesRevision.back());
        ReconstruyeSeleccionesDeRevision(s, semillas);
        t.confirma();
    }
};

}  // namespace velmorant::prueba
