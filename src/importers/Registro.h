#pragma once
// Which links have an importer in this program. This one table decides the
// `Liberado` flag of the link catalogue: a link is released exactly when its
// importer is here.

#include <set>

namespace velmorant {

const std::set<int>& ImportadoresDisponibles();

}  // namespace velmorant
