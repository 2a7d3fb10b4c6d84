#include "pipeline/Comparacion.h"

#include <cctype>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <vector>

#include "accounts/CodigosCuenta.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/MesPorIndice.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// Searches by key take the first match in table order (rowid), as a walk of
// the whole table would find it; the identity index keeps equal keys in
// rowid order, so the search is one index probe. A voucher of months 1 to 12
// and a closing voucher of month 13 are never partners, even with the same
// number, type and date: each month's key looks only among its own kind.
constexpr const char* kBuscaTmpPorFecha =
    "SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas_Tmp "
    "WHERE Poliza=? AND Tipo=? AND Fecha=? AND NOT IFNULL(Poliza_Mes13,0) ORDER BY rowid LIMIT 1";
constexpr const char* kBuscaTmpMes13 =
    "SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas_Tmp "
    "WHERE Poliza=? AND Tipo=? AND Month(Fecha)=12 AND IFNULL(Poliza_Mes13,0)<>0 ORDER BY rowid LIMIT 1";
constexpr const char* kBuscaEmpresaPorFecha =
    "SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas "
    "WHERE Poliza=? AND Tipo=? AND Fecha=? AND NOT IFNULL(Poliza_Mes13,0) ORDER BY rowid LIMIT 1";
constexpr const char* kBuscaEmpresaMes13 =
    "SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas "
    "WHERE Poliza=? AND Tipo=? AND Month(Fecha)=12 AND IFNULL(Poliza_Mes13,0)<>0 ORDER BY rowid LIMIT 1";

constexpr const char* kLineasEmpresa =
    "SELECT Cuenta, TipoMov, Importe, Referencia, Partida FROM Polizas_Detalle WHERE IdPoliza=? "
    "ORDER BY Partida ASC, rowid";
constexpr const char* kLineasTmp =
    "SELECT Cuenta, TipoMov, Importe, Referencia, Partida FROM Polizas_Detalle_Tmp WHERE IdPoliza=? "
    "ORDER BY Partida ASC, rowid";
constexpr const char* kCuentaLineasEmpresa = "SELECT COUNT(*) FROM Polizas_Detalle WHERE IdPoliza=?";

constexpr const char* kMarcaRevisado = "UPDATE Polizas_Tmp SET Revisado=-1 WHERE rowid=?";

/// A voucher header as the comparison needs it; `fila` is its rowid.
struct Encabezado {
    std::int64_t fila = 0;
    Valor IdPoliza, Poliza, Tipo, Fecha, Concepto;
};

struct Linea {
    Valor Cuenta, TipoMov, Importe, Referencia, Partida;
};

/// The month of a two-digit text; 0 for anything that is not a number.
int NumeroMes(const std::string& mes) {
    int n = 0;
    for (char c : mes) {
        if (!std::isdigit(static_cast<unsigned char>(c)) || n > 100) return 0;
        n = n * 10 + (c - '0');
    }
    return n;
}

bool EsMes13(const std::string& mes) { return NumeroMes(mes) == 13; }


Encabezado LeeEncabezado(const Sentencia& st) {
    return {st.columna(0).entero(), st.columna(1), st.columna(2), st.columna(3), st.columna(4), st.columna(5)};
}

std::vector<Encabezado> LeeEncabezados(Consulta c) {
    std::vector<Encabezado> r;
    r.reserve(c.cuentaRegistros());
    for (c.primero(); !c.eof(); c.siguiente())
        r.push_back({c.campo(0).entero(), c.campo(1), c.campo(2), c.campo(3), c.campo(4), c.campo(5)});
    return r;
}

std::vector<Linea> LeeLineas(BaseDatos& db, const char* sql, const Valor& idPoliza) {
    Sentencia& st = db.preparada(sql);
    st.con(idPoliza);
    std::vector<Linea> r;
    while (st.paso()) r.push_back({st.columna(0), st.columna(1), st.columna(2), st.columna(3), st.columna(4)});
    st.reinicia();
    return r;
}

/// The date as the key compares it: a blank date counts as 1 January 1900.
std::string FechaClave(const Valor& fecha) {
    auto f = fecha.fecha();
    return f ? f->iso() : Fecha(1900, 1, 1).iso();
}

/// The partner of `de` in the other table: in the normal months the number
/// goes through QuitaCaracteresEspeciales and the partner is no closing
/// voucher; in month 13 the number is taken as it is, the partner is a
/// closing voucher, and the date is free to move within December.
std::optional<Encabezado> BuscaPorClave(BaseDatos& db, bool enTmp, bool mes13, const Encabezado& de) {
    const char* sql = enTmp ? (mes13 ? kBuscaTmpMes13 : kBuscaTmpPorFecha)
                            : (mes13 ? kBuscaEmpresaMes13 : kBuscaEmpresaPorFecha);
    Sentencia& st = db.preparada(sql);
    std::string tipo = SiNuloTexto(de.Tipo);
    if (mes13)
        st.con(SiNuloTexto(de.Poliza), tipo);
    else
        st.con(QuitaCaracteresEspeciales(SiNuloTexto(de.Poliza)), tipo, FechaClave(de.Fecha));
    std::optional<Encabezado> r;
    if (st.paso()) r = LeeEncabezado(st);
    st.reinicia();
    return r;
}

// ------------------------------------------------------------------ Texts

/// Blanks removed at both ends, as the legacy Trim did (spaces only).
std::string QuitaBlancos(const std::string& t) {
    size_t a = t.find_first_not_of(' ');
    if (a == std::string::npos) return "";
    return t.substr(a, t.find_last_not_of(' ') - a + 1);
}

/// Text equality of a search: letters compare without case, as the stores'
/// text columns do. A Null field matches no text.
bool CoincideTexto(const Valor& campo, const std::string& buscado) {
    if (campo.esNulo()) return false;
    std::string t = campo.texto();
    if (t.size() != buscado.size()) return false;
    for (size_t i = 0; i < t.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(t[i])) != std::tolower(static_cast<unsigned char>(buscado[i])))
            return false;
    return true;
}

std::string TextoMoneda(const Valor& v) { return v.moneda().formatoMoneda(); }

// -------------------------------------------------------------- The log

void Registra(Sesion& s, const std::string& texto, const char* clasif, const Encabezado& poliza,
              const std::string& cuenta) {
    RegistraInconsistencia(s, texto, kFuentePolizas, clasif, SiNuloTexto(poliza.Poliza),
                           SiNuloTexto(poliza.Tipo), poliza.Fecha.fecha(), cuenta);
}

/// The heading row "La Póliza cambió en :" of one old voucher, logged once
/// before the first change found in it.
class Cabecera {
public:
    Cabecera(Sesion& s, const Encabezado& anterior) : s_(s), anterior_(anterior) {}
    void asegura(const std::string& cuenta = "") {
        if (registrada_) return;
        Registra(s_, "La Póliza cambió en :", "C", anterior_, cuenta);
        registrada_ = true;
    }

private:
    Sesion& s_;
    const Encabezado& anterior_;
    bool registrada_ = false;
};

// -------------------------------------------------------------- Progress

class Avance {
public:
    Avance(Sesion& s, size_t total, const std::string& mes)
        : p_(s.progreso), nombreMes_(NombreMesDosDigitos(mes)) {
        if (p_) {
            p_->maximo(static_cast<long>(total));
            p_->valor(0);
        }
    }
    void poliza(size_t i, const Encabezado& e) {
        if (!p_) return;
        p_->etiqueta("Comparando Pol. " + SiNuloTexto(e.Poliza) + ", " + SiNuloTexto(e.Tipo) + ", " + nombreMes_);
        p_->valor(static_cast<long>(i + 1));
        p_->cede();
    }

private:
    Progreso* p_;
    std::string nombreMes_;
};

// ---------------------------------------------------- Lines of a paired voucher

const Linea* BuscaPorPosicion(const std::vector<Linea>& lineas, const Valor& partida) {
    if (partida.esNulo()) return nullptr;
    for (auto& l : lineas)
        if (!l.Partida.esNulo() && l.Partida.entero() == partida.entero()) return &l;
    return nullptr;
}

/// A line that only moved: same account, kind, amount and cleaned reference.
bool ExistePorContenido(const std::vector<Linea>& lineas, const Linea& vieja) {
    std::string cuenta = SiNuloTexto(vieja.Cuenta), tipoMov = SiNuloTexto(vieja.TipoMov);
    std::string referencia = QuitaCaracteresEspeciales(SiNuloTexto(vieja.Referencia));
    Moneda importe = vieja.Importe.moneda();
    for (auto& l : lineas)
        if (CoincideTexto(l.Cuenta, cuenta) && CoincideTexto(l.TipoMov, tipoMov) && !l.Importe.esNulo() &&
            l.Importe.moneda() == importe && CoincideTexto(l.Referencia, referencia))
            return true;
    return false;
}

void RegistraBajaDeLinea(Sesion& s, const Encabezado& anterior, const Linea& vieja) {
    std::string nombre = SiNuloTexto(vieja.TipoMov) == "D" ? "Cargo" : "Abono";
    Registra(s,
             ComponeReferencia({{"La Partida : " + SiNuloTexto(vieja.Partida) + ", Referencia: "},
                                Dato(QuitaCaracteresEspeciales(SiNuloTexto(vieja.Referencia))),
                                {", " + nombre + " por " + TextoMoneda(vieja.Importe) + " de la póliza se dió de baja."}}),
             "C", anterior, SiNuloTexto(vieja.Cuenta));
}

/// The four fields of a line found by position, in their order.
void ComparaCampos(Sesion& s, const Encabezado& anterior, Cabecera& cabecera, const Linea& vieja, const Linea& nueva) {
    const std::string partida = "Partida: " + SiNuloTexto(vieja.Partida);
    const std::string cuenta = SiNuloTexto(vieja.Cuenta);
    auto registra = [&](const std::string& texto, const std::string& cuentaCabecera) {
        cabecera.asegura(cuentaCabecera);
        Registra(s, texto, "C", anterior, cuenta);
    };
    if (cuenta != SiNuloTexto(nueva.Cuenta))
        registra(ComponeReferencia({{partida + " Cuenta -> Anterior: "}, Dato(FormateaCuenta(s, cuenta)),
                                    {"  Nueva: "}, Dato(FormateaCuenta(s, SiNuloTexto(nueva.Cuenta)))}),
                 "");
    if (SiNuloTexto(vieja.TipoMov) != SiNuloTexto(nueva.TipoMov))
        registra(ComponeReferencia({{partida + " Tipo de Movimiento -> Anterior: "}, Dato(SiNuloTexto(vieja.TipoMov)),
                                    {"  Nuevo: "}, Dato(SiNuloTexto(nueva.TipoMov))}),
                 "");
    if (vieja.Importe.moneda() != nueva.Importe.moneda())
        registra(partida + " Importe -> Anterior: " + TextoMoneda(vieja.Importe) + " Nuevo: " + TextoMoneda(nueva.Importe), "");
    const std::string referenciaNueva = QuitaCaracteresEspeciales(SiNuloTexto(nueva.Referencia));
    if (SiNuloTexto(vieja.Referencia) != QuitaBlancos(referenciaNueva))
        registra(ComponeReferencia({{partida + " Referencia -> Anterior: "},
                                    Dato(QuitaCaracteresEspeciales(SiNuloTexto(vieja.Referencia))), {"  Nuevo: "},
                                    Dato(referenciaNueva)}),
                 cuenta);
}

/// Old lines against new ones: by `Partida` first, by content second.
void ComparaLineas(Sesion& s, BaseDatos& db, const Encabezado& anterior, const Encabezado& nueva,
                   Cabecera& cabecera) {
    std::vector<Linea> viejas = LeeLineas(db, kLineasEmpresa, anterior.IdPoliza);
    if (viejas.empty()) return;
    std::vector<Linea> nuevas = LeeLineas(db, kLineasTmp, nueva.IdPoliza);
    for (auto& vieja : viejas) {
        if (const Linea* porPosicion = BuscaPorPosicion(nuevas, vieja.Partida))
            ComparaCampos(s, anterior, cabecera, vieja, *porPosicion);
        else if (!ExistePorContenido(nuevas, vieja))
            RegistraBajaDeLinea(s, anterior, vieja);
    }
}

/// Concept and date of a paired voucher.
void ComparaEncabezado(Sesion& s, const Encabezado& anterior, const Encabezado& nueva, Cabecera& cabecera) {
    if (SiNuloTexto(anterior.Concepto) != SiNuloTexto(nueva.Concepto)) {
        cabecera.asegura();
        Registra(s,
                 ComponeReferencia({{"Concepto, Anterior -> "},
                                    Dato(QuitaCaracteresEspeciales(SiNuloTexto(anterior.Concepto))), {" Nuevo -> "},
                                    Dato(SiNuloTexto(nueva.Concepto)), {"."}}),
                 "C", anterior, "");
    }
    auto fechaAnterior = anterior.Fecha.fecha(), fechaNueva = nueva.Fecha.fecha();
    if (fechaAnterior != fechaNueva) {
        auto texto = [](const std::optional<Fecha>& f) { return f ? f->ddmmaaaa() : std::string(); };
        cabecera.asegura();
        Registra(s, "Fecha, Anterior -> " + texto(fechaAnterior) + " Nueva -> " + texto(fechaNueva) + ".", "C",
                 anterior, "");
    }
}

// -------------------------------------------------------------- Indexes

/// The schema ("main" or an alias) that holds `tabla`; empty if none does.
std::string EsquemaDeTabla(BaseDatos& db, const std::string& tabla) {
    Consulta bases = db.consulta("PRAGMA database_list");
    for (bases.primero(); !bases.eof(); bases.siguiente()) {
        std::string esquema = bases["name"].texto();
        if (!db.escalar("SELECT 1 FROM \"" + esquema + "\".sqlite_master WHERE type='table' AND name=?", tabla)
                 .esNulo())
            return esquema;
    }
    return "";
}

/// True when an index of the table starts with Poliza, Tipo, Fecha.
bool TieneIndiceIdentidad(BaseDatos& db, const std::string& esquema, const std::string& tabla) {
    Consulta indices = db.consulta("PRAGMA \"" + esquema + "\".index_list(\"" + tabla + "\")");
    for (indices.primero(); !indices.eof(); indices.siguiente()) {
        Consulta columnas = db.consulta("PRAGMA \"" + esquema + "\".index_info(\"" + indices["name"].texto() + "\")");
        const char* esperadas[] = {"Poliza", "Tipo", "Fecha"};
        int iguales = 0;
        for (columnas.primero(); !columnas.eof() && iguales < 3; columnas.siguiente()) {
            if (!CoincideTexto(columnas["name"], esperadas[iguales])) break;
            ++iguales;
        }
        if (iguales == 3) return true;
    }
    return false;
}

/// The key search of the new vouchers needs an index on their identity; the
/// run store is made with one on `IdPoliza` only, so it is added here once.
void AseguraIndiceIdentidadTmp(BaseDatos& db) {
    std::string esquema = EsquemaDeTabla(db, "Polizas_Tmp");
    if (esquema.empty() || TieneIndiceIdentidad(db, esquema, "Polizas_Tmp")) return;
    db.ejecutaScript("CREATE INDEX IF NOT EXISTS \"" + esquema +
                     "\".\"Polizas_Tmp_Identidad\" ON \"Polizas_Tmp\" (Poliza, Tipo, Fecha)");
}

}  // namespace

/// The headers of `tabla` of a month (1 to 12) other than the closing
/// vouchers, with `extra` ANDed, read through the table's date index.
std::vector<Encabezado> EncabezadosDelMes(BaseDatos& db, const std::string& tabla, int mes, const std::string& extra) {
    const FiltroMes delMes = tabla == "Polizas" ? FiltroDeMes(db, tabla, mes) : FiltroDeMesTmp(db, tabla, mes);
    return LeeEncabezados(ConsultaCon(db,
                                      "SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM " + tabla + " WHERE " +
                                          delMes.condicion + extra +
                                          " AND NOT IFNULL(Poliza_Mes13,0) ORDER BY IdPoliza ASC, rowid",
                                      delMes.valores));
}

// ------------------------------------------------------------------ Steps

void ComparaPolizas(Sesion& s, const std::string& mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const bool mes13 = EsMes13(mes);
    std::vector<Encabezado> viejas =
        mes13 ? LeeEncabezados(db.consulta("SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas "
                                           "WHERE IFNULL(Poliza_Mes13,0)<>0 ORDER BY IdPoliza ASC, rowid"))
              : EncabezadosDelMes(db, "Polizas", NumeroMes(mes), "");
    if (viejas.empty()) return;
    AseguraIndiceIdentidadTmp(db);
    Avance avance(s, viejas.size(), mes);
    Transaccion t(db);
    for (size_t i = 0; i < viejas.size(); ++i) {
        const Encabezado& anterior = viejas[i];
        avance.poliza(i, anterior);
        Cabecera cabecera(s, anterior);
        std::optional<Encabezado> nueva = BuscaPorClave(db, true, mes13, anterior);
        if (!nueva) {
            Registra(s, "La Póliza se dio de baja.", "B", anterior, "");
            continue;
        }
        ComparaEncabezado(s, anterior, *nueva, cabecera);
        db.preparada(kMarcaRevisado).con(nueva->fila).ejecuta();
        ComparaLineas(s, db, anterior, *nueva, cabecera);
    }
    t.confirma();
}

void ComparaPolizasNuevas(Sesion& s, const std::string& mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const bool mes13 = EsMes13(mes);
    const bool habiaPolizas =
        mes13 ? !db.escalar("SELECT 1 FROM Polizas WHERE IFNULL(Poliza_Mes13,0)<>0 LIMIT 1").esNulo()
              : [&] {
                    const FiltroMes delMes = FiltroDeMes(db, "Polizas", NumeroMes(mes));
                    return !ConsultaCon(db, "SELECT 1 FROM Polizas WHERE " + delMes.condicion + " LIMIT 1",
                                        delMes.valores)
                                .vacia();
                }();
    if (!habiaPolizas) return;
    // The company's December counts its closing vouchers (a month it had);
    // the new closing vouchers wait for the turn of "13", which pairs them.
    std::vector<Encabezado> nuevas =
        mes13 ? LeeEncabezados(db.consulta("SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas_Tmp "
                                           "WHERE IFNULL(Poliza_Mes13,0)<>0 AND NOT IFNULL(Revisado,0) "
                                           "ORDER BY IdPoliza, rowid"))
              : EncabezadosDelMes(db, "Polizas_Tmp", NumeroMes(mes), " AND NOT IFNULL(Revisado,0)");
    if (nuevas.empty()) return;
    Avance avance(s, nuevas.size(), mes);
    Transaccion t(db);
    for (size_t i = 0; i < nuevas.size(); ++i) {
        avance.poliza(i, nuevas[i]);
        Registra(s, "Póliza nueva.", "A", nuevas[i], "");
    }
    t.confirma();
}

void ComparaPartidasNuevas(Sesion& s, const std::string& mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const bool mes13 = EsMes13(mes);
    std::vector<Encabezado> nuevas =
        mes13 ? LeeEncabezados(db.consulta("SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas_Tmp "
                                           "WHERE IFNULL(Poliza_Mes13,0)<>0 ORDER BY IdPoliza ASC, rowid"))
              : EncabezadosDelMes(db, "Polizas_Tmp", NumeroMes(mes), "");
    if (nuevas.empty()) return;
    Avance avance(s, nuevas.size(), mes);
    Transaccion t(db);
    for (size_t i = 0; i < nuevas.size(); ++i) {
        const Encabezado& nueva = nuevas[i];
        avance.poliza(i, nueva);
        std::optional<Encabezado> anterior = BuscaPorClave(db, false, mes13, nueva);
        if (!anterior) continue;
        // Only the lines past the old count are looked at: the first n are
        // taken to be the old ones.
        const size_t n = static_cast<size_t>(db.escalar(kCuentaLineasEmpresa, anterior->IdPoliza).entero());
        std::vector<Linea> lineasNuevas = LeeLineas(db, kLineasTmp, nueva.IdPoliza);
        if (lineasNuevas.size() <= n) continue;
        std::vector<Linea> lineasViejas = LeeLineas(db, kLineasEmpresa, anterior->IdPoliza);
        Cabecera cabecera(s, *anterior);
        for (size_t k = n; k < lineasNuevas.size(); ++k) {
            const std::string cuenta = SiNuloTexto(lineasNuevas[k].Cuenta);
            bool yaLaTenia = false;
            for (auto& vieja : lineasViejas) yaLaTenia = yaLaTenia || CoincideTexto(vieja.Cuenta, cuenta);
            if (yaLaTenia) continue;
            cabecera.asegura();
            Registra(s, "Se incluyó una nueva partida.", "C", *anterior, cuenta);
        }
    }
    t.confirma();
}

}  // namespace velmorant
