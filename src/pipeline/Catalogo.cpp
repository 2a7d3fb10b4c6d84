#include "pipeline/Catalogo.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <stdexcept>

#include "accounts/CodigosCuenta.h"
#include "pipeline/Inconsistencias.h"
#include "platform/Texto.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

namespace {

/// Characters of a description that the company keeps.
constexpr size_t kLargoDescripcion = 60;

std::string RecortaBlancos(const std::string& t) {
    size_t a = t.find_first_not_of(' ');
    if (a == std::string::npos) return "";
    return t.substr(a, t.find_last_not_of(' ') - a + 1);
}

/// The description as the company keeps it: cleaned, cut, trimmed.
std::string DescripcionEmpresa(const Valor& descripcion) {
    return RecortaBlancos(IzquierdaCaracteres(QuitaCaracteresEspeciales(SiNuloTexto(descripcion)), kLargoDescripcion));
}

void Registra(Sesion& s, const std::string& referencia, int fuente, const std::string& clasif,
              const std::string& cuenta) {
    RegistraInconsistencia(s, referencia, fuente, clasif, "", "", std::nullopt, cuenta);
}

/// The first store row with this key, or an empty recordset.
Consulta FilaTmp(BaseDatos& db, const std::string& campos, const Valor& cuenta) {
    return db.consulta("SELECT " + campos +
                           " FROM CuentasTmp.Cuentas WHERE CuentaSinSeparadores = ? ORDER BY rowid LIMIT 1",
                       cuenta);
}

/// The first company row with this code, or an empty recordset.
Consulta FilaEmpresa(BaseDatos& db, const std::string& tabla, const std::string& campos, const Valor& cuenta) {
    return db.consulta("SELECT " + campos + " FROM " + tabla + " WHERE Cuenta = ? ORDER BY rowid LIMIT 1", cuenta);
}

bool TablaVacia(BaseDatos& db, const std::string& tabla) {
    return db.escalar("SELECT 1 FROM " + tabla + " LIMIT 1").esNulo();
}

/// The store's level if it has one, else the level the code uses.
int NivelDeFila(Sesion& s, const Consulta& fila) {
    std::int64_t nivel = fila["Nivel"].entero();
    if (nivel != 0) return static_cast<int>(nivel);
    return CalculaNivelCuenta(s, SiNuloTexto(fila["CuentaSinSeparadores"]), false);
}

void CompararCuenta(Sesion& s, BaseDatos& db, const Consulta& empresa) {
    const Valor& cuenta = empresa["Cuenta"];
    Consulta tmp = FilaTmp(db, "rowid AS Fila, Descripcion, Saldo", cuenta);
    if (tmp.vacia()) {
        Registra(s, "Se dio de Baja la cuenta, no existe referencia de ésta en el Nuevo Catálogo.", kFuenteCatalogo,
                 "B", SiNuloTexto(cuenta));
        return;
    }
    db.ejecuta("UPDATE CuentasTmp.Cuentas SET Naturaleza = ? WHERE rowid = ?", empresa["Naturaleza"], tmp["Fila"]);

    std::string nueva = QuitaCaracteresEspeciales(SiNuloTexto(tmp["Descripcion"]));
    std::string anterior = QuitaCaracteresEspeciales(SiNuloTexto(empresa["Descripcion"]));
    if (QuitaCaracteresEspeciales(IzquierdaCaracteres(SiNuloTexto(tmp["Descripcion"]), kLargoDescripcion)) != anterior)
        Registra(s,
                 ComponeReferencia({{"La descripción de la cuenta ha cambiado: Anterior -> "}, Dato(anterior),
                                    {" Nueva -> "}, Dato(nueva), {"."}}),
                 kFuenteCatalogo, "C", SiNuloTexto(cuenta));

    Consulta balanza = FilaEmpresa(db, "Balanzas", "SaldoInicial", cuenta);
    if (!balanza.vacia() && balanza["SaldoInicial"].moneda() != tmp["Saldo"].moneda())
        Registra(s,
                 "El saldo inicial de la cuenta ha cambiado: el saldo " + balanza["SaldoInicial"].moneda().formatoMoneda() +
                     " sera sustituido por " + tmp["Saldo"].moneda().formatoMoneda(),
                 kFuenteSaldosIniciales, "C", SiNuloTexto(cuenta));

    db.ejecuta("UPDATE CuentasTmp.Cuentas SET Revisado = ? WHERE rowid = ?", true, tmp["Fila"]);
}

/// The accounts the new voucher lines use, without case as the store's
/// column compares them, read in one pass the first time an account is
/// asked about: the store has no index on them, which would cost its
/// upkeep on every line read, and most runs never ask.
class CuentasConLineas {
public:
    explicit CuentasConLineas(BaseDatos& db) : db_(db) {}
    bool usa(const Valor& cuenta) {
        if (!leidas_) {
            Consulta c = db_.consulta("SELECT DISTINCT Cuenta FROM Polizas_Detalle_Tmp WHERE Cuenta IS NOT NULL");
            for (c.primero(); !c.eof(); c.siguiente()) cuentas_.insert(SinMayusculasAscii(c.campo(0).texto()));
            leidas_ = true;
        }
        return cuentas_.count(SinMayusculasAscii(cuenta.texto())) > 0;
    }

private:
    BaseDatos& db_;
    bool leidas_ = false;
    std::set<std::string> cuentas_;
};

/// True when the company account must stay: the store has it, it has a
/// prior-year balance, it is a parent, or some line uses it.
bool SeConserva(BaseDatos& db, const Consulta& fila, const std::set<std::string>& padres, CuentasConLineas& lineas) {
    const Valor& cuenta = fila["Cuenta"];
    if (!FilaTmp(db, "1", cuenta).vacia()) return true;
    const Valor& anterior = fila["Saldo_Anterior_Final"];
    if (anterior.esNulo() || !anterior.moneda().esCero()) return true;
    if (padres.count(SinMayusculasAscii(cuenta.texto()))) return true;
    if (lineas.usa(cuenta)) return true;
    for (const char* tabla : {"Ajustes_Detalle", "Reclasificaciones_Detalle"})
        if (!db.escalar(std::string("SELECT 1 FROM ") + tabla + " WHERE Cuenta = ? LIMIT 1", cuenta).esNulo())
            return true;
    return false;
}

}  // namespace

BaseDatos& CuentasTmpAbierto(Sesion& s) {
    if (!s.DbCuentasTmp) throw std::logic_error("La base temporal de cuentas no está abierta");
    return *s.DbCuentasTmp;
}

// ------------------------------------------------------------------- Steps

void ComparaCatalogo(Sesion& s, Progreso& barra) {
    BaseDatos& db = CuentasTmpAbierto(s);
    if (TablaVacia(db, "CuentasTmp.Cuentas") || TablaVacia(db, "main.Cuentas")) return;
    Transaccion t(db);
    Consulta empresa = db.consulta("SELECT Cuenta, Naturaleza, Descripcion FROM main.Cuentas ORDER BY rowid");
    barra.maximo(static_cast<long>(empresa.cuentaRegistros()));
    long n = 0;
    for (empresa.primero(); !empresa.eof(); empresa.siguiente()) {
        barra.valor(++n);
        CompararCuenta(s, db, empresa);
    }
    t.confirma();
    barra.cede();
}

void RegistraCuentasNuevas(Sesion& s, Progreso& barra) {
    BaseDatos& db = CuentasTmpAbierto(s);
    // A Null mark reads as false, as the legacy boolean never was Null.
    Consulta nuevas = db.consulta(
        "SELECT CuentaSinSeparadores, Descripcion FROM CuentasTmp.Cuentas "
        "WHERE Revisado IS NULL OR Revisado = 0 ORDER BY rowid");
    if (nuevas.vacia() || TablaVacia(db, "main.Cuentas")) return;
    Transaccion t(db);
    barra.maximo(static_cast<long>(nuevas.cuentaRegistros()));
    long n = 0;
    for (nuevas.primero(); !nuevas.eof(); nuevas.siguiente()) {
        barra.valor(++n);
        std::string cuenta = SiNuloTexto(nuevas["CuentaSinSeparadores"]);
        Registra(s,
                 ComponeReferencia({{"Se dió de Alta una nueva Cuenta: "}, Dato(FormateaCuenta(s, cuenta)), {" "},
                                    Dato(QuitaCaracteresEspeciales(SiNuloTexto(nuevas["Descripcion"]))), {"."}}),
                 kFuenteCatalogo, "A", cuenta);
    }
    t.confirma();
    barra.cede();
}

void AjustaSignoSaldo(Sesion& s, Progreso& barra) {
    BaseDatos& db = CuentasTmpAbierto(s);
    if (TablaVacia(db, "main.Cuentas")) return;
    Transaccion t(db);
    Consulta tmp = db.consulta("SELECT rowid AS Fila, CuentaSinSeparadores, Saldo FROM CuentasTmp.Cuentas ORDER BY rowid");
    barra.maximo(static_cast<long>(tmp.cuentaRegistros()));
    long n = 0;
    for (tmp.primero(); !tmp.eof(); tmp.siguiente()) {
        barra.valor(++n);
        Consulta empresa = FilaEmpresa(db, "main.Cuentas", "Naturaleza", tmp["CuentaSinSeparadores"]);
        if (empresa.vacia()) continue;
        std::string naturaleza = SiNuloTexto(empresa["Naturaleza"]);
        if (naturaleza == "A")
            db.ejecuta("UPDATE CuentasTmp.Cuentas SET Saldo = ?, Naturaleza = 'A' WHERE rowid = ?",
                       -tmp["Saldo"].moneda(), tmp["Fila"]);
        else if (naturaleza == "D")
            db.ejecuta("UPDATE CuentasTmp.Cuentas SET Naturaleza = 'D' WHERE rowid = ?", tmp["Fila"]);
    }
    t.confirma();
    barra.cede();
}

void RecalculaSinSeparadores(Sesion& s, Progreso& barra) {
    BaseDatos& db = CuentasTmpAbierto(s);
    Transaccion t(db);
    Consulta tmp = db.consulta("SELECT rowid AS Fila, Cuenta FROM CuentasTmp.Cuentas ORDER BY rowid");
    barra.maximo(static_cast<long>(tmp.cuentaRegistros()));
    long n = 0;
    for (tmp.primero(); !tmp.eof(); tmp.siguiente()) {
        barra.valor(++n);
        std::string cuenta = QuitaSeparadores(s, FormateaCuenta(s, QuitaSeparadores(s, SiNuloTexto(tmp["Cuenta"]))));
        db.ejecuta("UPDATE CuentasTmp.Cuentas SET CuentaSinSeparadores = ? WHERE rowid = ?", cuenta, tmp["Fila"]);
    }
    t.confirma();
    barra.cede();
}

void DepuraCatalogo(Sesion& s, Progreso& barra) {
    barra.etiqueta("Depurando el catálogo de cuentas...");
    BaseDatos& db = CuentasTmpAbierto(s);
    Transaccion t(db);
    // The parents as they stand before any deletion: an account freed by a
    // deletion here goes only at the next re-import.
    std::set<std::string> padres;
    Consulta referencias = db.consulta("SELECT DISTINCT CuentaAcumulativa FROM main.Cuentas");
    for (referencias.primero(); !referencias.eof(); referencias.siguiente())
        if (!referencias.campo(0).esNulo()) padres.insert(SinMayusculasAscii(referencias.campo(0).texto()));

    Consulta empresa = db.consulta("SELECT rowid AS Fila, Cuenta, Saldo_Anterior_Final FROM main.Cuentas ORDER BY rowid");
    barra.maximo(static_cast<long>(empresa.cuentaRegistros()));
    long n = 0;
    CuentasConLineas lineas(db);
    for (empresa.primero(); !empresa.eof(); empresa.siguiente()) {
        barra.valor(++n);
        if (!empresa["Cuenta"].esNulo()) {
            if (SeConserva(db, empresa, padres, lineas)) continue;
            db.ejecuta("DELETE FROM main.Balanzas WHERE Cuenta = ?", empresa["Cuenta"]);
        }
        db.ejecuta("DELETE FROM main.Cuentas WHERE rowid = ?", empresa["Fila"]);
    }
    t.confirma();
    barra.cede();
}

void GuardaCatalogo(Sesion& s, Progreso& barra) {
    barra.etiqueta("Guardando en catálogo de cuentas...");
    BaseDatos& db = CuentasTmpAbierto(s);
    Transaccion t(db);
    Consulta tmp = db.consulta(
        "SELECT CuentaSinSeparadores, Nivel, Descripcion, Naturaleza, CuentaAcumulativa, Tipo "
        "FROM CuentasTmp.Cuentas ORDER BY rowid");
    barra.maximo(static_cast<long>(tmp.cuentaRegistros()));
    long n = 0;
    for (tmp.primero(); !tmp.eof(); tmp.siguiente()) {
        barra.valor(++n);
        int nivel = NivelDeFila(s, tmp);
        const Valor& cuenta = tmp["CuentaSinSeparadores"];
        Consulta empresa = FilaEmpresa(db, "main.Cuentas", "rowid AS Fila", cuenta);
        std::string descripcion = DescripcionEmpresa(tmp["Descripcion"]);
        if (empresa.vacia())
            db.ejecuta(
                "INSERT INTO main.Cuentas (Cuenta, Descripcion, Naturaleza, CuentaAcumulativa, Tipo, Nivel) "
                "VALUES (?, ?, ?, ?, ?, ?)",
                cuenta, descripcion, tmp["Naturaleza"], SiNuloTexto(tmp["CuentaAcumulativa"]), tmp["Tipo"], nivel);
        else
            db.ejecuta("UPDATE main.Cuentas SET Descripcion = ?, Naturaleza = ? WHERE rowid = ?", descripcion,
                       tmp["Naturaleza"], empresa["Fila"]);
    }
    t.confirma();
    barra.cede();
}

void GuardaSaldoInicial(Sesion& s, Progreso& barra) {
    barra.etiqueta("Guardando el saldo inicial...");
    BaseDatos& db = CuentasTmpAbierto(s);
    Transaccion t(db);
    Consulta empresa = db.consulta("SELECT Cuenta FROM main.Cuentas ORDER BY Cuenta, rowid");
    barra.maximo(static_cast<long>(empresa.cuentaRegistros()));
    long n = 0;
    for (empresa.primero(); !empresa.eof(); empresa.siguiente()) {
        barra.valor(++n);
        const Valor& cuenta = empresa["Cuenta"];
        if (cuenta.esNulo()) continue;
        Consulta balanza = FilaEmpresa(db, "main.Balanzas", "rowid AS Fila", cuenta);
        Consulta tmp = FilaTmp(db, "Saldo", cuenta);
        if (balanza.vacia() && tmp.vacia())
            db.ejecuta("INSERT INTO main.Balanzas (Cuenta) VALUES (?)", cuenta);
        else if (balanza.vacia())
            db.ejecuta("INSERT INTO main.Balanzas (Cuenta, SaldoInicial, SaldoIniOrig) VALUES (?, ?, ?)", cuenta,
                       tmp["Saldo"], tmp["Saldo"]);
        else if (!tmp.vacia())
            db.ejecuta("UPDATE main.Balanzas SET SaldoInicial = ?, SaldoIniOrig = ? WHERE rowid = ?", tmp["Saldo"],
                       tmp["Saldo"], balanza["Fila"]);
    }
    t.confirma();
    barra.cede();
}

void GuardaSaldosAnioAnterior(Sesion& s, Progreso& barra) {
    barra.etiqueta("Importando Saldos Finales año anterior...");
    BaseDatos& db = CuentasTmpAbierto(s);
    Transaccion t(db);
    Consulta tmp = db.consulta(
        "SELECT CuentaSinSeparadores, Nivel, Descripcion, SaldoFinAnioAnt FROM CuentasTmp.Cuentas ORDER BY rowid");
    barra.maximo(static_cast<long>(tmp.cuentaRegistros()));
    long n = 0;
    for (tmp.primero(); !tmp.eof(); tmp.siguiente()) {
        barra.valor(++n);
        const Valor& cuenta = tmp["CuentaSinSeparadores"];
        Consulta empresa = FilaEmpresa(db, "main.Cuentas", "rowid AS Fila", cuenta);
        if (empresa.vacia())
            db.ejecuta(
                "INSERT INTO main.Cuentas (Cuenta, Descripcion, Nivel, Saldo_Anterior_Final) VALUES (?, ?, ?, ?)",
                cuenta, tmp["Descripcion"], NivelDeFila(s, tmp), tmp["SaldoFinAnioAnt"]);
        else
            db.ejecuta("UPDATE main.Cuentas SET Saldo_Anterior_Final = ? WHERE rowid = ?", tmp["SaldoFinAnioAnt"],
                       empresa["Fila"]);
    }
    t.confirma();
    barra.cede();
}

// --------------------------------------------------------- Existence tests

bool ExisteCuenta(Sesion& s, const std::string& cuenta) {
    return !s.DbEmpresa->escalar("SELECT Cuenta FROM main.Cuentas WHERE Cuenta = ? LIMIT 1", cuenta).esNulo();
}

bool ExisteCuentaConsulta(Sesion& s, const std::string& cuenta) {
    return !s.DbEmpresa->escalar("SELECT 1 FROM main.Cuentas WHERE Cuenta = ? LIMIT 1", cuenta).esNulo();
}

bool EsCuentaAcumulativa(Sesion& s, const std::string& cuenta) {
    Consulta c = s.DbEmpresa->consulta("SELECT Tipo FROM main.Cuentas WHERE Cuenta = ? ORDER BY rowid LIMIT 1", cuenta);
    return !c.vacia() && SiNuloTexto(c["Tipo"]) == "A";
}

std::string TipoPorReferencia(BaseDatos& db, const std::string& cuenta, const std::string& tabla) {
    bool esPadre =
        !db.escalar("SELECT 1 FROM " + tabla + " WHERE CuentaAcumulativa = ? LIMIT 1", cuenta).esNulo();
    return esPadre ? "A" : "D";
}

bool ExisteCuentaTmp(Sesion& s, const std::string& cuenta) {
    if (s.DbCuentasTmp)
        return !s.DbCuentasTmp->escalar("SELECT 1 FROM CuentasTmp.Cuentas WHERE CuentaSinSeparadores = ? LIMIT 1", cuenta)
                    .esNulo();
    BaseDatos solo(RutaAlmacen(s, kCuentasTmp), BaseDatos::Modo::SoloLectura);
    return !solo.escalar("SELECT 1 FROM Cuentas WHERE CuentaSinSeparadores = ? LIMIT 1", cuenta).esNulo();
}

}  // namespace velmorant
