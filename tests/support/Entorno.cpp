#include "support/Entorno.h"

#include <QSettings>

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "pipeline/Historial.h"

namespace velmorant::prueba {

CarpetaTemporal::CarpetaTemporal() {
    std::random_device rd;
    auto base = std::filesystem::temp_directory_path();
    do {
        ruta_ = base / ("velmorant-prueba-" + std::to_string(rd()));
    } while (std::filesystem::exists(ruta_));
    std::filesystem::create_directories(ruta_);
}

CarpetaTemporal::~CarpetaTemporal() {
    std::error_code ec;
    std::filesystem::remove_all(ruta_, ec);
}

AjustesAislados::AjustesAislados() {
    std::filesystem::create_directories(carpeta_.ruta() / "config");
    std::filesystem::create_directories(carpeta_.ruta() / "datos");
    setenv("XDG_CONFIG_HOME", (carpeta_.ruta() / "config").c_str(), 1);
    setenv("VELMORANT_DATOS", (carpeta_.ruta() / "datos").c_str(), 1);
    // Qt reads XDG_CONFIG_HOME once per process; point it at this folder.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       QString::fromStdString((carpeta_.ruta() / "config").string()));
}

AjustesAislados::~AjustesAislados() {
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("VELMORANT_DATOS");
}

std::string ContenidoEmpresaSinHistorial(const std::string& archivo) {
    BaseDatos db(archivo, BaseDatos::Modo::SoloLectura);
    const auto& historial = TablasHistorial();
    std::string r;
    Consulta tablas = db.consulta("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name");
    for (tablas.primero(); !tablas.eof(); tablas.siguiente()) {
        std::string t = tablas["name"].texto();
        if (std::find(historial.begin(), historial.end(), t) != historial.end()) continue;
        r += t + ":";
        Consulta c = db.consulta("SELECT * FROM \"" + t + "\" ORDER BY rowid");
        for (c.primero(); !c.eof(); c.siguiente())
            for (int i = 0; i < c.numCampos(); ++i) r += c.campo(i).texto() + "|";
        r += "\n";
    }
    return r;
}

ResultadoProceso CorreProceso(const std::string& lineaDeOrdenes) {
    ResultadoProceso r{-1, ""};
    FILE* p = popen((lineaDeOrdenes + " </dev/null 2>&1").c_str(), "r");
    if (!p) return r;
    char bloque[4096];
    for (size_t n; (n = fread(bloque, 1, sizeof bloque, p)) > 0;) r.salida.append(bloque, n);
    int st = pclose(p);
    r.estado = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return r;
}

bool InteraccionGuionada::mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) {
    mensajes.push_back({tipo, titulo, texto});
    if (tipo != TipoMensaje::Pregunta || respuestas.empty()) return false;
    bool r = respuestas.front();
    respuestas.pop_front();
    return r;
}

std::string InteraccionGuionada::eligeArchivo(const std::string& filtro, const std::string&) {
    filtrosPedidos.push_back(filtro);
    if (archivos.empty()) return "";
    std::string r = archivos.front();
    archivos.pop_front();
    return r;
}

DecisionInconsistencias InteraccionGuionada::decideInconsistencias(const std::string&,
                                                                   const ConteoInconsistencias& conteo) {
    conteos.push_back(conteo);
    if (decisiones.empty()) return DecisionInconsistencias::Cancelar;
    auto d = decisiones.front();
    decisiones.pop_front();
    return d;
}

std::string InteraccionGuionada::decideNaturaleza(const std::string& titulo, const std::string& texto,
                                                  const std::string& tipo) {
    mensajes.push_back({TipoMensaje::Pregunta, titulo, texto});
    tiposPreguntados.push_back(tipo);
    if (naturalezas.empty()) return "";
    auto r = naturalezas.front();
    naturalezas.pop_front();
    return r;
}

DecisionFinal InteraccionGuionada::decideFinal(const std::string&) {
    if (decisionesFinales.empty()) return DecisionFinal::Terminar;
    auto d = decisionesFinales.front();
    decisionesFinales.pop_front();
    return d;
}

}  // namespace velmorant::prueba
