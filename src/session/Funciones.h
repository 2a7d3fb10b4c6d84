#pragma once
// Helpers of general use: message boxes with the program's title, Null-safe
// reads, text cleaning, dates as the sources and the SQL of the system write
// them, and path tests.

#include <exception>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "session/Sesion.h"

namespace velmorant {

// ------------------------------------------------------------ Message boxes
// Title "VELMORANT Ver. " + version. MsgCritico and MsgAviso append one CR to
// the text; MsgInformacion and MsgPregunta show it as given.
std::string TituloMensajes(const Sesion& s);
void MsgCritico(Sesion& s, const std::string& texto);
void MsgAviso(Sesion& s, const std::string& texto);
void MsgInformacion(Sesion& s, const std::string& texto);
bool MsgPregunta(Sesion& s, const std::string& texto);

/// Shows "Error : " + " n" + " " + description when `mostrar`; returns true
/// (there was an error). The number is the engine's code for engine errors.
bool ReportaError(Sesion& s, const std::exception& error, bool mostrar);

// ------------------------------------------------------------------- Values
std::string SiNuloTexto(const Valor& v);
Valor SiNuloCero(const Valor& v);
std::string QuitaApostrofes(const std::string& t);
/// Removes each occurrence of `caracter`, skipping one character after each
/// (so a `caracter` of several characters leaves its tail behind).
std::string QuitaCaracter(const std::string& texto, const std::string& caracter);
/// Removes "'", "|" and "~", in that order, with QuitaCaracter.
std::string QuitaCaracteresEspeciales(const std::string& t);
/// The same cleaning as an SQL expression over `columna` (a name of this
/// program's, never a value), with a Null read as an empty text, as
/// QuitaCaracteresEspeciales(SiNuloTexto(...)) reads it: for the steps that
/// copy a month inside the engine instead of row by row. Every connection
/// has the function (BaseDatos).
std::string SqlSinCaracteresEspeciales(const std::string& columna);
/// A stored flag as the stores keep a boolean, -1 or 0, a Null being false.
std::string SqlBooleano(const std::string& columna);

/// A month (or any small number) as two-digit text: 3 → "03".
std::string DosDigitos(long n);

/// The company connection; a logic error when the session has none open.
BaseDatos& EmpresaAbierta(Sesion& s);

// ----------------------------------------------------------------- Progress
// A step's progress through the session's Progreso, when one is set.
void EtiquetaProgreso(Sesion& s, const std::string& texto);
void MaximoProgreso(Sesion& s, size_t n);
/// Moves the bar and yields to the front end.
void AvanceProgreso(Sesion& s, size_t n);
void CedeProgreso(Sesion& s);

// -------------------------------------------------------------------- Dates
/// "dd/MM/yyyy" of a date text: two "-" or two "/" give three numbers, day
/// first; six characters read as ddMMaa. Two-digit years become 20yy up to
/// 15 and 19yy above. Any other text is returned unchanged.
std::string FechaDesdeTexto(const std::string& t);
/// The one date reader of the sources, as the host's date conversion reads
/// a date text: day first ("15/01/2024", "15-1-24", "150124"), or year first
/// when the first piece has four digits ("2024-01-15"); the month may be a
/// Spanish name or abbreviation ("15-ene-2024", "15 de enero de 2024"); a
/// time of day after the date is accepted and dropped ("15/01/2024
/// 00:00:00", "... 3:05 p.m."). Two-digit years fall in 1930 to 2029.
/// Nothing when the text is not a real date.
std::optional<Fecha> LeeFecha(const std::string& t);
/// "mm/dd/yyyy" of a value: blank gives "01/01/1900"; a date is formatted;
/// a text goes through FechaDesdeTexto first.
std::string FechaSql(const Valor& v);
/// Checks a typed date, warning with the system's messages; true when valid.
bool ValidaFecha(Sesion& s, const std::string& t);
/// "Enero" to "Diciembre", the list of `LlenaComboMeses`.
std::vector<std::string> LlenaComboMeses();

// -------------------------------------------------------------------- Paths
/// Text after the last separator ("/" or "\").
std::string NombreDeArchivo(const std::string& ruta);
/// Text through the last separator; empty if there is none.
std::string CarpetaDeArchivo(const std::string& ruta);
bool ExisteArchivo(const std::string& ruta);
bool ExisteCarpeta(const std::string& ruta);
/// The platform's directory separator, the "backslash" of the system.
char SeparadorRuta();
/// `carpeta` with one trailing separator.
std::string ConSeparadorFinal(const std::string& carpeta);

// ---------------------------------------------------------------- Databases
bool ExisteTabla(BaseDatos& db, const std::string& nombre);
bool ExisteCampo(BaseDatos& db, const std::string& tabla, const std::string& campo);

}  // namespace velmorant
