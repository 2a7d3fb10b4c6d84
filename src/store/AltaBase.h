#pragma once
// Creating what the audit product would have created: a base folder with
// its company table and link catalogue, and a company with its folder and
// database. Both are idempotent where that makes sense.

#include <string>
#include <vector>

namespace velmorant {

/// Creates `carpeta` if needed, `Empresas` and the link catalogue in it, and
/// refreshes the catalogue's rows. Returns the folder with its separator.
std::string CreaBase(const std::string& carpeta);

struct DatosEmpresaNueva {
    std::string nombreCorto;
    std::string nombre;
    int ejercicio = 0;
    std::string formatoCta;
    std::string separador;
    std::vector<int> niveles;  // characters of each level, at most 12
    bool catArbol = false;
    bool rellenaCeros = false;
    bool saldosConMes13 = false;
    int mesPrevia1 = 0, mesPrevia2 = 0, mesPrevia3 = 0, mesFinal = 0;
};

/// Adds the `Empresas` row (the next `IdEmpresa`) and creates the company
/// folder and database. Throws std::invalid_argument on bad data or when
/// the short name and year already exist. Returns the new `IdEmpresa`.
int CreaEmpresa(const std::string& rutaBase, const DatosEmpresaNueva& datos);

}  // namespace velmorant
