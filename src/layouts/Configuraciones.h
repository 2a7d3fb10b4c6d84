#pragma once
// The layout store: table `Configuraciones`, one named row of 21 position
// pairs per layout, in two copies. The catalogue of every saved layout lives
// in "Configuraciones" in the program's data folder (`Sesion::DbConfiguraciones`);
// the company database holds the copy of the layout in use for the company.
// A pair is a 1-based character position and a length for fixed-position
// layouts, a 1-based column number and 0 for delimited and workbook layouts;
// a position of 0 means the field is absent from the source.

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "session/Sesion.h"

namespace velmorant {

/// Links that own layouts (`IdEnlace`).
inline constexpr int kEnlaceTxtPersonalizado = 25;
inline constexpr int kEnlaceTextoGenerico = 82;
inline constexpr int kEnlaceExcelGenerico = 102;

/// Base name of the catalogue file in the program's data folder.
inline constexpr const char* kArchivoConfiguraciones = "Configuraciones";

inline constexpr const char* kConfigPredeterminada = "CONFIGURACION PREDETERMINADA";
inline constexpr const char* kConfigPredeterminadaTexto = "CONFIGURACION PREDETERMINADA TEXTO GENERICO";
inline constexpr const char* kConfigPredeterminadaExcel = "CONFIGURACION PREDETERMINADA EXCEL GENERICO";

/// The layout record (`EstructurasDatosTxt`): the 21 pairs in table order,
/// without `Nombre` and `IdEnlace`. A Null column reads as 0.
struct EstructuraDatosTxt {
    std::int16_t PIniCuenta = 0, LongCuenta = 0;
    std::int16_t PIniDescripcion = 0, LongDescripcion = 0;
    std::int16_t PIniCtaAcum = 0, LongCtaAcum = 0;
    std::int16_t PIniNivel = 0, LongNivel = 0;
    std::int16_t PIniNaturaleza = 0, LongNaturaleza = 0;
    std::int16_t PIniSdoIni = 0, LongSdoIni = 0;
    std::int16_t PIniTipo = 0, LongTipo = 0;
    std::int16_t PIniNumPol = 0, LongNumPol = 0;
    std::int16_t PIniDia = 0, LongDia = 0;
    std::int16_t PIniMes = 0, LongMes = 0;
    std::int16_t PIniAnio = 0, LongAnio = 0;
    std::int16_t PIniCtaPol = 0, LongCtaPol = 0;
    std::int16_t PIniRef = 0, LongRef = 0;
    std::int16_t PIniConcept = 0, LongConcept = 0;
    std::int16_t PIniTipoMov = 0, LongTipoMov = 0;
    std::int16_t PIniImporte = 0, LongImporte = 0;
    std::int16_t PIniCargo = 0, LongCargo = 0;
    std::int16_t PIniAbono = 0, LongAbono = 0;
    std::int16_t PIniCtaSdoAnt = 0, LongCtaSdoAnt = 0;
    std::int16_t PIniDescSdoAnt = 0, LongDescSdoAnt = 0;
    std::int16_t PIniSdoFinAnt = 0, LongSdoFinAnt = 0;

    bool operator==(const EstructuraDatosTxt&) const = default;
};

/// One pair of the record: the name after "PIni"/"Long" and its two members.
struct ParConfiguracion {
    const char* nombre;  // "Cuenta", "Descripcion", ...
    std::int16_t EstructuraDatosTxt::*pIni;
    std::int16_t EstructuraDatosTxt::*longitud;
};

/// The 21 pairs in the order of the table.
const std::array<ParConfiguracion, 21>& ParesConfiguracion();

/// The record's member for a column name ("PIniCuenta", "LongSdoFinAnt",
/// case-insensitive); null when the name is not one of the 42 columns.
std::int16_t EstructuraDatosTxt::*CampoConfiguracion(const std::string& columna);

/// "PIniCuenta, LongCuenta, ..., PIniSdoFinAnt, LongSdoFinAnt".
std::string ListaColumnasPares();

/// Predetermined name of a link: 25, 82 and 102 have one, others "".
std::string NombrePredeterminado(int idEnlace);

// ------------------------------------------------------------- The stores

/// Full path of the catalogue in the program's data folder.
std::string RutaBaseConfiguraciones();
/// Creates the empty catalogue file, then closes it.
void CreaBaseConfiguraciones();
/// Opens the catalogue into `s.DbConfiguraciones`; false on any error.
bool AbreBaseConfiguraciones(Sesion& s);
/// Closes the catalogue.
void CierraBaseConfiguraciones(Sesion& s);
/// Runs the table's CREATE TABLE on `db`.
void CreaTablaConfiguraciones(BaseDatos& db);
/// Adds the column `IdEnlace` to a table made before it existed; old rows
/// keep a Null there.
void AgregaIdEnlace(BaseDatos& db);
/// Inserts the predetermined row of `idEnlace` into `db`; a row already there
/// stays as it is. Returns its name ("" for a link without one).
std::string InsertaConfigPredeterminada(BaseDatos& db, int idEnlace);

/// Inserts the predetermined row of the session's link (`IdSistemaElegido`)
/// into the company database and returns its name; "" for other links.
std::string ConfigPredeterminadaEnlace(Sesion& s);

/// The names the catalogue lists for the session's link, in table order
/// (rows of link 25 also ask for a Null link, which never matches).
std::vector<std::string> LlenaComboConfiguraciones(Sesion& s);

/// True when the catalogue holds a row of that name.
bool ExisteConfiguracion(Sesion& s, const std::string& nombre);

/// Copies the row `nombre` of `origen` into `destino`, Null values as 0.
/// Shows "No fue posible concluir el proceso" when `origen` has no such row.
bool CopiaConfiguracion(Sesion& s, BaseDatos& origen, BaseDatos& destino, const std::string& nombre);

/// The row `nombre` of `db` with its link; nothing when absent.
struct FilaConfiguracion {
    std::string Nombre;
    EstructuraDatosTxt pares;
    int IdEnlace = 0;  // Null as 0
};
std::optional<FilaConfiguracion> LeeConfiguracion(BaseDatos& db, const std::string& nombre);
/// Every row of `db`, in table order.
std::vector<FilaConfiguracion> TodasLasConfiguraciones(BaseDatos& db);

/// Fills `registro` from the company's row `nombre`. Without a row it shows
/// "No se encontro la configuracion actual", leaves `registro` as it was and
/// returns false.
bool CargaConfigEmpresa(Sesion& s, const std::string& nombre, EstructuraDatosTxt& registro);

/// The catalogue half of the start: creates the file when missing and opens
/// it (a failure shows "No fue posible abrir la Base Configuraciones." and
/// ends the program), creates or upgrades its table and inserts the
/// predetermined row of the session's link when it is missing.
void PreparaCatalogoConfiguraciones(Sesion& s);

/// What the start of a generic importer form leaves behind.
struct InicioConfiguraciones {
    std::string Configuracion;       // the current name: the predetermined one
    std::vector<std::string> lista;  // names for the list, when it is filled
    bool abreParametros = false;     // the parameter form must open at once
};

/// Makes `nombre` the company's layout for link `idEnlace` and loads it into
/// `registro`, as a parameter form does on accepting: the catalogue is
/// prepared, the company's copy replaced by the catalogue's row. False, after
/// "No se encontro la configuracion actual", when the catalogue has no such
/// layout, and after a message naming the other link when the layout
/// belongs to another importer.
bool UsaConfiguracion(Sesion& s, int idEnlace, const std::string& nombre, EstructuraDatosTxt& registro);

/// The start of a generic importer form, for the session's link:
/// PreparaCatalogoConfiguraciones, then the table of the company database
/// created or upgraded, its predetermined row inserted and made current.
/// The parameter form must open at once when the catalogue lacks that name.
InicioConfiguraciones IniciaConfiguraciones(Sesion& s);

}  // namespace velmorant
