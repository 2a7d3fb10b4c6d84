// The preview of a printed report in the desktop program, and the report
// importer's form that opens it on the chosen month.

#include "app/Escenario.h"
#include "app/RegistroFormularios.h"
#include "app/frm000ImportadorReporte.h"
#include "app/frm000PruebaReporte.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm000PruebaReporte;

namespace {

const QString kFuentes = QString(VELMORANT_FUENTES_APP);

}  // namespace

class frm000PruebaReporteTest : public QObject {
    Q_OBJECT
private slots:
    void muestraLasClasesYLasPolizas() {
        Escenario e;
        e.sesion.FormatoCtaEmpresa = "999-99-99";
        e.sesion.LongitudesNivel = {3, 2, 2};
        e.sesion.NumeroNiveles = 3;
        e.sesion.CatalogoArbol = true;
        frm000PruebaReporte f(e.sesion, kFuentes + "/data/reportes/076_pasc.toml",
                              kFuentes + "/tests/data/reportes/076_pasc_ene.txt");
        f.show();
        QCOMPARE(f.windowTitle(), QString("Vista previa del reporte"));
        QTest::mouseClick(f.cmdProbar, Qt::LeftButton);
        const QString t = f.txtResultado->toPlainText();
        QVERIFY2(t.contains("encabezado   |  POLIZA NUMERO   Dr001"), qPrintable(t.left(2000)));
        QVERIFY(t.contains("concepto     |"));
        QVERIFY(t.contains("Pólizas: 3"));
        QVERIFY(t.contains("cargos $9,630.50, abonos $9,630.50"));
        GuardaCaptura(&f, "reporte_vista_previa");

        // A description that cannot be used says its file and line.
        const std::string mala = e.Archivo("mala.toml", "enlace = 76\n[[linea]]\nclase = \"nada\"\n");
        f.txtDescripcion->setText(QString::fromStdString(mala));
        f.Prueba();
        QCOMPARE(f.txtResultado->toPlainText(),
                 QString::fromStdString("La descripción de reporte " + mala + ", línea 3: la clase nada no existe; "
                                        "las clases son encabezado, partida, totales, regla, continuacion, titulos y pie"));
    }

    void elImportadorDeReporteAbreLaVistaPrevia() {
        Escenario e;
        auto forma = app::CreaFormularioImportador(76, e.sesion, nullptr);
        auto* f = qobject_cast<app::frm000ImportadorReporte*>(forma.get());
        QVERIFY(f);
        QCOMPARE(f->windowTitle(), QString("Sistema PASC"));
        QVERIFY(f->cmdVistaPrevia);
        bool abierta = false;
        AlAbrirseModal(
            [&](QDialog* d) {
                abierta = true;
                d->accept();
            },
            "frm000PruebaReporte");
        f->cmdVistaPrevia_Click();
        QVERIFY(abierta);
        QVERIFY(!qobject_cast<app::frm000ImportadorReporte*>(app::CreaFormularioImportador(82, e.sesion, nullptr).get()));
    }
};

QTEST_MAIN(frm000PruebaReporteTest)
#include "frm000PruebaReporteTest.moc"
