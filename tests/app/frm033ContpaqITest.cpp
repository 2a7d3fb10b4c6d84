// The forms of links 36 and 95 (ContPAQ i), built from their descriptors:
// their file rows and pickers, the options of link 95, the message of a
// missing catalogue, and a whole run from the form on files written here.

#include "app/Escenario.h"
#include "../importers/contpaq_i/ArchivosContpaqI.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm000ImportadorDescrito;

class frm033ContpaqITest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        for (const char* clave : {"VinCatalogo", "VinPolizas", "VinBalanza", "ImpSFAA"})
            GuardaAjuste("VELMORANT", "Configuracion", clave, "");
    }

    void mejoradoOfreceSusOpciones() {
        Escenario e;
        auto f = FormaDescrita(e, 95);
        QVERIFY(f);
        f->show();
        QCOMPARE(f->windowTitle(), QString("ContPAQ i - Mejorado"));
        QVERIFY(f->tboBase);
        for (const char* control : {"chkIncluirUUID", "chkReplicaConceptos", "chkActualizaRef", "chkTipo01", "chkTipo12"})
            QVERIFY2(f->findChild<QCheckBox*>(control), control);
        // The two codings of the movement kind are one choice.
        auto* tipo01 = f->findChild<QCheckBox*>("chkTipo01");
        auto* tipo12 = f->findChild<QCheckBox*>("chkTipo12");
        QVERIFY(tipo01->isChecked());
        tipo12->click();
        QVERIFY(tipo12->isChecked() && !tipo01->isChecked());
        tipo12->click();
        QVERIFY(tipo12->isChecked());
        QVERIFY(f->Archivos().casilla("tipo-12") && !f->Archivos().casilla("tipo-01"));
        tipo01->click();
        QCOMPARE(f->findChild<QCheckBox*>("chkIncluirUUID")->text(), QString("Incorporar UUID del archivo de Pólizas."));
        GuardaCaptura(f.get(), "importador_contpaqi_mejorado");

        // Each file has its picker, and its folder is kept under its key.
        std::string polizas = e.Archivo("cli/CPOLIZAS.TXT");
        e.ui.archivos = {polizas};
        QTest::mouseClick(f->boton("cmdPolizas01"), Qt::LeftButton);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del Archivo CPOLIZAS.TXT"));
        QCOMPARE(LeeAjuste("VELMORANT", "Configuracion", "VinPolizas", ""), e.dir.texto() + "cli/");
        e.ui.archivos = {e.Archivo("cli/BALANZA.TXT")};
        QTest::mouseClick(f->boton("cmdBalanza"), Qt::LeftButton);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del Archivo *.TXT"));
        f->findChild<QCheckBox*>("chkActualizaRef")->setChecked(true);
        ArchivosImportacion a = f->Archivos();
        QCOMPARE(a.ruta("polizas"), polizas);
        QCOMPARE(a.ruta("balanza"), e.dir.texto() + "cli/BALANZA.TXT");
        QVERIFY(a.casilla("actualiza-referencia"));
        QVERIFY(a.casilla("tipo-01"));
    }

    void anteriorSinCatalogoLoDiceYNoImporta() {
        Escenario e;
        auto f = FormaDescrita(e, 36);
        QVERIFY(f);
        f->show();
        QCOMPARE(f->windowTitle(), QString("ContPAQ i"));
        QVERIFY(!f->findChild<QCheckBox*>("chkIncluirUUID"));
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        QCOMPARE(Textos(e.ui), QStringList{"Especifica la ubicación del archivo que contiene el catálogo de cuentas"});
        QCOMPARE(f->focusWidget(), f->boton("cmdCatalogo"));
        QVERIFY(f->cmdImportar->isEnabled());
        GuardaCaptura(f.get(), "importador_contpaqi");
    }

    void unaImportacionDesdeLaFormaDejaLasPolizas() {
        Escenario e;
        auto f = FormaDescrita(e, 95);
        f->show();
        // The company's codes are eight characters long (9999-99-99).
        const std::string catalogo = e.dir.texto() + "CATALOGO.TXT", polizas = e.dir.texto() + "CPOLIZAS.TXT";
        Escribe(catalogo, {Cuenta("10000000", "Activo", "", "A"), Cuenta("10000101", "Caja", "10000000", "A"),
                           Cuenta("40000000", "Ventas", "", "B"), Cuenta("40000101", "Mostrador", "40000000", "B")});
        Escribe(polizas, {Poliza("20230105", "Ig", "1", "Venta"), Movimiento("10000101", "F-1", "0", "10.00", "Caja"),
                          Movimiento("40000101", "F-1", "1", "10.00", "")});
        f->elo("eloRutaArchCat")->setText(QString::fromStdString(catalogo));
        f->elo("eloRutaArchPol01")->setText(QString::fromStdString(polizas));
        f->findChild<QCheckBox*>("chkReplicaConceptos")->setChecked(true);
        e.ui.decisiones = {DecisionInconsistencias::Continuar};
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        QVERIFY2(Textos(e.ui).join("\n").contains("finalizó con éxito"), qPrintable(Textos(e.ui).join("\n")));
        BaseDatos& db = *e.sesion.DbEmpresa;
        QCOMPARE(db.escalar("SELECT group_concat(Cuenta || TipoMov || ' ' || Referencia, ' | ') FROM Polizas_Detalle").texto(),
                 std::string("10000101D Venta | 40000101H Venta"));
        QCOMPARE(e.sesion.DbEmpresas->escalar("SELECT IdSistema FROM Empresas WHERE IdEmpresa=?", e.sesion.IdEmpresaActual)
                     .entero(),
                 std::int64_t{95});
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm033ContpaqITest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm033ContpaqITest.moc"
