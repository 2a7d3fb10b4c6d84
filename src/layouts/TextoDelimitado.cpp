#include "layouts/TextoDelimitado.h"

#include <stdexcept>

#include "accounts/CodigosCuenta.h"
#include "layouts/ConsultasTmp.h"
#include "pipeline/Catalogo.h"
#include "pipeline/Polizas.h"
#include "platform/Texto.h"
#include "pipeline/Inconsistencias.h"
#include "platform/ArchivoTexto.h"
#include "platform/ErrorLectura.h"
#include "platform/Numeros.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

namespace {

// A fault of one line: its cause, for the messages of the failure path.
class FalloLinea : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The progress bar of one reader. The value moves every few lines, so that
// a long file does not spend its time repainting.
class Avance {
public:
    Avance(Sesion& s, const std::string& etiqueta, long maximo) : p_(s.progreso) {
        if (!p_) return;
        if (!etiqueta.empty()) p_->etiqueta(etiqueta);
        p_->maximo(maximo);
        p_->valor(0);
    }
    void valor(long n) {
        if (!p_ || n % 64 != 0) return;
        p_->valor(n);
        p_->cede();
    }

private:
    Progreso* p_;
};

std::string Ubicacion(const ArchivoTexto& a) {
    return "archivo " + a.ruta() + ", línea " + std::to_string(a.numeroLinea());
}

// The failure of a voucher line: the error report, the line, the end of the run.
[[noreturn]] void FallaLineaPoliza(Sesion& s, const ArchivoTexto& a, const std::string& linea,
                                   const std::string& causa) {
    ReportaError(s, std::runtime_error(causa + " (" + Ubicacion(a) + ")"), true);
    const std::string mensaje = "Error al leer la línea: " + linea;
    MsgCritico(s, mensaje);
    throw ErrorLectura(mensaje, a.ruta(), a.numeroLinea());
}

// The failure of a line of the other readers, which have no report of their own.
[[noreturn]] void FallaLinea(Sesion& s, const ArchivoTexto& a, const std::string& linea, const std::string& causa) {
    const std::string mensaje = "Error al leer el " + Ubicacion(a) + ": " + causa + "\r\n" + linea;
    MsgCritico(s, mensaje);
    throw ErrorLectura(mensaje, a.ruta(), a.numeroLinea());
}

// The line loop of every reader: the first physical line is skipped when the
// files have titles (even when it is blank), blank lines are skipped anywhere.
template <class F>
void RecorreLineas(Sesion& s, ArchivoTexto& a, bool titulos, Avance& avance, bool dePolizas, F procesa) {
    long contador = 0;
    bool salta = titulos;
    std::string linea;
    while (a.leeLinea(linea)) {
        avance.valor(contador);
        if (!linea.empty() && !salta) {
            try {
                procesa(linea);
            } catch (const ProgramaTerminado&) {
                throw;
            } catch (const ErrorLectura&) {
                throw;
            } catch (const std::exception& e) {
                if (dePolizas) FallaLineaPoliza(s, a, linea, e.what());
                FallaLinea(s, a, linea, e.what());
            }
        }
        if (++contador == 1) salta = false;
    }
}

std::string QuitaComillas(const std::string& linea) {
    if (linea.find('"') == std::string::npos) return linea;
    std::string r;
    for (char c : linea)
        if (c != '"') r += c;
    return r;
}

size_t LongitudCaracteres(const std::string& t) {
    size_t n = 0;
    for (unsigned char c : t)
        if ((c & 0xC0) != 0x80) ++n;
    return n;
}

std::string Izquierda(const std::string& t, size_t caracteres) {
    size_t n = 0;
    for (size_t i = 0; i < t.size(); ++i) {
        if ((static_cast<unsigned char>(t[i]) & 0xC0) != 0x80 && n++ == caracteres) return t.substr(0, i);
    }
    return t;
}

// Characters of a full code: the account format without its "-".
size_t LongitudCompleta(const Sesion& s) {
    size_t n = 0;
    for (char c : s.FormatoCtaEmpresa)
        if (c != '-') ++n;
    return n;
}

// Tabs (not on voucher lines) and spaces out; the separator out and RellenaCuenta
// on a numeric code, RellenaCuenta first for voucher lines.
std::string LimpiaCuenta(Sesion& s, std::string t, bool dePolizas) {
    if (!dePolizas) t = QuitaCaracter(t, "\t");
    t = QuitaCaracter(t, " ");
    // An empty code stays empty, so that its line adds no row: padding it
    // would make it the zeros of the first level.
    if (t.empty()) return t;
    const std::string& sep = s.SeparadorEmpresa;
    auto quitaSeparador = [&] {
        if (!sep.empty() && t.find(sep) != std::string::npos) t = QuitaCaracter(t, sep);
    };
    if (dePolizas) {
        if (EsTextoNumerico(t)) t = RellenaCuenta(s, t);
        quitaSeparador();
        return QuitaCaracter(t, " ");
    }
    quitaSeparador();
    if (EsTextoNumerico(t)) t = RellenaCuenta(s, t);
    return t;
}

// A full-length code is cut to the levels it uses; `nivel` becomes that count.
void ReglaLongitudCompleta(Sesion& s, std::string& cuenta, int& nivel) {
    if (cuenta.empty() || LongitudCaracteres(cuenta) != LongitudCompleta(s)) return;
    nivel = CalculaNivelCuenta(s, cuenta, true);
    cuenta = CuentaHastaNivel(s, cuenta, nivel);
}

// Currency of a cleaned amount; nothing when the text is not numeric. A
// numeric text beyond Currency's range is a fault of the line.
std::optional<Moneda> ConvierteImporte(const std::string& t) {
    if (!EsNumerico(t)) return std::nullopt;
    auto m = Moneda::desdeTexto(t);
    if (!m) throw FalloLinea("Desbordamiento: el importe " + t + " excede el rango de la moneda");
    return m;
}

Moneda ImporteRequerido(const std::string& t) {
    auto m = ConvierteImporte(t);
    if (!m) throw FalloLinea("No coinciden los tipos: el importe " + t + " no es numérico");
    return *m;
}

// The leading whole number of a text, 0 when it has none.
int ValEntero(const std::string& t) {
    size_t i = t.find_first_not_of(" \t");
    if (i == std::string::npos) return 0;
    bool negativo = false;
    if (t[i] == '-' || t[i] == '+') negativo = t[i++] == '-';
    long v = 0;
    for (; i < t.size() && t[i] >= '0' && t[i] <= '9' && v < 100000; ++i) v = v * 10 + (t[i] - '0');
    return static_cast<int>(negativo ? -v : v);
}

// A column read without any bound check: outside the parts it is a fault.
std::string CampoEstricto(const std::vector<std::string>& partes, int columna) {
    if (columna < 1 || static_cast<size_t>(columna) > partes.size())
        throw FalloLinea("El subíndice está fuera del intervalo: la línea no tiene la columna " +
                         std::to_string(columna));
    return RecortaEspacios(partes[static_cast<size_t>(columna) - 1]);
}

// A balance file that is not there: the reader cannot go on.
void ExisteOFalla(Sesion& s, const std::string& ruta) {
    if (ExisteArchivo(ruta)) return;
    const std::string mensaje = "No se pudo encontrar el archivo " + ruta;
    MsgCritico(s, mensaje);
    throw ErrorLectura(mensaje, ruta, 0);
}

BaseDatos& Almacen(BaseDatos* db, const char* nombre) {
    if (!db) throw std::logic_error(std::string("El almacén temporal ") + nombre + " no está abierto");
    return *db;
}

// ------------------------------------------------------------ Vouchers

// The amount and direction of a voucher line. They live across the lines of
// a file: a line whose amounts cannot be read keeps those of the line before.
struct Movimiento {
    std::string TipoMov;
    Moneda Importe;
};

void LeeMovimiento(const EstructuraDatosTxt& c, const std::vector<std::string>& partes, Movimiento& m) {
    if (c.PIniTipoMov != 0) {
        m.TipoMov.clear();
        m.Importe = Moneda();
        std::string indicador = CampoColumna(partes, c.PIniTipoMov);
        if (indicador.empty()) return;
        if (auto v = ConvierteImporte(LimpiaImporte(CampoColumna(partes, c.PIniImporte), "0.00"))) m.Importe = *v;
        m.TipoMov = indicador == "1" ? "D" : "H";
        return;
    }
    std::string cargo = LimpiaImporte(CampoColumna(partes, c.PIniCargo), "0.00");
    std::string abono = LimpiaImporte(CampoColumna(partes, c.PIniAbono), "0.00");
    auto debe = ConvierteImporte(cargo);
    if (!debe) return;
    if (!debe->esCero()) {
        m.Importe = *debe;
        m.TipoMov = "D";
        return;
    }
    if (auto haber = ConvierteImporte(abono)) {
        m.Importe = *haber;
        if (!haber->esCero()) m.TipoMov = "H";
    }
}

// The date text of a line: the whole column, or day "/" month "/" year.
std::string TextoFecha(const EstructuraDatosTxt& c, const std::vector<std::string>& partes) {
    if (c.PIniDia < 1 || c.PIniMes < 1 || c.PIniAnio < 1) return CampoColumna(partes, c.PIniDia);
    std::string d = CampoColumna(partes, c.PIniDia), m = CampoColumna(partes, c.PIniMes),
                a = CampoColumna(partes, c.PIniAnio);
    if (d.empty() || m.empty() || a.empty()) return "";
    return d + "/" + m + "/" + a;
}

class LectorPolizas {
public:
    LectorPolizas(Sesion& s, const LecturaDelimitada& l) : s_(s), l_(l), db_(Almacen(s.DbPolizasTmp, kPolizasTmp)) {}

    void procesa(const std::string& linea) {
        const EstructuraDatosTxt& c = l_.config;
        auto partes = DivideLinea(QuitaComillas(linea), l_.separador);
        std::string numero = CampoColumna(partes, c.PIniNumPol);
        std::string tipo = CampoColumna(partes, c.PIniTipo);
        std::string textoFecha = TextoFecha(c, partes);
        std::optional<Fecha> fecha;
        if (!textoFecha.empty()) {
            fecha = LeeFecha(textoFecha);
            if (!fecha) throw FalloLinea("No coinciden los tipos: la fecha " + textoFecha + " no es válida");
        }
        std::string cuenta = LimpiaCuenta(s_, CampoColumna(partes, c.PIniCtaPol), true);
        std::string referencia = CampoColumna(partes, c.PIniRef);
        std::string concepto = CampoColumna(partes, c.PIniConcept);
        LeeMovimiento(c, partes, mov_);
        if (numero.empty() || !fecha) return;

        long id = BuscaPolizaTmp(s_, numero, tipo, *fecha);
        int partida = 0;
        if (id != 0) {
            partida = UltimaPartidaTmp(s_, id);
        } else {
            id = SiguienteIdPoliza(s_);
            db_.preparada("INSERT INTO Polizas_Tmp.Polizas_Tmp (IdPoliza, Poliza, Tipo, Fecha, Concepto, "
                          "Poliza_Deshabilitada, Poliza_Mes13, Poliza_Ajuste, Cuadrada, Revisado) "
                          "VALUES (?, ?, ?, ?, ?, 0, 0, 0, 0, 0)")
                .con(id, numero, Izquierda(tipo, 10), *fecha, Izquierda(QuitaCaracteresEspeciales(concepto), 255))
                .ejecuta();
        }
        int nivel = 0;
        ReglaLongitudCompleta(s_, cuenta, nivel);
        if (cuenta.empty()) return;
        db_.preparada("INSERT INTO Polizas_Detalle_Tmp.Polizas_Detalle_Tmp "
                      "(IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida) VALUES (?, ?, ?, ?, ?, ?)")
            .con(id, cuenta, mov_.TipoMov, mov_.Importe, QuitaCaracteresEspeciales(referencia), ++partida)
            .ejecuta();
        if (!ExisteCuentaTmp(s_, cuenta) && !ExisteInconsistenciaCuenta(s_, cuenta))
            RegistraInconsistencia(s_,
                                   "No se registró  el movimiento " + mov_.TipoMov + " ," + mov_.Importe.formatoMoneda() +
                                       " de la Póliza, ya que la Cuenta no existe.",
                                   kFuentePolizas, "O", numero, tipo, fecha, cuenta);
    }

private:
    Sesion& s_;
    const LecturaDelimitada& l_;
    BaseDatos& db_;
    Movimiento mov_;
};

}  // namespace

// ------------------------------------------------------------ Shared pieces

long CuentaLineasArchivo(const std::string& ruta) { return CuentaLineasTexto(ruta); }

std::vector<std::string> DivideLinea(const std::string& linea, const std::string& separador) {
    if (linea.empty()) return {};
    if (separador.empty()) return {linea};
    auto minusculas = [](std::string t) {
        for (char& c : t)
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        return t;
    };
    const std::string donde = minusculas(linea), que = minusculas(separador);
    std::vector<std::string> partes;
    size_t desde = 0;
    for (size_t p; (p = donde.find(que, desde)) != std::string::npos; desde = p + que.size())
        partes.push_back(linea.substr(desde, p - desde));
    partes.push_back(linea.substr(desde));
    return partes;
}

std::string CampoColumna(const std::vector<std::string>& partes, int columna) {
    if (columna < 1 || static_cast<size_t>(columna) > partes.size()) return "";
    return RecortaEspacios(partes[static_cast<size_t>(columna) - 1]);
}

std::string LimpiaImporte(const std::string& texto, const std::string& vacio) {
    if (texto.empty()) return vacio;
    if (!EsNumerico(texto)) {
        size_t menos = texto.find('-');
        if (menos != std::string::npos) return texto.substr(menos);
    }
    return texto;
}

long BuscaPolizaTmp(Sesion& s, const std::string& poliza, const std::string& tipo, const Fecha& fecha) {
    Sentencia& st = Almacen(s.DbPolizasTmp, kPolizasTmp)
                        .preparada("SELECT IdPoliza FROM Polizas_Tmp.Polizas_Tmp WHERE Poliza = ? AND Tipo = ? "
                                   "AND Fecha = ? LIMIT 1");
    st.con(poliza, tipo, fecha);
    long id = st.paso() ? static_cast<long>(st.columna(0).entero()) : 0;
    st.reinicia();
    return id;
}

int UltimaPartidaTmp(Sesion& s, long idPoliza) {
    Sentencia& st = Almacen(s.DbPolizasDetalleTmp, kPolizasDetalleTmp)
                        .preparada("SELECT Partida FROM Polizas_Detalle_Tmp.Polizas_Detalle_Tmp WHERE IdPoliza = ? "
                                   "ORDER BY Partida DESC LIMIT 1");
    st.con(idPoliza);
    int partida = st.paso() ? static_cast<int>(st.columna(0).entero()) : 0;
    st.reinicia();
    return partida;
}

VistaPrevia VistaPreviaTexto(Sesion& s, const std::string& ruta, const std::string& separador) {
    VistaPrevia vista;
    ArchivoTexto archivo(ruta);
    std::string linea;
    while (archivo.leeLinea(linea)) {
        if (linea.empty()) continue;
        auto partes = DivideLinea(linea, separador);
        if (vista.columnas.empty())
            for (size_t i = 1; i <= partes.size(); ++i) vista.columnas.push_back("Columna " + std::to_string(i));
        vista.filas.emplace_back();
        if (partes.size() == vista.columnas.size())
            for (auto& p : partes) vista.filas.back().push_back(Izquierda(p, 255));
        if (partes.size() == 1) {
            const std::string mensaje =
                "El archivo " + ruta + " no se encuentra delimitado por el caracter que indico.";
            MsgCritico(s, mensaje);
            throw ErrorLectura(mensaje, ruta, archivo.numeroLinea());
        }
    }
    return vista;
}

// ------------------------------------------------------------ Readers

void ImportaCatalogoTexto(Sesion& s, const std::string& ruta, const LecturaDelimitada& l,
                          bool conArchivoSaldosIniciales) {
    if (!ExisteArchivo(ruta)) {
        MsgAviso(s, "No se pudo encontrar el archivo " + ruta);
        return;
    }
    BaseDatos& db = Almacen(s.DbCuentasTmp, kCuentasTmp);
    ArchivoTexto archivo(ruta);
    Avance avance(s, "Importando Catálogo de Cuentas ...", CuentaLineasArchivo(ruta));
    const EstructuraDatosTxt& c = l.config;
    Transaccion t(db);
    RecorreLineas(s, archivo, l.Titulos, avance, false, [&](const std::string& linea) {
        auto partes = DivideLinea(QuitaComillas(linea), l.separador);
        std::string cuenta = LimpiaCuenta(s, CampoColumna(partes, c.PIniCuenta), false);
        std::string descripcion = CampoColumna(partes, c.PIniDescripcion);
        std::string ctaAcum = CampoColumna(partes, c.PIniCtaAcum);
        int nivel = c.PIniNivel != 0 ? ValEntero(CampoColumna(partes, c.PIniNivel)) : 0;
        std::string naturaleza = CampoColumna(partes, c.PIniNaturaleza);
        std::optional<Moneda> saldo;
        if (!conArchivoSaldosIniciales) saldo = ConvierteImporte(LimpiaImporte(CampoColumna(partes, c.PIniSdoIni), "0"));
        ReglaLongitudCompleta(s, cuenta, nivel);
        int nivelAcum = 0;
        ReglaLongitudCompleta(s, ctaAcum, nivelAcum);
        if (cuenta.empty()) return;
        db.preparada("INSERT INTO CuentasTmp.Cuentas (Cuenta, CuentaSinSeparadores, Descripcion, Saldo, "
                     "CuentaAcumulativa, Nivel, Naturaleza) VALUES (?, ?, ?, ?, ?, ?, ?)")
            .con(cuenta, cuenta, Izquierda(QuitaCaracteresEspeciales(descripcion), 60), saldo, ctaAcum, nivel,
                 naturaleza)
            .ejecuta();
    });
    t.confirma();
}

void ImportaSaldosInicialesTexto(Sesion& s, const std::string& ruta, const LecturaDelimitada& l) {
    BaseDatos& db = Almacen(s.DbCuentasTmp, kCuentasTmp);
    ExisteOFalla(s, ruta);
    ArchivoTexto archivo(ruta);
    long lineas = CuentaLineasArchivo(ruta);
    if (lineas == 0) {
        MsgAviso(s, "El archivo de Saldos Iniciales está vacío.");
        return;
    }
    Avance avance(s, "Importando Saldos Iniciales ...", lineas);
    const EstructuraDatosTxt& c = l.config;
    Transaccion t(db);
    RecorreLineas(s, archivo, l.Titulos, avance, false, [&](const std::string& linea) {
        // This reader keeps the double quotes.
        auto partes = DivideLinea(linea, l.separador);
        std::string cuenta = LimpiaCuenta(s, CampoColumna(partes, c.PIniCtaSdoAnt), false);
        std::string saldo = CampoColumna(partes, c.PIniSdoIni);
        int nivel = 0;
        ReglaLongitudCompleta(s, cuenta, nivel);
        Sentencia& busca = db.preparada("SELECT rowid FROM CuentasTmp.Cuentas WHERE Cuenta = ? LIMIT 1");
        busca.con(cuenta);
        if (!busca.paso()) return;
        std::int64_t fila = busca.columna(0).entero();
        busca.reinicia();
        db.preparada("UPDATE CuentasTmp.Cuentas SET Saldo = ? WHERE rowid = ?")
            .con(ImporteRequerido(LimpiaImporte(saldo, "0")), fila)
            .ejecuta();
    });
    t.confirma();
}

void ImportaPolizasTexto(Sesion& s, const std::string& ruta, const LecturaDelimitada& l) {
    if (!ExisteArchivo(ruta)) return;
    BaseDatos& db = Almacen(s.DbPolizasTmp, kPolizasTmp);
    Almacen(s.DbPolizasDetalleTmp, kPolizasDetalleTmp);
    AseguraIndicesPolizasTmp(s);
    ArchivoTexto archivo(ruta);
    Avance avance(s, "", CuentaLineasArchivo(ruta));
    LectorPolizas lector(s, l);
    Transaccion t(db);
    RecorreLineas(s, archivo, l.Titulos, avance, true, [&](const std::string& linea) { lector.procesa(linea); });
    t.confirma();
}

void ImportaSaldosAnioAntTexto(Sesion& s, const std::string& ruta, const LecturaDelimitada& l) {
    BaseDatos& db = Almacen(s.DbCuentasTmp, kCuentasTmp);
    ExisteOFalla(s, ruta);
    ArchivoTexto archivo(ruta);
    long lineas = CuentaLineasArchivo(ruta);
    if (lineas == 0) {
        MsgAviso(s, "El archivo está vacío: " + ruta);
        return;
    }
    Avance avance(s, "Verificando Saldos Finales año anterior ...", lineas);
    const EstructuraDatosTxt& c = l.config;
    Transaccion t(db);
    RecorreLineas(s, archivo, l.Titulos, avance, false, [&](const std::string& linea) {
        auto partes = DivideLinea(QuitaComillas(linea), l.separador);
        std::string cuenta = LimpiaCuenta(s, CampoEstricto(partes, c.PIniCtaSdoAnt), false);
        std::string descripcion = CampoEstricto(partes, c.PIniDescSdoAnt);
        Moneda saldo = ImporteRequerido(LimpiaImporte(CampoEstricto(partes, c.PIniSdoFinAnt), "0"));
        int nivel = 0;
        ReglaLongitudCompleta(s, cuenta, nivel);
        // The sense of this test is the reverse of its name, and stays so.
        if (!db.escalar("SELECT 1 FROM main.Cuentas WHERE Cuenta = ? LIMIT 1", cuenta).esNulo())
            RegistraInconsistencia(s,
                                   "La Cuenta " + cuenta +
                                       " no existe, contiene el saldo final del año anterior y será agregará al "
                                       "catalogo actual",
                                   kFuenteCatalogo, "O", "", "", std::nullopt, cuenta);
        db.preparada("INSERT INTO CuentasTmp.Cuentas (Cuenta, CuentaSinSeparadores, Descripcion, Nivel, "
                     "SaldoFinAnioAnt) VALUES (?, ?, ?, ?, ?)")
            .con(cuenta, cuenta, QuitaCaracteresEspeciales(descripcion), nivel, saldo)
            .ejecuta();
    });
    t.confirma();
}

}  // namespace velmorant
