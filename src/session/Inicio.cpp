#include "session/Inicio.h"

#include <cstdio>
#include <filesystem>

#include "Version.h"
#include "pipeline/MesesPolizas.h"
#include "platform/Ajustes.h"
#include "platform/Numeros.h"
#include "session/Enlaces.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant {

std::string VersionDelPrograma() {
    return std::to_string(VELMORANT_VERSION_MAJOR) + "." + std::to_string(VELMORANT_VERSION_MINOR) + "." +
           std::to_string(VELMORANT_VERSION_PATCH);
}

std::string LeeRutaGuardada(Sesion& s, const std::string& seccion, const std::string& clave) {
    try {
        return LeeAjuste(s.ClaveAplicacion, seccion, clave, "");
    } catch (...) {
        return "";
    }
}

std::string GuardaRuta(Sesion& s, const std::string& ruta, const std::string& seccion, const std::string& clave) {
    if (ruta.empty()) return "";
    std::string carpeta = CarpetaDeArchivo(ruta);
    GuardaAjuste(s.ClaveAplicacion, seccion, clave, carpeta);
    return carpeta;
}

std::string EligeArchivo(Sesion& s, const std::string& filtro) {
    if (!s.interaccion) return "";
    return s.interaccion->eligeArchivo(filtro, TituloMensajes(s));
}

std::string ResuelveRutaBase(Sesion& s, const std::string& archivo, const std::string& seccion,
                             const std::string& clave, const std::optional<std::string>& rutaImpuesta) {
    // A local installation needs no setting; a path given by the user on the
    // command line is meant, so the program's folder is not looked at then.
    if (!rutaImpuesta) {
        std::string programa = CarpetaPrograma();
        if (ExisteArchivo(programa + archivo)) return programa;
    }
    std::string guardada = rutaImpuesta ? ConSeparadorFinal(*rutaImpuesta) : LeeRutaGuardada(s, seccion, clave);
    const std::string filtro = archivo + "|" + archivo;
    if (guardada.empty()) return GuardaRuta(s, EligeArchivo(s, filtro), seccion, clave);
    if (ExisteArchivo(guardada + archivo)) return guardada;

    const std::string aviso = "Verifique su conexión a la red ó llame a soporte técnico";
    bool indicar = MsgPregunta(
        s, "Su equipo esta fuera del entorno de red o la ruta de acceso a la base de datos del sistema ha cambiado.\r\n\r\n"
           "Ruta de acceso actual: " + guardada + archivo + "\r\n\r\n¿ Desea indicar la ubicación de la base: " + archivo +
           "?");
    if (!indicar) {
        MsgAviso(s, aviso);
        return "";
    }
    std::string elegido = EligeArchivo(s, filtro);
    if (elegido.empty()) {
        MsgAviso(s, aviso);
        return "";
    }
    if (!ExisteArchivo(elegido)) return "";
    return GuardaRuta(s, elegido, seccion, clave);
}

std::string RutaEmpresa(const std::string& rutaBase, int ejercicio, const std::string& nombCorto) {
    char anio[16];
    std::snprintf(anio, sizeof anio, "%04d", ejercicio);
    return rutaBase + anio + "_" + nombCorto + SeparadorRuta();
}

std::string ArchivoEmpresa(const std::string& rutaEmpresa, const std::string& nombCorto, int ejercicio) {
    return RutaBaseDatos(rutaEmpresa, nombCorto + "_" + std::to_string(ejercicio));
}

int CuentaNiveles(const Consulta& fila) {
    for (int n = 12; n >= 1; --n) {
        const Valor& v = fila["Nivel" + std::to_string(n)];
        if (!v.esNulo() && v.entero() != 0) return n;
    }
    return 0;
}

std::vector<int> LeeLongitudesNivel(const Consulta& fila, int n) {
    std::vector<int> r;
    for (int i = 1; i <= n; ++i) r.push_back(static_cast<int>(SiNuloCero(fila["Nivel" + std::to_string(i)]).entero()));
    return r;
}

namespace {

const char* kConsultaEmpresa = "SELECT * FROM [Empresas] WHERE NombCorto=? AND Ejercicio=?";

void LimpiaEmpresa(Sesion& s) {
    s.TituloInicio = "VELMORANT Ver. " + s.VersionPrograma;
    s.IdEmpresaActual = 0;
    s.NombCortoEmpresa.clear();
    s.NombreEmpresa.clear();
    s.FormatoCtaEmpresa.clear();
    s.SeparadorEmpresa.clear();
    s.EjercicioTexto.clear();
    s.EjercicioActual = 0;
    s.NumeroNiveles = 0;
    s.LongitudesNivel = {0};
    s.AuditoriaActualTexto = "0";
    s.CatalogoArbol = s.RellenaCeros = s.SaldosConMes13 = false;
}

std::string Recorta(const std::string& t) {
    size_t a = t.find_first_not_of(' ');
    if (a == std::string::npos) return "";
    return t.substr(a, t.find_last_not_of(' ') - a + 1);
}

void LlenaEmpresa(Sesion& s, const Consulta& fila) {
    s.IdEmpresaActual = static_cast<std::int32_t>(fila["IdEmpresa"].entero());
    s.NombCortoEmpresa = Recorta(SiNuloTexto(fila["NombCorto"]));
    s.NombreEmpresa = SiNuloTexto(fila["Nombre"]);
    s.EjercicioActual = static_cast<std::int16_t>(fila["Ejercicio"].entero());
    s.EjercicioTexto = std::to_string(s.EjercicioActual);
    s.FormatoCtaEmpresa = SiNuloTexto(fila["FormatoCta"]);
    s.SeparadorEmpresa = SiNuloTexto(fila["Separador"]);
    s.AuditoriaActualTexto = std::to_string(SiNuloCero(fila["AuditoriaActual"]).entero());
    s.CatalogoArbol = fila["CatArbol"].booleano();
    s.RellenaCeros = fila["RellenaCtaCeros"].booleano();
    s.SaldosConMes13 = fila["SdosFinConMes13"].booleano();
    s.NumeroNiveles = static_cast<std::int16_t>(CuentaNiveles(fila));
    s.LongitudesNivel = LeeLongitudesNivel(fila, s.NumeroNiveles);
    if (s.LongitudesNivel.empty()) s.LongitudesNivel = {0};
    s.TituloInicio = "VELMORANT Ver. " + s.VersionPrograma + " - " + s.NombreEmpresa + " (" + s.EjercicioTexto + ")";
}

}  // namespace

void AbreEmpresaActual(Sesion& s, const std::string& nombCorto, int ejercicio) {
    const std::string ruta = ArchivoEmpresa(s.RutaEmpresa, nombCorto, ejercicio);
    // An empty file is a company whose data was lost (a failed copy, a full
    // disk), never a new one: it is reported and left for the user to restore.
    std::error_code ec;
    if (std::filesystem::is_regular_file(ruta, ec) && std::filesystem::file_size(ruta, ec) == 0 && !ec) {
        MsgCritico(s, "La base de datos de la empresa está vacía (0 bytes): " + ruta +
                          "\r\nNo se abrirá ni se reemplazará; restáurela de su respaldo.");
        return;
    }
    try {
        BaseDatos empresas(RutaBaseDatos(s.RutaBase, kArchivoEmpresas));
        auto empresa = std::make_unique<BaseDatos>(ruta);
        // Only a missing or older schema is written: a session that only
        // reads takes no write lock.
        if (PreparaEsquemaEmpresa(*empresa) == EstadoEsquema::SinTablas) {
            MsgCritico(s, "El archivo " + ruta +
                              " no contiene las tablas de una empresa; no se abrirá ni se modificará.");
            return;
        }
        s.DbEmpresa = std::move(empresa);
        Consulta fila = empresas.consulta(kConsultaEmpresa, nombCorto, ejercicio);
        if (fila.vacia())
            LimpiaEmpresa(s);
        else
            LlenaEmpresa(s, fila);
    } catch (const ErrorBaseDatos& e) {
        // Said in the user's words: the engine's alone would not tell what
        // to do about it.
        const int primario = e.codigo() & 0xFF;
        if (primario == 5 || primario == 6)  // BUSY, LOCKED: another program holds it
            MsgCritico(s, "La base de datos de la empresa " + ruta +
                              " está ocupada por otro programa; se esperó y no se liberó.\r\nCierre el programa que "
                              "la usa e intente de nuevo.\r\n(" + e.mensajeMotor() + ")");
        else if (e.esDano())
            MsgCritico(s, "La base de datos de la empresa " + ruta +
                              " está dañada o no es una base de datos; no se abrirá ni se modificará.\r\n"
                              "Restáurela de su respaldo.\r\n(" + e.mensajeMotor() + ")");
        else
            ReportaError(s, e, true);
    } catch (const std::exception& e) {
        ReportaError(s, e, true);
    }
}

std::string NotaSaldosAnioAnterior() {
    return "La importación de los saldos del año anterior según auditoría, sólo aplica cuando el contribuyente reflejó "
           "los ajustes de auditoría sobre los saldos del ejercicio auditado; por lo que en estos casos, los saldos "
           "contables coinciden con los saldos de Auditoría.\r\n"
           "En caso de que los saldos contables NO coincidan con los de auditoría, se recomienda utilizar el módulo "
           "'Importar/Capturar Balanza', seleccionando en 'Saldos de:' la opción de: 'AÑO ANTERIOR FINAL'.\r\n"
           " Para más información refiérase al Manual de Usuario Tópico '8.4 Importar/Capturar Balanza'.";
}

bool LeeImprimeFechaReporte() {
    std::string v = LeeAjuste(kAplicacionPropia, kSeccionConfiguracion, "ImpFechaRpt", "Verdadero");
    for (char& c : v) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return !(v == "falso" || v == "false" || v == "0");
}

namespace {

// Step 10: the second open, kept for the whole session, and the review
// months the start form shows.
void AbreBasesDeSesion(Sesion& s, int ejercicio) {
    try {
        s.DbEmpresas = std::make_unique<BaseDatos>(RutaBaseDatos(s.RutaBase, kArchivoEmpresas));
        if (!s.DbEmpresa)
            s.DbEmpresa = std::make_unique<BaseDatos>(ArchivoEmpresa(s.RutaEmpresa, s.NombCortoSolicitado, ejercicio));
        Consulta fila = s.DbEmpresas->consulta(kConsultaEmpresa, s.NombCortoSolicitado, ejercicio);
        if (fila.vacia()) return;
        s.MesPrevia1 = static_cast<int>(SiNuloCero(fila["MesPrevia1"]).entero());
        s.MesPrevia2 = static_cast<int>(SiNuloCero(fila["MesPrevia2"]).entero());
        s.MesPrevia3 = static_cast<int>(SiNuloCero(fila["MesPrevia3"]).entero());
        s.MesFinal = static_cast<int>(SiNuloCero(fila["MesFinal"]).entero());
    } catch (const std::exception& e) {
        ReportaError(s, e, true);
    }
}

int EjercicioNumerico(Sesion& s) {
    auto v = ValorNumerico(s.EjercicioTexto);
    if (!v || *v < 0 || *v > 9999 || *v != static_cast<int>(*v)) {
        std::string texto = "El ejercicio de la empresa actual no es válido: '" + s.EjercicioTexto +
                            "'. Abra una empresa en Brevanta antes de iniciar VELMORANT.";
        MsgCritico(s, texto);
        throw ProgramaTerminado(texto);
    }
    return static_cast<int>(*v);
}

}  // namespace

void IniciaSesion(Sesion& s, const OpcionesInicio& opciones) {
    s.VersionPrograma = VersionDelPrograma();
    s.ClaveAplicacion = kAplicacionAuditoria;
    s.TituloInicio = "VELMORANT Ver. " + s.VersionPrograma;
    s.RutaBase = ResuelveRutaBase(s, std::string(kArchivoEmpresas) + kExtensionBase, kSeccionBaseDatos, "RutaAcceso",
                                  opciones.base);
    s.FechaSesion = Fecha::hoy();
    s.NombCortoSolicitado = opciones.empresa ? *opciones.empresa : LeeAjuste(s.ClaveAplicacion, kSeccionBaseDatos,
                                                                             "EmpresaActual_NombreCorto");
    s.EjercicioTexto = opciones.ejercicio ? *opciones.ejercicio : LeeAjuste(s.ClaveAplicacion, kSeccionBaseDatos,
                                                                            "EmpresaActual_Ejercicio");
    int ejercicio = EjercicioNumerico(s);
    s.RutaEmpresa = RutaEmpresa(s.RutaBase, ejercicio, s.NombCortoSolicitado);
    AbreEmpresaActual(s, s.NombCortoSolicitado, ejercicio);
    if (!s.DbEmpresa) {
        // The Part leaves the session unusable here; we say so and stop.
        throw ProgramaTerminado("No fue posible abrir la base de datos de la empresa " + s.NombCortoSolicitado + " (" +
                                s.EjercicioTexto + ")");
    }
    s.UltimoMesImportado = static_cast<std::int16_t>(MesesConPolizas(*s.DbEmpresa));
    s.ImprimeFechaReporte = LeeImprimeFechaReporte();
    AbreBasesDeSesion(s, ejercicio);
    if (!s.DbEmpresas)
        throw ProgramaTerminado("No fue posible abrir la base de datos del sistema: " +
                                RutaBaseDatos(s.RutaBase, kArchivoEmpresas));
    // Both databases are open and read, so any commit a kill cut short has
    // been undone in them; what it left in the company folder can go.
    QuitaSuperJournalesHuerfanos(ArchivoEmpresa(s.RutaEmpresa, s.NombCortoSolicitado, ejercicio));
    s.NotaSaldosAnioAnterior = NotaSaldosAnioAnterior();
}

}  // namespace velmorant
