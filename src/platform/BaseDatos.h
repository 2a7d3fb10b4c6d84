#pragma once
// A small RAII layer over the SQLite C API, offering the three forms of
// access the system relies on:
//   - statement access: ejecuta("UPDATE ...", args...);
//   - query access: a Consulta (recordset) with count, first/last/next/EOF
//     and fields by name or position;
//   - table access by a named index: a Tabla with busca() on one or two
//     values, and agrega/edita/fija/actualiza.
// Every value reaches SQL as a bound parameter. Engine errors throw
// ErrorBaseDatos carrying SQLite's message and the SQL text.
// Registered SQL functions: Month(fecha), Year(fecha) and Left(texto, n);
// LEFT is a keyword of SQLite's grammar, so the last is written [Left](...).

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "platform/Valor.h"

struct sqlite3;
struct sqlite3_stmt;

namespace velmorant {

/// The default extension of every store of this engine.
inline constexpr const char* kExtensionBase = ".sqlite";

class ErrorBaseDatos : public std::runtime_error {
public:
    /// `archivo`: the database file the failing connection works on (its
    /// main file), when known, so that a message can name it.
    ErrorBaseDatos(int codigo, const std::string& mensaje, std::string sql, std::string archivo = "");
    int codigo() const { return codigo_; }
    /// The file is not a database of this engine, or its pages are damaged:
    /// no retry will read it (unlike a busy or locked file).
    bool esDano() const;
    const std::string& sql() const { return sql_; }
    const std::string& mensajeMotor() const { return mensaje_; }
    const std::string& archivo() const { return archivo_; }

private:
    int codigo_;
    std::string mensaje_;
    std::string sql_;
    std::string archivo_;
};

class BaseDatos;

/// A prepared statement. Binds are positional, from 1, or given all at once
/// with con(...), which resets the statement first.
class Sentencia {
public:
    Sentencia(sqlite3* db, const std::string& sql);
    ~Sentencia();
    Sentencia(Sentencia&&) noexcept;
    Sentencia& operator=(Sentencia&&) = delete;
    Sentencia(const Sentencia&) = delete;

    Sentencia& reinicia();
    Sentencia& liga(int indice, const Valor& v);
    Sentencia& ligaEntero(int indice, std::int64_t v);
    /// A text; with `copia` false the engine reads it where it stands, so
    /// it must stay unchanged until the statement has run: for a row
    /// written by ejecutaYOlvida().
    Sentencia& ligaTexto(int indice, std::string_view t, bool copia = true);
    /// Each argument bound as Valor(arg) stores it (the usual kinds without
    /// building the Valor).
    template <class... A>
    Sentencia& con(const A&... args) {
        reinicia();
        int i = 1;
        (ligaArgumento(i++, args), ...);
        return *this;
    }

    /// Steps once; true while a row is available.
    bool paso();
    /// Steps to the end; returns the rows changed.
    int ejecuta();
    /// ejecuta(), after which the values bound are dropped, whatever the
    /// outcome: no later step can read a text bound without its copy.
    int ejecutaYOlvida();

    int columnas() const;
    std::string nombreColumna(int i) const;
    Valor columna(int i) const;
    /// The current row's column read in place, for loops over many rows
    /// that would otherwise build a Valor for each: its kind, its integer
    /// (for an integer column), its text (for a text; the view stands until
    /// the next step or reset). A blob is a text of its bytes, as columna()
    /// reads it.
    enum class Clase { Nulo, Entero, Real, Texto };
    Clase clase(int i) const;
    std::int64_t entero(int i) const;
    std::string_view texto(int i) const;
    /// columna(i).moneda(), without building a value for an integer.
    Moneda moneda(int i) const;
    /// columna(i) into `v`, a text in the room `v` already has.
    void columnaEn(int i, Valor& v) const;
    /// Index of a result column by name (case-insensitive); -1 if absent.
    int indiceColumna(std::string_view nombre) const;
    const std::string& sql() const { return sql_; }

private:
    sqlite3* db_;
    sqlite3_stmt* st_ = nullptr;
    std::string sql_;
    void verifica(int rc) const;
    template <class T>
    void ligaArgumento(int i, const T& v) {
        if constexpr (std::is_same_v<T, std::string>) ligaTexto(i, v);
        else if constexpr (std::is_same_v<T, bool>) ligaEntero(i, v ? -1 : 0);
        else if constexpr (std::is_same_v<T, int> || std::is_same_v<T, long> || std::is_same_v<T, long long>)
            ligaEntero(i, static_cast<std::int64_t>(v));
        else if constexpr (std::is_same_v<T, Moneda>) ligaEntero(i, v.diezmilesimas());
        else if constexpr (std::is_same_v<T, Valor>) liga(i, v);
        else liga(i, Valor(v));
    }
};

/// A recordset, read whole when opened: record count, first/last/next, EOF
/// and fields by name or position, as the pipeline's loops expect.
class Consulta {
public:
    Consulta() = default;
    explicit Consulta(Sentencia& s);

    size_t cuentaRegistros() const { return filas_; }
    bool eof() const { return pos_ >= filas_; }
    bool vacia() const { return filas_ == 0; }
    void primero() { pos_ = 0; }
    void ultimo() { pos_ = filas_ == 0 ? 0 : filas_ - 1; }
    void siguiente() { ++pos_; }
    size_t posicion() const { return pos_; }
    void mueveA(size_t pos) { pos_ = pos; }

    int numCampos() const { return static_cast<int>(nombres_.size()); }
    const std::string& nombreCampo(int i) const { return nombres_.at(static_cast<size_t>(i)); }
    const Valor& campo(int i) const;
    const Valor& campo(std::string_view nombre) const;
    const Valor& operator[](std::string_view nombre) const { return campo(nombre); }

private:
    std::vector<std::string> nombres_;
    std::vector<Valor> celdas_;  // row after row, nombres_.size() fields each
    size_t filas_ = 0;
    size_t pos_ = 0;
    int indice(std::string_view nombre) const;
};

/// Table access in the order of a named index, with seek on one or two values
/// and add/edit/update of the current record.
class Tabla {
public:
    Tabla(BaseDatos& db, std::string nombre);

    /// Selects the index by name; its columns are read from the schema.
    void indice(const std::string& nombreIndice);
    /// Seeks "=" on the index's first one or two columns; the matching rows
    /// become the cursor in index order. Returns true when something matched.
    bool busca(const Valor& v1);
    bool busca(const Valor& v1, const Valor& v2);
    bool sinCoincidencia() const { return filas_.empty(); }
    bool eof() const { return pos_ >= filas_.size(); }
    void siguiente() { ++pos_; }

    const Valor& campo(std::string_view nombre) const;

    /// Starts a new record; fija() sets its fields; actualiza() inserts it.
    void agrega();
    /// Starts editing the current record; actualiza() writes the changes.
    void edita();
    void fija(std::string_view campo, const Valor& v);
    void actualiza();

private:
    BaseDatos& db_;
    std::string nombre_;
    std::vector<std::string> columnas_;  // all columns of the table, in order
    std::vector<std::string> columnasIndice_;
    std::vector<std::int64_t> filasId_;
    std::vector<std::vector<Valor>> filas_;
    size_t pos_ = 0;
    enum class Modo { Ninguno, Agregando, Editando } modo_ = Modo::Ninguno;
    std::map<std::string, Valor> cambios_;
    bool buscaCon(const std::vector<Valor>& valores);
    int columna(std::string_view nombre) const;
};

class Transaccion;

class BaseDatos {
public:
    enum class Modo { Existente, Crear, SoloLectura };

    /// Opens (or creates, with Modo::Crear) a store. A missing file in
    /// Existente mode, a corrupt file or a locked one throws ErrorBaseDatos.
    /// SoloLectura refuses every write of its own, yet opens the file for
    /// writing where the system allows it, so that the journal a killed
    /// writer left behind is rolled back on the first read (a connection
    /// without write access cannot, and every read would fail).
    explicit BaseDatos(const std::filesystem::path& ruta, Modo modo = Modo::Existente);
    /// An in-memory database.
    BaseDatos();
    ~BaseDatos();
    BaseDatos(const BaseDatos&) = delete;
    BaseDatos& operator=(const BaseDatos&) = delete;

    /// Runs one or more statements with no parameters.
    void ejecutaScript(const std::string& sql);
    /// Runs one statement with bound parameters; returns the rows changed.
    template <class... A>
    int ejecuta(const std::string& sql, const A&... args) {
        return preparada(sql).con(args...).ejecuta();
    }
    /// A query with bound parameters, read into a recordset.
    template <class... A>
    Consulta consulta(const std::string& sql, const A&... args) {
        Sentencia& s = preparada(sql);
        s.con(args...);
        return Consulta(s);
    }
    /// The first column of the first row, Null if there is none.
    template <class... A>
    Valor escalar(const std::string& sql, const A&... args) {
        Sentencia& s = preparada(sql);
        s.con(args...);
        Valor v = s.paso() ? s.columna(0) : Valor();
        s.reinicia();
        return v;
    }

    /// A statement compiled once per connection and kept: per-row look-ups
    /// use this so that a loop never recompiles its SQL.
    Sentencia& preparada(const std::string& sql);
    /// A statement owned by the caller.
    Sentencia prepara(const std::string& sql);

    void adjunta(const std::filesystem::path& ruta, const std::string& alias);
    void separa(const std::string& alias);

    bool enTransaccion() const;
    std::int64_t ultimoId() const;
    int cambios() const;

    bool existeTabla(const std::string& tabla);
    /// Column names of a table, in order (schema may be "main" or an alias).
    std::vector<std::string> columnas(const std::string& tabla, const std::string& esquema = "main");

    const std::filesystem::path& ruta() const { return ruta_; }
    sqlite3* nativo() { return db_; }
    /// Drops every cached statement (needed before detaching a database).
    void olvidaPreparadas();
    /// Changes whenever the cached statements are dropped, and differs
    /// between connections: a caller that keeps a statement of preparada()
    /// uses it while this stays what it was, and asks again otherwise.
    std::uint64_t generacionPreparadas() const { return generacion_; }

private:
    sqlite3* db_ = nullptr;
    std::filesystem::path ruta_;
    std::unordered_map<std::string, std::unique_ptr<Sentencia>> cache_;
    std::uint64_t generacion_;
    void configura(bool soloLectura = false);
};

/// Removes the super-journals that a process killed in a commit over
/// several files left beside `principal` (the main database of that
/// connection), once nothing needs them: each file they name whose journal
/// is still pending is opened first, which plays that journal back while the
/// super-journal still tells the engine to. One whose files cannot be
/// brought back (busy: another program is committing) is left. Returns how
/// many were removed.
int QuitaSuperJournalesHuerfanos(const std::filesystem::path& principal);

/// A transaction as a scoped object: rolled back unless confirma() is called.
/// Nested scopes become savepoints.
class Transaccion {
public:
    explicit Transaccion(BaseDatos& db);
    ~Transaccion();
    Transaccion(const Transaccion&) = delete;
    Transaccion& operator=(const Transaccion&) = delete;
    void confirma();
    void deshace();

private:
    BaseDatos& db_;
    std::string punto_;  // savepoint name when nested, empty otherwise
    bool abierta_ = true;
};

}  // namespace velmorant
