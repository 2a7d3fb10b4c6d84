#pragma once
// The logic every importer form shares, apart from its widgets: the file
// picker with the folder it remembers for each kind of file, the refusal
// of a file chosen twice, the month rows and the filling of February to
// December from the January file.

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "session/Sesion.h"

namespace velmorant {

// Keys of section "Configuracion" of application "VELMORANT" under which a
// picker keeps the folder of the last file of its kind.
inline constexpr const char* kClaveCatalogo = "ImpCatalogo";
inline constexpr const char* kClaveSaldosIniciales = "ImpSI";
inline constexpr const char* kClaveSaldosAnioAnterior = "ImpSFAA";
inline constexpr const char* kClavePolizasMes = "DirPolizas";
inline constexpr const char* kClavePolizas = "ImpPol";
/// Not a folder: the number of the last month read in a run.
inline constexpr const char* kClaveVerPolizas = "VerPolizas";

/// A file picker of an importer form: the dialog's title and filter
/// ("description|pattern[|...]") and the key of its folder.
struct SelectorArchivo {
    std::string titulo;
    std::string filtro;
    std::string clave;
};

/// The folder saved under `clave`, as text; empty when none.
std::string CarpetaGuardada(const std::string& clave);

/// The folder a picker opens in: the one saved under `clave` when it still
/// exists, else `RutaBase`.
std::string CarpetaInicialSelector(const Sesion& s, const std::string& clave);

/// The picker: opens the dialog in CarpetaInicialSelector. On a choice it
/// saves the file's folder (through its last separator) under the key and
/// returns the full path; on cancel it returns an empty text and changes
/// nothing.
std::string SeleccionaArchivo(Sesion& s, const SelectorArchivo& selector);

/// True when `ruta` is already one of `elegidas` of the form; then warns
/// "El archivo ya ha sido seleccionado" and the caller drops the path. So
/// one file cannot serve two months.
bool ArchivoYaElegido(Sesion& s, const std::string& ruta, const std::vector<std::string>& elegidas);

/// What a click on a month's box (`chkEne` ... `chkDic`) leads to.
enum class EfectoMarcaMes {
    Nada,        // ticked with a file: the month will be read
    Desmarca,    // ticked without a file: message given; untick, focus on the month's button
    LimpiaRuta,  // unticked: the month's path is cleared
};
EfectoMarcaMes ClicMes(Sesion& s, bool marcado, const std::string& ruta);

/// How a month is written in the name of a month file: a three-letter
/// abbreviation ("ENE", "FEB", "MZO", ...), a whole name ("ENERO", ...) or
/// the month's number ("01", ...).
struct MarcadorMes {
    enum class Tipo { Abreviatura, Nombre, Digitos };
    Tipo tipo;
    std::string prefijo, marcador, resto, extension;
};

/// The January marker of a file name (no folder): "enero" or "ene"
/// anywhere, whatever the case, else the digits that follow the leading
/// part (the text before the first digit or "."). Nothing when the name has
/// no "." or no marker, or when the pieces do not rebuild the name.
std::optional<MarcadorMes> BuscaMarcadorMes(const std::string& nombre);

/// The name of month `mes` (1..12) built like the January name.
std::string NombreArchivoDelMes(const MarcadorMes& m, int mes);

/// The files of February to December that lie beside the January file, by
/// the January name's marker, in the folder saved under `clave` (the folder
/// of the January file when none is saved). Names are compared without
/// regard to case, as on the file systems of the sources. Index 0 is
/// January and stays empty, as does every month not found.
std::array<std::string, 12> AutocompletaMeses(const std::string& rutaEnero,
                                              const std::string& clave = kClavePolizasMes);

/// Before a month-by-month run: true on a first import; on a re-import the
/// months from the first through the last month that `Polizas` holds must
/// all have a path, else "Es necesario completar la selección de archivos a
/// importar" and false.
bool CompletaSeleccionArchivos(Sesion& s, const std::array<std::string, 13>& rutas);

/// "Enero" ... "Diciembre" of a month 1..12.
std::string NombreDelMes(int mes);

}  // namespace velmorant
