#pragma once
// A process that dies at a chosen point of the engine's commit, as a kill
// or a power cut would leave it. Used only in a forked child: the child
// installs the trap, writes, and is gone the moment the engine deletes a
// file whose name holds the given text (its journal "-journal", a
// super-journal "-mj"), before the commit could finish.

#include <functional>
#include <string>

namespace velmorant::prueba {

/// Runs `trabajo` in a child process that dies (exit status 0) when the
/// engine deletes a file whose name contains `patron`. Returns true when the
/// child died there; false when it ended any other way.
bool MuereAlBorrar(const std::string& patron, const std::function<void()>& trabajo);

}  // namespace velmorant::prueba
