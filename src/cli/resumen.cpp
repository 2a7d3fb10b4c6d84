// resumen: what the company holds after an import, and whether it ties out.

#include <ostream>

#include "cli/Comando.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant::cli {
namespace {

const char* NombreClase(const std::string& c) {
    if (c == "A") return "nuevo en el origen";
    if (c == "B") return "dado de baja en el origen";
    if (c == "C") return "cambio";
    if (c == "D") return "defecto que afecta lo contabilizado";
    if (c == "O") return "observación al leer";
    return "sin clase";
}

class ResumenComando : public Comando {
public:
    std::string nombre() const override { return "resumen"; }
    std::string resumen() const override { return "Resume lo importado y comprueba la balanza."; }
    std::string descripcion() const override {
        return "Resume la empresa: cuentas, pólizas y partidas importadas, las inconsistencias\n"
               "de la última importación por clase, y la comprobación de la balanza (cargos\n"
               "iguales a abonos y saldos finales que suman cero).";
    }
    int ejecuta(const Argumentos&, Contexto& ctx) override {
        Sesion s;
        IniciaSesionCli(s, ctx);
        BaseDatos& db = *s.DbEmpresa;
        auto& o = ctx.salida;
        o << "Empresa:   " << s.NombreEmpresa << " (" << s.EjercicioTexto << ")\n"
          << "Cuentas:   " << db.escalar("SELECT COUNT(*) FROM Cuentas").entero() << " ("
          << db.escalar("SELECT COUNT(*) FROM Cuentas WHERE Tipo='A'").entero() << " acumulativas)\n"
          << "Pólizas:   " << db.escalar("SELECT COUNT(*) FROM Polizas").entero() << " (meses "
          << db.escalar("SELECT COALESCE(MIN(Month(Fecha)), 0) || ' a ' || COALESCE(MAX(Month(Fecha)), 0) FROM Polizas")
                 .texto()
          << ", " << db.escalar("SELECT COUNT(*) FROM Polizas WHERE NOT Cuadrada").entero() << " sin cuadrar)\n"
          << "Partidas:  " << db.escalar("SELECT COUNT(*) FROM Polizas_Detalle").entero() << "\n";

        std::string log = RutaAlmacen(s, kInconsisImpTmp);
        if (ExisteArchivo(log)) {
            BaseDatos inconsistencias(log, BaseDatos::Modo::SoloLectura);
            Consulta c = inconsistencias.consulta(
                "SELECT ClasifError, COUNT(*) AS N FROM InconsisImpTmp GROUP BY ClasifError ORDER BY ClasifError");
            o << "Inconsistencias de la última importación:" << (c.vacia() ? " ninguna" : "") << "\n";
            for (c.primero(); !c.eof(); c.siguiente())
                o << "  " << c["ClasifError"].texto() << " (" << NombreClase(c["ClasifError"].texto())
                  << "): " << c["N"].entero() << "\n";
        }

        int mes = s.UltimoMesImportado;
        if (mes == 0) {
            o << "Balanza:   sin pólizas importadas\n";
            return kHecho;
        }
        // Level-1 accounts hold the whole tree once the roll-up has run.
        std::string sql = "SELECT COALESCE(SUM(B.C01+B.C02+B.C03+B.C04+B.C05+B.C06+B.C07+B.C08+B.C09+B.C10+B.C11+"
                          "B.C12+B.C13), 0), COALESCE(SUM(B.A01+B.A02+B.A03+B.A04+B.A05+B.A06+B.A07+B.A08+B.A09+"
                          "B.A10+B.A11+B.A12+B.A13), 0), COALESCE(SUM(B.SaldoInicial), 0), COALESCE(SUM(B.SdoFin12), 0) "
                          "FROM Balanzas B JOIN Cuentas C ON C.Cuenta = B.Cuenta WHERE C.Nivel = 1";
        Consulta t = db.consulta(sql);
        Moneda cargos = t.campo(0).moneda(), abonos = t.campo(1).moneda(), inicial = t.campo(2).moneda(),
               final12 = t.campo(3).moneda();
        o << "Balanza:   cargos " << cargos.formatoMoneda() << ", abonos " << abonos.formatoMoneda()
          << "; saldos iniciales suman " << inicial.formatoMoneda() << ", saldos finales a diciembre suman "
          << final12.formatoMoneda() << "\n";
        bool cuadra = cargos == abonos && inicial.esCero() && final12.esCero();
        o << (cuadra ? "La balanza cuadra." : "LA BALANZA NO CUADRA.") << "\n";
        return cuadra ? kHecho : kRehusado;
    }
};

RegistraComando registro([] { return std::make_unique<ResumenComando>(); });

}  // namespace
}  // namespace velmorant::cli
