#include "importers/contabilidad_electronica/ConciliacionBalanza.h"

#include <algorithm>
#include <unordered_set>

#include "importers/Limpieza.h"
#include "importers/Marco.h"
#include "pipeline/Inconsistencias.h"

namespace velmorant {

namespace {

const std::string kDeudora = "D";

struct Cifras {
    Moneda ini, debe, haber, fin;
};

std::string LaBalanzaDe(int mes) { return mes == 13 ? "la balanza del mes 13" : "la balanza de " + NombreDelMes(mes); }

using Acumulados = std::unordered_map<std::string, std::array<MovimientosPorMes::Mes, 13>>;

// The movements of each account with those of every account below it.
Acumulados AcumulaEnElCatalogo(const CatalogoConciliacion& catalogo, const MovimientosPorMes& movimientos) {
    Acumulados r;
    for (const auto& [cuenta, meses] : movimientos.porCuenta()) {
        std::string c = cuenta;
        // A chart whose parents loop cannot hold the walk longer than its size.
        for (size_t pasos = 0; !c.empty() && catalogo.tiene(c) && pasos <= catalogo.orden.size(); ++pasos) {
            auto& destino = r[c];
            for (size_t i = 0; i < 13; ++i) {
                destino[i].debe += meses[i].debe;
                destino[i].haber += meses[i].haber;
            }
            c = catalogo.cuentas.at(c).padre;
        }
    }
    return r;
}

// The opening balance of each account as the trial balance builds it: a
// detail account's own, an accumulative account's the sum of the detail
// accounts below it.
std::unordered_map<std::string, Moneda> AperturaEnElCatalogo(
    const CatalogoConciliacion& catalogo, const std::unordered_map<std::string, Moneda>& saldosIniciales) {
    std::unordered_set<std::string> conHijas;
    for (const auto& [cuenta, datos] : catalogo.cuentas)
        if (!datos.padre.empty()) conHijas.insert(datos.padre);
    std::unordered_map<std::string, Moneda> r;
    for (const auto& [cuenta, saldo] : saldosIniciales) {
        if (conHijas.count(cuenta)) continue;
        std::string c = cuenta;
        for (size_t pasos = 0; !c.empty() && catalogo.tiene(c) && pasos <= catalogo.orden.size(); ++pasos) {
            r[c] += saldo;
            c = catalogo.cuentas.at(c).padre;
        }
    }
    return r;
}

Cifras Calculadas(const std::string& cuenta, int mes, const std::unordered_map<std::string, Moneda>& apertura,
                  const Acumulados& acumulados) {
    Cifras c;
    if (auto it = apertura.find(cuenta); it != apertura.end()) c.ini = it->second;
    if (auto it = acumulados.find(cuenta); it != acumulados.end()) {
        const auto& meses = it->second;
        const int anteriores = mes == 13 ? 12 : mes - 1;
        for (int k = 0; k < anteriores; ++k) c.ini += meses[static_cast<size_t>(k)].debe - meses[static_cast<size_t>(k)].haber;
        c.debe = meses[static_cast<size_t>(mes - 1)].debe;
        c.haber = meses[static_cast<size_t>(mes - 1)].haber;
    }
    c.fin = c.ini + c.debe - c.haber;
    return c;
}

}  // namespace

void CatalogoConciliacion::agrega(const std::string& cuenta, const std::string& naturaleza, const std::string& padre) {
    if (cuenta.empty() || tiene(cuenta)) return;
    orden.push_back(cuenta);
    cuentas.emplace(cuenta, Cuenta{naturaleza, padre == cuenta ? "" : padre});
}

const std::string& CatalogoConciliacion::naturaleza(const std::string& cuenta) const {
    auto it = cuentas.find(cuenta);
    if (it == cuentas.end() || it->second.naturaleza.empty()) return kDeudora;
    return it->second.naturaleza;
}

Moneda SaldoDeudor(Moneda saldo, const std::string& naturaleza, SignoBalanza signo) {
    return signo == SignoBalanza::PorNaturaleza && naturaleza == "A" ? -saldo : saldo;
}

SignoBalanza DeduceSignoBalanza(const std::vector<RenglonBalanza>& renglones, const CatalogoConciliacion& catalogo) {
    long porNaturaleza = 0, deudorPositivo = 0;
    for (const auto& r : renglones) {
        if (catalogo.naturaleza(r.cuenta) != "A" || r.Debe == r.Haber) continue;
        if (r.SaldoFin == r.SaldoIni - r.Debe + r.Haber) ++porNaturaleza;
        if (r.SaldoFin == r.SaldoIni + r.Debe - r.Haber) ++deudorPositivo;
    }
    return deudorPositivo > porNaturaleza ? SignoBalanza::DeudorPositivo : SignoBalanza::PorNaturaleza;
}

void MovimientosPorMes::agrega(const std::string& cuenta, int mes, const std::string& tipoMov, Moneda importe) {
    if (mes < 1 || mes > 13) return;
    auto& m = cuentas_[cuenta][static_cast<size_t>(mes - 1)];
    if (tipoMov == "D") m.debe += importe;
    else m.haber += importe;
}

std::vector<DiferenciaBalanza> ConciliaBalanzas(const CatalogoConciliacion& catalogo,
                                                const std::unordered_map<std::string, Moneda>& saldosIniciales,
                                                const MovimientosPorMes& movimientos,
                                                const std::vector<BalanzaLeida>& balanzas) {
    std::vector<const BalanzaLeida*> porMes;
    for (const auto& b : balanzas) porMes.push_back(&b);
    std::stable_sort(porMes.begin(), porMes.end(), [](auto* a, auto* b) { return a->mes < b->mes; });
    const Acumulados acumulados = AcumulaEnElCatalogo(catalogo, movimientos);
    const auto apertura = AperturaEnElCatalogo(catalogo, saldosIniciales);

    std::vector<DiferenciaBalanza> r;
    for (const BalanzaLeida* b : porMes) {
        const std::string balanza = LaBalanzaDe(b->mes);
        auto anota = [&](const std::string& cuenta, int fuente, const std::string& texto) {
            r.push_back({cuenta, fuente, Izquierda(texto, kLargoReferencia)});
        };
        // A balance as the file shows it.
        auto muestra = [&](const std::string& cuenta, Moneda saldo) {
            return SaldoDeudor(saldo, catalogo.naturaleza(cuenta), b->signo).formatoMoneda();
        };
        for (const auto& cuenta : b->fueraDeCatalogo)
            anota(cuenta, kFuenteCatalogo, "La cuenta de " + balanza + " no existe en el catálogo");
        std::unordered_set<std::string> presentes;
        for (const auto& renglon : b->renglones) {
            const std::string& cuenta = renglon.cuenta;
            presentes.insert(cuenta);
            Cifras c = Calculadas(cuenta, b->mes, apertura, acumulados);
            if (renglon.SaldoIni != c.ini)
                anota(cuenta, kFuentePolizas,
                      "El saldo inicial de la cuenta en " + balanza + " es " + muestra(cuenta, renglon.SaldoIni) +
                          " y según las pólizas es " + muestra(cuenta, c.ini));
            if (renglon.Debe != c.debe)
                anota(cuenta, kFuentePolizas,
                      "Los cargos de la cuenta en " + balanza + " suman " + renglon.Debe.formatoMoneda() +
                          " y según las pólizas " + c.debe.formatoMoneda());
            if (renglon.Haber != c.haber)
                anota(cuenta, kFuentePolizas,
                      "Los abonos de la cuenta en " + balanza + " suman " + renglon.Haber.formatoMoneda() +
                          " y según las pólizas " + c.haber.formatoMoneda());
            Moneda resultante = renglon.SaldoIni + renglon.Debe - renglon.Haber;
            if (renglon.SaldoFin != resultante)
                anota(cuenta, kFuentePolizas,
                      "El saldo final de la cuenta en " + balanza + ", " + muestra(cuenta, renglon.SaldoFin) +
                          ", no resulta de su saldo inicial, cargos y abonos: " + muestra(cuenta, resultante));
        }
        for (const auto& cuenta : catalogo.orden) {
            if (presentes.count(cuenta)) continue;
            Cifras c = Calculadas(cuenta, b->mes, apertura, acumulados);
            if (c.ini.esCero() && c.debe.esCero() && c.haber.esCero() && c.fin.esCero()) continue;
            anota(cuenta, kFuentePolizas,
                  "La cuenta no está en " + balanza + "; según las pólizas: cargos " + c.debe.formatoMoneda() +
                      ", abonos " + c.haber.formatoMoneda() + ", saldo final " + muestra(cuenta, c.fin));
        }
    }
    return r;
}

}  // namespace velmorant
