#include "store/EsquemaEmpresa.h"
#include "session/Funciones.h"

#include <stdexcept>

namespace velmorant {

namespace {

using T = TipoCampo;

using namespace campo;


DefTabla Empresas() {
    DefTabla t{"Empresas", {Long("IdEmpresa"), Texto("NombCorto", 50), Texto("Nombre", 255), Integer("Ejercicio"),
                            Texto("FormatoCta", 50), Texto("Separador", 1)},
               {{"PrimaryKey", {"IdEmpresa"}, true}, {"NombCorto", {"NombCorto", "Ejercicio"}}}};
    for (int i = 1; i <= 12; ++i) t.campos.push_back(Integer("Nivel" + std::to_string(i)));
    for (auto c : {"CatArbol", "RellenaCtaCeros", "CtaPrefijoHomogeneo", "SdosFinConMes13"})
        t.campos.push_back(Booleano(c));
    for (auto c : {"AuditoriaActual", "MesPrevia1", "MesPrevia2", "MesPrevia3", "MesFinal"})
        t.campos.push_back(Integer(c));
    t.campos.push_back(Long("IdSistema"));
    return t;
}

DefTabla Enlaces() {
    return {"Enlaces",
            {Long("IdSistema"), Texto("Descripcion", 255), Booleano("Liberado"), Booleano("Comercial")},
            {{"PrimaryKey", {"IdSistema"}, true}, {"Descripcion", {"Descripcion"}}}};
}

DefTabla Cuentas() {
    DefTabla t{"Cuentas",
               {Texto("Cuenta", 50), Texto("Descripcion", 80), Texto("Naturaleza", 1), Long("Nivel"),
                Texto("CuentaAcumulativa", 50), Texto("Tipo", 1), Booleano("ConMovtos"), Booleano("PorRevisar")},
               {{"Cuenta", {"Cuenta"}}, {"CuentaAcumulativa", {"CuentaAcumulativa"}}}};
    for (auto c : {"Saldo_Anterior_Previa", "Saldo_Anterior_Final", "Saldo_Previa1", "Saldo_Previa2", "Saldo_Previa3",
                   "Saldo_Final", "Ajuste_Debe", "Ajuste_Haber", "RCL_Debe", "RCL_Haber", "Saldo_Ajustado",
                   "Saldo_Final_Aud"})
        t.campos.push_back(MonedaC(c));
    return t;
}

// `Cuenta` first and `SaldoIniOrig` last: the roll-up walks the columns in
// between by position.
DefTabla Balanzas() {
    DefTabla t{"Balanzas", {Texto("Cuenta", 50), MonedaC("SaldoInicial")}, {{"Cuenta", {"Cuenta"}}}};
    for (const char* prefijo : {"C", "A", "SdoFin"})
        for (int m = 1; m <= 13; ++m) t.campos.push_back(MonedaC(prefijo + DosDigitos(m)));
    for (auto c : {"Ajuste_Debe", "Ajuste_Haber", "RCL_Debe", "RCL_Haber", "Saldo_Ajustado", "Saldo_Final_Aud",
                   "SaldoIniOrig"})
        t.campos.push_back(MonedaC(c));
    return t;
}

DefTabla Polizas() {
    return {"Polizas",
            {Long("IdPoliza"), Texto("Poliza", 20), Texto("Tipo", 10), FechaC("Fecha"), Texto("Concepto", 255),
             Booleano("Poliza_Deshabilitada"), Booleano("Cuadrada"), Booleano("Poliza_Mes13"),
             Booleano("Poliza_Ajuste")},
            {{"IdPoliza", {"IdPoliza"}}, {"Identidad", {"Poliza", "Tipo", "Fecha"}}, {"Fecha", {"Fecha"}}}};
}

DefTabla PolizasDetalle() {
    return {"Polizas_Detalle",
            {Long("IdPoliza"), Texto("Cuenta", 50), Texto("TipoMov", 1), MonedaC("Importe"), Texto("Referencia", 255),
             Integer("Partida")},
            {{"IdPoliza", {"IdPoliza"}}, {"Cuenta", {"Cuenta"}}}};
}

DefTabla CatTipoPoliza() {
    return {"CatTipoPoliza", {Texto("Tipo", 10), Texto("Descripcion", 255)}, {{"Tipo", {"Tipo"}}}};
}

DefTabla Entradas(const std::string& nombre, const std::string& id, const std::string& numero) {
    return {nombre,
            {Long(id), Long(numero), Texto("Concepto", 255), Booleano("Estatus"), Booleano("Contabilizado")},
            {{id, {id}}}};
}

DefTabla EntradasDetalle(const std::string& nombre, const std::string& id) {
    return {nombre,
            {Long(id), Texto("Cuenta", 40), Texto("Tipo", 1), MonedaC("Importe")},
            {{id, {id}}, {"Cuenta", {"Cuenta"}}}};
}

DefTabla SeleccionMaster() {
    return {"SeleccionMaster",
            {Long("IdCriterio"), Texto("Descripcion", 255), Texto("CtaIntegracion", 50), MonedaC("SaldoMayorA"),
             Single("Porcentaje"), Single("PorcentajeUsr"), MonedaC("TotalCta"), Integer("MesRevision")},
            {}};
}

DefTabla SeleccionDetalle() {
    return {"SeleccionDetalle",
            {Long("IdCriterio"), Texto("CtaIntegracion", 50), Texto("Cuenta", 50), MonedaC("Saldo"), Byte("VerObs"),
             Texto("Obs", 255), Integer("MesRevision")},
            {{"Cuenta_MesRevision", {"Cuenta", "MesRevision"}}}};
}

// One row per random draw of an account sample, so the auditor can show
// how a sample was made: the rule, the population, every seed the draw
// used and the accounts that came out.
DefTabla HistorialSorteos() {
    return {"HistorialSorteos",
            {{"IdSorteo", T::Contador}, Texto("FechaHora", 19), Long("IdCriterio"), Integer("MesRevision"),
             Texto("CtaIntegracion", 50), Texto("Descripcion", 255), Integer("Porcentaje"), Long("Poblacion"),
             MonedaC("TotalPoblacion"), Long("Muestra"), Long("Previas"), Long("PorSortear"), Long("Disponibles"),
             Booleano("PoolCompleto"), Memo("Semillas"), Memo("Posiciones"), Memo("Cuentas")},
            {{"CtaIntegracion_MesRevision", {"CtaIntegracion", "MesRevision"}}}};
}

// One row per import run, committed or not, and per undo of an import:
// the evidence an auditor files of where the company's data came from.
// The rows of a committed run are written in the commit's transaction.
DefTabla HistorialImportaciones() {
    DefTabla t{"HistorialImportaciones",
               {Long("IdImportacion"), Texto("FechaHora", 19), Texto("Usuario", 100), Texto("Equipo", 100),
                Texto("Programa", 20), Texto("NombCorto", 50), Texto("Nombre", 255), Integer("Ejercicio"),
                Long("IdSistema"), Texto("Operacion", 30), Long("Cuentas"), Long("SaldosIniciales"),
                Long("Polizas"), Long("Partidas"), Long("SaldosAnioAnterior")},
               {{"PrimaryKey", {"IdImportacion"}, true}}};
    for (const char* clase : {"A", "B", "C", "D", "O"}) t.campos.push_back(Long(std::string("Inconsis") + clase));
    for (auto& c : {Texto("Decision", 30), Texto("Resultado", 30), Memo("Detalle"), Long("DuracionMs"),
                    Long("Deshace"), Texto("Respaldo", 255)})
        t.campos.push_back(c);
    return t;
}

// The files of a run: role, path, size and SHA-256 (hexadecimal) as read.
DefTabla HistorialImportacionesArchivos() {
    return {"HistorialImportaciones_Archivos",
            {Long("IdImportacion"), Integer("Orden"), Texto("Papel", 50), Memo("Ruta"), Long("Tamano"),
             Texto("Sha256", 64), Texto("Modificado", 19)},
            {{"IdImportacion", {"IdImportacion"}}}};
}

// Control totals of a run's vouchers as read, by month (13: the closing).
DefTabla HistorialImportacionesTotales() {
    return {"HistorialImportaciones_Totales",
            {Long("IdImportacion"), Integer("Mes"), Long("Polizas"), Long("Partidas"), MonedaC("Cargos"),
             MonedaC("Abonos")},
            {{"IdImportacion", {"IdImportacion"}}}};
}

DefTabla CedAnaliticaMaster() {
    return {"CedAnaliticaMaster",
            {Long("IdCriterio"), Texto("Descripcion", 255), Texto("CtaIntegracion", 50), MonedaC("SaldoMayorA"),
             Single("Porcentaje"), MonedaC("TotalCta")},
            {}};
}

std::vector<DefCampo> CamposMovimiento() {
    return {Texto("Poliza", 20), Texto("Tipo", 10), FechaC("Fecha"), Texto("Cuenta", 50), Texto("Referencia", 255),
            Texto("TipoMov", 1), MonedaC("Importe")};
}

DefTabla CedAnalitica() {
    DefTabla t{"CedAnalitica", {{"IdCedAnalitica", T::Contador}, Long("IdCriterio"), Long("IdPoliza")}, {}};
    for (auto& c : CamposMovimiento()) t.campos.push_back(c);
    for (auto& c : {Booleano("Modificado"), Texto("Refmodificada", 255), Booleano("AplicaIVA"), Byte("PorIVA"),
                    MonedaC("IVA"), Booleano("AplicaRetISR"), Single("TasaRetISR"), MonedaC("ImpteRetISR"),
                    Booleano("AplicaRetIVA"), Single("TasaRetIVA"), MonedaC("ImpteRetIVA")})
        t.campos.push_back(c);
    for (int i = 1; i <= 7; ++i) t.campos.push_back(Texto("Marca" + std::to_string(i), 3));
    for (auto& c : {Memo("Observaciones"), Memo("Sugerencias"), Texto("InfoAdd1", 255), Texto("InfoAdd2", 255),
                    Texto("Notas", 255), Byte("VerObs"), Texto("Obs", 255), Booleano("Aplicado")})
        t.campos.push_back(c);
    t.indices = {{"IdPoliza", {"IdPoliza"}}, {"Cuenta", {"Cuenta"}}};
    return t;
}

DefTabla UUIDAnalitica() {
    return {"UUIDAnalitica", {Long("IdCedAnalitica"), Texto("UUID", 36)}, {{"IdCedAnalitica", {"IdCedAnalitica"}}}};
}

DefTabla CedNoDeducibles() {
    DefTabla t{"CedNoDeducibles", CamposMovimiento(), {{"IdCedAnalitica", {"IdCedAnalitica"}}}};
    t.campos.push_back(Long("IdCedAnalitica"));
    return t;
}

}  // namespace

std::string RutaBaseDatos(const std::string& carpeta, const std::string& nombreBase) {
    return carpeta + nombreBase + kExtensionBase;
}

const DefTabla& TablaEmpresas() {
    static const DefTabla t = Empresas();
    return t;
}

const DefTabla& TablaEnlaces() {
    static const DefTabla t = Enlaces();
    return t;
}

const std::vector<DefTabla>& TablasEmpresa() {
    static const std::vector<DefTabla> tablas = {
        Cuentas(),
        Balanzas(),
        Polizas(),
        PolizasDetalle(),
        CatTipoPoliza(),
        Entradas("Ajustes", "IdAjuste", "Ajuste"),
        EntradasDetalle("Ajustes_Detalle", "IdAjuste"),
        Entradas("Reclasificaciones", "IdReclasificacion", "Reclasificacion"),
        EntradasDetalle("Reclasificaciones_Detalle", "IdReclasificacion"),
        SeleccionMaster(),
        SeleccionDetalle(),
        HistorialSorteos(),
        CedAnaliticaMaster(),
        CedAnalitica(),
        UUIDAnalitica(),
        CedNoDeducibles(),
        HistorialImportaciones(),
        HistorialImportacionesArchivos(),
        HistorialImportacionesTotales(),
    };
    return tablas;
}

const DefTabla& TablaEmpresa(const std::string& nombre) {
    for (auto& t : TablasEmpresa())
        if (t.nombre == nombre) return t;
    throw std::out_of_range("Tabla desconocida: " + nombre);
}

void CreaEsquemaEmpresas(BaseDatos& db) { CreaTabla(db, TablaEmpresas()); }
void CreaEsquemaEnlaces(BaseDatos& db) { CreaTabla(db, TablaEnlaces()); }

void CreaEsquemaEmpresa(BaseDatos& db) {
    Transaccion t(db);
    for (auto& tabla : TablasEmpresa()) CreaTabla(db, tabla);
    t.confirma();
}

}  // namespace velmorant
