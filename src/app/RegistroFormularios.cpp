#include "app/RegistroFormularios.h"

namespace velmorant::app {

namespace {

std::map<int, FabricaFormulario>& Registro() {
    static std::map<int, FabricaFormulario> registro;
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
