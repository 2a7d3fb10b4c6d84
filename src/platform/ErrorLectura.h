#pragma once
// A source file that cannot be read: names the file and the line, and carries
// the message already composed in the system's words.

#include <stdexcept>
#include <string>

namespace velmorant {

class ErrorLectura : public std::runtime_error {
public:
    ErrorLectura(const std::string& mensaje, std::string archivo, long linea)
        : std::runtime_error(mensaje), archivo_(std::move(archivo)), linea_(linea) {}
    const std::string& archivo() const { return archivo_; }
    long linea() const { return linea_; }

private:
    std::string archivo_;
    long linea_;
};

}  // namespace velmorant
