#pragma once
// Whether a delimited text file is split by the delimiter the user chose,
// as the parameter form's preview finds out: a non-empty line that the
// delimiter does not split means the file is not delimited by it. Callers
// run it before a run, so a wrong delimiter is named as such instead of
// failing later on a field too long or a line that reads as empty.

#include <string>

namespace velmorant {

/// "El archivo " ruta " no se encuentra delimitado por el caracter que indico."
std::string MensajeArchivoSinDelimitar(const std::string& ruta);

/// Number (from 1, as the file counts its lines) of the first non-empty line
/// that `separador` does not split, compared without case as the readers
/// split; 0 when every non-empty line is split, and for an empty or missing
/// file (those have their own messages). The title line counts like any other.
long LineaSinDelimitador(const std::string& ruta, const std::string& separador);

}  // namespace velmorant
