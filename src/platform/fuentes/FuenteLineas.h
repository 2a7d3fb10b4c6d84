#pragma once
// A record source of plain lines: each line of a text file is a row whose
// `texto` is the decoded line and which has no cells. For readers that tell
// a line's meaning from its own text, such as printed reports saved as
// text, where a line's fields depend on what kind of line it is.

#include <string>

#include "platform/ArchivoTexto.h"
#include "platform/fuentes/FuenteRegistros.h"

namespace velmorant {

class FuenteLineas : public FuenteRegistros {
public:
    /// Opens the file (ErrorLectura naming it when it cannot be opened).
    explicit FuenteLineas(const std::string& ruta);

    bool siguiente(Fila& fila) override;
    const std::string& ruta() const override { return archivo_.ruta(); }
    long totalEstimado() const override { return total_; }
    std::string aviso() const override { return archivo_.aviso(); }

private:
    ArchivoTexto archivo_;
    long total_;
};

}  // namespace velmorant
