#include "importers/texto_fijo/LectorTextoFijo.h"

#include <tuple>

#include "importers/Limpieza.h"
#include "importers/Recorrido.h"
#include "pipeline/Inconsistencias.h"
#include "platform/ArchivoTexto.h"
#include "platform/ErrorLectura.h"
#include "platform/Numeros.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteTexto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

using E = EstructuraDatosTxt;

// A field of the layout is read only when both its position and its length
// are set.
bool Presente(std::int16_t posicion, std::int16_t largo) { return posicion != 0 && largo != 0; }

// The cells of a chart line and of a voucher line, in the order their
// places are handed to the source.
enum CampoCatalogo { kCuenta = 1, kDescripcion, kCtaAcum, kNivel, kNaturaleza, kSdoIni };
enum CampoPoliza { kTipo = 1, kNumPol, kDia, kMes, kAnio, kCtaPol, kRef, kConcept, kTipoMov, kImporte, kCargo, kAbono };

std::vector<std::pair<int, int>> Lugares(std::initializer_list<std::pair<std::int16_t, std::int16_t>> pares) {
    std::vector<std::pair<int, int>> r;
    for (auto [posicion, largo] : pares) r.emplace_back(Presente(posicion, largo) ? posicion : 0, largo);
    return r;
}

std::vector<std::pair<int, int>> LugaresCatalogo(const E& c) {
    return Lugares({{c.PIniCuenta, c.LongCuenta},
                    {c.PIniDescripcion, c.LongDescripcion},
                    {c.PIniCtaAcum, c.LongCtaAcum},
                    {c.PIniNivel, c.LongNivel},
                    {c.PIniNaturaleza, c.LongNaturaleza},
                    {c.PIniSdoIni, c.LongSdoIni}});
}

std::vector<std::pair<int, int>> LugaresPolizas(const E& c) {
    return Lugares({{c.PIniTipo, c.LongTipo},
                    {c.PIniNumPol, c.LongNumPol},
                    {c.PIniDia, c.LongDia},
                    {c.PIniMes, c.LongMes},
                    {c.PIniAnio, c.LongAnio},
                    {c.PIniCtaPol, c.LongCtaPol},
                    {c.PIniRef, c.LongRef},
                    {c.PIniConcept, c.LongConcept},
                    {c.PIniTipoMov, c.LongTipoMov},
                    {c.PIniImporte, c.LongImporte},
                    {c.PIniCargo, c.LongCargo},
                    {c.PIniAbono, c.LongAbono}});
}

// A file that is not there: the reader cannot go on.
void ExisteOFalla(Sesion& s, const std::string& ruta) {
    if (ExisteArchivo(ruta)) return;
    const std::string mensaje = "No se pudo encontrar el archivo " + ruta;
    MsgCritico(s, mensaje);
    throw ErrorLectura(mensaje, ruta, 0);
}

// The level of a chart line: a numeric text as a whole number (halves to
// the even number, as an integer field takes it); nothing otherwise.
std::optional<int> NivelLeido(const std::string& texto) {
    if (texto.empty() || !EsNumerico(texto)) return std::nullopt;
    auto m = Moneda::desdeTexto(texto);
    if (!m) return std::nullopt;
    std::int64_t d = m->diezmilesimas(), q = d / Moneda::kEscala, r = d % Moneda::kEscala;
    if (r < 0) r = -r;
    if (r > Moneda::kEscala / 2 || (r == Moneda::kEscala / 2 && q % 2 != 0)) q += d < 0 ? -1 : 1;
    if (q < -32768 || q > 32767) return std::nullopt;
    return static_cast<int>(q);
}

// The amount and direction of a voucher line. The direction starts afresh
// on every line; the amount keeps the value of the line before only when
// neither amount text of the line is numeric.
struct Movimiento {
    std::string TipoMov;
    Moneda Importe;
};

// Returns the amount text, as the file has it, that could not be read;
// empty when none.
std::string LeeMovimiento(const E& c, const Fila& fila, Movimiento& m) {
    m.TipoMov.clear();
    if (Presente(c.PIniTipoMov, c.LongTipoMov)) {
        m.Importe = Moneda();
        // The indicator is taken as it stands: a blank is not empty, and
        // like any text but "1" it means credit.
        const std::string indicador = fila[kTipoMov].comoTexto();
        if (indicador.empty()) return "";
        auto v = ConvierteImporte(LimpiaImporte(fila.campo(kImporte), "0.00"));
        if (v) m.Importe = *v;
        m.TipoMov = indicador == "1" ? "D" : "H";
        return v ? "" : fila.campo(kImporte);
    }
    auto debe = ConvierteImporte(LimpiaImporte(fila.campo(kCargo), "0.00"));
    if (!debe) return fila.campo(kCargo);
    if (!debe->esCero()) {
        m.Importe = *debe;
        m.TipoMov = "D";
        return "";
    }
    auto haber = ConvierteImporte(LimpiaImporte(fila.campo(kAbono), "0.00"));
    if (!haber) return fila.campo(kAbono);
    m.Importe = *haber;
    if (!haber->esCero()) m.TipoMov = "H";
    return "";
}

void ProcesaLineaPoliza(Sesion& s, DestinoTmp& d, const E& c, const FuenteRegistros& fuente, const Fila& fila,
                        Movimiento& mov, CuentasDeLineas& cuentas) {
    PolizaLeida p;
    p.Tipo = fila.campo(kTipo);
    p.Poliza = fila.campo(kNumPol);
    // Day, month and year are always joined and converted, empty or not.
    const std::string textoFecha = fila.campo(kDia) + "/" + fila.campo(kMes) + "/" + fila.campo(kAnio);
    std::optional<Fecha> fecha = LeeFecha(textoFecha);
    if (!fecha) throw FalloFila("No coinciden los tipos: la fecha " + textoFecha + " no es válida");
    PartidaLeida l;
    l.Cuenta = cuentas.limpia(fila.campo(kCtaPol));
    const std::string referencia = fila.campo(kRef);
    p.Concepto = fila.campo(kConcept);
    const std::string ilegible = LeeMovimiento(c, fila, mov);
    if (p.Poliza.empty()) return;
    p.Fecha = *fecha;
    long id = d.poliza(p);
    // Each line carries its concept beside its reference.
    l.Referencia = QuitaCaracteresEspeciales(referencia) + " " + QuitaCaracteresEspeciales(p.Concepto);
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

ReglasDestino ReglasTextoFijo(long* contadorIdPoliza) {
    ReglasDestino r;
    r.largoDescripcion = 0;
    r.largoTipo = 0;
    r.contadorIdPoliza = contadorIdPoliza;
    return r;
}

void ImportaCatalogoFijo(Sesion& s, DestinoTmp& d, const std::string& ruta, const EstructuraDatosTxt& c) {
    ExisteOFalla(s, ruta);
    FuenteTextoFijo fuente(ruta, LugaresCatalogo(c));
    const std::string& separador = s.SeparadorEmpresa;
    // The level stands from line to line: a line without a readable one
    // keeps the level of the line before.
    int nivel = 0;
    RecorreFilas(s, fuente, {"Importando Catálogo de Cuentas ..."}, [&](const Fila& fila) {
        std::string cuenta = LimpiaCuenta(s, fila.campo(kCuenta), OrdenLimpieza::RellenoConSeparador, true);
        std::string ctaAcum = fila.campo(kCtaAcum);
        if (!separador.empty() && ctaAcum.find(separador) != std::string::npos)
            ctaAcum = QuitaCaracter(ctaAcum, separador);
        if (auto n = NivelLeido(fila.campo(kNivel))) nivel = *n;
        // A whole code sets the level only when the company pads its codes.
        if (s.RellenaCeros) ReglaLongitudCompleta(s, cuenta, nivel);
        int nivelAcum = 0;
        ReglaLongitudCompleta(s, ctaAcum, nivelAcum);
        CuentaLeida r;
        r.Cuenta = r.CuentaSinSeparadores = cuenta;
        r.Descripcion = fila.campo(kDescripcion);
        r.CuentaAcumulativa = ctaAcum;
        r.Nivel = nivel;
        r.Naturaleza = fila.campo(kNaturaleza);
        r.Saldo = ConvierteImporte(LimpiaImporte(fila.campo(kSdoIni), "0"));
        d.agregaCuenta(r);
        if (!r.Saldo)
            RegistraImporteIlegible(s, fuente.lugar(fila), fila.campo(kSdoIni), kFuenteCatalogo,
                                    "la cuenta " + cuenta + " quedó sin saldo inicial.", "", "", std::nullopt, cuenta);
    });
}

void ImportaPolizasFijo(Sesion& s, DestinoTmp& d, const std::string& ruta, const EstructuraDatosTxt& c,
                        const std::string& etiqueta) {
    ExisteOFalla(s, ruta);
    FuenteTextoFijo fuente(ruta, LugaresPolizas(c));
    Movimiento mov;
    CuentasDeLineas cuentas(s, OrdenLimpieza::RellenoYSeparador, s.RellenaCeros);
    ReglasRecorrido reglas{etiqueta};
    reglas.fallo = ReglasRecorrido::Fallo::LineaPoliza;
    RecorreFilas(s, fuente, reglas,
                 [&](const Fila& fila) { ProcesaLineaPoliza(s, d, c, fuente, fila, mov, cuentas); });
}

// ------------------------------------------------------------ Preview

namespace {

std::vector<CampoFijo> Campos(std::initializer_list<std::tuple<const char*, std::int16_t, std::int16_t>> lista) {
    std::vector<CampoFijo> r;
    for (auto [nombre, posicion, largo] : lista)
        if (posicion > 0 && largo > 0) r.push_back({nombre, posicion, largo});
    return r;
}

}  // namespace

std::vector<CampoFijo> CamposCatalogoFijo(const EstructuraDatosTxt& c) {
    return Campos({{"Cuenta", c.PIniCuenta, c.LongCuenta},
                   {"Descripción", c.PIniDescripcion, c.LongDescripcion},
                   {"Cuenta Acumulativa", c.PIniCtaAcum, c.LongCtaAcum},
                   {"Nivel", c.PIniNivel, c.LongNivel},
                   {"Naturaleza", c.PIniNaturaleza, c.LongNaturaleza},
                   {"Saldo Inicial", c.PIniSdoIni, c.LongSdoIni}});
}

std::vector<CampoFijo> CamposPolizasFijo(const EstructuraDatosTxt& c) {
    return Campos({{"Tipo", c.PIniTipo, c.LongTipo},
                   {"Póliza", c.PIniNumPol, c.LongNumPol},
                   {"Día", c.PIniDia, c.LongDia},
                   {"Mes", c.PIniMes, c.LongMes},
                   {"Año", c.PIniAnio, c.LongAnio},
                   {"Cuenta", c.PIniCtaPol, c.LongCtaPol},
                   {"Referencia", c.PIniRef, c.LongRef},
                   {"Concepto", c.PIniConcept, c.LongConcept},
                   {"Tipo de Movimiento", c.PIniTipoMov, c.LongTipoMov},
                   {"Importe", c.PIniImporte, c.LongImporte},
                   {"Importe Cargo", c.PIniCargo, c.LongCargo},
                   {"Importe Abono", c.PIniAbono, c.LongAbono}});
}

std::vector<std::string> LineasTextoFijo(const std::string& ruta, size_t maximo) {
    std::vector<std::string> lineas;
    if (ruta.empty() || !ExisteArchivo(ruta)) return lineas;
    ArchivoTexto archivo(ruta);
    std::string linea;
    while (lineas.size() < maximo && archivo.leeLinea(linea))
        if (!linea.empty()) lineas.push_back(linea);
    return lineas;
}

VistaPrevia VistaPreviaTextoFijo(const std::vector<std::string>& lineas, const std::vector<CampoFijo>& campos) {
    VistaPrevia vista;
    vista.columnas.push_back("Línea");
    for (const auto& c : campos) vista.columnas.push_back(c.nombre);
    for (const auto& linea : lineas) {
        std::vector<std::string> fila{linea};
        for (const auto& c : campos) fila.push_back(RecortaEspacios(TextoEnPosicion(linea, c.posicion, c.largo)));
        vista.filas.push_back(std::move(fila));
    }
    return vista;
}

std::string ReglaPosiciones(size_t largo) {
    std::string decenas(largo, ' '), unidades(largo, ' ');
    for (size_t i = 1; i <= largo; ++i) {
        unidades[i - 1] = static_cast<char>('0' + i % 10);
        if (i % 10 == 0) {
            std::string n = std::to_string(i / 10);
            for (size_t k = 0; k < n.size() && i - 1 + k < largo; ++k) decenas[i - 1 + k] = n[k];
        }
    }
    return decenas + "\n" + unidades;
}

}  // namespace velmorant
