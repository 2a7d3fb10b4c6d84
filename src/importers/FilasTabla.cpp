#include "importers/FilasTabla.h"

#include <stdexcept>

#include "importers/Limpieza.h"
#include "platform/ErrorLectura.h"
#include "platform/Texto.h"

namespace velmorant {

FilasTabla::FilasTabla(Sentencia& consulta, std::string ruta, std::string tabla, Almacenes almacenes)
    : consulta_(consulta), ruta_(std::move(ruta)), tabla_(std::move(tabla)), almacenes_(std::move(almacenes)) {
    for (int i = 0; i < consulta_.columnas(); ++i) nombres_.push_back(Mayusculas(consulta_.nombreColumna(i)));
}

bool FilasTabla::siguiente() {
    if (!consulta_.paso()) return false;
    ++leidas_;
    valores_.clear();
    for (int i = 0; i < static_cast<int>(nombres_.size()); ++i) valores_.push_back(consulta_.columna(i));
    return true;
}

size_t FilasTabla::indice(const std::string& campo) const {
    const std::string buscado = Mayusculas(campo);
    for (size_t i = 0; i < nombres_.size(); ++i)
        if (nombres_[i] == buscado) return i;
    throw std::out_of_range("La tabla " + tabla_ + " del archivo " + ruta_ + " no tiene el campo " + campo + ".");
}

bool FilasTabla::es(const std::string& campo, AlmacenColumna almacen) const {
    auto it = almacenes_.find(Mayusculas(campo));
    return it != almacenes_.end() && it->second == almacen;
}

const Valor& FilasTabla::valor(const std::string& campo) const { return valores_.at(indice(campo)); }

std::string FilasTabla::texto(const std::string& campo) const { return RecortaEspacios(valor(campo).texto()); }

Moneda FilasTabla::importe(const std::string& campo) const {
    const Valor& v = valor(campo);
    if (v.esNulo()) return Moneda();
    if (v.esEntero() && es(campo, AlmacenColumna::Entero)) {
        try {
            return Moneda::desdeEntero(v.entero());
        } catch (const std::overflow_error&) {
            falla("el número " + v.texto() + " del campo " + campo + " no cabe en un importe");
        }
    }
    if (v.esTexto()) {
        auto m = Moneda::desdeTexto(RecortaEspacios(v.texto()));
        if (!m) falla("el campo " + campo + " tiene \"" + v.texto() + "\", que no es un importe");
        return *m;
    }
    return v.moneda();
}

long long FilasTabla::entero(const std::string& campo) const {
    const Valor& v = valor(campo);
    if (v.esEntero() && es(campo, AlmacenColumna::Diezmilesimas)) return v.entero() / Moneda::kEscala;
    if (v.esEntero()) return v.entero();
    return ValEntero(texto(campo));
}

std::optional<Fecha> FilasTabla::fecha(const std::string& campo) const {
    const Valor& v = valor(campo);
    if (v.esNulo()) return std::nullopt;
    auto f = v.fecha();
    if (!f) {
        // A date with its time of day keeps the date.
        std::string t = v.texto();
        if (t.size() > 10 && t[10] == ' ') f = Valor(t.substr(0, 10)).fecha();
    }
    if (!f) falla("el campo " + campo + " tiene \"" + v.texto() + "\", que no es una fecha");
    return f;
}

long FilasTabla::numero() const {
    for (size_t i = 0; i < nombres_.size(); ++i)
        if (nombres_[i] == "ROWID" && valores_.at(i).esEntero()) return static_cast<long>(valores_[i].entero());
    return leidas_;
}

std::string FilasTabla::lugar() const {
    return "tabla " + tabla_ + " del archivo " + ruta_ + ", fila " + std::to_string(numero());
}

void FilasTabla::falla(const std::string& causa) const {
    throw ErrorLectura("Error al leer la " + lugar() + ": " + causa + ".", ruta_, numero());
}

}  // namespace velmorant
