#pragma once
// What an importer declares about itself, once: its link number and title,
// its kind of run, the files it asks for (with their pickers and the message
// that says one is missing), its check boxes and valued options, and how to
// build its readers. The released links of the link catalogue, the desktop
// importer form and the command line's `importar --enlace N` are all
// derived from this one record (importers/Registro.cpp lists them).

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "importers/Importador.h"
#include "importers/Marco.h"

namespace velmorant {

/// One file an importer asks for.
struct ArchivoDescrito {
    /// Its role in ArchivosImportacion ("catalogo", "saldos-iniciales",
    /// "polizas", "saldos-anterior", "base-datos", ...), which is also its
    /// command-line option: `--catalogo ARCHIVO`.
    std::string papel{};
    std::string etiqueta{};  // caption of its row in the form
    std::string control{};   // its path box, "eloRutaArchCat"
    std::string boton{};     // its button, "cmdCatalogo"
    SelectorArchivo selector{};
    /// The message when it is required and missing; empty: optional.
    std::string faltante{};
    /// That message is a warning (MsgAviso) rather than a notice.
    bool avisoFaltante = false;
    /// The control that takes the focus then; empty: the row's button.
    std::string focoFaltante{};
    /// More than one file may be given (`--polizas A --polizas B`).
    bool repetible = false;
    /// The row accepts a folder instead of a file.
    bool carpeta = false;
    /// The file comes as a zip archive holding it: the run extracts it
    /// into a work folder before the reader opens it (Comprimidos.h).
    bool comprimido = false;
};

/// A check box of the importer, which the command line offers as a flag.
struct CasillaDescrita {
    std::string control{};    // "chkIncluirUUID"
    std::string titulo{};     // its caption
    std::string opcionCli{};  // "incluir-uuid"
    bool marcada = false;   // ticked when the form opens
};

/// A valued option (the last month to read, a user name, a layout name...).
struct ParametroDescrito {
    enum class Tipo { Texto, Mes, Clave };
    std::string opcionCli{};    // "hasta-mes"
    std::string valor{};        // name of its value in the usage line, "MM"
    std::string descripcion{};  // one line of help, or the caption of its box
    Tipo tipo = Tipo::Texto;
    bool requerido = false;
    std::string control{};      // its box in the form, when it has one
    /// May be given more than once; the values reach the importer joined
    /// by line ends.
    bool repetible = false;
};

/// A choice the importer cannot work with (two delimiters, a month out of
/// range): the command line reports it as wrong usage, the form as a warning.
class ParametroInvalido : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The last month of vouchers asked for by "hasta-mes": 1 to 12, or 13 for
/// the year with its closing vouchers; 0 when none was given. Throws
/// ParametroInvalido for anything else.
int MesHastaElegido(const ArchivosImportacion& a);

/// Builds the importer of a run from the user's choices. Throws
/// ParametroInvalido for a choice it cannot use; returns null, after its
/// message through the session, when it refuses for a reason the user must
/// mend elsewhere (a layout that does not exist).
using FabricaImportador = std::function<std::unique_ptr<Importador>(Sesion&, const ArchivosImportacion&)>;

struct DescriptorImportador {
    int IdSistema = 0;
    std::string titulo{};  // caption of its form
    TipoImportacion tipo = TipoImportacion::ArchivoUnico;
    /// Files of the fiscal year's tab, in the order of the form.
    std::vector<ArchivoDescrito> archivos{};
    /// Month rows (month-by-month kind), and the thirteenth for closing vouchers.
    bool meses = false;
    bool mes13 = false;
    /// The month rows can give way to one file for the whole year.
    bool unArchivo = false;
    SelectorArchivo selectorMes{};  // its title is followed by the month's name
    /// Each month's file comes as a zip archive holding it.
    bool mesesComprimidos = false;
    /// The prior-year tab and its file.
    std::optional<ArchivoDescrito> anioAnterior{};
    std::vector<CasillaDescrita> casillas{};
    std::vector<ParametroDescrito> parametros{};
    FabricaImportador crea{};
    /// What the importer checks of the files themselves before a run starts
    /// (the command line calls it before it opens the company): throws
    /// ParametroInvalido naming the file. Optional.
    std::function<void(const ArchivosImportacion&)> verificaEntradas{};

    const ArchivoDescrito* archivo(const std::string& papel) const;
    /// True when some file of the importer comes as a zip archive.
    bool conComprimidos() const;
};

/// Every importer of this program, in link order.
const std::vector<DescriptorImportador>& Importadores();

/// The importer of a link; null when this program has none for it.
const DescriptorImportador* BuscaImportador(int idSistema);

}  // namespace velmorant
