#include "platform/fuentes/PaginaCodigos.h"

#include <QByteArray>
#include <QString>
#include <QStringDecoder>

#include "platform/ArchivoTexto.h"

namespace velmorant {

namespace {

struct Marca {
    unsigned char marca;
    int pagina;
};

// Language-driver bytes of dBase IV and of FoxPro, and the code page each
// stands for. dBase names several national drivers over the same page.
constexpr Marca kMarcas[] = {
    {0x01, 437},   {0x02, 850},   {0x03, 1252},  {0x04, 10000}, {0x08, 865},   {0x09, 437},
    {0x0A, 850},   {0x0B, 437},   {0x0D, 437},   {0x0E, 850},   {0x0F, 437},   {0x10, 850},
    {0x11, 437},   {0x12, 850},   {0x13, 932},   {0x14, 850},   {0x15, 437},   {0x16, 850},
    {0x17, 865},   {0x18, 437},   {0x19, 437},   {0x1A, 850},   {0x1B, 437},   {0x1C, 863},
    {0x1D, 850},   {0x1F, 852},   {0x22, 852},   {0x23, 852},   {0x24, 860},   {0x25, 850},
    {0x26, 866},   {0x37, 850},   {0x40, 852},   {0x4D, 936},   {0x4E, 949},   {0x4F, 950},
    {0x50, 874},   {0x57, 1252},  {0x58, 1252},  {0x59, 1252},  {0x64, 852},   {0x65, 866},
    {0x66, 865},   {0x67, 861},   {0x6A, 737},   {0x6B, 857},   {0x78, 950},   {0x79, 949},
    {0x7A, 936},   {0x7B, 932},   {0x7C, 874},   {0x7D, 1255},  {0x7E, 1256},  {0x96, 10007},
    {0x97, 10029}, {0x98, 10006}, {0xC8, 1250},  {0xC9, 1251},  {0xCA, 1254},  {0xCB, 1253},
};

// The codec's name of a code page; null for one it is not asked about.
const char* NombreCodec(int pagina) {
    switch (pagina) {
        case 437: return "IBM437";
        case 737: return "IBM737";
        case 850: return "IBM850";
        case 852: return "IBM852";
        case 857: return "IBM857";
        case 860: return "IBM860";
        case 861: return "IBM861";
        case 863: return "IBM863";
        case 865: return "IBM865";
        case 866: return "IBM866";
        case 874: return "windows-874";
        case 932: return "windows-31j";
        case 936: return "GBK";
        case 949: return "windows-949";
        case 950: return "Big5";
        case 1250: return "windows-1250";
        case 1251: return "windows-1251";
        case 1253: return "windows-1253";
        case 1254: return "windows-1254";
        case 1255: return "windows-1255";
        case 1256: return "windows-1256";
        case 10000: return "macintosh";
        case 10006: return "x-mac-greek";
        case 10007: return "x-mac-cyrillic";
        case 10029: return "x-mac-centraleurroman";
        default: return nullptr;
    }
}

bool EsMultibyte(int pagina) { return pagina == 932 || pagina == 936 || pagina == 949 || pagina == 950; }

}  // namespace

int PaginaCodigosDeMarca(unsigned char marca) {
    for (const auto& m : kMarcas)
        if (m.marca == marca) return m.pagina;
    return 1252;
}

DecodificadorPaginaCodigos::DecodificadorPaginaCodigos(int paginaCodigos) {
    const char* nombre = NombreCodec(paginaCodigos);
    if (!nombre) return;  // 1252, or a page not known
    QStringDecoder prueba(nombre);
    if (!prueba.isValid()) return;
    pagina_ = paginaCodigos;
    if (EsMultibyte(paginaCodigos)) {
        codecMultibyte_ = nombre;
        return;
    }
    tabla_ = true;
    for (int b = 0x80; b <= 0xFF; ++b) {
        QStringDecoder d(nombre);
        char byte = static_cast<char>(b);
        QString s = d(QByteArrayView(&byte, 1));
        altos_[static_cast<size_t>(b - 0x80)] = s.toStdString();
    }
}

std::string DecodificadorPaginaCodigos::decodifica(std::string_view bytes) const {
    bool ascii = true;
    for (char c : bytes)
        if (static_cast<unsigned char>(c) >= 0x80) {
            ascii = false;
            break;
        }
    if (ascii) return std::string(bytes);
    if (!codecMultibyte_.empty()) {
        QStringDecoder d(codecMultibyte_.c_str());
        QString s = d(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
        return s.toStdString();
    }
    if (!tabla_) return DecodificaWindows1252(bytes);
    std::string r;
    r.reserve(bytes.size() + bytes.size() / 2);
    for (char c : bytes) {
        auto b = static_cast<unsigned char>(c);
        if (b < 0x80)
            r += c;
        else
            r += altos_[b - 0x80];
    }
    return r;
}

}  // namespace velmorant
