#include "platform/fuentes/CargaTablas.h"

#include <cctype>
#include <charconv>
#include <cstdio>
#include <set>

#include "platform/ErrorLectura.h"
#include "platform/fuentes/FuenteDbf.h"

namespace velmorant {

namespace {

const char* TipoDeclarado(AlmacenColumna a) {
    switch (a) {
        case AlmacenColumna::Entero:
        case AlmacenColumna::Diezmilesimas:
        case AlmacenColumna::Logico: return "INTEGER";
        case AlmacenColumna::Real: return "REAL";
        case AlmacenColumna::Binario: return "BLOB";
        case AlmacenColumna::Texto:
        case AlmacenColumna::Decimal:
        case AlmacenColumna::FechaHora: break;
    }
    return "TEXT";
}

// Creates the table (replacing one of that name) and gives its insert.
std::string CreaTabla(BaseDatos& memoria, const std::string& nombreTabla, const std::vector<ColumnaCarga>& columnas) {
    std::string tabla = IdentificadorSql(nombreTabla);
    std::string definicion, marcas;
    for (const auto& c : columnas) {
        if (!definicion.empty()) definicion += ", ", marcas += ", ";
        definicion += IdentificadorSql(c.nombre) + " " + TipoDeclarado(c.almacen);
        marcas += "?";
    }
    memoria.ejecutaScript("DROP TABLE IF EXISTS " + tabla + "; CREATE TABLE " + tabla + " (" + definicion + ");");
    return "INSERT INTO " + tabla + " VALUES (" + marcas + ")";
}

}  // namespace

AlmacenColumna AlmacenNumero(int decimales) {
    if (decimales <= 0) return AlmacenColumna::Entero;
    if (decimales <= 4) return AlmacenColumna::Diezmilesimas;
    return AlmacenColumna::Decimal;
}

std::string TextoFechaHora(const Fecha& fecha, int segundos) {
    std::string t = fecha.iso();
    if (segundos <= 0 || segundos >= 86400) return t;
    char hora[32];
    std::snprintf(hora, sizeof hora, " %02d:%02d:%02d", segundos / 3600, segundos / 60 % 60, segundos % 60);
    return t + hora;
}

std::optional<Valor> ValorEnColumna(const Celda& celda, AlmacenColumna almacen) {
    if (celda.esNula() || almacen == AlmacenColumna::Binario) return Valor();
    switch (celda.tipo()) {
        case Celda::Tipo::Nula: return Valor();
        case Celda::Tipo::Logico: return Valor(celda.comoLogico());
        case Celda::Tipo::Fecha: return Valor(TextoFechaHora(*celda.comoFecha(), celda.segundos()));
        case Celda::Tipo::Texto: return Valor(celda.comoTexto());
        case Celda::Tipo::Numero: break;
    }
    std::string texto = celda.comoTexto();
    switch (almacen) {
        case AlmacenColumna::Entero: {
            if (texto.find_first_of(".eE") != std::string::npos) return Valor(texto);
            long long v = 0;
            auto r = std::from_chars(texto.data(), texto.data() + texto.size(), v);
            if (r.ec == std::errc::result_out_of_range) return std::nullopt;
            if (r.ec != std::errc() || r.ptr != texto.data() + texto.size()) return Valor(texto);
            return Valor(v);
        }
        case AlmacenColumna::Diezmilesimas: {
            auto m = Moneda::desdeTexto(texto);
            if (!m) return std::nullopt;
            return Valor(*m);
        }
        case AlmacenColumna::Real: {
            double v = 0;
            auto r = std::from_chars(texto.data(), texto.data() + texto.size(), v);
            if (r.ec != std::errc() || r.ptr != texto.data() + texto.size()) return Valor(texto);
            return Valor(v);
        }
        default: return Valor(texto);
    }
}

std::string IdentificadorSql(const std::string& nombre) {
    std::string r = "\"";
    for (char c : nombre) {
        if (c == '"') r += '"';
        r += c;
    }
    return r + "\"";
}

TablaEnMemoria::TablaEnMemoria(BaseDatos& memoria, const std::string& nombreTabla,
                               const std::vector<ColumnaCarga>& columnas)
    : insercion_(memoria.prepara(CreaTabla(memoria, nombreTabla, columnas))) {}

void TablaEnMemoria::agrega(const std::vector<Valor>& valores) {
    insercion_.reinicia();
    for (size_t i = 0; i < valores.size(); ++i) insercion_.liga(static_cast<int>(i) + 1, valores[i]);
    insercion_.ejecuta();
}

AlmacenColumna AlmacenCampoDbf(char tipo, int decimales) {
    switch (tipo) {
        case 'C':
        case 'V':
        case 'M': return AlmacenColumna::Texto;
        case 'N':
        case 'F': return AlmacenNumero(decimales);
        case 'I': return AlmacenColumna::Entero;
        case 'Y': return AlmacenColumna::Diezmilesimas;
        case 'B': return AlmacenColumna::Real;
        case 'D':
        case 'T': return AlmacenColumna::FechaHora;
        case 'L': return AlmacenColumna::Logico;
        default: return AlmacenColumna::Binario;
    }
}

long CargaTablaDbf(BaseDatos& memoria, const std::string& ruta, const std::string& nombreTabla) {
    FuenteDbf fuente(ruta);
    std::vector<ColumnaCarga> columnas;
    std::set<std::string> nombres;  // as SQL compares them: without case
    for (const auto& c : fuente.campos()) {
        std::string clave = c.nombre;
        for (char& ch : clave) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
        if (!nombres.insert(clave).second)
            throw ErrorLectura("El archivo " + ruta + " está dañado: el campo " + c.nombre +
                                   " está repetido en el encabezado.",
                               ruta, 0);
        // A dBase IV binary memo shares its letter with the Visual FoxPro double.
        bool binario = c.tipo == 'B' && c.largo != 8;
        columnas.push_back({c.nombre, binario ? AlmacenColumna::Binario : AlmacenCampoDbf(c.tipo, c.decimales)});
    }
    Transaccion transaccion(memoria);
    TablaEnMemoria tabla(memoria, nombreTabla, columnas);
    Fila fila;
    std::vector<Valor> valores(columnas.size());
    long cargadas = 0;
    while (fuente.siguiente(fila)) {
        for (size_t i = 0; i < columnas.size(); ++i) {
            auto v = ValorEnColumna(fila.celdas[i], columnas[i].almacen);
            if (!v)
                throw ErrorLectura("El número " + fila.celdas[i].comoTexto() + " del campo " + columnas[i].nombre +
                                       " no cabe en un importe (" + fuente.lugar(fila) + ").",
                                   ruta, fila.numero);
            valores[i] = std::move(*v);
        }
        tabla.agrega(valores);
        ++cargadas;
    }
    transaccion.confirma();
    return cargadas;
}

}  // namespace velmorant
