#include "importers/Descriptor.h"

#include "importers/Registro.h"

namespace velmorant {

const ArchivoDescrito* DescriptorImportador::archivo(const std::string& papel) const {
    for (const auto& a : archivos)
        if (a.papel == papel) return &a;
    if (anioAnterior && anioAnterior->papel == papel) return &*anioAnterior;
    return nullptr;
}

const std::vector<DescriptorImportador>& Importadores() {
    static const std::vector<DescriptorImportador> lista = DescriptoresRegistrados();
    return lista;
}

const DescriptorImportador* BuscaImportador(int idSistema) {
    for (const auto& d : Importadores())
        if (d.IdSistema == idSistema) return &d;
    return nullptr;
}

}  // namespace velmorant
