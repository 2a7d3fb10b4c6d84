#include "importers/Registro.h"

namespace velmorant {

const std::set<int>& ImportadoresDisponibles() {
    static const std::set<int> disponibles = {82};
    return disponibles;
}

}  // namespace velmorant
