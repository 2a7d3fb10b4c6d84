#pragma once
// The logic of the three layout parameter forms (fixed positions, delimited
// text, workbook columns): validation of the boxes, save and save-as with
// the duplicate rules, choosing or typing another layout. The forms of the
// desktop program and the command line drive it through a
// `FormularioConfiguracion` (what the boxes and the list hold) and the
// session's `Interaccion` (messages and questions).

#include <optional>
#include <string>
#include <vector>

#include "layouts/Configuraciones.h"
#include "session/Sesion.h"

namespace velmorant {

enum class FormularioParametros {
    TxtPersonalizado,  // frm022DefParaTxtPersonalizado: positions and lengths
    TextoGenerico,     // frm083ParametrosTextoGenerico: columns
    ExcelGenerico,     // frm099ParametrosExcelGenerico: columns
};

/// The link that owns the rows a form saves: 25, 82, 102.
int IdEnlaceDe(FormularioParametros f);

/// The third tab of the column forms.
enum class PestanaSaldos {
    Ninguna,
    SaldosFinalesAnioAnterior,  // "Saldos Finales Año Anterior"
    SaldosIniciales,            // "Saldos Iniciales"
};

/// What the boxes of a parameter form hold. `valores` carries every box in
/// the member of the record it is saved to (0 = empty box): the amount box
/// is `PIniImporte` with the indicator and `PIniCargo` without it, the
/// credit box `PIniAbono`; the third tab's boxes are `PIniCtaSdoAnt`,
/// `PIniDescSdoAnt` and the balance `PIniSdoFinAnt`, or `PIniSdoIni` on the
/// "Saldos Iniciales" tab. Column forms use only the `PIni` members.
struct CajasParametros {
    EstructuraDatosTxt valores;
    bool chkCtaCtrl = false;     // parent account
    bool chkNivel = false;
    bool chkNat = false;
    bool chkSaldosIni = false;   // opening balance in the catalogue
    bool chkReferencia = false;
    bool chkTipoMov = false;     // debit-or-credit indicator
    bool optFechaCompleta = false;  // column forms: one whole date column in PIniDia
    PestanaSaldos pestana = PestanaSaldos::Ninguna;
};

/// A parameter form: its kind, the current layout, the record loaded from
/// the company's copy, the boxes and the list of names.
struct FormularioConfiguracion {
    FormularioParametros tipo = FormularioParametros::TextoGenerico;
    std::string Configuracion;       // the current name
    EstructuraDatosTxt registro;     // CargaConfigEmpresa of the current name
    CajasParametros cajas;
    std::string textoLista;          // the text of the list box
    bool filaElegida = false;        // a row of the list is selected
    std::vector<std::string> lista;  // the names listed
};

/// The box that failed validation: its tab (0 catalogue, 1 vouchers,
/// 2 balances, -1 the name list) and the record member it fills
/// ("PIniCuenta", "LongCuenta", ..., "Nombre"), for the focus.
struct CajaFallida {
    int pestana = -1;
    std::string caja;
    bool operator==(const CajaFallida&) const = default;
};

/// The boxes as `InicializaParametros` shows a record: a 0 as an empty box
/// with its check box cleared.
CajasParametros InicializaParametros(FormularioParametros tipo, const EstructuraDatosTxt& registro,
                                     PestanaSaldos pestana = PestanaSaldos::Ninguna);

/// The row the boxes would save: absent fields 0, the unused amount scheme
/// 0, the balance pairs by the form and its third tab.
EstructuraDatosTxt RegistroDeCajas(FormularioParametros tipo, const CajasParametros& cajas);

/// Checks the boxes in the form's fixed order and shows the first fault's
/// message; nothing when all are filled. `nombre` is the list's text.
std::optional<CajaFallida> ParametrosValidos(Sesion& s, FormularioParametros tipo, const CajasParametros& cajas,
                                             const std::string& nombre);

/// True when the boxes hold the values of the record.
bool ParametrosIguales(const FormularioConfiguracion& f);

/// Looks in the catalogue for a row equal to the boxes. When one exists,
/// asks whether to keep the boxes under `nombre` instead (yes: that row is
/// deleted from both databases and `nombre` inserted in both and made
/// current; no: the existing name becomes current) and returns true.
bool ExisteConfigConOtroNombre(Sesion& s, FormularioConfiguracion& f, const std::string& nombre);

/// Inserts a row from the boxes under `nombre` (trimmed, upper-cased and
/// filtered) into `db`; an existing name stays as it is.
void GuardaNvaConfiguracion(FormularioParametros tipo, BaseDatos& db, const CajasParametros& cajas,
                            const std::string& nombre);

/// How an accept ended: whether the form closes, and the box to focus when
/// it stays open because of a fault.
struct Aceptacion {
    bool cierra = false;
    std::optional<CajaFallida> foco;
};

/// `cmdAceptar` / `cmdContinuar`: validates, saves or saves-as in both
/// databases with the duplicate rules and questions, and protects the
/// predetermined row.
Aceptacion AceptaParametros(Sesion& s, FormularioConfiguracion& f);

/// Why a new configuration's name cannot be saved as typed, empty when it
/// can: the characters taken out of every stored text ("'|~"), or bytes that
/// are not UTF-8 text. Either would store another name than the one typed,
/// which the user could not find again.
std::string ProblemaNombreConfiguracion(const std::string& nombre);

/// Cancel of the fixed-position form, which also saves a new valid name to
/// the catalogue when its values are not there under another name.
void CancelaParametrosFijos(Sesion& s, FormularioConfiguracion& f);

/// A row chosen in the list: after the question, the company's copy is
/// replaced by the chosen row, which becomes current, and the record, boxes
/// and list are reloaded. Returns true when the layout changed.
bool EligeConfiguracion(Sesion& s, FormularioConfiguracion& f, const std::string& texto);

/// A name typed in the list while no row is selected: the text is trimmed
/// and upper-cased; an existing other name offers to switch to it.
/// Returns true when the layout changed.
bool TecleaNombreConfiguracion(Sesion& s, FormularioConfiguracion& f, const std::string& texto);

/// The fixed form's length rules: `txtNatLong` accepts only 1 and
/// `txtNivelLong` 1 or 2; otherwise a message and the box goes back to 1.
std::int16_t ValidaLongitudNaturaleza(Sesion& s, std::int16_t valor);
std::int16_t ValidaLongitudNivel(Sesion& s, std::int16_t valor);

}  // namespace velmorant
