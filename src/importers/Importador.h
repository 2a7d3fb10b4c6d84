#pragma once
// How an importer plugs into the run: which kind of run it is (one file for
// the year, or one file per month), and its readers, which turn the rows of
// the client's files into typed records for the run's one writer
// (DestinoTmp) and never touch the company database. What the importer asks
// of the user is declared in its descriptor (importers/Descriptor.h); the
// run engine, the command line and the desktop frame do the rest.

#include <array>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "importers/DestinoTmp.h"
#include "session/Sesion.h"

namespace velmorant {

enum class TipoImportacion {
    ArchivoUnico,  // one voucher file (or one database) for the whole year
    MesPorMes,     // one voucher file per month
};

/// The moments of a run's commit at which an importer may do work of its own.
enum class MomentoConfirmacion {
    /// The commit begins: the vouchers are validated and accepted, and
    /// nothing of the company is written yet but its link and review months.
    Inicio,
    /// The trial balance and the stage balances are computed; the review
    /// work is not rebuilt yet.
    Etapas,
};

/// What the user chose: files by role, the ticked check boxes and the
/// valued options. An empty text means "not given".
struct ArchivosImportacion {
    std::string catalogo;
    std::string saldosIniciales;
    std::string polizas;                 // ArchivoUnico
    std::array<std::string, 13> meses;   // MesPorMes, January first; [12] is month 13
    std::string saldosAnioAnterior;      // the prior-year run
    /// Files of any other role ("base-datos", "balanza", ...), and every
    /// file of a role that takes several.
    std::map<std::string, std::vector<std::string>> otros;
    /// Ticked check boxes, by their command-line name.
    std::set<std::string> casillas;
    /// Valued options, by their command-line name.
    std::map<std::string, std::string> parametros;

    /// The (first) file of a role; "" when none.
    std::string ruta(const std::string& papel) const;
    /// Every file of a role, in the order given.
    std::vector<std::string> rutas(const std::string& papel) const;
    /// Sets the file of a role (adds one, for a role that takes several).
    void fija(const std::string& papel, const std::string& ruta);
    bool casilla(const std::string& nombre) const { return casillas.count(nombre) > 0; }
    std::optional<std::string> parametro(const std::string& nombre) const;
};

class Importador {
public:
    virtual ~Importador() = default;

    /// `IdSistema` of the link this importer serves.
    virtual int idSistema() const = 0;
    virtual TipoImportacion tipo() const = 0;
    /// The source keeps opening balances in a file of its own.
    virtual bool saldosInicialesAparte() const { return false; }
    /// How the run's writer stores this importer's records.
    virtual ReglasDestino reglasDestino() const { return {}; }

    /// Checks that the files it needs are given, saying what is missing in
    /// its own words; the run stops, untouched, when this is false. The
    /// base checks the files its descriptor marks as required, in order;
    /// the month-by-month check common to all importers follows it.
    virtual bool validaArchivos(Sesion& s, const ArchivosImportacion& a);

    // Readers. Each turns its source into records for `d`, inside one
    // transaction over the run's stores that the run opens around it. A
    // source that cannot be read throws ErrorLectura (platform/ErrorLectura.h)
    // after its messages; the run stops before anything is committed.
    virtual void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) = 0;
    virtual void ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a);
    /// ArchivoUnico: every voucher of the year.
    virtual void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a);
    /// MesPorMes: the vouchers of month `mes` (1..13) from `ruta`.
    virtual void ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta);
    /// The prior-year run: closing balances of the prior year.
    virtual void ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta);

    /// Commit work of the importer's own, for sources that bring more than
    /// the run commits (an earlier audit product's adjustments). It runs at
    /// each moment of the year's commit, inside the run's one transaction on
    /// `s.DbEmpresa`, so a failure rolls the whole import back. The base does
    /// nothing.
    virtual void confirmaPropio(Sesion& s, MomentoConfirmacion momento);
};

}  // namespace velmorant
