#pragma once
// A company in a temporary folder with its schema, mask "999-99-99"
// (levels 3, 2, 2, separator "-"), and the run stores of the chart open:
// the temporary chart, the voucher stores and the inconsistency log. Rows go
// in with small helpers; amounts are exact texts.

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "platform/Moneda.h"
#include "session/Sesion.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

namespace velmorant::prueba {

/// Progress that remembers its captions.
class ProgresoGrabado : public Progreso {
public:
    void etiqueta(const std::string& t) override { etiquetas.push_back(t); }
    void maximo(long n) override { maximoFijado = n; }
    void valor(long n) override { ultimoValor = n; }
    void visible(bool) override {}
    std::vector<std::string> etiquetas;
    long maximoFijado = -1, ultimoValor = 0;
};

/// Money of an exact text; an empty text is Null.
inline Valor Importe(const std::string& t) {
    Valor v;
    if (!t.empty()) v = Valor(Moneda::desdeTexto(t).value());
    return v;
}

/// An optional text: "~" stands for Null.
inline Valor Texto(const std::string& t) {
    Valor v;
    if (t != "~") v = Valor(t);
    return v;
}

/// A level: 0 stands for Null.
inline Valor Nivel(int n) {
    Valor v;
    if (n) v = Valor(n);
    return v;
}

struct Inconsistencia {
    std::string referencia, fuente, clasif, cuenta;
    bool operator==(const Inconsistencia&) const = default;
};

inline std::ostream& operator<<(std::ostream& o, const Inconsistencia& i) {
    return o << "{" << i.referencia << " | " << i.fuente << " | " << i.clasif << " | " << i.cuenta << "}";
}

class EmpresaPrueba {
public:
    CarpetaTemporal carpeta;
    InteraccionGuionada guion;
    ProgresoGrabado barra;
    Sesion s;

    EmpresaPrueba() {
        s.VersionPrograma = "1.0.0";
        s.RutaEmpresa = carpeta.texto();
        s.EjercicioTexto = "2024";
        s.FormatoCtaEmpresa = "999-99-99";
        s.SeparadorEmpresa = "-";
        s.NumeroNiveles = 3;
        s.LongitudesNivel = {3, 2, 2};
        s.CatalogoArbol = true;
        s.RellenaCeros = true;
        s.interaccion = &guion;
        s.progreso = &barra;
        s.DbEmpresa = std::make_unique<BaseDatos>(RutaBaseDatos(carpeta.texto(), "PRUEBA_2024"), BaseDatos::Modo::Crear);
        CreaEsquemaEmpresa(*s.DbEmpresa);
        CreaInconsisImpTmp(s);
        CreaCuentasTmp(s);
        CreaPolizasTmp(s);
        CreaPolizasDetalleTmp(s);
        if (!AbreInconsistencias(s) || !AbreCuentasTmp(s) || !AbrePolizasTmp(s))
            throw std::runtime_error("no se abrieron los almacenes de prueba");
    }

    BaseDatos& db() { return *s.DbEmpresa; }

    /// A company account; "~" leaves a text Null, an empty amount too.
    void Cuenta(const std::string& cuenta, const std::string& descripcion = "", const std::string& naturaleza = "D",
                int nivel = 0, const std::string& padre = "~", const std::string& tipo = "~",
                const std::string& anterior = "0") {
        db().ejecuta(
            "INSERT INTO Cuentas (Cuenta, Descripcion, Naturaleza, Nivel, CuentaAcumulativa, Tipo, Saldo_Anterior_Final) "
            "VALUES (?, ?, ?, ?, ?, ?, ?)",
            Texto(cuenta), descripcion, naturaleza, Nivel(nivel), Texto(padre), Texto(tipo),
            Importe(anterior));
    }

    void Balanza(const std::string& cuenta, const std::string& inicial, const std::string& original = "") {
        db().ejecuta("INSERT INTO Balanzas (Cuenta, SaldoInicial, SaldoIniOrig) VALUES (?, ?, ?)", cuenta,
                     Importe(inicial), Importe(original));
    }

    /// A row of the temporary chart, keyed by its unseparated code.
    void Tmp(const std::string& sinSeparadores, const std::string& descripcion = "", const std::string& saldo = "",
             const std::string& naturaleza = "D", int nivel = 0, const std::string& padre = "~",
             const std::string& tipo = "~", const std::string& cuenta = "", const std::string& anterior = "") {
        db().ejecuta(
            "INSERT INTO CuentasTmp.Cuentas (Cuenta, CuentaSinSeparadores, Nivel, CuentaAcumulativa, Tipo, Descripcion, "
            "Saldo, SaldoFinAnioAnt, Naturaleza, Revisado) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0)",
            cuenta.empty() ? sinSeparadores : cuenta, sinSeparadores, Nivel(nivel), Texto(padre),
            Texto(tipo), descripcion, Importe(saldo), Importe(anterior), naturaleza);
    }

    /// One field of the first company account with this code.
    Valor Campo(const std::string& tabla, const std::string& cuenta, const std::string& campo) {
        return db().escalar("SELECT " + campo + " FROM " + tabla + " WHERE Cuenta = ? ORDER BY rowid LIMIT 1", cuenta);
    }

    Valor CampoTmp(const std::string& sinSeparadores, const std::string& campo) {
        return db().escalar("SELECT " + campo + " FROM CuentasTmp.Cuentas WHERE CuentaSinSeparadores = ? LIMIT 1",
                            sinSeparadores);
    }

    int Filas(const std::string& tabla, const std::string& cuenta) {
        return static_cast<int>(db().escalar("SELECT COUNT(*) FROM " + tabla + " WHERE Cuenta = ?", cuenta).entero());
    }

    std::vector<Inconsistencia> Bitacora() {
        std::vector<Inconsistencia> r;
        Consulta c = db().consulta(
            "SELECT Referencia, FuenteError, ClasifError, Cuenta FROM InconsisImpTmp ORDER BY rowid");
        for (c.primero(); !c.eof(); c.siguiente())
            r.push_back({c.campo(0).texto(), c.campo(1).texto(), c.campo(2).texto(), c.campo(3).texto()});
        return r;
    }

    void VaciaBitacora() { db().ejecuta("DELETE FROM InconsisImpTmp"); }
};

}  // namespace velmorant::prueba
