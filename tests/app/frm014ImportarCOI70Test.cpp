// The form of link 129 (COI 7 and 8 over their Firebird database): its own
// label that says whether the embedded engine can open the database, the
// boxes of user, password, month and COI 8, and the message of a database
// path that is empty or does not exist.

#include <QComboBox>
#include <QLabel>

#include "app/Escenario.h"
#include "app/RegistroFormularios.h"
#include "app/frm014ImportarCOI70.h"
#include "platform/fuentes/BaseFirebird.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm014ImportarCOI70;

class frm014ImportarCOI70Test : public QObject {
    Q_OBJECT
private slots:
    void tieneSusControlesYDiceComoEstaElMotor() {
        Escenario e;
        auto forma = app::CreaFormularioImportador(129, e.sesion, nullptr);
        auto* f = dynamic_cast<frm014ImportarCOI70*>(forma.get());
        QVERIFY(f);
        f->show();
        QCOMPARE(f->windowTitle(), QString("COI Win. 7.0, 8.0 - Base de Datos (*.FDB)"));
        for (const char* nombre : {"txtUsuario", "txtPassword", "cboMeses"})
            QVERIFY2(f->findChild<QWidget*>(nombre), nombre);
        QVERIFY(f->findChild<QCheckBox*>("chkVer8"));
        QCOMPARE(f->findChild<QComboBox*>("cboMeses")->count(), 13);

        // The label says what the engine lacks, or that it is there.
        const std::string diagnostico = DiagnosticoMotorFirebird();
        QCOMPARE(f->lblControlador->objectName(), QString("lblControlador"));
        if (diagnostico.empty())
            QVERIFY(f->lblControlador->text().contains("disponible"));
        else
            QCOMPARE(f->lblControlador->text().toStdString(), diagnostico);
        QVERIFY(f->lblControlador->toolTip().contains("libfbclient2"));
        QTest::mouseClick(f->lblControlador, Qt::LeftButton);
        QCOMPARE(e.ui.mensajes.size(), size_t(1));
        QVERIFY(QString::fromStdString(e.ui.mensajes.back().texto).contains("firebird3.0-server-core"));
        GuardaCaptura(f, "importador_coi70");
    }

    void sinRutaDeLaBaseLoDiceYNoImporta() {
        Escenario e;
        auto forma = app::CreaFormularioImportador(129, e.sesion, nullptr);
        auto* f = dynamic_cast<frm014ImportarCOI70*>(forma.get());
        QVERIFY(f);
        f->show();
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        QCOMPARE(Textos(e.ui), QStringList{"Confirme la Ruta del archivo de Base de Datos.\r"});
        QVERIFY(f->isVisible());

        f->elo("txtDBPath")->setText(QString::fromStdString(e.dir.texto() + "NOEXISTE01.FDB"));
        QTest::mouseClick(f->cmdImportar, Qt::LeftButton);
        QCOMPARE(Textos(e.ui).size(), 2);
        QCOMPARE(Textos(e.ui).back(), QString("Confirme la Ruta del archivo de Base de Datos.\r"));
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm014ImportarCOI70Test prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm014ImportarCOI70Test.moc"
