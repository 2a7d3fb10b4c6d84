#pragma once
// The compound document container of the older Office files (an .xls, or a
// password-protected .xlsx): a small file system of sectors and streams
// inside one file. Only what the workbook source needs: list the streams
// and read one of them whole. Every sector number and size is checked, so a
// damaged or hostile file gives an error, never a read out of bounds or an
// endless chain.

#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant {

/// A compound document that cannot be read; `what()` says why, briefly.
class ErrorDocumentoCompuesto : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class DocumentoCompuesto {
public:
    /// True when `inicio` (the first bytes of a file) carries the signature.
    static bool EsDocumentoCompuesto(std::string_view inicio);

    /// A new container, in the plainest form, holding one stream: 512-byte
    /// sectors, the stream (padded to 4096 bytes, so that it needs no small
    /// sectors) in one run of sectors after the tables and the directory.
    static void EscribeConUnFlujo(std::ostream& salida, std::string_view nombre, std::string_view flujo);

    /// Reads the container's structure from the whole file in `datos`,
    /// which must outlive this object. Throws ErrorDocumentoCompuesto.
    explicit DocumentoCompuesto(std::string_view datos);

    /// True when a stream of that name (ASCII, case ignored) exists at any
    /// level.
    bool tiene(std::string_view nombre) const;
    /// The stream's bytes; throws ErrorDocumentoCompuesto when it does not
    /// exist, its chain is broken or it is longer than `limite`.
    std::string lee(std::string_view nombre, size_t limite) const;

private:
    struct Entrada {
        std::string nombre;  // non-ASCII characters as '?'
        int tipo = 0;        // 1 storage, 2 stream, 5 root
        uint32_t inicio = 0;
        uint64_t tamanio = 0;
    };

    std::string_view datos_;
    uint32_t tamSector_ = 512;
    uint32_t sectores_ = 0;  // whole sectors present after the header
    uint32_t corteMini_ = 4096;
    std::vector<uint32_t> fat_, miniFat_;
    std::vector<Entrada> entradas_;
    std::string miniFlujo_;

    std::vector<uint32_t> cadena(uint32_t inicio, const std::vector<uint32_t>& tabla, uint64_t limite) const;
    std::string_view sector(uint32_t n) const;
    std::string leeCadena(uint32_t inicio, uint64_t tamanio) const;
    const Entrada* busca(std::string_view nombre) const;
};

}  // namespace velmorant
