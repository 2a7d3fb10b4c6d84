#include "review/CedulaAnalitica.h"

#include <optional>
#include <stdexcept>
#include <string>

#include "pipeline/Inconsistencias.h"
#include "review/CedulaAnaliticaComun.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

using cedula::ClaveDe;
using cedula::ConsultaCon;
using cedula::ParametrosClave;

namespace {

// Fields of a schedule row, as lists for SQL.
const std::string kCamposImpuestos =
    "AplicaIVA, PorIVA, IVA, AplicaRetISR, TasaRetISR, ImpteRetISR, AplicaRetIVA, TasaRetIVA, ImpteRetIVA";
const std::string kCamposMarcas = "Marca1, Marca2, Marca3, Marca4, Marca5, Marca6, Marca7";
const std::string kCamposTextos = "Observaciones, Sugerencias, InfoAdd1, InfoAdd2, Notas";
const std::string kCamposMovimiento = "IdCriterio, IdPoliza, Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe";

// What the saved copy keeps of a row (but its number and verdict).
const std::string kCamposCopia = kCamposMovimiento + ", Modificado, RefModificada, " + kCamposImpuestos + ", " +
                                 kCamposMarcas + ", " + kCamposTextos + ", VerObs";
// What the lost-rows log keeps: no notes and no remark flag.
const std::string kCamposPerdidos = kCamposMovimiento + ", Modificado, RefModificada, " + kCamposImpuestos + ", " +
                                    kCamposMarcas + ", Observaciones, Sugerencias, MovtoExistente";
// The reviewer's work that lands on a rebuilt row; the rule, the remark and
// the movement stay as the rebuild wrote them.
const std::string kCamposTrabajo = "Refmodificada, " + kCamposImpuestos + ", " + kCamposMarcas + ", " +
                                   kCamposTextos + ", Modificado, Aplicado";
// What an opening balance row brings back: no amount, rule or tax.
const std::string kCamposSaldoInicial =
    "Cuenta, Refmodificada, Referencia, " + kCamposMarcas + ", " + kCamposTextos + ", Modificado, Aplicado";

const std::string kSaldoInicial = "Saldo Inicial";
const std::string kCamposClave = "Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe";

std::vector<bool> Aplicados(Consulta c) {
    std::vector<bool> r;
    for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c["Aplicado"].booleano());
    return r;
}

// The first of the rows found that has not received work yet.
std::optional<size_t> PrimeroLibre(const std::vector<size_t>& iguales, const std::vector<bool>& aplicado) {
    for (size_t i : iguales)
        if (!aplicado[i]) return i;
    return std::nullopt;
}

bool ExisteCedulaGuardada(Sesion& s) {
    return ExisteArchivo(RutaAlmacen(s, kCedAnaliticaTmp)) && AbreAlmacen(s, kCedAnaliticaTmp);
}

// The lost-rows log is made at the start of a run; one missing is made here.
void AbreRenglonesPerdidos(Sesion& s) {
    if (AbreAlmacen(s, kInconsisImpTmpDet)) return;
    CreaInconsisImpTmpDet(s);
    if (!AbreAlmacen(s, kInconsisImpTmpDet))
        throw std::runtime_error("No fue posible abrir la Base temporal de Inconsistencias " +
                                 RutaAlmacen(s, kInconsisImpTmpDet));
}

std::string Palabra(const Valor& tipoMov) { return SiNuloTexto(tipoMov) == "D" ? "Cargo" : "Abono"; }

void Registra(Sesion& s, const std::string& texto, const Consulta& c) {
    RegistraInconsistencia(s, texto, kFuentePolizas, "D", SiNuloTexto(c["Poliza"]), SiNuloTexto(c["Tipo"]),
                           c["Fecha"].fecha(), SiNuloTexto(c["Cuenta"]));
}

}  // namespace

void GuardaCedulaAnalitica(Sesion& s) {
    BaseDatos& db = *s.DbEmpresa;
    if (db.escalar("SELECT COUNT(*) FROM CedAnalitica").entero() == 0) return;
    cedula::RenuevaAlmacen(s, kCedAnaliticaTmp, CreaCedAnaliticaTmp, {kCedAnaliticaTmp, "UUIDAnaliticaTmp"});
    const std::string campos = kCamposCopia;
    std::string origen = campos;
    origen.replace(origen.find("Referencia"), 10, "COALESCE(Referencia, '')");
    db.ejecuta("INSERT INTO CedAnaliticaTmp (IdCedAnaliticaAnt, " + campos +
               ", MovtoExistente) SELECT IdCedAnalitica, " + origen +
               ", 0 FROM CedAnalitica ORDER BY IdCedAnalitica");
    // The line text is kept as the store of the rebuild writes it, so that both compare equal.
    Consulta r = db.consulta(
        "SELECT IdCedAnalitica, Referencia FROM CedAnaliticaTmp WHERE instr(Referencia, '''') > 0 "
        "OR instr(Referencia, '|') > 0 OR instr(Referencia, '~') > 0");
    for (r.primero(); !r.eof(); r.siguiente())
        db.ejecuta("UPDATE CedAnaliticaTmp SET Referencia = ? WHERE IdCedAnalitica = ?",
                   QuitaCaracteresEspeciales(r["Referencia"].texto()), r["IdCedAnalitica"]);
}

void ConservaRenglonesPerdidos(Sesion& s) {
    if (!ExisteCedulaGuardada(s)) return;
    AbreRenglonesPerdidos(s);
    BaseDatos& db = *s.DbEmpresa;
    // A Null of the log compares as the key reads it, so that a row kept once is found again.
    const std::string yaGuardado =
        "SELECT 1 FROM InconsisImpTmpDet WHERE COALESCE(Poliza, '') = ? AND COALESCE(Tipo, '') = ? "
        "AND COALESCE(Fecha, '1900-01-01') = ? AND Cuenta = ? AND COALESCE(Referencia, '') = ? "
        "AND COALESCE(TipoMov, '') = ? AND COALESCE(Importe, 0) = ? AND COALESCE(IdCriterio, 0) = ? LIMIT 1";
    Consulta perdidos =
        db.consulta("SELECT * FROM CedAnaliticaTmp WHERE NOT MovtoExistente ORDER BY IdCedAnalitica");
    for (perdidos.primero(); !perdidos.eof(); perdidos.siguiente()) {
        auto parametros = ParametrosClave(ClaveDe(perdidos), {SiNuloCero(perdidos["IdCriterio"])});
        if (!ConsultaCon(db, yaGuardado, parametros).vacia()) continue;
        db.ejecuta("INSERT INTO InconsisImpTmpDet (" + kCamposPerdidos + ") SELECT " + kCamposPerdidos +
                       " FROM CedAnaliticaTmp WHERE IdCedAnalitica = ?",
                   perdidos["IdCedAnalitica"]);
    }
}

void ReportaMovimientosPerdidos(Sesion& s) {
    if (!ExisteCedulaGuardada(s)) return;
    Consulta c = s.DbEmpresa->consulta("SELECT " + kCamposClave +
                                       " FROM CedAnaliticaTmp WHERE NOT MovtoExistente GROUP BY " + kCamposClave +
                                       " ORDER BY " + kCamposClave);
    for (c.primero(); !c.eof(); c.siguiente())
        Registra(s,
                 "No se encontró el movimiento " + Palabra(c["TipoMov"]) + " por " +
                     SiNuloCero(c["Importe"]).moneda().texto() +
                     " de la Póliza, por lo que no se pudo reestablecer en la cédula analítica.",
                 c);
}

void RestauraDatosCedula(Sesion& s) {
    if (!ExisteCedulaGuardada(s)) return;
    BaseDatos& db = *s.DbEmpresa;
    std::string origenTrabajo = kCamposTrabajo;
    origenTrabajo.replace(origenTrabajo.find("Aplicado"), 8, "-1");
    std::string origenSaldo = kCamposSaldoInicial;
    origenSaldo.replace(origenSaldo.find("Aplicado"), 8, "-1");

    // The rebuilt schedule; the opening balance rows added below match no key.
    Consulta cedula = db.consulta("SELECT IdCedAnalitica, " + kCamposClave +
                                  ", Aplicado FROM CedAnalitica ORDER BY IdCedAnalitica");
    const cedula::IndiceMovimientos indice(cedula);
    std::vector<bool> aplicado = Aplicados(cedula);

    Consulta guardados = db.consulta("SELECT * FROM CedAnaliticaTmp ORDER BY IdCedAnalitica");
    for (guardados.primero(); !guardados.eof(); guardados.siguiente()) {
        const Valor idGuardado = guardados["IdCedAnalitica"];
        if (SiNuloTexto(guardados["Referencia"]) == kSaldoInicial) {
            // No voucher stands behind an opening balance row: it always comes back.
            db.ejecuta("INSERT INTO CedAnalitica (" + kCamposSaldoInicial + ") SELECT " + origenSaldo +
                           " FROM CedAnaliticaTmp WHERE IdCedAnalitica = ?",
                       idGuardado);
            continue;
        }
        // The first row of the movement that has not received work: two equal
        // saved rows land on two rows. With none left the saved row is passed
        // over; its loss was told from MovtoExistente.
        auto libre = PrimeroLibre(indice.busca(ClaveDe(guardados)), aplicado);
        if (!libre) continue;
        aplicado[*libre] = true;
        cedula.mueveA(*libre);
        const Valor nuevo = cedula["IdCedAnalitica"];
        db.ejecuta("UPDATE CedAnalitica SET (" + kCamposTrabajo + ") = (SELECT " + origenTrabajo +
                       " FROM CedAnaliticaTmp WHERE IdCedAnalitica = ?) WHERE IdCedAnalitica = ?",
                   idGuardado, nuevo);
        db.ejecuta(
            "INSERT INTO UUIDAnaliticaTmp (IdCedAnalitica, UUID) SELECT ?, UUID FROM UUIDAnalitica "
            "WHERE IdCedAnalitica = ? AND COALESCE(UUID, '') <> '' ORDER BY rowid",
            nuevo, SiNuloCero(guardados["IdCedAnaliticaAnt"]));
    }
    // Folios of rows that found no new row end here.
    db.ejecuta("DELETE FROM UUIDAnalitica");
    db.ejecuta("INSERT INTO UUIDAnalitica (IdCedAnalitica, UUID) SELECT IdCedAnalitica, UUID FROM UUIDAnaliticaTmp "
               "ORDER BY rowid");
}

void ReintegraNoDeducibles(Sesion& s) {
    BaseDatos& db = *s.DbEmpresa;
    db.ejecuta("UPDATE CedAnalitica SET Aplicado = ?", false);
    Consulta items = db.consulta("SELECT rowid AS Fila, * FROM CedNoDeducibles ORDER BY rowid");
    Consulta cedula = db.consulta("SELECT IdCedAnalitica, " + kCamposClave +
                                  ", Aplicado FROM CedAnalitica ORDER BY IdCedAnalitica");
    const cedula::IndiceMovimientos indice(cedula);
    std::vector<bool> aplicado(cedula.cuentaRegistros(), false);
    for (items.primero(); !items.eof(); items.siguiente()) {
        const auto& iguales = indice.busca(ClaveDe(items));
        if (auto libre = PrimeroLibre(iguales, aplicado)) {
            aplicado[*libre] = true;
            cedula.mueveA(*libre);
            db.ejecuta("UPDATE CedAnalitica SET Aplicado = ? WHERE IdCedAnalitica = ?", true, cedula["IdCedAnalitica"]);
            db.ejecuta("UPDATE CedNoDeducibles SET IdCedAnalitica = ? WHERE rowid = ?", cedula["IdCedAnalitica"],
                       items["Fila"]);
            continue;
        }
        // Both texts stand as the system has always written them.
        const std::string inicio =
            iguales.empty() ? "No se pudo integrar el mov. " : "No se pudo integrar el movimiento. ";
        Registra(s,
                 inicio + Palabra(items["TipoMov"]) + " por " + SiNuloCero(items["Importe"]).moneda().texto() +
                     " No Deducible ya que no se encontró en la cédula analítica.",
                 items);
        db.ejecuta("DELETE FROM CedNoDeducibles WHERE rowid = ?", items["Fila"]);
    }
    if (s.progreso) s.progreso->cede();
}

bool ExistenMovimientosPerdidos(Sesion& s) {
    if (!ExisteCedulaGuardada(s)) return false;
    return !s.DbEmpresa->escalar("SELECT 1 FROM CedAnaliticaTmp WHERE NOT MovtoExistente LIMIT 1").esNulo();
}

}  // namespace velmorant
