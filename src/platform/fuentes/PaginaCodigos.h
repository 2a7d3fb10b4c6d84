#pragma once
// The code pages of dBase and FoxPro tables: the byte of the header that
// names the table's language driver, and a decoder from that code page to
// UTF-8. Windows-1252, the reference code page, is decoded by the text
// helpers' own table; the MS-DOS, Windows and Macintosh pages by the
// toolkit's codecs (ICU), read once into a table of 128 entries for the
// one-byte pages.

#include <array>
#include <string>
#include <string_view>

namespace velmorant {

/// The code page named by the language-driver byte of a table's header
/// (byte 29): 437, 850, 1252, ... A byte of 0 (none recorded) or one not
/// known gives 1252.
int PaginaCodigosDeMarca(unsigned char marca);

/// Decodes the bytes of one code page to UTF-8. Bytes below 128 are ASCII
/// in every page this reads. A page the codecs do not know decodes as 1252.
class DecodificadorPaginaCodigos {
public:
    explicit DecodificadorPaginaCodigos(int paginaCodigos = 1252);

    std::string decodifica(std::string_view bytes) const;
    /// The page actually decoded (1252 when the one asked for is unknown).
    int pagina() const { return pagina_; }

private:
    int pagina_ = 1252;
    bool tabla_ = false;                  // a one-byte page other than 1252
    std::array<std::string, 128> altos_;  // UTF-8 of bytes 0x80 to 0xFF
    std::string codecMultibyte_;          // codec of a page of two-byte characters
};

}  // namespace velmorant
