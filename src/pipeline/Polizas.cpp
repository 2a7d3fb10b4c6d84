#include "pipeline/Polizas.h"

#include <set>
#include <stdexcept>

#include "accounts/CodigosCuenta.h"
#include "pipeline/Balanza.h"
#include "pipeline/Inconsistencias.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {


/// The company connection, with the voucher stores attached to it.
BaseDatos& PolizasTmp(Sesion& s) {
    if (!s.DbPolizasTmp || !s.DbPolizasDetalleTmp)
        throw std::logic_error("Las bases temporales de pólizas no están abiertas");
    return *s.DbPolizasTmp;
}


void Registra(Sesion& s, const std::string& referencia, const Consulta& poliza, const std::string& cuenta) {
    RegistraInconsistencia(s, referencia, kFuentePolizas, "D", SiNuloTexto(poliza["Poliza"]),
                           SiNuloTexto(poliza["Tipo"]), poliza["Fecha"].fecha(), cuenta);
}

/// Debits less credits of a voucher's lines in the store, counting only the
/// lines whose account the temporary chart or the company's chart knows.
Moneda DiferenciaDePoliza(BaseDatos& db, const Valor& idPoliza) {
    Consulta lineas = db.consulta(
        "SELECT TipoMov, Importe FROM Polizas_Detalle_Tmp d WHERE IdPoliza=? AND ("
        "EXISTS (SELECT 1 FROM CuentasTmp.Cuentas c WHERE c.CuentaSinSeparadores = d.Cuenta) OR "
        "EXISTS (SELECT 1 FROM main.Cuentas c WHERE c.Cuenta = d.Cuenta)) ORDER BY rowid",
        idPoliza);
    Moneda diferencia;
    for (lineas.primero(); !lineas.eof(); lineas.siguiente()) {
        Moneda importe = lineas["Importe"].moneda();
        if (SiNuloTexto(lineas["TipoMov"]) == "D")
            diferencia += importe;
        else
            diferencia -= importe;
    }
    return diferencia;
}

Consulta PolizasTmpDelMes(BaseDatos& db, int mes) {
    const std::string campos =
        "SELECT rowid AS Fila, IdPoliza, Poliza, Tipo, Fecha, Poliza_Deshabilitada FROM Polizas_Tmp WHERE ";
    if (mes == 13) return db.consulta(campos + "Poliza_Mes13 ORDER BY IdPoliza ASC");
    return db.consulta(campos + "Month(Fecha)=? AND NOT IFNULL(Poliza_Mes13,0) ORDER BY IdPoliza ASC", mes);
}

void GuardaLineas(BaseDatos& db, const Valor& idPoliza) {
    Consulta lineas = db.consulta(
        "SELECT IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida FROM Polizas_Detalle_Tmp WHERE IdPoliza=? "
        "ORDER BY rowid",
        idPoliza);
    Sentencia& agrega = db.preparada(
        "INSERT INTO Polizas_Detalle (IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida) VALUES (?,?,?,?,?,?)");
    for (lineas.primero(); !lineas.eof(); lineas.siguiente())
        agrega
            .con(lineas["IdPoliza"], lineas["Cuenta"], lineas["TipoMov"], lineas["Importe"],
                 QuitaCaracteresEspeciales(SiNuloTexto(lineas["Referencia"])), lineas["Partida"])
            .ejecuta();
}

struct CambioTipo {
    const char* anterior;
    const char* nuevo;
    const char* descripcion;
};

// The pairing of codes and names is the one the audit product's older data
// expects, odd as it reads.
const CambioTipo kCambiosTipo[] = {{"Dr", "1", "Ingresos"}, {"Ig", "2", "Egresos"}, {"Eg", "3", "Diario"}};

}  // namespace

void VerificaCuadrePolizas(Sesion& s, const std::string& mes) {
    BaseDatos& db = PolizasTmp(s);
    const int n = NumeroDeMesDeTexto(mes);
    Consulta polizas = PolizasTmpDelMes(db, n);
    Transaccion t(db);
    MaximoProgreso(s, polizas.cuentaRegistros());
    size_t avance = 0;
    for (polizas.primero(); !polizas.eof(); polizas.siguiente()) {
        EtiquetaProgreso(s, "Verificando cuadre de Pol. " + SiNuloTexto(polizas["Poliza"]) + ", " +
                        SiNuloTexto(polizas["Tipo"]) + ", " + NombreMesDosDigitos(mes));
        Moneda diferencia = DiferenciaDePoliza(db, polizas["IdPoliza"]);
        if (!diferencia.esCero()) {
            Registra(s, "Póliza no balanceada Importe de diferencia " + diferencia.formatoMoneda(), polizas, "");
            db.ejecuta("UPDATE Polizas_Tmp SET Poliza_Deshabilitada=-1, Cuadrada=0 WHERE rowid=?", polizas["Fila"]);
        } else {
            if (polizas["Poliza_Deshabilitada"].booleano())
                Registra(s,
                         "La Póliza se encuentra indicada como CANCELADA en los archivos de origen, por lo que, los "
                         "movimientos no se reflejaran en la Balanza.",
                         polizas, "");
            db.ejecuta("UPDATE Polizas_Tmp SET Cuadrada=-1 WHERE rowid=?", polizas["Fila"]);
        }
        AvanceProgreso(s, ++avance);
    }
    t.confirma();
}

void GuardaPolizas(Sesion& s, const std::string& mes) {
    PolizasTmp(s);
    BaseDatos& db = EmpresaAbierta(s);
    const int n = NumeroDeMesDeTexto(mes);
    Consulta polizas = db.consulta(
        "SELECT IdPoliza, Poliza, Tipo, Fecha, Concepto, Poliza_Deshabilitada, Cuadrada, Poliza_Mes13, Poliza_Ajuste "
        "FROM Polizas_Tmp WHERE Month(Fecha)=? ORDER BY IdPoliza ASC",
        n);
    Sentencia& agrega = db.preparada(
        "INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha, Concepto, Poliza_Deshabilitada, Cuadrada, Poliza_Mes13, "
        "Poliza_Ajuste) VALUES (?,?,?,?,substr(?,1,255),?,?,?,?)");
    Transaccion t(db);
    MaximoProgreso(s, polizas.cuentaRegistros());
    size_t avance = 0;
    for (polizas.primero(); !polizas.eof(); polizas.siguiente()) {
        auto fecha = polizas["Fecha"].fecha();
        EtiquetaProgreso(s, "Importando Pol. " + SiNuloTexto(polizas["Poliza"]) + ", " + SiNuloTexto(polizas["Tipo"]) + ", " +
                        (fecha ? fecha->ddmmaaaa() : SiNuloTexto(polizas["Fecha"])));
        agrega
            .con(polizas["IdPoliza"], polizas["Poliza"], polizas["Tipo"], polizas["Fecha"],
                 QuitaCaracteresEspeciales(SiNuloTexto(polizas["Concepto"])),
                 polizas["Poliza_Deshabilitada"].booleano(), polizas["Cuadrada"].booleano(),
                 polizas["Poliza_Mes13"].booleano(), polizas["Poliza_Ajuste"].booleano())
            .ejecuta();
        GuardaLineas(db, polizas["IdPoliza"]);
        AvanceProgreso(s, ++avance);
    }
    t.confirma();
}

void VerificaConsistenciaPolizas(Sesion& s, const std::string& mes) {
    BaseDatos& db = EmpresaAbierta(s);
    const int n = NumeroDeMesDeTexto(mes);
    if (db.escalar("SELECT 1 FROM Balanzas LIMIT 1").esNulo()) return;
    Consulta polizas = db.consulta(
        "SELECT rowid AS Fila, IdPoliza, Poliza, Tipo, Fecha FROM Polizas WHERE Cuadrada AND Month(Fecha)=? "
        "ORDER BY IdPoliza ASC",
        n);
    Transaccion t(db);
    MaximoProgreso(s, polizas.cuentaRegistros());
    size_t avance = 0;
    for (polizas.primero(); !polizas.eof(); polizas.siguiente()) {
        EtiquetaProgreso(s, "Verificando consistencia en póliza num. " + SiNuloTexto(polizas["Poliza"]) + " de " +
                        SiNuloTexto(polizas["Tipo"]) + " " + NombreMesDosDigitos(mes));
        Consulta lineas =
            db.consulta("SELECT Cuenta, TipoMov, Importe FROM Polizas_Detalle WHERE IdPoliza=? ORDER BY rowid",
                        polizas["IdPoliza"]);
        bool rechazada = false;
        for (lineas.primero(); !lineas.eof(); lineas.siguiente()) {
            std::string cuenta = SiNuloTexto(lineas["Cuenta"]);
            DestinoLinea destino = DestinoEnBalanza(s, cuenta, lineas["TipoMov"], lineas["Importe"]);
            if (destino.fila) continue;
            Registra(s, destino.motivo, polizas, cuenta);
            rechazada = true;
        }
        if (rechazada) db.ejecuta("UPDATE Polizas SET Poliza_Deshabilitada=-1 WHERE rowid=?", polizas["Fila"]);
        AvanceProgreso(s, ++avance);
    }
    t.confirma();
}

long SiguienteIdPoliza(Sesion& s) {
    Valor maximo = PolizasTmp(s).escalar("SELECT MAX([IdPoliza]) AS PolizaSiguiente FROM [Polizas_Tmp];");
    return maximo.esNulo() ? 1 : static_cast<long>(maximo.entero()) + 1;
}

bool ExistePolizaTmp(Sesion& s, const std::string& poliza, const std::string& tipo, const Fecha& fecha, bool esMes13) {
    std::string sql = "SELECT 1 FROM Polizas_Tmp WHERE Poliza=? AND Tipo=? AND Fecha =?";
    if (esMes13) sql += " AND Poliza_Mes13";
    return !PolizasTmp(s).escalar(sql + " LIMIT 1", poliza, tipo, fecha).esNulo();
}

void RegistraTiposPoliza(Sesion& s) {
    PolizasTmp(s);
    EmpresaAbierta(s).ejecuta(
        "INSERT INTO CatTipoPoliza (Tipo, Descripcion) SELECT Tipo, Tipo FROM Polizas_Tmp "
        "WHERE Tipo IS NOT NULL AND Tipo NOT IN (SELECT Tipo FROM CatTipoPoliza WHERE Tipo IS NOT NULL) "
        "GROUP BY Tipo ORDER BY Tipo ASC");
}

void NormalizaTiposPoliza(Sesion& s) {
    BaseDatos& db = EmpresaAbierta(s);
    bool hayLetras = false;
    Consulta tipos = db.consulta("SELECT Tipo FROM CatTipoPoliza WHERE Tipo IS NOT NULL");
    for (tipos.primero(); !tipos.eof() && !hayLetras; tipos.siguiente())
        for (const CambioTipo& c : kCambiosTipo) hayLetras = hayLetras || tipos["Tipo"].texto() == c.anterior;
    if (!hayLetras) return;
    Transaccion t(db);
    for (const CambioTipo& c : kCambiosTipo) {
        for (const char* tabla : {"Polizas", "CedAnalitica", "CedNoDeducibles"})
            db.ejecuta(std::string("UPDATE ") + tabla + " SET Tipo=? WHERE Tipo=? COLLATE BINARY", c.nuevo, c.anterior);
        db.ejecuta("UPDATE CatTipoPoliza SET Tipo=?, Descripcion=? WHERE Tipo=? COLLATE BINARY", c.nuevo, c.descripcion,
                   c.anterior);
    }
    t.confirma();
}

std::map<std::string, std::string> TiposPolizaNormalizados(Sesion& s) {
    std::set<std::string> tipos;
    Consulta c = EmpresaAbierta(s).consulta("SELECT Tipo FROM CatTipoPoliza WHERE Tipo IS NOT NULL");
    for (c.primero(); !c.eof(); c.siguiente()) tipos.insert(c["Tipo"].texto());
    std::map<std::string, std::string> cambios;
    for (const CambioTipo& t : kCambiosTipo)
        if (tipos.count(t.nuevo) && !tipos.count(t.anterior)) cambios[t.anterior] = t.nuevo;
    return cambios;
}

}  // namespace velmorant
