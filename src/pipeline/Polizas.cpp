#include "pipeline/Polizas.h"

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "accounts/CodigosCuenta.h"
#include "pipeline/Balanza.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/LineasPorPoliza.h"
#include "pipeline/MesPorIndice.h"
#include "platform/Texto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {


/// The company connection, with the voucher stores attached to it.
BaseDatos& PolizasTmp(Sesion& s) {
    if (!s.DbPolizasTmp || !s.DbPolizasDetalleTmp)
        throw std::logic_error("Las bases temporales de pólizas no están abiertas");
    return *s.DbPolizasTmp;
}


void Registra(Sesion& s, const std::string& referencia, const Consulta& poliza, const std::string& cuenta) {
    RegistraInconsistencia(s, referencia, kFuentePolizas, "D", SiNuloTexto(poliza["Poliza"]),
                           SiNuloTexto(poliza["Tipo"]), poliza["Fecha"].fecha(), cuenta);
}

/// The condition on `Polizas_Tmp` that picks a month's vouchers for the
/// balance check, read through the store's date index, with its parameters.
FiltroMes CondicionCuadreDelMes(BaseDatos& db, int mes) {
    if (mes == 13) return {"Poliza_Mes13", {}};
    FiltroMes f = FiltroDeMesTmp(db, "Polizas_Tmp", mes);
    f.condicion += " AND NOT IFNULL(Poliza_Mes13,0)";
    return f;
}

const char* const kTextoCancelada =
    "La Póliza se encuentra indicada como CANCELADA en los archivos de origen, por lo que, los movimientos no se "
    "reflejaran en la Balanza.";

std::string EtiquetaCuadre(const std::string& poliza, const std::string& tipo, const std::string& mes) {
    return "Verificando cuadre de Pol. " + poliza + ", " + tipo + ", " + NombreMesDosDigitos(mes);
}

/// The balance check voucher by voucher, in IdPoliza order, each marked by a
/// statement of its own: for a store whose ids are not all exact integers.
void VerificaCuadreRecorriendo(Sesion& s, const std::string& mes, const FiltroMes& delMes,
                               const std::unordered_map<std::int64_t, Moneda>& diferencias) {
    BaseDatos& db = PolizasTmp(s);
    Consulta polizas = ConsultaCon(db,
                                   "SELECT rowid AS Fila, IdPoliza, Poliza, Tipo, Fecha, Poliza_Deshabilitada "
                                   "FROM Polizas_Tmp WHERE " + delMes.condicion + " ORDER BY IdPoliza ASC",
                                   delMes.valores);
    Transaccion t(db);
    MaximoProgreso(s, polizas.cuentaRegistros());
    size_t avance = 0;
    for (polizas.primero(); !polizas.eof(); polizas.siguiente()) {
        EtiquetaProgreso(s, EtiquetaCuadre(SiNuloTexto(polizas["Poliza"]), SiNuloTexto(polizas["Tipo"]), mes));
        const Valor& id = polizas["IdPoliza"];
        auto d = id.esNulo() ? diferencias.end() : diferencias.find(id.entero());
        if (d != diferencias.end()) {
            Registra(s, "Póliza no balanceada Importe de diferencia " + d->second.formatoMoneda(), polizas, "");
            db.ejecuta("UPDATE Polizas_Tmp SET Poliza_Deshabilitada=-1, Cuadrada=0 WHERE rowid=?", polizas["Fila"]);
        } else {
            if (polizas["Poliza_Deshabilitada"].booleano()) Registra(s, kTextoCancelada, polizas, "");
            db.ejecuta("UPDATE Polizas_Tmp SET Cuadrada=-1 WHERE rowid=?", polizas["Fila"]);
        }
        AvanceProgreso(s, ++avance);
    }
    t.confirma();
}

/// A voucher of the month that the balance check logs, as it was read.
struct PolizaConAviso {
    std::int64_t fila, id;
    Valor poliza, tipo, fecha;
    bool cancelada;
};

/// One read of the month's vouchers: those the check logs (cancelled at the
/// source, or with a difference) in the order of a walk by IdPoliza, and the
/// last one, whose label a walk ends on. Empty, with `leidas` false, when an
/// IdPoliza is not an exact integer: the caller then asks the engine.
std::vector<PolizaConAviso> PolizasConAviso(BaseDatos& db, const FiltroMes& delMes,
                                            const std::unordered_map<std::int64_t, Moneda>& diferencias,
                                            std::optional<PolizaConAviso>& ultima, bool& leidas) {
    Sentencia& st = PreparaCon(db,
                               "SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Poliza_Deshabilitada FROM Polizas_Tmp "
                               "WHERE " + delMes.condicion,
                               delMes.valores);
    // Only the logged vouchers are read into values; of the others, the
    // last one's row is read again at the end.
    std::vector<PolizaConAviso> r;
    std::optional<std::pair<std::int64_t, std::int64_t>> mayor;  // IdPoliza and rowid of the last one
    leidas = true;
    while (leidas && st.paso()) {
        leidas = st.clase(1) == Sentencia::Clase::Entero;
        if (!leidas) break;
        const std::int64_t fila = st.entero(0), id = st.entero(1);
        if (!mayor || std::make_pair(id, fila) > *mayor) mayor = {id, fila};
        const bool cancelada = st.clase(5) != Sentencia::Clase::Nulo && st.columna(5).booleano();
        if (cancelada || diferencias.count(id))
            r.push_back({fila, id, st.columna(2), st.columna(3), st.columna(4), cancelada});
    }
    st.reinicia();
    if (!leidas) return {};
    if (mayor) {
        Consulta fila = db.consulta("SELECT Poliza, Tipo, Fecha FROM Polizas_Tmp WHERE rowid = ?", mayor->second);
        ultima = PolizaConAviso{mayor->second, mayor->first, fila.campo(0), fila.campo(1), fila.campo(2), false};
    }
    std::stable_sort(r.begin(), r.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
    return r;
}

/// The accounts the temporary chart (by CuentaSinSeparadores) or the
/// company's chart knows, without case.
std::unordered_set<std::string> CuentasConocidas(BaseDatos& db) {
    std::unordered_set<std::string> r;
    for (const char* sql :
         {"SELECT CuentaSinSeparadores FROM CuentasTmp.Cuentas WHERE CuentaSinSeparadores IS NOT NULL",
          "SELECT Cuenta FROM main.Cuentas WHERE Cuenta IS NOT NULL"}) {
        Sentencia& st = db.preparada(sql);
        st.reinicia();
        while (st.paso()) r.insert(SinMayusculasAscii(st.columna(0).texto()));
        st.reinicia();
    }
    return r;
}

/// Debits less credits of each voucher of the month whose lines do not
/// cancel out, by IdPoliza. Only the lines whose account the temporary chart
/// or the company's chart knows count; a "D" is a debit, anything else a
/// credit. One read of the month's lines, each amount taken as the walk
/// voucher by voucher took it and summed in exact money, with the known
/// accounts in memory: a look-up in each chart for every line cost more than
/// reading the lines.
std::unordered_map<std::int64_t, Moneda> DiferenciasDelMes(BaseDatos& db, const FiltroMes& delMes) {
    const auto conocidas = CuentasConocidas(db);
    PorTexto<bool> conocida;  // each account text of the lines, folded and looked up once
    Sentencia& st = PreparaCon(db,
                               "SELECT d.IdPoliza, d.Cuenta, d.TipoMov, d.Importe FROM Polizas_Detalle_Tmp d "
                               "WHERE d.IdPoliza IN (SELECT IdPoliza FROM Polizas_Tmp WHERE " + delMes.condicion + ")",
                               delMes.valores);
    using C = Sentencia::Clase;
    std::unordered_map<std::int64_t, Moneda> sumas;
    std::optional<std::int64_t> idActual;
    Moneda* sumaActual = nullptr;  // a voucher's lines come together
    while (st.paso()) {
        if (st.clase(0) == C::Nulo || st.clase(1) != C::Texto) continue;
        const std::string_view cuenta = st.texto(1);
        auto it = conocida.find(cuenta);
        if (it == conocida.end())
            it = conocida.emplace(std::string(cuenta), conocidas.count(SinMayusculasAscii(std::string(cuenta))) > 0)
                     .first;
        if (!it->second) continue;
        const std::int64_t id = st.clase(0) == C::Entero ? st.entero(0) : st.columna(0).entero();
        if (id != idActual) {
            idActual = id;
            sumaActual = &sumas[id];
        }
        const bool cargo = st.clase(2) == C::Texto && st.texto(2) == "D";
        const Moneda importe = st.moneda(3);
        *sumaActual += cargo ? importe : -importe;
    }
    st.reinicia();
    std::unordered_map<std::int64_t, Moneda> r;
    for (const auto& [id, suma] : sumas)
        if (!suma.esCero()) r.emplace(id, suma);
    return r;
}

/// True when every account on a line of the month's balanced vouchers has a
/// row of the trial balance to post to and is not accumulative: then no line
/// is rejected, and the month needs no walk. Each account is looked up once.
bool CuentasRegistrables(DestinosEnBalanza& destinos, BaseDatos& db, const FiltroMes& delMes) {
    // The accounts are gathered in memory: the engine's DISTINCT sorted
    // every line of the month.
    std::unordered_set<std::string> cuentas;
    Sentencia& st = PreparaCon(db,
                               "SELECT Cuenta FROM Polizas_Detalle WHERE IdPoliza IN "
                               "(SELECT IdPoliza FROM Polizas WHERE Cuadrada AND " + delMes.condicion + ")",
                               delMes.valores);
    while (st.paso()) cuentas.insert(SiNuloTexto(st.columna(0)));
    st.reinicia();
    for (const std::string& cuenta : cuentas)
        if (!destinos.destino(cuenta, Valor(), Valor()).fila) return false;
    return true;
}

/// The accounts on the company's voucher lines, one value for each account
/// as the column compares them (without case), Null among them when a line
/// has none. They are read by leaps through the index on Cuenta, one seek
/// per account instead of a read of every line. Nothing when no index
/// serves the leaps.
std::optional<std::vector<Valor>> CuentasDeLasLineas(BaseDatos& db) {
    const char* const kSiguiente = "SELECT Cuenta FROM Polizas_Detalle WHERE Cuenta > ? ORDER BY Cuenta LIMIT 1";
    Consulta plan = db.consulta(std::string("EXPLAIN QUERY PLAN ") + kSiguiente, "");
    bool porIndice = false;
    for (plan.primero(); !plan.eof(); plan.siguiente()) {
        const std::string detalle = plan["detail"].texto();
        porIndice = porIndice || (detalle.rfind("SEARCH", 0) == 0 && detalle.find("INDEX") != std::string::npos);
    }
    if (!porIndice) return std::nullopt;
    std::vector<Valor> cuentas;
    if (!db.escalar("SELECT 1 FROM Polizas_Detalle WHERE Cuenta IS NULL LIMIT 1").esNulo()) cuentas.emplace_back();
    Valor cuenta = db.escalar("SELECT Cuenta FROM Polizas_Detalle WHERE Cuenta IS NOT NULL ORDER BY Cuenta LIMIT 1");
    while (!cuenta.esNulo()) {
        // A value that is not a text (none of this program's) would be
        // found again and again: the leaps give up.
        if (!cuenta.esTexto() || (cuentas.size() > 0 && cuentas.back() == cuenta)) return std::nullopt;
        cuentas.push_back(cuenta);
        cuenta = db.escalar(kSiguiente, cuenta);
    }
    return cuentas;
}

/// Whether every account on a line of the month's balanced vouchers has a
/// row of the trial balance to post to and is not accumulative, found
/// without reading the month's lines: each account of the company's lines
/// is looked up once, and only the lines of an account that fails are read,
/// through the index on Cuenta, to see whether one belongs to the month.
/// Nothing when the leaps cannot be made.
std::optional<bool> MesSinLineasRechazadas(DestinosEnBalanza& destinos, BaseDatos& db, const FiltroMes& delMes) {
    const auto cuentas = CuentasDeLasLineas(db);
    if (!cuentas) return std::nullopt;
    for (const Valor& cuenta : *cuentas) {
        if (destinos.destino(SiNuloTexto(cuenta), Valor(), Valor()).fila) continue;
        std::vector<Valor> valores{cuenta};
        valores.insert(valores.end(), delMes.valores.begin(), delMes.valores.end());
        // The lines of the account first, then their vouchers.
        if (!ConsultaCon(db,
                         "SELECT 1 FROM Polizas_Detalle d CROSS JOIN Polizas p ON p.IdPoliza = d.IdPoliza "
                         "WHERE d.Cuenta IS ? AND p.Cuadrada AND " + delMes.condicion + " LIMIT 1",
                         valores)
                 .vacia())
            return false;
    }
    return true;
}

struct CambioTipo {
    const char* anterior;
    const char* nuevo;
    const char* descripcion;
};

// The pairing of codes and names is the one the audit product's older data
// expects, odd as it reads.
const CambioTipo kCambiosTipo[] = {{"Dr", "1", "Ingresos"}, {"Ig", "2", "Egresos"}, {"Eg", "3", "Diario"}};

}  // namespace

void VerificaCuadrePolizas(Sesion& s, const std::string& mes) {
    BaseDatos& db = PolizasTmp(s);
    const int n = NumeroDeMesDeTexto(mes);
    const FiltroMes delMes = CondicionCuadreDelMes(db, n);
    const auto diferencias = DiferenciasDelMes(db, delMes);
    // Only the vouchers that are logged are walked; every other one of the
    // month balances and is marked so by one statement.
    std::optional<PolizaConAviso> ultima;
    bool leidas = false;
    std::vector<PolizaConAviso> polizas = PolizasConAviso(db, delMes, diferencias, ultima, leidas);
    if (!leidas) {
        VerificaCuadreRecorriendo(s, mes, delMes, diferencias);
        return;
    }
    Transaccion t(db);
    std::string descuadradas = "[";
    size_t noCuadradas = 0;
    for (const PolizaConAviso& p : polizas) {
        auto registra = [&](const std::string& texto) {
            RegistraInconsistencia(s, texto, kFuentePolizas, "D", SiNuloTexto(p.poliza), SiNuloTexto(p.tipo),
                                   p.fecha.fecha(), "");
        };
        auto d = diferencias.find(p.id);
        if (d != diferencias.end()) {
            registra("Póliza no balanceada Importe de diferencia " + d->second.formatoMoneda());
            db.ejecuta("UPDATE Polizas_Tmp SET Poliza_Deshabilitada=-1, Cuadrada=0 WHERE rowid=?", p.fila);
            descuadradas += (descuadradas.size() > 1 ? "," : "") + std::to_string(p.fila);
            ++noCuadradas;
        } else {
            registra(kTextoCancelada);
        }
    }
    std::vector<Valor> valores = delMes.valores;
    valores.emplace_back(descuadradas + "]");
    const int cuadradas = EjecutaCon(db,
                                     "UPDATE Polizas_Tmp SET Cuadrada=-1 WHERE " + delMes.condicion +
                                         " AND rowid NOT IN (SELECT value FROM json_each(?))",
                                     valores);
    t.confirma();
    // The bar and the label as a walk would have left them.
    const size_t total = noCuadradas + static_cast<size_t>(cuadradas);
    MaximoProgreso(s, total);
    if (ultima)
        EtiquetaProgreso(s, EtiquetaCuadre(SiNuloTexto(ultima->poliza), SiNuloTexto(ultima->tipo), mes));
    AvanceProgreso(s, total);
}

void GuardaPolizas(Sesion& s, const std::string& mes) {
    PolizasTmp(s);
    BaseDatos& db = EmpresaAbierta(s);
    const int n = NumeroDeMesDeTexto(mes);
    const FiltroMes delMes = FiltroDeMesTmp(db, "Polizas_Tmp", n);
    // The month goes across in two statements inside the engine, vouchers by
    // IdPoliza and each voucher's lines in the order the source gave them, so
    // the company's rows are those, and in the order, of a walk voucher by
    // voucher. Texts are cleaned as the walk would clean them: a Null is an
    // empty text, and the concept is cut to 255 characters.
    Transaccion t(db);
    const int polizas = EjecutaCon(db,
               "INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha, Concepto, Poliza_Deshabilitada, Cuadrada, "
               "Poliza_Mes13, Poliza_Ajuste) "
               "SELECT IdPoliza, Poliza, Tipo, Fecha, substr(" + SqlSinCaracteresEspeciales("Concepto") +
                   ", 1, 255), " +
                   SqlBooleano("Poliza_Deshabilitada") + ", " + SqlBooleano("Cuadrada") + ", " +
                   SqlBooleano("Poliza_Mes13") + ", " + SqlBooleano("Poliza_Ajuste") +
                   " FROM Polizas_Tmp WHERE " + delMes.condicion + " ORDER BY IdPoliza ASC",
               delMes.valores);
    // The label a walk would have ended on: the month's last voucher, the
    // last row the copy wrote.
    Consulta ultima;
    if (polizas > 0) ultima = db.consulta("SELECT Poliza, Tipo, Fecha FROM Polizas WHERE rowid = ?", db.ultimoId());
    EjecutaCon(db,
               "INSERT INTO Polizas_Detalle (IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida) "
               "SELECT IdPoliza, Cuenta, TipoMov, Importe, " + SqlSinCaracteresEspeciales("Referencia") +
                   ", Partida FROM Polizas_Detalle_Tmp WHERE IdPoliza IN "
                   "(SELECT IdPoliza FROM Polizas_Tmp WHERE " + delMes.condicion + ") ORDER BY IdPoliza, rowid",
               delMes.valores);
    t.confirma();
    if (!ultima.vacia()) {
        auto fecha = ultima["Fecha"].fecha();
        EtiquetaProgreso(s, "Importando Pol. " + SiNuloTexto(ultima["Poliza"]) + ", " + SiNuloTexto(ultima["Tipo"]) +
                                ", " + (fecha ? fecha->ddmmaaaa() : SiNuloTexto(ultima["Fecha"])));
    }
}

void VerificaConsistenciaPolizas(Sesion& s, const std::string& mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const int n = NumeroDeMesDeTexto(mes);
    if (db.escalar("SELECT 1 FROM Balanzas LIMIT 1").esNulo()) return;
    const FiltroMes delMes = FiltroDeMes(db, "Polizas", n);
    DestinosEnBalanza destinos(s);
    const std::optional<bool> sinRechazos = MesSinLineasRechazadas(destinos, db, delMes);
    if (sinRechazos ? *sinRechazos : CuentasRegistrables(destinos, db, delMes)) {
        Consulta ultima = UltimaPolizaDelMes(db, "Polizas", "Cuadrada AND " + delMes.condicion, delMes.valores);
        if (!ultima.vacia())
            EtiquetaProgreso(s, "Verificando consistencia en póliza num. " + SiNuloTexto(ultima["Poliza"]) + " de " +
                                    SiNuloTexto(ultima["Tipo"]) + " " + NombreMesDosDigitos(mes));
        return;
    }
    Consulta polizas = ConsultaCon(db,
                                   "SELECT rowid AS Fila, IdPoliza, Poliza, Tipo, Fecha FROM Polizas WHERE Cuadrada AND " +
                                       delMes.condicion + " ORDER BY IdPoliza ASC, rowid",
                                   delMes.valores);
    LineasPorPoliza lineas(ConsultaCon(db,
                                       "SELECT IdPoliza, Cuenta, TipoMov, Importe FROM Polizas_Detalle WHERE IdPoliza IN "
                                       "(SELECT IdPoliza FROM Polizas WHERE Cuadrada AND " +
                                           delMes.condicion + ") ORDER BY IdPoliza, rowid",
                                       delMes.valores));
    Transaccion t(db);
    MaximoProgreso(s, polizas.cuentaRegistros());
    size_t avance = 0;
    for (polizas.primero(); !polizas.eof(); polizas.siguiente()) {
        EtiquetaProgreso(s, "Verificando consistencia en póliza num. " + SiNuloTexto(polizas["Poliza"]) + " de " +
                        SiNuloTexto(polizas["Tipo"]) + " " + NombreMesDosDigitos(mes));
        bool rechazada = false;
        for (lineas.de(polizas["IdPoliza"]); lineas.quedan(); lineas.siguiente()) {
            const Consulta& l = lineas.linea();
            std::string cuenta = SiNuloTexto(l.campo(1));
            DestinoLinea destino = destinos.destino(cuenta, l.campo(2), l.campo(3));
            if (destino.fila) continue;
            Registra(s, destino.motivo, polizas, cuenta);
            rechazada = true;
        }
        if (rechazada) db.ejecuta("UPDATE Polizas SET Poliza_Deshabilitada=-1 WHERE rowid=?", polizas["Fila"]);
        AvanceProgreso(s, ++avance);
    }
    t.confirma();
}

long SiguienteIdPoliza(Sesion& s) {
    Valor maximo = PolizasTmp(s).escalar("SELECT MAX([IdPoliza]) AS PolizaSiguiente FROM [Polizas_Tmp];");
    return maximo.esNulo() ? 1 : static_cast<long>(maximo.entero()) + 1;
}

bool ExistePolizaTmp(Sesion& s, const std::string& poliza, const std::string& tipo, const Fecha& fecha, bool esMes13) {
    std::string sql = "SELECT 1 FROM Polizas_Tmp WHERE Poliza=? AND Tipo=? AND Fecha =?";
    if (esMes13) sql += " AND Poliza_Mes13";
    return !PolizasTmp(s).escalar(sql + " LIMIT 1", poliza, tipo, fecha).esNulo();
}

void RegistraTiposPoliza(Sesion& s) {
    PolizasTmp(s);
    EmpresaAbierta(s).ejecuta(
        "INSERT INTO CatTipoPoliza (Tipo, Descripcion) SELECT Tipo, Tipo FROM Polizas_Tmp "
        "WHERE Tipo IS NOT NULL AND Tipo NOT IN (SELECT Tipo FROM CatTipoPoliza WHERE Tipo IS NOT NULL) "
        "GROUP BY Tipo ORDER BY Tipo ASC");
}

void NormalizaTiposPoliza(Sesion& s) {
    BaseDatos& db = EmpresaAbierta(s);
    bool hayLetras = false;
    Consulta tipos = db.consulta("SELECT Tipo FROM CatTipoPoliza WHERE Tipo IS NOT NULL");
    for (tipos.primero(); !tipos.eof() && !hayLetras; tipos.siguiente())
        for (const CambioTipo& c : kCambiosTipo) hayLetras = hayLetras || tipos["Tipo"].texto() == c.anterior;
    if (!hayLetras) return;
    Transaccion t(db);
    for (const CambioTipo& c : kCambiosTipo) {
        for (const char* tabla : {"Polizas", "CedAnalitica", "CedNoDeducibles"})
            db.ejecuta(std::string("UPDATE ") + tabla + " SET Tipo=? WHERE Tipo=? COLLATE BINARY", c.nuevo, c.anterior);
        db.ejecuta("UPDATE CatTipoPoliza SET Tipo=?, Descripcion=? WHERE Tipo=? COLLATE BINARY", c.nuevo, c.descripcion,
                   c.anterior);
    }
    t.confirma();
}

std::map<std::string, std::string> TiposPolizaNormalizados(Sesion& s) {
    std::set<std::string> tipos;
    Consulta c = EmpresaAbierta(s).consulta("SELECT Tipo FROM CatTipoPoliza WHERE Tipo IS NOT NULL");
    for (c.primero(); !c.eof(); c.siguiente()) tipos.insert(c["Tipo"].texto());
    std::map<std::string, std::string> cambios;
    for (const CambioTipo& t : kCambiosTipo)
        if (tipos.count(t.nuevo) && !tipos.count(t.anterior)) cambios[t.anterior] = t.nuevo;
    return cambios;
}

}  // namespace velmorant
