#include "platform/Ajustes.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>

#include <cstdlib>
#include <filesystem>

namespace velmorant {

namespace {

// The legacy store kept settings under this key of the user's registry;
// keeping the same organisation name lets both programs share them.
constexpr const char* kOrganizacion = "VB and VBA Program Settings";

QString Clave(const std::string& seccion, const std::string& clave) {
    return QString::fromStdString(seccion) + "/" + QString::fromStdString(clave);
}

}  // namespace

std::string LeeAjuste(const std::string& aplicacion, const std::string& seccion, const std::string& clave,
                      const std::string& porDefecto) {
    QSettings ajustes(QSettings::NativeFormat, QSettings::UserScope, kOrganizacion,
                      QString::fromStdString(aplicacion));
    QVariant v = ajustes.value(Clave(seccion, clave));
    if (!v.isValid() || ajustes.status() != QSettings::NoError) return porDefecto;
    return v.toString().toStdString();
}

bool GuardaAjuste(const std::string& aplicacion, const std::string& seccion, const std::string& clave,
                  const std::string& valor) {
    QSettings ajustes(QSettings::NativeFormat, QSettings::UserScope, kOrganizacion,
                      QString::fromStdString(aplicacion));
    ajustes.setValue(Clave(seccion, clave), QString::fromStdString(valor));
    ajustes.sync();
    return ajustes.status() == QSettings::NoError;
}

std::string LugarAjustes(const std::string& aplicacion) {
    QSettings ajustes(QSettings::NativeFormat, QSettings::UserScope, kOrganizacion,
                      QString::fromStdString(aplicacion));
    return ajustes.fileName().toStdString();
}

std::string CarpetaDatosPrograma() {
    std::string carpeta;
    if (const char* env = std::getenv("VELMORANT_DATOS"); env && *env) {
        carpeta = env;
    } else {
        QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        carpeta = (base + "/Velmorant").toStdString();
    }
    std::error_code ec;
    std::filesystem::create_directories(carpeta, ec);
    char sep = static_cast<char>(std::filesystem::path::preferred_separator);
    if (!carpeta.empty() && carpeta.back() != '/' && carpeta.back() != '\\') carpeta += sep;
    return carpeta;
}

std::string CarpetaPrograma() {
    std::error_code ec;
    auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    std::string carpeta;
    if (!ec) {
        carpeta = exe.parent_path().string();
    } else if (QCoreApplication::instance()) {
        carpeta = QCoreApplication::applicationDirPath().toStdString();
    } else {
        carpeta = std::filesystem::current_path().string();
    }
    char sep = static_cast<char>(std::filesystem::path::preferred_separator);
    return carpeta + sep;
}

}  // namespace velmorant
