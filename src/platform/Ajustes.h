#pragma once
// The per-user settings store, keyed by application, section and key, every
// value a text. On Windows it is the registry place where the audit product
// keeps its settings; elsewhere an INI file under $XDG_CONFIG_HOME.

#include <string>

namespace velmorant {

/// The value, or `porDefecto` when the key is absent or cannot be read.
std::string LeeAjuste(const std::string& aplicacion, const std::string& seccion, const std::string& clave,
                      const std::string& porDefecto = "");
/// Saves and flushes the value. False when the store could not be written
/// (its folder cannot be made or written, the file is read-only).
bool GuardaAjuste(const std::string& aplicacion, const std::string& seccion, const std::string& clave,
                  const std::string& valor);

/// Where the application's settings are kept (an INI file, or the registry
/// key on Windows), for messages.
std::string LugarAjustes(const std::string& aplicacion);

/// The program's own writable data folder (layout catalogue, per-user
/// scratch stores), with a trailing separator; created if missing.
/// $VELMORANT_DATOS overrides it.
std::string CarpetaDatosPrograma();

/// The folder of the running executable, with a trailing separator.
std::string CarpetaPrograma();

}  // namespace velmorant
