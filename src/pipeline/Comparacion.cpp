#include "pipeline/Comparacion.h"

#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "accounts/CodigosCuenta.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/MesPorIndice.h"
#include "platform/IndiceDeTextos.h"
#include "platform/Texto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// A voucher's partner is the first voucher in table order (rowid) of the
// other table with the same key. A voucher of months 1 to 12 and a closing
// voucher of month 13 are never partners, even with the same number, type and
// date: each month's key looks only among its own kind. The month's pairs are
// found at once: in months 1 to 12 through a hash of the keys (ParesEnMemoria
// below); in month 13, and for a store whose key columns compare otherwise,
// by one query in which the engine searches each voucher's partner through
// the other table's identity index (equal keys sit in rowid order there, so
// each search is one probe). That query computes the key with the functions
// below, registered on the connection, so it is the very text a search bound
// from C++ would use: QuitaCaracteresEspeciales of the number in months 1 to
// 12 (the number as it is in 13), the type, and the date as FechaClave gives.
constexpr const char* kFuncionTexto = "ComparacionTexto";
constexpr const char* kFuncionNumero = "ComparacionNumero";
constexpr const char* kFuncionFecha = "ComparacionFecha";

/// The partner search of `o` (a voucher row alias) in `tabla`: a scalar
/// subquery giving the partner's rowid, Null when there is none.
std::string SubconsultaPareja(const std::string& tabla, bool mes13) {
    if (mes13)
        return "(SELECT t.rowid FROM " + tabla + " t WHERE t.Poliza = ComparacionTexto(o.Poliza) "
               "AND t.Tipo = ComparacionTexto(o.Tipo) AND Month(t.Fecha)=12 AND IFNULL(t.Poliza_Mes13,0)<>0 "
               "ORDER BY t.rowid LIMIT 1)";
    return "(SELECT t.rowid FROM " + tabla + " t WHERE t.Poliza = ComparacionNumero(o.Poliza) "
           "AND t.Tipo = ComparacionTexto(o.Tipo) AND t.Fecha = ComparacionFecha(o.Fecha) "
           "AND NOT IFNULL(t.Poliza_Mes13,0) ORDER BY t.rowid LIMIT 1)";
}

constexpr const char* kLineasEmpresa =
    "SELECT Cuenta, TipoMov, Importe, Referencia, Partida FROM Polizas_Detalle WHERE IdPoliza=? "
    "ORDER BY Partida ASC, rowid";
constexpr const char* kLineasTmp =
    "SELECT Cuenta, TipoMov, Importe, Referencia, Partida FROM Polizas_Detalle_Tmp WHERE IdPoliza=? "
    "ORDER BY Partida ASC, rowid";

// The lines of many vouchers in one query: `?` is a JSON array of voucher
// rowids; the lines come voucher after voucher in the array's order (its
// index is the first column), each voucher's ordered by Partida and rowid.
constexpr const char* kLineasEmpresaDe =
    "SELECT j.key, d.Cuenta, d.TipoMov, d.Importe, d.Referencia, d.Partida FROM json_each(?) j "
    "JOIN Polizas p ON p.rowid = j.value JOIN Polizas_Detalle d ON d.IdPoliza = p.IdPoliza "
    "ORDER BY j.key, d.Partida, d.rowid";
constexpr const char* kLineasTmpDe =
    "SELECT j.key, d.Cuenta, d.TipoMov, d.Importe, d.Referencia, d.Partida FROM json_each(?) j "
    "JOIN Polizas_Tmp p ON p.rowid = j.value JOIN Polizas_Detalle_Tmp d ON d.IdPoliza = p.IdPoliza "
    "ORDER BY j.key, d.Partida, d.rowid";

constexpr const char* kMarcaRevisadas =
    "UPDATE Polizas_Tmp SET Revisado=-1 WHERE rowid IN (SELECT value FROM json_each(?))";
constexpr const char* kMarcaRevisadasEntre =
    "UPDATE Polizas_Tmp SET Revisado=-1 WHERE rowid BETWEEN ? AND ? AND rowid NOT IN (SELECT value FROM json_each(?))";

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

/// The header in columns `desde` to `desde` + 5 of the current row.
Encabezado LeeEncabezado(const Sentencia& st, int desde = 0) {
    return {st.columna(desde).entero(), st.columna(desde + 1), st.columna(desde + 2), st.columna(desde + 3),
            st.columna(desde + 4), st.columna(desde + 5)};
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

// ------------------------------------------------- Key functions of the engine

/// A value of the engine as the program reads a column.
Valor ValorDe(sqlite3_value* v) {
    switch (sqlite3_value_type(v)) {
        case SQLITE_INTEGER:
            return Valor(static_cast<long long>(sqlite3_value_int64(v)));
        case SQLITE_FLOAT:
            return Valor(sqlite3_value_double(v));
        case SQLITE_TEXT:
        case SQLITE_BLOB: {
            auto p = reinterpret_cast<const char*>(sqlite3_value_text(v));
            return Valor(std::string(p ? p : "", static_cast<size_t>(sqlite3_value_bytes(v))));
        }
        default:
            return Valor();
    }
}

template <std::string (*Clave)(const Valor&)>
void FuncionClave(sqlite3_context* c, int, sqlite3_value** argumentos) {
    try {
        const std::string t = Clave(ValorDe(argumentos[0]));
        sqlite3_result_text(c, t.data(), static_cast<int>(t.size()), SQLITE_TRANSIENT);
    } catch (...) {
        sqlite3_result_error_nomem(c);
    }
}

std::string ClaveTexto(const Valor& v) { return SiNuloTexto(v); }
std::string ClaveNumero(const Valor& v) { return QuitaCaracteresEspeciales(SiNuloTexto(v)); }

/// Registers the key functions on the connection, once: registering again
/// would expire every statement the connection keeps prepared.
void AseguraFuncionesClave(BaseDatos& db) {
    if (!db.escalar("SELECT 1 FROM pragma_function_list WHERE name = ? COLLATE NOCASE", kFuncionFecha).esNulo())
        return;
    auto registra = [&](const char* nombre, void (*f)(sqlite3_context*, int, sqlite3_value**)) {
        int rc = sqlite3_create_function(db.nativo(), nombre, 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, f,
                                         nullptr, nullptr);
        if (rc != SQLITE_OK)
            throw std::runtime_error(std::string("No se pudo registrar la función ") + nombre + ": " +
                                     sqlite3_errmsg(db.nativo()));
    };
    registra(kFuncionTexto, FuncionClave<ClaveTexto>);
    registra(kFuncionNumero, FuncionClave<ClaveNumero>);
    registra(kFuncionFecha, FuncionClave<FechaClave>);
}

/// A JSON array of rowids, for json_each.
std::string ListaJson(const std::vector<std::int64_t>& filas) {
    std::string r = "[";
    for (size_t i = 0; i < filas.size(); ++i) {
        if (i) r += ',';
        r += std::to_string(filas[i]);
    }
    return r + "]";
}

/// The whole number a value is equal to as the engine compares numbers;
/// nothing for Null, a text or a fraction.
std::optional<std::int64_t> EnteroExacto(const Valor& v) {
    if (v.esEntero()) return v.entero();
    if (v.esReal()) {
        const double d = v.real();
        if (std::trunc(d) == d && d > -9.2e18 && d < 9.2e18) return static_cast<std::int64_t>(d);
    }
    return std::nullopt;
}

/// The lines of the paired vouchers of one side, asked for in the walk's
/// order: de(k) gives those of the k-th, each voucher's ordered by Partida
/// and rowid. When their IdPoliza are integers that never go down along the
/// walk (the usual case: both tables keep the source's order) the lines come
/// from one walk of the IdPoliza index over their range, merged with the
/// walk; otherwise from the rowids, through kLineasEmpresaDe / kLineasTmpDe.
class LineasDePares {
public:
    LineasDePares(BaseDatos& db, bool tmp, const std::vector<std::int64_t>& filas, const std::vector<Valor>& ids)
        : db_(db), tmp_(tmp), ids_(ids) {
        porRango_ = !ids.empty();
        for (size_t i = 0; i < ids.size() && porRango_; ++i)
            porRango_ = ids[i].esEntero() && (i == 0 || ids[i - 1].entero() <= ids[i].entero());
        if (porRango_) {
            st_ = &db.preparada(std::string("SELECT IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida FROM ") +
                                (tmp ? "Polizas_Detalle_Tmp" : "Polizas_Detalle") +
                                " WHERE IdPoliza BETWEEN ? AND ? "
                                "ORDER BY IdPoliza, rowid");
            st_->con(ids.front().entero(), ids.back().entero());
        } else {
            st_ = &db.preparada(tmp ? kLineasTmpDe : kLineasEmpresaDe);
            st_->con(ListaJson(filas));
        }
        avanza();
    }
    ~LineasDePares() { st_->reinicia(); }
    /// True when the lines are found by IdPoliza (the vouchers' ids are
    /// integers in order): a voucher's lines are then all with its id.
    bool porRango() const { return porRango_; }
    LineasDePares(const LineasDePares&) = delete;
    LineasDePares& operator=(const LineasDePares&) = delete;

    /// The lines stand until the next call.
    std::span<const Linea> de(size_t k) {
        const std::int64_t buscada = porRango_ ? ids_[k].entero() : static_cast<std::int64_t>(k);
        // Two vouchers of the walk may share an IdPoliza: both get its lines.
        if (leida_ && buscada == ultima_) return leidas();
        leida_ = true;
        ultima_ = buscada;
        usadas_ = 0;
        while (hay_ && clave_ < buscada) avanza();
        // Each voucher's lines are read into the room the ones before left.
        while (hay_ && clave_ == buscada) {
            if (usadas_ == lineas_.size()) lineas_.emplace_back();
            Linea& l = lineas_[usadas_++];
            st_->columnaEn(1, l.Cuenta);
            st_->columnaEn(2, l.TipoMov);
            st_->columnaEn(3, l.Importe);
            st_->columnaEn(4, l.Referencia);
            st_->columnaEn(5, l.Partida);
            avanza();
        }
        if (porRango_) OrdenaPorPartida(buscada);
        return leidas();
    }

private:
    BaseDatos& db_;
    const bool tmp_;
    const std::vector<Valor>& ids_;
    Sentencia* st_ = nullptr;
    bool porRango_ = false, hay_ = false, leida_ = false;
    std::int64_t clave_ = 0, ultima_ = 0;
    std::vector<Linea> lineas_;
    size_t usadas_ = 0;  // the lines of lineas_ that are the voucher's
    std::span<const Linea> leidas() const { return {lineas_.data(), usadas_}; }
    /// To the next row that can belong to a voucher asked for (in the range,
    /// a fractional IdPoliza equals no voucher's).
    void avanza() {
        while ((hay_ = st_->paso()))
            if (auto n = EnteroExacto(st_->columna(0))) {
                clave_ = *n;
                return;
            }
    }
    /// The range comes in table order; the lines are wanted ordered by
    /// Partida and then table order. Null and whole numbers are ordered here
    /// as the engine orders them (Null first); a voucher with any other
    /// Partida is read again by a query of its own.
    void OrdenaPorPartida(std::int64_t idPoliza) {
        auto antes = [](const Linea& a, const Linea& b) {
            if (a.Partida.esNulo() || b.Partida.esNulo()) return a.Partida.esNulo() && !b.Partida.esNulo();
            return a.Partida.entero() < b.Partida.entero();
        };
        const auto fin = lineas_.begin() + static_cast<std::ptrdiff_t>(usadas_);
        for (auto l = lineas_.begin(); l != fin; ++l)
            if (!l->Partida.esNulo() && !l->Partida.esEntero()) {
                lineas_ = LeeLineas(db_, tmp_ ? kLineasTmp : kLineasEmpresa, Valor(static_cast<long long>(idPoliza)));
                usadas_ = lineas_.size();
                return;
            }
        if (!std::is_sorted(lineas_.begin(), fin, antes)) std::stable_sort(lineas_.begin(), fin, antes);
    }
};

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

/// The bar of a step: the label names the voucher reached, shown for the
/// first voucher and then every kCada vouchers (a label per voucher costs
/// more than comparing it); the interface is yielded to at the same points.
class Avance {
public:
    static constexpr size_t kCada = 256;

    Avance(Sesion& s, size_t total, const std::string& mes)
        : p_(s.progreso), nombreMes_(NombreMesDosDigitos(mes)) {
        if (p_) {
            p_->maximo(static_cast<long>(total));
            p_->valor(0);
        }
    }
    void poliza(size_t i, const Encabezado& e) {
        if (!p_ || i % kCada != 0) return;
        p_->etiqueta("Comparando Pol. " + SiNuloTexto(e.Poliza) + ", " + SiNuloTexto(e.Tipo) + ", " + nombreMes_);
        p_->valor(static_cast<long>(i + 1));
        p_->cede();
    }

private:
    Progreso* p_;
    std::string nombreMes_;
};

// ---------------------------------------------------- Lines of a paired voucher

const Linea* BuscaPorPosicion(std::span<const Linea> lineas, const Valor& partida) {
    if (partida.esNulo()) return nullptr;
    for (auto& l : lineas)
        if (!l.Partida.esNulo() && l.Partida.entero() == partida.entero()) return &l;
    return nullptr;
}

/// A line that only moved: same account, kind, amount and cleaned reference.
bool ExistePorContenido(std::span<const Linea> lineas, const Linea& vieja) {
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

/// The text of a value as SiNuloTexto gives it, without a copy when it is
/// stored as text; `copia` holds it otherwise.
std::string_view Vista(const Valor& v, std::string& copia) {
    if (auto p = std::get_if<std::string>(&v.variante())) return *p;
    copia = SiNuloTexto(v);
    return copia;
}

/// True when none of the four fields ComparaCampos looks at differs: the
/// common case, told without building any text.
bool CamposIguales(const Linea& vieja, const Linea& nueva) {
    std::string a, b;
    if (Vista(vieja.Cuenta, a) != Vista(nueva.Cuenta, b)) return false;
    if (Vista(vieja.TipoMov, a) != Vista(nueva.TipoMov, b)) return false;
    if (vieja.Importe.moneda() != nueva.Importe.moneda()) return false;
    std::string_view referencia = Vista(nueva.Referencia, b);
    if (TieneCaracteresEspeciales(referencia)) {
        b = QuitaBlancos(QuitaCaracteresEspeciales(std::string(referencia)));
        referencia = b;
    } else {
        const size_t desde = referencia.find_first_not_of(' ');
        referencia = desde == std::string_view::npos
                         ? std::string_view()
                         : referencia.substr(desde, referencia.find_last_not_of(' ') - desde + 1);
    }
    return Vista(vieja.Referencia, a) == referencia;
}

/// The four fields of a line found by position, in their order.
void ComparaCampos(Sesion& s, const Encabezado& anterior, Cabecera& cabecera, const Linea& vieja, const Linea& nueva) {
    if (CamposIguales(vieja, nueva)) return;
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
void ComparaLineas(Sesion& s, const Encabezado& anterior, std::span<const Linea> viejas,
                   std::span<const Linea> nuevas, Cabecera& cabecera) {
    for (auto& vieja : viejas) {
        if (const Linea* porPosicion = BuscaPorPosicion(nuevas, vieja.Partida))
            ComparaCampos(s, anterior, cabecera, vieja, *porPosicion);
        else if (!ExistePorContenido(nuevas, vieja))
            RegistraBajaDeLinea(s, anterior, vieja);
    }
}

/// Concept and date of a paired voucher.
void ComparaEncabezado(Sesion& s, const Encabezado& anterior, const Encabezado& nueva, Cabecera& cabecera) {
    std::string a, b;
    if (Vista(anterior.Concepto, a) != Vista(nueva.Concepto, b)) {
        cabecera.asegura();
        Registra(s,
                 ComponeReferencia({{"Concepto, Anterior -> "},
                                    Dato(QuitaCaracteresEspeciales(SiNuloTexto(anterior.Concepto))), {" Nuevo -> "},
                                    Dato(SiNuloTexto(nueva.Concepto)), {"."}}),
                 "C", anterior, "");
    }
    // The same stored value is the same date; only others are read as dates.
    if (anterior.Fecha == nueva.Fecha) return;
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

namespace {

/// The vouchers of a turn of the walk: in "13" the closing vouchers, in 1 to
/// 12 the month's others. `tabla` is a name of this program's own.
FiltroMes CondicionDelMes(BaseDatos& db, const std::string& tabla, bool mes13, int mes) {
    if (mes13) return {"IFNULL(Poliza_Mes13,0)<>0", {}};
    FiltroMes f = tabla == "Polizas" ? FiltroDeMes(db, tabla, mes) : FiltroDeMesTmp(db, tabla, mes);
    f.condicion += " AND NOT IFNULL(Poliza_Mes13,0)";
    return f;
}

bool HayPolizas(BaseDatos& db, const std::string& tabla, const FiltroMes& cuales) {
    Sentencia& st = PreparaCon(db, "SELECT 1 FROM " + tabla + " WHERE " + cuales.condicion + " LIMIT 1", cuales.valores);
    const bool hay = st.paso();
    st.reinicia();
    return hay;
}

/// A voucher of the walk and its partner in the other table, if it has one.
struct Par {
    Encabezado propia;
    const Encabezado* pareja = nullptr;  // within Emparejadas::parejas
};

/// The walk of a month with the partners found.
struct Emparejadas {
    std::deque<Par> pares;
    std::deque<Encabezado> parejas;
};

/// The vouchers of `tabla` that `cuales` picks, in the walk's order (IdPoliza,
/// then table order), each with its partner by key in `otra`, searched by the
/// engine voucher by voucher. `otra` needs its identity index.
Emparejadas ParesPorBusqueda(BaseDatos& db, const std::string& tabla, const std::string& otra, bool mes13,
                                  const FiltroMes& cuales) {
    AseguraFuncionesClave(db);
    Sentencia& st = PreparaCon(
        db,
        "SELECT o.fila, o.IdPoliza, o.Poliza, o.Tipo, o.Fecha, o.Concepto, "
        "p.rowid, p.IdPoliza, p.Poliza, p.Tipo, p.Fecha, p.Concepto "
        "FROM (SELECT rowid AS fila, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM " + tabla + " WHERE " +
            cuales.condicion + ") o LEFT JOIN " + otra + " p ON p.rowid = " + SubconsultaPareja(otra, mes13) +
            " ORDER BY o.IdPoliza ASC, o.fila",
        cuales.valores);
    Emparejadas r;
    while (st.paso()) {
        r.pares.push_back({LeeEncabezado(st), nullptr});
        if (!st.columna(6).esNulo()) r.pares.back().pareja = &r.parejas.emplace_back(LeeEncabezado(st, 6));
    }
    st.reinicia();
    return r;
}

// ------------------------------------------------------- Pairing in memory
//
// In months 1 to 12 a partner has the very date of the key, so the candidates
// are the other table's vouchers on the dates the walk's keys name, read in
// one query; a hash of their keys then pairs the walk. The key compares as
// the engine would compare it in that table: number and type as text without
// case (NOCASE: ASCII letters only, the text up to a NUL byte, and the
// length), the date as it is. That holds while number and type are text
// columns compared NOCASE and the date is compared BINARY or NOCASE (a key
// date has no letters): ClaveEnMemoria checks it, else the engine searches.

bool Contiene(const std::string& t, const char* parte) { return t.find(parte) != std::string::npos; }

/// True when the columns of `otra` compare as the hash below assumes.
bool ClaveEnMemoria(BaseDatos& db, const std::string& otra) {
    auto describe = [&](const char* columna, std::string& tipo, std::string& colacion) {
        const char *t = nullptr, *c = nullptr;
        int noNulo = 0, primaria = 0, auto_ = 0;
        if (sqlite3_table_column_metadata(db.nativo(), nullptr, otra.c_str(), columna, &t, &c, &noNulo, &primaria,
                                          &auto_) != SQLITE_OK)
            return false;
        tipo = t ? t : "";
        colacion = c ? c : "";
        for (auto* x : {&tipo, &colacion})
            for (char& ch : *x) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
        return true;
    };
    // Text affinity: the declared type names no INT and names CHAR, CLOB or TEXT.
    auto deTexto = [](const std::string& tipo) {
        return !Contiene(tipo, "INT") && (Contiene(tipo, "CHAR") || Contiene(tipo, "CLOB") || Contiene(tipo, "TEXT"));
    };
    std::string tipo, colacion;
    for (const char* columna : {"Poliza", "Tipo"})
        if (!describe(columna, tipo, colacion) || !deTexto(tipo) || colacion != "NOCASE") return false;
    return describe("Fecha", tipo, colacion) && (colacion == "BINARY" || colacion == "NOCASE");
}

/// Appends the class of `t` under NOCASE: its length, and its lowered text
/// up to the first NUL byte (the engine compares no further), with that
/// part's length so that the whole stays unambiguous.
void AgregaSinMayusculas(std::string& clave, std::string_view t) {
    const std::string_view parte = t.substr(0, t.find('\0'));
    // The two lengths as their raw bytes: fixed width, so the key stays
    // unambiguous without writing them out as numbers.
    for (const auto largo : {static_cast<std::uint32_t>(t.size()), static_cast<std::uint32_t>(parte.size())})
        clave.append(reinterpret_cast<const char*>(&largo), sizeof largo);
    const size_t desde = clave.size();
    clave += parte;
    for (size_t i = desde; i < clave.size(); ++i)
        if (clave[i] >= 'A' && clave[i] <= 'Z') clave[i] = static_cast<char>(clave[i] - 'A' + 'a');
}

/// The key of a voucher, written into `clave`.
void ClaveHash(std::string& clave, std::string_view poliza, std::string_view tipo, std::string_view fecha) {
    clave.clear();
    AgregaSinMayusculas(clave, poliza);
    AgregaSinMayusculas(clave, tipo);
    clave += fecha;
}

/// Marks the new vouchers of these rows as paired. They are most of a
/// month's rows, which mostly lie together: when they fill most of the span
/// from the first to the last, the span is marked in one pass, save the rows
/// of it left out; else each row is sought.
void MarcaRevisadas(BaseDatos& db, std::vector<std::int64_t> filas) {
    std::sort(filas.begin(), filas.end());
    filas.erase(std::unique(filas.begin(), filas.end()), filas.end());
    if (filas.empty() || filas.front() < 0 ||
        static_cast<std::uint64_t>(filas.back() - filas.front()) >= 2 * filas.size()) {
        db.preparada(kMarcaRevisadas).con(ListaJson(filas)).ejecuta();
        return;
    }
    std::vector<std::int64_t> fuera;
    size_t j = 0;
    for (std::int64_t fila = filas.front(); fila <= filas.back(); ++fila) {
        if (filas[j] == fila) ++j;
        else fuera.push_back(fila);
    }
    db.preparada(kMarcaRevisadasEntre).con(filas.front(), filas.back(), ListaJson(fuera)).ejecuta();
}

/// A JSON array of texts, for json_each.
std::string ListaJsonTextos(const std::set<std::string>& textos) {
    std::string r = "[";
    for (auto& t : textos) {
        if (r.size() > 1) r += ',';
        r += '"';
        for (unsigned char c : t) {
            if (c == '"' || c == '\\') {
                r += '\\';
                r += static_cast<char>(c);
            } else if (c < 0x20) {
                char u[8];
                std::snprintf(u, sizeof u, "\\u%04x", c);
                r += u;
            } else {
                r += static_cast<char>(c);
            }
        }
        r += '"';
    }
    return r + "]";
}

// ------------------------------------------- The pairing read backwards
//
// A month's pairing of the company's vouchers with the new ones can be read
// backwards, sparing the comparison of new lines a pairing of its own, when
// every key is the voucher's own text on both sides (number, type and date
// are texts, the number has no character the key cleans, the date is ISO
// as it stands), no two vouchers of the walk share a key and no key has two
// candidates. A new voucher then pairs back with the company's voucher that
// paired with it, and with none when none did: a company voucher on its date
// with its key would have been in the walk and found it.

/// 1 when number, type and date are texts (a blob reads as a text in a
/// value, yet the candidates' query takes texts only).
constexpr const char* kClaveDeTextos = "typeof(Poliza)='text' AND typeof(Tipo)='text' AND typeof(Fecha)='text'";

/// True when the voucher's key is its own number, type and date.
bool ClaveSinCambios(const Encabezado& e) {
    const auto* fecha = std::get_if<std::string>(&e.Fecha.variante());
    return e.Poliza.esTexto() && e.Tipo.esTexto() && fecha && !TieneCaracteresEspeciales(e.Poliza.texto()) &&
           FechaClave(e.Fecha) == *fecha;
}

/// The same pairs as ParesPorBusqueda for months 1 to 12, through the hash.
/// `simetrica`, when given, tells whether the pairing may be read backwards.
Emparejadas ParesEnMemoria(BaseDatos& db, const std::string& tabla, const std::string& otra,
                           const FiltroMes& cuales, bool conConcepto, bool* simetrica) {
    const std::string concepto = conConcepto ? "Concepto" : "NULL";
    Emparejadas r;
    bool textos = true;
    Sentencia& recorrido = PreparaCon(db,
                                      "SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, " + concepto + ", " +
                                          kClaveDeTextos + " FROM " + tabla + " WHERE " + cuales.condicion +
                                          " ORDER BY IdPoliza ASC, rowid",
                                      cuales.valores);
    while (recorrido.paso()) {
        r.pares.push_back({LeeEncabezado(recorrido), nullptr});
        if (simetrica) textos = textos && recorrido.entero(6) != 0 && ClaveSinCambios(r.pares.back().propia);
    }
    recorrido.reinicia();
    if (simetrica) *simetrica = textos;
    if (r.pares.empty()) return r;
    // The walk's keys, each once: `casilla[i]` is the number of the i-th
    // voucher's key, where the first candidate found for it goes.
    IndiceDeTextos casillas(r.pares.size());
    std::vector<size_t> casilla;
    casilla.reserve(r.pares.size());
    std::unordered_map<std::string, std::string> fechaClave;  // the date texts repeat
    std::set<std::string> fechas;
    std::string clave;
    for (auto& par : r.pares) {
        const Valor& f = par.propia.Fecha;
        std::string fecha;
        if (auto texto = std::get_if<std::string>(&f.variante())) {
            auto [it, nueva] = fechaClave.try_emplace(*texto);
            if (nueva) it->second = FechaClave(f);
            fecha = it->second;
        } else {
            fecha = FechaClave(f);
        }
        fechas.insert(fecha);
        const std::string poliza = SiNuloTexto(par.propia.Poliza);
        const bool especiales = TieneCaracteresEspeciales(poliza);
        const std::string limpia = especiales ? QuitaCaracteresEspeciales(poliza) : std::string();
        ClaveHash(clave, especiales ? std::string_view(limpia) : std::string_view(poliza),
                  SiNuloTexto(par.propia.Tipo), fecha);
        casilla.push_back(casillas.agrega(clave));
    }
    // Two vouchers of the walk on one key.
    if (simetrica && casillas.size() != r.pares.size()) *simetrica = false;
    // The candidates on those dates; the one of lowest rowid of each key wins.
    // The run's store is made without an index on the date: FiltroDeMesTmp
    // adds it.
    if (otra == "Polizas_Tmp") FiltroDeMesTmp(db, otra, 1);
    std::vector<std::int64_t> ganadora(casillas.size(), 0);
    std::vector<bool> hay(casillas.size(), false);
    std::vector<Encabezado> mejores(casillas.size());
    Sentencia& st = db.preparada("SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, " + concepto + " FROM " + otra +
                                 " WHERE Fecha IN (SELECT value FROM json_each(?)) AND NOT IFNULL(Poliza_Mes13,0) "
                                 "AND typeof(Poliza)='text' AND typeof(Tipo)='text' AND typeof(Fecha)='text'");
    st.con(ListaJsonTextos(fechas));
    // The three key columns are texts (the query says so): read in place;
    // a candidate becomes values only while it is the best of its key.
    while (st.paso()) {
        ClaveHash(clave, st.texto(2), st.texto(3), st.texto(4));
        const size_t c = casillas.busca(clave);
        if (c == IndiceDeTextos::npos) continue;
        const std::int64_t fila = st.entero(0);
        if (hay[c] && simetrica) *simetrica = false;  // two candidates for one key
        if (hay[c] && ganadora[c] <= fila) continue;
        hay[c] = true;
        ganadora[c] = fila;
        mejores[c] = {fila, st.columna(1), st.columna(2), st.columna(3), st.columna(4), st.columna(5)};
    }
    st.reinicia();
    std::vector<const Encabezado*> pareja(casillas.size(), nullptr);
    for (size_t c = 0; c < casillas.size(); ++c)
        if (hay[c]) pareja[c] = &r.parejas.emplace_back(std::move(mejores[c]));
    for (size_t i = 0; i < r.pares.size(); ++i) r.pares[i].pareja = pareja[casilla[i]];
    return r;
}

/// The vouchers of `tabla` that `cuales` picks, in the walk's order (IdPoliza,
/// then table order), each with its partner by key in `otra`. Without
/// `conConcepto` the concepts may be left Null.
Emparejadas ParesDelMes(BaseDatos& db, const std::string& tabla, const std::string& otra, bool mes13,
                        const FiltroMes& cuales, bool conConcepto, bool* simetrica = nullptr) {
    if (simetrica) *simetrica = false;
    if (!mes13 && ClaveEnMemoria(db, otra)) return ParesEnMemoria(db, tabla, otra, cuales, conConcepto, simetrica);
    if (otra == "Polizas_Tmp") AseguraIndiceIdentidadTmp(db);
    return ParesPorBusqueda(db, tabla, otra, mes13, cuales);
}

/// The number of lines of each of some vouchers ("WHERE IdPoliza=?"), in one
/// walk of the table's IdPoliza index over the range of the integer ones;
/// any other is counted by a query of its own.
class CuentaLineas {
public:
    CuentaLineas(BaseDatos& db, const std::string& tabla, const std::vector<Valor>& ids) : db_(db), tabla_(tabla) {
        std::optional<std::int64_t> menor, mayor;
        for (auto& id : ids)
            if (id.esEntero()) {
                menor = std::min(menor.value_or(id.entero()), id.entero());
                mayor = std::max(mayor.value_or(id.entero()), id.entero());
            }
        if (!menor) return;
        Sentencia& st = db.preparada("SELECT IdPoliza, COUNT(*) FROM " + tabla +
                                     " WHERE IdPoliza BETWEEN ? AND ? GROUP BY IdPoliza ORDER BY IdPoliza");
        st.con(*menor, *mayor);
        // The groups come in IdPoliza order.
        while (st.paso()) {
            if (auto id = EnteroExacto(st.columna(0))) cuentas_.emplace_back(*id, st.columna(1).entero());
        }
        st.reinicia();
    }

    std::int64_t de(const Valor& id) const {
        if (id.esNulo()) return 0;
        if (id.esEntero()) {
            auto it = std::lower_bound(cuentas_.begin(), cuentas_.end(), std::make_pair(id.entero(), INT64_MIN));
            return it == cuentas_.end() || it->first != id.entero() ? 0 : it->second;
        }
        return db_.escalar("SELECT COUNT(*) FROM " + tabla_ + " WHERE IdPoliza=?", id).entero();
    }

private:
    BaseDatos& db_;
    std::string tabla_;
    std::vector<std::pair<std::int64_t, std::int64_t>> cuentas_;  // IdPoliza and count, ascending
};

}  // namespace

/// The company's partner of each new voucher of a month, and both line
/// counts, as the month's comparison left them for the comparison of new
/// lines that follows it.
struct ParesGuardados {
    struct Pareja {
        std::int64_t filaNueva;  // the new voucher's rowid
        size_t anterior;         // its partner, in emparejadas.pares
        std::int64_t lineasAnteriores, lineasNuevas;
    };
    std::string mes;
    Emparejadas emparejadas;      // the month's walk of the company's vouchers
    std::vector<Pareja> parejas;  // by filaNueva

    const Pareja* de(std::int64_t filaNueva) const {
        auto it = std::lower_bound(parejas.begin(), parejas.end(), filaNueva,
                                   [](const Pareja& p, std::int64_t fila) { return p.filaNueva < fila; });
        return it != parejas.end() && it->filaNueva == filaNueva ? &*it : nullptr;
    }
    const Encabezado& anterior(const Pareja& p) const { return emparejadas.pares[p.anterior].propia; }
};

namespace {

/// The new vouchers of the month that `cuales` picks, in the walk's order,
/// each with its partner read backwards from what the month's comparison
/// left. Nothing when a voucher's key is not its own text: the pairing then
/// does not read backwards.
std::optional<Emparejadas> ParesAlReves(BaseDatos& db, const ParesGuardados& guardados, const FiltroMes& cuales) {
    Emparejadas r;
    bool textos = true;
    Sentencia& recorrido = PreparaCon(db,
                                      std::string("SELECT rowid, IdPoliza, Poliza, Tipo, Fecha, NULL, ") +
                                          kClaveDeTextos + " FROM Polizas_Tmp WHERE " + cuales.condicion +
                                          " ORDER BY IdPoliza ASC, rowid",
                                      cuales.valores);
    while (textos && recorrido.paso()) {
        r.pares.push_back({LeeEncabezado(recorrido), nullptr});
        textos = recorrido.entero(6) != 0 && ClaveSinCambios(r.pares.back().propia);
    }
    recorrido.reinicia();
    if (!textos) return std::nullopt;
    for (Par& par : r.pares)
        if (const ParesGuardados::Pareja* p = guardados.de(par.propia.fila)) par.pareja = &guardados.anterior(*p);
    return r;
}

}  // namespace

// ------------------------------------------------------------------ Steps

void ComparaPolizas(Sesion& s, const std::string& mes) {
    s.ParesDelMes.reset();
    BaseDatos& db = EmpresaAbierta(s);
    const bool mes13 = EsMes13(mes);
    const FiltroMes delMes = CondicionDelMes(db, "Polizas", mes13, NumeroMes(mes));
    if (!HayPolizas(db, "Polizas", delMes)) return;
    bool simetrica = false;
    Emparejadas emparejadas = ParesDelMes(db, "Polizas", "Polizas_Tmp", mes13, delMes, true, &simetrica);
    const std::deque<Par>& pares = emparejadas.pares;
    // The paired vouchers, in the order of the walk, for the lines and marks.
    std::vector<std::int64_t> viejasConPareja, parejas;
    std::vector<Valor> idsViejas, idsParejas;
    for (auto& par : pares)
        if (par.pareja) {
            viejasConPareja.push_back(par.propia.fila);
            idsViejas.push_back(par.propia.IdPoliza);
            parejas.push_back(par.pareja->fila);
            idsParejas.push_back(par.pareja->IdPoliza);
        }
    // Kept for the comparison of new lines when the pairing reads backwards
    // (the other table's columns must compare as the key assumes too).
    std::shared_ptr<ParesGuardados> guardados;
    if (simetrica && ClaveEnMemoria(db, "Polizas")) {
        guardados = std::make_shared<ParesGuardados>();
        guardados->mes = mes;
    }
    Avance avance(s, pares.size(), mes);
    Transaccion t(db);
    {
        LineasDePares lineasViejas(db, false, viejasConPareja, idsViejas);
        LineasDePares lineasNuevas(db, true, parejas, idsParejas);
        if (!lineasViejas.porRango() || !lineasNuevas.porRango()) guardados.reset();
        size_t k = 0;  // index of the paired voucher among viejasConPareja
        for (size_t i = 0; i < pares.size(); ++i) {
            const Encabezado& anterior = pares[i].propia;
            avance.poliza(i, anterior);
            Cabecera cabecera(s, anterior);
            if (!pares[i].pareja) {
                Registra(s, "La Póliza se dio de baja.", "B", anterior, "");
                continue;
            }
            ComparaEncabezado(s, anterior, *pares[i].pareja, cabecera);
            const std::span<const Linea> viejas = lineasViejas.de(k);
            if (!viejas.empty() || guardados) {
                const std::span<const Linea> nuevas = lineasNuevas.de(k);
                if (!viejas.empty()) ComparaLineas(s, anterior, viejas, nuevas, cabecera);
                if (guardados)
                    guardados->parejas.push_back({pares[i].pareja->fila, i, static_cast<std::int64_t>(viejas.size()),
                                                  static_cast<std::int64_t>(nuevas.size())});
            }
            ++k;
        }
    }
    MarcaRevisadas(db, parejas);
    t.confirma();
    if (guardados) {
        std::sort(guardados->parejas.begin(), guardados->parejas.end(),
                  [](const auto& a, const auto& b) { return a.filaNueva < b.filaNueva; });
        guardados->emparejadas = std::move(emparejadas);
        s.ParesDelMes = std::move(guardados);
    }
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
    // What the month's comparison left serves this call alone.
    const std::shared_ptr<const ParesGuardados> guardados = std::move(s.ParesDelMes);
    s.ParesDelMes.reset();
    BaseDatos& db = EmpresaAbierta(s);
    // With no voucher in the company no new one has a partner.
    if (db.escalar("SELECT 1 FROM Polizas LIMIT 1").esNulo()) return;
    const bool mes13 = EsMes13(mes);
    const FiltroMes delMes = CondicionDelMes(db, "Polizas_Tmp", mes13, NumeroMes(mes));
    std::optional<Emparejadas> alReves;
    if (guardados && guardados->mes == mes && !mes13) alReves = ParesAlReves(db, *guardados, delMes);
    const Emparejadas emparejadas =
        alReves ? std::move(*alReves) : ParesDelMes(db, "Polizas_Tmp", "Polizas", mes13, delMes, false);
    const std::deque<Par>& pares = emparejadas.pares;
    // Only the lines past the old count are looked at (the first n are taken
    // to be the old ones), so a voucher whose count did not grow is done with
    // by the counts alone.
    std::vector<Valor> nuevas, anteriores;
    for (auto& par : pares)
        if (par.pareja) {
            nuevas.push_back(par.propia.IdPoliza);
            anteriores.push_back(par.pareja->IdPoliza);
        }
    if (nuevas.empty()) return;
    // The line counts: as the month's comparison read them, or counted now.
    std::optional<CuentaLineas> lineasNuevas, lineasAnteriores;
    if (!alReves) {
        lineasNuevas.emplace(db, "Polizas_Detalle_Tmp", nuevas);
        lineasAnteriores.emplace(db, "Polizas_Detalle", anteriores);
    }
    auto crecio = [&](const Encabezado& nueva, const Encabezado& anterior) {
        if (!alReves) return lineasNuevas->de(nueva.IdPoliza) > lineasAnteriores->de(anterior.IdPoliza);
        const ParesGuardados::Pareja* p = guardados->de(nueva.fila);
        return p->lineasNuevas > p->lineasAnteriores;
    };
    Avance avance(s, pares.size(), mes);
    Transaccion t(db);
    for (size_t i = 0; i < pares.size(); ++i) {
        const Encabezado& nueva = pares[i].propia;
        avance.poliza(i, nueva);
        if (!pares[i].pareja) continue;
        const Encabezado& anterior = *pares[i].pareja;
        if (!crecio(nueva, anterior)) continue;
        const std::vector<Linea> agregadas = LeeLineas(db, kLineasTmp, nueva.IdPoliza);
        const std::vector<Linea> lineasViejas = LeeLineas(db, kLineasEmpresa, anterior.IdPoliza);
        Cabecera cabecera(s, anterior);
        for (size_t k = lineasViejas.size(); k < agregadas.size(); ++k) {
            const std::string cuenta = SiNuloTexto(agregadas[k].Cuenta);
            bool yaLaTenia = false;
            for (auto& vieja : lineasViejas) yaLaTenia = yaLaTenia || CoincideTexto(vieja.Cuenta, cuenta);
            if (yaLaTenia) continue;
            cabecera.asegura();
            Registra(s, "Se incluyó una nueva partida.", "C", anterior, cuenta);
        }
    }
    t.confirma();
}

}  // namespace velmorant
