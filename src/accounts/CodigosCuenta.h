#pragma once
// Account codes: how a source code becomes the company's code, with its
// level, padding and separators, and back. The functions on a FormatoCuenta
// are pure: they read only their arguments, never touch a database or the
// user, and report a code the format cannot hold by a typed exception
// (CuentaAlfanumerica, NivelFueraDeFormato) or a field of their result.
// The overloads on the session take the format from it and turn those
// problems into the system's messages and the program's end, at the run's
// boundary. Levels are counted from 1.
//
// The removal of single characters and of "'|~" lives with the general
// helpers (QuitaCaracter, QuitaCaracteresEspeciales in session/Funciones.h).

#include <stdexcept>
#include <string>
#include <vector>

#include "session/Sesion.h"

namespace velmorant {

/// The company's account structure, as a value: everything the code
/// functions read of the company.
struct FormatoCuenta {
    std::string mascara;           // "999-99-99": "9" digit, "X"/"A" letter or digit
    std::string separador;         // "-", or empty without separators
    int niveles = 0;               // levels of the mask
    std::vector<int> longitudes;   // characters of level i at index i - 1
    bool rellenaCeros = false;     // source codes are padded with zeros
    bool catalogoArbol = false;    // codes are shown formatted by level

    /// The format of the company open in the session.
    static FormatoCuenta De(const Sesion& s);
};

/// A piece of a code whose number overflows and that holds letters or
/// blanks: the format was probably defined for numeric codes. The message
/// is the warning the user is shown.
class CuentaAlfanumerica : public std::runtime_error {
public:
    CuentaAlfanumerica();
};

/// A level above the format's levels was asked of a code; the message
/// names the code, the level and the format.
class NivelFueraDeFormato : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Levels a code really uses, and whether the count stopped early because
/// a numeric piece overflows (the error the session reports).
struct NivelesCuenta {
    int niveles = 0;
    bool desbordamiento = false;
};

// ------------------------------------------------------- Pure, on a format

/// Source text to unseparated code, each level present padded with zeros
/// (numeric pieces number-formatted). Only trims when rellenaCeros is false.
std::string RellenaCuenta(const FormatoCuenta& f, const std::string& texto);
/// Formatted code to unseparated code, by the mask's fixed positions (one
/// separator character assumed after each level). Unchanged with no separator.
std::string QuitaSeparadores(const FormatoCuenta& f, const std::string& cuenta);
/// Levels the code really uses, 0 to niveles. A piece whose numeric value
/// overflows throws CuentaAlfanumerica when it holds letters or blanks;
/// otherwise the count stops there with `desbordamiento` set.
NivelesCuenta NivelesDeCuenta(const FormatoCuenta& f, const std::string& cuenta, bool ignoraCeros);
/// Unseparated code to formatted code (display only): the levels the code
/// uses, joined by the separator. Unchanged without catalogoArbol or
/// separator. Throws CuentaAlfanumerica as NivelesDeCuenta.
std::string FormateaCuenta(const FormatoCuenta& f, const std::string& cuenta);
/// The first `nivel` levels of the code: its ancestor at that level. Throws
/// NivelFueraDeFormato for a level above niveles.
std::string CuentaHastaNivel(const FormatoCuenta& f, const std::string& cuenta, int nivel);
/// Levels a source text (without the company's separator) spans: by level
/// lengths, up to niveles + 1; by hyphens when it holds any "-".
int NivelesPorLongitud(const FormatoCuenta& f, const std::string& texto);
/// Characters of the level; 0 when out of range or below 1.
int LongitudNivel(const FormatoCuenta& f, int nivel);
/// As many "0" as the level's length; empty above niveles.
std::string CerosDeNivel(const FormatoCuenta& f, int nivel);
/// Positions (from 1) of the separator inside the mask; a list of one 0
/// (the empty element) when there is none.
std::vector<int> PosicionesSeparador(const FormatoCuenta& f);
/// True when each character of the formatted text is a separator at one of
/// the `lista` positions or is allowed by the mask letter at its position.
bool CuentaCumpleFormato(const FormatoCuenta& f, const std::string& texto, const std::vector<int>& lista);
/// True when `posicion` is in `lista` and `caracter` is the separator or a
/// blank; false for an empty character.
bool EsPosicionSeparador(const FormatoCuenta& f, int posicion, const std::string& caracter,
                         const std::vector<int>& lista);
/// True when the mask letter at `posicion` (from 1) allows `caracter`:
/// "9" a digit or blank, "X"/"A" also a letter; anything else refuses.
bool CaracterCumpleMascara(const FormatoCuenta& f, int posicion, const std::string& caracter);

// ------------------------------------------ On the session (run boundary)

std::string RellenaCuenta(const Sesion& s, const std::string& texto);
std::string QuitaSeparadores(const Sesion& s, const std::string& cuenta);
/// FormateaCuenta of the company's format, overflows handled as
/// CalculaNivelCuenta handles them.
std::string FormateaCuenta(Sesion& s, const std::string& cuenta);
/// NivelesDeCuenta of the company's format. A CuentaAlfanumerica is shown as
/// a warning and ends the program (ProgramaTerminado); an overflow of a
/// numeric piece is reported and the levels counted so far are returned.
int CalculaNivelCuenta(Sesion& s, const std::string& cuenta, bool ignoraCeros);
/// CuentaHastaNivel of the company's format; a NivelFueraDeFormato is shown
/// as a critical message and ends the program.
std::string CuentaHastaNivel(Sesion& s, const std::string& cuenta, int nivel);
int NivelesPorLongitud(const Sesion& s, const std::string& texto);
int LongitudNivel(const Sesion& s, int nivel);
std::string CerosDeNivel(const Sesion& s, int nivel);
std::vector<int> PosicionesSeparador(const Sesion& s);
bool CuentaCumpleFormato(const Sesion& s, const std::string& texto, const std::vector<int>& lista);
bool EsPosicionSeparador(const Sesion& s, int posicion, const std::string& caracter, const std::vector<int>& lista);
bool CaracterCumpleMascara(const Sesion& s, int posicion, const std::string& caracter);

// ------------------------------------------------------------ Characters

/// Number of elements minus 1.
template <class T>
int UltimoIndiceLista(const std::vector<T>& lista) {
    return static_cast<int>(lista.size()) - 1;
}
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
