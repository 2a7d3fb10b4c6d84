#include "session/CausaError.h"

#include <filesystem>
#include <system_error>

#include "platform/BaseDatos.h"

namespace velmorant {

std::string CausaDelError(const std::exception& error) {
    if (auto e = dynamic_cast<const ErrorBaseDatos*>(&error)) {
        switch (e->codigo() & 0xFF) {
            case 13: return "No hay espacio suficiente en el disco. ";                    // FULL
            case 10: return "Falló la lectura o la escritura en el disco. ";              // IOERR
            case 8: return "La base de datos está en una carpeta o disco de sólo lectura. ";  // READONLY
            case 5:                                                                       // BUSY
            case 6: return "La base de datos está ocupada por otro programa. ";           // LOCKED
            case 11:                                                                      // CORRUPT
            case 26: return "La base de datos está dañada. ";                             // NOTADB
            case 14: return "No se pudo abrir o crear un archivo de la base de datos. ";  // CANTOPEN
            case 3:                                                                       // PERM
            case 23: return "No hay permiso para usar la base de datos. ";                // AUTH
            default: return "";
        }
    }
    if (auto e = dynamic_cast<const std::filesystem::filesystem_error*>(&error)) {
        switch (static_cast<std::errc>(e->code().value())) {
            case std::errc::no_space_on_device: return "No hay espacio suficiente en el disco. ";
            case std::errc::file_too_large: return "El archivo excede el tamaño permitido. ";
            case std::errc::read_only_file_system: return "El disco es de sólo lectura. ";
            case std::errc::permission_denied:
            case std::errc::operation_not_permitted: return "No hay permiso para escribir en la carpeta. ";
            default: return "";
        }
    }
    return "";
}

}  // namespace velmorant
