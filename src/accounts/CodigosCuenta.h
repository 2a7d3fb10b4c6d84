#pragma once
// Account codes: how a source code becomes the company's code, with its
// level, padding and separators, and back. Pure functions of their
// arguments and of the account structure in the session; they never touch
// a database. Levels are counted from 1.
//
// The removal of single characters and of "'|~" lives with the general
// helpers (QuitaCaracter, QuitaCaracteresEspeciales in session/Funciones.h).

#include <string>
#include <vector>

#include "session/Sesion.h"

namespace velmorant {

/// Source text to unseparated code, each level present padded with zeros
/// (numeric pieces number-formatted). Only trims when RellenaCeros is false.
std::string RellenaCuenta(const Sesion& s, const std::string& texto);
/// Formatted code to unseparated code, by the mask's fixed positions (one
/// separator character assumed after each level). Unchanged with no separator.
std::string QuitaSeparadores(const Sesion& s, const std::string& cuenta);
/// Unseparated code to formatted code (display only): the levels the code
/// uses, joined by the separator. Unchanged without CatalogoArbol or separator.
/// Takes the session mutable because it counts levels (CalculaNivelCuenta).
std::string FormateaCuenta(Sesion& s, const std::string& cuenta);
/// Levels the code really uses, 0 to NumeroNiveles. A piece whose numeric
/// value overflows ends the program (ProgramaTerminado) after a warning when
/// it holds letters or blanks; otherwise the error is reported and the
/// levels counted so far are returned.
int CalculaNivelCuenta(Sesion& s, const std::string& cuenta, bool ignoraCeros);
/// The first `nivel` levels of the code: its ancestor at that level. A level
/// above NumeroNiveles ends the program after a critical message.
std::string CuentaHastaNivel(Sesion& s, const std::string& cuenta, int nivel);
/// Levels a source text (without the company's separator) spans: by level
/// lengths, up to NumeroNiveles + 1; by hyphens when it holds any "-".
int NivelesPorLongitud(const Sesion& s, const std::string& texto);
/// Characters of the level; 0 when out of range or below 1.
int LongitudNivel(const Sesion& s, int nivel);
/// As many "0" as the level's length; empty above NumeroNiveles.
std::string CerosDeNivel(const Sesion& s, int nivel);
/// Positions (from 1) of the separator inside the mask; a list of one 0
/// (the empty element) when there is none.
std::vector<int> PosicionesSeparador(const Sesion& s);
/// Number of elements minus 1.
template <class T>
int UltimoIndiceLista(const std::vector<T>& lista) {
    return static_cast<int>(lista.size()) - 1;
}
/// True when each character of the formatted text is a separator at one of
/// the `lista` positions or is allowed by the mask letter at its position.
bool CuentaCumpleFormato(const Sesion& s, const std::string& texto, const std::vector<int>& lista);
/// True when `posicion` is in `lista` and `caracter` is the separator or a
/// blank; false for an empty character.
bool EsPosicionSeparador(const Sesion& s, int posicion, const std::string& caracter, const std::vector<int>& lista);
/// True when the mask letter at `posicion` (from 1) allows `caracter`:
/// "9" a digit or blank, "X"/"A" also a letter; anything else refuses.
bool CaracterCumpleMascara(const Sesion& s, int posicion, const std::string& caracter);
/// True when no character, upper-cased, is a blank or a letter A-Z; true
/// for an empty text.
bool EsTextoNumerico(const std::string& texto);
/// True when some character is significant: a digit 1-9 or A-Z with
/// `ignoraCeros`, a digit 0-9 or A-Z but W without. Exact by case.
bool TieneCaracterSignificativo(const std::string& texto, bool ignoraCeros);

// Months, in Spanish. The two three-letter tables differ on purpose (March
// is "MZO" in one and "MAR" in the other), so they do not round-trip.
/// "Enero" for "1" ... "Diciembre" for "12"; empty otherwise, "01" included.
std::string NombreMes(const std::string& numero);
/// "Enero" for "01" ... "Diciembre" for "12", "Mes 13" for "13"; else empty.
std::string NombreMesDosDigitos(const std::string& numero);
/// "ENE" "FEB" "MZO" ... "DIC" for 1 to 12; empty otherwise.
std::string AbreviaturaMes(int mes);
/// "ENERO" ... "DICIEMBRE" for 1 to 12; empty otherwise.
std::string NombreMesMayusculas(int mes);
/// 1 to 12 for "ENE" "FEB" "MAR" ... "DIC" in any case; 0 otherwise.
int NumeroDeMes(const std::string& nombre);
/// "31/ENE/", "29/FEB/" ...: last day, "/", AbreviaturaMes, "/"; the caller
/// appends the year. February has 29 days when the session's fiscal year
/// (EjercicioTexto) is divisible by 4. Empty outside 1 to 12.
std::string UltimoDiaDelMes(const Sesion& s, int mes);

}  // namespace velmorant
