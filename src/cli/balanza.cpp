// balanza [--mes MM] [--csv], polizas [--mes MM]: the result of an import.

#include <cstdio>
#include <ostream>

#include "accounts/CodigosCuenta.h"
#include "cli/Comando.h"
#include "session/Funciones.h"

namespace velmorant::cli {
namespace {


std::string Columna(std::string texto, size_t ancho, bool derecha = false) {
    // Width in characters, not bytes: accents are two bytes in UTF-8.
    size_t caracteres = 0;
    for (unsigned char c : texto) caracteres += (c & 0xC0) != 0x80;
    if (caracteres > ancho) {
        while (caracteres > ancho && !texto.empty()) {
            unsigned char c = static_cast<unsigned char>(texto.back());
            texto.pop_back();
            if ((c & 0xC0) != 0x80) --caracteres;
        }
    }
    std::string relleno(ancho - caracteres, ' ');
    return derecha ? relleno + texto : texto + relleno;
}

std::string Csv(const std::string& t) {
    if (t.find_first_of(",\"\n") == std::string::npos) return t;
    std::string r = "\"";
    for (char c : t) r += c == '"' ? std::string("\"\"") : std::string(1, c);
    return r + "\"";
}

int MesPedido(const Argumentos& args, const Sesion& s) {
    if (auto m = args.valor("mes")) return EnteroDeOpcion(*m, "mes", 1, 13);
    return s.UltimoMesImportado > 0 ? s.UltimoMesImportado : 12;
}

class BalanzaComando : public Comando {
public:
    std::string nombre() const override { return "balanza"; }
    std::string resumen() const override { return "Muestra la balanza de comprobación de un mes y si cuadra."; }
    std::string descripcion() const override {
        return "Muestra la balanza de comprobación de un mes (por omisión, el último importado):\n"
               "saldo inicial, cargos, abonos y saldo final de cada cuenta, y la comprobación\n"
               "de que los cargos igualan a los abonos y los saldos finales suman cero. Las dos\n"
               "últimas columnas son de la etapa de auditoría en curso: el saldo con los ajustes\n"
               "(Saldo_Ajustado) y con los ajustes y las reclasificaciones (Saldo_Final_Aud).";
    }
    std::vector<Opcion> opciones() const override {
        return {{"mes", "MM", "mes de 1 a 12, o 13 para las pólizas de cierre"}, {"csv", "", "salida en CSV"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        Sesion s;
        IniciaSesionCli(s, ctx);
        int mes = MesPedido(args, s);
        const std::string m = DosDigitos(mes);
        BaseDatos& db = *s.DbEmpresa;
        Consulta c = db.consulta("SELECT B.Cuenta, C.Descripcion, C.Nivel, B.SaldoInicial, B.C" + m + " AS Cargos, B.A" +
                                 m + " AS Abonos, B.SdoFin" + m +
                                 " AS SaldoFinal, C.Saldo_Ajustado, C.Saldo_Final_Aud "
                                 "FROM Balanzas B LEFT JOIN Cuentas C ON C.Cuenta = B.Cuenta "
                                 "ORDER BY B.Cuenta");
        auto& o = ctx.salida;
        bool csv = args.tiene("csv");
        if (csv)
            o << "Cuenta,Descripcion,Nivel,SaldoInicial,Cargos,Abonos,SaldoFinal,SaldoAjustado,SaldoFinalAud\n";
        else
            o << "Balanza de " << s.NombreEmpresa << ", mes " << m << "\n"
              << Columna("Cuenta", 14) << Columna("Descripción", 32) << Columna("Saldo inicial", 18, true)
              << Columna("Cargos", 18, true) << Columna("Abonos", 18, true) << Columna("Saldo final", 18, true)
              << Columna("Saldo ajustado", 18, true) << Columna("Saldo final aud.", 18, true) << "\n";
        Moneda cargos, abonos, saldos;
        for (c.primero(); !c.eof(); c.siguiente()) {
            std::string cuenta = FormateaCuenta(s, c["Cuenta"].texto());
            if (c["Nivel"].entero() == 1) {
                cargos += c["Cargos"].moneda();
                abonos += c["Abonos"].moneda();
                saldos += c["SaldoFinal"].moneda();
            }
            if (csv)
                o << Csv(cuenta) << "," << Csv(c["Descripcion"].texto()) << "," << c["Nivel"].entero() << ","
                  << c["SaldoInicial"].moneda().texto() << "," << c["Cargos"].moneda().texto() << ","
                  << c["Abonos"].moneda().texto() << "," << c["SaldoFinal"].moneda().texto() << ","
                  << c["Saldo_Ajustado"].moneda().texto() << "," << c["Saldo_Final_Aud"].moneda().texto() << "\n";
            else
                o << Columna(cuenta, 14) << Columna(c["Descripcion"].texto(), 32)
                  << Columna(c["SaldoInicial"].moneda().formatoMoneda(), 18, true)
                  << Columna(c["Cargos"].moneda().formatoMoneda(), 18, true)
                  << Columna(c["Abonos"].moneda().formatoMoneda(), 18, true)
                  << Columna(c["SaldoFinal"].moneda().formatoMoneda(), 18, true)
                  << Columna(c["Saldo_Ajustado"].moneda().formatoMoneda(), 18, true)
                  << Columna(c["Saldo_Final_Aud"].moneda().formatoMoneda(), 18, true) << "\n";
        }
        if (!csv) {
            o << "Cuentas: " << c.cuentaRegistros() << ". Cuentas de primer nivel: cargos " << cargos.formatoMoneda()
              << ", abonos " << abonos.formatoMoneda() << ", suma de saldos finales " << saldos.formatoMoneda() << "\n";
            o << (cargos == abonos && saldos.esCero() ? "La balanza cuadra." : "LA BALANZA NO CUADRA.") << "\n";
        }
        return kHecho;
    }
};

class PolizasComando : public Comando {
public:
    std::string nombre() const override { return "polizas"; }
    std::string resumen() const override { return "Lista las pólizas importadas de un mes o de todo el ejercicio."; }
    std::string descripcion() const override {
        return "Lista las pólizas importadas de un mes (por omisión, todas): número, tipo, fecha,\n"
               "concepto, partidas, cargos y abonos, y si está cuadrada. El mes 13 son las pólizas\n"
               "de cierre, que llevan fecha de diciembre.";
    }
    std::vector<Opcion> opciones() const override {
        return {{"mes", "MM", "mes de 1 a 12, o 13 para las pólizas de cierre"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        Sesion s;
        IniciaSesionCli(s, ctx);
        std::string filtro;
        int mes = 0;
        if (auto m = args.valor("mes")) {
            // The closing vouchers bear a December date and their flag; a
            // month shows only its own, as the trial balance counts them.
            mes = EnteroDeOpcion(*m, "mes", 1, 13);
            filtro = mes == 13 ? " WHERE IFNULL(P.Poliza_Mes13, 0) <> 0 AND 13 = ?"
                               : " WHERE Month(P.Fecha) = ? AND IFNULL(P.Poliza_Mes13, 0) = 0";
        }
        std::string sql =
            "SELECT P.Poliza, P.Tipo, P.Fecha, P.Concepto, P.Cuadrada, COUNT(D.IdPoliza) AS Partidas, "
            "COALESCE(SUM(CASE WHEN D.TipoMov='D' THEN D.Importe END), 0) AS Cargos, "
            "COALESCE(SUM(CASE WHEN D.TipoMov<>'D' THEN D.Importe END), 0) AS Abonos "
            "FROM Polizas P LEFT JOIN Polizas_Detalle D ON D.IdPoliza = P.IdPoliza" +
            filtro + " GROUP BY P.IdPoliza ORDER BY P.Fecha, P.Tipo, P.IdPoliza";
        Consulta c = mes ? s.DbEmpresa->consulta(sql, mes) : s.DbEmpresa->consulta(sql);
        auto& o = ctx.salida;
        o << Columna("Póliza", 8) << Columna("Tipo", 6) << Columna("Fecha", 12) << Columna("Concepto", 40)
          << Columna("Part.", 6, true) << Columna("Cargos", 16, true) << Columna("Abonos", 16, true) << "\n";
        long partidas = 0;
        for (c.primero(); !c.eof(); c.siguiente()) {
            partidas += c["Partidas"].entero();
            o << Columna(c["Poliza"].texto(), 8) << Columna(c["Tipo"].texto(), 6)
              << Columna(c["Fecha"].fecha() ? c["Fecha"].fecha()->ddmmaaaa() : "", 12)
              << Columna(c["Concepto"].texto(), 40) << Columna(c["Partidas"].texto(), 6, true)
              << Columna(c["Cargos"].moneda().formatoMoneda(), 16, true)
              << Columna(c["Abonos"].moneda().formatoMoneda(), 16, true)
              << (c["Cuadrada"].booleano() ? "" : "  no cuadrada") << "\n";
        }
        o << "Pólizas: " << c.cuentaRegistros() << ", partidas: " << partidas << "\n";
        return kHecho;
    }
};

RegistraComando registroBalanza([] { return std::make_unique<BalanzaComando>(); });
RegistraComando registroPolizas([] { return std::make_unique<PolizasComando>(); });

}  // namespace
}  // namespace velmorant::cli
