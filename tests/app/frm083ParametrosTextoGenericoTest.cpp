// The layout form of the delimited-text importer, and a whole run from the
// importer form through it to the company database.

#include "app/Escenario.h"
#include "app/RegistroFormularios.h"
#include "app/frm082TextoGenericoSeparado.h"
#include "app/frm083ParametrosTextoGenerico.h"
#include "layouts/Configuraciones.h"
#include "platform/ErrorLectura.h"
#include "store/AlmacenesTemporales.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::EntradaParametros;
using velmorant::app::frm083ParametrosTextoGenerico;

namespace {

const char* kCatalogo =
    "Cuenta^Nivel^Descripcion^Saldo\n"
    "1101^1^Caja y bancos^0\n"
    "110101^2^Caja chica^1000.00\n"
    "110102^2^Bancos^0\n";

const char* kPolizasEnero =
    "Poliza^Cuenta^Fecha^x^Tipo^Concepto^Mov^Importe^Referencia\n"
    "1^110102^15/01/2023^x^D^Depósito de caja^1^250.00^Ficha 1\n"
    "1^110101^15/01/2023^x^D^Depósito de caja^2^250.00^Ficha 1\n";

QStringList Columnas(QTableView* vista) {
    QStringList r;
    for (int i = 0; i < vista->model()->columnCount(); ++i)
        r << vista->model()->headerData(i, Qt::Horizontal).toString();
    return r;
}

struct EscenarioTexto : Escenario {
    EscenarioTexto() {
        sesion.IdSistemaElegido = 82;
        catalogo = Archivo("cliente/catalogo.txt", kCatalogo);
        enero = Archivo("cliente/pol_ene.txt", kPolizasEnero);
    }
    EntradaParametros Entrada() const {
        EntradaParametros e;
        e.catalogo = catalogo;
        e.polizas = enero;
        e.separador = "^";
        return e;
    }
    std::string catalogo, enero, febrero;
};

void Escribe(QLineEdit* caja, const QString& texto) {
    caja->clear();
    QTest::keyClicks(caja, texto);
}

}  // namespace

class frm083ParametrosTextoGenericoTest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        // Each test starts with a fresh layout catalogue.
        std::filesystem::remove(RutaBaseConfiguraciones());
    }

    void muestraLaConfiguracionPredeterminadaYLosArchivos() {
        EscenarioTexto e;
        frm083ParametrosTextoGenerico f(e.sesion, e.Entrada());
        f.show();
        QCOMPARE(f.windowTitle(), QString("Definir Parametros"));
        QCOMPARE(f.Configuracion(), std::string("CONFIGURACION PREDETERMINADA TEXTO GENERICO"));
        QCOMPARE(f.cboConfiguraciones->currentText(), QString("CONFIGURACION PREDETERMINADA TEXTO GENERICO"));
        QCOMPARE(f.tboConfigArchivos->count(), 2);
        QVERIFY(f.Titulos());
        // The predetermined columns of the delimited layout.
        QCOMPARE(f.txtCtaPIni->text(), QString("1"));
        QCOMPARE(f.txtDescPIni->text(), QString("3"));
        QVERIFY(f.chkNivel->isChecked());
        QCOMPARE(f.txtNivelPIni->text(), QString("2"));
        QVERIFY(!f.chkCtaCtrl->isChecked());
        QVERIFY(!f.txtCtaCtrlPIni->isEnabled());
        QVERIFY(f.chkSaldosIni->isChecked());
        QCOMPARE(f.txtSdoIniPIni->text(), QString("4"));
        QVERIFY(f.optFechaCompleta->isChecked());
        QCOMPARE(f.txtColFechaCompleta->text(), QString("3"));
        QVERIFY(!f.txtDiaPIni->isEnabled());
        QVERIFY(f.chkTipoMov->isChecked());
        QCOMPARE(f.lblImporte->text(), QString("Importe:"));
        QVERIFY(!f.txtAbonoPIni->isVisible());
        QCOMPARE(f.txtImportePIni->text(), QString("8"));
        QCOMPARE(f.txtTipoPIni->text(), QString());
        // Each file split at the delimiter, "Columna N" above each column.
        QCOMPARE(Columnas(f.tdbgCuentas), QStringList({"Columna 1", "Columna 2", "Columna 3", "Columna 4"}));
        QCOMPARE(f.tdbgCuentas->model()->rowCount(), 4);
        QCOMPARE(f.tdbgCuentas->model()->index(2, 2).data().toString(), QString("Caja chica"));
        QCOMPARE(f.tdbgPolizas->model()->columnCount(), 9);
        QCOMPARE(f.tdbgPolizas->model()->index(1, 5).data().toString(), QString("Depósito de caja"));
        GuardaCaptura(&f, "parametros_catalogo");
        f.tboConfigArchivos->setCurrentIndex(1);
        GuardaCaptura(&f, "parametros_polizas");
    }

    void laTerceraPestanaSigueALosArchivos() {
        struct Caso {
            bool anioAnterior, saldosIniciales;
            QString pestana;
        };
        for (const auto& c : {Caso{true, false, "Saldos Finales Año Anterior"}, Caso{false, true, "Saldos Iniciales"}}) {
            EscenarioTexto e;
            EntradaParametros entrada = e.Entrada();
            std::string saldos = e.Archivo("cliente/saldos.txt", "Cuenta^Descripcion^Saldo\n110101^Caja chica^10\n");
            entrada.anioAnterior = c.anioAnterior;
            (c.anioAnterior ? entrada.saldosAnioAnterior : entrada.saldosIniciales) = saldos;
            frm083ParametrosTextoGenerico f(e.sesion, entrada);
            f.show();
            QCOMPARE(f.tboConfigArchivos->count(), 3);
            QCOMPARE(f.tboConfigArchivos->tabText(2), c.pestana);
            QCOMPARE(f.tboConfigArchivos->currentIndex(), c.anioAnterior ? 2 : 0);
            QCOMPARE(f.tdbgSaldos->model()->columnCount(), 3);
            // With a file of opening balances the catalogue's balance is off.
            QCOMPARE(f.chkSaldosIni->isEnabled(), !c.saldosIniciales);
            QCOMPARE(f.txtSdoIniPIni->isEnabled(), !c.saldosIniciales);
            // One title flag for all files.
            f.chkTitulosSaldos->click();
            QVERIFY(!f.Titulos());
            QCOMPARE(f.txtColSaldo->text(), QString(c.anioAnterior ? "7" : "4"));  // PIniSdoFinAnt or PIniSdoIni
            if (c.anioAnterior) {
                f.tboConfigArchivos->setCurrentIndex(2);
                GuardaCaptura(&f, "parametros_saldos");
            }
        }
    }

    void lasCasillasHabilitanSusCajas() {
        EscenarioTexto e;
        frm083ParametrosTextoGenerico f(e.sesion, e.Entrada());
        f.show();
        f.chkNivel->click();
        QVERIFY(!f.chkNivel->isChecked());
        QCOMPARE(f.txtNivelPIni->text(), QString());
        QVERIFY(!f.txtNivelPIni->isEnabled());
        f.tboConfigArchivos->setCurrentIndex(1);
        f.chkTipoMov->click();
        QCOMPARE(f.lblImporte->text(), QString("Importe Cargo:"));
        QVERIFY(f.txtAbonoPIni->isVisible());
        QCOMPARE(f.txtTipoMovPIni->text(), QString());
        f.chkCtaCtrl->click();
        QVERIFY(f.txtCtaCtrlPIni->isEnabled());
        f.optFechaIn->click();
        QVERIFY(f.txtDiaPIni->isEnabled());
        QVERIFY(!f.txtColFechaCompleta->isEnabled());
        // Only digits go into a box.
        Escribe(f.txtDiaPIni, "a1b2");
        QCOMPARE(f.txtDiaPIni->text(), QString("12"));
    }

    void aceptarValidaEnOrdenYGuardaConNombreNuevo() {
        EscenarioTexto e;
        frm083ParametrosTextoGenerico f(e.sesion, e.Entrada());
        f.show();
        struct Paso {
            std::function<void()> prepara;
            QString mensaje;  // empty: the form closes
            int pestana;
            QWidget* foco;
        };
        const Paso pasos[] = {
            {[&] { f.txtCtaPIni->clear(); },
             "Es necesario indicar el número de la Columna para la Cuenta\r", 0, f.txtCtaPIni},
            {[&] { Escribe(f.txtCtaPIni, "1"); },
             "Es necesario indicar el número de la Columna para el Tipo de Póliza\r", 1, f.txtTipoPIni},
            {[&] { Escribe(f.txtTipoPIni, "5"); },
             "No es posible modificar los parametros para la Configuración predeterminada.\r", 1, f.cboConfiguraciones},
            {[&] {
                 f.chkTipoMov->click();
                 Escribe(f.txtImportePIni, "8");
             },
             "Es necesario indicar la Posición Inicial para el Importe Abono\r", 1, f.txtAbonoPIni},
            {[&] {
                 f.chkTipoMov->click();
                 Escribe(f.txtTipoMovPIni, "7");
                 Escribe(f.txtImportePIni, "8");
                 QTest::keyClicks(f.cboConfiguraciones->lineEdit(), "x");
                 f.cboConfiguraciones->lineEdit()->clear();
                 QTest::keyClicks(f.cboConfiguraciones->lineEdit(), "mi formato");
             },
             "", 1, nullptr},
        };
        for (const auto& p : pasos) {
            p.prepara();
            e.ui.mensajes.clear();
            QTest::mouseClick(f.cmdAceptar, Qt::LeftButton);
            if (p.mensaje.isEmpty()) {
                QVERIFY2(e.ui.mensajes.empty(), qPrintable(Textos(e.ui).join(" | ")));
                break;
            }
            QCOMPARE(Textos(e.ui), QStringList{p.mensaje});
            QCOMPARE(f.tboConfigArchivos->currentIndex(), p.pestana);
            QCOMPARE(f.focusWidget(), p.foco);
            QVERIFY(f.isVisible());
        }
        QVERIFY(!f.isVisible());
        QCOMPARE(f.result(), int(QDialog::Accepted));
        QCOMPARE(f.Configuracion(), std::string("MI FORMATO"));
        QCOMPARE(f.cboConfiguraciones->currentText(), QString("MI FORMATO"));
        auto guardada = LeeConfiguracion(*e.sesion.DbEmpresa, "MI FORMATO");
        QVERIFY(guardada);
        QCOMPARE(guardada->pares.PIniTipo, std::int16_t(5));
        QCOMPARE(guardada->IdEnlace, 82);
        QVERIFY(LeeConfiguracion(*e.sesion.DbConfiguraciones, "MI FORMATO"));
    }

    void unArchivoSinElSeparadorTerminaElPrograma() {
        EscenarioTexto e;
        EntradaParametros entrada = e.Entrada();
        entrada.separador = "|";
        bool termino = false;
        try {
            frm083ParametrosTextoGenerico f(e.sesion, entrada);
        } catch (const ErrorLectura&) {
            termino = true;
        }
        QVERIFY(termino);
        QCOMPARE(Textos(e.ui), QStringList{QString::fromStdString("El archivo " + e.catalogo +
                                                                  " no se encuentra delimitado por el caracter que "
                                                                  "indico.\r")});
    }

    void cancelarLosParametrosTerminaElPrograma() {
        EscenarioTexto e;
        app::frm082TextoGenericoSeparado f(e.sesion);
        f.optOtro->setChecked(true);
        e.ui.archivos = {e.catalogo, e.enero};
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QTest::mouseClick(f.cmdAbrirMes[0], Qt::LeftButton);
        f.show();
        AlAbrirseModal([](QDialog* d) { QTest::mouseClick(d->findChild<QPushButton*>("cmdCancelar"), Qt::LeftButton); },
                       "frm083ParametrosTextoGenerico");
        QTest::mouseClick(f.cmdImportar, Qt::LeftButton);
        QVERIFY(!f.isVisible());
        QCOMPARE(f.result(), app::kProgramaTerminado);
        QVERIFY(e.ui.mensajes.empty());
    }

    void unaImportacionCompletaDesdeElFormulario() {
        EscenarioTexto e;
        app::frm082TextoGenericoSeparado f(e.sesion);
        f.show();
        QVERIFY(QTest::qWaitForWindowExposed(&f));
        QCoreApplication::processEvents();  // the form's load
        QCOMPARE(f.Configuracion(), std::string("CONFIGURACION PREDETERMINADA TEXTO GENERICO"));
        f.optOtro->setChecked(true);
        e.ui.archivos = {e.catalogo, e.enero};
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QTest::mouseClick(f.cmdAbrirMes[0], Qt::LeftButton);
        e.ui.decisiones = {DecisionInconsistencias::Continuar, DecisionInconsistencias::Continuar};
        AlAbrirseModal(
            [](QDialog* d) {
                auto* p = static_cast<frm083ParametrosTextoGenerico*>(d);
                p->tboConfigArchivos->setCurrentIndex(1);
                Escribe(p->txtTipoPIni, "5");
                p->cboConfiguraciones->lineEdit()->clear();
                QTest::keyClicks(p->cboConfiguraciones->lineEdit(), "FORMATO ACME");
                QTest::mouseClick(p->cmdAceptar, Qt::LeftButton);
            },
            "frm083ParametrosTextoGenerico");
        QTest::mouseClick(f.cmdImportar, Qt::LeftButton);
        QStringList mensajes = Textos(e.ui);
        QVERIFY2(!mensajes.isEmpty() && mensajes.last().contains("finalizó con éxito"),
                 qPrintable(mensajes.join(" | ")));
        QVERIFY(!f.isVisible());
        QCOMPARE(f.result(), int(QDialog::Accepted));
        QVERIFY(!f.fraSeparador->isEnabled());
        QCOMPARE(f.lectura().separador, std::string("^"));
        BaseDatos& db = *e.sesion.DbEmpresa;
        QCOMPARE(db.escalar("SELECT COUNT(*) FROM Cuentas").entero(), 3);
        QCOMPARE(db.escalar("SELECT COUNT(*) FROM Polizas").entero(), 1);
        QCOMPARE(db.escalar("SELECT COUNT(*) FROM Polizas_Detalle").entero(), 2);
        QCOMPARE(e.sesion.DbEmpresas->escalar("SELECT IdSistema FROM Empresas WHERE IdEmpresa=?",
                                              e.sesion.IdEmpresaActual).entero(), 82);
    }

    // A second delivery that replaces January's voucher, cancelled at the
    // inconsistency form: the company's books stay exactly as they were (the
    // layout form's own save of the layout copy is the only write).
    void unaReimportacionCanceladaDejaLaEmpresaIntacta() {
        EscenarioTexto e;
        importaDesdeElFormulario(e, {DecisionInconsistencias::Continuar});
        auto libros = [&e] {
            std::string r;
            for (const char* tabla : {"Cuentas", "Balanzas", "Polizas", "Polizas_Detalle", "CatTipoPoliza"}) {
                Consulta c = e.sesion.DbEmpresa->consulta(std::string("SELECT * FROM ") + tabla + " ORDER BY rowid");
                for (c.primero(); !c.eof(); c.siguiente())
                    for (int i = 0; i < c.numCampos(); ++i) r += c.campo(i).texto() + "|";
            }
            return r + e.sesion.DbEmpresas->escalar("SELECT IdSistema FROM Empresas").texto();
        };
        e.enero = e.Archivo("cliente/pol_ene2.txt",
                            "Poliza^Cuenta^Fecha^x^Tipo^Concepto^Mov^Importe^Referencia\n"
                            "2^110102^16/01/2023^x^D^Otro depósito^1^10.00^Ficha 2\n"
                            "2^110101^16/01/2023^x^D^Otro depósito^2^10.00^Ficha 2\n");
        const std::string antes = libros();
        QVERIFY(antes.find("Depósito de caja") != std::string::npos);
        int resultado = importaDesdeElFormulario(e, {DecisionInconsistencias::Cancelar});
        QCOMPARE(resultado, int(app::kProgramaTerminado));
        QVERIFY(Textos(e.ui).contains("La importación ha sido cancelada."));
        QVERIFY(HayInconsistencias(e.sesion.RutaEmpresa));
        QVERIFY(libros() == antes);
    }

    // A re-import whose vouchers stop before the last imported month is
    // refused, and the form stays open for the user.
    void unPeriodoInvalidoDejaElFormularioAbierto() {
        EscenarioTexto e;
        e.febrero = e.Archivo("cliente/pol_feb.txt",
                              "Poliza^Cuenta^Fecha^x^Tipo^Concepto^Mov^Importe^Referencia\n"
                              "1^110102^15/02/2023^x^D^Depósito^1^5.00^F\n"
                              "1^110101^15/02/2023^x^D^Depósito^2^5.00^F\n");
        importaDesdeElFormulario(e, {DecisionInconsistencias::Continuar});
        // The same months again, but February's file now holds January.
        e.febrero = e.Archivo("cliente/pol_feb.txt", kPolizasEnero);
        app::frm082TextoGenericoSeparado* forma = nullptr;
        int resultado = importaDesdeElFormulario(e, {DecisionInconsistencias::Continuar}, &forma);
        QCOMPARE(resultado, -1);  // still open
        QStringList mensajes = Textos(e.ui);
        QVERIFY2(mensajes.join(" ").contains("realizó al mes de FEBRERO"), qPrintable(mensajes.join(" | ")));
        QCOMPARE(e.sesion.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas").entero(), 2);
        delete forma;
    }

    // What the files look like is offered below the tabs; only "Sugerir"
    // puts it in the boxes: the title row and the column of the dates.
    void sugiereLoQueVeEnLosArchivosSinAplicarloSolo() {
        EscenarioTexto e;
        e.catalogo = e.Archivo("cliente/sin_titulos.txt", "1101^1^Caja y bancos^0\n110101^2^Caja chica^1000.00\n"
                                                          "110102^2^Bancos^0\n110103^2^Inversiones^5.00\n");
        frm083ParametrosTextoGenerico f(e.sesion, e.Entrada());
        f.show();
        QVERIFY(f.Titulos());  // the layout's own value stays until asked
        QVERIFY2(f.lblSugerencias->text().contains("separador \"^\" (segura)"), qPrintable(f.lblSugerencias->text()));
        QVERIFY(f.lblSugerencias->text().contains("fila de títulos: no (segura)"));
        QTest::mouseClick(f.cmdSugerir, Qt::LeftButton);
        QVERIFY(!f.Titulos());

        f.tboConfigArchivos->setCurrentIndex(1);
        QVERIFY(f.lblSugerencias->text().contains("fila de títulos: sí"));
        QVERIFY2(f.lblSugerencias->text().contains("fechas día primero (dd/mm/aaaa) en la columna 3"),
                 qPrintable(f.lblSugerencias->text()));
        f.optFechaIn->setChecked(true);
        f.txtColFechaCompleta->clear();
        QTest::mouseClick(f.cmdSugerir, Qt::LeftButton);
        QVERIFY(f.optFechaCompleta->isChecked());
        QCOMPARE(f.txtColFechaCompleta->text(), QString("3"));
        QVERIFY(f.Titulos());
    }
private:
    // Runs one import from a new importer form with the scenario's files,
    // answering the layout form as a user would. Returns the form's result,
    // or -1 when it is still open (then `abierta` receives it, if asked).
    int importaDesdeElFormulario(EscenarioTexto& e, std::deque<DecisionInconsistencias> decisiones,
                                 app::frm082TextoGenericoSeparado** abierta = nullptr) {
        auto* f = new app::frm082TextoGenericoSeparado(e.sesion);
        f->show();
        QCoreApplication::processEvents();
        f->optOtro->setChecked(true);
        e.ui.archivos = {e.catalogo, e.enero};
        QTest::mouseClick(f->boton("cmdCatalogo"), Qt::LeftButton);
        QTest::mouseClick(f->cmdAbrirMes[0], Qt::LeftButton);
        if (!e.febrero.empty()) {
            e.ui.archivos = {e.febrero};
            QTest::mouseClick(f->cmdAbrirMes[1], Qt::LeftButton);
        }
        e.ui.decisiones = decisiones;
        e.ui.respuestas = {true, true, true};
        AlAbrirseModal(
            [](QDialog* d) {
                auto* p = static_cast<frm083ParametrosTextoGenerico*>(d);
                p->tboConfigArchivos->setCurrentIndex(1);
                Escribe(p->txtTipoPIni, "5");
                p->cboConfiguraciones->lineEdit()->clear();
                QTest::keyClicks(p->cboConfiguraciones->lineEdit(), "FORMATO ACME");
                QTest::mouseClick(p->cmdAceptar, Qt::LeftButton);
            },
            "frm083ParametrosTextoGenerico");
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        if (f->isVisible()) {
            if (abierta) *abierta = f;
            else delete f;
            return -1;
        }
        int r = f->result();
        delete f;
        return r;
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm083ParametrosTextoGenericoTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm083ParametrosTextoGenericoTest.moc"
