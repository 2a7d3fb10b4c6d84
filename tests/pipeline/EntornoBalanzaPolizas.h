#pragma once
// A company of one fiscal year for the voucher and trial-balance tests: the
// company database in a private folder, its row in `Empresas`, the log open
// (and on demand the voucher stores), and small writers for accounts,
// balances, vouchers and lines.

#include <ostream>
#include <string>
#include <vector>

#include "platform/Fecha.h"
#include "platform/Moneda.h"
#include "session/Sesion.h"
#include "support/Entorno.h"

namespace velmorant {
/// Amounts in test failures read as money.
inline void PrintTo(const Moneda& m, std::ostream* os) { *os << m.texto(); }
}  // namespace velmorant

namespace velmorant::prueba {

inline Moneda M(const char* texto) { return Moneda::desdeTexto(texto).value(); }

/// Records every label shown, in order.
class ProgresoDeBalanza : public Progreso {
public:
    void etiqueta(const std::string& t) override { etiquetas.push_back(t); }
    void maximo(long) override {}
    void valor(long) override {}
    void visible(bool) override {}
    std::vector<std::string> etiquetas;
};

struct DatosPoliza {
    int id = 1;
    std::string poliza = "1";
    std::string tipo = "Dr";
    Fecha fecha{2023, 1, 15};
    bool cuadrada = true;
    bool deshabilitada = false;
    bool mes13 = false;
    bool ajuste = false;
};

struct FilaInconsistencia {
    std::string referencia, fuente, clasif, poliza, tipo, fecha, cuenta;
};

class EmpresaDePrueba {
public:
    EmpresaDePrueba();

    /// Creates and attaches the temporary chart and the two voucher stores.
    void abrePolizasTmp();
    /// An account of the temporary chart, with the same code in both forms.
    void cuentaTmp(const std::string& cuenta);

    /// An account of the chart; `tipo` "A" or "D".
    void cuenta(const std::string& cuenta, const std::string& tipo, const std::string& padre = "");
    /// A detail account with its balance row (SaldoInicial = SaldoIniOrig).
    void cuentaConSaldo(const std::string& cuenta, Moneda saldo, const std::string& padre = "");
    void balanza(const std::string& cuenta, Moneda saldoInicial);
    void poliza(const DatosPoliza& p, const std::string& tabla = "Polizas");
    void linea(int idPoliza, const std::string& cuenta, const std::string& tipoMov, Moneda importe,
               const std::string& tabla = "Polizas_Detalle");
    /// An adjustment (or reclassification) of one line.
    void entrada(const std::string& tabla, int id, bool estatus, bool contabilizado, const std::string& cuenta,
                 const std::string& tipo, Moneda importe);
    void mesesDeRevision(int previa1, int previa2, int previa3, int final, int auditoriaActual = 0);

    /// Runs the monthly steps of the balance from "01" to `ultimo`.
    void aplicaMeses(int ultimo);

    Moneda celda(const std::string& tabla, const std::string& cuenta, const std::string& columna);
    bool nula(const std::string& tabla, const std::string& cuenta, const std::string& columna);
    std::vector<FilaInconsistencia> inconsistencias();

    CarpetaTemporal carpeta;
    ProgresoDeBalanza progreso;
    Sesion s;
};

std::string Mes(int n);

}  // namespace velmorant::prueba
