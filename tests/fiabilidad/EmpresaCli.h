#pragma once
// A small company with one committed import of link 82 (a catalogue and
// January), driven through `velmorant-cli` as a user would: the ground of
// the tests of hostile input and of a failing environment.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/BaseDatos.h"
#include "support/Cli.h"
#include "support/Entorno.h"

namespace velmorant::prueba {

inline const std::string kTitulosCatalogo = "Cuenta|Descripcion|Naturaleza|Saldo\n";
inline const std::string kCatalogo =
    "100-00-00|Activo|D|1000\n"
    "100-01-00|Bancos|D|1000\n"
    "100-01-01|Banco uno|D|1000\n"
    "400-00-00|Ventas|A|-1000\n"
    "400-01-00|Ventas nacionales|A|-1000\n"
    "400-01-01|Mostrador|A|-1000\n";
inline const std::string kTitulosPolizas = "Poliza|Tipo|Dia|Mes|Anio|Cuenta|Ref|Concepto|Cargo|Abono\n";

inline std::string Partidas(const std::string& concepto = "Venta", const std::string& importe = "200",
                            int mes = 1) {
    const std::string fecha = "|3|" + std::to_string(mes) + "|2025|";
    return "1|Dr" + fecha + "100-01-01|cobro|" + concepto + "|" + importe + "|0\n"
           "1|Dr" + fecha + "400-01-01|venta|" + concepto + "|0|" + importe + "\n";
}

/// Quoted for the shell, whatever the text holds.
inline std::string Comillas(const std::string& t) {
    std::string r = "'";
    for (char c : t) r += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return r + "'";
}

/// Texts that would mean SQL was built from the input, or the program
/// crashed. (An engine's own words may follow a Spanish message, in
/// parentheses; these never may.)
inline bool PareceErrorDelMotor(const std::string& salida) {
    for (const char* t : {"SQL logic error", "syntax error", "near \"", "SQLITE_", "unrecognized token",
                          "no such column", "no such table", "terminate called", "Segmentation", "Aborted"})
        if (salida.find(t) != std::string::npos) return true;
    return false;
}

/// Appends a line of figures to VELMORANT_FIABILIDAD_CIFRAS when it is set.
inline void AnotaCifra(const std::string& linea) {
    const char* archivo = std::getenv("VELMORANT_FIABILIDAD_CIFRAS");
    if (archivo && *archivo) std::ofstream(archivo, std::ios::app) << linea << "\n";
}

class EmpresaCli : public ::testing::Test {
protected:
    CarpetaTemporal dir;
    std::string ruta(const std::string& nombre) { return dir.texto() + nombre; }
    std::string empresa() { return ruta("base/2025_DEMO/DEMO_2025.sqlite"); }
    std::string contenido() { return ContenidoEmpresaSinHistorial(empresa()); }

    /// `entorno` goes before the program (variables, or a wrapper such as setpriv).
    ResultadoProceso Corre(const std::string& argumentos, const std::string& entorno = "") {
        return CorreCli(dir, argumentos, entorno);
    }
    void escribe(const std::string& nombre, const std::string& bytes) {
        std::ofstream(ruta(nombre), std::ios::binary) << bytes;
    }
    std::string importar(const std::string& catalogo, const std::string& mes, const std::string& configuracion = "T") {
        return "importar --enlace 82 --separador '|' --configuracion " + Comillas(configuracion) + " --catalogo " +
               Comillas(catalogo) + " --mes 01=" + Comillas(mes) + " --continuar";
    }
    std::string integridad(const std::string& archivo) {
        BaseDatos db(archivo, BaseDatos::Modo::SoloLectura);
        return db.escalar("PRAGMA integrity_check").texto();
    }

    void SetUp() override {
        PreparaEmpresaDemoCli(dir);
        if (HasFatalFailure()) return;
        escribe("catalogo.txt", kTitulosCatalogo + kCatalogo);
        escribe("ene.txt", kTitulosPolizas + Partidas());
        auto r = Corre(importar(ruta("catalogo.txt"), ruta("ene.txt")));
        ASSERT_EQ(r.estado, 0) << r.salida;
    }
};

}  // namespace velmorant::prueba
