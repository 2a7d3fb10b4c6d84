// ajustes: the auditor's adjustments and reclassifications of the company,
// each with its lines, as the last import of an earlier audit product left
// them.

#include <ostream>

#include "accounts/CodigosCuenta.h"
#include "cli/Comando.h"
#include "session/Funciones.h"

namespace velmorant::cli {
namespace {

std::string Ancho(std::string texto, size_t ancho, bool derecha = false) {
    size_t caracteres = 0;
    for (unsigned char c : texto) caracteres += (c & 0xC0) != 0x80;
    if (caracteres >= ancho) return texto;
    std::string relleno(ancho - caracteres, ' ');
    return derecha ? relleno + texto : texto + relleno;
}

struct Clase {
    const char* titulo;
    const char* singular;
    const char* cabecera;
    const char* detalle;
    const char* id;
    const char* numero;
};

// Lists the entries of one kind; returns how many there are.
size_t Lista(Sesion& s, std::ostream& o, const Clase& c) {
    BaseDatos& db = *s.DbEmpresa;
    Consulta cabeceras = db.consulta(std::string("SELECT ") + c.id + " AS Id, " + c.numero +
                                     " AS Numero, Concepto, Estatus, Contabilizado FROM " + c.cabecera + " ORDER BY " +
                                     c.id);
    o << c.titulo << ": " << cabeceras.cuentaRegistros() << "\n";
    for (cabeceras.primero(); !cabeceras.eof(); cabeceras.siguiente()) {
        o << "\n"
          << c.singular << " " << cabeceras["Numero"].texto() << "  " << cabeceras["Concepto"].texto()
          << (cabeceras["Estatus"].booleano() ? "" : "  (sin efecto)")
          << (cabeceras["Contabilizado"].booleano() ? "  (contabilizado)" : "") << "\n";
        Consulta lineas = db.consulta(std::string("SELECT D.Cuenta, C.Descripcion, D.Tipo, D.Importe FROM ") +
                                          c.detalle + " D LEFT JOIN Cuentas C ON C.Cuenta = D.Cuenta WHERE D." + c.id +
                                          "=? ORDER BY D.rowid",
                                      cabeceras["Id"]);
        Moneda cargos, abonos;
        for (lineas.primero(); !lineas.eof(); lineas.siguiente()) {
            const bool cargo = SiNuloTexto(lineas["Tipo"]) == "C";
            const Moneda importe = lineas["Importe"].moneda();
            (cargo ? cargos : abonos) += importe;
            std::string linea = "  " + Ancho(FormateaCuenta(s, lineas["Cuenta"].texto()), 14) +
                                Ancho(lineas["Descripcion"].texto(), 32) +
                                Ancho(cargo ? importe.formatoMoneda() : "", 18, true);
            if (!cargo) linea += Ancho(importe.formatoMoneda(), 18, true);
            o << linea.substr(0, linea.find_last_not_of(' ') + 1) << "\n";
        }
        o << "  " << Ancho("", 46) << Ancho(cargos.formatoMoneda(), 18, true) << Ancho(abonos.formatoMoneda(), 18, true)
          << "\n";
    }
    return cabeceras.cuentaRegistros();
}

class AjustesComando : public Comando {
public:
    std::string nombre() const override { return "ajustes"; }
    std::string descripcion() const override {
        return "Lista los ajustes y las reclasificaciones de auditoría de la empresa, cada uno con sus\n"
               "movimientos (cuenta, cargo y abono), como los dejó la última importación.";
    }
    int ejecuta(const Argumentos&, Contexto& ctx) override {
        Sesion s;
        IniciaSesionCli(s, ctx);
        auto& o = ctx.salida;
        o << "Ajustes y reclasificaciones de " << s.NombreEmpresa << "\n\n";
        Lista(s, o, {"Ajustes", "Ajuste", "Ajustes", "Ajustes_Detalle", "IdAjuste", "Ajuste"});
        o << "\n";
        Lista(s, o,
              {"Reclasificaciones", "Reclasificación", "Reclasificaciones", "Reclasificaciones_Detalle",
               "IdReclasificacion", "Reclasificacion"});
        return kHecho;
    }
};

RegistraComando registroAjustes([] { return std::make_unique<AjustesComando>(); });

}  // namespace
}  // namespace velmorant::cli
