// Zip archives a client delivers in place of its files: extracted into a
// fresh folder, every file written must lie inside it.
#include <filesystem>
#include <string>

#include "Apoyo.h"
#include "platform/ArchivoZip.h"
#include "platform/ErrorLectura.h"

using namespace velmorant;
namespace fs = std::filesystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    std::string archivo = fuzz::EscribeArchivo(datos, largo, "entrega.zip");
    fs::path carpeta = fs::path(archivo).parent_path() / "extraidos";
    fs::remove_all(carpeta);
    fs::create_directories(carpeta);
    std::string base = fs::weakly_canonical(carpeta).string() + "/";
    try {
        for (const std::string& ruta : ExtraeZip(archivo, carpeta.string())) {
            std::string real = fs::weakly_canonical(ruta).string();
            fuzz::Exige(real.compare(0, base.size(), base) == 0, "archivo extraído fuera de su carpeta: " + real);
        }
    } catch (const ErrorLectura&) {
    }
    // Nothing beside the archive and the folder: no entry escaped upwards.
    for (const auto& e : fs::directory_iterator(fs::path(archivo).parent_path())) {
        std::string nombre = e.path().filename().string();
        fuzz::Exige(nombre == "entrega.zip" || nombre == "extraidos", "archivo escrito fuera de la carpeta: " + nombre);
    }
    fs::remove_all(carpeta);
    return 0;
}
