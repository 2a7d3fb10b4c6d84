#pragma once
// Test support: a private temporary folder per test, settings and program
// data kept inside it, and a scripted interaction that records every
// message and answers from a queue.

#include <deque>
#include <filesystem>
#include <string>
#include <vector>

#include "pipeline/Reportes.h"
#include "session/Interaccion.h"

namespace velmorant::prueba {

/// A fresh folder, removed at the end of the test.
class CarpetaTemporal {
public:
    CarpetaTemporal();
    ~CarpetaTemporal();
    const std::filesystem::path& ruta() const { return ruta_; }
    /// The folder as text with a trailing separator.
    std::string texto() const { return ruta_.string() + "/"; }

private:
    std::filesystem::path ruta_;
};

/// Points XDG_CONFIG_HOME and VELMORANT_DATOS at fresh folders for one test.
class AjustesAislados {
public:
    AjustesAislados();
    ~AjustesAislados();

private:
    CarpetaTemporal carpeta_;
};

/// What a program run as a user would run it left: its exit status and its
/// stdout and stderr together.
struct ResultadoProceso {
    int estado;
    std::string salida;
};

/// Runs a shell command line with no standard input and collects its output.
ResultadoProceso CorreProceso(const std::string& lineaDeOrdenes);

/// Every row of every table of a company file but its import history, as
/// text: what a run that did not commit must leave as it found it (the
/// history itself gains the run's row).
std::string ContenidoEmpresaSinHistorial(const std::string& archivo);

struct MensajeMostrado {
    TipoMensaje tipo;
    std::string titulo;
    std::string texto;
};

class InteraccionGuionada : public Interaccion {
public:
    bool mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) override;
    std::string eligeArchivo(const std::string& filtro, const std::string& titulo) override;
    DecisionInconsistencias decideInconsistencias(const std::string& titulo,
                                                  const ConteoInconsistencias& conteo) override;
    DecisionFinal decideFinal(const std::string& titulo) override;
    std::string decideNaturaleza(const std::string& titulo, const std::string& texto, const std::string& tipo) override;

    std::deque<bool> respuestas;             // for questions; No when empty
    std::deque<std::string> archivos;        // for file dialogs; cancel when empty
    std::deque<DecisionInconsistencias> decisiones;
    std::vector<ConteoInconsistencias> conteos;  // the count shown at each decision
    std::deque<DecisionFinal> decisionesFinales;
    std::vector<MensajeMostrado> mensajes;
    std::vector<std::string> filtrosPedidos;
    std::deque<std::string> naturalezas;     // for the nature of an unknown type; none when empty
    std::vector<std::string> tiposPreguntados;
};

}  // namespace velmorant::prueba
