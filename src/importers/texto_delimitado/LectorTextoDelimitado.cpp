#include "importers/texto_delimitado/LectorTextoDelimitado.h"

#include <algorithm>

#include "importers/Limpieza.h"
#include "importers/texto_delimitado/DelimitadorArchivo.h"
#include "importers/Recorrido.h"
#include "pipeline/Inconsistencias.h"
#include "platform/ErrorLectura.h"
#include "platform/Numeros.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteRegistros.h"
#include "platform/fuentes/FuenteTexto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// A column read without any bound check: outside the parts it is a fault.
std::string CampoEstricto(const Fila& fila, int columna) {
    if (columna < 1 || static_cast<size_t>(columna) > fila.celdas.size())
        throw FalloFila("El subíndice está fuera del intervalo: la línea no tiene la columna " +
                        std::to_string(columna));
    return fila.campo(columna);
}

// A balance file that is not there: the reader cannot go on.
void ExisteOFalla(Sesion& s, const std::string& ruta) {
    if (ExisteArchivo(ruta)) return;
    const std::string mensaje = "No se pudo encontrar el archivo " + ruta;
    MsgCritico(s, mensaje);
    throw ErrorLectura(mensaje, ruta, 0);
}

// A line that must be split by the delimiter and is not: the reading stops.
void ExigeDelimitador(Sesion& s, const std::string& ruta, const LecturaDelimitada& l, const Fila& fila) {
    if (!l.exigeDelimitador || fila.celdas.size() > 1) return;
    const std::string mensaje = ruta + ", no está delimitado con el caracter: ( " + l.separador + " )";
    MsgCritico(s, mensaje);
    throw ErrorLectura(mensaje, ruta, fila.numero);
}

// What a voucher line fills, kept from line to line so that its texts keep
// their room.
struct LecturaPartida {
    PolizaLeida p;
    PartidaLeida l;
    Movimiento mov;
    std::string apoyo, textoFecha;
};

// TextoFecha into `t`, with the fields read in place.
void TextoFechaEn(const EstructuraDatosTxt& c, const Fila& fila, std::string& t, std::string& apoyo) {
    if (c.PIniDia < 1 || c.PIniMes < 1 || c.PIniAnio < 1) {
        t.assign(fila.campoVista(c.PIniDia, apoyo));
        return;
    }
    t.clear();
    const int columnas[3] = {c.PIniDia, c.PIniMes, c.PIniAnio};
    for (int i = 0; i < 3; ++i) {
        std::string_view parte = fila.campoVista(columnas[i], apoyo);
        if (parte.empty()) {
            t.clear();
            return;
        }
        if (i > 0) t += '/';
        t += parte;
    }
}

void ProcesaLineaPoliza(Sesion& s, DestinoTmp& d, const EstructuraDatosTxt& c, const FuenteRegistros& fuente,
                        const Fila& fila, LecturaPartida& lp, CuentasDeLineas& cuentas) {
    PolizaLeida& p = lp.p;
    PartidaLeida& l = lp.l;
    p.Poliza.assign(fila.campoVista(c.PIniNumPol, lp.apoyo));
    p.Tipo.assign(fila.campoVista(c.PIniTipo, lp.apoyo));
    std::string& textoFecha = lp.textoFecha;
    TextoFechaEn(c, fila, textoFecha, lp.apoyo);
    std::optional<Fecha> fecha;
    if (!textoFecha.empty()) {
        fecha = LeeFecha(textoFecha);
        if (!fecha) throw FalloFila("No coinciden los tipos: la fecha " + textoFecha + " no es válida");
    }
    l.Cuenta = cuentas.limpia(fila.campoVista(c.PIniCtaPol, lp.apoyo));
    l.Referencia.assign(fila.campoVista(c.PIniRef, lp.apoyo));
    p.Concepto.assign(fila.campoVista(c.PIniConcept, lp.apoyo));
    const std::string ilegible = LeeMovimiento(c, fila, lp.mov);
    if (p.Poliza.empty() || !fecha) return;
    p.Fecha = *fecha;
    long id = d.poliza(p);
    l.TipoMov = lp.mov.TipoMov;
    l.Importe = lp.mov.Importe;
    d.agregaPartida(id, l);
    if (!ilegible.empty())
        RegistraImporteIlegible(s, fuente.lugar(fila), ilegible, kFuentePolizas,
                                "la partida se registró con el importe de la línea anterior, " +
                                    lp.mov.Importe.formatoMoneda() + ".",
                                p.Poliza, p.Tipo, p.Fecha, l.Cuenta);
}

}  // namespace

// Returns the amount text, as the file has it, that could not be read;
// empty when none.
std::string LeeMovimiento(const EstructuraDatosTxt& c, const Fila& fila, Movimiento& m) {
    std::string apoyo;
    if (c.PIniTipoMov != 0) {
        m.TipoMov.clear();
        m.Importe = Moneda();
        const bool vacio = fila.campoVista(c.PIniTipoMov, apoyo).empty();
        if (vacio) return "";
        const bool cargo = fila.campoVista(c.PIniTipoMov, apoyo) == "1";
        auto v = ImporteLimpio(fila.campoVista(c.PIniImporte, apoyo), "0.00");
        if (v) m.Importe = *v;
        m.TipoMov = cargo ? "D" : "H";
        return v ? "" : fila.campo(c.PIniImporte);
    }
    auto debe = ImporteLimpio(fila.campoVista(c.PIniCargo, apoyo), "0.00");
    if (!debe) return fila.campo(c.PIniCargo);
    if (!debe->esCero()) {
        m.Importe = *debe;
        m.TipoMov = "D";
        return "";
    }
    auto haber = ImporteLimpio(fila.campoVista(c.PIniAbono, apoyo), "0.00");
    if (!haber) return fila.campo(c.PIniAbono);
    m.Importe = *haber;
    if (!haber->esCero()) m.TipoMov = "H";
    return "";
}

// The date text of a line: the whole column, or day "/" month "/" year.
std::string TextoFecha(const EstructuraDatosTxt& c, const Fila& fila) {
    if (c.PIniDia < 1 || c.PIniMes < 1 || c.PIniAnio < 1) return fila.campo(c.PIniDia);
    std::string d = fila.campo(c.PIniDia), m = fila.campo(c.PIniMes), a = fila.campo(c.PIniAnio);
    if (d.empty() || m.empty() || a.empty()) return "";
    return d + "/" + m + "/" + a;
}

ReglasDestino ReglasTextoDelimitado() {
    ReglasDestino r;
    r.largoDescripcion = 60;
    r.largoTipo = 10;
    r.agrupaConTipoCompleto = true;
    return r;
}

// ------------------------------------------------------------ Readers

void ImportaCatalogoTexto(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaDelimitada& l,
                          bool conArchivoSaldosIniciales) {
    if (!ExisteArchivo(ruta)) {
        MsgAviso(s, "No se pudo encontrar el archivo " + ruta);
        return;
    }
    FuenteTextoDelimitado fuente(ruta, l.separador, true);
    const EstructuraDatosTxt& c = l.config;
    RecorreFilas(s, fuente, {"Importando Catálogo de Cuentas ...", l.Titulos}, [&](const Fila& fila) {
        ExigeDelimitador(s, ruta, l, fila);
        CuentaLeida r;
        std::string cuenta = LimpiaCuenta(s, fila.campo(c.PIniCuenta), OrdenLimpieza::SeparadorYRelleno, true);
        std::string ctaAcum = fila.campo(c.PIniCtaAcum);
        int nivel = c.PIniNivel != 0 ? ValEntero(fila.campo(c.PIniNivel)) : 0;
        std::string saldoIlegible;
        if (!conArchivoSaldosIniciales) {
            r.Saldo = ConvierteImporte(LimpiaImporte(fila.campo(c.PIniSdoIni), "0"));
            if (!r.Saldo) saldoIlegible = fila.campo(c.PIniSdoIni);
        }
        ReglaLongitudCompleta(s, cuenta, nivel);
        int nivelAcum = 0;
        ReglaLongitudCompleta(s, ctaAcum, nivelAcum);
        r.Cuenta = r.CuentaSinSeparadores = cuenta;
        r.Descripcion = fila.campo(c.PIniDescripcion);
        r.CuentaAcumulativa = ctaAcum;
        r.Nivel = nivel;
        r.Naturaleza = fila.campo(c.PIniNaturaleza);
        d.agregaCuenta(r);
        if (!saldoIlegible.empty())
            RegistraImporteIlegible(s, fuente.lugar(fila), saldoIlegible, kFuenteCatalogo,
                                    "la cuenta " + cuenta + " quedó sin saldo inicial.", "", "", std::nullopt, cuenta);
    });
}

void ImportaSaldosInicialesTexto(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaDelimitada& l) {
    ExisteOFalla(s, ruta);
    if (CuentaLineasTexto(ruta) == 0) {
        MsgAviso(s, "El archivo de Saldos Iniciales está vacío.");
        return;
    }
    // This reader keeps the double quotes.
    FuenteTextoDelimitado fuente(ruta, l.separador, false);
    const EstructuraDatosTxt& c = l.config;
    const size_t minimos = static_cast<size_t>(std::max(c.PIniCtaSdoAnt, c.PIniSdoIni));
    RecorreFilas(s, fuente, {"Importando Saldos Iniciales ...", l.Titulos}, [&](const Fila& fila) {
        ExigeDelimitador(s, ruta, l, fila);
        if (l.exigeDelimitador && fila.celdas.size() < minimos) {
            const std::string mensaje =
                ruta + ", no contiene los campos mínimos necesarios para la importación de los Saldos iniciales.";
            MsgCritico(s, mensaje);
            throw ErrorLectura(mensaje, ruta, fila.numero);
        }
        std::string cuenta = LimpiaCuenta(s, fila.campo(c.PIniCtaSdoAnt), OrdenLimpieza::SeparadorYRelleno, true);
        int nivel = 0;
        ReglaLongitudCompleta(s, cuenta, nivel);
        if (!d.tieneCuentaTmp(cuenta)) return;
        d.asignaSaldoInicial(cuenta, ImporteRequerido(LimpiaImporte(fila.campo(c.PIniSdoIni), "0")));
    });
}

void ImportaPolizasTexto(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaDelimitada& l,
                         const std::string& etiqueta) {
    if (!ExisteArchivo(ruta)) return;
    FuenteTextoDelimitado fuente(ruta, l.separador, true);
    LecturaPartida lp;
    CuentasDeLineas cuentas(s, OrdenLimpieza::RellenoYSeparador, true);
    ReglasRecorrido reglas{etiqueta, l.Titulos};
    reglas.fallo = ReglasRecorrido::Fallo::LineaPoliza;
    RecorreFilas(s, fuente, reglas,
                 [&](const Fila& fila) { ProcesaLineaPoliza(s, d, l.config, fuente, fila, lp, cuentas); });
}

void ImportaSaldosAnioAntTexto(Sesion& s, DestinoTmp& d, const std::string& ruta, const LecturaDelimitada& l) {
    ExisteOFalla(s, ruta);
    if (CuentaLineasTexto(ruta) == 0) {
        MsgAviso(s, "El archivo está vacío: " + ruta);
        return;
    }
    FuenteTextoDelimitado fuente(ruta, l.separador, true);
    const EstructuraDatosTxt& c = l.config;
    RecorreFilas(s, fuente, {"Verificando Saldos Finales año anterior ...", l.Titulos}, [&](const Fila& fila) {
        SaldoAnioAnteriorLeido r;
        std::string cuenta = LimpiaCuenta(s, CampoEstricto(fila, c.PIniCtaSdoAnt), OrdenLimpieza::SeparadorYRelleno, true);
        r.Descripcion = CampoEstricto(fila, c.PIniDescSdoAnt);
        r.SaldoFinAnioAnt = ImporteRequerido(LimpiaImporte(CampoEstricto(fila, c.PIniSdoFinAnt), "0"));
        int nivel = 0;
        ReglaLongitudCompleta(s, cuenta, nivel);
        // The sense of this test is the reverse of its name, and stays so.
        if (d.cuentaEnEmpresa(cuenta))
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

VistaPrevia VistaPreviaTexto(Sesion& s, const std::string& ruta, const std::string& separador) {
    VistaPrevia vista;
    FuenteTextoDelimitado fuente(ruta, separador, false);
    Fila fila;
    while (fuente.siguiente(fila)) {
        if (fila.texto.empty()) continue;
        if (vista.columnas.empty())
            for (size_t i = 1; i <= fila.celdas.size(); ++i) vista.columnas.push_back("Columna " + std::to_string(i));
        vista.filas.emplace_back();
        if (fila.celdas.size() == vista.columnas.size())
            for (auto& celda : fila.celdas) vista.filas.back().push_back(Izquierda(celda.comoTexto(), 255));
        if (fila.celdas.size() == 1) {
            const std::string mensaje =
                MensajeArchivoSinDelimitar(ruta);
            MsgCritico(s, mensaje);
            throw ErrorLectura(mensaje, ruta, fila.numero);
        }
    }
    return vista;
}

}  // namespace velmorant
