#include "platform/fuentes/BaseFirebird.h"

#include <firebird/Interface.h>

#include <QDir>
#include <QLibrary>
#include <QString>
#include <QStringDecoder>
#include <QTemporaryDir>
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <system_error>

#ifndef _WIN32
#include <unistd.h>
#endif

#include "platform/ArchivoTexto.h"
#include "platform/ErrorLectura.h"
#include "platform/Texto.h"

namespace velmorant {

namespace fs = std::filesystem;

namespace {

constexpr const char* kConfirmeRuta = "Confirme la Ruta del archivo de Base de Datos.";
constexpr const char* kPaqueteCliente = "libfbclient2";
constexpr const char* kPaqueteMotor = "firebird3.0-server-core";
// The embedded engine's provider; naming it alone keeps the client from
// trying a server on this machine when the engine cannot be loaded.
constexpr const char* kProveedor = "Engine12";
// The on-disk structure Firebird 3 opens.
constexpr int kOdsMotor = 12;
// Days from 17/11/1858 (day zero of the engine's dates) to 30/12/1899
// (day zero of Fecha's serial).
constexpr long kDiasEntreEpocas = 15018;
// Engine times count ten-thousandths of a second.
constexpr unsigned kFraccionesPorSegundo = 10000;

// Character sets by their engine number.
constexpr unsigned kJuegoNone = 0;
[[maybe_unused]] constexpr unsigned kJuegoOctets = 1;  // named for the list; binary text is not decoded
constexpr unsigned kJuegoAscii = 2;
constexpr unsigned kJuegoUnicodeFss = 3;
constexpr unsigned kJuegoUtf8 = 4;

// ---------------------------------------------------------------------------
// The engine: one per process, loaded on first use and never unloaded (its
// threads live until the process ends).

struct Motor {
    QLibrary biblioteca;
    Firebird::IMaster* maestro = nullptr;
    Firebird::IProvider* proveedor = nullptr;
    Firebird::IUtil* util = nullptr;
    std::string bloqueos;  // FIREBIRD_LOCK, read by the engine once
    std::string error;     // why it cannot be used; empty when it can
};

/// The lock folder of this program's engine: private to the program (and
/// to the user), so that it never shares lock files with a Firebird server.
std::string CarpetaBloqueos() {
    std::string nombre = "velmorant-firebird";
#ifndef _WIN32
    nombre += "-" + std::to_string(static_cast<unsigned long>(getuid()));
#endif
    return (fs::temp_directory_path() / nombre).string();
}

Motor& ElMotor() {
    static Motor* const motor = [] {
        auto* m = new Motor;
        m->bloqueos = CarpetaBloqueos();
        std::error_code ec;
        fs::create_directories(m->bloqueos, ec);
        fs::permissions(m->bloqueos, fs::perms::owner_all, fs::perm_options::replace, ec);
        qputenv("FIREBIRD_LOCK", QByteArray::fromStdString(m->bloqueos));

        QByteArray propia = qgetenv("VELMORANT_FBCLIENT");
        if (!propia.isEmpty())
            m->biblioteca.setFileName(QString::fromLocal8Bit(propia));
        else
            m->biblioteca.setFileNameAndVersion(QStringLiteral("fbclient"), 2);
        using Entrada = Firebird::IMaster* (*)();
        auto entrada = reinterpret_cast<Entrada>(m->biblioteca.resolve("fb_get_master_interface"));
        if (!entrada) {
            std::string nombre = propia.isEmpty() ? "libfbclient.so.2" : propia.toStdString();
            m->error = "No se encontró la biblioteca cliente de Firebird (" + nombre +
                       "), necesaria para leer bases de datos .FDB. En Debian la instala el paquete " +
                       kPaqueteCliente + " (apt-get install " + kPaqueteCliente + " " + kPaqueteMotor + ").";
            return m;
        }
        m->maestro = entrada();
        m->proveedor = m->maestro->getDispatcher();
        m->util = m->maestro->getUtilInterface();
        return m;
    }();
    return *motor;
}

/// A status of the engine that throws Firebird::FbException on error.
class Estado {
public:
    explicit Estado(Motor& m) : estado_(m.maestro->getStatus()), envoltura_(estado_) {}
    ~Estado() { estado_->dispose(); }
    Estado(const Estado&) = delete;
    Estado& operator=(const Estado&) = delete;
    Firebird::ThrowStatusWrapper* operator&() { return &envoltura_; }

private:
    Firebird::IStatus* estado_;
    Firebird::ThrowStatusWrapper envoltura_;
};

/// The engine's text of an error, on one line; the temporary copy it
/// names is called by the name the user knows.
std::string TextoMotor(Motor& m, const Firebird::IStatus* estado, const std::string& copia = "",
                       const std::string& ruta = "") {
    char bufer[2048] = {};
    m.util->formatStatus(bufer, sizeof bufer - 1, const_cast<Firebird::IStatus*>(estado));
    std::string t;
    std::istringstream lineas(bufer);
    for (std::string linea; std::getline(lineas, linea);) {
        if (!linea.empty() && linea[0] == '-') linea.erase(0, 1);
        linea = RecortaEspacios(linea);
        if (linea.empty()) continue;
        if (!t.empty()) t += "; ";
        t += linea;
    }
    for (size_t p; !copia.empty() && (p = t.find(copia)) != std::string::npos;) t.replace(p, copia.size(), ruta);
    return t;
}

/// True when the error vector holds the engine code `codigo`.
bool TieneCodigo(const intptr_t* v, intptr_t codigo) {
    for (size_t i = 0; v && v[i] != isc_arg_end;) {
        intptr_t clase = v[i];
        if (clase == isc_arg_gds && v[i + 1] == codigo) return true;
        i += clase == isc_arg_cstring ? 3 : 2;
    }
    return false;
}

std::string MensajeEstructura(const std::string& ruta, int ods) {
    if (ods > kOdsMotor)
        return "La base de datos " + ruta + " es de una versión más reciente de Firebird (estructura en disco ODS " +
               std::to_string(ods) +
               ") y el motor de este programa (Firebird 3) no puede abrirla. Exporte sus tablas con una "
               "herramienta de esa versión de Firebird.";
    std::string version = ods == 11 ? ", de Firebird 2.x" : ods == 10 ? ", de Firebird 1.x o InterBase" : "";
    std::string cual = ods > 0 ? " (estructura en disco ODS " + std::to_string(ods) + version + ")" : "";
    return "La base de datos " + ruta + " es de una versión anterior de Firebird" + cual +
           " y el motor de este programa (Firebird 3) no puede abrirla. Ábrala con una herramienta de "
           "Firebird 2.5 y haga un respaldo (gbak -b) que se restaure con Firebird 3 (gbak -c) en el "
           "formato nuevo, o exporte sus tablas desde esa herramienta.";
}

std::string MensajeNoEsBase(const std::string& ruta) {
    return "El archivo " + ruta + " no es una base de datos de Firebird.";
}

/// Looks at the header page before the engine does: page type 1 at offset
/// 0, page size at 0x10, on-disk structure at 0x12 (little-endian, the high
/// bit marks a Firebird database).
void RevisaEncabezado(const std::string& ruta) {
    std::ifstream archivo(fs::u8path(ruta), std::ios::binary);
    if (!archivo) throw ErrorLectura("No se pudo leer el archivo " + ruta + ".", ruta, 0);
    unsigned char e[20] = {};
    archivo.read(reinterpret_cast<char*>(e), sizeof e);
    if (archivo.gcount() < static_cast<std::streamsize>(sizeof e)) throw ErrorLectura(MensajeNoEsBase(ruta), ruta, 0);
    unsigned tamanoPagina = e[0x10] | (e[0x11] << 8);
    unsigned ods = e[0x12] | (e[0x13] << 8);
    bool tamanoValido = tamanoPagina >= 1024 && tamanoPagina <= 32768 && (tamanoPagina & (tamanoPagina - 1)) == 0;
    if (e[0] != 1 || !tamanoValido) throw ErrorLectura(MensajeNoEsBase(ruta), ruta, 0);
    int mayor = static_cast<int>(ods & 0x7FFF);
    if (mayor != kOdsMotor) throw ErrorLectura(MensajeEstructura(ruta, mayor), ruta, 0);
}

// ---------------------------------------------------------------------------
// Text of the database's code page.

class PaginaCodigos {
public:
    explicit PaginaCodigos(const std::string& nombre) : nombre_(nombre) {
        es1252_ = nombre.empty() || QString::fromStdString(nombre).compare("Windows-1252", Qt::CaseInsensitive) == 0 ||
                  QString::fromStdString(nombre).compare("CP1252", Qt::CaseInsensitive) == 0;
        if (!es1252_ && !QStringDecoder(nombre_.c_str()).isValid())
            throw std::invalid_argument("página de códigos desconocida: " + nombre_);
    }

    std::string decodifica(std::string_view bytes) const {
        if (es1252_) return DecodificaWindows1252(bytes);
        QStringDecoder d(nombre_.c_str());
        QString t = d(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
        return t.toStdString();
    }

    /// Bytes of the code page for a UTF-8 text; what it cannot hold is "?".
    std::string codifica(const std::string& utf8) const {
        if (!es1252_) {
            QStringEncoder c(nombre_.c_str());
            QByteArray b = c(QString::fromStdString(utf8));
            return b.toStdString();
        }
        static const std::map<char32_t, char> inversa = [] {
            std::map<char32_t, char> m;
            for (int b = 0x80; b <= 0xFF; ++b) {
                char byte = static_cast<char>(b);
                auto u = QString::fromStdString(DecodificaWindows1252(std::string_view(&byte, 1))).toUcs4();
                if (u.size() == 1) m[u[0]] = byte;
            }
            return m;
        }();
        std::string r;
        for (char32_t u : QString::fromStdString(utf8).toUcs4()) {
            if (u < 0x80) {
                r += static_cast<char>(u);
            } else {
                auto it = inversa.find(u);
                r += it == inversa.end() ? '?' : it->second;
            }
        }
        return r;
    }

private:
    std::string nombre_;
    bool es1252_ = true;
};

// ---------------------------------------------------------------------------
// Numbers as exact decimal text.

/// "-1234.5" for -123450 with scale -2: the digits of a scaled integer,
/// trailing zeros of the fraction dropped.
std::string DecimalEscalado(std::int64_t valor, int escala) {
    bool negativo = valor < 0;
    std::uint64_t magnitud = negativo ? 0 - static_cast<std::uint64_t>(valor) : static_cast<std::uint64_t>(valor);
    std::string digitos = std::to_string(magnitud);
    if (escala > 0) {
        if (magnitud != 0) digitos.append(static_cast<size_t>(escala), '0');
    } else if (escala < 0) {
        size_t decimales = static_cast<size_t>(-escala);
        if (digitos.size() <= decimales) digitos.insert(0, decimales - digitos.size() + 1, '0');
        digitos.insert(digitos.size() - decimales, ".");
        while (digitos.back() == '0') digitos.pop_back();
        if (digitos.back() == '.') digitos.pop_back();
    }
    if (negativo && digitos != "0") digitos.insert(0, "-");
    return digitos;
}

/// A real as the shortest decimal text that reads back to it; with a
/// negative scale (a NUMERIC of a dialect 1 database, kept as a double)
/// rounded to that many decimals.
template <class Real>
Celda CeldaReal(Real valor, int escala) {
    char bufer[400];
    std::to_chars_result r = escala < 0
                                 ? std::to_chars(bufer, bufer + sizeof bufer, valor, std::chars_format::fixed, -escala)
                                 : std::to_chars(bufer, bufer + sizeof bufer, valor, std::chars_format::fixed);
    if (r.ec != std::errc()) return Celda();
    std::string t(bufer, r.ptr);
    if (t.find_first_not_of("-0123456789.") != std::string::npos) return Celda::texto(t);  // nan, inf
    if (t.find('.') != std::string::npos) {
        while (t.back() == '0') t.pop_back();
        if (t.back() == '.') t.pop_back();
    }
    if (t == "-0") t = "0";
    return Celda::numero(t);
}

template <class T>
T Lee(const unsigned char* p) {
    T v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

Fecha FechaMotor(ISC_DATE dia) { return Fecha::desdeSerial(static_cast<long>(dia) - kDiasEntreEpocas); }

int SegundosMotor(ISC_TIME hora) { return static_cast<int>(hora / kFraccionesPorSegundo) % 86400; }

}  // namespace

// ---------------------------------------------------------------------------
// The open database, shared by the BaseFirebird and its queries.

struct BaseFirebird::Interna {
    Motor& motor;
    std::string ruta;
    PaginaCodigos pagina;
    std::unique_ptr<QTemporaryDir> carpetaCopia;
    std::string copia;  // the file the engine opened
    Firebird::IAttachment* conexion = nullptr;
    Firebird::ITransaction* transaccion = nullptr;
    unsigned dialecto = SQL_DIALECT_V6;

    Interna(Motor& m, std::string r, const std::string& pag) : motor(m), ruta(std::move(r)), pagina(pag) {}

    ~Interna() {
        Estado st(motor);
        if (transaccion) {
            try {
                transaccion->commit(&st);
            } catch (const Firebird::FbException&) {
                transaccion->release();
            }
        }
        if (conexion) {
            try {
                conexion->detach(&st);
            } catch (const Firebird::FbException&) {
                conexion->release();
            }
        }
        carpetaCopia.reset();  // removes the copy, now that the engine let it go
    }

    [[noreturn]] void falla(const std::string& que, const Firebird::FbException& e, long registro = 0) const {
        throw ErrorLectura(que + TextoMotor(motor, e.getStatus(), copia, ruta), ruta, registro);
    }
};

namespace {

// ---------------------------------------------------------------------------
// A query's rows as a record source.

struct Columna {
    std::string nombre;
    unsigned tipo = 0;
    int escala = 0;
    int subtipo = 0;
    unsigned juego = 0;
    unsigned longitud = 0;
    unsigned desplazamiento = 0;
    unsigned desplazamientoNulo = 0;
};

class ConsultaFirebird : public FuenteRegistros {
public:
    ConsultaFirebird(std::shared_ptr<BaseFirebird::Interna> base, const std::string& sql,
                     const std::vector<Valor>& parametros)
        : base_(std::move(base)) {
        Motor& m = base_->motor;
        Estado st(m);
        try {
            sentencia_ = base_->conexion->prepare(&st, base_->transaccion, 0, sql.c_str(), base_->dialecto,
                                                  Firebird::IStatement::PREPARE_PREFETCH_METADATA);
            Firebird::IMessageMetadata* entrada = sentencia_->getInputMetadata(&st);
            std::vector<unsigned char> datosEntrada;
            Firebird::IMessageMetadata* mensajeEntrada = nullptr;
            try {
                mensajeEntrada = armaEntrada(st, entrada, parametros, datosEntrada);
            } catch (...) {
                entrada->release();
                throw;
            }
            entrada->release();
            salida_ = sentencia_->getOutputMetadata(&st);
            leeColumnas(st);
            try {
                cursor_ = sentencia_->openCursor(&st, base_->transaccion, mensajeEntrada,
                                                 datosEntrada.empty() ? nullptr : datosEntrada.data(), salida_, 0);
            } catch (...) {
                if (mensajeEntrada) mensajeEntrada->release();
                throw;
            }
            if (mensajeEntrada) mensajeEntrada->release();
        } catch (const Firebird::FbException& e) {
            libera();
            base_->falla("No se pudo leer la base de datos " + base_->ruta + ": ", e);
        } catch (...) {
            libera();
            throw;
        }
    }

    ~ConsultaFirebird() override { libera(); }

    bool siguiente(Fila& fila) override {
        if (!cursor_) return false;
        Estado st(base_->motor);
        long numero = numero_ + 1;
        try {
            if (cursor_->fetchNext(&st, datos_.data()) != Firebird::IStatus::RESULT_OK) {
                cursor_->close(&st);
                cursor_ = nullptr;
                return false;
            }
            fila.numero = numero_ = numero;
            fila.texto.clear();
            fila.celdas.clear();
            fila.celdas.reserve(columnas_.size());
            for (const auto& c : columnas_) fila.celdas.push_back(celda(st, c));
        } catch (const Firebird::FbException& e) {
            base_->falla(
                "Error al leer el registro " + std::to_string(numero) + " de la base de datos " + base_->ruta + ": ", e,
                numero);
        }
        return true;
    }

    const std::string& ruta() const override { return base_->ruta; }

    std::vector<std::string> nombresColumnas() const override {
        std::vector<std::string> r;
        for (const auto& c : columnas_) r.push_back(c.nombre);
        return r;
    }

    std::string lugar(const Fila& fila) const override {
        return "archivo " + base_->ruta + ", registro " + std::to_string(fila.numero);
    }

private:
    std::shared_ptr<BaseFirebird::Interna> base_;
    Firebird::IStatement* sentencia_ = nullptr;
    Firebird::IMessageMetadata* salida_ = nullptr;
    Firebird::IResultSet* cursor_ = nullptr;
    std::vector<Columna> columnas_;
    std::vector<unsigned char> datos_;
    long numero_ = 0;

    void libera() {
        if (cursor_) cursor_->release();
        if (salida_) salida_->release();
        if (sentencia_) sentencia_->release();
        cursor_ = nullptr;
        salida_ = nullptr;
        sentencia_ = nullptr;
    }

    /// The message of the parameters, built from the statement's own:
    /// each value keeps its kind (integer, real, text) and the engine
    /// converts it to the column it meets.
    Firebird::IMessageMetadata* armaEntrada(Estado& st, Firebird::IMessageMetadata* entrada,
                                            const std::vector<Valor>& parametros, std::vector<unsigned char>& datos) {
        unsigned cuantos = entrada->getCount(&st);
        if (cuantos != parametros.size())
            throw std::invalid_argument("la consulta espera " + std::to_string(cuantos) + " parámetros y recibió " +
                                        std::to_string(parametros.size()));
        if (cuantos == 0) return nullptr;
        std::vector<std::string> textos(cuantos);
        Firebird::IMetadataBuilder* constructor = entrada->getBuilder(&st);
        try {
            for (unsigned i = 0; i < cuantos; ++i) {
                const Valor& v = parametros[i];
                if (v.esNulo()) {
                    constructor->setType(&st, i, entrada->getType(&st, i) | 1u);
                } else if (v.esEntero()) {
                    constructor->setType(&st, i, SQL_INT64 | 1u);
                    constructor->setLength(&st, i, sizeof(ISC_INT64));
                    constructor->setScale(&st, i, 0);
                } else if (v.esReal()) {
                    constructor->setType(&st, i, SQL_DOUBLE | 1u);
                    constructor->setLength(&st, i, sizeof(double));
                    constructor->setScale(&st, i, 0);
                } else {
                    unsigned juego = entrada->getCharSet(&st, i);
                    bool crudo = juego != kJuegoUtf8 && juego != kJuegoUnicodeFss && juego != kJuegoAscii;
                    textos[i] = crudo ? base_->pagina.codifica(v.texto()) : v.texto();
                    if (textos[i].size() > 32765) throw std::invalid_argument("parámetro de texto demasiado largo");
                    constructor->setType(&st, i, SQL_VARYING | 1u);
                    constructor->setLength(&st, i, static_cast<unsigned>(textos[i].size()));
                    constructor->setCharSet(&st, i, crudo ? kJuegoNone : kJuegoUtf8);
                }
            }
        } catch (...) {
            constructor->release();
            throw;
        }
        Firebird::IMessageMetadata* mensaje = constructor->getMetadata(&st);
        constructor->release();
        datos.assign(mensaje->getMessageLength(&st), 0);
        for (unsigned i = 0; i < cuantos; ++i) {
            const Valor& v = parametros[i];
            unsigned char* p = datos.data() + mensaje->getOffset(&st, i);
            short nulo = v.esNulo() ? -1 : 0;
            std::memcpy(datos.data() + mensaje->getNullOffset(&st, i), &nulo, sizeof nulo);
            if (v.esNulo()) continue;
            if (v.esEntero()) {
                ISC_INT64 e = v.entero();
                std::memcpy(p, &e, sizeof e);
            } else if (v.esReal()) {
                double r = v.real();
                std::memcpy(p, &r, sizeof r);
            } else {
                auto largo = static_cast<unsigned short>(textos[i].size());
                std::memcpy(p, &largo, sizeof largo);
                std::memcpy(p + sizeof largo, textos[i].data(), textos[i].size());
            }
        }
        return mensaje;
    }

    void leeColumnas(Estado& st) {
        unsigned n = salida_->getCount(&st);
        for (unsigned i = 0; i < n; ++i) {
            Columna c;
            c.nombre = RecortaEspacios(salida_->getAlias(&st, i));
            if (c.nombre.empty()) c.nombre = RecortaEspacios(salida_->getField(&st, i));
            c.tipo = salida_->getType(&st, i) & ~1u;  // the low bit only says the column may be null
            c.escala = salida_->getScale(&st, i);
            c.subtipo = salida_->getSubType(&st, i);
            c.juego = salida_->getCharSet(&st, i);
            c.longitud = salida_->getLength(&st, i);
            c.desplazamiento = salida_->getOffset(&st, i);
            c.desplazamientoNulo = salida_->getNullOffset(&st, i);
            columnas_.push_back(c);
        }
        datos_.assign(salida_->getMessageLength(&st), 0);
    }

    std::string texto(const Columna& c, std::string bytes) const {
        if (c.juego == kJuegoUtf8 || c.juego == kJuegoUnicodeFss) {
            if (EsUtf8Valido(bytes)) return bytes;
        } else if (c.juego == kJuegoAscii) {
            return bytes;
        }
        return base_->pagina.decodifica(bytes);
    }

    Celda celda(Estado& st, const Columna& c) {
        const unsigned char* p = datos_.data() + c.desplazamiento;
        if (Lee<short>(datos_.data() + c.desplazamientoNulo) != 0) return Celda();
        switch (c.tipo) {
            case SQL_SHORT: return Celda::numero(DecimalEscalado(Lee<ISC_SHORT>(p), c.escala));
            case SQL_LONG: return Celda::numero(DecimalEscalado(Lee<ISC_LONG>(p), c.escala));
            case SQL_INT64: return Celda::numero(DecimalEscalado(Lee<ISC_INT64>(p), c.escala));
            case SQL_FLOAT: return CeldaReal(Lee<float>(p), c.escala);
            case SQL_DOUBLE:
            case SQL_D_FLOAT: return CeldaReal(Lee<double>(p), c.escala);
            case SQL_TYPE_DATE: return Celda::fecha(FechaMotor(Lee<ISC_DATE>(p)));
            case SQL_TIMESTAMP: {
                auto ts = Lee<ISC_TIMESTAMP>(p);
                return Celda::fecha(FechaMotor(ts.timestamp_date), SegundosMotor(ts.timestamp_time));
            }
            case SQL_TYPE_TIME: return Celda::fecha(Fecha(1899, 12, 30), SegundosMotor(Lee<ISC_TIME>(p)));
            case SQL_BOOLEAN: return Celda::logico(*p != 0);
            case SQL_TEXT: {
                std::string bytes(reinterpret_cast<const char*>(p), c.longitud);
                if (c.juego == kJuegoUtf8 || c.juego == kJuegoUnicodeFss) bytes = QuitaRellenoMultibyte(c, bytes);
                return Celda::texto(texto(c, std::move(bytes)));
            }
            case SQL_VARYING: {
                unsigned largo = std::min<unsigned>(Lee<unsigned short>(p), c.longitud);
                return Celda::texto(texto(c, std::string(reinterpret_cast<const char*>(p) + 2, largo)));
            }
            case SQL_BLOB:
                if (c.subtipo != 1) return Celda();  // binary data: not a value of a row
                return Celda::texto(texto(c, LeeBlob(st, Lee<ISC_QUAD>(p))));
            default: return Celda();  // arrays and kinds no client file uses
        }
    }

    /// A CHAR of a multi-byte set is padded with blanks to its length in
    /// bytes; the value keeps only the blanks within its declared length
    /// in characters.
    static std::string QuitaRellenoMultibyte(const Columna& c, std::string bytes) {
        size_t porCaracter = c.juego == kJuegoUtf8 ? 4 : 3;
        size_t maximo = c.longitud / porCaracter;
        auto caracteres = [&] {
            size_t n = 0;
            for (unsigned char b : bytes)
                if ((b & 0xC0) != 0x80) ++n;
            return n;
        };
        size_t n = caracteres();
        while (n > maximo && !bytes.empty() && bytes.back() == ' ') {
            bytes.pop_back();
            --n;
        }
        return bytes;
    }

    std::string LeeBlob(Estado& st, ISC_QUAD id) {
        Firebird::IBlob* blob = base_->conexion->openBlob(&st, base_->transaccion, &id, 0, nullptr);
        std::string r;
        try {
            char bufer[16384];
            for (;;) {
                unsigned leidos = 0;
                int estado = blob->getSegment(&st, sizeof bufer, bufer, &leidos);
                if (estado != Firebird::IStatus::RESULT_OK && estado != Firebird::IStatus::RESULT_SEGMENT) break;
                r.append(bufer, leidos);
            }
            blob->close(&st);
        } catch (...) {
            blob->release();
            throw;
        }
        return r;
    }
};

}  // namespace

// ---------------------------------------------------------------------------

BaseFirebird::BaseFirebird(const std::string& rutaDada, const std::string& usuario, const std::string& contrasena,
                           const std::string& paginaCodigos) {
    std::string ruta = RecortaEspacios(rutaDada);
    std::error_code ec;
    if (ruta.empty() || !fs::is_regular_file(fs::u8path(ruta), ec)) throw ErrorLectura(kConfirmeRuta, ruta, 0);
    RevisaEncabezado(ruta);

    Motor& m = ElMotor();
    if (!m.error.empty()) throw ErrorLectura(m.error, ruta, 0);
    fs::create_directories(m.bloqueos, ec);  // in case a cleaner of temporary folders took it
    d_ = std::make_shared<Interna>(m, ruta, paginaCodigos);

    d_->carpetaCopia = std::make_unique<QTemporaryDir>(QDir::tempPath() + "/velmorant-fdb-XXXXXX");
    if (!d_->carpetaCopia->isValid())
        throw ErrorLectura("No se pudo crear una carpeta temporal para leer " + ruta + ": " +
                               d_->carpetaCopia->errorString().toStdString(),
                           ruta, 0);
    fs::path copia = fs::u8path(d_->carpetaCopia->path().toStdString()) / "base.fdb";
    fs::copy_file(fs::u8path(ruta), copia, ec);
    // The copy takes the permissions of the original; the engine needs to write to it.
    if (!ec) fs::permissions(copia, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::replace, ec);
    if (ec)
        throw ErrorLectura("No se pudo copiar el archivo " + ruta + " a una carpeta temporal: " + ec.message(), ruta,
                           0);
    d_->copia = copia.string();

    Estado st(m);
    Firebird::IXpbBuilder* dpb = nullptr;
    try {
        dpb = m.util->getXpbBuilder(&st, Firebird::IXpbBuilder::DPB, nullptr, 0);
        dpb->insertString(&st, isc_dpb_user_name, usuario.empty() ? kUsuarioPorDefecto : usuario.c_str());
        dpb->insertString(&st, isc_dpb_password, contrasena.empty() ? kContrasenaPorDefecto : contrasena.c_str());
        // No conversion of text: every column comes in its own character
        // set, and those without one are decoded here with the code page.
        dpb->insertString(&st, isc_dpb_lc_ctype, "NONE");
        dpb->insertString(&st, isc_dpb_config, (std::string("Providers=") + kProveedor).c_str());
        d_->conexion =
            m.proveedor->attachDatabase(&st, d_->copia.c_str(), dpb->getBufferLength(&st), dpb->getBuffer(&st));
        dpb->dispose();
        dpb = nullptr;
    } catch (const Firebird::FbException& e) {
        if (dpb) dpb->dispose();
        const intptr_t* v = e.getStatus()->getErrors();
        std::string motor = TextoMotor(m, e.getStatus(), d_->copia, ruta);
        if (TieneCodigo(v, isc_wrong_ods)) throw ErrorLectura(MensajeEstructura(ruta, 0) + " (" + motor + ")", ruta, 0);
        if (TieneCodigo(v, isc_bad_db_format)) throw ErrorLectura(MensajeNoEsBase(ruta), ruta, 0);
        // Without its engine the client answers only "unavailable database".
        if (TieneCodigo(v, isc_unavailable) || TieneCodigo(v, isc_pman_cannot_load_plugin) ||
            TieneCodigo(v, isc_pman_plugin_notfound) || TieneCodigo(v, isc_no_providers)) {
            std::string diagnostico = DiagnosticoMotorFirebird();
            if (!diagnostico.empty())
                throw ErrorLectura("No se pudo abrir la base de datos " + ruta + ". " + diagnostico, ruta, 0);
        }
        throw ErrorLectura("No se pudo abrir la base de datos " + ruta + ": " + motor, ruta, 0);
    }

    try {
        const unsigned char pide[] = {isc_info_db_sql_dialect, isc_info_end};
        unsigned char respuesta[16] = {};
        d_->conexion->getInfo(&st, sizeof pide, pide, sizeof respuesta, respuesta);
        if (respuesta[0] == isc_info_db_sql_dialect) {
            unsigned largo = respuesta[1] | (respuesta[2] << 8);
            if (largo >= 1 && largo <= 4) d_->dialecto = respuesta[3];
        }
        // One read-only snapshot for every query of this database.
        Firebird::IXpbBuilder* tpb = m.util->getXpbBuilder(&st, Firebird::IXpbBuilder::TPB, nullptr, 0);
        tpb->insertTag(&st, isc_tpb_read);
        tpb->insertTag(&st, isc_tpb_concurrency);
        try {
            d_->transaccion = d_->conexion->startTransaction(&st, tpb->getBufferLength(&st), tpb->getBuffer(&st));
        } catch (...) {
            tpb->dispose();
            throw;
        }
        tpb->dispose();
    } catch (const Firebird::FbException& e) {
        d_->falla("No se pudo abrir la base de datos " + ruta + ": ", e);
    }
}

BaseFirebird::~BaseFirebird() = default;

const std::string& BaseFirebird::ruta() const { return d_->ruta; }

std::vector<std::string> BaseFirebird::tablas() {
    auto filas = consulta(
        "SELECT RDB$RELATION_NAME FROM RDB$RELATIONS "
        "WHERE COALESCE(RDB$SYSTEM_FLAG, 0) = 0 AND RDB$VIEW_BLR IS NULL ORDER BY 1");
    std::vector<std::string> r;
    Fila f;
    while (filas->siguiente(f)) r.push_back(f.campo(1));
    return r;
}

std::unique_ptr<FuenteRegistros> BaseFirebird::consulta(const std::string& sql, const std::vector<Valor>& parametros) {
    return std::make_unique<ConsultaFirebird>(d_, sql, parametros);
}

std::string DiagnosticoMotorFirebird() {
    Motor& m = ElMotor();
    if (!m.error.empty()) return m.error;
    Estado st(m);
    std::string problema;
    Firebird::IPluginSet* conjunto = nullptr;
    try {
        conjunto = m.maestro->getPluginManager()->getPlugins(&st, Firebird::IPluginManager::TYPE_PROVIDER, kProveedor,
                                                             nullptr);
        Firebird::IPluginBase* motor = conjunto->getPlugin(&st);
        if (motor)
            m.maestro->getPluginManager()->releasePlugin(motor);
        else
            problema = "no se encontró el módulo " + std::string(kProveedor);
    } catch (const Firebird::FbException& e) {
        problema = TextoMotor(m, e.getStatus());
    }
    if (conjunto) conjunto->release();
    if (problema.empty()) return "";
    return "No se pudo cargar el motor de Firebird (" + problema + "). En Debian lo instala el paquete " +
           kPaqueteMotor + " (apt-get install " + kPaqueteMotor + ").";
}

}  // namespace velmorant
