#include "importers/Comprimidos.h"

#include <filesystem>
#include <random>

#include "platform/ArchivoZip.h"
#include "platform/ErrorLectura.h"
#include "session/Funciones.h"

namespace velmorant {

ImportadorComprimido::ImportadorComprimido(std::unique_ptr<Importador> interno, std::set<std::string> papeles,
                                           bool meses)
    : interno_(std::move(interno)), papeles_(std::move(papeles)), meses_(meses) {}

ImportadorComprimido::~ImportadorComprimido() {
    std::error_code ec;
    if (!carpeta_.empty()) std::filesystem::remove_all(carpeta_, ec);
}

std::string ImportadorComprimido::extrae(Sesion& s, const std::string& archivo) {
    auto hecho = extraidos_.find(archivo);
    if (hecho != extraidos_.end()) return hecho->second;
    try {
        if (carpeta_.empty()) {
            std::random_device azar;
            std::filesystem::path c;
            do {
                c = std::filesystem::temp_directory_path() / ("velmorant-zip-" + std::to_string(azar()));
            } while (std::filesystem::exists(c));
            std::filesystem::create_directories(c);
            carpeta_ = c.string();
        }
        const std::string destino = carpeta_ + "/" + std::to_string(extraidos_.size() + 1);
        std::filesystem::create_directories(destino);
        auto archivos = ExtraeZip(archivo, destino);
        if (archivos.size() != 1)
            throw ErrorLectura("El archivo comprimido " + archivo + " debe contener un solo archivo; contiene " +
                                   std::to_string(archivos.size()) + ".",
                               archivo, 0);
        return extraidos_[archivo] = archivos.front();
    } catch (const ErrorLectura& e) {
        MsgCritico(s, e.what());
        throw;
    } catch (const std::filesystem::filesystem_error& e) {
        const std::string texto = "No se pudo extraer el archivo comprimido " + archivo + ": " + e.what();
        MsgCritico(s, texto);
        throw ErrorLectura(texto, archivo, 0);
    }
}

ArchivosImportacion ImportadorComprimido::extraidos(Sesion& s, const ArchivosImportacion& a) {
    ArchivosImportacion b = a;
    for (const auto& papel : papeles_) {
        auto rutas = a.rutas(papel);
        if (rutas.empty()) continue;
        if (b.otros.count(papel)) {
            for (auto& r : b.otros[papel]) r = extrae(s, r);
        } else {
            b.fija(papel, extrae(s, rutas.front()));
        }
    }
    return b;
}

void ImportadorComprimido::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    interno_->ImportaCatalogo(s, d, extraidos(s, a));
}

void ImportadorComprimido::ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    interno_->ImportaSaldosIniciales(s, d, extraidos(s, a));
}

void ImportadorComprimido::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    interno_->ImportaPolizas(s, d, extraidos(s, a));
}

void ImportadorComprimido::ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) {
    interno_->ImportaPolizasMes(s, d, mes, meses_ ? extrae(s, ruta) : ruta);
}

void ImportadorComprimido::ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    interno_->ImportaSaldosAnioAnterior(s, d, papeles_.count("saldos-anterior") ? extrae(s, ruta) : ruta);
}

FabricaImportador ConExtraccion(const DescriptorImportador& d) {
    std::set<std::string> papeles;
    for (const auto& a : d.archivos)
        if (a.comprimido) papeles.insert(a.papel);
    if (d.anioAnterior && d.anioAnterior->comprimido) papeles.insert(d.anioAnterior->papel);
    return [crea = d.crea, papeles, meses = d.mesesComprimidos](Sesion& s, const ArchivosImportacion& a)
               -> std::unique_ptr<Importador> {
        auto interno = crea(s, a);
        if (!interno) return nullptr;
        return std::make_unique<ImportadorComprimido>(std::move(interno), papeles, meses);
    };
}

}  // namespace velmorant
