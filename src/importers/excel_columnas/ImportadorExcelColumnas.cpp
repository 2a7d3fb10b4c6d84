#include "importers/excel_columnas/ImportadorExcelColumnas.h"

#include "layouts/Configuraciones.h"
#include "session/Funciones.h"

namespace velmorant {

bool ImportadorExcelColumnas::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (!Importador::validaArchivos(s, a)) return false;
    if (unArchivo_ && a.polizas.empty()) {
        MsgAviso(s, "Especifique por favor la ubicación del archivo que contiene las pólizas");
        return false;
    }
    return true;
}

void ImportadorExcelColumnas::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaCatalogoExcel(s, d, a.catalogo, lectura_, !a.saldosIniciales.empty());
}

void ImportadorExcelColumnas::ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaSaldosInicialesExcel(s, d, a.saldosIniciales, lectura_);
}

void ImportadorExcelColumnas::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaPolizasExcel(s, d, a.polizas, lectura_, 0, "Importando el archivo de Pólizas");
    // The closing vouchers keep a file of their own beside the year's.
    if (const std::string& mes13 = a.meses[12]; !mes13.empty()) ImportaPolizasMes(s, d, 13, mes13);
}

void ImportadorExcelColumnas::ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) {
    ImportaPolizasExcel(s, d, ruta, lectura_, mes, "Importando Pólizas del Mes " + NombreMesExcel(mes) + " ...");
}

void ImportadorExcelColumnas::ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    ImportaSaldosAnioAntExcel(s, d, ruta, lectura_);
}

std::optional<LecturaExcel> LecturaExcelElegida(Sesion& s, const ArchivosImportacion& a) {
    LecturaExcel lectura;
    lectura.Titulos = !a.casilla("sin-titulos");
    auto nombre = a.parametro("configuracion");
    if (!nombre || nombre->empty()) throw ParametroInvalido("indique la configuración de columnas (--configuracion NOMBRE)");
    if (!UsaConfiguracion(s, kEnlaceExcelGenerico, *nombre, lectura.config)) return std::nullopt;
    return lectura;
}

namespace {

std::unique_ptr<Importador> CreaExcelColumnas(Sesion& s, const ArchivosImportacion& a) {
    auto lectura = LecturaExcelElegida(s, a);
    if (!lectura) return nullptr;
    return std::make_unique<ImportadorExcelColumnas>(*lectura, !a.polizas.empty());
}

}  // namespace

DescriptorImportador DescriptorExcelColumnas() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceExcelGenerico;
    d.titulo = "Excel Genérico por Columnas";
    d.tipo = TipoImportacion::MesPorMes;
    // The pickers are those of the delimited importer, filtered for workbooks.
    d.archivos = {
        {.papel = "catalogo",
         .etiqueta = "Catálogo de cuentas",
         .control = "eloRutaArchCat",
         .boton = "cmdCatalogo",
         .selector = {"Búsqueda del Archivo *.TXT - Catálogo de cuentas", kFiltroExcel, kClaveCatalogo},
         .faltante = "Especifique por favor el archivo que contiene el Catalogo de cuentas",
         .avisoFaltante = true,
         .focoFaltante = "cmdCancelar"},
        {.papel = "saldos-iniciales",
         .etiqueta = "Saldos iniciales",
         .control = "eloRutaArchSaldosIni",
         .boton = "cmdSaldosIni",
         .selector = {"Búsqueda del Archivo *.TXT - Saldos iniciales", kFiltroExcel, kClaveSaldosIniciales}},
    };
    d.meses = true;
    d.mes13 = true;
    d.unArchivo = true;
    d.selectorMes = {"Búsqueda del Archivo de Pólizas del mes de ", kFiltroExcel, kClavePolizasMes};
    d.anioAnterior = ArchivoDescrito{
        .papel = "saldos-anterior",
        .etiqueta = "Saldos finales año anterior",
        .control = "eloRutaArchSdosFinalesAnioAnt",
        .boton = "cmdSaldosFinAnioAnt",
        .selector = {"Búsqueda del Archivo *.TXT - Saldos finales año anterior", kFiltroExcel, kClaveSaldosAnioAnterior},
        .faltante = "Especifique por favor el archivo que contiene los saldos finales del año anterior",
        .avisoFaltante = true};
    d.casillas = {{.control = "chkTitulos",
                   .titulo = "La primera fila de datos del catálogo y de los saldos no es de títulos",
                   .opcionCli = "sin-titulos"}};
    d.parametros = {{.opcionCli = "configuracion", .valor = "NOMBRE",
                     .descripcion = "configuración de columnas guardada (ver 'configuracion listar')", .requerido = true}};
    d.crea = CreaExcelColumnas;
    return d;
}

}  // namespace velmorant
