#pragma once
// The link catalogue (`Enlaces`): its shipped rows and the link selector's
// queries.

#include <string>
#include <vector>

#include "platform/BaseDatos.h"

namespace velmorant {

struct Enlace {
    int IdSistema;
    std::string Descripcion;
    bool Liberado;
    bool Comercial;
};

/// Every link of the register of systems (importers/RegistroSistemas.h),
/// released when its importer is built.
std::vector<Enlace> EnlacesConocidos();

/// Writes the shipped rows into an open catalogue (insert or refresh), so
/// that `Liberado` follows the importers this program has.
void ActualizaCatalogoEnlaces(BaseDatos& catalogo);

/// The link selector's list: released links (and only commercial ones when
/// `soloComerciales`), whose `Descripcion` contains `buscar` when it is not
/// empty, ordered by `Descripcion`. In `buscar`, "*" and "?" are wildcards;
/// every other character, a quote or "%" included, stands for itself.
std::vector<Enlace> ListaEnlaces(BaseDatos& catalogo, bool soloComerciales, const std::string& buscar);

/// All rows of the catalogue, released or not, in `IdSistema` order; with
/// `buscar`, those whose `Descripcion` contains it (as ListaEnlaces).
std::vector<Enlace> TodosLosEnlaces(BaseDatos& catalogo, const std::string& buscar = "");

}  // namespace velmorant
