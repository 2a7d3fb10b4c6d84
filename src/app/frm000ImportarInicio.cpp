#include "app/frm000ImportarInicio.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

#include "app/RegistroFormularios.h"
#include "session/Despacho.h"
#include "session/Enlaces.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant::app {

namespace {

QLineEdit* CajaDeSoloLectura(QWidget* padre, const char* nombre) {
    auto* caja = new QLineEdit(padre);
    caja->setObjectName(nombre);
    caja->setReadOnly(true);
    caja->setFocusPolicy(Qt::NoFocus);
    return caja;
}

QPushButton* Boton(QWidget* padre, const char* nombre, const char* texto) {
    auto* boton = new QPushButton(QString::fromUtf8(texto), padre);
    boton->setObjectName(nombre);
    return boton;
}

}  // namespace

frm000ImportarInicio::frm000ImportarInicio(Sesion& sesion, QWidget* padre) : QDialog(padre), sesion_(sesion) {
    setObjectName("frm000ImportarInicio");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    eloEmpresa = CajaDeSoloLectura(this, "eloEmpresa");
    eloEjercicio = CajaDeSoloLectura(this, "eloEjercicio");
    eloEstrucCta = CajaDeSoloLectura(this, "eloEstrucCta");

    auto* empresa = new QGroupBox("Empresa actual", this);
    auto* datos = new QFormLayout(empresa);
    datos->addRow("Empresa:", eloEmpresa);
    datos->addRow("Ejercicio:", eloEjercicio);
    datos->addRow("Estructura de cuenta:", eloEstrucCta);

    txtBuscar = new QLineEdit(this);
    txtBuscar->setObjectName("txtBuscar");
    txtBuscar->setClearButtonEnabled(true);
    auto* etiquetaBuscar = new QLabel("&Buscar:", this);
    etiquetaBuscar->setBuddy(txtBuscar);
    chkVerSisComer = new QCheckBox("Ver solo sistemas comerciales", this);
    chkVerSisComer->setObjectName("chkVerSisComer");
    chkVerSisComer->setChecked(true);

    datEnlaces = new QStandardItemModel(0, 1, this);
    datEnlaces->setObjectName("datEnlaces");
    datEnlaces->setHorizontalHeaderLabels({"SISTEMA CONTABLE"});
    tdbgEnlaces = new QTableView(this);
    tdbgEnlaces->setObjectName("tdbgEnlaces");
    tdbgEnlaces->setModel(datEnlaces);
    tdbgEnlaces->setSelectionBehavior(QAbstractItemView::SelectRows);
    tdbgEnlaces->setSelectionMode(QAbstractItemView::SingleSelection);
    tdbgEnlaces->setEditTriggers(QAbstractItemView::NoEditTriggers);
    tdbgEnlaces->setAlternatingRowColors(true);
    tdbgEnlaces->verticalHeader()->hide();
    tdbgEnlaces->verticalHeader()->setDefaultSectionSize(tdbgEnlaces->fontMetrics().height() + 8);
    tdbgEnlaces->horizontalHeader()->setStretchLastSection(true);
    tdbgEnlaces->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);

    auto* enlaces = new QGroupBox("Sistema contable a importar", this);
    auto* busqueda = new QHBoxLayout;
    busqueda->addWidget(etiquetaBuscar);
    busqueda->addWidget(txtBuscar, 1);
    busqueda->addWidget(chkVerSisComer);
    auto* zonaEnlaces = new QVBoxLayout(enlaces);
    zonaEnlaces->addLayout(busqueda);
    zonaEnlaces->addWidget(tdbgEnlaces, 1);

    cmdContinuar = Boton(this, "cmdContinuar", "&Continuar");
    cmdContinuar->setDefault(true);
    cmdSalir = Boton(this, "cmdSalir", "&Salir");
    auto* botones = new QHBoxLayout;
    botones->addStretch();
    botones->addWidget(cmdContinuar);
    botones->addWidget(cmdSalir);

    auto* principal = new QVBoxLayout(this);
    principal->addWidget(empresa);
    principal->addWidget(enlaces, 1);
    principal->addLayout(botones);
    resize(600, 560);

    connect(chkVerSisComer, &QCheckBox::clicked, this, &frm000ImportarInicio::chkVerSisComer_Click);
    connect(txtBuscar, &QLineEdit::textChanged, this, &frm000ImportarInicio::txtBuscar_Change);
    connect(cmdContinuar, &QPushButton::clicked, this, &frm000ImportarInicio::cmdContinuar_Click);
    connect(tdbgEnlaces, &QTableView::doubleClicked, this, [this] { DespachaEnlace(); });
    connect(cmdSalir, &QPushButton::clicked, this, &QDialog::reject);
    txtBuscar->setFocus();
}

void frm000ImportarInicio::muestraSesion() {
    setWindowTitle(QString::fromStdString(sesion_.TituloInicio));
    if (sesion_.IdEmpresaActual != 0) {
        eloEmpresa->setText(QString::fromStdString(sesion_.NombreEmpresa));
        eloEjercicio->setText(QString::number(sesion_.EjercicioActual));
        eloEstrucCta->setText(QString::fromStdString(sesion_.FormatoCtaEmpresa));
    }
    refrescaEnlaces("");
    centra();
}

void frm000ImportarInicio::refrescaEnlaces(const std::string& buscar) {
    datEnlaces->removeRows(0, datEnlaces->rowCount());
    std::vector<Enlace> lista;
    try {
        BaseDatos catalogo(RutaBaseDatos(sesion_.RutaBase, kArchivoEnlaces), BaseDatos::Modo::SoloLectura);
        lista = ListaEnlaces(catalogo, chkVerSisComer->isChecked(), buscar);
    } catch (const std::exception&) {
        // A missing or unreadable catalogue leaves the list empty; choosing
        // then ends the session.
    }
    for (const auto& e : lista) {
        auto* fila = new QStandardItem(QString::fromStdString(e.Descripcion));
        fila->setData(e.IdSistema, Qt::UserRole);
        datEnlaces->appendRow(fila);
    }
    if (datEnlaces->rowCount() > 0) tdbgEnlaces->setCurrentIndex(datEnlaces->index(0, 0));
}

std::optional<int> frm000ImportarInicio::enlaceActual() const {
    if (datEnlaces->rowCount() == 0) return std::nullopt;
    QModelIndex actual = tdbgEnlaces->currentIndex();
    int fila = actual.isValid() ? actual.row() : 0;
    return datEnlaces->item(fila, 0)->data(Qt::UserRole).toInt();
}

void frm000ImportarInicio::chkVerSisComer_Click() { refrescaEnlaces(""); }

void frm000ImportarInicio::txtBuscar_Change() { refrescaEnlaces(txtBuscar->text().toStdString()); }

void frm000ImportarInicio::cmdContinuar_Click() {
    bool importadaAntes = false;
    try {
        importadaAntes = HayCatalogo(sesion_);
    } catch (const std::exception& e) {
        ReportaError(sesion_, e, true);
    }
    if (importadaAntes)
        MsgInformacion(sesion_,
                       "Antes de continuar, le recomendamos realizar un respaldo de su Empresa.\r\n\r\n"
                       "Además, VELMORANT guarda una copia de la empresa al iniciar cada importación: la última "
                       "importación confirmada se puede deshacer desde el botón Historial del importador o con "
                       "'velmorant-cli deshacer'.");
    DespachaEnlace();
}

void frm000ImportarInicio::DespachaEnlace() {
    std::optional<int> enlace = enlaceActual();
    bool aceptado = false;
    if (enlace) {
        try {
            aceptado = AceptaEnlace(sesion_, *enlace);
        } catch (const std::exception& e) {
            ReportaError(sesion_, e, true);
        }
    }
    if (aceptado) {
        if (auto forma = CreaFormularioImportador(*enlace, sesion_, this)) {
            if (forma->exec() == kProgramaTerminado) borraAlTerminar_ = false;
        }
    }
    accept();
}

void frm000ImportarInicio::done(int resultado) {
    if (!terminado_) {
        terminado_ = true;
        if (borraAlTerminar_) {
            try {
                BorraTemporales(sesion_);
                temporalesBorrados_ = true;
            } catch (const std::exception& e) {
                ReportaError(sesion_, e, true);
            }
        }
    }
    QDialog::done(resultado);
}

void frm000ImportarInicio::centra() {
    QScreen* pantalla = screen() ? screen() : QGuiApplication::primaryScreen();
    if (!pantalla) return;
    QRect area = pantalla->availableGeometry();
    move(area.x() + (area.width() - width()) / 2, area.y() + (area.height() - height()) / 2);
}

}  // namespace velmorant::app
