#pragma once
// Link 25: a client's accounting data in text files whose fields stand at
// fixed character positions. Besides the frame's catalogue and month rows
// it offers the list of saved layouts and the button to the layout form;
// its prior-year tab has no reader behind it.

#include <QComboBox>
#include <QGroupBox>
#include <QPushButton>

#include "app/MarcoImportador.h"
#include "layouts/ParametrosConfiguracion.h"

namespace velmorant::app {

class frm022TxtPersonalizado : public MarcoImportador {
    Q_OBJECT
public:
    explicit frm022TxtPersonalizado(Sesion& sesion, QWidget* padre = nullptr);

    QGroupBox* fraConfiguraciones;
    QComboBox* cboConfiguraciones;
    QPushButton* cmdCambiar;

    /// The current layout's name, and its record as the run will read it.
    const std::string& Configuracion() const { return f_.Configuracion; }
    const EstructuraDatosTxt& registro() const { return registro_; }
    /// The form's `IdPoliza` counter: 0 when it loads, never reset.
    long IdPolizaTmp() const { return IdPolizaTmp_; }

protected:
    /// The layout store opened as every generic importer opens it; the
    /// layout form opens at once when the catalogue lacks the layout.
    void Form_Load() override;
    /// On the prior-year tab the catalogue is asked for all the same.
    bool ValidaPropios() override;
    /// The layout list is locked and the record reloaded for the run.
    bool PreparaImportacion() override;
    std::unique_ptr<Importador> CreaImportador() override;
    /// The prior-year tab reaches no import step: the run's log is made
    /// and closed again.
    void EjecutaImportacion() override;
    /// A month's file must not repeat any other month's.
    std::vector<std::string> RutasElegidas(const QLineEdit* excepto) const override;

private:
    FormularioConfiguracion f_;
    EstructuraDatosTxt registro_;
    long IdPolizaTmp_ = 0;
    bool actualizando_ = false;

    void MuestraLista();
    void cboConfiguraciones_Click(int indice);
    void cmdCambiar_Click();
};

/// The form's description: its files, pickers, keys and messages, and the
/// prior-year tab.
DescripcionMarco DescripcionTxtPersonalizado();

}  // namespace velmorant::app
