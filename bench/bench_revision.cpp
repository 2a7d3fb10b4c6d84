// Times the rebuild of the auditor's review work (account selections, the
// analytic schedule with its restored work, the non-deductible items) inside
// a re-import: a generated year is imported through link 82, a schedule of
// some 5,000 reviewed rows is written on its busiest accounts, and the
// client's second delivery is imported over it. Only the rebuild steps are
// timed, from the first of them to the commit.
//
//   bench_revision [RENGLONES] [LINEAS] [PERDIDOS] [--mezcla]
//
// (defaults 5000 rows, 50000 lines, 10: one saved row in PERDIDOS names a
// reference the vouchers lack, so that it is lost, kept and reported).
// With --mezcla the schedule's rules take turns over the other ways of
// selecting movements (amount, percentage, months, side, reviewed, random);
// the saved rows the new rule does not select are lost then.

#include <QGuiApplication>

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "AnioGenerado.h"
#include "pipeline/Importacion.h"
#include "platform/Ajustes.h"
#include "session/Inicio.h"
#include "store/AltaBase.h"

using namespace velmorant;
using namespace velmorant::bench;
namespace fs = std::filesystem;
using Reloj = std::chrono::steady_clock;

namespace {

// Each step's wall and CPU seconds, from its start to the next step's.
struct Tiempos {
    std::map<std::string, std::pair<double, double>> pasos;
    std::string actual;
    Reloj::time_point inicio;
    std::clock_t cpu = 0;
    bool midiendo = false;

    void antes(const std::string& paso) {
        auto ahora = Reloj::now();
        std::clock_t c = std::clock();
        if (midiendo) {
            auto& t = pasos[actual];
            t.first += std::chrono::duration<double>(ahora - inicio).count();
            t.second += static_cast<double>(c - cpu) / CLOCKS_PER_SEC;
        }
        if (paso == "ActualizaTotalCtaSeleccion") midiendo = true;
        if (paso == "confirmación") midiendo = false;
        actual = paso, inicio = ahora, cpu = c;
    }
};

void Importa(const fs::path& base, const fs::path& archivos, Tiempos* tiempos) {
    Callada ui;
    Sesion s;
    AbreSesion(s, ui, base);
    auto importador = ImportadorDelAnio();
    OpcionesEjecucion op;
    if (tiempos) op.antesDePaso = [tiempos](const std::string& p) { tiempos->antes(p); };
    auto r = EjecutaImportacion(s, importador, Archivos(archivos), op);
    if (r != ResultadoImportacion::Terminada && r != ResultadoImportacion::ConPerdidas) {
        std::cerr << "la importación no terminó (" << static_cast<int>(r) << ")\n";
        std::exit(1);
    }
}

// The reviewer's work: selection rules for every review month, and schedule
// rules taking all movements of the busiest accounts, each movement with its
// marks, notes, taxes and folio, until `renglones` rows.
long EscribeTrabajo(const fs::path& base, long renglones, long cadaPerdido, bool mezcla) {
    Callada ui;
    Sesion s;
    AbreSesion(s, ui, base);
    BaseDatos& db = *s.DbEmpresa;
    Transaccion t(db);
    for (int mes = 1; mes <= 12; ++mes)
        for (auto [criterio, cuenta, porcentaje] : {std::tuple{1, "102", 0.0}, {2, "105", 80.0}, {4, "601", 0.0},
                                                     {7, "105", 0.0}, {8, "201", 50.0}})
            db.ejecuta("INSERT INTO SeleccionMaster (IdCriterio, Descripcion, CtaIntegracion, SaldoMayorA, "
                       "Porcentaje, PorcentajeUsr, TotalCta, MesRevision) VALUES (?, 'regla', ?, ?, ?, ?, 0, ?)",
                       criterio, std::string(cuenta), Moneda::desdeEntero(1000), porcentaje, porcentaje, mes);
    Consulta cuentas = db.consulta(
        "SELECT Cuenta, COUNT(*) AS N FROM Polizas_Detalle WHERE Importe <> 0 GROUP BY Cuenta ORDER BY N DESC, Cuenta");
    struct Regla {
        int criterio;
        const char* descripcion;
        double porcentaje;
    };
    const std::vector<Regla> reglas =
        mezcla ? std::vector<Regla>{{4, "Todos los movimientos", 0},
                                    {1, "Mayores a 5,000", 0},
                                    {2, "60 % de la cuenta", 60},
                                    {3, "Meses [ENE - 030%;JUN - 050%;DIC - 100%", 0},
                                    {5, "Cargos al 50 %", 50},
                                    {9, "Revisados", 0},
                                    {10, "Muestra al 20 %", 20},
                                    {11, "Muestra por tipo al 20 %", 20}}
               : std::vector<Regla>{{4, "Todos los movimientos", 0}};
    long n = 0;
    size_t turno = 0;
    for (cuentas.primero(); !cuentas.eof() && n < renglones; cuentas.siguiente()) {
        const std::string cuenta = cuentas["Cuenta"].texto();
        const Regla& r = reglas[turno++ % reglas.size()];
        db.ejecuta("INSERT INTO CedAnaliticaMaster (IdCriterio, Descripcion, CtaIntegracion, SaldoMayorA, Porcentaje, "
                   "TotalCta) VALUES (?, ?, ?, ?, ?, 0)",
                   r.criterio, std::string(r.descripcion), cuenta, Moneda::desdeEntero(5000), r.porcentaje);
        Consulta m = db.consulta(
            "SELECT D.IdPoliza, P.Poliza, P.Tipo, P.Fecha, D.Cuenta, D.Referencia, D.TipoMov, D.Importe "
            "FROM Polizas_Detalle D JOIN Polizas P ON P.IdPoliza = D.IdPoliza "
            "WHERE D.Cuenta = ? AND D.Importe <> 0 ORDER BY D.rowid",
            cuenta);
        for (m.primero(); !m.eof() && n < renglones; m.siguiente()) {
            ++n;
            Moneda importe = m["Importe"].moneda();
            db.ejecuta(
                "INSERT INTO CedAnalitica (IdCriterio, IdPoliza, Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, "
                "Importe, Modificado, Refmodificada, AplicaIVA, PorIVA, IVA, Marca1, Marca2, Observaciones, "
                "Sugerencias, InfoAdd1, VerObs, Obs, Aplicado) "
                "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0, '', 1, 16, ?, 'ok', ?, 'Cotejado', ?, 'Revisó: A.G.', 0, '', 0)",
                r.criterio, m["IdPoliza"], m["Poliza"], m["Tipo"], m["Fecha"], m["Cuenta"],
                cadaPerdido > 0 && n % cadaPerdido == 0 ? Valor(m["Referencia"].texto() + " (anterior)")
                                                        : m["Referencia"],
                m["TipoMov"], importe, importe.multiplica(0.16 / 1.16), n % 2 ? "√" : "x",
                n % 3 ? "" : "Solicitar comprobante original");
            char uuid[64];
            std::snprintf(uuid, sizeof uuid, "6F2A1C9E-0B4D-4E7A-9C3B-%012ld", 100000 + n);
            db.ejecuta("INSERT INTO UUIDAnalitica (IdCedAnalitica, UUID) VALUES (?, ?)", db.ultimoId(),
                       std::string(uuid));
            if (n % 50 == 0)
                db.ejecuta("INSERT INTO CedNoDeducibles (Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe, "
                           "IdCedAnalitica) VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
                           m["Poliza"], m["Tipo"], m["Fecha"], m["Cuenta"], m["Referencia"], m["TipoMov"], importe,
                           db.ultimoId());
        }
    }
    t.confirma();
    return n;
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    long renglones = argc > 1 ? std::atol(argv[1]) : 5000;
    long lineas = argc > 2 ? std::atol(argv[2]) : 50000;
    long cadaPerdido = argc > 3 ? std::atol(argv[3]) : 10;
    const bool mezcla = argc > 4 && std::string(argv[4]) == "--mezcla";
    auto anio = bench::GeneraAnio(lineas);
    if (!anio) return 1;
    const fs::path dir = anio->dir;
    const std::string base = anio->base;

    Importa(base, dir / "entrega1", nullptr);
    long escritos = EscribeTrabajo(base, renglones, cadaPerdido, mezcla);
    Tiempos t;
    Importa(base, dir / "entrega2", &t);

    double total = 0, cpu = 0;
    for (auto& [paso, v] : t.pasos) {
        std::cout << "  " << paso << ": " << v.first << " s (" << v.second << " s de CPU)\n";
        total += v.first, cpu += v.second;
    }
    Callada ui;
    Sesion s;
    AbreSesion(s, ui, base);
    std::cout << "Reconstrucción de la revisión: " << escritos << " renglones de cédula guardados, "
              << s.DbEmpresa->escalar("SELECT COUNT(*) FROM CedAnalitica").entero() << " reconstruidos, "
              << s.DbEmpresa->escalar("SELECT COUNT(*) FROM SeleccionDetalle").entero()
              << " cuentas seleccionadas, "
              << s.DbEmpresa->escalar("SELECT COUNT(*) FROM CedAnalitica WHERE Observaciones = 'Cotejado'").entero()
              << " con su trabajo; "  << total << " s (" << cpu << " s de CPU)\n";
    fs::remove_all(dir);
    return 0;
}
