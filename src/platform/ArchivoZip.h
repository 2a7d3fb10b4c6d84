#pragma once
// Zip archives that a client's system delivers in place of its files: they
// are extracted into a work folder before a reader opens what they hold.
// Entry names are read as the archive stores them and decoded here: UTF-8
// when the entry says so (general-purpose flag bit 11), the DOS code page
// 850 otherwise (it agrees with 437 on every lower-case Spanish letter and
// also has the accented capitals). An archive with an entry that would be
// written outside the work folder (an absolute path, a ".." step, a
// symbolic link) is refused whole, before anything is written.

#include <string>
#include <string_view>
#include <vector>

namespace velmorant {

/// UTF-8 text of an entry name read raw; `utf8` when the entry's flag says
/// its name is UTF-8 already. Back slashes become "/".
std::string DecodificaNombreZip(std::string_view crudo, bool utf8);

/// Extracts every entry of the archive `archivo` into the existing folder
/// `carpeta`, keeping the archive's sub-folders, and returns the paths of
/// the files written, in the archive's order. Throws ErrorLectura naming
/// the archive when it cannot be read or holds an entry that would land
/// outside `carpeta`; nothing is written then.
std::vector<std::string> ExtraeZip(const std::string& archivo, const std::string& carpeta);

}  // namespace velmorant
