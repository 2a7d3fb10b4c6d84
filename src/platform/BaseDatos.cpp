#include "platform/BaseDatos.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <fstream>
#include <iterator>

#include "platform/Texto.h"

namespace velmorant {

namespace {

// Field names are looked up on every row of a walk: compared in place,
// byte by byte, with no copy.
bool IgualSinMayusculas(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i] && std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

// Month(fecha) and Year(fecha) over ISO text; Null for anything else.
void FuncionParteFecha(sqlite3_context* ctx, int, sqlite3_value** argv, bool mes) {
    if (sqlite3_value_type(argv[0]) != SQLITE_TEXT) {
        sqlite3_result_null(ctx);
        return;
    }
    auto texto = reinterpret_cast<const char*>(sqlite3_value_text(argv[0]));
    auto f = Fecha::desdeIso(texto ? texto : "");
    if (!f) {
        sqlite3_result_null(ctx);
        return;
    }
    sqlite3_result_int(ctx, mes ? f->mes() : f->anio());
}

void FuncionMonth(sqlite3_context* c, int n, sqlite3_value** v) { FuncionParteFecha(c, n, v, true); }
void FuncionYear(sqlite3_context* c, int n, sqlite3_value** v) { FuncionParteFecha(c, n, v, false); }

// Left(texto, n): the first n characters (not bytes) of a UTF-8 text.
void FuncionLeft(sqlite3_context* ctx, int, sqlite3_value** argv) {
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
        sqlite3_result_null(ctx);
        return;
    }
    auto texto = reinterpret_cast<const char*>(sqlite3_value_text(argv[0]));
    int bytes = sqlite3_value_bytes(argv[0]);
    sqlite3_int64 n = sqlite3_value_int64(argv[1]);
    int i = 0;
    for (sqlite3_int64 k = 0; k < n && i < bytes; ++k) {
        ++i;
        while (i < bytes && (static_cast<unsigned char>(texto[i]) & 0xC0) == 0x80) ++i;
    }
    sqlite3_result_text(ctx, texto, i, SQLITE_TRANSIENT);
}

// QuitaCaracteresEspeciales(x): the text without the characters the stores
// do not take, a Null as an empty text; a text that has none of them is
// given back as it is, without a copy.
void FuncionQuitaCaracteresEspeciales(sqlite3_context* ctx, int, sqlite3_value** argv) {
    if (sqlite3_value_type(argv[0]) == SQLITE_NULL) {
        sqlite3_result_text(ctx, "", 0, SQLITE_STATIC);
        return;
    }
    auto texto = reinterpret_cast<const char*>(sqlite3_value_text(argv[0]));
    const std::string_view vista(texto ? texto : "", static_cast<size_t>(sqlite3_value_bytes(argv[0])));
    if (!TieneCaracteresEspeciales(vista)) {
        sqlite3_result_text(ctx, vista.data(), static_cast<int>(vista.size()), SQLITE_TRANSIENT);
        return;
    }
    const std::string limpio = SinCaracteresEspeciales(vista);
    sqlite3_result_text(ctx, limpio.data(), static_cast<int>(limpio.size()), SQLITE_TRANSIENT);
}

}  // namespace

ErrorBaseDatos::ErrorBaseDatos(int codigo, const std::string& mensaje, std::string sql, std::string archivo)
    : std::runtime_error(sql.empty() ? mensaje : mensaje + " [" + sql + "]"),
      codigo_(codigo),
      mensaje_(mensaje),
      sql_(std::move(sql)),
      archivo_(std::move(archivo)) {}

namespace {

// The main file of a connection; empty for an in-memory one.
std::string ArchivoDe(sqlite3* db) {
    const char* archivo = db ? sqlite3_db_filename(db, "main") : nullptr;
    return archivo ? archivo : "";
}

}  // namespace

bool ErrorBaseDatos::esDano() const { return codigo_ == SQLITE_NOTADB || codigo_ == SQLITE_CORRUPT; }

// ---------------------------------------------------------------- Sentencia

Sentencia::Sentencia(sqlite3* db, const std::string& sql) : db_(db), sql_(sql) {
    int rc = sqlite3_prepare_v2(db_, sql.c_str(), static_cast<int>(sql.size()), &st_, nullptr);
    if (rc != SQLITE_OK) throw ErrorBaseDatos(rc, sqlite3_errmsg(db_), sql_, ArchivoDe(db_));
}

Sentencia::~Sentencia() {
    if (st_) sqlite3_finalize(st_);
}

Sentencia::Sentencia(Sentencia&& o) noexcept : db_(o.db_), st_(o.st_), sql_(std::move(o.sql_)) { o.st_ = nullptr; }

void Sentencia::verifica(int rc) const {
    if (rc != SQLITE_OK) throw ErrorBaseDatos(rc, sqlite3_errmsg(db_), sql_, ArchivoDe(db_));
}

Sentencia& Sentencia::reinicia() {
    sqlite3_reset(st_);
    sqlite3_clear_bindings(st_);
    return *this;
}

Sentencia& Sentencia::ligaEntero(int i, std::int64_t v) {
    verifica(sqlite3_bind_int64(st_, i, v));
    return *this;
}

Sentencia& Sentencia::ligaTexto(int i, std::string_view t, bool copia) {
    verifica(sqlite3_bind_text(st_, i, t.data(), static_cast<int>(t.size()), copia ? SQLITE_TRANSIENT : SQLITE_STATIC));
    return *this;
}

Sentencia& Sentencia::liga(int i, const Valor& v) {
    struct Visitante {
        sqlite3_stmt* st;
        int i;
        int operator()(std::monostate) const { return sqlite3_bind_null(st, i); }
        int operator()(std::int64_t x) const { return sqlite3_bind_int64(st, i, x); }
        int operator()(double x) const { return sqlite3_bind_double(st, i, x); }
        int operator()(const std::string& s) const {
            return sqlite3_bind_text(st, i, s.data(), static_cast<int>(s.size()), SQLITE_TRANSIENT);
        }
    };
    verifica(std::visit(Visitante{st_, i}, v.variante()));
    return *this;
}

bool Sentencia::paso() {
    int rc = sqlite3_step(st_);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    std::string msg = sqlite3_errmsg(db_);
    sqlite3_reset(st_);
    throw ErrorBaseDatos(rc, msg, sql_, ArchivoDe(db_));
}

int Sentencia::ejecuta() {
    while (paso()) {
    }
    int n = sqlite3_changes(db_);
    sqlite3_reset(st_);
    return n;
}

int Sentencia::ejecutaYOlvida() {
    struct Olvida {
        sqlite3_stmt* st;
        ~Olvida() { sqlite3_clear_bindings(st); }
    } olvida{st_};
    return ejecuta();
}

int Sentencia::columnas() const { return sqlite3_column_count(st_); }

std::string Sentencia::nombreColumna(int i) const {
    const char* n = sqlite3_column_name(st_, i);
    return n ? n : "";
}

Valor Sentencia::columna(int i) const {
    switch (sqlite3_column_type(st_, i)) {
        case SQLITE_INTEGER:
            return Valor(static_cast<long long>(sqlite3_column_int64(st_, i)));
        case SQLITE_FLOAT:
            return Valor(sqlite3_column_double(st_, i));
        case SQLITE_TEXT:
        case SQLITE_BLOB: {
            auto p = reinterpret_cast<const char*>(sqlite3_column_text(st_, i));
            return Valor(std::string(p ? p : "", static_cast<size_t>(sqlite3_column_bytes(st_, i))));
        }
        default:
            return Valor();
    }
}

Sentencia::Clase Sentencia::clase(int i) const {
    switch (sqlite3_column_type(st_, i)) {
        case SQLITE_INTEGER: return Clase::Entero;
        case SQLITE_FLOAT: return Clase::Real;
        case SQLITE_TEXT:
        case SQLITE_BLOB: return Clase::Texto;
        default: return Clase::Nulo;
    }
}

std::int64_t Sentencia::entero(int i) const { return sqlite3_column_int64(st_, i); }

std::string_view Sentencia::texto(int i) const {
    auto p = reinterpret_cast<const char*>(sqlite3_column_text(st_, i));
    return p ? std::string_view(p, static_cast<size_t>(sqlite3_column_bytes(st_, i))) : std::string_view();
}

Moneda Sentencia::moneda(int i) const {
    return clase(i) == Clase::Entero ? Moneda::desdeDiezmilesimas(entero(i)) : columna(i).moneda();
}

void Sentencia::columnaEn(int i, Valor& v) const {
    if (clase(i) == Clase::Texto) v.asignaTexto(texto(i));
    else v = columna(i);
}

int Sentencia::indiceColumna(std::string_view nombre) const {
    for (int i = 0; i < columnas(); ++i)
        if (IgualSinMayusculas(nombreColumna(i), nombre)) return i;
    return -1;
}

// ----------------------------------------------------------------- Consulta

Consulta::Consulta(Sentencia& s) {
    const int n = s.columnas();
    for (int i = 0; i < n; ++i) nombres_.push_back(s.nombreColumna(i));
    while (s.paso()) {
        for (int i = 0; i < n; ++i) celdas_.push_back(s.columna(i));
        ++filas_;
    }
    s.reinicia();
}

int Consulta::indice(std::string_view nombre) const {
    for (size_t i = 0; i < nombres_.size(); ++i)
        if (IgualSinMayusculas(nombres_[i], nombre)) return static_cast<int>(i);
    throw ErrorBaseDatos(SQLITE_ERROR, "Elemento no encontrado en esta colección: " + std::string(nombre), "");
}

const Valor& Consulta::campo(int i) const {
    if (eof()) throw ErrorBaseDatos(SQLITE_ERROR, "No hay registro activo", "");
    if (i < 0 || static_cast<size_t>(i) >= nombres_.size())
        throw std::out_of_range("Consulta::campo: columna " + std::to_string(i));
    return celdas_[pos_ * nombres_.size() + static_cast<size_t>(i)];
}

const Valor& Consulta::campo(std::string_view nombre) const { return campo(indice(nombre)); }

// -------------------------------------------------------------------- Tabla

Tabla::Tabla(BaseDatos& db, std::string nombre) : db_(db), nombre_(std::move(nombre)) {
    columnas_ = db_.columnas(nombre_);
    if (columnas_.empty()) throw ErrorBaseDatos(SQLITE_ERROR, "no such table: " + nombre_, "");
}

void Tabla::indice(const std::string& nombreIndice) {
    columnasIndice_.clear();
    // Index names are global to a SQLite file, so the schema prefixes them
    // with their table's name; a bare name is accepted too.
    for (const std::string& nombre : {nombre_ + "_" + nombreIndice, nombreIndice}) {
        Consulta c = db_.consulta("SELECT name FROM pragma_index_info(?) ORDER BY seqno", nombre);
        for (c.primero(); !c.eof(); c.siguiente()) columnasIndice_.push_back(c.campo(0).texto());
        if (!columnasIndice_.empty()) break;
    }
    if (columnasIndice_.empty())
        throw ErrorBaseDatos(SQLITE_ERROR, "no such index: " + nombreIndice + " on " + nombre_, "");
}

bool Tabla::busca(const Valor& v1) { return buscaCon({v1}); }
bool Tabla::busca(const Valor& v1, const Valor& v2) { return buscaCon({v1, v2}); }

bool Tabla::buscaCon(const std::vector<Valor>& valores) {
    if (columnasIndice_.size() < valores.size())
        throw ErrorBaseDatos(SQLITE_ERROR, "índice con menos columnas que valores buscados en " + nombre_, "");
    std::string sql = "SELECT rowid";
    for (auto& c : columnas_) sql += ", \"" + c + "\"";
    sql += " FROM \"" + nombre_ + "\" WHERE ";
    for (size_t i = 0; i < valores.size(); ++i) sql += (i ? " AND \"" : "\"") + columnasIndice_[i] + "\" = ?";
    sql += " ORDER BY ";
    for (size_t i = 0; i < columnasIndice_.size(); ++i) sql += "\"" + columnasIndice_[i] + "\", ";
    sql += "rowid";
    Sentencia& s = db_.preparada(sql);
    s.reinicia();
    for (size_t i = 0; i < valores.size(); ++i) s.liga(static_cast<int>(i + 1), valores[i]);
    filas_.clear();
    filasId_.clear();
    while (s.paso()) {
        filasId_.push_back(s.columna(0).entero());
        std::vector<Valor> fila;
        for (int i = 1; i < s.columnas(); ++i) fila.push_back(s.columna(i));
        filas_.push_back(std::move(fila));
    }
    s.reinicia();
    pos_ = 0;
    modo_ = Modo::Ninguno;
    return !filas_.empty();
}

int Tabla::columna(std::string_view nombre) const {
    for (size_t i = 0; i < columnas_.size(); ++i)
        if (IgualSinMayusculas(columnas_[i], nombre)) return static_cast<int>(i);
    throw ErrorBaseDatos(SQLITE_ERROR, "Elemento no encontrado en esta colección: " + std::string(nombre), "");
}

const Valor& Tabla::campo(std::string_view nombre) const {
    if (eof()) throw ErrorBaseDatos(SQLITE_ERROR, "No hay registro activo", "");
    return filas_[pos_][static_cast<size_t>(columna(nombre))];
}

void Tabla::agrega() {
    modo_ = Modo::Agregando;
    cambios_.clear();
}

void Tabla::edita() {
    if (eof()) throw ErrorBaseDatos(SQLITE_ERROR, "No hay registro activo", "");
    modo_ = Modo::Editando;
    cambios_.clear();
}

void Tabla::fija(std::string_view campo, const Valor& v) {
    if (modo_ == Modo::Ninguno)
        throw ErrorBaseDatos(SQLITE_ERROR, "Actualizar o CancelarActualización sin AgregarNuevo o Modificar", "");
    cambios_[columnas_[static_cast<size_t>(columna(campo))]] = v;
}

void Tabla::actualiza() {
    if (modo_ == Modo::Ninguno)
        throw ErrorBaseDatos(SQLITE_ERROR, "Actualizar o CancelarActualización sin AgregarNuevo o Modificar", "");
    if (cambios_.empty()) {
        if (modo_ == Modo::Agregando) db_.ejecuta("INSERT INTO \"" + nombre_ + "\" DEFAULT VALUES");
        modo_ = Modo::Ninguno;
        return;
    }
    std::string sql;
    if (modo_ == Modo::Agregando) {
        std::string nombres, marcas;
        for (auto& [c, v] : cambios_) {
            nombres += (nombres.empty() ? "\"" : ", \"") + c + "\"";
            marcas += marcas.empty() ? "?" : ", ?";
        }
        sql = "INSERT INTO \"" + nombre_ + "\" (" + nombres + ") VALUES (" + marcas + ")";
    } else {
        std::string asignaciones;
        for (auto& [c, v] : cambios_) asignaciones += (asignaciones.empty() ? "\"" : ", \"") + c + "\" = ?";
        sql = "UPDATE \"" + nombre_ + "\" SET " + asignaciones + " WHERE rowid = ?";
    }
    Sentencia& s = db_.preparada(sql);
    s.reinicia();
    int i = 1;
    for (auto& [c, v] : cambios_) s.liga(i++, v);
    if (modo_ == Modo::Editando) {
        s.liga(i, Valor(static_cast<long long>(filasId_[pos_])));
        for (auto& [c, v] : cambios_) filas_[pos_][static_cast<size_t>(columna(c))] = v;
    }
    s.ejecuta();
    modo_ = Modo::Ninguno;
    cambios_.clear();
}

// ---------------------------------------------------------------- BaseDatos

namespace {

// A number no other connection nor earlier set of statements has had.
std::uint64_t NuevaGeneracion() {
    static std::atomic<std::uint64_t> contador{0};
    return ++contador;
}

// Before the engine starts: nothing reads its memory statistics, and
// keeping them costs a global lock on every allocation it makes.
void PreparaMotor() {
    static const bool hecho = [] {
        sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);  // refused, harmlessly, once the engine has started
        return true;
    }();
    (void)hecho;
}

}  // namespace

BaseDatos::BaseDatos(const std::filesystem::path& ruta, Modo modo) : ruta_(ruta), generacion_(NuevaGeneracion()) {
    PreparaMotor();
    // READWRITE falls back to reading only on a file the system write-protects.
    // A connection belongs to the thread that opened it and is never used by
    // two at once, so the engine's own per-call locking (a lock and unlock on
    // every bind, step and read of a column) is left out.
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
    if (modo == Modo::Crear) flags |= SQLITE_OPEN_CREATE;
    int rc = sqlite3_open_v2(ruta.string().c_str(), &db_, flags, nullptr);
    if (rc != SQLITE_OK) {
        std::string msg = db_ ? sqlite3_errmsg(db_) : "out of memory";
        sqlite3_close(db_);
        db_ = nullptr;
        throw ErrorBaseDatos(rc, msg + ": " + ruta.string(), "", ruta.string());
    }
    try {
        configura(modo == Modo::SoloLectura);
    } catch (...) {
        cache_.clear();
        sqlite3_close(db_);
        db_ = nullptr;
        throw;
    }
}

BaseDatos::BaseDatos() : ruta_(":memory:"), generacion_(NuevaGeneracion()) {
    PreparaMotor();
    int rc = sqlite3_open_v2(":memory:", &db_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                             nullptr);
    if (rc != SQLITE_OK) throw ErrorBaseDatos(rc, "out of memory", "");
    configura();
}

BaseDatos::~BaseDatos() {
    cache_.clear();
    if (db_) sqlite3_close_v2(db_);
}

void BaseDatos::configura(bool soloLectura) {
    sqlite3_busy_timeout(db_, 5000);
    sqlite3_extended_result_codes(db_, 0);
    auto registra = [&](const char* nombre, int n, void (*f)(sqlite3_context*, int, sqlite3_value**)) {
        int rc = sqlite3_create_function(db_, nombre, n, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, f, nullptr,
                                         nullptr);
        if (rc != SQLITE_OK) throw ErrorBaseDatos(rc, sqlite3_errmsg(db_), nombre, ArchivoDe(db_));
    };
    registra("Month", 1, FuncionMonth);
    registra("Year", 1, FuncionYear);
    registra("Left", 2, FuncionLeft);
    registra("QuitaCaracteresEspeciales", 1, FuncionQuitaCaracteresEspeciales);
    // Reading the schema now makes a corrupt or foreign file fail at open,
    // and the journal mode keeps a commit atomic across attached files.
    ejecutaScript("PRAGMA schema_version");
    if (soloLectura) {
        ejecutaScript("PRAGMA query_only=ON");
        return;
    }
    if (ruta_ != ":memory:" && !sqlite3_db_readonly(db_, "main")) ejecutaScript("PRAGMA journal_mode=DELETE");
}

void BaseDatos::ejecutaScript(const std::string& sql) {
    char* error = nullptr;
    int rc = sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &error);
    if (rc != SQLITE_OK) {
        std::string msg = error ? error : sqlite3_errmsg(db_);
        sqlite3_free(error);
        throw ErrorBaseDatos(rc, msg, sql, ArchivoDe(db_));
    }
}

Sentencia& BaseDatos::preparada(const std::string& sql) {
    auto it = cache_.find(sql);
    if (it != cache_.end()) return *it->second;
    auto s = std::make_unique<Sentencia>(db_, sql);
    return *cache_.emplace(sql, std::move(s)).first->second;
}

Sentencia BaseDatos::prepara(const std::string& sql) { return Sentencia(db_, sql); }

void BaseDatos::adjunta(const std::filesystem::path& ruta, const std::string& alias) {
    ejecuta("ATTACH DATABASE ? AS \"" + alias + "\"", ruta.string());
}

void BaseDatos::separa(const std::string& alias) {
    olvidaPreparadas();
    ejecutaScript("DETACH DATABASE \"" + alias + "\"");
}

void BaseDatos::olvidaPreparadas() {
    cache_.clear();
    generacion_ = NuevaGeneracion();
}

bool BaseDatos::enTransaccion() const { return sqlite3_get_autocommit(db_) == 0; }
std::int64_t BaseDatos::ultimoId() const { return sqlite3_last_insert_rowid(db_); }
int BaseDatos::cambios() const { return sqlite3_changes(db_); }

bool BaseDatos::existeTabla(const std::string& tabla) {
    // Compared in upper case, as the legacy engine's table names are.
    return !escalar("SELECT name FROM sqlite_schema WHERE type='table' AND upper(name)=upper(?)", tabla).esNulo();
}

std::vector<std::string> BaseDatos::columnas(const std::string& tabla, const std::string& esquema) {
    std::vector<std::string> r;
    Consulta c = consulta("SELECT name FROM pragma_table_info(?, ?) ORDER BY cid", tabla, esquema);
    for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c.campo(0).texto());
    return r;
}

// ------------------------------------------------------------ Super-journals

namespace {

bool JournalPendiente(const std::filesystem::path& journal) {
    std::error_code ec;
    return std::filesystem::is_regular_file(journal, ec) && std::filesystem::file_size(journal, ec) > 0 && !ec;
}

// The journals a super-journal names, each written as a NUL-terminated path.
std::vector<std::string> JournalesNombrados(const std::filesystem::path& superJournal) {
    std::ifstream f(superJournal, std::ios::binary);
    std::string contenido((std::istreambuf_iterator<char>(f)), std::istreambuf_iterator<char>());
    std::vector<std::string> r;
    for (size_t desde = 0; desde < contenido.size();) {
        size_t fin = contenido.find('\0', desde);
        if (fin == std::string::npos) fin = contenido.size();
        if (fin > desde) r.push_back(contenido.substr(desde, fin - desde));
        desde = fin + 1;
    }
    return r;
}

}  // namespace

int QuitaSuperJournalesHuerfanos(const std::filesystem::path& principal) {
    namespace fs = std::filesystem;
    const std::string prefijo = principal.filename().string() + "-mj";
    const std::string sufijo = "-journal";
    std::error_code ec;
    std::vector<fs::path> superJournales;
    for (auto& e : fs::directory_iterator(principal.parent_path(), ec))
        if (e.path().filename().string().rfind(prefijo, 0) == 0) superJournales.push_back(e.path());
    int quitados = 0;
    for (auto& sj : superJournales) {
        bool enUso = false;
        for (const std::string& journal : JournalesNombrados(sj)) {
            if (!JournalPendiente(journal) || journal.size() <= sufijo.size() ||
                journal.compare(journal.size() - sufijo.size(), sufijo.size(), sufijo) != 0)
                continue;
            fs::path base = journal.substr(0, journal.size() - sufijo.size());
            if (!fs::exists(base, ec)) continue;  // nothing left to play it back into
            try {
                BaseDatos db(base);  // the open reads the schema: a hot journal is played back
            } catch (const ErrorBaseDatos&) {
            }
            enUso = enUso || JournalPendiente(journal);
        }
        if (!enUso && fs::remove(sj, ec)) ++quitados;
    }
    return quitados;
}

// -------------------------------------------------------------- Transaccion

Transaccion::Transaccion(BaseDatos& db) : db_(db) {
    static std::atomic<int> contador{0};
    if (db_.enTransaccion()) {
        punto_ = "sp" + std::to_string(++contador);
        db_.ejecutaScript("SAVEPOINT " + punto_);
    } else {
        db_.ejecutaScript("BEGIN IMMEDIATE");
    }
}

Transaccion::~Transaccion() {
    if (!abierta_) return;
    try {
        deshace();
    } catch (...) {
        // A rollback that fails leaves SQLite to roll back at close.
    }
}

void Transaccion::confirma() {
    if (!abierta_) return;
    db_.ejecutaScript(punto_.empty() ? "COMMIT" : "RELEASE " + punto_);
    abierta_ = false;
}

void Transaccion::deshace() {
    if (!abierta_) return;
    abierta_ = false;
    if (punto_.empty()) {
        if (db_.enTransaccion()) db_.ejecutaScript("ROLLBACK");
    } else {
        db_.ejecutaScript("ROLLBACK TO " + punto_ + "; RELEASE " + punto_);
    }
}

}  // namespace velmorant
