// `velmorant-cli historial`, `deshacer` and `detectar`, run as a user
// would, on a company with two imports.

#include <filesystem>
#include <sstream>

#include "pipeline/Respaldo.h"
#include "pipeline/EntornoHistorial.h"

using namespace velmorant;

namespace {

class HistorialCli : public prueba::EntornoHistorial {
protected:
    prueba::ResultadoProceso Corre(const std::string& argumentos) {
        return prueba::CorreProceso("'" VELMORANT_CLI "' --base '" + dir.texto() + "base' --empresa ACME --ejercicio 2025 " +
                                    argumentos);
    }
    static std::vector<std::string> Lineas(const std::string& texto) {
        std::vector<std::string> r;
        std::istringstream in(texto);
        for (std::string l; std::getline(in, l);) r.push_back(l);
        return r;
    }
};

}  // namespace

TEST_F(HistorialCli, ListaUnaCorridaPorLineaYElDetalleConSusHuellas) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    usaMes(2, 3);
    ASSERT_EQ(importa({DecisionInconsistencias::Continuar}), ResultadoImportacion::Terminada);

    auto r = Corre("historial");
    ASSERT_EQ(r.estado, 0) << r.salida;
    auto lineas = Lineas(r.salida);
    ASSERT_EQ(lineas.size(), 2u) << r.salida;
    EXPECT_EQ(lineas[0].rfind("1  ", 0), 0u) << lineas[0];
    EXPECT_EQ(lineas[1].rfind("2  ", 0), 0u) << "newest last: " << lineas[1];
    EXPECT_NE(lineas[0].find("Importación (enlace 82)  Confirmada [Sin inconsistencias]  6 pólizas, 12 partidas"),
              std::string::npos)
        << lineas[0];
    EXPECT_NE(lineas[1].find("Confirmada [Continuar]  7 pólizas"), std::string::npos) << lineas[1];

    auto d = Corre("historial --detalle 2");
    ASSERT_EQ(d.estado, 0) << d.salida;
    for (int mes = 1; mes <= 3; ++mes) {
        const std::string& ruta = archivos.meses[static_cast<size_t>(mes - 1)];
        EXPECT_NE(d.salida.find("mes 0" + std::to_string(mes) + "  " + ruta), std::string::npos) << d.salida;
        EXPECT_NE(d.salida.find(std::to_string(std::filesystem::file_size(ruta)) + " bytes  SHA-256 " +
                                Sha256Archivo(ruta)),
                  std::string::npos)
            << d.salida;
    }
    EXPECT_NE(d.salida.find("Febrero     3 pólizas, 6 partidas, cargos 600, abonos 600"), std::string::npos) << d.salida;
    EXPECT_NE(d.salida.find("Inconsistencias: A=1"), std::string::npos) << d.salida;

    const std::string pdf = dir.texto() + "constancia.pdf";
    auto c = Corre("historial --detalle 1 --salida '" + pdf + "'");
    ASSERT_EQ(c.estado, 0) << c.salida;
    auto texto = prueba::CorreProceso("pdftotext '" + pdf + "' -");
    EXPECT_NE(texto.salida.find("Constancia de importación número 1"), std::string::npos) << texto.salida;
    EXPECT_NE(texto.salida.find("Acme, S.A."), std::string::npos) << texto.salida;

    EXPECT_EQ(Corre("historial --detalle 9").estado, 1);
    EXPECT_EQ(Corre("historial --salida x.pdf").estado, 2);
    EXPECT_EQ(Corre("historial --detalle 1 --salida x.doc").estado, 2);
}

TEST_F(HistorialCli, DeshacerSinTerminalPideSiYLuegoRestaura) {
    ASSERT_EQ(importa(), ResultadoImportacion::Terminada);
    const std::string primera = contenidoEmpresa();
    usaMes(2, 3);
    ASSERT_EQ(importa({DecisionInconsistencias::Continuar}), ResultadoImportacion::Terminada);
    const std::string segunda = contenidoEmpresa();

    auto r = Corre("deshacer");
    EXPECT_EQ(r.estado, 1) << r.salida;
    EXPECT_NE(r.salida.find("sin terminal, use --si"), std::string::npos) << r.salida;
    EXPECT_EQ(contenidoEmpresa(), segunda);

    r = Corre("deshacer --si");
    ASSERT_EQ(r.estado, 0) << r.salida;
    EXPECT_NE(r.salida.find("Se deshizo la importación 2"), std::string::npos) << r.salida;
    EXPECT_EQ(contenidoEmpresa(), primera);
    auto h = Corre("historial");
    EXPECT_NE(h.salida.find("Deshacer de la importación 2  Restaurada"), std::string::npos) << h.salida;
    EXPECT_NE(h.salida.find("(deshecha por 3)"), std::string::npos) << h.salida;

    ASSERT_EQ(Corre("deshacer --si").estado, 0);
    r = Corre("deshacer --si");
    EXPECT_EQ(r.estado, 1);
    EXPECT_NE(r.salida.find("No hay ninguna importación que deshacer"), std::string::npos) << r.salida;
}

TEST_F(HistorialCli, DetectarDiceLoQueEncuentraYQueTanSeguro) {
    escribe("cliente.txt", "Poliza|Fecha|Cargo\n1|15/01/2025|10.00\n2|16/01/2025|20.00\n3|17/01/2025|30.00\n");
    auto r = prueba::CorreProceso("'" VELMORANT_CLI "' detectar '" + dir.texto() + "cliente.txt'");
    ASSERT_EQ(r.estado, 0) << r.salida;
    for (const char* esperado : {"(4 líneas examinadas)", "Separador: \"|\", 3 columnas — segura",
                                 "Fila de títulos: sí — segura", "Fechas: día primero (dd/mm/aaaa) (columna 2) — segura"})
        EXPECT_NE(r.salida.find(esperado), std::string::npos) << esperado << "\n" << r.salida;
    EXPECT_EQ(prueba::CorreProceso("'" VELMORANT_CLI "' detectar '" + dir.texto() + "no-esta.txt'").estado, 1);
    EXPECT_EQ(prueba::CorreProceso("'" VELMORANT_CLI "' detectar").estado, 2);
}
