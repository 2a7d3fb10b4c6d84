#pragma once
// The command line's progress: a bar with the step's label on stderr,
// redrawn in place; silent when stderr is not a terminal.

#include <string>

#include "session/Interaccion.h"

namespace velmorant::cli {

class ProgresoTerminal : public Progreso {
public:
    ProgresoTerminal();
    ~ProgresoTerminal() override;
    void etiqueta(const std::string& texto) override;
    void maximo(long n) override;
    void valor(long n) override;
    void visible(bool si) override;

private:
    bool activo_;
    bool visible_ = false;
    std::string etiqueta_;
    long maximo_ = 0, valor_ = 0;
    int ultimoDibujo_ = -1;
    void dibuja(bool forzar);
    void limpia();
};

}  // namespace velmorant::cli
