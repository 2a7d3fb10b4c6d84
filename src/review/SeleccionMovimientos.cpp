#include "review/SeleccionMovimientos.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

#include "accounts/CodigosCuenta.h"
#include "platform/Numeros.h"
#include "review/CedulaAnalitica.h"
#include "review/CedulaAnaliticaComun.h"
#include "review/SeleccionMovimientosRegistro.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant {

using cedula::FilaMovimiento;
using cedula::Movimientos;
using cedula::Recorta;
using cedula::TextoNumero;
using cedula::RegistroCedula;
using cedula::Utilizable;

// ------------------------------------------------------------ Registration

namespace cedula {

std::vector<FilaMovimiento> Movimientos(Consulta r) {
    std::vector<FilaMovimiento> filas;
    filas.reserve(r.cuentaRegistros());
    for (r.primero(); !r.eof(); r.siguiente())
        filas.push_back({r["IdPoliza"], r["Cuenta"], r["TipoMov"], r["Referencia"], r["Fecha"], r["MovRevisado"],
                         r["Importe"].moneda()});
    return filas;
}

bool Utilizable(const Sesion& s, const FilaMovimiento& f) {
    auto fecha = f.fecha.fecha();
    return !(fecha && fecha->mes() <= s.UltimoMesImportado && f.movRevisado.esNulo());
}

RegistroCedula::RegistroCedula(Sesion& s, bool observa)
    : s_(s), observa_(observa),
      ultimoIdVista_(s.DbEmpresa->escalar("SELECT MAX(IdCedAnalitica) FROM CedAnalitica").entero()) {}

RegistroCedula::Preparado RegistroCedula::prepara(const FilaMovimiento& f) {
    BaseDatos& db = *s_.DbEmpresa;
    Preparado p;
    p.fila = &f;
    if (observa_) {
        const std::string clave =
            "IdPoliza = ? AND Cuenta = ? AND Referencia = ? AND TipoMov = ? AND Importe = ?";
        const Valor id = SiNuloCero(f.idPoliza);
        const std::string cuenta = SiNuloTexto(f.cuenta), ref = SiNuloTexto(f.referencia),
                          tipoMov = SiNuloTexto(f.tipoMov);
        // The first earlier row of the movement that is a selection and not a remark.
        Consulta a = db.consulta("SELECT IdCriterio, Cuenta FROM CedAnalitica WHERE " + clave +
                                     " AND IdCedAnalitica <= ? AND COALESCE(VerObs, 0) <> 1 "
                                     "ORDER BY IdCedAnalitica LIMIT 1",
                                 id, cuenta, ref, tipoMov, f.importe, ultimoIdVista_);
        if (!a.vacia()) {
            p.verObs = 1;
            std::string nombre = NombreCriterioMovimientos(s_, static_cast<int>(a["IdCriterio"].entero()),
                                                           SiNuloTexto(a["Cuenta"]));
            if (!db.escalar("SELECT 1 FROM CedAnalitica WHERE " + clave + " LIMIT 1", id, cuenta, ref, tipoMov,
                            f.importe)
                     .esNulo())
                p.obs = "Cuenta ya seleccionada por el criterio: " + nombre;
        }
    }
    const std::int64_t idPoliza = SiNuloCero(f.idPoliza).entero();
    p.poliza = DatoDePoliza(s_, idPoliza, "Poliza");
    p.tipo = DatoDePoliza(s_, idPoliza, "Tipo");
    p.fecha = DatoDePoliza(s_, idPoliza, "Fecha");
    return p;
}

void RegistroCedula::agrega(const Preparado& p, int idCriterio) {
    const FilaMovimiento& f = *p.fila;
    s_.DbEmpresa->ejecuta(
        "INSERT INTO CedAnalitica (IdCriterio, IdPoliza, Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe, "
        "Refmodificada, VerObs, Obs) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        idCriterio, f.idPoliza, p.poliza, p.tipo, p.fecha.empty() ? Valor() : Valor(p.fecha), f.cuenta, f.referencia,
        f.tipoMov, f.importe, f.referencia, p.verObs, p.obs);
}

}  // namespace cedula

namespace {


// `porcentaje` percent of `total`, as money (halves to the even digit).
Moneda PorcentajeDe(Moneda total, double porcentaje) {
    return total.multiplica(porcentaje / 100.0, Redondeo::MitadAlPar);
}

// 100 × selected ÷ total, without sign, to two decimals (halves to even);
// 0 when the total is 0.
double PorcentajeAlcanzado(Moneda seleccionado, Moneda total) {
    if (total.esCero()) return 0;
    long double p = 100.0L * seleccionado.diezmilesimas() / total.diezmilesimas();
    return RedondeaAlPar(static_cast<double>(std::fabs(p)), 2);
}

const char* Signo(bool contraNaturaleza) { return contraNaturaleza ? "SaldoContraNat" : "NOT SaldoContraNat"; }

std::string NaturalezaDe(Sesion& s, const std::string& cuenta) {
    return SiNuloTexto(
        s.DbEmpresa->escalar("SELECT Naturaleza FROM Cuentas WHERE Cuenta = ? ORDER BY rowid LIMIT 1", cuenta));
}

// Sum of the store's amounts of the account up to a month, by sign.
Moneda TotalHastaMes(Sesion& s, const std::string& cuenta, int mes, bool contraNaturaleza) {
    return s.DbEmpresa
        ->escalar(std::string("SELECT SUM(Importe) AS TotalMovs FROM SelecPolizas_DetalleTmp WHERE Cuenta = ? "
                              "AND NumMesFechaPol <= ? AND ") +
                      Signo(contraNaturaleza),
                  cuenta, mes)
        .moneda();
}

void ActualizaCriterio(Sesion& s, const std::string& cuenta, int idCriterio, double porcentaje, Moneda total,
                       const std::string& texto) {
    s.DbEmpresa->ejecuta(
        "UPDATE CedAnaliticaMaster SET Porcentaje = ?, TotalCta = ?, Descripcion = ? "
        "WHERE CtaIntegracion = ? AND IdCriterio = ?",
        porcentaje, total, texto, cuenta, idCriterio);
}

// The first `n` characters of a UTF-8 text, and the last `n`.
size_t Caracteres(const std::string& t) {
    size_t n = 0;
    for (unsigned char c : t) n += (c & 0xC0) != 0x80;
    return n;
}

std::string Izquierda(const std::string& t, size_t n) {
    size_t i = 0, vistos = 0;
    for (; i < t.size(); ++i) {
        if ((static_cast<unsigned char>(t[i]) & 0xC0) != 0x80) {
            if (vistos == n) break;
            ++vistos;
        }
    }
    return t.substr(0, i);
}

std::string Derecha(const std::string& t, size_t n) {
    size_t total = Caracteres(t);
    if (n >= total) return t;
    return t.substr(Izquierda(t, total - n).size());
}

void AplicaCriterio(Sesion& s, const Consulta& regla, const FuenteSemilla& semillas) {
    const std::string cuenta = SiNuloTexto(regla["CtaIntegracion"]);
    const std::string descripcion = SiNuloTexto(regla["Descripcion"]);
    const double porcentaje = regla["Porcentaje"].real();
    const int id = static_cast<int>(regla["IdCriterio"].entero());
    switch (id) {
        case 1:
        case 7:  // both store 1
            SeleccionaMovimientosPorImporte(s, regla["SaldoMayorA"].moneda(), cuenta, id == 7);
            break;
        case 2:
        case 8:
            SeleccionaMovimientosPorcentajeCuenta(s, cuenta, id, porcentaje, regla["TotalCta"].moneda());
            break;
        case 3:
            SeleccionaMovimientosMensuales(s, cuenta, descripcion);
            break;
        case 4:
            SeleccionaTodosLosMovimientos(s, cuenta, id);
            break;
        case 5:
        case 6:
            SeleccionaMovimientosPorTipo(s, cuenta, porcentaje, id);
            break;
        case 9:
            SeleccionaMovimientosRevisados(s, cuenta, id, s.UltimoMesImportado);
            break;
        case 10:
            SeleccionaMovimientosAleatorios(s, porcentaje, cuenta, id, s.UltimoMesImportado, s.UltimoMesNuevo,
                                            descripcion, semillas);
            break;
        case 11:
            SeleccionaMovimientosAleatoriosTipo(s, porcentaje, cuenta, id, s.UltimoMesImportado, s.UltimoMesNuevo,
                                                descripcion, semillas);
            break;
        default:  // selects nothing; the account is marked all the same
            break;
    }
}

}  // namespace

// ----------------------------------------------------------- TotalCta

void ActualizaTotalCtaAnalitica(Sesion& s, int mes) {
    if (mes < 1 || mes > 13) throw std::invalid_argument("Mes fuera de rango: " + std::to_string(mes));
    BaseDatos& db = *s.DbEmpresa;
    const std::string saldo =
        "SELECT SdoFin" + DosDigitos(mes) + " FROM Balanzas WHERE Cuenta = ? ORDER BY rowid LIMIT 1";
    Consulta reglas = db.consulta("SELECT rowid AS Fila, CtaIntegracion FROM CedAnaliticaMaster");
    for (reglas.primero(); !reglas.eof(); reglas.siguiente()) {
        const std::string cuenta = SiNuloTexto(reglas["CtaIntegracion"]);
        Moneda total = db.escalar(saldo, cuenta).moneda();
        if (total.esCero())
            total = db.escalar("SELECT SUM(Importe) AS TotalMovtos FROM Polizas_Detalle WHERE Cuenta = ?", cuenta)
                        .moneda();
        db.ejecuta("UPDATE CedAnaliticaMaster SET TotalCta = ? WHERE rowid = ?", total, reglas["Fila"]);
    }
}

// -------------------------------------------------------------- Driver

void QuitaMarcaDescripcion(Sesion& s) {
    BaseDatos& db = *s.DbEmpresa;
    Consulta c = db.consulta("SELECT rowid AS Fila, Descripcion FROM CedAnaliticaMaster");
    for (c.primero(); !c.eof(); c.siguiente()) {
        std::string d = Recorta(SiNuloTexto(c["Descripcion"]));
        if (!d.empty() && d.back() == '*')
            db.ejecuta("UPDATE CedAnaliticaMaster SET Descripcion = ? WHERE rowid = ?", d.substr(0, d.size() - 1),
                       c["Fila"]);
    }
}

void ReconstruyeCedulaAnalitica(Sesion& s, const FuenteSemilla& semillas) {
    BaseDatos& db = *s.DbEmpresa;
    QuitaMarcaDescripcion(s);
    Consulta reglas =
        db.consulta("SELECT * FROM CedAnaliticaMaster ORDER BY CtaIntegracion ASC, IdCriterio ASC, rowid ASC");
    if (reglas.vacia()) return;
    cedula::RenuevaAlmacen(s, kSelecPolizasDetalleTmp, CreaSelecPolizasDetalleTmp, {kSelecPolizasDetalleTmp});
    GuardaCedulaAnalitica(s);
    db.ejecuta("DELETE FROM CedAnalitica");
    for (reglas.primero(); !reglas.eof(); reglas.siguiente()) {
        const std::string cuenta = SiNuloTexto(reglas["CtaIntegracion"]);
        db.ejecuta("DELETE FROM SelecPolizas_DetalleTmp");
        LlenaMovimientosCuenta(s, cuenta);
        CompletaDatosPoliza(s);
        MarcaMovimientosRevisados(s, cuenta);
        AplicaCriterio(s, reglas, semillas);
        db.ejecuta("UPDATE Cuentas SET PorRevisar = ? WHERE Cuenta = ?", true, cuenta);
    }
    ConservaRenglonesPerdidos(s);
    ReportaMovimientosPerdidos(s);
    RestauraDatosCedula(s);
    CierraAlmacen(s, kSelecPolizasDetalleTmp);
}

// ------------------------------------------------------------ The store

void LlenaMovimientosCuenta(Sesion& s, const std::string& cuenta) {
    BaseDatos& db = *s.DbEmpresa;
    const std::string naturaleza = NaturalezaDe(s, cuenta);
    Consulta c = db.consulta(
        "SELECT IdPoliza, Cuenta, TipoMov, Importe, Referencia FROM Polizas_Detalle "
        "WHERE Cuenta = ? AND Importe <> 0 ORDER BY rowid",
        cuenta);
    for (c.primero(); !c.eof(); c.siguiente()) {
        const Moneda importe = c["Importe"].moneda();
        const std::string tipoMov = SiNuloTexto(c["TipoMov"]);
        bool contra = false;
        if (naturaleza == "D") contra = tipoMov == "H" || importe < Moneda();
        if (naturaleza == "A") contra = tipoMov == "D" || importe < Moneda();
        db.ejecuta(
            "INSERT INTO SelecPolizas_DetalleTmp (IdPoliza, Cuenta, TipoMov, Importe, Referencia, ImporteAbs, "
            "SaldoContraNat) VALUES (?, ?, ?, ?, ?, ?, ?)",
            c["IdPoliza"], c["Cuenta"], c["TipoMov"], importe, QuitaCaracteresEspeciales(SiNuloTexto(c["Referencia"])),
            importe.abs(), contra);
    }
}

void CompletaDatosPoliza(Sesion& s) {
    s.DbEmpresa->ejecuta(
        "UPDATE SelecPolizas_DetalleTmp SET (NumMesFechaPol, Poliza, Tipo, Fecha) = "
        "(SELECT Month(P.Fecha), P.Poliza, COALESCE(P.Tipo, ''), P.Fecha FROM Polizas P "
        " WHERE P.IdPoliza = SelecPolizas_DetalleTmp.IdPoliza ORDER BY P.rowid LIMIT 1) "
        "WHERE EXISTS (SELECT 1 FROM Polizas P WHERE P.IdPoliza = SelecPolizas_DetalleTmp.IdPoliza)");
}

void MarcaMovimientosRevisados(Sesion& s, const std::string& cuenta) {
    if (!ExisteArchivo(RutaAlmacen(s, kCedAnaliticaTmp)) || !AbreAlmacen(s, kCedAnaliticaTmp)) return;
    BaseDatos& db = *s.DbEmpresa;
    Consulta guardados = db.consulta(
        "SELECT IdCedAnalitica, Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe, VerObs, MovtoExistente "
        "FROM CedAnaliticaTmp WHERE Cuenta = ? ORDER BY Fecha ASC, VerObs ASC, IdCedAnalitica ASC",
        cuenta);
    Consulta movimientos = db.consulta(
        "SELECT rowid AS Fila, Poliza, Tipo, Fecha, Cuenta, Referencia, TipoMov, Importe, MovRevisado "
        "FROM SelecPolizas_DetalleTmp ORDER BY Fecha ASC, rowid ASC");
    const cedula::IndiceMovimientos indice(movimientos);
    std::vector<Valor> revisado;  // MovRevisado of each store row, as this walk leaves it
    for (movimientos.primero(); !movimientos.eof(); movimientos.siguiente())
        revisado.push_back(movimientos["MovRevisado"]);
    auto marca = [&](size_t i) {
        movimientos.mueveA(i);
        db.ejecuta("UPDATE SelecPolizas_DetalleTmp SET MovRevisado = 1 WHERE rowid = ?", movimientos["Fila"]);
        revisado[i] = 1;
    };

    for (guardados.primero(); !guardados.eof(); guardados.siguiente()) {
        bool encontrado = false;
        if (SiNuloTexto(guardados["Referencia"]) == "Saldo Inicial" && guardados["Poliza"].esNulo()) {
            encontrado = true;  // an opening balance line has no voucher to look for
        } else {
            const auto& iguales = indice.busca(cedula::ClaveDe(guardados));
            if (SiNuloCero(guardados["VerObs"]).entero() == 0) {
                // A selection claims one movement of its own: two equal rows need two.
                for (size_t i : iguales)
                    if (revisado[i].esNulo()) {
                        marca(i);
                        encontrado = true;
                        break;
                    }
            } else if (!iguales.empty()) {
                // A remark claims nothing.
                encontrado = true;
                const Valor& primero = revisado[iguales.front()];
                if (!primero.esNulo() && primero.entero() == 0) marca(iguales.front());
            }
        }
        if (encontrado)
            db.ejecuta("UPDATE CedAnaliticaTmp SET MovtoExistente = ? WHERE IdCedAnalitica = ?", true,
                       guardados["IdCedAnalitica"]);
    }
}

// ------------------------------------------------------------- The rules

void SeleccionaMovimientosPorImporte(Sesion& s, Moneda importe, const std::string& cuenta, bool contraNaturaleza) {
    RegistroCedula registro(s);
    auto filas = Movimientos(s.DbEmpresa->consulta(
        std::string("SELECT * FROM SelecPolizas_DetalleTmp WHERE Cuenta = ? AND ImporteAbs >= ? AND ") +
            Signo(contraNaturaleza) + " ORDER BY ImporteAbs DESC, rowid ASC",
        cuenta, importe));
    for (auto& f : filas) registro.registra(f, 1);
}

void SeleccionaTodosLosMovimientos(Sesion& s, const std::string& cuenta, int idCriterio) {
    RegistroCedula registro(s);
    auto filas = Movimientos(s.DbEmpresa->consulta(
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE Cuenta = ? AND ImporteAbs > 0 ORDER BY ImporteAbs DESC, rowid ASC",
        cuenta));
    for (auto& f : filas) registro.registra(f, idCriterio);
}

void SeleccionaMovimientosRevisados(Sesion& s, const std::string& cuenta, int idCriterio, int ultimoMes) {
    RegistroCedula registro(s);
    auto filas = Movimientos(s.DbEmpresa->consulta(
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol <= ? AND Cuenta = ? AND MovRevisado = 1 "
        "ORDER BY rowid",
        ultimoMes, cuenta));
    for (auto& f : filas)
        if (f.movRevisado.entero() == 1) registro.registra(f, idCriterio);
}

void SeleccionaMovimientosPorPorcentaje(Sesion& s, Moneda objetivo, const std::string& cuenta, int mesInicial,
                                        int mesFinal, int idCriterio, bool contraNaturaleza) {
    RegistroCedula registro(s);
    auto filas = Movimientos(s.DbEmpresa->consulta(
        std::string("SELECT * FROM SelecPolizas_DetalleTmp WHERE NumMesFechaPol BETWEEN ? AND ? AND Cuenta = ? "
                    "AND ImporteAbs > 0 AND ") +
            Signo(contraNaturaleza) + " ORDER BY MovRevisado DESC, ImporteAbs DESC, rowid ASC",
        mesInicial, mesFinal, cuenta));
    Moneda suma;
    for (auto& f : filas) {
        auto preparado = registro.prepara(f);
        const bool utilizable = Utilizable(s, f);
        if (utilizable) suma += f.importe;
        const bool cruza = suma.abs() > objetivo.abs();
        if (utilizable) registro.agrega(preparado, idCriterio);  // the row that crosses goes in too
        if (cruza) break;
    }
}

void SeleccionaMovimientosPorcentajeCuenta(Sesion& s, const std::string& cuenta, int idCriterio, double porcentaje,
                                           Moneda totalCta) {
    const bool contra = idCriterio == 8;
    const int importado = s.UltimoMesImportado, nuevo = s.UltimoMesNuevo;
    if (nuevo == importado) {
        SeleccionaMovimientosPorPorcentaje(s, PorcentajeDe(totalCta, porcentaje), cuenta, 1, nuevo, idCriterio,
                                           contra);
    } else {
        SeleccionaMovimientosPorPorcentaje(s, PorcentajeDe(totalCta, porcentaje), cuenta, 1, importado, idCriterio,
                                           contra);
        Moneda mesesNuevos = TotalHastaMes(s, cuenta, nuevo, contra) - TotalHastaMes(s, cuenta, importado, contra);
        if (mesesNuevos > Moneda())
            SeleccionaMovimientosPorPorcentaje(s, PorcentajeDe(mesesNuevos, porcentaje), cuenta, importado + 1, nuevo,
                                               idCriterio, contra);
    }
    const Moneda total = TotalHastaMes(s, cuenta, nuevo, contra);
    const Moneda seleccionado =
        s.DbEmpresa
            ->escalar("SELECT SUM(ABS(Importe)) AS Total FROM CedAnalitica WHERE Cuenta = ? AND IdCriterio = ?",
                      cuenta, idCriterio)
            .moneda();
    const double alcanzado = PorcentajeAlcanzado(seleccionado, total);
    std::string texto = "el " + TextoNumero(alcanzado) + " % de " + total.formatoMoneda();
    if (contra) texto += " en movimientos con signo contrario a su naturaleza";
    ActualizaCriterio(s, cuenta, idCriterio, alcanzado, total, texto);
}

MesesDescripcion LeeMesesDescripcion(const std::string& descripcion) {
    MesesDescripcion r;
    auto lee = [&r](const std::string& renglon) {
        r.meses.push_back(NumeroDeMes(Izquierda(renglon, 3)));
        r.porcentajes.push_back(Derecha(renglon, 3));
    };
    const std::string texto = Recorta(descripcion);
    const size_t corchete = texto.find('[');
    std::string resto = corchete == std::string::npos ? texto : texto.substr(corchete + 1);
    for (;;) {
        const std::string recortado = Recorta(resto);
        const size_t p = recortado.find(';');
        if (p == std::string::npos) break;
        // The item ends two characters before the ";": "ENE - 010%;" gives "ENE - 010".
        lee(p >= 1 ? recortado.substr(0, p - 1) : std::string());
        resto = recortado.substr(p + 1);
    }
    lee(Izquierda(Recorta(resto), 9));
    return r;
}

void SeleccionaMovimientosMensuales(Sesion& s, const std::string& cuenta, const std::string& descripcion) {
    const MesesDescripcion md = LeeMesesDescripcion(descripcion);
    for (size_t i = 0; i < md.meses.size(); ++i) {
        // A percentage that does not read as a number names no walk.
        const auto porcentaje = ValorNumerico(md.porcentajes[i]);
        if (!porcentaje) continue;
        const int mes = md.meses[i];
        const Moneda totalMes =
            s.DbEmpresa
                ->escalar("SELECT SUM(ImporteAbs) FROM SelecPolizas_DetalleTmp WHERE Month(Fecha) = ? AND ImporteAbs > 0",
                          mes)
                .moneda();
        SeleccionaMovimientosPorPorcentaje(s, PorcentajeDe(totalMes, *porcentaje), cuenta, mes, mes, 3, false);
    }
}

void SeleccionaMovimientosPorTipo(Sesion& s, const std::string& cuenta, double porcentaje, int idCriterio) {
    BaseDatos& db = *s.DbEmpresa;
    const std::string tipo = idCriterio == 5 ? "D" : "H";
    const Moneda total = db.escalar("SELECT SUM(ImporteAbs) AS TotalMovs FROM SelecPolizas_DetalleTmp "
                                    "WHERE Cuenta = ? AND TipoMov = ?",
                                    cuenta, tipo)
                             .moneda();
    const Moneda objetivo = PorcentajeDe(total, porcentaje);
    RegistroCedula registro(s);
    auto filas = Movimientos(db.consulta(
        "SELECT * FROM SelecPolizas_DetalleTmp WHERE Cuenta = ? AND TipoMov = ? AND ImporteAbs > 0 "
        "ORDER BY MovRevisado DESC, ImporteAbs DESC, rowid ASC",
        cuenta, tipo));
    Moneda suma;
    for (auto& f : filas) {
        auto preparado = registro.prepara(f);
        const bool utilizable = Utilizable(s, f);
        suma += f.importe.abs();
        if (utilizable) registro.agrega(preparado, idCriterio);
        // Unlike the percentage walk, the first unusable row ends this one.
        if (!utilizable || suma.abs() > objetivo.abs()) break;
    }
    const Moneda seleccionado =
        db.escalar("SELECT SUM(ABS(Importe)) AS TotalSelec FROM CedAnalitica WHERE IdCriterio = ? AND Cuenta = ?",
                   idCriterio, cuenta)
            .moneda();
    const double alcanzado = PorcentajeAlcanzado(seleccionado, total);
    const std::string texto = "el " + TextoNumero(alcanzado) + " % de " + (idCriterio == 5 ? "Cargos" : "Abonos") +
                              " de un total de " + total.formatoMoneda();
    ActualizaCriterio(s, cuenta, idCriterio, alcanzado, total, texto);
}

// --------------------------------------------------------------- Lookups

std::string NombreCriterioMovimientos(Sesion& s, int idCriterio, const std::string& cuenta) {
    if (s.DbEmpresa
            ->escalar("SELECT IdCriterio FROM CedAnaliticaMaster WHERE IdCriterio = ? AND CtaIntegracion = ?",
                      idCriterio, cuenta)
            .esNulo())
        return {};
    switch (idCriterio) {
        case 1: return "Saldo Mayor a";
        case 2: return "% del total de la cuenta";
        case 3: return "Selección mensual";
        case 4: return "Todos los movimientos";
        case 5: return "% del total de CARGOS";
        case 6: return "% del total de ABONOS";
        default: return {};
    }
}

std::string DatoDePoliza(Sesion& s, std::int64_t idPoliza, const std::string& campo) {
    static const char* const kCampos[] = {"IdPoliza", "Poliza", "Tipo", "Fecha", "Concepto",
                                          "Poliza_Deshabilitada", "Cuadrada", "Poliza_Mes13", "Poliza_Ajuste"};
    bool conocido = false;
    for (const char* c : kCampos) conocido = conocido || campo == c;
    if (!conocido) throw std::invalid_argument("Campo desconocido de Polizas: " + campo);
    return SiNuloTexto(s.DbEmpresa->escalar(
        "SELECT " + campo + " FROM Polizas WHERE IdPoliza = ? ORDER BY rowid LIMIT 1", idPoliza));
}

}  // namespace velmorant
