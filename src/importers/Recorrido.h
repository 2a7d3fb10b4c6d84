#pragma once
// The row loop every reader runs over a record source: the progress bar
// (caption, maximum, a move every few rows), the title row, blank rows,
// one transaction over the run's stores, and the failure path of a row
// that cannot be read: its messages, the rollback of the reader's rows and
// ErrorLectura naming the file and the line, which stops the run before
// anything is committed.

#include <string>

#include "platform/ErrorLectura.h"
#include "platform/PuntoPrueba.h"
#include "platform/fuentes/FuenteRegistros.h"
#include "session/ProgramaTerminado.h"
#include "session/Sesion.h"

namespace velmorant {

/// How a reader walks its rows.
struct ReglasRecorrido {
    /// Progress caption; empty leaves the caption as it is.
    std::string etiqueta;
    /// The first physical row is dropped, even when it is blank.
    bool titulos = false;
    /// Blank rows (no text, or only empty cells) are dropped anywhere.
    bool saltaVacias = true;
    /// The messages of a row that cannot be read.
    enum class Fallo {
        Linea,         // "Error al leer el archivo X, línea N: causa" and the line
        LineaPoliza,   // the error report, then "Error al leer la línea: " and the line
        FilaPoliza,    // the error report, then "Error al leer la fila: " and the row's number
    } fallo = Fallo::Linea;
};

/// The failure of one row: shows the messages of `reglas.fallo` and throws
/// ErrorLectura naming the source and the row.
[[noreturn]] void FallaFila(Sesion& s, const FuenteRegistros& fuente, const Fila& fila, const std::string& causa,
                            ReglasRecorrido::Fallo fallo);

/// The progress bar of one reader; the value moves every 64 rows, so that a
/// long file does not spend its time repainting.
class AvanceLectura {
public:
    AvanceLectura(Sesion& s, const std::string& etiqueta, long maximo);
    void valor(long n);

private:
    Progreso* p_;
};

/// True when the row is blank: no text and no cell with anything in it.
bool FilaEnBlanco(const Fila& fila);

/// Runs `procesa(fila)` on every row of `fuente` by `reglas` (after the
/// source's notice of how it was read, if any), inside one
/// transaction over the session's company connection (to which the run's
/// stores are attached). A row that throws anything but the program's end
/// or a read error of its own is a fault of that row (FallaFila); the
/// transaction then rolls back.
template <class F>
void RecorreFilas(Sesion& s, FuenteRegistros& fuente, const ReglasRecorrido& reglas, F&& procesa);

// ------------------------------------------------------------ implementation

/// Shows the source's notice of how it was read, when it has one.
void AvisaLectura(Sesion& s, const FuenteRegistros& fuente);

template <class F>
void RecorreFilas(Sesion& s, FuenteRegistros& fuente, const ReglasRecorrido& reglas, F&& procesa) {
    AvisaLectura(s, fuente);
    AvanceLectura avance(s, reglas.etiqueta, fuente.totalEstimado());
    Transaccion t(*s.DbEmpresa);
    long contador = 0;
    bool salta = reglas.titulos;
    Fila fila;
    while (fuente.siguiente(fila)) {
        avance.valor(contador);
        if (!salta && !(reglas.saltaVacias && FilaEnBlanco(fila))) {
            try {
                procesa(fila);
            } catch (const ProgramaTerminado&) {
                throw;
            } catch (const ErrorLectura&) {
                throw;
            } catch (const std::exception& e) {
                FallaFila(s, fuente, fila, e.what(), reglas.fallo);
            }
            FilaPuntoPrueba();
        }
        if (++contador == 1) salta = false;
    }
    t.confirma();
}

}  // namespace velmorant
