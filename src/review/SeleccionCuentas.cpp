#include "review/SeleccionCuentas.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "review/SeleccionCuentasRegistro.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

namespace {

// Criterion numbers that mean something to the rebuild.
enum Criterio : long {
    kSaldoMayorA = 1,
    kPorcentajeDelTotal = 2,
    kManual = 4,
    kSaldoMayorAContraNat = 7,
    kPorcentajeContraNat = 8,
    kAleatoria = 10,
};


// "SdoFin01" ... "SdoFin13": the only column name built from a value, and
// only from a month checked here.
std::string ColumnaSaldoFinal(int mes) {
    if (mes < 1 || mes > 13)
        throw std::invalid_argument("Mes de revisión fuera de rango en la selección de cuentas: " +
                                    std::to_string(mes));
    return std::string("SdoFin") + (mes < 10 ? "0" : "") + std::to_string(mes);
}

// "not SaldoContraNat" or "SaldoContraNat": the side of the nature a rule looks at.
std::string Lado(bool contraNat) { return contraNat ? " AND SaldoContraNat" : " AND NOT SaldoContraNat"; }

// A work store emptied for the month: attached before the run's transaction
// (PreparaAlmacenesSeleccion), or created and attached here outside one.
void RenuevaAlmacen(Sesion& s, const char* alias, void (*crea)(Sesion&)) {
    BaseDatos& db = EmpresaAbierta(s);
    if (db.enTransaccion()) {
        if (!AbreAlmacen(s, alias))
            throw std::runtime_error(std::string("El almacén temporal ") + alias +
                                     " debe abrirse antes de la transacción de la importación");
        db.ejecuta(std::string("DELETE FROM \"") + alias + "\".\"" + alias + "\"");
        return;
    }
    crea(s);
    if (!AbreAlmacen(s, alias)) throw std::runtime_error(std::string("No fue posible abrir el almacén ") + alias);
}

// total × porcentaje / 100 as currency (halves to the even ten-thousandth).
Moneda ObjetivoDePorcentaje(Moneda total, double porcentaje) {
    long double v = static_cast<long double>(total.diezmilesimas()) * porcentaje / 100.0L;
    long double piso = std::floor(v);
    long double resto = v - piso;
    if (resto > 0.5L || (resto == 0.5L && std::fmod(piso, 2.0L) != 0)) piso += 1;
    return Moneda::desdeDiezmilesimas(static_cast<std::int64_t>(piso));
}

// Plain conversion of a percentage already rounded to two decimals.
std::string TextoPorcentaje(double p) {
    char b[64];
    std::snprintf(b, sizeof b, "%.2f", p);
    std::string t = b;
    while (t.back() == '0') t.pop_back();
    if (t.back() == '.') t.pop_back();
    return t == "-0" ? "0" : t;
}

// Rules 2 and 8: the selection, then the rule's figures written back to the
// first rule of that number, account and month.
void AplicaPorcentaje(Sesion& s, long id, const std::string& cta, double porcentajeUsr, int mes, bool contraNat) {
    Moneda total = TotalSaldosCuentaIntegracion(s, cta, contraNat);
    SeleccionaCuentasPorPorcentaje(s, id, ObjetivoDePorcentaje(total, porcentajeUsr), cta, mes, contraNat);
    double porcentaje = PorcentajeSeleccionado(TotalSeleccionadoCriterio(s, id, cta, mes), total);
    BaseDatos& db = EmpresaAbierta(s);
    Valor fila = db.escalar(
        "SELECT rowid FROM SeleccionMaster WHERE IdCriterio = ? AND CtaIntegracion = ? AND MesRevision = ? "
        "ORDER BY rowid LIMIT 1",
        id, cta, mes);
    if (fila.esNulo()) return;
    db.ejecuta("UPDATE SeleccionMaster SET Porcentaje = ?, TotalCta = ?, Descripcion = ? WHERE rowid = ?", porcentaje,
               total, DescripcionPorcentaje(porcentaje, total, contraNat), fila);
}

void AplicaRegla(Sesion& s, const Consulta& regla, int mes, const FuenteSemilla& semillas) {
    long id = static_cast<long>(SiNuloCero(regla["IdCriterio"]).entero());
    std::string cta = SiNuloTexto(regla["CtaIntegracion"]);
    switch (id) {
        case kSaldoMayorA:
        case kSaldoMayorAContraNat:
            SeleccionaCuentasPorSaldo(s, id, SiNuloCero(regla["SaldoMayorA"]).moneda(), cta, mes,
                                      id == kSaldoMayorAContraNat);
            break;
        case kManual:
            SeleccionaCuentasManuales(s, cta, mes);
            break;
        case kAleatoria:
            SeleccionaCuentasAleatorias(s, cta, mes, SiNuloTexto(regla["Descripcion"]),
                                        SiNuloCero(regla["Porcentaje"]).real(), semillas);
            break;
        case kPorcentajeDelTotal:
        case kPorcentajeContraNat:
            AplicaPorcentaje(s, id, cta, SiNuloCero(regla["PorcentajeUsr"]).real(), mes, id == kPorcentajeContraNat);
            break;
        default:
            break;  // a rule this program does not know stays as it is
    }
}

}  // namespace

// ------------------------------------------------------------- The run

void PreparaAlmacenesSeleccion(Sesion& s) {
    RenuevaAlmacen(s, kSeleccionDetalleTmp, CreaSeleccionDetalleTmp);
    RenuevaAlmacen(s, kSeleccPreviaCtasBalTmp, CreaSeleccPreviaCtasBalTmp);
}

void ActualizaTotalCtaSeleccion(Sesion& s, int mes) {
    std::string columna = ColumnaSaldoFinal(mes);
    const std::string primera =
        " FROM Balanzas WHERE Cuenta = SeleccionMaster.CtaIntegracion ORDER BY rowid LIMIT 1)";
    EmpresaAbierta(s).ejecuta("UPDATE SeleccionMaster SET TotalCta = (SELECT " + columna + primera +
                       " WHERE EXISTS (SELECT 1" + primera);
}

void ReconstruyeSeleccionesDeRevision(Sesion& s, const FuenteSemilla& semillas) {
    auto mes = [&](size_t i) { return i < s.MesesRevision.size() ? s.MesesRevision[i] : 0; };
    for (size_t i = 1; i < s.MesesRevision.size(); ++i) {
        if (!ExistenCriteriosDelMes(s, mes(i))) CopiaCriteriosDelMes(s, mes(i - 1), mes(i));
        ReconstruyeSeleccionCuentas(s, mes(i), semillas);
    }
}

bool ExistenCriteriosDelMes(Sesion& s, int mes) {
    return !EmpresaAbierta(s).escalar("SELECT 1 FROM SeleccionMaster WHERE MesRevision = ? LIMIT 1", mes).esNulo();
}

void CopiaCriteriosDelMes(Sesion& s, int mesOrigen, int mesDestino) {
    EmpresaAbierta(s).ejecuta(
        "INSERT INTO SeleccionMaster (IdCriterio, Descripcion, CtaIntegracion, SaldoMayorA, Porcentaje, TotalCta, "
        "PorcentajeUsr, MesRevision) "
        "SELECT IFNULL(IdCriterio, 0), IFNULL(Descripcion, ''), IFNULL(CtaIntegracion, ''), IFNULL(SaldoMayorA, 0), "
        "IFNULL(Porcentaje, 0), IFNULL(TotalCta, 0), IFNULL(PorcentajeUsr, 0), ? "
        "FROM SeleccionMaster WHERE MesRevision = ? ORDER BY rowid",
        mesDestino, mesOrigen);
}

void ReconstruyeSeleccionCuentas(Sesion& s, int mes, const FuenteSemilla& semillas) {
    BaseDatos& db = EmpresaAbierta(s);
    Consulta reglas = db.consulta("SELECT * FROM SeleccionMaster WHERE MesRevision = ? ORDER BY rowid", mes);
    if (reglas.vacia()) return;
    RenuevaAlmacen(s, kSeleccionDetalleTmp, CreaSeleccionDetalleTmp);
    LlenaSeleccionDetalleTmp(s, mes);
    RenuevaAlmacen(s, kSeleccPreviaCtasBalTmp, CreaSeleccPreviaCtasBalTmp);
    GuardaSeleccionPrevia(s);
    db.ejecuta("DELETE FROM SeleccionDetalle WHERE MesRevision = ?", mes);
    for (reglas.primero(); !reglas.eof(); reglas.siguiente()) AplicaRegla(s, reglas, mes, semillas);
    if (s.progreso) s.progreso->cede();
}

// ------------------------------------------------------- The month's steps

void LlenaSeleccionDetalleTmp(Sesion& s, int mes) {
    // Balances keep the trial balance's sign: a credit account's normal
    // balance is negative. A zero balance is never contrary.
    const std::string saldo = "IFNULL(b." + ColumnaSaldoFinal(mes) + ", 0)";
    EmpresaAbierta(s).ejecuta(
        "INSERT INTO SeleccionDetalleTmp (Cuenta, Naturaleza, SaldoFin, ValAbsSaldoFin, SaldoContraNat, ConMovtos) "
        "SELECT c.Cuenta, IFNULL(c.Naturaleza, ''), " + saldo + ", abs(" + saldo + "), "
        "CASE WHEN (upper(c.Naturaleza) = 'D' AND " + saldo + " < 0) OR (upper(c.Naturaleza) = 'A' AND " + saldo +
        " > 0) THEN -1 ELSE 0 END, "
        "CASE WHEN IFNULL(c.ConMovtos, 0) <> 0 THEN -1 ELSE 0 END "
        "FROM Cuentas c JOIN Balanzas b "
        "ON b.rowid = (SELECT rowid FROM Balanzas WHERE Cuenta = c.Cuenta ORDER BY rowid LIMIT 1) "
        "WHERE c.Nivel >= 2 AND c.Tipo = 'D' ORDER BY c.Cuenta, c.rowid");
}

void GuardaSeleccionPrevia(Sesion& s) {
    EmpresaAbierta(s).ejecuta(
        "INSERT INTO SeleccPreviaCtasBalTmp (IdCriterio, CtaIntegracion, Cuenta, Saldo, MesRevision) "
        "SELECT IdCriterio, CtaIntegracion, Cuenta, Saldo, MesRevision FROM SeleccionDetalle ORDER BY rowid");
}

void SeleccionaCuentasPorSaldo(Sesion& s, long idCriterio, Moneda monto, const std::string& ctaIntegracion, int mes,
                               bool contraNat) {
    Consulta candidatas = EmpresaAbierta(s).consulta("SELECT Cuenta, SaldoFin" + CandidatasDeIntegracion(contraNat) +
                                                  " AND ValAbsSaldoFin >= ? ORDER BY ValAbsSaldoFin DESC, rowid",
                                              LongitudIntegracion(s), ctaIntegracion, monto);
    RegistroSeleccion registro(s, ctaIntegracion, mes);
    for (candidatas.primero(); !candidatas.eof(); candidatas.siguiente())
        registro.registra(candidatas["Cuenta"].texto(), candidatas["SaldoFin"].moneda(), idCriterio);
}

void SeleccionaCuentasPorPorcentaje(Sesion& s, long idCriterio, Moneda objetivo, const std::string& ctaIntegracion,
                                    int mes, bool contraNat) {
    Consulta candidatas = EmpresaAbierta(s).consulta(
        "SELECT Cuenta, SaldoFin" + CandidatasDeIntegracion(contraNat) +
            " ORDER BY ValAbsSaldoFin DESC, Cuenta ASC, rowid",
        LongitudIntegracion(s), ctaIntegracion);
    RegistroSeleccion registro(s, ctaIntegracion, mes);
    Moneda suma;
    for (candidatas.primero(); !candidatas.eof(); candidatas.siguiente()) {
        std::string cuenta = candidatas["Cuenta"].texto();
        Moneda saldo = candidatas["SaldoFin"].moneda();
        RegistroSeleccion::Marca marca = registro.marca(cuenta);
        suma += saldo;
        registro.registra(cuenta, saldo, idCriterio, marca);  // the row that passes the target counts too
        if (suma.abs() > objetivo.abs()) break;
    }
}

void SeleccionaCuentasManuales(Sesion& s, const std::string& ctaIntegracion, int mes) {
    BaseDatos& db = EmpresaAbierta(s);
    Consulta previas = db.consulta(
        "SELECT Cuenta FROM SeleccPreviaCtasBalTmp WHERE CtaIntegracion = ? AND IdCriterio = ? ORDER BY rowid",
        ctaIntegracion, static_cast<long>(kManual));
    RegistroSeleccion registro(s, ctaIntegracion, mes);
    for (previas.primero(); !previas.eof(); previas.siguiente()) {
        std::string cuenta = SiNuloTexto(previas["Cuenta"]);
        Consulta c = db.consulta("SELECT Cuenta, SaldoFin FROM SeleccionDetalleTmp WHERE Cuenta = ? ORDER BY rowid LIMIT 1",
                                 cuenta);
        if (c.vacia()) continue;  // no longer a candidate: it leaves the selection without a word
        registro.registra(c["Cuenta"].texto(), c["SaldoFin"].moneda(), kManual);
    }
}

// ------------------------------------------------------------- Look-ups

std::string NombreCriterioCuentas(Sesion& s, long idCriterio, const std::string& ctaIntegracion) {
    Valor id = EmpresaAbierta(s).escalar(
        "SELECT IdCriterio FROM SeleccionMaster WHERE IdCriterio = ? AND CtaIntegracion = ? LIMIT 1", idCriterio,
        ctaIntegracion);
    if (id.esNulo()) return "";
    switch (id.entero()) {
        case kSaldoMayorA:
            return "Saldo Mayor a";
        case kPorcentajeDelTotal:
            return "% del total de la cuenta";
        default:
            return "";
    }
}

Moneda TotalSaldosCuentaIntegracion(Sesion& s, const std::string& ctaIntegracion, bool contraNat) {
    return EmpresaAbierta(s)
        .escalar("SELECT Sum(SaldoFin) FROM SeleccionDetalleTmp WHERE [Left](Cuenta, length(?)) = ? COLLATE NOCASE" +
                     Lado(contraNat),
                 ctaIntegracion, ctaIntegracion)
        .moneda();
}

Moneda TotalSeleccionadoCriterio(Sesion& s, long idCriterio, const std::string& ctaIntegracion, int mes) {
    return EmpresaAbierta(s)
        .escalar("SELECT SUM(Saldo) FROM SeleccionDetalle WHERE IdCriterio = ? AND CtaIntegracion = ? "
                 "AND VerObs = 0 AND MesRevision = ?",
                 idCriterio, ctaIntegracion, mes)
        .moneda();
}

std::string NaturalezaDeCuenta(Sesion& s, const std::string& cuenta) {
    return SiNuloTexto(
        EmpresaAbierta(s).escalar("SELECT Naturaleza FROM Cuentas WHERE Cuenta = ? ORDER BY rowid LIMIT 1", cuenta));
}

std::vector<int> PosicionesDeSeparador(const std::string& texto, const std::string& separador) {
    std::vector<int> r;
    if (separador.empty()) return r;
    for (size_t p = texto.find(separador); p != std::string::npos; p = texto.find(separador, p + separador.size()))
        r.push_back(static_cast<int>(p) + 1);
    return r;
}

// ------------------------------------------------- The texts of the rules

double PorcentajeSeleccionado(Moneda seleccionado, Moneda total) {
    if (total.esCero()) return 0;
    double p = 100.0L * static_cast<long double>(seleccionado.diezmilesimas()) /
               static_cast<long double>(total.abs().diezmilesimas());
    return RedondeaAlPar(std::fabs(p), 2);
}

std::string DescripcionPorcentaje(double porcentaje, Moneda total, bool contraNat) {
    return "el " + TextoPorcentaje(porcentaje) + " % de " + total.formatoMoneda() +
           (contraNat ? " en cuentas con signo contrario a su naturaleza" : "");
}

}  // namespace velmorant
