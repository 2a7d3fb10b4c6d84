#pragma once
// The command line's answer to the core's questions: messages go to stderr
// (information to stdout); questions and file choices are asked on the
// terminal when there is one, and otherwise answered from flags or refused.

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

#include "session/Interaccion.h"

namespace velmorant::cli {

class InteraccionTerminal : public Interaccion {
public:
    InteraccionTerminal(std::ostream& salida, std::ostream& errores);

    bool mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) override;
    std::string eligeArchivo(const std::string& filtro, const std::string& titulo) override;
    /// Says how many inconsistencies of each class there are, then asks on
    /// the terminal or answers from the flags.
    DecisionInconsistencias decideInconsistencias(const std::string& titulo,
                                                  const ConteoInconsistencias& conteo) override;
    /// The end of a run that lost schedule rows: says so, and runs the
    /// action set with alTerminarConPerdidas (e.g. writing the detail report).
    DecisionFinal decideFinal(const std::string& titulo) override;
    void alTerminarConPerdidas(std::function<void()> f) { alTerminarConPerdidas_ = std::move(f); }
    /// Asks on the terminal; without one there is no answer ("").
    std::string decideNaturaleza(const std::string& titulo, const std::string& texto, const std::string& tipo) override;
    /// Prints the report's rows on stderr, one finding a line.
    void muestraReporte(const Reporte& reporte) override;

    /// The answer to every question when no terminal is attached.
    void respuestaPreguntas(std::optional<bool> r) { respuesta_ = r; }
    void decisionInconsistencias(std::optional<DecisionInconsistencias> d) { decision_ = d; }
    /// Runs once before the inconsistency decision (e.g. to write the report).
    void antesDeDecidir(std::function<void()> f) { antesDeDecidir_ = std::move(f); }
    bool hayTerminal() const;
    /// The last critical or warning text shown, for the closing status line.
    const std::string& ultimoMensaje() const { return ultimo_; }

private:
    std::ostream& salida_;
    std::ostream& errores_;
    std::optional<bool> respuesta_;
    std::optional<DecisionInconsistencias> decision_;
    std::string ultimo_;
    std::function<void()> antesDeDecidir_;
    std::function<void()> alTerminarConPerdidas_;
    std::string leeLinea(const std::string& indicacion);
};

/// CR LF and lone CR turned into the terminal's line ends, trailing ones cut.
std::string TextoParaTerminal(const std::string& texto);

}  // namespace velmorant::cli
