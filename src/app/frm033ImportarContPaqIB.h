#pragma once
// The form of link 95 (ContPAQ i - Mejorado): the form its descriptor
// describes, with the two codings of the movement kind of the earlier
// layout (`chkTipo01`, `chkTipo12`) as one choice: ticking one unticks the
// other, and one of them is always ticked.

#include "app/frm000ImportadorDescrito.h"

namespace velmorant::app {

class frm033ImportarContPaqIB : public frm000ImportadorDescrito {
    Q_OBJECT
public:
    explicit frm033ImportarContPaqIB(Sesion& sesion, QWidget* padre = nullptr);
};

}  // namespace velmorant::app
