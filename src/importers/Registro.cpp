#include "importers/Registro.h"

namespace velmorant {

const std::set<int>& ImportadoresDisponibles() {
    static const std::set<int> disponibles = {};
    return disponibles;
}

}  // namespace velmorant
