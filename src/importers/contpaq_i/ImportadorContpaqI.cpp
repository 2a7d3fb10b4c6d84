#include "importers/contpaq_i/ImportadorContpaqI.h"

#include "accounts/CodigosCuenta.h"
#include "platform/BaseDatos.h"
#include "session/Funciones.h"

namespace velmorant::contpaqi {

OpcionesContpaqI OpcionesDe(const ArchivosImportacion& a) {
    OpcionesContpaqI o;
    o.polizas.incluirUuid = a.casilla("incluir-uuid");
    o.polizas.replicaConceptos = a.casilla("replica-conceptos");
    o.actualizaReferencia = a.casilla("actualiza-referencia");
    if (a.casilla("tipo-01") && a.casilla("tipo-12"))
        throw ParametroInvalido("--tipo-01 y --tipo-12 se excluyen: el tipo de movimiento se codifica de una sola forma");
    o.polizas.codigoTipoMov = a.casilla("tipo-12") ? CodigoTipoMov::UnoDos : CodigoTipoMov::CeroUno;
    return o;
}

ReglasDestino ImportadorContpaqI::reglasDestino() const {
    ReglasDestino r;
    r.avisoCuentaInexistente = ReglasDestino::AvisoCuentaInexistente::CuentaNoExiste;
    r.avisoSinPoliza = true;
    return r;
}

void ImportadorContpaqI::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaCatalogoContpaqI(s, d, a.catalogo);
    const std::string balanza = a.ruta("balanza");
    if (!balanza.empty()) ImportaSaldosInicialesContpaqI(s, d, balanza);
}

void ImportadorContpaqI::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaPolizasContpaqI(s, d, a.ruta("polizas"), o_.polizas);
}

void ImportadorContpaqI::ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    ImportaSaldosAnioAnteriorContpaqI(s, d, ruta);
}

void ImportadorContpaqI::confirmaPropio(Sesion& s, MomentoConfirmacion momento) {
    if (momento != MomentoConfirmacion::Etapas || !o_.actualizaReferencia) return;
    // Each month's rows only look at that month's vouchers, so the months
    // may follow the commit of all of them.
    for (int mes = 1; mes <= s.UltimoMesNuevo; ++mes) ActualizaReferenciasMes(s, mes);
}

void ActualizaReferenciasMes(Sesion& s, int mes) {
    BaseDatos& db = *s.DbEmpresa;
    // The lines of the month's reviewed vouchers, each serving one row.
    db.ejecutaScript(
        "CREATE TEMP TABLE IF NOT EXISTS DetalleUpd (IdPoliza INTEGER, Cuenta TEXT, TipoMov TEXT, Importe INTEGER, "
        "Referencia TEXT, ImporteAbs INTEGER, NumMesFechaPol INTEGER, MovRevisado INTEGER, Poliza TEXT, Fecha TEXT);"
        "DELETE FROM temp.DetalleUpd;");
    auto idPoliza = [&](const Valor& poliza, const Valor& tipo, const Valor& fecha) {
        return db.escalar("SELECT IdPoliza FROM Polizas WHERE Poliza = ? AND Tipo = ? AND Fecha = ?", poliza, tipo, fecha);
    };
    for (Consulta c = db.consulta("SELECT Poliza, Fecha, Tipo FROM CedAnalitica WHERE Month(Fecha) = ? "
                                  "GROUP BY Poliza, Fecha, Tipo",
                                  mes);
         !c.eof(); c.siguiente()) {
        const Valor id = idPoliza(c.campo(0), c.campo(2), c.campo(1));
        if (id.esNulo()) continue;
        db.ejecuta("INSERT INTO temp.DetalleUpd (IdPoliza, Cuenta, TipoMov, Importe, Referencia, Poliza, Fecha, MovRevisado) "
                   "SELECT d.IdPoliza, d.Cuenta, d.TipoMov, d.Importe, d.Referencia, p.Poliza, p.Fecha, 0 "
                   "FROM Polizas_Detalle d JOIN Polizas p ON p.IdPoliza = d.IdPoliza WHERE d.IdPoliza = ? "
                   "ORDER BY d.Partida",
                   id);
    }
    EtiquetaProgreso(s, NombreMes(DosDigitos(mes)) + " Actualizando Referencia de Partidas ...");
    for (Consulta c = db.consulta("SELECT IdCedAnalitica, Poliza, Tipo, Fecha, Cuenta, TipoMov, Importe, Referencia "
                                  "FROM CedAnalitica WHERE Month(Fecha) = ? ORDER BY IdCedAnalitica",
                                  mes);
         !c.eof(); c.siguiente()) {
        const Valor id = idPoliza(c["Poliza"], c["Tipo"], c["Fecha"]);
        if (id.esNulo()) continue;
        Consulta linea = db.consulta("SELECT rowid, Referencia FROM temp.DetalleUpd WHERE IdPoliza = ? AND Cuenta = ? "
                                     "AND TipoMov = ? AND Importe = ? AND MovRevisado = 0 ORDER BY rowid LIMIT 1",
                                     id, c["Cuenta"], c["TipoMov"], c["Importe"]);
        if (linea.vacia()) continue;
        const std::string referencia = linea.campo(1).texto();
        if (referencia != c["Referencia"].texto()) {
            db.ejecuta("UPDATE CedAnalitica SET Referencia = ? WHERE IdCedAnalitica = ?", referencia, c["IdCedAnalitica"]);
            db.ejecuta("UPDATE CedNoDeducibles SET Referencia = ? WHERE IdCedAnalitica = ?", referencia,
                       c["IdCedAnalitica"]);
        }
        db.ejecuta("UPDATE temp.DetalleUpd SET MovRevisado = 1 WHERE rowid = ?", linea.campo(0));
    }
}

// ------------------------------------------------------------ Descriptors

namespace {

void AgregaArchivos(DescriptorImportador& d) {
    d.archivos = {
        {.papel = "catalogo",
         .etiqueta = "Catálogo de cuentas (CATALOGO.TXT)",
         .control = "eloRutaArchCat",
         .boton = "cmdCatalogo",
         .selector = {"Búsqueda del Archivo CATALOGO.TXT", "*.txt|*.txt", "VinCatalogo"},
         .faltante = "Especifica la ubicación del archivo que contiene el catálogo de cuentas"},
        {.papel = "polizas",
         .etiqueta = "Pólizas (CPOLIZAS.TXT)",
         .control = "eloRutaArchPol01",
         .boton = "cmdPolizas01",
         .selector = {"Búsqueda del Archivo CPOLIZAS.TXT", "*.txt|*.txt", "VinPolizas"},
         .faltante = "Especifica la ubicación del archivo que contiene las pólizas"},
        {.papel = "balanza",
         .etiqueta = "Balanza de comprobación (*.TXT)",
         .control = "eloRutaArchBal",
         .boton = "cmdBalanza",
         .selector = {"Búsqueda del Archivo *.TXT", "*.txt|*.txt", "VinBalanza"}},
    };
    d.anioAnterior = ArchivoDescrito{
        .papel = "saldos-anterior",
        .etiqueta = "Saldos finales año anterior (*.TXT)",
        .control = "eloRutaArchSdosFinalesAnioAnt",
        .boton = "cmdSaldosFinAnioAnt",
        .selector = {"Búsqueda del Archivo *.TXT - Saldos finales año anterior", "*.txt|*.txt", kClaveSaldosAnioAnterior},
        .faltante = "Especifique por favor el archivo que contiene los saldos finales del año anterior",
        .avisoFaltante = true};
}

}  // namespace

DescriptorImportador DescriptorContpaqIAnterior() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceContpaqIAnterior;
    d.titulo = "ContPAQ i";
    d.tipo = TipoImportacion::ArchivoUnico;
    AgregaArchivos(d);
    d.crea = [](Sesion&, const ArchivosImportacion&) {
        return std::make_unique<ImportadorContpaqI>(kEnlaceContpaqIAnterior, OpcionesContpaqI{});
    };
    return d;
}

DescriptorImportador DescriptorContpaqIMejorado() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceContpaqIMejorado;
    d.titulo = "ContPAQ i - Mejorado";
    d.tipo = TipoImportacion::ArchivoUnico;
    AgregaArchivos(d);
    d.casillas = {
        {.control = "chkIncluirUUID", .titulo = "Incorporar UUID del archivo de Pólizas.", .opcionCli = "incluir-uuid"},
        {.control = "chkReplicaConceptos", .titulo = "Replica Concepto de Póliza en Referencia",
         .opcionCli = "replica-conceptos"},
        {.control = "chkActualizaRef", .titulo = "Actualiza Referencia", .opcionCli = "actualiza-referencia"},
        {.control = "chkTipo01", .titulo = "Tipo de Movimiento: 0 Cargo, 1 Abono", .opcionCli = "tipo-01",
         .marcada = true},
        {.control = "chkTipo12", .titulo = "Tipo de Movimiento: 1 Cargo, 2 Abono", .opcionCli = "tipo-12"},
    };
    d.crea = [](Sesion&, const ArchivosImportacion& a) {
        return std::make_unique<ImportadorContpaqI>(kEnlaceContpaqIMejorado, OpcionesDe(a));
    };
    return d;
}

}  // namespace velmorant::contpaqi
