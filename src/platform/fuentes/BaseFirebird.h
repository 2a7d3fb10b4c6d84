#pragma once
// A client's Firebird database (a ".FDB" file), opened through the embedded
// engine of Firebird 3 in this very process: no server, no network, and no
// password check for a local file (the engine trusts the user name given).
//
// What opening does, in order:
//  - a missing file: ErrorLectura "Confirme la Ruta del archivo de Base de
//    Datos.";
//  - the header page is read before the engine sees the file: a file that is
//    not a Firebird database, and one of another on-disk structure (a
//    Firebird 2.x database: ODS 11, bytes 0x12-0x13 = 0x800B), are refused
//    with a message saying what the file is and what to do with it;
//  - the file is copied to a private temporary folder and the copy opened
//    (the engine writes to every file it opens and cannot open a read-only
//    one); the copy goes away when the object is destroyed;
//  - the engine is loaded once per process, on the first open, from the
//    client library (libfbclient.so.2, or $VELMORANT_FBCLIENT), with its
//    lock folder (FIREBIRD_LOCK) set to a folder of this program so that it
//    never meets the lock files of a Firebird server on the same machine.
//    When the library or its engine is missing, every open fails with a
//    message naming the Debian package that provides it, and the rest of
//    the program runs as before.
//
// Values come out as cells (Celda): integers and NUMERIC/DECIMAL as exact
// decimal text, DOUBLE/FLOAT as their shortest decimal text, DATE and
// TIMESTAMP as dates with their time of day, TIME on the day 30/12/1899
// (the day zero of the legacy engine), BOOLEAN as a logical value, text as
// UTF-8: columns of character set NONE (and OCTETS, WIN1252, ...) decoded
// with the database's code page, UTF8 columns as they are; text BLOBs read
// whole; other BLOBs and arrays as null cells.

#include <memory>
#include <string>
#include <vector>

#include "platform/Valor.h"
#include "platform/fuentes/FuenteRegistros.h"

namespace velmorant {

class BaseFirebird {
public:
    /// User and password when the caller leaves them empty.
    static constexpr const char* kUsuarioPorDefecto = "SYSDBA";
    static constexpr const char* kContrasenaPorDefecto = "kestrelop";

    /// Opens the database at `ruta` (trimmed of spaces) as described above.
    /// `paginaCodigos` decodes the text of columns without a character set:
    /// "Windows-1252" (the default) or a name the toolkit's text codecs
    /// know ("IBM850", "ISO-8859-1"). Throws ErrorLectura naming the file.
    explicit BaseFirebird(const std::string& ruta, const std::string& usuario = "", const std::string& contrasena = "",
                          const std::string& paginaCodigos = "Windows-1252");
    /// Closes the database and removes the temporary copy.
    ~BaseFirebird();
    BaseFirebird(const BaseFirebird&) = delete;
    BaseFirebird& operator=(const BaseFirebird&) = delete;

    /// The file as the user named it (trimmed).
    const std::string& ruta() const;

    /// The user tables (views and system tables left out), by name.
    std::vector<std::string> tablas();

    /// Runs a SELECT and gives its rows; each "?" of `sql` takes the value
    /// of the same position of `parametros` (integers, reals, texts, Null;
    /// a date as its ISO text). Several may be open at once, and a source
    /// keeps the database open while it lives. Every query of one
    /// BaseFirebird sees the database as it was when it was opened. Throws
    /// ErrorLectura with the engine's text when the statement is refused,
    /// std::invalid_argument when the parameters do not match its marks.
    std::unique_ptr<FuenteRegistros> consulta(const std::string& sql, const std::vector<Valor>& parametros = {});

    struct Interna;

private:
    std::shared_ptr<Interna> d_;
};

/// Empty when this machine can open Firebird databases (the client library
/// loads and finds its embedded engine); otherwise what is missing and
/// which Debian package provides it, in the words shown next to the
/// importer's controls.
std::string DiagnosticoMotorFirebird();

}  // namespace velmorant
