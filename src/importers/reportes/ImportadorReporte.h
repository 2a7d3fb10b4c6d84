#pragma once
// The importers of printed reports: one importer class for every system
// whose vouchers come as a report saved as text, each link with its own
// description (a TOML file of the folder of descriptions, one per link).
// The reports hold only the vouchers, one file per month; the chart of
// accounts and the opening balances come through a saved layout of the
// delimited-text importer (link 82), with the same options.
//
// The descriptions are loaded once, when the register of importers is
// first used (at the program's start): every "*.toml" of the folder. One
// that cannot be used is left out, and its fault, naming the file and the
// line, is kept for the program to show; a run of its link then says that
// the link has no usable description.

#include <map>
#include <string>
#include <vector>

#include "importers/Descriptor.h"
#include "importers/reportes/DescripcionReporte.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"

namespace velmorant {

/// Environment variable naming the folder of the descriptions (tests,
/// portable installs); else the folder "reportes" beside the program.
inline constexpr const char* kVariableReportes = "VELMORANT_REPORTES";

/// The folder the descriptions are loaded from.
std::string CarpetaDescripciones();

struct DescripcionesReportes {
    std::string carpeta;
    std::map<int, DescripcionReporte> porEnlace;
    /// Faults of the files left out, each naming its file and line.
    std::vector<std::string> errores;
};

/// Loads every description of `carpeta` (a missing folder has none).
DescripcionesReportes CargaDescripciones(const std::string& carpeta);

/// The descriptions of this process, loaded from CarpetaDescripciones()
/// on first use.
const DescripcionesReportes& Descripciones();

class ImportadorReporte : public Importador {
public:
    ImportadorReporte(const DescripcionReporte& descripcion, LecturaDelimitada catalogo)
        : d_(descripcion), catalogo_(std::move(catalogo)) {
        catalogo_.exigeDelimitador = catalogo_.exigeDelimitador || d_.catalogoDelimitado;
    }

    int idSistema() const override { return d_.enlace; }
    TipoImportacion tipo() const override { return TipoImportacion::MesPorMes; }
    bool saldosInicialesAparte() const override { return true; }
    ReglasDestino reglasDestino() const override;
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;

    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) override;

private:
    DescripcionReporte d_;
    LecturaDelimitada catalogo_;
};

/// The descriptor of a report link: chart and balances as link 82 asks for
/// them, twelve month rows (and month 13 when the description has it).
DescriptorImportador DescriptorReporte(int idSistema);

/// The report links this program has, for the register.
std::vector<DescriptorImportador> DescriptoresReportes();

/// True when the link's vouchers come from a printed report.
bool EsEnlaceDeReporte(int idSistema);

}  // namespace velmorant
