#pragma once
// The desktop program's answer to the core: message boxes and the file
// dialog, parented to the form in hand.

#include <QWidget>

#include "session/Interaccion.h"

namespace velmorant::app {

class InteraccionQt : public Interaccion {
public:
    explicit InteraccionQt(QWidget* padre = nullptr) : padre_(padre) {}
    void padre(QWidget* p) { padre_ = p; }

    bool mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) override;
    std::string eligeArchivo(const std::string& filtro, const std::string& titulo) override;

private:
    QWidget* padre_;
};

/// "desc|pattern|desc|pattern" as a Qt file dialog filter.
QString FiltroQt(const std::string& filtro);

}  // namespace velmorant::app
