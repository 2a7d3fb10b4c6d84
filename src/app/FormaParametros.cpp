#include "app/FormaParametros.h"

#include <QEvent>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

#include "app/MarcoImportador.h"
#include "session/Funciones.h"

namespace velmorant::app {

// -------------------------------------------------------- ModeloVistaPrevia

void ModeloVistaPrevia::muestra(VistaPrevia vista) {
    beginResetModel();
    vista_ = std::move(vista);
    endResetModel();
}

int ModeloVistaPrevia::rowCount(const QModelIndex& padre) const {
    return padre.isValid() ? 0 : static_cast<int>(vista_.filas.size());
}

int ModeloVistaPrevia::columnCount(const QModelIndex& padre) const {
    return padre.isValid() ? 0 : static_cast<int>(vista_.columnas.size());
}

QVariant ModeloVistaPrevia::data(const QModelIndex& indice, int rol) const {
    if (!indice.isValid()) return {};
    if (rol == Qt::FontRole && primeraFija_ && indice.column() == 0)
        return QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (rol != Qt::DisplayRole) return {};
    const auto& fila = vista_.filas[static_cast<size_t>(indice.row())];
    size_t columna = static_cast<size_t>(indice.column());
    return columna < fila.size() ? QString::fromStdString(fila[columna]) : QString();
}

QVariant ModeloVistaPrevia::headerData(int seccion, Qt::Orientation orientacion, int rol) const {
    if (rol == Qt::FontRole && primeraFija_ && orientacion == Qt::Horizontal && seccion == 0)
        return QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (rol == Qt::TextAlignmentRole && primeraFija_ && orientacion == Qt::Horizontal)
        return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
    if (rol != Qt::DisplayRole) return {};
    if (orientacion == Qt::Horizontal)
        return seccion < columnCount() ? QString::fromStdString(vista_.columnas[static_cast<size_t>(seccion)])
                                       : QVariant();
    return seccion + 1;
}

// ------------------------------------------------------------------- Form

FormaParametros::FormaParametros(Sesion& sesion, FormularioParametros tipo, const std::string& configuracion,
                                 PestanaSaldos pestana, QWidget* padre)
    : QDialog(padre), sesion_(sesion) {
    setWindowTitle("Definir Parametros");
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    // The layout store, as every generic importer opens it.
    sesion_.IdSistemaElegido = IdEnlaceDe(tipo);
    InicioConfiguraciones inicio = IniciaConfiguraciones(sesion_);
    f_.tipo = tipo;
    f_.Configuracion = configuracion.empty() ? inicio.Configuracion : configuracion;
    CargaConfigEmpresa(sesion_, f_.Configuracion, f_.registro);
    f_.lista = LlenaComboConfiguraciones(sesion_);
    f_.textoLista = f_.Configuracion;
    f_.filaElegida = true;
    f_.cajas = InicializaParametros(f_.tipo, f_.registro, pestana);

    cboConfiguraciones = new QComboBox(this);
    cboConfiguraciones->setObjectName("cboConfiguraciones");
    cboConfiguraciones->setEditable(true);
    cboConfiguraciones->setInsertPolicy(QComboBox::NoInsert);
    cboConfiguraciones->setMinimumContentsLength(40);
    cboConfiguraciones->lineEdit()->setMaxLength(50);
    cboConfiguraciones->lineEdit()->installEventFilter(this);

    tboConfigArchivos = new QTabWidget(this);
    tboConfigArchivos->setObjectName("tboConfigArchivos");

    cmdAceptar = new QPushButton("&Aceptar", this);
    cmdAceptar->setObjectName("cmdAceptar");
    cmdAceptar->setDefault(true);
    cmdCancelar = new QPushButton("&Cancelar", this);
    cmdCancelar->setObjectName("cmdCancelar");
    cmdCancelar->setAutoDefault(false);
}

void FormaParametros::Arma(QLayout* antesDeBotones) {
    auto* etiquetaLista = new QLabel("C&onfiguración:", this);
    etiquetaLista->setBuddy(cboConfiguraciones);
    auto* lista = new QHBoxLayout;
    lista->addWidget(etiquetaLista);
    lista->addWidget(cboConfiguraciones, 1);
    auto* botones = new QHBoxLayout;
    botones->addStretch();
    botones->addWidget(cmdAceptar);
    botones->addWidget(cmdCancelar);
    auto* principal = new QVBoxLayout(this);
    principal->addLayout(lista);
    principal->addWidget(tboConfigArchivos, 1);
    if (antesDeBotones) principal->addLayout(antesDeBotones);
    principal->addLayout(botones);

    MuestraLista();
    MuestraCajas(f_.cajas);

    connect(cboConfiguraciones, qOverload<int>(&QComboBox::activated), this,
            &FormaParametros::cboConfiguraciones_Click);
    connect(cboConfiguraciones->lineEdit(), &QLineEdit::textEdited, this, &FormaParametros::cboConfiguraciones_Change);
    connect(cmdAceptar, &QPushButton::clicked, this, &FormaParametros::cmdAceptar_Click);
    connect(cmdCancelar, &QPushButton::clicked, this, [this] { cmdCancelar_Click(); });
    resize(860, 680);
    CentraEnPantalla(this);
}

QLineEdit* FormaParametros::Caja(QWidget* padre, const char* nombre) {
    auto* caja = new QLineEdit(padre);
    caja->setObjectName(nombre);
    caja->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]{0,4}"), caja));
    caja->setMaximumWidth(caja->fontMetrics().horizontalAdvance("00000") + 16);
    caja->setAlignment(Qt::AlignRight);
    caja->installEventFilter(this);
    return caja;
}

QCheckBox* FormaParametros::Casilla(QWidget* padre, const char* nombre, const QString& texto,
                                    std::initializer_list<QLineEdit*> cajas) {
    auto* casilla = new QCheckBox(texto, padre);
    casilla->setObjectName(nombre);
    std::vector<QLineEdit*> suyas(cajas);
    connect(casilla, &QCheckBox::clicked, this, [this, suyas](bool marcada) {
        if (!marcada)
            for (QLineEdit* caja : suyas) caja->clear();
        ActualizaEstado();
        if (marcada && !suyas.empty()) suyas.front()->setFocus();
    });
    return casilla;
}

QTableView* FormaParametros::Vista(QWidget* padre, const char* nombre, const std::string& ruta) {
    auto* vista = new QTableView(padre);
    vista->setObjectName(nombre);
    vista->setModel(new ModeloVistaPrevia(vista));
    vista->setEditTriggers(QAbstractItemView::NoEditTriggers);
    vista->setAlternatingRowColors(true);
    vista->verticalHeader()->setDefaultSectionSize(vista->fontMetrics().height() + 6);
    vista->horizontalHeader()->setDefaultSectionSize(110);
    vista->setToolTip(QString::fromStdString(ruta));
    return vista;
}

ModeloVistaPrevia* FormaParametros::ModeloDe(QTableView* vista) {
    return static_cast<ModeloVistaPrevia*>(vista->model());
}

QGroupBox* FormaParametros::Grupo(QWidget* padre, const QString& titulo, QGridLayout*& rejilla) {
    auto* grupo = new QGroupBox(titulo, padre);
    rejilla = new QGridLayout(grupo);
    rejilla->setColumnStretch(2, 1);
    rejilla->setColumnMinimumWidth(2, 24);
    rejilla->setColumnStretch(5, 1);
    return grupo;
}

std::int16_t FormaParametros::Valor16(const QLineEdit* caja) {
    bool ok = false;
    int v = caja->text().toInt(&ok);
    return ok ? static_cast<std::int16_t>(v) : 0;
}

void FormaParametros::Muestra(QLineEdit* caja, std::int16_t valor) {
    caja->setText(valor > 0 ? QString::number(valor) : QString());
}

void FormaParametros::EnfocaCaja(const CajaFallida& fallida) {
    if (fallida.pestana >= 0 && fallida.pestana < tboConfigArchivos->count())
        tboConfigArchivos->setCurrentIndex(fallida.pestana);
    QWidget* caja = CajaDe(fallida.caja);
    if (!caja) return;
    caja->setFocus();
    if (auto* linea = qobject_cast<QLineEdit*>(caja)) linea->selectAll();
}

// ---------------------------------------------------------- The name list

void FormaParametros::MuestraLista() {
    actualizando_ = true;
    cboConfiguraciones->clear();
    for (const auto& nombre : f_.lista) cboConfiguraciones->addItem(QString::fromStdString(nombre));
    int fila = cboConfiguraciones->findText(QString::fromStdString(f_.textoLista), Qt::MatchFixedString);
    cboConfiguraciones->setCurrentIndex(f_.filaElegida ? fila : -1);
    cboConfiguraciones->setEditText(QString::fromStdString(f_.textoLista));
    actualizando_ = false;
}

void FormaParametros::cboConfiguraciones_Click(int indice) {
    if (actualizando_ || indice < 0) return;
    f_.cajas = LeeCajas();
    f_.filaElegida = true;
    std::string texto = cboConfiguraciones->itemText(indice).toStdString();
    if (EligeConfiguracion(sesion_, f_, texto)) {
        MuestraLista();
        MuestraCajas(f_.cajas);
        return;
    }
    if (texto != f_.Configuracion) {
        // Answered no: the old name goes back in the list.
        f_.textoLista = f_.Configuracion;
        MuestraLista();
    } else {
        f_.textoLista = texto;
    }
}

void FormaParametros::cboConfiguraciones_Change(const QString& texto) {
    if (actualizando_) return;
    // Each key typed is upper-cased.
    QLineEdit* linea = cboConfiguraciones->lineEdit();
    const QString mayusculas = texto.toUpper();
    if (mayusculas != texto) {
        int cursor = linea->cursorPosition();
        actualizando_ = true;
        linea->setText(mayusculas);
        linea->setCursorPosition(cursor);
        actualizando_ = false;
    }
    f_.cajas = LeeCajas();
    f_.filaElegida = false;
    if (TecleaNombreConfiguracion(sesion_, f_, mayusculas.toStdString())) {
        MuestraLista();
        MuestraCajas(f_.cajas);
        return;
    }
    if (f_.textoLista != mayusculas.trimmed().toStdString()) {
        // Answered no: the text before goes back.
        actualizando_ = true;
        linea->setText(QString::fromStdString(f_.textoLista));
        actualizando_ = false;
    }
}

// ------------------------------------------------------------------ Events

bool FormaParametros::eventFilter(QObject* objeto, QEvent* evento) {
    if (objeto == cboConfiguraciones->lineEdit() && evento->type() == QEvent::FocusOut && !actualizando_) {
        // Leaving the box writes the trimmed, upper-cased text back.
        QLineEdit* linea = cboConfiguraciones->lineEdit();
        QString limpio = linea->text().trimmed().toUpper();
        if (limpio != linea->text()) {
            actualizando_ = true;
            linea->setText(limpio);
            actualizando_ = false;
        }
    }
    if (evento->type() == QEvent::KeyPress && qobject_cast<QLineEdit*>(objeto) &&
        objeto != cboConfiguraciones->lineEdit()) {
        auto* tecla = static_cast<QKeyEvent*>(evento);
        if (tecla->key() == Qt::Key_Return || tecla->key() == Qt::Key_Enter) {
            // Enter moves to the next enabled box.
            QWidget* siguiente = static_cast<QWidget*>(objeto)->nextInFocusChain();
            while (siguiente && siguiente != objeto &&
                   !(qobject_cast<QLineEdit*>(siguiente) && siguiente->isEnabled() && siguiente->isVisible() &&
                     siguiente != cboConfiguraciones->lineEdit()))
                siguiente = siguiente->nextInFocusChain();
            if (siguiente && siguiente != objeto) siguiente->setFocus();
            return true;
        }
        if (tecla->key() == Qt::Key_Escape) return true;
    }
    return QDialog::eventFilter(objeto, evento);
}

void FormaParametros::keyPressEvent(QKeyEvent* evento) {
    if (evento->key() == Qt::Key_Escape) return;
    QDialog::keyPressEvent(evento);
}

void FormaParametros::cmdAceptar_Click() {
    f_.cajas = LeeCajas();
    f_.textoLista = cboConfiguraciones->currentText().toStdString();
    Aceptacion a = AceptaParametros(sesion_, f_);
    if (a.cierra) {
        accept();
        return;
    }
    // A fault without a box of its own is mended by another name.
    EnfocaCaja(a.foco ? *a.foco : CajaFallida{-1, "Nombre"});
}

}  // namespace velmorant::app
