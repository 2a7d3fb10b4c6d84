// The forms of links 20 (Softex), 56 and 57 (Quorvel 4.0 and 5.0), built
// from their descriptors: their file rows and pickers, the month up to which
// the vouchers are read, the check box of vouchers with several dates, the
// messages of a missing file, and what the run receives from them.

#include <QComboBox>

#include "app/Escenario.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm000ImportadorDescrito;

class frmImportadoresAuditoriaTest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        for (const char* clave : {"ImpCatalogo", "DirPol", "ImpSFAA"}) GuardaAjuste("VELMORANT", "Configuracion", clave, "");
    }

    void quorvel4PideSusTresTablasYElMes() {
        Escenario e;
        auto f = FormaDescrita(e, 56);
        QVERIFY(f);
        f->show();
        QCOMPARE(f->windowTitle(), QString("Quorvel 4.0"));
        QVERIFY(!f->tboBase);
        QVERIFY(!f->fraMeses);
        auto* mes = f->findChild<QComboBox*>("cboMes");
        QVERIFY(mes);
        QCOMPARE(mes->count(), 13);
        QCOMPARE(mes->currentText(), QString("Diciembre"));
        auto* fechas = f->findChild<QCheckBox*>("chkPolizaFechaDiff");
        QVERIFY(fechas);
        QVERIFY(!fechas->isChecked());
        GuardaCaptura(f.get(), "importador_quorvel4");

        // Each table has its picker; the vouchers' keeps its folder under a key of its own.
        std::string polizas = e.Archivo("pol/B2UNIPOL.DBF");
        e.ui.archivos = {polizas};
        QTest::mouseClick(f->boton("cmdPolizas"), Qt::LeftButton);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del archivo que contiene el universo de pólizas"));
        QCOMPARE(e.ui.filtrosPedidos.back(), std::string("B2UNIPOL.DBF|B2UNIPOL.DBF;"));
        QCOMPARE(LeeAjuste("VELMORANT", "Configuracion", "DirPol", ""), e.dir.texto() + "pol/");
        f->elo("eloRutaArchCat")->setText("B9CATCUE.DBF");
        f->elo("eloSdosAnteriorFinal")->setText("B9SALANT.DBF");

        mes->setCurrentIndex(12);
        fechas->setChecked(true);
        ArchivosImportacion a = f->Archivos();
        QCOMPARE(a.catalogo, std::string("B9CATCUE.DBF"));
        QCOMPARE(a.ruta("polizas"), polizas);
        QCOMPARE(a.saldosAnioAnterior, std::string("B9SALANT.DBF"));
        QCOMPARE(a.parametro("hasta-mes").value_or(""), std::string("13"));
        QVERIFY(a.casilla("poliza-fecha-diferente"));
    }

    void sinCatalogoNiPolizasLoDiceYNoImporta() {
        Escenario e;
        auto f = FormaDescrita(e, 56);
        f->show();
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        QCOMPARE(Textos(e.ui), QStringList{"Especifique por favor el archivo que contiene el catálogo de cuentas"});
        QCOMPARE(f->focusWidget(), f->boton("cmdCatalogo"));
        f->elo("eloRutaArchCat")->setText("B9CATCUE.DBF");
        e.ui.mensajes.clear();
        // The prior-year balances are optional; the vouchers are not.
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        QCOMPARE(Textos(e.ui), QStringList{"Especifique por favor la ubicación del archivo que contiene las pólizas"});
        QCOMPARE(f->focusWidget(), f->boton("cmdPolizas"));
        QVERIFY(f->cmdImportar->isEnabled());
    }

    void quorvel5EsUnaBaseDeDatos() {
        Escenario e;
        auto f = FormaDescrita(e, 57);
        QVERIFY(f);
        f->show();
        QCOMPARE(f->windowTitle(), QString("Quorvel 5.0"));
        QVERIFY(f->findChild<QComboBox*>("cboMes"));
        QVERIFY(f->findChild<QCheckBox*>("chkPolizaFechaDiff"));
        QVERIFY(!f->elo("eloRutaArchPol"));
        e.ui.archivos = {e.Archivo("qrv/QRV001.MDB")};
        QTest::mouseClick(f->boton("cmdCatalogo"), Qt::LeftButton);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del Archivo *.mdb - Base de Datos de la Empresa"));
        QCOMPARE(e.ui.filtrosPedidos.back(), std::string("QRV???.MDB|QRV???.MDB"));
        QCOMPARE(f->Archivos().ruta("base-datos"), e.dir.texto() + "qrv/QRV001.MDB");
        GuardaCaptura(f.get(), "importador_quorvel5");
    }

    void softexPideSuBaseConLasPalabrasDeSiempre() {
        Escenario e;
        auto f = FormaDescrita(e, 20);
        QVERIFY(f);
        f->show();
        QCOMPARE(f->windowTitle(), QString("Softex"));
        QVERIFY(!f->findChild<QComboBox*>());
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        QCOMPARE(Textos(e.ui), QStringList{"Indique la ruta del archivo CATCTAS.DBF para poder continuar."});
        QCOMPARE(e.ui.mensajes.back().tipo, TipoMensaje::Informacion);
        QCOMPARE(f->focusWidget(), f->boton("cmdCatalogo"));
        GuardaCaptura(f.get(), "importador_softex");
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frmImportadoresAuditoriaTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frmImportadoresAuditoriaTest.moc"
