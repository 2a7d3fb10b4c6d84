// The delimited-text importer on the importer frame: its controls, the
// pickers and their saved folders, the month rows, the autocompletion from
// January and the checks of `cmdImportar`.

#include <QComboBox>

#include "app/frm082TextoGenericoSeparado.h"
#include "app/Escenario.h"
#include "importers/Marco.h"

using namespace velmorant;
using namespace velmorant::prueba;
using velmorant::app::frm082TextoGenericoSeparado;

namespace {

std::string Guardada(const std::string& clave) { return LeeAjuste("VELMORANT", "Configuracion", clave, ""); }

void Guarda(const std::string& clave, const std::string& valor) {
    GuardaAjuste("VELMORANT", "Configuracion", clave, valor);
}

std::string Ruta(QLineEdit* caja) { return caja->text().toStdString(); }

}  // namespace

class frm082TextoGenericoSeparadoTest : public QObject {
    Q_OBJECT
private slots:
    void init() {
        for (const char* clave : {"ImpCatalogo", "ImpSI", "ImpSFAA", "DirPolizas"}) Guarda(clave, "");
    }

    void muestraElMarcoYSusControles() {
        Escenario e;
        frm082TextoGenericoSeparado f(e.sesion);
        f.show();
        QCOMPARE(f.windowTitle(), QString("Texto Generico delimitado por caracter"));
        QCOMPARE(f.cmdImportar->text(), QString("&Importar"));
        QCOMPARE(f.cmdCancelar->text(), QString("&Cancelar"));
        QVERIFY(f.tboBase);
        QCOMPARE(f.tboBase->count(), 2);
        QCOMPARE(f.tboBase->tabText(0), QString("2023"));
        QCOMPARE(f.tboBase->tabText(1), QString("2022"));
        QVERIFY(f.lblNotaSdosAAntFinal->text().startsWith("La importación de los saldos del año anterior"));
        QVERIFY(f.lblNotaSdosAAntFinal->text().contains("'AÑO ANTERIOR FINAL'.\n Para más información"));
        for (const char* nombre : {"eloRutaArchCat", "eloRutaArchSaldosIni", "eloRutaArchSdosFinalesAnioAnt",
                                   "eloPathEne", "eloPathDic"})
            QVERIFY2(f.elo(nombre), nombre);
        for (const char* nombre : {"cmdCatalogo", "cmdSaldosIni", "cmdSaldosFinAnioAnt", "cmdAbrirEne", "cmdAbrirDic"})
            QVERIFY2(f.boton(nombre), nombre);
        QCOMPARE(f.chkMes[2]->objectName(), QString("chkMar"));
        QCOMPARE(f.chkMes[2]->text(), QString("Marzo"));
        QCOMPARE(f.chkUnArchivo->text(), QString("Un solo archivo"));
        QCOMPARE(f.optTabulacion->text(), QString("Texto separado por Tabuladores"));
        QCOMPARE(f.optOtro->text(), QString("Texto separado por:"));
        QCOMPARE(f.cboSeparador->count(), 3);
        QCOMPARE(f.cboSeparador->itemText(0), QString("^"));
        QCOMPARE(f.cboSeparador->itemText(1), QString("|"));
        QCOMPARE(f.cboSeparador->itemText(2), QString("~"));
        QCOMPARE(f.cboSeparador->currentText(), QString("^"));
        QVERIFY(!f.pbar->isVisible());
        QCOMPARE(f.Separador(), std::string());
        f.optTabulacion->setChecked(true);
        QCOMPARE(f.Separador(), std::string("\t"));
        f.optOtro->setChecked(true);
        f.cboSeparador->setEditText("||");
        QCOMPARE(f.Separador(), std::string("||"));
        GuardaCaptura(&f, "importador_texto");
        f.tboBase->setCurrentIndex(1);
        QVERIFY(f.EnAnioAnterior());
        GuardaCaptura(&f, "importador_texto_anio_anterior");
    }

    void elSelectorAbreEnLaCarpetaGuardadaYCancelarNoCambiaNada() {
        Escenario e;
        std::string catalogo = e.Archivo("cliente/catalogo.txt");
        frm082TextoGenericoSeparado f(e.sesion);
        // Nothing saved: the base folder.
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QCOMPARE(e.ui.carpetas.back(), e.sesion.RutaBase);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del Archivo *.TXT - Catálogo de cuentas"));
        QCOMPARE(e.ui.filtrosPedidos.back(), std::string("*.txt|*.txt"));
        QCOMPARE(Ruta(f.elo("eloRutaArchCat")), std::string());
        // A choice: its path in the box and tooltip, its folder saved.
        e.ui.archivos = {catalogo};
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QCOMPARE(Ruta(f.elo("eloRutaArchCat")), catalogo);
        QCOMPARE(f.elo("eloRutaArchCat")->toolTip().toStdString(), catalogo);
        QCOMPARE(Guardada("ImpCatalogo"), e.dir.texto() + "cliente/");
        // The next dialog opens there; cancelling keeps path and folder.
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QCOMPARE(e.ui.carpetas.back(), e.dir.texto() + "cliente/");
        QCOMPARE(Ruta(f.elo("eloRutaArchCat")), catalogo);
        QCOMPARE(Guardada("ImpCatalogo"), e.dir.texto() + "cliente/");
        // Each kind of file keeps its own folder.
        QTest::mouseClick(f.boton("cmdSaldosIni"), Qt::LeftButton);
        QCOMPARE(e.ui.carpetas.back(), e.sesion.RutaBase);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del Archivo *.TXT - Saldos iniciales"));
        QVERIFY(e.ui.mensajes.empty());
    }

    void eneroCompletaLosMesesQueEncuentra() {
        Escenario e;
        std::string enero = e.Archivo("polizas/pol_ene.txt");
        std::string febrero = e.Archivo("polizas/POL_FEB.TXT");
        std::string marzo = e.Archivo("polizas/pol_mzo.txt");
        e.Archivo("polizas/pol_mar.txt");
        std::string junio = e.Archivo("polizas/pol_jun.txt");
        frm082TextoGenericoSeparado f(e.sesion);
        f.show();
        e.ui.archivos = {enero};
        QTest::mouseClick(f.cmdAbrirMes[0], Qt::LeftButton);
        QCOMPARE(e.ui.titulos.back(), std::string("Búsqueda del Archivo de Pólizas del mes de Enero"));
        QCOMPARE(Guardada("DirPolizas"), e.dir.texto() + "polizas/");
        const std::string esperadas[12] = {enero, febrero, marzo, "", "", junio, "", "", "", "", "", ""};
        for (int i = 0; i < 12; ++i) {
            QCOMPARE(Ruta(f.eloPathMes[i]), esperadas[i]);
            QCOMPARE(f.chkMes[i]->isChecked(), !esperadas[i].empty());
        }
        QCOMPARE(f.focusWidget(), f.cmdAbrirMes[6]);  // after the last month found
        auto archivos = f.Archivos();
        QCOMPARE(archivos.meses[1], febrero);
        QCOMPARE(archivos.meses[3], std::string());
        QVERIFY(e.ui.mensajes.empty());
        GuardaCaptura(&f, "importador_texto_meses");
    }

    void unArchivoNoSirveADosMeses() {
        Escenario e;
        std::string archivo = e.Archivo("polizas/diario.txt");
        frm082TextoGenericoSeparado f(e.sesion);
        e.ui.archivos = {archivo, archivo};
        QTest::mouseClick(f.cmdAbrirMes[3], Qt::LeftButton);
        QTest::mouseClick(f.cmdAbrirMes[4], Qt::LeftButton);
        QCOMPARE(Ruta(f.eloPathMes[3]), archivo);
        QCOMPARE(Ruta(f.eloPathMes[4]), std::string());
        QVERIFY(!f.chkMes[4]->isChecked());
        QCOMPARE(Textos(e.ui), QStringList{"El archivo ya ha sido seleccionado\r"});
        QCOMPARE(f.focusWidget(), f.cmdAbrirMes[4]);
    }

    void lasCasillasDeMes() {
        Escenario e;
        std::string marzo = e.Archivo("polizas/marzo.txt");
        frm082TextoGenericoSeparado f(e.sesion);
        // Ticking without a file is refused.
        QTest::mouseClick(f.chkMes[1], Qt::LeftButton);
        QVERIFY(!f.chkMes[1]->isChecked());
        QCOMPARE(Textos(e.ui),
                 QStringList{"Especifique por favor el archivo que contiene la información a importar"});
        QCOMPARE(f.focusWidget(), f.cmdAbrirMes[1]);
        // Choosing ticks; unticking clears the path.
        e.ui.archivos = {marzo};
        QTest::mouseClick(f.cmdAbrirMes[2], Qt::LeftButton);
        QVERIFY(f.chkMes[2]->isChecked());
        QTest::mouseClick(f.chkMes[2], Qt::LeftButton);
        QVERIFY(!f.chkMes[2]->isChecked());
        QCOMPARE(Ruta(f.eloPathMes[2]), std::string());
        QCOMPARE(f.eloPathMes[2]->toolTip(), QString());
    }

    void unSoloArchivoDejaSoloElPrimerRenglon() {
        Escenario e;
        std::string enero = e.Archivo("polizas/pol01.txt");
        e.Archivo("polizas/pol02.txt");
        frm082TextoGenericoSeparado f(e.sesion);
        f.show();
        e.ui.archivos = {enero};
        QTest::mouseClick(f.cmdAbrirMes[0], Qt::LeftButton);
        QVERIFY(f.chkMes[1]->isChecked());
        QTest::mouseClick(f.chkUnArchivo, Qt::LeftButton);
        QVERIFY(f.eloPathMes[0]->isVisible());
        for (int i = 1; i < 12; ++i) {
            QVERIFY(!f.chkMes[i]->isVisible());
            QVERIFY(!f.cmdAbrirMes[i]->isVisible());
        }
        auto archivos = f.Archivos();
        QCOMPARE(archivos.polizas, enero);  // the year's one file
        QCOMPARE(archivos.meses[0], std::string());
        QCOMPARE(archivos.meses[1], std::string());
        QTest::mouseClick(f.chkUnArchivo, Qt::LeftButton);
        QVERIFY(f.chkMes[1]->isVisible());
        QCOMPARE(Ruta(f.eloPathMes[1]), std::string());
    }

    void importarRevisaEnOrden() {
        Escenario e;
        std::string catalogo = e.Archivo("c/catalogo.txt");
        frm082TextoGenericoSeparado f(e.sesion);
        f.show();
        struct Paso {
            std::function<void()> prepara;
            QString mensaje;
            QWidget* foco;
        };
        const Paso pasos[] = {
            {[] {}, "Especifique por favor el caracter separador\r", f.optOtro},
            {[&] { f.optOtro->setChecked(true); }, "Especifique por favor el archivo que contiene el Catalogo de cuentas\r",
             f.cmdCancelar},
            {[&] {
                 e.ui.archivos = {catalogo};
                 QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
                 f.chkUnArchivo->click();
             },
             "Especifique por favor la ubicación del archivo que contiene las pólizas\r", f.cmdAbrirMes[0]},
            {[&] { f.tboBase->setCurrentIndex(1); },
             "Especifique por favor el archivo que contiene los saldos finales del año anterior\r",
             f.boton("cmdSaldosFinAnioAnt")},
        };
        for (const auto& p : pasos) {
            p.prepara();
            e.ui.mensajes.clear();
            QTest::mouseClick(f.cmdImportar, Qt::LeftButton);
            QCOMPARE(Textos(e.ui), QStringList{p.mensaje});
            QCOMPARE(f.focusWidget(), p.foco);
            QVERIFY(f.isVisible());  // a user's mistake leaves the form usable
            QVERIFY(f.cmdImportar->isEnabled());
        }
    }

    void unaReimportacionPideLosMesesQueYaTieneLaEmpresa() {
        Escenario e;
        e.sesion.DbEmpresa->ejecuta("INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha) VALUES (1, '1', 'D', '2023-02-01')");
        std::string catalogo = e.Archivo("c/catalogo.txt");
        std::string enero = e.Archivo("c/enero.txt");
        frm082TextoGenericoSeparado f(e.sesion);
        f.optTabulacion->setChecked(true);
        e.ui.archivos = {catalogo, enero};
        QTest::mouseClick(f.boton("cmdCatalogo"), Qt::LeftButton);
        QTest::mouseClick(f.cmdAbrirMes[0], Qt::LeftButton);
        QTest::mouseClick(f.cmdImportar, Qt::LeftButton);
        QCOMPARE(Textos(e.ui), QStringList{"Es necesario completar la selección de archivos a importar"});
    }

    void alternaFormularioDeshabilitaYNoSeCierraMientrasTrabaja() {
        Escenario e;
        frm082TextoGenericoSeparado f(e.sesion);
        f.show();
        f.AlternaFormulario();
        QVERIFY(f.trabajando());
        QVERIFY(!f.cmdImportar->isEnabled());
        QVERIFY(!f.cmdCancelar->isEnabled());
        QVERIFY(!f.tboBase->isEnabled());
        QVERIFY(f.pbar->isEnabled());
        f.progreso().visible(true);
        f.progreso().etiqueta("Importando Pólizas del mes de: Enero");
        f.progreso().maximo(10);
        f.progreso().valor(4);
        f.progreso().cede();
        QCOMPARE(f.lblPbar->text(), QString("Importando Pólizas del mes de: Enero"));
        QCOMPARE(f.pbar->value(), 4);
        GuardaCaptura(&f, "importador_texto_trabajando");
        f.reject();  // the window's close while a run works
        QVERIFY(f.isVisible());
        f.AlternaFormulario();
        QVERIFY(!f.trabajando());
        QVERIFY(f.cmdImportar->isEnabled());
        QVERIFY(f.tboBase->isEnabled());
        QTest::mouseClick(f.cmdCancelar, Qt::LeftButton);
        QVERIFY(!f.isVisible());
    }
};

int main(int argc, char** argv) {
    AjustesAislados ajustes;
    QApplication aplicacion(argc, argv);
    frm082TextoGenericoSeparadoTest prueba;
    return QTest::qExec(&prueba, argc, argv);
}

#include "frm082TextoGenericoSeparadoTest.moc"
