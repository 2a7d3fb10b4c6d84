#pragma once
// Access databases (.MDB, .ACCDB) of client systems, read with mdbtools and
// loaded table by table into an in-memory database with the column kinds of
// CargaTablas.h, so that a reader runs the same SQL whether its tables came
// from an Access file or from dBase tables.
//
//   Access type                        kind
//   Yes/No                             Logico (-1/0)
//   Byte, Integer, Long, attachments   Entero
//   Currency                           Diezmilesimas, from the exact text
//   Decimal of scale s                 Entero (s = 0), Diezmilesimas
//                                      (s <= 4), Decimal (s > 4)
//   Single, Double                     Real, from the stored bits
//   Date/Time                          FechaHora, from the stored serial
//   Text, Memo, Replication ID         Texto (an empty text reads as Null)
//   Binary, OLE object                 Binario (Null)

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/BaseDatos.h"
#include "platform/fuentes/CargaTablas.h"

namespace velmorant {

/// The column types of the engine's files, by the codes the files (and
/// mdbtools) give them.
enum TipoColumnaJet : int {
    kJetSiNo = 0x01,
    kJetByte = 0x02,
    kJetEntero = 0x03,
    kJetEnteroLargo = 0x04,
    kJetMoneda = 0x05,
    kJetSimple = 0x06,
    kJetDoble = 0x07,
    kJetFechaHora = 0x08,
    kJetBinario = 0x09,
    kJetTexto = 0x0A,
    kJetOle = 0x0B,
    kJetMemo = 0x0C,
    kJetIdReplica = 0x0F,
    kJetDecimal = 0x10,
    kJetComplejo = 0x12,
};

/// The kind of column of an Access column of type `tipo` (a TipoColumnaJet)
/// and, for decimals, scale `escala`.
AlmacenColumna AlmacenColumnaAccess(int tipo, int escala);

/// The value of a column from the text mdbtools gives for it (integers,
/// money "1234.5600", decimals, texts, Yes/No as "1"/"0"). Nothing when a
/// number does not fit its column.
std::optional<Valor> ValorAccessDesdeTexto(AlmacenColumna almacen, std::string_view texto);

/// The date (and time of day, to the second) of a Date/Time serial: days
/// since 1899-12-30, the fraction the time of day; before that day the
/// whole part counts back and the fraction still forward (-1.25 is
/// 1899-12-29 06:00). Nothing outside the years 100 to 9999.
std::optional<std::string> FechaHoraDesdeSerial(double serial);

/// Loads the tables `tablas` of the Access database at `ruta` into tables
/// of the same names in `memoria`, each column with its name and the kind
/// above, all in one transaction. Throws ErrorLectura naming the file when
/// it cannot be opened, lacks a table, or holds a value that cannot be
/// read (a date outside the calendar, a memo beyond the reading limit).
void CargaBaseAccess(BaseDatos& memoria, const std::string& ruta, const std::vector<std::string>& tablas);

}  // namespace velmorant
