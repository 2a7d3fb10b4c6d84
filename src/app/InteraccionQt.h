#pragma once
// The desktop program's answer to the core: message boxes, the file dialog
// and the modal forms of a run, parented to the form in hand.

#include <QWidget>

#include <memory>

#include "session/Interaccion.h"
#include "session/Sesion.h"

namespace velmorant::app {

class frm000MsgInconsistencias;
class frm000MsgInconsistenciasFin;

class InteraccionQt : public Interaccion {
public:
    explicit InteraccionQt(QWidget* padre = nullptr);
    ~InteraccionQt() override;
    /// The window that owns the boxes when no modal form is open.
    void padre(QWidget* p) { padre_ = p; }

    bool mensaje(TipoMensaje tipo, const std::string& titulo, const std::string& texto) override;
    std::string eligeArchivo(const std::string& filtro, const std::string& titulo) override;
    std::string eligeArchivoEn(const std::string& filtro, const std::string& titulo,
                               const std::string& carpeta) override;
    /// `frm000MsgInconsistencias`, with the count by class: it stays on
    /// screen while its report shows.
    DecisionInconsistencias decideInconsistencias(const std::string& titulo,
                                                  const ConteoInconsistencias& conteo) override;
    /// `frm000MsgInconsistenciasFin`, likewise.
    DecisionFinal decideFinal(const std::string& titulo) override;
    /// `frm036ImportarContpaqDBFMsg`: the two natures in a list; accept
    /// without a choice asks for one, closing the dialog answers nothing.
    std::string decideNaturaleza(const std::string& titulo, const std::string& texto, const std::string& tipo) override;
    /// The report viewer, modal, until the user closes it.
    void muestraReporte(const Reporte& reporte) override;

private:
    QWidget* padre_;
    std::unique_ptr<frm000MsgInconsistencias> msgInconsistencias_;
    std::unique_ptr<frm000MsgInconsistenciasFin> msgInconsistenciasFin_;
    /// The open modal form, else the active window, else `padre_`.
    QWidget* ventana() const;
};

/// "desc|pattern|desc|pattern" as a Qt file dialog filter.
QString FiltroQt(const std::string& filtro);

/// A message as a box shows it: the system's CR and CR LF become line
/// breaks, and the trailing ones are dropped.
QString TextoDeMensaje(const std::string& texto);

}  // namespace velmorant::app
