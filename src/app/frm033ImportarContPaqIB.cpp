#include "app/frm033ImportarContPaqIB.h"

#include <QButtonGroup>

#include "importers/contpaq_i/ImportadorContpaqI.h"

namespace velmorant::app {

frm033ImportarContPaqIB::frm033ImportarContPaqIB(Sesion& sesion, QWidget* padre)
    : frm000ImportadorDescrito(sesion, *BuscaImportador(contpaqi::kEnlaceContpaqIMejorado), padre) {
    auto* tipo01 = findChild<QCheckBox*>("chkTipo01");
    auto* tipo12 = findChild<QCheckBox*>("chkTipo12");
    if (!tipo01 || !tipo12) return;
    auto* grupo = new QButtonGroup(this);
    grupo->setExclusive(true);
    grupo->addButton(tipo01);
    grupo->addButton(tipo12);
}

}  // namespace velmorant::app
