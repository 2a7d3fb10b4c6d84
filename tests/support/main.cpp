// Test entry point: a QCoreApplication exists for the settings store, and
// settings never touch the real user's folders.

#include <QCoreApplication>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

int main(int argc, char** argv) {
    auto aislado = std::filesystem::temp_directory_path() / "velmorant-pruebas-config";
    std::filesystem::create_directories(aislado);
    setenv("XDG_CONFIG_HOME", aislado.c_str(), 0);
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
