// cedula [--cuenta C]: the analytic schedule with the reviewer's work on each
// movement, so that what survived a re-import can be seen.

#include <ostream>

#include "accounts/CodigosCuenta.h"
#include "cli/Comando.h"
#include "session/Funciones.h"

namespace velmorant::cli {
namespace {

std::string Cuenta(Sesion& s, const Valor& v) {
    std::string c = SiNuloTexto(v);
    return s.SeparadorEmpresa.empty() || c.empty() ? c : FormateaCuenta(s, c);
}

std::string FechaCorta(const Valor& v) { return v.fecha() ? v.fecha()->ddmmaaaa() : SiNuloTexto(v); }

// A rate as stored, with its sign: "16%".
std::string Tasa(const Valor& v) {
    std::string t = v.esNulo() ? "0" : v.texto();
    return t + "%";
}

void Linea(std::ostream& o, const std::string& etiqueta, const std::string& texto) {
    if (!texto.empty()) o << "    " << etiqueta << ": " << texto << "\n";
}

void Impuesto(std::ostream& o, const Consulta& c, const std::string& nombre, const char* aplica, const char* tasa,
              const char* importe) {
    if (!c[aplica].booleano() && c[importe].moneda().esCero()) return;
    o << "    " << nombre << ": " << (c[aplica].booleano() ? "aplica" : "no aplica") << ", " << Tasa(c[tasa]) << ", "
      << c[importe].moneda().formatoMoneda() << "\n";
}

void Marcas(std::ostream& o, const Consulta& c) {
    std::string t;
    for (int i = 1; i <= 7; ++i) {
        std::string m = SiNuloTexto(c["Marca" + std::to_string(i)]);
        if (!m.empty()) t += (t.empty() ? "" : "  ") + std::to_string(i) + "=" + m;
    }
    Linea(o, "Marcas", t);
}

std::string Folios(BaseDatos& db, const Valor& id) {
    Consulta f = db.consulta("SELECT UUID FROM UUIDAnalitica WHERE IdCedAnalitica = ? ORDER BY rowid", id);
    std::string t;
    for (f.primero(); !f.eof(); f.siguiente()) t += (t.empty() ? "" : ", ") + SiNuloTexto(f["UUID"]);
    return t;
}

void Movimiento(Sesion& s, std::ostream& o, const Consulta& c) {
    const std::string tipoMov = SiNuloTexto(c["TipoMov"]);
    std::string cabeza = "#" + std::to_string(c["IdCedAnalitica"].entero()) + "  " + Cuenta(s, c["Cuenta"]);
    if (!c["IdCriterio"].esNulo()) cabeza += "  criterio " + std::to_string(c["IdCriterio"].entero());
    if (!SiNuloTexto(c["Poliza"]).empty() || !SiNuloTexto(c["Tipo"]).empty())
        cabeza += "  póliza " + SiNuloTexto(c["Tipo"]) + " " + SiNuloTexto(c["Poliza"]);
    if (!c["Fecha"].esNulo()) cabeza += "  " + FechaCorta(c["Fecha"]);
    if (!tipoMov.empty()) cabeza += std::string("  ") + (tipoMov == "D" ? "Cargo" : "Abono");
    if (!c["Importe"].esNulo()) cabeza += " " + c["Importe"].moneda().formatoMoneda();
    o << cabeza << "\n";
    Linea(o, "Referencia", SiNuloTexto(c["Referencia"]));
    if (SiNuloTexto(c["Refmodificada"]) != SiNuloTexto(c["Referencia"]))
        Linea(o, "Referencia modificada", SiNuloTexto(c["Refmodificada"]));
    if (SiNuloCero(c["VerObs"]).entero() != 0) Linea(o, "Nota de selección", SiNuloTexto(c["Obs"]));
    Marcas(o, c);
    Linea(o, "Observaciones", SiNuloTexto(c["Observaciones"]));
    Linea(o, "Sugerencias", SiNuloTexto(c["Sugerencias"]));
    Linea(o, "Información adicional 1", SiNuloTexto(c["InfoAdd1"]));
    Linea(o, "Información adicional 2", SiNuloTexto(c["InfoAdd2"]));
    Linea(o, "Notas", SiNuloTexto(c["Notas"]));
    Impuesto(o, c, "IVA", "AplicaIVA", "PorIVA", "IVA");
    Impuesto(o, c, "Retención de ISR", "AplicaRetISR", "TasaRetISR", "ImpteRetISR");
    Impuesto(o, c, "Retención de IVA", "AplicaRetIVA", "TasaRetIVA", "ImpteRetIVA");
    if (c["Modificado"].booleano()) Linea(o, "Modificado", "sí");
    Linea(o, "Folios", Folios(*s.DbEmpresa, c["IdCedAnalitica"]));
}

class CedulaComando : public Comando {
public:
    std::string nombre() const override { return "cedula"; }
    std::string resumen() const override { return "Muestra la cédula analítica con el trabajo del auditor."; }
    std::string descripcion() const override {
        return "Muestra la cédula analítica: los criterios de selección de movimientos y cada\n"
               "movimiento seleccionado con el trabajo del auditor (marcas, observaciones,\n"
               "notas, IVA y retenciones, folios fiscales) y los conceptos no deducibles.";
    }
    std::vector<Opcion> opciones() const override {
        return {{"cuenta", "C", "sólo la cuenta indicada (con o sin separadores)"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        Sesion s;
        IniciaSesionCli(s, ctx);
        BaseDatos& db = *s.DbEmpresa;
        auto& o = ctx.salida;
        std::string filtro;
        std::string cuenta;
        if (auto c = args.valor("cuenta")) {
            cuenta = s.SeparadorEmpresa.empty() ? *c : QuitaSeparadores(s, *c);
            filtro = " WHERE Cuenta = ?";
        }
        auto consulta = [&](const std::string& sql) { return filtro.empty() ? db.consulta(sql) : db.consulta(sql, cuenta); };

        o << "Cédula analítica de " << s.NombreEmpresa << "\n";
        Consulta reglas =
            consulta("SELECT * FROM CedAnaliticaMaster" +
                     (filtro.empty() ? std::string() : " WHERE CtaIntegracion = ?") +
                     " ORDER BY CtaIntegracion, IdCriterio");
        o << "Criterios: " << reglas.cuentaRegistros() << "\n";
        for (reglas.primero(); !reglas.eof(); reglas.siguiente())
            o << "  " << Cuenta(s, reglas["CtaIntegracion"]) << "  criterio " << SiNuloCero(reglas["IdCriterio"]).entero()
              << "  " << SiNuloTexto(reglas["Descripcion"]) << "  (porcentaje " << Tasa(reglas["Porcentaje"])
              << ", total " << reglas["TotalCta"].moneda().formatoMoneda() << ")\n";

        Consulta filas = consulta("SELECT * FROM CedAnalitica" + filtro + " ORDER BY Cuenta, Fecha, IdCedAnalitica");
        o << "Movimientos: " << filas.cuentaRegistros() << "\n";
        for (filas.primero(); !filas.eof(); filas.siguiente()) Movimiento(s, o, filas);

        Consulta nd = consulta("SELECT * FROM CedNoDeducibles" + filtro + " ORDER BY Cuenta, Fecha, rowid");
        o << "No deducibles: " << nd.cuentaRegistros() << "\n";
        for (nd.primero(); !nd.eof(); nd.siguiente())
            o << "  " << Cuenta(s, nd["Cuenta"]) << "  póliza " << SiNuloTexto(nd["Tipo"]) << " "
              << SiNuloTexto(nd["Poliza"]) << "  " << FechaCorta(nd["Fecha"]) << "  "
              << nd["Importe"].moneda().formatoMoneda() << "  " << SiNuloTexto(nd["Referencia"]) << "  -> #"
              << SiNuloCero(nd["IdCedAnalitica"]).entero() << "\n";
        return kHecho;
    }
};

RegistraComando registroCedula([] { return std::make_unique<CedulaComando>(); });

}  // namespace
}  // namespace velmorant::cli
