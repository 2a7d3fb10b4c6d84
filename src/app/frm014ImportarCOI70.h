#pragma once
// The importer form of link 129 (COI 7 and 8 over their Firebird
// database): the form its descriptor describes, plus `lblControlador`, which
// says whether this machine can open Firebird databases and, when it
// cannot, what is missing and which Debian package provides it.

#include <QLabel>

#include "app/frm000ImportadorDescrito.h"

namespace velmorant::app {

class frm014ImportarCOI70 : public frm000ImportadorDescrito {
    Q_OBJECT
public:
    frm014ImportarCOI70(Sesion& sesion, const DescriptorImportador& descriptor, QWidget* padre = nullptr);

    QLabel* lblControlador;

    /// Clicking the label: what the engine needs, in a message.
    void lblControlador_Click();

protected:
    bool eventFilter(QObject* objeto, QEvent* evento) override;

private:
    std::string diagnostico_;
};

}  // namespace velmorant::app
