#include "layouts/ImportadorTextoDelimitado.h"

#include "layouts/Configuraciones.h"
#include "platform/ArchivoTexto.h"
#include "platform/ErrorLectura.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// What the reading of a file should tell the user (a mixed encoding, NUL
// bytes left out), before its rows are used. A file that cannot be read is
// left for its reader to report.
void AvisaLectura(Sesion& s, const std::string& ruta) {
    if (!ExisteArchivo(ruta)) return;
    try {
        std::string aviso = AvisoLecturaTexto(ruta, AnalizaTexto(ruta));
        if (!aviso.empty()) MsgAviso(s, aviso);
    } catch (const ErrorLectura&) {
    }
}

}  // namespace

bool ImportadorTextoDelimitado::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (lectura_.separador.empty()) {
        MsgAviso(s, "Especifique por favor el caracter separador");
        return false;
    }
    if (a.catalogo.empty()) {
        MsgAviso(s, "Especifique por favor el archivo que contiene el Catalogo de cuentas");
        return false;
    }
    if (unArchivo_ && a.polizas.empty()) {
        MsgAviso(s, "Especifique por favor la ubicación del archivo que contiene las pólizas");
        return false;
    }
    return true;
}

void ImportadorTextoDelimitado::ImportaCatalogo(Sesion& s, const ArchivosImportacion& a) {
    AvisaLectura(s, a.catalogo);
    ImportaCatalogoTexto(s, a.catalogo, lectura_, !a.saldosIniciales.empty());
}

void ImportadorTextoDelimitado::ImportaSaldosIniciales(Sesion& s, const ArchivosImportacion& a) {
    AvisaLectura(s, a.saldosIniciales);
    ImportaSaldosInicialesTexto(s, a.saldosIniciales, lectura_);
}

void ImportadorTextoDelimitado::ImportaPolizas(Sesion& s, const ArchivosImportacion& a) {
    AvisaLectura(s, a.polizas);
    ImportaPolizasTexto(s, a.polizas, lectura_);
}

void ImportadorTextoDelimitado::ImportaPolizasMes(Sesion& s, int, const std::string& ruta) {
    AvisaLectura(s, ruta);
    ImportaPolizasTexto(s, ruta, lectura_);
}

void ImportadorTextoDelimitado::ImportaSaldosAnioAnterior(Sesion& s, const std::string& ruta) {
    AvisaLectura(s, ruta);
    ImportaSaldosAnioAntTexto(s, ruta, lectura_);
}

bool UsaConfiguracionTexto(Sesion& s, const std::string& nombre, LecturaDelimitada& lectura) {
    s.IdSistemaElegido = kEnlaceTextoGenerico;
    IniciaConfiguraciones(s);
    if (!ExisteConfiguracion(s, nombre)) {
        MsgAviso(s, "No se encontro la configuracion actual");
        return false;
    }
    s.DbEmpresa->ejecuta("DELETE FROM Configuraciones WHERE Nombre = ?", nombre);
    if (!CopiaConfiguracion(s, *s.DbConfiguraciones, *s.DbEmpresa, nombre)) return false;
    return CargaConfigEmpresa(s, nombre, lectura.config);
}

}  // namespace velmorant
