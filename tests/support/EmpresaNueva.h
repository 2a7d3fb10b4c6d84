#pragma once
// The company most run tests import into, created in a fresh base and
// opened as the audit product would open it.

#include <gtest/gtest.h>

#include <string>

#include "importers/Importador.h"
#include "session/Sesion.h"
#include "store/AltaBase.h"
#include "support/Entorno.h"

namespace velmorant::prueba {

/// "ACME" ("Acme"), year 2025, codes "999-99-99" in levels of 3, 2 and 2
/// characters with "-" between them, accounts as a tree. Tests change what
/// they need before creating it.
DatosEmpresaNueva EmpresaAcme();

/// Creates a base in `dir` + "base" holding the company `datos` and opens it
/// in `s`, whose questions `ui` answers. Returns the base's folder.
std::string AbreEmpresaNueva(Sesion& s, InteraccionGuionada& ui, const CarpetaTemporal& dir,
                             const DatosEmpresaNueva& datos);

/// A test that imports into a company of its own: isolated settings, a
/// folder, scripted answers, the session and the run's files.
class EntornoImportacion : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal dir;
    InteraccionGuionada ui;
    Sesion s;
    ArchivosImportacion archivos;
};

}  // namespace velmorant::prueba
