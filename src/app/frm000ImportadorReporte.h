#pragma once
// The importer form of a printed-report link: the form its descriptor
// describes, plus the preview of the month's report with the link's
// installed description.

#include "app/frm000ImportadorDescrito.h"

namespace velmorant::app {

class frm000ImportadorReporte : public frm000ImportadorDescrito {
    Q_OBJECT
public:
    frm000ImportadorReporte(Sesion& sesion, const DescriptorImportador& descriptor, QWidget* padre = nullptr);

    QPushButton* cmdVistaPrevia;

    /// Opens the preview on the first month chosen (or an empty sample).
    void cmdVistaPrevia_Click();
};

}  // namespace velmorant::app
