#include "importers/Marco.h"

#include <gtest/gtest.h>

#include <fstream>

#include "platform/Ajustes.h"
#include "session/Inicio.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

namespace velmorant {
namespace {

// Records the folder each dialog opened in.
class InteraccionConCarpeta : public prueba::InteraccionGuionada {
public:
    std::string eligeArchivoEn(const std::string& filtro, const std::string& titulo,
                               const std::string& carpeta) override {
        carpetas.push_back(carpeta);
        titulos.push_back(titulo);
        return eligeArchivo(filtro, titulo);
    }
    std::vector<std::string> carpetas, titulos;
};

class MarcoTest : public ::testing::Test {
protected:
    void SetUp() override {
        s.VersionPrograma = "1.0.0";
        s.interaccion = &ui;
        s.RutaBase = dir.texto() + "base/";
        std::filesystem::create_directories(s.RutaBase);
    }
    std::string Archivo(const std::string& relativo) {
        auto ruta = dir.ruta() / relativo;
        std::filesystem::create_directories(ruta.parent_path());
        std::ofstream(ruta) << "x\n";
        return ruta.string();
    }
    std::string Guardada(const std::string& clave) { return LeeAjuste("VELMORANT", "Configuracion", clave, ""); }

    prueba::AjustesAislados ajustes;
    prueba::CarpetaTemporal dir;
    InteraccionConCarpeta ui;
    Sesion s;
    const SelectorArchivo catalogo{"Búsqueda del Archivo *.TXT - Catálogo de cuentas", "*.txt|*.txt", "ImpCatalogo"};
};

TEST_F(MarcoTest, SelectorAbreEnLaCarpetaGuardadaYGuardaLaDelArchivoElegido) {
    std::string elegido = Archivo("clientes/acme/catalogo.txt");
    GuardaAjuste("VELMORANT", "Configuracion", "ImpCatalogo", dir.texto() + "clientes/");
    ui.archivos = {elegido};
    EXPECT_EQ(SeleccionaArchivo(s, catalogo), elegido);
    ASSERT_EQ(ui.carpetas.size(), 1u);
    EXPECT_EQ(ui.carpetas[0], dir.texto() + "clientes/");
    EXPECT_EQ(ui.titulos[0], catalogo.titulo);
    EXPECT_EQ(ui.filtrosPedidos[0], "*.txt|*.txt");
    // The folder of the file, with its separator, under the picker's key only.
    EXPECT_EQ(Guardada("ImpCatalogo"), dir.texto() + "clientes/acme/");
    EXPECT_EQ(Guardada("ImpSI"), "");
}

TEST_F(MarcoTest, SelectorSinCarpetaGuardadaOConCarpetaPerdidaAbreEnRutaBase) {
    for (std::string guardada : {std::string(), dir.texto() + "ya-no-existe/"}) {
        GuardaAjuste("VELMORANT", "Configuracion", "ImpCatalogo", guardada);
        ui.carpetas.clear();
        SeleccionaArchivo(s, catalogo);
        ASSERT_EQ(ui.carpetas.size(), 1u);
        EXPECT_EQ(ui.carpetas[0], s.RutaBase) << guardada;
    }
}

TEST_F(MarcoTest, CancelarElSelectorNoCambiaNada) {
    GuardaAjuste("VELMORANT", "Configuracion", "ImpCatalogo", dir.texto());
    EXPECT_EQ(SeleccionaArchivo(s, catalogo), "");
    EXPECT_EQ(Guardada("ImpCatalogo"), dir.texto());
    EXPECT_TRUE(ui.mensajes.empty());
}

TEST_F(MarcoTest, UnArchivoNoSirveADosMeses) {
    std::vector<std::string> elegidas(12);
    elegidas[0] = "/datos/pol_ene.txt";
    EXPECT_FALSE(ArchivoYaElegido(s, "/datos/pol_feb.txt", elegidas));
    EXPECT_FALSE(ArchivoYaElegido(s, "", elegidas));  // empty rows are not a match
    EXPECT_TRUE(ui.mensajes.empty());
    EXPECT_TRUE(ArchivoYaElegido(s, "/datos/pol_ene.txt", elegidas));
    ASSERT_EQ(ui.mensajes.size(), 1u);
    EXPECT_EQ(ui.mensajes[0].tipo, TipoMensaje::Aviso);
    EXPECT_EQ(ui.mensajes[0].texto, "El archivo ya ha sido seleccionado\r");
}

TEST_F(MarcoTest, ClicEnLaCasillaDelMes) {
    EXPECT_EQ(ClicMes(s, true, "/datos/pol_ene.txt"), EfectoMarcaMes::Nada);
    EXPECT_EQ(ClicMes(s, false, "/datos/pol_ene.txt"), EfectoMarcaMes::LimpiaRuta);
    EXPECT_TRUE(ui.mensajes.empty());
    EXPECT_EQ(ClicMes(s, true, ""), EfectoMarcaMes::Desmarca);
    ASSERT_EQ(ui.mensajes.size(), 1u);
    EXPECT_EQ(ui.mensajes[0].texto, "Especifique por favor el archivo que contiene la información a importar");
}

TEST(MarcadorMes, SeEncuentraEnElNombreDeEnero) {
    using T = MarcadorMes::Tipo;
    struct Caso {
        const char* nombre;
        T tipo;
        const char *prefijo, *marcador, *resto, *extension;
        const char* marzo;
    };
    const Caso casos[] = {
        {"pol_ene.xls", T::Abreviatura, "pol_", "ene", "", ".xls", "pol_MZO.xls"},
        {"POLIZAS ENERO 2023.txt", T::Nombre, "POLIZAS ", "ENERO", " 2023", ".txt", "POLIZAS MARZO 2023.txt"},
        {"Pol01.txt", T::Digitos, "Pol", "01", "", ".txt", "Pol03.txt"},
        {"Poliza1_2023.txt", T::Digitos, "Poliza", "1", "_2023", ".txt", "Poliza03_2023.txt"},
        {"diario.ene.txt", T::Abreviatura, "diario.", "ene", "", ".txt", "diario.MZO.txt"},
    };
    for (const auto& c : casos) {
        auto m = BuscaMarcadorMes(c.nombre);
        ASSERT_TRUE(m) << c.nombre;
        EXPECT_EQ(m->tipo, c.tipo) << c.nombre;
        EXPECT_EQ(m->prefijo, c.prefijo) << c.nombre;
        EXPECT_EQ(m->marcador, c.marcador) << c.nombre;
        EXPECT_EQ(m->resto, c.resto) << c.nombre;
        EXPECT_EQ(m->extension, c.extension) << c.nombre;
        EXPECT_EQ(NombreArchivoDelMes(*m, 3), c.marzo) << c.nombre;
    }
    for (const char* sinMarcador : {"polizas.txt", "enero", "pol_ene", "libro.ene", ".txt"})
        EXPECT_FALSE(BuscaMarcadorMes(sinMarcador)) << sinMarcador;
}

TEST(MarcadorMes, NombresDeCadaMes) {
    auto abrev = *BuscaMarcadorMes("p_ene.txt");
    auto nombre = *BuscaMarcadorMes("p_enero.txt");
    auto digitos = *BuscaMarcadorMes("p01.txt");
    EXPECT_EQ(NombreArchivoDelMes(abrev, 9), "p_SEP.txt");
    EXPECT_EQ(NombreArchivoDelMes(abrev, 12), "p_DIC.txt");
    EXPECT_EQ(NombreArchivoDelMes(nombre, 9), "p_SEPTIEMBRE.txt");
    EXPECT_EQ(NombreArchivoDelMes(digitos, 12), "p12.txt");
}

TEST_F(MarcoTest, AutocompletaMesesDesdeEnero) {
    std::string enero = Archivo("polizas/pol_ene.xls");
    std::string febrero = Archivo("polizas/pol_FEB.xls");
    std::string marzo = Archivo("polizas/pol_mzo.XLS");
    Archivo("polizas/pol_mar.xls");  // March is "MZO": this name is not one of ours
    std::string mayo = Archivo("polizas/pol_May.xls");
    GuardaAjuste("VELMORANT", "Configuracion", "DirPolizas", dir.texto() + "polizas/");
    auto meses = AutocompletaMeses(enero);
    EXPECT_EQ(meses[0], "");
    EXPECT_EQ(meses[1], febrero);
    EXPECT_EQ(meses[2], marzo);
    EXPECT_EQ(meses[3], "");  // a missing month leaves its row alone
    EXPECT_EQ(meses[4], mayo);
    for (size_t i = 5; i < 12; ++i) EXPECT_EQ(meses[i], "") << i;
}

TEST_F(MarcoTest, AutocompletaMesesBuscaEnLaCarpetaGuardada) {
    std::string enero = Archivo("a/pol01.txt");
    Archivo("a/pol02.txt");
    std::string otraFebrero = Archivo("b/pol02.txt");
    GuardaAjuste("VELMORANT", "Configuracion", "DirPolizas", dir.texto() + "b/");
    EXPECT_EQ(AutocompletaMeses(enero)[1], otraFebrero);
    EXPECT_EQ(AutocompletaMeses(dir.texto() + "a/polizas")[1], "");  // no "." in the name
}

TEST_F(MarcoTest, UnaReimportacionDebeCubrirLosMesesQueYaTieneLaEmpresa) {
    s.DbEmpresa = std::make_unique<BaseDatos>();
    CreaEsquemaEmpresa(*s.DbEmpresa);
    std::array<std::string, 13> rutas{};
    EXPECT_TRUE(CompletaSeleccionArchivos(s, rutas));  // a first import
    for (auto fecha : {"2023-02-10", "2023-04-30"})
        s.DbEmpresa->ejecuta("INSERT INTO Polizas (IdPoliza, Poliza, Tipo, Fecha) VALUES (1, '1', 'D', ?)", fecha);
    rutas[1] = rutas[3] = "x";
    EXPECT_FALSE(CompletaSeleccionArchivos(s, rutas));
    ASSERT_EQ(ui.mensajes.size(), 1u);
    EXPECT_EQ(ui.mensajes[0].texto, "Es necesario completar la selección de archivos a importar");
    rutas[2] = "x";  // January before the first month is not required
    EXPECT_TRUE(CompletaSeleccionArchivos(s, rutas));
}

}  // namespace
}  // namespace velmorant
