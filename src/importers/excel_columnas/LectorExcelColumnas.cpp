#include "importers/excel_columnas/LectorExcelColumnas.h"

#include "importers/Limpieza.h"
#include "importers/Marco.h"
#include "importers/Recorrido.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"
#include "pipeline/Inconsistencias.h"
#include "platform/ErrorLectura.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteLibro.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// A balance file that is not there: the reader cannot go on.
void ExisteOFalla(Sesion& s, const std::string& ruta) {
    if (ExisteArchivo(ruta)) return;
    const std::string mensaje = "No se pudo encontrar el archivo " + ruta;
    MsgCritico(s, mensaje);
    throw ErrorLectura(mensaje, ruta, 0);
}

// How the chart and balance sheets are walked: the sheet's header row is
// never data, and the title flag drops the first row under it as well.
// Blank rows are not told apart: a row with no account adds nothing.
ReglasRecorrido ReglasHoja(const std::string& etiqueta, bool titulos) {
    ReglasRecorrido r{etiqueta, titulos};
    r.saltaVacias = false;
    return r;
}

// A code of the workbook: blanks out, RellenaCuenta on any code, the
// separator out, then the full-length rule.
std::string CuentaDeHoja(Sesion& s, const std::string& texto, int& nivel, bool quitaTabuladores) {
    std::string cuenta = LimpiaCuenta(s, texto, OrdenLimpieza::RellenoSiempre, quitaTabuladores);
    if (!cuenta.empty()) ReglaLongitudCompleta(s, cuenta, nivel);
    return cuenta;
}

// The date of a voucher row, as a value; a text that is no date fails the row.
Fecha FechaDeFila(std::string texto) {
    // A date cell carries its time of day in its text: cut at the first blank.
    if (auto blanco = texto.find(' '); blanco != std::string::npos) texto.resize(blanco);
    texto = TraduceMesFecha(texto);
    auto fecha = LeeFecha(texto);
    if (!fecha) throw FalloFila("No coinciden los tipos: la fecha " + texto + " no es válida");
    return *fecha;
}

void ProcesaFilaPoliza(Sesion& s, DestinoTmp& d, const EstructuraDatosTxt& c, const FuenteRegistros& fuente,
                       const Fila& fila, bool mes13, Movimiento& mov, CuentasDeLineas& cuentas) {
    PolizaLeida p;
    p.Poliza = fila.campo(c.PIniNumPol);
    p.Tipo = Izquierda(fila.campo(c.PIniTipo), 10);
    // The closing vouchers take no date from the sheet.
    const std::string textoFecha = mes13 ? "31/12/" + std::to_string(s.EjercicioActual) : TextoFecha(c, fila);
    PartidaLeida l;
    l.Cuenta = cuentas.limpia(fila.campo(c.PIniCtaPol));
    l.Referencia = Izquierda(fila.campo(c.PIniRef), 255);
    p.Concepto = fila.campo(c.PIniConcept);
    const std::string ilegible = LeeMovimiento(c, fila, mov);
    if (p.Poliza.empty() || textoFecha.empty()) return;
    p.Fecha = FechaDeFila(textoFecha);
    p.Mes13 = mes13;
    long id = d.poliza(p);
    if (l.Cuenta.empty()) return;
    l.TipoMov = mov.TipoMov;
    l.Importe = mov.Importe;
    d.agregaPartida(id, l);
    if (!ilegible.empty())
        RegistraImporteIlegible(s, fuente.lugar(fila), ilegible, kFuentePolizas,
                                "la partida se registró con el importe de la línea anterior, " +
                                    mov.Importe.formatoMoneda() + ".",
                                p.Poliza, p.Tipo, p.Fecha, l.Cuenta);
}

}  // namespace

ReglasDestino ReglasExcelColumnas() {
    ReglasDestino r;
    r.largoDescripcion = 60;
    r.largoTipo = 10;
    r.agrupaConTipoCompleto = false;
    return r;
}

std::string NombreMesExcel(int mes) { return mes == 13 ? "Mes 13" : NombreDelMes(mes); }

std::string TraduceMesFecha(const std::string& fecha) {
    static const std::pair<const char*, const char*> kMeses[] = {
        {"JAN", "ENE"}, {"APR", "ABR"}, {"AUG", "AGO"}, {"DEC", "DEC"}};
    std::string t = Mayusculas(fecha);
    for (const auto& [ingles, espanol] : kMeses)
        if (auto p = t.find(ingles); p != std::string::npos) return t.replace(p, 3, espanol);
    return t;
}

// ------------------------------------------------------------ Readers

void ImportaCatalogoExcel(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaExcel& l,
                          bool conArchivoSaldosIniciales) {
    if (!ExisteArchivo(ruta)) {
        MsgAviso(s, "No se pudo encontrar el archivo " + ruta);
        return;
    }
    FuenteLibro fuente(ruta);
    const EstructuraDatosTxt& c = l.config;
    RecorreFilas(s, fuente, ReglasHoja("Importando Catálogo de Cuentas ...", l.Titulos), [&](const Fila& fila) {
        int nivel = c.PIniNivel != 0 ? ValEntero(fila.campo(c.PIniNivel)) : 0;
        std::string cuenta = CuentaDeHoja(s, fila.campo(c.PIniCuenta), nivel, true);
        if (cuenta.empty()) return;
        CuentaLeida r;
        if (!conArchivoSaldosIniciales)
            r.Saldo = ConvierteImporte(LimpiaImporte(fila.campo(c.PIniSdoIni), "0"));
        int nivelAcum = 0;
        r.Cuenta = r.CuentaSinSeparadores = cuenta;
        r.Descripcion = fila.campo(c.PIniDescripcion);
        r.CuentaAcumulativa = CuentaDeHoja(s, fila.campo(c.PIniCtaAcum), nivelAcum, true);
        r.Nivel = nivel;
        r.Naturaleza = fila.campo(c.PIniNaturaleza);
        d.agregaCuenta(r);
    });
}

void ImportaSaldosInicialesExcel(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaExcel& l) {
    ExisteOFalla(s, ruta);
    FuenteLibro fuente(ruta);
    if (fuente.totalEstimado() == 0) {
        MsgAviso(s, "El archivo de Saldos Iniciales está vacío.");
        return;
    }
    const EstructuraDatosTxt& c = l.config;
    RecorreFilas(s, fuente, ReglasHoja("Importando Saldos Iniciales ...", l.Titulos), [&](const Fila& fila) {
        int nivel = 0;
        std::string cuenta = CuentaDeHoja(s, fila.campo(c.PIniCtaSdoAnt), nivel, true);
        if (cuenta.empty() || !d.tieneCuentaTmp(cuenta)) return;
        d.asignaSaldoInicial(cuenta, ImporteRequerido(LimpiaImporte(fila.campo(c.PIniSdoIni), "0")));
    });
}

void ImportaPolizasExcel(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaExcel& l, int mes,
                         const std::string& etiqueta) {
    if (!ExisteArchivo(ruta)) return;
    FuenteLibro fuente(ruta);
    Movimiento mov;
    CuentasDeLineas cuentas(s, OrdenLimpieza::RellenoSiempre, true);
    // The title flag does not reach the voucher sheets: every row counts.
    ReglasRecorrido reglas = ReglasHoja(etiqueta, false);
    reglas.fallo = ReglasRecorrido::Fallo::FilaPoliza;
    RecorreFilas(s, fuente, reglas,
                 [&](const Fila& fila) { ProcesaFilaPoliza(s, d, l.config, fuente, fila, mes == 13, mov, cuentas); });
}

void ImportaSaldosAnioAntExcel(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaExcel& l) {
    ExisteOFalla(s, ruta);
    FuenteLibro fuente(ruta);
    if (fuente.totalEstimado() == 0) {
        MsgAviso(s, "El archivo está vacío: " + ruta);
        return;
    }
    const EstructuraDatosTxt& c = l.config;
    RecorreFilas(s, fuente, ReglasHoja("Importando Saldos del Año Anterior Final ", l.Titulos), [&](const Fila& fila) {
        int nivel = 0;
        std::string cuenta = CuentaDeHoja(s, fila.campo(c.PIniCtaSdoAnt), nivel, true);
        if (cuenta.empty()) return;
        SaldoAnioAnteriorLeido r;
        r.Descripcion = fila.campo(c.PIniDescSdoAnt);
        r.SaldoFinAnioAnt = ImporteRequerido(LimpiaImporte(fila.campo(c.PIniSdoFinAnt), "0"));
        if (!d.cuentaEnEmpresa(cuenta))
            RegistraInconsistencia(s,
                                   "La Cuenta " + cuenta +
                                       " no existe, contiene el saldo final del año anterior y será agregará al "
                                       "catalogo actual",
                                   kFuenteCatalogo, "O", "", "", std::nullopt, cuenta);
        r.Cuenta = r.CuentaSinSeparadores = cuenta;
        r.Nivel = nivel;
        d.agregaSaldoAnioAnterior(r);
    });
}

VistaPrevia VistaPreviaExcel(const std::string& ruta) {
    VistaPrevia vista;
    FuenteLibro fuente(ruta);
    const size_t columnas = fuente.nombresColumnas().size();
    for (size_t i = 1; i <= columnas; ++i) vista.columnas.push_back("Columna " + std::to_string(i));
    Fila fila;
    while (fuente.siguiente(fila)) {
        vista.filas.emplace_back();
        for (size_t i = 1; i <= columnas; ++i) vista.filas.back().push_back(fila[static_cast<int>(i)].comoTexto());
    }
    return vista;
}

}  // namespace velmorant
