#include "importers/texto_fijo/ImportadorTextoFijo.h"

#include "layouts/Configuraciones.h"

namespace velmorant {

void ImportadorTextoFijo::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaCatalogoFijo(s, d, a.catalogo, config_);
}

void ImportadorTextoFijo::ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) {
    ImportaPolizasFijo(s, d, ruta, config_, "Importando Pólizas del mes de: " + NombreDelMes(mes));
}

namespace {

// The importer of a run from the command line's choices: the saved layout.
std::unique_ptr<Importador> CreaTextoFijo(Sesion& s, const ArchivosImportacion& a) {
    auto nombre = a.parametro("configuracion");
    if (!nombre || nombre->empty())
        throw ParametroInvalido("indique la configuración de posiciones (--configuracion NOMBRE)");
    EstructuraDatosTxt config;
    if (!UsaConfiguracion(s, kEnlaceTxtPersonalizado, *nombre, config)) return nullptr;
    return std::make_unique<ImportadorTextoFijo>(config);
}

}  // namespace

DescriptorImportador DescriptorTextoFijo() {
    const std::string filtro = "*.txt|*.txt";
    DescriptorImportador d;
    d.IdSistema = kEnlaceTxtPersonalizado;
    d.titulo = "Importar texto personalizado";
    d.tipo = TipoImportacion::MesPorMes;
    d.archivos = {
        {.papel = "catalogo",
         .etiqueta = "Catálogo de cuentas",
         .control = "eloRutaArchCat",
         .boton = "cmdCatalogo",
         .selector = {"Búsqueda del Archivo *.TXT - Catálogo de cuentas", filtro, kClaveCatalogo},
         .faltante = "Especifique por favor la ubicación del archivo que contiene el catálogo de cuentas",
         .avisoFaltante = true},
    };
    d.meses = true;
    d.selectorMes = {"Búsqueda del Archivo de Pólizas del mes de ", filtro, kClavePolizasMes};
    d.parametros = {
        {.opcionCli = "configuracion", .valor = "NOMBRE",
         .descripcion = "configuración de posiciones guardada (ver 'configuracion listar --enlace 25')",
         .requerido = true,
         .control = "cboConfiguraciones"},
    };
    d.crea = CreaTextoFijo;
    return d;
}

}  // namespace velmorant
