#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/Ajustes.h"
#include "session/Funciones.h"
#include "session/Inicio.h"
#include "session/ProgramaTerminado.h"
#include "store/AltaBase.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

using namespace velmorant;

namespace {

class InicioTest : public ::testing::Test {
protected:
    prueba::AjustesAislados ajustes;
    prueba::CarpetaTemporal dir;
    prueba::InteraccionGuionada ui;
    Sesion s;

    void SetUp() override {
        s.interaccion = &ui;
        s.ClaveAplicacion = kAplicacionAuditoria;
        s.VersionPrograma = VersionDelPrograma();
    }
    std::string base() { return dir.texto() + "base/"; }
    void CreaDemo(std::vector<int> niveles = {3, 2, 2}, std::string separador = "-") {
        CreaBase(base());
        DatosEmpresaNueva d;
        d.nombreCorto = "ACME";
        d.nombre = "Acme, S.A.";
        d.ejercicio = 2023;
        d.formatoCta = "999-99-99";
        d.separador = separador;
        d.niveles = niveles;
        d.catArbol = true;
        d.mesPrevia1 = 6;
        d.mesFinal = 12;
        CreaEmpresa(base(), d);
    }
    void Abre(const std::string& corto, const std::string& anio) {
        GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "RutaAcceso", base());
        GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "EmpresaActual_NombreCorto", corto);
        GuardaAjuste(kAplicacionAuditoria, kSeccionBaseDatos, "EmpresaActual_Ejercicio", anio);
    }
};

const std::string kArchivo = "Empresas.sqlite";

}  // namespace

TEST_F(InicioTest, ResuelveRutaBaseSinRutaGuardadaAbreElDialogoSinPreguntar) {
    CreaBase(base());
    ui.archivos = {base() + kArchivo};
    EXPECT_EQ(ResuelveRutaBase(s, kArchivo, "BaseDatos", "RutaAcceso"), base());
    EXPECT_TRUE(ui.mensajes.empty());
    ASSERT_EQ(ui.filtrosPedidos.size(), 1u);
    EXPECT_EQ(ui.filtrosPedidos[0], kArchivo + "|" + kArchivo);
    // The folder is saved with its trailing separator, not the file.
    EXPECT_EQ(LeeRutaGuardada(s, "BaseDatos", "RutaAcceso"), base());
}

TEST_F(InicioTest, ResuelveRutaBaseConRutaGuardadaValidaNoPregunta) {
    CreaBase(base());
    GuardaAjuste(kAplicacionAuditoria, "BaseDatos", "RutaAcceso", base());
    EXPECT_EQ(ResuelveRutaBase(s, kArchivo, "BaseDatos", "RutaAcceso"), base());
    EXPECT_TRUE(ui.mensajes.empty());
    EXPECT_TRUE(ui.filtrosPedidos.empty());
}

TEST_F(InicioTest, ResuelveRutaBaseConRutaPerdidaPreguntaYRespetaLaRespuesta) {
    CreaBase(base());
    const std::string perdida = dir.texto() + "red/";
    struct Caso {
        bool respuesta;
        std::vector<std::string> archivos;
        std::string esperado;
        bool avisa;
    } casos[] = {
        {false, {}, "", true},                         // No: warning, empty
        {true, {}, "", true},                          // Yes, dialog cancelled: warning, empty
        {true, {dir.texto() + "no/existe.sqlite"}, "", false},  // a path that does not exist: silent
        {true, {base() + kArchivo}, base(), false},    // a good choice is saved and returned
    };
    for (auto& c : casos) {
        GuardaAjuste(kAplicacionAuditoria, "BaseDatos", "RutaAcceso", perdida);
        ui.mensajes.clear();
        ui.respuestas = {c.respuesta};
        ui.archivos = {c.archivos.begin(), c.archivos.end()};
        EXPECT_EQ(ResuelveRutaBase(s, kArchivo, "BaseDatos", "RutaAcceso"), c.esperado);
        ASSERT_GE(ui.mensajes.size(), 1u);
        EXPECT_EQ(ui.mensajes[0].tipo, TipoMensaje::Pregunta);
        EXPECT_EQ(ui.mensajes[0].texto,
                  "Su equipo esta fuera del entorno de red o la ruta de acceso a la base de datos del sistema ha "
                  "cambiado.\r\n\r\nRuta de acceso actual: " + perdida + kArchivo +
                      "\r\n\r\n¿ Desea indicar la ubicación de la base: " + kArchivo + "?");
        bool avisado = ui.mensajes.size() == 2 &&
                       ui.mensajes[1].texto == "Verifique su conexión a la red ó llame a soporte técnico\r";
        EXPECT_EQ(avisado, c.avisa);
    }
    EXPECT_EQ(LeeRutaGuardada(s, "BaseDatos", "RutaAcceso"), base());
}

TEST_F(InicioTest, IniciaSesionLlenaLaEmpresaYElTitulo) {
    CreaDemo();
    Abre("ACME", "2023");
    IniciaSesion(s);
    EXPECT_EQ(s.RutaBase, base());
    EXPECT_EQ(s.RutaEmpresa, base() + "2023_ACME/");
    EXPECT_EQ(s.TituloInicio, "VELMORANT Ver. " + VersionDelPrograma() + " - Acme, S.A. (2023)");
    EXPECT_EQ(s.IdEmpresaActual, 1);
    EXPECT_EQ(s.NumeroNiveles, 3);
    EXPECT_EQ(s.LongitudesNivel, (std::vector<int>{3, 2, 2}));
    EXPECT_EQ(s.SeparadorEmpresa, "-");
    EXPECT_TRUE(s.CatalogoArbol);
    EXPECT_FALSE(s.RellenaCeros);
    EXPECT_EQ(s.UltimoMesImportado, 0);
    EXPECT_EQ(s.MesPrevia1, 6);
    EXPECT_EQ(s.MesFinal, 12);
    EXPECT_TRUE(s.DbEmpresa && s.DbEmpresas);
    EXPECT_EQ(s.NotaSaldosAnioAnterior.rfind("La importación de los saldos del año anterior", 0), 0u);
    EXPECT_NE(s.NotaSaldosAnioAnterior.find("Auditoría.\r\nEn caso"), std::string::npos);
    EXPECT_NE(s.NotaSaldosAnioAnterior.find("'AÑO ANTERIOR FINAL'.\r\n Para más"), std::string::npos);
    EXPECT_TRUE(ui.mensajes.empty());
}

TEST_F(InicioTest, NivelesNulosYSeparadorNuloSeLeenComoVacios) {
    CreaDemo({4, 3, 2, 2});
    {
        BaseDatos e(RutaBaseDatos(base(), kArchivoEmpresas));
        e.ejecuta("UPDATE Empresas SET Separador=NULL, FormatoCta=NULL, Nivel5=0, Nivel6=NULL");
    }
    Abre("ACME", "2023");
    IniciaSesion(s);
    EXPECT_EQ(s.NumeroNiveles, 4);
    EXPECT_EQ(s.LongitudesNivel, (std::vector<int>{4, 3, 2, 2}));
    EXPECT_EQ(s.SeparadorEmpresa, "");
    EXPECT_EQ(s.FormatoCtaEmpresa, "");
}

TEST_F(InicioTest, SinFilaDeEmpresaElTituloNoLlevaEmpresa) {
    CreaDemo();
    {
        BaseDatos e(RutaBaseDatos(base(), kArchivoEmpresas));
        e.ejecuta("DELETE FROM Empresas");
    }
    Abre("ACME", "2023");
    IniciaSesion(s);
    EXPECT_EQ(s.TituloInicio, "VELMORANT Ver. " + VersionDelPrograma());
    EXPECT_EQ(s.IdEmpresaActual, 0);
    EXPECT_EQ(s.LongitudesNivel, std::vector<int>{0});
    EXPECT_EQ(s.AuditoriaActualTexto, "0");
    EXPECT_EQ(s.EjercicioTexto, "");
}

TEST_F(InicioTest, SesionInutilizableTerminaElPrograma) {
    CreaDemo();
    // A year that is not a number.
    Abre("ACME", "dos mil");
    EXPECT_THROW(IniciaSesion(s), ProgramaTerminado);
    ASSERT_FALSE(ui.mensajes.empty());
    EXPECT_EQ(ui.mensajes.back().tipo, TipoMensaje::Critico);

    // A company that is not there.
    Sesion otra;
    otra.interaccion = &ui;
    ui.mensajes.clear();
    Abre("NADIE", "2023");
    EXPECT_THROW(IniciaSesion(otra), ProgramaTerminado);
    ASSERT_EQ(ui.mensajes.size(), 1u);
    EXPECT_EQ(ui.mensajes[0].texto.rfind("Error :  14 ", 0), 0u) << ui.mensajes[0].texto;

    // A corrupt company database.
    std::ofstream(base() + "2023_ACME/ACME_2023.sqlite", std::ios::trunc) << std::string(4096, 'x');
    Sesion tercera;
    tercera.interaccion = &ui;
    ui.mensajes.clear();
    Abre("ACME", "2023");
    EXPECT_THROW(IniciaSesion(tercera), ProgramaTerminado);
    ASSERT_EQ(ui.mensajes.size(), 1u);
    EXPECT_NE(ui.mensajes[0].texto.find("not a database"), std::string::npos) << ui.mensajes[0].texto;
}

TEST_F(InicioTest, UnaEmpresaVaciaODanadaSeReportaYNuncaSeReemplaza) {
    CreaDemo();
    Abre("ACME", "2023");
    const std::string archivo = base() + "2023_ACME/ACME_2023.sqlite";
    struct Caso {
        const char* nombre;
        std::string bytes;  // the file's whole content
        const char* dice;   // part of the message shown
    } casos[] = {
        {"cero bytes", "", "está vacía (0 bytes)"},
        {"basura", std::string(4096, 'x'), "not a database"},
    };
    for (auto& c : casos) {
        std::ofstream(archivo, std::ios::binary | std::ios::trunc) << c.bytes;
        Sesion otra;
        otra.interaccion = &ui;
        ui.mensajes.clear();
        EXPECT_THROW(IniciaSesion(otra), ProgramaTerminado) << c.nombre;
        ASSERT_EQ(ui.mensajes.size(), 1u) << c.nombre;
        EXPECT_NE(ui.mensajes[0].texto.find(c.dice), std::string::npos) << ui.mensajes[0].texto;
        std::ifstream f(archivo, std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(f), {}), c.bytes) << c.nombre << ": the file was touched";
    }
    // A database without any company table is not taken for a new company.
    std::filesystem::remove(archivo);
    { BaseDatos otra(archivo, BaseDatos::Modo::Crear); otra.ejecutaScript("CREATE TABLE Otra (x)"); }
    ui.mensajes.clear();
    Sesion cuarta;
    cuarta.interaccion = &ui;
    EXPECT_THROW(IniciaSesion(cuarta), ProgramaTerminado);
    ASSERT_EQ(ui.mensajes.size(), 1u);
    EXPECT_NE(ui.mensajes[0].texto.find("no contiene las tablas de una empresa"), std::string::npos);
    BaseDatos revisa(archivo, BaseDatos::Modo::SoloLectura);
    EXPECT_FALSE(revisa.existeTabla("Cuentas"));
}

TEST_F(InicioTest, UnaSesionQueSoloLeeNoEsperaAQuienEscribe) {
    CreaDemo();
    Abre("ACME", "2023");
    // Another program in the middle of a write on the company.
    BaseDatos escritor(base() + "2023_ACME/ACME_2023.sqlite");
    Transaccion t(escritor);
    escritor.ejecuta("INSERT INTO Cuentas (Cuenta) VALUES ('999')");
    IniciaSesion(s);
    ASSERT_TRUE(s.DbEmpresa);
    EXPECT_EQ(s.DbEmpresa->escalar("SELECT COUNT(*) FROM Cuentas").entero(), 0);
    EXPECT_TRUE(ui.mensajes.empty());
}

TEST_F(InicioTest, RutaDeLaEmpresaConAnioDeCuatroCifras) {
    EXPECT_EQ(RutaEmpresa("/b/", 2023, "ACME"), "/b/2023_ACME/");
    EXPECT_EQ(RutaEmpresa("/b/", 999, "X"), "/b/0999_X/");
    EXPECT_EQ(ArchivoEmpresa("/b/0999_X/", "X", 999), "/b/0999_X/X_999.sqlite");
}
