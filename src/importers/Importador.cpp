#include "importers/Importador.h"

#include "importers/Descriptor.h"
#include "session/Funciones.h"

namespace velmorant {

// ------------------------------------------------------------ ArchivosImportacion

std::string ArchivosImportacion::ruta(const std::string& papel) const {
    if (papel == "catalogo") return catalogo;
    if (papel == "saldos-iniciales") return saldosIniciales;
    if (papel == "un-archivo") return polizas;
    if (papel == "saldos-anterior") return saldosAnioAnterior;
    auto it = otros.find(papel);
    return it == otros.end() || it->second.empty() ? "" : it->second.front();
}

std::vector<std::string> ArchivosImportacion::rutas(const std::string& papel) const {
    auto it = otros.find(papel);
    if (it != otros.end()) return it->second;
    std::string unica = ruta(papel);
    if (unica.empty()) return {};
    return {unica};
}

void ArchivosImportacion::fija(const std::string& papel, const std::string& r) {
    if (papel == "catalogo") catalogo = r;
    else if (papel == "saldos-iniciales") saldosIniciales = r;
    else if (papel == "un-archivo") polizas = r;
    else if (papel == "saldos-anterior") saldosAnioAnterior = r;
    else if (!r.empty()) otros[papel].push_back(r);
}

std::optional<std::string> ArchivosImportacion::parametro(const std::string& nombre) const {
    auto it = parametros.find(nombre);
    if (it == parametros.end()) return std::nullopt;
    return it->second;
}

// ------------------------------------------------------------ Importador

bool Importador::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    const DescriptorImportador* d = BuscaImportador(idSistema());
    bool conPalabrasPropias = false;
    if (d) {
        for (const auto& archivo : d->archivos) {
            if (archivo.faltante.empty()) continue;
            conPalabrasPropias = true;
            if (!a.ruta(archivo.papel).empty()) continue;
            if (archivo.avisoFaltante)
                MsgAviso(s, archivo.faltante);
            else
                MsgInformacion(s, archivo.faltante);
            return false;
        }
    }
    // An importer that gives no words of its own for a missing file gets the
    // run's: a month-by-month run needs at least its chart.
    if (!conPalabrasPropias && tipo() == TipoImportacion::MesPorMes &&
        (a.catalogo.empty() || (saldosInicialesAparte() && a.saldosIniciales.empty()))) {
        MsgInformacion(s, "La importación básica de la información contable comprende al menos dos archivos:\n"
                          "Catalogo de cuentas y Saldos iniciales, especifique por favor la ubicación de ambos archivos");
        return false;
    }
    return true;
}

void Importador::ImportaSaldosIniciales(Sesion&, DestinoTmp&, const ArchivosImportacion&) {}
void Importador::ImportaPolizas(Sesion&, DestinoTmp&, const ArchivosImportacion&) {}
void Importador::ImportaPolizasMes(Sesion&, DestinoTmp&, int, const std::string&) {}
void Importador::ImportaSaldosAnioAnterior(Sesion&, DestinoTmp&, const std::string&) {}
void Importador::confirmaPropio(Sesion&, MomentoConfirmacion) {}

}  // namespace velmorant
