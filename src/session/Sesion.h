#pragma once
// The session record: everything an importer and the pipeline need to know
// about the company in hand, set once at start-up and passed by reference.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "platform/Fecha.h"
#include "session/Interaccion.h"

namespace velmorant {

struct ParesGuardados;  // pipeline/Comparacion.cpp

struct Sesion {
    // Start-up (steps 1 to 11).
    std::string ClaveAplicacion;        // "Brevanta 13"
    std::string VersionPrograma;        // "major.minor.revision"
    std::string RutaBase;               // folder of Empresas, trailing separator
    Fecha FechaSesion;
    std::string NombCortoSolicitado;
    std::string EjercicioTexto;
    std::string RutaEmpresa;            // company folder, trailing separator
    std::unique_ptr<BaseDatos> DbEmpresas;
    std::unique_ptr<BaseDatos> DbEmpresa;

    // The company row.
    std::int32_t IdEmpresaActual = 0;
    std::string NombCortoEmpresa;
    std::string NombreEmpresa;
    std::int16_t EjercicioActual = 0;
    std::string FormatoCtaEmpresa;
    std::string SeparadorEmpresa;
    std::int16_t NumeroNiveles = 0;
    std::vector<int> LongitudesNivel{0};
    std::string AuditoriaActualTexto = "0";
    bool CatalogoArbol = false;
    bool RellenaCeros = false;
    bool SaldosConMes13 = false;
    // Review months of the row, as the start form reads them (Null as 0).
    int MesPrevia1 = 0, MesPrevia2 = 0, MesPrevia3 = 0, MesFinal = 0;

    std::int16_t UltimoMesImportado = 0;
    bool ImprimeFechaReporte = true;
    std::string NotaSaldosAnioAnterior;
    /// Title of the start form as `AbreEmpresaActual` sets it.
    std::string TituloInicio;

    // A run.
    std::int32_t IdSistemaElegido = 0;
    std::int16_t UltimoMesNuevo = 0;
    std::vector<int> MesesRevision;
    bool ContinuaImportacion = false;
    std::string EtapaSaldos;
    // Run stores attached to DbEmpresa: these point at that connection while
    // the store is open and are null while it is closed.
    BaseDatos* DbPolizasTmp = nullptr;
    BaseDatos* DbPolizasDetalleTmp = nullptr;
    BaseDatos* DbInconsistencias = nullptr;
    BaseDatos* DbCuentasTmp = nullptr;
    std::unique_ptr<BaseDatos> DbConfiguraciones;  // the layout catalogue
    std::string SqlActual;
    // What a month's comparison of the company's vouchers leaves to the
    // comparison of the new lines of that month, which follows it.
    std::shared_ptr<const ParesGuardados> ParesDelMes;

    // The front end's two interfaces; never null once start-up has run.
    Interaccion* interaccion = nullptr;
    Progreso* progreso = nullptr;
};

}  // namespace velmorant
