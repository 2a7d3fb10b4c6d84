#include "session/Enlaces.h"

#include "importers/RegistroSistemas.h"

namespace velmorant {

namespace {

Enlace LeeEnlace(const Consulta& c) {
    return {static_cast<int>(c["IdSistema"].entero()), c["Descripcion"].texto(), c["Liberado"].booleano(),
            c["Comercial"].booleano()};
}

std::vector<Enlace> Lee(Consulta c) {
    std::vector<Enlace> r;
    for (c.primero(); !c.eof(); c.siguiente()) r.push_back(LeeEnlace(c));
    return r;
}

// A LIKE pattern for "contains `texto`", with the legacy wildcards "*" and
// "?" kept as wildcards and every other character taken literally.
std::string PatronContiene(const std::string& texto) {
    std::string p = "%";
    for (char c : texto) {
        if (c == '*') p += '%';
        else if (c == '?') p += '_';
        else if (c == '%' || c == '_' || c == '\\') p += std::string("\\") + c;
        else p += c;
    }
    return p + "%";
}

}  // namespace

std::vector<Enlace> EnlacesConocidos() {
    std::vector<Enlace> r;
    for (const auto& sistema : RegistroSistemas()) {
        bool propio = sistema.titulo.empty();
        r.push_back({sistema.IdSistema,
                     propio ? "Sistema propio de despacho " + std::to_string(sistema.IdSistema) : sistema.titulo,
                     ImportadorConstruido(sistema.IdSistema), !propio});
    }
    return r;
}

void ActualizaCatalogoEnlaces(BaseDatos& catalogo) {
    Transaccion t(catalogo);
    for (auto& e : EnlacesConocidos())
        catalogo.ejecuta(
            "INSERT INTO Enlaces (IdSistema, Descripcion, Liberado, Comercial) VALUES (?, ?, ?, ?) "
            "ON CONFLICT(IdSistema) DO UPDATE SET Descripcion=excluded.Descripcion, Liberado=excluded.Liberado, "
            "Comercial=excluded.Comercial",
            e.IdSistema, e.Descripcion, e.Liberado, e.Comercial);
    t.confirma();
}

std::vector<Enlace> ListaEnlaces(BaseDatos& catalogo, bool soloComerciales, const std::string& buscar) {
    std::string sql = "SELECT * FROM Enlaces WHERE Liberado";
    if (soloComerciales) sql += " and Comercial";
    if (buscar.empty()) return Lee(catalogo.consulta(sql + " ORDER BY Descripcion"));
    sql += " and Descripcion LIKE ? ESCAPE '\\' ORDER BY Descripcion";
    return Lee(catalogo.consulta(sql, PatronContiene(buscar)));
}

std::vector<Enlace> TodosLosEnlaces(BaseDatos& catalogo, const std::string& buscar) {
    if (buscar.empty()) return Lee(catalogo.consulta("SELECT * FROM Enlaces ORDER BY IdSistema"));
    return Lee(catalogo.consulta("SELECT * FROM Enlaces WHERE Descripcion LIKE ? ESCAPE '\\' ORDER BY IdSistema",
                                 PatronContiene(buscar)));
}

}  // namespace velmorant
