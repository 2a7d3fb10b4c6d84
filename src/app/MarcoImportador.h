#pragma once
// The frame of every importer form: the file rows of the fiscal year, the
// twelve month rows, the prior-year tab, the progress label and bar, and
// the buttons `cmdImportar` and `cmdCancelar`. An importer form is this
// frame built from a small description, plus whatever controls of its own
// its source needs; the shared logic lives in importers/Marco.h.

#include <QCheckBox>
#include <QDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "app/ProgresoQt.h"
#include "importers/Descriptor.h"
#include "importers/Importador.h"
#include "importers/Marco.h"
#include "session/Sesion.h"

namespace velmorant::app {

/// One file of a form: its path box, its button, its caption, its picker,
/// where its path goes in the run, and, when it is required, the message
/// that says it is missing.
struct ArchivoDelMarco {
    QString control;  // the `elo` box, "eloRutaArchCat"
    QString boton;    // the button, "cmdCatalogo"
    QString etiqueta;
    SelectorArchivo selector;
    std::string papel;     // where its path goes in the run (ArchivosImportacion::fija)
    std::string faltante;  // empty: optional
    QString focoFaltante;  // takes the focus then; empty: the row's button
    bool avisoFaltante = false;  // the message is a warning, not a notice
};

/// What an importer form shows.
struct DescripcionMarco {
    int idSistema = 0;
    QString titulo;
    std::vector<ArchivoDelMarco> archivos;  // tab of the fiscal year
    bool meses = false;                     // one voucher file per month
    bool mes13 = false;                     // and a thirteenth, of the closing vouchers
    SelectorArchivo selectorMes;            // its title is followed by the month's name
    std::optional<ArchivoDelMarco> anioAnterior;  // the prior-year tab
};

/// The frame of an importer as its descriptor declares it.
DescripcionMarco DescripcionDesde(const DescriptorImportador& d);

class MarcoImportador : public QDialog {
    Q_OBJECT
public:
    MarcoImportador(Sesion& sesion, DescripcionMarco descripcion, QWidget* padre = nullptr);

    const DescripcionMarco& descripcion() const { return descripcion_; }

    QPushButton* cmdImportar;
    QPushButton* cmdCancelar;
    /// Opens the company's import history (and its undo); off while a run works.
    QPushButton* cmdHistorial;
    QLabel* lblPbar;
    QProgressBar* pbar;
    /// Null when the form has no prior-year tab.
    QTabWidget* tboBase = nullptr;
    QLabel* lblNotaSdosAAntFinal = nullptr;
    QLabel* lblPbarAnioAnt = nullptr;
    QProgressBar* pbarAnioAnt = nullptr;
    QGroupBox* fraMeses = nullptr;
    /// The month rows; [12] is "Mes 13", null unless the importer has it.
    std::array<QCheckBox*, 13> chkMes{};
    std::array<QPushButton*, 13> cmdAbrirMes{};
    std::array<QLineEdit*, 13> eloPathMes{};

    /// The path box and the button of a file row, by name.
    QLineEdit* elo(const QString& control) const;
    QPushButton* boton(const QString& nombre) const;

    /// The paths chosen, as the run takes them; a month counts only when
    /// its box is ticked.
    virtual ArchivosImportacion Archivos() const;
    /// True when the prior-year tab is the one in hand.
    bool EnAnioAnterior() const;

    /// Toggles the form for a run: unless `soloForma`, `cmdImportar` and
    /// `cmdCancelar`; in all cases the form's controls. The progress label
    /// and bar stay lit, and the form cannot be closed while it works.
    void AlternaFormulario(bool soloForma = false);
    bool trabajando() const { return trabajando_; }
    /// The progress of the tab in hand.
    ProgresoQt& progreso();

    /// `cmdCancelar`: unloads the form (not while a run works).
    void reject() override;

protected:
    /// On loading: the whole form in view, centred on the screen.
    void showEvent(QShowEvent* evento) override;

protected:
    Sesion& sesion_;

    /// Where an importer adds its own controls, below the file rows.
    QVBoxLayout* zonaPropia() const { return zonaPropia_; }
    /// Where an importer adds controls to the head of the month rows.
    QHBoxLayout* cabeceraMeses() const { return cabeceraMeses_; }

    /// The checks of `cmdImportar` before anything is read: the importer's
    /// own, the files of the tab in hand, then the month rows.
    virtual bool ValidaRutas();
    virtual bool ValidaPropios() { return true; }
    virtual bool ValidaPolizas();
    /// What the form does once it shows (the form's load), after the
    /// dispatch has opened it.
    virtual void Form_Load() {}
    /// A step between the checks and the run (a parameters form).
    virtual bool PreparaImportacion() { return true; }
    /// The importer of the form's link with what the form chose; null, after
    /// its message, when it cannot be made.
    virtual std::unique_ptr<Importador> CreaImportador();
    /// The run: the form is disabled and the core's run engine reads the
    /// files, checks and commits. A finished run unloads the form; a refused
    /// one gives it back.
    virtual void EjecutaImportacion();
    /// Whether month `mes` (1..12) is offered now.
    virtual bool mesDisponible(int mes) const;

    /// Runs `accion`, turning the program's end (or an error no step
    /// handles, after its message) into the end of the session.
    void Protege(const std::function<void()>& accion);
    /// Unloads the form with the result that ends the session at once.
    void TerminaPrograma();

    /// Shows a path in a row's box, as text and tooltip.
    static void MuestraRuta(QLineEdit* caja, const std::string& ruta);
    /// The paths a newly chosen file must not repeat ("El archivo ya ha sido
    /// seleccionado"): every path of the form but the one in `excepto`.
    virtual std::vector<std::string> RutasElegidas(const QLineEdit* excepto) const;

private:
    DescripcionMarco descripcion_;
    QVBoxLayout* zonaPropia_ = nullptr;
    QHBoxLayout* cabeceraMeses_ = nullptr;
    QWidget* contenido_ = nullptr;
    bool trabajando_ = false;
    bool mostrado_ = false;
    std::unique_ptr<ProgresoQt> progreso_;
    std::unique_ptr<ProgresoQt> progresoAnioAnt_;

    QWidget* construyeArchivos(const std::vector<ArchivoDelMarco>& archivos);
    QWidget* construyeMeses();
    QWidget* construyeAnioAnterior();
    void agregaFila(QGridLayout* rejilla, int fila, const ArchivoDelMarco& archivo);

    void cmdImportar_Click();
    void EligeArchivo(const ArchivoDelMarco& archivo);
    void EligeArchivoMes(int mes);
    void chkMes_Click(int mes, bool marcado);
    void AutocompletaDesdeEnero();
    bool FaltaArchivo(const ArchivoDelMarco& archivo);
};

/// Moves a form to the centre of its screen.
void CentraEnPantalla(QWidget* forma);

}  // namespace velmorant::app
