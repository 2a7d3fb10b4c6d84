// Rule 10: a random sample of the accounts of normal sign of an integration
// account. Its limits and population live in the text of `Descripcion`.

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <unordered_set>

#include "review/SeleccionCuentas.h"
#include "review/SeleccionCuentasRegistro.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

constexpr long kAleatoria = 10;
const std::string kMarcaSaldoAnterior = "Sdo.Ant.";

std::string Recorta(const std::string& t) {
    size_t a = t.find_first_not_of(' ');
    if (a == std::string::npos) return "";
    return t.substr(a, t.find_last_not_of(' ') - a + 1);
}

bool TerminaEn(const std::string& t, const std::string& fin) {
    return t.size() >= fin.size() && t.compare(t.size() - fin.size(), fin.size(), fin) == 0;
}

// A limit: the piece from its second character on, as currency. A piece
// that is not a number gives no limit.
Moneda Limite(const std::string& pieza) {
    if (pieza.size() < 2) return {};
    return Moneda::desdeTexto(pieza.substr(1)).value_or(Moneda{});
}

// The text from the 1-based position `desde` up to before `hasta` (0: the end).
std::string Entre(const std::string& t, int desde, int hasta = 0) {
    size_t a = static_cast<size_t>(desde);
    if (a >= t.size()) return "";
    return hasta ? t.substr(a, static_cast<size_t>(hasta - 1) - a) : t.substr(a);
}

// `Porcentaje` as a 16-bit integer, halves to the even number.
int PorcentajeEntero(double porcentaje) {
    double p = RedondeaAlPar(porcentaje, 0);
    return static_cast<int>(std::clamp(p, static_cast<double>(std::numeric_limits<std::int16_t>::min()),
                                       static_cast<double>(std::numeric_limits<std::int16_t>::max())));
}

int UltimoMesRevision(const Sesion& s) { return s.MesesRevision.empty() ? 0 : s.MesesRevision.back(); }

// Every account of `SeleccionDetalle`, of all months, as it stands now.
std::unordered_set<std::string> CuentasSeleccionadas(BaseDatos& db) {
    std::unordered_set<std::string> r;
    Consulta c = db.consulta("SELECT Cuenta FROM SeleccionDetalle");
    for (c.primero(); !c.eof(); c.siguiente()) r.insert(ClaveCuenta(SiNuloTexto(c["Cuenta"])));
    return r;
}

// The first candidate of that code, or an empty set.
Consulta Candidata(BaseDatos& db, const std::string& cuenta) {
    return db.consulta("SELECT Cuenta, SaldoFin FROM SeleccionDetalleTmp WHERE Cuenta = ? ORDER BY rowid LIMIT 1",
                       cuenta);
}

// Registers again, in the order of the copy and whatever their month, each
// account drawn before that is still a candidate; the others leave without
// a word.
void ReseleccionaCuentasPrevias(Sesion& s, RegistroSeleccion& registro, Consulta& previas) {
    for (previas.primero(); !previas.eof(); previas.siguiente()) {
        Consulta c = Candidata(*s.DbEmpresa, SiNuloTexto(previas["Cuenta"]));
        if (!c.vacia()) registro.registra(c["Cuenta"].texto(), c["SaldoFin"].moneda(), kAleatoria);
    }
}

// The accounts the sample is drawn from: of normal sign, with a balance
// (marked text) or with movements, within the limits.
Consulta Poblacion(Sesion& s, const std::string& cta, const LimitesAleatoria& l) {
    std::string sql = "SELECT Cuenta, SaldoFin" + CandidatasDeIntegracion(false) +
                      (l.saldoAnterior ? " AND SaldoFin <> 0" : " AND ConMovtos");
    if (!l.inferior.esCero()) sql += " AND SaldoFin > ?";
    if (!l.superior.esCero()) sql += " AND SaldoFin < ?";
    Sentencia& st = s.DbEmpresa->preparada(sql + " ORDER BY rowid");
    st.reinicia();
    st.liga(1, LongitudIntegracion(s)).liga(2, cta);
    int i = 3;
    if (!l.inferior.esCero()) st.liga(i++, l.inferior);
    if (!l.superior.esCero()) st.liga(i++, l.superior);
    return Consulta(st);
}

// Registers the drawn accounts in the order drawn, with their balance in the
// population; returns their codes.
std::vector<std::string> AgregaCuentasSorteadas(RegistroSeleccion& registro, Consulta& poblacion,
                                                const std::vector<std::string>& pool,
                                                const std::vector<int>& posiciones) {
    std::unordered_map<std::string, size_t> fila;
    for (poblacion.primero(); !poblacion.eof(); poblacion.siguiente())
        fila.emplace(ClaveCuenta(poblacion["Cuenta"].texto()), poblacion.posicion());
    std::vector<std::string> sorteadas;
    for (int p : posiciones) {
        const std::string& cuenta = pool.at(static_cast<size_t>(p));
        poblacion.mueveA(fila.at(ClaveCuenta(cuenta)));
        registro.registra(poblacion["Cuenta"].texto(), poblacion["SaldoFin"].moneda(), kAleatoria);
        sorteadas.push_back(cuenta);
    }
    return sorteadas;
}

// Draws what the sample lacks from the accounts of the population that no
// rule holds, when it lacks three or more; then rewrites the rule's text and
// records the draw. `h` comes with the rule and its earlier count.
void CompletaMuestra(Sesion& s, RegistroSeleccion& registro, RegistroSorteo& h,
                     const std::unordered_set<std::string>& yaSeleccionadas, const FuenteSemilla& semillas) {
    LimitesAleatoria limites = LeeDescripcionAleatoria(h.descripcion);
    Consulta poblacion = Poblacion(s, h.ctaIntegracion, limites);
    h.poblacion = static_cast<long>(poblacion.cuentaRegistros());
    h.muestra = MuestraAleatoria(h.porcentaje, h.poblacion);
    h.porSortear = h.muestra - h.previas;
    if (h.porSortear <= 2) return;  // a top-up of fewer than three accounts is not made

    std::vector<std::string> pool;
    for (poblacion.primero(); !poblacion.eof(); poblacion.siguiente()) {
        h.totalPoblacion += poblacion["SaldoFin"].moneda();
        std::string cuenta = poblacion["Cuenta"].texto();
        if (!yaSeleccionadas.count(ClaveCuenta(cuenta))) pool.push_back(cuenta);
    }
    h.disponibles = static_cast<long>(pool.size());
    h.sorteo = SorteaPosiciones(static_cast<int>(pool.size()), static_cast<int>(h.porSortear), semillas);
    h.cuentas = AgregaCuentasSorteadas(registro, poblacion, pool, h.sorteo.posiciones);
    s.DbEmpresa->ejecuta(
        "UPDATE SeleccionMaster SET Descripcion = ? WHERE CtaIntegracion = ? AND MesRevision = ? AND IdCriterio = ?",
        DescripcionAleatoria(h.porcentaje, h.muestra, h.poblacion, limites), h.ctaIntegracion, h.mesRevision,
        kAleatoria);
    RegistraSorteo(*s.DbEmpresa, h);
}

}  // namespace

LimitesAleatoria LeeDescripcionAleatoria(const std::string& descripcion) {
    LimitesAleatoria l;
    l.saldoAnterior = TerminaEn(descripcion, kMarcaSaldoAnterior);
    // The mark is not part of a limit: "…, < 100 Sdo.Ant." limits at 100.
    std::string t = l.saldoAnterior ? descripcion.substr(0, descripcion.size() - kMarcaSaldoAnterior.size())
                                    : descripcion;
    std::vector<int> comas = PosicionesDeSeparador(t, ",");
    if (comas.size() == 2) {
        std::string pieza = Recorta(Entre(t, comas[1]));
        (pieza.rfind('<', 0) == 0 ? l.inferior : l.superior) = Limite(pieza);
    } else if (comas.size() == 3) {
        l.inferior = Limite(Recorta(Entre(t, comas[1], comas[2])));
        l.superior = Limite(Recorta(Entre(t, comas[2])));
    }
    return l;
}

std::string DescripcionAleatoria(int porcentaje, long muestra, long poblacion, const LimitesAleatoria& limites) {
    std::string t = "Aleatoria del " + std::to_string(porcentaje) + "%, " + std::to_string(muestra) +
                    " cuentas de " + std::to_string(poblacion);
    if (!limites.inferior.esCero()) t += ", < " + limites.inferior.texto();
    if (!limites.superior.esCero()) t += ", > " + limites.superior.texto();
    return t;
}

long MuestraAleatoria(int porcentaje, long poblacion) {
    long long producto = static_cast<long long>(porcentaje) * poblacion;
    return static_cast<long>(RedondeaAlPar(static_cast<double>(producto) / 100.0, 0));
}

void SeleccionaCuentasAleatorias(Sesion& s, const std::string& ctaIntegracion, int mes,
                                 const std::string& descripcion, double porcentaje, const FuenteSemilla& semillas) {
    BaseDatos& db = *s.DbEmpresa;
    // Taken before the earlier draws come back: those count as chosen only
    // when another month or rule holds them too.
    std::unordered_set<std::string> yaSeleccionadas = CuentasSeleccionadas(db);
    RegistroSeleccion registro(s, ctaIntegracion, mes);
    Consulta previas = db.consulta(
        "SELECT Cuenta FROM SeleccPreviaCtasBalTmp WHERE CtaIntegracion = ? AND IdCriterio = ? ORDER BY rowid",
        ctaIntegracion, kAleatoria);
    ReseleccionaCuentasPrevias(s, registro, previas);
    if (mes != UltimoMesRevision(s)) return;  // only the last review month draws

    RegistroSorteo h;
    h.mesRevision = mes;
    h.ctaIntegracion = ctaIntegracion;
    h.descripcion = descripcion;
    h.porcentaje = PorcentajeEntero(porcentaje);
    h.previas = static_cast<long>(previas.cuentaRegistros());
    CompletaMuestra(s, registro, h, yaSeleccionadas, semillas);
}

}  // namespace velmorant
