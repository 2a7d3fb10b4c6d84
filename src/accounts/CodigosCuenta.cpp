#include "accounts/CodigosCuenta.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "platform/Numeros.h"
#include "platform/Texto.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"

namespace velmorant {

namespace {

// Character sets of the mask and of the level count. The last significant
// set leaves out "W" on purpose: a trailing W does not make a level count
// unless zeros are ignored.
constexpr const char* kDigitosMascara = "1234567890 ";
constexpr const char* kAlfanumericosMascara = "1234567890 ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr const char* kSignificativosSinCeros = "123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr const char* kSignificativosConCeros = "0123456789ABCDEFGHIJKLMNOPQRSTUVXYZ";
constexpr const char* kNoNumericos = " ABCDEFGHIJKLMNOPQRSTUVWXYZ";

/// Mid(texto, inicio, largo) with `inicio` from 1, in characters (a code
/// may hold "Ñ" or accented letters); empty past the end.
std::string Medio(const std::string& texto, size_t inicio, size_t largo = std::string::npos) {
    return MedioCaracteres(texto, inicio, largo);
}

std::string RecortaBlancos(const std::string& t) {
    size_t a = t.find_first_not_of(' ');
    if (a == std::string::npos) return "";
    return t.substr(a, t.find_last_not_of(' ') - a + 1);
}

std::string MayusculasAscii(std::string t) {
    for (char& c : t) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return t;
}

bool Contiene(const char* conjunto, const std::string& caracter) {
    // One character, the common case, is looked for in place: this runs on
    // every character of every account code read.
    if (caracter.size() == 1) return caracter[0] != '\0' && std::strchr(conjunto, caracter[0]) != nullptr;
    return std::string(conjunto).find(caracter) != std::string::npos;
}

/// The leading number of a text, as the platform's Val reads it: blanks,
/// tabs and line feeds are skipped anywhere, then an optional sign, digits
/// with one decimal point and an optional exponent (E or D). Reading stops
/// at the first character that cannot continue the number; a text without
/// digits is 0. Throws std::overflow_error when the value exceeds a double.
double ValorInicial(const std::string& texto) {
    std::string t;
    for (char c : texto)
        if (c != ' ' && c != '\t' && c != '\n' && c != '\r') t += c;
    size_t i = 0;
    std::string numero;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) numero += t[i++];
    bool punto = false, digito = false;
    for (; i < t.size(); ++i) {
        if (std::isdigit(static_cast<unsigned char>(t[i]))) {
            numero += t[i];
            digito = true;
        } else if (t[i] == '.' && !punto) {
            numero += '.';
            punto = true;
        } else {
            break;
        }
    }
    if (!digito) return 0.0;
    if (i < t.size() && std::string("eEdD").find(t[i]) != std::string::npos) {
        size_t j = i + 1;
        std::string exponente = "e";
        if (j < t.size() && (t[j] == '+' || t[j] == '-')) exponente += t[j++];
        size_t inicio = j;
        while (j < t.size() && std::isdigit(static_cast<unsigned char>(t[j]))) exponente += t[j++];
        if (j > inicio) numero += exponente;
    }
    double v = std::strtod(numero.c_str(), nullptr);
    if (std::isinf(v)) throw std::overflow_error("Overflow");
    return v;
}

/// A numeric text formatted with a format of zeros: rounded to a whole
/// number (halves away from zero), at least `ancho` digits, a leading "-"
/// when negative. A text that is not a number comes back as it is.
std::string FormatoDeCeros(const std::string& pieza, size_t ancho) {
    auto d = LeeDecimal(pieza);
    if (!d || d->exponente > 64) return pieza;
    const std::string& dig = d->digitos;
    long corte = static_cast<long>(dig.size()) + d->exponente;  // digits of the whole part
    std::string entero;
    bool subir = false;
    if (d->exponente >= 0) {
        entero = dig + std::string(static_cast<size_t>(d->exponente), '0');
    } else if (corte > 0) {
        entero = dig.substr(0, static_cast<size_t>(corte));
        subir = dig[static_cast<size_t>(corte)] >= '5';
    } else {
        subir = corte == 0 && !dig.empty() && dig[0] >= '5';
    }
    if (subir) {
        int i = static_cast<int>(entero.size()) - 1;
        for (; i >= 0 && entero[static_cast<size_t>(i)] == '9'; --i) entero[static_cast<size_t>(i)] = '0';
        if (i < 0) entero.insert(entero.begin(), '1');
        else ++entero[static_cast<size_t>(i)];
    }
    size_t p = entero.find_first_not_of('0');
    entero = p == std::string::npos ? "" : entero.substr(p);
    bool negativo = d->negativo && !entero.empty();
    if (entero.size() < ancho) entero.insert(0, ancho - entero.size(), '0');
    return negativo ? "-" + entero : entero;
}

/// A piece padded as level `nivel`: zeros on the left when short, its
/// leftmost characters lost when long, then number-formatted if numeric.
std::string RellenaPieza(const FormatoCuenta& f, const std::string& pieza, int nivel) {
    std::string ceros = CerosDeNivel(f, nivel);
    std::string p = pieza;
    if (LongitudCaracteres(p) != ceros.size()) p = DerechaCaracteres(ceros + p, ceros.size());
    if (p.empty()) return p;
    return EsTextoNumerico(p) ? FormatoDeCeros(p, ceros.size()) : p;
}

std::string RellenaPorSeparadores(const FormatoCuenta& f, const std::string& texto, size_t p) {
    const std::string& sep = f.separador;
    std::string resultado, resto = texto;
    int nivel = 0;
    while (p != std::string::npos) {
        ++nivel;
        resultado += RellenaPieza(f, resto.substr(0, p), nivel);
        resto = resto.substr(p + sep.size());
        p = resto.find(sep);
        if (nivel == f.niveles) break;
    }
    if (resto.empty()) return resultado;
    if (++nivel > f.niveles) return resultado;
    return resultado + RellenaPieza(f, resto, nivel);
}

std::string RellenaPorLongitudes(const FormatoCuenta& f, const std::string& texto) {
    int n = std::min<int>(NivelesPorLongitud(f, texto), f.niveles);
    std::string resultado;
    size_t posicion = 1;
    for (int i = 1; i <= n; ++i) {
        size_t largo = static_cast<size_t>(LongitudNivel(f, i));
        resultado += RellenaPieza(f, Medio(texto, posicion, largo), i);
        posicion += largo;
    }
    return resultado;
}

/// The first `n` levels of an unseparated code joined by the separator;
/// the code unchanged below one level.
std::string FormateaHastaNivel(const FormatoCuenta& f, const std::string& cuenta, int n) {
    if (n < 1) return cuenta;
    std::string resultado;
    size_t p = 1;
    for (int i = 1; i <= n; ++i) {
        size_t largo = static_cast<size_t>(LongitudNivel(f, i));
        resultado += Medio(cuenta, p, largo) + f.separador;
        p += largo;
    }
    resultado.resize(resultado.size() - f.separador.size());  // the last separator
    return resultado;
}

const std::string kAvisoAlfanumericas =
    "Es posible que su catálogo contenga cuentas alfanuméricas.\r\n"
    "Asegúrese de haber definido de forma correcta la estructura de su cuenta.";

}  // namespace

FormatoCuenta FormatoCuenta::De(const Sesion& s) {
    FormatoCuenta f;
    f.mascara = s.FormatoCtaEmpresa;
    f.separador = s.SeparadorEmpresa;
    f.niveles = s.NumeroNiveles;
    f.longitudes = s.LongitudesNivel;
    f.rellenaCeros = s.RellenaCeros;
    f.catalogoArbol = s.CatalogoArbol;
    return f;
}

CuentaAlfanumerica::CuentaAlfanumerica() : std::runtime_error(kAvisoAlfanumericas) {}

// ---------------------------------------------------------- Level structure

int LongitudNivel(const FormatoCuenta& f, int nivel) {
    if (nivel < 1 || nivel > f.niveles || static_cast<size_t>(nivel) > f.longitudes.size()) return 0;
    int largo = f.longitudes[static_cast<size_t>(nivel - 1)];
    return largo < 1 ? 0 : largo;
}

std::string CerosDeNivel(const FormatoCuenta& f, int nivel) {
    return std::string(static_cast<size_t>(LongitudNivel(f, nivel)), '0');
}

int NivelesPorLongitud(const FormatoCuenta& f, const std::string& texto) {
    if (texto.find('-') != std::string::npos) {
        int guiones = 0;
        for (char c : texto) guiones += c == '-';
        return guiones + 1;
    }
    size_t largo = LongitudCaracteres(texto), suma = 0;
    for (int i = 1; i <= f.niveles; ++i) {
        suma += static_cast<size_t>(LongitudNivel(f, i));
        if (largo <= suma) return i;
    }
    return f.niveles + 1;
}

// ------------------------------------------------------------- Conversions

std::string RellenaCuenta(const FormatoCuenta& f, const std::string& texto) {
    std::string t = RecortaBlancos(texto);
    if (!f.rellenaCeros) return t;
    size_t p = f.separador.empty() ? std::string::npos : t.find(f.separador);
    return p != std::string::npos ? RellenaPorSeparadores(f, t, p) : RellenaPorLongitudes(f, t);
}

std::string QuitaSeparadores(const FormatoCuenta& f, const std::string& cuenta) {
    if (f.separador.empty()) return cuenta;
    std::string resultado;
    size_t p = 0;
    for (int i = 1; i <= f.niveles; ++i) {
        size_t largo = static_cast<size_t>(LongitudNivel(f, i));
        resultado += Medio(cuenta, p + 1, largo);
        p += largo + 1;
    }
    return resultado;
}

std::string FormateaCuenta(const FormatoCuenta& f, const std::string& cuenta) {
    if (!f.catalogoArbol || f.separador.empty()) return cuenta;
    return FormateaHastaNivel(f, cuenta, NivelesDeCuenta(f, cuenta, false).niveles);
}

NivelesCuenta NivelesDeCuenta(const FormatoCuenta& f, const std::string& cuenta, bool ignoraCeros) {
    size_t pm = 0, pc = 0;
    for (int i = 1; i <= f.niveles; ++i) {
        size_t largo = static_cast<size_t>(LongitudNivel(f, i));
        std::string mascara = Medio(f.mascara, pm + 1, largo);
        pm += largo + (f.separador.empty() ? 0 : 1);
        std::string pieza = Medio(cuenta, pc + 1, largo);
        double valor = 0;
        try {
            valor = ValorInicial(pieza);
        } catch (const std::overflow_error&) {
            if (!EsTextoNumerico(pieza)) throw CuentaAlfanumerica();
            return {i - 1, true};
        }
        bool numerica = EsTextoNumerico(mascara) && valor != 0;
        if (!numerica && !TieneCaracterSignificativo(Medio(cuenta, pc + 1), ignoraCeros)) return {i - 1, false};
        pc += largo;
    }
    return {f.niveles, false};
}

std::string CuentaHastaNivel(const FormatoCuenta& f, const std::string& cuenta, int nivel) {
    if (nivel > f.niveles)
        throw NivelFueraDeFormato("Error al leer el nivel de la Cuenta: " + cuenta + " - Nivel: " +
                                  std::to_string(nivel) + "\r\nEl nivel sobrepasa al formato definido: " +
                                  f.mascara + " - Nivel: " + std::to_string(f.niveles));
    std::string resultado;
    size_t p = 1;
    for (int i = 1; i <= nivel; ++i) {
        size_t largo = static_cast<size_t>(LongitudNivel(f, i));
        resultado += Medio(cuenta, p, largo);
        p += largo;
    }
    return resultado;
}

// -------------------------------------------------------------------- Mask

std::vector<int> PosicionesSeparador(const FormatoCuenta& f) {
    std::vector<int> lista;
    if (!f.separador.empty()) {
        size_t largo = LongitudCaracteres(f.mascara);
        for (size_t p = 1; p <= largo; ++p)
            if (Medio(f.mascara, p, 1) == f.separador) lista.push_back(static_cast<int>(p));
    }
    if (lista.empty()) lista.push_back(0);  // the one empty element
    return lista;
}

bool CuentaCumpleFormato(const FormatoCuenta& f, const std::string& texto, const std::vector<int>& lista) {
    size_t largo = LongitudCaracteres(texto);
    for (size_t p = 1; p <= largo; ++p) {
        std::string caracter = Medio(texto, p, 1);
        if (caracter.empty()) return true;
        int posicion = static_cast<int>(p);
        if (!EsPosicionSeparador(f, posicion, caracter, lista) && !CaracterCumpleMascara(f, posicion, caracter))
            return false;
    }
    return true;
}

bool EsPosicionSeparador(const FormatoCuenta& f, int posicion, const std::string& caracter, const std::vector<int>& lista) {
    if (caracter.empty()) return false;
    for (int elemento : lista)
        if (elemento == posicion && (f.separador == caracter || caracter == " ")) return true;
    return false;
}

bool CaracterCumpleMascara(const FormatoCuenta& f, int posicion, const std::string& caracter) {
    std::string letra = posicion < 1 ? "" : Medio(f.mascara, static_cast<size_t>(posicion), 1);
    if (letra == "9") return Contiene(kDigitosMascara, caracter);
    if (letra == "X" || letra == "A") return Contiene(kAlfanumericosMascara, MayusculasAscii(caracter));
    return false;
}

bool EsTextoNumerico(const std::string& texto) {
    std::string mayusculas = MayusculasAscii(texto);
    for (char c : mayusculas)
        if (Contiene(kNoNumericos, std::string(1, c))) return false;
    return true;
}

bool TieneCaracterSignificativo(const std::string& texto, bool ignoraCeros) {
    const char* conjunto = ignoraCeros ? kSignificativosSinCeros : kSignificativosConCeros;
    for (char c : texto)
        if (Contiene(conjunto, std::string(1, c))) return true;
    return false;
}

// ------------------------------------------------------------- Session

std::string RellenaCuenta(const Sesion& s, const std::string& texto) {
    return RellenaCuenta(FormatoCuenta::De(s), texto);
}

std::string QuitaSeparadores(const Sesion& s, const std::string& cuenta) {
    return QuitaSeparadores(FormatoCuenta::De(s), cuenta);
}

std::string FormateaCuenta(Sesion& s, const std::string& cuenta) {
    if (!s.CatalogoArbol || s.SeparadorEmpresa.empty()) return cuenta;
    return FormateaHastaNivel(FormatoCuenta::De(s), cuenta, CalculaNivelCuenta(s, cuenta, false));
}

int CalculaNivelCuenta(Sesion& s, const std::string& cuenta, bool ignoraCeros) {
    NivelesCuenta n;
    try {
        n = NivelesDeCuenta(FormatoCuenta::De(s), cuenta, ignoraCeros);
    } catch (const CuentaAlfanumerica& e) {
        MsgAviso(s, e.what());
        throw ProgramaTerminado(e.what());
    }
    if (n.desbordamiento) ReportaError(s, std::overflow_error("Overflow"), true);
    return n.niveles;
}

std::string CuentaHastaNivel(Sesion& s, const std::string& cuenta, int nivel) {
    try {
        return CuentaHastaNivel(FormatoCuenta::De(s), cuenta, nivel);
    } catch (const NivelFueraDeFormato& e) {
        MsgCritico(s, e.what());
        throw ProgramaTerminado(e.what());
    }
}

int NivelesPorLongitud(const Sesion& s, const std::string& texto) {
    return NivelesPorLongitud(FormatoCuenta::De(s), texto);
}

int LongitudNivel(const Sesion& s, int nivel) { return LongitudNivel(FormatoCuenta::De(s), nivel); }

std::string CerosDeNivel(const Sesion& s, int nivel) { return CerosDeNivel(FormatoCuenta::De(s), nivel); }

std::vector<int> PosicionesSeparador(const Sesion& s) { return PosicionesSeparador(FormatoCuenta::De(s)); }

bool CuentaCumpleFormato(const Sesion& s, const std::string& texto, const std::vector<int>& lista) {
    return CuentaCumpleFormato(FormatoCuenta::De(s), texto, lista);
}

bool EsPosicionSeparador(const Sesion& s, int posicion, const std::string& caracter, const std::vector<int>& lista) {
    return EsPosicionSeparador(FormatoCuenta::De(s), posicion, caracter, lista);
}

bool CaracterCumpleMascara(const Sesion& s, int posicion, const std::string& caracter) {
    return CaracterCumpleMascara(FormatoCuenta::De(s), posicion, caracter);
}

// ------------------------------------------------------------------ Months

namespace {
const std::array<const char*, 12> kMeses = {"Enero", "Febrero", "Marzo",      "Abril",   "Mayo",      "Junio",
                                            "Julio", "Agosto",  "Septiembre", "Octubre", "Noviembre", "Diciembre"};
const std::array<const char*, 12> kMesesMayusculas = {"ENERO",  "FEBRERO",    "MARZO",   "ABRIL",
                                                      "MAYO",   "JUNIO",      "JULIO",   "AGOSTO",
                                                      "SEPTIEMBRE", "OCTUBRE", "NOVIEMBRE", "DICIEMBRE"};
// The abbreviation written on reports ("MZO") and the one read back ("MAR").
const std::array<const char*, 12> kAbreviaturasEscritas = {"ENE", "FEB", "MZO", "ABR", "MAY", "JUN",
                                                           "JUL", "AGO", "SEP", "OCT", "NOV", "DIC"};
const std::array<const char*, 12> kAbreviaturasLeidas = {"ENE", "FEB", "MAR", "ABR", "MAY", "JUN",
                                                         "JUL", "AGO", "SEP", "OCT", "NOV", "DIC"};
constexpr std::array<int, 12> kDiasMes = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

bool MesValido(int mes) { return mes >= 1 && mes <= 12; }
}  // namespace

std::string NombreMes(const std::string& numero) {
    for (int m = 1; m <= 12; ++m)
        if (numero == std::to_string(m)) return kMeses[static_cast<size_t>(m - 1)];
    return "";
}

std::string NombreMesDosDigitos(const std::string& numero) {
    for (int m = 1; m <= 12; ++m)
        if (numero == (m < 10 ? "0" : "") + std::to_string(m)) return kMeses[static_cast<size_t>(m - 1)];
    return numero == "13" ? "Mes 13" : "";
}

std::string AbreviaturaMes(int mes) {
    return MesValido(mes) ? kAbreviaturasEscritas[static_cast<size_t>(mes - 1)] : "";
}

std::string NombreMesMayusculas(int mes) {
    return MesValido(mes) ? kMesesMayusculas[static_cast<size_t>(mes - 1)] : "";
}

int NumeroDeMes(const std::string& nombre) {
    std::string buscado = MayusculasAscii(nombre);
    for (size_t i = 0; i < kAbreviaturasLeidas.size(); ++i)
        if (buscado == kAbreviaturasLeidas[i]) return static_cast<int>(i + 1);
    return 0;
}

std::string UltimoDiaDelMes(const Sesion& s, int mes) {
    if (!MesValido(mes)) return "";
    int dia = kDiasMes[static_cast<size_t>(mes - 1)];
    long anio = std::strtol(s.EjercicioTexto.c_str(), nullptr, 10);
    if (mes == 2 && (anio & 3) == 0) dia = 29;
    return std::to_string(dia) + "/" + AbreviaturaMes(mes) + "/";
}

}  // namespace velmorant
