#pragma once
// The one writer of a run's temporary stores. Readers hand it typed records
// (an account, an opening balance, a voucher head, a voucher line, a
// prior-year balance) and it keeps the store rules that every importer
// shares: where each field goes and how it is cut and filtered, how lines
// find their voucher, `IdPoliza` and `Partida` numbering, and the
// inconsistency of a line whose account the imported chart lacks. Where
// importers differ, the difference is a named rule of ReglasDestino, not a
// copy of this code.
//
// A writer lives for one run: it remembers the vouchers it made (by number,
// type, date and month-13 flag), the last `Partida` of each, and the accounts
// of the temporary chart, so no row costs a query of the stores. It needs
// the stores open (attached to the session's company connection): the chart
// for accounts and balances, the two voucher stores and the log for vouchers;
// a closed store throws std::logic_error. Engine errors propagate.

#include <climits>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/Fecha.h"
#include "platform/IndiceDeTextos.h"
#include "platform/Moneda.h"
#include "session/Sesion.h"

namespace velmorant {

/// An account of the client's chart, as its reader cleaned it.
struct CuentaLeida {
    std::string Cuenta;                // stored as read (a reader formats it where its source asks)
    std::string CuentaSinSeparadores;  // the code without separators
    std::string Descripcion;           // raw; the writer filters and cuts it
    std::optional<std::string> CuentaAcumulativa;
    std::optional<int> Nivel;
    std::optional<std::string> Naturaleza;
    std::optional<std::string> Tipo;
    std::optional<Moneda> Saldo;  // nothing: left unset
};

/// A prior-year closing balance of one account.
struct SaldoAnioAnteriorLeido {
    std::string Cuenta;
    std::string CuentaSinSeparadores;
    std::string Descripcion;
    std::optional<int> Nivel;
    Moneda SaldoFinAnioAnt;
};

/// A voucher head.
struct PolizaLeida {
    std::string Poliza;
    std::string Tipo;
    velmorant::Fecha Fecha;
    std::string Concepto;
    bool Deshabilitada = false;
    bool Mes13 = false;
    bool Ajuste = false;
};

/// A voucher line.
struct PartidaLeida {
    std::string Cuenta;   // without separators
    std::string TipoMov;  // "D" debit, anything else credit ("H")
    Moneda Importe;
    std::string Referencia;  // raw; the writer filters and cuts it
};

/// A line of an auditor's adjustment ("AJ") or reclassification ("RC")
/// brought from an earlier audit product, for the store `AjYRcl_Tmp`.
struct LineaAjusteLeida {
    std::string Tipo;      // "AJ" or "RC"
    long AjRc = 0;         // the entry's number, as the user knows it
    std::string Concepto;  // raw; the commit filters it
    std::string Cuenta;    // without separators
    std::string TipoMov;   // "C" debit, anything else ("A") credit
    Moneda Importe;
    // Where it came from, for the log only.
    std::string Poliza;
    std::optional<velmorant::Fecha> Fecha;
};

/// Where importers store differently.
struct ReglasDestino {
    /// Characters of `Descripcion` kept; 0 keeps it whole.
    size_t largoDescripcion = 0;
    /// Characters of a voucher's `Tipo` kept in the store.
    size_t largoTipo = 10;
    /// Lines find their voucher by the whole type, though the store keeps it
    /// cut: a type longer than `largoTipo` then makes a voucher per line.
    /// Off, the type is cut before the search, as it is stored.
    bool agrupaConTipoCompleto = false;
    /// `IdPoliza` numbers come from this counter of the importer's own,
    /// which lives as long as its form, instead of following the store.
    long* contadorIdPoliza = nullptr;
    /// The text logged, once per account, for a line whose account the
    /// temporary chart lacks.
    enum class AvisoCuentaInexistente {
        Movimiento,          // "No se registró  el movimiento D ,$1.00 de la Póliza, ya que la Cuenta no existe."
        CuentaNoExiste,      // "La Cuenta 1000101 no existe en el catálogo." (table-based readers)
        NoExisteEnCatalogo,  // "La cuenta 1000101 no existe en el catálogo" (printed-report readers)
    };
    AvisoCuentaInexistente avisoCuentaInexistente = AvisoCuentaInexistente::Movimiento;
    /// That row names the account only, without the voucher's number, type
    /// and date (text sources that log the account once for the file).
    bool avisoSinPoliza = false;
};

class DestinoTmp {
public:
    explicit DestinoTmp(Sesion& s, ReglasDestino reglas = {});
    DestinoTmp(const DestinoTmp&) = delete;
    DestinoTmp& operator=(const DestinoTmp&) = delete;

    Sesion& sesion() { return s_; }
    const ReglasDestino& reglas() const { return reglas_; }

    // ------------------------------------------------------------ Chart

    /// Adds a row to `Cuentas` of `CuentasTmp` (`Descripcion` through
    /// QuitaCaracteresEspeciales, cut by the rules). A record with an empty
    /// `CuentaSinSeparadores` adds nothing.
    void agregaCuenta(const CuentaLeida& c);
    /// True when the temporary chart has an account whose `Cuenta` is `cuenta`.
    bool tieneCuentaTmp(const std::string& cuenta);
    /// Sets `Saldo` of the first temporary account whose `Cuenta` is
    /// `cuenta`; false, changing nothing, when there is none.
    bool asignaSaldoInicial(const std::string& cuenta, Moneda saldo);
    /// Adds a prior-year row: `Cuenta`, `CuentaSinSeparadores`, `Descripcion`
    /// (filtered, whole), `Nivel`, `SaldoFinAnioAnt`.
    void agregaSaldoAnioAnterior(const SaldoAnioAnteriorLeido& r);
    /// True when the company's own chart (`Cuentas`) holds the code.
    bool cuentaEnEmpresa(const std::string& cuenta);
    /// True when the temporary chart holds the code as `CuentaSinSeparadores`
    /// (without regard to case), as voucher lines are checked.
    bool conoceCuenta(const std::string& cuenta) { return cuentaConocida(cuenta); }

    // ------------------------------------------------------------ Vouchers

    /// The `IdPoliza` of the voucher with the head's number, type, date and
    /// month-13 flag, made now (with the head's concept, filtered and cut to
    /// 255 characters) when the run has none yet. Lines of one voucher need
    /// not be adjacent, and a voucher may span files.
    long poliza(const PolizaLeida& p);
    /// A new voucher, always: for sources whose heads come one per voucher,
    /// or that group by a change of key in their own order.
    long nuevaPoliza(const PolizaLeida& p);
    /// Adds a line to voucher `idPoliza` (made by this writer) with the next
    /// `Partida` of that voucher. A line on an account that the temporary
    /// chart lacks, and that the log does not name yet, is logged once
    /// ("No se registró  el movimiento ...") and still stored: the voucher
    /// keeps its line, and the run decides later. An empty account adds
    /// nothing.
    void agregaPartida(long idPoliza, const PartidaLeida& l);
    /// Appends `agregado` (filtered) to the `Concepto` of voucher `idPoliza`
    /// while that concept is shorter than 256 characters, keeping the
    /// store's cut at 255. Returns the concept as it stands afterwards.
    std::string anexaConcepto(long idPoliza, const std::string& agregado);
    /// The nature of the temporary account whose `CuentaSinSeparadores` is
    /// `codigo`, and sets its `Saldo`; nothing, changing nothing, when the
    /// chart lacks it.
    std::optional<std::string> asignaSaldoPorCodigo(const std::string& codigo, Moneda saldo);

    // ------------------------------------------------ Adjustments (AjYRcl_Tmp)

    /// The `IdAjRc` of a new entry of type `tipo` ("AJ" or "RC"): the highest
    /// of that type in `AjYRcl_Tmp` plus one, 1 for the first. Each type
    /// counts by itself. The store must exist (CreaAjYRclTmp); the writer
    /// opens it with a connection of its own, since a run's commit already
    /// attaches as many stores to the company connection as the engine allows.
    long nuevoAjusteReclasificacion(const std::string& tipo);
    /// Adds a line of entry `idAjRc` to `AjYRcl_Tmp`, in force (`Estatus`
    /// true). A line on an account that the temporary chart lacks, and that
    /// the log does not name yet, is logged once as "La Cuenta X no existe en
    /// el catálogo." and still stored. An empty account adds nothing.
    void agregaLineaAjuste(long idAjRc, const LineaAjusteLeida& l);

    /// Vouchers and lines written by this writer.
    long polizasEscritas() const { return static_cast<long>(polizas_.size()); }
    long partidasEscritas() const { return partidas_; }

private:
    struct PolizaEscrita {
        std::string Poliza, Tipo;
        velmorant::Fecha Fecha;
        int ultimaPartida = 0;
    };

    Sesion& s_;
    ReglasDestino reglas_;
    // The vouchers written, by IdPoliza. A run's ids mostly follow one
    // another: those go in a vector, any other in a map.
    class PolizasEscritas {
    public:
        PolizaEscrita* busca(long id);
        void pon(long id, PolizaEscrita p);
        size_t size() const { return seguidas_.size() + sueltas_.size(); }

    private:
        long primera_ = 0;  // the id of seguidas_[0]
        std::vector<PolizaEscrita> seguidas_;
        std::unordered_map<long, PolizaEscrita> sueltas_;
    };
    PolizasEscritas polizas_;
    // The voucher agregaPartida last used, until the next one is written.
    long idUltimaEscrita_ = 0;
    PolizaEscrita* ultimaEscrita_ = nullptr;
    // The vouchers by identity: the key's number in the index, its IdPoliza
    // in the vector (kSinPoliza while it has none).
    static constexpr long kSinPoliza = LONG_MIN;
    IndiceDeTextos porIdentidad_;
    std::vector<long> idDeIdentidad_;
    // The voucher poliza() last found or wrote by its identity, as the
    // reader gave it: a source gives a voucher's lines one after another,
    // and the next line that names it the same way needs no key built.
    struct UltimaPoliza {
        std::string Poliza, Tipo;
        velmorant::Fecha Fecha;
        bool Mes13 = false;
        long id = 0;
    };
    std::optional<UltimaPoliza> ultima_;
    long siguienteId_ = 0;  // 0: not read from the store yet
    long partidas_ = 0;
    bool cuentasCargadas_ = false;
    std::unordered_set<std::string> cuentasTmp_;       // CuentaSinSeparadores, folded
    std::unordered_set<std::string> cuentasEnBitacora_;  // accounts the log already names, folded
    std::unique_ptr<BaseDatos> ajustes_;                 // AjYRcl_Tmp, once opened
    // The INSERT of a voucher and of a line, kept while their connection
    // keeps its statements: a row then costs no look-up of its SQL.
    struct Guardada {
        BaseDatos* db = nullptr;
        std::uint64_t generacion = 0;
        Sentencia* st = nullptr;
    };
    Guardada insertaPoliza_, insertaPartida_;
    std::string apoyo_, apoyo2_;  // texts of the row being written, with their room kept
    std::string clave_;           // the key poliza() builds, with its room kept
    Sentencia& guardada(Guardada& g, BaseDatos& db, const char* sql);

    long siguienteIdPoliza();
    long escribePoliza(const PolizaLeida& p);
    bool cuentaConocida(const std::string& cuenta);
    void registraCuentaInexistente(const PolizaEscrita& p, const PartidaLeida& l);
    /// True when the account must be logged now: not yet named by this
    /// writer nor by the log.
    bool primeraVezEnBitacora(const std::string& cuenta);
    BaseDatos& almacenAjustes();
};

}  // namespace velmorant
