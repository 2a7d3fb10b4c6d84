#include "importers/reportes/LectorReporte.h"

#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"
#include "importers/Marco.h"
#include "importers/Recorrido.h"
#include "pipeline/Inconsistencias.h"
#include "platform/Numeros.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteLineas.h"
#include "session/Funciones.h"

namespace velmorant {

// ------------------------------------------------------------ a line by characters

// A decoded line addressed by character positions from 1, as the
// descriptions count them.
class LectorReporte::Linea {
public:
    explicit Linea(const std::string& t) : t_(t) {
        for (size_t i = 0; i < t.size(); ++i)
            if ((static_cast<unsigned char>(t[i]) & 0xC0) != 0x80) inicio_.push_back(i);
    }
    int largo() const { return static_cast<int>(inicio_.size()); }
    const std::string& texto() const { return t_; }

    /// `n` characters from `pos`; to the end of the line when `n` is 0.
    std::string medio(int pos, int n) const {
        if (pos < 1 || pos > largo()) return "";
        size_t a = inicio_[static_cast<size_t>(pos - 1)];
        if (n <= 0 || pos - 1 + n >= largo()) return t_.substr(a);
        return t_.substr(a, inicio_[static_cast<size_t>(pos - 1 + n)] - a);
    }
    /// The character at `pos` when it is ASCII; 0 otherwise or outside.
    char ascii(int pos) const {
        if (pos < 1 || pos > largo()) return 0;
        unsigned char c = static_cast<unsigned char>(t_[inicio_[static_cast<size_t>(pos - 1)]]);
        return c < 0x80 ? static_cast<char>(c) : 0;
    }
    /// Position of `que` at or after `desde`; 0 when absent.
    int busca(const std::string& que, int desde = 1) const {
        if (desde < 1) desde = 1;
        if (desde > largo() || que.empty()) return 0;
        size_t b = t_.find(que, inicio_[static_cast<size_t>(desde - 1)]);
        if (b == std::string::npos) return 0;
        return Posicion(b);
    }
    bool digito(int pos) const {
        char c = ascii(pos);
        return c >= '0' && c <= '9';
    }

private:
    int Posicion(size_t byte) const {
        size_t n = 0;
        while (n < inicio_.size() && inicio_[n] < byte) ++n;
        return static_cast<int>(n) + 1;
    }
    const std::string& t_;
    std::vector<size_t> inicio_;
};

namespace {

// The text from `pos` up to the next blank (not included).
std::string HastaBlanco(const std::string& medio) {
    size_t b = medio.find(' ');
    return b == std::string::npos ? medio : medio.substr(0, b);
}

int Mes(const std::string& nombre) {
    std::string m = Mayusculas(nombre.substr(0, 3));
    if (m == "MZO") return 3;
    if (m == "SET") return 9;
    return NumeroDeMes(m);
}

}  // namespace

std::optional<Fecha> LeeFechaReporte(const std::string& texto) {
    std::string t = RecortaEspacios(texto);
    if (auto f = LeeFecha(t)) return f;
    std::vector<std::string> piezas;
    std::string pieza;
    for (char c : t + " ") {
        if (c == '/' || c == '-' || c == '.' || c == ' ') {
            if (!pieza.empty()) piezas.push_back(pieza);
            pieza.clear();
        } else {
            pieza += c;
        }
    }
    if (piezas.size() != 3 || piezas[1].size() < 3) return std::nullopt;
    int mes = Mes(piezas[1]);
    if (mes == 0) return std::nullopt;
    return LeeFecha(piezas[0] + "/" + DosDigitos(mes) + "/" + piezas[2]);
}

// ------------------------------------------------------------ destination of a run

void DestinoReporteTmp::partidaDudosa(const PolizaLeida& p, const std::string& cuenta, const std::string& texto) {
    RegistraInconsistencia(d_.sesion(), Izquierda(texto, 150), kFuentePolizas, "O", Izquierda(p.Poliza, 20),
                           Izquierda(p.Tipo, 10), p.Fecha, Izquierda(cuenta, 50));
}

// ------------------------------------------------------------ the engine

LectorReporte::LectorReporte(Sesion& s, const DescripcionReporte& d, DestinoReporte& destino, int mes)
    : s_(s), d_(d), destino_(destino), mes_(mes), separadores_(PosicionesSeparador(s)) {}

bool LectorReporte::cumple(const Condicion& c, const Linea& l) const {
    using T = Condicion::Tipo;
    // The position, from a learnt column when the condition names one.
    int en = c.en;
    if (!c.columna.empty()) {
        auto it = columnas_.find(c.columna);
        if (it == columnas_.end()) return false;
        en += it->second;
        if (en < 1) return false;
    }
    switch (c.tipo) {
        case T::Texto:
            return l.medio(en, static_cast<int>(LongitudCaracteres(c.textos[0]))) == c.textos[0];
        case T::TextoRecortado:
            return RecortaEspacios(l.medio(en, c.largo)) == c.textos[0];
        case T::Contiene:
            for (auto& t : c.textos)
                if (l.busca(t)) return true;
            return false;
        case T::Empieza: {
            size_t a = l.texto().find_first_not_of(' ');
            if (a == std::string::npos) return false;
            for (auto& t : c.textos)
                if (l.texto().compare(a, t.size(), t) == 0) return true;
            return false;
        }
        case T::Numerico: {
            std::string t = RecortaEspacios(l.medio(en, c.largo));
            return !t.empty() && EsNumerico(t);
        }
        case T::Caracter: {
            std::string ch = l.medio(en, 1);
            return !ch.empty() && ch != " " && c.textos[0].find(ch) != std::string::npos;
        }
        case T::Decimal: {
            int desde = c.desde ? c.desde : 1, hasta = c.hasta ? c.hasta : l.largo();
            for (int p = l.busca(".", desde); p && p <= hasta; p = l.busca(".", p + 1))
                if (l.digito(p + 1)) return true;
            return false;
        }
        case T::PolizaAbierta:
            return abierta_ == c.valor;
        case T::Aprendidas: {
            int anterior = 0;
            for (auto& nombre : c.textos) {
                auto it = columnas_.find(nombre);
                if (it == columnas_.end() || it->second <= anterior) return false;
                anterior = it->second;
            }
            return true;
        }
        case T::SinAprender:
            for (auto& nombre : c.textos)
                if (!columnas_.count(nombre)) return true;
            return false;
        case T::No:
            return !cumple(c.hijas[0], l);
        case T::Alguna:
            for (auto& h : c.hijas)
                if (cumple(h, l)) return true;
            return false;
        case T::Todas:
            for (auto& h : c.hijas)
                if (!cumple(h, l)) return false;
            return true;
    }
    return false;
}

bool LectorReporte::cumpleTodas(const ReglaLinea& r, const Linea& l) const {
    for (auto& c : r.cuando)
        if (!cumple(c, l)) return false;
    return true;
}

std::string LectorReporte::lee(const CampoReporte& c, const Linea& l) const {
    using F = CampoReporte::Forma;
    switch (c.forma) {
        case F::Ninguna:
            return "";
        case F::Posicion: {
            int largo = c.largo == CampoReporte::kLargoFormato
                            ? static_cast<int>(LongitudCaracteres(s_.FormatoCtaEmpresa))
                            : c.largo;
            return RecortaEspacios(l.medio(c.en, largo));
        }
        case F::Marcador: {
            int p = l.busca(c.tras);
            if (!p) return "";
            int inicio = p + static_cast<int>(LongitudCaracteres(c.tras));
            if (c.largo > 0) return RecortaEspacios(l.medio(inicio, c.largo));
            int fin = c.hasta.empty() ? 0 : l.busca(c.hasta, inicio);
            return RecortaEspacios(fin ? l.medio(inicio, fin - inicio) : l.medio(inicio, 0));
        }
        case F::Columna: {
            auto it = columnas_.find(c.columna);
            if (it == columnas_.end()) return "";
            int p = it->second + c.desplaza;
            if (c.largo > 0) return RecortaEspacios(l.medio(p, c.largo));
            std::string t = HastaBlanco(l.medio(p, 0));
            if (c.alineado && t.find('.') != std::string::npos) {
                int blanco = 0;
                for (int i = p - 1; i >= 1 && !blanco; --i)
                    if (l.ascii(i) == ' ') blanco = i;
                t = HastaBlanco(l.medio(blanco + 1, 0));
            }
            return t;
        }
        case F::Decimal: {
            int base = 0;
            if (!c.columna.empty()) {
                auto it = columnas_.find(c.columna);
                if (it == columnas_.end()) return "";
                base = it->second;
            }
            int desde = base + c.desde, hasta = base + c.hastaPos;
            for (int p = l.busca(".", desde); p && p <= hasta; p = l.busca(".", p + 1)) {
                if (!l.digito(p + 1)) continue;
                int a = p;
                while (a > 1 && (l.digito(a - 1) || l.ascii(a - 1) == ',')) --a;
                while (a > 1 && (l.ascii(a - 1) == '-' || l.ascii(a - 1) == '$')) --a;
                int b = p;
                while (l.digito(b + 1)) ++b;
                return l.medio(a, b - a + 1);
            }
            return "";
        }
    }
    return "";
}

std::string LectorReporte::guarda(const PolizaLeida& p) {
    long id;
    bool nueva = false;
    if (d_.agrupa == DescripcionReporte::Agrupa::Busca) {
        id = destino_.poliza(p);
    } else {
        std::string clave = p.Fecha.iso() + '\x1f' + p.Poliza + '\x1f' + p.Tipo;
        if (clave != ultimaClave_ || idUltimaClave_ == 0) {
            idUltimaClave_ = destino_.nuevaPoliza(p);
            ultimaClave_ = std::move(clave);
            nueva = true;
        }
        id = idUltimaClave_;
    }
    actual_ = p;
    idActual_ = id;
    abierta_ = true;
    std::string detalle = "póliza " + p.Poliza + " tipo " + p.Tipo + " del " + p.Fecha.ddmmaaaa();
    if (!p.Concepto.empty()) detalle += ", \"" + p.Concepto + "\"";
    if (d_.agrupa == DescripcionReporte::Agrupa::UltimaClave && !nueva) detalle += " (la misma que la anterior)";
    return detalle;
}

LineaLeida LectorReporte::encabezado(const ReglaLinea& r, const Linea& l) {
    PolizaLeida p;
    p.Poliza = lee(r.numero, l);
    p.Tipo = lee(r.tipo, l);
    if (mes_ == 13 && d_.mes13) {
        p.Fecha = Fecha(ValEntero(s_.EjercicioTexto), 12, 31);
        p.Mes13 = true;
    } else {
        std::string texto = lee(r.fecha, l);
        auto f = LeeFechaReporte(texto);
        if (!f) throw FalloFila("No coinciden los tipos: la fecha \"" + texto + "\" de la póliza no es válida");
        p.Fecha = *f;
    }
    p.Concepto = lee(r.concepto, l);
    if (r.conceptoSiguiente.definido()) {
        pendiente_ = p;
        reglaPendiente_ = &r;
        conceptoPendiente_ = true;
        return {ClaseLinea::Encabezado, "póliza " + p.Poliza + " tipo " + p.Tipo + " del " + p.Fecha.ddmmaaaa() +
                                            "; el concepto sigue"};
    }
    return {ClaseLinea::Encabezado, guarda(p)};
}

LineaLeida LectorReporte::concepto(const Linea& l) {
    conceptoPendiente_ = false;
    PolizaLeida p = pendiente_;
    p.Concepto = lee(reglaPendiente_->conceptoSiguiente, l);
    return {ClaseLinea::Concepto, guarda(p)};
}

LineaLeida LectorReporte::dudosa(const std::string& cuenta, const std::string& causa) {
    if (!d_.registraDudosas) return {ClaseLinea::Partida, "se descarta: " + causa};
    destino_.partidaDudosa(actual_, cuenta,
                           "La partida de la póliza: " + actual_.Poliza + " , con Fecha: " + actual_.Fecha.ddmmaaaa() +
                               " No se leyó de forma correcta. Cuenta: " + cuenta);
    return {ClaseLinea::Partida, "dudosa, queda en el registro de inconsistencias: " + causa};
}

LineaLeida LectorReporte::partida(const ReglaLinea& r, const Linea& l) {
    if (!abierta_) return {ClaseLinea::Partida, "se descarta: no hay póliza abierta"};
    const std::string cruda = lee(r.cuenta, l);
    std::string cuenta = QuitaCaracter(cruda, " ");
    if (!s_.SeparadorEmpresa.empty()) cuenta = QuitaCaracter(cuenta, s_.SeparadorEmpresa);
    if (d_.recortaNivel) {
        int nivel = 0;
        ReglaLongitudCompleta(s_, cuenta, nivel);
    }
    if (cuenta.empty()) {
        if (!d_.registraDudosas) return {ClaseLinea::Partida, "se descarta: sin cuenta"};
        return dudosa(cruda, "sin cuenta");
    }
    if (!CuentaCumpleFormato(s_, FormateaCuenta(s_, cuenta), separadores_))
        return dudosa(cruda, "la cuenta \"" + cruda + "\" no cumple el formato");
    PartidaLeida p;
    p.Cuenta = cuenta;
    p.Referencia = lee(r.referencia, l);
    const std::string debe = lee(r.debe, l), haber = lee(r.haber, l);
    if (!debe.empty() && EsNumerico(debe)) {
        p.TipoMov = "D";
        p.Importe = *ConvierteImporte(debe);
    } else if (!haber.empty() && EsNumerico(haber)) {
        p.TipoMov = "H";
        p.Importe = *ConvierteImporte(haber);
    } else {
        return dudosa(cruda, "sin importe numérico en el debe ni en el haber");
    }
    destino_.agregaPartida(idActual_, p);
    return {ClaseLinea::Partida, "cuenta " + cuenta + " " + p.TipoMov + " " + p.Importe.formatoMoneda() +
                                     (p.Referencia.empty() ? "" : ", \"" + p.Referencia + "\"")};
}

LineaLeida LectorReporte::titulos(const ReglaLinea& r, const Linea& l) {
    std::map<std::string, int> halladas;
    for (auto& [nombre, grafias] : r.aprende)
        for (auto& g : grafias)
            if (int p = l.busca(g)) {
                halladas[nombre] = p;
                break;
            }
    if (r.todas && halladas.size() != r.aprende.size()) return {ClaseLinea::Titulos, "no aprende: faltan columnas"};
    std::string detalle;
    for (auto& [nombre, p] : halladas) {
        columnas_[nombre] = p;
        detalle += (detalle.empty() ? "aprende " : ", ") + nombre + " en " + std::to_string(p);
    }
    return {ClaseLinea::Titulos, detalle};
}

LineaLeida LectorReporte::procesa(const std::string& texto) {
    if (RecortaEspacios(texto).empty()) return {ClaseLinea::Vacia, ""};
    Linea l(texto);
    if (conceptoPendiente_) {
        // A head may follow a head; any other line is the concept.
        for (auto& r : d_.lineas)
            if (r.clase == ClaseLinea::Encabezado && cumpleTodas(r, l)) return encabezado(r, l);
        return concepto(l);
    }
    for (auto& r : d_.lineas) {
        if (!cumpleTodas(r, l)) continue;
        switch (r.clase) {
            case ClaseLinea::Encabezado:
                return encabezado(r, l);
            case ClaseLinea::Partida:
                return partida(r, l);
            case ClaseLinea::Titulos:
                return titulos(r, l);
            case ClaseLinea::Totales:
                if (r.cierra) {
                    abierta_ = false;
                    return {r.clase, "cierra la póliza " + actual_.Poliza};
                }
                return {r.clase, ""};
            default:
                return {r.clase, ""};
        }
    }
    return {ClaseLinea::SinClase, ""};
}

// ------------------------------------------------------------ the run's reader

void ImportaPolizasReporte(Sesion& s, DestinoTmp& d, const DescripcionReporte& desc, int mes, const std::string& ruta) {
    if (!ExisteArchivo(ruta)) {
        MsgCritico(s, "No se pudo encontrar el archivo " + ruta);
        return;
    }
    FuenteLineas fuente(ruta);
    DestinoReporteTmp destino(d);
    LectorReporte lector(s, desc, destino, mes);
    ReglasRecorrido reglas{"Importando Pólizas de " + NombreDelMes(mes) + " ..."};
    reglas.fallo = ReglasRecorrido::Fallo::LineaPoliza;
    RecorreFilas(s, fuente, reglas, [&](const Fila& fila) { lector.procesa(fila.texto); });
}

}  // namespace velmorant
