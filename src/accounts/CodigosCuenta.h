#pragma once
// Account codes: how a source code becomes the company's code, with its
// level, padding and separators, and back. Pure functions of their
// arguments and of the account structure in the session; they never touch
// a database. Levels are counted from 1.

#include <string>
#include <vector>

#include "session/Sesion.h"

namespace velmorant {

/// Source text to unseparated code, each level padded with zeros.
std::string RellenaCuenta(const Sesion& s, const std::string& texto);
/// Formatted code to unseparated code, by the mask's fixed positions.
std::string QuitaSeparadores(const Sesion& s, const std::string& cuenta);
/// Unseparated code to formatted code (display only).
std::string FormateaCuenta(const Sesion& s, const std::string& cuenta);
/// Levels the code really uses, 0 to NumeroNiveles. May end the program
/// (ProgramaTerminado) after its message, as the overflow trap requires.
int CalculaNivelCuenta(Sesion& s, const std::string& cuenta, bool ignoraCeros);
/// The first `nivel` levels of the code: its ancestor at that level. An
/// out-of-range level ends the program after its message.
std::string CuentaHastaNivel(Sesion& s, const std::string& cuenta, int nivel);
int NivelesPorLongitud(const Sesion& s, const std::string& texto);
int LongitudNivel(const Sesion& s, int nivel);
std::string CerosDeNivel(const Sesion& s, int nivel);
/// Positions (from 1) of the separator inside the mask.
std::vector<int> PosicionesSeparador(const Sesion& s);
/// Number of elements minus 1.
template <class T>
int UltimoIndiceLista(const std::vector<T>& lista) {
    return static_cast<int>(lista.size()) - 1;
}
bool CuentaCumpleFormato(const Sesion& s, const std::string& cuenta);
bool EsPosicionSeparador(const Sesion& s, int posicion);
bool CaracterCumpleMascara(char caracter, char mascara);
bool EsTextoNumerico(const std::string& texto);
bool TieneCaracterSignificativo(const std::string& texto, bool ignoraCeros);

// Months. NombreMes("1") is "Enero"; the text may be "1" or "01".
std::string NombreMes(const std::string& numero);
std::string NombreMesDosDigitos(int mes);
std::string AbreviaturaMes(int mes);
std::string NombreMesMayusculas(int mes);
int NumeroDeMes(const std::string& nombre);
int UltimoDiaDelMes(int anio, int mes);

}  // namespace velmorant
