// seleccion [--mes MM]: the accounts selected for review, month by month.

#include <ostream>

#include "accounts/CodigosCuenta.h"
#include "cli/Comando.h"
#include "session/Funciones.h"

namespace velmorant::cli {
namespace {

// `texto` padded with blanks to `ancho` characters (UTF-8 aware); a longer
// text is left whole.
std::string Columna(const std::string& texto, size_t ancho, bool derecha = false) {
    size_t caracteres = 0;
    for (unsigned char c : texto)
        if ((c & 0xC0) != 0x80) ++caracteres;
    std::string relleno(ancho > caracteres ? ancho - caracteres : 0, ' ');
    return derecha ? relleno + texto : texto + relleno;
}


// The months that hold rules or selected accounts, in order.
std::vector<int> MesesConSeleccion(BaseDatos& db) {
    std::vector<int> meses;
    Consulta c = db.consulta(
        "SELECT MesRevision FROM SeleccionMaster UNION SELECT MesRevision FROM SeleccionDetalle ORDER BY 1");
    for (c.primero(); !c.eof(); c.siguiente()) meses.push_back(static_cast<int>(SiNuloCero(c.campo(0)).entero()));
    return meses;
}

void MuestraReglas(Sesion& s, int mes, std::ostream& o) {
    Consulta r = s.DbEmpresa->consulta(
        "SELECT IdCriterio, CtaIntegracion, Descripcion FROM SeleccionMaster WHERE MesRevision = ? ORDER BY rowid",
        mes);
    for (r.primero(); !r.eof(); r.siguiente())
        o << "  Criterio " << Columna(SiNuloTexto(r["IdCriterio"]), 3) << " "
          << Columna(FormateaCuenta(s, SiNuloTexto(r["CtaIntegracion"])), 12) << " " << SiNuloTexto(r["Descripcion"])
          << "\n";
}

void MuestraCuentas(Sesion& s, int mes, std::ostream& o) {
    Consulta c = s.DbEmpresa->consulta(
        "SELECT IdCriterio, CtaIntegracion, Cuenta, Saldo, Obs FROM SeleccionDetalle WHERE MesRevision = ? "
        "ORDER BY rowid",
        mes);
    if (c.vacia()) {
        o << "  (ninguna cuenta seleccionada)\n";
        return;
    }
    o << "  " << Columna("Criterio", 9) << Columna("Integración", 13) << Columna("Cuenta", 21)
      << Columna("Saldo", 18, true) << "  Observación\n";
    for (c.primero(); !c.eof(); c.siguiente()) {
        std::string obs = SiNuloTexto(c["Obs"]);
        o << "  " << Columna(SiNuloTexto(c["IdCriterio"]), 9)
          << Columna(FormateaCuenta(s, SiNuloTexto(c["CtaIntegracion"])), 13)
          << Columna(FormateaCuenta(s, SiNuloTexto(c["Cuenta"])), 21)
          << Columna(SiNuloCero(c["Saldo"]).moneda().formatoMoneda(), 18, true) << (obs.empty() ? "" : "  " + obs)
          << "\n";
    }
}

class SeleccionComando : public Comando {
public:
    std::string nombre() const override { return "seleccion"; }
    std::string resumen() const override { return "Muestra la selección de cuentas por revisar de cada mes de revisión."; }
    std::string descripcion() const override {
        return "Muestra la selección de cuentas por revisar de cada mes de revisión: los criterios\n"
               "y, por cuenta seleccionada, criterio, cuenta de integración, cuenta, saldo y\n"
               "observación.";
    }
    std::vector<Opcion> opciones() const override { return {{"mes", "MM", "sólo ese mes de revisión (1 a 13)"}}; }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        std::vector<int> meses;
        if (auto mes = args.valor("mes")) meses.push_back(EnteroDeOpcion(*mes, "mes", 1, 13));
        Sesion s;
        IniciaSesionCli(s, ctx);
        if (!s.DbEmpresa) throw Rehusado("No hay una empresa abierta.");
        if (meses.empty()) meses = MesesConSeleccion(*s.DbEmpresa);
        if (meses.empty()) ctx.salida << "No hay criterios ni cuentas seleccionadas.\n";
        for (int mes : meses) {
            ctx.salida << "Mes " << DosDigitos(mes) << "\n";
            MuestraReglas(s, mes, ctx.salida);
            MuestraCuentas(s, mes, ctx.salida);
        }
        return kHecho;
    }
};

RegistraComando registro([] { return std::make_unique<SeleccionComando>(); });

}  // namespace
}  // namespace velmorant::cli
