// Zip archives: names decoded by their flag, sub-folders kept, and any
// entry that would be written outside the work folder refused before
// anything is written; an importer that declares archives reads what
// they hold.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <zip.h>

#include <filesystem>
#include <fstream>

#include "importers/Comprimidos.h"
#include "platform/ArchivoZip.h"
#include "platform/ErrorLectura.h"
#include "support/Entorno.h"

using namespace velmorant;
namespace fs = std::filesystem;

namespace {

struct Entrada {
    std::string nombre;
    std::string contenido;
    zip_flags_t codificacion = ZIP_FL_ENC_UTF_8;
    bool enlace = false;
};

// Writes an archive with the given entries, names stored as given.
void EscribeZip(const std::string& ruta, const std::vector<Entrada>& entradas) {
    int error = 0;
    zip_t* z = zip_open(ruta.c_str(), ZIP_CREATE | ZIP_TRUNCATE, &error);
    ASSERT_NE(z, nullptr);
    for (const auto& e : entradas) {
        zip_source_t* fuente = zip_source_buffer(z, e.contenido.data(), e.contenido.size(), 0);
        zip_int64_t i = zip_file_add(z, e.nombre.c_str(), fuente, e.codificacion);
        ASSERT_GE(i, 0) << zip_strerror(z);
        if (e.enlace)
            zip_file_set_external_attributes(z, static_cast<zip_uint64_t>(i), 0, ZIP_OPSYS_UNIX,
                                             static_cast<zip_uint32_t>(S_IFLNK | 0777) << 16);
    }
    ASSERT_EQ(zip_close(z), 0);
}

std::string Lee(const fs::path& p) {
    std::ifstream f(p, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(f)), {});
}

TEST(ArchivoZip, NombresDecodificadosYSubcarpetas) {
    prueba::CarpetaTemporal dir;
    const std::string zip = dir.texto() + "cliente.zip";
    EscribeZip(zip, {{"P\xA2lizas ENE.txt", "pólizas", ZIP_FL_ENC_CP437},  // code page 850/437, no flag
                     {"Catálogo.txt", "catálogo", ZIP_FL_ENC_UTF_8},      // UTF-8, flagged
                     {"sub\\dentro.txt", "dentro", ZIP_FL_ENC_CP437}});
    fs::create_directories(dir.ruta() / "trabajo");
    auto escritos = ExtraeZip(zip, dir.texto() + "trabajo");
    ASSERT_EQ(escritos.size(), 3u);
    EXPECT_EQ(Lee(dir.ruta() / "trabajo" / "Pólizas ENE.txt"), "pólizas");
    EXPECT_EQ(Lee(dir.ruta() / "trabajo" / "Catálogo.txt"), "catálogo");
    EXPECT_EQ(Lee(dir.ruta() / "trabajo" / "sub" / "dentro.txt"), "dentro");
    EXPECT_EQ(DecodificaNombreZip("\x90XITO\xB5.TXT", false), "ÉXITOÁ.TXT");
}

TEST(ArchivoZip, UnaEntradaQueSaldriaDeLaCarpetaRechazaTodoElArchivo) {
    struct Caso {
        Entrada hostil;
        std::string causa;
    } casos[] = {
        {{"../fuera.txt", "x"}, "sube de carpeta"},
        {{"ok/../../fuera.txt", "x"}, "sube de carpeta"},
        {{"..\\fuera.txt", "x", ZIP_FL_ENC_CP437}, "sube de carpeta"},
        {{"/tmp/absoluta.txt", "x"}, "ruta absoluta"},
        {{"C:\\fuera.txt", "x", ZIP_FL_ENC_CP437}, "ruta absoluta"},
        {{"enlace", "/etc/passwd", ZIP_FL_ENC_UTF_8, true}, "enlace simbólico"},
    };
    for (auto& c : casos) {
        prueba::CarpetaTemporal dir;
        const std::string zip = dir.texto() + "hostil.zip";
        // A good entry first: it must not be written either.
        EscribeZip(zip, {{"bueno.txt", "bueno"}, c.hostil});
        fs::create_directories(dir.ruta() / "a" / "trabajo");
        try {
            ExtraeZip(zip, (dir.ruta() / "a" / "trabajo").string());
            ADD_FAILURE() << c.hostil.nombre << " extraída";
        } catch (const ErrorLectura& e) {
            EXPECT_EQ(e.archivo(), zip);
            EXPECT_NE(std::string(e.what()).find(c.causa), std::string::npos) << e.what();
        }
        EXPECT_TRUE(fs::is_empty(dir.ruta() / "a" / "trabajo")) << c.hostil.nombre;
        EXPECT_FALSE(fs::exists(dir.ruta() / "a" / "fuera.txt"));
        EXPECT_FALSE(fs::exists(dir.ruta() / "fuera.txt"));
    }
    prueba::CarpetaTemporal dir;
    std::ofstream(dir.texto() + "no.zip") << "no es un zip";
    EXPECT_THROW(ExtraeZip(dir.texto() + "no.zip", dir.texto()), ErrorLectura);
}

// Records the files each reader was handed.
class ImportadorAnotado : public Importador {
public:
    explicit ImportadorAnotado(std::vector<std::string>& leidos) : leidos_(leidos) {}
    int idSistema() const override { return 90; }
    TipoImportacion tipo() const override { return TipoImportacion::MesPorMes; }
    void ImportaCatalogo(Sesion&, DestinoTmp&, const ArchivosImportacion& a) override {
        leidos_.push_back(Lee(a.catalogo));
        leidos_.push_back(a.saldosIniciales);
    }
    void ImportaPolizasMes(Sesion&, DestinoTmp&, int mes, const std::string& ruta) override {
        leidos_.push_back(std::to_string(mes) + ":" + Lee(ruta));
    }

private:
    std::vector<std::string>& leidos_;
};

TEST(ArchivoZip, ElImportadorQueDeclaraArchivosComprimidosLeeLoQueContienen) {
    prueba::CarpetaTemporal dir;
    prueba::InteraccionGuionada ui;
    Sesion s;
    s.interaccion = &ui;
    std::vector<std::string> leidos;
    DescriptorImportador d;
    d.IdSistema = 90;
    d.archivos = {{.papel = "catalogo", .comprimido = true}, {.papel = "saldos-iniciales"}};
    d.meses = true;
    d.mesesComprimidos = true;
    d.crea = [&](Sesion&, const ArchivosImportacion&) { return std::make_unique<ImportadorAnotado>(leidos); };
    ASSERT_TRUE(d.conComprimidos());

    EscribeZip(dir.texto() + "cat.zip", {{"CATALOGO.TXT", "cuentas"}});
    EscribeZip(dir.texto() + "ene.zip", {{"carpeta/", ""}, {"carpeta/ENE.TXT", "enero"}});
    EscribeZip(dir.texto() + "feb.zip", {{"A.TXT", "a"}, {"B.TXT", "b"}});
    ArchivosImportacion a;
    a.catalogo = dir.texto() + "cat.zip";
    a.saldosIniciales = dir.texto() + "saldos.txt";  // not declared: handed as it is
    std::string trabajo;
    {
        auto imp = ConExtraccion(d)(s, a);
        auto* comprimido = dynamic_cast<ImportadorComprimido*>(imp.get());
        ASSERT_NE(comprimido, nullptr);
        DestinoTmp destino(s);  // the recording readers write nothing
        imp->ImportaCatalogo(s, destino, a);
        imp->ImportaPolizasMes(s, destino, 1, dir.texto() + "ene.zip");
        EXPECT_EQ(leidos, (std::vector<std::string>{"cuentas", dir.texto() + "saldos.txt", "1:enero"}));
        trabajo = comprimido->carpeta();
        EXPECT_TRUE(fs::exists(trabajo));
        EXPECT_THROW(imp->ImportaPolizasMes(s, destino, 2, dir.texto() + "feb.zip"), ErrorLectura);
        ASSERT_EQ(ui.mensajes.size(), 1u);
        EXPECT_NE(ui.mensajes[0].texto.find("feb.zip debe contener un solo archivo; contiene 2"), std::string::npos);
    }
    EXPECT_FALSE(fs::exists(trabajo));  // the work folder goes with the importer
}

}  // namespace
