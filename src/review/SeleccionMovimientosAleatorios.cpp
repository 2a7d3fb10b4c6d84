// Criteria 10 and 11: the movements that the earlier schedule held, then a
// random sample of the new months' movements.

#include <algorithm>
#include <cctype>
#include <ctime>
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

std::uint32_t SegundosDesdeMedianoche() {
    std::time_t ahora = std::time(nullptr);
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &ahora);
#else
    localtime_r(&ahora, &local);
#endif
    return static_cast<std::uint32_t>(local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec);
}

namespace {

// The generator of the draws. Seeding mixes the seed into the state rather
// than replacing it, so that draws seeded within the same second still move
// on instead of repeating one number.
class GeneradorSorteo {
public:
    void siembra(std::uint32_t semilla) { estado_ = Mezcla(estado_ ^ (semilla * 0x9E3779B97F4A7C15ULL)); }
    /// A number in [0, 1).
    double siguiente() {
        estado_ = Mezcla(estado_);
        return static_cast<double>(estado_ >> 11) * 0x1.0p-53;
    }

private:
    std::uint64_t estado_ = 0x2545F4914F6CDD1DULL;
    static std::uint64_t Mezcla(std::uint64_t z) {
        z += 0x9E3779B97F4A7C15ULL;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
};

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

// Draws the sample of the new movements and registers it. Returns how many
// were drawn, or nothing when fewer than three movements stand to be drawn.
std::optional<int> RegistraMuestra(RegistroCedula& registro, const std::vector<FilaMovimiento>& nuevos,
                                   double porcentaje, int idCriterio, const FuenteSemillaCedula& semilla) {
    const int n = static_cast<int>(nuevos.size());
    if (n < 3) return std::nullopt;
    const int muestra = static_cast<int>(RedondeaAlPar(porcentaje * n / 100.0, 0));
    auto posiciones = SorteaPosicionesMovimientos(n, muestra, semilla);
    for (int p : posiciones) {
        // Found again by voucher, amount and text: the first such row of the set.
        const FilaMovimiento& sorteada = nuevos[static_cast<size_t>(p)];
        for (auto& f : nuevos)
            if (f.idPoliza == sorteada.idPoliza && f.importe == sorteada.importe &&
                IgualSinMayusculas(SiNuloTexto(f.referencia), SiNuloTexto(sorteada.referencia))) {
                registro.registra(f, idCriterio);
                break;
            }
    }
    return static_cast<int>(posiciones.size());
}

long Cuenta(Sesion& s, const std::string& sql, const std::vector<Valor>& parametros) {
    return static_cast<long>(cedula::ConsultaCon(*s.DbEmpresa, sql, parametros).cuentaRegistros());
}

}  // namespace

std::vector<int> SorteaPosicionesMovimientos(int total, int cuantas, const FuenteSemillaCedula& semilla) {
    std::vector<int> sorteadas;
    if (total <= 0 || cuantas <= 0) return sorteadas;
    if (cuantas >= total) {
        // A pool no larger than the sample is taken whole: drawing could never end.
        for (int i = 0; i < total; ++i) sorteadas.push_back(i);
        return sorteadas;
    }
    GeneradorSorteo generador;
    while (static_cast<int>(sorteadas.size()) < cuantas) {
        generador.siembra(semilla());
        const int p = std::min(total - 1, static_cast<int>(generador.siguiente() * total));
        // The list of drawn positions starts as one empty element that reads as 0.
        const bool repetida =
            sorteadas.empty() ? p == 0 : std::find(sorteadas.begin(), sorteadas.end(), p) != sorteadas.end();
        if (!repetida) sorteadas.push_back(p);
    }
    return sorteadas;
}

void SeleccionaMovimientosAleatorios(Sesion& s, double porcentaje, const std::string& cuenta, int idCriterio,
                                     int ultimoMesImportado, int ultimoMesNuevo, const std::string& descripcion,
                                     const FuenteSemillaCedula& semilla) {
    BaseDatos& db = *s.DbEmpresa;
    const long poblacion = Cuenta(s,
                                  "SELECT rowid FROM SelecPolizas_DetalleTmp WHERE Cuenta = ? AND ImporteAbs > 0 "
                                  "AND NOT SaldoContraNat",
                                  {cuenta});
    RegistroCedula registro(s);
    auto previos = Movimientos(db.consulta(
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol <= ? AND Cuenta = ? AND ImporteAbs > 0 "
        "AND NOT SaldoContraNat AND MovRevisado = 1 ORDER BY rowid",
        ultimoMesImportado, cuenta));
    for (auto& f : previos)
        if (f.movRevisado.entero() == 1) registro.registra(f, idCriterio);

    const Limites limites = LimitesPorSigno(descripcion);
    std::vector<Valor> parametros{ultimoMesImportado + 1, ultimoMesNuevo, cuenta};
    // "MovRevisado=NULL" is true for no row: as the system stands, no new
    // movement is ever drawn here.
    std::string sql =
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol BETWEEN ? AND ? AND Cuenta = ? "
        "AND ImporteAbs > 0 AND NOT SaldoContraNat AND MovRevisado=NULL";
    sql += FiltroLimites(limites, parametros) + " ORDER BY rowid";
    auto nuevos = Movimientos(cedula::ConsultaCon(db, sql, parametros));
    auto sorteados = RegistraMuestra(registro, nuevos, porcentaje, idCriterio, semilla);
    if (!sorteados) return;

    const long partidas = *sorteados + static_cast<long>(previos.size());
    const std::string texto = "Aleatoria del " + TextoNumero(porcentaje) + "%, " + std::to_string(partidas) +
                              " partidas de " + std::to_string(poblacion) + TextoLimites(limites, true);
    // TotalCta receives a count of movements here, not an amount.
    db.ejecuta("UPDATE CedAnaliticaMaster SET TotalCta = ?, Descripcion = ? WHERE CtaIntegracion = ? AND IdCriterio = ?",
               Moneda::desdeEntero(partidas), texto, cuenta, idCriterio);
}

void SeleccionaMovimientosAleatoriosTipo(Sesion& s, double porcentaje, const std::string& cuenta, int idCriterio,
                                         int ultimoMesImportado, int ultimoMesNuevo, const std::string& descripcion,
                                         const FuenteSemillaCedula& semilla) {
    BaseDatos& db = *s.DbEmpresa;
    const bool todos = descripcion.find("Cargos y Abonos") != std::string::npos;
    const bool cargos = !todos && descripcion.find("Cargos") != std::string::npos;
    const bool abonos = !todos && !cargos && descripcion.find("Abonos") != std::string::npos;

    std::string sqlPoblacion = "SELECT rowid FROM SelecPolizas_DetalleTmp WHERE Cuenta = ? AND ImporteAbs > 0";
    if (cargos) sqlPoblacion += " AND TipoMov='D'";
    if (abonos) sqlPoblacion += " AND TipoMov='H'";
    const long poblacion = Cuenta(s, sqlPoblacion, {cuenta});

    RegistroCedula registro(s, false);  // no remarks under this rule
    auto previos = Movimientos(db.consulta(
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol <= ? AND Cuenta = ? AND ImporteAbs > 0 "
        "AND MovRevisado=1 ORDER BY rowid",
        ultimoMesImportado, cuenta));
    for (auto& f : previos)
        if (f.movRevisado.entero() == 1) registro.registra(f, idCriterio);

    const Limites limites = LimitesPorPosicion(descripcion);
    std::vector<Valor> parametros{ultimoMesImportado + 1, ultimoMesNuevo, cuenta};
    std::string sql =
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol BETWEEN ? AND ? AND Cuenta = ? "
        "AND ImporteAbs > 0 AND MovRevisado=NULL";  // true for no row, as for criterion 10
    if (!todos) sql += cargos ? " AND TipoMov='D'" : " AND TipoMov='H'";
    sql += FiltroLimites(limites, parametros) + " ORDER BY rowid";
    auto nuevos = Movimientos(cedula::ConsultaCon(db, sql, parametros));
    auto sorteados = RegistraMuestra(registro, nuevos, porcentaje, idCriterio, semilla);
    if (!sorteados) return;

    const long partidas = *sorteados + static_cast<long>(previos.size());
    std::string texto = cargos ? "Aleatoria de Cargos" : abonos ? "Aleatoria de Abonos" : "Cargos y Abonos";
    texto += " del " + TextoNumero(porcentaje) + "%, " + std::to_string(partidas) + " partidas de " +
             std::to_string(poblacion) + TextoLimites(limites, false);
    db.ejecuta("UPDATE CedAnaliticaMaster SET Descripcion = ?, Porcentaje = ? WHERE CtaIntegracion = ? "
               "AND IdCriterio = 11",
               texto, porcentaje, cuenta);
}

}  // namespace velmorant
