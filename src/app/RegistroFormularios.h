#pragma once
// The importer form of each link, by `IdSistema`: a form of its own where
// the importer has one, else the form built from its descriptor. The link
// selector opens it; a link without an importer ends the session.

#include <QDialog>

#include <functional>
#include <map>
#include <memory>

#include "session/Sesion.h"

namespace velmorant::app {

/// Result code of an importer form whose work ended the program (its
/// message already shown): the session ends at once, without clearing the
/// temporary stores.
inline constexpr int kProgramaTerminado = 2;

using FabricaFormulario = std::function<std::unique_ptr<QDialog>(Sesion&, QWidget* padre)>;

/// Registers (or replaces) the form of a link.
void RegistraFormulario(int idSistema, FabricaFormulario fabrica);

/// The form of the link, or null when the link has none.
std::unique_ptr<QDialog> CreaFormularioImportador(int idSistema, Sesion& s, QWidget* padre);

}  // namespace velmorant::app
