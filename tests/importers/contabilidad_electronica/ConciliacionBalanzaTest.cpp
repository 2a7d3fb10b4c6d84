// The reconciliation of filed trial balances with the vouchers read:
// balances that agree give nothing, each kind of difference gives its one
// finding, and the sign of a balance file is told from its own arithmetic.

#include <gtest/gtest.h>

#include "importers/contabilidad_electronica/ConciliacionBalanza.h"
#include "pipeline/Inconsistencias.h"

using namespace velmorant;

namespace {

Moneda M(const char* t) { return Moneda::desdeTexto(t).value(); }

class Conciliacion : public ::testing::Test {
protected:
    CatalogoConciliacion catalogo;
    std::unordered_map<std::string, Moneda> iniciales;
    MovimientosPorMes movimientos;

    void SetUp() override {
        catalogo.agrega("100", "D", "");
        catalogo.agrega("10001", "D", "100");
        catalogo.agrega("1000101", "D", "10001");
        catalogo.agrega("1000102", "D", "10001");
        catalogo.agrega("400", "A", "");
        catalogo.agrega("40001", "A", "400");
        catalogo.agrega("4000101", "A", "40001");
        iniciales["1000101"] = M("1000");
        iniciales["4000101"] = M("-1000");
        iniciales["10001"] = M("7");  // an accumulative account opens with its detail accounts' sum
        movimientos.agrega("1000101", 1, "D", M("500"));
        movimientos.agrega("4000101", 1, "H", M("500"));
        movimientos.agrega("1000102", 2, "D", M("200"));
        movimientos.agrega("4000101", 2, "H", M("200"));
        movimientos.agrega("4000101", 13, "D", M("300"));  // closing vouchers
        movimientos.agrega("1000101", 13, "H", M("300"));
        movimientos.agrega("9990101", 2, "D", M("1"));  // not in the chart: left out
    }

    // A balance as the file has it once made debit positive: ini, debe, haber, fin per account.
    static BalanzaLeida Balanza(int mes, std::vector<std::vector<const char*>> filas) {
        BalanzaLeida b;
        b.mes = mes;
        for (auto& f : filas) b.renglones.push_back({f[0], M(f[1]), M(f[2]), M(f[3]), M(f[4])});
        return b;
    }
    static BalanzaLeida Febrero() {
        return Balanza(2, {{"100", "1500", "200", "0", "1700"},
                           {"10001", "1500", "200", "0", "1700"},
                           {"1000101", "1500", "0", "0", "1500"},
                           {"1000102", "0", "200", "0", "200"},
                           {"400", "-1500", "0", "200", "-1700"},
                           {"40001", "-1500", "0", "200", "-1700"},
                           {"4000101", "-1500", "0", "200", "-1700"}});
    }
};

}  // namespace

TEST_F(Conciliacion, BalanzasQueCuadranConLasPolizasNoDanNada) {
    std::vector<BalanzaLeida> balanzas{
        Balanza(13, {{"100", "1700", "0", "300", "1400"},
                     {"10001", "1700", "0", "300", "1400"},
                     {"1000101", "1500", "0", "300", "1200"},
                     {"1000102", "200", "0", "0", "200"},
                     {"400", "-1700", "300", "0", "-1400"},
                     {"40001", "-1700", "300", "0", "-1400"},
                     {"4000101", "-1700", "300", "0", "-1400"}}),
        Febrero(),
        Balanza(1, {{"100", "1000", "500", "0", "1500"},
                    {"10001", "1000", "500", "0", "1500"},
                    {"1000101", "1000", "500", "0", "1500"},
                    {"400", "-1000", "0", "500", "-1500"},
                    {"40001", "-1000", "0", "500", "-1500"},
                    {"4000101", "-1000", "0", "500", "-1500"}}),
    };
    EXPECT_EQ(ConciliaBalanzas(catalogo, iniciales, movimientos, balanzas), std::vector<DiferenciaBalanza>{});
}

TEST_F(Conciliacion, CadaDiferenciaUnaVezConLasCifrasComoLasMuestraElArchivo) {
    BalanzaLeida b = Febrero();
    b.ruta = "bal02.xml";
    b.renglones[0].SaldoIni = M("1400");  // 100: opening differs, closing follows it
    b.renglones[0].SaldoFin = M("1600");
    b.renglones[3].Debe = M("250");  // 1000102: debits differ
    b.renglones[3].SaldoFin = M("250");
    b.renglones[6].SaldoFin = M("-1800");  // 4000101: the file's own arithmetic is off
    b.renglones.erase(b.renglones.begin() + 5);  // 40001 left out
    b.fueraDeCatalogo = {"5000101"};
    auto d = ConciliaBalanzas(catalogo, iniciales, movimientos, {b});
    const std::vector<DiferenciaBalanza> esperadas{
        {"5000101", kFuenteCatalogo, "La cuenta de la balanza de Febrero no existe en el catálogo"},
        {"100", kFuentePolizas,
         "El saldo inicial de la cuenta en la balanza de Febrero es $1,400.00 y según las pólizas es $1,500.00"},
        {"1000102", kFuentePolizas, "Los cargos de la cuenta en la balanza de Febrero suman $250.00 y según las pólizas $200.00"},
        {"4000101", kFuentePolizas,
         "El saldo final de la cuenta en la balanza de Febrero, $1,800.00, no resulta de su saldo inicial, cargos y "
         "abonos: $1,700.00"},
        {"40001", kFuentePolizas,
         "La cuenta no está en la balanza de Febrero; según las pólizas: cargos $0.00, abonos $200.00, saldo final "
         "$1,700.00"},
    };
    EXPECT_EQ(d, esperadas);
    // A debit-positive file shows its figures as it writes them.
    b.signo = SignoBalanza::DeudorPositivo;
    EXPECT_EQ(ConciliaBalanzas(catalogo, iniciales, movimientos, {b})[3].referencia,
              "El saldo final de la cuenta en la balanza de Febrero, -$1,800.00, no resulta de su saldo inicial, "
              "cargos y abonos: -$1,700.00");
}

TEST_F(Conciliacion, ElSignoDeUnArchivoSaleDeSuAritmetica) {
    // Rows as the files write them.
    std::vector<RenglonBalanza> porNaturaleza{{"4000101", M("1000"), M("0"), M("500"), M("1500")},
                                              {"1000101", M("1000"), M("500"), M("0"), M("1500")}};
    std::vector<RenglonBalanza> deudor{{"4000101", M("-1000"), M("0"), M("500"), M("-1500")},
                                       {"40001", M("-1000"), M("0"), M("500"), M("-1500")},
                                       {"400", M("1000"), M("0"), M("500"), M("500")}};  // one row off
    std::vector<RenglonBalanza> sinMovimientoAcreedor{{"4000101", M("-1000"), M("0"), M("0"), M("-1000")}};
    EXPECT_EQ(DeduceSignoBalanza(porNaturaleza, catalogo), SignoBalanza::PorNaturaleza);
    EXPECT_EQ(DeduceSignoBalanza(deudor, catalogo), SignoBalanza::DeudorPositivo);
    EXPECT_EQ(DeduceSignoBalanza(sinMovimientoAcreedor, catalogo), SignoBalanza::PorNaturaleza);
    EXPECT_EQ(SaldoDeudor(M("1000"), "A", SignoBalanza::PorNaturaleza), M("-1000"));
    EXPECT_EQ(SaldoDeudor(M("1000"), "D", SignoBalanza::PorNaturaleza), M("1000"));
    EXPECT_EQ(SaldoDeudor(M("-1000"), "A", SignoBalanza::DeudorPositivo), M("-1000"));
}
