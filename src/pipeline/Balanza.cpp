#include "pipeline/Balanza.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "accounts/CodigosCuenta.h"
#include "store/EsquemaEmpresa.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/LineasPorPoliza.h"
#include "pipeline/MesPorIndice.h"
#include "platform/Texto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// ------------------------------------------------------------------ Helpers


// The company table: through the company connection while a run's commit
// has it attached (its writes then share the run's transaction), else
// through the session's own connection.
BaseDatos& BaseEmpresas(Sesion& s) {
    if (s.DbEmpresa && !s.DbEmpresa->escalar("SELECT 1 FROM pragma_database_list WHERE name = ?", kAliasEmpresasRun)
                            .esNulo())
        return *s.DbEmpresa;
    if (!s.DbEmpresas) throw std::logic_error("La base de datos de empresas no está abierta");
    return *s.DbEmpresas;
}


std::string NombreDelMes(int mes) { return NombreMesDosDigitos(DosDigitos(mes)); }


/// A table name that goes into SQL text: letters, digits and "_" only.
std::string NombreTabla(const std::string& tabla) {
    bool valido = !tabla.empty() && std::all_of(tabla.begin(), tabla.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
    });
    if (!valido) throw std::invalid_argument("Nombre de tabla no válido: \"" + tabla + "\"");
    return "\"" + tabla + "\"";
}

/// Account codes compare without case, as the stores' text columns do.
std::string Clave(std::string cuenta) {
    for (char& c : cuenta) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return cuenta;
}

std::string SinBlancos(const std::string& t) {
    size_t i = t.find_first_not_of(' ');
    if (i == std::string::npos) return "";
    return t.substr(i, t.find_last_not_of(' ') - i + 1);
}

/// The first row of `tabla` for the account, as a seek on its `Cuenta` index finds it.
std::optional<std::int64_t> FilaDeCuenta(BaseDatos& db, const std::string& tabla, const std::string& cuenta) {
    Valor v = db.escalar("SELECT rowid FROM " + NombreTabla(tabla) + " WHERE Cuenta=? ORDER BY rowid LIMIT 1", cuenta);
    if (v.esNulo()) return std::nullopt;
    return v.entero();
}

bool EsCuentaAcumulativa(BaseDatos& db, const std::string& cuenta) {
    Valor tipo = db.escalar("SELECT Tipo FROM Cuentas WHERE Cuenta=? ORDER BY rowid LIMIT 1", cuenta);
    return tipo.texto() == "A";
}

/// Amounts to add, by row and column, gathered in exact money and written
/// once per cell.
using Sumas = std::map<std::pair<std::int64_t, std::string>, Moneda>;

void EscribeSumas(BaseDatos& db, const std::string& tabla, const Sumas& sumas) {
    for (const auto& [celda, importe] : sumas) {
        const std::string& col = celda.second;
        db.ejecuta("UPDATE " + NombreTabla(tabla) + " SET " + col + "=IFNULL(" + col + ",0)+? WHERE rowid=?", importe,
                   celda.first);
    }
}

bool BalanzaVacia(BaseDatos& db) { return db.escalar("SELECT 1 FROM Balanzas LIMIT 1").esNulo(); }

/// The amount as the log writes it: plain conversion, empty for Null.
std::string TextoImporte(const Valor& importe) { return importe.esNulo() ? "" : importe.moneda().texto(); }

// ------------------------------------------------------------- Posting

void LimpiaMovimientosDelMes(BaseDatos& db, int mes) {
    std::string mm = DosDigitos(mes);
    db.ejecuta("UPDATE Balanzas SET C" + mm + "=0, A" + mm + "=0");
}

/// The cell a line goes to, by the kind of its voucher (1 closing, 2
/// opening adjustment, 0 ordinary) and its side, with the amount it adds.
std::pair<std::string, Moneda> Celda(int clase, bool cargo, Moneda importe, int mes) {
    if (clase == 1) return {cargo ? "C13" : "A13", importe};
    if (clase == 2) return {"SaldoInicial", cargo ? importe : -importe};
    return {(cargo ? "C" : "A") + DosDigitos(mes), importe};
}

/// The column a line adds to and the signed amount it adds (the line's
/// TipoMov and Importe are its fields 2 and 3).
std::pair<std::string, Moneda> Asiento(const Consulta& poliza, const Consulta& linea, int mes) {
    const int clase = poliza["Poliza_Mes13"].booleano() ? 1 : poliza["Poliza_Ajuste"].booleano() ? 2 : 0;
    return Celda(clase, SiNuloTexto(linea.campo(2)) == "D", linea.campo(3).moneda(), mes);
}

/// The month's posting as Asiento would add each line, summed in memory by
/// account, kind of voucher and side from one read of the month's vouchers
/// and one of their lines, and added to `sumas`; each account is looked up
/// once. False, with `sumas` untouched, when the walk must post the month:
/// an account has no row to post to (the walk logs each such line), or an
/// IdPoliza is not an exact integer or is repeated. `ultima` gets the Poliza
/// and Tipo of the last voucher by IdPoliza, the one a walk ends on.
bool SumaPorCuentas(DestinosEnBalanza& destinos, BaseDatos& db, const std::string& condicion,
                    const std::vector<Valor>& valores, int mes, Sumas& sumas, std::string& ultima) {
    // The month's vouchers with their kind, sorted by IdPoliza for a search
    // by halves: each voucher's lines then find its kind in a few steps.
    std::vector<std::pair<std::int64_t, int>> clases;
    Sentencia& polizas = PreparaCon(db, "SELECT IdPoliza, CASE WHEN IFNULL(Poliza_Mes13,0) <> 0 THEN 1 WHEN "
                                      "IFNULL(Poliza_Ajuste,0) <> 0 THEN 2 ELSE 0 END, rowid "
                                      "FROM Polizas WHERE " + condicion, valores);
    bool exactas = true;
    std::optional<std::pair<std::int64_t, std::int64_t>> mayor;  // IdPoliza and rowid of the last voucher
    while (exactas && polizas.paso()) {
        if (polizas.clase(0) == Sentencia::Clase::Nulo) continue;
        exactas = polizas.clase(0) == Sentencia::Clase::Entero;
        if (!exactas) break;
        const std::int64_t id = polizas.entero(0);
        clases.emplace_back(id, static_cast<int>(polizas.entero(1)));
        const std::pair<std::int64_t, std::int64_t> orden{id, polizas.entero(2)};
        if (!mayor || orden > *mayor) mayor = orden;
    }
    polizas.reinicia();
    std::sort(clases.begin(), clases.end());
    for (size_t i = 1; exactas && i < clases.size(); ++i) exactas = clases[i - 1].first != clases[i].first;
    if (!exactas) return false;
    if (mayor) {
        Consulta fila = db.consulta("SELECT Poliza, Tipo FROM Polizas WHERE rowid = ?", mayor->second);
        ultima = SiNuloTexto(fila.campo(0)) + " de " + SiNuloTexto(fila.campo(1));
    }
    // The month's lines summed by account, kind of voucher and side. Each
    // account text gets a number once; a voucher's lines, which come
    // together, find its kind once.
    PorTexto<std::int64_t> numeroDe;
    std::vector<std::string> cuentas;
    std::unordered_map<std::int64_t, Moneda> grupos;  // (account number * 3 + kind) * 2 + debit
    std::optional<std::int64_t> idActual;
    int claseActual = 0;
    std::string otra;
    Sentencia& lineas = PreparaCon(db,
                                   "SELECT IdPoliza, Cuenta, TipoMov, Importe FROM Polizas_Detalle WHERE IdPoliza IN "
                                   "(SELECT IdPoliza FROM Polizas WHERE " + condicion + ")",
                                   valores);
    using C = Sentencia::Clase;
    while (exactas && lineas.paso()) {
        exactas = lineas.clase(0) == C::Entero;
        if (!exactas) break;
        const std::int64_t id = lineas.entero(0);
        if (id != idActual) {
            auto clase = std::lower_bound(clases.begin(), clases.end(), std::make_pair(id, INT_MIN));
            exactas = clase != clases.end() && clase->first == id;
            if (!exactas) break;
            idActual = id;
            claseActual = clase->second;
        }
        std::string_view cuenta;
        if (lineas.clase(1) == C::Texto) {
            cuenta = lineas.texto(1);
        } else if (lineas.clase(1) != C::Nulo) {
            otra = lineas.columna(1).texto();
            cuenta = otra;
        }
        auto numero = numeroDe.find(cuenta);
        if (numero == numeroDe.end()) {
            numero = numeroDe.emplace(std::string(cuenta), static_cast<std::int64_t>(cuentas.size())).first;
            cuentas.emplace_back(cuenta);
        }
        const bool cargo = lineas.clase(2) == C::Texto && lineas.texto(2) == "D";
        grupos[(numero->second * 3 + claseActual) * 2 + (cargo ? 1 : 0)] += lineas.moneda(3);
    }
    lineas.reinicia();
    if (!exactas) return false;
    Sumas parciales;
    for (const auto& [grupo, importe] : grupos) {
        DestinoLinea destino = destinos.destino(cuentas[static_cast<size_t>(grupo / 6)], Valor(), Valor());
        if (!destino.fila) return false;
        auto [columna, suma] = Celda(static_cast<int>(grupo / 2 % 3), grupo % 2 == 1, importe, mes);
        parciales[{*destino.fila, columna}] += suma;
    }
    for (const auto& [celda, importe] : parciales) sumas[celda] += importe;
    return true;
}

void PostaPolizasDelMes(Sesion& s, int mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const FiltroMes delMes = FiltroDeMes(db, "Polizas", mes);
    const std::string condicion = "Cuadrada AND NOT IFNULL(Poliza_Deshabilitada,0) AND " + delMes.condicion;
    if (BalanzaVacia(db)) return;
    Sumas sumas;
    DestinosEnBalanza destinos(s);
    std::string ultima;
    if (SumaPorCuentas(destinos, db, condicion, delMes.valores, mes, sumas, ultima)) {
        EscribeSumas(db, "Balanzas", sumas);
        if (!ultima.empty()) EtiquetaProgreso(s, "Aplicando póliza num. " + ultima + " " + NombreDelMes(mes));
        return;
    }
    Consulta polizas = ConsultaCon(db,
                                   "SELECT IdPoliza, Poliza, Tipo, Fecha, Poliza_Mes13, Poliza_Ajuste FROM Polizas WHERE " +
                                       condicion + " ORDER BY IdPoliza ASC, rowid",
                                   delMes.valores);
    LineasPorPoliza lineas(ConsultaCon(db,
                                       "SELECT IdPoliza, Cuenta, TipoMov, Importe FROM Polizas_Detalle WHERE IdPoliza IN "
                                       "(SELECT IdPoliza FROM Polizas WHERE " +
                                           condicion + ") ORDER BY IdPoliza, rowid",
                                       delMes.valores));
    MaximoProgreso(s, polizas.cuentaRegistros());
    size_t n = 0;
    for (polizas.primero(); !polizas.eof(); polizas.siguiente()) {
        std::string poliza = SiNuloTexto(polizas["Poliza"]), tipo = SiNuloTexto(polizas["Tipo"]);
        EtiquetaProgreso(s, "Aplicando póliza num. " + poliza + " de " + tipo + " " + NombreDelMes(mes));
        for (lineas.de(polizas["IdPoliza"]); lineas.quedan(); lineas.siguiente()) {
            std::string cuenta = SiNuloTexto(lineas.linea().campo(1));
            DestinoLinea destino = destinos.destino(cuenta, lineas.linea().campo(2), lineas.linea().campo(3));
            if (!destino.fila) {
                RegistraInconsistencia(s, destino.motivo, kFuentePolizas, "D", poliza, tipo, polizas["Fecha"].fecha(),
                                       cuenta);
                continue;
            }
            auto [columna, importe] = Asiento(polizas, lineas.linea(), mes);
            sumas[{*destino.fila, columna}] += importe;
        }
        AvanceProgreso(s, ++n);
    }
    EscribeSumas(db, "Balanzas", sumas);
}

// ---------------------------------------------------- Adjustments, RCL

struct Entradas {
    const char* cabecera;
    const char* detalle;
    const char* id;
    const char* debe;
    const char* haber;
    const char* etiqueta;
};

// clang-format off
const Entradas kAjustes{"Ajustes", "Ajustes_Detalle", "IdAjuste",
                        "Ajuste_Debe", "Ajuste_Haber", "Aplicando Ajustes"};
const Entradas kReclasificaciones{"Reclasificaciones", "Reclasificaciones_Detalle", "IdReclasificacion",
                                  "RCL_Debe", "RCL_Haber", "Aplicando Reclasificaciones"};
// clang-format on

void AplicaEntradas(Sesion& s, const std::string& tabla, const Entradas& e) {
    BaseDatos& db = EmpresaAbierta(s);
    const std::string id = e.id;
    Consulta cabeceras = db.consulta("SELECT " + id + " FROM " + e.cabecera +
                                     " WHERE Estatus AND NOT IFNULL(Contabilizado,0) ORDER BY " + id + " ASC");
    if (cabeceras.vacia()) return;
    Transaccion t(db);
    MaximoProgreso(s, cabeceras.cuentaRegistros());
    Sumas sumas;
    size_t n = 0;
    for (cabeceras.primero(); !cabeceras.eof(); cabeceras.siguiente()) {
        EtiquetaProgreso(s, e.etiqueta);
        Consulta lineas = db.consulta(
            std::string("SELECT Cuenta, Tipo, Importe FROM ") + e.detalle + " WHERE " + id + "=? ORDER BY rowid",
            cabeceras[id]);
        for (lineas.primero(); !lineas.eof(); lineas.siguiente()) {
            std::string cuenta = SiNuloTexto(lineas["Cuenta"]);
            auto fila = FilaDeCuenta(db, tabla, cuenta);
            if (!fila || EsCuentaAcumulativa(db, cuenta)) continue;
            const char* columna = SiNuloTexto(lineas["Tipo"]) == "C" ? e.debe : e.haber;
            sumas[{*fila, columna}] += lineas["Importe"].moneda();
        }
        AvanceProgreso(s, ++n);
    }
    EscribeSumas(db, tabla, sumas);
    t.confirma();
}

// ------------------------------------------------------------- Roll-up

/// The columns the roll-up walks: every column of `Balanzas` by position,
/// from the second to the last but one, as the schema has them.
std::vector<std::string> ColumnasAcumulables(BaseDatos& db) {
    std::vector<std::string> columnas = db.columnas("Balanzas");
    if (columnas.size() < 3) return {};
    return {columnas.begin() + 1, columnas.end() - 1};
}

void AnulaCuentasAcumulativas(BaseDatos& db, const std::vector<std::string>& columnas) {
    if (columnas.empty()) return;
    std::string sql = "UPDATE Balanzas SET ";
    for (size_t i = 0; i < columnas.size(); ++i) sql += (i ? ", \"" : "\"") + columnas[i] + "\"=0";
    db.ejecuta(sql + " WHERE Cuenta IN (SELECT Cuenta FROM Cuentas WHERE Tipo='A')");
}

/// `Balanzas` in memory for the roll-up: the first row of each account.
struct BalanzaEnMemoria {
    std::vector<std::int64_t> filas;
    std::vector<std::vector<Moneda>> valores;  // [row][column]
    std::unordered_map<std::string, size_t> porCuenta;
};

BalanzaEnMemoria LeeBalanza(BaseDatos& db, const std::vector<std::string>& columnas) {
    std::string sql = "SELECT rowid, Cuenta";
    for (auto& c : columnas) sql += ", \"" + c + "\"";
    Consulta c = db.consulta(sql + " FROM Balanzas ORDER BY rowid");
    BalanzaEnMemoria b;
    for (c.primero(); !c.eof(); c.siguiente()) {
        if (c.campo(1).esNulo()) continue;
        if (!b.porCuenta.emplace(Clave(c.campo(1).texto()), b.filas.size()).second) continue;
        b.filas.push_back(c.campo(0).entero());
        std::vector<Moneda> fila;
        for (size_t i = 0; i < columnas.size(); ++i) fila.push_back(c.campo(static_cast<int>(i) + 2).moneda());
        b.valores.push_back(std::move(fila));
    }
    return b;
}

/// The chart as the climb needs it: each account's trimmed parent (first
/// row of the account), and the detail accounts in table order.
struct Arbol {
    std::unordered_map<std::string, std::string> padreDe;
    std::vector<std::pair<std::string, std::string>> detalle;  // account, trimmed parent
};

Arbol LeeArbol(BaseDatos& db) {
    Arbol a;
    Consulta c = db.consulta("SELECT Cuenta, CuentaAcumulativa, Tipo='D' AS EsDetalle FROM Cuentas ORDER BY rowid");
    for (c.primero(); !c.eof(); c.siguiente()) {
        std::string cuenta = SiNuloTexto(c["Cuenta"]);
        std::string padre = SinBlancos(SiNuloTexto(c["CuentaAcumulativa"]));
        if (!c["Cuenta"].esNulo()) a.padreDe.emplace(Clave(cuenta), padre);
        if (c["EsDetalle"].booleano()) a.detalle.emplace_back(cuenta, padre);
    }
    return a;
}

/// Adds `importe` to column `col` of every ancestor from `padre` up. The climb
/// stops at an account with no balance row, after one missing from the chart,
/// at an account that is its own parent, and at the first account already
/// climbed (a loop in the chart).
void Asciende(BalanzaEnMemoria& b, const Arbol& a, std::string padre, size_t col, Moneda importe,
              std::vector<bool>& cambiada) {
    std::vector<std::string> visitadas;
    while (!padre.empty()) {
        std::string clave = Clave(padre);
        if (std::find(visitadas.begin(), visitadas.end(), clave) != visitadas.end()) return;
        visitadas.push_back(clave);
        auto fila = b.porCuenta.find(clave);
        if (fila == b.porCuenta.end()) return;
        b.valores[fila->second][col] += importe;
        cambiada[fila->second] = true;
        auto cuenta = a.padreDe.find(clave);
        if (cuenta == a.padreDe.end() || Clave(cuenta->second) == clave) return;
        padre = cuenta->second;
    }
}

void AcumulaEnPadres(Sesion& s, BaseDatos& db, const std::vector<std::string>& columnas) {
    BalanzaEnMemoria b = LeeBalanza(db, columnas);
    Arbol a = LeeArbol(db);
    MaximoProgreso(s, columnas.size());
    for (size_t col = 0; col < columnas.size(); ++col) {
        std::vector<bool> cambiada(b.filas.size(), false);
        for (const auto& [cuenta, padre] : a.detalle) {
            auto fila = b.porCuenta.find(Clave(cuenta));
            if (fila == b.porCuenta.end() || padre.empty()) continue;
            Moneda importe = b.valores[fila->second][col];
            if (!importe.esCero()) Asciende(b, a, padre, col, importe, cambiada);
        }
        Sentencia& escribe = db.preparada("UPDATE Balanzas SET \"" + columnas[col] + "\"=? WHERE rowid=?");
        for (size_t i = 0; i < b.filas.size(); ++i)
            if (cambiada[i]) escribe.con(b.valores[i][col], b.filas[i]).ejecuta();
        AvanceProgreso(s, col + 1);
    }
}

// -------------------------------------------------------------- Stages

struct Etapa {
    const char* nombre;
    const char* campo;
    int codigo;  // AuditoriaActual; 0 when the stage has none
};

const Etapa kEtapas[] = {
    {"AÑO ANTERIOR PREVIA", "Saldo_Anterior_Previa", 0},
    {"AÑO ANTERIOR FINAL", "Saldo_Anterior_Final", 0},
    {"PREVIA 1", "Saldo_Previa1", 3},
    {"PREVIA 2", "Saldo_Previa2", 4},
    {"PREVIA 3", "Saldo_Previa3", 5},
    {"FINAL", "Saldo_Final", 6},
    {"SALDOS AJUSTADOS", "Saldo_Ajustado", 0},
    {"SALDOS RECLASIFICADOS", "Saldo_Final_Aud", 0},
};

}  // namespace

// ================================================================ Public

int NumeroDeMesDeTexto(const std::string& mes) {
    const bool digitos = mes.size() == 2 && std::isdigit(static_cast<unsigned char>(mes[0])) &&
                         std::isdigit(static_cast<unsigned char>(mes[1]));
    const int n = digitos ? (mes[0] - '0') * 10 + (mes[1] - '0') : 0;
    if (n < 1 || n > 13) throw std::invalid_argument("Mes no válido: \"" + mes + "\"");
    return n;
}

namespace {

DestinoLinea Destino(std::optional<std::int64_t> fila, bool acumulativa, const Valor& tipoMov, const Valor& importe) {
    DestinoLinea d;
    if (fila && !acumulativa) {
        d.fila = fila;
        return d;
    }
    d.motivo = "No es posible registrar el movimiento " + SiNuloTexto(tipoMov) + ", " + TextoImporte(importe) +
               (fila ? " en una cuenta Acumulativa." : " , ya que la Cuenta no Existe ");
    return d;
}

}  // namespace

DestinoLinea DestinoEnBalanza(Sesion& s, const std::string& cuenta, const Valor& tipoMov, const Valor& importe) {
    BaseDatos& db = EmpresaAbierta(s);
    auto fila = FilaDeCuenta(db, "Balanzas", cuenta);
    return Destino(fila, fila && EsCuentaAcumulativa(db, cuenta), tipoMov, importe);
}

DestinoLinea DestinosEnBalanza::destino(const std::string& cuenta, const Valor& tipoMov, const Valor& importe) {
    auto it = cuentas_.find(cuenta);
    if (it == cuentas_.end()) {
        BaseDatos& db = EmpresaAbierta(s_);
        Cuenta c;
        c.fila = FilaDeCuenta(db, "Balanzas", cuenta);
        c.acumulativa = c.fila && EsCuentaAcumulativa(db, cuenta);
        it = cuentas_.emplace(cuenta, c).first;
    }
    return Destino(it->second.fila, it->second.acumulativa, tipoMov, importe);
}

void AplicaPolizasABalanza(Sesion& s, const std::string& mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const int n = NumeroDeMesDeTexto(mes);
    const bool ultimo = n == s.UltimoMesNuevo;
    Transaccion t(db);
    LimpiaMovimientosDelMes(db, n);
    if (ultimo) {
        for (int m = n + 1; m <= 13; ++m) LimpiaMovimientosDelMes(db, m);
        db.ejecuta("UPDATE Balanzas SET Ajuste_Debe=0, Ajuste_Haber=0, RCL_Debe=0, RCL_Haber=0");
    }
    PostaPolizasDelMes(s, n);
    if (ultimo && HayAjustesOReclasificaciones(s)) {
        db.ejecuta(
            "UPDATE Cuentas SET Ajuste_Debe = 0, Ajuste_Haber = 0, Saldo_Ajustado = 0, RCL_Debe = 0, RCL_Haber = 0, "
            "Saldo_Final_Aud = 0 ");
        AplicaAjustes(s, "Balanzas");
        AplicaReclasificaciones(s, "Balanzas");
    }
    t.confirma();
    CedeProgreso(s);
}

void AplicaAjustes(Sesion& s, const std::string& tabla) { AplicaEntradas(s, tabla, kAjustes); }

void AplicaReclasificaciones(Sesion& s, const std::string& tabla) { AplicaEntradas(s, tabla, kReclasificaciones); }

void ObtieneSaldosBalanza(Sesion& s, const std::string& mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const int n = NumeroDeMesDeTexto(mes);
    const bool ultimo = n == s.UltimoMesNuevo;
    EtiquetaProgreso(s, "Obteniendo saldos de balanza...");
    Transaccion t(db);
    db.ejecuta("UPDATE Balanzas SET SdoFin" + mes + "=0");
    if (ultimo) {
        for (int m = n + 1; m <= 13; ++m) db.ejecuta("UPDATE Balanzas SET SdoFin" + DosDigitos(m) + "=0");
        db.ejecuta("UPDATE Balanzas SET Saldo_Ajustado=0, Saldo_Final_Aud=0");
    }
    if (!BalanzaVacia(db)) {
        // Each month closes on the one before it; at the last month imported
        // the balance carries on through month 13, then the audit figures.
        const int hasta = ultimo ? 13 : n;
        for (int m = n; m <= hasta; ++m) {
            std::string mm = DosDigitos(m);
            std::string anterior = m == 1 ? "SaldoInicial" : "SdoFin" + DosDigitos(m - 1);
            db.ejecuta("UPDATE Balanzas SET SdoFin" + mm + " = IFNULL(" + anterior + ",0) + IFNULL(C" + mm +
                       ",0) - IFNULL(A" + mm + ",0)");
        }
        if (ultimo) {
            db.ejecuta(
                "UPDATE Balanzas SET Saldo_Ajustado = IFNULL(SdoFin13,0) + IFNULL(Ajuste_Debe,0) - "
                "IFNULL(Ajuste_Haber,0)");
            db.ejecuta(
                "UPDATE Balanzas SET Saldo_Final_Aud = Saldo_Ajustado + IFNULL(RCL_Debe,0) - IFNULL(RCL_Haber,0)");
        }
    }
    t.confirma();
    CedeProgreso(s);
}

void CalculaSaldosFinales(Sesion& s) {
    BaseDatos& db = EmpresaAbierta(s);
    EtiquetaProgreso(s, "Calculando Saldos Finales ...");
    std::vector<std::string> columnas = ColumnasAcumulables(db);
    Transaccion t(db);
    AnulaCuentasAcumulativas(db, columnas);
    if (!BalanzaVacia(db)) AcumulaEnPadres(s, db, columnas);
    t.confirma();
    MarcaCuentasConMovimientos(s);
}

void MarcaCuentasConMovimientos(Sesion& s) {
    EtiquetaProgreso(s, "Calculando Movimientos en Cuentas ...");
    EmpresaAbierta(s).ejecuta(
        "UPDATE Cuentas SET ConMovtos = CASE WHEN EXISTS (SELECT 1 FROM Polizas_Detalle d "
        "WHERE d.Cuenta = Cuentas.Cuenta) THEN -1 ELSE 0 END");
    CedeProgreso(s);
}

void CalculaSaldosEtapas(Sesion& s) {
    BaseDatos& empresas = BaseEmpresas(s);
    Consulta fila = empresas.consulta("SELECT * FROM EMPRESAS WHERE IdEmpresa=?", s.IdEmpresaActual);
    if (fila.vacia()) return;
    const std::pair<const char*, const char*> revisiones[] = {
        {"MesPrevia1", "PREVIA 1"}, {"MesPrevia2", "PREVIA 2"}, {"MesPrevia3", "PREVIA 3"}, {"MesFinal", "FINAL"}};
    for (const auto& [campo, etapa] : revisiones) {
        std::int64_t mes = fila[campo].entero();
        if (mes == 0) continue;
        ObtieneSaldosEtapa(s, static_cast<int>(std::clamp<std::int64_t>(mes, -1, 13)), etapa);
        int codigo = 0;
        for (const Etapa& e : kEtapas)
            if (etapa == std::string(e.nombre)) codigo = e.codigo;
        empresas.ejecuta("UPDATE Empresas SET AuditoriaActual=? WHERE IdEmpresa=?", codigo, s.IdEmpresaActual);
    }
}

void ObtieneSaldosEtapa(Sesion& s, int mes, const std::string& etapa) {
    BaseDatos& db = EmpresaAbierta(s);
    const std::string campo = CampoSaldoDeEtapa(etapa);
    if (campo.empty()) throw std::invalid_argument("Etapa sin columna de saldos: \"" + etapa + "\"");
    if (etapa == "FINAL" && s.SaldosConMes13) mes = 13;
    mes = std::min(mes, 13);
    EtiquetaProgreso(s, "Obteniendo Saldos de " + etapa + " ...");

    std::string saldo = "IFNULL(SaldoInicial,0)";
    for (int m = 1; m <= mes; ++m) saldo += " + IFNULL(C" + DosDigitos(m) + ",0) - IFNULL(A" + DosDigitos(m) + ",0)";
    Consulta balanza = db.consulta("SELECT Cuenta, " + saldo +
                                   " AS Saldo, Ajuste_Debe, Ajuste_Haber, RCL_Debe, RCL_Haber FROM Balanzas "
                                   "ORDER BY Cuenta");
    const bool anterior = campo == "Saldo_Anterior_Final";
    Transaccion t(db);
    MaximoProgreso(s, balanza.cuentaRegistros());
    size_t n = 0;
    for (balanza.primero(); !balanza.eof(); balanza.siguiente()) {
        auto fila = FilaDeCuenta(db, "Cuentas", SiNuloTexto(balanza["Cuenta"]));
        if (fila) {
            Moneda saldoEtapa = balanza["Saldo"].moneda();
            if (anterior) {
                db.ejecuta("UPDATE Cuentas SET " + campo + "=? WHERE rowid=?", saldoEtapa, *fila);
            } else {
                Moneda ajusteDebe = balanza["Ajuste_Debe"].moneda(), ajusteHaber = balanza["Ajuste_Haber"].moneda();
                Moneda rclDebe = balanza["RCL_Debe"].moneda(), rclHaber = balanza["RCL_Haber"].moneda();
                Moneda ajustado = saldoEtapa + ajusteDebe - ajusteHaber;
                db.ejecuta("UPDATE Cuentas SET " + campo +
                               "=?, Ajuste_Debe=?, Ajuste_Haber=?, RCL_Debe=?, RCL_Haber=?, Saldo_Ajustado=?, "
                               "Saldo_Final_Aud=? WHERE rowid=?",
                           saldoEtapa, ajusteDebe, ajusteHaber, rclDebe, rclHaber, ajustado,
                           ajustado + rclDebe - rclHaber, *fila);
            }
        }
        if (++n % 100 == 0) AvanceProgreso(s, n);
    }
    t.confirma();
    AvanceProgreso(s, n);
}

std::string CampoSaldoDeEtapa(const std::string& etapa) {
    for (const Etapa& e : kEtapas)
        if (etapa == e.nombre) return e.campo;
    return "";
}

std::string EtapaActual(Sesion& s) {
    Valor codigo = BaseEmpresas(s).escalar("SELECT AuditoriaActual FROM [Empresas] WHERE NombCorto = ? AND Ejercicio=?",
                                           s.NombCortoEmpresa, static_cast<int>(s.EjercicioActual));
    for (const Etapa& e : kEtapas)
        if (e.codigo != 0 && e.codigo == codigo.entero()) return e.nombre;
    return "PREVIA 1";
}

bool HayAjustesOReclasificaciones(Sesion& s) {
    BaseDatos& db = EmpresaAbierta(s);
    return !db.escalar("SELECT 1 FROM Ajustes LIMIT 1").esNulo() ||
           !db.escalar("SELECT 1 FROM Reclasificaciones LIMIT 1").esNulo();
}

}  // namespace velmorant
