#include "review/Sorteo.h"

#include <chrono>
#include <cmath>
#include <ctime>
#include <random>

namespace velmorant {

namespace {

std::tm HoraLocal(std::time_t t) {
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &t);
#else
    localtime_r(&t, &local);
#endif
    return local;
}

template <class T>
std::string Une(const std::vector<T>& valores) {
    std::string r;
    for (auto& v : valores) {
        if (!r.empty()) r += ',';
        if constexpr (std::is_same_v<T, std::string>)
            r += v;
        else
            r += std::to_string(v);
    }
    return r;
}

std::string FechaHoraLocal() {
    std::tm t = HoraLocal(std::time(nullptr));
    char b[32];
    std::strftime(b, sizeof b, "%Y-%m-%d %H:%M:%S", &t);
    return b;
}

}  // namespace

FuenteSemilla SemillaDelReloj() {
    return [] {
        using namespace std::chrono;
        auto ahora = system_clock::now();
        std::tm t = HoraLocal(system_clock::to_time_t(ahora));
        auto segundos = static_cast<std::uint64_t>(t.tm_hour * 3600 + t.tm_min * 60 + t.tm_sec);
        auto micros = duration_cast<microseconds>(ahora.time_since_epoch()).count() % 1000000;
        return segundos * 1000000 + static_cast<std::uint64_t>(micros);
    };
}

int PosicionSorteada(std::uint64_t semilla, int n) {
    std::mt19937_64 generador(semilla);
    double u = static_cast<double>(generador() >> 11) * 0x1.0p-53;
    return static_cast<int>(std::floor(u * n));
}

bool ExisteEnArreglo(const std::vector<int>& lista, int valor) {
    for (int v : lista)
        if (v == valor) return true;
    return false;
}

Sorteo SorteaPosiciones(int tamanoPool, int cuantas, const FuenteSemilla& fuente) {
    Sorteo r;
    if (cuantas <= 0) return r;
    if (tamanoPool < cuantas || tamanoPool == 1) {
        r.poolCompleto = true;
        for (int i = 0; i < tamanoPool; ++i) r.posiciones.push_back(i);
        return r;
    }
    std::vector<int> sorteadas{0};  // the empty first element
    for (int k = 0; k < cuantas; ++k) {
        int posicion = 0;
        do {
            std::uint64_t semilla = fuente();
            // The same seed again gives the same refused position: wait for the clock.
            if (!r.semillas.empty() && semilla == r.semillas.back()) continue;
            r.semillas.push_back(semilla);
            posicion = PosicionSorteada(semilla, tamanoPool);
            if (!ExisteEnArreglo(sorteadas, posicion)) break;
        } while (true);
        if (k == 0)
            sorteadas[0] = posicion;
        else
            sorteadas.push_back(posicion);
    }
    r.posiciones = sorteadas;
    return r;
}

void RegistraSorteo(BaseDatos& db, const RegistroSorteo& r) {
    db.ejecuta(
        "INSERT INTO HistorialSorteos (FechaHora, IdCriterio, MesRevision, CtaIntegracion, Descripcion, Porcentaje, "
        "Poblacion, TotalPoblacion, Muestra, Previas, PorSortear, Disponibles, PoolCompleto, Semillas, Posiciones, "
        "Cuentas) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        FechaHoraLocal(), r.idCriterio, r.mesRevision, r.ctaIntegracion, r.descripcion, r.porcentaje, r.poblacion,
        r.totalPoblacion, r.muestra, r.previas, r.porSortear, r.disponibles, r.sorteo.poolCompleto,
        Une(r.sorteo.semillas), Une(r.sorteo.posiciones), Une(r.cuentas));
}

}  // namespace velmorant
