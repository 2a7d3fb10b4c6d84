#include "importers/texto_delimitado/DelimitadorArchivo.h"

#include "platform/fuentes/FuenteTexto.h"
#include "platform/ArchivoTexto.h"
#include "session/Funciones.h"

namespace velmorant {

std::string MensajeArchivoSinDelimitar(const std::string& ruta) {
    return "El archivo " + ruta + " no se encuentra delimitado por el caracter que indico.";
}

long LineaSinDelimitador(const std::string& ruta, const std::string& separador) {
    if (!ExisteArchivo(ruta)) return 0;
    ArchivoTexto archivo(ruta);
    std::string linea;
    while (archivo.leeLinea(linea))
        if (!linea.empty() && DivideLinea(linea, separador).size() == 1) return archivo.numeroLinea();
    return 0;
}

}  // namespace velmorant
