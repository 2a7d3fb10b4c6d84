#include "importers/reportes/DescripcionReporte.h"

#include <toml++/toml.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace velmorant {

ErrorDescripcion::ErrorDescripcion(const std::string& archivo, long linea, const std::string& causa)
    : std::runtime_error("La descripción de reporte " + archivo + ", línea " + std::to_string(linea) + ": " + causa),
      archivo_(archivo),
      linea_(linea) {}

const char* NombreClase(ClaseLinea c) {
    switch (c) {
        case ClaseLinea::Encabezado: return "encabezado";
        case ClaseLinea::Concepto: return "concepto";
        case ClaseLinea::Partida: return "partida";
        case ClaseLinea::Totales: return "totales";
        case ClaseLinea::Regla: return "regla";
        case ClaseLinea::Continuacion: return "continuacion";
        case ClaseLinea::Titulos: return "titulos";
        case ClaseLinea::Pie: return "pie";
        case ClaseLinea::Vacia: return "vacia";
        case ClaseLinea::SinClase: return "sin clase";
    }
    return "";
}

namespace {

// Reads a parsed description, checking each value where it stands.
class Lector {
public:
    explicit Lector(std::string ruta) : ruta_(std::move(ruta)) {}

    [[noreturn]] void falla(const toml::node& n, const std::string& causa) const {
        throw ErrorDescripcion(ruta_, static_cast<long>(n.source().begin.line), causa);
    }

    // Every key of `t` must be one of `claves`.
    void soloClaves(const toml::table& t, std::initializer_list<const char*> claves, const std::string& donde) const {
        for (auto&& [k, v] : t) {
            bool conocida = false;
            for (const char* c : claves) conocida = conocida || k.str() == c;
            if (!conocida) falla(v, "la clave " + std::string(k.str()) + " no se conoce en " + donde);
        }
    }

    const toml::node* nodo(const toml::table& t, const char* clave) const { return t.get(clave); }

    int entero(const toml::node& n, const char* clave, int minimo) const {
        auto v = n.value<int64_t>();
        if (!n.is_integer() || !v) falla(n, std::string(clave) + " debe ser un número entero");
        if (*v < minimo || *v > 100000)
            falla(n, std::string(clave) + " debe ser un número entero de " + std::to_string(minimo) + " en adelante");
        return static_cast<int>(*v);
    }
    std::string texto(const toml::node& n, const char* clave) const {
        if (!n.is_string()) falla(n, std::string(clave) + " debe ser un texto entre comillas");
        std::string t = *n.value<std::string>();
        return t;
    }
    bool logico(const toml::node& n, const char* clave) const {
        if (!n.is_boolean()) falla(n, std::string(clave) + " debe ser true o false");
        return *n.value<bool>();
    }
    std::vector<std::string> textos(const toml::node& n, const char* clave) const {
        std::vector<std::string> r;
        if (n.is_string()) {
            r.push_back(*n.value<std::string>());
        } else if (auto* a = n.as_array()) {
            for (auto& e : *a) r.push_back(texto(e, clave));
        } else {
            falla(n, std::string(clave) + " debe ser un texto o una lista de textos");
        }
        if (r.empty()) falla(n, std::string(clave) + " no puede ser una lista vacía");
        for (auto& t : r)
            if (t.empty()) falla(n, std::string(clave) + " no puede tener un texto vacío");
        return r;
    }
    const toml::table& tabla(const toml::node& n, const char* clave) const {
        if (!n.is_table()) falla(n, std::string(clave) + " debe ser una tabla { ... }");
        return *n.as_table();
    }

    CampoReporte campo(const toml::node& n, const char* clave) {
        const toml::table& t = tabla(n, clave);
        soloClaves(t, {"en", "largo", "tras", "hasta", "columna", "desplaza", "alineado", "decimal"},
                   std::string("el campo ") + clave);
        CampoReporte c;
        c.linea = static_cast<long>(n.source().begin.line);
        int formas = 0;
        if (auto* en = t.get("en")) c.forma = CampoReporte::Forma::Posicion, c.en = entero(*en, "en", 1), ++formas;
        if (auto* tras = t.get("tras")) {
            c.forma = CampoReporte::Forma::Marcador, ++formas;
            c.tras = texto(*tras, "tras");
            if (c.tras.empty()) falla(*tras, "tras no puede ser un texto vacío");
        }
        if (auto* d = t.get("decimal")) {
            auto* a = d->as_array();
            if (!a || a->size() != 2) falla(*d, "decimal debe ser [desde, hasta], las posiciones entre las que está el punto");
            c.forma = CampoReporte::Forma::Decimal, ++formas;
            bool relativo = t.contains("columna");
            c.desde = relativo ? enteroLibre((*a)[0], "decimal") : entero((*a)[0], "decimal", 1);
            c.hastaPos = relativo ? enteroLibre((*a)[1], "decimal") : entero((*a)[1], "decimal", 1);
            if (c.hastaPos < c.desde) falla(*d, "decimal: la posición final es menor que la inicial");
        }
        if (auto* col = t.get("columna")) {
            c.columna = texto(*col, "columna");
            columnasUsadas_.push_back({c.columna, c.linea});
            if (c.forma == CampoReporte::Forma::Ninguna) c.forma = CampoReporte::Forma::Columna, ++formas;
            else if (c.forma != CampoReporte::Forma::Decimal) ++formas;
        }
        if (formas != 1)
            falla(n, std::string("el campo ") + clave +
                         " necesita una sola forma: en = posición, tras = \"texto\", columna = \"nombre\" o decimal = [desde, hasta]");
        if (auto* h = t.get("hasta")) {
            if (c.forma != CampoReporte::Forma::Marcador) falla(*h, "hasta sólo acompaña a tras");
            c.hasta = texto(*h, "hasta");
        }
        if (auto* l = t.get("largo")) {
            if (c.forma == CampoReporte::Forma::Decimal) falla(*l, "largo no acompaña a decimal");
            if (l->is_string()) {
                if (texto(*l, "largo") != "formato") falla(*l, "largo debe ser un número o \"formato\"");
                c.largo = CampoReporte::kLargoFormato;
            } else {
                c.largo = entero(*l, "largo", 1);
            }
        }
        if (auto* d = t.get("desplaza")) {
            if (c.forma != CampoReporte::Forma::Columna) falla(*d, "desplaza sólo acompaña a columna");
            c.desplaza = enteroLibre(*d, "desplaza");
        }
        if (auto* a = t.get("alineado")) {
            if (c.forma != CampoReporte::Forma::Columna) falla(*a, "alineado sólo acompaña a columna");
            c.alineado = logico(*a, "alineado");
        }
        return c;
    }

    int enteroLibre(const toml::node& n, const char* clave) const {
        auto v = n.value<int64_t>();
        if (!n.is_integer() || !v || *v < -1000 || *v > 100000) falla(n, std::string(clave) + " debe ser un número entero");
        return static_cast<int>(*v);
    }

    Condicion condicion(const toml::node& n) {
        const toml::table& t = tabla(n, "cada condición de cuando");
        soloClaves(t, {"en", "largo", "texto", "contiene", "empieza", "numerico", "caracter", "decimal",
                       "poliza_abierta", "aprendidas", "sin_aprender", "no", "alguna", "todas", "columna"},
                   "una condición");
        Condicion c;
        // Positions relative to a learnt column may stand before it.
        auto* columna = t.get("columna");
        const int minimo = columna ? -1000 : 1;
        if (columna) {
            if (!t.contains("texto") && !t.contains("numerico") && !t.contains("caracter"))
                falla(*columna, "columna sólo acompaña a texto, numerico o caracter en una condición");
            c.columna = texto(*columna, "columna");
            columnasUsadas_.push_back({c.columna, static_cast<long>(columna->source().begin.line)});
        }
        int tipos = 0;
        auto tipo = [&](Condicion::Tipo t) { c.tipo = t, ++tipos; };
        if (auto* x = t.get("texto")) {
            auto* en = t.get("en");
            if (!en) falla(*x, "texto necesita en = posición");
            c.en = entero(*en, "en", minimo);
            c.textos = {texto(*x, "texto")};
            if (c.textos[0].empty()) falla(*x, "texto no puede ser vacío");
            if (auto* l = t.get("largo")) {
                c.largo = entero(*l, "largo", 1);
                tipo(Condicion::Tipo::TextoRecortado);
            } else {
                tipo(Condicion::Tipo::Texto);
            }
        } else if (t.contains("en") || t.contains("largo")) {
            falla(n, "en y largo sólo acompañan a texto en una condición");
        }
        if (auto* x = t.get("contiene")) c.textos = textos(*x, "contiene"), tipo(Condicion::Tipo::Contiene);
        if (auto* x = t.get("empieza")) c.textos = textos(*x, "empieza"), tipo(Condicion::Tipo::Empieza);
        if (auto* x = t.get("numerico")) {
            auto* a = x->as_array();
            if (!a || a->size() != 2) falla(*x, "numerico debe ser [posición, largo]");
            c.en = entero((*a)[0], "numerico", minimo), c.largo = entero((*a)[1], "numerico", 1);
            tipo(Condicion::Tipo::Numerico);
        }
        if (auto* x = t.get("caracter")) {
            auto* a = x->as_array();
            if (!a || a->size() != 2) falla(*x, "caracter debe ser [posición, \"caracteres\"]");
            c.en = entero((*a)[0], "caracter", minimo), c.textos = {texto((*a)[1], "caracter")};
            if (c.textos[0].empty()) falla(*x, "caracter necesita al menos un carácter");
            tipo(Condicion::Tipo::Caracter);
        }
        if (auto* x = t.get("decimal")) {
            if (x->is_boolean()) {
                if (!logico(*x, "decimal")) falla(*x, "decimal = false no dice nada; use no = { decimal = true }");
            } else if (auto* a = x->as_array(); a && a->size() == 2) {
                c.desde = entero((*a)[0], "decimal", 1), c.hasta = entero((*a)[1], "decimal", 1);
                if (c.hasta < c.desde) falla(*x, "decimal: la posición final es menor que la inicial");
            } else {
                falla(*x, "decimal debe ser true o [desde, hasta]");
            }
            tipo(Condicion::Tipo::Decimal);
        }
        if (auto* x = t.get("poliza_abierta")) c.valor = logico(*x, "poliza_abierta"), tipo(Condicion::Tipo::PolizaAbierta);
        for (auto [clave, t2] : {std::pair{"aprendidas", Condicion::Tipo::Aprendidas},
                                 std::pair{"sin_aprender", Condicion::Tipo::SinAprender}})
            if (auto* x = t.get(clave)) {
                c.textos = textos(*x, clave);
                for (auto& col : c.textos) columnasUsadas_.push_back({col, static_cast<long>(x->source().begin.line)});
                tipo(t2);
            }
        if (auto* x = t.get("no")) c.hijas = {condicion(*x)}, tipo(Condicion::Tipo::No);
        for (auto [clave, t2] : {std::pair{"alguna", Condicion::Tipo::Alguna}, std::pair{"todas", Condicion::Tipo::Todas}})
            if (auto* x = t.get(clave)) {
                auto* a = x->as_array();
                if (!a || a->empty()) falla(*x, std::string(clave) + " debe ser una lista de condiciones");
                for (auto& e : *a) c.hijas.push_back(condicion(e));
                tipo(t2);
            }
        if (tipos != 1) falla(n, "cada condición dice una sola cosa (texto, contiene, empieza, numerico, ...)");
        return c;
    }

    ReglaLinea regla(const toml::node& n) {
        const toml::table& t = tabla(n, "linea");
        ReglaLinea r;
        r.linea = static_cast<long>(n.source().begin.line);
        auto* clase = t.get("clase");
        if (!clase) falla(n, "cada [[linea]] necesita su clase");
        static const std::map<std::string, ClaseLinea> clases = {
            {"encabezado", ClaseLinea::Encabezado}, {"partida", ClaseLinea::Partida},
            {"totales", ClaseLinea::Totales},       {"regla", ClaseLinea::Regla},
            {"continuacion", ClaseLinea::Continuacion}, {"titulos", ClaseLinea::Titulos},
            {"pie", ClaseLinea::Pie}};
        std::string nombre = texto(*clase, "clase");
        auto it = clases.find(nombre);
        if (it == clases.end())
            falla(*clase, "la clase " + nombre +
                              " no existe; las clases son encabezado, partida, totales, regla, continuacion, titulos y pie");
        r.clase = it->second;
        switch (r.clase) {
            case ClaseLinea::Encabezado:
                soloClaves(t, {"clase", "cuando", "numero", "tipo", "fecha", "concepto", "concepto_siguiente"},
                           "un encabezado");
                break;
            case ClaseLinea::Partida:
                soloClaves(t, {"clase", "cuando", "cuenta", "referencia", "debe", "haber"}, "una partida");
                break;
            case ClaseLinea::Totales:
                soloClaves(t, {"clase", "cuando", "cierra"}, "unos totales");
                break;
            case ClaseLinea::Titulos:
                soloClaves(t, {"clase", "cuando", "aprende", "todas"}, "unos títulos");
                break;
            default:
                soloClaves(t, {"clase", "cuando"}, "la clase " + nombre);
        }
        if (auto* c = t.get("cuando")) {
            auto* a = c->as_array();
            if (!a) falla(*c, "cuando debe ser una lista de condiciones [ {...}, {...} ]");
            for (auto& e : *a) r.cuando.push_back(condicion(e));
        }
        auto campo = [&](const char* clave, CampoReporte& destino) {
            if (auto* x = t.get(clave)) destino = this->campo(*x, clave);
        };
        campo("numero", r.numero);
        campo("tipo", r.tipo);
        campo("fecha", r.fecha);
        campo("concepto", r.concepto);
        campo("concepto_siguiente", r.conceptoSiguiente);
        campo("cuenta", r.cuenta);
        campo("referencia", r.referencia);
        campo("debe", r.debe);
        campo("haber", r.haber);
        if (auto* x = t.get("cierra")) r.cierra = logico(*x, "cierra");
        if (auto* x = t.get("todas")) r.todas = logico(*x, "todas");
        if (auto* x = t.get("aprende")) {
            const toml::table& a = tabla(*x, "aprende");
            for (auto&& [k, v] : a) {
                r.aprende.push_back({std::string(k.str()), textos(v, "cada columna de aprende")});
                aprendidas_.insert(std::string(k.str()));
            }
            if (r.aprende.empty()) falla(*x, "aprende no nombra ninguna columna");
        }
        if (r.clase == ClaseLinea::Encabezado) {
            if (!r.numero.definido()) falla(n, "un encabezado necesita el campo numero");
            if (!r.fecha.definido()) falla(n, "un encabezado necesita el campo fecha");
            if (r.concepto.definido() && r.conceptoSiguiente.definido())
                falla(n, "un encabezado lleva concepto o concepto_siguiente, no los dos");
        }
        if (r.clase == ClaseLinea::Partida) {
            if (!r.cuenta.definido()) falla(n, "una partida necesita el campo cuenta");
            if (!r.debe.definido() || !r.haber.definido()) falla(n, "una partida necesita los campos debe y haber");
        }
        if (r.clase == ClaseLinea::Titulos && r.aprende.empty())
            falla(n, "unos títulos necesitan aprende = { columna = \"texto\" }");
        return r;
    }

    DescripcionReporte lee(const toml::table& raiz) {
        DescripcionReporte d;
        d.ruta = ruta_;
        soloClaves(raiz, {"enlace", "nombre", "formulario", "filtro", "polizas", "catalogo", "linea"},
                   "la descripción");
        if (auto* x = raiz.get("catalogo")) {
            const toml::table& c = tabla(*x, "catalogo");
            soloClaves(c, {"exige_delimitador"}, "[catalogo]");
            if (auto* a = c.get("exige_delimitador")) d.catalogoDelimitado = logico(*a, "exige_delimitador");
        }
        auto* enlace = raiz.get("enlace");
        if (!enlace) throw ErrorDescripcion(ruta_, 1, "falta enlace = número del enlace");
        d.enlace = entero(*enlace, "enlace", 1);
        if (auto* x = raiz.get("nombre")) d.nombre = texto(*x, "nombre");
        if (auto* x = raiz.get("formulario")) d.formulario = texto(*x, "formulario");
        if (auto* x = raiz.get("filtro")) {
            d.filtro = texto(*x, "filtro");
            if (d.filtro.find('|') == std::string::npos) falla(*x, "filtro debe ser \"descripción|patrón\"");
        }
        if (auto* x = raiz.get("polizas")) {
            const toml::table& p = tabla(*x, "polizas");
            soloClaves(p, {"agrupa", "cuenta_inexistente", "dudosas", "recorta_nivel", "mes13"}, "[polizas]");
            if (auto* a = p.get("agrupa")) {
                std::string v = texto(*a, "agrupa");
                if (v == "ultima-clave") d.agrupa = DescripcionReporte::Agrupa::UltimaClave;
                else if (v == "busca") d.agrupa = DescripcionReporte::Agrupa::Busca;
                else falla(*a, "agrupa debe ser \"ultima-clave\" o \"busca\"");
            }
            if (auto* a = p.get("cuenta_inexistente")) {
                std::string v = texto(*a, "cuenta_inexistente");
                if (v == "catalogo") d.cuentaNoExisteEnCatalogo = true;
                else if (v != "movimiento") falla(*a, "cuenta_inexistente debe ser \"movimiento\" o \"catalogo\"");
            }
            if (auto* a = p.get("dudosas")) d.registraDudosas = logico(*a, "dudosas");
            if (auto* a = p.get("recorta_nivel")) d.recortaNivel = logico(*a, "recorta_nivel");
            if (auto* a = p.get("mes13")) d.mes13 = logico(*a, "mes13");
        }
        auto* lineas = raiz.get("linea");
        if (!lineas) throw ErrorDescripcion(ruta_, 1, "no describe ninguna clase de línea ([[linea]])");
        auto* a = lineas->as_array();
        if (!a) falla(*lineas, "linea debe escribirse [[linea]], una tabla por clase");
        for (auto& e : *a) d.lineas.push_back(regla(e));
        bool encabezado = false, partida = false;
        for (auto& r : d.lineas) {
            encabezado = encabezado || r.clase == ClaseLinea::Encabezado;
            partida = partida || r.clase == ClaseLinea::Partida;
        }
        if (!encabezado) falla(*lineas, "falta una clase encabezado");
        if (!partida) falla(*lineas, "falta una clase partida");
        for (auto& [columna, linea] : columnasUsadas_)
            if (!aprendidas_.count(columna))
                throw ErrorDescripcion(ruta_, linea, "la columna " + columna + " no la aprende ningún título");
        return d;
    }

private:
    std::string ruta_;
    std::vector<std::pair<std::string, long>> columnasUsadas_;
    std::set<std::string> aprendidas_;
};

}  // namespace

DescripcionReporte CargaDescripcionDeTexto(const std::string& texto, const std::string& ruta) {
    toml::table raiz;
    try {
        raiz = toml::parse(texto, ruta);
    } catch (const toml::parse_error& e) {
        throw ErrorDescripcion(ruta, static_cast<long>(e.source().begin.line), std::string(e.description()));
    }
    return Lector(ruta).lee(raiz);
}

DescripcionReporte CargaDescripcion(const std::string& ruta) {
    std::ifstream f(ruta, std::ios::binary);
    if (!f) throw ErrorDescripcion(ruta, 0, "no se pudo abrir el archivo");
    std::stringstream contenido;
    contenido << f.rdbuf();
    return CargaDescripcionDeTexto(contenido.str(), ruta);
}

}  // namespace velmorant
