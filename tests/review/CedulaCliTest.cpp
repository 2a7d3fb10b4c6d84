// "velmorant-cli cedula" run as a user would, on a company whose schedule
// holds a reviewed movement, an opening balance row and a non-deductible item.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "session/Inicio.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

class CedulaCli : public ::testing::Test {
protected:
    prueba::CarpetaTemporal dir;

    std::string Corre(const std::string& argumentos, int& estado) {
        std::string cmd = "XDG_CONFIG_HOME='" + dir.texto() + "config' '" + VELMORANT_CLI + "' --base '" + base() +
                          "' --empresa DEMO --ejercicio 2025 " + argumentos + " </dev/null 2>&1";
        std::string salida;
        FILE* p = popen(cmd.c_str(), "r");
        if (!p) return salida;
        std::array<char, 4096> b;
        size_t n;
        while ((n = fread(b.data(), 1, b.size(), p)) > 0) salida.append(b.data(), n);
        int st = pclose(p);
        estado = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
        return salida;
    }
    std::string base() { return dir.texto() + "base/"; }

    void SetUp() override {
        std::string cli = std::string("XDG_CONFIG_HOME='") + dir.texto() + "config' '" + VELMORANT_CLI + "' ";
        ASSERT_EQ(std::system((cli + "base crear '" + base() + "' >/dev/null 2>&1").c_str()), 0);
        ASSERT_EQ(std::system((cli + "--base '" + base() +
                               "' empresa crear --nombre-corto DEMO --nombre 'Demo, S.A.' --ejercicio 2025 "
                               "--formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol >/dev/null 2>&1")
                                  .c_str()),
                  0);
        BaseDatos db(ArchivoEmpresa(RutaEmpresa(base(), 2025, "DEMO"), "DEMO", 2025));
        db.ejecutaScript(
            "INSERT INTO Cuentas (Cuenta, Naturaleza, Nivel, Tipo) VALUES ('10101', 'D', 2, 'D'), "
            "('20101', 'A', 2, 'D');"
            "INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha) VALUES (1, '15', 'Eg', '2025-01-15');"
            "INSERT INTO Polizas_Detalle (IdPoliza, Cuenta, TipoMov, Importe, Referencia) VALUES "
            "(1, '10101', 'D', 11600000, 'Pago a proveedor'), (1, '20101', 'H', 11600000, 'Pago a proveedor');"
            "INSERT INTO CedAnaliticaMaster (IdCriterio, CtaIntegracion, Descripcion, Porcentaje, TotalCta) VALUES "
            "(4, '10101', 'Todos', 0, 11600000);"
            "INSERT INTO CedAnalitica (IdCedAnalitica, IdCriterio, IdPoliza, Poliza, Tipo, Fecha, Cuenta, Referencia, "
            "TipoMov, Importe, Refmodificada, Marca1, Marca3, Observaciones, Notas, AplicaIVA, PorIVA, IVA, "
            "Modificado, VerObs) VALUES (7, 4, 1, '15', 'Eg', '2025-01-15', '10101', 'Pago a proveedor', 'D', "
            "11600000, 'Pago de la factura A-9', 'V', 'X', 'Cotejado con factura', 'papel B-2', -1, 16, 1600000, "
            "-1, 0);"
            "INSERT INTO CedAnalitica (IdCedAnalitica, Cuenta, Referencia, Marca1) VALUES "
            "(8, '20101', 'Saldo Inicial', 'S');"
            "INSERT INTO UUIDAnalitica (IdCedAnalitica, UUID) VALUES (7, 'AB12-CD34'), (7, 'EF56-7890');"
            "INSERT INTO CedNoDeducibles (Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe, "
            "IdCedAnalitica) VALUES ('15', 'Eg', '2025-01-15', '10101', 'Pago a proveedor', 'D', 2000000, 7);");
    }
};

TEST_F(CedulaCli, MuestraElTrabajoDelAuditorDeCadaMovimiento) {
    int estado = -1;
    std::string s = Corre("cedula", estado);
    ASSERT_EQ(estado, 0) << s;
    for (const char* esperado :
         {"Cédula analítica de Demo, S.A.", "Criterios: 1", "101-01  criterio 4  Todos",
          "Movimientos: 2", "#7  101-01  criterio 4  póliza Eg 15  15/01/2025  Cargo $1,160.00",
          "    Referencia modificada: Pago de la factura A-9", "    Marcas: 1=V  3=X",
          "    Observaciones: Cotejado con factura", "    Notas: papel B-2", "    IVA: aplica, 16%, $160.00",
          "    Modificado: sí", "    Folios: AB12-CD34, EF56-7890", "#8  201-01 $0.00\n    Referencia: Saldo Inicial\n    Marcas: 1=S\n",
          "No deducibles: 1", "$200.00  Pago a proveedor  -> #7"})
        EXPECT_NE(s.find(esperado), std::string::npos) << "falta: " << esperado << "\n" << s;
}

TEST_F(CedulaCli, ConCuentaMuestraSoloEsaCuenta) {
    int estado = -1;
    std::string s = Corre("cedula --cuenta 201-01", estado);
    ASSERT_EQ(estado, 0) << s;
    EXPECT_NE(s.find("Movimientos: 1"), std::string::npos) << s;
    EXPECT_NE(s.find("#8  201-01"), std::string::npos) << s;
    EXPECT_EQ(s.find("#7"), std::string::npos) << s;
    EXPECT_NE(s.find("Criterios: 0"), std::string::npos) << s;
    EXPECT_NE(s.find("No deducibles: 0"), std::string::npos) << s;
}

}  // namespace
