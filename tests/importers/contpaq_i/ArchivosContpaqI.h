#pragma once
// The text files of ContPAQ i as the tests write them: each line built from
// pieces placed at their columns, so that a fixture reads like the layout.

#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace velmorant::prueba {

/// A line with each text at its column (from 1), blanks between.
inline std::string En(const std::vector<std::pair<int, std::string>>& piezas) {
    std::string l;
    for (const auto& [columna, texto] : piezas) {
        if (l.size() < static_cast<size_t>(columna - 1)) l.resize(static_cast<size_t>(columna - 1), ' ');
        l.replace(static_cast<size_t>(columna - 1), texto.size(), texto);
    }
    return l;
}

/// An account of CATALOGO.TXT.
inline std::string Cuenta(const std::string& codigo, const std::string& nombre, const std::string& padre,
                          const std::string& tipo) {
    return En({{1, "C"}, {4, codigo}, {35, nombre}, {137, padre}, {168, tipo}});
}

/// A voucher head of CPOLIZAS.TXT; `fecha` as yyyymmdd.
inline std::string Poliza(const std::string& fecha, const std::string& tipo, const std::string& numero,
                          const std::string& concepto, const std::string& uuid = "") {
    return En({{1, "P"}, {4, fecha}, {13, "1"}, {15, tipo}, {20, numero}, {35, concepto}, {146, uuid}});
}

/// A movement of the current layout: `tipo` "0" a debit, "1" a credit.
inline std::string Movimiento(const std::string& cuenta, const std::string& referencia, const std::string& tipo,
                              const std::string& importe, const std::string& concepto, const std::string& uuid = "") {
    return En({{1, "M1"}, {3, cuenta}, {35, referencia}, {56, tipo + " " + importe}, {100, concepto}, {190, uuid}});
}

/// A movement of the earlier layout.
inline std::string MovimientoAnterior(const std::string& cuenta, const std::string& referencia, const std::string& tipo,
                                      const std::string& importe, const std::string& concepto) {
    std::string derecha = std::string(importe.size() < 20 ? 20 - importe.size() : 0, ' ') + importe;
    return En({{1, "M"}, {4, cuenta}, {35, referencia}, {46, tipo}, {48, derecha}, {69, concepto}});
}

/// The trial balance printed to text: the header, then a row per account
/// with its opening and closing balances under their headings.
struct RenglonBalanza {
    std::string cuenta, nombre, inicial, actual;
};
inline std::vector<std::string> Balanza(const std::vector<RenglonBalanza>& renglones) {
    auto aLaDerecha = [](const std::string& t, int fin) { return std::make_pair(fin - static_cast<int>(t.size()) + 1, t); };
    std::vector<std::string> r = {"Balanza de Comprobacion al 31/Ene/2025", "",
                                  En({{1, "C u e n t a"}, {20, "N o m b r e"}, {50, "Saldos  Iniciales"}, {72, "Cargos"},
                                      {86, "Abonos"}, {100, "Saldos  Actuales"}}),
                                  ""};
    for (const auto& g : renglones) {
        std::vector<std::pair<int, std::string>> p = {{1, g.cuenta}, {20, g.nombre}};
        if (!g.inicial.empty()) p.push_back(aLaDerecha(g.inicial, 64));
        if (!g.actual.empty()) p.push_back(aLaDerecha(g.actual, 114));
        r.push_back(En(p));
    }
    return r;
}

inline void Escribe(const std::string& ruta, const std::vector<std::string>& lineas) {
    std::ofstream f(ruta, std::ios::binary);
    for (const auto& l : lineas) f << l << "\r\n";
}

}  // namespace velmorant::prueba
