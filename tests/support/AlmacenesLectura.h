#pragma once
// What a reader test needs: a session on a fresh company file with codes
// "999-99-99" (levels 3, 2, 2, zero padding, a tree) and the run's stores
// of the chart, the vouchers and the log open; and rows read back as text.

#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "session/Sesion.h"
#include "support/Entorno.h"

namespace velmorant::prueba {

/// Fills `s` for the company "ACME" of `ejercicio`, its file in `carpeta`,
/// `ui` answering its questions, and creates and opens the run's stores.
/// Throws when a store cannot be opened.
void AbreAlmacenesDeLectura(Sesion& s, InteraccionGuionada& ui, const CarpetaTemporal& carpeta, int ejercicio);

/// The rows of `sql`, each as its fields joined by "|".
std::vector<std::string> FilasComoTexto(BaseDatos& db, const std::string& sql);

}  // namespace velmorant::prueba
