#include "cli/ProgresoTerminal.h"

#include <unistd.h>

#include <cstdio>

namespace velmorant::cli {

ProgresoTerminal::ProgresoTerminal() : activo_(isatty(STDERR_FILENO)) {}

ProgresoTerminal::~ProgresoTerminal() { limpia(); }

void ProgresoTerminal::limpia() {
    if (activo_ && ultimoDibujo_ >= 0) std::fprintf(stderr, "\r\033[K");
    ultimoDibujo_ = -1;
}

void ProgresoTerminal::dibuja(bool forzar) {
    if (!activo_ || !visible_) return;
    int porcentaje = maximo_ > 0 ? static_cast<int>(valor_ * 100 / maximo_) : 0;
    if (porcentaje > 100) porcentaje = 100;
    if (!forzar && porcentaje == ultimoDibujo_) return;
    ultimoDibujo_ = porcentaje;
    constexpr int ancho = 30;
    int llenas = porcentaje * ancho / 100;
    std::string barra(static_cast<size_t>(llenas), '#');
    barra.append(static_cast<size_t>(ancho - llenas), '.');
    std::string texto = etiqueta_.size() > 60 ? etiqueta_.substr(0, 57) + "..." : etiqueta_;
    std::fprintf(stderr, "\r\033[K[%s] %3d%% %s", barra.c_str(), porcentaje, texto.c_str());
    std::fflush(stderr);
}

void ProgresoTerminal::etiqueta(const std::string& texto) {
    etiqueta_ = texto;
    dibuja(true);
}

void ProgresoTerminal::maximo(long n) {
    maximo_ = n;
    valor_ = 0;
    dibuja(true);
}

void ProgresoTerminal::valor(long n) {
    valor_ = n;
    dibuja(false);
}

void ProgresoTerminal::visible(bool si) {
    visible_ = si;
    if (si) dibuja(true);
    else limpia();
}

}  // namespace velmorant::cli
