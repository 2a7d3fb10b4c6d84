#pragma once
// A company ACME (2025) in a fresh base and the files of a small year in
// the delimited layout (link 82), for the tests of the import history, the
// copies before each commit and the undo.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "pipeline/Historial.h"
#include "pipeline/Importacion.h"
#include "session/Inicio.h"
#include "store/AltaBase.h"
#include "store/EsquemaEmpresa.h"
#include "support/EmpresaNueva.h"
#include "support/Entorno.h"

namespace velmorant::prueba {

class EntornoHistorial : public EntornoImportacion {
protected:
    void SetUp() override {
        std::string base = CreaBase(dir.texto() + "base");
        DatosEmpresaNueva d = EmpresaAcme();
        d.nombre = "Acme, S.A.";
        CreaEmpresa(base, d);
        escribe("catalogo.txt",
                "Cuenta|Descripcion|Naturaleza|Saldo\n"
                "100-00-00|Activo|D|1000\n100-01-00|Bancos|D|1000\n100-01-01|Banco uno|D|1000\n"
                "400-00-00|Ventas|A|-1000\n400-01-00|Ventas nacionales|A|-1000\n400-01-01|Mostrador|A|-1000\n");
        archivos.catalogo = dir.texto() + "catalogo.txt";
        for (int mes = 1; mes <= 3; ++mes) usaMes(mes, 2);
        inicia();
    }
    void inicia() {
        s = Sesion();
        s.interaccion = &ui;
        IniciaSesion(s, {dir.texto() + "base", "ACME", "2025"});
    }
    void escribe(const std::string& nombre, const std::string& texto) {
        std::ofstream(dir.texto() + nombre, std::ios::binary) << texto;
    }
    /// Month `mes` with `polizas` vouchers of two lines each, of `importe`.
    void usaMes(int mes, int polizas, const std::string& importe = "200") {
        std::string t = "Poliza|Tipo|Dia|Mes|Anio|Cuenta|Ref|Concepto|Cargo|Abono\n";
        for (int p = 1; p <= polizas; ++p) {
            std::string f = std::to_string(p) + "|" + std::to_string(mes) + "|2025";
            t += std::to_string(p) + "|Dr|" + f + "|100-01-01|cobro|Venta|" + importe + "|0\n";
            t += std::to_string(p) + "|Dr|" + f + "|400-01-01|venta|Venta|0|" + importe + "\n";
        }
        std::string nombre = "pol" + std::to_string(mes) + ".txt";
        escribe(nombre, t);
        archivos.meses[static_cast<size_t>(mes - 1)] = dir.texto() + nombre;
    }
    ImportadorTextoDelimitado importador() {
        LecturaDelimitada l;
        l.separador = "|";
        auto& c = l.config;
        c.PIniCuenta = 1, c.PIniDescripcion = 2, c.PIniNaturaleza = 3, c.PIniSdoIni = 4;
        c.PIniNumPol = 1, c.PIniTipo = 2, c.PIniDia = 3, c.PIniMes = 4, c.PIniAnio = 5, c.PIniCtaPol = 6;
        c.PIniRef = 7, c.PIniConcept = 8, c.PIniCargo = 9, c.PIniAbono = 10;
        return ImportadorTextoDelimitado(l, false);
    }
    /// A run in a fresh session, as each run of the program is.
    ResultadoImportacion importa(std::initializer_list<DecisionInconsistencias> decisiones = {},
                                 const OpcionesEjecucion& op = {}) {
        inicia();
        ui.decisiones = decisiones;
        auto imp = importador();
        return EjecutaImportacion(s, imp, archivos, op);
    }
    std::string archivoEmpresa() { return ArchivoEmpresa(s.RutaEmpresa, "ACME", 2025); }
    Valor escalar(const std::string& sql) { return s.DbEmpresa->escalar(sql); }

    /// Every row of every table of the company but the history, and the
    /// fields of the company's row that a run writes.
    std::string contenidoEmpresa() {
        BaseDatos db(archivoEmpresa(), BaseDatos::Modo::SoloLectura);
        std::string r;
        Consulta tablas = db.consulta("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name");
        for (tablas.primero(); !tablas.eof(); tablas.siguiente()) {
            std::string t = tablas["name"].texto();
            if (std::find(TablasHistorial().begin(), TablasHistorial().end(), t) != TablasHistorial().end()) continue;
            r += t + ":";
            Consulta c = db.consulta("SELECT * FROM \"" + t + "\" ORDER BY rowid");
            for (c.primero(); !c.eof(); c.siguiente())
                for (int i = 0; i < c.numCampos(); ++i) r += c.campo(i).texto() + "|";
            r += "\n";
        }
        BaseDatos empresas(RutaBaseDatos(dir.texto() + "base/", kArchivoEmpresas), BaseDatos::Modo::SoloLectura);
        Consulta e = empresas.consulta("SELECT IdSistema, MesPrevia1, MesPrevia2, MesPrevia3, MesFinal FROM Empresas");
        for (int i = 0; i < e.numCampos(); ++i) r += e.campo(i).texto() + "|";
        return r;
    }
    std::vector<RegistroHistorial> historial() { return LeeHistorial(*s.DbEmpresa); }
};

}  // namespace velmorant::prueba
