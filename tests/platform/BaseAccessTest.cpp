#include <gtest/gtest.h>

#include <cmath>

#include "platform/ErrorLectura.h"
#include "platform/TablasDbfPrueba.h"
#include "platform/fuentes/BaseAccess.h"

using namespace velmorant;
using namespace velmorant::prueba;

TEST(BaseAccess, TiposDeColumnaYConversiones) {
    // No Debian tool writes an Access file, so the mapping is tested on the
    // values mdbtools hands over; the loader only moves them.
    EXPECT_EQ(AlmacenColumnaAccess(kJetSiNo, 0), AlmacenColumna::Logico);
    EXPECT_EQ(AlmacenColumnaAccess(kJetByte, 0), AlmacenColumna::Entero);
    EXPECT_EQ(AlmacenColumnaAccess(kJetEnteroLargo, 0), AlmacenColumna::Entero);
    EXPECT_EQ(AlmacenColumnaAccess(kJetMoneda, 0), AlmacenColumna::Diezmilesimas);
    EXPECT_EQ(AlmacenColumnaAccess(kJetDecimal, 0), AlmacenColumna::Entero);
    EXPECT_EQ(AlmacenColumnaAccess(kJetDecimal, 2), AlmacenColumna::Diezmilesimas);
    EXPECT_EQ(AlmacenColumnaAccess(kJetDecimal, 6), AlmacenColumna::Decimal);
    EXPECT_EQ(AlmacenColumnaAccess(kJetSimple, 0), AlmacenColumna::Real);
    EXPECT_EQ(AlmacenColumnaAccess(kJetFechaHora, 0), AlmacenColumna::FechaHora);
    EXPECT_EQ(AlmacenColumnaAccess(kJetMemo, 0), AlmacenColumna::Texto);
    EXPECT_EQ(AlmacenColumnaAccess(kJetIdReplica, 0), AlmacenColumna::Texto);
    EXPECT_EQ(AlmacenColumnaAccess(kJetOle, 0), AlmacenColumna::Binario);

    using A = AlmacenColumna;
    EXPECT_EQ(ValorAccessDesdeTexto(A::Diezmilesimas, "1234.5600"), Valor(std::int64_t{12345600}));
    EXPECT_EQ(ValorAccessDesdeTexto(A::Diezmilesimas, "-922337203685477.5807"), Valor(-INT64_MAX));
    EXPECT_EQ(ValorAccessDesdeTexto(A::Diezmilesimas, "922337203685477.5808"), std::nullopt);
    EXPECT_EQ(ValorAccessDesdeTexto(A::Decimal, "1.1234560"), Valor("1.123456"));
    EXPECT_EQ(ValorAccessDesdeTexto(A::Entero, "-32768"), Valor(-32768));
    EXPECT_EQ(ValorAccessDesdeTexto(A::Entero, "99999999999999999999"), std::nullopt);
    EXPECT_EQ(ValorAccessDesdeTexto(A::Logico, "1"), Valor(true));
    EXPECT_EQ(ValorAccessDesdeTexto(A::Logico, "0"), Valor(false));
    EXPECT_EQ(ValorAccessDesdeTexto(A::Texto, "Ñandú"), Valor("Ñandú"));
    EXPECT_EQ(ValorAccessDesdeTexto(A::Texto, ""), Valor());
    EXPECT_EQ(ValorAccessDesdeTexto(A::Binario, "0x0102"), Valor());

    EXPECT_EQ(FechaHoraDesdeSerial(0), "1899-12-30");
    EXPECT_EQ(FechaHoraDesdeSerial(45000.5), "2023-03-15 12:00:00");
    EXPECT_EQ(FechaHoraDesdeSerial(-1.25), "1899-12-29 06:00:00");  // the fraction counts forward
    EXPECT_EQ(FechaHoraDesdeSerial(45000.0 + 86399.6 / 86400), "2023-03-16");  // rounds to the next midnight
    EXPECT_EQ(FechaHoraDesdeSerial(45000.0 + 3723.0 / 86400), "2023-03-15 01:02:03");
    EXPECT_EQ(FechaHoraDesdeSerial(2958465.5), "9999-12-31 12:00:00");
    EXPECT_EQ(FechaHoraDesdeSerial(-657434), "0100-01-01");
    EXPECT_EQ(FechaHoraDesdeSerial(2958466), std::nullopt);
    EXPECT_EQ(FechaHoraDesdeSerial(-657435), std::nullopt);
    EXPECT_EQ(FechaHoraDesdeSerial(std::nan("")), std::nullopt);
}

TEST(BaseAccess, ArchivoQueNoSePuedeLeerLoNombra) {
    CarpetaTemporal c;
    std::string texto = c.texto() + "NO.MDB";
    EscribeBytes(texto, std::string(8192, 'x'));
    BaseDatos memoria;
    for (const auto& ruta : {texto, c.texto() + "FALTA.MDB"}) {
        try {
            CargaBaseAccess(memoria, ruta, {"Polizas"});
            ADD_FAILURE() << ruta << " se leyó";
        } catch (const ErrorLectura& e) {
            EXPECT_EQ(e.archivo(), ruta);
            EXPECT_NE(std::string(e.what()).find(ruta), std::string::npos) << e.what();
        }
    }
    EXPECT_FALSE(memoria.existeTabla("Polizas"));
}
