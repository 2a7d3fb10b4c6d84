// The check of a file against its delimiter gives the line where the
// layout form's preview stops, so the command line and the desktop refuse
// the same files.

#include <gtest/gtest.h>

#include <fstream>

#include "importers/texto_delimitado/DelimitadorArchivo.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"
#include "platform/ErrorLectura.h"
#include "support/Entorno.h"

using namespace velmorant;

TEST(DelimitadorArchivo, LaPrimeraLineaSinSeparadorEsDondeSeDetieneLaVistaPrevia) {
    prueba::CarpetaTemporal carpeta;
    prueba::InteraccionGuionada ui;
    Sesion s;
    s.interaccion = &ui;
    struct Caso {
        const char* contenido;
        const char* separador;
        long linea;
    } casos[] = {
        {"a|b\n\nd|e\n", "|", 0},                  // blank lines do not count
        {"a|b\r\n\r\nuna linea sin separador\r\n", "|", 3},
        {"Cuenta|Descripcion\n100|Caja\n", "\t", 1},  // '|' files read with tabs
        {"Cuenta\tDescripcion\n100\tCaja\nFIN\n", "\t", 3},
        {"aXb\nc x d\n", "x", 0},                   // compared without case
        {"a<>b\na<b\n", "<>", 2},
        {"", "|", 0},
    };
    for (auto& c : casos) {
        std::string ruta = carpeta.texto() + "f.txt";
        std::ofstream(ruta, std::ios::binary) << c.contenido;
        EXPECT_EQ(LineaSinDelimitador(ruta, c.separador), c.linea) << c.contenido;
        long vista = 0;
        try {
            VistaPreviaTexto(s, ruta, c.separador);
        } catch (const ErrorLectura& e) {
            vista = e.linea();
        }
        EXPECT_EQ(vista, c.linea) << "the preview disagrees on: " << c.contenido;
    }
    EXPECT_EQ(LineaSinDelimitador(carpeta.texto() + "no-existe.txt", "|"), 0);
    EXPECT_EQ(MensajeArchivoSinDelimitar("/c/f.txt"),
              "El archivo /c/f.txt no se encuentra delimitado por el caracter que indico.");
}
