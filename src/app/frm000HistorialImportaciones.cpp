#include "app/frm000HistorialImportaciones.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QSplitter>
#include <QVBoxLayout>

#include "app/MarcoImportador.h"
#include "pipeline/ConstanciaImportacion.h"
#include "pipeline/Respaldo.h"
#include "session/Funciones.h"

namespace velmorant::app {

namespace {

QPushButton* Boton(QWidget* padre, const char* nombre, const QString& texto) {
    auto* boton = new QPushButton(texto, padre);
    boton->setObjectName(nombre);
    boton->setAutoDefault(false);
    return boton;
}

QString Texto(const std::string& t) { return QString::fromStdString(t); }

}  // namespace

frm000HistorialImportaciones::frm000HistorialImportaciones(Sesion& sesion, QWidget* padre)
    : QDialog(padre), sesion_(sesion) {
    setObjectName("frm000HistorialImportaciones");
    setWindowTitle(Texto("Historial de importaciones - " + sesion_.NombreEmpresa + " (" +
                         std::to_string(sesion_.EjercicioActual) + ")"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowFlag(Qt::WindowMaximizeButtonHint, true);

    tdbgHistorial = new QTableWidget(0, 8, this);
    tdbgHistorial->setObjectName("tdbgHistorial");
    tdbgHistorial->setHorizontalHeaderLabels(
        {"Núm.", "Fecha y hora", "Usuario", "Operación", "Enlace", "Pólizas", "Decisión", "Resultado"});
    tdbgHistorial->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tdbgHistorial->setSelectionBehavior(QAbstractItemView::SelectRows);
    tdbgHistorial->setSelectionMode(QAbstractItemView::SingleSelection);
    tdbgHistorial->setAlternatingRowColors(true);
    tdbgHistorial->verticalHeader()->hide();
    tdbgHistorial->verticalHeader()->setDefaultSectionSize(tdbgHistorial->fontMetrics().height() + 6);
    tdbgHistorial->horizontalHeader()->setStretchLastSection(true);

    txtDetalle = new QTextBrowser(this);
    txtDetalle->setObjectName("txtDetalle");
    txtDetalle->setOpenLinks(false);

    auto* division = new QSplitter(Qt::Vertical, this);
    division->addWidget(tdbgHistorial);
    division->addWidget(txtDetalle);
    division->setStretchFactor(0, 1);
    division->setStretchFactor(1, 2);

    cmdConstancia = Boton(this, "cmdConstancia", "&Constancia...");
    cmdDeshacer = Boton(this, "cmdDeshacer", "&Deshacer la última importación...");
    cmdCerrar = Boton(this, "cmdCerrar", "C&errar");
    cmdCerrar->setDefault(true);
    auto* botones = new QHBoxLayout;
    botones->addWidget(cmdConstancia);
    botones->addWidget(cmdDeshacer);
    botones->addStretch();
    botones->addWidget(cmdCerrar);
    auto* principal = new QVBoxLayout(this);
    principal->addWidget(division, 1);
    principal->addLayout(botones);

    connect(tdbgHistorial, &QTableWidget::itemSelectionChanged, this, &frm000HistorialImportaciones::MuestraDetalle);
    connect(cmdConstancia, &QPushButton::clicked, this, &frm000HistorialImportaciones::cmdConstancia_Click);
    connect(cmdDeshacer, &QPushButton::clicked, this, &frm000HistorialImportaciones::cmdDeshacer_Click);
    connect(cmdCerrar, &QPushButton::clicked, this, &QDialog::accept);

    Actualiza();
    resize(980, 680);
    CentraEnPantalla(this);
}

void frm000HistorialImportaciones::Actualiza() {
    corridas_.clear();
    try {
        corridas_ = LeeHistorial(EmpresaAbierta(sesion_));
    } catch (const std::exception& e) {
        ReportaError(sesion_, e, true);
    }
    tdbgHistorial->setRowCount(static_cast<int>(corridas_.size()));
    for (int i = 0; i < static_cast<int>(corridas_.size()); ++i) {
        const auto& r = corridas_[static_cast<size_t>(i)];
        std::string resultado = r.resultado;
        if (r.deshechaPor) resultado += " (deshecha por " + std::to_string(*r.deshechaPor) + ")";
        if (r.deshace) resultado += " de la importación " + std::to_string(*r.deshace);
        const QString celdas[] = {QString::number(r.id),
                                  Texto(r.fechaHora),
                                  Texto(r.usuario),
                                  Texto(r.operacion),
                                  Texto(TextoEnlace(r.idSistema)),
                                  r.polizas ? QString::number(*r.polizas) : QString(),
                                  Texto(r.decision),
                                  Texto(resultado)};
        for (int j = 0; j < 8; ++j) {
            auto* celda = new QTableWidgetItem(celdas[j]);
            if (j == 0 || j == 5) celda->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            tdbgHistorial->setItem(i, j, celda);
        }
    }
    tdbgHistorial->resizeColumnsToContents();
    if (!corridas_.empty()) tdbgHistorial->selectRow(static_cast<int>(corridas_.size()) - 1);
    MuestraDetalle();
    bool hayQueDeshacer = false;
    for (const auto& r : corridas_) hayQueDeshacer = hayQueDeshacer || (r.confirmada() && !r.deshechaPor);
    cmdDeshacer->setEnabled(hayQueDeshacer);
}

std::optional<RegistroHistorial> frm000HistorialImportaciones::Seleccionado() const {
    auto filas = tdbgHistorial->selectionModel()->selectedRows();
    if (filas.isEmpty()) return std::nullopt;
    size_t i = static_cast<size_t>(filas.front().row());
    if (i >= corridas_.size()) return std::nullopt;
    try {
        return LeeRegistroHistorial(EmpresaAbierta(sesion_), corridas_[i].id);
    } catch (const std::exception& e) {
        ReportaError(sesion_, e, true);
        return std::nullopt;
    }
}

void frm000HistorialImportaciones::MuestraDetalle() {
    auto r = Seleccionado();
    cmdConstancia->setEnabled(r.has_value());
    if (!r) {
        txtDetalle->setHtml(corridas_.empty() ? "<p>La empresa no tiene importaciones registradas.</p>" : "");
        return;
    }
    txtDetalle->setHtml(Texto(HtmlDeReporte(ConstanciaImportacion(*r, sesion_.FechaSesion))));
}

void frm000HistorialImportaciones::cmdConstancia_Click() {
    auto r = Seleccionado();
    if (r && sesion_.interaccion) sesion_.interaccion->muestraReporte(ConstanciaImportacion(*r, sesion_.FechaSesion));
}

void frm000HistorialImportaciones::cmdDeshacer_Click() {
    try {
        if (DeshaceUltimaImportacion(sesion_) == ResultadoDeshacer::NoConfirmada) return;
    } catch (const std::exception& e) {
        ReportaError(sesion_, e, true);
    }
    Actualiza();
}

}  // namespace velmorant::app
