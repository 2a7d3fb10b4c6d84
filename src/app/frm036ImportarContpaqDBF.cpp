#include "app/frm036ImportarContpaqDBF.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>

#include "importers/Registro.h"
#include "importers/contpaq_windows/ImportadorContpaqWindows.h"
#include "platform/Texto.h"
#include "session/Funciones.h"

namespace velmorant::app {

namespace {

QLineEdit* CajaSoloLectura(QWidget* padre, const char* nombre) {
    auto* caja = new QLineEdit(padre);
    caja->setObjectName(nombre);
    caja->setReadOnly(true);
    return caja;
}

}  // namespace

frm036ImportarContpaqDBF::frm036ImportarContpaqDBF(Sesion& sesion, QWidget* padre)
    : frm000ImportadorDescrito(sesion, *BuscaImportador(kEnlaceContpaqWindows), padre) {
    setObjectName("frm036ImportarContpaqDBF");
    auto* tablas = new QGroupBox("Tablas de la empresa (de la carpeta de CTW10001.DBF)", this);
    auto* forma = new QFormLayout(tablas);
    eloRutaCatDetalle = CajaSoloLectura(tablas, "eloRutaCatDetalle");
    eloRutaArchSaldosIni = CajaSoloLectura(tablas, "eloRutaArchSaldosIni");
    eloPathPolizas = CajaSoloLectura(tablas, "eloPathPolizas");
    eloPathCatTipoPolizas = CajaSoloLectura(tablas, "eloPathCatTipoPolizas");
    forma->addRow("Cuentas de control (CTW10002):", eloRutaCatDetalle);
    forma->addRow("Saldos (CTW10005):", eloRutaArchSaldosIni);
    forma->addRow("Movimientos de pólizas (CTW10004):", eloPathPolizas);
    forma->addRow("Tipos de póliza (CTW10009):", eloPathCatTipoPolizas);
    zonaPropia()->insertWidget(0, tablas);

    // The nature of an unknown type is asked when the type is met.
    if (auto* natural = findChild<QLineEdit*>("txtnaturaleza")) {
        if (auto* forma = qobject_cast<QFormLayout*>(natural->parentWidget()->layout()))
            if (QWidget* etiqueta = forma->labelForField(natural)) etiqueta->hide();
        natural->hide();
    }
    cboMeses = findChild<QComboBox*>("cboMeses");
    cboMeses->clear();  // filled from the voucher lines once the tables are found
    chkCtasRellenas = findChild<QCheckBox*>("chkCtasRellenas");
    chkCtasRellenas->setChecked(sesion_.RellenaCeros);
    // The descriptor's box says "without the filter"; the form shows the filter.
    findChild<QCheckBox*>("chkSinFiltroSistOrig")->hide();
    chkSistOrigFiltroCtas = new QCheckBox("Filtrar las cuentas por sistema de origen (SISTORIG)", this);
    chkSistOrigFiltroCtas->setObjectName("chkSistOrigFiltroCtas");
    chkSistOrigFiltroCtas->setChecked(true);
    zonaPropia()->addWidget(chkSistOrigFiltroCtas);
    connect(chkSistOrigFiltroCtas, &QCheckBox::clicked, this,
            [this](bool marcado) { Protege([&] { chkSistOrigFiltroCtas_Click(marcado); }); });

    auto* naturalezas = new QGroupBox("Naturaleza de las cuentas por tipo de cuenta de ContPAQ", this);
    auto* capa = new QVBoxLayout(naturalezas);
    tdbgNatContpaq = new QTableWidget(0, 2, naturalezas);
    tdbgNatContpaq->setObjectName("tdbgNatContpaq");
    tdbgNatContpaq->setHorizontalHeaderLabels({"Tipo", "Naturaleza (D/A)"});
    tdbgNatContpaq->horizontalHeader()->setStretchLastSection(true);
    tdbgNatContpaq->verticalHeader()->hide();
    tdbgNatContpaq->setMinimumHeight(140);
    capa->addWidget(tdbgNatContpaq);
    cmdRestablecer = new QPushButton("&Restablecer", naturalezas);
    cmdRestablecer->setObjectName("cmdRestablecer");
    capa->addWidget(cmdRestablecer, 0, Qt::AlignRight);
    zonaPropia()->addWidget(naturalezas);
    connect(cmdRestablecer, &QPushButton::clicked, this, [this] { Protege([this] { cmdRestablecer_Click(); }); });
    connect(tdbgNatContpaq, &QTableWidget::itemChanged, this,
            [this](QTableWidgetItem* celda) { Protege([&] { NaturalezaEditada(celda); }); });
    connect(elo("eloRutaArchCat"), &QLineEdit::textChanged, this,
            [this](const QString& ruta) { Protege([&] { CatalogoElegido(ruta); }); });
    CargaNaturalezas();
}

void frm036ImportarContpaqDBF::CargaNaturalezas() {
    cargando_ = true;
    NaturalezasContpaq n(sesion_);
    const auto filas = n.filas();
    tdbgNatContpaq->setRowCount(static_cast<int>(filas.size()));
    for (int i = 0; i < static_cast<int>(filas.size()); ++i) {
        auto* tipo = new QTableWidgetItem(QString::fromStdString(filas[static_cast<size_t>(i)][0]));
        tipo->setFlags(tipo->flags() & ~Qt::ItemIsEditable);
        tdbgNatContpaq->setItem(i, 0, tipo);
        tdbgNatContpaq->setItem(i, 1, new QTableWidgetItem(QString::fromStdString(filas[static_cast<size_t>(i)][2])));
    }
    cargando_ = false;
}

void frm036ImportarContpaqDBF::NaturalezaEditada(QTableWidgetItem* celda) {
    if (cargando_ || celda->column() != 1) return;
    const std::string tipo = tdbgNatContpaq->item(celda->row(), 0)->text().toStdString();
    const std::string nat = Mayusculas(RecortaEspacios(celda->text().toStdString()));
    if (nat != "D" && nat != "A") {
        MsgAviso(sesion_, "La naturaleza es D (deudora) o A (acreedora).");
        CargaNaturalezas();
        return;
    }
    NaturalezasContpaq(sesion_).modifica(tipo, nat);
    CargaNaturalezas();
}

void frm036ImportarContpaqDBF::cmdRestablecer_Click() {
    if (!MsgPregunta(sesion_, "¿Confirma que desea restablecer los valores predeterminados\r\npara la asignación de la "
                              "naturaleza de las cuentas?"))
        return;
    RestableceNatContpaq(sesion_);
    CargaNaturalezas();
}

void frm036ImportarContpaqDBF::chkSistOrigFiltroCtas_Click(bool marcado) {
    if (marcado) return;
    const bool si = MsgPregunta(
        sesion_,
        "Este valor sólo debe ser modificado para casos especiales: \r\nEmpresas que transfirieron su contabilidad de "
        "otras versiones distintas de ContPAQ Windows. \r\nSi desconoce esta situación, o no es el caso, haga clic en "
        "No.\r\n\r\n¿Confirma que desea deshabilitar este Filtro? ");
    if (!si) chkSistOrigFiltroCtas->setChecked(true);
}

void frm036ImportarContpaqDBF::CatalogoElegido(const QString& ruta) {
    const ArchivosContpaq f = ruta.isEmpty() ? ArchivosContpaq{} : ArchivosJuntoAlCatalogo(ruta.toStdString());
    MuestraRuta(eloRutaCatDetalle, f.controles);
    MuestraRuta(eloRutaArchSaldosIni, f.saldos);
    MuestraRuta(eloPathPolizas, f.movimientos);
    MuestraRuta(eloPathCatTipoPolizas, f.tiposPoliza);
    cboMeses->clear();
    if (f.movimientos.empty()) return;
    try {
        for (const auto& [nombre, mes] : MesesContpaq(sesion_, f.movimientos))
            cboMeses->addItem(QString::fromStdString(nombre), mes);
    } catch (const std::exception& e) {
        MsgCritico(sesion_, e.what());
    }
    cboMeses->setCurrentIndex(cboMeses->count() - 1);
}

ArchivosImportacion frm036ImportarContpaqDBF::Archivos() const {
    ArchivosImportacion a = frm000ImportadorDescrito::Archivos();
    if (cboMeses->currentIndex() < 0) a.parametros.erase("hasta-mes");
    if (!chkSistOrigFiltroCtas->isChecked()) a.casillas.insert("sin-filtro-sistorig");
    a.parametros["rellena-ceros"] = chkCtasRellenas->isChecked() ? "1" : "0";
    return a;
}

bool frm036ImportarContpaqDBF::PreparaImportacion() {
    if (cboMeses->currentIndex() < 0) return true;  // the run's checks name what is missing
    return MsgPregunta(sesion_, "¿Confirma que desea importar los movimientos de pólizas hasta el mes de: " +
                                    cboMeses->currentText().toStdString() + "?");
}

}  // namespace velmorant::app
