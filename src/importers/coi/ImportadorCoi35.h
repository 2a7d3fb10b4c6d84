#pragma once
// Link 1, COI WIN 1 to 4 (3.5): the vouchers of each month come as COI's
// export text, one record per line; the chart and the opening balances come
// as delimited text through a saved layout of link 82, as for the COI
// printed reports.
//
// The character at the start of each line is the record's mark, and the
// fields of the record are found by the positions of its commas (the last
// field takes the rest of the line, commas and all):
//
//   1TT,NUMERO,FECHA        a voucher opens: type TT (the two characters
//                           after the mark), number and date; a date
//                           "Mes 13" is a closing voucher, dated 31/12 of
//                           the year and flagged as of month 13
//   2,CONCEPTO              the concept of the voucher just opened
//   3,CUENTA,D|H,IMPORTE,REFERENCIA
//                           a line of the voucher
//
// Any other mark is not a record of the export and is passed over. The
// positions stand in one table, kCamposCoi35. A voucher whose concept does
// not come before its first line (or before the next voucher) is logged,
// class "O": "No se logró leer el concepto de la póliza, revise por favor
// pólizas " and its number. Before a run each month's file is checked: it
// must exist and its first voucher must be of that month ("Mes 13" for the
// thirteenth).

#include <string>

#include "importers/Descriptor.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"

namespace velmorant {

inline constexpr int kEnlaceCoi35 = 1;

/// Where each field of the export stands.
struct CamposCoi35 {
    int posicionMarca = 1;
    int posicionTipo = 2, largoTipo = 2;  // in a voucher record, between the mark and the first comma
    int camposEncabezado = 3;             // a voucher record has exactly these
    int campoNumero = 2, campoFecha = 3;
    int campoConcepto = 2;
    int campoCuenta = 2, campoDebeHaber = 3, campoImporte = 4, campoReferencia = 5;
};
inline constexpr CamposCoi35 kCamposCoi35{};

/// The vouchers of month `mes` (1..13) of the export `ruta`.
void ImportaPolizasCoi35(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta);

/// The month of the export's first voucher: 1..12, 13 for "Mes 13"; 0 when
/// it has none or its date cannot be read.
int MesDelArchivoCoi35(const std::string& ruta);

class ImportadorCoi35 : public Importador {
public:
    explicit ImportadorCoi35(LecturaDelimitada catalogo) : catalogo_(std::move(catalogo)) {}
    int idSistema() const override { return kEnlaceCoi35; }
    TipoImportacion tipo() const override { return TipoImportacion::MesPorMes; }
    bool saldosInicialesAparte() const override { return true; }
    ReglasDestino reglasDestino() const override;
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;
    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) override;

private:
    LecturaDelimitada catalogo_;
};

DescriptorImportador DescriptorCoi35();

}  // namespace velmorant
