#include "session/Funciones.h"

#include <cctype>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "platform/Numeros.h"
#include "platform/Texto.h"

namespace velmorant {

namespace fs = std::filesystem;

// ------------------------------------------------------------ Message boxes

std::string TituloMensajes(const Sesion& s) { return "VELMORANT Ver. " + s.VersionPrograma; }

static bool Muestra(Sesion& s, TipoMensaje tipo, const std::string& texto) {
    if (!s.interaccion) return false;
    return s.interaccion->mensaje(tipo, TituloMensajes(s), texto);
}

void MsgCritico(Sesion& s, const std::string& texto) { Muestra(s, TipoMensaje::Critico, texto + "\r"); }
void MsgAviso(Sesion& s, const std::string& texto) { Muestra(s, TipoMensaje::Aviso, texto + "\r"); }
void MsgInformacion(Sesion& s, const std::string& texto) { Muestra(s, TipoMensaje::Informacion, texto); }
bool MsgPregunta(Sesion& s, const std::string& texto) { return Muestra(s, TipoMensaje::Pregunta, texto); }

bool ReportaError(Sesion& s, const std::exception& error, bool mostrar) {
    int numero = 1;
    std::string descripcion = error.what();
    if (auto e = dynamic_cast<const ErrorBaseDatos*>(&error)) {
        numero = e->codigo() ? e->codigo() : 1;
    }
    if (mostrar) MsgCritico(s, "Error : " + (" " + std::to_string(numero)) + " " + descripcion);
    return true;
}

// ------------------------------------------------------------------- Values

std::string SiNuloTexto(const Valor& v) { return v.texto(); }
Valor SiNuloCero(const Valor& v) { return v.esNulo() ? Valor(0) : v; }

std::string QuitaApostrofes(const std::string& t) { return QuitaCaracter(t, "'"); }

std::string QuitaCaracter(const std::string& texto, const std::string& caracter) {
    if (caracter.empty()) return texto;
    std::string resultado;
    size_t desde = 0;
    for (size_t p; (p = texto.find(caracter, desde)) != std::string::npos;) {
        resultado.append(texto, desde, p - desde);
        desde = p + 1;  // one character only, whatever the length of `caracter`
    }
    resultado.append(texto, desde, std::string::npos);
    return resultado;
}

std::string QuitaCaracteresEspeciales(const std::string& t) { return SinCaracteresEspeciales(t); }

std::string SqlSinCaracteresEspeciales(const std::string& columna) {
    return "QuitaCaracteresEspeciales(" + columna + ")";
}

std::string SqlBooleano(const std::string& columna) {
    return "(CASE WHEN ifnull(" + columna + ", 0) <> 0 THEN -1 ELSE 0 END)";
}

std::string DosDigitos(long n) {
    std::string t = std::to_string(n);
    return t.size() < 2 ? "0" + t : t;
}

BaseDatos& EmpresaAbierta(Sesion& s) {
    if (!s.DbEmpresa) throw std::logic_error("La base de datos de la empresa no está abierta");
    return *s.DbEmpresa;
}

// ----------------------------------------------------------------- Progress

void EtiquetaProgreso(Sesion& s, const std::string& texto) {
    if (s.progreso) s.progreso->etiqueta(texto);
}

void MaximoProgreso(Sesion& s, size_t n) {
    if (s.progreso) s.progreso->maximo(static_cast<long>(n));
}

void AvanceProgreso(Sesion& s, size_t n) {
    if (s.progreso) {
        s.progreso->valor(static_cast<long>(n));
        s.progreso->cede();
    }
}

void CedeProgreso(Sesion& s) {
    if (s.progreso) s.progreso->cede();
}

// -------------------------------------------------------------------- Dates

namespace {

bool SoloDigitos(const std::string& t) {
    if (t.empty()) return false;
    for (char c : t)
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    return true;
}

std::string Recorta(const std::string& t) {
    size_t a = t.find_first_not_of(" \t\r\n");
    if (a == std::string::npos) return "";
    size_t b = t.find_last_not_of(" \t\r\n");
    return t.substr(a, b - a + 1);
}

std::vector<std::string> Divide(const std::string& t, char sep) {
    std::vector<std::string> r;
    size_t desde = 0;
    for (size_t p; (p = t.find(sep, desde)) != std::string::npos; desde = p + 1) r.push_back(t.substr(desde, p - desde));
    r.push_back(t.substr(desde));
    return r;
}

int AnioDeDosDigitos(int anio) { return anio <= 15 ? 2000 + anio : 1900 + anio; }

std::string Compone(long dia, long mes, long anio, size_t digitosAnio) {
    if (digitosAnio <= 2) anio = AnioDeDosDigitos(static_cast<int>(anio));
    std::string a = std::to_string(anio);
    while (a.size() < 4) a = "0" + a;
    return DosDigitos(dia) + "/" + DosDigitos(mes) + "/" + a;
}

}  // namespace

std::string FechaDesdeTexto(const std::string& entrada) {
    std::string t = Recorta(entrada);
    for (char sep : {'/', '-'}) {
        auto piezas = Divide(t, sep);
        if (piezas.size() != 3) continue;
        for (auto& p : piezas) p = Recorta(p);
        if (!SoloDigitos(piezas[0]) || !SoloDigitos(piezas[1]) || !SoloDigitos(piezas[2])) return t;
        if (piezas[0].size() > 6 || piezas[1].size() > 6 || piezas[2].size() > 6) return t;
        long a = std::stol(piezas[0]), b = std::stol(piezas[1]), c = std::stol(piezas[2]);
        // An ISO text (year first) is read as such; everything else is day first.
        if (piezas[0].size() == 4 && piezas[2].size() <= 2) return Compone(c, b, a, 4);
        return Compone(a, b, c, piezas[2].size());
    }
    if (t.size() == 6 && SoloDigitos(t))
        return Compone(std::stol(t.substr(0, 2)), std::stol(t.substr(2, 2)), std::stol(t.substr(4, 2)), 2);
    return t;
}

namespace {

// A real date of a "dd/MM/yyyy" text, as FechaDesdeTexto gives it.
std::optional<Fecha> FechaDeDdMmAaaa(const std::string& t) {
    if (t.size() != 10 || t[2] != '/' || t[5] != '/') return std::nullopt;
    if (!SoloDigitos(t.substr(0, 2)) || !SoloDigitos(t.substr(3, 2)) || !SoloDigitos(t.substr(6, 4)))
        return std::nullopt;
    Fecha f(std::stoi(t.substr(6, 4)), std::stoi(t.substr(3, 2)), std::stoi(t.substr(0, 2)));
    if (!f.valida()) return std::nullopt;
    return f;
}

// Two-digit years of the sources, as the host's date conversion reads them:
// a fixed window from 1930 to 2029.
int AnioDeVentana(int anio) { return anio < 30 ? 2000 + anio : 1900 + anio; }

std::string Minusculas(std::string t) {
    for (char& c : t) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return t;
}

// 1 to 12 for a Spanish month name or abbreviation, in any case, with an
// optional closing period ("ene", "Ene.", "enero", "sept", "setiembre");
// 0 for anything else.
int MesPorNombre(std::string t) {
    t = Minusculas(t);
    if (!t.empty() && t.back() == '.') t.pop_back();
    static const char* const kNombres[12] = {"enero", "febrero", "marzo",      "abril",   "mayo",      "junio",
                                             "julio", "agosto",  "septiembre", "octubre", "noviembre", "diciembre"};
    for (int m = 0; m < 12; ++m)
        if (t == kNombres[m] || t == std::string(kNombres[m]).substr(0, 3)) return m + 1;
    if (t == "sept" || t == "set" || t == "setiembre") return 9;
    return 0;
}

// Drops a time of day after the date: "hh:mm" or "hh:mm:ss", optionally
// followed by "am"/"pm" ("a.m.", "p. m." ...), after a blank or an ISO "T".
// False when a time is there but is not a valid one.
bool QuitaHora(std::string& t) {
    size_t p = t.find(':');
    if (p == std::string::npos) return true;
    size_t inicio = t.find_last_of(" T", p);
    if (inicio == std::string::npos || inicio == 0) return false;
    std::string hora = Minusculas(t.substr(inicio + 1));
    t = Recorta(t.substr(0, inicio));
    // The day-half mark, in its usual spellings.
    std::string marca;
    for (char c : hora)
        if (c == 'a' || c == 'p' || c == 'm') marca += c;
        else if (c != '.' && c != ' ' && !std::isdigit(static_cast<unsigned char>(c)) && c != ':') return false;
    if (!marca.empty() && marca != "am" && marca != "pm") return false;
    std::string cifras;
    for (char c : hora)
        if (std::isdigit(static_cast<unsigned char>(c)) || c == ':') cifras += c;
    auto piezas = Divide(cifras, ':');
    if (piezas.size() < 2 || piezas.size() > 3) return false;
    int valores[3] = {0, 0, 0};
    for (size_t i = 0; i < piezas.size(); ++i) {
        if (!SoloDigitos(piezas[i]) || piezas[i].size() > 2) return false;
        valores[i] = std::stoi(piezas[i]);
    }
    int maximaHora = marca.empty() ? 23 : 12;
    return valores[0] <= maximaHora && valores[1] <= 59 && valores[2] <= 59 && (marca.empty() || valores[0] >= 1);
}

// The pieces of a date: split at "/", "-", "." or blanks, without the
// Spanish "de" of "15 de enero de 2024".
std::vector<std::string> PiezasDeFecha(const std::string& t) {
    std::vector<std::string> piezas;
    std::string actual;
    auto cierra = [&] {
        if (!actual.empty() && Minusculas(actual) != "de") piezas.push_back(actual);
        actual.clear();
    };
    for (size_t i = 0; i < t.size(); ++i) {
        char c = t[i];
        // A period closes a month's abbreviation ("ene.") and separates numbers.
        bool fin = c == '/' || c == '-' || c == ' ' || c == '\t' ||
                   (c == '.' && (actual.empty() || std::isdigit(static_cast<unsigned char>(actual.back()))));
        if (c == '.' && !fin) {
            actual += c;
            continue;
        }
        if (fin) cierra();
        else actual += c;
    }
    cierra();
    return piezas;
}

}  // namespace

namespace {

// The usual "d/m/yyyy" of a source (day and month of one or two digits,
// nothing around): LeeFecha's reading of it, without taking it apart.
// False for any other text, which takes the general way.
bool FechaSencilla(const std::string& t, std::optional<Fecha>& f) {
    auto digito = [&](size_t i) { return t[i] >= '0' && t[i] <= '9'; };
    auto numero = [&](size_t& i, size_t maximo, int& v) {
        size_t inicio = i;
        for (v = 0; i < t.size() && digito(i) && i - inicio < maximo; ++i) v = v * 10 + (t[i] - '0');
        return i > inicio;
    };
    size_t i = 0;
    int dia, mes, anio;
    if (!numero(i, 2, dia) || i >= t.size() || t[i++] != '/') return false;
    if (!numero(i, 2, mes) || i >= t.size() || t[i++] != '/') return false;
    const size_t inicioAnio = i;
    if (!numero(i, 4, anio) || i - inicioAnio != 4 || i != t.size()) return false;
    Fecha fecha(anio, mes, dia);
    f = fecha.valida() ? std::optional<Fecha>(fecha) : std::nullopt;
    return true;
}

}  // namespace

std::optional<Fecha> LeeFecha(const std::string& entrada) {
    if (std::optional<Fecha> f; FechaSencilla(entrada, f)) return f;
    std::string t = Recorta(entrada);
    if (!QuitaHora(t)) return std::nullopt;
    if (t.size() == 6 && SoloDigitos(t))  // ddMMaa
        t = t.substr(0, 2) + "/" + t.substr(2, 2) + "/" + t.substr(4, 2);
    auto piezas = PiezasDeFecha(t);
    if (piezas.size() != 3) return std::nullopt;
    long dia = 0, mes = 0, anio = 0;
    std::string textoAnio;
    if (SoloDigitos(piezas[0]) && piezas[0].size() == 4 && SoloDigitos(piezas[1]) && SoloDigitos(piezas[2]) &&
        piezas[2].size() <= 2) {
        if (piezas[1].size() > 2) return std::nullopt;  // no month has more digits (nor fits a number)
        // Year first (ISO).
        textoAnio = piezas[0];
        mes = std::stol(piezas[1]);
        dia = std::stol(piezas[2]);
    } else {
        if (!SoloDigitos(piezas[0]) || !SoloDigitos(piezas[2]) || piezas[0].size() > 2) return std::nullopt;
        dia = std::stol(piezas[0]);
        textoAnio = piezas[2];
        if (SoloDigitos(piezas[1]))
            mes = piezas[1].size() <= 2 ? std::stol(piezas[1]) : 0;
        else
            mes = MesPorNombre(piezas[1]);
    }
    if (textoAnio.size() > 4) return std::nullopt;
    anio = std::stol(textoAnio);
    if (textoAnio.size() <= 2) anio = AnioDeVentana(static_cast<int>(anio));
    Fecha f(static_cast<int>(anio), static_cast<int>(mes), static_cast<int>(dia));
    if (!f.valida()) return std::nullopt;
    return f;
}

std::string FechaSql(const Valor& v) {
    if (v.esNulo() || Recorta(v.texto()).empty()) return Fecha::desdeSerial(2).mmddaaaa();
    if (auto f = v.fecha()) return f->mmddaaaa();
    std::string ddmmaaaa = FechaDesdeTexto(v.texto());
    if (auto f = FechaDeDdMmAaaa(ddmmaaaa)) return f->mmddaaaa();
    return ddmmaaaa;
}

bool ValidaFecha(Sesion& s, const std::string& entrada) {
    const std::string formato = "Favor de teclear la fecha con el formato ddMMaa ó ddMMaaaa ó dd/MM/aaaa";
    std::string t = Recorta(entrada);
    std::string d, m, a;
    if (t.find('/') != std::string::npos) {
        auto piezas = Divide(t, '/');
        if (piezas.size() != 3) {
            MsgAviso(s, formato);
            return false;
        }
        d = piezas[0], m = piezas[1], a = piezas[2];
    } else if (t.size() == 6 || t.size() == 8) {
        d = t.substr(0, 2), m = t.substr(2, 2), a = t.substr(4);
    } else {
        MsgAviso(s, formato);
        return false;
    }
    if (!SoloDigitos(d) || !SoloDigitos(m) || !SoloDigitos(a) || d.size() > 2 || m.size() > 2) {
        MsgAviso(s, formato);
        return false;
    }
    if (a.size() != 2 && a.size() != 4) {
        MsgAviso(s, "Favor de verificar el año de nacimiento ó teclearlo de 4 dígitos");
        return false;
    }
    int anio = std::stoi(a), mes = std::stoi(m), dia = std::stoi(d);
    if (a.size() == 2) anio = AnioDeDosDigitos(anio);
    if (mes < 1 || mes > 12) {
        MsgAviso(s, "El mes debe ser mayor de 0 y menor o igual a 12");
        return false;
    }
    if (dia < 1) {
        MsgAviso(s, "Por favor digite el día de la fecha");
        return false;
    }
    int maximo = Fecha::DiasDelMes(anio, mes);
    if (dia > maximo) {
        MsgAviso(s, "El mes " + std::to_string(mes) + " no tiene más de " + std::to_string(maximo) + " días");
        return false;
    }
    return true;
}

std::vector<std::string> LlenaComboMeses() {
    return {"Enero", "Febrero", "Marzo",     "Abril",   "Mayo",      "Junio",
            "Julio", "Agosto",  "Septiembre", "Octubre", "Noviembre", "Diciembre"};
}

// -------------------------------------------------------------------- Paths

static size_t UltimoSeparador(const std::string& ruta) { return ruta.find_last_of("/\\"); }

std::string NombreDeArchivo(const std::string& ruta) {
    size_t p = UltimoSeparador(ruta);
    return p == std::string::npos ? ruta : ruta.substr(p + 1);
}

std::string CarpetaDeArchivo(const std::string& ruta) {
    size_t p = UltimoSeparador(ruta);
    return p == std::string::npos ? "" : ruta.substr(0, p + 1);
}

bool ExisteArchivo(const std::string& ruta) {
    if (ruta.empty()) return false;
    std::error_code ec;
    return fs::is_regular_file(fs::path(ruta), ec);
}

bool ExisteCarpeta(const std::string& ruta) {
    if (ruta.empty()) return false;
    std::error_code ec;
    return fs::is_directory(fs::path(ruta), ec);
}

char SeparadorRuta() { return static_cast<char>(fs::path::preferred_separator); }

std::string ConSeparadorFinal(const std::string& carpeta) {
    if (carpeta.empty()) return carpeta;
    char ultimo = carpeta.back();
    if (ultimo == '/' || ultimo == '\\') return carpeta;
    return carpeta + SeparadorRuta();
}

// ---------------------------------------------------------------- Databases

bool ExisteTabla(BaseDatos& db, const std::string& nombre) { return db.existeTabla(nombre); }

bool ExisteCampo(BaseDatos& db, const std::string& tabla, const std::string& campo) {
    auto mayus = [](std::string t) {
        for (char& c : t) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return t;
    };
    for (auto& c : db.columnas(tabla))
        if (mayus(c) == mayus(campo)) return true;
    return false;
}

}  // namespace velmorant
