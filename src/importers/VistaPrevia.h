#pragma once
// The preview grid of a client's file in a layout form: the names of its
// columns and the texts of its rows, as the importer would cut them.

#include <string>
#include <vector>

namespace velmorant {

struct VistaPrevia {
    std::vector<std::string> columnas;
    std::vector<std::vector<std::string>> filas;  // an empty row stands for a line of another shape
};

}  // namespace velmorant
