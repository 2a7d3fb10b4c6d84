#pragma once
// Text files of the sources, read line by line and decoded to UTF-8.
// The encoding is decided once per file: a file that starts with the UTF-8
// byte order mark, or that is valid UTF-8 and holds bytes above 127, is
// UTF-8; any other file is Windows-1252, the reference code page.
// A line ends at CR LF, CR or LF; a last line without an end counts, an
// end at the very end of the file opens no further line.

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant {

enum class CodificacionTexto { Windows1252, Utf8 };

/// The encoding of the file, by the rule above. Throws ErrorLectura when the
/// file cannot be opened.
CodificacionTexto DetectaCodificacion(const std::string& ruta);

/// UTF-8 text of Windows-1252 bytes. The five bytes that code page leaves
/// undefined map to the control characters of the same number.
std::string DecodificaWindows1252(std::string_view bytes);

/// True when `bytes` is well-formed UTF-8 (no overlong forms, no surrogates).
bool EsUtf8Valido(std::string_view bytes);

/// A text file opened for reading, giving decoded lines with their numbers.
class ArchivoTexto {
public:
    /// Opens the file and decides its encoding. Throws ErrorLectura naming
    /// the file when it cannot be opened.
    explicit ArchivoTexto(const std::string& ruta);
    ~ArchivoTexto();
    ArchivoTexto(const ArchivoTexto&) = delete;
    ArchivoTexto& operator=(const ArchivoTexto&) = delete;

    /// The next line, decoded, without its end; false at the end of the file.
    bool leeLinea(std::string& linea);
    /// Number (from 1) of the line last returned; 0 before the first.
    long numeroLinea() const { return numero_; }
    CodificacionTexto codificacion() const { return codificacion_; }
    const std::string& ruta() const { return ruta_; }

private:
    std::string ruta_;
    std::FILE* archivo_ = nullptr;
    CodificacionTexto codificacion_ = CodificacionTexto::Windows1252;
    std::vector<char> bufer_;
    size_t inicio_ = 0, fin_ = 0;
    bool finArchivo_ = false;
    bool saltaLF_ = false;  // the last line ended in CR: a LF right after belongs to it
    long numero_ = 0;
    bool llena();
};

/// Lines of the file by the rule above; 0 for an empty or missing file.
long CuentaLineasTexto(const std::string& ruta);

}  // namespace velmorant
