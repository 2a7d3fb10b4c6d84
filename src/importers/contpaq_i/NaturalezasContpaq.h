#pragma once
// The store "NatContpaq" of the company folder: the nature ("D" debtor, "A"
// creditor) that each ContPAQ account type gives its accounts. It is made
// with its predetermined rows the first time a ContPAQ import needs it, and
// then kept: the user may change `NaturalezaModif`, the nature in force.

#include <map>
#include <string>

#include "session/Sesion.h"

namespace velmorant::contpaqi {

/// The store's path in the company folder.
std::string RutaNatContpaq(const Sesion& s);

/// Creates the store with its predetermined rows when it is missing.
void CreaBDNatContpaq(const Sesion& s);

/// The natures of a run, read once from the store.
class NaturalezasContpaq {
public:
    explicit NaturalezasContpaq(const Sesion& s);
    /// The nature in force for `tipo` (one letter). A type the store lacks
    /// is added, with the nature of the letter rule when it has one (C is
    /// debtor, J creditor) and empty otherwise; an empty nature is returned
    /// as "".
    std::string busca(const std::string& tipo);

private:
    std::string ruta_;
    std::map<std::string, std::string> natural_;
};

}  // namespace velmorant::contpaqi
