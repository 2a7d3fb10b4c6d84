#include "importers/DestinoTmp.h"

#include <stdexcept>

#include "importers/Limpieza.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/Polizas.h"
#include "platform/Texto.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

namespace {

BaseDatos& Almacen(BaseDatos* db, const char* nombre) {
    if (!db) throw std::logic_error(std::string("El almacén temporal ") + nombre + " no está abierto");
    return *db;
}

std::string Corta(const std::string& t, size_t largo) { return largo == 0 ? t : Izquierda(t, largo); }

// QuitaCaracteresEspeciales of `t`: `t` itself when it has none of them,
// else the text made in `apoyo`.
const std::string& SinEspeciales(const std::string& t, std::string& apoyo) {
    if (!TieneCaracteresEspeciales(t)) return t;
    apoyo = QuitaCaracteresEspeciales(t);
    return apoyo;
}

constexpr const char* kInsertaPoliza =
    "INSERT INTO Polizas_Tmp.Polizas_Tmp (IdPoliza, Poliza, Tipo, Fecha, Concepto, "
    "Poliza_Deshabilitada, Poliza_Mes13, Poliza_Ajuste, Cuadrada, Revisado) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, 0, 0)";

constexpr const char* kInsertaPartida =
    "INSERT INTO Polizas_Detalle_Tmp.Polizas_Detalle_Tmp "
    "(IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida) VALUES (?, ?, ?, ?, ?, ?)";

std::string TextoCuentaFueraDeCatalogo(const std::string& cuenta) {
    return "La Cuenta " + cuenta + " no existe en el catálogo.";
}

}  // namespace

DestinoTmp::DestinoTmp(Sesion& s, ReglasDestino reglas) : s_(s), reglas_(reglas) {}

// ------------------------------------------------------------ Chart

void DestinoTmp::agregaCuenta(const CuentaLeida& c) {
    if (c.CuentaSinSeparadores.empty()) return;
    BaseDatos& db = Almacen(s_.DbCuentasTmp, kCuentasTmp);
    // A field the source does not give stays unset, so that it takes the
    // store's default; the statement for each set of fields is kept.
    std::string columnas = "Cuenta, CuentaSinSeparadores, Descripcion";
    std::vector<Valor> valores{c.Cuenta, c.CuentaSinSeparadores,
                               Corta(QuitaCaracteresEspeciales(c.Descripcion), reglas_.largoDescripcion)};
    auto agrega = [&](const char* columna, Valor v) {
        columnas += std::string(", ") + columna;
        valores.push_back(std::move(v));
    };
    if (c.Saldo) agrega("Saldo", *c.Saldo);
    if (c.CuentaAcumulativa) agrega("CuentaAcumulativa", *c.CuentaAcumulativa);
    if (c.Nivel) agrega("Nivel", *c.Nivel);
    if (c.Naturaleza) agrega("Naturaleza", *c.Naturaleza);
    if (c.Tipo) agrega("Tipo", *c.Tipo);
    std::string marcas = "?";
    for (size_t i = 1; i < valores.size(); ++i) marcas += ", ?";
    Sentencia& st = db.preparada("INSERT INTO CuentasTmp.Cuentas (" + columnas + ") VALUES (" + marcas + ")");
    st.reinicia();
    for (size_t i = 0; i < valores.size(); ++i) st.liga(static_cast<int>(i) + 1, valores[i]);
    st.ejecuta();
    if (cuentasCargadas_) cuentasTmp_.insert(SinMayusculasAscii(c.CuentaSinSeparadores));
}

bool DestinoTmp::tieneCuentaTmp(const std::string& cuenta) {
    return !Almacen(s_.DbCuentasTmp, kCuentasTmp)
                .escalar("SELECT 1 FROM CuentasTmp.Cuentas WHERE Cuenta = ? LIMIT 1", cuenta)
                .esNulo();
}

bool DestinoTmp::asignaSaldoInicial(const std::string& cuenta, Moneda saldo) {
    BaseDatos& db = Almacen(s_.DbCuentasTmp, kCuentasTmp);
    Valor fila = db.escalar("SELECT rowid FROM CuentasTmp.Cuentas WHERE Cuenta = ? LIMIT 1", cuenta);
    if (fila.esNulo()) return false;
    db.ejecuta("UPDATE CuentasTmp.Cuentas SET Saldo = ? WHERE rowid = ?", saldo, fila.entero());
    return true;
}

void DestinoTmp::agregaSaldoAnioAnterior(const SaldoAnioAnteriorLeido& r) {
    Almacen(s_.DbCuentasTmp, kCuentasTmp)
        .preparada("INSERT INTO CuentasTmp.Cuentas (Cuenta, CuentaSinSeparadores, Descripcion, Nivel, "
                   "SaldoFinAnioAnt) VALUES (?, ?, ?, ?, ?)")
        .con(r.Cuenta, r.CuentaSinSeparadores, QuitaCaracteresEspeciales(r.Descripcion), r.Nivel, r.SaldoFinAnioAnt)
        .ejecuta();
}

bool DestinoTmp::cuentaEnEmpresa(const std::string& cuenta) {
    if (!s_.DbEmpresa) throw std::logic_error("La base de la empresa no está abierta");
    return !s_.DbEmpresa->escalar("SELECT 1 FROM main.Cuentas WHERE Cuenta = ? LIMIT 1", cuenta).esNulo();
}

// ------------------------------------------------------------ Vouchers

long DestinoTmp::siguienteIdPoliza() {
    if (reglas_.contadorIdPoliza) return ++*reglas_.contadorIdPoliza;
    if (siguienteId_ == 0) siguienteId_ = SiguienteIdPoliza(s_);
    return siguienteId_++;
}

Sentencia& DestinoTmp::guardada(Guardada& g, BaseDatos& db, const char* sql) {
    if (g.db != &db || g.generacion != db.generacionPreparadas()) {
        g.st = &db.preparada(sql);
        g.db = &db;
        g.generacion = db.generacionPreparadas();
    }
    return *g.st;
}

long DestinoTmp::escribePoliza(const PolizaLeida& p) {
    BaseDatos& db = Almacen(s_.DbPolizasTmp, kPolizasTmp);
    Almacen(s_.DbPolizasDetalleTmp, kPolizasDetalleTmp);
    long id = siguienteIdPoliza();
    // The texts bound stand here until the row is written.
    const std::string tipo = Corta(p.Tipo, reglas_.largoTipo);
    const std::string fecha = p.Fecha.iso();
    const std::string concepto = Izquierda(SinEspeciales(p.Concepto, apoyo_), 255);
    // Left reset and without values by the row before (ejecutaYOlvida).
    Sentencia& st = guardada(insertaPoliza_, db, kInsertaPoliza);
    st.ligaEntero(1, id)
        .ligaTexto(2, p.Poliza, false)
        .ligaTexto(3, tipo, false)
        .ligaTexto(4, fecha, false)
        .ligaTexto(5, concepto, false)
        .ligaEntero(6, p.Deshabilitada ? -1 : 0)
        .ligaEntero(7, p.Mes13 ? -1 : 0)
        .ligaEntero(8, p.Ajuste ? -1 : 0);
    st.ejecutaYOlvida();
    polizas_.pon(id, PolizaEscrita{p.Poliza, p.Tipo, p.Fecha, 0});
    ultimaEscrita_ = nullptr;  // the vector may have moved
    return id;
}

long DestinoTmp::poliza(const PolizaLeida& p) {
    // The key holds the type as the store keeps it. A search by a whole type
    // longer than that never matches a stored voucher, as a search of the
    // store by that type would not.
    if (ultima_ && ultima_->Poliza == p.Poliza && ultima_->Tipo == p.Tipo && ultima_->Fecha == p.Fecha &&
        ultima_->Mes13 == p.Mes13)
        return ultima_->id;
    const std::string tipo = Corta(p.Tipo, reglas_.largoTipo);
    const bool buscable = !reglas_.agrupaConTipoCompleto || tipo.size() == p.Tipo.size();
    // The date and the month-13 flag lead the key, a valid date packed in
    // four bytes: a usual key then fits in the string's own room, with no
    // allocation per voucher. An invalid date goes as its text, after a byte
    // no packed year starts with.
    std::string& clave = clave_;
    clave.clear();
    if (p.Fecha.valida()) {
        clave += static_cast<char>(p.Fecha.anio() >> 8);
        clave += static_cast<char>(p.Fecha.anio() & 0xff);
        clave += static_cast<char>(p.Fecha.mes());
        clave += static_cast<char>(p.Fecha.dia());
    } else {
        clave += '\xff';
        clave += p.Fecha.iso();
        clave += '\x1f';
    }
    clave += p.Mes13 ? '1' : '0';
    const size_t inicio = clave.size();
    clave += p.Poliza;
    clave += '\x1f';
    clave += tipo;
    for (size_t i = inicio; i < clave.size(); ++i)
        if (clave[i] >= 'A' && clave[i] <= 'Z') clave[i] = static_cast<char>(clave[i] - 'A' + 'a');
    // One look-up finds the voucher or makes its place; a place whose
    // voucher could not be written stays without one.
    const size_t n = porIdentidad_.agrega(clave);
    if (n == idDeIdentidad_.size()) idDeIdentidad_.push_back(kSinPoliza);
    long id;
    if (buscable) {
        if (idDeIdentidad_[n] != kSinPoliza) {
            ultima_ = UltimaPoliza{p.Poliza, p.Tipo, p.Fecha, p.Mes13, idDeIdentidad_[n]};
            return idDeIdentidad_[n];
        }
        id = idDeIdentidad_[n] = escribePoliza(p);
    } else {
        // Found by a later search only while the key has no voucher yet.
        id = escribePoliza(p);
        if (idDeIdentidad_[n] == kSinPoliza) idDeIdentidad_[n] = id;
    }
    if (buscable) ultima_ = UltimaPoliza{p.Poliza, p.Tipo, p.Fecha, p.Mes13, id};
    else ultima_.reset();
    return id;
}

long DestinoTmp::nuevaPoliza(const PolizaLeida& p) { return escribePoliza(p); }

DestinoTmp::PolizaEscrita* DestinoTmp::PolizasEscritas::busca(long id) {
    const auto desplazamiento = static_cast<unsigned long>(id) - static_cast<unsigned long>(primera_);
    if (id >= primera_ && desplazamiento < seguidas_.size()) return &seguidas_[desplazamiento];
    auto it = sueltas_.find(id);
    return it == sueltas_.end() ? nullptr : &it->second;
}

void DestinoTmp::PolizasEscritas::pon(long id, PolizaEscrita p) {
    if (seguidas_.empty() && sueltas_.empty()) primera_ = id;
    const auto desplazamiento = static_cast<unsigned long>(id) - static_cast<unsigned long>(primera_);
    if (PolizaEscrita* ya = busca(id)) {
        *ya = std::move(p);
    } else if (id >= primera_ && desplazamiento == seguidas_.size()) {
        seguidas_.push_back(std::move(p));
    } else {
        sueltas_.emplace(id, std::move(p));
    }
}

void DestinoTmp::agregaPartida(long idPoliza, const PartidaLeida& l) {
    if (l.Cuenta.empty()) return;
    // A voucher's lines mostly come one after another: the last one found
    // is asked first.
    if (!ultimaEscrita_ || idUltimaEscrita_ != idPoliza) {
        ultimaEscrita_ = polizas_.busca(idPoliza);
        if (!ultimaEscrita_)
            throw std::logic_error("La póliza " + std::to_string(idPoliza) + " no es de esta lectura");
        idUltimaEscrita_ = idPoliza;
    }
    PolizaEscrita& p = *ultimaEscrita_;
    // The texts bound stand in `l` and here until the row is written.
    const std::string& referencia = SinEspeciales(l.Referencia, apoyo2_);
    Sentencia& st = guardada(insertaPartida_, Almacen(s_.DbPolizasDetalleTmp, kPolizasDetalleTmp), kInsertaPartida);
    st.ligaEntero(1, idPoliza)
        .ligaTexto(2, l.Cuenta, false)
        .ligaTexto(3, l.TipoMov, false)
        .ligaEntero(4, l.Importe.diezmilesimas())
        .ligaTexto(5, referencia, false)
        .ligaEntero(6, ++p.ultimaPartida);
    st.ejecutaYOlvida();
    ++partidas_;
    if (!cuentaConocida(l.Cuenta)) registraCuentaInexistente(p, l);
}

bool DestinoTmp::cuentaConocida(const std::string& cuenta) {
    if (!cuentasCargadas_) {
        Sentencia& st = Almacen(s_.DbCuentasTmp, kCuentasTmp)
                            .preparada("SELECT CuentaSinSeparadores FROM CuentasTmp.Cuentas");
        st.reinicia();
        while (st.paso()) cuentasTmp_.insert(SinMayusculasAscii(st.columna(0).texto()));
        st.reinicia();
        cuentasCargadas_ = true;
    }
    return cuentasTmp_.count(SinMayusculasAscii(cuenta)) > 0;
}

bool DestinoTmp::primeraVezEnBitacora(const std::string& cuenta) {
    // The log is asked once per account: an account dropped from the chart
    // may already be there from the chart's comparison.
    if (!cuentasEnBitacora_.insert(SinMayusculasAscii(cuenta)).second) return false;
    return !ExisteInconsistenciaCuenta(s_, cuenta);
}

void DestinoTmp::registraCuentaInexistente(const PolizaEscrita& p, const PartidaLeida& l) {
    if (!primeraVezEnBitacora(l.Cuenta)) return;
    std::string texto;
    switch (reglas_.avisoCuentaInexistente) {
        case ReglasDestino::AvisoCuentaInexistente::Movimiento:
            texto = "No se registró  el movimiento " + l.TipoMov + " ," + l.Importe.formatoMoneda() +
                    " de la Póliza, ya que la Cuenta no existe.";
            break;
        case ReglasDestino::AvisoCuentaInexistente::CuentaNoExiste: texto = TextoCuentaFueraDeCatalogo(l.Cuenta); break;
        case ReglasDestino::AvisoCuentaInexistente::NoExisteEnCatalogo:
            texto = "La cuenta " + l.Cuenta + " no existe en el catálogo";
            break;
    }
    if (reglas_.avisoSinPoliza) RegistraInconsistencia(s_, texto, kFuentePolizas, "O", "", "", std::nullopt, l.Cuenta);
    else RegistraInconsistencia(s_, texto, kFuentePolizas, "O", p.Poliza, p.Tipo, p.Fecha, l.Cuenta);
}

std::string DestinoTmp::anexaConcepto(long idPoliza, const std::string& agregado) {
    if (!polizas_.busca(idPoliza))
        throw std::logic_error("La póliza " + std::to_string(idPoliza) + " no es de esta lectura");
    BaseDatos& db = Almacen(s_.DbPolizasTmp, kPolizasTmp);
    std::string concepto = db.escalar("SELECT Concepto FROM Polizas_Tmp.Polizas_Tmp WHERE IdPoliza = ?", idPoliza).texto();
    if (LongitudCaracteres(concepto) >= 256) return concepto;
    concepto = Izquierda(concepto + QuitaCaracteresEspeciales(agregado), 255);
    db.ejecuta("UPDATE Polizas_Tmp.Polizas_Tmp SET Concepto = ? WHERE IdPoliza = ?", concepto, idPoliza);
    return concepto;
}

std::optional<std::string> DestinoTmp::asignaSaldoPorCodigo(const std::string& codigo, Moneda saldo) {
    BaseDatos& db = Almacen(s_.DbCuentasTmp, kCuentasTmp);
    Consulta c = db.consulta("SELECT rowid, Naturaleza FROM CuentasTmp.Cuentas WHERE CuentaSinSeparadores = ? LIMIT 1",
                             codigo);
    if (c.vacia()) return std::nullopt;
    db.ejecuta("UPDATE CuentasTmp.Cuentas SET Saldo = ? WHERE rowid = ?", saldo, c.campo(0));
    return c.campo(1).texto();
}

// ------------------------------------------------------------ Adjustments

BaseDatos& DestinoTmp::almacenAjustes() {
    if (!ajustes_) {
        const std::string ruta = RutaAlmacen(s_, kAjYRclTmp);
        if (!ExisteArchivo(ruta))
            throw std::logic_error(std::string("El almacén temporal ") + kAjYRclTmp + " no existe");
        ajustes_ = std::make_unique<BaseDatos>(ruta);
        // The next run makes it afresh: a crash may lose it whole.
        ajustes_->ejecutaScript("PRAGMA synchronous=OFF; PRAGMA journal_mode=MEMORY;");
    }
    return *ajustes_;
}

long DestinoTmp::nuevoAjusteReclasificacion(const std::string& tipo) {
    Valor maximo =
        almacenAjustes().escalar("SELECT MAX([IdAjRc]) AS AjRcSiguiente FROM [AjYRcl_Tmp] WHERE Tipo=?", tipo);
    return maximo.esNulo() ? 1 : static_cast<long>(maximo.entero()) + 1;
}

void DestinoTmp::agregaLineaAjuste(long idAjRc, const LineaAjusteLeida& l) {
    if (l.Cuenta.empty()) return;
    almacenAjustes()
        .preparada("INSERT INTO AjYRcl_Tmp (IdAjRc, AjRc, Tipo, Concepto, Estatus, Cuenta, TipoMov, Importe) "
                   "VALUES (?, ?, ?, ?, ?, ?, ?, ?)")
        .con(idAjRc, l.AjRc, l.Tipo, l.Concepto, true, l.Cuenta, l.TipoMov, l.Importe)
        .ejecuta();
    if (!cuentaConocida(l.Cuenta) && primeraVezEnBitacora(l.Cuenta))
        RegistraInconsistencia(s_, TextoCuentaFueraDeCatalogo(l.Cuenta), kFuentePolizas, "O", l.Poliza, l.Tipo, l.Fecha,
                               l.Cuenta);
}

}  // namespace velmorant
