#pragma once
// The rows of a query over client tables loaded into memory
// (platform/fuentes/CargaTablas.h, BaseAccess.h), read field by field as the
// readers of database sources read them: texts trimmed, Null as empty or 0,
// amounts exact, and a value that is not what its field should hold stopped
// with a message naming the file, the table, the field and the row.
//
// Rows are numbered by the table's `rowid` when the query selects it
// ("SELECT rowid, * FROM ..."): the row's place among the rows loaded.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "platform/fuentes/CargaTablas.h"
#include "platform/Fecha.h"
#include "platform/Moneda.h"

namespace velmorant {

class FilasTabla {
public:
    /// The kind each field was loaded as, when the reader knows it (the
    /// header of a dBase table says it), by field name in upper case. The
    /// loaders keep whole numbers and amounts in ten-thousandths alike as
    /// integers: a field of unknown kind is read as an amount by importe()
    /// and as a whole number by entero().
    using Almacenes = std::map<std::string, AlmacenColumna>;

    /// Walks `consulta` (prepared and bound). `ruta` and `tabla` name the
    /// source in messages.
    FilasTabla(Sentencia& consulta, std::string ruta, std::string tabla, Almacenes almacenes = {});

    /// The next row; false at the end.
    bool siguiente();

    /// The field's value as loaded; throws std::out_of_range for a field the
    /// query does not have.
    const Valor& valor(const std::string& campo) const;
    bool nulo(const std::string& campo) const { return valor(campo).esNulo(); }
    /// Text without outer blanks; Null is empty. A number gives its digits.
    std::string texto(const std::string& campo) const;
    /// Exact amount; Null is 0. Throws ErrorLectura for a text that is no number.
    Moneda importe(const std::string& campo) const;
    /// The field as a whole number (an amount loses its decimals); a text
    /// gives its leading whole number; Null and no number are 0.
    long long entero(const std::string& campo) const;
    /// The date of a date field; nothing for Null. Throws ErrorLectura for
    /// a value that is no date.
    std::optional<Fecha> fecha(const std::string& campo) const;

    /// The row's number in messages: its rowid when selected, else its place
    /// in the query.
    long numero() const;
    /// "tabla T del archivo F, fila N".
    std::string lugar() const;
    /// Stops the reading: ErrorLectura with `causa` and the row's place.
    [[noreturn]] void falla(const std::string& causa) const;

private:
    Sentencia& consulta_;
    std::string ruta_, tabla_;
    Almacenes almacenes_;
    std::vector<std::string> nombres_;  // upper case
    std::vector<Valor> valores_;
    long leidas_ = 0;

    size_t indice(const std::string& campo) const;
    bool es(const std::string& campo, AlmacenColumna almacen) const;
};

}  // namespace velmorant
