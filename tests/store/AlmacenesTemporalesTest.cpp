#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>

#include "platform/Ajustes.h"
#include "store/AlmacenesTemporales.h"
#include "support/Entorno.h"

using namespace velmorant;
using namespace velmorant::prueba;
namespace fs = std::filesystem;

namespace {

// A session with a company connection over an empty database in a private folder.
class AlmacenesTemporales : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    Sesion s;

    AlmacenesTemporales() {
        s.RutaEmpresa = carpeta.texto();
        s.DbEmpresa = std::make_unique<BaseDatos>(carpeta.ruta() / "ACME_2023.sqlite", BaseDatos::Modo::Crear);
    }

    bool adjunto(const std::string& alias) {
        return !s.DbEmpresa->escalar("SELECT name FROM pragma_database_list WHERE name = ?", alias).esNulo();
    }
    static long filas(const std::string& ruta, const std::string& tabla) {
        BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
        return static_cast<long>(db.escalar("SELECT count(*) FROM \"" + tabla + "\"").entero());
    }
    static void agregaFila(const std::string& ruta, const std::string& tabla, const std::string& campo) {
        BaseDatos db(ruta);
        db.ejecuta("INSERT INTO \"" + tabla + "\" (\"" + campo + "\") VALUES ('x')");
    }
};

// "Campo:TIPO ..." as SQLite reports the table, and "Indice(c1,c2) ..."
// with the short index names, in name order.
std::string Campos(BaseDatos& db, const std::string& tabla) {
    std::string r;
    auto c = db.consulta("SELECT name, type FROM pragma_table_info(?) ORDER BY cid", tabla);
    for (c.primero(); !c.eof(); c.siguiente())
        r += (r.empty() ? "" : " ") + c.campo(0).texto() + ":" + c.campo(1).texto();
    return r;
}

std::string Indices(BaseDatos& db, const std::string& tabla) {
    std::string r;
    auto l = db.consulta("SELECT name, \"unique\" FROM pragma_index_list(?) ORDER BY name", tabla);
    for (l.primero(); !l.eof(); l.siguiente()) {
        EXPECT_EQ(l.campo(1).entero(), 0) << "index " << l.campo(0).texto() << " must not be unique";
        std::string nombre = l.campo(0).texto().substr(tabla.size() + 1), cols;
        auto c = db.consulta("SELECT name FROM pragma_index_info(?) ORDER BY seqno", l.campo(0).texto());
        for (c.primero(); !c.eof(); c.siguiente()) cols += (cols.empty() ? "" : ",") + c.campo(0).texto();
        r += (r.empty() ? "" : " ") + nombre + "(" + cols + ")";
    }
    return r;
}

const std::string kCamposCedula =
    "IdCriterio:INTEGER IdPoliza:INTEGER Poliza:TEXT Tipo:TEXT Fecha:TEXT Cuenta:TEXT Referencia:TEXT "
    "TipoMov:TEXT Importe:INTEGER Modificado:INTEGER RefModificada:TEXT AplicaIVA:INTEGER PorIVA:INTEGER "
    "IVA:INTEGER AplicaRetISR:INTEGER TasaRetISR:REAL ImpteRetISR:INTEGER AplicaRetIVA:INTEGER TasaRetIVA:REAL "
    "ImpteRetIVA:INTEGER Marca1:TEXT Marca2:TEXT Marca3:TEXT Marca4:TEXT Marca5:TEXT Marca6:TEXT Marca7:TEXT "
    "Observaciones:TEXT Sugerencias:TEXT";

struct CasoAlmacen {
    std::string nombre;                  // base name of the file
    std::function<void(Sesion&)> crea;
    std::string tabla;
    std::string campos;
    std::string indices;
    bool enDatos = false;                // lives in the program's data folder
};

const std::vector<CasoAlmacen>& Casos() {
    static const std::vector<CasoAlmacen> casos = {
        {"CuentasTmp", CreaCuentasTmp, "Cuentas",
         "Cuenta:TEXT CuentaSinSeparadores:TEXT Nivel:INTEGER CuentaAcumulativa:TEXT Tipo:TEXT Descripcion:TEXT "
         "Saldo:INTEGER SaldoFinAnioAnt:INTEGER Naturaleza:TEXT Revisado:INTEGER",
         "Cuenta(Cuenta) CuentaSinSeparadores(CuentaSinSeparadores)"},
        {"Polizas_Tmp", CreaPolizasTmp, "Polizas_Tmp",
         "IdPoliza:INTEGER Poliza:TEXT Tipo:TEXT Fecha:TEXT Concepto:TEXT Poliza_Deshabilitada:INTEGER "
         "Poliza_Mes13:INTEGER Poliza_Ajuste:INTEGER Cuadrada:INTEGER Revisado:INTEGER",
         "IdPoliza(IdPoliza)"},
        {"Polizas_Tmp", CreaPolizasTmpPorIdentidad, "Polizas_Tmp",
         "IdPoliza:INTEGER Poliza:TEXT Tipo:TEXT Fecha:TEXT Concepto:TEXT Poliza_Deshabilitada:INTEGER "
         "Poliza_Mes13:INTEGER Poliza_Ajuste:INTEGER Cuadrada:INTEGER Revisado:INTEGER",
         "IdPoliza(Poliza,Tipo,Fecha)"},
        {"Polizas_Detalle_Tmp", CreaPolizasDetalleTmp, "Polizas_Detalle_Tmp",
         "IdPoliza:INTEGER Cuenta:TEXT TipoMov:TEXT Importe:INTEGER Referencia:TEXT Partida:INTEGER",
         "IdPoliza(IdPoliza)"},
        {"InconsisImpTmp", CreaInconsisImpTmp, "InconsisImpTmp",
         "Referencia:TEXT FuenteError:TEXT ClasifError:TEXT Poliza:TEXT Tipo:TEXT Fecha:TEXT Cuenta:TEXT "
         "Cuenta_Fmtda:TEXT",
         ""},
        {"InconsisImpTmpDet", CreaInconsisImpTmpDet, "InconsisImpTmpDet",
         "IdCedAnalitica:INTEGER " + kCamposCedula + " MovtoExistente:INTEGER", "Cuenta(Cuenta)"},
        {"CedAnaliticaTmp", CreaCedAnaliticaTmp, "CedAnaliticaTmp",
         "IdCedAnalitica:INTEGER IdCedAnaliticaAnt:INTEGER " + kCamposCedula +
             " InfoAdd1:TEXT InfoAdd2:TEXT Notas:TEXT VerObs:INTEGER MovtoExistente:INTEGER",
         ""},
        {"CedAnaliticaTmp", CreaCedAnaliticaTmp, "UUIDAnaliticaTmp", "IdCedAnalitica:INTEGER UUID:TEXT", ""},
        {"SeleccionDetalleTmp", CreaSeleccionDetalleTmp, "SeleccionDetalleTmp",
         "Cuenta:TEXT SaldoFin:INTEGER ValAbsSaldoFin:INTEGER Naturaleza:TEXT SaldoContraNat:INTEGER "
         "Seleccionado:INTEGER ConMovtos:INTEGER",
         "Cuenta(Cuenta)"},
        {"SeleccPreviaCtasBalTmp", CreaSeleccPreviaCtasBalTmp, "SeleccPreviaCtasBalTmp",
         "IdCriterio:INTEGER CtaIntegracion:TEXT Cuenta:TEXT Saldo:INTEGER MesRevision:INTEGER", "Cuenta(Cuenta)"},
        {"SelecPolizas_DetalleTmp", CreaSelecPolizasDetalleTmp, "SelecPolizas_DetalleTmp",
         "IdPoliza:INTEGER Cuenta:TEXT TipoMov:TEXT Importe:INTEGER Referencia:TEXT ImporteAbs:INTEGER "
         "NumMesFechaPol:INTEGER MovRevisado:INTEGER Poliza:TEXT Tipo:TEXT Fecha:TEXT SaldoContraNat:INTEGER "
         "MovDeRevision:INTEGER",
         "", true},
    };
    return casos;
}

TEST_F(AlmacenesTemporales, CadaCreadorHaceExactamenteSusCamposEIndices) {
    for (auto& c : Casos()) {
        SCOPED_TRACE(c.nombre + "." + c.tabla);
        c.crea(s);
        std::string ruta = c.enDatos ? CarpetaDatosPrograma() + c.nombre + ".sqlite" : carpeta.texto() + c.nombre + ".sqlite";
        ASSERT_TRUE(fs::exists(ruta));
        EXPECT_EQ(fs::exists(carpeta.texto() + c.nombre + ".sqlite"), !c.enDatos);
        BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
        EXPECT_EQ(Campos(db, c.tabla), c.campos);
        EXPECT_EQ(Indices(db, c.tabla), c.indices);
    }
}

TEST_F(AlmacenesTemporales, UnCreadorBorraElAlmacenAnteriorSalvoElDeCedulasPerdidas) {
    for (auto& c : Casos()) {
        SCOPED_TRACE(c.nombre + "." + c.tabla);
        std::string ruta = c.enDatos ? RutaSelecPolizasDetalleTmp() : RutaAlmacen(s, c.nombre);
        c.crea(s);
        std::string ultimo = c.campos.substr(c.campos.rfind(' ') + 1);
        ultimo = ultimo.substr(0, ultimo.find(':'));
        agregaFila(ruta, c.tabla, ultimo);
        agregaFila(ruta, c.tabla, ultimo);
        c.crea(s);  // a second run
        EXPECT_EQ(filas(ruta, c.tabla), c.nombre == kInconsisImpTmpDet ? 2 : 0);
    }
}

TEST_F(AlmacenesTemporales, UnLogDeCedulasDanadoSeApartaConFechaYSeHaceDeNuevo) {
    InteraccionGuionada ui;
    s.interaccion = &ui;
    const std::string ruta = RutaAlmacen(s, kInconsisImpTmpDet);
    auto lee = [](const std::string& r) {
        std::ifstream f(r, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(f), {});
    };
    // A good log whose pages past the header are then overwritten.
    CreaInconsisImpTmpDet(s);
    for (int i = 0; i < 200; ++i) agregaFila(ruta, kInconsisImpTmpDet, "Referencia");
    std::string paginas = lee(ruta);
    ASSERT_GT(paginas.size(), 8192u);
    std::fill(paginas.begin() + 4096, paginas.end(), '\x5A');
    struct Caso {
        const char* nombre;
        std::string bytes;
    } casos[] = {{"no es una base", std::string(3000, 'x')}, {"paginas danadas", paginas}};
    for (auto& c : casos) {
        SCOPED_TRACE(c.nombre);
        for (auto& viejo : fs::directory_iterator(carpeta.ruta()))
            if (viejo.path().filename().string().find("_danado_") != std::string::npos) fs::remove(viejo.path());
        std::ofstream(ruta, std::ios::binary | std::ios::trunc) << c.bytes;
        ui.mensajes.clear();
        CreaInconsisImpTmpDet(s);
        EXPECT_TRUE(AbreAlmacen(s, kInconsisImpTmpDet));
        EXPECT_EQ(filas(ruta, kInconsisImpTmpDet), 0);
        CierraAlmacen(s, kInconsisImpTmpDet);
        std::vector<std::string> apartados;
        for (auto& f : fs::directory_iterator(carpeta.ruta()))
            if (f.path().filename().string().rfind("InconsisImpTmpDet_danado_", 0) == 0)
                apartados.push_back(f.path().string());
        ASSERT_EQ(apartados.size(), 1u);
        EXPECT_EQ(lee(apartados[0]), c.bytes) << "the damaged file is kept as it was";
        ASSERT_EQ(ui.mensajes.size(), 1u);
        EXPECT_EQ(ui.mensajes[0].tipo, TipoMensaje::Aviso);
        EXPECT_NE(ui.mensajes[0].texto.find(fs::path(apartados[0]).filename().string()), std::string::npos)
            << ui.mensajes[0].texto;
    }
    // A sound log, even one in use by another connection, stays where it is.
    agregaFila(ruta, kInconsisImpTmpDet, "Referencia");
    BaseDatos otro(ruta);
    Transaccion t(otro);
    otro.ejecuta("INSERT INTO InconsisImpTmpDet (Referencia) VALUES ('y')");
    ui.mensajes.clear();
    EXPECT_EQ(ApartaAlmacenDanado(s, kInconsisImpTmpDet), "");
    EXPECT_TRUE(ui.mensajes.empty());
}

TEST_F(AlmacenesTemporales, LosIndicesAdmitenDuplicadosYElContadorNoRepiteElValorCopiado) {
    CreaCuentasTmp(s);
    ASSERT_TRUE(AbreCuentasTmp(s));
    for (int i = 0; i < 2; ++i)
        s.DbCuentasTmp->ejecuta("INSERT INTO CuentasTmp.Cuentas (Cuenta, CuentaSinSeparadores) VALUES (?, ?)",
                                "100-01", "10001");
    EXPECT_EQ(s.DbCuentasTmp->escalar("SELECT count(*) FROM CuentasTmp.Cuentas WHERE Cuenta='100-01'").entero(), 2);

    CreaCedAnaliticaTmp(s);
    ASSERT_TRUE(AbreAlmacen(s, kCedAnaliticaTmp));
    s.DbEmpresa->ejecuta("INSERT INTO CedAnaliticaTmp (IdCedAnaliticaAnt, Cuenta) VALUES (?, ?)", 57, "10001");
    auto c = s.DbEmpresa->consulta("SELECT IdCedAnalitica, IdCedAnaliticaAnt FROM CedAnaliticaTmp");
    EXPECT_EQ(c["IdCedAnalitica"].entero(), 1);
    EXPECT_EQ(c["IdCedAnaliticaAnt"].entero(), 57);
}

TEST_F(AlmacenesTemporales, AbrirAdjuntaALaConexionDeLaEmpresaYCerrarLaSepara) {
    CreaPolizasTmp(s);
    CreaPolizasDetalleTmp(s);
    CreaInconsisImpTmp(s);
    ASSERT_TRUE(AbrePolizasTmp(s));
    ASSERT_TRUE(AbreInconsistencias(s));
    EXPECT_EQ(s.DbPolizasTmp, s.DbEmpresa.get());
    EXPECT_EQ(s.DbPolizasDetalleTmp, s.DbEmpresa.get());
    EXPECT_EQ(s.DbInconsistencias, s.DbEmpresa.get());
    s.DbPolizasTmp->ejecuta("INSERT INTO Polizas_Tmp (IdPoliza, Poliza) VALUES (1, 'P1')");
    EXPECT_EQ(filas(RutaAlmacen(s, kPolizasTmp), "Polizas_Tmp"), 1);

    CierraPolizasTmp(s);
    CierraInconsistencias(s);
    EXPECT_EQ(s.DbPolizasTmp, nullptr);
    EXPECT_EQ(s.DbPolizasDetalleTmp, nullptr);
    EXPECT_EQ(s.DbInconsistencias, nullptr);
    for (auto a : {kPolizasTmp, kPolizasDetalleTmp, kInconsisImpTmp}) EXPECT_FALSE(adjunto(a)) << a;
}

TEST_F(AlmacenesTemporales, AbrirFallaSinArchivoSinEmpresaOConUnArchivoQueNoEsAlmacen) {
    EXPECT_FALSE(AbreInconsistencias(s));
    EXPECT_FALSE(fs::exists(RutaAlmacen(s, kInconsisImpTmp))) << "an open must not create the file";

    CreaPolizasTmp(s);  // the lines' store is missing: both stay closed
    EXPECT_FALSE(AbrePolizasTmp(s));
    EXPECT_EQ(s.DbPolizasTmp, nullptr);
    EXPECT_FALSE(adjunto(kPolizasTmp));

    std::ofstream(RutaAlmacen(s, kCuentasTmp)) << "esto no es una base de datos, pero es bastante largo para parecerlo";
    EXPECT_FALSE(AbreCuentasTmp(s));
    EXPECT_EQ(s.DbCuentasTmp, nullptr);
    EXPECT_FALSE(adjunto(kCuentasTmp));

    CreaInconsisImpTmp(s);
    s.DbEmpresa.reset();
    EXPECT_FALSE(AbreInconsistencias(s));
}

TEST_F(AlmacenesTemporales, CerrarDentroDeUnaTransaccionDifiereLaSeparacion) {
    CreaInconsisImpTmp(s);
    ASSERT_TRUE(AbreInconsistencias(s));
    {
        Transaccion t(*s.DbEmpresa);
        s.DbInconsistencias->ejecuta("INSERT INTO InconsisImpTmp (Referencia) VALUES ('a')");
        CierraInconsistencias(s);
        EXPECT_EQ(s.DbInconsistencias, nullptr);
        EXPECT_TRUE(adjunto(kInconsisImpTmp));
        ASSERT_TRUE(AbreInconsistencias(s)) << "reopening inside the transaction reuses the attachment";
        EXPECT_EQ(s.DbInconsistencias, s.DbEmpresa.get());
        CierraInconsistencias(s);
        EXPECT_THROW(CreaInconsisImpTmp(s), std::runtime_error) << "a store in use cannot be replaced";
        t.confirma();
    }
    EXPECT_TRUE(adjunto(kInconsisImpTmp));
    CreaPolizasTmp(s);
    CreaPolizasDetalleTmp(s);
    ASSERT_TRUE(AbrePolizasTmp(s));  // the next open outside a transaction detaches the pending one
    EXPECT_FALSE(adjunto(kInconsisImpTmp));
    EXPECT_EQ(filas(RutaAlmacen(s, kInconsisImpTmp), "InconsisImpTmp"), 1);
}

TEST_F(AlmacenesTemporales, RecrearUnAlmacenAbiertoLoCierraPrimero) {
    CreaInconsisImpTmp(s);
    ASSERT_TRUE(AbreInconsistencias(s));
    s.DbInconsistencias->ejecuta("INSERT INTO InconsisImpTmp (Referencia) VALUES ('a')");
    CreaInconsisImpTmp(s);
    EXPECT_EQ(s.DbInconsistencias, nullptr);
    EXPECT_FALSE(adjunto(kInconsisImpTmp));
    ASSERT_TRUE(AbreInconsistencias(s));
    EXPECT_EQ(s.DbInconsistencias->escalar("SELECT count(*) FROM InconsisImpTmp").entero(), 0);
}

TEST_F(AlmacenesTemporales, HayInconsistenciasCuentaLasFilasDeCadaLog) {
    EXPECT_FALSE(HayInconsistencias(carpeta.texto()));
    EXPECT_FALSE(HayInconsistenciasDet(carpeta.ruta().string()));
    CreaInconsisImpTmp(s);
    CreaInconsisImpTmpDet(s);
    EXPECT_FALSE(HayInconsistencias(carpeta.texto()));
    EXPECT_FALSE(HayInconsistenciasDet(carpeta.texto()));
    ASSERT_TRUE(AbreInconsistencias(s));  // a second connection sees what the run wrote
    s.DbInconsistencias->ejecuta("INSERT INTO InconsisImpTmp (Referencia) VALUES ('a')");
    EXPECT_TRUE(HayInconsistencias(carpeta.texto()));
    EXPECT_FALSE(HayInconsistenciasDet(carpeta.texto()));
    agregaFila(RutaAlmacen(s, kInconsisImpTmpDet), "InconsisImpTmpDet", "Cuenta");
    EXPECT_TRUE(HayInconsistenciasDet(carpeta.ruta().string()));
}

TEST_F(AlmacenesTemporales, BorraTemporalesConservaLosLogsConFilas) {
    struct Caso {
        bool conFilasLog, conFilasDet;
    };
    for (Caso caso : {Caso{false, false}, Caso{true, false}, Caso{false, true}, Caso{true, true}}) {
        SCOPED_TRACE(std::to_string(caso.conFilasLog) + std::to_string(caso.conFilasDet));
        for (auto& c : Casos()) c.crea(s);
        for (auto viejo : {"SeleccionMasterTmp", "PolizaDetalleMovsSelecTmp", "PolizasMovsSelecTmp"})
            std::ofstream(RutaAlmacen(s, viejo)) << "x";
        std::ofstream(RutaAlmacen(s, kCuentasTmp) + "-journal") << "x";
        ASSERT_TRUE(AbreInconsistencias(s));
        ASSERT_TRUE(AbreCuentasTmp(s));
        if (caso.conFilasLog) s.DbInconsistencias->ejecuta("INSERT INTO InconsisImpTmp (Referencia) VALUES ('a')");
        if (caso.conFilasDet) agregaFila(RutaAlmacen(s, kInconsisImpTmpDet), "InconsisImpTmpDet", "Cuenta");

        BorraTemporales(s);

        EXPECT_EQ(s.DbInconsistencias, nullptr);
        EXPECT_EQ(s.DbCuentasTmp, nullptr);
        EXPECT_EQ(fs::exists(RutaAlmacen(s, kInconsisImpTmp)), caso.conFilasLog);
        EXPECT_EQ(fs::exists(RutaAlmacen(s, kInconsisImpTmpDet)), caso.conFilasDet);
        EXPECT_TRUE(fs::exists(RutaAlmacen(s, kSeleccPreviaCtasBalTmp)));
        EXPECT_FALSE(fs::exists(RutaSelecPolizasDetalleTmp()));
        std::vector<std::string> quedan;
        for (auto& e : fs::directory_iterator(carpeta.ruta())) quedan.push_back(e.path().filename().string());
        std::sort(quedan.begin(), quedan.end());
        std::vector<std::string> esperados{"ACME_2023.sqlite"};
        if (caso.conFilasLog) esperados.push_back("InconsisImpTmp.sqlite");
        if (caso.conFilasDet) esperados.push_back("InconsisImpTmpDet.sqlite");
        esperados.push_back("SeleccPreviaCtasBalTmp.sqlite");
        EXPECT_EQ(quedan, esperados);
        if (caso.conFilasDet) fs::remove(RutaAlmacen(s, kInconsisImpTmpDet));
    }
}

TEST_F(AlmacenesTemporales, BorraTemporalesDentroDeUnaTransaccionDejaLoQueSigueAdjunto) {
    CreaCuentasTmp(s);
    CreaPolizasTmp(s);
    ASSERT_TRUE(AbreCuentasTmp(s));
    Transaccion t(*s.DbEmpresa);
    s.DbCuentasTmp->ejecuta("INSERT INTO CuentasTmp.Cuentas (Cuenta) VALUES ('1')");
    BorraTemporales(s);
    EXPECT_EQ(s.DbCuentasTmp, nullptr);
    EXPECT_TRUE(fs::exists(RutaAlmacen(s, kCuentasTmp)));
    EXPECT_FALSE(fs::exists(RutaAlmacen(s, kPolizasTmp)));
}

}  // namespace
