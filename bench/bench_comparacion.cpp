// Re-import comparison over a generated year.
//
// Builds a company whose `Polizas`/`Polizas_Detalle` hold a year of vouchers
// (by default 4,500 a month, 2 to 6 lines each: about 216,000 lines), puts a
// slightly changed copy in the run stores (vouchers dropped, added, moved,
// concepts and amounts changed, lines added and swapped), then times the
// three comparison steps over the twelve months.
//
//   bench_comparacion [vouchers-per-month]
//
// Prints the time, lines compared per second (old plus new lines), the rows
// logged and the peak resident memory (VmHWM).

#include <chrono>
#include <cstdio>
#include <ctime>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#include "pipeline/Comparacion.h"
#include "platform/BaseDatos.h"
#include "session/Sesion.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"

using namespace velmorant;

namespace {

struct Linea {
    std::string cuenta;
    const char* tipoMov;
    long long importe;  // ten-thousandths
    std::string referencia;
    int partida;
};

struct Poliza {
    std::string poliza, tipo;
    Fecha fecha;
    std::string concepto;
    bool mes13 = false;
    std::vector<Linea> lineas;
};

std::vector<Poliza> GeneraAnio(int porMes, std::mt19937& azar) {
    const char* tipos[] = {"Dr", "Ig", "Eg"};
    std::uniform_int_distribution<int> numLineas(2, 6), cuenta(0, 399), dia(1, 28), importe(1, 5'000'000);
    std::vector<Poliza> r;
    for (int mes = 1; mes <= 12; ++mes)
        for (int i = 0; i < porMes; ++i) {
            Poliza p{std::to_string(i + 1), tipos[i % 3], Fecha(2023, mes, dia(azar)),
                     "Concepto de la poliza " + std::to_string(mes * 100000 + i), false, {}};
            int n = numLineas(azar);
            long long total = 0;
            for (int k = 1; k < n; ++k) {
                long long m = importe(azar) * 100LL;
                total += m;
                p.lineas.push_back({std::to_string(1100000 + cuenta(azar)), "D", m, "Ref " + std::to_string(k), k});
            }
            p.lineas.push_back({"2100001", "H", total, "Contrapartida", n});
            r.push_back(std::move(p));
        }
    for (int i = 0; i < porMes / 50; ++i) {
        Poliza p{"C" + std::to_string(i + 1), "Dr", Fecha(2023, 12, 31), "Cierre", true, {}};
        p.lineas.push_back({"3100001", "D", 1000000, "Cierre", 1});
        p.lineas.push_back({"3200001", "H", 1000000, "Cierre", 2});
        r.push_back(std::move(p));
    }
    return r;
}

/// A copy as a later import would read it: about 1 in 100 vouchers of each
/// kind of change.
std::vector<Poliza> Cambia(std::vector<Poliza> anio, std::mt19937& azar) {
    std::uniform_int_distribution<int> cien(0, 99);
    std::vector<Poliza> r;
    r.reserve(anio.size());
    for (auto& p : anio) {
        switch (cien(azar)) {
            case 0:
                continue;  // dropped
            case 1:
                p.concepto += " (corregido)";
                break;
            case 2:
                p.lineas[0].importe += 10000;
                break;
            case 3:
                p.lineas.push_back({"5100001", "D", 0, "Agregada", static_cast<int>(p.lineas.size()) + 1});
                break;
            case 4:
                if (!p.mes13 && p.fecha.dia() < 28) p.fecha = Fecha(p.fecha.anio(), p.fecha.mes(), p.fecha.dia() + 1);
                break;
            case 5:
                std::swap(p.lineas[0].cuenta, p.lineas[1].cuenta);
                break;
            case 6:
                p.lineas.erase(p.lineas.begin());
                for (size_t k = 0; k < p.lineas.size(); ++k) p.lineas[k].partida = static_cast<int>(k) + 1;
                break;
            case 7: {
                Poliza nueva = p;
                nueva.poliza = "N" + p.poliza;
                r.push_back(std::move(nueva));
                break;
            }
            default:
                break;
        }
        r.push_back(std::move(p));
    }
    return r;
}

void Guarda(BaseDatos& db, const std::vector<Poliza>& polizas, bool enTmp) {
    Transaccion t(db);
    Sentencia encabezado = db.prepara(
        std::string("INSERT INTO ") + (enTmp ? "Polizas_Tmp" : "Polizas") +
        " (IdPoliza, Poliza, Tipo, Fecha, Concepto, Poliza_Deshabilitada, Cuadrada, Poliza_Mes13, Poliza_Ajuste" +
        (enTmp ? ", Revisado" : "") + ") VALUES (?, ?, ?, ?, ?, 0, -1, ?, 0" + (enTmp ? ", 0" : "") + ")");
    Sentencia linea = db.prepara(std::string("INSERT INTO ") + (enTmp ? "Polizas_Detalle_Tmp" : "Polizas_Detalle") +
                                 " (IdPoliza, Cuenta, TipoMov, Importe, Referencia, Partida) VALUES (?, ?, ?, ?, ?, ?)");
    long id = 0;
    for (auto& p : polizas) {
        ++id;
        encabezado.con(id, p.poliza, p.tipo, p.fecha, p.concepto, p.mes13).ejecuta();
        for (auto& l : p.lineas)
            linea.con(id, l.cuenta, l.tipoMov, static_cast<long long>(l.importe), l.referencia, l.partida).ejecuta();
    }
    t.confirma();
}

size_t CuentaLineas(const std::vector<Poliza>& polizas) {
    size_t n = 0;
    for (auto& p : polizas) n += p.lineas.size();
    return n;
}

std::string PicoMemoria() {
    std::ifstream status("/proc/self/status");
    for (std::string l; std::getline(status, l);)
        if (l.rfind("VmHWM:", 0) == 0) return l.substr(6);
    return "?";
}

void MuestraPlan(BaseDatos& db, const std::string& sql) {
    Consulta c = db.consulta("EXPLAIN QUERY PLAN " + sql);
    for (c.primero(); !c.eof(); c.siguiente()) std::printf("    plan: %s\n", c["detail"].texto().c_str());
}

}  // namespace

int main(int argc, char** argv) {
    const int porMes = argc > 1 ? std::atoi(argv[1]) : 4500;
    const auto carpeta = std::filesystem::temp_directory_path() / ("bench_comparacion_" + std::to_string(getpid()));
    std::filesystem::create_directories(carpeta);

    int codigo = 0;
    try {
        Sesion s;
        s.RutaEmpresa = carpeta.string() + "/";
        s.DbEmpresa = std::make_unique<BaseDatos>(RutaBaseDatos(s.RutaEmpresa, "EMPRESA"), BaseDatos::Modo::Crear);
        CreaEsquemaEmpresa(*s.DbEmpresa);
        CreaPolizasTmp(s);
        CreaPolizasDetalleTmp(s);
        CreaInconsisImpTmp(s);
        if (!AbrePolizasTmp(s) || !AbreInconsistencias(s)) throw std::runtime_error("no se abrieron los almacenes");

        std::mt19937 azar(20230101);
        auto antes = GeneraAnio(porMes, azar);
        auto despues = Cambia(antes, azar);
        Guarda(*s.DbEmpresa, antes, false);
        Guarda(*s.DbEmpresa, despues, true);
        const size_t lineas = CuentaLineas(antes) + CuentaLineas(despues);
        std::printf("vouchers: %zu old, %zu new; lines: %zu old, %zu new\n", antes.size(), despues.size(),
                    CuentaLineas(antes), CuentaLineas(despues));

        using Reloj = std::chrono::steady_clock;
        std::chrono::duration<double> porPaso[3] = {};
        const std::clock_t cpuInicio = std::clock();
        for (int mes = 1; mes <= 12; ++mes) {
            char texto[3];
            std::snprintf(texto, sizeof texto, "%02d", mes);
            void (*pasos[3])(Sesion&, const std::string&) = {ComparaPolizas, ComparaPolizasNuevas,
                                                             ComparaPartidasNuevas};
            for (int i = 0; i < 3; ++i) {
                auto inicio = Reloj::now();
                pasos[i](s, texto);
                porPaso[i] += Reloj::now() - inicio;
            }
        }
        const double cpu = static_cast<double>(std::clock() - cpuInicio) / CLOCKS_PER_SEC;
        std::chrono::duration<double> segundos = porPaso[0] + porPaso[1] + porPaso[2];
        std::printf("ComparaPolizas %.2f s, ComparaPolizasNuevas %.2f s, ComparaPartidasNuevas %.2f s (CPU %.2f s)\n",
                    porPaso[0].count(), porPaso[1].count(), porPaso[2].count(), cpu);

        auto filas = s.DbEmpresa->escalar("SELECT COUNT(*) FROM InconsisImpTmp").entero();
        std::printf("three steps x 12 months: %.2f s, %.0f lines/s (%.0f lines per CPU second), %lld rows logged\n",
                    segundos.count(), static_cast<double>(lineas) / segundos.count(),
                    static_cast<double>(lineas) / cpu, static_cast<long long>(filas));
        std::printf("peak RSS (VmHWM):%s\n", PicoMemoria().c_str());
        std::printf("key search of a new voucher:\n");
        MuestraPlan(*s.DbEmpresa,
                    "SELECT rowid FROM Polizas_Tmp WHERE Poliza='1' AND Tipo='Dr' AND Fecha='2023-01-02' "
                    "ORDER BY rowid LIMIT 1");
        std::printf("key search of an old voucher:\n");
        MuestraPlan(*s.DbEmpresa,
                    "SELECT rowid FROM Polizas WHERE Poliza='1' AND Tipo='Dr' AND Fecha='2023-01-02' "
                    "ORDER BY rowid LIMIT 1");
    } catch (const std::exception& e) {
        std::fprintf(stderr, "bench_comparacion: %s\n", e.what());
        codigo = 1;
    }
    std::error_code ec;
    std::filesystem::remove_all(carpeta, ec);
    return codigo;
}
