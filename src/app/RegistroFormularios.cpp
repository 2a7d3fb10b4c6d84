#include "app/RegistroFormularios.h"

#include "app/frm082TextoGenericoSeparado.h"

namespace velmorant::app {

namespace {

template <class Forma>
FabricaFormulario Fabrica() {
    return [](Sesion& s, QWidget* padre) { return std::make_unique<Forma>(s, padre); };
}

// The importer forms of this program.
std::map<int, FabricaFormulario>& Registro() {
    static std::map<int, FabricaFormulario> registro = {
        {82, Fabrica<frm082TextoGenericoSeparado>()},
    };
    return registro;
}

}  // namespace

void RegistraFormulario(int idSistema, FabricaFormulario fabrica) { Registro()[idSistema] = std::move(fabrica); }

std::unique_ptr<QDialog> CreaFormularioImportador(int idSistema, Sesion& s, QWidget* padre) {
    auto it = Registro().find(idSistema);
    if (it == Registro().end()) return nullptr;
    return it->second(s, padre);
}

}  // namespace velmorant::app
