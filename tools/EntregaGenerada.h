#pragma once
// The files velmorant-genera-demo writes for one delivery of a year, and the
// delimited layout they follow: one place for the generator, the benchmarks
// and the tests that import what it writes.

#include <filesystem>
#include <string>

#include "importers/Importador.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"

namespace velmorant::demo {

/// The vouchers of month `mes` (1 to 12) in `dir`: "pol_ENE.txt" and so on.
inline std::filesystem::path ArchivoDelMes(const std::filesystem::path& dir, int mes) {
    static const char* const marcas[] = {"ENE", "FEB", "MZO", "ABR", "MAY", "JUN",
                                         "JUL", "AGO", "SEP", "OCT", "NOV", "DIC"};
    return dir / (std::string("pol_") + marcas[mes - 1] + ".txt");
}

/// The chart and the twelve months of a delivery in `dir`.
inline ArchivosImportacion ArchivosDeEntrega(const std::filesystem::path& dir) {
    ArchivosImportacion a;
    a.catalogo = (dir / "catalogo.txt").string();
    for (int mes = 1; mes <= 12; ++mes) a.meses[static_cast<size_t>(mes - 1)] = ArchivoDelMes(dir, mes).string();
    return a;
}

/// Link 82's layout for the generated files ("|" between fields).
inline LecturaDelimitada LecturaDeEntrega() {
    LecturaDelimitada l;
    l.separador = "|";
    auto& c = l.config;
    c.PIniCuenta = 1, c.PIniDescripcion = 2, c.PIniNaturaleza = 3, c.PIniNivel = 4, c.PIniSdoIni = 6;
    c.PIniNumPol = 1, c.PIniTipo = 2, c.PIniDia = 3, c.PIniMes = 4, c.PIniAnio = 5, c.PIniCtaPol = 6;
    c.PIniRef = 7, c.PIniConcept = 8, c.PIniCargo = 9, c.PIniAbono = 10;
    return l;
}

}  // namespace velmorant::demo
