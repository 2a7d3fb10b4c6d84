#pragma once
// A company with vouchers, rules and a reviewed schedule, built by hand, for
// the tests of movement selection and schedule restoration. A "re-import"
// replaces the vouchers with new ones numbered anew, as a run does.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "review/CedulaAnalitica.h"
#include "review/SeleccionMovimientos.h"
#include "session/Sesion.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

namespace velmorant::prueba {

/// One voucher line with its voucher's identity. `fecha` is ISO.
struct Mov {
    std::string poliza, tipo, fecha, cuenta, tipoMov, importe, referencia;
};

/// The reviewer's work on one schedule row.
struct Trabajo {
    std::string marca1, marca7, observaciones, sugerencias, infoAdd1, infoAdd2, notas, refModificada;
    bool aplicaIVA = false;
    int porIVA = 0;
    std::string iva = "0";
    bool aplicaRetISR = false;
    double tasaRetISR = 0;
    std::string impteRetISR = "0";
    bool aplicaRetIVA = false;
    double tasaRetIVA = 0;
    std::string impteRetIVA = "0";
    bool modificado = false;
};

inline Moneda M(const std::string& t) { return *Moneda::desdeTexto(t); }

class EntornoCedula : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    InteraccionGuionada interaccion;
    ProgresoMudo progreso;
    Sesion s;

    EntornoCedula() {
        s.RutaEmpresa = carpeta.texto();
        s.DbEmpresa = std::make_unique<BaseDatos>(carpeta.ruta() / "ACME_2024.sqlite", BaseDatos::Modo::Crear);
        CreaEsquemaEmpresa(*s.DbEmpresa);
        s.interaccion = &interaccion;
        s.progreso = &progreso;
        s.UltimoMesImportado = 3;
        s.UltimoMesNuevo = 3;
        CreaInconsisImpTmp(s);
        EXPECT_TRUE(AbreInconsistencias(s));
        CreaInconsisImpTmpDet(s);
    }

    BaseDatos& db() { return *s.DbEmpresa; }

    void Cuenta(const std::string& cuenta, const std::string& naturaleza = "D") {
        db().ejecuta("INSERT INTO Cuentas (Cuenta, Naturaleza, Nivel, Tipo, PorRevisar) VALUES (?, ?, 2, 'D', 0)",
                     cuenta, naturaleza);
    }

    /// Replaces the vouchers: one voucher per identity, numbered from `primerId`.
    void Carga(const std::vector<Mov>& movs, int primerId = 1) {
        Transaccion t(db());
        db().ejecuta("DELETE FROM Polizas");
        db().ejecuta("DELETE FROM Polizas_Detalle");
        int siguiente = primerId;
        for (auto& m : movs) {
            Valor id = db().escalar("SELECT IdPoliza FROM Polizas WHERE Poliza = ? AND Tipo = ? AND Fecha = ?",
                                    m.poliza, m.tipo, m.fecha);
            if (id.esNulo()) {
                id = siguiente++;
                db().ejecuta("INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha) VALUES (?, ?, ?, ?)", id, m.poliza,
                             m.tipo, m.fecha);
            }
            db().ejecuta("INSERT INTO Polizas_Detalle (IdPoliza, Cuenta, TipoMov, Importe, Referencia) "
                         "VALUES (?, ?, ?, ?, ?)",
                         id, m.cuenta, m.tipoMov, M(m.importe), m.referencia);
        }
        t.confirma();
    }

    /// Phase C's schedule steps as the run calls them: inside one transaction
    /// over the company connection.
    void Reconstruye(const FuenteSemilla& semilla = SemillaDelReloj()) {
        Transaccion t(db());
        ReconstruyeCedulaAnalitica(s, semilla);
        ReintegraNoDeducibles(s);
        t.confirma();
    }

    void Regla(int id, const std::string& cuenta, double porcentaje = 0, const std::string& saldoMayorA = "0",
               const std::string& totalCta = "0", const std::string& descripcion = "") {
        db().ejecuta("INSERT INTO CedAnaliticaMaster (IdCriterio, CtaIntegracion, SaldoMayorA, Porcentaje, TotalCta, "
                     "Descripcion) VALUES (?, ?, ?, ?, ?, ?)",
                     id, cuenta, M(saldoMayorA), porcentaje, M(totalCta), descripcion);
    }

    /// A schedule row of the movement as the audit product keeps it, with work.
    std::int64_t Cedula(const Mov& m, int idCriterio, const Trabajo& t = {}, int verObs = 0) {
        Valor id = db().escalar("SELECT IdPoliza FROM Polizas WHERE Poliza = ? AND Tipo = ? AND Fecha = ?", m.poliza,
                                m.tipo, m.fecha);
        db().ejecuta(
            "INSERT INTO CedAnalitica (IdCriterio, IdPoliza, Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, "
            "Importe, VerObs, Refmodificada, Marca1, Marca7, Observaciones, Sugerencias, InfoAdd1, InfoAdd2, Notas, "
            "Modificado) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
            idCriterio, id, m.poliza, m.tipo, m.fecha, m.cuenta, m.referencia, m.tipoMov, M(m.importe), verObs,
            t.refModificada.empty() ? m.referencia : t.refModificada, t.marca1, t.marca7, t.observaciones,
            t.sugerencias, t.infoAdd1, t.infoAdd2, t.notas, t.modificado);
        std::int64_t nuevo = db().ultimoId();
        db().ejecuta(
            "UPDATE CedAnalitica SET AplicaIVA = ?, PorIVA = ?, IVA = ?, AplicaRetISR = ?, TasaRetISR = ?, "
            "ImpteRetISR = ?, AplicaRetIVA = ?, TasaRetIVA = ?, ImpteRetIVA = ? WHERE IdCedAnalitica = ?",
            t.aplicaIVA, t.porIVA, M(t.iva), t.aplicaRetISR, t.tasaRetISR, M(t.impteRetISR), t.aplicaRetIVA,
            t.tasaRetIVA, M(t.impteRetIVA), nuevo);
        return nuevo;
    }

    /// An opening balance row: no voucher, only the account and the work.
    std::int64_t SaldoInicial(const std::string& cuenta, const Trabajo& t) {
        db().ejecuta(
            "INSERT INTO CedAnalitica (Cuenta, Referencia, Refmodificada, Marca1, Observaciones, Notas, Modificado) "
            "VALUES (?, 'Saldo Inicial', ?, ?, ?, ?, ?)",
            cuenta, t.refModificada, t.marca1, t.observaciones, t.notas, t.modificado);
        return db().ultimoId();
    }

    void Folio(std::int64_t idCedula, const std::string& uuid) {
        db().ejecuta("INSERT INTO UUIDAnalitica (IdCedAnalitica, UUID) VALUES (?, ?)", idCedula, uuid);
    }

    void NoDeducible(const Mov& m, std::int64_t idCedula) {
        db().ejecuta("INSERT INTO CedNoDeducibles (Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe, "
                     "IdCedAnalitica) VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
                     m.poliza, m.tipo, m.fecha, m.cuenta, m.referencia, m.tipoMov, M(m.importe), idCedula);
    }

    /// The texts of the inconsistency log, in order.
    std::vector<std::string> Log() {
        std::vector<std::string> r;
        Consulta c = db().consulta("SELECT Referencia FROM InconsisImpTmp ORDER BY rowid");
        for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c.campo(0).texto());
        return r;
    }

    /// Rows of the lost-rows log, read by a connection of its own.
    long PerdidosGuardados() {
        BaseDatos det(RutaAlmacen(s, kInconsisImpTmpDet), BaseDatos::Modo::SoloLectura);
        return static_cast<long>(det.escalar("SELECT COUNT(*) FROM InconsisImpTmpDet").entero());
    }

    long Cuantos(const std::string& sql) { return static_cast<long>(db().escalar(sql).entero()); }

    /// The schedule as "IdCriterio|Poliza|Importe|VerObs|Obs" lines, in row order.
    std::vector<std::string> Filas(const std::string& cuenta = "") {
        std::vector<std::string> r;
        Consulta c = db().consulta(
            "SELECT IdCriterio, Poliza, Importe, VerObs, Obs FROM CedAnalitica WHERE ? = '' OR Cuenta = ? "
            "ORDER BY IdCedAnalitica",
            cuenta, cuenta);
        for (c.primero(); !c.eof(); c.siguiente())
            r.push_back(c["IdCriterio"].texto() + "|" + c["Poliza"].texto() + "|" + c["Importe"].moneda().texto() +
                        "|" + c["VerObs"].texto() + "|" + c["Obs"].texto());
        return r;
    }
};

}  // namespace velmorant::prueba
