#pragma once
// How an importer plugs into the run: what files it takes, which kind of run
// it is (one file for the year, or one file per month), and its readers,
// which fill the temporary stores and never touch the company database.
// A new importer is its readers plus this small description; the run
// engine, the command line and the desktop frame do the rest.

#include <array>
#include <string>

#include "session/Sesion.h"

namespace velmorant {

enum class TipoImportacion {
    ArchivoUnico,  // one voucher file for the whole year
    MesPorMes,     // one voucher file per month
};

/// The files the user chose. Empty text means "not given".
struct ArchivosImportacion {
    std::string catalogo;
    std::string saldosIniciales;
    std::string polizas;                 // ArchivoUnico
    std::array<std::string, 13> meses;   // MesPorMes, January first; [12] is month 13
    std::string saldosAnioAnterior;      // the prior-year run
};

class Importador {
public:
    virtual ~Importador() = default;

    /// `IdSistema` of the link this importer serves.
    virtual int idSistema() const = 0;
    /// Caption of its form.
    virtual std::string titulo() const = 0;
    /// Filter of its file pickers, "description|pattern".
    virtual std::string filtroArchivos() const { return "Archivos de texto (*.txt)|*.txt|Todos (*.*)|*.*"; }
    virtual TipoImportacion tipo() const = 0;
    /// The source keeps opening balances in a file of their own.
    virtual bool saldosInicialesAparte() const { return false; }
    /// The importer offers the prior-year tab.
    virtual bool tieneAnioAnterior() const { return false; }

    /// Checks that the files it needs are given, saying what is missing in
    /// its own words; the run stops, untouched, when this is false. The
    /// month-by-month check common to all importers follows it.
    virtual bool validaArchivos(Sesion& s, const ArchivosImportacion& a);

    // Readers. Each fills the temporary stores of the run (attached to the
    // session's company connection) and logs what it finds; a file it
    // cannot read throws ErrorLectura (platform/ErrorLectura.h), and the run
    // stops before anything is committed.
    virtual void ImportaCatalogo(Sesion& s, const ArchivosImportacion& a) = 0;
    virtual void ImportaSaldosIniciales(Sesion& s, const ArchivosImportacion& a) {
        (void)s;
        (void)a;
    }
    /// ArchivoUnico: every voucher of the year.
    virtual void ImportaPolizas(Sesion& s, const ArchivosImportacion& a) {
        (void)s;
        (void)a;
    }
    /// MesPorMes: the vouchers of month `mes` (1..12) from `ruta`.
    virtual void ImportaPolizasMes(Sesion& s, int mes, const std::string& ruta) {
        (void)s;
        (void)mes;
        (void)ruta;
    }
    /// The prior-year run: closing balances of the prior year.
    virtual void ImportaSaldosAnioAnterior(Sesion& s, const std::string& ruta) {
        (void)s;
        (void)ruta;
    }
};

}  // namespace velmorant
