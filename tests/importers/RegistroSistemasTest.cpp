// The register of systems and the link catalogue generated from it.

#include <gtest/gtest.h>

#include <map>

#include "importers/Descriptor.h"
#include "importers/RegistroSistemas.h"
#include "session/Enlaces.h"
#include "store/AltaBase.h"
#include "store/EsquemaEmpresa.h"
#include "support/Entorno.h"

using namespace velmorant;

TEST(RegistroSistemas, TodosLosEnlacesConSusFuentesYLiberadosSoloLosConstruidos) {
    const auto& registro = RegistroSistemas();
    ASSERT_EQ(registro.size(), 131u);
    // Counted under each kind it reads: 77 text, 54 workbooks cell by cell, ...
    // and the electronic-accounting XML files of link 135.
    std::map<char, int> porFuente;
    for (auto& s : registro)
        for (char c : s.fuentes) ++porFuente[c];
    EXPECT_EQ(porFuente, (std::map<char, int>{{'T', 77}, {'E', 54}, {'D', 11}, {'C', 6}, {'M', 4}, {'F', 3},
                                              {'X', 2}, {'V', 1}, {'P', 1}, {'B', 1}, {'S', 1}}));
    for (size_t i = 1; i < registro.size(); ++i) EXPECT_LT(registro[i - 1].IdSistema, registro[i].IdSistema);
    EXPECT_EQ(BuscaSistema(90)->fuentes, "CDT");
    EXPECT_EQ(BuscaSistema(99), nullptr);

    // The shipped rows of the catalogue follow the register; released is
    // exactly "has a descriptor".
    auto enlaces = EnlacesConocidos();
    ASSERT_EQ(enlaces.size(), registro.size());
    for (size_t i = 0; i < enlaces.size(); ++i) {
        const auto& e = enlaces[i];
        EXPECT_EQ(e.IdSistema, registro[i].IdSistema);
        EXPECT_EQ(e.Liberado, BuscaImportador(e.IdSistema) != nullptr) << e.IdSistema;
        EXPECT_EQ(e.Comercial, !registro[i].titulo.empty()) << e.IdSistema;
    }
    for (int id : {25, 76, 82, 98, 135}) EXPECT_TRUE(ImportadorConstruido(id)) << id;
    EXPECT_FALSE(ImportadorConstruido(90));

    // A new base holds them, and the search of the whole register works as the selector's.
    prueba::CarpetaTemporal dir;
    std::string base = CreaBase(dir.texto() + "b");
    BaseDatos catalogo(RutaBaseDatos(base, kArchivoEnlaces));
    auto pasc = TodosLosEnlaces(catalogo, "pasc");
    ASSERT_EQ(pasc.size(), 1u);
    EXPECT_EQ(pasc[0].IdSistema, 76);
    EXPECT_TRUE(pasc[0].Liberado);
    EXPECT_EQ(TodosLosEnlaces(catalogo, "sistema*despacho").size(), 11u);
}

TEST(RegistroSistemas, EnlacesTodosMuestraFuentesYEstado) {
    prueba::CarpetaTemporal dir;
    const std::string cli = std::string("XDG_CONFIG_HOME='") + dir.texto() + "config' '" + VELMORANT_CLI + "' ";
    ASSERT_EQ(prueba::CorreProceso(cli + "base crear '" + dir.texto() + "b'").estado, 0);
    auto r = prueba::CorreProceso(cli + "--base '" + dir.texto() + "b' enlaces --todos");
    EXPECT_EQ(r.estado, 0) << r.salida;
    EXPECT_NE(r.salida.find("76\tT\tliberado\t\tSistema PASC\n"), std::string::npos) << r.salida;
    EXPECT_NE(r.salida.find("90\tCDT\tsin importador\tEl Salvador - PCCMulti\n"), std::string::npos);
    EXPECT_NE(r.salida.find("22\tT\tsin importador\tSistema propio de despacho 22\n"), std::string::npos);
    EXPECT_NE(r.salida.find("Fuentes: T texto, C texto separado por comas"), std::string::npos);
}
