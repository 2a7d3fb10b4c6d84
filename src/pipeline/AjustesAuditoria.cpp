#include "pipeline/AjustesAuditoria.h"

#include <cctype>
#include <map>
#include <set>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "pipeline/Balanza.h"
#include "pipeline/Inconsistencias.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

namespace {

// The two kinds of entries and the names of their tables and fields.
struct Clase {
    const char* tipo;  // in AjYRcl_Tmp
    const char* cabecera;
    const char* detalle;
    const char* id;
    const char* numero;
    const char* aplicando;
    const char* calculando;
};

// clang-format off
const Clase kAjustes{"AJ", "Ajustes", "Ajustes_Detalle", "IdAjuste", "Ajuste",
                     "Aplicando Ajuste ", "Calculando Ajuste "};
const Clase kReclasificaciones{"RC", "Reclasificaciones", "Reclasificaciones_Detalle", "IdReclasificacion",
                               "Reclasificacion", "Aplicando Reclasificación ", "Calculando Reclasificación "};
// clang-format on

std::string Pliega(std::string t) {
    for (char& c : t) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return t;
}

std::string SinBlancos(const std::string& t) {
    size_t i = t.find_first_not_of(' ');
    if (i == std::string::npos) return "";
    return t.substr(i, t.find_last_not_of(' ') - i + 1);
}

// ------------------------------------------------------------ Applying

// The four sums of an account, debit and credit of each kind.
struct Sumas {
    Moneda debe[2], haber[2];
};

// The chart as the climb sees it, and the sums gathered on it.
class Aplicacion {
public:
    explicit Aplicacion(Sesion& s) : s_(s), db_(EmpresaAbierta(s)) {
        Consulta c = db_.consulta("SELECT Cuenta, CuentaAcumulativa FROM Cuentas ORDER BY rowid");
        for (c.primero(); !c.eof(); c.siguiente()) {
            if (c["Cuenta"].esNulo()) continue;
            padreDe_.emplace(Pliega(c["Cuenta"].texto()), SinBlancos(SiNuloTexto(c["CuentaAcumulativa"])));
        }
    }

    void aplica(const Clase& clase, int indice) {
        Consulta cabeceras = db_.consulta(std::string("SELECT ") + clase.id + ", " + clase.numero + " FROM " +
                                          clase.cabecera + " WHERE Estatus ORDER BY " + clase.id + " ASC");
        if (cabeceras.vacia()) return;
        MaximoProgreso(s_, cabeceras.cuentaRegistros());
        size_t n = 0;
        for (cabeceras.primero(); !cabeceras.eof(); cabeceras.siguiente()) {
            const std::string numero = cabeceras[clase.numero].texto();
            std::vector<Linea> lineas = lee(clase, cabeceras[clase.id]);
            // The entry on its own accounts, then carried up the chart.
            EtiquetaProgreso(s_, clase.aplicando + numero);
            for (const auto& l : lineas)
                if (padreDe_.count(Pliega(l.cuenta))) suma(l.cuenta, indice, l);
            EtiquetaProgreso(s_, clase.calculando + numero);
            for (const auto& l : lineas)
                if (padreDe_.count(Pliega(l.cuenta))) asciende(l, indice, numero, clase.tipo);
            AvanceProgreso(s_, ++n);
        }
    }

    // Every account of the chart: its sums, and the stage balance with them.
    void escribe() {
        const std::string campo = CampoSaldoDeEtapa(EtapaActual(s_));
        Consulta cuentas = db_.consulta("SELECT rowid AS Fila, Cuenta, " + campo + " AS Saldo FROM Cuentas");
        Sentencia& actualiza = db_.preparada(
            "UPDATE Cuentas SET Ajuste_Debe = ?, Ajuste_Haber = ?, RCL_Debe = ?, RCL_Haber = ?, Saldo_Ajustado = ?, "
            "Saldo_Final_Aud = ? WHERE rowid = ?");
        for (cuentas.primero(); !cuentas.eof(); cuentas.siguiente()) {
            Sumas m;
            if (auto it = sumas_.find(Pliega(cuentas["Cuenta"].texto())); it != sumas_.end()) m = it->second;
            Moneda ajustado = cuentas["Saldo"].moneda() + m.debe[0] - m.haber[0];
            actualiza.con(m.debe[0], m.haber[0], m.debe[1], m.haber[1], ajustado, ajustado + m.debe[1] - m.haber[1],
                          cuentas["Fila"])
                .ejecuta();
        }
    }

private:
    struct Linea {
        std::string cuenta;
        bool cargo;
        Moneda importe;
    };

    Sesion& s_;
    BaseDatos& db_;
    std::unordered_map<std::string, std::string> padreDe_;  // folded account: trimmed parent
    std::unordered_map<std::string, Sumas> sumas_;           // folded account
    std::unordered_set<std::string> sinPadre_;              // accounts already logged

    std::vector<Linea> lee(const Clase& clase, const Valor& id) {
        std::vector<Linea> r;
        Consulta c = db_.consulta(std::string("SELECT Cuenta, Tipo, Importe FROM ") + clase.detalle + " WHERE " +
                                      clase.id + "=? ORDER BY rowid",
                                  id);
        for (c.primero(); !c.eof(); c.siguiente())
            r.push_back({SiNuloTexto(c["Cuenta"]), SiNuloTexto(c["Tipo"]) == "C", c["Importe"].moneda()});
        return r;
    }

    void suma(const std::string& cuenta, int indice, const Linea& l) {
        Sumas& m = sumas_[Pliega(cuenta)];
        (l.cargo ? m.debe : m.haber)[indice] += l.importe;
    }

    // Up from the line's account: each ancestor takes the amount once. The
    // climb ends at the top (no parent), at an account that is its own
    // parent or already climbed, and at a parent the chart lacks.
    void asciende(const Linea& l, int indice, const std::string& numero, const char* tipo) {
        std::set<std::string> visitadas{Pliega(l.cuenta)};
        std::string cuenta = l.cuenta;
        for (;;) {
            const std::string& padre = padreDe_.at(Pliega(cuenta));
            if (padre.empty() || !visitadas.insert(Pliega(padre)).second) return;
            if (!padreDe_.count(Pliega(padre))) {
                if (sinPadre_.insert(Pliega(cuenta)).second)
                    RegistraInconsistencia(s_, "No se encontró la cuenta a la que acumula la cuenta", kFuenteCatalogo,
                                           "O", numero, tipo, std::nullopt, cuenta);
                return;
            }
            suma(padre, indice, l);
            cuenta = padre;
        }
    }
};

}  // namespace

void GuardaAjustesYReclasificaciones(Sesion& s) {
    BaseDatos& db = EmpresaAbierta(s);
    // The store is read by a connection of its own: the commit's connection
    // cannot attach a file inside its transaction.
    BaseDatos almacen(RutaAlmacen(s, kAjYRclTmp), BaseDatos::Modo::SoloLectura);
    Transaccion t(db);
    db.ejecuta("DELETE FROM Ajustes");
    db.ejecuta("DELETE FROM Ajustes_Detalle");
    db.ejecuta("DELETE FROM Reclasificaciones");
    db.ejecuta("DELETE FROM Reclasificaciones_Detalle");
    Consulta filas = almacen.consulta(
        "SELECT IdAjRc, AjRc, Tipo, Concepto, Estatus, Cuenta, TipoMov, Importe FROM AjYRcl_Tmp ORDER BY IdAjRc, rowid");
    MaximoProgreso(s, filas.cuentaRegistros());
    std::set<std::pair<std::string, std::int64_t>> cabeceras;
    size_t n = 0;
    for (filas.primero(); !filas.eof(); filas.siguiente()) {
        const std::string tipo = SiNuloTexto(filas["Tipo"]);
        const Clase* clase = tipo == kAjustes.tipo ? &kAjustes : tipo == kReclasificaciones.tipo ? &kReclasificaciones
                                                                                                   : nullptr;
        if (!clase) continue;
        EtiquetaProgreso(s, "Importando " + tipo + ", " + filas["AjRc"].texto());
        const Valor& id = filas["IdAjRc"];
        if (cabeceras.emplace(tipo, id.entero()).second)
            db.ejecuta(std::string("INSERT INTO ") + clase->cabecera + " (" + clase->id + ", " + clase->numero +
                           ", Concepto, Estatus, Contabilizado) VALUES (?, ?, ?, ?, ?)",
                       id, filas["AjRc"], QuitaCaracteresEspeciales(SiNuloTexto(filas["Concepto"])),
                       filas["Estatus"].booleano(), false);
        db.ejecuta(std::string("INSERT INTO ") + clase->detalle + " (" + clase->id +
                       ", Cuenta, Tipo, Importe) VALUES (?, ?, ?, ?)",
                   id, filas["Cuenta"], filas["TipoMov"], filas["Importe"]);
        if (++n % 64 == 0) AvanceProgreso(s, n);
    }
    t.confirma();
    AvanceProgreso(s, n);
}

void AplicaAjustesACuentas(Sesion& s) {
    BaseDatos& db = EmpresaAbierta(s);
    Transaccion t(db);
    Aplicacion a(s);
    a.aplica(kAjustes, 0);
    a.aplica(kReclasificaciones, 1);
    a.escribe();
    t.confirma();
    CedeProgreso(s);
}

void GuardaSaldosFinalesAnteriores(Sesion& s, const std::vector<std::pair<std::string, Moneda>>& saldos) {
    BaseDatos& db = EmpresaAbierta(s);
    EtiquetaProgreso(s, "Importando Saldos Finales año anterior...");
    Transaccion t(db);
    Sentencia& actualiza = db.preparada("UPDATE Cuentas SET Saldo_Anterior_Final = ? WHERE Cuenta = ?");
    for (const auto& [cuenta, saldo] : saldos) actualiza.con(saldo, cuenta).ejecuta();
    t.confirma();
    CedeProgreso(s);
}

}  // namespace velmorant
