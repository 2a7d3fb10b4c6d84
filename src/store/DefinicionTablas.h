#pragma once
// Tables described as data: fields in order with their legacy types, and
// named indexes. One routine turns a description into SQLite DDL, so every
// store (base, company, temporary) is created the same way.

#include <string>
#include <vector>

#include "platform/BaseDatos.h"

namespace velmorant {

enum class TipoCampo { Texto, Memo, Long, Integer, Byte, Moneda, Booleano, Fecha, Single, Contador };

struct DefCampo {
    std::string nombre;
    TipoCampo tipo;
    int longitud = 0;  // Text(n): n; documentation of the legacy width
    /// The column's default as SQL text ("0"); empty for none (Null).
    std::string predeterminado = {};
};

struct DefIndice {
    std::string nombre;  // the name the procedures select the index by
    std::vector<std::string> campos;
    bool primario = false;
};

struct DefTabla {
    std::string nombre;
    std::vector<DefCampo> campos;
    std::vector<DefIndice> indices;
};

/// Shorthands for the fields of a table description, by legacy type (the
/// "C" of MonedaC and FechaC keeps them apart from the value types).
namespace campo {
inline DefCampo Texto(const std::string& n, int l = 255) { return {n, TipoCampo::Texto, l}; }
inline DefCampo Memo(const std::string& n) { return {n, TipoCampo::Memo}; }
inline DefCampo Long(const std::string& n) { return {n, TipoCampo::Long}; }
inline DefCampo Integer(const std::string& n) { return {n, TipoCampo::Integer}; }
inline DefCampo Byte(const std::string& n) { return {n, TipoCampo::Byte}; }
inline DefCampo MonedaC(const std::string& n) { return {n, TipoCampo::Moneda}; }
inline DefCampo Booleano(const std::string& n) { return {n, TipoCampo::Booleano}; }
inline DefCampo FechaC(const std::string& n) { return {n, TipoCampo::Fecha}; }
inline DefCampo Single(const std::string& n) { return {n, TipoCampo::Single}; }
inline DefCampo Contador(const std::string& n) { return {n, TipoCampo::Contador}; }
}  // namespace campo

/// Name of an index in SQLite, where index names are global to a file:
/// the table's name, "_" and the index's own name.
std::string NombreIndiceSqlite(const std::string& tabla, const std::string& indice);

/// The column as CREATE TABLE writes it: quoted name, type, default.
std::string DefinicionColumna(const DefCampo& campo);

/// CREATE TABLE / CREATE INDEX, each IF NOT EXISTS, in `esquema`
/// ("main" or an attached alias). Text columns compare without case, as the
/// legacy engine's text did.
void CreaTabla(BaseDatos& db, const DefTabla& tabla, const std::string& esquema = "main");

/// A field's width, or 0 when the table or field is unknown or unbounded.
int LongitudCampo(const DefTabla& tabla, const std::string& campo);

}  // namespace velmorant
