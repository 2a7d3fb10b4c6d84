#pragma once
// The register of the importers this program has. Adding an importer is one
// folder under importers/ with its readers and a function that returns its
// descriptor, plus one line in Registro.cpp; the link catalogue's
// `Liberado`, the desktop forms and the command line follow from it.

#include <set>
#include <vector>

namespace velmorant {

struct DescriptorImportador;

/// The descriptors of every importer, in link order (Registro.cpp).
std::vector<DescriptorImportador> DescriptoresRegistrados();

/// The links whose importer is here: exactly the released links.
const std::set<int>& ImportadoresDisponibles();

}  // namespace velmorant
