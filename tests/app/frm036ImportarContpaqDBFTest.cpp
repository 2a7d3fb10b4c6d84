// The ContPAQ Windows form: one pick finds the other tables and fills the
// month list from the voucher lines, the nature grid edits NatContpaq and
// `cmdRestablecer` brings the predetermined natures back, the filter asks
// before it is turned off.

#include <QDialogButtonBox>
#include <QListWidget>

#include "app/InteraccionQt.h"
#include "app/frm036ImportarContpaqDBF.h"
#include "app/Escenario.h"
#include "importers/contpaq_windows/ImportadorContpaqWindows.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm036ImportarContpaqDBF;

namespace {

// The five tables (dBase III) in `carpeta`, with vouchers of January,
// March and the closing period.
bool EscribeTablas(const std::string& carpeta) {
    std::ofstream(carpeta + "/escribe.py") << R"(import dbf, datetime
from decimal import Decimal as D
d = datetime.date
def tabla(nombre, campos, filas):
    t = dbf.Table(nombre, campos, dbf_type='db3', codepage='cp1252')
    t.open(dbf.READ_WRITE)
    for f in filas:
        t.append(f)
    t.close()
tabla('CTW10001.DBF', 'CUENTA C(20); NOMBRE C(40); TIPO C(1); SISTORIG N(1,0)', [('1000', 'Caja', 'A', 1)])
tabla('CTW10002.DBF', 'SUBCTADE C(20); CTASUP C(20)', [])
tabla('CTW10005.DBF', 'EJE N(4,0); TIPO N(1,0); CUENTA C(20); SALDOINI N(16,2); IMP13 N(16,2)', [])
tabla('CTW10004.DBF', 'EJE N(4,0); PERIODO N(2,0); TIPOPOL N(2,0); NUMPOL N(8,0); MOVTO N(4,0); FECHA D; '
      'CUENTA C(20); REFERENCIA C(20); CONCEPTO C(40); TIPOMOV N(1,0); IMPORTE N(16,2)',
      [(2023, 1, 1, 1, 1, d(2023, 1, 5), '1000', '', 'x', 0, D('1')),
       (2023, 3, 1, 2, 1, d(2023, 3, 5), '1000', '', 'x', 0, D('1')),
       (2023, 13, 1, 3, 1, d(2023, 12, 31), '1000', '', 'x', 0, D('1')),
       (2022, 5, 1, 4, 1, d(2022, 5, 5), '1000', '', 'x', 0, D('1'))])
tabla('CTW10009.DBF', 'NUMERO N(2,0); DESCRIP C(20)', [(1, 'Diario')])
)";
    return CorreProceso("cd '" + carpeta + "' && /usr/bin/python3 escribe.py").estado == 0;
}

QStringList Elementos(QComboBox* c) {
    QStringList r;
    for (int i = 0; i < c->count(); ++i) r << c->itemText(i) + "=" + c->itemData(i).toString();
    return r;
}

QString Naturaleza(frm036ImportarContpaqDBF& f, const QString& tipo) {
    for (int i = 0; i < f.tdbgNatContpaq->rowCount(); ++i)
        if (f.tdbgNatContpaq->item(i, 0)->text() == tipo) return f.tdbgNatContpaq->item(i, 1)->text();
    return "?";
}

}  // namespace

class frm036ImportarContpaqDBFTest : public QObject {
    Q_OBJECT
private slots:
    void init() { GuardaAjuste("VELMORANT", "Configuracion", "ImpCatalogo", ""); }

    void unaEleccionEncuentraLasTablasYLosMeses() {
        Escenario e;
        const std::string carpeta = (e.dir.ruta() / "contpaq").string();
        std::filesystem::create_directories(carpeta);
        QVERIFY(EscribeTablas(carpeta));
        frm036ImportarContpaqDBF f(e.sesion);
        f.show();
        QCOMPARE(f.cboMeses->count(), 0);
        QVERIFY(!f.findChild<QLineEdit*>("txtnaturaleza")->isVisible());
        e.ui.archivos = {carpeta + "/CTW10001.DBF"};
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QCOMPARE(f.eloRutaCatDetalle->text().toStdString(), carpeta + "/CTW10002.DBF");
        QCOMPARE(f.eloPathPolizas->text().toStdString(), carpeta + "/CTW10004.DBF");
        QCOMPARE(f.eloPathCatTipoPolizas->text().toStdString(), carpeta + "/CTW10009.DBF");
        // The year's periods only; 13 is the closing row.
        QCOMPARE(Elementos(f.cboMeses), (QStringList{"Enero=1", "Marzo=3", "Mes cierre=13"}));
        QCOMPARE(f.Archivos().parametro("hasta-mes").value_or(""), std::string("13"));
        QVERIFY(!f.Archivos().casilla("sin-filtro-sistorig"));
        GuardaCaptura(&f, "importador_contpaq_windows");
    }

    void laRejillaEditaYRestableceLasNaturalezas() {
        Escenario e;
        frm036ImportarContpaqDBF f(e.sesion);
        QCOMPARE(f.tdbgNatContpaq->rowCount(), 10);
        QCOMPARE(Naturaleza(f, "A"), QString("D"));
        QCOMPARE(Naturaleza(f, "B"), QString("A"));
        f.tdbgNatContpaq->item(0, 1)->setText("a");  // type A
        QCOMPARE(Naturaleza(f, "A"), QString("A"));
        QCOMPARE(NaturalezasContpaq(e.sesion).busca("A"), std::string("A"));
        f.tdbgNatContpaq->item(0, 1)->setText("X");  // refused, the store unchanged
        QCOMPARE(Naturaleza(f, "A"), QString("A"));
        // No: nothing changes; yes: the predetermined natures.
        e.ui.respuestas = {false};
        f.cmdRestablecer->click();
        QCOMPARE(Naturaleza(f, "A"), QString("A"));
        e.ui.respuestas = {true};
        f.cmdRestablecer->click();
        QCOMPARE(Naturaleza(f, "A"), QString("D"));
        QVERIFY(Textos(e.ui).last().startsWith("¿Confirma que desea restablecer los valores predeterminados"));
    }

    void elFiltroPreguntaAntesDeApagarse() {
        Escenario e;
        frm036ImportarContpaqDBF f(e.sesion);
        f.show();
        e.ui.respuestas = {false};
        f.chkSistOrigFiltroCtas->click();
        QVERIFY(f.chkSistOrigFiltroCtas->isChecked());
        QVERIFY(Textos(e.ui).last().contains("¿Confirma que desea deshabilitar este Filtro?"));
        e.ui.respuestas = {true};
        f.chkSistOrigFiltroCtas->click();
        QVERIFY(!f.chkSistOrigFiltroCtas->isChecked());
        QVERIFY(f.Archivos().casilla("sin-filtro-sistorig"));
    }

    // The desktop's answer to an unknown type: the choice in the list, or
    // nothing when the dialog is closed.
    void elDialogoDeLaNaturalezaDevuelveLaEleccion() {
        velmorant::app::InteraccionQt ui;
        AlAbrirseModal(
            [](QDialog* d) {
                QVERIFY(d->findChild<QLabel*>()->text().contains("conforme al Tipo de cuenta 'C'"));
                d->findChild<QListWidget*>("lstNaturaleza")->setCurrentRow(1);
                d->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
            },
            "frm036ImportarContpaqDBFMsg");
        QCOMPARE(ui.decideNaturaleza("ACME", TextoNaturalezaDesconocida("1000102", "Banco dos", "C"), "C"),
                 std::string("A"));
        AlAbrirseModal([](QDialog* d) { d->reject(); }, "frm036ImportarContpaqDBFMsg");
        QCOMPARE(ui.decideNaturaleza("ACME", "x", "C"), std::string());
    }
};

QTEST_MAIN(frm036ImportarContpaqDBFTest)
#include "frm036ImportarContpaqDBFTest.moc"
