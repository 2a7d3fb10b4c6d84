#include "pipeline/EntornoBalanzaPolizas.h"

#include <stdexcept>

#include "pipeline/Balanza.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant::prueba {

std::string Mes(int n) { return (n < 10 ? "0" : "") + std::to_string(n); }

EmpresaDePrueba::EmpresaDePrueba() {
    s.RutaBase = carpeta.texto();
    s.RutaEmpresa = carpeta.texto();
    s.IdEmpresaActual = 7;
    s.NombCortoEmpresa = "ACME";
    s.EjercicioActual = 2023;
    s.progreso = &progreso;
    s.DbEmpresas =
        std::make_unique<BaseDatos>(RutaBaseDatos(carpeta.texto(), kArchivoEmpresas), BaseDatos::Modo::Crear);
    CreaEsquemaEmpresas(*s.DbEmpresas);
    s.DbEmpresas->ejecuta("INSERT INTO Empresas (IdEmpresa, NombCorto, Ejercicio, AuditoriaActual) VALUES (?,?,?,?)",
                          s.IdEmpresaActual, s.NombCortoEmpresa, 2023, 4);
    s.DbEmpresa = std::make_unique<BaseDatos>(RutaBaseDatos(carpeta.texto(), "ACME_2023"), BaseDatos::Modo::Crear);
    // The files are thrown away after the test: no need to wait for the disk.
    s.DbEmpresas->ejecutaScript("PRAGMA synchronous=OFF");
    s.DbEmpresa->ejecutaScript("PRAGMA synchronous=OFF");
    CreaEsquemaEmpresa(*s.DbEmpresa);
    CreaInconsisImpTmp(s);
    if (!AbreInconsistencias(s)) throw std::runtime_error("no se abrió el registro de inconsistencias");
    s.DbEmpresa->ejecutaScript("PRAGMA InconsisImpTmp.synchronous=OFF");
}

void EmpresaDePrueba::abrePolizasTmp() {
    CreaCuentasTmp(s);
    CreaPolizasTmp(s);
    CreaPolizasDetalleTmp(s);
    if (!AbreCuentasTmp(s) || !AbrePolizasTmp(s)) throw std::runtime_error("no se abrieron los almacenes de pólizas");
    for (const char* alias : {kCuentasTmp, kPolizasTmp, kPolizasDetalleTmp})
        s.DbEmpresa->ejecutaScript(std::string("PRAGMA ") + alias + ".synchronous=OFF");
}

void EmpresaDePrueba::cuentaTmp(const std::string& cuenta) {
    s.DbEmpresa->ejecuta("INSERT INTO CuentasTmp.Cuentas (Cuenta, CuentaSinSeparadores, Descripcion) VALUES (?,?,?)",
                         cuenta, cuenta, "Cuenta " + cuenta);
}

void EmpresaDePrueba::cuenta(const std::string& cuenta, const std::string& tipo, const std::string& padre) {
    s.DbEmpresa->ejecuta(
        "INSERT INTO Cuentas (Cuenta, Descripcion, Naturaleza, Tipo, CuentaAcumulativa) VALUES (?,?,?,?,?)", cuenta,
        "Cuenta " + cuenta, "D", tipo, padre);
}

void EmpresaDePrueba::cuentaConSaldo(const std::string& c, Moneda saldo, const std::string& padre) {
    cuenta(c, "D", padre);
    balanza(c, saldo);
}

void EmpresaDePrueba::balanza(const std::string& cuenta, Moneda saldoInicial) {
    s.DbEmpresa->ejecuta("INSERT INTO Balanzas (Cuenta, SaldoInicial, SaldoIniOrig) VALUES (?,?,?)", cuenta,
                         saldoInicial, saldoInicial);
}

void EmpresaDePrueba::poliza(const DatosPoliza& p, const std::string& tabla) {
    s.DbEmpresa->ejecuta("INSERT INTO " + tabla +
                             " (IdPoliza, Poliza, Tipo, Fecha, Concepto, Poliza_Deshabilitada, Cuadrada, Poliza_Mes13, "
                             "Poliza_Ajuste) VALUES (?,?,?,?,?,?,?,?,?)",
                         p.id, p.poliza, p.tipo, p.fecha, "Concepto " + p.poliza, p.deshabilitada, p.cuadrada, p.mes13,
                         p.ajuste);
}

void EmpresaDePrueba::linea(int idPoliza, const std::string& cuenta, const std::string& tipoMov, Moneda importe,
                            const std::string& tabla) {
    s.DbEmpresa->ejecuta("INSERT INTO " + tabla +
                             " (IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida) VALUES (?,?,?,?,?,"
                             "(SELECT COUNT(*) + 1 FROM " +
                             tabla + " WHERE IdPoliza=?))",
                         idPoliza, cuenta, tipoMov, importe, "Ref " + cuenta, idPoliza);
}

void EmpresaDePrueba::entrada(const std::string& tabla, int id, bool estatus, bool contabilizado,
                              const std::string& cuenta, const std::string& tipo, Moneda importe) {
    const bool ajuste = tabla == "Ajustes";
    const std::string clave = ajuste ? "IdAjuste" : "IdReclasificacion";
    const std::string numero = ajuste ? "Ajuste" : "Reclasificacion";
    s.DbEmpresa->ejecuta("INSERT INTO " + tabla + " (" + clave + ", " + numero +
                             ", Concepto, Estatus, Contabilizado) VALUES (?,?,?,?,?)",
                         id, id, "Entrada", estatus, contabilizado);
    s.DbEmpresa->ejecuta("INSERT INTO " + tabla + "_Detalle (" + clave + ", Cuenta, Tipo, Importe) VALUES (?,?,?,?)",
                         id, cuenta, tipo, importe);
}

void EmpresaDePrueba::mesesDeRevision(int previa1, int previa2, int previa3, int final, int auditoriaActual) {
    s.DbEmpresas->ejecuta(
        "UPDATE Empresas SET MesPrevia1=?, MesPrevia2=?, MesPrevia3=?, MesFinal=?, AuditoriaActual=? WHERE IdEmpresa=?",
        previa1, previa2, previa3, final, auditoriaActual, s.IdEmpresaActual);
}

void EmpresaDePrueba::aplicaMeses(int ultimo) {
    s.UltimoMesNuevo = static_cast<std::int16_t>(ultimo);
    for (int m = 1; m <= ultimo; ++m) {
        AplicaPolizasABalanza(s, Mes(m));
        ObtieneSaldosBalanza(s, Mes(m));
    }
}

Moneda EmpresaDePrueba::celda(const std::string& tabla, const std::string& cuenta, const std::string& columna) {
    return s.DbEmpresa->escalar("SELECT " + columna + " FROM " + tabla + " WHERE Cuenta=?", cuenta).moneda();
}

bool EmpresaDePrueba::nula(const std::string& tabla, const std::string& cuenta, const std::string& columna) {
    return s.DbEmpresa->escalar("SELECT " + columna + " FROM " + tabla + " WHERE Cuenta=?", cuenta).esNulo();
}

std::vector<FilaInconsistencia> EmpresaDePrueba::inconsistencias() {
    std::vector<FilaInconsistencia> r;
    Consulta c = s.DbEmpresa->consulta(
        "SELECT Referencia, FuenteError, ClasifError, Poliza, Tipo, Fecha, Cuenta FROM InconsisImpTmp ORDER BY rowid");
    for (c.primero(); !c.eof(); c.siguiente())
        r.push_back({c.campo(0).texto(), c.campo(1).texto(), c.campo(2).texto(), c.campo(3).texto(), c.campo(4).texto(),
                     c.campo(5).texto(), c.campo(6).texto()});
    return r;
}

}  // namespace velmorant::prueba
