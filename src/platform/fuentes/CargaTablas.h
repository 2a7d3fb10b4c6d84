#pragma once
// Client tables loaded into an in-memory database, so that a reader runs
// its queries over them as written ("... WHERE EJE = ? AND Month(Fecha)<=?
// GROUP BY Periodo ORDER BY ..."), with bound values. dBase and FoxPro
// tables and Access databases land in the same column kinds, so a reader's
// SQL and its reads do not depend on the file the table came from:
//
//   kind           declared    holds                       read with
//   Texto          TEXT        UTF-8 text                   Valor::texto()
//   Entero         INTEGER     whole numbers                Valor::entero()
//   Diezmilesimas  INTEGER     ten-thousandths (Currency)   Valor::moneda()
//   Decimal        TEXT        exact decimal text           Valor::moneda(), texto()
//   Real           REAL        floating point               Valor::real()
//   FechaHora      TEXT        "YYYY-MM-DD", or with the    Valor::fecha(), Month(), Year()
//                              time "YYYY-MM-DD HH:MM:SS"
//   Logico         INTEGER     -1 or 0                      Valor::booleano()
//   Binario        BLOB        always Null (pictures, OLE)  -
//
// Numbers with one to four decimals (dBase N(12,2), money, Access decimals
// of scale up to 4) are Diezmilesimas: exact, summed exactly by SQL, the
// Currency of the stores. Numbers with no decimals are Entero, so that
// "WHERE EJE = ?" compares with a bound integer; beware that Valor::moneda()
// of an Entero column reads ten-thousandths: an amount kept without
// decimals is read with Valor::entero(). More than four decimals keep
// their exact text (Decimal). A value that is not what its column declares
// (a text in a number field, a date that is no date) is kept as the text
// the file holds, for the reader to report.

#include <optional>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "platform/fuentes/Celda.h"

namespace velmorant {

enum class AlmacenColumna { Texto, Entero, Diezmilesimas, Decimal, Real, FechaHora, Logico, Binario };

/// The kind of column of a number with `decimales` decimal places.
AlmacenColumna AlmacenNumero(int decimales);

/// "YYYY-MM-DD", followed by " HH:MM:SS" when `segundos` (of the day) is
/// not zero.
std::string TextoFechaHora(const Fecha& fecha, int segundos);

/// A cell of a record source as stored in a column of kind `almacen`;
/// nothing when its number does not fit the column (beyond a 64-bit count).
std::optional<Valor> ValorEnColumna(const Celda& celda, AlmacenColumna almacen);

struct ColumnaCarga {
    std::string nombre;
    AlmacenColumna almacen = AlmacenColumna::Texto;
};

/// A table being filled: creating it drops any table of the same name and
/// makes the new one; `agrega` inserts one row, values by column, through
/// one prepared statement. The caller holds the transaction.
class TablaEnMemoria {
public:
    TablaEnMemoria(BaseDatos& memoria, const std::string& nombreTabla, const std::vector<ColumnaCarga>& columnas);
    void agrega(const std::vector<Valor>& valores);

private:
    Sentencia insercion_;
};

/// An identifier quoted for SQL: "NOMBRE", inner quotes doubled.
std::string IdentificadorSql(const std::string& nombre);

/// The kind of column of a dBase/FoxPro field of type `tipo` (C, N, D, ...).
AlmacenColumna AlmacenCampoDbf(char tipo, int decimales);

/// Loads the live records of the table at `ruta` into `nombreTabla` of the
/// in-memory database, one column per field with the field's name, in one
/// transaction (a failure leaves the database as it was). Throws
/// ErrorLectura as FuenteDbf does, and naming the record of a number that
/// does not fit its column. Returns the rows loaded.
long CargaTablaDbf(BaseDatos& memoria, const std::string& ruta, const std::string& nombreTabla);

}  // namespace velmorant
