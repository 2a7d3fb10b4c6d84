#include "platform/ArchivoZip.h"

#include <iconv.h>
#include <sys/stat.h>
#include <zip.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "platform/ErrorLectura.h"

namespace velmorant {

namespace {

bool TieneBytesAltos(std::string_view t) {
    for (unsigned char c : t)
        if (c >= 0x80) return true;
    return false;
}

std::string DesdeCp850(std::string_view t) {
    iconv_t cd = iconv_open("UTF-8", "CP850");
    if (cd == reinterpret_cast<iconv_t>(-1)) return std::string(t);
    std::string entrada(t), salida(t.size() * 3 + 4, '\0');
    char* in = entrada.data();
    char* out = salida.data();
    size_t quedan = entrada.size(), libres = salida.size();
    size_t r = iconv(cd, &in, &quedan, &out, &libres);
    iconv_close(cd);
    if (r == static_cast<size_t>(-1)) return std::string(t);
    salida.resize(salida.size() - libres);
    return salida;
}

struct CierraZip {
    void operator()(zip_t* z) const { zip_discard(z); }
};

// Why an entry may not be written under the work folder; empty when it may.
std::string Peligro(const std::string& nombre, bool enlace) {
    if (enlace) return "es un enlace simbólico";
    bool absoluta = !nombre.empty() && nombre[0] == '/';
    if (nombre.size() >= 2 && nombre[1] == ':') absoluta = true;  // a drive letter
    if (absoluta) return "tiene una ruta absoluta";
    for (size_t a = 0, b; a <= nombre.size(); a = b + 1) {
        b = nombre.find('/', a);
        if (b == std::string::npos) b = nombre.size();
        if (nombre.compare(a, b - a, "..") == 0 && b - a == 2) return "sube de carpeta con \"..\"";
    }
    return "";
}

}  // namespace

std::string DecodificaNombreZip(std::string_view crudo, bool utf8) {
    std::string r = utf8 || !TieneBytesAltos(crudo) ? std::string(crudo) : DesdeCp850(crudo);
    for (char& c : r)
        if (c == '\\') c = '/';
    return r;
}

std::vector<std::string> ExtraeZip(const std::string& archivo, const std::string& carpeta) {
    int error = 0;
    std::unique_ptr<zip_t, CierraZip> z(zip_open(archivo.c_str(), ZIP_RDONLY, &error));
    if (!z) {
        zip_error_t e;
        zip_error_init_with_code(&e, error);
        std::string causa = zip_error_strerror(&e);
        zip_error_fini(&e);
        throw ErrorLectura("No se pudo abrir el archivo comprimido " + archivo + ": " + causa, archivo, 0);
    }
    struct Entrada {
        zip_uint64_t indice;
        std::string nombre;
    };
    std::vector<Entrada> entradas;
    const zip_int64_t total = zip_get_num_entries(z.get(), 0);
    for (zip_int64_t i = 0; i < total; ++i) {
        const auto indice = static_cast<zip_uint64_t>(i);
        const char* crudo = zip_get_name(z.get(), indice, ZIP_FL_ENC_RAW);
        const char* estricto = zip_get_name(z.get(), indice, ZIP_FL_ENC_STRICT);
        if (!crudo) continue;
        // Read strictly, a name libzip does not know as UTF-8 comes back
        // converted from code page 437: an unchanged name with high bytes
        // carried the UTF-8 flag.
        bool utf8 = estricto && std::string_view(crudo) == estricto;
        std::string nombre = DecodificaNombreZip(crudo, utf8);
        zip_uint8_t sistema = 0;
        zip_uint32_t atributos = 0;
        bool enlace = zip_file_get_external_attributes(z.get(), indice, 0, &sistema, &atributos) == 0 &&
                      sistema == ZIP_OPSYS_UNIX && ((atributos >> 16) & S_IFMT) == S_IFLNK;
        std::string peligro = Peligro(nombre, enlace);
        if (!peligro.empty())
            throw ErrorLectura("El archivo comprimido " + archivo + " no se extrajo: su entrada " + nombre + " " +
                                   peligro + ", y se escribiría fuera de la carpeta de trabajo.",
                               archivo, 0);
        entradas.push_back({indice, nombre});
    }
    std::vector<std::string> escritos;
    const std::filesystem::path raiz(carpeta);
    for (const auto& e : entradas) {
        std::filesystem::path destino = raiz / e.nombre;
        if (!e.nombre.empty() && e.nombre.back() == '/') {
            std::filesystem::create_directories(destino);
            continue;
        }
        std::filesystem::create_directories(destino.parent_path());
        zip_file_t* f = zip_fopen_index(z.get(), e.indice, 0);
        if (!f)
            throw ErrorLectura("No se pudo leer la entrada " + e.nombre + " del archivo comprimido " + archivo + ": " +
                                   zip_strerror(z.get()),
                               archivo, 0);
        std::ofstream salida(destino, std::ios::binary | std::ios::trunc);
        char bufer[1 << 15];
        zip_int64_t leidos;
        while ((leidos = zip_fread(f, bufer, sizeof bufer)) > 0) salida.write(bufer, leidos);
        zip_fclose(f);
        if (leidos < 0 || !salida)
            throw ErrorLectura("No se pudo extraer la entrada " + e.nombre + " del archivo comprimido " + archivo,
                               archivo, 0);
        escritos.push_back(destino.string());
    }
    return escritos;
}

}  // namespace velmorant
