// The closing month (month 13) through the whole run: its vouchers bear a
// December date and the flag Poliza_Mes13, are checked for balance in a
// turn of their own, post to C13/A13 and reach the closing balances, and a
// re-import pairs them by number, type and flag. The importer here fills
// the run's stores directly, one delivery of vouchers at a time, as either
// kind of importer: one file for the year, or one file per month with the
// closing month in a file of its own.

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "pipeline/Importacion.h"
#include "pipeline/Polizas.h"
#include "session/Funciones.h"
#include "session/Inicio.h"
#include "store/AltaBase.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

struct LineaDePrueba {
    std::string cuenta, tipoMov, importe;
};

struct PolizaDePrueba {
    std::string poliza;
    Fecha fecha;
    bool mes13 = false;
    std::string concepto;
    std::vector<LineaDePrueba> lineas;
};

using Entrega = std::vector<PolizaDePrueba>;

// Chart: code, description, nature, opening balance.
const char* const kCatalogo[][4] = {
    {"100", "Activo", "D", "1000"},       {"10001", "Bancos", "D", "1000"},
    {"1000101", "Banco uno", "D", "1000"}, {"300", "Capital", "A", "0"},
    {"30001", "Resultados", "A", "0"},    {"3000101", "Resultado del ejercicio", "A", "0"},
    {"400", "Ventas", "A", "-1000"},      {"40001", "Ventas nacionales", "A", "-1000"},
    {"4000101", "Mostrador", "A", "-1000"},
};

Moneda M(const std::string& t) { return Moneda::desdeTexto(t).value(); }

/// One sale of 200 on the 10th of each month.
PolizaDePrueba Venta(int mes) {
    return {"1", Fecha(2025, mes, 10), false, "Venta", {{"1000101", "D", "200"}, {"4000101", "H", "200"}}};
}

/// The closing voucher: the year's sales to the result account.
PolizaDePrueba Cierre() {
    return {"C1", Fecha(2025, 12, 31), true, "Cierre del ejercicio", {{"4000101", "D", "3400"}, {"3000101", "H", "3400"}}};
}

Entrega Anio(int meses = 12, bool conCierre = true) {
    Entrega e;
    for (int m = 1; m <= meses; ++m) e.push_back(Venta(m));
    if (conCierre) e.push_back(Cierre());
    return e;
}

template <class F>
PolizaDePrueba Con(PolizaDePrueba p, F f) {
    f(p);
    return p;
}

/// An importer of either kind whose "files" are a delivery held in memory.
class ImportadorDePrueba : public Importador {
public:
    ImportadorDePrueba(TipoImportacion tipo, Entrega entrega) : tipo_(tipo), entrega_(std::move(entrega)) {}

    int idSistema() const override { return 999; }  // no link of the register: no files of its own to check
    TipoImportacion tipo() const override { return tipo_; }

    void ImportaCatalogo(Sesion& s, DestinoTmp&, const ArchivosImportacion&) override {
        for (const auto& c : kCatalogo)
            s.DbCuentasTmp->ejecuta(
                "INSERT INTO CuentasTmp.Cuentas (Cuenta, CuentaSinSeparadores, Descripcion, Naturaleza, Saldo) "
                "VALUES (?, ?, ?, ?, ?)",
                c[0], c[0], c[1], c[2], M(c[3]));
    }
    void ImportaPolizas(Sesion& s, DestinoTmp&, const ArchivosImportacion&) override {
        for (const auto& p : entrega_) agrega(s, p);
    }
    void ImportaPolizasMes(Sesion& s, DestinoTmp&, int mes, const std::string&) override {
        for (const auto& p : entrega_)
            if (mes == 13 ? p.mes13 : !p.mes13 && p.fecha.mes() == mes) agrega(s, p);
    }

    /// The files a run of this kind is given for the delivery.
    ArchivosImportacion archivos() const {
        ArchivosImportacion a;
        a.catalogo = "catalogo";
        if (tipo_ == TipoImportacion::ArchivoUnico) a.polizas = "polizas";
        for (const auto& p : entrega_)
            if (tipo_ == TipoImportacion::MesPorMes) {
                int mes = p.mes13 ? 13 : p.fecha.mes();
                a.meses[static_cast<size_t>(mes - 1)] = "mes" + DosDigitos(mes);
            }
        return a;
    }

private:
    static void agrega(Sesion& s, const PolizaDePrueba& p) {
        long id = SiguienteIdPoliza(s);
        s.DbPolizasTmp->ejecuta(
            "INSERT INTO Polizas_Tmp.Polizas_Tmp (IdPoliza, Poliza, Tipo, Fecha, Concepto, Poliza_Deshabilitada, "
            "Poliza_Mes13, Poliza_Ajuste, Cuadrada, Revisado) VALUES (?, ?, 'Dr', ?, ?, 0, ?, 0, 0, 0)",
            id, p.poliza, p.fecha, p.concepto, p.mes13);
        int partida = 0;
        for (const auto& l : p.lineas)
            s.DbPolizasDetalleTmp->ejecuta(
                "INSERT INTO Polizas_Detalle_Tmp.Polizas_Detalle_Tmp (IdPoliza, Cuenta, TipoMov, Importe, "
                "Referencia, Partida) VALUES (?, ?, ?, ?, ?, ?)",
                id, l.cuenta, l.tipoMov, M(l.importe), "Movimiento", ++partida);
    }

    TipoImportacion tipo_;
    Entrega entrega_;
};

struct Fila {
    std::string referencia, clasif, poliza, fecha, cuenta;
    bool operator==(const Fila&) const = default;
};

void PrintTo(const Fila& f, std::ostream* os) {
    *os << "{" << f.referencia << " | " << f.clasif << " | " << f.poliza << " | " << f.fecha << " | " << f.cuenta
        << "}";
}

const char* NombreTipo(TipoImportacion t) { return t == TipoImportacion::ArchivoUnico ? "un archivo" : "mes por mes"; }

constexpr TipoImportacion kTipos[] = {TipoImportacion::ArchivoUnico, TipoImportacion::MesPorMes};

/// A company as the run tests make one, imported into by deliveries.
class Empresa {
public:
    explicit Empresa(TipoImportacion tipo, bool saldosConMes13 = false) : tipo_(tipo) {
        DatosEmpresaNueva d = prueba::EmpresaAcme();
        d.saldosConMes13 = saldosConMes13;
        CreaEmpresa(CreaBase(dir.texto() + "base"), d);
    }

    /// A run of the delivery in a fresh session; the inconsistency form, if
    /// it comes up, is answered with "continue".
    ResultadoImportacion importa(const Entrega& entrega) {
        s = Sesion();
        s.interaccion = &ui;
        IniciaSesion(s, {dir.texto() + "base", "ACME", "2025"});
        s.DbEmpresa->ejecutaScript("PRAGMA synchronous=OFF");  // a test's company needs no durability
        s.DbEmpresas->ejecutaScript("PRAGMA synchronous=OFF");
        ui.mensajes.clear();
        ui.decisiones = {DecisionInconsistencias::Continuar};
        ImportadorDePrueba imp(tipo_, entrega);
        return EjecutaImportacion(s, imp, imp.archivos());
    }

    /// The rows the last run logged.
    std::vector<Fila> bitacora() {
        std::vector<Fila> r;
        const std::string ruta = RutaAlmacen(s, kInconsisImpTmp);
        if (!std::filesystem::exists(ruta)) return r;
        BaseDatos log(ruta);
        Consulta c = log.consulta("SELECT Referencia, ClasifError, Poliza, Fecha, Cuenta FROM InconsisImpTmp ORDER BY rowid");
        for (c.primero(); !c.eof(); c.siguiente())
            r.push_back({SiNuloTexto(c["Referencia"]), SiNuloTexto(c["ClasifError"]), SiNuloTexto(c["Poliza"]),
                         SiNuloTexto(c["Fecha"]), SiNuloTexto(c["Cuenta"])});
        return r;
    }

    std::string importe(const std::string& campo, const std::string& tabla, const std::string& cuenta) {
        return s.DbEmpresa->escalar("SELECT " + campo + " FROM " + tabla + " WHERE Cuenta=?", cuenta).moneda().texto();
    }
    Valor escalar(const std::string& sql) { return s.DbEmpresa->escalar(sql); }
    std::int64_t empresas(const std::string& campo) {
        return s.DbEmpresas->escalar("SELECT IFNULL(" + campo + ",0) FROM Empresas").entero();
    }

    prueba::AjustesAislados ajustes;
    prueba::CarpetaTemporal dir;
    prueba::InteraccionGuionada ui;
    Sesion s;

private:
    TipoImportacion tipo_;
};

const char* kCabecera = "La Póliza cambió en :";

}  // namespace

TEST(Mes13, ElCierreSeVerificaSePostaEnC13YLlegaALosSaldosFinales) {
    for (TipoImportacion tipo : kTipos)
        for (bool conMes13 : {false, true}) {
            SCOPED_TRACE(std::string(NombreTipo(tipo)) + (conMes13 ? ", saldos con mes 13" : ""));
            Empresa e(tipo, conMes13);
            ASSERT_EQ(e.importa(Anio()), ResultadoImportacion::Terminada);
            EXPECT_TRUE(e.bitacora().empty());
            EXPECT_EQ(e.escalar("SELECT Cuadrada || ',' || Poliza_Deshabilitada || ',' || Poliza_Mes13 FROM Polizas "
                                "WHERE Poliza='C1'")
                          .texto(),
                      "-1,0,-1");
            // December's own column holds the sale only; the closing voucher
            // is in C13/A13, and only SdoFin13 sees it.
            EXPECT_EQ(e.importe("A12", "Balanzas", "4000101"), "200");
            EXPECT_EQ(e.importe("C12", "Balanzas", "4000101"), "0");
            EXPECT_EQ(e.importe("C13", "Balanzas", "4000101"), "3400");
            EXPECT_EQ(e.importe("A13", "Balanzas", "3000101"), "3400");
            EXPECT_EQ(e.importe("SdoFin12", "Balanzas", "4000101"), "-3400");
            EXPECT_EQ(e.importe("SdoFin13", "Balanzas", "4000101"), "0");
            EXPECT_EQ(e.importe("SdoFin13", "Balanzas", "3000101"), "-3400");
            EXPECT_EQ(e.importe("Saldo_Ajustado", "Balanzas", "4000101"), "0");
            // The accumulating accounts carry month 13 up the tree.
            EXPECT_EQ(e.importe("C13", "Balanzas", "400"), "3400");
            EXPECT_EQ(e.importe("SdoFin13", "Balanzas", "300"), "-3400");
            // The final stage closes at December, or at month 13 when the
            // company counts it in its closing balances.
            EXPECT_EQ(e.empresas("MesFinal"), 12)
                << "the closing month counts as December";
            EXPECT_EQ(e.importe("Saldo_Final", "Cuentas", "4000101"), conMes13 ? "0" : "-3400");
            EXPECT_EQ(e.importe("Saldo_Final", "Cuentas", "3000101"), conMes13 ? "-3400" : "0");
            EXPECT_EQ(e.importe("Saldo_Final", "Cuentas", "1000101"), "3400");
        }
}

TEST(Mes13, UnCierreQueNoCuadraSeDeshabilitaYSeRegistra) {
    for (TipoImportacion tipo : kTipos) {
        SCOPED_TRACE(NombreTipo(tipo));
        Empresa e(tipo);
        Entrega entrega = Anio(12, false);
        entrega.push_back(Con(Cierre(), [](PolizaDePrueba& p) { p.lineas[1].importe = "3399.99"; }));
        ASSERT_EQ(e.importa(entrega), ResultadoImportacion::Terminada);
        EXPECT_EQ(e.bitacora(),
                  (std::vector<Fila>{{"Póliza no balanceada Importe de diferencia $0.01", "D", "C1", "2025-12-31", ""}}));
        EXPECT_EQ(e.escalar("SELECT Cuadrada || ',' || Poliza_Deshabilitada FROM Polizas WHERE Poliza='C1'").texto(),
                  "0,-1")
            << "kept for the auditor to see";
        EXPECT_EQ(e.escalar("SELECT COUNT(*) FROM Balanzas WHERE C13<>0 OR A13<>0").entero(), 0);
        EXPECT_EQ(e.importe("SdoFin13", "Balanzas", "4000101"), "-3400");
    }
}

TEST(Mes13, UnaReimportacionEmparejaElCierrePorNumeroTipoYMarca) {
    const PolizaDePrueba cierre = Cierre();
    // The comparison steps are the same for both kinds of importer; what
    // differs is when the driver gives month 13 its turn, which the first
    // two cases show month by month too (the period test drops a closing
    // voucher month by month).
    struct Caso {
        const char* nombre;
        Entrega segunda;
        std::vector<Fila> esperado;
        bool tambienMesPorMes = false;
    } casos[] = {
        {"el mismo cierre", Anio(), {}, true},
        {"importe y concepto cambiados",
         [&] {
             Entrega e = Anio(12, false);
             e.push_back(Con(cierre, [](PolizaDePrueba& p) {
                 p.concepto = "Cierre anual";
                 p.lineas[0].importe = p.lineas[1].importe = "3500";
             }));
             return e;
         }(),
         {{kCabecera, "C", "C1", "2025-12-31", ""},
          {"Concepto, Anterior -> Cierre del ejercicio Nuevo -> Cierre anual.", "C", "C1", "2025-12-31", ""},
          {"Partida: 1 Importe -> Anterior: $3,400.00 Nuevo: $3,500.00", "C", "C1", "2025-12-31", "4000101"},
          {"Partida: 2 Importe -> Anterior: $3,400.00 Nuevo: $3,500.00", "C", "C1", "2025-12-31", "3000101"}},
         true},
        // The key of month 13 leaves the date out: a move within December
        // is a change of the same voucher.
        {"fecha movida dentro de diciembre",
         [&] {
             Entrega e = Anio(12, false);
             e.push_back(Con(cierre, [](PolizaDePrueba& p) { p.fecha = Fecha(2025, 12, 30); }));
             return e;
         }(),
         {{kCabecera, "C", "C1", "2025-12-31", ""},
          {"Fecha, Anterior -> 31/12/2025 Nueva -> 30/12/2025.", "C", "C1", "2025-12-31", ""}}},
        {"partida agregada en una cuenta nueva para la poliza",
         [&] {
             Entrega e = Anio(12, false);
             e.push_back(Con(cierre, [](PolizaDePrueba& p) { p.lineas.push_back({"1000101", "D", "0"}); }));
             return e;
         }(),
         {{kCabecera, "C", "C1", "2025-12-31", ""},
          {"Se incluyó una nueva partida.", "C", "C1", "2025-12-31", "1000101"}}},
        {"un segundo cierre",
         [&] {
             Entrega e = Anio();
             e.push_back(Con(cierre, [](PolizaDePrueba& p) { p.poliza = "C2"; }));
             return e;
         }(),
         {{"Póliza nueva.", "A", "C2", "2025-12-31", ""}}},
        // The year reaches December without its closing voucher.
        {"cierre que ya no viene", Anio(12, false), {{"La Póliza se dio de baja.", "B", "C1", "2025-12-31", ""}}},
    };
    for (TipoImportacion tipo : kTipos)
        for (const Caso& c : casos) {
            if (tipo == TipoImportacion::MesPorMes && !c.tambienMesPorMes) continue;
            SCOPED_TRACE(std::string(NombreTipo(tipo)) + ": " + c.nombre);
            Empresa e(tipo);
            ASSERT_EQ(e.importa(Anio()), ResultadoImportacion::Terminada);
            ASSERT_EQ(e.importa(c.segunda), ResultadoImportacion::Terminada);
            EXPECT_EQ(e.bitacora(), c.esperado);
        }
}

TEST(Mes13, UnNumeroRepetidoEnDiciembreYEnElCierreSonDosPolizas) {
    // Same number, type and date; the closing voucher comes first in the
    // source, so a search that ignored the flag would find it first.
    auto entrega = [](const std::string& importeDiciembre) {
        Entrega e{Con(Cierre(), [](PolizaDePrueba& p) { p.poliza = "1"; })};
        for (int m = 1; m <= 12; ++m) e.push_back(Venta(m));
        e.back().fecha = Fecha(2025, 12, 31);
        e.back().lineas[0].importe = e.back().lineas[1].importe = importeDiciembre;
        return e;
    };
    for (TipoImportacion tipo : kTipos) {
        SCOPED_TRACE(NombreTipo(tipo));
        Empresa e(tipo);
        ASSERT_EQ(e.importa(entrega("200")), ResultadoImportacion::Terminada);
        EXPECT_EQ(e.escalar("SELECT group_concat(Poliza_Mes13) FROM (SELECT Poliza_Mes13 FROM Polizas "
                            "WHERE Poliza='1' AND Fecha='2025-12-31' ORDER BY 1)")
                      .texto(),
                  "-1,0");
        EXPECT_EQ(e.importe("A12", "Balanzas", "4000101"), "200");
        EXPECT_EQ(e.importe("C13", "Balanzas", "4000101"), "3400");

        ASSERT_EQ(e.importa(entrega("200")), ResultadoImportacion::Terminada);
        EXPECT_EQ(e.bitacora(), std::vector<Fila>{});

        ASSERT_EQ(e.importa(entrega("250")), ResultadoImportacion::Terminada);
        EXPECT_EQ(e.bitacora(),
                  (std::vector<Fila>{
                      {kCabecera, "C", "1", "2025-12-31", ""},
                      {"Partida: 1 Importe -> Anterior: $200.00 Nuevo: $250.00", "C", "1", "2025-12-31", "1000101"},
                      {"Partida: 2 Importe -> Anterior: $200.00 Nuevo: $250.00", "C", "1", "2025-12-31", "4000101"}}));
        EXPECT_EQ(e.importe("A12", "Balanzas", "4000101"), "250");
        EXPECT_EQ(e.importe("C13", "Balanzas", "4000101"), "3400");
    }
}

TEST(Mes13, ElCierreCuentaComoDiciembreEnElPeriodo) {
    {
        // A first import of January to March and the closing voucher: the
        // company's last month is December.
        Empresa e(TipoImportacion::ArchivoUnico);
        ASSERT_EQ(e.importa(Anio(3)), ResultadoImportacion::Terminada);
        EXPECT_EQ(e.empresas("MesFinal"), 12);
        EXPECT_EQ(e.empresas("MesPrevia1"), 0);
        EXPECT_EQ(e.importe("C13", "Balanzas", "4000101"), "3400");

        EXPECT_EQ(e.importa(Anio(3, false)), ResultadoImportacion::PeriodoInvalido);
        ASSERT_FALSE(e.ui.mensajes.empty());
        EXPECT_NE(e.ui.mensajes.back().texto.find("la última importación se realizó al mes de DICIEMBRE"),
                  std::string::npos)
            << e.ui.mensajes.back().texto;
        EXPECT_EQ(e.escalar("SELECT COUNT(*) FROM Polizas").entero(), 4);

        ASSERT_EQ(e.importa(Anio(3)), ResultadoImportacion::Terminada);
        EXPECT_EQ(e.bitacora(), std::vector<Fila>{});
    }
    // Month by month, the months through December must all be given again;
    // the closing month's own file is not among them.
    Empresa m(TipoImportacion::MesPorMes);
    ASSERT_EQ(m.importa(Anio()), ResultadoImportacion::Terminada);
    EXPECT_EQ(m.importa(Anio(11)), ResultadoImportacion::ArchivosFaltantes);
    EXPECT_EQ(m.ui.mensajes.back().texto, "Es necesario completar la selección de archivos a importar");
    ASSERT_EQ(m.importa(Anio(12, false)), ResultadoImportacion::Terminada);
    EXPECT_EQ(m.bitacora(), (std::vector<Fila>{{"La Póliza se dio de baja.", "B", "C1", "2025-12-31", ""}}));
}
