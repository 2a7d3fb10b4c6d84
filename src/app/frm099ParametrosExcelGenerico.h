#pragma once
// The layout of the workbook importer: which column of each sheet holds each
// field, saved by name in the layout store under link 102. The boxes, tabs
// and rules are those of the delimited layout form; each workbook is
// previewed as its first sheet reads, a column per column of the sheet.

#include "app/frm083ParametrosTextoGenerico.h"

namespace velmorant::app {

class frm099ParametrosExcelGenerico : public frm083ParametrosTextoGenerico {
    Q_OBJECT
public:
    /// Opens the layout store (which may end the program after its
    /// message), loads the current layout and previews the workbooks (one
    /// that cannot be read is said, and its grid stays empty).
    frm099ParametrosExcelGenerico(Sesion& sesion, const EntradaParametros& entrada, QWidget* padre = nullptr);
};

}  // namespace velmorant::app
