#include "platform/fuentes/LectorXml.h"

#include <libxml/xmlreader.h>

#include <cstdio>
#include <filesystem>

#include "platform/ErrorLectura.h"

namespace velmorant {

namespace {

const std::string kVacio;

std::string Texto(const xmlChar* t) { return t ? reinterpret_cast<const char*>(t) : std::string(); }

// The parser's messages end with a line break.
std::string SinSaltoFinal(std::string t) {
    while (!t.empty() && (t.back() == '\n' || t.back() == '\r' || t.back() == ' ')) t.pop_back();
    return t;
}

}  // namespace

const std::string& ElementoXml::atributo(const std::string& nombreLocal) const {
    for (const auto& [n, v] : atributos)
        if (n == nombreLocal) return v;
    return kVacio;
}

bool ElementoXml::tieneAtributo(const std::string& nombreLocal) const {
    for (const auto& a : atributos)
        if (a.first == nombreLocal) return true;
    return false;
}

// The parser's state: the file, the reader over it, the first fault it
// reported, and an end event owed for an empty element.
struct LectorXml::Estado {
    std::FILE* archivo = nullptr;
    xmlTextReaderPtr lector = nullptr;
    std::int64_t leidos = 0;
    bool conFalla = false;
    std::string falla;
    long lineaFalla = 0;
    bool finPendiente = false;
    ElementoXml vacio;  // the empty element whose end is owed

    ~Estado() {
        if (lector) xmlFreeTextReader(lector);
        if (archivo) std::fclose(archivo);
    }

    static int Lee(void* contexto, char* destino, int largo) {
        auto* e = static_cast<Estado*>(contexto);
        size_t n = std::fread(destino, 1, static_cast<size_t>(largo), e->archivo);
        if (n == 0 && std::ferror(e->archivo)) return -1;
        e->leidos += static_cast<std::int64_t>(n);
        return static_cast<int>(n);
    }
    static int Cierra(void*) { return 0; }  // the file is closed with the state

    // Warnings pass; an error or a fatal error is the file's fault. Only the
    // first is kept: the ones after it follow from it.
    static void Reporta(void* contexto, xmlErrorPtr error) {
        auto* e = static_cast<Estado*>(contexto);
        if (!error || error->level < XML_ERR_ERROR || e->conFalla) return;
        e->conFalla = true;
        e->falla = SinSaltoFinal(error->message ? error->message : "");
        e->lineaFalla = error->line;
    }
};

LectorXml::LectorXml(const std::string& ruta) : ruta_(ruta), e_(std::make_unique<Estado>()) {
    xmlInitParser();
    std::error_code ec;
    if (std::filesystem::is_regular_file(ruta, ec)) {
        auto tamano = std::filesystem::file_size(ruta, ec);
        if (!ec) tamano_ = static_cast<std::int64_t>(tamano);
    }
    e_->archivo = std::fopen(ruta.c_str(), "rb");
    if (!e_->archivo) throw ErrorLectura("No se pudo abrir el archivo " + ruta, ruta, 0);
    // No option that loads a DTD, validates or substitutes entities: only
    // the file itself is read, and nothing from the network.
    e_->lector = xmlReaderForIO(&Estado::Lee, &Estado::Cierra, e_.get(), nullptr, nullptr,
                                XML_PARSE_NONET | XML_PARSE_NOBLANKS | XML_PARSE_BIG_LINES);
    if (!e_->lector) throw ErrorLectura("No se pudo abrir el archivo " + ruta, ruta, 0);
    xmlTextReaderSetStructuredErrorHandler(e_->lector, &Estado::Reporta, e_.get());
}

LectorXml::~LectorXml() = default;

std::int64_t LectorXml::bytesLeidos() const { return e_->leidos; }

std::string LectorXml::mensajeError(long linea, const std::string& causa) const {
    return "Error al leer el archivo " + ruta_ + ", línea " + std::to_string(linea) + ": " + causa;
}

void LectorXml::falla(long linea, const std::string& causa) const {
    throw ErrorLectura(mensajeError(linea, causa), ruta_, linea);
}

bool LectorXml::siguiente(ElementoXml& el) {
    if (e_->finPendiente) {
        e_->finPendiente = false;
        el.evento = ElementoXml::Evento::Fin;
        el.nombre = std::move(e_->vacio.nombre);
        el.espacio = std::move(e_->vacio.espacio);
        el.profundidad = e_->vacio.profundidad;
        el.linea = e_->vacio.linea;
        el.atributos.clear();
        return true;
    }
    xmlTextReaderPtr r = e_->lector;
    for (;;) {
        int resultado = xmlTextReaderRead(r);
        if (e_->conFalla) falla(e_->lineaFalla, "el XML no está bien formado (" + e_->falla + ")");
        if (resultado < 0) falla(xmlTextReaderGetParserLineNumber(r), "no se pudo leer el XML");
        if (resultado == 0) return false;
        int tipo = xmlTextReaderNodeType(r);
        if (tipo != XML_READER_TYPE_ELEMENT && tipo != XML_READER_TYPE_END_ELEMENT) continue;
        el.nombre = Texto(xmlTextReaderConstLocalName(r));
        el.espacio = Texto(xmlTextReaderConstNamespaceUri(r));
        el.profundidad = xmlTextReaderDepth(r);
        el.atributos.clear();
        long linea = xmlGetLineNo(xmlTextReaderCurrentNode(r));
        el.linea = linea > 0 && linea < 65535 ? linea : xmlTextReaderGetParserLineNumber(r);
        if (tipo == XML_READER_TYPE_END_ELEMENT) {
            el.evento = ElementoXml::Evento::Fin;
            return true;
        }
        el.evento = ElementoXml::Evento::Inicio;
        if (xmlTextReaderHasAttributes(r) == 1) {
            while (xmlTextReaderMoveToNextAttribute(r) == 1) {
                if (xmlTextReaderIsNamespaceDecl(r) == 1) continue;
                el.atributos.emplace_back(Texto(xmlTextReaderConstLocalName(r)), Texto(xmlTextReaderConstValue(r)));
            }
            xmlTextReaderMoveToElement(r);
        }
        if (xmlTextReaderIsEmptyElement(r) == 1) {
            e_->finPendiente = true;
            e_->vacio.nombre = el.nombre;
            e_->vacio.espacio = el.espacio;
            e_->vacio.profundidad = el.profundidad;
            e_->vacio.linea = el.linea;
        }
        return true;
    }
}

}  // namespace velmorant
