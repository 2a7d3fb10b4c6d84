#include "app/frm000ImportadorDescrito.h"

#include <QFormLayout>
#include <QGroupBox>

#include "session/Funciones.h"

namespace velmorant::app {

namespace {

QWidget* CajaDeParametro(QWidget* padre, const ParametroDescrito& p) {
    if (p.tipo == ParametroDescrito::Tipo::Mes) {
        auto* lista = new QComboBox(padre);
        for (int mes = 1; mes <= 12; ++mes) lista->addItem(QString::fromStdString(NombreDelMes(mes)), mes);
        lista->addItem("Mes cierre", 13);
        lista->setCurrentIndex(11);
        return lista;
    }
    auto* caja = new QLineEdit(padre);
    if (p.tipo == ParametroDescrito::Tipo::Clave) caja->setEchoMode(QLineEdit::Password);
    return caja;
}

std::string ValorDeParametro(const QWidget* w) {
    if (auto* lista = qobject_cast<const QComboBox*>(w)) return DosDigitos(lista->currentData().toInt());
    if (auto* caja = qobject_cast<const QLineEdit*>(w)) return caja->text().toStdString();
    return "";
}

}  // namespace

frm000ImportadorDescrito::frm000ImportadorDescrito(Sesion& sesion, const DescriptorImportador& descriptor,
                                                   QWidget* padre)
    : MarcoImportador(sesion, DescripcionDesde(descriptor), padre), descriptor_(descriptor) {
    setObjectName(QString("frmImportador%1").arg(descriptor.IdSistema));
    if (!descriptor.parametros.empty()) {
        auto* grupo = new QGroupBox("Opciones", this);
        auto* forma = new QFormLayout(grupo);
        for (const auto& p : descriptor.parametros) {
            QWidget* w = CajaDeParametro(grupo, p);
            w->setObjectName(QString::fromStdString(p.control.empty() ? "txt" + p.opcionCli : p.control));
            forma->addRow(QString::fromStdString(p.descripcion) + ":", w);
            parametros_[p.opcionCli] = w;
        }
        zonaPropia()->addWidget(grupo);
    }
    for (const auto& c : descriptor.casillas) {
        auto* casilla = new QCheckBox(QString::fromStdString(c.titulo), this);
        casilla->setObjectName(QString::fromStdString(c.control));
        casilla->setChecked(c.marcada);
        zonaPropia()->addWidget(casilla);
        casillas_[c.opcionCli] = casilla;
    }
}

ArchivosImportacion frm000ImportadorDescrito::Archivos() const {
    ArchivosImportacion a = MarcoImportador::Archivos();
    for (const auto& [nombre, casilla] : casillas_)
        if (casilla->isChecked()) a.casillas.insert(nombre);
    for (const auto& [nombre, w] : parametros_) {
        std::string v = ValorDeParametro(w);
        if (!v.empty()) a.parametros[nombre] = v;
    }
    return a;
}

std::unique_ptr<Importador> frm000ImportadorDescrito::CreaImportador() {
    try {
        return descriptor_.crea(sesion_, Archivos());
    } catch (const ParametroInvalido& e) {
        MsgAviso(sesion_, e.what());
        return nullptr;
    }
}

}  // namespace velmorant::app
