#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"

#include "layouts/Configuraciones.h"
#include "importers/texto_delimitado/DelimitadorArchivo.h"
#include "session/Funciones.h"

namespace velmorant {

bool ImportadorTextoDelimitado::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (lectura_.separador.empty()) {
        MsgAviso(s, "Especifique por favor el caracter separador");
        return false;
    }
    if (!Importador::validaArchivos(s, a)) return false;
    if (unArchivo_ && a.polizas.empty()) {
        MsgAviso(s, "Especifique por favor la ubicación del archivo que contiene las pólizas");
        return false;
    }
    return true;
}

void ImportadorTextoDelimitado::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaCatalogoTexto(s, d, a.catalogo, lectura_, !a.saldosIniciales.empty());
}

void ImportadorTextoDelimitado::ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaSaldosInicialesTexto(s, d, a.saldosIniciales, lectura_);
}

void ImportadorTextoDelimitado::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaPolizasTexto(s, d, a.polizas, lectura_, "Importando el archivo de Pólizas");
}

void ImportadorTextoDelimitado::ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) {
    ImportaPolizasTexto(s, d, ruta, lectura_, "Importando Pólizas del mes de: " + NombreDelMes(mes));
}

void ImportadorTextoDelimitado::ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    ImportaSaldosAnioAntTexto(s, d, ruta, lectura_);
}

std::string SeparadorElegido(const ArchivosImportacion& a) {
    auto separador = a.parametro("separador");
    bool tabulador = a.casilla("tabulador");
    if (separador.has_value() == tabulador)
        throw ParametroInvalido("indique --separador C o --tabulador, uno de los dos");
    if (separador && separador->empty()) throw ParametroInvalido("el separador no puede estar vacío");
    return tabulador ? "\t" : *separador;
}

void VerificaDelimitador(const ArchivosImportacion& a, bool conPolizas) {
    const std::string separador = SeparadorElegido(a);
    // The files the parameter form previews: the chart, the opening
    // balances, the first voucher file, the prior-year file.
    std::vector<std::string> rutas{a.catalogo, a.saldosIniciales, a.saldosAnioAnterior};
    if (conPolizas) {
        std::string primera = a.polizas;
        for (const auto& m : a.meses)
            if (primera.empty()) primera = m;
        rutas.push_back(primera);
    }
    for (const auto& ruta : rutas) {
        if (ruta.empty()) continue;
        long linea = LineaSinDelimitador(ruta, separador);
        if (linea == 0) continue;
        std::string cual = separador == "\t" ? "el tabulador" : "'" + separador + "'";
        throw ParametroInvalido(MensajeArchivoSinDelimitar(ruta) + "\nLa línea " + std::to_string(linea) +
                                " no contiene el separador indicado (" + cual + "); revise --separador o --tabulador.");
    }
}

std::optional<LecturaDelimitada> LecturaDelimitadaElegida(Sesion& s, const ArchivosImportacion& a) {
    LecturaDelimitada lectura;
    lectura.separador = SeparadorElegido(a);
    lectura.Titulos = !a.casilla("sin-titulos");
    auto nombre = a.parametro("configuracion");
    if (!nombre || nombre->empty()) throw ParametroInvalido("indique la configuración de columnas (--configuracion NOMBRE)");
    if (!UsaConfiguracion(s, kEnlaceTextoGenerico, *nombre, lectura.config)) return std::nullopt;
    return lectura;
}

std::vector<ArchivoDescrito> ArchivosCatalogoDelimitado() {
    const std::string filtro = "*.txt|*.txt";
    return {
        {.papel = "catalogo",
         .etiqueta = "Catálogo de cuentas",
         .control = "eloRutaArchCat",
         .boton = "cmdCatalogo",
         .selector = {"Búsqueda del Archivo *.TXT - Catálogo de cuentas", filtro, kClaveCatalogo},
         .faltante = "Especifique por favor el archivo que contiene el Catalogo de cuentas",
         .avisoFaltante = true,
         .focoFaltante = "cmdCancelar"},
        {.papel = "saldos-iniciales",
         .etiqueta = "Saldos iniciales",
         .control = "eloRutaArchSaldosIni",
         .boton = "cmdSaldosIni",
         .selector = {"Búsqueda del Archivo *.TXT - Saldos iniciales", filtro, kClaveSaldosIniciales}},
    };
}

std::vector<CasillaDescrita> CasillasLecturaDelimitada() {
    return {
        {.control = "optTabulacion", .titulo = "Texto separado por Tabuladores", .opcionCli = "tabulador"},
        {.control = "chkTitulos", .titulo = "La primera línea de cada archivo no es de títulos", .opcionCli = "sin-titulos"},
    };
}

std::vector<ParametroDescrito> ParametrosLecturaDelimitada() {
    return {
        {.opcionCli = "separador", .valor = "C", .descripcion = "texto separador de columnas (p. ej. ^, | o ~)",
         .control = "cboSeparador"},
        {.opcionCli = "configuracion", .valor = "NOMBRE",
         .descripcion = "configuración de columnas guardada (ver 'configuracion listar')", .requerido = true},
    };
}

namespace {

// The importer of a run from the command line's choices: the delimiter,
// the title row and the saved layout.
std::unique_ptr<Importador> CreaTextoDelimitado(Sesion& s, const ArchivosImportacion& a) {
    auto lectura = LecturaDelimitadaElegida(s, a);
    if (!lectura) return nullptr;
    return std::make_unique<ImportadorTextoDelimitado>(*lectura, !a.polizas.empty());
}

}  // namespace

DescriptorImportador DescriptorTextoDelimitado() {
    const std::string filtro = "*.txt|*.txt";
    DescriptorImportador d;
    d.IdSistema = kEnlaceTextoGenerico;
    d.titulo = "Texto Generico delimitado por caracter";
    d.tipo = TipoImportacion::MesPorMes;
    d.archivos = ArchivosCatalogoDelimitado();
    d.meses = true;
    d.unArchivo = true;
    d.selectorMes = {"Búsqueda del Archivo de Pólizas del mes de ", filtro, kClavePolizasMes};
    d.anioAnterior = ArchivoDescrito{
        .papel = "saldos-anterior",
        .etiqueta = "Saldos finales año anterior",
        .control = "eloRutaArchSdosFinalesAnioAnt",
        .boton = "cmdSaldosFinAnioAnt",
        .selector = {"Búsqueda del Archivo *.TXT - Saldos finales año anterior", filtro, kClaveSaldosAnioAnterior},
        .faltante = "Especifique por favor el archivo que contiene los saldos finales del año anterior",
        .avisoFaltante = true};
    d.casillas = CasillasLecturaDelimitada();
    d.parametros = ParametrosLecturaDelimitada();
    d.verificaEntradas = [](const ArchivosImportacion& a) { VerificaDelimitador(a, true); };
    d.crea = CreaTextoDelimitado;
    return d;
}

}  // namespace velmorant
