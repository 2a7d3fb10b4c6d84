#pragma once
// "Constancia de importación": one run of the import history on paper, for
// the auditor's working papers: the company and year, who ran it and when,
// the link, every file with its size and SHA-256, what was read, the
// monthly control totals, the log's findings by class, the decision and
// the outcome. It is a report of the report machinery (pipeline/Reportes.h),
// so it is shown, printed and saved as PDF like the others.

#include <string>

#include "pipeline/Historial.h"
#include "pipeline/Reportes.h"

namespace velmorant {

inline constexpr const char* kTituloConstancia = "Constancia de importación";

/// The constancia of run `r` (read whole). `impFecha` is the date printed.
Reporte ConstanciaImportacion(const RegistroHistorial& r, const Fecha& impFecha);

/// The text of a link for people: "82 - Texto Generico delimitado por caracter".
std::string TextoEnlace(int idSistema);

/// A month of the totals: "Enero" ... "Diciembre", "Mes 13".
std::string NombreMesTotales(int mes);

}  // namespace velmorant
