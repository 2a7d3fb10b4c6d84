#pragma once
// The random draw of an account sample, and its history.
//
// Each single draw seeds the generator again from a seed source (the clock
// by default: microseconds since local midnight) and takes the position
// floor(u × n), u being the first number of a 64-bit Mersenne twister so
// seeded, reduced to its 53 high bits over 2^53. A position already drawn
// is drawn again. Given the seeds in `HistorialSorteos`, anyone can repeat
// the positions.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "platform/Moneda.h"

namespace velmorant {

/// Where each single draw takes its seed; tests give a fixed sequence.
using FuenteSemilla = std::function<std::uint64_t()>;

/// The clock: microseconds since midnight, local time, read at each call.
FuenteSemilla SemillaDelReloj();

/// The position, 0 to n - 1, that a seed gives in a pool of n (n > 0).
int PosicionSorteada(std::uint64_t semilla, int n);

/// True when `valor` is in `lista`.
bool ExisteEnArreglo(const std::vector<int>& lista, int valor);

struct Sorteo {
    std::vector<int> posiciones;         // in the order drawn
    std::vector<std::uint64_t> semillas;  // every seed tried, but a repeat of the one before
    bool poolCompleto = false;           // the pool was not larger than the draw: all of it, in order
};

/// Draws `cuantas` distinct positions of a pool of `tamanoPool`. The list of
/// drawn positions starts as one empty element that reads as 0, which the
/// first draw replaces, so the first draw never gives position 0. A pool
/// smaller than `cuantas`, or of one account, gives every position in order
/// and uses no seed: the draw could not end otherwise.
Sorteo SorteaPosiciones(int tamanoPool, int cuantas, const FuenteSemilla& fuente);

/// One draw as `HistorialSorteos` keeps it.
struct RegistroSorteo {
    long idCriterio = 10;
    int mesRevision = 0;
    std::string ctaIntegracion;
    std::string descripcion;  // the rule's text before the draw
    int porcentaje = 0;
    long poblacion = 0;
    Moneda totalPoblacion;
    long muestra = 0;
    long previas = 0;
    long porSortear = 0;
    long disponibles = 0;     // size of the pool
    Sorteo sorteo;
    std::vector<std::string> cuentas;  // drawn, in the order drawn
};

/// Adds one row to `HistorialSorteos`, stamped with the local date and time.
void RegistraSorteo(BaseDatos& db, const RegistroSorteo& r);

}  // namespace velmorant
