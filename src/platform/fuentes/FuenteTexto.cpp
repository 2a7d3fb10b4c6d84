#include "platform/fuentes/FuenteTexto.h"

#include <cstring>

#include "platform/Texto.h"

namespace velmorant {

namespace {

// Byte offset of character `n` (from 0) of a UTF-8 text; its size past the end.
size_t ByteDelCaracter(const std::string& t, size_t n) {
    size_t contados = 0;
    for (size_t i = 0; i < t.size(); ++i) {
        if ((static_cast<unsigned char>(t[i]) & 0xC0) == 0x80) continue;
        if (contados++ == n) return i;
    }
    return t.size();
}

}  // namespace

namespace {

bool TieneLetras(const std::string& t) {
    for (char c : t)
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) return true;
    return false;
}

// Calls `parte(texto)` for each part of `linea` as DivideLinea splits it,
// finding the separator `que` (not empty) in `donde`: the line itself, or
// for a separator with letters both folded to lower case, byte for byte.
template <class F>
void RecorrePartes(std::string_view linea, std::string_view donde, std::string_view que, F&& parte) {
    size_t desde = 0;
    if (que.size() == 1) {
        // A one-byte separator, the usual case: found by memchr.
        for (const void* p; (p = std::memchr(donde.data() + desde, que[0], donde.size() - desde)) != nullptr;) {
            size_t pos = static_cast<size_t>(static_cast<const char*>(p) - donde.data());
            parte(linea.substr(desde, pos - desde));
            desde = pos + 1;
        }
    } else {
        for (size_t p; (p = donde.find(que, desde)) != std::string_view::npos; desde = p + que.size())
            parte(linea.substr(desde, p - desde));
    }
    parte(linea.substr(desde));
}

}  // namespace

std::vector<std::string> DivideLinea(const std::string& linea, const std::string& separador) {
    if (linea.empty()) return {};
    if (separador.empty()) return {linea};
    std::vector<std::string> partes;
    auto agrega = [&](std::string_view p) { partes.emplace_back(p); };
    // Case matters only to letters: a separator without them is found in
    // the line as it stands.
    if (!TieneLetras(separador)) RecorrePartes(linea, linea, separador, agrega);
    else RecorrePartes(linea, SinMayusculasAscii(linea), SinMayusculasAscii(separador), agrega);
    return partes;
}

std::string TextoEnPosicion(const std::string& linea, int posicion, int largo) {
    if (posicion < 1 || largo < 1) return "";
    size_t inicio = ByteDelCaracter(linea, static_cast<size_t>(posicion - 1));
    if (inicio >= linea.size()) return "";
    size_t fin = ByteDelCaracter(linea, static_cast<size_t>(posicion - 1 + largo));
    return linea.substr(inicio, fin - inicio);
}

FuenteTextoDelimitado::FuenteTextoDelimitado(const std::string& ruta, std::string separador, bool quitaComillas)
    : archivo_(ruta),
      separador_(std::move(separador)),
      separadorPlegado_(SinMayusculasAscii(separador_)),
      conLetras_(TieneLetras(separador_)),
      quitaComillas_(quitaComillas),
      total_(archivo_.diagnostico().lineas >= 0 ? archivo_.diagnostico().lineas : CuentaLineasTexto(ruta)) {}

bool FuenteTextoDelimitado::siguiente(Fila& fila) {
    if (!archivo_.leeLinea(fila.texto)) return false;
    fila.numero = archivo_.numeroLinea();
    std::string_view linea = fila.texto;
    if (quitaComillas_ && linea.find('"') != std::string_view::npos) {
        sinComillas_.clear();
        for (char c : linea)
            if (c != '"') sinComillas_ += c;
        linea = sinComillas_;
    }
    // The row's cells are filled again in place, keeping their room.
    size_t n = 0;
    auto agrega = [&](std::string_view parte) {
        if (n == fila.celdas.size()) fila.celdas.emplace_back();
        fila.celdas[n++].asignaTexto(parte);
    };
    if (linea.empty()) {
    } else if (separador_.empty()) {
        agrega(linea);
    } else if (!conLetras_) {
        RecorrePartes(linea, linea, separador_, agrega);
    } else {
        plegada_ = SinMayusculasAscii(std::string(linea));
        RecorrePartes(linea, plegada_, separadorPlegado_, agrega);
    }
    fila.celdas.resize(n);
    return true;
}

FuenteTextoFijo::FuenteTextoFijo(const std::string& ruta, std::vector<std::pair<int, int>> campos)
    : archivo_(ruta),
      campos_(std::move(campos)),
      total_(archivo_.diagnostico().lineas >= 0 ? archivo_.diagnostico().lineas : CuentaLineasTexto(ruta)) {}

bool FuenteTextoFijo::siguiente(Fila& fila) {
    if (!archivo_.leeLinea(fila.texto)) return false;
    fila.numero = archivo_.numeroLinea();
    fila.celdas.clear();
    for (auto [posicion, largo] : campos_) fila.celdas.push_back(Celda::texto(TextoEnPosicion(fila.texto, posicion, largo)));
    return true;
}

}  // namespace velmorant
