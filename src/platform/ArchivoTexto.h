#pragma once
// Text files of the sources, read line by line and decoded to UTF-8.
//
// The encoding is decided once per file, on the evidence of the whole file:
//  - a byte order mark wins: UTF-8 (EF BB BF), UTF-16 little-endian (FF FE)
//    or big-endian (FE FF);
//  - otherwise the bytes above 127 are weighed: those that form well-made
//    UTF-8 sequences against those that do not. With no stray byte the file
//    is UTF-8 (or plain ASCII); with no sequence it is Windows-1252, the
//    reference code page. When both are there the evidence is mixed: the
//    larger side wins, and the file carries a notice that says what was
//    chosen. Read as UTF-8, a mixed file keeps its sequences and reads each
//    stray byte as Windows-1252, so one bad byte does not garble the rest.
// A NUL byte (padding of some exports) is left out of its line, so that it
// cannot end a field early where the text is stored or shown; the notice
// counts them and names the first line.
// A line ends at CR LF, CR or LF; a last line without an end counts, an
// end at the very end of the file opens no further line.

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant {

enum class CodificacionTexto { Windows1252, Utf8, Utf16LE, Utf16BE };

/// What the whole file shows, and the decision taken on it.
struct DiagnosticoTexto {
    CodificacionTexto codificacion = CodificacionTexto::Windows1252;
    bool conMarca = false;        // the decision came from a byte order mark
    long secuenciasUtf8 = 0;      // well-made UTF-8 sequences of 2 to 4 bytes
    long bytesSueltos = 0;        // bytes above 127 that are in no such sequence
    long nulos = 0;               // NUL bytes (not counted in UTF-16)
    long lineaPrimerNulo = 0;     // line (from 1) of the first one
    long lineas = -1;             // CuentaLineasTexto of the file; -1 for UTF-16, not counted here
    bool mixta() const { return secuenciasUtf8 > 0 && bytesSueltos > 0; }
};

/// Reads the whole file and decides its encoding by the rules above. Throws
/// ErrorLectura when the file cannot be opened.
DiagnosticoTexto AnalizaTexto(const std::string& ruta);

/// The encoding AnalizaTexto decides.
CodificacionTexto DetectaCodificacion(const std::string& ruta);

/// What the user should be told about the reading of the file `ruta`, in
/// the system's words: a mixed encoding and the choice made, NUL bytes left
/// out. Empty when there is nothing to say.
std::string AvisoLecturaTexto(const std::string& ruta, const DiagnosticoTexto& d);

/// UTF-8 text of Windows-1252 bytes. The five bytes that code page leaves
/// undefined map to the control characters of the same number.
std::string DecodificaWindows1252(std::string_view bytes);

/// UTF-8 text of bytes that are mostly UTF-8: well-made sequences are kept,
/// any other byte above 127 is read as Windows-1252.
std::string DecodificaUtf8Mixto(std::string_view bytes);

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

    /// The next line, decoded, without its end and without NUL bytes; false
    /// at the end of the file.
    bool leeLinea(std::string& linea);
    /// Number (from 1) of the line last returned; 0 before the first.
    long numeroLinea() const { return numero_; }
    CodificacionTexto codificacion() const { return diagnostico_.codificacion; }
    const DiagnosticoTexto& diagnostico() const { return diagnostico_; }
    /// AvisoLecturaTexto of this file: to be shown before its rows are used.
    std::string aviso() const { return AvisoLecturaTexto(ruta_, diagnostico_); }
    const std::string& ruta() const { return ruta_; }

private:
    std::string ruta_;
    std::FILE* archivo_ = nullptr;
    DiagnosticoTexto diagnostico_;
    std::vector<char> bufer_;    // bytes of the text, UTF-16 already made UTF-8
    std::string crudo_;          // UTF-16: bytes read and not yet converted
    std::string pendiente_;      // a line cut by the end of a block, gathered
    char32_t altoPendiente_ = 0; // UTF-16: a high surrogate waiting for its pair
    size_t inicio_ = 0, fin_ = 0;
    bool finArchivo_ = false;
    bool saltaLF_ = false;  // the last line ended in CR: a LF right after belongs to it
    long numero_ = 0;
    bool llena();
    bool esUtf16() const;
};

/// Lines of the file by the rule above; 0 for an empty or missing file.
long CuentaLineasTexto(const std::string& ruta);

}  // namespace velmorant
