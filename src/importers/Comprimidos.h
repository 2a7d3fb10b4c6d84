#pragma once
// Importers whose files come as zip archives (declared in the descriptor:
// `ArchivoDescrito::comprimido`, `DescriptorImportador::mesesComprimidos`).
// The run's importer is wrapped: before each reader opens a declared file,
// the archive is extracted into a work folder of the run (platform/
// ArchivoZip.h, which refuses entries that would land outside it), and the
// reader is handed the one file the archive holds. The work folder goes
// with the importer.

#include <map>
#include <memory>
#include <set>
#include <string>

#include "importers/Descriptor.h"

namespace velmorant {

/// The picker's filter of files that come as archives (El Salvador -
/// PCCMulti, link 90, takes its chart and its month files so).
inline constexpr const char* kFiltroZip = "*.zip|*.zip";

class ImportadorComprimido : public Importador {
public:
    /// `papeles`: the roles whose files are archives; `meses`: the month files are.
    ImportadorComprimido(std::unique_ptr<Importador> interno, std::set<std::string> papeles, bool meses);
    ~ImportadorComprimido() override;

    int idSistema() const override { return interno_->idSistema(); }
    TipoImportacion tipo() const override { return interno_->tipo(); }
    bool saldosInicialesAparte() const override { return interno_->saldosInicialesAparte(); }
    ReglasDestino reglasDestino() const override { return interno_->reglasDestino(); }
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override { return interno_->validaArchivos(s, a); }

    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) override;
    void ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) override;

    /// The file an archive holds, extracted (once per archive). An archive
    /// that cannot be extracted, or does not hold exactly one file, shows
    /// its message and throws ErrorLectura naming it.
    std::string extrae(Sesion& s, const std::string& archivo);
    /// The work folder; empty until something was extracted.
    const std::string& carpeta() const { return carpeta_; }

private:
    std::unique_ptr<Importador> interno_;
    std::set<std::string> papeles_;
    bool meses_;
    std::string carpeta_;
    std::map<std::string, std::string> extraidos_;

    ArchivosImportacion extraidos(Sesion& s, const ArchivosImportacion& a);
};

/// The descriptor's factory, wrapped so that its importer reads the files
/// its archives hold.
FabricaImportador ConExtraccion(const DescriptorImportador& d);

}  // namespace velmorant
