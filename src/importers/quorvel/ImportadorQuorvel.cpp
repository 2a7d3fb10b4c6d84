#include "importers/quorvel/ImportadorQuorvel.h"

#include <tuple>

#include "accounts/CodigosCuenta.h"
#include "importers/FilasTabla.h"
#include "importers/Limpieza.h"
#include "importers/Recorrido.h"
#include "pipeline/AjustesAuditoria.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/Polizas.h"
#include "platform/ErrorLectura.h"
#include "platform/Texto.h"
#include "platform/fuentes/BaseAccess.h"
#include "platform/fuentes/FuenteDbf.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

namespace {

// An account code of these tables through the company's account rules, cut
// to the levels it uses: the chart, its parents and the lines alike.
std::string CuentaQuorvel(Sesion& s, const std::string& texto) {
    std::string cuenta = LimpiaCuenta(s, texto, OrdenLimpieza::SeparadorYRelleno, true);
    if (cuenta.empty()) return cuenta;
    int nivel = CalculaNivelCuenta(s, cuenta, true);
    return nivel > 0 ? CuentaHastaNivel(s, cuenta, nivel) : cuenta;
}

long Cuenta(TablasQuorvel& t, const std::string& sql, const Valor& anio, const Valor& mes = Valor()) {
    Sentencia& c = t.memoria.preparada(sql);
    if (mes.esNulo())
        c.con(anio);
    else
        c.con(anio, mes);
    c.paso();
    return static_cast<long>(c.columna(0).entero());
}

FilasTabla Filas(TablasQuorvel& t, Sentencia& consulta, const std::string& tabla) {
    FilasTabla::Almacenes almacenes;
    if (auto it = t.enteros.find(tabla); it != t.enteros.end())
        for (const auto& campo : it->second) almacenes[campo] = AlmacenColumna::Entero;
    if (auto it = t.decimales.find(tabla); it != t.decimales.end())
        for (const auto& campo : it->second) almacenes[campo] = AlmacenColumna::Diezmilesimas;
    return FilasTabla(consulta, t.ruta(tabla), tabla, std::move(almacenes));
}

// CPOMOVIM: 1 is the debit side.
bool EsCargo(const FilasTabla& f) { return f.entero("CPOMOVIM") == 1; }

const char* const kCondicionPolizas =
    " FROM B2UNIPOL WHERE Year(CPOFECHA) =? and Month(CPOFECHA)<= ? and CPOTIPO <> 'AJ' COLLATE NOCASE and "
    "CPOTIPO <> 'RC' COLLATE NOCASE";
// The query as the system always wrote it runs 'RC' into ORDER; the rows it
// selects are those of both types in the year, whatever their case.
const char* const kCondicionAjustes =
    " FROM B2UNIPOL WHERE Year(CPOFECHA) =? and CPOTIPO COLLATE NOCASE='AJ' or Year(CPOFECHA) =? and "
    "CPOTIPO COLLATE NOCASE='RC'";

}  // namespace

std::string TablasQuorvel::ruta(const std::string& tabla) const {
    auto it = rutas.find(tabla);
    return it == rutas.end() ? "" : it->second;
}

// ------------------------------------------------------------ Readers

void ImportaCatalogoQuorvel(Sesion& s, DestinoTmp& d, TablasQuorvel& t) {
    AvanceLectura avance(s, "Importando Catálogo de Cuentas ...",
                         static_cast<long>(t.memoria.escalar("SELECT COUNT(*) FROM B9CATCUE").entero()));
    Transaccion tr(*s.DbEmpresa);
    FilasTabla f = Filas(t, t.memoria.preparada("SELECT rowid, * FROM B9CATCUE ORDER BY CUENUMERO").con(), "B9CATCUE");
    long n = 0;
    while (f.siguiente()) {
        avance.valor(++n);
        CuentaLeida c;
        c.CuentaSinSeparadores = CuentaQuorvel(s, f.texto("CUENUMERO"));
        if (c.CuentaSinSeparadores.empty()) continue;
        c.Cuenta = FormateaCuenta(s, c.CuentaSinSeparadores);
        c.Descripcion = f.texto("CUEDESCRI");
        std::string padre = CuentaQuorvel(s, f.texto("CUECONTROL"));
        if (!padre.empty()) c.CuentaAcumulativa = padre;
        c.Nivel = static_cast<int>(f.entero("CUENIVEL"));
        if (!f.nulo("CUENATUR")) c.Naturaleza = f.texto("CUENATUR");
        c.Tipo = Mayusculas(f.texto("CUECLASE")) == "A" ? "A" : "D";
        c.Saldo = f.importe("CUESALINI");
        d.agregaCuenta(c);
    }
    tr.confirma();
}

std::vector<std::pair<std::string, Moneda>> ImportaSaldosAnterioresQuorvel(Sesion& s, DestinoTmp& d,
                                                                          TablasQuorvel& t) {
    std::vector<std::pair<std::string, Moneda>> saldos;
    AvanceLectura avance(s, "Verificando Saldos Finales año anterior ...",
                         static_cast<long>(t.memoria.escalar("SELECT COUNT(*) FROM B9SALANT").entero()));
    Transaccion tr(*s.DbEmpresa);
    FilasTabla f = Filas(t, t.memoria.preparada("SELECT rowid, * FROM B9SALANT ORDER BY CUENUMERO").con(), "B9SALANT");
    long n = 0;
    while (f.siguiente()) {
        avance.valor(++n);
        std::string cuenta = CuentaQuorvel(s, f.texto("CUENUMERO"));
        if (cuenta.empty()) continue;
        if (!d.conoceCuenta(cuenta)) {
            RegistraInconsistencia(s,
                                   "La Cuenta " + cuenta +
                                       " no existe, contiene el saldo final del año anterior y será agregará al "
                                       "catalogo actual",
                                   kFuenteCatalogo, "O", "", "", std::nullopt, cuenta);
            CuentaLeida c;
            c.CuentaSinSeparadores = cuenta;
            c.Cuenta = FormateaCuenta(s, cuenta);
            c.Nivel = static_cast<int>(f.entero("CUENIVEL"));
            d.agregaCuenta(c);
        }
        saldos.emplace_back(cuenta, f.importe("CUESALDO12"));
    }
    tr.confirma();
    return saldos;
}

void ImportaPolizasQuorvel(Sesion& s, DestinoTmp& d, TablasQuorvel& t, const OpcionesQuorvel& o) {
    const Valor anio = static_cast<int>(s.EjercicioActual), mes = o.hastaMes;
    AvanceLectura avance(s, "Importando el archivo de Pólizas",
                         Cuenta(t, std::string("SELECT COUNT(*)") + kCondicionPolizas, anio, mes));
    // By type and number a voucher is one, whatever dates its lines bear (it
    // takes its first line's); when it may hold several dates, each date of
    // it is a voucher.
    const std::string orden = o.polizaFechaDiferente ? " ORDER BY CPOFECHA, CPOTIPO, CPONUMERO, rowid"
                                                     : " ORDER BY CPOTIPO, CPONUMERO, rowid";
    Transaccion tr(*s.DbEmpresa);
    FilasTabla f =
        Filas(t, t.memoria.preparada(std::string("SELECT rowid, *") + kCondicionPolizas + orden).con(anio, mes),
              "B2UNIPOL");
    std::optional<std::tuple<std::string, std::string, std::string>> anterior;
    const auto tiposEmpresa = TiposPolizaNormalizados(s);
    long id = 0, n = 0;
    while (f.siguiente()) {
        avance.valor(++n);
        const Fecha fecha = *f.fecha("CPOFECHA");  // the year's test leaves no row without a date
        auto clave = std::make_tuple(o.polizaFechaDiferente ? fecha.iso() : "", f.texto("CPOTIPO"), f.texto("CPONUMERO"));
        if (clave != anterior) {
            PolizaLeida p;
            p.Tipo = std::get<1>(clave);
            if (auto t = tiposEmpresa.find(p.Tipo); t != tiposEmpresa.end()) p.Tipo = t->second;
            p.Poliza = std::get<2>(clave);
            p.Fecha = fecha;
            p.Concepto = f.texto("CPOCONCEP");
            id = d.nuevaPoliza(p);
            anterior = clave;
        }
        PartidaLeida l;
        l.Cuenta = CuentaQuorvel(s, f.texto("CUENUMERO"));
        // Joined by one blank; with one of them empty that blank would end the
        // text, and a re-import's comparison, which trims the new reference,
        // would report the same line as changed on every run.
        l.Referencia = RecortaEspacios(f.texto("CPOREFERE1") + " " + f.texto("CPOREFERE2"));
        l.TipoMov = EsCargo(f) ? "D" : "H";
        l.Importe = f.importe("CPOIMPORTE");
        d.agregaPartida(id, l);
    }
    tr.confirma();
}

void ImportaAjustesQuorvel(Sesion& s, DestinoTmp& d, TablasQuorvel& t) {
    const Valor anio = static_cast<int>(s.EjercicioActual);
    AvanceLectura avance(s, "Importando Ajustes y Reclasificaciones",
                         Cuenta(t, std::string("SELECT COUNT(*)") + kCondicionAjustes, anio, anio));
    Transaccion tr(*s.DbEmpresa);
    FilasTabla f = Filas(
        t, t.memoria.preparada(std::string("SELECT rowid, *") + kCondicionAjustes + "ORDER BY CPOTIPO, CPONUMERO, rowid")
               .con(anio, anio),
        "B2UNIPOL");
    std::optional<std::pair<std::string, std::string>> anterior;
    long id = 0, n = 0;
    while (f.siguiente()) {
        avance.valor(++n);
        auto clave = std::make_pair(Mayusculas(f.texto("CPOTIPO")), f.texto("CPONUMERO"));
        if (clave != anterior) {
            id = d.nuevoAjusteReclasificacion(clave.first);
            anterior = clave;
        }
        LineaAjusteLeida l;
        l.Tipo = clave.first;
        l.AjRc = ValEntero(clave.second);
        l.Concepto = f.texto("CPOCONCEP");
        l.Cuenta = CuentaQuorvel(s, f.texto("CUENUMERO"));
        l.TipoMov = EsCargo(f) ? "C" : "A";
        l.Importe = f.importe("CPOIMPORTE");
        l.Poliza = clave.second;
        l.Fecha = f.fecha("CPOFECHA");
        d.agregaLineaAjuste(id, l);
    }
    tr.confirma();
}

// ------------------------------------------------------------ The importer

ReglasDestino ImportadorQuorvel::reglasDestino() const {
    ReglasDestino r;
    r.avisoCuentaInexistente = ReglasDestino::AvisoCuentaInexistente::CuentaNoExiste;
    return r;
}

bool ImportadorQuorvel::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (!Importador::validaArchivos(s, a)) return false;
    if (opciones_.hastaMes == 0) {
        MsgAviso(s, "Especifique por favor el mes hasta el cual deberá importarse el detalle de pólizas");
        return false;
    }
    return true;
}

template <class F>
void ImportadorQuorvel::lee(Sesion& s, const ArchivosImportacion& a, const std::vector<std::string>& tablas,
                            F&& lector) {
    try {
        TablasQuorvel t;
        for (const auto& tabla : tablas) cargaTabla(t, a, tabla);
        lector(t);
    } catch (const ErrorLectura& e) {
        MsgCritico(s, e.what());
        throw;
    }
}

void ImportadorQuorvel::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    saldosAnteriores_.clear();
    lee(s, a, {"B9CATCUE"}, [&](TablasQuorvel& t) { ImportaCatalogoQuorvel(s, d, t); });
    if (conSaldosAnteriores(a))
        lee(s, a, {"B9SALANT"}, [&](TablasQuorvel& t) { saldosAnteriores_ = ImportaSaldosAnterioresQuorvel(s, d, t); });
}

void ImportadorQuorvel::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    CreaAjYRclTmp(s);
    lee(s, a, {"B2UNIPOL"}, [&](TablasQuorvel& t) {
        ImportaPolizasQuorvel(s, d, t, opciones_);
        ImportaAjustesQuorvel(s, d, t);
    });
}

void ImportadorQuorvel::confirmaPropio(Sesion& s, MomentoConfirmacion momento) {
    if (momento == MomentoConfirmacion::Inicio) {
        GuardaAjustesYReclasificaciones(s);
        return;
    }
    AplicaAjustesACuentas(s);
    if (!saldosAnteriores_.empty()) GuardaSaldosFinalesAnteriores(s, saldosAnteriores_);
    NormalizaTiposPoliza(s);
}

void ImportadorQuorvel4::cargaTabla(TablasQuorvel& t, const ArchivosImportacion& a, const std::string& tabla) {
    const std::string ruta = tabla == "B9CATCUE" ? a.catalogo
                             : tabla == "B9SALANT" ? a.saldosAnioAnterior
                                                   : a.ruta("polizas");
    // The header tells which number fields keep decimals; the loader keeps
    // both kinds as integers.
    const FuenteDbf encabezado(ruta);
    for (const auto& c : encabezado.campos()) {
        const AlmacenColumna almacen = AlmacenCampoDbf(c.tipo, c.decimales);
        if (almacen == AlmacenColumna::Entero) t.enteros[tabla].insert(Mayusculas(c.nombre));
        if (almacen == AlmacenColumna::Diezmilesimas) t.decimales[tabla].insert(Mayusculas(c.nombre));
    }
    CargaTablaDbf(t.memoria, ruta, tabla);
    t.rutas[tabla] = ruta;
}

void ImportadorQuorvel5::cargaTabla(TablasQuorvel& t, const ArchivosImportacion& a, const std::string& tabla) {
    const std::string ruta = a.ruta("base-datos");
    CargaBaseAccess(t.memoria, ruta, {tabla});
    t.rutas[tabla] = ruta;
}

// ------------------------------------------------------------ Descriptors

OpcionesQuorvel OpcionesDe(const ArchivosImportacion& a) {
    OpcionesQuorvel o;
    o.hastaMes = MesHastaElegido(a);
    o.polizaFechaDiferente = a.casilla("poliza-fecha-diferente");
    return o;
}

namespace {

const char* const kMensajeCatalogo = "Especifique por favor el archivo que contiene el catálogo de cuentas";

void AgregaOpciones(DescriptorImportador& d) {
    d.casillas = {{.control = "chkPolizaFechaDiff",
                   .titulo = "Una póliza puede contener movimientos con fechas diferentes",
                   .opcionCli = "poliza-fecha-diferente"}};
    d.parametros = {{.opcionCli = "hasta-mes",
                     .valor = "MM",
                     .descripcion = "Importar el detalle de pólizas hasta el mes",
                     .tipo = ParametroDescrito::Tipo::Mes,
                     .control = "cboMes"}};
}

}  // namespace

DescriptorImportador DescriptorQuorvel4() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceQuorvel4;
    d.titulo = "Quorvel 4.0";
    d.tipo = TipoImportacion::ArchivoUnico;
    d.archivos = {
        {.papel = "catalogo",
         .etiqueta = "Catálogo de cuentas (B9CATCUE.DBF)",
         .control = "eloRutaArchCat",
         .boton = "cmdCatalogo",
         .selector = {"Búsqueda del archivo que contiene el catálogo de cuentas", "B9CATCUE.DBF|B9CATCUE.DBF;",
                      kClaveCatalogo},
         .faltante = kMensajeCatalogo},
        {.papel = "polizas",
         .etiqueta = "Universo de pólizas (B2UNIPOL.DBF)",
         .control = "eloRutaArchPol",
         .boton = "cmdPolizas",
         .selector = {"Búsqueda del archivo que contiene el universo de pólizas", "B2UNIPOL.DBF|B2UNIPOL.DBF;", "DirPol"},
         .faltante = "Especifique por favor la ubicación del archivo que contiene las pólizas"},
        {.papel = "saldos-anterior",
         .etiqueta = "Saldos finales año anterior (B9SALANT.DBF)",
         .control = "eloSdosAnteriorFinal",
         .boton = "cmdSaldosFinAnioAnt",
         .selector = {"Búsqueda del archivo que contiene los saldos finales año anterior",
                      "B9SALANT.DBF|B9SALANT.DBF;", kClaveSaldosAnioAnterior}},
    };
    AgregaOpciones(d);
    d.crea = [](Sesion&, const ArchivosImportacion& a) { return std::make_unique<ImportadorQuorvel4>(OpcionesDe(a)); };
    return d;
}

DescriptorImportador DescriptorQuorvel5() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceQuorvel5;
    d.titulo = "Quorvel 5.0";
    d.tipo = TipoImportacion::ArchivoUnico;
    d.archivos = {{.papel = "base-datos",
                   .etiqueta = "Base de datos de Quorvel (QRV???.MDB)",
                   .control = "eloRutaArchCat",
                   .boton = "cmdCatalogo",
                   .selector = {"Búsqueda del Archivo *.mdb - Base de Datos de la Empresa", "QRV???.MDB|QRV???.MDB",
                                kClaveCatalogo},
                   .faltante = kMensajeCatalogo}};
    AgregaOpciones(d);
    d.crea = [](Sesion&, const ArchivosImportacion& a) { return std::make_unique<ImportadorQuorvel5>(OpcionesDe(a)); };
    return d;
}

}  // namespace velmorant
