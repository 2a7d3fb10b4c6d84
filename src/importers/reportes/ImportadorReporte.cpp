#include "importers/reportes/ImportadorReporte.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "importers/RegistroSistemas.h"
#include "importers/reportes/LectorReporte.h"
#include "importers/texto_delimitado/DelimitadorArchivo.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "platform/Ajustes.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// The links whose vouchers this program reads from a printed report, each
// with a description of its own in the folder of descriptions. The folder
// also holds drafts for Microsip (15), StarCon (29), Proscai (42) and Magic
// (101), made from their markers over synthetic samples only: a line the
// description does not know is skipped as page furniture, so a draft that
// misses a client's real layout would read nothing from it without a word.
// They stay unreleased until a real report of each confirms them;
// `reporte probar` tries them on a client's file meanwhile.
constexpr int kEnlacesReporte[] = {2, 76, 98, 100};

}  // namespace

std::string CarpetaDescripciones() {
    if (const char* v = std::getenv(kVariableReportes); v && *v) return v;
    return (std::filesystem::path(CarpetaPrograma()) / "reportes").string();
}

DescripcionesReportes CargaDescripciones(const std::string& carpeta) {
    DescripcionesReportes r;
    r.carpeta = carpeta;
    std::error_code ec;
    if (!std::filesystem::is_directory(carpeta, ec)) return r;
    std::vector<std::filesystem::path> archivos;
    for (auto& e : std::filesystem::directory_iterator(carpeta, ec))
        if (e.is_regular_file() && e.path().extension() == ".toml") archivos.push_back(e.path());
    std::sort(archivos.begin(), archivos.end());
    for (auto& ruta : archivos) {
        try {
            DescripcionReporte d = CargaDescripcion(ruta.string());
            auto [it, nueva] = r.porEnlace.emplace(d.enlace, d);
            if (!nueva)
                throw ErrorDescripcion(d.ruta, 1, "el enlace " + std::to_string(d.enlace) + " ya lo describe " +
                                                      it->second.ruta);
        } catch (const ErrorDescripcion& e) {
            r.errores.push_back(e.what());
        }
    }
    return r;
}

const DescripcionesReportes& Descripciones() {
    static const DescripcionesReportes d = CargaDescripciones(CarpetaDescripciones());
    return d;
}

// ------------------------------------------------------------ the importer

ReglasDestino ImportadorReporte::reglasDestino() const {
    ReglasDestino r = ReglasTextoDelimitado();
    if (d_.cuentaNoExisteEnCatalogo)
        r.avisoCuentaInexistente = ReglasDestino::AvisoCuentaInexistente::NoExisteEnCatalogo;
    return r;
}

bool ImportadorReporte::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (catalogo_.separador.empty()) {
        MsgAviso(s, "Especifique por favor el caracter separador");
        return false;
    }
    return Importador::validaArchivos(s, a);
}

void ImportadorReporte::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaCatalogoTexto(s, d, a.catalogo, catalogo_, !a.saldosIniciales.empty());
}

void ImportadorReporte::ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaSaldosInicialesTexto(s, d, a.saldosIniciales, catalogo_);
}

void ImportadorReporte::ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) {
    ImportaPolizasReporte(s, d, d_, mes, ruta);
}

// ------------------------------------------------------------ descriptors

DescriptorImportador DescriptorReporte(int idSistema) {
    const SistemaRegistrado* sistema = BuscaSistema(idSistema);
    const auto& cargadas = Descripciones();
    auto descrita = cargadas.porEnlace.find(idSistema);
    DescriptorImportador d;
    d.IdSistema = idSistema;
    d.titulo = sistema ? sistema->titulo : "";
    d.tipo = TipoImportacion::MesPorMes;
    d.archivos = ArchivosCatalogoDelimitado();
    d.meses = true;
    d.mes13 = descrita != cargadas.porEnlace.end() && descrita->second.mes13;
    std::string filtro = descrita != cargadas.porEnlace.end() ? descrita->second.filtro : "*.txt|*.txt";
    d.selectorMes = {"Búsqueda del Archivo de Pólizas del mes de ", filtro, kClavePolizasMes};
    d.casillas = CasillasLecturaDelimitada();
    d.parametros = ParametrosLecturaDelimitada();
    // The chart and balances are delimited text; the reports are not. Where
    // every line must hold the delimiter, a line without it is named in the
    // link's own words.
    const bool exigeDelimitador = descrita != cargadas.porEnlace.end() && descrita->second.catalogoDelimitado;
    d.verificaEntradas = [exigeDelimitador](const ArchivosImportacion& a) {
        if (exigeDelimitador) {
            const std::string separador = SeparadorElegido(a);
            for (const auto& ruta : {a.catalogo, a.saldosIniciales})
                if (!ruta.empty() && !separador.empty())
                    if (long linea = LineaSinDelimitador(ruta, separador))
                        throw ParametroInvalido(ruta + ", no está delimitado con el caracter: ( " + separador +
                                                " )\nLa línea " + std::to_string(linea) +
                                                " no lo contiene; revise --separador o --tabulador.");
        }
        VerificaDelimitador(a, false);
    };
    d.crea = [idSistema](Sesion& s, const ArchivosImportacion& a) -> std::unique_ptr<Importador> {
        const auto& todas = Descripciones();
        auto it = todas.porEnlace.find(idSistema);
        if (it == todas.porEnlace.end()) {
            std::string texto = "No hay una descripción utilizable del reporte del enlace " +
                                std::to_string(idSistema) + " en la carpeta " + todas.carpeta + ".";
            for (auto& e : todas.errores) texto += "\n" + e;
            MsgCritico(s, texto);
            return nullptr;
        }
        auto lectura = LecturaDelimitadaElegida(s, a);
        if (!lectura) return nullptr;
        return std::make_unique<ImportadorReporte>(it->second, *lectura);
    };
    return d;
}

bool EsEnlaceDeReporte(int idSistema) {
    for (int id : kEnlacesReporte)
        if (id == idSistema) return true;
    return false;
}

std::vector<DescriptorImportador> DescriptoresReportes() {
    std::vector<DescriptorImportador> r;
    for (int id : kEnlacesReporte) r.push_back(DescriptorReporte(id));
    return r;
}

}  // namespace velmorant
