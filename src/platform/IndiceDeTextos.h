#pragma once
// Texts numbered in order of arrival, found again by one flat table of their
// hashes, open addressed: for keys looked up once per row read (a voucher's
// identity, a walk's pairing keys). The node-based map kept every key in a
// node of its own and re-linked all of them at each growth; here a search
// reads one cell and, when the hash matches, the key.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorant {

class IndiceDeTextos {
public:
    static constexpr size_t npos = static_cast<size_t>(-1);

    /// `previstos`: the texts expected, so that the table need not grow.
    explicit IndiceDeTextos(size_t previstos = 0) {
        size_t celdas = 16;
        while (celdas < 2 * previstos) celdas *= 2;
        celdas_.assign(celdas, kVacia);
        textos_.reserve(previstos);
        hashes_.reserve(previstos);
    }
    size_t size() const { return textos_.size(); }
    const std::string& texto(size_t n) const { return textos_[n]; }

    /// The number of `texto`, given it (the next number) if it is new.
    size_t agrega(std::string_view texto) {
        const size_t h = std::hash<std::string_view>{}(texto);
        size_t i = celda(texto, h);
        if (celdas_[i] != kVacia) return celdas_[i];
        if (2 * (textos_.size() + 1) > celdas_.size()) {
            crece();
            i = celda(texto, h);
        }
        celdas_[i] = static_cast<std::uint32_t>(textos_.size());
        textos_.emplace_back(texto);
        hashes_.push_back(h);
        return celdas_[i];
    }
    /// The number of `texto`; npos when it has none.
    size_t busca(std::string_view texto) const {
        const size_t i = celda(texto, std::hash<std::string_view>{}(texto));
        return celdas_[i] == kVacia ? npos : celdas_[i];
    }

private:
    static constexpr std::uint32_t kVacia = UINT32_MAX;
    std::vector<std::uint32_t> celdas_;  // a text's number, or kVacia; never more than half full
    std::vector<std::string> textos_;
    std::vector<size_t> hashes_;

    /// The cell of `texto`, or the empty one where it would go.
    size_t celda(std::string_view texto, size_t h) const {
        const size_t mascara = celdas_.size() - 1;
        for (size_t i = h & mascara;; i = (i + 1) & mascara) {
            const std::uint32_t n = celdas_[i];
            if (n == kVacia || (hashes_[n] == h && textos_[n] == texto)) return i;
        }
    }
    void crece() {
        celdas_.assign(celdas_.size() * 2, kVacia);
        const size_t mascara = celdas_.size() - 1;
        for (size_t n = 0; n < textos_.size(); ++n) {
            size_t i = hashes_[n] & mascara;
            while (celdas_[i] != kVacia) i = (i + 1) & mascara;
            celdas_[i] = static_cast<std::uint32_t>(n);
        }
    }
};

}  // namespace velmorant
