#include "review/CedulaAnaliticaComun.h"

#include <cstdio>
#include <stdexcept>

#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant::cedula {

namespace {

// The date of a key: ISO text, and the first day of 1900 for a blank one,
// as the SQL date of a blank value always was.
std::string FechaClave(const Valor& v) {
    if (auto f = v.fecha()) return f->iso();
    if (v.esNulo() || Recorta(v.texto()).empty()) return Fecha(1900, 1, 1).iso();
    return v.texto();
}

}  // namespace

ClaveMovimiento ClaveDe(const Consulta& c) {
    return {SiNuloTexto(c["Poliza"]),    SiNuloTexto(c["Tipo"]),    FechaClave(c["Fecha"]),
            SiNuloTexto(c["Cuenta"]),    SiNuloTexto(c["Referencia"]), SiNuloTexto(c["TipoMov"]),
            SiNuloCero(c["Importe"]).moneda()};
}

namespace {

std::string SinMayusculas(std::string t) {
    for (char& c : t)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return t;
}

std::string TextoIndice(const ClaveMovimiento& k) {
    const char sep = '\x1f';
    return SinMayusculas(k.poliza) + sep + SinMayusculas(k.tipo) + sep + k.fecha + sep + SinMayusculas(k.cuenta) +
           sep + SinMayusculas(k.referencia) + sep + SinMayusculas(k.tipoMov) + sep +
           std::to_string(k.importe.diezmilesimas());
}

}  // namespace

IndiceMovimientos::IndiceMovimientos(const Consulta& c) {
    Consulta r = c;
    const char* campos[] = {"Poliza", "Tipo", "Fecha", "Cuenta", "Referencia", "TipoMov", "Importe"};
    for (r.primero(); !r.eof(); r.siguiente()) {
        bool nulo = false;
        for (const char* campo : campos) nulo = nulo || r[campo].esNulo();
        if (nulo) continue;  // "= NULL" is never true
        ClaveMovimiento k{r["Poliza"].texto(),     r["Tipo"].texto(),    r["Fecha"].texto(),
                          r["Cuenta"].texto(),     r["Referencia"].texto(), r["TipoMov"].texto(),
                          r["Importe"].moneda()};
        filas_[TextoIndice(k)].push_back(r.posicion());
    }
}

const std::vector<size_t>& IndiceMovimientos::busca(const ClaveMovimiento& k) const {
    static const std::vector<size_t> ninguna;
    auto it = filas_.find(TextoIndice(k));
    return it == filas_.end() ? ninguna : it->second;
}

std::vector<Valor> ParametrosClave(const ClaveMovimiento& k, std::initializer_list<Valor> extra) {
    std::vector<Valor> p{k.poliza, k.tipo, k.fecha, k.cuenta, k.referencia, k.tipoMov, k.importe};
    p.insert(p.end(), extra.begin(), extra.end());
    return p;
}

namespace {

Sentencia& Liga(BaseDatos& db, const std::string& sql, const std::vector<Valor>& parametros) {
    Sentencia& st = db.preparada(sql);
    st.reinicia();
    for (size_t i = 0; i < parametros.size(); ++i) st.liga(static_cast<int>(i + 1), parametros[i]);
    return st;
}

}  // namespace

Consulta ConsultaCon(BaseDatos& db, const std::string& sql, const std::vector<Valor>& parametros) {
    return Consulta(Liga(db, sql, parametros));
}

std::string Recorta(const std::string& t) {
    size_t i = t.find_first_not_of(' ');
    if (i == std::string::npos) return {};
    return t.substr(i, t.find_last_not_of(' ') - i + 1);
}

std::string TextoNumero(double v) {
    char b[64];
    std::snprintf(b, sizeof b, "%.6f", v);
    std::string t = b;
    t.erase(t.find_last_not_of('0') + 1);
    if (t.back() == '.') t.pop_back();
    return t == "-0" ? "0" : t;
}

bool Adjunto(Sesion& s, const std::string& alias) {
    return !s.DbEmpresa->escalar("SELECT name FROM pragma_database_list WHERE name = ? COLLATE NOCASE", alias).esNulo();
}

void RenuevaAlmacen(Sesion& s, const std::string& alias, void (*crea)(Sesion&),
                    std::initializer_list<const char*> tablas) {
    if (Adjunto(s, alias) && s.DbEmpresa->enTransaccion()) {
        for (const char* tabla : tablas)
            s.DbEmpresa->ejecuta("DELETE FROM \"" + alias + "\".\"" + std::string(tabla) + "\"");
        return;
    }
    crea(s);
    if (!AbreAlmacen(s, alias)) throw std::runtime_error("No fue posible abrir la Base temporal " + alias);
}

}  // namespace velmorant::cedula
