#include <gtest/gtest.h>

#include <string>

#include "platform/IndiceDeTextos.h"

using namespace velmorant;

// Numbers follow arrival and stay through the table's growth; texts that
// differ only past a NUL byte or in case are different texts.
TEST(IndiceDeTextos, NumerosEnOrdenDeLlegadaAunAlCrecer) {
    IndiceDeTextos indice;
    EXPECT_EQ(indice.busca(""), IndiceDeTextos::npos);
    for (int i = 0; i < 5000; ++i) EXPECT_EQ(indice.agrega("clave " + std::to_string(i)), static_cast<size_t>(i));
    EXPECT_EQ(indice.size(), 5000u);
    for (int i = 4999; i >= 0; i -= 7) {
        EXPECT_EQ(indice.agrega("clave " + std::to_string(i)), static_cast<size_t>(i));
        EXPECT_EQ(indice.busca("clave " + std::to_string(i)), static_cast<size_t>(i));
    }
    EXPECT_EQ(indice.busca("clave 5000"), IndiceDeTextos::npos);
    EXPECT_EQ(indice.agrega(""), 5000u);
    EXPECT_EQ(indice.agrega(std::string("a\0b", 3)), 5001u);
    EXPECT_EQ(indice.agrega(std::string("a\0c", 3)), 5002u);
    EXPECT_EQ(indice.agrega("CLAVE 1"), 5003u);
    EXPECT_EQ(indice.texto(5001), std::string("a\0b", 3));
    EXPECT_EQ(indice.size(), 5004u);
}
