#pragma once
// A streaming reader of XML files: the elements of a file one at a time, in
// document order, as start and end events with their attributes and line,
// without ever holding the whole tree. A year of vouchers in one file reads
// in the memory of a few elements.
//
// What it accepts: the encoding the XML declaration names (UTF-8,
// windows-1252, ISO-8859-1...), decoded to UTF-8; namespaces. What it
// refuses to do: read anything but the file itself. No external DTD, no
// external entity, nothing from the network is ever loaded; an entity
// declared outside the file stays unexpanded. A file that is not well
// formed (or breaks the namespace rules) throws ErrorLectura with the
// message "Error al leer el archivo X, línea N: ..." naming the line of the
// fault. Text, comments and processing instructions are passed over: the
// files read here keep their data in attributes.
//
// Lines count from 1. Past line 65,534 the parser's own position stands
// for an element's line, which may run a few lines ahead of it.

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorant {

/// One element event.
struct ElementoXml {
    enum class Evento { Inicio, Fin };
    Evento evento = Evento::Inicio;
    /// Local name, without the prefix ("Ctas" of "catalogocuentas:Ctas").
    std::string nombre;
    /// Namespace URI; empty when the element has none.
    std::string espacio;
    /// 0 for the root element.
    int profundidad = 0;
    /// Line of the element's start tag (where the tag ends, when it spans
    /// lines), for its end event too.
    long linea = 0;
    /// Attributes by local name, in the file's order (start events only);
    /// namespace declarations are not among them.
    std::vector<std::pair<std::string, std::string>> atributos;

    /// The value of an attribute; "" when it is missing.
    const std::string& atributo(const std::string& nombreLocal) const;
    bool tieneAtributo(const std::string& nombreLocal) const;
};

class LectorXml {
public:
    /// Opens the file; throws ErrorLectura (line 0) when it cannot be opened.
    explicit LectorXml(const std::string& ruta);
    ~LectorXml();
    LectorXml(const LectorXml&) = delete;
    LectorXml& operator=(const LectorXml&) = delete;

    /// The next start or end of an element; false at the end of the
    /// document. An empty element (`<a/>`) gives a start and then an end.
    /// Throws ErrorLectura on the first fault of the file.
    bool siguiente(ElementoXml& e);

    const std::string& ruta() const { return ruta_; }
    /// Bytes of the file read so far, and its size, for a progress bar.
    std::int64_t bytesLeidos() const;
    std::int64_t tamano() const { return tamano_; }

    /// "Error al leer el archivo X, línea N: causa" for a fault found by
    /// the caller in an element of this file.
    std::string mensajeError(long linea, const std::string& causa) const;

    struct Estado;

private:
    std::string ruta_;
    std::int64_t tamano_ = 0;
    std::unique_ptr<Estado> e_;

    [[noreturn]] void falla(long linea, const std::string& causa) const;
};

}  // namespace velmorant
