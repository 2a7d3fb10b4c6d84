#pragma once
// A dry run of a description over a sample report: how each line is
// classified and what vouchers it yields, without any store. The command
// line's `reporte probar` and the desktop program's preview show it; a
// user checks a new or changed layout with it before an import.

#include <string>
#include <vector>

#include "importers/DestinoTmp.h"
#include "importers/reportes/DescripcionReporte.h"
#include "session/Sesion.h"

namespace velmorant {

struct PruebaReporte {
    struct Linea {
        long numero = 0;
        std::string texto;
        std::string clase;    // NombreClase
        std::string detalle;  // fields read, or why the line was dropped
    };
    struct Poliza {
        PolizaLeida cabeza;
        std::vector<PartidaLeida> partidas;
    };
    std::vector<Linea> lineas;
    std::vector<Poliza> polizas;
    /// Doubtful lines, as the log would have them.
    std::vector<std::string> dudosas;
    /// The fault that would stop the run (a date that cannot be read), with its line; empty when none.
    std::string fallo;
};

/// Reads `archivo` with `d` as month `mes` would be read, with the
/// session's account format (`FormatoCtaEmpresa`, `SeparadorEmpresa`,
/// levels). Throws ErrorLectura when the file cannot be opened.
PruebaReporte PruebaDescripcion(Sesion& s, const DescripcionReporte& d, const std::string& archivo, int mes = 1);

/// The dry run as text: one line per report line ("número  clase  texto",
/// and what was read below it), then the vouchers with their lines and
/// sums, then the doubtful lines and the fault.
std::string TextoPrueba(const PruebaReporte& p);

}  // namespace velmorant
