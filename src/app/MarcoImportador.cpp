#include "app/MarcoImportador.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QScreen>
#include <QTimer>

#include "app/InteraccionQt.h"
#include "app/frm000HistorialImportaciones.h"
#include "app/RegistroFormularios.h"
#include "pipeline/Importacion.h"
#include "platform/ErrorLectura.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"

namespace velmorant::app {

namespace {

const char* const kSufijosMes[13] = {"Ene", "Feb", "Mar", "Abr", "May", "Jun", "Jul",
                                     "Ago", "Sep", "Oct", "Nov", "Dic", "Mes13"};

QLineEdit* CajaDeRuta(QWidget* padre, const QString& nombre) {
    auto* caja = new QLineEdit(padre);
    caja->setObjectName(nombre);
    caja->setReadOnly(true);
    caja->setFocusPolicy(Qt::NoFocus);
    caja->setMinimumWidth(360);
    return caja;
}

QPushButton* BotonDeArchivo(QWidget* padre, const QString& nombre) {
    auto* boton = new QPushButton("...", padre);
    boton->setObjectName(nombre);
    boton->setAutoDefault(false);
    boton->setFixedWidth(boton->fontMetrics().horizontalAdvance("....") + 24);
    return boton;
}

// Flips a widget's own enabled flag, whatever its parent's.
void Invierte(QWidget* w) { w->setEnabled(w->testAttribute(Qt::WA_Disabled)); }

}  // namespace

namespace {

ArchivoDelMarco FilaDesde(const ArchivoDescrito& a) {
    ArchivoDelMarco f;
    f.control = QString::fromStdString(a.control);
    f.boton = QString::fromStdString(a.boton);
    f.etiqueta = QString::fromStdString(a.etiqueta);
    f.selector = a.selector;
    f.papel = a.papel;
    f.faltante = a.faltante;
    f.focoFaltante = QString::fromStdString(a.focoFaltante);
    f.avisoFaltante = a.avisoFaltante;
    return f;
}

}  // namespace

DescripcionMarco DescripcionDesde(const DescriptorImportador& d) {
    DescripcionMarco m;
    m.idSistema = d.IdSistema;
    m.titulo = QString::fromStdString(d.titulo);
    for (const auto& a : d.archivos) m.archivos.push_back(FilaDesde(a));
    m.meses = d.meses;
    m.mes13 = d.mes13;
    m.selectorMes = d.selectorMes;
    if (d.anioAnterior) m.anioAnterior = FilaDesde(*d.anioAnterior);
    return m;
}

void CentraEnPantalla(QWidget* forma) {
    QScreen* pantalla = forma->screen() ? forma->screen() : QGuiApplication::primaryScreen();
    if (!pantalla) return;
    QRect area = pantalla->availableGeometry();
    QSize tamano = forma->size();
    forma->move(area.x() + (area.width() - tamano.width()) / 2, area.y() + (area.height() - tamano.height()) / 2);
}

MarcoImportador::MarcoImportador(Sesion& sesion, DescripcionMarco descripcion, QWidget* padre)
    : QDialog(padre), sesion_(sesion), descripcion_(std::move(descripcion)) {
    setWindowTitle(descripcion_.titulo);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);

    // The fiscal year: its files, the importer's own controls, the months.
    auto* anio = new QWidget;
    auto* zonaAnio = new QVBoxLayout(anio);
    zonaAnio->addWidget(construyeArchivos(descripcion_.archivos));
    zonaPropia_ = new QVBoxLayout;
    zonaAnio->addLayout(zonaPropia_);
    if (descripcion_.meses) zonaAnio->addWidget(construyeMeses(), 1);
    zonaAnio->addStretch();

    contenido_ = new QWidget(this);
    auto* zonaContenido = new QVBoxLayout(contenido_);
    zonaContenido->setContentsMargins(0, 0, 0, 0);
    if (descripcion_.anioAnterior) {
        tboBase = new QTabWidget(contenido_);
        tboBase->setObjectName("tboBase");
        tboBase->addTab(anio, QString::number(sesion_.EjercicioActual));
        tboBase->addTab(construyeAnioAnterior(), QString::number(sesion_.EjercicioActual - 1));
        zonaContenido->addWidget(tboBase);
    } else {
        zonaAnio->setContentsMargins(0, 0, 0, 0);
        zonaContenido->addWidget(anio);
    }

    lblPbar = new QLabel(this);
    lblPbar->setObjectName("lblPbar");
    pbar = new QProgressBar(this);
    pbar->setObjectName("pbar");
    for (QWidget* w : {static_cast<QWidget*>(lblPbar), static_cast<QWidget*>(pbar)}) {
        QSizePolicy p = w->sizePolicy();
        p.setRetainSizeWhenHidden(true);
        w->setSizePolicy(p);
    }
    progreso_ = std::make_unique<ProgresoQt>(lblPbar, pbar);
    progreso_->visible(false);

    cmdImportar = new QPushButton("&Importar", this);
    cmdImportar->setObjectName("cmdImportar");
    cmdImportar->setDefault(true);
    cmdCancelar = new QPushButton("&Cancelar", this);
    cmdCancelar->setObjectName("cmdCancelar");
    cmdCancelar->setAutoDefault(false);
    cmdHistorial = new QPushButton("&Historial...", this);
    cmdHistorial->setObjectName("cmdHistorial");
    cmdHistorial->setAutoDefault(false);
    auto* botones = new QHBoxLayout;
    botones->addWidget(cmdHistorial);
    botones->addStretch();
    botones->addWidget(cmdImportar);
    botones->addWidget(cmdCancelar);

    auto* principal = new QVBoxLayout(this);
    principal->addWidget(contenido_, 1);
    principal->addWidget(lblPbar);
    principal->addWidget(pbar);
    principal->addLayout(botones);

    connect(cmdImportar, &QPushButton::clicked, this, [this] { Protege([this] { cmdImportar_Click(); }); });
    connect(cmdCancelar, &QPushButton::clicked, this, &MarcoImportador::reject);
    connect(cmdHistorial, &QPushButton::clicked, this, [this] {
        Protege([this] { frm000HistorialImportaciones(sesion_, this).exec(); });
    });
    resize(sizeHint());
    CentraEnPantalla(this);
}

void MarcoImportador::agregaFila(QGridLayout* rejilla, int fila, const ArchivoDelMarco& archivo) {
    auto* caja = CajaDeRuta(this, archivo.control);
    auto* boton = BotonDeArchivo(this, archivo.boton);
    auto* etiqueta = new QLabel(archivo.etiqueta + ":", this);
    rejilla->addWidget(etiqueta, fila, 0);
    rejilla->addWidget(caja, fila, 1);
    rejilla->addWidget(boton, fila, 2);
    connect(boton, &QPushButton::clicked, this, [this, archivo] { Protege([this, archivo] { EligeArchivo(archivo); }); });
}

QWidget* MarcoImportador::construyeArchivos(const std::vector<ArchivoDelMarco>& archivos) {
    auto* grupo = new QGroupBox("Archivos", this);
    auto* rejilla = new QGridLayout(grupo);
    rejilla->setColumnStretch(1, 1);
    int fila = 0;
    for (const auto& archivo : archivos) agregaFila(rejilla, fila++, archivo);
    if (archivos.empty()) grupo->hide();
    return grupo;
}

QWidget* MarcoImportador::construyeMeses() {
    fraMeses = new QGroupBox("Pólizas", this);
    fraMeses->setObjectName("fraMeses");
    auto* zona = new QVBoxLayout(fraMeses);
    cabeceraMeses_ = new QHBoxLayout;
    zona->addLayout(cabeceraMeses_);
    auto* rejilla = new QGridLayout;
    rejilla->setColumnStretch(1, 1);
    rejilla->setVerticalSpacing(3);
    zona->addLayout(rejilla);
    const int filas = descripcion_.mes13 ? 13 : 12;
    for (int i = 0; i < filas; ++i) {
        const int mes = i + 1;
        chkMes[i] = new QCheckBox(mes == 13 ? QString("Mes 13") : QString::fromStdString(NombreDelMes(mes)), this);
        chkMes[i]->setObjectName(QString("chk") + kSufijosMes[i]);
        eloPathMes[i] = CajaDeRuta(this, QString("eloPath") + kSufijosMes[i]);
        cmdAbrirMes[i] = BotonDeArchivo(this, QString("cmdAbrir") + kSufijosMes[i]);
        rejilla->addWidget(chkMes[i], i, 0);
        rejilla->addWidget(eloPathMes[i], i, 1);
        rejilla->addWidget(cmdAbrirMes[i], i, 2);
        connect(chkMes[i], &QCheckBox::clicked, this, [this, mes](bool marcado) {
            Protege([this, mes, marcado] { chkMes_Click(mes, marcado); });
        });
        connect(cmdAbrirMes[i], &QPushButton::clicked, this, [this, mes] { Protege([this, mes] { EligeArchivoMes(mes); }); });
    }
    return fraMeses;
}

QWidget* MarcoImportador::construyeAnioAnterior() {
    auto* pagina = new QWidget;
    auto* zona = new QVBoxLayout(pagina);
    auto* grupo = new QGroupBox("Archivos", pagina);
    auto* rejilla = new QGridLayout(grupo);
    rejilla->setColumnStretch(1, 1);
    agregaFila(rejilla, 0, *descripcion_.anioAnterior);
    zona->addWidget(grupo);

    lblNotaSdosAAntFinal = new QLabel(TextoDeMensaje(sesion_.NotaSaldosAnioAnterior), pagina);
    lblNotaSdosAAntFinal->setObjectName("lblNotaSdosAAntFinal");
    lblNotaSdosAAntFinal->setWordWrap(true);
    lblNotaSdosAAntFinal->setFrameShape(QFrame::StyledPanel);
    lblNotaSdosAAntFinal->setMargin(8);
    zona->addWidget(lblNotaSdosAAntFinal);
    zona->addStretch();

    lblPbarAnioAnt = new QLabel(pagina);
    lblPbarAnioAnt->setObjectName("lblPbarAnioAnt");
    pbarAnioAnt = new QProgressBar(pagina);
    pbarAnioAnt->setObjectName("pbarAnioAnt");
    zona->addWidget(lblPbarAnioAnt);
    zona->addWidget(pbarAnioAnt);
    progresoAnioAnt_ = std::make_unique<ProgresoQt>(lblPbarAnioAnt, pbarAnioAnt);
    progresoAnioAnt_->visible(false);
    return pagina;
}

QLineEdit* MarcoImportador::elo(const QString& control) const { return findChild<QLineEdit*>(control); }

QPushButton* MarcoImportador::boton(const QString& nombre) const { return findChild<QPushButton*>(nombre); }

void MarcoImportador::MuestraRuta(QLineEdit* caja, const std::string& ruta) {
    caja->setText(QString::fromStdString(ruta));
    caja->setToolTip(QString::fromStdString(ruta));
    caja->setCursorPosition(0);
}

bool MarcoImportador::mesDisponible(int) const { return descripcion_.meses; }

ArchivosImportacion MarcoImportador::Archivos() const {
    ArchivosImportacion a;
    for (const auto& archivo : descripcion_.archivos)
        if (!archivo.papel.empty()) a.fija(archivo.papel, elo(archivo.control)->text().toStdString());
    if (descripcion_.anioAnterior && !descripcion_.anioAnterior->papel.empty())
        a.fija(descripcion_.anioAnterior->papel, elo(descripcion_.anioAnterior->control)->text().toStdString());
    if (descripcion_.meses)
        for (int i = 0; i < 13; ++i)
            if (chkMes[i] && mesDisponible(i + 1) && chkMes[i]->isChecked())
                a.meses[i] = eloPathMes[i]->text().toStdString();
    return a;
}

bool MarcoImportador::EnAnioAnterior() const { return tboBase && tboBase->currentIndex() == 1; }

ProgresoQt& MarcoImportador::progreso() { return EnAnioAnterior() ? *progresoAnioAnt_ : *progreso_; }

void MarcoImportador::AlternaFormulario(bool soloForma) {
    if (!soloForma) {
        Invierte(cmdImportar);
        Invierte(cmdCancelar);
    }
    Invierte(contenido_);
    trabajando_ = !contenido_->isEnabled();
    cmdHistorial->setEnabled(!trabajando_);
    if (trabajando_) QGuiApplication::setOverrideCursor(Qt::BusyCursor);
    else QGuiApplication::restoreOverrideCursor();
}

void MarcoImportador::showEvent(QShowEvent* evento) {
    if (!mostrado_) {
        mostrado_ = true;
        resize(size().expandedTo(sizeHint()));
        CentraEnPantalla(this);
        // After the form's modal loop has started, so that the load may
        // end the program.
        QTimer::singleShot(0, this, [this] { Protege([this] { Form_Load(); }); });
    }
    QDialog::showEvent(evento);
}

void MarcoImportador::reject() {
    if (trabajando_) return;
    QDialog::reject();
}

void MarcoImportador::TerminaPrograma() {
    while (trabajando_) AlternaFormulario(true);
    done(kProgramaTerminado);
}

void MarcoImportador::Protege(const std::function<void()>& accion) {
    try {
        accion();
    } catch (const ProgramaTerminado&) {
        TerminaPrograma();
    } catch (const ErrorLectura&) {
        // The reader has said what it could not read.
        TerminaPrograma();
    } catch (const std::exception& e) {
        ReportaError(sesion_, e, true);
        TerminaPrograma();
    }
}

// ------------------------------------------------------------ File pickers

std::vector<std::string> MarcoImportador::RutasElegidas(const QLineEdit* excepto) const {
    std::vector<std::string> rutas;
    for (auto* caja : findChildren<QLineEdit*>())
        if (caja != excepto && caja->objectName().startsWith("elo")) rutas.push_back(caja->text().toStdString());
    return rutas;
}

void MarcoImportador::EligeArchivo(const ArchivoDelMarco& archivo) {
    QLineEdit* caja = elo(archivo.control);
    std::string ruta = SeleccionaArchivo(sesion_, archivo.selector);
    if (ruta.empty()) return;
    if (ArchivoYaElegido(sesion_, ruta, RutasElegidas(caja))) {
        boton(archivo.boton)->setFocus();
        return;
    }
    MuestraRuta(caja, ruta);
}

void MarcoImportador::EligeArchivoMes(int mes) {
    const size_t i = static_cast<size_t>(mes - 1);
    SelectorArchivo selector = descripcion_.selectorMes;
    selector.titulo += mes == 13 ? std::string("Mes 13") : NombreDelMes(mes);
    std::string ruta = SeleccionaArchivo(sesion_, selector);
    if (ruta.empty()) return;
    if (ArchivoYaElegido(sesion_, ruta, RutasElegidas(eloPathMes[i]))) {
        cmdAbrirMes[i]->setFocus();
        return;
    }
    MuestraRuta(eloPathMes[i], ruta);
    chkMes[i]->setChecked(true);
    if (mes == 1) AutocompletaDesdeEnero();
}

void MarcoImportador::AutocompletaDesdeEnero() {
    auto meses = AutocompletaMeses(eloPathMes[0]->text().toStdString(), descripcion_.selectorMes.clave);
    for (int mes = 2; mes <= 12; ++mes) {
        const size_t i = static_cast<size_t>(mes - 1);
        if (meses[i].empty() || !mesDisponible(mes)) continue;
        MuestraRuta(eloPathMes[i], meses[i]);
        chkMes[i]->setChecked(true);
        if (mes < 12) cmdAbrirMes[i + 1]->setFocus();
    }
}

void MarcoImportador::chkMes_Click(int mes, bool marcado) {
    const size_t i = static_cast<size_t>(mes - 1);
    switch (ClicMes(sesion_, marcado, eloPathMes[i]->text().toStdString())) {
        case EfectoMarcaMes::Nada: break;
        case EfectoMarcaMes::Desmarca:
            chkMes[i]->setChecked(false);
            cmdAbrirMes[i]->setFocus();
            break;
        case EfectoMarcaMes::LimpiaRuta: MuestraRuta(eloPathMes[i], ""); break;
    }
}

// -------------------------------------------------------------------- Run

bool MarcoImportador::FaltaArchivo(const ArchivoDelMarco& archivo) {
    if (archivo.faltante.empty() || !elo(archivo.control)->text().isEmpty()) return false;
    if (archivo.avisoFaltante)
        MsgAviso(sesion_, archivo.faltante);
    else
        MsgInformacion(sesion_, archivo.faltante);
    QString foco = archivo.focoFaltante.isEmpty() ? archivo.boton : archivo.focoFaltante;
    if (auto* w = findChild<QWidget*>(foco)) w->setFocus();
    return true;
}

bool MarcoImportador::ValidaPolizas() {
    if (!descripcion_.meses) return true;
    std::array<std::string, 13> rutas = Archivos().meses;
    return CompletaSeleccionArchivos(sesion_, rutas);
}

bool MarcoImportador::ValidaRutas() {
    if (!ValidaPropios()) return false;
    if (EnAnioAnterior()) return !FaltaArchivo(*descripcion_.anioAnterior);
    for (const auto& archivo : descripcion_.archivos)
        if (FaltaArchivo(archivo)) return false;
    return ValidaPolizas();
}

void MarcoImportador::cmdImportar_Click() {
    if (!ValidaRutas()) return;
    if (!PreparaImportacion()) return;
    EjecutaImportacion();
}

std::unique_ptr<Importador> MarcoImportador::CreaImportador() {
    MsgAviso(sesion_, "La importación de este sistema contable no está disponible en esta versión.");
    return nullptr;
}

void MarcoImportador::EjecutaImportacion() {
    std::unique_ptr<Importador> importador = CreaImportador();
    if (!importador) return;  // its message was given
    const ArchivosImportacion archivos = Archivos();
    const bool anioAnterior = EnAnioAnterior();
    ProgresoQt& barra = progreso();
    Progreso* anterior = sesion_.progreso;
    AlternaFormulario();
    sesion_.progreso = &barra;
    ResultadoImportacion r;
    try {
        r = anioAnterior ? EjecutaSaldosAnioAnterior(sesion_, *importador, archivos.saldosAnioAnterior)
                         : velmorant::EjecutaImportacion(sesion_, *importador, archivos);
    } catch (...) {
        sesion_.progreso = anterior;
        throw;
    }
    sesion_.progreso = anterior;
    barra.visible(false);
    AlternaFormulario();
    switch (r) {
        case ResultadoImportacion::Terminada:
        case ResultadoImportacion::ConPerdidas: accept(); break;
        case ResultadoImportacion::PeriodoInvalido:
        case ResultadoImportacion::ArchivosFaltantes: cmdCancelar->setFocus(); break;
        case ResultadoImportacion::NoContinuada:
        case ResultadoImportacion::Fallida: break;
    }
}

}  // namespace velmorant::app
