// The layout form of the fixed-position importer: positions and lengths,
// the preview that follows the boxes, the value rules of the length boxes,
// the indicator switch, the accept and the cancel that also saves.

#include "app/Escenario.h"
#include "app/frm022DefParaTxtPersonalizado.h"
#include "importers/texto_fijo/LineaFija.h"
#include "layouts/Configuraciones.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::EntradaParametrosFijos;
using velmorant::app::frm022DefParaTxtPersonalizado;
using velmorant::prueba::LineaFija;

namespace {

// The predetermined layout's places: account 1-20, description 21-60,
// parent 61-80, level 81, nature 82, balance 83-102.
const std::string kCatalogo =
    LineaFija({{1, "1101"}, {21, "Caja y bancos"}, {81, "1"}, {82, "D"}, {83, "0.00"}}) + "\n" +
    LineaFija({{1, "110101"}, {21, "Caja chica"}, {61, "1101"}, {81, "2"}, {82, "D"}, {83, "1000.00"}}) + "\n";

// Type 1-5, number 6-15, day 16-17, month 19-20, year 22-23, account 24-43,
// reference 44-49, concept 50-79, indicator 80, amount 81-100.
const std::string kPolizas = LineaFija({{1, "D"}, {6, "1"}, {16, "15"}, {19, "01"}, {22, "23"}, {24, "110102"},
                                        {44, "Fich 1"}, {50, "Depósito de caja"}, {80, "1"}, {81, "250.00"}}) +
                             "\n";

QStringList Columnas(QTableView* vista) {
    QStringList r;
    for (int i = 0; i < vista->model()->columnCount(); ++i)
        r << vista->model()->headerData(i, Qt::Horizontal).toString();
    return r;
}

QString Celda(QTableView* vista, int fila, int columna) {
    return vista->model()->index(fila, columna).data().toString();
}

void Escribe(QLineEdit* caja, const QString& texto) {
    caja->clear();
    QTest::keyClicks(caja, texto);
}

struct EscenarioFijo : Escenario {
    EscenarioFijo() {
        sesion.IdSistemaElegido = 25;
        entrada.catalogo = Archivo("cliente/catalogo.txt", kCatalogo);
        entrada.polizas = Archivo("cliente/pol_ene.txt", kPolizas);
    }
    EntradaParametrosFijos entrada;
};

}  // namespace

class frm022DefParaTxtPersonalizadoTest : public QObject {
    Q_OBJECT
private slots:
    void init() { std::filesystem::remove(RutaBaseConfiguraciones()); }

    void muestraLaConfiguracionPredeterminadaYLosArchivosEnSusPosiciones() {
        EscenarioFijo e;
        frm022DefParaTxtPersonalizado f(e.sesion, e.entrada);
        f.show();
        QCOMPARE(f.windowTitle(), QString("Definir Parametros"));
        QCOMPARE(f.Configuracion(), std::string("CONFIGURACION PREDETERMINADA"));
        QCOMPARE(f.cboConfiguraciones->currentText(), QString("CONFIGURACION PREDETERMINADA"));
        QCOMPARE(f.tboConfigArchivos->count(), 2);
        // The predetermined places, position and length.
        for (auto [caja, valor] : {std::pair{f.txtDescPIni, "21"}, {f.txtDescLong, "40"}, {f.txtNatLong, "1"},
                                   {f.txtAnioPIni, "22"}, {f.txtImportePIni, "81"}, {f.txtImporteLong, "20"}})
            QCOMPARE(caja->text(), QString(valor));
        QVERIFY(f.chkCtaCtrl->isChecked() && f.chkNivel->isChecked() && f.chkNat->isChecked());
        QVERIFY(f.chkTipoMov->isChecked());
        QCOMPARE(f.lblImporte->text(), QString("Importe"));
        QVERIFY(!f.txtAbonoPIni->isVisible());
        // Each line under a ruler, and the text each field takes from it.
        QStringList columnas = Columnas(f.tdbgCuentas);
        QCOMPARE(columnas.mid(1), QStringList({"Cuenta", "Descripción", "Cuenta Acumulativa", "Nivel", "Naturaleza",
                                               "Saldo Inicial"}));
        // The ruler is as wide as the longest line.
        QStringList regla = columnas[0].split('\n');
        QCOMPARE(regla.size(), 3);
        QCOMPARE(regla[0], QString("Línea"));
        int ancho = 0;
        for (const QString& linea : QString::fromStdString(kCatalogo).split('\n')) ancho = std::max<int>(ancho, linea.size());
        QCOMPARE(regla[2].size(), ancho);
        QVERIFY(regla[2].startsWith("1234567890123"));
        QCOMPARE(regla[1].mid(9, 1), QString("1"));
        QCOMPARE(f.tdbgCuentas->model()->rowCount(), 2);
        QCOMPARE(Celda(f.tdbgCuentas, 1, 1), QString("110101"));
        QCOMPARE(Celda(f.tdbgCuentas, 1, 2), QString("Caja chica"));
        QCOMPARE(Celda(f.tdbgCuentas, 1, 3), QString("1101"));
        QCOMPARE(Celda(f.tdbgCuentas, 1, 4), QString("2"));
        QCOMPARE(Celda(f.tdbgCuentas, 1, 6), QString("1000.00"));
        QCOMPARE(Columnas(f.tdbgPolizas).mid(1),
                 QStringList({"Tipo", "Póliza", "Día", "Mes", "Año", "Cuenta", "Referencia", "Concepto",
                              "Tipo de Movimiento", "Importe"}));
        QCOMPARE(Celda(f.tdbgPolizas, 0, 8), QString("Depósito de caja"));
        QCOMPARE(Celda(f.tdbgPolizas, 0, 10), QString("250.00"));
        GuardaCaptura(&f, "parametros_texto_fijo");
        f.tboConfigArchivos->setCurrentIndex(1);
        GuardaCaptura(&f, "parametros_texto_fijo_polizas");
    }

    void lasCasillasYLaVistaSiguenALasCajas() {
        EscenarioFijo e;
        frm022DefParaTxtPersonalizado f(e.sesion, e.entrada);
        f.show();
        f.tboConfigArchivos->setCurrentIndex(1);
        // Without the indicator: a debit and a credit, each with its place.
        f.chkTipoMov->click();
        QCOMPARE(f.lblImporte->text(), QString("Importe Cargo"));
        QVERIFY(f.txtAbonoPIni->isVisible() && f.txtAbonoLong->isVisible());
        QCOMPARE(f.txtTipoMovPIni->text(), QString());
        QVERIFY(!f.txtTipoMovLong->isEnabled());
        QCOMPARE(Columnas(f.tdbgPolizas).mid(9), QStringList({"Importe Cargo"}));
        Escribe(f.txtAbonoPIni, "91");
        Escribe(f.txtAbonoLong, "10");
        QCOMPARE(Columnas(f.tdbgPolizas).mid(9), QStringList({"Importe Cargo", "Importe Abono"}));
        QCOMPARE(Celda(f.tdbgPolizas, 0, 9), QString("250.00"));
        f.chkTipoMov->click();
        QCOMPARE(f.lblImporte->text(), QString("Importe"));
        QVERIFY(!f.txtAbonoPIni->isVisible());
        // A place typed moves the text the preview takes.
        Escribe(f.txtConceptPIni, "54");
        Escribe(f.txtConceptLong, "5");
        QCOMPARE(Celda(f.tdbgPolizas, 0, 8), QString("sito"));
        // Clearing a check box empties its boxes and takes the field out.
        f.tboConfigArchivos->setCurrentIndex(0);
        f.chkNivel->click();
        QCOMPARE(f.txtNivelPIni->text(), QString());
        QVERIFY(!Columnas(f.tdbgCuentas).contains("Nivel"));
        // Only digits go into a box.
        Escribe(f.txtDescLong, "4a0");
        QCOMPARE(f.txtDescLong->text(), QString("40"));
    }

    void lasLongitudesDeNaturalezaYNivelTienenSusValores() {
        EscenarioFijo e;
        frm022DefParaTxtPersonalizado f(e.sesion, e.entrada);
        f.show();
        QVERIFY(QTest::qWaitForWindowActive(&f));
        struct Caso {
            QLineEdit* caja;
            QString tecleado, queda, mensaje;
        } casos[] = {
            {f.txtNatLong, "2", "1", "Valor No permitido para este parametro.\r"},
            {f.txtNatLong, "1", "1", ""},
            {f.txtNivelLong, "3", "1", "Valores permitidos para este parametro: 1 y 2 \r"},
            {f.txtNivelLong, "2", "2", ""},
            {f.txtNivelLong, "", "1", "Valores permitidos para este parametro: 1 y 2 \r"},
        };
        for (const auto& c : casos) {
            e.ui.mensajes.clear();
            // Typed over, as a user does, then left.
            c.caja->setFocus();
            c.caja->selectAll();
            QTest::keyClick(c.caja, Qt::Key_Backspace);
            QTest::keyClicks(c.caja, c.tecleado);
            f.txtCtaPIni->setFocus();
            QVERIFY2(c.caja->text() == c.queda, qPrintable(c.caja->objectName() + " " + c.tecleado));
            QCOMPARE(Textos(e.ui), c.mensaje.isEmpty() ? QStringList() : QStringList{c.mensaje});
        }
    }

    void aceptarValidaEnOrdenYGuardaPosicionesYLongitudes() {
        EscenarioFijo e;
        frm022DefParaTxtPersonalizado f(e.sesion, e.entrada);
        f.show();
        struct Paso {
            std::function<void()> prepara;
            QString mensaje;  // empty: the form closes
            int pestana;
            QWidget* foco;
        };
        const Paso pasos[] = {
            {[&] { f.txtCtaLong->clear(); }, "Es necesario indicar la Longitud para la Cuenta\r", 0, f.txtCtaLong},
            {[&] { Escribe(f.txtCtaLong, "12"); }, "No es posible modificar los parametros para la Configuración "
                                                   "predeterminada.\r",
             0, f.cboConfiguraciones},
            {[&] {
                 f.chkTipoMov->click();
                 Escribe(f.txtImportePIni, "81");
                 Escribe(f.txtImporteLong, "10");
             },
             "Es necesario indicar la Posición Inicial para el Importe Abono\r", 1, f.txtAbonoPIni},
            {[&] {
                 Escribe(f.txtAbonoPIni, "91");
                 Escribe(f.txtAbonoLong, "10");
                 f.cboConfiguraciones->lineEdit()->clear();
                 QTest::keyClicks(f.cboConfiguraciones->lineEdit(), "cliente fijo");
             },
             "", 0, nullptr},
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
        QCOMPARE(f.result(), int(QDialog::Accepted));
        QCOMPARE(f.Configuracion(), std::string("CLIENTE FIJO"));
        for (BaseDatos* db : {e.sesion.DbEmpresa.get(), e.sesion.DbConfiguraciones.get()}) {
            auto fila = LeeConfiguracion(*db, "CLIENTE FIJO");
            QVERIFY(fila);
            QCOMPARE(fila->IdEnlace, 25);
            QCOMPARE(fila->pares.LongCuenta, std::int16_t(12));
            QCOMPARE(fila->pares.PIniTipoMov, std::int16_t(0));  // the unused scheme is not kept
            QCOMPARE(fila->pares.PIniCargo, std::int16_t(81));
            QCOMPARE(fila->pares.LongAbono, std::int16_t(10));
            QCOMPARE(fila->pares.PIniCtaSdoAnt, std::int16_t(0));  // this form has no balance boxes
        }
    }

    // Cancel keeps a new valid layout in the catalogue (not in the company),
    // and saves nothing for a name the catalogue has.
    void cancelarTambienGuardaUnNombreNuevo() {
        EscenarioFijo e;
        {
            frm022DefParaTxtPersonalizado f(e.sesion, e.entrada);
            f.show();
            Escribe(f.txtDescLong, "30");
            QTest::mouseClick(f.cmdCancelar, Qt::LeftButton);
            QCOMPARE(f.result(), int(QDialog::Rejected));
            QCOMPARE(TodasLasConfiguraciones(*e.sesion.DbConfiguraciones).size(), size_t(1));
        }
        frm022DefParaTxtPersonalizado f(e.sesion, e.entrada);
        f.show();
        Escribe(f.txtDescLong, "30");
        QTest::keyClicks(f.cboConfiguraciones->lineEdit(), " 2");
        QTest::mouseClick(f.cmdCancelar, Qt::LeftButton);
        QVERIFY(!f.isVisible());
        QVERIFY(e.ui.mensajes.empty());
        QCOMPARE(f.Configuracion(), std::string("CONFIGURACION PREDETERMINADA 2"));
        auto fila = LeeConfiguracion(*e.sesion.DbConfiguraciones, "CONFIGURACION PREDETERMINADA 2");
        QVERIFY(fila);
        QCOMPARE(fila->pares.LongDescripcion, std::int16_t(30));
        QVERIFY(!LeeConfiguracion(*e.sesion.DbEmpresa, "CONFIGURACION PREDETERMINADA 2"));
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm022DefParaTxtPersonalizadoTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm022DefParaTxtPersonalizadoTest.moc"
