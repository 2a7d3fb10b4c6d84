#include "app/frm083ParametrosTextoGenerico.h"

#include <QButtonGroup>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/MarcoImportador.h"
#include "session/Funciones.h"

namespace velmorant::app {

namespace {

PestanaSaldos PestanaDe(const EntradaParametros& e) {
    if (e.anioAnterior) return PestanaSaldos::SaldosFinalesAnioAnterior;
    if (!e.saldosIniciales.empty()) return PestanaSaldos::SaldosIniciales;
    return PestanaSaldos::Ninguna;
}

}  // namespace

frm083ParametrosTextoGenerico::frm083ParametrosTextoGenerico(Sesion& sesion, const EntradaParametros& entrada,
                                                             QWidget* padre)
    : frm083ParametrosTextoGenerico(
          sesion, entrada, FormularioParametros::TextoGenerico,
          [separador = entrada.separador](Sesion& s, const std::string& ruta) {
              return VistaPreviaTexto(s, ruta, separador);
          },
          true, padre) {}

frm083ParametrosTextoGenerico::frm083ParametrosTextoGenerico(Sesion& sesion, const EntradaParametros& entrada,
                                                             FormularioParametros tipo, VistaArchivo vista,
                                                             bool sugerencias, QWidget* padre)
    : FormaParametros(sesion, tipo, entrada.configuracion, PestanaDe(entrada), padre),
      entrada_(entrada),
      vista_(std::move(vista)) {
    setObjectName("frm083ParametrosTextoGenerico");
    const PestanaSaldos pestana = f_.cajas.pestana;
    tboConfigArchivos->addTab(construyeCatalogo(), "Catálogo de Cuentas");
    tboConfigArchivos->addTab(construyePolizas(), "Pólizas");
    if (pestana == PestanaSaldos::SaldosFinalesAnioAnterior)
        tboConfigArchivos->addTab(construyeSaldos("Saldos Finales Año Anterior"), "Saldos Finales Año Anterior");
    else if (pestana == PestanaSaldos::SaldosIniciales)
        tboConfigArchivos->addTab(construyeSaldos("Saldos Iniciales"), "Saldos Iniciales");
    if (pestana == PestanaSaldos::SaldosFinalesAnioAnterior) tboConfigArchivos->setCurrentIndex(2);
    lblSugerencias = new QLabel(this);
    lblSugerencias->setObjectName("lblSugerencias");
    lblSugerencias->setWordWrap(true);
    lblSugerencias->setTextFormat(Qt::PlainText);
    lblSugerencias->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblSugerencias->setMinimumHeight(lblSugerencias->fontMetrics().lineSpacing() * 3 + 4);
    cmdSugerir = new QPushButton("&Sugerir", this);
    cmdSugerir->setObjectName("cmdSugerir");
    cmdSugerir->setAutoDefault(false);
    cmdSugerir->setToolTip("Marca la fila de títulos y la columna de la fecha como parecen en el archivo");
    auto* zonaSugerencias = new QHBoxLayout;
    zonaSugerencias->addWidget(lblSugerencias, 1);
    zonaSugerencias->addWidget(cmdSugerir, 0, Qt::AlignTop);
    Arma(zonaSugerencias);
    if (!sugerencias) {
        lblSugerencias->hide();
        cmdSugerir->hide();
        return;
    }
    DetectaArchivos();
    MuestraSugerencias();
    connect(tboConfigArchivos, &QTabWidget::currentChanged, this, [this] { MuestraSugerencias(); });
    connect(cmdSugerir, &QPushButton::clicked, this, &frm083ParametrosTextoGenerico::cmdSugerir_Click);
}

QTableView* frm083ParametrosTextoGenerico::construyeVista(QWidget* padre, const char* nombre, const std::string& ruta) {
    QTableView* vista = Vista(padre, nombre, ruta);
    if (!ruta.empty() && ExisteArchivo(ruta)) ModeloDe(vista)->muestra(vista_(sesion_, ruta));
    return vista;
}

QWidget* frm083ParametrosTextoGenerico::construyeCatalogo() {
    auto* pagina = new QWidget;
    tdbgCuentas = construyeVista(pagina, "tdbgCuentas", entrada_.catalogo);
    chkTitulosCtas = new QCheckBox("La primera línea de cada archivo contiene los títulos de las columnas", pagina);
    chkTitulosCtas->setObjectName("chkTitulosCtas");
    chkTitulosCtas->setChecked(true);

    QGridLayout* r = nullptr;
    auto* grupo = Grupo(pagina, "Número de columna", r);
    txtCtaPIni = Caja(grupo, "txtCtaPIni");
    txtDescPIni = Caja(grupo, "txtDescPIni");
    txtCtaCtrlPIni = Caja(grupo, "txtCtaCtrlPIni");
    txtNivelPIni = Caja(grupo, "txtNivelPIni");
    txtNatPIni = Caja(grupo, "txtNatPIni");
    txtSdoIniPIni = Caja(grupo, "txtSdoIniPIni");
    chkCtaCtrl = Casilla(grupo, "chkCtaCtrl", "Cuenta Acumulativa", {txtCtaCtrlPIni});
    chkNivel = Casilla(grupo, "chkNivel", "Nivel", {txtNivelPIni});
    chkNat = Casilla(grupo, "chkNat", "Naturaleza", {txtNatPIni});
    chkSaldosIni = Casilla(grupo, "chkSaldosIni", "Saldo Inicial", {txtSdoIniPIni});
    r->addWidget(new QLabel("Cuenta:", grupo), 0, 0);
    r->addWidget(txtCtaPIni, 0, 1);
    r->addWidget(new QLabel("Descripción de la cuenta:", grupo), 1, 0);
    r->addWidget(txtDescPIni, 1, 1);
    r->addWidget(chkCtaCtrl, 0, 3);
    r->addWidget(txtCtaCtrlPIni, 0, 4);
    r->addWidget(chkNivel, 1, 3);
    r->addWidget(txtNivelPIni, 1, 4);
    r->addWidget(chkNat, 2, 3);
    r->addWidget(txtNatPIni, 2, 4);
    r->addWidget(chkSaldosIni, 3, 3);
    r->addWidget(txtSdoIniPIni, 3, 4);

    auto* zona = new QVBoxLayout(pagina);
    zona->addWidget(tdbgCuentas, 1);
    zona->addWidget(chkTitulosCtas);
    zona->addWidget(grupo);
    return pagina;
}

QWidget* frm083ParametrosTextoGenerico::construyePolizas() {
    auto* pagina = new QWidget;
    tdbgPolizas = construyeVista(pagina, "tdbgPolizas", entrada_.polizas);

    QGridLayout* r = nullptr;
    auto* grupo = Grupo(pagina, "Número de columna", r);
    txtNumPolPIni = Caja(grupo, "txtNumPolPIni");
    txtConceptPIni = Caja(grupo, "txtConceptPIni");
    txtTipoPIni = Caja(grupo, "txtTipoPIni");
    txtCtaPolPIni = Caja(grupo, "txtCtaPolPIni");
    txtRefPIni = Caja(grupo, "txtRefPIni");
    txtTipoMovPIni = Caja(grupo, "txtTipoMovPIni");
    txtImportePIni = Caja(grupo, "txtImportePIni");
    txtAbonoPIni = Caja(grupo, "txtAbonoPIni");
    chkReferencia = Casilla(grupo, "chkReferencia", "Referencia de la partida", {txtRefPIni});
    chkTipoMov = Casilla(grupo, "chkTipoMov", "Tipo de Movimiento", {txtTipoMovPIni});
    lblImporte = new QLabel("Importe Cargo:", grupo);
    lblAbono = new QLabel("Importe Abono:", grupo);
    r->addWidget(new QLabel("Número de la Póliza:", grupo), 0, 0);
    r->addWidget(txtNumPolPIni, 0, 1);
    r->addWidget(new QLabel("Concepto de la Póliza:", grupo), 1, 0);
    r->addWidget(txtConceptPIni, 1, 1);
    r->addWidget(new QLabel("Tipo de Póliza:", grupo), 2, 0);
    r->addWidget(txtTipoPIni, 2, 1);
    r->addWidget(new QLabel("Cuenta de la Póliza:", grupo), 0, 3);
    r->addWidget(txtCtaPolPIni, 0, 4);
    r->addWidget(chkReferencia, 1, 3);
    r->addWidget(txtRefPIni, 1, 4);
    r->addWidget(chkTipoMov, 2, 3);
    r->addWidget(txtTipoMovPIni, 2, 4);
    r->addWidget(lblImporte, 3, 3);
    r->addWidget(txtImportePIni, 3, 4);
    r->addWidget(lblAbono, 4, 3);
    r->addWidget(txtAbonoPIni, 4, 4);

    auto* fecha = new QGroupBox("Fecha", pagina);
    optFechaIn = new QRadioButton("Día, mes y año en columnas separadas:", fecha);
    optFechaIn->setObjectName("optFechaIn");
    optFechaCompleta = new QRadioButton("Fecha completa en una columna:", fecha);
    optFechaCompleta->setObjectName("optFechaCompleta");
    auto* opciones = new QButtonGroup(fecha);
    opciones->addButton(optFechaIn);
    opciones->addButton(optFechaCompleta);
    txtDiaPIni = Caja(fecha, "txtDiaPIni");
    txtMesPIni = Caja(fecha, "txtMesPIni");
    txtAnioPIni = Caja(fecha, "txtAnioPIni");
    txtColFechaCompleta = Caja(fecha, "txtColFechaCompleta");
    auto* rf = new QGridLayout(fecha);
    rf->addWidget(optFechaIn, 0, 0);
    rf->addWidget(new QLabel("Día", fecha), 0, 1);
    rf->addWidget(txtDiaPIni, 0, 2);
    rf->addWidget(new QLabel("Mes", fecha), 0, 3);
    rf->addWidget(txtMesPIni, 0, 4);
    rf->addWidget(new QLabel("Año", fecha), 0, 5);
    rf->addWidget(txtAnioPIni, 0, 6);
    rf->addWidget(optFechaCompleta, 1, 0);
    rf->addWidget(txtColFechaCompleta, 1, 2);
    rf->setColumnStretch(7, 1);
    connect(opciones, &QButtonGroup::buttonClicked, this, [this] { ActualizaEstado(); });

    auto* zona = new QVBoxLayout(pagina);
    zona->addWidget(tdbgPolizas, 1);
    zona->addWidget(grupo);
    zona->addWidget(fecha);
    return pagina;
}

QWidget* frm083ParametrosTextoGenerico::construyeSaldos(const QString& titulo) {
    auto* pagina = new QWidget;
    const std::string& ruta = entrada_.anioAnterior ? entrada_.saldosAnioAnterior : entrada_.saldosIniciales;
    tdbgSaldos = construyeVista(pagina, "tdbgSaldos", ruta);
    chkTitulosSaldos = new QCheckBox(chkTitulosCtas->text(), pagina);
    chkTitulosSaldos->setObjectName("chkTitulosSaldos");
    chkTitulosSaldos->setChecked(chkTitulosCtas->isChecked());
    // One flag for every file: the two boxes mirror each other.
    connect(chkTitulosSaldos, &QCheckBox::toggled, chkTitulosCtas, &QCheckBox::setChecked);
    connect(chkTitulosCtas, &QCheckBox::toggled, chkTitulosSaldos, &QCheckBox::setChecked);

    QGridLayout* r = nullptr;
    auto* grupo = Grupo(pagina, titulo + " - Número de columna", r);
    txtColCuenta = Caja(grupo, "txtColCuenta");
    txtColDescripcion = Caja(grupo, "txtColDescripcion");
    txtColSaldo = Caja(grupo, "txtColSaldo");
    r->addWidget(new QLabel("Cuenta:", grupo), 0, 0);
    r->addWidget(txtColCuenta, 0, 1);
    r->addWidget(new QLabel("Descripción de la cuenta:", grupo), 1, 0);
    r->addWidget(txtColDescripcion, 1, 1);
    r->addWidget(new QLabel("Saldo:", grupo), 2, 0);
    r->addWidget(txtColSaldo, 2, 1);

    auto* zona = new QVBoxLayout(pagina);
    zona->addWidget(tdbgSaldos, 1);
    zona->addWidget(chkTitulosSaldos);
    zona->addWidget(grupo);
    return pagina;
}

// ------------------------------------------------------ Boxes and record

CajasParametros frm083ParametrosTextoGenerico::LeeCajas() const {
    CajasParametros c;
    c.pestana = f_.cajas.pestana;
    EstructuraDatosTxt& v = c.valores;
    c.chkCtaCtrl = chkCtaCtrl->isChecked();
    c.chkNivel = chkNivel->isChecked();
    c.chkNat = chkNat->isChecked();
    c.chkSaldosIni = chkSaldosIni->isChecked() && c.pestana != PestanaSaldos::SaldosIniciales;
    c.chkReferencia = chkReferencia->isChecked();
    c.chkTipoMov = chkTipoMov->isChecked();
    c.optFechaCompleta = optFechaCompleta->isChecked();
    v.PIniCuenta = Valor16(txtCtaPIni);
    v.PIniDescripcion = Valor16(txtDescPIni);
    v.PIniCtaAcum = Valor16(txtCtaCtrlPIni);
    v.PIniNivel = Valor16(txtNivelPIni);
    v.PIniNaturaleza = Valor16(txtNatPIni);
    v.PIniSdoIni = c.pestana == PestanaSaldos::SaldosIniciales ? Valor16(txtColSaldo) : Valor16(txtSdoIniPIni);
    v.PIniNumPol = Valor16(txtNumPolPIni);
    v.PIniConcept = Valor16(txtConceptPIni);
    v.PIniTipo = Valor16(txtTipoPIni);
    if (c.optFechaCompleta) {
        v.PIniDia = Valor16(txtColFechaCompleta);
    } else {
        v.PIniDia = Valor16(txtDiaPIni);
        v.PIniMes = Valor16(txtMesPIni);
        v.PIniAnio = Valor16(txtAnioPIni);
    }
    v.PIniCtaPol = Valor16(txtCtaPolPIni);
    v.PIniRef = Valor16(txtRefPIni);
    if (c.chkTipoMov) {
        v.PIniTipoMov = Valor16(txtTipoMovPIni);
        v.PIniImporte = Valor16(txtImportePIni);
    } else {
        v.PIniCargo = Valor16(txtImportePIni);
        v.PIniAbono = Valor16(txtAbonoPIni);
    }
    if (c.pestana != PestanaSaldos::Ninguna) {
        v.PIniCtaSdoAnt = Valor16(txtColCuenta);
        v.PIniDescSdoAnt = Valor16(txtColDescripcion);
        if (c.pestana == PestanaSaldos::SaldosFinalesAnioAnterior) v.PIniSdoFinAnt = Valor16(txtColSaldo);
    }
    return c;
}

void frm083ParametrosTextoGenerico::MuestraCajas(const CajasParametros& c) {
    const EstructuraDatosTxt& v = c.valores;
    chkCtaCtrl->setChecked(c.chkCtaCtrl);
    chkNivel->setChecked(c.chkNivel);
    chkNat->setChecked(c.chkNat);
    chkSaldosIni->setChecked(c.chkSaldosIni);
    chkReferencia->setChecked(c.chkReferencia);
    chkTipoMov->setChecked(c.chkTipoMov);
    (c.optFechaCompleta ? optFechaCompleta : optFechaIn)->setChecked(true);
    Muestra(txtCtaPIni, v.PIniCuenta);
    Muestra(txtDescPIni, v.PIniDescripcion);
    Muestra(txtCtaCtrlPIni, c.chkCtaCtrl ? v.PIniCtaAcum : 0);
    Muestra(txtNivelPIni, c.chkNivel ? v.PIniNivel : 0);
    Muestra(txtNatPIni, c.chkNat ? v.PIniNaturaleza : 0);
    Muestra(txtSdoIniPIni, c.chkSaldosIni ? v.PIniSdoIni : 0);
    Muestra(txtNumPolPIni, v.PIniNumPol);
    Muestra(txtConceptPIni, v.PIniConcept);
    Muestra(txtTipoPIni, v.PIniTipo);
    Muestra(txtColFechaCompleta, c.optFechaCompleta ? v.PIniDia : 0);
    Muestra(txtDiaPIni, c.optFechaCompleta ? 0 : v.PIniDia);
    Muestra(txtMesPIni, c.optFechaCompleta ? 0 : v.PIniMes);
    Muestra(txtAnioPIni, c.optFechaCompleta ? 0 : v.PIniAnio);
    Muestra(txtCtaPolPIni, v.PIniCtaPol);
    Muestra(txtRefPIni, c.chkReferencia ? v.PIniRef : 0);
    Muestra(txtTipoMovPIni, c.chkTipoMov ? v.PIniTipoMov : 0);
    Muestra(txtImportePIni, c.chkTipoMov ? v.PIniImporte : v.PIniCargo);
    Muestra(txtAbonoPIni, c.chkTipoMov ? 0 : v.PIniAbono);
    if (c.pestana != PestanaSaldos::Ninguna) {
        Muestra(txtColCuenta, v.PIniCtaSdoAnt);
        Muestra(txtColDescripcion, v.PIniDescSdoAnt);
        Muestra(txtColSaldo, c.pestana == PestanaSaldos::SaldosIniciales ? v.PIniSdoIni : v.PIniSdoFinAnt);
    }
    ActualizaEstado();
}

void frm083ParametrosTextoGenerico::ActualizaEstado() {
    const bool conArchivoSaldos = f_.cajas.pestana == PestanaSaldos::SaldosIniciales;
    txtCtaCtrlPIni->setEnabled(chkCtaCtrl->isChecked());
    txtNivelPIni->setEnabled(chkNivel->isChecked());
    txtNatPIni->setEnabled(chkNat->isChecked());
    // The balance comes from the file of opening balances when there is one.
    chkSaldosIni->setEnabled(!conArchivoSaldos);
    txtSdoIniPIni->setEnabled(!conArchivoSaldos && chkSaldosIni->isChecked());
    txtRefPIni->setEnabled(chkReferencia->isChecked());
    txtTipoMovPIni->setEnabled(chkTipoMov->isChecked());
    lblImporte->setText(chkTipoMov->isChecked() ? "Importe:" : "Importe Cargo:");
    lblAbono->setVisible(!chkTipoMov->isChecked());
    txtAbonoPIni->setVisible(!chkTipoMov->isChecked());
    const bool completa = optFechaCompleta->isChecked();
    txtColFechaCompleta->setEnabled(completa);
    for (QLineEdit* caja : {txtDiaPIni, txtMesPIni, txtAnioPIni}) caja->setEnabled(!completa);
}

QWidget* frm083ParametrosTextoGenerico::CajaDe(const std::string& miembro) const {
    const bool completa = optFechaCompleta->isChecked();
    const bool conArchivoSaldos = f_.cajas.pestana == PestanaSaldos::SaldosIniciales;
    const std::pair<const char*, QWidget*> cajas[] = {
        {"Nombre", cboConfiguraciones},
        {"PIniCuenta", txtCtaPIni},
        {"PIniDescripcion", txtDescPIni},
        {"PIniCtaAcum", txtCtaCtrlPIni},
        {"PIniNivel", txtNivelPIni},
        {"PIniNaturaleza", txtNatPIni},
        {"PIniSdoIni", conArchivoSaldos ? txtColSaldo : txtSdoIniPIni},
        {"PIniTipo", txtTipoPIni},
        {"PIniNumPol", txtNumPolPIni},
        {"PIniDia", completa ? txtColFechaCompleta : txtDiaPIni},
        {"PIniMes", txtMesPIni},
        {"PIniAnio", txtAnioPIni},
        {"PIniCtaPol", txtCtaPolPIni},
        {"PIniRef", txtRefPIni},
        {"PIniConcept", txtConceptPIni},
        {"PIniTipoMov", txtTipoMovPIni},
        {"PIniImporte", txtImportePIni},
        {"PIniCargo", txtImportePIni},
        {"PIniAbono", txtAbonoPIni},
        {"PIniCtaSdoAnt", txtColCuenta},
        {"PIniDescSdoAnt", txtColDescripcion},
        {"PIniSdoFinAnt", txtColSaldo},
    };
    for (const auto& [nombre, caja] : cajas)
        if (miembro == nombre) return caja;
    return nullptr;
}

// ------------------------------------------------------------ Suggestions

void frm083ParametrosTextoGenerico::DetectaArchivos() {
    const std::string& saldos = entrada_.anioAnterior ? entrada_.saldosAnioAnterior : entrada_.saldosIniciales;
    const std::string rutas[] = {entrada_.catalogo, entrada_.polizas, saldos};
    for (int i = 0; i < tboConfigArchivos->count() && i < 3; ++i) {
        std::optional<DeteccionTexto> d;
        if (!rutas[i].empty() && ExisteArchivo(rutas[i])) {
            try {
                d = DetectaFormatoTexto(rutas[i], 200);
            } catch (const std::exception&) {
                // An unreadable file has no suggestions; its preview says the rest.
            }
        }
        detecciones_.push_back(std::move(d));
    }
}

void frm083ParametrosTextoGenerico::MuestraSugerencias() {
    const int pestana = tboConfigArchivos->currentIndex();
    const std::optional<DeteccionTexto>* d =
        pestana >= 0 && pestana < static_cast<int>(detecciones_.size()) ? &detecciones_[static_cast<size_t>(pestana)]
                                                                        : nullptr;
    if (!d || !d->has_value()) {
        lblSugerencias->setText("Sin sugerencias: no hay archivo que examinar en esta pestaña.");
        cmdSugerir->setEnabled(false);
        return;
    }
    const DeteccionTexto& x = **d;
    auto certeza = [](const Hallazgo& h) { return std::string(" (") + TextoCerteza(h.certeza) + ")"; };
    std::string t = "Sugerencias para " + NombreDeArchivo(x.ruta) + ": ";
    if (x.separador.empty())
        t += "no se encontró separador";
    else
        t += "separador " + NombreSeparador(x.separador) + certeza(x.sobreSeparador);
    t += std::string("; fila de títulos: ") + (x.titulos ? "sí" : "no") + certeza(x.sobreTitulos);
    if (x.fechas != OrdenFecha::SinFechas)
        t += "; fechas " + TextoOrdenFecha(x.fechas) +
             (x.columnaFecha ? " en la columna " + std::to_string(x.columnaFecha) : "") + certeza(x.sobreFechas);
    t += ".";
    if (!x.separador.empty() && x.sobreSeparador.certeza >= Certeza::Media && x.separador != entrada_.separador)
        t += "\nEl archivo parece separado por " + NombreSeparador(x.separador) + ", no por " +
             NombreSeparador(entrada_.separador) + ".";
    if (x.fechas == OrdenFecha::MesPrimero)
        t += "\nLas fechas parecen tener el mes primero; el importador las lee con el día primero.";
    else if (x.fechas == OrdenFecha::Ambiguo)
        t += "\nNingún día pasa de 12: revise si las fechas van con el día o con el mes primero.";
    lblSugerencias->setText(QString::fromStdString(t));
    cmdSugerir->setEnabled(x.sobreTitulos.certeza >= Certeza::Media ||
                           (pestana == 1 && x.columnaFecha > 0 && x.fechas != OrdenFecha::Contradictorio));
}

void frm083ParametrosTextoGenerico::cmdSugerir_Click() {
    const int pestana = tboConfigArchivos->currentIndex();
    if (pestana < 0 || pestana >= static_cast<int>(detecciones_.size()) ||
        !detecciones_[static_cast<size_t>(pestana)])
        return;
    const DeteccionTexto& x = *detecciones_[static_cast<size_t>(pestana)];
    if (x.sobreTitulos.certeza >= Certeza::Media) chkTitulosCtas->setChecked(x.titulos);
    if (pestana == 1 && x.columnaFecha > 0 && x.fechas != OrdenFecha::Contradictorio) {
        optFechaCompleta->setChecked(true);
        txtColFechaCompleta->setText(QString::number(x.columnaFecha));
    }
    ActualizaEstado();
}

}  // namespace velmorant::app
