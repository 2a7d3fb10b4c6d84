#include "importers/Importador.h"

#include "session/Funciones.h"

namespace velmorant {

bool Importador::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (tipo() == TipoImportacion::MesPorMes &&
        (a.catalogo.empty() || (saldosInicialesAparte() && a.saldosIniciales.empty()))) {
        MsgInformacion(s, "La importación básica de la información contable comprende al menos dos archivos:\n"
                          "Catalogo de cuentas y Saldos iniciales, especifique por favor la ubicación de ambos archivos");
        return false;
    }
    return true;
}

}  // namespace velmorant
