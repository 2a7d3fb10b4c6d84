#include "pipeline/Importacion.h"

#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "accounts/CodigosCuenta.h"
#include "accounts/Jerarquia.h"
#include "importers/DestinoTmp.h"
#include "importers/Marco.h"
#include "pipeline/Balanza.h"
#include "pipeline/Catalogo.h"
#include "pipeline/Comparacion.h"
#include "pipeline/Historial.h"
#include "pipeline/MesesPolizas.h"
#include "pipeline/Polizas.h"
#include "pipeline/ReportesDecisiones.h"
#include "review/CedulaAnalitica.h"
#include "review/SeleccionCuentas.h"
#include "review/SeleccionMovimientos.h"
#include "platform/Ajustes.h"
#include "platform/ErrorLectura.h"
#include "platform/PuntoPrueba.h"
#include "session/CausaError.h"
#include "session/Funciones.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant {

namespace {

// The company table is attached to the company connection for the commit,
// so that its writes and the company's share one atomic transaction.
constexpr const char* kAliasEmpresas = kAliasEmpresasRun;


// Detaches the company table when the commit attached it.
void SeparaEmpresas(BaseDatos& db) {
    if (!db.escalar("SELECT name FROM pragma_database_list WHERE name = ?", kAliasEmpresas).esNulo())
        db.separa(kAliasEmpresas);
}

// With VELMORANT_TIEMPOS set, the time each step took, summed over the
// months, is printed on standard error when the run ends: the profile of a
// run by its own steps, for the benchmarks and for a slow client's year.
class TiemposDePasos {
public:
    using Reloj = std::chrono::steady_clock;
    TiemposDePasos() : activo_(std::getenv("VELMORANT_TIEMPOS") != nullptr), fin_(Reloj::now()) {}
    ~TiemposDePasos() {
        if (!activo_) return;
        suma_["(después del último paso)"] += Segundos(fin_, Reloj::now());
        for (const auto& [nombre, segundos] : suma_) std::fprintf(stderr, "%8.3f s  %s\n", segundos, nombre.c_str());
    }
    // The time between two steps goes to the step after it, as "(antes de
    // X)": the run's own work outside the steps shows where it is.
    template <class F>
    void mide(const std::string& nombre, F&& f) {
        if (!activo_) return f();
        const std::string paso = SinMes(nombre);
        const auto inicio = Reloj::now();
        suma_["(antes de " + paso + ")"] += Segundos(fin_, inicio);
        f();
        fin_ = Reloj::now();
        suma_[paso] += Segundos(inicio, fin_);
    }

private:
    bool activo_;
    Reloj::time_point fin_;
    std::map<std::string, double> suma_;
    static double Segundos(Reloj::time_point desde, Reloj::time_point hasta) {
        return std::chrono::duration<double>(hasta - desde).count();
    }
    static std::string SinMes(const std::string& nombre) {
        const auto corte = nombre.find_last_of(' ');
        const bool mes = corte != std::string::npos && nombre.size() - corte == 3 &&
                         std::isdigit(static_cast<unsigned char>(nombre[corte + 1]));
        return mes ? nombre.substr(0, corte) : nombre;
    }
};

// One run: its session, its importer and the name of the step in hand, so
// that a failure can say where it happened.
class Corrida {
public:
    Corrida(Sesion& s, Importador& imp, const OpcionesEjecucion& op, HistorialCorrida* hist = nullptr)
        : s_(s), imp_(imp), op_(op), hist_(hist) {
        if (!s_.progreso) s_.progreso = &mudo_;
        CarpetaPuntoPrueba(s_.RutaBase);
        FasePuntoPrueba('A');
    }
    ~Corrida() {
        if (s_.progreso == &mudo_) s_.progreso = nullptr;
    }

    ResultadoImportacion importa(const ArchivosImportacion& a);
    ResultadoImportacion saldosAnioAnterior(const std::string& ruta);

private:
    Sesion& s_;
    Importador& imp_;
    const OpcionesEjecucion& op_;
    HistorialCorrida* hist_;  // the run's history: counts, backup, its row
    ProgresoMudo mudo_;
    std::string paso_;
    TiemposDePasos tiempos_;
    // The one writer of the run's stores, from the first reader to the last.
    std::unique_ptr<DestinoTmp> destino_;

    Progreso& barra() { return *s_.progreso; }

    template <class F>
    void paso(const std::string& nombre, F&& f) {
        paso_ = nombre;
        PuntoPrueba(nombre);
        if (op_.antesDePaso) op_.antesDePaso(nombre);
        tiempos_.mide(nombre, f);
        barra().cede();
    }

    bool validaArchivos(const ArchivosImportacion& a);
    void abreInconsistencias();
    void abrePolizasTmp();
    void leeFuentes(const ArchivosImportacion& a);
    template <class F>
    void leeOTermina(F&& f);
    void leePolizas(const ArchivosImportacion& a);
    void comparaMes(int mes);
    bool llegaADiciembre();
    bool decideContinuar();
    void confirmaImportacion();
    void reconstruyeRevision();
    void preparaAlmacenesRevision();
    void confirmaSaldosAnioAnterior();
    ResultadoImportacion termina();
    void cierraAlmacenes();
    template <class F>
    bool enTransaccion(F&& f);
};

// A company file with damaged pages is not imported into, nor written at
// all: the commit could write over the pages still readable, and the copy
// taken before the run would be as damaged. The engine's quick check reads
// every page once.
void VerificaIntegridad(Sesion& s) {
    BaseDatos& db = *s.DbEmpresa;
    std::string resultado;
    try {
        resultado = db.escalar("PRAGMA quick_check(1)").texto();
    } catch (const ErrorBaseDatos& e) {
        if (!e.esDano()) throw;
        resultado = e.mensajeMotor();
    }
    if (resultado == "ok") return;
    const std::string texto = "La base de datos de la empresa " + db.ruta().string() + " está dañada (" + resultado +
                              ").\r\nNo se importó nada; restáurela de su respaldo antes de importar.";
    MsgCritico(s, texto);
    throw ProgramaTerminado(texto);
}

// Phase A's stores: the fresh log, the lost-rows log kept across runs.
void Corrida::abreInconsistencias() {
    CreaInconsisImpTmp(s_);
    bool abierta = AbreInconsistencias(s_);
    CreaInconsisImpTmpDet(s_);
    if (!abierta) {
        const std::string texto = "No fue posible abrir la Base temporal de Inconsistencias";
        MsgCritico(s_, texto);
        throw ProgramaTerminado(texto);
    }
}

void Corrida::abrePolizasTmp() {
    CreaPolizasTmp(s_);
    CreaPolizasDetalleTmp(s_);
    if (!AbrePolizasTmp(s_)) {
        const std::string texto = "No fue posible abrir las Bases temporales de pólizas";
        MsgCritico(s_, texto);
        throw ProgramaTerminado(texto);
    }
}

bool Corrida::validaArchivos(const ArchivosImportacion& a) {
    if (!imp_.validaArchivos(s_, a)) return false;
    if (imp_.tipo() == TipoImportacion::MesPorMes) return CompletaSeleccionArchivos(s_, a.meses);
    return true;
}

void Corrida::comparaMes(int mes) {
    const std::string m = DosDigitos(mes);
    paso("VerificaCuadrePolizas " + m, [&] { VerificaCuadrePolizas(s_, m); });
    paso("ComparaPolizas " + m, [&] { ComparaPolizas(s_, m); });
    paso("ComparaPolizasNuevas " + m, [&] { ComparaPolizasNuevas(s_, m); });
    paso("ComparaPartidasNuevas " + m, [&] { ComparaPartidasNuevas(s_, m); });
}

// The closing month has a turn of its own in the checks, after December's:
// its vouchers bear a December date, and only the turn of "13" checks their
// balance and pairs them with the company's by number, type and flag. The
// turn comes whenever the new vouchers reach December, with or without
// closing vouchers of their own, so that closing vouchers the company has
// and the source no longer brings are reported as dropped. The commit needs
// no such turn: December's takes the closing vouchers with it.
bool Corrida::llegaADiciembre() { return MesesConPolizasTmp(*s_.DbEmpresa) >= 12; }

void Corrida::leePolizas(const ArchivosImportacion& a) {
    if (imp_.tipo() == TipoImportacion::ArchivoUnico) {
        paso("ImportaPolizas", [&] { imp_.ImportaPolizas(s_, *destino_, a); });
        s_.UltimoMesNuevo = static_cast<std::int16_t>(MesesConPolizasTmp(*s_.DbEmpresa));
        for (int mes = 1; mes <= s_.UltimoMesNuevo; ++mes) comparaMes(mes);
        if (llegaADiciembre()) comparaMes(13);
        return;
    }
    for (int mes = 1; mes <= 13; ++mes) {
        const std::string& ruta = a.meses[static_cast<size_t>(mes - 1)];
        if (ruta.empty()) {
            if (mes == 13 && llegaADiciembre()) comparaMes(13);
            continue;
        }
        barra().visible(true);
        paso("ImportaPolizasMes " + DosDigitos(mes), [&] { imp_.ImportaPolizasMes(s_, *destino_, mes, ruta); });
        comparaMes(mes);
        GuardaAjuste(kAplicacionPropia, kSeccionConfiguracion, "VerPolizas", std::to_string(mes));
    }
    s_.UltimoMesNuevo = static_cast<std::int16_t>(MesesConPolizasTmp(*s_.DbEmpresa));
}

// Phase A up to the vouchers. A source that cannot be read ends the
// program after its message; nothing of the company has changed then.
void Corrida::leeFuentes(const ArchivosImportacion& a) {
    leeOTermina([&] {
        s_.EtapaSaldos = "AÑO ANTERIOR FINAL";
        CreaCuentasTmp(s_);
        AbreCuentasTmp(s_);
        destino_ = std::make_unique<DestinoTmp>(s_, imp_.reglasDestino());
        barra().visible(true);
        paso("ImportaCatalogo", [&] { imp_.ImportaCatalogo(s_, *destino_, a); });
        if (imp_.saldosInicialesAparte() && !a.saldosIniciales.empty())
            paso("ImportaSaldosIniciales", [&] { imp_.ImportaSaldosIniciales(s_, *destino_, a); });
        paso("ComparaCatalogo", [&] { ComparaCatalogo(s_, barra()); });
        paso("RegistraCuentasNuevas", [&] { RegistraCuentasNuevas(s_, barra()); });
        abrePolizasTmp();
        leePolizas(a);
    });
}

// Runs phase A's reading. A reader that cannot read its file has shown its
// messages already (ErrorLectura); any other engine error is reported here.
// Either way the program ends, with nothing of the company changed.
template <class F>
void Corrida::leeOTermina(F&& f) {
    try {
        f();
    } catch (const ProgramaTerminado&) {
        throw;
    } catch (const ErrorLectura& e) {
        throw ProgramaTerminado(e.what());
    } catch (const std::exception& e) {
        ReportaError(s_, e, true);
        throw ProgramaTerminado(std::string("Falló el paso ") + paso_ + ": " + CausaDelError(e) + e.what());
    }
}

bool Corrida::decideContinuar() {
    if (!HayInconsistencias(s_.RutaEmpresa)) {
        s_.ContinuaImportacion = true;
        return true;
    }
    barra().visible(false);
    MuestraMsgInconsistencias(s_);  // a cancel there ends the program
    return s_.ContinuaImportacion;
}

void Corrida::cierraAlmacenes() {
    CierraCuentasTmp(s_);
    CierraPolizasTmp(s_);
}

// Runs `f` inside one transaction over the company database with the
// company table attached. A failure rolls everything back and says which
// step failed; the result is false then.
template <class F>
bool Corrida::enTransaccion(F&& f) {
    BaseDatos& db = *s_.DbEmpresa;
    bool hecho = false;
    try {
        // The opening has names of its own, so that a failure there (the
        // company locked by another program) is not put on the step before.
        paso_ = "adjuntar Empresas";
        db.adjunta(RutaBaseDatos(s_.RutaBase, kArchivoEmpresas), kAliasEmpresas);
        paso_ = "inicio de la transacción";
        Transaccion t(db);
        f();
        if (hist_) hist_->confirma();
        paso_ = "confirmación";
        PuntoPrueba(paso_);
        if (op_.antesDePaso) op_.antesDePaso(paso_);
        t.confirma();
        FasePuntoPrueba('F');
        PuntoPrueba("confirmada");
        hecho = true;
    } catch (const ProgramaTerminado&) {
        SeparaEmpresas(db);
        throw;
    } catch (const std::exception& e) {
        if (hist_) hist_->falla(paso_, e.what());
        barra().visible(false);
        MsgCritico(s_, "La importación no se completó: falló el paso " + paso_ + ".\r\n" + CausaDelError(e) + e.what() +
                           "\r\nLa información de la empresa quedó como estaba antes de la importación.");
    }
    cierraAlmacenes();
    SeparaEmpresas(db);
    return hecho;
}

// Phases B and C.
void Corrida::confirmaImportacion() {
    FasePuntoPrueba('B');
    BaseDatos& db = *s_.DbEmpresa;
    paso("IdSistema", [&] {
        db.ejecuta("UPDATE Empresas SET IdSistema=? WHERE IdEmpresa=?", imp_.idSistema(), s_.IdEmpresaActual);
    });
    paso("ActualizaMesesRevision", [&] { ActualizaMesesRevision(s_, s_.UltimoMesNuevo); });
    paso("LeeMesesRevision", [&] { LeeMesesRevision(s_); });
    barra().visible(true);
    paso("confirmación propia del importador (inicio)",
         [&] { imp_.confirmaPropio(s_, MomentoConfirmacion::Inicio); });
    paso("DepuraCatalogo", [&] { DepuraCatalogo(s_, barra()); });
    paso("GuardaCatalogo", [&] { GuardaCatalogo(s_, barra()); });
    paso("DeterminaCuentasAcumulativas", [&] { DeterminaCuentasAcumulativas(s_, barra()); });
    paso("DeterminaTipoCuentas", [&] { DeterminaTipoCuentas(s_, barra()); });
    paso("GuardaSaldoInicial", [&] { GuardaSaldoInicial(s_, barra()); });
    CierraCuentasTmp(s_);
    // The new voucher types are the company's only once the run commits: a
    // run refused or cancelled in phase A leaves the catalogue as it was.
    paso("RegistraTiposPoliza", [&] { RegistraTiposPoliza(s_); });
    paso("Polizas", [&] {
        db.ejecuta("DELETE FROM Polizas");
        db.ejecuta("DELETE FROM Polizas_Detalle");
    });
    // Month 13 has no turn here: its vouchers are stored, checked and
    // posted (to C13 and A13) in December's.
    for (int mes = 1; mes <= s_.UltimoMesNuevo; ++mes) {
        const std::string m = DosDigitos(mes);
        paso("GuardaPolizas " + m, [&] { GuardaPolizas(s_, m); });
        paso("VerificaConsistenciaPolizas " + m, [&] { VerificaConsistenciaPolizas(s_, m); });
        paso("AplicaPolizasABalanza " + m, [&] { AplicaPolizasABalanza(s_, m); });
        paso("ObtieneSaldosBalanza " + m, [&] { ObtieneSaldosBalanza(s_, m); });
    }
    CierraPolizasTmp(s_);
    paso("CalculaSaldosFinales", [&] { CalculaSaldosFinales(s_); });
    paso("CalculaSaldosEtapas", [&] { CalculaSaldosEtapas(s_); });
    paso("confirmación propia del importador (etapas)",
         [&] { imp_.confirmaPropio(s_, MomentoConfirmacion::Etapas); });
    if (s_.UltimoMesImportado > 0) reconstruyeRevision();
    barra().visible(false);
}

// Phase C: the auditor's review work, rebuilt on the new vouchers and
// balances, in the order the selections depend on each other.
void Corrida::reconstruyeRevision() {
    FasePuntoPrueba('C');
    paso("ActualizaTotalCtaSeleccion", [&] { ActualizaTotalCtaSeleccion(s_, s_.UltimoMesNuevo); });
    paso("ActualizaTotalCtaAnalitica", [&] { ActualizaTotalCtaAnalitica(s_, s_.UltimoMesImportado); });
    paso("ReconstruyeCedulaAnalitica", [&] { ReconstruyeCedulaAnalitica(s_); });
    paso("ReintegraNoDeducibles", [&] { ReintegraNoDeducibles(s_); });
    paso("ReconstruyeSeleccionCuentas", [&] { ReconstruyeSeleccionesDeRevision(s_); });
}

// The work stores of phase C are files of their own: they are created and
// attached before the commit's transaction, which cannot attach a file.
void Corrida::preparaAlmacenesRevision() {
    if (s_.UltimoMesImportado == 0) return;
    PreparaAlmacenesSeleccion(s_);
    CreaCedAnaliticaTmp(s_);
    CreaSelecPolizasDetalleTmp(s_);
    for (const char* alias : {kCedAnaliticaTmp, kSelecPolizasDetalleTmp, kInconsisImpTmpDet})
        if (!AbreAlmacen(s_, alias)) {
            const std::string texto = std::string("No fue posible abrir la Base temporal ") + alias;
            MsgCritico(s_, texto);
            throw ProgramaTerminado(texto);
        }
}

ResultadoImportacion Corrida::termina() {
    MsgInformacion(s_, "La importación de la información correspondiente a la empresa \r\n" + s_.NombreEmpresa +
                           "  finalizó con éxito.");
    CierraInconsistencias(s_);
    return ResultadoImportacion::Terminada;
}

namespace {

// While a run writes a year of vouchers into the company and reads them back
// by index, the company's pages stay in memory (up to 32 MB, taken only as
// they are read); the engine's small default would send most of those reads
// and rewrites of index pages to the file. The connection's own size comes
// back when the run ends. Durability is untouched: the commit is the same.
class CacheDeCorrida {
public:
    explicit CacheDeCorrida(BaseDatos* db) : db_(db) {
        if (!db_) return;
        antes_ = db_->escalar("PRAGMA main.cache_size").entero();
        db_->ejecutaScript("PRAGMA main.cache_size=-32768");
    }
    ~CacheDeCorrida() {
        if (!db_) return;
        try {
            db_->ejecutaScript("PRAGMA main.cache_size=" + std::to_string(antes_));
        } catch (const std::exception&) {
            // A connection that cannot take a pragma now keeps the larger
            // cache until it closes; nothing is lost.
        }
    }
    CacheDeCorrida(const CacheDeCorrida&) = delete;
    CacheDeCorrida& operator=(const CacheDeCorrida&) = delete;

private:
    BaseDatos* db_;
    std::int64_t antes_ = 0;
};

}  // namespace

ResultadoImportacion Corrida::importa(const ArchivosImportacion& a) {
    if (!validaArchivos(a)) return ResultadoImportacion::ArchivosFaltantes;
    CacheDeCorrida cache(s_.DbEmpresa.get());
    if (hist_) hist_->respalda();
    PuntoPrueba("respaldo");
    abreInconsistencias();
    leeFuentes(a);
    if (hist_) hist_->leido();
    if (!ValidaPeriodo(s_)) {
        MsgAviso(s_, "El periodo que desea importar no es válido,\nel sistema determinó que la última importación se "
                     "realizó al mes de " +
                         NombreMesMayusculas(s_.UltimoMesImportado) +
                         "\npor lo tanto, el periodo que necesita importar deberá comprender al menos hasta dicho mes");
        cierraAlmacenes();
        return ResultadoImportacion::PeriodoInvalido;
    }
    if (!decideContinuar()) {
        cierraAlmacenes();
        return ResultadoImportacion::NoContinuada;
    }
    preparaAlmacenesRevision();
    if (!enTransaccion([&] { confirmaImportacion(); })) {
        CierraInconsistencias(s_);
        return ResultadoImportacion::Fallida;
    }
    bool perdidos = s_.UltimoMesImportado > 0 && ExistenMovimientosPerdidos(s_);
    s_.UltimoMesImportado = static_cast<std::int16_t>(MesesConPolizas(*s_.DbEmpresa));
    if (perdidos) {
        MuestraMsgInconsistenciasFin(s_);
        CierraInconsistencias(s_);
        return ResultadoImportacion::ConPerdidas;
    }
    return termina();
}

void Corrida::confirmaSaldosAnioAnterior() {
    FasePuntoPrueba('B');
    paso("GuardaSaldosAnioAnterior", [&] { GuardaSaldosAnioAnterior(s_, barra()); });
    CierraCuentasTmp(s_);
    paso("DeterminaCuentasAcumulativas", [&] { DeterminaCuentasAcumulativas(s_, barra()); });
    paso("DeterminaTipoCuentas", [&] { DeterminaTipoCuentas(s_, barra()); });
}

ResultadoImportacion Corrida::saldosAnioAnterior(const std::string& ruta) {
    abreInconsistencias();
    if (ruta.empty()) {
        MsgAviso(s_, "Especifique por favor el archivo que contiene los saldos finales del año anterior");
        return ResultadoImportacion::ArchivosFaltantes;
    }
    if (!ExisteInformacionActual(s_)) {
        MsgAviso(s_, "Para importar los saldos finales del ejercicio anterior,\r\nes necesario que exista información "
                     "actual");
        return ResultadoImportacion::ArchivosFaltantes;
    }
    if (hist_) hist_->respalda();
    leeOTermina([&] {
        CreaCuentasTmp(s_);
        AbreCuentasTmp(s_);
        destino_ = std::make_unique<DestinoTmp>(s_, imp_.reglasDestino());
        barra().visible(true);
        paso("ImportaSaldosAnioAnterior", [&] { imp_.ImportaSaldosAnioAnterior(s_, *destino_, ruta); });
    });
    if (hist_) hist_->leido();
    if (!decideContinuar()) {
        cierraAlmacenes();
        return ResultadoImportacion::NoContinuada;
    }
    if (!enTransaccion([&] { confirmaSaldosAnioAnterior(); })) return ResultadoImportacion::Fallida;
    MsgInformacion(s_, "La importación de los saldos finales del año anterior de la empresa \r\n" + s_.NombreEmpresa +
                           "  finalizó con éxito.");
    CierraInconsistencias(s_);
    return ResultadoImportacion::Terminada;
}

}  // namespace

// Each run leaves its row in the company's import history (pipeline/Historial.h).
ResultadoImportacion EjecutaImportacion(Sesion& s, Importador& importador, const ArchivosImportacion& archivos,
                                        const OpcionesEjecucion& opciones) {
    // Before the history, whose row of the refused run would be written
    // into the damaged file.
    VerificaIntegridad(s);
    HistorialCorrida historial(s, importador.idSistema(), kOperacionImportacion, archivos);
    return historial.registra([&] { return Corrida(s, importador, opciones, &historial).importa(archivos); });
}

ResultadoImportacion EjecutaSaldosAnioAnterior(Sesion& s, Importador& importador, const std::string& ruta,
                                               const OpcionesEjecucion& opciones) {
    ArchivosImportacion archivos;
    archivos.saldosAnioAnterior = ruta;
    VerificaIntegridad(s);
    HistorialCorrida historial(s, importador.idSistema(), kOperacionSaldosAnioAnterior, archivos);
    return historial.registra([&] { return Corrida(s, importador, opciones, &historial).saldosAnioAnterior(ruta); });
}

bool ExisteInformacionActual(Sesion& s) { return !s.DbEmpresa->escalar("SELECT 1 FROM Polizas LIMIT 1").esNulo(); }

// The new vouchers must reach the company's last month and share a month
// with it (any month will do while the company has none). Both month sets
// come by index, a seek per month, instead of a read of both tables.
bool ValidaPeriodo(Sesion& s) {
    BaseDatos& db = *s.DbEmpresa;
    const std::bitset<13> anteriores = MesesConFilas(db, "Polizas"), nuevos = MesesConFilas(db, "Polizas_Tmp");
    if (s.progreso) s.progreso->cede();
    if (UltimoMesDe(nuevos) < UltimoMesDe(anteriores)) return false;
    if (db.escalar("SELECT 1 FROM Polizas_Tmp LIMIT 1").esNulo()) return false;
    return !ExisteInformacionActual(s) || (nuevos & anteriores).any();
}

void ActualizaMesesRevision(Sesion& s, int mes) {
    BaseDatos& db = *s.DbEmpresa;
    if (mes >= 12) {
        db.ejecuta("UPDATE Empresas SET MesFinal=12 WHERE IdEmpresa=?", s.IdEmpresaActual);
        return;
    }
    Consulta fila = db.consulta("SELECT MesPrevia1, MesPrevia2, MesPrevia3 FROM Empresas WHERE IdEmpresa=?",
                                s.IdEmpresaActual);
    if (fila.vacia()) return;
    for (int n = 1; n <= 3; ++n) {
        const std::string campo = "MesPrevia" + std::to_string(n);
        const Valor& v = fila[campo];
        if (v.esNulo() || v.entero() == 0 || v.entero() == mes) {
            db.ejecuta("UPDATE Empresas SET " + campo + "=? WHERE IdEmpresa=?", mes, s.IdEmpresaActual);
            return;
        }
    }
    db.ejecuta("UPDATE Empresas SET MesPrevia3=? WHERE IdEmpresa=?", mes, s.IdEmpresaActual);
}

void LeeMesesRevision(Sesion& s) {
    s.MesesRevision.assign(1, 0);  // index 0 stays empty: the month before the first
    Consulta fila = s.DbEmpresa->consulta(
        "SELECT MesPrevia1, MesPrevia2, MesPrevia3, MesFinal FROM Empresas WHERE IdEmpresa=?", s.IdEmpresaActual);
    if (fila.vacia()) return;
    for (const char* campo : {"MesPrevia1", "MesPrevia2", "MesPrevia3", "MesFinal"}) {
        int mes = static_cast<int>(SiNuloCero(fila[campo]).entero());
        if (mes == 0) continue;
        size_t siguiente = s.MesesRevision.size();
        if (std::string(campo) == "MesPrevia3") {
            // Re-dimensioned without keeping its contents, as the system
            // always did: the entries before it read as month 0.
            s.MesesRevision.assign(siguiente + 1, 0);
        } else {
            s.MesesRevision.resize(siguiente + 1, 0);
        }
        s.MesesRevision[siguiente] = mes;
    }
}

}  // namespace velmorant
