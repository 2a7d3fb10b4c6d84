#include "store/AltaBase.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include "pipeline/Reportes.h"
#include "platform/ArchivoTexto.h"
#include "platform/BaseDatos.h"
#include "session/Enlaces.h"
#include "session/Funciones.h"
#include "session/Inicio.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant {

std::string CreaBase(const std::string& carpeta) {
    std::filesystem::create_directories(carpeta);
    std::string base = ConSeparadorFinal(carpeta);
    BaseDatos empresas(RutaBaseDatos(base, kArchivoEmpresas), BaseDatos::Modo::Crear);
    CreaEsquemaEmpresas(empresas);
    BaseDatos enlaces(RutaBaseDatos(base, kArchivoEnlaces), BaseDatos::Modo::Crear);
    CreaEsquemaEnlaces(enlaces);
    ActualizaCatalogoEnlaces(enlaces);
    InstalaPlantillasReporte(base);
    return base;
}

// Characters of a UTF-8 text.
static size_t Caracteres(const std::string& t) {
    return static_cast<size_t>(std::count_if(t.begin(), t.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

// A text of the company's row: UTF-8, within its field, and without control
// characters (the short name also names the company's folder and file).
static void ValidaTexto(const std::string& t, const std::string& que, size_t caben) {
    if (!EsUtf8Valido(t))
        throw std::invalid_argument(que + " no es un texto válido: tiene bytes que no forman caracteres (UTF-8)");
    if (Caracteres(t) > caben)
        throw std::invalid_argument(que + " tiene " + std::to_string(Caracteres(t)) + " caracteres y caben " +
                                    std::to_string(caben));
    if (std::any_of(t.begin(), t.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }))
        throw std::invalid_argument(que + " no es válido: tiene caracteres de control");
}

static void Valida(const DatosEmpresaNueva& d) {
    ValidaTexto(d.nombreCorto, "El nombre corto", 50);
    ValidaTexto(d.nombre, "El nombre de la empresa", 255);
    if (d.nombreCorto.empty() || d.nombreCorto.find_first_of("/\\:*?\"<>|") != std::string::npos)
        throw std::invalid_argument("El nombre corto no es válido: '" + d.nombreCorto + "'");
    if (d.ejercicio < 1 || d.ejercicio > 9999)
        throw std::invalid_argument("El ejercicio no es válido: " + std::to_string(d.ejercicio));
    if (d.niveles.empty() || d.niveles.size() > 12)
        throw std::invalid_argument("Indique de 1 a 12 niveles de cuenta");
    for (int n : d.niveles)
        if (n < 1 || n > 50) throw std::invalid_argument("La longitud de un nivel debe ser de 1 a 50 caracteres");
    if (d.separador.size() > 1) throw std::invalid_argument("El separador debe ser un solo carácter");
    for (int m : {d.mesPrevia1, d.mesPrevia2, d.mesPrevia3, d.mesFinal})
        if (m < 0 || m > 12) throw std::invalid_argument("Los meses de revisión deben ser de 0 a 12");
}

int CreaEmpresa(const std::string& rutaBase, const DatosEmpresaNueva& d) {
    Valida(d);
    std::string base = ConSeparadorFinal(rutaBase);
    BaseDatos empresas(RutaBaseDatos(base, kArchivoEmpresas));
    Transaccion t(empresas);
    if (!empresas.escalar("SELECT IdEmpresa FROM Empresas WHERE NombCorto=? AND Ejercicio=?", d.nombreCorto,
                          d.ejercicio)
             .esNulo())
        throw std::invalid_argument("La empresa " + d.nombreCorto + " (" + std::to_string(d.ejercicio) +
                                    ") ya existe");
    int id = static_cast<int>(empresas.escalar("SELECT COALESCE(MAX(IdEmpresa), 0) + 1 FROM Empresas").entero());
    std::string sql =
        "INSERT INTO Empresas (IdEmpresa, NombCorto, Nombre, Ejercicio, FormatoCta, Separador, CatArbol, "
        "RellenaCtaCeros, CtaPrefijoHomogeneo, SdosFinConMes13, AuditoriaActual, MesPrevia1, MesPrevia2, "
        "MesPrevia3, MesFinal, IdSistema) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
    empresas.ejecuta(sql, id, d.nombreCorto, d.nombre, d.ejercicio, d.formatoCta, d.separador, d.catArbol,
                     d.rellenaCeros, true, d.saldosConMes13, 3, d.mesPrevia1, d.mesPrevia2, d.mesPrevia3, d.mesFinal,
                     0);
    for (size_t i = 0; i < d.niveles.size(); ++i)
        empresas.ejecuta("UPDATE Empresas SET Nivel" + std::to_string(i + 1) + "=? WHERE IdEmpresa=?", d.niveles[i], id);

    std::string carpeta = RutaEmpresa(base, d.ejercicio, d.nombreCorto);
    std::filesystem::create_directories(carpeta);
    BaseDatos empresa(ArchivoEmpresa(carpeta, d.nombreCorto, d.ejercicio), BaseDatos::Modo::Crear);
    CreaEsquemaEmpresa(empresa);
    t.confirma();
    return id;
}

}  // namespace velmorant
