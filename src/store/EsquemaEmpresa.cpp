#include "store/EsquemaEmpresa.h"
#include "session/Funciones.h"

#include <cctype>
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

// Currency fields of the audit product's tables default to 0.
std::vector<DefTabla> ConMonedaEnCero(std::vector<DefTabla> tablas) {
    for (auto& t : tablas)
        for (auto& c : t.campos)
            if (c.tipo == TipoCampo::Moneda) c.predeterminado = "0";
    return tablas;
}

// A column of a table as the file has it.
struct ColumnaExistente {
    std::string nombre, tipo, predeterminado;
    bool noNula = false;
};

std::vector<ColumnaExistente> ColumnasExistentes(BaseDatos& db, const std::string& tabla) {
    std::vector<ColumnaExistente> r;
    Consulta c = db.consulta("SELECT name, type, \"notnull\", dflt_value FROM pragma_table_info(?) ORDER BY cid", tabla);
    for (c.primero(); !c.eof(); c.siguiente())
        r.push_back({c.campo(0).texto(), c.campo(1).texto(), c.campo(3).texto(), c.campo(2).entero() != 0});
    return r;
}

bool MismoNombre(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

const DefCampo* CampoDescrito(const DefTabla& tabla, const std::string& nombre) {
    for (auto& c : tabla.campos)
        if (MismoNombre(c.nombre, nombre)) return &c;
    return nullptr;
}

const ColumnaExistente* ColumnaDe(const std::vector<ColumnaExistente>& columnas, const std::string& nombre) {
    for (auto& c : columnas)
        if (MismoNombre(c.nombre, nombre)) return &c;
    return nullptr;
}

std::string Entre(const std::string& nombre) { return "\"" + nombre + "\""; }

// SQLite cannot change a column's default in place: the table is made anew
// with its columns in the file's order (those of the description as the
// description writes them, any other as the file has it), its rows copied,
// the old one dropped, the new one renamed, the old indexes made again and
// an AUTOINCREMENT counter kept where it was.
void Reconstruye(BaseDatos& db, const DefTabla& tabla) {
    const std::string provisional = tabla.nombre + "__reconstruida";
    std::string columnas, nombres;
    for (auto& e : ColumnasExistentes(db, tabla.nombre)) {
        const DefCampo* c = CampoDescrito(tabla, e.nombre);
        std::string definicion = c ? DefinicionColumna(*c)
                                   : Entre(e.nombre) + " " + e.tipo + (e.noNula ? " NOT NULL" : "") +
                                         (e.predeterminado.empty() ? "" : " DEFAULT " + e.predeterminado);
        columnas += (columnas.empty() ? "" : ", ") + definicion;
        nombres += (nombres.empty() ? "" : ", ") + Entre(e.nombre);
    }
    std::vector<std::string> indices;
    Consulta c = db.consulta("SELECT sql FROM sqlite_schema WHERE type = 'index' AND tbl_name = ? AND sql IS NOT NULL",
                             tabla.nombre);
    for (c.primero(); !c.eof(); c.siguiente()) indices.push_back(c.campo(0).texto());
    Valor contador;
    if (db.existeTabla("sqlite_sequence"))
        contador = db.escalar("SELECT seq FROM sqlite_sequence WHERE name = ?", tabla.nombre);

    db.olvidaPreparadas();
    db.ejecutaScript("DROP TABLE IF EXISTS " + Entre(provisional));
    db.ejecutaScript("CREATE TABLE " + Entre(provisional) + " (" + columnas + ")");
    db.ejecutaScript("INSERT INTO " + Entre(provisional) + " (" + nombres + ") SELECT " + nombres + " FROM " +
                     Entre(tabla.nombre));
    db.ejecutaScript("DROP TABLE " + Entre(tabla.nombre));
    db.ejecutaScript("ALTER TABLE " + Entre(provisional) + " RENAME TO " + Entre(tabla.nombre));
    for (auto& sql : indices) db.ejecutaScript(sql);
    if (!contador.esNulo() && db.ejecuta("UPDATE sqlite_sequence SET seq = MAX(seq, ?) WHERE name = ?", contador,
                                         tabla.nombre) == 0)
        db.ejecuta("INSERT INTO sqlite_sequence (name, seq) VALUES (?, ?)", tabla.nombre, contador);
}

// Brings an existing table up to its description. True when it had to be
// rebuilt for a missing default.
bool ActualizaTabla(BaseDatos& db, const DefTabla& tabla) {
    auto existentes = ColumnasExistentes(db, tabla.nombre);
    bool sinPredeterminado = false;
    for (auto& c : tabla.campos) {
        const ColumnaExistente* e = ColumnaDe(existentes, c.nombre);
        if (!e)
            db.ejecutaScript("ALTER TABLE " + Entre(tabla.nombre) + " ADD COLUMN " + DefinicionColumna(c));
        else if (e->predeterminado != c.predeterminado)
            sinPredeterminado = true;
    }
    if (sinPredeterminado) Reconstruye(db, tabla);
    CreaTabla(db, tabla);  // the indexes of the description that are missing
    return sinPredeterminado;
}

// The amounts a missing default left Null in the chart and the trial
// balance, where the pipeline adds rows without them.
void MonedaNulaACero(BaseDatos& db, const DefTabla& tabla) {
    if (tabla.nombre != "Cuentas" && tabla.nombre != "Balanzas") return;
    std::string asignaciones;
    for (auto& c : tabla.campos)
        if (c.tipo == TipoCampo::Moneda)
            asignaciones += (asignaciones.empty() ? "" : ", ") + Entre(c.nombre) + " = COALESCE(" + Entre(c.nombre) + ", 0)";
    db.ejecutaScript("UPDATE " + Entre(tabla.nombre) + " SET " + asignaciones);
}

int VersionEsquema(BaseDatos& db) { return static_cast<int>(db.escalar("PRAGMA user_version").entero()); }

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
    static const std::vector<DefTabla> tablas = ConMonedaEnCero({
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
    });
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
    for (auto& tabla : TablasEmpresa()) {
        if (!db.existeTabla(tabla.nombre))
            CreaTabla(db, tabla);
        else if (ActualizaTabla(db, tabla))
            MonedaNulaACero(db, tabla);
    }
    if (VersionEsquema(db) < kVersionEsquemaEmpresa)
        db.ejecutaScript("PRAGMA user_version = " + std::to_string(kVersionEsquemaEmpresa));
    t.confirma();
}

EstadoEsquema PreparaEsquemaEmpresa(BaseDatos& db) {
    if (VersionEsquema(db) >= kVersionEsquemaEmpresa) return EstadoEsquema::Vigente;
    bool alguna = false;
    for (auto& tabla : TablasEmpresa()) alguna = alguna || db.existeTabla(tabla.nombre);
    if (!alguna) return EstadoEsquema::SinTablas;
    CreaEsquemaEmpresa(db);
    return EstadoEsquema::Actualizado;
}

}  // namespace velmorant
