#include "importers/reportes/PruebaReporte.h"

#include <map>

#include "importers/reportes/LectorReporte.h"
#include "platform/fuentes/FuenteLineas.h"

namespace velmorant {

namespace {

// Keeps the vouchers in memory, numbered as the run's writer would.
class DestinoPrueba : public DestinoReporte {
public:
    explicit DestinoPrueba(PruebaReporte& p) : p_(p) {}
    long nuevaPoliza(const PolizaLeida& c) override {
        p_.polizas.push_back({c, {}});
        return static_cast<long>(p_.polizas.size());
    }
    long poliza(const PolizaLeida& c) override {
        std::string clave = c.Poliza + '\x1f' + c.Tipo + '\x1f' + c.Fecha.iso() + (c.Mes13 ? "\x1f" "13" : "");
        auto it = porClave_.find(clave);
        if (it != porClave_.end()) return it->second;
        return porClave_[clave] = nuevaPoliza(c);
    }
    void agregaPartida(long id, const PartidaLeida& l) override {
        p_.polizas[static_cast<size_t>(id - 1)].partidas.push_back(l);
    }
    void partidaDudosa(const PolizaLeida&, const std::string&, const std::string& texto) override {
        p_.dudosas.push_back(texto);
    }

private:
    PruebaReporte& p_;
    std::map<std::string, long> porClave_;
};

std::string Ajusta(const std::string& t, size_t ancho) {
    size_t n = 0;
    for (unsigned char c : t)
        if ((c & 0xC0) != 0x80) ++n;
    return n >= ancho ? t : t + std::string(ancho - n, ' ');
}

}  // namespace

PruebaReporte PruebaDescripcion(Sesion& s, const DescripcionReporte& d, const std::string& archivo, int mes) {
    PruebaReporte p;
    DestinoPrueba destino(p);
    LectorReporte lector(s, d, destino, mes);
    FuenteLineas fuente(archivo);
    Fila fila;
    while (fuente.siguiente(fila)) {
        PruebaReporte::Linea l{fila.numero, fila.texto, "", ""};
        // A form feed opens a page: shown as a mark, not as a control character.
        for (size_t i; (i = l.texto.find('\f')) != std::string::npos;) l.texto.replace(i, 1, "¶");
        try {
            LineaLeida r = lector.procesa(fila.texto);
            l.clase = NombreClase(r.clase);
            l.detalle = r.detalle;
            for (size_t i; (i = l.detalle.find('\f')) != std::string::npos;) l.detalle.erase(i, 1);
        } catch (const std::exception& e) {
            l.clase = "falla";
            l.detalle = e.what();
            p.fallo = fuente.lugar(fila) + ": " + e.what();
            p.lineas.push_back(std::move(l));
            break;
        }
        p.lineas.push_back(std::move(l));
    }
    return p;
}

std::string TextoPrueba(const PruebaReporte& p) {
    std::string t;
    for (const auto& l : p.lineas) {
        t += Ajusta(std::to_string(l.numero), 5) + " " + Ajusta(l.clase, 13) + "|" + l.texto + "\n";
        if (!l.detalle.empty()) t += std::string(20, ' ') + "→ " + l.detalle + "\n";
    }
    t += "\nPólizas: " + std::to_string(p.polizas.size()) + "\n";
    for (const auto& po : p.polizas) {
        Moneda debe, haber;
        for (const auto& l : po.partidas) (l.TipoMov == "D" ? debe : haber) += l.Importe;
        t += "  " + po.cabeza.Tipo + " " + po.cabeza.Poliza + " del " + po.cabeza.Fecha.ddmmaaaa() +
             (po.cabeza.Concepto.empty() ? "" : "  " + po.cabeza.Concepto) + "\n";
        int partida = 0;
        for (const auto& l : po.partidas)
            t += "    " + Ajusta(std::to_string(++partida), 4) + Ajusta(l.Cuenta, 18) + l.TipoMov + " " +
                 Ajusta(l.Importe.formatoMoneda(), 16) + l.Referencia + "\n";
        t += "    cargos " + debe.formatoMoneda() + ", abonos " + haber.formatoMoneda() + "\n";
    }
    for (const auto& d : p.dudosas) t += "Dudosa: " + d + "\n";
    if (!p.fallo.empty()) t += "Falla: " + p.fallo + "\n";
    return t;
}

}  // namespace velmorant
