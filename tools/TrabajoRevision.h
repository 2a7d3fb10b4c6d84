#pragma once
// The auditor's review work on the demo company after its first import:
// account selection rules for the review months, hand-picked accounts, and an
// analytic schedule with marks, observations, tax figures and invoice folios,
// one of them on a voucher the client's second delivery drops.

#include <string>

namespace velmorant::demo {

/// Writes the review work into the company database at `rutaEmpresa`;
/// returns a one-line account of what it wrote.
std::string EscribeTrabajoRevision(const std::string& rutaEmpresa);

}  // namespace velmorant::demo
