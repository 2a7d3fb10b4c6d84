#include <gtest/gtest.h>

#include "session/Funciones.h"
#include "support/Entorno.h"

using namespace velmorant;

TEST(Funciones, FechaDesdeTextoYSuReglaDeAniosDeDosDigitos) {
    struct Caso {
        const char* entrada;
        const char* salida;
    } casos[] = {
        {"31/12/15", "31/12/2015"}, {"31/12/16", "31/12/1916"}, {"1-2-2023", "01/02/2023"},
        {"311215", "31/12/2015"},   {"010100", "01/01/2000"},   {"5/6/99", "05/06/1999"},
        {"2025-03-04", "04/03/2025"}, {" 7/8/2024 ", "07/08/2024"}, {"hola", "hola"},
        {"1/2", "1/2"},
    };
    for (auto& c : casos) EXPECT_EQ(FechaDesdeTexto(c.entrada), c.salida) << c.entrada;
    EXPECT_EQ(LeeFecha("29/02/2024"), Fecha(2024, 2, 29));
    EXPECT_FALSE(LeeFecha("29/02/2023"));
    EXPECT_FALSE(LeeFecha("32/01/2023"));
    EXPECT_FALSE(LeeFecha(""));
}

TEST(Funciones, LeeFechaComoLaConversionDelAnfitrion) {
    struct Caso {
        const char* texto;
        Fecha fecha;  // an empty Fecha: not a date
    } casos[] = {
        // Two-digit years fall in the window 1930 to 2029.
        {"15/01/24", Fecha(2024, 1, 15)}, {"01/01/00", Fecha(2000, 1, 1)}, {"31/12/29", Fecha(2029, 12, 31)},
        {"01/01/30", Fecha(1930, 1, 1)},  {"31/12/99", Fecha(1999, 12, 31)}, {"150124", Fecha(2024, 1, 15)},
        {"1-2-16", Fecha(2016, 2, 1)},    {"15/01/1924", Fecha(1924, 1, 15)},
        // A time of day after the date.
        {"15/01/2024 00:00:00", Fecha(2024, 1, 15)}, {"15/01/2024 23:59", Fecha(2024, 1, 15)},
        {"15/01/24 1:05:00 p.m.", Fecha(2024, 1, 15)}, {"15/01/2024 12:00 AM", Fecha(2024, 1, 15)},
        {"2024-01-15T08:30:00", Fecha(2024, 1, 15)},  {"2024-01-15 08:30:00", Fecha(2024, 1, 15)},
        {"15/01/2024 24:00:00", Fecha()}, {"15/01/2024 13:00 pm", Fecha()}, {"15/01/2024 10:61", Fecha()},
        {"10:00:00", Fecha()},
        // Spanish month names and abbreviations, in any case.
        {"15-ene-2024", Fecha(2024, 1, 15)}, {"15/ENE/24", Fecha(2024, 1, 15)}, {"1-Dic-2023", Fecha(2023, 12, 1)},
        {"3 de marzo de 2024", Fecha(2024, 3, 3)}, {"30-sept.-2024", Fecha(2024, 9, 30)},
        {"29-feb-2024 10:00", Fecha(2024, 2, 29)}, {"29-feb-2023", Fecha()}, {"15-jan-2024", Fecha()},
        {"15-mes-2024", Fecha()},
        // Everything else that is not a date.
        {"", Fecha()}, {"hola", Fecha()}, {"32/01/2024", Fecha()}, {"15/13/2024", Fecha()}, {"1/2", Fecha()},
        {"15/01/024", Fecha()}, {"15/01/20245", Fecha()},
    };
    for (auto& c : casos) {
        auto f = LeeFecha(c.texto);
        if (c.fecha == Fecha())
            EXPECT_FALSE(f) << c.texto << " -> " << (f ? f->iso() : "");
        else
            EXPECT_EQ(f, c.fecha) << c.texto;
    }
}

TEST(Funciones, FechaSqlDeValoresEnBlancoFechasYTextos) {
    EXPECT_EQ(FechaSql(Valor()), "01/01/1900");
    EXPECT_EQ(FechaSql(Valor("  ")), "01/01/1900");
    EXPECT_EQ(FechaSql(Valor(Fecha(2025, 7, 4))), "07/04/2025");
    EXPECT_EQ(FechaSql(Valor("04/07/15")), "07/04/2015");
    EXPECT_EQ(FechaSql(Valor("04/07/16")), "07/04/1916");
}

TEST(Funciones, LimpiezaDeTextos) {
    EXPECT_EQ(QuitaCaracteresEspeciales("O'Hara | S~A"), "OHara  SA");
    EXPECT_EQ(QuitaApostrofes("''a'"), "a");
    // A piece of several characters leaves its tail: one character is skipped.
    EXPECT_EQ(QuitaCaracter("a--b", "--"), "a-b");
    EXPECT_EQ(QuitaCaracter("1 2\t3", " "), "12\t3");
    EXPECT_EQ(SiNuloTexto(Valor()), "");
    EXPECT_EQ(SiNuloCero(Valor()).entero(), 0);
    EXPECT_EQ(SiNuloCero(Valor("x")).texto(), "x");
}

TEST(Funciones, MensajesLlevanTituloYSuRetornoDeCarro) {
    Sesion s;
    s.VersionPrograma = "1.2.3";
    prueba::InteraccionGuionada ui;
    s.interaccion = &ui;
    ui.respuestas = {true};
    MsgCritico(s, "a");
    MsgAviso(s, "b");
    MsgInformacion(s, "c");
    EXPECT_TRUE(MsgPregunta(s, "d"));
    EXPECT_FALSE(MsgPregunta(s, "e"));
    ASSERT_EQ(ui.mensajes.size(), 5u);
    EXPECT_EQ(ui.mensajes[0].titulo, "VELMORANT Ver. 1.2.3");
    EXPECT_EQ(ui.mensajes[0].texto, "a\r");
    EXPECT_EQ(ui.mensajes[1].texto, "b\r");
    EXPECT_EQ(ui.mensajes[2].texto, "c");
    EXPECT_EQ(ui.mensajes[3].texto, "d");
    EXPECT_EQ(ui.mensajes[1].tipo, TipoMensaje::Aviso);
    ReportaError(s, ErrorBaseDatos(14, "unable to open", ""), true);
    EXPECT_EQ(ui.mensajes.back().texto, "Error :  14 unable to open\r");
}

TEST(Funciones, ValidaFechaAvisaConElPrimerDefecto) {
    Sesion s;
    prueba::InteraccionGuionada ui;
    s.interaccion = &ui;
    struct Caso {
        const char* fecha;
        const char* aviso;  // nullptr: valid
    } casos[] = {
        {"31/12/2024", nullptr},
        {"290224", nullptr},
        {"29022023", "El mes 2 no tiene más de 28 días"},
        {"31/04/2024", "El mes 4 no tiene más de 30 días"},
        {"01/13/2024", "El mes debe ser mayor de 0 y menor o igual a 12"},
        {"00/12/2024", "Por favor digite el día de la fecha"},
        {"01/12/202", "Favor de verificar el año de nacimiento ó teclearlo de 4 dígitos"},
        {"1-12-2024", "Favor de teclear la fecha con el formato ddMMaa ó ddMMaaaa ó dd/MM/aaaa"},
    };
    for (auto& c : casos) {
        ui.mensajes.clear();
        bool valida = ValidaFecha(s, c.fecha);
        EXPECT_EQ(valida, c.aviso == nullptr) << c.fecha;
        if (c.aviso) {
            ASSERT_EQ(ui.mensajes.size(), 1u) << c.fecha;
            EXPECT_EQ(ui.mensajes[0].texto, std::string(c.aviso) + "\r");
        }
    }
    EXPECT_EQ(LlenaComboMeses().front(), "Enero");
    EXPECT_EQ(LlenaComboMeses().back(), "Diciembre");
}

TEST(Funciones, RutasYArchivos) {
    EXPECT_EQ(NombreDeArchivo("/a/b/c.txt"), "c.txt");
    EXPECT_EQ(NombreDeArchivo("C:\\x\\y.mdb"), "y.mdb");
    EXPECT_EQ(CarpetaDeArchivo("/a/b/c.txt"), "/a/b/");
    EXPECT_EQ(CarpetaDeArchivo("c.txt"), "");
    prueba::CarpetaTemporal dir;
    EXPECT_FALSE(ExisteArchivo(""));
    EXPECT_FALSE(ExisteArchivo(dir.texto()));
    EXPECT_TRUE(ExisteCarpeta(dir.texto()));
    EXPECT_FALSE(ExisteCarpeta(dir.texto() + "no"));
}
