#include "TrabajoRevision.h"

#include "platform/BaseDatos.h"

namespace velmorant::demo {

namespace {

void ReglasDeCuentas(BaseDatos& db) {
    struct Regla {
        int criterio;
        const char* descripcion;
        const char* cuenta;
        const char* saldoMayorA;
        double porcentaje;
    } reglas[] = {
        {1, "Saldo Mayor a 1,000,000", "102", "1000000", 0},
        {2, "80 % del total de la cuenta", "105", "0", 80},
        {4, "Selección del auditor", "601", "0", 0},
        {7, "Saldo contrario mayor a 1,000", "105", "1000", 0},
        {8, "50 % del saldo contrario", "201", "0", 50},
    };
    for (int mes : {6, 12})
        for (auto& r : reglas)
            db.ejecuta("INSERT INTO SeleccionMaster (IdCriterio, Descripcion, CtaIntegracion, SaldoMayorA, Porcentaje, "
                       "PorcentajeUsr, TotalCta, MesRevision) VALUES (?, ?, ?, ?, ?, ?, 0, ?)",
                       r.criterio, r.descripcion, r.cuenta, Moneda::desdeTexto(r.saldoMayorA).value(), r.porcentaje,
                       r.porcentaje, mes);
    // The accounts the auditor chose by hand.
    for (int mes : {6, 12})
        for (const char* cuenta : {"6010101", "6010302"})
            db.ejecuta("INSERT INTO SeleccionDetalle (IdCriterio, CtaIntegracion, Cuenta, Saldo, VerObs, Obs, "
                       "MesRevision) VALUES (4, '601', ?, 0, 0, '', ?)",
                       cuenta, mes);
}

// One schedule row for a movement, with the auditor's work on it.
void Renglon(BaseDatos& db, int criterio, const Consulta& m, int n) {
    Moneda importe = m["Importe"].moneda();
    Moneda iva = importe.multiplica(0.16 / 1.16);
    db.ejecuta("INSERT INTO CedAnalitica (IdCriterio, IdPoliza, Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, "
               "Importe, Modificado, Refmodificada, AplicaIVA, PorIVA, IVA, AplicaRetISR, TasaRetISR, ImpteRetISR, "
               "AplicaRetIVA, TasaRetIVA, ImpteRetIVA, Marca1, Marca2, Observaciones, Sugerencias, InfoAdd1, VerObs, "
               "Obs, Aplicado) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0, '', ?, 16, ?, 0, 0, 0, 0, 0, 0, ?, ?, ?, ?, ?, 0, "
               "'', 0)",
               criterio, m["IdPoliza"], m["Poliza"], m["Tipo"], m["Fecha"], m["Cuenta"], m["Referencia"],
               m["TipoMov"], importe, true, iva, "√", n % 2 ? "Ⓒ" : "ok", "Cotejado contra estado de cuenta",
               n % 3 ? "" : "Solicitar comprobante original", "Revisó: A.G.");
    long id = static_cast<long>(db.ultimoId());
    char uuid[40];
    std::snprintf(uuid, sizeof uuid, "6F2A1C9E-0B4D-4E7A-9C3B-%012d", 100000 + n);
    db.ejecuta("INSERT INTO UUIDAnalitica (IdCedAnalitica, UUID) VALUES (?, ?)", id, std::string(uuid));
}

const char* kMovimientos =
    "SELECT D.IdPoliza, P.Poliza, P.Tipo, P.Fecha, D.Cuenta, D.Referencia, D.TipoMov, D.Importe "
    "FROM Polizas_Detalle D JOIN Polizas P ON P.IdPoliza = D.IdPoliza ";

int Cedula(BaseDatos& db) {
    // Rule 1 on a bank account: the deposits of at least 20,000 it holds now.
    db.ejecuta("INSERT INTO CedAnaliticaMaster (IdCriterio, Descripcion, CtaIntegracion, SaldoMayorA, Porcentaje, "
               "TotalCta) VALUES (1, 'Saldo Mayor a 20,000', '1020101', ?, 0, 0)",
               Moneda::desdeEntero(20000));
    Consulta depositos = db.consulta(std::string(kMovimientos) +
                                     "WHERE D.Cuenta = '1020101' AND D.TipoMov = 'D' AND D.Importe >= ? "
                                     "ORDER BY D.IdPoliza, D.Partida LIMIT 6",
                                     Moneda::desdeEntero(20000));
    int n = 0;
    for (depositos.primero(); !depositos.eof(); depositos.siguiente()) Renglon(db, 1, depositos, ++n);
    // Rule 7 (contrary sign) on the bank account of April's cheque 5 Eg,
    // which the second delivery drops: that row cannot come back.
    Consulta cheque = db.consulta(std::string(kMovimientos) +
                                  "WHERE P.Poliza = '5' AND P.Tipo = 'Eg' AND Month(P.Fecha) = 4 "
                                  "AND D.Cuenta LIKE '102%' AND D.TipoMov = 'H'");
    if (!cheque.vacia()) {
        db.ejecuta("INSERT INTO CedAnaliticaMaster (IdCriterio, Descripcion, CtaIntegracion, SaldoMayorA, "
                   "Porcentaje, TotalCta) VALUES (7, 'Cheques mayores a 1,000', ?, ?, 0, 0)",
                   cheque["Cuenta"], Moneda::desdeEntero(1000));
        Renglon(db, 1, cheque, ++n);
    }
    return n;
}

}  // namespace

std::string EscribeTrabajoRevision(const std::string& rutaEmpresa) {
    BaseDatos db(rutaEmpresa);
    Transaccion t(db);
    ReglasDeCuentas(db);
    int renglones = Cedula(db);
    t.confirma();
    return "Trabajo de revisión: 10 reglas de selección de cuentas, 4 cuentas elegidas a mano, " +
           std::to_string(renglones) + " renglones de cédula analítica con marcas, observaciones, IVA y folios";
}

}  // namespace velmorant::demo
