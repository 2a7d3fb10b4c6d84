#include "pipeline/Comparacion.h"

#include <sqlite3.h>

#include <cctype>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "accounts/CodigosCuenta.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/MesPorIndice.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// The pairing of vouchers is done inside the engine, one query per month: for
// each voucher of the month a correlated search takes the first match by key
// in table order (rowid) of the other table, through that table's identity
// index (equal keys sit in rowid order there, so the search is one probe). A
// voucher of months 1 to 12 and a closing voucher of month 13 are never
// partners, even with the same number, type and date: each month's key looks
// only among its own kind. The key is computed from the voucher by the
// functions below, registered on the connection, so it is the same text the
// C++ side would bind: QuitaCaracteresEspeciales of the number in months 1
// to 12 (as it is in 13), the type, and the date as FechaClave gives it.
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

/// The lines of kLineasEmpresaDe / kLineasTmpDe, read voucher by voucher in
/// the order of the array: de(k) gives those of its k-th voucher.
class LineasEnOrden {
public:
    LineasEnOrden(BaseDatos& db, const char* sql, const std::string& lista) : st_(db.preparada(sql)) {
        st_.con(lista);
        avanza();
    }
    ~LineasEnOrden() { st_.reinicia(); }
    LineasEnOrden(const LineasEnOrden&) = delete;
    LineasEnOrden& operator=(const LineasEnOrden&) = delete;

    const std::vector<Linea>& de(std::int64_t k) {
        lineas_.clear();
        while (hay_ && clave_ < k) avanza();
        while (hay_ && clave_ == k) {
            lineas_.push_back({st_.columna(1), st_.columna(2), st_.columna(3), st_.columna(4), st_.columna(5)});
            avanza();
        }
        return lineas_;
    }

private:
    Sentencia& st_;
    bool hay_ = false;
    std::int64_t clave_ = 0;
    std::vector<Linea> lineas_;
    void avanza() {
        hay_ = st_.paso();
        if (hay_) clave_ = st_.columna(0).entero();
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
    if (referencia.find_first_of("'|~") != std::string_view::npos) {
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
void ComparaLineas(Sesion& s, const Encabezado& anterior, const std::vector<Linea>& viejas,
                   const std::vector<Linea>& nuevas, Cabecera& cabecera) {
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

namespace {

/// The vouchers of a turn of the walk: in "13" the closing vouchers, in 1 to
/// 12 the month's others. `tabla` is a name of this program's own.
FiltroMes CondicionDelMes(BaseDatos& db, const std::string& tabla, bool mes13, int mes) {
    if (mes13) return {"IFNULL(Poliza_Mes13,0)<>0", {}};
    FiltroMes f = tabla == "Polizas" ? FiltroDeMes(db, tabla, mes) : FiltroDeMesTmp(db, tabla, mes);
    f.condicion += " AND NOT IFNULL(Poliza_Mes13,0)";
    return f;
}

Sentencia& PreparaCon(BaseDatos& db, const std::string& sql, const std::vector<Valor>& valores) {
    Sentencia& st = db.preparada(sql);
    st.reinicia();
    for (size_t i = 0; i < valores.size(); ++i) st.liga(static_cast<int>(i) + 1, valores[i]);
    return st;
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
    std::optional<Encabezado> pareja;
};

/// The vouchers of `tabla` that `cuales` picks, in the walk's order (IdPoliza,
/// then table order), each with its partner by key in `otra`.
std::vector<Par> ParesDelMes(BaseDatos& db, const std::string& tabla, const std::string& otra, bool mes13,
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
    std::vector<Par> r;
    while (st.paso()) {
        r.push_back({LeeEncabezado(st), std::nullopt});
        if (!st.columna(6).esNulo()) r.back().pareja = LeeEncabezado(st, 6);
    }
    st.reinicia();
    return r;
}

}  // namespace

// ------------------------------------------------------------------ Steps

void ComparaPolizas(Sesion& s, const std::string& mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const bool mes13 = EsMes13(mes);
    const FiltroMes delMes = CondicionDelMes(db, "Polizas", mes13, NumeroMes(mes));
    if (!HayPolizas(db, "Polizas", delMes)) return;
    AseguraIndiceIdentidadTmp(db);
    const std::vector<Par> pares = ParesDelMes(db, "Polizas", "Polizas_Tmp", mes13, delMes);
    // The paired vouchers, in the order of the walk, for the lines and marks.
    std::vector<std::int64_t> viejasConPareja, parejas;
    for (auto& par : pares)
        if (par.pareja) {
            viejasConPareja.push_back(par.propia.fila);
            parejas.push_back(par.pareja->fila);
        }
    Avance avance(s, pares.size(), mes);
    Transaccion t(db);
    {
        LineasEnOrden lineasViejas(db, kLineasEmpresaDe, ListaJson(viejasConPareja));
        LineasEnOrden lineasNuevas(db, kLineasTmpDe, ListaJson(parejas));
        std::int64_t k = 0;  // index of the paired voucher among viejasConPareja
        for (size_t i = 0; i < pares.size(); ++i) {
            const Encabezado& anterior = pares[i].propia;
            avance.poliza(i, anterior);
            Cabecera cabecera(s, anterior);
            if (!pares[i].pareja) {
                Registra(s, "La Póliza se dio de baja.", "B", anterior, "");
                continue;
            }
            ComparaEncabezado(s, anterior, *pares[i].pareja, cabecera);
            const std::vector<Linea>& viejas = lineasViejas.de(k);
            if (!viejas.empty()) ComparaLineas(s, anterior, viejas, lineasNuevas.de(k), cabecera);
            ++k;
        }
    }
    db.preparada(kMarcaRevisadas).con(ListaJson(parejas)).ejecuta();
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
    // With no voucher in the company no new one has a partner.
    if (db.escalar("SELECT 1 FROM Polizas LIMIT 1").esNulo()) return;
    const bool mes13 = EsMes13(mes);
    const FiltroMes delMes = CondicionDelMes(db, "Polizas_Tmp", mes13, NumeroMes(mes));
    AseguraFuncionesClave(db);
    // Each new voucher of the month with its old partner and both line
    // counts: only the lines past the old count are looked at (the first n
    // are taken to be the old ones), so a voucher whose count did not grow
    // is done with here.
    Sentencia& st = PreparaCon(
        db,
        "SELECT o.fila, o.IdPoliza, o.Poliza, o.Tipo, o.Fecha, o.Concepto, "
        "p.rowid, p.IdPoliza, p.Poliza, p.Tipo, p.Fecha, p.Concepto, "
        "(SELECT COUNT(*) FROM Polizas_Detalle_Tmp d WHERE d.IdPoliza = o.IdPoliza), "
        "(SELECT COUNT(*) FROM Polizas_Detalle d WHERE d.IdPoliza = p.IdPoliza) "
        "FROM (SELECT rowid AS fila, IdPoliza, Poliza, Tipo, Fecha, Concepto FROM Polizas_Tmp WHERE " +
        delMes.condicion + ") o JOIN Polizas p ON p.rowid = " + SubconsultaPareja("Polizas", mes13) +
        " ORDER BY o.IdPoliza ASC, o.fila",
        delMes.valores);
    // The vouchers whose line count grew, with their old partners.
    std::vector<Encabezado> crecieron, anteriores;
    while (st.paso())
        if (st.columna(12).entero() > st.columna(13).entero()) {
            crecieron.push_back(LeeEncabezado(st));
            anteriores.push_back(LeeEncabezado(st, 6));
        }
    st.reinicia();
    if (crecieron.empty()) return;
    Avance avance(s, crecieron.size(), mes);
    Transaccion t(db);
    for (size_t i = 0; i < crecieron.size(); ++i) {
        const Encabezado& anterior = anteriores[i];
        avance.poliza(i, crecieron[i]);
        const std::vector<Linea> lineasNuevas = LeeLineas(db, kLineasTmp, crecieron[i].IdPoliza);
        const std::vector<Linea> lineasViejas = LeeLineas(db, kLineasEmpresa, anterior.IdPoliza);
        Cabecera cabecera(s, anterior);
        for (size_t k = lineasViejas.size(); k < lineasNuevas.size(); ++k) {
            const std::string cuenta = SiNuloTexto(lineasNuevas[k].Cuenta);
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
