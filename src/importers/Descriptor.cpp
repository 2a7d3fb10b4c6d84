#include "importers/Descriptor.h"

#include "importers/Comprimidos.h"
#include "importers/Registro.h"

namespace velmorant {

const ArchivoDescrito* DescriptorImportador::archivo(const std::string& papel) const {
    for (const auto& a : archivos)
        if (a.papel == papel) return &a;
    if (anioAnterior && anioAnterior->papel == papel) return &*anioAnterior;
    return nullptr;
}

bool DescriptorImportador::conComprimidos() const {
    if (mesesComprimidos || (anioAnterior && anioAnterior->comprimido)) return true;
    for (const auto& a : archivos)
        if (a.comprimido) return true;
    return false;
}

const std::vector<DescriptorImportador>& Importadores() {
    static const std::vector<DescriptorImportador> lista = [] {
        auto l = DescriptoresRegistrados();
        // An importer that takes zip archives reads what they hold.
        for (auto& d : l)
            if (d.conComprimidos()) d.crea = ConExtraccion(d);
        return l;
    }();
    return lista;
}

const DescriptorImportador* BuscaImportador(int idSistema) {
    for (const auto& d : Importadores())
        if (d.IdSistema == idSistema) return &d;
    return nullptr;
}

}  // namespace velmorant
