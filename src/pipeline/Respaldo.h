#pragma once
// The copy of the company taken when a run starts, before it writes
// anything (phase A already registers voucher types), and the undo of the
// last committed import from it.
//
// The copy is made with SQLite's online backup into a file beside the
// company database ("ACME_2025.respaldo-0007.sqlite" for run 7), written
// under a temporary name and renamed once whole; it also keeps the fields
// of the company's row in `Empresas` that a run writes. A run that does
// not commit drops its copy; the five newest copies are kept.
//
// The undo restores, in one transaction over the company database with the
// copy and `Empresas` attached, every table of the company but the history
// and the fields of the company row; the history keeps every row and gains
// one for the undo. A failure rolls all of it back: the company is never
// left half restored.

#include <optional>
#include <string>
#include <vector>

#include "platform/BaseDatos.h"
#include "session/Sesion.h"

namespace velmorant {

/// Copies kept beside the company database.
inline constexpr int kRespaldosConservados = 5;
/// Table of the copy with the company's row as it was.
inline constexpr const char* kTablaRespaldoEmpresa = "Respaldo_Empresas";

/// Path of the copy of run `numero`, beside the session's company database.
std::string RutaRespaldo(const Sesion& s, long numero);

struct RespaldoEmpresa {
    long numero = 0;
    std::string ruta;
};
/// The copies of the session's company, oldest first.
std::vector<RespaldoEmpresa> RespaldosDeEmpresa(const Sesion& s);

/// Copies the session's company database into `destino` with the online
/// backup, with the company's row of `Empresas`. Throws on failure and
/// leaves no file at `destino` then.
void RespaldaEmpresa(Sesion& s, const std::string& destino);

/// Deletes all copies of the company but the `conservar` newest.
void RotaRespaldos(const Sesion& s, int conservar = kRespaldosConservados);

enum class ResultadoDeshacer {
    Deshecha,         // restored and recorded
    NadaQueDeshacer,  // no committed import left to undo
    SinRespaldo,      // its copy is gone (only the newest are kept) or damaged
    NoConfirmada,     // the user answered no
    Fallida,          // the restore failed and was rolled back
};

/// Restores the company as it was before the last committed import, after
/// asking the user (MsgPregunta) unless `confirmada` says the user already
/// agreed, and records the undo in the history. Every outcome but
/// NoConfirmada is told to the user.
ResultadoDeshacer DeshaceUltimaImportacion(Sesion& s, bool confirmada = false);

}  // namespace velmorant
