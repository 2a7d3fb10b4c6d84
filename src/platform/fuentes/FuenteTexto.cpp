#include "platform/fuentes/FuenteTexto.h"

namespace velmorant {

namespace {

std::string Minusculas(std::string t) {
    for (char& c : t)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return t;
}

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

std::vector<std::string> DivideLinea(const std::string& linea, const std::string& separador) {
    if (linea.empty()) return {};
    if (separador.empty()) return {linea};
    const std::string donde = Minusculas(linea), que = Minusculas(separador);
    std::vector<std::string> partes;
    size_t desde = 0;
    for (size_t p; (p = donde.find(que, desde)) != std::string::npos; desde = p + que.size())
        partes.push_back(linea.substr(desde, p - desde));
    partes.push_back(linea.substr(desde));
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
    : archivo_(ruta), separador_(std::move(separador)), quitaComillas_(quitaComillas), total_(CuentaLineasTexto(ruta)) {}

bool FuenteTextoDelimitado::siguiente(Fila& fila) {
    if (!archivo_.leeLinea(fila.texto)) return false;
    fila.numero = archivo_.numeroLinea();
    fila.celdas.clear();
    std::string linea = fila.texto;
    if (quitaComillas_ && linea.find('"') != std::string::npos) {
        std::string sin;
        for (char c : linea)
            if (c != '"') sin += c;
        linea = std::move(sin);
    }
    for (auto& parte : DivideLinea(linea, separador_)) fila.celdas.push_back(Celda::texto(std::move(parte)));
    return true;
}

FuenteTextoFijo::FuenteTextoFijo(const std::string& ruta, std::vector<std::pair<int, int>> campos)
    : archivo_(ruta), campos_(std::move(campos)), total_(CuentaLineasTexto(ruta)) {}

bool FuenteTextoFijo::siguiente(Fila& fila) {
    if (!archivo_.leeLinea(fila.texto)) return false;
    fila.numero = archivo_.numeroLinea();
    fila.celdas.clear();
    for (auto [posicion, largo] : campos_) fila.celdas.push_back(Celda::texto(TextoEnPosicion(fila.texto, posicion, largo)));
    return true;
}

}  // namespace velmorant
