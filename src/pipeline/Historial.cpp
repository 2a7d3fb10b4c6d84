#include "pipeline/Historial.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSysInfo>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cctype>
#include <filesystem>
#include <map>
#include <optional>
#include <memory>

#ifndef _WIN32
#include <openssl/evp.h>
#include <pwd.h>
#include <unordered_map>
#include <vector>
#include <unistd.h>
#endif

#include "pipeline/ReportesDecisiones.h"
#include "pipeline/Respaldo.h"
#include "review/CedulaAnalitica.h"
#include "session/CausaError.h"
#include "session/Funciones.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

namespace {

std::string FechaHoraActual() {
    return QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss").toStdString();
}

bool Adjunto(BaseDatos& db, const std::string& alias) {
    return !db.escalar("SELECT 1 FROM pragma_database_list WHERE name = ? COLLATE NOCASE", alias).esNulo();
}

std::optional<std::int64_t> EnteroOpcional(const Valor& v) {
    if (v.esNulo()) return std::nullopt;
    return v.entero();
}

ArchivoHistorial DescribeArchivo(const std::string& papel, const std::string& ruta) {
    ArchivoHistorial a;
    a.papel = papel;
    a.ruta = ruta;
    QFileInfo info(QString::fromStdString(ruta));
    if (!info.exists() || !info.isFile()) return a;
    a.tamano = info.size();
    a.sha256 = Sha256Archivo(ruta);
    a.modificado = info.lastModified().toString("yyyy-MM-dd HH:mm:ss").toStdString();
    return a;
}

// A path of a role: a file as itself, a folder as every file under it.
void AgregaRuta(std::vector<ArchivoHistorial>& r, const std::string& papel, const std::string& ruta) {
    if (ruta.empty()) return;
    std::error_code ec;
    if (!std::filesystem::is_directory(ruta, ec)) {
        r.push_back(DescribeArchivo(papel, ruta));
        return;
    }
    std::vector<std::string> archivos;
    for (auto it = std::filesystem::recursive_directory_iterator(ruta, ec);
         !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
        if (it->is_regular_file(ec)) archivos.push_back(it->path().string());
    std::sort(archivos.begin(), archivos.end());
    for (const auto& a : archivos) r.push_back(DescribeArchivo(papel, a));
}

// Counts of the classes of the log, read where the log is: through the
// run's connection while it is attached (its rows may not be committed
// yet), else from its file.
std::map<std::string, std::int64_t> InconsistenciasPorClase(Sesion& s) {
    std::map<std::string, std::int64_t> r;
    const std::string sql = "SELECT ClasifError, COUNT(*) AS N FROM InconsisImpTmp GROUP BY ClasifError";
    auto lee = [&r](Consulta c) {
        for (c.primero(); !c.eof(); c.siguiente()) r[SiNuloTexto(c["ClasifError"])] += c["N"].entero();
    };
    if (s.DbEmpresa && Adjunto(*s.DbEmpresa, kInconsisImpTmp)) {
        lee(s.DbEmpresa->consulta(sql));
    } else if (std::string ruta = RutaAlmacen(s, kInconsisImpTmp); ExisteArchivo(ruta)) {
        BaseDatos log(ruta, BaseDatos::Modo::SoloLectura);
        if (log.existeTabla(kInconsisImpTmp)) lee(log.consulta(sql));
    }
    return r;
}

RegistroHistorial FilaDe(const Consulta& c) {
    RegistroHistorial r;
    r.id = static_cast<long>(c["IdImportacion"].entero());
    r.fechaHora = SiNuloTexto(c["FechaHora"]);
    r.usuario = SiNuloTexto(c["Usuario"]);
    r.equipo = SiNuloTexto(c["Equipo"]);
    r.programa = SiNuloTexto(c["Programa"]);
    r.nombCorto = SiNuloTexto(c["NombCorto"]);
    r.nombre = SiNuloTexto(c["Nombre"]);
    r.ejercicio = static_cast<int>(SiNuloCero(c["Ejercicio"]).entero());
    r.idSistema = static_cast<int>(SiNuloCero(c["IdSistema"]).entero());
    r.operacion = SiNuloTexto(c["Operacion"]);
    r.cuentas = EnteroOpcional(c["Cuentas"]);
    r.saldosIniciales = EnteroOpcional(c["SaldosIniciales"]);
    r.polizas = EnteroOpcional(c["Polizas"]);
    r.partidas = EnteroOpcional(c["Partidas"]);
    r.saldosAnioAnterior = EnteroOpcional(c["SaldosAnioAnterior"]);
    for (const char* clase : {"A", "B", "C", "D", "O"}) {
        const Valor& v = c[std::string("Inconsis") + clase];
        if (!v.esNulo() && v.entero() != 0) r.inconsistencias[clase] = v.entero();
    }
    r.decision = SiNuloTexto(c["Decision"]);
    r.resultado = SiNuloTexto(c["Resultado"]);
    r.detalle = SiNuloTexto(c["Detalle"]);
    r.duracionMs = SiNuloCero(c["DuracionMs"]).entero();
    if (auto d = EnteroOpcional(c["Deshace"])) r.deshace = static_cast<long>(*d);
    if (auto d = EnteroOpcional(c["DeshechaPor"])) r.deshechaPor = static_cast<long>(*d);
    r.respaldo = SiNuloTexto(c["Respaldo"]);
    return r;
}

const char* const kSelectHistorial =
    "SELECT H.*, (SELECT MIN(U.IdImportacion) FROM HistorialImportaciones U WHERE U.Deshace = H.IdImportacion) "
    "AS DeshechaPor FROM HistorialImportaciones H";

}  // namespace

// ------------------------------------------------------------ Helpers

const std::vector<std::string>& TablasHistorial() {
    static const std::vector<std::string> t = {kTablaHistorial, kTablaHistorialArchivos, kTablaHistorialTotales};
    return t;
}

bool RegistroHistorial::confirmada() const {
    return operacion != kOperacionDeshacer && (resultado == kResultadoConfirmada || resultado == kResultadoConPerdidas);
}

// Through the crypto library, which uses the processor's SHA instructions
// where it has them: a year's files and the backup of a large company are
// hashed on every run, and a portable digest took seconds over them.
std::string Sha256Archivo(const std::string& ruta) {
    std::FILE* f = std::fopen(ruta.c_str(), "rb");
    if (!f) return "";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> cierra(f, &std::fclose);
    std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> ctx(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
    if (!ctx || EVP_DigestInit_ex(ctx.get(), EVP_sha256(), nullptr) != 1) return "";
    std::vector<unsigned char> bloque(1 << 20);
    size_t n;
    while ((n = std::fread(bloque.data(), 1, bloque.size(), f)) > 0)
        if (EVP_DigestUpdate(ctx.get(), bloque.data(), n) != 1) return "";
    if (std::ferror(f)) return "";
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int largo = 0;
    if (EVP_DigestFinal_ex(ctx.get(), digest, &largo) != 1) return "";
    static const char kHex[] = "0123456789abcdef";
    std::string r;
    for (unsigned int i = 0; i < largo; ++i) {
        r += kHex[digest[i] >> 4];
        r += kHex[digest[i] & 15];
    }
    return r;
}

std::vector<ArchivoHistorial> ArchivosDeCorrida(const ArchivosImportacion& a) {
    std::vector<ArchivoHistorial> r;
    AgregaRuta(r, "catalogo", a.catalogo);
    AgregaRuta(r, "saldos-iniciales", a.saldosIniciales);
    AgregaRuta(r, "un-archivo", a.polizas);
    for (size_t i = 0; i < a.meses.size(); ++i) AgregaRuta(r, "mes " + DosDigitos(static_cast<long>(i + 1)), a.meses[i]);
    AgregaRuta(r, "saldos-anterior", a.saldosAnioAnterior);
    for (const auto& [papel, rutas] : a.otros)
        for (const auto& ruta : rutas) AgregaRuta(r, papel, ruta);
    return r;
}

std::string UsuarioDelSistema() {
    for (const char* variable : {"USERNAME", "USER", "LOGNAME"}) {
        QString v = qEnvironmentVariable(variable);
        if (!v.isEmpty()) return v.toStdString();
    }
#ifndef _WIN32
    if (const passwd* pw = getpwuid(getuid())) return pw->pw_name;
#endif
    return "";
}

std::string TextoDuracion(std::int64_t ms) {
    if (ms < 60000) {
        std::int64_t decimas = (ms + 50) / 100;
        return std::to_string(decimas / 10) + "." + std::to_string(decimas % 10) + " s";
    }
    std::int64_t s = (ms + 500) / 1000;
    return std::to_string(s / 60) + " min " + DosDigitos(static_cast<long>(s % 60)) + " s";
}

// ------------------------------------------------------------ Writing

void EscribeRegistroHistorial(BaseDatos& db, const RegistroHistorial& r) {
    auto clase = [&r](const char* c) -> std::optional<std::int64_t> {
        if (r.operacion == kOperacionDeshacer) return std::nullopt;
        auto it = r.inconsistencias.find(c);
        return it == r.inconsistencias.end() ? 0 : it->second;
    };
    auto opcional = [](const std::string& t) { return t.empty() ? Valor() : Valor(t); };
    Transaccion t(db);
    db.ejecuta(
        "INSERT INTO HistorialImportaciones (IdImportacion, FechaHora, Usuario, Equipo, Programa, NombCorto, Nombre, "
        "Ejercicio, IdSistema, Operacion, Cuentas, SaldosIniciales, Polizas, Partidas, SaldosAnioAnterior, "
        "InconsisA, InconsisB, InconsisC, InconsisD, InconsisO, Decision, Resultado, Detalle, DuracionMs, Deshace, "
        "Respaldo) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        static_cast<long long>(r.id), r.fechaHora, r.usuario, r.equipo, r.programa, r.nombCorto, r.nombre,
        r.ejercicio, r.idSistema, r.operacion, r.cuentas, r.saldosIniciales, r.polizas, r.partidas,
        r.saldosAnioAnterior, clase("A"), clase("B"), clase("C"), clase("D"), clase("O"), opcional(r.decision),
        r.resultado, opcional(r.detalle), static_cast<long long>(r.duracionMs),
        r.deshace ? Valor(static_cast<long long>(*r.deshace)) : Valor(), opcional(r.respaldo));
    int orden = 0;
    for (const auto& a : r.archivos)
        db.ejecuta("INSERT INTO HistorialImportaciones_Archivos (IdImportacion, Orden, Papel, Ruta, Tamano, Sha256, "
                   "Modificado) VALUES (?, ?, ?, ?, ?, ?, ?)",
                   static_cast<long long>(r.id), ++orden, a.papel, a.ruta, a.tamano, opcional(a.sha256),
                   opcional(a.modificado));
    for (const auto& m : r.totales)
        db.ejecuta("INSERT INTO HistorialImportaciones_Totales (IdImportacion, Mes, Polizas, Partidas, Cargos, Abonos) "
                   "VALUES (?, ?, ?, ?, ?, ?)",
                   static_cast<long long>(r.id), m.mes, static_cast<long long>(m.polizas),
                   static_cast<long long>(m.partidas), m.cargos, m.abonos);
    t.confirma();
}

HistorialCorrida::HistorialCorrida(Sesion& s, int idSistema, const char* operacion, ArchivosImportacion archivos)
    : s_(s),
      idSistema_(idSistema),
      operacion_(operacion),
      archivos_(std::move(archivos)),
      inicio_(std::chrono::steady_clock::now()),
      fechaHora_(FechaHoraActual()) {}

long HistorialCorrida::numero() {
    if (numero_ == 0)
        numero_ = static_cast<long>(
            EmpresaAbierta(s_).escalar("SELECT COALESCE(MAX(IdImportacion), 0) + 1 FROM HistorialImportaciones")
                .entero());
    return numero_;
}

namespace {

/// The month totals of the run's vouchers by the join of every voucher to
/// each of its lines, summed by the engine: for stores whose amounts are not
/// all exact integers.
std::vector<TotalMesHistorial> TotalesPorMesEnSql(BaseDatos& db) {
    std::vector<TotalMesHistorial> r;
    Consulta c = db.consulta(
        "SELECT CASE WHEN P.Poliza_Mes13 <> 0 THEN 13 ELSE COALESCE(Month(P.Fecha), 0) END AS Mes, "
        "COUNT(DISTINCT P.rowid) AS Polizas, COUNT(D.rowid) AS Partidas, "
        "COALESCE(SUM(CASE WHEN D.TipoMov = 'D' THEN D.Importe END), 0) AS Cargos, "
        "COALESCE(SUM(CASE WHEN D.rowid IS NOT NULL AND D.TipoMov IS NOT 'D' THEN D.Importe END), 0) AS Abonos "
        "FROM Polizas_Tmp P LEFT JOIN Polizas_Detalle_Tmp D ON D.IdPoliza = P.IdPoliza "
        "GROUP BY 1 ORDER BY 1");
    for (c.primero(); !c.eof(); c.siguiente()) {
        TotalMesHistorial m;
        m.mes = static_cast<int>(c["Mes"].entero());
        m.polizas = c["Polizas"].entero();
        m.partidas = c["Partidas"].entero();
        m.cargos = c["Cargos"].moneda();
        m.abonos = c["Abonos"].moneda();
        r.push_back(m);
    }
    return r;
}

/// The same totals from one scan of each store: the lines summed by voucher
/// in memory, then the vouchers by month. A line is a debit when its TipoMov
/// is "D" in either case, as the store's column compares it. A seek per line
/// from its voucher cost ten times the two scans. The rows of each store are
/// counted on the way.
std::vector<TotalMesHistorial> TotalesPorMes(BaseDatos& db, std::int64_t& polizasLeidas,
                                             std::int64_t& partidasLeidas) {
    struct Lineas {
        std::int64_t partidas = 0;
        Moneda cargos, abonos;
    };
    std::unordered_map<std::int64_t, Lineas> porPoliza;
    Sentencia& lineas = db.preparada("SELECT IdPoliza, TipoMov, Importe FROM Polizas_Detalle_Tmp");
    lineas.reinicia();
    using C = Sentencia::Clase;
    std::optional<std::int64_t> idActual;
    Lineas* actual = nullptr;  // a voucher's lines mostly come together
    while (lineas.paso()) {
        const C importe = lineas.clase(2);
        if (importe != C::Nulo && importe != C::Entero) {
            lineas.reinicia();
            polizasLeidas = db.escalar("SELECT COUNT(*) FROM Polizas_Tmp").entero();
            partidasLeidas = db.escalar("SELECT COUNT(*) FROM Polizas_Detalle_Tmp").entero();
            return TotalesPorMesEnSql(db);
        }
        ++partidasLeidas;
        if (lineas.clase(0) == C::Nulo) continue;
        const std::int64_t id = lineas.clase(0) == C::Entero ? lineas.entero(0) : lineas.columna(0).entero();
        if (id != idActual) {
            idActual = id;
            actual = &porPoliza[id];
        }
        ++actual->partidas;
        const bool cargo = lineas.clase(1) == C::Texto && (lineas.texto(1) == "D" || lineas.texto(1) == "d");
        (cargo ? actual->cargos : actual->abonos) += lineas.moneda(2);
    }
    lineas.reinicia();
    std::map<int, TotalMesHistorial> meses;
    Sentencia& polizas = db.preparada(
        "SELECT IdPoliza, CASE WHEN Poliza_Mes13 <> 0 THEN 13 ELSE COALESCE(Month(Fecha), 0) END FROM Polizas_Tmp");
    polizas.reinicia();
    while (polizas.paso()) {
        ++polizasLeidas;
        const int mes = static_cast<int>(polizas.entero(1));
        TotalMesHistorial& m = meses[mes];
        m.mes = mes;
        ++m.polizas;
        if (polizas.clase(0) == C::Nulo) continue;
        auto l = porPoliza.find(polizas.clase(0) == C::Entero ? polizas.entero(0) : polizas.columna(0).entero());
        if (l == porPoliza.end()) continue;
        m.partidas += l->second.partidas;
        m.cargos += l->second.cargos;
        m.abonos += l->second.abonos;
    }
    polizas.reinicia();
    std::vector<TotalMesHistorial> r;
    for (const auto& [mes, m] : meses) r.push_back(m);
    return r;
}

}  // namespace

// What the run's stores hold: the chart and its balances, the vouchers and
// their lines with the debits and credits of each month, exact.
void HistorialCorrida::cuentaAlmacenes() {
    contado_ = true;
    BaseDatos& db = EmpresaAbierta(s_);
    if (Adjunto(db, kCuentasTmp)) {
        leido_.cuentas = db.escalar("SELECT COUNT(*) FROM CuentasTmp.Cuentas").entero();
        leido_.saldosIniciales = db.escalar("SELECT COUNT(*) FROM CuentasTmp.Cuentas WHERE Saldo <> 0").entero();
        if (operacion_ == kOperacionSaldosAnioAnterior) leido_.saldosAnioAnterior = leido_.cuentas;
    }
    if (Adjunto(db, kPolizasTmp) && Adjunto(db, kPolizasDetalleTmp)) {
        std::int64_t polizas = 0, partidas = 0;
        leido_.totales = TotalesPorMes(db, polizas, partidas);
        leido_.polizas = polizas;
        leido_.partidas = partidas;
    }
}

void HistorialCorrida::leido() {
    cuentaAlmacenes();
    // The files as they were read, hashed before the commit holds its locks.
    leido_.archivos = ArchivosDeCorrida(archivos_);
    archivosDescritos_ = true;
    for (const auto& [clase, n] : InconsistenciasPorClase(s_))
        if (n > 0) hayInconsistencias_ = true;
}

void HistorialCorrida::respalda() {
    rutaRespaldo_ = RutaRespaldo(s_, numero());
    try {
        RespaldaEmpresa(s_, rutaRespaldo_);
    } catch (const std::exception& e) {
        rutaRespaldo_.clear();
        const std::string texto = std::string("No fue posible guardar la copia de la empresa antes de importar:\r\n") +
                                  CausaDelError(e) + e.what() + "\r\nNo se importó nada.";
        MsgCritico(s_, texto);
        throw ProgramaTerminado(texto);
    }
}

std::string HistorialCorrida::decisionTomada() const {
    return hayInconsistencias_ ? "Continuar" : "Sin inconsistencias";
}

void HistorialCorrida::escribe(const std::string& resultado, const std::string& decision,
                               const std::string& detalle) {
    BaseDatos& db = EmpresaAbierta(s_);
    if (!contado_) cuentaAlmacenes();
    RegistroHistorial r = leido_;
    r.id = numero();
    r.fechaHora = fechaHora_;
    r.usuario = UsuarioDelSistema();
    r.equipo = QSysInfo::machineHostName().toStdString();
    r.programa = VersionDelPrograma();
    r.nombCorto = s_.NombCortoEmpresa;
    r.nombre = s_.NombreEmpresa;
    r.ejercicio = s_.EjercicioActual;
    r.idSistema = idSistema_;
    r.operacion = operacion_;
    r.inconsistencias = InconsistenciasPorClase(s_);
    r.decision = decision;
    r.resultado = resultado;
    r.detalle = detalle;
    r.duracionMs =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - inicio_).count();
    if (!rutaRespaldo_.empty() && ExisteArchivo(rutaRespaldo_)) r.respaldo = NombreDeArchivo(rutaRespaldo_);
    if (!archivosDescritos_) r.archivos = ArchivosDeCorrida(archivos_);
    EscribeRegistroHistorial(db, r);
}

void HistorialCorrida::confirma() {
    bool perdidas = operacion_ == kOperacionImportacion && s_.UltimoMesImportado > 0 && ExistenMovimientosPerdidos(s_);
    escribe(perdidas ? kResultadoConPerdidas : kResultadoConfirmada, decisionTomada(), "");
    escrita_ = true;
}

void HistorialCorrida::falla(const std::string& paso, const std::string& mensaje) {
    detalleFalla_ = "Falló el paso " + paso + ": " + mensaje;
}

// The row of a run that did not commit. Its own failure is told but never
// hides how the run ended.
void HistorialCorrida::escribeDespues(const std::string& resultado, const std::string& decision,
                                      const std::string& detalle) {
    if (escrita_ || !s_.DbEmpresa) return;
    try {
        escribe(resultado, decision, detalle);
        escrita_ = true;
    } catch (const std::exception& e) {
        MsgAviso(s_, "No fue posible anotar esta corrida en el historial de importaciones de la empresa.\r\n" +
                         std::string(e.what()));
    }
}

void HistorialCorrida::descartaRespaldo() {
    if (rutaRespaldo_.empty()) return;
    std::error_code ec;
    std::filesystem::remove(rutaRespaldo_, ec);
    rutaRespaldo_.clear();
}

ResultadoImportacion HistorialCorrida::registra(const std::function<ResultadoImportacion()>& corrida) {
    // The row written in the transaction stands only if the transaction
    // committed.
    auto confirmada = [this] {
        if (escrita_ && s_.DbEmpresa &&
            s_.DbEmpresa->escalar("SELECT 1 FROM HistorialImportaciones WHERE IdImportacion = ?",
                                  static_cast<long long>(numero_))
                .esNulo())
            escrita_ = false;
        return escrita_;
    };
    ResultadoImportacion r;
    try {
        r = corrida();
    } catch (const ProgramaTerminado& e) {
        const bool cancelada = std::string(e.what()) == kMensajeImportacionCancelada;
        if (!confirmada()) descartaRespaldo();
        escribeDespues(cancelada ? kResultadoCancelada : kResultadoTerminadaPorError, cancelada ? "Cancelar" : "",
                       cancelada ? "" : e.what());
        throw;
    } catch (const std::exception& e) {
        if (!confirmada()) descartaRespaldo();
        escribeDespues(kResultadoTerminadaPorError, "", e.what());
        throw;
    }
    switch (r) {
        case ResultadoImportacion::Terminada:
        case ResultadoImportacion::ConPerdidas:
            try {
                RotaRespaldos(s_);
            } catch (const std::exception& e) {
                ReportaError(s_, e, true);
            }
            break;
        case ResultadoImportacion::ArchivosFaltantes:
            descartaRespaldo();
            break;
        case ResultadoImportacion::PeriodoInvalido:
            descartaRespaldo();
            escribeDespues(kResultadoPeriodoInvalido, "", "");
            break;
        case ResultadoImportacion::NoContinuada:
            descartaRespaldo();
            escribeDespues(kResultadoNoContinuada, "Cerrada sin continuar", "");
            break;
        case ResultadoImportacion::Fallida:
            confirmada();
            descartaRespaldo();
            escribeDespues(kResultadoFallida, decisionTomada(), detalleFalla_);
            break;
    }
    return r;
}

// ------------------------------------------------------------ Reading

std::vector<RegistroHistorial> LeeHistorial(BaseDatos& db) {
    std::vector<RegistroHistorial> r;
    Consulta c = db.consulta(std::string(kSelectHistorial) + " ORDER BY H.IdImportacion");
    for (c.primero(); !c.eof(); c.siguiente()) r.push_back(FilaDe(c));
    return r;
}

std::optional<RegistroHistorial> LeeRegistroHistorial(BaseDatos& db, long id) {
    Consulta c = db.consulta(std::string(kSelectHistorial) + " WHERE H.IdImportacion = ?", static_cast<long long>(id));
    if (c.vacia()) return std::nullopt;
    RegistroHistorial r = FilaDe(c);
    Consulta a = db.consulta("SELECT * FROM HistorialImportaciones_Archivos WHERE IdImportacion = ? ORDER BY Orden",
                             static_cast<long long>(id));
    for (a.primero(); !a.eof(); a.siguiente()) {
        ArchivoHistorial f;
        f.papel = SiNuloTexto(a["Papel"]);
        f.ruta = SiNuloTexto(a["Ruta"]);
        f.tamano = EnteroOpcional(a["Tamano"]);
        f.sha256 = SiNuloTexto(a["Sha256"]);
        f.modificado = SiNuloTexto(a["Modificado"]);
        r.archivos.push_back(f);
    }
    Consulta t = db.consulta("SELECT * FROM HistorialImportaciones_Totales WHERE IdImportacion = ? ORDER BY Mes",
                             static_cast<long long>(id));
    for (t.primero(); !t.eof(); t.siguiente()) {
        TotalMesHistorial m;
        m.mes = static_cast<int>(t["Mes"].entero());
        m.polizas = SiNuloCero(t["Polizas"]).entero();
        m.partidas = SiNuloCero(t["Partidas"]).entero();
        m.cargos = t["Cargos"].moneda();
        m.abonos = t["Abonos"].moneda();
        r.totales.push_back(m);
    }
    return r;
}

std::optional<RegistroHistorial> ImportacionPorDeshacer(BaseDatos& db) {
    auto todos = LeeHistorial(db);
    for (auto it = todos.rbegin(); it != todos.rend(); ++it)
        if (it->confirmada() && !it->deshechaPor) return LeeRegistroHistorial(db, it->id);
    return std::nullopt;
}

}  // namespace velmorant
