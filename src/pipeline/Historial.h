#pragma once
// The import history of the company: one row per run in the company's own
// database (`HistorialImportaciones`, with its files and its monthly
// control totals), so that an auditor can show where the data came from:
// when, by whom, through which link, from which files (size and SHA-256),
// what was read, what the log found, what the user decided and how it
// ended. A committed run writes its row inside the commit's transaction; a
// run refused for its period, cancelled, closed at the inconsistency form,
// failed in its commit or ended by an unreadable source writes its row
// after, and nothing else of the company changes then. A run stopped for a
// missing path writes nothing: it read nothing.

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "importers/Importador.h"
#include "pipeline/Importacion.h"
#include "platform/Moneda.h"
#include "session/Sesion.h"

namespace velmorant {

inline constexpr const char* kTablaHistorial = "HistorialImportaciones";
inline constexpr const char* kTablaHistorialArchivos = "HistorialImportaciones_Archivos";
inline constexpr const char* kTablaHistorialTotales = "HistorialImportaciones_Totales";

// Words of the history, as stored and shown.
inline constexpr const char* kOperacionImportacion = "Importación";
inline constexpr const char* kOperacionSaldosAnioAnterior = "Saldos del año anterior";
inline constexpr const char* kOperacionDeshacer = "Deshacer";
inline constexpr const char* kResultadoConfirmada = "Confirmada";
inline constexpr const char* kResultadoConPerdidas = "Confirmada con pérdidas";
inline constexpr const char* kResultadoPeriodoInvalido = "Periodo inválido";
inline constexpr const char* kResultadoCancelada = "Cancelada";
inline constexpr const char* kResultadoNoContinuada = "No continuada";
inline constexpr const char* kResultadoFallida = "Fallida";
inline constexpr const char* kResultadoTerminadaPorError = "Terminada por error";
inline constexpr const char* kResultadoRestaurada = "Restaurada";

/// The history's tables: an undo restores every other table of the company.
const std::vector<std::string>& TablasHistorial();

/// One file of a run as the history keeps it.
struct ArchivoHistorial {
    std::string papel;  // the role: "catalogo", "mes 03", "un-archivo", "base-datos", ...
    std::string ruta;
    std::optional<std::int64_t> tamano;  // none: the file was not there
    std::string sha256;                  // lower-case hexadecimal; empty when unreadable
    std::string modificado;              // "YYYY-MM-DD HH:MM:SS", local time
};

/// Control totals of one month's vouchers, as read (13: the closing ones).
struct TotalMesHistorial {
    int mes = 0;
    std::int64_t polizas = 0, partidas = 0;
    Moneda cargos, abonos;
};

/// One row of the history, with its files and totals when read whole.
struct RegistroHistorial {
    long id = 0;
    std::string fechaHora, usuario, equipo, programa, nombCorto, nombre;
    int ejercicio = 0;
    int idSistema = 0;
    std::string operacion;
    std::optional<std::int64_t> cuentas, saldosIniciales, polizas, partidas, saldosAnioAnterior;
    std::map<std::string, std::int64_t> inconsistencias;  // by class "A", "B", "C", "D", "O"
    std::string decision, resultado, detalle;
    std::int64_t duracionMs = 0;
    std::optional<long> deshace;     // an undo: the run it undid
    std::optional<long> deshechaPor; // a committed run: the undo that undid it
    std::string respaldo;            // file name of the copy taken before the commit
    std::vector<ArchivoHistorial> archivos;
    std::vector<TotalMesHistorial> totales;

    bool confirmada() const;
};

/// SHA-256 of a file's bytes in lower-case hexadecimal; empty when the
/// file cannot be read.
std::string Sha256Archivo(const std::string& ruta);

/// Every file of a run in a fixed order: catalogue, opening balances, the
/// year's vouchers, months 1 to 13, prior-year balances, then the other
/// roles by name. A folder counts as each file under it, in name order; a
/// path that is not there is kept, without size or hash.
std::vector<ArchivoHistorial> ArchivosDeCorrida(const ArchivosImportacion& a);

/// The operating system's name of the user running the program.
std::string UsuarioDelSistema();

/// The history of one run, fed by the run engine at its hooks.
class HistorialCorrida {
public:
    HistorialCorrida(Sesion& s, int idSistema, const char* operacion, ArchivosImportacion archivos);

    /// Runs `corrida` and writes the row of a run that did not commit (a
    /// committed run wrote its own in the transaction); keeps the five
    /// newest backups after a commit and drops the copy of a run that did
    /// not commit. Exceptions pass through after the row is written.
    ResultadoImportacion registra(const std::function<ResultadoImportacion()>& corrida);

    // Hooks of the run engine.
    /// End of the reading: counts and control totals of the run's stores,
    /// the files' sizes and hashes, and whether the log has rows for the
    /// user to decide on.
    void leido();
    /// Before the run reads anything (phase A already registers voucher
    /// types in the company): the copy of the company database beside it,
    /// with the run's number. When it cannot be made, says so and ends the
    /// run (ProgramaTerminado) with nothing changed.
    void respalda();
    /// Inside the commit's transaction, after its last step: the row of
    /// the committed run.
    void confirma();
    /// The commit failed at `paso` and was rolled back.
    void falla(const std::string& paso, const std::string& mensaje);

    /// The run's number in the history (assigned on first use).
    long numero();

private:
    Sesion& s_;
    int idSistema_;
    std::string operacion_;
    ArchivosImportacion archivos_;
    std::chrono::steady_clock::time_point inicio_;
    std::string fechaHora_;
    long numero_ = 0;
    bool contado_ = false, hayInconsistencias_ = false, escrita_ = false, archivosDescritos_ = false;
    RegistroHistorial leido_;
    std::string rutaRespaldo_;
    std::string detalleFalla_;

    void cuentaAlmacenes();
    void escribe(const std::string& resultado, const std::string& decision, const std::string& detalle);
    void escribeDespues(const std::string& resultado, const std::string& decision, const std::string& detalle);
    void descartaRespaldo();
    std::string decisionTomada() const;
};

/// Writes one row of the history with its files and totals (`r.id` is the
/// number), inside a transaction of its own or the caller's.
void EscribeRegistroHistorial(BaseDatos& db, const RegistroHistorial& r);

/// The runs, oldest first, without files or totals.
std::vector<RegistroHistorial> LeeHistorial(BaseDatos& db);
/// One run whole; nothing when there is no such number.
std::optional<RegistroHistorial> LeeRegistroHistorial(BaseDatos& db, long id);

/// The committed run that an undo would take back: the newest one not
/// undone yet.
std::optional<RegistroHistorial> ImportacionPorDeshacer(BaseDatos& db);

/// "1.2 s", "3 min 05 s": a duration for people.
std::string TextoDuracion(std::int64_t ms);

}  // namespace velmorant
