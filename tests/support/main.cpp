// Test entry point: a QGuiApplication (offscreen) exists for the settings
// store and for rendering reports, and settings never touch the real user's
// folders.

#include <QGuiApplication>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

int main(int argc, char** argv) {
    auto aislado = std::filesystem::temp_directory_path() / "velmorant-pruebas-config";
    std::filesystem::create_directories(aislado);
    setenv("XDG_CONFIG_HOME", aislado.c_str(), 0);
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
