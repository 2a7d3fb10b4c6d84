#pragma once
// "The program ends": thrown by the core after its message has been shown.
// Each front end catches it at the top and exits (the CLI with status 3).
// Nothing in the core calls exit().

#include <stdexcept>
#include <string>

namespace velmorant {

class ProgramaTerminado : public std::runtime_error {
public:
    explicit ProgramaTerminado(const std::string& mensajeMostrado) : std::runtime_error(mensajeMostrado) {}
};

}  // namespace velmorant
