#include "importers/Recorrido.h"

#include <stdexcept>

#include "session/Funciones.h"

namespace velmorant {

void FallaFila(Sesion& s, const FuenteRegistros& fuente, const Fila& fila, const std::string& causa,
               ReglasRecorrido::Fallo fallo) {
    const std::string lugar = fuente.lugar(fila);
    std::string mensaje;
    switch (fallo) {
        case ReglasRecorrido::Fallo::Linea:
            mensaje = "Error al leer el " + lugar + ": " + causa + "\r\n" + fila.texto;
            break;
        case ReglasRecorrido::Fallo::LineaPoliza:
            ReportaError(s, std::runtime_error(causa + " (" + lugar + ")"), true);
            mensaje = "Error al leer la línea: " + fila.texto;
            break;
        case ReglasRecorrido::Fallo::FilaPoliza:
            ReportaError(s, std::runtime_error(causa + " (" + lugar + ")"), true);
            mensaje = "Error al leer la fila: " + std::to_string(fila.numero);
            break;
    }
    MsgCritico(s, mensaje);
    throw ErrorLectura(mensaje, fuente.ruta(), fila.numero);
}

AvanceLectura::AvanceLectura(Sesion& s, const std::string& etiqueta, long maximo) : p_(s.progreso) {
    if (!p_) return;
    if (!etiqueta.empty()) p_->etiqueta(etiqueta);
    p_->maximo(maximo);
    p_->valor(0);
}

void AvanceLectura::valor(long n) {
    if (!p_ || n % 64 != 0) return;
    p_->valor(n);
    p_->cede();
}

void AvisaLectura(Sesion& s, const FuenteRegistros& fuente) {
    std::string aviso = fuente.aviso();
    if (!aviso.empty()) MsgAviso(s, aviso);
}

bool FilaEnBlanco(const Fila& fila) { return fila.texto.empty() && fila.vacia(); }

}  // namespace velmorant
