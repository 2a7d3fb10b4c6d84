#include "cli/InteraccionTerminal.h"

#include <unistd.h>

#include <iostream>

#include "pipeline/Reportes.h"
#include "pipeline/ReportesDecisiones.h"

namespace velmorant::cli {

std::string TextoParaTerminal(const std::string& texto) {
    std::string r;
    for (size_t i = 0; i < texto.size(); ++i) {
        if (texto[i] == '\r') {
            if (i + 1 < texto.size() && texto[i + 1] == '\n') ++i;
            r += '\n';
        } else {
            r += texto[i];
        }
    }
    while (!r.empty() && r.back() == '\n') r.pop_back();
    return r;
}

InteraccionTerminal::InteraccionTerminal(std::ostream& salida, std::ostream& errores)
    : salida_(salida), errores_(errores) {}

bool InteraccionTerminal::hayTerminal() const { return isatty(STDIN_FILENO) && isatty(STDERR_FILENO); }

std::string InteraccionTerminal::leeLinea(const std::string& indicacion) {
    errores_ << indicacion << std::flush;
    std::string linea;
    if (!std::getline(std::cin, linea)) return "";
    return linea;
}

bool InteraccionTerminal::mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) {
    std::string t = TextoParaTerminal(texto);
    switch (tipo) {
        case TipoMensaje::Critico:
            ultimo_ = t;
            errores_ << titulo << " — ERROR\n" << t << "\n";
            return false;
        case TipoMensaje::Aviso:
            ultimo_ = t;
            errores_ << titulo << " — AVISO\n" << t << "\n";
            return false;
        case TipoMensaje::Informacion:
            salida_ << t << "\n";
            return false;
        case TipoMensaje::Pregunta:
            break;
    }
    errores_ << titulo << " — PREGUNTA\n" << t << "\n";
    if (hayTerminal()) {
        for (;;) {
            std::string r = leeLinea("[s/n] ");
            if (r == "s" || r == "S" || r == "si" || r == "sí") return true;
            if (r == "n" || r == "N" || r == "no" || r.empty()) return false;
        }
    }
    bool r = respuesta_.value_or(false);
    errores_ << (respuesta_ ? "" : "(sin terminal) ") << "Respuesta: " << (r ? "Sí" : "No") << "\n";
    return r;
}

std::string InteraccionTerminal::eligeArchivo(const std::string& filtro, const std::string& titulo) {
    if (!hayTerminal()) {
        errores_ << titulo << ": se necesita elegir un archivo (" << filtro << ") y no hay terminal; se cancela.\n";
        return "";
    }
    return leeLinea(titulo + " — ruta del archivo (" + filtro + "), vacío para cancelar: ");
}

std::string InteraccionTerminal::decideNaturaleza(const std::string& titulo, const std::string& texto,
                                                  const std::string& tipo) {
    errores_ << titulo << " — PREGUNTA\n" << TextoParaTerminal(texto) << "\n";
    if (!hayTerminal()) {
        errores_ << "Sin terminal no hay respuesta; indique --naturaleza " << tipo << "=D o " << tipo << "=A.\n";
        return "";
    }
    for (;;) {
        std::string r = leeLinea("[d]eudora, [a]creedora, vacío para cancelar: ");
        if (r == "d" || r == "D") return "D";
        if (r == "a" || r == "A") return "A";
        if (r.empty()) return "";
    }
}

DecisionFinal InteraccionTerminal::decideFinal(const std::string& titulo) {
    errores_ << titulo << " — " << kGrupoMsgInconsistenciasFin << "\n"
             << TextoParaTerminal(kTextoMsgInconsistenciasFin) << "\n"
             << "'velmorant-cli inconsistencias --detalle' muestra los registros.\n";
    if (alTerminarConPerdidas_) {
        auto f = std::move(alTerminarConPerdidas_);
        alTerminarConPerdidas_ = nullptr;
        f();
    }
    return DecisionFinal::Terminar;
}

void InteraccionTerminal::muestraReporte(const Reporte& r) {
    errores_ << r.titulo << " — " << r.variable("NombreEmp") << "\n";
    for (auto& fila : r.filas) {
        std::string linea;
        for (size_t i = 0; i < fila.size(); ++i)
            if (!fila[i].empty()) linea += (linea.empty() ? "" : " | ") + fila[i];
        errores_ << "  " << linea << "\n";
    }
    errores_ << r.filas.size() << " renglones\n";
}

DecisionInconsistencias InteraccionTerminal::decideInconsistencias(const std::string& titulo,
                                                                   const ConteoInconsistencias& conteo) {
    errores_ << titulo << " — " << TextoParaTerminal(kTextoMsgInconsistencias) << "\n"
             << TextoConteoInconsistencias(conteo) << "\n";
    if (antesDeDecidir_) {
        auto f = std::move(antesDeDecidir_);
        antesDeDecidir_ = nullptr;
        f();
    }
    if (decision_) {
        errores_ << "Respuesta: "
                 << (*decision_ == DecisionInconsistencias::Continuar ? "continuar (--continuar)" : "cancelar (--cancelar)")
                 << "\n";
        return *decision_;
    }
    if (!hayTerminal()) {
        errores_ << titulo << ": hay inconsistencias y no se indicó --continuar ni --cancelar; sin terminal, se cancela.\n";
        return DecisionInconsistencias::Cancelar;
    }
    for (;;) {
        std::string r = leeLinea("Hay inconsistencias. [r]eporte, [c]ontinuar, [x] cancelar: ");
        if (r == "r") return DecisionInconsistencias::VerReporte;
        if (r == "c") return DecisionInconsistencias::Continuar;
        if (r == "x" || r.empty()) return DecisionInconsistencias::Cancelar;
    }
}

}  // namespace velmorant::cli
