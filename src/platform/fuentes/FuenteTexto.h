#pragma once
// Record sources over text files, read line by line and decoded
// (platform/ArchivoTexto.h): each line is a row whose `texto` is the line
// and whose cells are its fields, all text cells. Positions count
// characters of the decoded line.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/ArchivoTexto.h"
#include "platform/fuentes/FuenteRegistros.h"

namespace velmorant {

/// The parts of a line split at every occurrence of `separador`, compared
/// without case; no quoting rule, no limit on the parts. An empty line has
/// no parts; an empty separator leaves the line whole.
std::vector<std::string> DivideLinea(const std::string& linea, const std::string& separador);

/// Lines whose fields are split by a delimiter text of any length.
class FuenteTextoDelimitado : public FuenteRegistros {
public:
    /// `quitaComillas`: every double quote is removed from a line before it
    /// is split.
    FuenteTextoDelimitado(const std::string& ruta, std::string separador, bool quitaComillas);

    bool siguiente(Fila& fila) override;
    const std::string& ruta() const override { return archivo_.ruta(); }
    long totalEstimado() const override { return total_; }
    std::string aviso() const override { return archivo_.aviso(); }

private:
    ArchivoTexto archivo_;
    std::string separador_;
    std::string separadorPlegado_;  // in lower case, for a separator with letters
    bool conLetras_;
    bool quitaComillas_;
    long total_;
    std::string sinComillas_, plegada_;  // room kept from line to line
};

/// Lines whose fields stand at fixed character positions: field i is the
/// text of `campos[i]` = (position from 1, length), cut to the line; a
/// position of 0 or beyond the line gives an empty text.
class FuenteTextoFijo : public FuenteRegistros {
public:
    FuenteTextoFijo(const std::string& ruta, std::vector<std::pair<int, int>> campos);

    bool siguiente(Fila& fila) override;
    const std::string& ruta() const override { return archivo_.ruta(); }
    long totalEstimado() const override { return total_; }
    std::string aviso() const override { return archivo_.aviso(); }

private:
    ArchivoTexto archivo_;
    std::vector<std::pair<int, int>> campos_;
    long total_;
};

/// The text of `linea` at character position `posicion` (from 1), `largo`
/// characters, cut at the end of the line; empty for a position below 1 or
/// past the end.
std::string TextoEnPosicion(const std::string& linea, int posicion, int largo);

}  // namespace velmorant
