#include "importers/Registro.h"

#include <algorithm>

#include "importers/Descriptor.h"
#include "importers/contabilidad_electronica/ImportadorContabilidadElectronica.h"
#include "importers/coi/ImportadorCoi35.h"
#include "importers/coi/ImportadorCoiFirebird.h"
#include "importers/contpaq_i/ImportadorContpaqI.h"
#include "importers/contpaq_windows/ImportadorContpaqWindows.h"
#include "importers/reportes/ImportadorReporte.h"
#include "importers/quorvel/ImportadorQuorvel.h"
#include "importers/softex/ImportadorSoftex.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "importers/texto_fijo/ImportadorTextoFijo.h"
#include "importers/excel_columnas/ImportadorExcelColumnas.h"

namespace velmorant {

std::vector<DescriptorImportador> DescriptoresRegistrados() {
    std::vector<DescriptorImportador> lista = {
        DescriptorTextoFijo(),
        DescriptorTextoDelimitado(),
        DescriptorContabilidadElectronica(),
        DescriptorSoftex(),
        DescriptorQuorvel4(),
        DescriptorQuorvel5(),
        DescriptorExcelColumnas(),
        DescriptorCoiFirebird(),
        DescriptorCoi35(),
        contpaqi::DescriptorContpaqIAnterior(),
        contpaqi::DescriptorContpaqIMejorado(),
        DescriptorContpaqWindows(),
    };
    for (auto& d : DescriptoresReportes()) lista.push_back(std::move(d));
    std::sort(lista.begin(), lista.end(), [](auto& a, auto& b) { return a.IdSistema < b.IdSistema; });
    return lista;
}

const std::set<int>& ImportadoresDisponibles() {
    static const std::set<int> disponibles = [] {
        std::set<int> ids;
        for (const auto& d : Importadores()) ids.insert(d.IdSistema);
        return ids;
    }();
    return disponibles;
}

}  // namespace velmorant
