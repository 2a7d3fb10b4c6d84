#pragma once
// What a client's text file looks like, guessed from its first lines, for
// the generic importers: its encoding (by the same rule the readers apply),
// its delimiter among the ones the importers offer, whether its first line
// holds titles, whether its dates put the day or the month first, and,
// for a file without delimiter, where its fixed-width columns begin and
// end. Each finding says how sure it is and why. Nothing here changes a
// layout: the forms and the command line offer the findings as
// suggestions, and a finding that cannot be told (dates whose days never
// pass 12) says so instead of guessing.

#include <string>
#include <utility>
#include <vector>

#include "platform/ArchivoTexto.h"

namespace velmorant {

enum class Certeza { Ninguna, Baja, Media, Alta };

/// "no se puede determinar", "dudosa", "probable", "segura".
const char* TextoCerteza(Certeza c);

struct Hallazgo {
    Certeza certeza = Certeza::Ninguna;
    std::string motivo;
};

enum class OrdenFecha { SinFechas, DiaPrimero, MesPrimero, AnioPrimero, Ambiguo, Contradictorio };

/// The delimiters the generic importers offer, tab last.
inline constexpr const char* kSeparadoresDetectables[] = {"^", "|", "~", ",", ";", "\t"};

struct DeteccionTexto {
    std::string ruta;
    long lineasExaminadas = 0;  // lines that are not blank

    CodificacionTexto codificacion = CodificacionTexto::Windows1252;
    bool bom = false;
    bool soloAscii = false;  // no byte above 127: both encodings read it alike
    Hallazgo sobreCodificacion;

    std::string separador;  // empty: none found
    int columnas = 0;       // fields of a line split at it
    Hallazgo sobreSeparador;

    bool titulos = false;
    Hallazgo sobreTitulos;

    OrdenFecha fechas = OrdenFecha::SinFechas;
    int columnaFecha = 0;  // the column (from 1) that holds the dates, 0 when none stands out
    Hallazgo sobreFechas;

    /// Fixed-width fields as (position from 1, length); only for a file
    /// without a delimiter.
    std::vector<std::pair<int, int>> columnasFijas;
    Hallazgo sobreColumnasFijas;
};

/// Examines the first `maxLineas` lines of the file. Throws ErrorLectura
/// when the file cannot be opened.
DeteccionTexto DetectaFormatoTexto(const std::string& ruta, long maxLineas = 1000);

/// The findings on decoded lines (blank ones are skipped): delimiter,
/// titles, dates and fixed columns; the encoding is left as it is.
DeteccionTexto DetectaFormatoLineas(const std::vector<std::string>& lineas);

/// "\"|\"", "tabulador".
std::string NombreSeparador(const std::string& separador);
/// "día primero", "mes primero", ...
std::string TextoOrdenFecha(OrdenFecha o);

/// The findings for people, one line each: codificación, separador, fila
/// de títulos, fechas, columnas fijas.
std::vector<std::string> DescribeDeteccion(const DeteccionTexto& d);

}  // namespace velmorant
