#include "app/frm022TxtPersonalizado.h"

#include <QLabel>

#include "app/frm022DefParaTxtPersonalizado.h"
#include "importers/texto_fijo/ImportadorTextoFijo.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant::app {

DescripcionMarco DescripcionTxtPersonalizado() {
    DescripcionMarco m = DescripcionDesde(DescriptorTextoFijo());
    ArchivoDelMarco anterior;
    anterior.control = "eloSdosAnteriorFinal";
    anterior.boton = "cmdSaldosFinAnioAnt";
    anterior.etiqueta = "Saldos finales año anterior";
    anterior.selector = {"Búsqueda del Archivo *.TXT - Saldos finales año anterior", "*.txt|*.txt",
                         kClaveSaldosAnioAnterior};
    m.anioAnterior = anterior;
    return m;
}

frm022TxtPersonalizado::frm022TxtPersonalizado(Sesion& sesion, QWidget* padre)
    : MarcoImportador(sesion, DescripcionTxtPersonalizado(), padre) {
    setObjectName("frm022TxtPersonalizado");
    f_.tipo = FormularioParametros::TxtPersonalizado;

    if (auto* marco = qobject_cast<QGroupBox*>(elo("eloRutaArchCat")->parentWidget()))
        marco->setTitle("Catálogo de Cuentas : MES INICIAL del periodo de revisión");
    const char* const sufijos[12] = {"Ene", "Feb", "Mar", "Abr", "May", "Jun",
                                     "Jul", "Ago", "Sep", "Oct", "Nov", "Dic"};
    for (int i = 0; i < 12; ++i) cmdAbrirMes[i]->setObjectName(QString("cmd") + sufijos[i]);

    fraConfiguraciones = new QGroupBox("Configuración", this);
    fraConfiguraciones->setObjectName("fraConfiguraciones");
    cboConfiguraciones = new QComboBox(fraConfiguraciones);
    cboConfiguraciones->setObjectName("cboConfiguraciones");
    cboConfiguraciones->setMinimumContentsLength(40);
    cmdCambiar = new QPushButton("Cambiar o Crear Configuración", fraConfiguraciones);
    cmdCambiar->setObjectName("cmdCambiar");
    cmdCambiar->setAutoDefault(false);
    auto* zona = new QHBoxLayout(fraConfiguraciones);
    zona->addWidget(cboConfiguraciones, 1);
    zona->addWidget(cmdCambiar);
    zonaPropia()->addWidget(fraConfiguraciones);

    connect(cboConfiguraciones, qOverload<int>(&QComboBox::activated), this,
            [this](int indice) { Protege([this, indice] { cboConfiguraciones_Click(indice); }); });
    connect(cmdCambiar, &QPushButton::clicked, this, [this] { Protege([this] { cmdCambiar_Click(); }); });
}

void frm022TxtPersonalizado::Form_Load() {
    sesion_.IdSistemaElegido = kEnlaceTxtPersonalizado;
    InicioConfiguraciones inicio = IniciaConfiguraciones(sesion_);
    f_.Configuracion = inicio.Configuracion;
    CargaConfigEmpresa(sesion_, f_.Configuracion, f_.registro);
    registro_ = f_.registro;
    f_.lista = inicio.lista;
    MuestraLista();
    if (inicio.abreParametros) cmdCambiar_Click();
}

void frm022TxtPersonalizado::MuestraLista() {
    actualizando_ = true;
    cboConfiguraciones->clear();
    for (const auto& nombre : f_.lista) cboConfiguraciones->addItem(QString::fromStdString(nombre));
    cboConfiguraciones->setCurrentIndex(cboConfiguraciones->findText(QString::fromStdString(f_.Configuracion)));
    actualizando_ = false;
}

void frm022TxtPersonalizado::cboConfiguraciones_Click(int indice) {
    if (actualizando_ || indice < 0) return;
    f_.cajas = InicializaParametros(f_.tipo, f_.registro);
    if (EligeConfiguracion(sesion_, f_, cboConfiguraciones->itemText(indice).toStdString())) registro_ = f_.registro;
    // Chosen or not, the list shows the current layout.
    MuestraLista();
}

void frm022TxtPersonalizado::cmdCambiar_Click() {
    EntradaParametrosFijos entrada;
    const ArchivosImportacion a = Archivos();
    entrada.catalogo = a.catalogo;
    for (const auto& ruta : a.meses)
        if (entrada.polizas.empty()) entrada.polizas = ruta;
    entrada.configuracion = f_.Configuracion;
    frm022DefParaTxtPersonalizado parametros(sesion_, entrada, this);
    if (parametros.exec() == QDialog::Accepted) {
        f_.Configuracion = parametros.Configuracion();
        CargaConfigEmpresa(sesion_, f_.Configuracion, f_.registro);
        registro_ = f_.registro;
    }
    // A cancel may have kept a new layout in the catalogue.
    sesion_.IdSistemaElegido = kEnlaceTxtPersonalizado;
    f_.lista = LlenaComboConfiguraciones(sesion_);
    MuestraLista();
}

bool frm022TxtPersonalizado::ValidaPropios() {
    if (!EnAnioAnterior() || !elo("eloRutaArchCat")->text().isEmpty()) return true;
    MsgAviso(sesion_, descripcion().archivos.front().faltante);
    boton("cmdCatalogo")->setFocus();
    return false;
}

bool frm022TxtPersonalizado::PreparaImportacion() {
    fraConfiguraciones->setEnabled(false);
    // Without the row the record stays as it was.
    CargaConfigEmpresa(sesion_, f_.Configuracion, registro_);
    return true;
}

std::unique_ptr<Importador> frm022TxtPersonalizado::CreaImportador() {
    return std::make_unique<ImportadorTextoFijo>(registro_, &IdPolizaTmp_);
}

void frm022TxtPersonalizado::EjecutaImportacion() {
    if (!EnAnioAnterior()) {
        MarcoImportador::EjecutaImportacion();
        return;
    }
    CreaInconsisImpTmp(sesion_);
    AbreInconsistencias(sesion_);
    CreaInconsisImpTmpDet(sesion_);
    CierraInconsistencias(sesion_);
}

std::vector<std::string> frm022TxtPersonalizado::RutasElegidas(const QLineEdit* excepto) const {
    bool esMes = false;
    for (int i = 0; i < 12; ++i) esMes = esMes || eloPathMes[i] == excepto;
    if (!esMes) return MarcoImportador::RutasElegidas(excepto);
    std::vector<std::string> rutas;
    for (int i = 0; i < 12; ++i)
        if (eloPathMes[i] != excepto) rutas.push_back(eloPathMes[i]->text().toStdString());
    return rutas;
}

}  // namespace velmorant::app
