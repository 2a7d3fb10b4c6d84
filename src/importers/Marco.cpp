#include "importers/Marco.h"

#include <cctype>
#include <filesystem>
#include <map>

#include "pipeline/MesesPolizas.h"
#include "platform/Ajustes.h"
#include "session/Funciones.h"
#include "session/Inicio.h"

namespace velmorant {

namespace {

const char* const kNombresMes[12] = {"Enero", "Febrero", "Marzo",      "Abril",   "Mayo",      "Junio",
                                     "Julio", "Agosto",  "Septiembre", "Octubre", "Noviembre", "Diciembre"};
// "MZO" is the abbreviation of March that the sources use.
const char* const kAbreviaturasMes[12] = {"ENE", "FEB", "MZO", "ABR", "MAY", "JUN",
                                          "JUL", "AGO", "SEP", "OCT", "NOV", "DIC"};

std::string Minusculas(std::string t) {
    for (char& c : t) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return t;
}

std::string Mayusculas(std::string t) {
    for (char& c : t) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return t;
}

bool EsDigito(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }


// The files of a folder by their lower-case names.
std::map<std::string, std::string> ArchivosPorNombre(const std::string& carpeta) {
    std::map<std::string, std::string> r;
    std::error_code ec;
    for (auto it = std::filesystem::directory_iterator(carpeta, ec); !ec && it != std::filesystem::directory_iterator();
         it.increment(ec)) {
        std::error_code ecTipo;
        if (!it->is_regular_file(ecTipo)) continue;
        r.emplace(Minusculas(it->path().filename().string()), it->path().string());
    }
    return r;
}

}  // namespace

std::string NombreDelMes(int mes) { return mes >= 1 && mes <= 12 ? kNombresMes[mes - 1] : ""; }

std::string CarpetaGuardada(const std::string& clave) {
    try {
        return LeeAjuste(kAplicacionPropia, kSeccionConfiguracion, clave, "");
    } catch (...) {
        return "";
    }
}

std::string CarpetaInicialSelector(const Sesion& s, const std::string& clave) {
    std::string guardada = CarpetaGuardada(clave);
    return ExisteCarpeta(guardada) ? guardada : s.RutaBase;
}

std::string SeleccionaArchivo(Sesion& s, const SelectorArchivo& selector) {
    if (!s.interaccion) return "";
    std::string ruta = s.interaccion->eligeArchivoEn(selector.filtro, selector.titulo,
                                                     CarpetaInicialSelector(s, selector.clave));
    if (ruta.empty()) return "";
    GuardaAjuste(kAplicacionPropia, kSeccionConfiguracion, selector.clave, CarpetaDeArchivo(ruta));
    return ruta;
}

bool ArchivoYaElegido(Sesion& s, const std::string& ruta, const std::vector<std::string>& elegidas) {
    for (const auto& elegida : elegidas) {
        if (!elegida.empty() && elegida == ruta) {
            MsgAviso(s, "El archivo ya ha sido seleccionado");
            return true;
        }
    }
    return false;
}

EfectoMarcaMes ClicMes(Sesion& s, bool marcado, const std::string& ruta) {
    if (!marcado) return EfectoMarcaMes::LimpiaRuta;
    if (!ruta.empty()) return EfectoMarcaMes::Nada;
    MsgInformacion(s, "Especifique por favor el archivo que contiene la información a importar");
    return EfectoMarcaMes::Desmarca;
}

std::optional<MarcadorMes> BuscaMarcadorMes(const std::string& nombre) {
    size_t punto = nombre.rfind('.');
    if (punto == std::string::npos) return std::nullopt;
    MarcadorMes m;
    m.extension = nombre.substr(punto);
    std::string minusculas = Minusculas(nombre);
    size_t pos = std::string::npos, largo = 0;
    for (const char* palabra : {"enero", "ene"}) {
        pos = minusculas.find(palabra);
        if (pos != std::string::npos) {
            largo = std::string(palabra).size();
            break;
        }
    }
    if (pos != std::string::npos) {
        m.tipo = largo == 3 ? MarcadorMes::Tipo::Abreviatura : MarcadorMes::Tipo::Nombre;
    } else {
        pos = nombre.find_first_of("0123456789.");
        while (pos + largo < nombre.size() && EsDigito(nombre[pos + largo])) ++largo;
        if (largo == 0) return std::nullopt;
        m.tipo = MarcadorMes::Tipo::Digitos;
    }
    if (pos + largo > punto) return std::nullopt;
    m.prefijo = nombre.substr(0, pos);
    m.marcador = nombre.substr(pos, largo);
    m.resto = nombre.substr(pos + largo, punto - pos - largo);
    if (m.prefijo + m.marcador + m.resto + m.extension != nombre) return std::nullopt;
    return m;
}

std::string NombreArchivoDelMes(const MarcadorMes& m, int mes) {
    std::string marcador;
    switch (m.tipo) {
        case MarcadorMes::Tipo::Abreviatura: marcador = kAbreviaturasMes[mes - 1]; break;
        case MarcadorMes::Tipo::Nombre: marcador = Mayusculas(kNombresMes[mes - 1]); break;
        case MarcadorMes::Tipo::Digitos: marcador = DosDigitos(mes); break;
    }
    return m.prefijo + marcador + m.resto + m.extension;
}

std::array<std::string, 12> AutocompletaMeses(const std::string& rutaEnero, const std::string& clave) {
    std::array<std::string, 12> meses;
    auto marcador = BuscaMarcadorMes(NombreDeArchivo(rutaEnero));
    if (!marcador) return meses;
    std::string carpeta = CarpetaGuardada(clave);
    if (carpeta.empty()) carpeta = CarpetaDeArchivo(rutaEnero);
    if (carpeta.empty()) return meses;
    auto archivos = ArchivosPorNombre(carpeta);
    for (int mes = 2; mes <= 12; ++mes) {
        auto it = archivos.find(Minusculas(NombreArchivoDelMes(*marcador, mes)));
        if (it != archivos.end()) meses[static_cast<size_t>(mes - 1)] = it->second;
    }
    return meses;
}

bool CompletaSeleccionArchivos(Sesion& s, const std::array<std::string, 13>& rutas) {
    if (!s.DbEmpresa) return true;
    int ultimo = MesesConPolizas(*s.DbEmpresa);
    if (ultimo == 0) return true;
    for (int mes = PrimerMesConPolizas(*s.DbEmpresa); mes >= 1 && mes <= ultimo; ++mes) {
        if (rutas[static_cast<size_t>(mes - 1)].empty()) {
            MsgInformacion(s, "Es necesario completar la selección de archivos a importar");
            return false;
        }
    }
    return true;
}

}  // namespace velmorant
