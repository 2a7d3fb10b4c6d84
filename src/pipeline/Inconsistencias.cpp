#include "pipeline/Inconsistencias.h"

#include <algorithm>
#include <stdexcept>

#include "accounts/CodigosCuenta.h"
#include "platform/Texto.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant {

namespace {

std::string FuenteError(int fuente) {
    switch (fuente) {
        case kFuenteCatalogo:
            return "Catálogo de Cuentas";
        case kFuenteSaldosIniciales:
            return "Saldos Iniciales";
        case kFuentePolizas:
            return "Pólizas";
        default:
            return "";
    }
}

// A value as its field of the log can hold it.
std::string AlAncho(const char* campo, const std::string& texto) {
    return CortaAlAncho(texto, static_cast<size_t>(LongitudCampo(TablaInconsisImpTmp(), campo)));
}

}  // namespace

void RegistraInconsistencia(Sesion& s, const std::string& referencia, int fuente, const std::string& clasif,
                            const std::string& poliza, const std::string& tipo, const std::optional<Fecha>& fecha,
                            const std::string& cuenta) {
    if (!s.DbInconsistencias)
        throw std::logic_error("El registro de inconsistencias (InconsisImpTmp) no está abierto; no se pudo registrar: " +
                               referencia);
    std::string fuenteError = FuenteError(fuente);
    std::string formateada = AlAncho("Cuenta_Fmtda", s.SeparadorEmpresa.empty() ? cuenta : FormateaCuenta(s, cuenta));
    // Only the dated form cleans the voucher number, as it always has.
    std::string numero = AlAncho("Poliza", fecha ? QuitaCaracteresEspeciales(poliza) : poliza);
    const std::string texto = AlAncho("Referencia", referencia), clase = AlAncho("ClasifError", clasif),
                      tipoCorto = AlAncho("Tipo", tipo), cuentaCorta = AlAncho("Cuenta", cuenta);
    if (fecha) {
        s.DbInconsistencias->ejecuta(
            "INSERT INTO InconsisImpTmp (Referencia, FuenteError, ClasifError, Poliza, Tipo, Fecha, Cuenta, "
            "Cuenta_Fmtda) VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
            texto, fuenteError, clase, numero, tipoCorto, *fecha, cuentaCorta, formateada);
    } else {
        s.DbInconsistencias->ejecuta(
            "INSERT INTO InconsisImpTmp (Referencia, FuenteError, ClasifError, Poliza, Tipo, Cuenta, Cuenta_Fmtda) "
            "VALUES (?, ?, ?, ?, ?, ?, ?)",
            texto, fuenteError, clase, numero, tipoCorto, cuentaCorta, formateada);
    }
}

bool ExisteInconsistenciaCuenta(Sesion& s, const std::string& cuenta) {
    const std::string sql = "SELECT 1 FROM InconsisImpTmp WHERE Cuenta = ? LIMIT 1";
    const std::string buscada = AlAncho("Cuenta", cuenta);
    if (s.DbInconsistencias) return !s.DbInconsistencias->escalar(sql, buscada).esNulo();
    std::string ruta = RutaAlmacen(s, kInconsisImpTmp);
    if (!ExisteArchivo(ruta)) return false;
    BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
    return !db.escalar(sql, buscada).esNulo();
}

std::string CortaAlAncho(const std::string& texto, size_t ancho) {
    if (ancho == 0 || LongitudCaracteres(texto) <= ancho) return texto;
    if (ancho == 1) return IzquierdaCaracteres(texto, 1);
    return IzquierdaCaracteres(texto, ancho - 1) + "…";
}

std::string ComponeReferencia(const std::vector<PiezaReferencia>& piezas, size_t ancho) {
    std::string entero;
    size_t palabras = 0;
    std::vector<size_t> datos;  // indexes of the quoted values
    for (size_t i = 0; i < piezas.size(); ++i) {
        entero += piezas[i].texto;
        if (piezas[i].dato) datos.push_back(i);
        else palabras += LongitudCaracteres(piezas[i].texto);
    }
    if (LongitudCaracteres(entero) <= ancho) return entero;
    if (palabras + datos.size() > ancho) return CortaAlAncho(entero, ancho);
    // Shortest values first: each takes its share of what is left.
    std::vector<size_t> largos(piezas.size(), 0), cabe(piezas.size(), 0);
    for (size_t i : datos) largos[i] = LongitudCaracteres(piezas[i].texto);
    std::stable_sort(datos.begin(), datos.end(), [&](size_t a, size_t b) { return largos[a] < largos[b]; });
    size_t libre = ancho - palabras;
    for (size_t k = 0; k < datos.size(); ++k) {
        size_t i = datos[k];
        cabe[i] = std::min(largos[i], libre / (datos.size() - k));
        libre -= cabe[i];
    }
    std::string r;
    for (size_t i = 0; i < piezas.size(); ++i)
        r += piezas[i].dato ? CortaAlAncho(piezas[i].texto, cabe[i]) : piezas[i].texto;
    return r;
}

}  // namespace velmorant
