#pragma once
// The electronic-accounting XML files that the tax authority receives from
// every company: the chart of accounts (`Catalogo`), the monthly trial
// balance (`Balanza`, months 01 to 13) and the vouchers of a period
// (`Polizas`), in versions 1.1 and 1.3 of their schemas. This file knows
// their shape only: which file is which, what its root declares, and the
// records each holds, read by the streaming XML reader so that a year of
// vouchers never stands whole in memory. What the records become in the
// run's stores is the importer's business (ImportadorContabilidadElectronica).
//
// Namespaces: "http://www.sat.gob.mx/esquemas/ContabilidadE/1_3/CatalogoCuentas",
// ".../BalanzaComprobacion", ".../PolizasPeriodo", and the same with "1_1";
// files of version 1.1 are met with and without the leading "http://", and
// both are taken. Elements are matched by local name, whatever their prefix.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/Moneda.h"
#include "platform/fuentes/LectorXml.h"

namespace velmorant {

enum class ClaseSat { Catalogo, Balanza, Polizas };

/// What the root element of a file declares.
struct EncabezadoSat {
    std::string raiz;     // local name of the root element
    std::string espacio;  // its namespace
    /// Nothing when the file is none of the three files read here.
    std::optional<ClaseSat> clase;
    /// What the file is, in the words of the messages: "la balanza de
    /// comprobación", "un comprobante fiscal (CFDI)", "un XML con el
    /// elemento raíz <X>"...
    std::string descripcion;
    /// The version its namespace names ("1.1", "1.3"); empty when none.
    std::string versionEspacio;
    // The root's attributes, as written.
    std::string Version, RFC, Mes, Anio, TipoEnvio;
    long linea = 0;
};

/// The header of the file's root element (an ElementoXml start event).
EncabezadoSat EncabezadoDe(const ElementoXml& raiz);

/// Reads a file only up to its root element. Throws ErrorLectura when the
/// file cannot be opened or is not XML before its root.
EncabezadoSat LeeEncabezadoSat(const std::string& ruta);

/// "el catálogo de cuentas", "la balanza de comprobación", "las pólizas del periodo".
std::string NombreClaseSat(ClaseSat c);

/// The month a header declares, 1 to 13; nothing when `Mes` is not "01"
/// to "13" (one digit is taken too).
std::optional<int> MesDeEncabezado(const EncabezadoSat& e);

/// Why a file cannot be read as `esperada` for fiscal year `ejercicio`, as
/// the message the user reads, naming the file; empty when it can. It must
/// be of that kind, of version 1.1 or 1.3 in its attribute and in its
/// namespace, of that year (a chart may be of an earlier year: it is filed
/// once and stays in force), and a balance or a voucher file must declare a
/// month 01 to 13.
std::string RevisaEncabezado(const EncabezadoSat& e, ClaseSat esperada, const std::string& ruta, int ejercicio);

// ------------------------------------------------------------ Records

/// `Ctas` of a chart.
struct CuentaSat {
    std::string NumCta, Desc, SubCtaDe, Natur, CodAgrup;
    std::string Nivel;  // as written
    long linea = 0;
};

/// `Ctas` of a trial balance. Amounts as written: balances bear the sign
/// the client's system gave them.
struct RenglonBalanzaSat {
    std::string NumCta;
    Moneda SaldoIni, Debe, Haber, SaldoFin;
    long linea = 0;
};

/// `Transaccion` of a voucher, with the fiscal folios of its `CompNal`
/// (`UUID_CFDI`), `CompNalOtr` (`CFD_CBB_Serie` and `CFD_CBB_NumFol`),
/// `CompExt` (`NumFactExt`) and, in version 1.1, `Comprobantes`
/// (`UUID_CFDI`), in the file's order. Payment nodes (`Cheque`,
/// `Transferencia`, `OtrMetodoPago`) carry no folio and are passed over.
struct TransaccionSat {
    std::string NumCta, DesCta, Concepto;
    Moneda Debe, Haber;
    std::vector<std::string> folios;
    long linea = 0;
};

/// `Poliza`: its number (`NumUnIdenPol`; `Num` in version 1.1), the type
/// code of version 1.1 (`Tipo`, "1" income, "2" expense, "3" journal; empty
/// in 1.3), its date as written, its concept and its lines.
struct PolizaSat {
    std::string Numero, Tipo, Fecha, Concepto;
    std::vector<TransaccionSat> transacciones;
    long linea = 0;
};

/// One file opened for reading its records. The constructor reads the root
/// and throws ErrorLectura when the file is not of the kind asked for
/// (with RevisaEncabezado's words for `ejercicio`), so that a reader never
/// takes one file for another. Each walk reads the file to its end and may
/// be made once; a fault of the file, or anything a callback throws but
/// ErrorLectura and the program's end, becomes ErrorLectura with the
/// message "Error al leer el archivo X, línea N: ..." at the record's line.
/// Amounts that are not numbers are faults of the file.
class ArchivoSat {
public:
    ArchivoSat(const std::string& ruta, ClaseSat clase, int ejercicio);

    const EncabezadoSat& encabezado() const { return encabezado_; }
    const std::string& ruta() const { return lector_.ruta(); }
    std::int64_t bytesLeidos() const { return lector_.bytesLeidos(); }
    std::int64_t tamano() const { return lector_.tamano(); }
    /// "Error al leer el archivo X, línea N: causa", for a fault of a record
    /// that its reader finds.
    std::string mensajeError(long linea, const std::string& causa) const { return lector_.mensajeError(linea, causa); }

    void cuentas(const std::function<void(const CuentaSat&)>& f);
    void renglones(const std::function<void(const RenglonBalanzaSat&)>& f);
    /// One call per voucher, once its last line has been read.
    void polizas(const std::function<void(const PolizaSat&)>& f);

private:
    LectorXml lector_;
    EncabezadoSat encabezado_;

    template <class F>
    void recorre(F&& alElemento);
};

}  // namespace velmorant
