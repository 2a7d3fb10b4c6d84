#include "importers/Descriptor.h"

#include "importers/Comprimidos.h"
#include "importers/Registro.h"
#include "platform/Texto.h"

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

int MesHastaElegido(const ArchivosImportacion& a) {
    auto mes = a.parametro("hasta-mes");
    if (!mes) return 0;
    const std::string t = RecortaEspacios(*mes);
    const int n = !t.empty() && t.size() <= 2 && t.find_first_not_of("0123456789") == std::string::npos ? std::stoi(t) : 0;
    if (n < 1 || n > 13)
        throw ParametroInvalido("--hasta-mes: el mes va de 01 a 12, o 13 para el ejercicio con su cierre: " + *mes);
    return n;
}

}  // namespace velmorant
