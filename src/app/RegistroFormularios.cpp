#include "app/RegistroFormularios.h"

#include "app/frm000ImportadorDescrito.h"
#include "app/frm022TxtPersonalizado.h"
#include "app/frm033ImportarContPaqIB.h"
#include "app/frm036ImportarContpaqDBF.h"
#include "app/frm000ImportadorReporte.h"
#include "app/frm082TextoGenericoSeparado.h"
#include "app/frm099TextoExcelGenerico.h"
#include "app/frm014ImportarCOI70.h"
#include "importers/Descriptor.h"
#include "importers/reportes/ImportadorReporte.h"

namespace velmorant::app {

namespace {

template <class Forma>
FabricaFormulario Fabrica() {
    return [](Sesion& s, QWidget* padre) { return std::make_unique<Forma>(s, padre); };
}

// The importer forms with controls of their own; every other importer of
// the register gets the form its descriptor describes.
std::map<int, FabricaFormulario>& Registro() {
    static std::map<int, FabricaFormulario> registro = {
        {25, Fabrica<frm022TxtPersonalizado>()},
        {82, Fabrica<frm082TextoGenericoSeparado>()},
        {102, Fabrica<frm099TextoExcelGenerico>()},
        {129, [](Sesion& s, QWidget* padre) -> std::unique_ptr<QDialog> {
             return std::make_unique<frm014ImportarCOI70>(s, *BuscaImportador(129), padre);
         }},
        {95, Fabrica<frm033ImportarContPaqIB>()},
        {40, Fabrica<frm036ImportarContpaqDBF>()},
    };
    return registro;
}

}  // namespace

void RegistraFormulario(int idSistema, FabricaFormulario fabrica) { Registro()[idSistema] = std::move(fabrica); }

std::unique_ptr<QDialog> CreaFormularioImportador(int idSistema, Sesion& s, QWidget* padre) {
    auto it = Registro().find(idSistema);
    if (it != Registro().end()) return it->second(s, padre);
    if (const DescriptorImportador* d = BuscaImportador(idSistema)) {
        // A printed-report importer: the same form, with the report's preview.
        if (EsEnlaceDeReporte(idSistema))
            return std::make_unique<frm000ImportadorReporte>(s, *d, padre);
        return std::make_unique<frm000ImportadorDescrito>(s, *d, padre);
    }
    return nullptr;
}

}  // namespace velmorant::app
