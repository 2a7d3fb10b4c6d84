#pragma once
// The register of every accounting system a link can open: its
// `IdSistema`, the title its importer form bears, and the kinds of source
// it reads. Whether its importer is built is not written here: it is built
// when Registro.cpp has its descriptor. The shipped rows of the link
// catalogue (`Enlaces`) are generated from this table, released only for
// the built ones.

#include <string>
#include <vector>

namespace velmorant {

struct SistemaRegistrado {
    int IdSistema;
    /// The form's title without a leading "Importar"; empty for a system
    /// written for one accounting firm.
    std::string titulo;
    /// Kinds of source, one letter each (FuentesDescritas tells them).
    std::string fuentes;
};

/// Every system of the register, in `IdSistema` order.
const std::vector<SistemaRegistrado>& RegistroSistemas();

/// The system of a link; null when the register has none.
const SistemaRegistrado* BuscaSistema(int idSistema);

/// True when this program has the link's importer (a descriptor in Registro.cpp).
bool ImportadorConstruido(int idSistema);

/// The kinds of source in words: "T" "texto", "C" "texto separado por comas",
/// "E" "Excel celda por celda", "X" "Excel como tabla", "D" "dBase",
/// "F" "FoxPro", "V" "Visual FoxPro", "P" "Paradox", "B" "Firebird",
/// "M" "base de Access", "S" "XML de contabilidad electrónica", joined by ", ".
std::string FuentesDescritas(const std::string& letras);

}  // namespace velmorant
