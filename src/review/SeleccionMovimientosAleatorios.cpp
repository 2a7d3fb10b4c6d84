// Criteria 10 and 11: the movements that the earlier schedule held, then a
// random sample of the new months' movements.

#include <algorithm>
#include <cctype>
#include <optional>

#include "review/CedulaAnaliticaComun.h"
#include "review/SeleccionMovimientos.h"
#include "review/SeleccionMovimientosRegistro.h"
#include "session/Funciones.h"

namespace velmorant {

using cedula::FilaMovimiento;
using cedula::Movimientos;
using cedula::Recorta;
using cedula::TextoNumero;
using cedula::RegistroCedula;

namespace {

struct Limites {
    Moneda inferior, superior;
};

std::vector<size_t> Comas(const std::string& t) {
    std::vector<size_t> p;
    for (size_t i = 0; i < t.size(); ++i)
        if (t[i] == ',') p.push_back(i);
    return p;
}

Moneda LeeImporte(const std::string& t) { return Moneda::desdeTexto(Recorta(t)).value_or(Moneda()); }

std::string DesdeSegundo(const std::string& t) { return t.empty() ? t : t.substr(1); }

// Criterion 10 reads each piece after the second comma by the sign it holds:
// "<" before the lower limit, ">" before the upper one.
Limites LimitesPorSigno(const std::string& d) {
    Limites l;
    auto prueba = [&l](std::string pieza) {
        pieza = Recorta(pieza);
        if (size_t p = pieza.find('<'); p != std::string::npos)
            l.inferior = LeeImporte(pieza.substr(p + 1));
        else if (size_t q = pieza.find('>'); q != std::string::npos)
            l.superior = LeeImporte(pieza.substr(q + 1));
    };
    auto c = Comas(d);
    if (c.size() == 2) prueba(d.substr(c[1] + 1));
    if (c.size() == 3) {
        prueba(d.substr(c[1] + 1, c[2] - c[1] - 1));
        prueba(d.substr(c[2] + 1));
    }
    return l;
}

// Criterion 11 reads them by place, as the account draws do: with two commas
// a first "<" makes the lower limit and anything else the upper; with three,
// the lower and then the upper, each from its second character.
Limites LimitesPorPosicion(const std::string& d) {
    Limites l;
    auto c = Comas(d);
    if (c.size() == 2) {
        std::string pieza = Recorta(d.substr(c[1] + 1));
        (pieza.rfind('<', 0) == 0 ? l.inferior : l.superior) = LeeImporte(DesdeSegundo(pieza));
    }
    if (c.size() == 3) {
        l.inferior = LeeImporte(DesdeSegundo(Recorta(d.substr(c[1] + 1, c[2] - c[1] - 1))));
        l.superior = LeeImporte(DesdeSegundo(Recorta(d.substr(c[2] + 1))));
    }
    return l;
}

std::string FiltroLimites(const Limites& l, std::vector<Valor>& parametros) {
    std::string filtro;
    if (!l.inferior.esCero()) {
        filtro += " AND ImporteAbs > ?";
        parametros.emplace_back(l.inferior);
    }
    if (!l.superior.esCero()) {
        filtro += " AND ImporteAbs < ?";
        parametros.emplace_back(l.superior);
    }
    return filtro;
}

std::string TextoLimites(const Limites& l, bool soloPositivos) {
    auto cuenta = [&](Moneda m) { return soloPositivos ? m > Moneda() : !m.esCero(); };
    std::string t;
    if (cuenta(l.inferior)) t += ", < " + l.inferior.texto();
    if (cuenta(l.superior)) t += ", > " + l.superior.texto();
    return t;
}

bool IgualSinMayusculas(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::toupper(x) == std::toupper(y);
    });
}

// The history row of a movement draw, before the population is counted. A
// movement rule has no review month: 0 stands in its place.
RegistroSorteo Historial(int idCriterio, const std::string& cuenta, const std::string& descripcion,
                         double porcentaje) {
    RegistroSorteo h;
    h.idCriterio = idCriterio;
    h.mesRevision = 0;
    h.ctaIntegracion = cuenta;
    h.descripcion = descripcion;
    h.porcentaje = static_cast<int>(RedondeaAlPar(porcentaje, 0));
    return h;
}

// How many movements the rule's population holds, and their amount.
void Poblacion(Sesion& s, const std::string& filtro, const std::string& cuenta, RegistroSorteo& h) {
    Consulta c = s.DbEmpresa->consulta(
        "SELECT COUNT(*) AS N, SUM(ImporteAbs) AS Total FROM SelecPolizas_DetalleTmp WHERE Cuenta = ? "
        "AND ImporteAbs > 0" + filtro,
        cuenta);
    h.poblacion = static_cast<long>(c["N"].entero());
    h.totalPoblacion = c["Total"].moneda();
}

// The earlier movements of the rule: those the earlier schedule held.
std::vector<FilaMovimiento> RegistraPrevios(Sesion& s, RegistroCedula& registro, const std::string& filtro,
                                            const std::string& cuenta, int ultimoMesImportado, RegistroSorteo& h) {
    auto previos = Movimientos(s.DbEmpresa->consulta(
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol <= ? AND Cuenta = ? AND ImporteAbs > 0" + filtro +
            " AND MovRevisado=1 ORDER BY rowid",
        ultimoMesImportado, cuenta));
    for (auto& f : previos)
        if (f.movRevisado.entero() == 1) registro.registra(f, static_cast<int>(h.idCriterio));
    h.previas = static_cast<long>(previos.size());
    return previos;
}

// A movement as the history names it: voucher type, number and date, and amount.
std::string NombreMovimiento(const FilaMovimiento& f, Sesion& s) {
    const std::int64_t id = SiNuloCero(f.idPoliza).entero();
    return DatoDePoliza(s, id, "Tipo") + " " + DatoDePoliza(s, id, "Poliza") + " " + DatoDePoliza(s, id, "Fecha") +
           " " + f.importe.texto();
}

}  // namespace

namespace cedula {

std::optional<int> SorteaMovimientosNuevos(Sesion& s, RegistroCedula& registro,
                                           const std::vector<FilaMovimiento>& nuevos, double porcentaje,
                                           RegistroSorteo& h, const FuenteSemilla& semillas) {
    const int n = static_cast<int>(nuevos.size());
    if (n < 3) return std::nullopt;
    h.muestra = static_cast<long>(RedondeaAlPar(porcentaje * n / 100.0, 0));
    h.porSortear = h.muestra;
    h.disponibles = n;
    h.sorteo = SorteaPosiciones(n, static_cast<int>(h.muestra), semillas);
    for (int p : h.sorteo.posiciones) {
        // Found again by voucher, amount and text: the first such row of the set.
        const FilaMovimiento& sorteada = nuevos[static_cast<size_t>(p)];
        for (auto& f : nuevos)
            if (f.idPoliza == sorteada.idPoliza && f.importe == sorteada.importe &&
                IgualSinMayusculas(SiNuloTexto(f.referencia), SiNuloTexto(sorteada.referencia))) {
                registro.registra(f, static_cast<int>(h.idCriterio));
                h.cuentas.push_back(NombreMovimiento(f, s));
                break;
            }
    }
    RegistraSorteo(*s.DbEmpresa, h);
    return static_cast<int>(h.sorteo.posiciones.size());
}

}  // namespace cedula

void SeleccionaMovimientosAleatorios(Sesion& s, double porcentaje, const std::string& cuenta, int idCriterio,
                                     int ultimoMesImportado, int ultimoMesNuevo, const std::string& descripcion,
                                     const FuenteSemilla& semillas) {
    BaseDatos& db = *s.DbEmpresa;
    RegistroSorteo h = Historial(idCriterio, cuenta, descripcion, porcentaje);
    Poblacion(s, " AND NOT SaldoContraNat", cuenta, h);
    RegistroCedula registro(s);
    RegistraPrevios(s, registro, " AND NOT SaldoContraNat", cuenta, ultimoMesImportado, h);

    const Limites limites = LimitesPorSigno(descripcion);
    std::vector<Valor> parametros{ultimoMesImportado + 1, ultimoMesNuevo, cuenta};
    // "MovRevisado=NULL" is true for no row: as the system stands, no new
    // movement is ever drawn here.
    std::string sql =
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol BETWEEN ? AND ? AND Cuenta = ? "
        "AND ImporteAbs > 0 AND NOT SaldoContraNat AND MovRevisado=NULL";
    sql += FiltroLimites(limites, parametros) + " ORDER BY rowid";
    auto nuevos = Movimientos(cedula::ConsultaCon(db, sql, parametros));
    auto sorteados = cedula::SorteaMovimientosNuevos(s, registro, nuevos, porcentaje, h, semillas);
    if (!sorteados) return;

    const long partidas = *sorteados + h.previas;
    const std::string texto = "Aleatoria del " + TextoNumero(porcentaje) + "%, " + std::to_string(partidas) +
                              " partidas de " + std::to_string(h.poblacion) + TextoLimites(limites, true);
    // TotalCta receives a count of movements here, not an amount.
    db.ejecuta("UPDATE CedAnaliticaMaster SET TotalCta = ?, Descripcion = ? WHERE CtaIntegracion = ? AND IdCriterio = ?",
               Moneda::desdeEntero(partidas), texto, cuenta, idCriterio);
}

void SeleccionaMovimientosAleatoriosTipo(Sesion& s, double porcentaje, const std::string& cuenta, int idCriterio,
                                         int ultimoMesImportado, int ultimoMesNuevo, const std::string& descripcion,
                                         const FuenteSemilla& semillas) {
    BaseDatos& db = *s.DbEmpresa;
    const bool todos = descripcion.find("Cargos y Abonos") != std::string::npos;
    const bool cargos = !todos && descripcion.find("Cargos") != std::string::npos;
    const bool abonos = !todos && !cargos && descripcion.find("Abonos") != std::string::npos;

    RegistroSorteo h = Historial(idCriterio, cuenta, descripcion, porcentaje);
    Poblacion(s, cargos ? " AND TipoMov='D'" : abonos ? " AND TipoMov='H'" : "", cuenta, h);
    RegistroCedula registro(s, false);  // no remarks under this rule
    RegistraPrevios(s, registro, "", cuenta, ultimoMesImportado, h);  // of any kind

    const Limites limites = LimitesPorPosicion(descripcion);
    std::vector<Valor> parametros{ultimoMesImportado + 1, ultimoMesNuevo, cuenta};
    std::string sql =
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol BETWEEN ? AND ? AND Cuenta = ? "
        "AND ImporteAbs > 0 AND MovRevisado=NULL";  // true for no row, as for criterion 10
    if (!todos) sql += cargos ? " AND TipoMov='D'" : " AND TipoMov='H'";
    sql += FiltroLimites(limites, parametros) + " ORDER BY rowid";
    auto nuevos = Movimientos(cedula::ConsultaCon(db, sql, parametros));
    auto sorteados = cedula::SorteaMovimientosNuevos(s, registro, nuevos, porcentaje, h, semillas);
    if (!sorteados) return;

    const long partidas = *sorteados + h.previas;
    std::string texto = cargos ? "Aleatoria de Cargos" : abonos ? "Aleatoria de Abonos" : "Cargos y Abonos";
    texto += " del " + TextoNumero(porcentaje) + "%, " + std::to_string(partidas) + " partidas de " +
             std::to_string(h.poblacion) + TextoLimites(limites, false);
    db.ejecuta("UPDATE CedAnaliticaMaster SET Descripcion = ?, Porcentaje = ? WHERE CtaIntegracion = ? "
               "AND IdCriterio = 11",
               texto, porcentaje, cuenta);
}

}  // namespace velmorant
