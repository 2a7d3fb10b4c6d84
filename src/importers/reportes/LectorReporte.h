#pragma once
// The report engine: one reader for every printed report saved as text,
// driven by the report's description (DescripcionReporte.h). It walks the
// report line by line, tells each line's class by the description's
// markers (the most specific rule first, as the description orders them),
// takes the fields where the description says, and carries the small state
// of a report reader from line to line: the voucher being read (number,
// type, date, concept, `IdPoliza`), the key of the voucher last stored
// (date, number and type joined), the flag that says the next line holds
// the concept, and the column positions learnt from a heading. `Partida`
// is counted inside each voucher by the destination.
//
// Whatever the description does not recognise is page furniture and
// passes without a word; a line taken for a voucher line that cannot be
// read is dropped, or logged when the description asks for it. A voucher
// date that cannot be converted is a fault of its line (FalloFila), which
// the row loop reports with the file and the line.

#include <map>
#include <string>
#include <vector>

#include "importers/DestinoTmp.h"
#include "importers/reportes/DescripcionReporte.h"
#include "session/Sesion.h"

namespace velmorant {

/// Where the engine's vouchers go: the run's writer, or a preview.
class DestinoReporte {
public:
    virtual ~DestinoReporte() = default;
    /// Always a new voucher.
    virtual long nuevaPoliza(const PolizaLeida& p) = 0;
    /// The voucher of that number, type, date (and month-13 flag) read so
    /// far in the run, made when there is none.
    virtual long poliza(const PolizaLeida& p) = 0;
    virtual void agregaPartida(long idPoliza, const PartidaLeida& l) = 0;
    /// A line taken for a voucher line of `p` that could not be read;
    /// `texto` is the message of the log.
    virtual void partidaDudosa(const PolizaLeida& p, const std::string& cuenta, const std::string& texto) = 0;
};

/// The run's writer as the engine's destination; doubtful lines go to the
/// inconsistency log (source "Pólizas", class "O").
class DestinoReporteTmp : public DestinoReporte {
public:
    explicit DestinoReporteTmp(DestinoTmp& d) : d_(d) {}
    long nuevaPoliza(const PolizaLeida& p) override { return d_.nuevaPoliza(p); }
    long poliza(const PolizaLeida& p) override { return d_.poliza(p); }
    void agregaPartida(long id, const PartidaLeida& l) override { d_.agregaPartida(id, l); }
    void partidaDudosa(const PolizaLeida& p, const std::string& cuenta, const std::string& texto) override;

private:
    DestinoTmp& d_;
};

/// What the engine made of one line.
struct LineaLeida {
    ClaseLinea clase = ClaseLinea::SinClase;
    /// For a preview: the fields read, or why the line was dropped.
    std::string detalle;
};

class LectorReporte {
public:
    /// `mes` is the month the report is read for (13: closing vouchers).
    LectorReporte(Sesion& s, const DescripcionReporte& d, DestinoReporte& destino, int mes);

    /// Classifies and reads one line (decoded, without its end).
    LineaLeida procesa(const std::string& linea);

    /// Column positions learnt so far, by name.
    const std::map<std::string, int>& columnas() const { return columnas_; }

private:
    class Linea;

    Sesion& s_;
    const DescripcionReporte& d_;
    DestinoReporte& destino_;
    int mes_;
    std::vector<int> separadores_;  // positions of the separator in the account format

    // State carried from line to line.
    PolizaLeida actual_;
    long idActual_ = 0;
    bool abierta_ = false;
    std::string ultimaClave_;
    long idUltimaClave_ = 0;
    bool conceptoPendiente_ = false;
    PolizaLeida pendiente_;
    const ReglaLinea* reglaPendiente_ = nullptr;
    std::map<std::string, int> columnas_;

    bool cumple(const Condicion& c, const Linea& l) const;
    bool cumpleTodas(const ReglaLinea& r, const Linea& l) const;
    std::string lee(const CampoReporte& c, const Linea& l) const;
    LineaLeida encabezado(const ReglaLinea& r, const Linea& l);
    LineaLeida concepto(const Linea& l);
    LineaLeida partida(const ReglaLinea& r, const Linea& l);
    LineaLeida titulos(const ReglaLinea& r, const Linea& l);
    std::string guarda(const PolizaLeida& p);
    LineaLeida dudosa(const std::string& cuenta, const std::string& causa);
};

/// A date as reports print it: the forms of the source dates (LeeFecha),
/// and day, month name or abbreviation in Spanish, and year, joined by
/// "/", "-", "." or blanks ("31/ENE/2024", "5-Feb-24", "31 DICIEMBRE 2024").
std::optional<Fecha> LeeFechaReporte(const std::string& texto);

/// Reads the vouchers of month `mes` from the report `ruta` into the run's
/// writer, with the shared row loop: progress "Importando Pólizas de "
/// month " ...", one transaction, a fault named with file and line. A
/// missing file says "No se pudo encontrar el archivo " and the path and
/// reads nothing.
void ImportaPolizasReporte(Sesion& s, DestinoTmp& d, const DescripcionReporte& desc, int mes, const std::string& ruta);

}  // namespace velmorant
