#pragma once
// Support of the form tests: a base with one company and a catalogue of
// links, the audit product's settings pointing at it, a session started on
// it with a scripted interaction, and a way to answer the modal forms that
// the widgets open.

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QTimer>
#include <QtTest>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>

#include "app/RegistroFormularios.h"
#include "app/frm000ImportadorDescrito.h"
#include "platform/Ajustes.h"
#include "session/Enlaces.h"
#include "session/Inicio.h"
#include "store/AltaBase.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"
// Each form test is one executable of one source: the scripted interaction
// of the core tests is compiled into it here.
#include "support/Entorno.cpp"

namespace velmorant::prueba {

/// The scripted interaction, recording also the folder of each dialog.
class GuionQt : public InteraccionGuionada {
public:
    std::string eligeArchivoEn(const std::string& filtro, const std::string& titulo,
                               const std::string& carpeta) override {
        carpetas.push_back(carpeta);
        titulos.push_back(titulo);
        return eligeArchivo(filtro, titulo);
    }
    std::vector<std::string> carpetas, titulos;
};

/// Company ACME (2023) in a fresh base, links 36, 82, 95 released, and a
/// session started on it.
class Escenario {
public:
    Escenario() {
        base = CreaBase(dir.texto() + "base");
        DatosEmpresaNueva d;
        d.nombreCorto = "ACME";
        d.nombre = "Comercializadora Acme, S.A. de C.V.";
        d.ejercicio = 2023;
        d.formatoCta = "9999-99-99";
        d.separador = "-";
        d.niveles = {4, 2, 2};
        CreaEmpresa(base, d);
        GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "RutaAcceso", base);
        GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "EmpresaActual_NombreCorto", "ACME");
        GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "EmpresaActual_Ejercicio", "2023");
        Enlaces({{36, "ContPAQ i", true, true},
                 {95, "ContPAQ i - Mejorado", true, true},
                 {82, "Texto Generico delimitado por caracter", true, true},
                 {22, "Sistema propio de despacho 22", true, false},
                 {20, "Softex", false, true}});
        sesion.interaccion = &ui;
        IniciaSesion(sesion);
    }

    /// Replaces the rows of the link catalogue.
    void Enlaces(const std::vector<Enlace>& enlaces) {
        BaseDatos catalogo(RutaBaseDatos(base, kArchivoEnlaces));
        catalogo.ejecuta("DELETE FROM Enlaces");
        for (const auto& e : enlaces)
            catalogo.ejecuta("INSERT INTO Enlaces (IdSistema, Descripcion, Liberado, Comercial) VALUES (?, ?, ?, ?)",
                             e.IdSistema, e.Descripcion, e.Liberado, e.Comercial);
    }

    /// The company's row says it was last imported through `idSistema`.
    void ImportadaCon(int idSistema) {
        sesion.DbEmpresas->ejecuta("UPDATE Empresas SET IdSistema=? WHERE IdEmpresa=?", idSistema,
                                   sesion.IdEmpresaActual);
    }

    /// A text file under the scenario's folder; returns its path.
    std::string Archivo(const std::string& relativo, const std::string& contenido = "x\n") {
        auto ruta = dir.ruta() / relativo;
        std::filesystem::create_directories(ruta.parent_path());
        std::ofstream(ruta) << contenido;
        return ruta.string();
    }

    CarpetaTemporal dir;
    std::string base;
    GuionQt ui;
    Sesion sesion;
};

/// Runs `accion` on the next modal dialog as soon as it shows (only one
/// of that object name, when given), from inside its event loop: to press
/// its buttons or close it.
inline void AlAbrirseModal(std::function<void(QDialog*)> accion, const QString& nombre = {}) {
    auto* espera = new QTimer;
    espera->setInterval(10);
    QObject::connect(espera, &QTimer::timeout, [espera, accion, nombre] {
        auto* modal = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!modal || !modal->isVisible()) return;
        if (!nombre.isEmpty() && modal->objectName() != nombre) return;
        espera->stop();
        espera->deleteLater();
        accion(modal);
    });
    espera->start();
}

/// Saves a picture of the form in the build tree, beside the test program.
inline void GuardaCaptura(QWidget* forma, const QString& nombre) {
    QDir carpeta(QCoreApplication::applicationDirPath() + "/capturas");
    carpeta.mkpath(".");
    forma->grab().save(carpeta.filePath(nombre + ".png"));
}

/// The generic form of link `enlace`, as the register makes it; null when
/// the link has a form of its own.
inline std::unique_ptr<app::frm000ImportadorDescrito> FormaDescrita(Escenario& e, int enlace) {
    auto f = app::CreaFormularioImportador(enlace, e.sesion, nullptr);
    auto* descrito = dynamic_cast<app::frm000ImportadorDescrito*>(f.get());
    if (!descrito) return nullptr;
    f.release();
    return std::unique_ptr<app::frm000ImportadorDescrito>(descrito);
}

/// Texts of the messages shown, in order.
inline QStringList Textos(const InteraccionGuionada& ui) {
    QStringList r;
    for (const auto& m : ui.mensajes) r << QString::fromStdString(m.texto);
    return r;
}

}  // namespace velmorant::prueba
