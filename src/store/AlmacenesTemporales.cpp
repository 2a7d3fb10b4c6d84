#include "store/AlmacenesTemporales.h"

#include <ctime>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "platform/Ajustes.h"
#include "session/Funciones.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant {

namespace {

using T = TipoCampo;

using namespace campo;

DefTabla CuentasTmp() {
    return {"Cuentas",
            {Texto("Cuenta", 50), Texto("CuentaSinSeparadores", 50), Long("Nivel"), Texto("CuentaAcumulativa", 50),
             Texto("Tipo", 1), Texto("Descripcion", 80), MonedaC("Saldo"), MonedaC("SaldoFinAnioAnt"),
             Texto("Naturaleza", 1), Booleano("Revisado")},
            {{"Cuenta", {"Cuenta"}}, {"CuentaSinSeparadores", {"CuentaSinSeparadores"}}}};
}

DefTabla PolizasTmp(std::vector<std::string> camposIndice) {
    return {kPolizasTmp,
            {Long("IdPoliza"), Texto("Poliza", 20), Texto("Tipo", 10), FechaC("Fecha"), Texto("Concepto", 255),
             Booleano("Poliza_Deshabilitada"), Booleano("Poliza_Mes13"), Booleano("Poliza_Ajuste"),
             Booleano("Cuadrada"), Booleano("Revisado")},
            {{"IdPoliza", std::move(camposIndice)}}};
}

DefTabla PolizasDetalleTmp() {
    return {kPolizasDetalleTmp,
            {Long("IdPoliza"), Texto("Cuenta", 50), Texto("TipoMov", 1), MonedaC("Importe"), Texto("Referencia", 255),
             Integer("Partida")},
            // No index on Cuenta: kept up on every line read, at random
            // places, it cost more than the few look-ups by account it served.
            {{"IdPoliza", {"IdPoliza"}}}};
}

DefTabla InconsisImpTmp() {
    return {kInconsisImpTmp,
            {Texto("Referencia", 150), Texto("FuenteError", 30), Texto("ClasifError", 1), Texto("Poliza", 20),
             Texto("Tipo", 10), FechaC("Fecha"), Texto("Cuenta", 50), Texto("Cuenta_Fmtda", 61)},
            {}};
}

// The fields of a schedule row as CedAnaliticaTmp keeps them; `completa`
// false gives the lost-rows log, which lacks the copy's bookkeeping fields.
std::vector<DefCampo> CamposCedula(bool completa) {
    std::vector<DefCampo> c{Contador("IdCedAnalitica")};
    if (completa) c.push_back(Long("IdCedAnaliticaAnt"));
    for (auto& f : {Long("IdCriterio"), Long("IdPoliza"), Texto("Poliza", 20), Texto("Tipo", 10), FechaC("Fecha"),
                    Texto("Cuenta", 50), Texto("Referencia", 255), Texto("TipoMov", 1), MonedaC("Importe"),
                    Booleano("Modificado"), Texto("RefModificada", 255), Booleano("AplicaIVA"), Byte("PorIVA"),
                    MonedaC("IVA"), Booleano("AplicaRetISR"), Single("TasaRetISR"), MonedaC("ImpteRetISR"),
                    Booleano("AplicaRetIVA"), Single("TasaRetIVA"), MonedaC("ImpteRetIVA")})
        c.push_back(f);
    for (int i = 1; i <= 7; ++i) c.push_back(Texto("Marca" + std::to_string(i), 3));
    c.push_back(Memo("Observaciones"));
    c.push_back(Memo("Sugerencias"));
    if (completa)
        for (auto& f : {Texto("InfoAdd1", 255), Texto("InfoAdd2", 255), Texto("Notas", 255), Byte("VerObs")})
            c.push_back(f);
    c.push_back(Booleano("MovtoExistente"));
    return c;
}

DefTabla InconsisImpTmpDet() { return {kInconsisImpTmpDet, CamposCedula(false), {{"Cuenta", {"Cuenta"}}}}; }
DefTabla CedAnaliticaTmp() { return {kCedAnaliticaTmp, CamposCedula(true), {}}; }
DefTabla UUIDAnaliticaTmp() { return {"UUIDAnaliticaTmp", {Long("IdCedAnalitica"), Texto("UUID", 36)}, {}}; }

DefTabla SeleccionDetalleTmp() {
    return {kSeleccionDetalleTmp,
            {Texto("Cuenta", 50), MonedaC("SaldoFin"), MonedaC("ValAbsSaldoFin"), Texto("Naturaleza", 1),
             Booleano("SaldoContraNat"), Booleano("Seleccionado"), Booleano("ConMovtos")},
            {{"Cuenta", {"Cuenta"}}}};
}

DefTabla SeleccPreviaCtasBalTmp() {
    return {kSeleccPreviaCtasBalTmp,
            {Long("IdCriterio"), Texto("CtaIntegracion", 50), Texto("Cuenta", 50), MonedaC("Saldo"),
             Integer("MesRevision")},
            {{"Cuenta", {"Cuenta"}}}};
}

DefTabla SelecPolizasDetalleTmp() {
    return {kSelecPolizasDetalleTmp,
            {Long("IdPoliza"), Texto("Cuenta", 50), Texto("TipoMov", 1), MonedaC("Importe"), Texto("Referencia", 255),
             MonedaC("ImporteAbs"), Integer("NumMesFechaPol"), Byte("MovRevisado"), Texto("Poliza", 20),
             Texto("Tipo", 10), FechaC("Fecha"), Booleano("SaldoContraNat"), Booleano("MovDeRevision")},
            {}};
}

DefTabla AjYRclTmp() {
    return {kAjYRclTmp,
            {Long("IdAjRc"), Long("AjRc"), Texto("Tipo", 10), Texto("Concepto", 255), Booleano("Estatus"),
             Texto("Cuenta", 40), Texto("TipoMov", 1), MonedaC("Importe")},
            {{"IdAjRc", {"IdAjRc"}}}};
}

// Files that BorraTemporales deletes from the company folder whatever they
// hold: the run's stores and three names no step creates any more.
const char* const kBorradosSiempre[] = {kCuentasTmp,          kPolizasTmp,         kPolizasDetalleTmp,
                                        kCedAnaliticaTmp,     kSeleccionDetalleTmp, "SeleccionMasterTmp",
                                        "PolizaDetalleMovsSelecTmp", "PolizasMovsSelecTmp"};

// Every alias this module may attach to the company connection.
const char* const kAlias[] = {kCuentasTmp,        kPolizasTmp,          kPolizasDetalleTmp,
                              kInconsisImpTmp,    kInconsisImpTmpDet,   kSeleccionDetalleTmp,
                              kSeleccPreviaCtasBalTmp, kCedAnaliticaTmp, kSelecPolizasDetalleTmp};

// The session pointer that stands for a store, or null for a store without one.
BaseDatos** PunteroDe(Sesion& s, const std::string& alias) {
    if (alias == kCuentasTmp) return &s.DbCuentasTmp;
    if (alias == kPolizasTmp) return &s.DbPolizasTmp;
    if (alias == kPolizasDetalleTmp) return &s.DbPolizasDetalleTmp;
    if (alias == kInconsisImpTmp) return &s.DbInconsistencias;
    return nullptr;
}

std::string RutaDeAlias(const Sesion& s, const std::string& alias) {
    return alias == kSelecPolizasDetalleTmp ? RutaSelecPolizasDetalleTmp() : RutaAlmacen(s, alias);
}

bool Adjunto(BaseDatos& db, const std::string& alias) {
    return !db.escalar("SELECT name FROM pragma_database_list WHERE name = ? COLLATE NOCASE", alias).esNulo();
}

// Detaches `alias` when it is attached and the connection is outside a
// transaction. True when the alias is not attached afterwards.
bool SeparaSiPuede(Sesion& s, const std::string& alias) {
    if (!s.DbEmpresa || !Adjunto(*s.DbEmpresa, alias)) return true;
    if (s.DbEmpresa->enTransaccion()) return false;
    s.DbEmpresa->separa(alias);
    return true;
}

// Detaches the stores that were closed inside a transaction: attached, yet
// their session pointer is null.
void SeparaPendientes(Sesion& s) {
    for (const char* alias : kAlias)
        if (BaseDatos** p = PunteroDe(s, alias); p && !*p) SeparaSiPuede(s, alias);
}

void Cierra(Sesion& s, const std::string& alias) {
    if (BaseDatos** p = PunteroDe(s, alias)) *p = nullptr;
    SeparaSiPuede(s, alias);
    SeparaPendientes(s);
}

// Attaches the store under its alias and reads its schema, so that a file
// that is not a store fails here and not in the first step that uses it.
bool Adjunta(Sesion& s, const std::string& alias) {
    if (!s.DbEmpresa) return false;
    SeparaPendientes(s);
    if (!Adjunto(*s.DbEmpresa, alias)) {
        std::string ruta = RutaDeAlias(s, alias);
        if (!ExisteArchivo(ruta)) return false;
        try {
            s.DbEmpresa->adjunta(ruta, alias);
            s.DbEmpresa->escalar("SELECT count(*) FROM \"" + alias + "\".sqlite_schema");
            // A run's store is rebuilt by the next run: waiting for the disk
            // on each of its commits buys nothing. (Not allowed, and not
            // needed, inside an open transaction.)
            // Its pages stay in memory for the run (up to 16 MB each store,
            // taken only as it grows): a year of lines is read back by index
            // several times, and the engine's small default cache would send
            // each of those reads to the file.
            if (!s.DbEmpresa->enTransaccion()) {
                s.DbEmpresa->ejecutaScript("PRAGMA \"" + alias + "\".synchronous=OFF; PRAGMA \"" + alias +
                                           "\".cache_size=-16384");
                // The voucher stores keep their undo in memory: a month's
                // balance marks rewrite every voucher page of the month, and
                // a crash leaves nothing of them worth keeping.
                if (alias == kPolizasTmp || alias == kPolizasDetalleTmp)
                    s.DbEmpresa->ejecutaScript("PRAGMA \"" + alias + "\".journal_mode=MEMORY");
            }
        } catch (const ErrorBaseDatos&) {
            SeparaSiPuede(s, alias);
            return false;
        }
    }
    if (BaseDatos** p = PunteroDe(s, alias)) *p = s.DbEmpresa.get();
    return true;
}

// A store file and the engine's side files: a journal left by a crash must
// not be played back into a new store of the same name. Throws on failure
// unless `callado`.
void BorraArchivoAlmacen(const std::string& ruta, bool callado = false) {
    for (const char* sufijo : {"", "-journal", "-wal", "-shm"}) {
        std::error_code ec;
        std::filesystem::remove(ruta + sufijo, ec);
        if (ec && !callado) throw std::filesystem::filesystem_error("No se pudo borrar", ruta + sufijo, ec);
    }
}

// Deletes an old store and creates it anew with the given tables.
void Recrea(Sesion& s, const std::string& alias, std::initializer_list<const DefTabla*> tablas) {
    if (BaseDatos** p = PunteroDe(s, alias)) *p = nullptr;
    if (!SeparaSiPuede(s, alias))
        throw std::runtime_error("El almacén temporal " + alias +
                                 " está en uso dentro de una transacción y no puede reemplazarse");
    std::string ruta = RutaDeAlias(s, alias);
    BorraArchivoAlmacen(ruta);
    BaseDatos db(ruta, BaseDatos::Modo::Crear);
    // A store that takes a year of rows written in order and read back a
    // month at a time does better on larger pages: fewer pages to split,
    // find and write for the same rows.
    if (alias == kPolizasTmp || alias == kPolizasDetalleTmp) db.ejecutaScript("PRAGMA page_size=16384");
    Transaccion t(db);
    for (const DefTabla* tabla : tablas) CreaTabla(db, *tabla);
    t.confirma();
}

// True when the store's table has no row (or the store has no such table).
// A store that cannot be read counts as holding rows, so it is kept.
bool TablaVacia(const std::string& ruta, const std::string& tabla) {
    try {
        BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
        if (!db.existeTabla(tabla)) return true;
        return db.escalar("SELECT count(*) FROM \"" + tabla + "\"").entero() == 0;
    } catch (const ErrorBaseDatos&) {
        return false;
    }
}

// Counts the rows of a log in the folder `ruta`, by a connection of its own.
bool LogConFilas(const std::string& ruta, const std::string& nombre) {
    std::string archivo = RutaBaseDatos(ConSeparadorFinal(ruta), nombre);
    if (!ExisteArchivo(archivo)) return false;
    BaseDatos db(archivo, BaseDatos::Modo::SoloLectura);
    if (!db.existeTabla(nombre)) return false;
    return db.escalar("SELECT count(*) FROM \"" + nombre + "\"").entero() > 0;
}

}  // namespace

// ------------------------------------------------------------ Descriptions

const DefTabla& TablaCuentasTmp() {
    static const DefTabla t = CuentasTmp();
    return t;
}

const DefTabla& TablaPolizasTmp() {
    static const DefTabla t = PolizasTmp({"IdPoliza"});
    return t;
}

const DefTabla& TablaPolizasTmpPorIdentidad() {
    static const DefTabla t = PolizasTmp({"Poliza", "Tipo", "Fecha"});
    return t;
}

const DefTabla& TablaPolizasDetalleTmp() {
    static const DefTabla t = PolizasDetalleTmp();
    return t;
}

const DefTabla& TablaInconsisImpTmp() {
    static const DefTabla t = InconsisImpTmp();
    return t;
}

const DefTabla& TablaInconsisImpTmpDet() {
    static const DefTabla t = InconsisImpTmpDet();
    return t;
}

const DefTabla& TablaSeleccionDetalleTmp() {
    static const DefTabla t = SeleccionDetalleTmp();
    return t;
}

const DefTabla& TablaSeleccPreviaCtasBalTmp() {
    static const DefTabla t = SeleccPreviaCtasBalTmp();
    return t;
}

const DefTabla& TablaCedAnaliticaTmp() {
    static const DefTabla t = CedAnaliticaTmp();
    return t;
}

const DefTabla& TablaUUIDAnaliticaTmp() {
    static const DefTabla t = UUIDAnaliticaTmp();
    return t;
}

const DefTabla& TablaSelecPolizasDetalleTmp() {
    static const DefTabla t = SelecPolizasDetalleTmp();
    return t;
}

const DefTabla& TablaAjYRclTmp() {
    static const DefTabla t = AjYRclTmp();
    return t;
}

// ------------------------------------------------------------------ Paths

std::string RutaAlmacen(const Sesion& s, const std::string& nombreBase) {
    return RutaBaseDatos(s.RutaEmpresa, nombreBase);
}

std::string RutaSelecPolizasDetalleTmp() { return RutaBaseDatos(CarpetaDatosPrograma(), kSelecPolizasDetalleTmp); }

// --------------------------------------------------------------- Creators

void CreaCuentasTmp(Sesion& s) { Recrea(s, kCuentasTmp, {&TablaCuentasTmp()}); }
void CreaPolizasTmp(Sesion& s) { Recrea(s, kPolizasTmp, {&TablaPolizasTmp()}); }
void CreaPolizasTmpPorIdentidad(Sesion& s) { Recrea(s, kPolizasTmp, {&TablaPolizasTmpPorIdentidad()}); }
void CreaPolizasDetalleTmp(Sesion& s) { Recrea(s, kPolizasDetalleTmp, {&TablaPolizasDetalleTmp()}); }
void CreaInconsisImpTmp(Sesion& s) { Recrea(s, kInconsisImpTmp, {&TablaInconsisImpTmp()}); }
void CreaSeleccionDetalleTmp(Sesion& s) { Recrea(s, kSeleccionDetalleTmp, {&TablaSeleccionDetalleTmp()}); }
void CreaSeleccPreviaCtasBalTmp(Sesion& s) { Recrea(s, kSeleccPreviaCtasBalTmp, {&TablaSeleccPreviaCtasBalTmp()}); }
void CreaSelecPolizasDetalleTmp(Sesion& s) { Recrea(s, kSelecPolizasDetalleTmp, {&TablaSelecPolizasDetalleTmp()}); }
void CreaAjYRclTmp(Sesion& s) { Recrea(s, kAjYRclTmp, {&TablaAjYRclTmp()}); }

void CreaCedAnaliticaTmp(Sesion& s) {
    Recrea(s, kCedAnaliticaTmp, {&TablaCedAnaliticaTmp(), &TablaUUIDAnaliticaTmp()});
}

// The lost-rows log gathers rows over runs: it is created only when missing
// (a file without the table gets the table). One the engine cannot read is
// put aside first, so that it does not block every later run. Errors are
// shown, not thrown.
void CreaInconsisImpTmpDet(Sesion& s) {
    try {
        ApartaAlmacenDanado(s, kInconsisImpTmpDet);
        BaseDatos db(RutaAlmacen(s, kInconsisImpTmpDet), BaseDatos::Modo::Crear);
        CreaTabla(db, TablaInconsisImpTmpDet());
    } catch (const std::exception& e) {
        ReportaError(s, e, true);
    }
}

// ------------------------------------------------------- Damaged stores

namespace {

// Why the engine cannot read the store, or nothing when it can (or when it
// fails for a passing reason: busy, locked, not allowed).
std::optional<std::string> Dano(const std::string& ruta) {
    try {
        BaseDatos db(ruta);
        std::string r = db.escalar("PRAGMA quick_check").texto();
        if (r != "ok") return r;
    } catch (const ErrorBaseDatos& e) {
        if (e.esDano()) return e.mensajeMotor();
    }
    return std::nullopt;
}

// "AAAAMMDD_HHMMSS" of the present moment.
std::string Sello() {
    std::time_t t = std::time(nullptr);
    std::tm local{};
    localtime_r(&t, &local);
    char b[32];
    std::strftime(b, sizeof b, "%Y%m%d_%H%M%S", &local);
    return b;
}

}  // namespace

std::string ApartaAlmacenDanado(Sesion& s, const std::string& nombreBase) {
    const std::string ruta = RutaDeAlias(s, nombreBase);
    if (!ExisteArchivo(ruta)) return "";
    auto motivo = Dano(ruta);
    if (!motivo) return "";
    std::string apartado;
    for (int n = 1; apartado.empty() || ExisteArchivo(apartado); ++n)
        apartado = RutaBaseDatos(CarpetaDeArchivo(ruta),
                                 nombreBase + "_danado_" + Sello() + (n > 1 ? "_" + std::to_string(n) : ""));
    std::filesystem::rename(ruta, apartado);
    // Its journal goes with it: played back into a new store of the old
    // name, it would damage that one too.
    std::error_code ec;
    if (std::filesystem::exists(ruta + "-journal", ec)) std::filesystem::rename(ruta + "-journal", apartado + "-journal", ec);
    MsgAviso(s, "La Base temporal " + nombreBase + " está dañada y no se pudo abrir (" + *motivo +
                    ").\r\nSe guardó aparte como " + NombreDeArchivo(apartado) + " y se creará de nuevo.");
    return apartado;
}

// ----------------------------------------------------------- Open, close

bool AbreAlmacen(Sesion& s, const std::string& nombreBase) { return Adjunta(s, nombreBase); }
void CierraAlmacen(Sesion& s, const std::string& nombreBase) { Cierra(s, nombreBase); }

bool AbreCuentasTmp(Sesion& s) { return Adjunta(s, kCuentasTmp); }
void CierraCuentasTmp(Sesion& s) { Cierra(s, kCuentasTmp); }

bool AbrePolizasTmp(Sesion& s) {
    if (!Adjunta(s, kPolizasTmp)) return false;
    if (Adjunta(s, kPolizasDetalleTmp)) return true;
    Cierra(s, kPolizasTmp);
    return false;
}

void CierraPolizasTmp(Sesion& s) {
    Cierra(s, kPolizasTmp);
    Cierra(s, kPolizasDetalleTmp);
}

bool AbreInconsistencias(Sesion& s) { return Adjunta(s, kInconsisImpTmp); }
void CierraInconsistencias(Sesion& s) { Cierra(s, kInconsisImpTmp); }

bool HayInconsistencias(const std::string& ruta) { return LogConFilas(ruta, kInconsisImpTmp); }
bool HayInconsistenciasDet(const std::string& ruta) { return LogConFilas(ruta, kInconsisImpTmpDet); }

// --------------------------------------------------------------- Deletion

void BorraTemporales(Sesion& s) {
    for (const char* alias : kAlias) {
        if (BaseDatos** p = PunteroDe(s, alias)) *p = nullptr;
        SeparaSiPuede(s, alias);
    }
    // A store still attached (the connection is inside a transaction) stays.
    auto borra = [&](const std::string& alias, const std::string& ruta) {
        if (s.DbEmpresa && Adjunto(*s.DbEmpresa, alias)) return;
        if (ExisteArchivo(ruta)) BorraArchivoAlmacen(ruta, true);
    };
    if (!s.RutaEmpresa.empty()) {
        for (const char* nombre : kBorradosSiempre) borra(nombre, RutaAlmacen(s, nombre));
        for (const char* log : {kInconsisImpTmp, kInconsisImpTmpDet}) {
            std::string ruta = RutaAlmacen(s, log);
            if (ExisteArchivo(ruta) && TablaVacia(ruta, log)) borra(log, ruta);
        }
    }
    borra(kSelecPolizasDetalleTmp, RutaSelecPolizasDetalleTmp());
}

}  // namespace velmorant
