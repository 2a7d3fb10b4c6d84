#pragma once
// The cause of an engine or file-system error in the user's words, for the
// messages that would otherwise show the engine's English text alone: a
// full disk, a read-only folder, a file held by another program.

#include <exception>
#include <string>

namespace velmorant {

/// One Spanish sentence (with a trailing blank) naming what went wrong, or
/// empty when the error says nothing a user could act on.
std::string CausaDelError(const std::exception& error);

}  // namespace velmorant
