#include "layouts/DeteccionFormato.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>

#include "platform/Numeros.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteTexto.h"

namespace velmorant {

namespace {

using Celdas = std::vector<std::string>;

bool EnBlanco(const std::string& linea) {
    return std::all_of(linea.begin(), linea.end(), [](char c) { return c == ' ' || c == '\t'; });
}

std::string Plural(long n, const char* singular, const char* plural) {
    return std::to_string(n) + " " + (n == 1 ? singular : plural);
}

// ------------------------------------------------------------ Encoding

// Bytes 0x80 to 0xFF that are letters in Windows-1252 (accented letters,
// Š, Œ, Ž and their small forms, Ÿ) or the ordinal signs of Spanish.
bool Letra1252(unsigned char b) {
    if (b >= 0xC0) return b != 0xD7 && b != 0xF7;
    switch (b) {
        case 0x8A: case 0x8C: case 0x8E: case 0x9A: case 0x9C: case 0x9E: case 0x9F: case 0xAA: case 0xBA:
            return true;
        default:
            return false;
    }
}

bool Indefinido1252(unsigned char b) { return b == 0x81 || b == 0x8D || b == 0x8F || b == 0x90 || b == 0x9D; }

void DetectaCodificacionDe(const std::string& ruta, DeteccionTexto& d) {
    d.codificacion = DetectaCodificacion(ruta);  // the readers' own decision
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> f(std::fopen(ruta.c_str(), "rb"), &std::fclose);
    std::string bytes(1 << 20, '\0');
    bytes.resize(f ? std::fread(bytes.data(), 1, bytes.size(), f.get()) : 0);
    d.bom = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
    long altos = 0, letras = 0, indefinidos = 0, secuencias = 0;
    for (unsigned char b : bytes) {
        if (b < 0x80) continue;
        ++altos;
        if (b >= 0xC2 && b <= 0xF4) ++secuencias;  // a lead byte of UTF-8
        if (Letra1252(b)) ++letras;
        if (Indefinido1252(b)) ++indefinidos;
    }
    d.soloAscii = altos == 0 && !d.bom;
    Hallazgo& h = d.sobreCodificacion;
    if (d.bom) {
        h = {Certeza::Alta, "empieza con la marca BOM de UTF-8"};
    } else if (d.soloAscii) {
        h = {Certeza::Alta, "no tiene caracteres fuera de ASCII: se lee igual en UTF-8 y en Windows-1252"};
    } else if (d.codificacion == CodificacionTexto::Utf8) {
        h = {secuencias >= 3 ? Certeza::Alta : Certeza::Media,
             Plural(secuencias, "carácter no ASCII escrito", "caracteres no ASCII escritos") + " en UTF-8 válido"};
    } else if (indefinidos > 0) {
        h = {Certeza::Baja, Plural(indefinidos, "byte que no existe", "bytes que no existen") +
                                " en Windows-1252: puede ser otra página de códigos (850 de DOS)"};
    } else if (letras * 10 >= altos * 8) {
        h = {Certeza::Alta, "no es UTF-8, y " + std::to_string(letras) + " de " + std::to_string(altos) +
                                " bytes altos son letras en Windows-1252"};
    } else {
        h = {letras * 2 >= altos ? Certeza::Media : Certeza::Baja,
             "no es UTF-8, y solo " + std::to_string(letras) + " de " + std::to_string(altos) +
                 " bytes altos son letras en Windows-1252: puede ser otra página de códigos (850 de DOS)"};
    }
}

// ------------------------------------------------------------ Delimiter

long Ocurrencias(const std::string& linea, const std::string& separador) {
    long n = 0;
    for (size_t p = linea.find(separador); p != std::string::npos; p = linea.find(separador, p + separador.size())) ++n;
    return n;
}

// True when every comma of the lines sits between a digit and three more,
// as in "1,234.50": a grouping sign of amounts, not a delimiter.
bool ComaDeMiles(const std::vector<std::string>& lineas) {
    auto digito = [](char c) { return c >= '0' && c <= '9'; };
    long comas = 0;
    for (const auto& l : lineas)
        for (size_t p = l.find(','); p != std::string::npos; p = l.find(',', p + 1)) {
            ++comas;
            bool miles = p > 0 && digito(l[p - 1]) && p + 3 < l.size() && digito(l[p + 1]) && digito(l[p + 2]) &&
                         digito(l[p + 3]) && (p + 4 >= l.size() || !digito(l[p + 4]));
            if (!miles) return false;
        }
    return comas > 0;
}

struct Candidato {
    std::string separador;
    long moda = 0;        // the most frequent count per line (the higher on a tie)
    long coinciden = 0;   // lines with exactly that count
};

Candidato Evalua(const std::vector<std::string>& lineas, const std::string& separador) {
    std::map<long, long> frecuencias;
    for (const auto& l : lineas) ++frecuencias[Ocurrencias(l, separador)];
    Candidato c{separador};
    for (const auto& [cuenta, veces] : frecuencias)
        if (veces >= c.coinciden) c.moda = cuenta, c.coinciden = veces;
    return c;
}

void DetectaSeparador(const std::vector<std::string>& lineas, DeteccionTexto& d) {
    const long n = static_cast<long>(lineas.size());
    std::vector<Candidato> candidatos;
    const bool comaDeMiles = ComaDeMiles(lineas);
    for (const char* s : kSeparadoresDetectables) {
        if (comaDeMiles && std::string(s) == ",") continue;
        Candidato c = Evalua(lineas, s);
        if (c.moda > 0) candidatos.push_back(c);
    }
    if (n == 0 || candidatos.empty()) {
        d.sobreSeparador = {Certeza::Ninguna, "ninguno de los separadores aparece en el archivo"};
        return;
    }
    std::stable_sort(candidatos.begin(), candidatos.end(), [](const Candidato& a, const Candidato& b) {
        return a.coinciden != b.coinciden ? a.coinciden > b.coinciden : a.moda > b.moda;
    });
    const Candidato& mejor = candidatos.front();
    const double acuerdo = static_cast<double>(mejor.coinciden) / static_cast<double>(n);
    if (acuerdo < 0.6) {
        d.sobreSeparador = {Certeza::Ninguna, NombreSeparador(mejor.separador) + " aparece un número distinto de veces en " +
                                                  std::to_string(n - mejor.coinciden) + " de " +
                                                  Plural(n, "línea", "líneas")};
        return;
    }
    d.separador = mejor.separador;
    d.columnas = static_cast<int>(mejor.moda + 1);
    std::string motivo = mejor.coinciden == n
                             ? "aparece " + Plural(mejor.moda, "vez", "veces") + " en cada una de las " +
                                   Plural(n, "línea", "líneas")
                             : "aparece " + Plural(mejor.moda, "vez", "veces") + " en " + std::to_string(mejor.coinciden) +
                                   " de " + Plural(n, "línea", "líneas");
    std::string rival;
    for (size_t i = 1; i < candidatos.size(); ++i)
        if (static_cast<double>(candidatos[i].coinciden) / static_cast<double>(n) >= 0.9)
            rival = candidatos[i].separador;
    Certeza c = mejor.coinciden == n && n >= 3 ? Certeza::Alta : acuerdo >= 0.9 ? Certeza::Media : Certeza::Baja;
    if (!rival.empty()) {
        if (c == Certeza::Alta) c = Certeza::Media;
        motivo += "; también " + NombreSeparador(rival) + " aparece con regularidad";
    }
    if (n < 3 && c > Certeza::Baja) {
        c = Certeza::Baja;
        motivo += " (muy pocas líneas)";
    }
    d.sobreSeparador = {c, motivo};
}

// ------------------------------------------------------------ Fixed columns

std::vector<char32_t> Caracteres(const std::string& linea) {
    std::vector<char32_t> r;
    for (char32_t c : QString::fromStdString(linea).toUcs4()) r.push_back(c);
    return r;
}

void DetectaColumnasFijas(const std::vector<std::string>& lineas, DeteccionTexto& d) {
    if (!d.separador.empty() && d.sobreSeparador.certeza >= Certeza::Media) {
        d.sobreColumnasFijas = {Certeza::Ninguna, "no aplican: el archivo tiene separador"};
        return;
    }
    // The first line may be titles that do not keep to the columns.
    const size_t desde = lineas.size() >= 3 ? 1 : 0;
    std::vector<bool> ocupada;
    std::map<size_t, long> largos;
    for (size_t i = desde; i < lineas.size(); ++i) {
        auto cs = Caracteres(lineas[i]);
        ++largos[cs.size()];
        if (ocupada.size() < cs.size()) ocupada.resize(cs.size(), false);
        for (size_t p = 0; p < cs.size(); ++p)
            if (cs[p] != U' ') ocupada[p] = true;
    }
    for (size_t p = 0; p < ocupada.size();) {
        if (!ocupada[p]) {
            ++p;
            continue;
        }
        size_t fin = p;
        while (fin < ocupada.size() && ocupada[fin]) ++fin;
        d.columnasFijas.push_back({static_cast<int>(p + 1), static_cast<int>(fin - p)});
        p = fin;
    }
    const long cuerpo = static_cast<long>(lineas.size() - desde);
    if (d.columnasFijas.size() < 2) {
        d.columnasFijas.clear();
        d.sobreColumnasFijas = {Certeza::Ninguna, "ninguna columna queda en blanco en todas las líneas"};
        return;
    }
    long mismoLargo = 0;
    for (const auto& [largo, veces] : largos) mismoLargo = std::max(mismoLargo, veces);
    std::string motivo = std::to_string(d.columnasFijas.size() - 1) +
                         " columnas de caracteres en blanco en todas las " + Plural(cuerpo, "línea", "líneas") +
                         (desde ? " de datos" : "");
    Certeza c = Certeza::Baja;
    if (cuerpo >= 10 && mismoLargo * 10 >= cuerpo * 8) {
        c = Certeza::Alta;
        motivo += ", de largo fijo";
    } else if (cuerpo >= 5) {
        c = Certeza::Media;
    } else {
        motivo += " (pocas líneas: un texto con espacios puede parecer dos campos)";
    }
    if (!d.separador.empty()) {
        c = std::min(c, Certeza::Baja);
        motivo += "; el separador " + NombreSeparador(d.separador) + " es dudoso";
    }
    d.sobreColumnasFijas = {c, motivo};
}

// ------------------------------------------------------------ Cells

std::vector<Celdas> CeldasDe(const std::vector<std::string>& lineas, const DeteccionTexto& d) {
    std::vector<Celdas> r;
    for (const auto& l : lineas) {
        Celdas c;
        if (!d.separador.empty()) {
            for (auto& p : DivideLinea(l, d.separador)) c.push_back(RecortaEspacios(p));
        } else if (!d.columnasFijas.empty()) {
            for (auto [pos, largo] : d.columnasFijas) c.push_back(RecortaEspacios(TextoEnPosicion(l, pos, largo)));
        } else {
            // No columns: every word stands alone, for the dates.
            std::string palabra;
            for (char ch : l + " ") {
                if (ch == ' ' || ch == '\t') {
                    if (!palabra.empty()) c.push_back(palabra);
                    palabra.clear();
                } else {
                    palabra += ch;
                }
            }
        }
        r.push_back(std::move(c));
    }
    return r;
}

// ------------------------------------------------------------ Dates

enum class FormaFecha { Ninguna, DiaPrimero, MesPrimero, AnioPrimero, Neutra };

// A date written as three numbers with "/", "-" or "." between them: which
// of its orders it allows.
FormaFecha FormaDe(const std::string& t) {
    std::vector<std::string> partes(1);
    char separador = 0;
    for (char c : t) {
        if (c >= '0' && c <= '9') {
            partes.back() += c;
        } else if ((c == '/' || c == '-' || c == '.') && (separador == 0 || c == separador) && partes.size() < 3) {
            separador = c;
            partes.emplace_back();
        } else {
            return FormaFecha::Ninguna;
        }
    }
    if (partes.size() != 3 || partes[0].empty() || partes[1].empty() || partes[2].empty()) return FormaFecha::Ninguna;
    const size_t l0 = partes[0].size(), l1 = partes[1].size(), l2 = partes[2].size();
    if (l0 == 4 && l1 <= 2 && l2 <= 2) {
        int m = std::stoi(partes[1]), dd = std::stoi(partes[2]);
        return m >= 1 && m <= 12 && dd >= 1 && dd <= 31 ? FormaFecha::AnioPrimero : FormaFecha::Ninguna;
    }
    if (l0 > 2 || l1 > 2 || (l2 != 2 && l2 != 4)) return FormaFecha::Ninguna;
    int a = std::stoi(partes[0]), b = std::stoi(partes[1]);
    if (a < 1 || b < 1 || a > 31 || b > 31) return FormaFecha::Ninguna;
    if (a > 12 && b > 12) return FormaFecha::Ninguna;
    if (a > 12) return FormaFecha::DiaPrimero;
    if (b > 12) return FormaFecha::MesPrimero;
    return FormaFecha::Neutra;
}

void DetectaFechas(const std::vector<Celdas>& filas, DeteccionTexto& d) {
    std::map<FormaFecha, long> formas;
    std::map<size_t, long> porColumna;
    const bool conColumnas = !d.separador.empty() || !d.columnasFijas.empty();
    for (const auto& fila : filas)
        for (size_t j = 0; j < fila.size(); ++j) {
            FormaFecha f = FormaDe(fila[j]);
            if (f == FormaFecha::Ninguna) continue;
            ++formas[f];
            if (conColumnas) ++porColumna[j];
        }
    long total = 0;
    for (const auto& [f, n] : formas) total += n;
    if (total == 0) {
        d.sobreFechas = {Certeza::Alta, "no se encontraron fechas escritas con /, - o ."};
        return;
    }
    size_t mejor = 0;
    long masFechas = 0;
    for (const auto& [j, n] : porColumna)
        if (n > masFechas) mejor = j, masFechas = n;
    if (masFechas * 2 >= static_cast<long>(filas.size())) d.columnaFecha = static_cast<int>(mejor + 1);
    const long dia = formas[FormaFecha::DiaPrimero], mes = formas[FormaFecha::MesPrimero],
               anio = formas[FormaFecha::AnioPrimero], neutras = formas[FormaFecha::Neutra];
    const std::string enTotal = " de " + Plural(total, "fecha", "fechas");
    if (dia > 0 && mes > 0) {
        d.fechas = OrdenFecha::Contradictorio;
        d.sobreFechas = {Certeza::Ninguna, std::to_string(dia) + enTotal + " tienen el primer número mayor que 12 y " +
                                               std::to_string(mes) + " el segundo: el orden no es uno solo"};
    } else if (dia > 0) {
        d.fechas = OrdenFecha::DiaPrimero;
        d.sobreFechas = {dia >= 2 ? Certeza::Alta : Certeza::Media,
                         std::to_string(dia) + enTotal + " tienen el primer número mayor que 12"};
    } else if (mes > 0) {
        d.fechas = OrdenFecha::MesPrimero;
        d.sobreFechas = {mes >= 2 ? Certeza::Alta : Certeza::Media,
                         std::to_string(mes) + enTotal + " tienen el segundo número mayor que 12"};
    } else if (anio > 0 && neutras == 0) {
        d.fechas = OrdenFecha::AnioPrimero;
        d.sobreFechas = {Certeza::Alta, "las " + Plural(total, "fecha empieza", "fechas empiezan") + " por el año"};
    } else {
        d.fechas = OrdenFecha::Ambiguo;
        d.sobreFechas = {Certeza::Ninguna, "en ninguna" + enTotal +
                                               " pasa de 12 el día ni el mes: no se adivina cuál va primero"};
    }
}

// ------------------------------------------------------------ Titles

enum class TipoCelda { Vacia, Numero, Fecha, Texto };

TipoCelda TipoDe(const std::string& t) {
    if (t.empty()) return TipoCelda::Vacia;
    if (FormaDe(t) != FormaFecha::Ninguna) return TipoCelda::Fecha;
    if (EsNumerico(t)) return TipoCelda::Numero;
    return TipoCelda::Texto;
}

void DetectaTitulos(const std::vector<Celdas>& filas, DeteccionTexto& d) {
    if (d.separador.empty() && d.columnasFijas.empty()) {
        d.sobreTitulos = {Certeza::Ninguna, "sin columnas no se puede comparar la primera línea con las demás"};
        return;
    }
    if (filas.size() < 2) {
        d.sobreTitulos = {Certeza::Ninguna, "el archivo tiene una sola línea"};
        return;
    }
    const Celdas& primera = filas.front();
    std::vector<size_t> aFavor, enContra;
    for (size_t j = 0; j < primera.size(); ++j) {
        std::map<TipoCelda, long> tipos;
        long llenas = 0;
        for (size_t i = 1; i < filas.size(); ++i) {
            TipoCelda t = j < filas[i].size() ? TipoDe(filas[i][j]) : TipoCelda::Vacia;
            if (t == TipoCelda::Vacia) continue;
            ++tipos[t];
            ++llenas;
        }
        if (llenas == 0) continue;
        TipoCelda tipoCuerpo = TipoCelda::Texto;
        for (TipoCelda t : {TipoCelda::Numero, TipoCelda::Fecha})
            if (tipos[t] * 10 >= llenas * 8) tipoCuerpo = t;
        if (tipoCuerpo == TipoCelda::Texto) continue;
        TipoCelda arriba = TipoDe(primera[j]);
        if (arriba == TipoCelda::Texto) aFavor.push_back(j + 1);
        else if (arriba == tipoCuerpo) enContra.push_back(j + 1);
    }
    auto lista = [](const std::vector<size_t>& cols) {
        std::string r;
        for (size_t i = 0; i < cols.size(); ++i)
            r += (i == 0 ? "" : i + 1 == cols.size() ? " y " : ", ") + std::to_string(cols[i]);
        return r;
    };
    auto columnas = [&lista](const std::vector<size_t>& cols) {
        return (cols.size() == 1 ? "la columna " : "las columnas ") + lista(cols);
    };
    if (aFavor.empty() && enContra.empty()) {
        d.sobreTitulos = {Certeza::Ninguna, "no hay columnas de números o fechas con qué comparar la primera línea"};
    } else if (enContra.empty()) {
        d.titulos = true;
        d.sobreTitulos = {aFavor.size() >= 2 ? Certeza::Alta : Certeza::Media,
                          "en " + columnas(aFavor) + " hay números o fechas y la primera línea tiene texto"};
    } else if (aFavor.empty()) {
        d.sobreTitulos = {enContra.size() >= 2 ? Certeza::Alta : Certeza::Media,
                          "la primera línea tiene números o fechas, como las demás, en " + columnas(enContra)};
    } else {
        d.titulos = aFavor.size() > enContra.size();
        d.sobreTitulos = {Certeza::Baja, "la primera línea tiene texto en " + columnas(aFavor) +
                                             ", pero números o fechas en " + columnas(enContra)};
    }
    if (filas.size() < 4 && d.sobreTitulos.certeza == Certeza::Alta) {
        d.sobreTitulos.certeza = Certeza::Media;
        d.sobreTitulos.motivo += " (pocas líneas)";
    }
}

}  // namespace

// ------------------------------------------------------------ Interface

const char* TextoCerteza(Certeza c) {
    switch (c) {
        case Certeza::Alta: return "segura";
        case Certeza::Media: return "probable";
        case Certeza::Baja: return "dudosa";
        case Certeza::Ninguna: break;
    }
    return "no se puede determinar";
}

std::string NombreSeparador(const std::string& separador) {
    if (separador == "\t") return "tabulador";
    return "\"" + separador + "\"";
}

std::string TextoOrdenFecha(OrdenFecha o) {
    switch (o) {
        case OrdenFecha::SinFechas: return "sin fechas";
        case OrdenFecha::DiaPrimero: return "día primero (dd/mm/aaaa)";
        case OrdenFecha::MesPrimero: return "mes primero (mm/dd/aaaa)";
        case OrdenFecha::AnioPrimero: return "año primero (aaaa-mm-dd)";
        case OrdenFecha::Ambiguo: return "ambiguas";
        case OrdenFecha::Contradictorio: return "contradictorias";
    }
    return "";
}

DeteccionTexto DetectaFormatoLineas(const std::vector<std::string>& todas) {
    DeteccionTexto d;
    std::vector<std::string> lineas;
    for (const auto& l : todas)
        if (!EnBlanco(l)) lineas.push_back(l);
    d.lineasExaminadas = static_cast<long>(lineas.size());
    DetectaSeparador(lineas, d);
    DetectaColumnasFijas(lineas, d);
    auto filas = CeldasDe(lineas, d);
    DetectaTitulos(filas, d);
    // The dates are looked for below the titles.
    DetectaFechas(d.titulos ? std::vector<Celdas>(filas.begin() + 1, filas.end()) : filas, d);
    return d;
}

DeteccionTexto DetectaFormatoTexto(const std::string& ruta, long maxLineas) {
    ArchivoTexto archivo(ruta);
    std::vector<std::string> lineas;
    std::string linea;
    while (static_cast<long>(lineas.size()) < maxLineas && archivo.leeLinea(linea)) lineas.push_back(linea);
    DeteccionTexto d = DetectaFormatoLineas(lineas);
    d.ruta = ruta;
    DetectaCodificacionDe(ruta, d);
    return d;
}

std::vector<std::string> DescribeDeteccion(const DeteccionTexto& d) {
    auto con = [](const std::string& que, const Hallazgo& h) {
        return que + " — " + TextoCerteza(h.certeza) + (h.motivo.empty() ? "" : ": " + h.motivo);
    };
    auto sinCerteza = [](const std::string& que, const Hallazgo& h) { return que + " — " + h.motivo; };
    std::vector<std::string> r;
    std::string codificacion = d.soloAscii ? "ASCII"
                               : d.codificacion == CodificacionTexto::Utf8 ? (d.bom ? "UTF-8 con BOM" : "UTF-8")
                                                                           : "Windows-1252";
    r.push_back(con("Codificación: " + codificacion, d.sobreCodificacion));
    r.push_back(con("Separador: " + (d.separador.empty()
                                         ? std::string("ninguno")
                                         : NombreSeparador(d.separador) + ", " + std::to_string(d.columnas) + " columnas"),
                    d.sobreSeparador));
    r.push_back(con(std::string("Fila de títulos: ") + (d.titulos ? "sí" : "no"), d.sobreTitulos));
    r.push_back(con("Fechas: " + TextoOrdenFecha(d.fechas) +
                        (d.columnaFecha ? " (columna " + std::to_string(d.columnaFecha) + ")" : ""),
                    d.sobreFechas));
    std::string fijas;
    for (auto [pos, largo] : d.columnasFijas)
        fijas += (fijas.empty() ? "" : ", ") + std::to_string(pos) + "-" + std::to_string(pos + largo - 1);
    if (fijas.empty())
        r.push_back(sinCerteza("Columnas fijas: ninguna", d.sobreColumnasFijas));
    else
        r.push_back(con("Columnas fijas: " + fijas, d.sobreColumnasFijas));
    return r;
}

}  // namespace velmorant
