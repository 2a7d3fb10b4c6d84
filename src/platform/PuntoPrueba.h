#pragma once
// Named points of a run where a test may stop the process dead, as a kill or
// a power cut would. Always compiled in and inert unless the environment
// asks for it:
//
//   VELMORANT_PUNTO_PRUEBA=NOMBRE     SIGKILL this process at the first point
//                                     of that name ("A ImportaCatalogo",
//                                     "A fila 120", "B GuardaPolizas 03",
//                                     "C ReconstruyeCedulaAnalitica", ...)
//   VELMORANT_PUNTO_PRUEBA_LISTA=F    append the name of every point reached
//                                     to file F, one a line
//   VELMORANT_PUNTO_PRUEBA_COPIA=D    just before the kill, copy the base
//                                     folder (journals included) to folder D:
//                                     what the disk held at a power cut
//
// The letter is the run's phase: A reads and checks, B commits, C rebuilds
// the review work (B and C in the commit's one transaction), F follows the
// commit.

#include <string>

namespace velmorant {

/// True when any of the variables above is set.
bool PuntosPruebaActivos();

/// A point of the run. Without the variables this returns at once.
void PuntoPrueba(const std::string& nombre);

/// One more row read by any reader of the run; every tenth is the point
/// "fila N", N the rows read so far.
void FilaPuntoPrueba();

/// The phase letter put before the names of the points that follow.
void FasePuntoPrueba(char fase);

/// The folder copied at a power cut: the base folder of the run.
void CarpetaPuntoPrueba(const std::string& carpeta);

}  // namespace velmorant
