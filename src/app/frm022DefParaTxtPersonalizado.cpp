#include "app/frm022DefParaTxtPersonalizado.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QVBoxLayout>

#include <algorithm>

#include "importers/Limpieza.h"
#include "importers/texto_fijo/LectorTextoFijo.h"

namespace velmorant::app {

frm022DefParaTxtPersonalizado::frm022DefParaTxtPersonalizado(Sesion& sesion, const EntradaParametrosFijos& entrada,
                                                             QWidget* padre)
    : FormaParametros(sesion, FormularioParametros::TxtPersonalizado, entrada.configuracion, PestanaSaldos::Ninguna,
                      padre),
      lineasCatalogo_(LineasTextoFijo(entrada.catalogo)),
      lineasPolizas_(LineasTextoFijo(entrada.polizas)) {
    setObjectName("frm022DefParaTxtPersonalizado");
    tboConfigArchivos->addTab(construyeCatalogo(entrada.catalogo), "Catálogo de Cuentas");
    tboConfigArchivos->addTab(construyePolizas(entrada.polizas), "Pólizas");
    Arma();
    for (QLineEdit* caja : findChildren<QLineEdit*>())
        if (caja != cboConfiguraciones->lineEdit())
            connect(caja, &QLineEdit::textChanged, this, [this] { ActualizaVistas(); });
    connect(txtNatLong, &QLineEdit::editingFinished, this, [this] { txtNatLong_Validate(); });
    connect(txtNivelLong, &QLineEdit::editingFinished, this, [this] { txtNivelLong_Validate(); });
    for (QTableView* vista : {tdbgCuentas, tdbgPolizas}) vista->resizeColumnToContents(0);
}

void frm022DefParaTxtPersonalizado::Renglon(QGridLayout* r, int fila, int columna, QWidget* titulo, QLineEdit* pIni,
                                            QLineEdit* largo) {
    r->addWidget(titulo, fila, columna);
    r->addWidget(pIni, fila, columna + 1);
    r->addWidget(largo, fila, columna + 2);
}

namespace {

// A grid of two columns of rows, each of a caption, a position and a length,
// under their heads.
QGroupBox* GrupoPosiciones(QWidget* padre, QGridLayout*& r) {
    auto* grupo = new QGroupBox("Posición inicial y longitud de cada campo", padre);
    r = new QGridLayout(grupo);
    for (int columna : {0, 4}) {
        r->addWidget(new QLabel("Posición", grupo), 0, columna + 1);
        r->addWidget(new QLabel("Longitud", grupo), 0, columna + 2);
    }
    r->setColumnMinimumWidth(3, 24);
    r->setColumnStretch(3, 1);
    r->setColumnStretch(7, 1);
    return grupo;
}

}  // namespace

QWidget* frm022DefParaTxtPersonalizado::construyeCatalogo(const std::string& ruta) {
    auto* pagina = new QWidget;
    tdbgCuentas = Vista(pagina, "tdbgCuentas", ruta);
    QGridLayout* r = nullptr;
    auto* grupo = GrupoPosiciones(pagina, r);
    txtCtaPIni = Caja(grupo, "txtCtaPIni"), txtCtaLong = Caja(grupo, "txtCtaLong");
    txtDescPIni = Caja(grupo, "txtDescPIni"), txtDescLong = Caja(grupo, "txtDescLong");
    txtCtaCtrlPIni = Caja(grupo, "txtCtaCtrlPIni"), txtCtaCtrlLong = Caja(grupo, "txtCtaCtrlLong");
    txtNivelPIni = Caja(grupo, "txtNivelPIni"), txtNivelLong = Caja(grupo, "txtNivelLong");
    txtNatPIni = Caja(grupo, "txtNatPIni"), txtNatLong = Caja(grupo, "txtNatLong");
    txtSdoIniPIni = Caja(grupo, "txtSdoIniPIni"), txtSdoIniLong = Caja(grupo, "txtSdoIniLong");
    chkCtaCtrl = Casilla(grupo, "chkCtaCtrl", "Cuenta Acumulativa", {txtCtaCtrlPIni, txtCtaCtrlLong});
    chkNivel = Casilla(grupo, "chkNivel", "Nivel", {txtNivelPIni, txtNivelLong});
    // The nature is one character: its length box keeps its 1.
    chkNat = Casilla(grupo, "chkNat", "Naturaleza", {txtNatPIni});
    chkSaldosIni = Casilla(grupo, "chkSaldosIni", "Saldo Inicial", {txtSdoIniPIni, txtSdoIniLong});
    Renglon(r, 1, 0, new QLabel("Cuenta:", grupo), txtCtaPIni, txtCtaLong);
    Renglon(r, 2, 0, new QLabel("Descripción de la cuenta:", grupo), txtDescPIni, txtDescLong);
    Renglon(r, 1, 4, chkCtaCtrl, txtCtaCtrlPIni, txtCtaCtrlLong);
    Renglon(r, 2, 4, chkNivel, txtNivelPIni, txtNivelLong);
    Renglon(r, 3, 4, chkNat, txtNatPIni, txtNatLong);
    Renglon(r, 4, 4, chkSaldosIni, txtSdoIniPIni, txtSdoIniLong);

    auto* zona = new QVBoxLayout(pagina);
    zona->addWidget(tdbgCuentas, 1);
    zona->addWidget(grupo);
    return pagina;
}

QWidget* frm022DefParaTxtPersonalizado::construyePolizas(const std::string& ruta) {
    auto* pagina = new QWidget;
    tdbgPolizas = Vista(pagina, "tdbgPolizas", ruta);
    QGridLayout* r = nullptr;
    auto* grupo = GrupoPosiciones(pagina, r);
    txtTipoPIni = Caja(grupo, "txtTipoPIni"), txtTipoLong = Caja(grupo, "txtTipoLong");
    txtNumPolPIni = Caja(grupo, "txtNumPolPIni"), txtNumPolLong = Caja(grupo, "txtNumPolLong");
    txtDiaPIni = Caja(grupo, "txtDiaPIni"), txtDiaLong = Caja(grupo, "txtDiaLong");
    txtMesPIni = Caja(grupo, "txtMesPIni"), txtMesLong = Caja(grupo, "txtMesLong");
    txtAnioPIni = Caja(grupo, "txtAnioPIni"), txtAnioLong = Caja(grupo, "txtAnioLong");
    txtCtaPolPIni = Caja(grupo, "txtCtaPolPIni"), txtCtaPolLong = Caja(grupo, "txtCtaPolLong");
    txtRefPIni = Caja(grupo, "txtRefPIni"), txtRefLong = Caja(grupo, "txtRefLong");
    txtConceptPIni = Caja(grupo, "txtConceptPIni"), txtConceptLong = Caja(grupo, "txtConceptLong");
    txtTipoMovPIni = Caja(grupo, "txtTipoMovPIni"), txtTipoMovLong = Caja(grupo, "txtTipoMovLong");
    txtImportePIni = Caja(grupo, "txtImportePIni"), txtImporteLong = Caja(grupo, "txtImporteLong");
    txtAbonoPIni = Caja(grupo, "txtAbonoPIni"), txtAbonoLong = Caja(grupo, "txtAbonoLong");
    chkReferencia = Casilla(grupo, "chkReferencia", "Referencia de la partida", {txtRefPIni, txtRefLong});
    chkTipoMov = Casilla(grupo, "chkTipoMov", "Tipo de Movimiento", {txtTipoMovPIni, txtTipoMovLong});
    lblImporte = new QLabel("Importe Cargo", grupo);
    lblImporte->setObjectName("lblImporte");
    lblAbono = new QLabel("Importe Abono", grupo);
    lblAbono->setObjectName("lblAbono");
    Renglon(r, 1, 0, new QLabel("Tipo de Póliza:", grupo), txtTipoPIni, txtTipoLong);
    Renglon(r, 2, 0, new QLabel("Número de la Póliza:", grupo), txtNumPolPIni, txtNumPolLong);
    Renglon(r, 3, 0, new QLabel("Día:", grupo), txtDiaPIni, txtDiaLong);
    Renglon(r, 4, 0, new QLabel("Mes:", grupo), txtMesPIni, txtMesLong);
    Renglon(r, 5, 0, new QLabel("Año:", grupo), txtAnioPIni, txtAnioLong);
    Renglon(r, 1, 4, new QLabel("Cuenta de la Póliza:", grupo), txtCtaPolPIni, txtCtaPolLong);
    Renglon(r, 2, 4, chkReferencia, txtRefPIni, txtRefLong);
    Renglon(r, 3, 4, new QLabel("Concepto de la Póliza:", grupo), txtConceptPIni, txtConceptLong);
    Renglon(r, 4, 4, chkTipoMov, txtTipoMovPIni, txtTipoMovLong);
    Renglon(r, 5, 4, lblImporte, txtImportePIni, txtImporteLong);
    Renglon(r, 6, 4, lblAbono, txtAbonoPIni, txtAbonoLong);

    auto* zona = new QVBoxLayout(pagina);
    zona->addWidget(tdbgPolizas, 1);
    zona->addWidget(grupo);
    return pagina;
}

// ------------------------------------------------------ Boxes and record

CajasParametros frm022DefParaTxtPersonalizado::LeeCajas() const {
    CajasParametros c;
    EstructuraDatosTxt& v = c.valores;
    c.chkCtaCtrl = chkCtaCtrl->isChecked();
    c.chkNivel = chkNivel->isChecked();
    c.chkNat = chkNat->isChecked();
    c.chkSaldosIni = chkSaldosIni->isChecked();
    c.chkReferencia = chkReferencia->isChecked();
    c.chkTipoMov = chkTipoMov->isChecked();
    auto par = [](std::int16_t& pIni, std::int16_t& largo, const QLineEdit* cajaPIni, const QLineEdit* cajaLargo) {
        pIni = Valor16(cajaPIni);
        largo = Valor16(cajaLargo);
    };
    par(v.PIniCuenta, v.LongCuenta, txtCtaPIni, txtCtaLong);
    par(v.PIniDescripcion, v.LongDescripcion, txtDescPIni, txtDescLong);
    par(v.PIniCtaAcum, v.LongCtaAcum, txtCtaCtrlPIni, txtCtaCtrlLong);
    par(v.PIniNivel, v.LongNivel, txtNivelPIni, txtNivelLong);
    par(v.PIniNaturaleza, v.LongNaturaleza, txtNatPIni, txtNatLong);
    par(v.PIniSdoIni, v.LongSdoIni, txtSdoIniPIni, txtSdoIniLong);
    par(v.PIniTipo, v.LongTipo, txtTipoPIni, txtTipoLong);
    par(v.PIniNumPol, v.LongNumPol, txtNumPolPIni, txtNumPolLong);
    par(v.PIniDia, v.LongDia, txtDiaPIni, txtDiaLong);
    par(v.PIniMes, v.LongMes, txtMesPIni, txtMesLong);
    par(v.PIniAnio, v.LongAnio, txtAnioPIni, txtAnioLong);
    par(v.PIniCtaPol, v.LongCtaPol, txtCtaPolPIni, txtCtaPolLong);
    par(v.PIniRef, v.LongRef, txtRefPIni, txtRefLong);
    par(v.PIniConcept, v.LongConcept, txtConceptPIni, txtConceptLong);
    if (c.chkTipoMov) {
        par(v.PIniTipoMov, v.LongTipoMov, txtTipoMovPIni, txtTipoMovLong);
        par(v.PIniImporte, v.LongImporte, txtImportePIni, txtImporteLong);
    } else {
        par(v.PIniCargo, v.LongCargo, txtImportePIni, txtImporteLong);
        par(v.PIniAbono, v.LongAbono, txtAbonoPIni, txtAbonoLong);
    }
    return c;
}

void frm022DefParaTxtPersonalizado::MuestraCajas(const CajasParametros& c) {
    const EstructuraDatosTxt& v = c.valores;
    cargando_ = true;
    chkCtaCtrl->setChecked(c.chkCtaCtrl);
    chkNivel->setChecked(c.chkNivel);
    chkNat->setChecked(c.chkNat);
    chkSaldosIni->setChecked(c.chkSaldosIni);
    chkReferencia->setChecked(c.chkReferencia);
    chkTipoMov->setChecked(c.chkTipoMov);
    auto par = [](QLineEdit* cajaPIni, QLineEdit* cajaLargo, std::int16_t pIni, std::int16_t largo, bool presente) {
        Muestra(cajaPIni, presente ? pIni : 0);
        Muestra(cajaLargo, presente ? largo : 0);
    };
    par(txtCtaPIni, txtCtaLong, v.PIniCuenta, v.LongCuenta, true);
    par(txtDescPIni, txtDescLong, v.PIniDescripcion, v.LongDescripcion, true);
    par(txtCtaCtrlPIni, txtCtaCtrlLong, v.PIniCtaAcum, v.LongCtaAcum, c.chkCtaCtrl);
    par(txtNivelPIni, txtNivelLong, v.PIniNivel, v.LongNivel, c.chkNivel);
    par(txtNatPIni, txtNatLong, v.PIniNaturaleza, v.LongNaturaleza, c.chkNat);
    par(txtSdoIniPIni, txtSdoIniLong, v.PIniSdoIni, v.LongSdoIni, c.chkSaldosIni);
    par(txtTipoPIni, txtTipoLong, v.PIniTipo, v.LongTipo, true);
    par(txtNumPolPIni, txtNumPolLong, v.PIniNumPol, v.LongNumPol, true);
    par(txtDiaPIni, txtDiaLong, v.PIniDia, v.LongDia, true);
    par(txtMesPIni, txtMesLong, v.PIniMes, v.LongMes, true);
    par(txtAnioPIni, txtAnioLong, v.PIniAnio, v.LongAnio, true);
    par(txtCtaPolPIni, txtCtaPolLong, v.PIniCtaPol, v.LongCtaPol, true);
    par(txtRefPIni, txtRefLong, v.PIniRef, v.LongRef, c.chkReferencia);
    par(txtConceptPIni, txtConceptLong, v.PIniConcept, v.LongConcept, true);
    par(txtTipoMovPIni, txtTipoMovLong, v.PIniTipoMov, v.LongTipoMov, c.chkTipoMov);
    if (c.chkTipoMov)
        par(txtImportePIni, txtImporteLong, v.PIniImporte, v.LongImporte, true);
    else
        par(txtImportePIni, txtImporteLong, v.PIniCargo, v.LongCargo, true);
    par(txtAbonoPIni, txtAbonoLong, v.PIniAbono, v.LongAbono, !c.chkTipoMov);
    cargando_ = false;
    ActualizaEstado();
}

void frm022DefParaTxtPersonalizado::ActualizaEstado() {
    auto habilita = [](bool si, std::initializer_list<QLineEdit*> cajas) {
        for (QLineEdit* caja : cajas) caja->setEnabled(si);
    };
    habilita(chkCtaCtrl->isChecked(), {txtCtaCtrlPIni, txtCtaCtrlLong});
    habilita(chkNivel->isChecked(), {txtNivelPIni, txtNivelLong});
    habilita(chkNat->isChecked(), {txtNatPIni, txtNatLong});
    habilita(chkSaldosIni->isChecked(), {txtSdoIniPIni, txtSdoIniLong});
    habilita(chkReferencia->isChecked(), {txtRefPIni, txtRefLong});
    habilita(chkTipoMov->isChecked(), {txtTipoMovPIni, txtTipoMovLong});
    if (txtNatLong->text().isEmpty()) txtNatLong->setText("1");
    // One amount with the indicator, a debit and a credit without it.
    const bool indicador = chkTipoMov->isChecked();
    lblImporte->setText(indicador ? "Importe" : "Importe Cargo");
    for (QWidget* w : {static_cast<QWidget*>(lblAbono), static_cast<QWidget*>(txtAbonoPIni),
                       static_cast<QWidget*>(txtAbonoLong)})
        w->setVisible(!indicador);
    ActualizaVistas();
}

QWidget* frm022DefParaTxtPersonalizado::CajaDe(const std::string& miembro) const {
    const std::pair<const char*, QWidget*> cajas[] = {
        {"Nombre", cboConfiguraciones},
        {"PIniCuenta", txtCtaPIni},         {"LongCuenta", txtCtaLong},
        {"PIniDescripcion", txtDescPIni},   {"LongDescripcion", txtDescLong},
        {"PIniCtaAcum", txtCtaCtrlPIni},    {"LongCtaAcum", txtCtaCtrlLong},
        {"PIniNivel", txtNivelPIni},        {"LongNivel", txtNivelLong},
        {"PIniNaturaleza", txtNatPIni},     {"LongNaturaleza", txtNatLong},
        {"PIniSdoIni", txtSdoIniPIni},      {"LongSdoIni", txtSdoIniLong},
        {"PIniTipo", txtTipoPIni},          {"LongTipo", txtTipoLong},
        {"PIniNumPol", txtNumPolPIni},      {"LongNumPol", txtNumPolLong},
        {"PIniDia", txtDiaPIni},            {"LongDia", txtDiaLong},
        {"PIniMes", txtMesPIni},            {"LongMes", txtMesLong},
        {"PIniAnio", txtAnioPIni},          {"LongAnio", txtAnioLong},
        {"PIniCtaPol", txtCtaPolPIni},      {"LongCtaPol", txtCtaPolLong},
        {"PIniRef", txtRefPIni},            {"LongRef", txtRefLong},
        {"PIniConcept", txtConceptPIni},    {"LongConcept", txtConceptLong},
        {"PIniTipoMov", txtTipoMovPIni},    {"LongTipoMov", txtTipoMovLong},
        {"PIniImporte", txtImportePIni},    {"LongImporte", txtImporteLong},
        {"PIniCargo", txtImportePIni},      {"LongCargo", txtImporteLong},
        {"PIniAbono", txtAbonoPIni},        {"LongAbono", txtAbonoLong},
    };
    for (const auto& [nombre, caja] : cajas)
        if (miembro == nombre) return caja;
    return nullptr;
}

// ------------------------------------------------------------- Previews

void frm022DefParaTxtPersonalizado::ActualizaVistas() {
    if (cargando_) return;
    const EstructuraDatosTxt registro = RegistroDeCajas(f_.tipo, LeeCajas());
    auto muestra = [](QTableView* vista, const std::vector<std::string>& lineas, std::vector<CampoFijo> campos) {
        VistaPrevia v = VistaPreviaTextoFijo(lineas, campos);
        size_t ancho = 0;
        for (const auto& linea : lineas) ancho = std::max(ancho, LongitudCaracteres(linea));
        v.columnas[0] = "Línea\n" + ReglaPosiciones(ancho);
        ModeloDe(vista)->primeraColumnaFija(true);
        ModeloDe(vista)->muestra(std::move(v));
    };
    muestra(tdbgCuentas, lineasCatalogo_, CamposCatalogoFijo(registro));
    muestra(tdbgPolizas, lineasPolizas_, CamposPolizasFijo(registro));
}

// ------------------------------------------------------------ Value rules

void frm022DefParaTxtPersonalizado::txtNatLong_Validate() {
    std::int16_t valor = Valor16(txtNatLong);
    if (ValidaLongitudNaturaleza(sesion_, valor) != valor) txtNatLong->setText("1");
}

void frm022DefParaTxtPersonalizado::txtNivelLong_Validate() {
    std::int16_t valor = Valor16(txtNivelLong);
    if (ValidaLongitudNivel(sesion_, valor) != valor) txtNivelLong->setText("1");
}

void frm022DefParaTxtPersonalizado::cmdCancelar_Click() {
    f_.cajas = LeeCajas();
    f_.textoLista = cboConfiguraciones->currentText().toStdString();
    CancelaParametrosFijos(sesion_, f_);
    reject();
}

}  // namespace velmorant::app
