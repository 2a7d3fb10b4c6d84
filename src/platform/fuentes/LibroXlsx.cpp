// The .xlsx reader: a zip package of XML parts. The small parts (the
// workbook, its relationships, the styles) are read whole; the shared
// strings and the sheet are streamed element by element (one <si>, one
// <row> at a time), so that memory follows the largest row, not the file,
// and no size written in the file (a dimension, an entry's stated length)
// is trusted.

#include <zip.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <pugixml.hpp>

#include "platform/ErrorLectura.h"
#include "platform/Numeros.h"
#include "platform/fuentes/LibroInterno.h"

namespace velmorant::libro {

namespace {

constexpr zip_uint64_t kMaxParteEntera = 32u << 20;  // workbook, relationships, styles
constexpr zip_uint64_t kMaxCadenas = 512u << 20;     // the shared strings part, streamed
constexpr size_t kMaxTextoCadenas = 256u << 20;      // their text, held in memory
constexpr size_t kMaxNumeroCadenas = 16u << 20;
constexpr zip_uint64_t kMaxHoja = 4ull << 30;  // a sheet part, streamed
constexpr size_t kMaxElemento = 32u << 20;     // one row, one shared string
constexpr size_t kBloque = 1u << 16;

const char kDanado[] = "el archivo está dañado o incompleto";

/// A name without its namespace prefix: "x:row" → "row".
std::string_view Local(std::string_view nombre) {
    size_t p = nombre.find(':');
    return p == std::string_view::npos ? nombre : nombre.substr(p + 1);
}

pugi::xml_node Hijo(pugi::xml_node n, std::string_view local) {
    for (auto h : n.children())
        if (h.type() == pugi::node_element && Local(h.name()) == local) return h;
    return {};
}

pugi::xml_attribute Atributo(pugi::xml_node n, std::string_view local) {
    for (auto a : n.attributes())
        if (Local(a.name()) == local) return a;
    return {};
}

void AgregaUtf8(std::string& r, unsigned c) {
    if (c < 0x80) {
        r += static_cast<char>(c);
    } else if (c < 0x800) {
        r += static_cast<char>(0xC0 | (c >> 6));
        r += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        r += static_cast<char>(0xE0 | (c >> 12));
        r += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        r += static_cast<char>(0x80 | (c & 0x3F));
    }
}

// Characters that XML cannot carry are written "_xHHHH_" in a workbook's
// texts ("_x000D_" for a carriage return); "_x005F_" escapes the "_".
std::string DesescapaCaracteres(std::string t) {
    if (t.find("_x") == std::string::npos) return t;
    std::string r;
    r.reserve(t.size());
    for (size_t i = 0; i < t.size(); ++i) {
        if (t[i] == '_' && i + 6 < t.size() && t[i + 1] == 'x' && t[i + 6] == '_' &&
            std::all_of(t.begin() + static_cast<long>(i) + 2, t.begin() + static_cast<long>(i) + 6,
                        [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; })) {
            unsigned c = static_cast<unsigned>(std::stoul(t.substr(i + 2, 4), nullptr, 16));
            if (c >= 0xD800 && c <= 0xDFFF) c = '?';
            AgregaUtf8(r, c);
            i += 6;
        } else {
            r += t[i];
        }
    }
    return r;
}

// The text of a shared or inline string: its own <t>, or its runs' <t>
// joined (rich text); phonetic runs <rPh> are left out.
std::string TextoDeCadena(pugi::xml_node n) {
    std::string r;
    for (auto h : n.children()) {
        std::string_view nombre = Local(h.name());
        if (nombre == "t") {
            r += h.child_value();
        } else if (nombre == "r") {
            if (auto t = Hijo(h, "t")) r += t.child_value();
        }
    }
    return DesescapaCaracteres(std::move(r));
}

/// A path inside the package from a relationship's target: absolute when
/// it starts with "/", else relative to the folder of the part that holds
/// the relationship; "." and ".." resolved.
std::string ResuelveDestino(const std::string& carpeta, std::string destino) {
    std::replace(destino.begin(), destino.end(), '\\', '/');
    std::string completo = !destino.empty() && destino[0] == '/' ? destino.substr(1) : carpeta + destino;
    std::vector<std::string> partes;
    size_t i = 0;
    while (i <= completo.size()) {
        size_t j = completo.find('/', i);
        if (j == std::string::npos) j = completo.size();
        std::string p = completo.substr(i, j - i);
        if (p == "..") {
            if (!partes.empty()) partes.pop_back();
        } else if (!p.empty() && p != ".") {
            partes.push_back(p);
        }
        i = j + 1;
    }
    std::string r;
    for (const auto& p : partes) r += (r.empty() ? "" : "/") + p;
    return r;
}

std::string Carpeta(const std::string& parte) {
    size_t p = parte.rfind('/');
    return p == std::string::npos ? "" : parte.substr(0, p + 1);
}

/// The last segment of a relationship type: ".../officeDocument" → "officeDocument".
std::string_view TipoCorto(std::string_view tipo) {
    size_t p = tipo.rfind('/');
    return p == std::string_view::npos ? tipo : tipo.substr(p + 1);
}

/// One entry of the package, read piece by piece, never beyond `limite`.
class EntradaZip {
public:
    EntradaZip(zip_t* zip, zip_int64_t indice, const std::string& ruta, std::string parte, zip_uint64_t limite)
        : ruta_(ruta), parte_(std::move(parte)), limite_(limite) {
        archivo_ = zip_fopen_index(zip, static_cast<zip_uint64_t>(indice), 0);
        if (!archivo_) {
            int codigo = zip_error_code_zip(zip_get_error(zip));
            if (codigo == ZIP_ER_NOPASSWD || codigo == ZIP_ER_WRONGPASSWD || codigo == ZIP_ER_ENCRNOTSUPP)
                FallaLibro(ruta_, "está protegido con contraseña");
            FallaLibro(ruta_, std::string(kDanado) + " (" + parte_ + ")");
        }
    }
    ~EntradaZip() { zip_fclose(archivo_); }
    EntradaZip(const EntradaZip&) = delete;
    EntradaZip& operator=(const EntradaZip&) = delete;

    /// Appends the next piece to `b`; false at the end of the entry.
    bool lee(std::string& b) {
        if (fin_) return false;
        size_t antes = b.size();
        b.resize(antes + kBloque);
        zip_int64_t n = zip_fread(archivo_, b.data() + antes, kBloque);
        if (n < 0) {
            b.resize(antes);
            FallaLibro(ruta_, std::string(kDanado) + " (" + parte_ + ")");
        }
        b.resize(antes + static_cast<size_t>(n));
        leidos_ += static_cast<zip_uint64_t>(n);
        if (leidos_ > limite_) FallaLibro(ruta_, "la parte " + parte_ + " es demasiado grande");
        if (n == 0) fin_ = true;
        return n > 0;
    }
    const std::string& parte() const { return parte_; }
    const std::string& ruta() const { return ruta_; }

private:
    zip_file_t* archivo_ = nullptr;
    std::string ruta_, parte_;
    zip_uint64_t limite_, leidos_ = 0;
    bool fin_ = false;
};

/// Cuts an XML part into the elements named `elemento` (by local name),
/// inside the element `contenedor` when one is named, each handed out as
/// its own text for a small DOM. Comments, processing instructions, CDATA
/// and a document type are stepped over, never expanded.
class DivisorXml {
public:
    DivisorXml(std::unique_ptr<EntradaZip> entrada, std::string contenedor, std::string elemento)
        : entrada_(std::move(entrada)),
          contenedor_(std::move(contenedor)),
          elemento_(std::move(elemento)),
          dentro_(contenedor_.empty()) {}

    /// The next element's text; false at the end. The text stays valid
    /// until the next call.
    bool siguiente(std::string_view& texto) {
        while (!terminado_) {
            b_.erase(0, pos_);
            pos_ = 0;
            size_t p = b_.find('<');
            if (p == std::string::npos) {
                b_.clear();
                if (!mas()) terminado_ = true;
                continue;
            }
            b_.erase(0, p);
            asegura(9);
            std::string_view v = b_;
            if (v.substr(0, 2) == "<?") {
                pos_ = hasta("?>", 2) + 2;
            } else if (v.substr(0, 4) == "<!--") {
                pos_ = hasta("-->", 4) + 3;
            } else if (v.substr(0, 9) == "<![CDATA[") {
                pos_ = hasta("]]>", 9) + 3;
            } else if (v.substr(0, 2) == "<!") {
                size_t q = finDeEtiqueta(2, true);
                pos_ = q + 1;
            } else if (v.substr(0, 2) == "</") {
                size_t q = hasta(">", 2);
                std::string nombre = b_.substr(2, q - 2);
                while (!nombre.empty() && std::isspace(static_cast<unsigned char>(nombre.back()))) nombre.pop_back();
                if (!contenedor_.empty() && Local(nombre) == contenedor_) terminado_ = true;
                pos_ = q + 1;
            } else {
                size_t q = finDeEtiqueta(1, false);
                size_t finNombre = b_.find_first_of(" \t\r\n/>", 1);
                std::string nombre = b_.substr(1, finNombre - 1);
                bool cerrada = b_[q - 1] == '/';
                std::string_view local = Local(nombre);
                if (!dentro_ && local == contenedor_) {
                    dentro_ = true;
                    if (cerrada) terminado_ = true;
                    pos_ = q + 1;
                } else if (dentro_ && local == elemento_) {
                    pos_ = cerrada ? q + 1 : finDeElemento(nombre, q + 1);
                    texto = std::string_view(b_).substr(0, pos_);
                    return true;
                } else {
                    pos_ = q + 1;
                }
            }
        }
        return false;
    }

private:
    std::unique_ptr<EntradaZip> entrada_;
    std::string contenedor_, elemento_;
    bool dentro_, terminado_ = false;
    std::string b_;
    size_t pos_ = 0;

    bool mas() {
        if (b_.size() > kMaxElemento)
            FallaLibro(entrada_->ruta(), "un elemento de la parte " + entrada_->parte() + " es demasiado grande");
        return entrada_->lee(b_);
    }
    void asegura(size_t n) {
        while (b_.size() < n && mas()) {
        }
    }
    [[noreturn]] void incompleto() {
        FallaLibro(entrada_->ruta(), std::string(kDanado) + " (" + entrada_->parte() + " termina a la mitad)");
    }
    /// Where `patron` starts, searching from `desde`, reading as needed.
    size_t hasta(std::string_view patron, size_t desde) {
        for (;;) {
            size_t p = b_.find(patron, desde);
            if (p != std::string::npos) return p;
            if (b_.size() >= patron.size()) desde = std::max(desde, b_.size() - patron.size() + 1);
            if (!mas()) incompleto();
        }
    }
    /// The ">" that closes the tag opened at 0, quoted values stepped
    /// over; with `corchetes`, an internal subset "[...]" too.
    size_t finDeEtiqueta(size_t desde, bool corchetes) {
        char comilla = 0;
        int nivel = 0;
        for (size_t i = desde;; ++i) {
            if (i >= b_.size() && !mas()) incompleto();
            char c = b_[i];
            if (comilla) {
                if (c == comilla) comilla = 0;
            } else if (c == '"' || c == '\'') {
                comilla = c;
            } else if (corchetes && c == '[') {
                ++nivel;
            } else if (corchetes && c == ']') {
                --nivel;
            } else if (c == '>' && nivel <= 0) {
                return i;
            }
        }
    }
    /// The end (one past ">") of the element named `nombre` whose content
    /// starts at `desde`. The elements cut here never nest in themselves.
    size_t finDeElemento(const std::string& nombre, size_t desde) {
        const std::string cierre = "</" + nombre;
        for (;;) {
            size_t p = hasta(cierre, desde);
            size_t k = p + cierre.size();
            asegura(k + 1);
            while (k < b_.size() && std::isspace(static_cast<unsigned char>(b_[k]))) {
                ++k;
                asegura(k + 1);
            }
            if (k < b_.size() && b_[k] == '>') return k + 1;
            desde = p + 1;
        }
    }
};

class LibroXlsx;

class LectorHojaXlsx : public LectorHoja {
public:
    LectorHojaXlsx(const LibroXlsx& libro, std::unique_ptr<EntradaZip> entrada)
        : libro_(libro), divisor_(std::move(entrada), "sheetData", "row") {}
    bool siguiente(FilaHoja& fila) override;

private:
    const LibroXlsx& libro_;
    DivisorXml divisor_;
    long ultima_ = 0;
};

class LibroXlsx : public Libro {
public:
    explicit LibroXlsx(const std::string& ruta) : ruta_(ruta) {
        int error = 0;
        zip_ = zip_open(ruta.c_str(), ZIP_RDONLY, &error);
        if (!zip_) {
            if (error == ZIP_ER_OPEN || error == ZIP_ER_NOENT)
                throw ErrorLectura("No se pudo abrir el archivo " + ruta, ruta, 0);
            FallaLibro(ruta, kDanado);
        }
        try {
            abre();
        } catch (...) {
            zip_discard(zip_);
            throw;
        }
    }
    ~LibroXlsx() override { zip_discard(zip_); }

    FormatoLibro formato() const override { return FormatoLibro::Xlsx; }
    const std::vector<std::string>& hojas() const override { return hojas_; }
    std::unique_ptr<LectorHoja> abreHoja(size_t indice) override {
        auto entrada = abreParte(partesHoja_.at(indice), kMaxHoja);
        if (!entrada) FallaLibro(ruta_, std::string(kDanado) + " (falta la hoja " + partesHoja_[indice] + ")");
        return std::make_unique<LectorHojaXlsx>(*this, std::move(entrada));
    }

    const std::string& ruta() const { return ruta_; }
    CeldaHoja decodifica(pugi::xml_node c, long fila, int columna) const;

private:
    std::string ruta_;
    zip_t* zip_ = nullptr;
    std::vector<std::string> hojas_, partesHoja_;
    std::string textoCadenas_;
    std::vector<uint32_t> inicioCadenas_;  // one past the last is textoCadenas_.size()
    std::vector<bool> estiloFecha_;
    bool sistema1904_ = false;

    std::unique_ptr<EntradaZip> abreParte(const std::string& parte, zip_uint64_t limite) const {
        zip_int64_t i = zip_name_locate(zip_, parte.c_str(), ZIP_FL_NOCASE);
        if (i < 0) return nullptr;
        return std::make_unique<EntradaZip>(zip_, i, ruta_, parte, limite);
    }

    /// A small part as a DOM; false when the part does not exist.
    bool leeXml(const std::string& parte, pugi::xml_document& doc) const {
        auto e = abreParte(parte, kMaxParteEntera);
        if (!e) return false;
        std::string texto;
        while (e->lee(texto)) {
        }
        if (!doc.load_buffer(texto.data(), texto.size(), pugi::parse_default, pugi::encoding_auto))
            FallaLibro(ruta_, std::string(kDanado) + " (" + parte + " no es XML válido)");
        return true;
    }

    /// A part's relationships: id → (short type, resolved target).
    std::map<std::string, std::pair<std::string, std::string>> relaciones(const std::string& parte) const {
        std::string carpeta = Carpeta(parte);
        std::string nombre = parte.substr(carpeta.size());
        pugi::xml_document doc;
        std::map<std::string, std::pair<std::string, std::string>> r;
        if (!leeXml(carpeta + "_rels/" + nombre + ".rels", doc)) return r;
        for (auto rel : Hijo(doc, "Relationships").children()) {
            if (Local(rel.name()) != "Relationship") continue;
            if (std::string_view(rel.attribute("TargetMode").value()) == "External") continue;
            r[rel.attribute("Id").value()] = {std::string(TipoCorto(rel.attribute("Type").value())),
                                              ResuelveDestino(carpeta, rel.attribute("Target").value())};
        }
        return r;
    }

    void abre() {
        std::string parteLibro = "xl/workbook.xml";
        for (const auto& [id, rel] : relaciones(""))
            if (rel.first == "officeDocument") parteLibro = rel.second;
        if (parteLibro.size() > 4 && parteLibro.compare(parteLibro.size() - 4, 4, ".bin") == 0)
            FallaLibro(ruta_, "es un libro binario (.xlsb); guárdelo como libro .xlsx y vuelva a intentarlo");
        pugi::xml_document libro;
        if (!leeXml(parteLibro, libro)) FallaLibro(ruta_, "no es un libro de Excel (.xlsx o .xls)");
        auto raiz = Hijo(libro, "workbook");
        std::string_view s1904 = Atributo(Hijo(raiz, "workbookPr"), "date1904").value();
        sistema1904_ = s1904 == "1" || s1904 == "true" || s1904 == "on";

        auto rels = relaciones(parteLibro);
        for (auto hoja : Hijo(raiz, "sheets").children()) {
            if (Local(hoja.name()) != "sheet") continue;
            auto rel = rels.find(Atributo(hoja, "id").value());
            if (rel == rels.end() || rel->second.first != "worksheet") continue;  // chart and macro sheets
            hojas_.push_back(hoja.attribute("name").value());
            partesHoja_.push_back(rel->second.second);
        }
        for (const auto& [id, rel] : rels) {
            if (rel.first == "sharedStrings") leeCadenas(rel.second);
            if (rel.first == "styles") leeEstilos(rel.second);
        }
    }

    void leeCadenas(const std::string& parte) {
        auto entrada = abreParte(parte, kMaxCadenas);
        if (!entrada) return;
        DivisorXml divisor(std::move(entrada), "", "si");
        std::string_view texto;
        while (divisor.siguiente(texto)) {
            pugi::xml_document doc;
            if (!doc.load_buffer(texto.data(), texto.size(), pugi::parse_default | pugi::parse_ws_pcdata_single,
                                 pugi::encoding_utf8))
                FallaLibro(ruta_, std::string(kDanado) + " (" + parte + " no es XML válido)");
            if (inicioCadenas_.size() >= kMaxNumeroCadenas) FallaLibro(ruta_, "tiene demasiados textos distintos");
            inicioCadenas_.push_back(static_cast<uint32_t>(textoCadenas_.size()));
            textoCadenas_ += TextoDeCadena(doc.first_child());
            if (textoCadenas_.size() > kMaxTextoCadenas) FallaLibro(ruta_, "sus textos son demasiado grandes");
        }
    }

    void leeEstilos(const std::string& parte) {
        pugi::xml_document doc;
        if (!leeXml(parte, doc)) return;
        auto raiz = Hijo(doc, "styleSheet");
        std::map<long, bool> propios;  // formats the workbook defines, by id
        for (auto f : Hijo(raiz, "numFmts").children())
            if (Local(f.name()) == "numFmt")
                propios[f.attribute("numFmtId").as_int(-1)] = EsFormatoFecha(f.attribute("formatCode").value());
        for (auto xf : Hijo(raiz, "cellXfs").children()) {
            if (Local(xf.name()) != "xf") continue;
            long id = xf.attribute("numFmtId").as_int(0);
            auto p = propios.find(id);
            estiloFecha_.push_back(p != propios.end() ? p->second : (id >= 14 && id <= 22) || (id >= 45 && id <= 47));
        }
    }

    std::string cadena(size_t i) const {
        size_t fin = i + 1 < inicioCadenas_.size() ? inicioCadenas_[i + 1] : textoCadenas_.size();
        return textoCadenas_.substr(inicioCadenas_[i], fin - inicioCadenas_[i]);
    }
};

Celda Texto(std::string t) { return t.empty() ? Celda() : Celda::texto(std::move(t)); }

// A date written as text ("d" cells): "2023-01-31T10:30:15", "2023-01-31".
std::optional<Celda> FechaIso(std::string_view t) {
    auto f = Fecha::desdeIso(t);
    if (!f || !f->valida()) return std::nullopt;
    int segundos = 0;
    size_t hora = t.find('T');
    if (hora != std::string_view::npos) {
        int h = 0, m = 0, s = 0;
        if (std::sscanf(std::string(t.substr(hora + 1)).c_str(), "%d:%d:%d", &h, &m, &s) >= 2 && h >= 0 && h < 24 &&
            m >= 0 && m < 60 && s >= 0 && s < 60)
            segundos = h * 3600 + m * 60 + s;
    }
    return Celda::fecha(*f, segundos);
}

CeldaHoja LibroXlsx::decodifica(pugi::xml_node c, long fila, int columna) const {
    CeldaHoja r;
    r.columna = columna;
    std::string_view tipo = c.attribute("t").value();
    auto v = Hijo(c, "v");
    std::string valor = v ? v.child_value() : "";
    bool formula = Hijo(c, "f");
    if (tipo == "inlineStr") {
        r.valor = Texto(TextoDeCadena(Hijo(c, "is")));
        return r;
    }
    // A formula keeps its last result in <v>; without one (a file written
    // by a program that does not calculate) there is nothing to read. A
    // text result may be empty.
    if (formula && (!v || (valor.empty() && tipo != "str"))) {
        r.formulaSinValor = true;
        return r;
    }
    if (tipo == "s") {
        if (valor.empty()) return r;
        char* fin = nullptr;
        unsigned long i = std::strtoul(valor.c_str(), &fin, 10);
        if (*fin != '\0' || i >= inicioCadenas_.size())
            FallaLibro(ruta_, "la celda " + NombreCelda(fila, columna) + " remite a un texto que no existe", fila);
        r.valor = Texto(cadena(i));
    } else if (tipo == "str" || tipo == "e") {
        r.valor = Texto(DesescapaCaracteres(valor));
    } else if (tipo == "b") {
        if (!valor.empty()) r.valor = Celda::logico(valor == "1" || valor == "true");
    } else if (tipo == "d") {
        auto f = FechaIso(valor);
        r.valor = f ? *f : Texto(valor);
    } else if (!valor.empty()) {
        auto decimal = DecimalExacto(valor);
        if (!decimal) {
            r.valor = Texto(valor);
            return r;
        }
        size_t estilo = c.attribute("s").as_uint(0);
        if (estilo < estiloFecha_.size() && estiloFecha_[estilo]) {
            if (auto f = FechaDeSerial(ValorNumerico(*decimal).value_or(-1), sistema1904_)) {
                r.valor = *f;
                return r;
            }
        }
        r.valor = Celda::numero(*decimal);
    }
    return r;
}

/// The column of a reference such as "C7" (letters, then the row's
/// digits); 0 when it is not one.
int ColumnaDeReferencia(std::string_view ref) {
    long c = 0;
    size_t i = 0;
    while (i < ref.size() && std::isalpha(static_cast<unsigned char>(ref[i]))) {
        c = c * 26 + (std::toupper(static_cast<unsigned char>(ref[i])) - 'A' + 1);
        if (++i > 3) return 0;
    }
    if (i == 0 || i == ref.size()) return 0;
    for (size_t j = i; j < ref.size(); ++j)
        if (!std::isdigit(static_cast<unsigned char>(ref[j]))) return 0;
    return static_cast<int>(c);
}

bool LectorHojaXlsx::siguiente(FilaHoja& fila) {
    const std::string& ruta = libro_.ruta();
    std::string_view texto;
    while (divisor_.siguiente(texto)) {
        long numero = ultima_ + 1;
        pugi::xml_document doc;
        if (!doc.load_buffer(texto.data(), texto.size(), pugi::parse_default | pugi::parse_ws_pcdata_single,
                             pugi::encoding_utf8))
            FallaLibro(ruta, "la fila " + std::to_string(numero) + " no es XML válido", numero);
        pugi::xml_node row = doc.first_child();
        if (auto r = row.attribute("r")) {
            char* fin = nullptr;
            long n = std::strtol(r.value(), &fin, 10);
            if (*fin != '\0' || n <= ultima_ || n > kMaxFilas)
                FallaLibro(ruta, std::string(kDanado) + " (fila \"" + r.value() + "\" fuera de orden o de la hoja)",
                           numero);
            numero = n;
        }
        ultima_ = numero;
        fila.numero = numero;
        fila.celdas.clear();
        int columna = 0;
        bool ordenadas = true;
        for (auto c : row.children()) {
            if (c.type() != pugi::node_element || Local(c.name()) != "c") continue;
            int anterior = columna;
            if (auto ref = c.attribute("r")) {
                columna = ColumnaDeReferencia(ref.value());
                if (columna < 1 || columna > kMaxColumnas)
                    FallaLibro(ruta, std::string(kDanado) + " (celda \"" + ref.value() + "\")", numero);
            } else if (++columna > kMaxColumnas) {
                FallaLibro(ruta, std::string(kDanado) + " (fila con demasiadas celdas)", numero);
            }
            if (columna <= anterior) ordenadas = false;
            CeldaHoja celda = libro_.decodifica(c, numero, columna);
            if (!celda.valor.esNula() || celda.formulaSinValor) fila.celdas.push_back(std::move(celda));
        }
        if (!ordenadas) {
            // The last cell written for a column stands, as a spreadsheet would keep it.
            std::stable_sort(fila.celdas.begin(), fila.celdas.end(),
                             [](const CeldaHoja& a, const CeldaHoja& b) { return a.columna < b.columna; });
            std::vector<CeldaHoja> unicas;
            for (auto& c : fila.celdas) {
                if (!unicas.empty() && unicas.back().columna == c.columna)
                    unicas.back() = std::move(c);
                else
                    unicas.push_back(std::move(c));
            }
            fila.celdas = std::move(unicas);
        }
        if (!fila.celdas.empty()) return true;
    }
    return false;
}

}  // namespace

std::unique_ptr<Libro> AbreXlsx(const std::string& ruta) { return std::make_unique<LibroXlsx>(ruta); }

}  // namespace velmorant::libro
