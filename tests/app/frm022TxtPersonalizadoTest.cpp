// The fixed-position importer on the importer frame: its controls, the
// layout list and the button to the layout form, a file refused for a
// second month, the prior-year tab without a reader, and whole runs from
// the form with its own voucher counter.

#include "app/Escenario.h"
#include "app/RegistroFormularios.h"
#include "app/frm022DefParaTxtPersonalizado.h"
#include "app/frm022TxtPersonalizado.h"
#include "importers/texto_fijo/LineaFija.h"
#include "layouts/Configuraciones.h"
#include "store/AlmacenesTemporales.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm022DefParaTxtPersonalizado;
using velmorant::app::frm022TxtPersonalizado;

namespace {

// The predetermined layout's places (chart: account 1-20, description
// 21-60, level 81, nature 82, balance 83-102; vouchers: type 1-5, number
// 6-15, day 16-17, month 19-20, year 22-23, account 24-43, reference 44-49,
// concept 50-79, indicator 80, amount 81-100), but for the voucher lines of
// FORMATO ACME, whose year has four digits and pushes the account to 26-43.
std::string Cuenta(const std::string& cuenta, const std::string& nivel, const std::string& descripcion,
                   const std::string& saldo) {
    return LineaFija({{1, cuenta}, {21, descripcion}, {81, nivel}, {82, "D"}, {83, saldo}}) + "\r\n";
}

std::string Partida(const std::string& numero, const std::string& dia, const std::string& mes,
                    const std::string& cuenta, const std::string& indicador, const std::string& importe) {
    return LineaFija({{1, "D"}, {6, numero}, {16, dia}, {19, mes}, {22, "2023"}, {26, cuenta}, {44, "Fich " + numero},
                      {50, "Depósito de caja"}, {80, indicador}, {81, importe}}) +
           "\r\n";
}

// Saves FORMATO ACME in the layout catalogue.
void GuardaFormatoAcme(Sesion& s) {
    s.IdSistemaElegido = 25;
    PreparaCatalogoConfiguraciones(s);
    CajasParametros c = InicializaParametros(FormularioParametros::TxtPersonalizado,
                                             LeeConfiguracion(*s.DbConfiguraciones, kConfigPredeterminada)->pares);
    c.valores.LongAnio = 4, c.valores.PIniCtaPol = 26, c.valores.LongCtaPol = 18;
    GuardaNvaConfiguracion(FormularioParametros::TxtPersonalizado, *s.DbConfiguraciones, c, "FORMATO ACME");
}

const std::string kCatalogo = Cuenta("1101", "1", "Caja y bancos", "0") + Cuenta("110101", "2", "Caja chica", "1000") +
                              Cuenta("110102", "2", "Bancos", "0");

std::string Ruta(QLineEdit* caja) { return caja->text().toStdString(); }

struct EscenarioFijo : Escenario {
    EscenarioFijo() {
        catalogo = Archivo("cliente/catalogo.txt", kCatalogo);
        enero = Archivo("cliente/pol_ene.txt",
                        Partida("1", "15", "01", "110102", "1", "250.00") + Partida("1", "15", "01", "110101", "2", "250.00"));
    }
    // A form shown and loaded, FORMATO ACME chosen in its list, with the
    // catalogue and January chosen.
    std::unique_ptr<frm022TxtPersonalizado> Forma() {
        GuardaFormatoAcme(sesion);
        auto f = std::make_unique<frm022TxtPersonalizado>(sesion);
        f->show();
        QCoreApplication::processEvents();  // the form's load
        ui.respuestas = {true};
        f->cboConfiguraciones->setCurrentIndex(1);
        emit f->cboConfiguraciones->activated(1);
        ui.mensajes.clear();
        ui.archivos = {catalogo, enero};
        QTest::mouseClick(f->boton("cmdCatalogo"), Qt::LeftButton);
        QTest::mouseClick(f->cmdAbrirMes[0], Qt::LeftButton);
        return f;
    }
    std::string catalogo, enero;
};

}  // namespace

class frm022TxtPersonalizadoTest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        std::filesystem::remove(RutaBaseConfiguraciones());
        for (const char* clave : {"ImpCatalogo", "ImpSFAA", "DirPolizas"}) GuardaAjuste("VELMORANT", "Configuracion", clave, "");
    }

    void muestraElMarcoYSusControles() {
        EscenarioFijo e;
        auto forma = app::CreaFormularioImportador(25, e.sesion, nullptr);
        auto* f = qobject_cast<frm022TxtPersonalizado*>(forma.get());
        QVERIFY(f);
        f->show();
        QCoreApplication::processEvents();
        QCOMPARE(f->windowTitle(), QString("Importar texto personalizado"));
        QCOMPARE(f->tboBase->count(), 2);
        QCOMPARE(f->tboBase->tabText(0), QString("2023"));
        QCOMPARE(f->tboBase->tabText(1), QString("2022"));
        QVERIFY(f->elo("eloSdosAnteriorFinal"));
        QVERIFY(!f->elo("eloRutaArchSaldosIni"));  // no file of opening balances
        QVERIFY(!f->findChild<QCheckBox*>("chkUnArchivo"));
        QCOMPARE(qobject_cast<QGroupBox*>(f->elo("eloRutaArchCat")->parentWidget())->title(),
                 QString("Catálogo de Cuentas : MES INICIAL del periodo de revisión"));
        QCOMPARE(f->cmdAbrirMes[11]->objectName(), QString("cmdDic"));
        QVERIFY(!f->chkMes[12]);
        QCOMPARE(f->cboConfiguraciones->count(), 1);
        QCOMPARE(f->cboConfiguraciones->currentText(), QString("CONFIGURACION PREDETERMINADA"));
        QCOMPARE(f->Configuracion(), std::string("CONFIGURACION PREDETERMINADA"));
        QCOMPARE(f->registro().LongDescripcion, std::int16_t(40));
        GuardaCaptura(f, "importador_texto_fijo");
        // The month picker of the delimited importer.
        e.ui.archivos = {e.enero};
        QTest::mouseClick(f->cmdAbrirMes[0], Qt::LeftButton);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del Archivo de Pólizas del mes de Enero"));
        QCOMPARE(e.ui.filtrosPedidos.back(), std::string("*.txt|*.txt"));
        QVERIFY(f->chkMes[0]->isChecked());
    }

    // A month's file is compared with the other months' only, whole path
    // against whole path.
    void unArchivoNoSirveADosMeses() {
        EscenarioFijo e;
        std::string archivo = e.Archivo("polizas/diario.txt");
        frm022TxtPersonalizado f(e.sesion);
        e.ui.archivos = {archivo, archivo, archivo};
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QTest::mouseClick(f.cmdAbrirMes[3], Qt::LeftButton);
        QCOMPARE(Ruta(f.elo("eloRutaArchCat")), archivo);
        QCOMPARE(Ruta(f.eloPathMes[3]), archivo);
        QVERIFY(e.ui.mensajes.empty());
        QTest::mouseClick(f.cmdAbrirMes[4], Qt::LeftButton);
        QCOMPARE(Ruta(f.eloPathMes[4]), std::string());
        QVERIFY(!f.chkMes[4]->isChecked());
        QCOMPARE(Textos(e.ui), QStringList{"El archivo ya ha sido seleccionado\r"});
        QCOMPARE(f.focusWidget(), f.cmdAbrirMes[4]);
    }

    // The chart is asked for on both tabs; the prior-year tab then reaches
    // no import step: its log is made and closed, the form stays open.
    void laPestanaDelAnioAnteriorNoImporta() {
        EscenarioFijo e;
        frm022TxtPersonalizado f(e.sesion);
        f.show();
        QCoreApplication::processEvents();
        for (int pestana : {0, 1}) {
            f.tboBase->setCurrentIndex(pestana);
            e.ui.mensajes.clear();
            QTest::mouseClick(f.cmdImportar, Qt::LeftButton);
            QCOMPARE(Textos(e.ui),
                     QStringList{"Especifique por favor la ubicación del archivo que contiene el catálogo de cuentas\r"});
            QVERIFY(f.fraConfiguraciones->isEnabled());
        }
        e.ui.archivos = {e.catalogo};
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        e.ui.mensajes.clear();
        QTest::mouseClick(f.cmdImportar, Qt::LeftButton);
        QVERIFY(e.ui.mensajes.empty());
        QVERIFY(f.isVisible());
        QVERIFY(f.cmdImportar->isEnabled());
        QVERIFY(!f.fraConfiguraciones->isEnabled());
        QVERIFY(std::filesystem::exists(RutaAlmacen(e.sesion, kInconsisImpTmp)));
        QVERIFY(!e.sesion.DbInconsistencias);
        QCOMPARE(e.sesion.DbEmpresa->escalar("SELECT COUNT(*) FROM Cuentas").entero(), 0);
    }

    void laListaCambiaLaConfiguracionDeLaEmpresa() {
        EscenarioFijo e;
        GuardaFormatoAcme(e.sesion);
        frm022TxtPersonalizado f(e.sesion);
        f.show();
        QCoreApplication::processEvents();
        QCOMPARE(f.cboConfiguraciones->count(), 2);
        for (bool respuesta : {false, true}) {
            e.ui.respuestas = {respuesta};
            e.ui.mensajes.clear();
            f.cboConfiguraciones->setCurrentIndex(1);
            emit f.cboConfiguraciones->activated(1);
            QCOMPARE(Textos(e.ui),
                     QStringList{"Usted ha elegido una nueva configuración. ¿Esta seguro que desea ejecutar los cambios?"});
            const char* actual = respuesta ? "FORMATO ACME" : "CONFIGURACION PREDETERMINADA";
            QCOMPARE(f.Configuracion(), std::string(actual));
            QCOMPARE(f.cboConfiguraciones->currentText(), QString(actual));
            QCOMPARE(f.registro().LongAnio, std::int16_t(respuesta ? 4 : 2));
        }
        // The company keeps the chosen layout alone.
        auto filas = TodasLasConfiguraciones(*e.sesion.DbEmpresa);
        QCOMPARE(filas.size(), size_t(1));
        QCOMPARE(filas[0].Nombre, std::string("FORMATO ACME"));
    }

    void cambiarAbreLosParametrosConLosArchivos() {
        EscenarioFijo e;
        auto f = e.Forma();
        AlAbrirseModal(
            [](QDialog* d) {
                auto* p = static_cast<frm022DefParaTxtPersonalizado*>(d);
                QCOMPARE(p->tdbgCuentas->model()->rowCount(), 3);
                QCOMPARE(p->tdbgPolizas->model()->rowCount(), 2);
                p->txtConceptLong->setText("16");
                p->cboConfiguraciones->lineEdit()->clear();
                QTest::keyClicks(p->cboConfiguraciones->lineEdit(), "formato corto");
                QTest::mouseClick(p->cmdAceptar, Qt::LeftButton);
            },
            "frm022DefParaTxtPersonalizado");
        QTest::mouseClick(f->cmdCambiar, Qt::LeftButton);
        QCOMPARE(f->Configuracion(), std::string("FORMATO CORTO"));
        QCOMPARE(f->registro().LongConcept, std::int16_t(16));
        QCOMPARE(f->registro().LongAnio, std::int16_t(4));  // the rest as the layout it came from
        QCOMPARE(f->cboConfiguraciones->count(), 3);
        QCOMPARE(f->cboConfiguraciones->currentText(), QString("FORMATO CORTO"));
        QVERIFY(f->isVisible());
    }

    void unaImportacionCompletaDesdeElFormulario() {
        EscenarioFijo e;
        auto f = e.Forma();
        e.ui.decisiones = {DecisionInconsistencias::Continuar};
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        QStringList mensajes = Textos(e.ui);
        QVERIFY2(!mensajes.isEmpty() && mensajes.last().contains("finalizó con éxito"), qPrintable(mensajes.join(" | ")));
        QVERIFY(!f->isVisible());
        QCOMPARE(f->result(), int(QDialog::Accepted));
        QVERIFY(!f->fraConfiguraciones->isEnabled());
        QCOMPARE(f->IdPolizaTmp(), 1L);
        BaseDatos& db = *e.sesion.DbEmpresa;
        QCOMPARE(db.escalar("SELECT COUNT(*) FROM Cuentas").entero(), 3);
        QCOMPARE(QString::fromStdString(db.escalar("SELECT Tipo || '|' || Fecha || '|' || Concepto FROM Polizas").texto()),
                 QString("D|2023-01-15|Depósito de caja"));
        QCOMPARE(db.escalar("SELECT group_concat(Referencia, '/') FROM Polizas_Detalle").texto(),
                 std::string("Fich 1 Depósito de caja/Fich 1 Depósito de caja"));
        QCOMPARE(e.sesion.DbEmpresas->escalar("SELECT IdSistema FROM Empresas").entero(), 25);
    }

    // A run refused for its period leaves the form open; the next press
    // goes on numbering the vouchers where the first left off.
    void elContadorDePolizasNoSeReiniciaEntreCorridas() {
        EscenarioFijo e;
        e.sesion.DbEmpresa->ejecuta("INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha) VALUES (1, '1', 'D', '2023-02-01')");
        e.sesion.UltimoMesImportado = 2;  // as the start-up reads it
        std::string febrero = e.Archivo("cliente/pol_feb.txt", Partida("7", "20", "01", "110101", "1", "5"));
        auto forma = e.Forma();
        frm022TxtPersonalizado& f = *forma;
        f.chkMes[0]->click();  // January off
        e.ui.archivos = {febrero};
        QTest::mouseClick(f.cmdAbrirMes[1], Qt::LeftButton);
        for (long esperado : {1L, 2L}) {
            e.ui.mensajes.clear();
            QTest::mouseClick(f.cmdImportar, Qt::LeftButton);
            QVERIFY2(Textos(e.ui).join(" ").contains("realizó al mes de FEBRERO"), qPrintable(Textos(e.ui).join(" | ")));
            QVERIFY(f.isVisible());
            QCOMPARE(f.IdPolizaTmp(), esperado);
        }
        QCOMPARE(e.sesion.DbEmpresa->escalar("SELECT COUNT(*) FROM Polizas").entero(), 1);
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm022TxtPersonalizadoTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm022TxtPersonalizadoTest.moc"
