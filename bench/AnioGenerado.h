#pragma once
// What the benchmarks that import a generated year share: a folder of their
// own with both deliveries of the year written by velmorant-genera-demo
// (found beside this program's build folder, ../tools/), a base with the
// company BENCH, link 82's reader for the generated files, and a session
// that answers every question by going on.

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "EntregaGenerada.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "platform/Ajustes.h"
#include "session/Inicio.h"
#include "store/AltaBase.h"

namespace velmorant::bench {

namespace fs = std::filesystem;

class Callada : public Interaccion {
public:
    bool mensaje(TipoMensaje, const std::string&, const std::string&) override { return false; }
    std::string eligeArchivo(const std::string&, const std::string&) override { return ""; }
    DecisionInconsistencias decideInconsistencias(const std::string&, const ConteoInconsistencias&) override {
        return DecisionInconsistencias::Continuar;
    }
};

/// The files of one delivery in `dir`, as the generator names them.
inline ArchivosImportacion Archivos(const fs::path& dir) { return demo::ArchivosDeEntrega(dir); }

/// Link 82 on the generator's columns.
inline ImportadorTextoDelimitado ImportadorDelAnio() { return ImportadorTextoDelimitado(demo::LecturaDeEntrega(), false); }

inline void AbreSesion(Sesion& s, Interaccion& ui, const fs::path& base) {
    s.interaccion = &ui;
    IniciaSesion(s, {base.string(), "BENCH", "2025"});
}

/// A folder of this process's with settings and data of its own, both
/// deliveries of a year of `lineas` voucher lines ("entrega1", "entrega2")
/// and the base "base" holding the company BENCH. Empty, after a message,
/// when the generator fails.
struct AnioGenerado {
    fs::path dir;
    std::string base;
};

inline std::optional<AnioGenerado> GeneraAnio(long lineas) {
    fs::path dir = fs::temp_directory_path() / ("velmorant-bench-" + std::to_string(::getpid()));
    fs::create_directories(dir);
    setenv("XDG_CONFIG_HOME", (dir / "config").c_str(), 1);
    setenv("VELMORANT_DATOS", (dir / "datos").c_str(), 1);
    fs::path genera = fs::path(CarpetaPrograma()) / ".." / "tools" / "velmorant-genera-demo";
    for (int v : {1, 2}) {
        std::string cmd = "'" + genera.string() + "' '" + (dir / ("entrega" + std::to_string(v))).string() +
                          "' --variante " + std::to_string(v) + " --lineas " + std::to_string(lineas) + " >/dev/null";
        if (std::system(cmd.c_str()) != 0) {
            std::cerr << "no se pudo generar el año con " << genera << "\n";
            return std::nullopt;
        }
    }
    std::string base = CreaBase((dir / "base").string());
    DatosEmpresaNueva d{"BENCH", "Bench", 2025, "999-99-99", "-", {3, 2, 2}, true, true, false, 6, 0, 0, 12};
    CreaEmpresa(base, d);
    return AnioGenerado{dir, base};
}

}  // namespace velmorant::bench
