#include "pipeline/Inconsistencias.h"

#include <stdexcept>

#include "accounts/CodigosCuenta.h"
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

// Characters of a UTF-8 text (the widths of the log count characters).
size_t Caracteres(const std::string& t) {
    size_t n = 0;
    for (unsigned char c : t)
        if ((c & 0xC0) != 0x80) ++n;
    return n;
}

// A text longer than its field would be cut or refused by the engine of
// the log; the step that composed it must fail instead.
void VerificaAncho(const std::string& campo, const std::string& texto) {
    size_t ancho = static_cast<size_t>(LongitudCampo(TablaInconsisImpTmp(), campo));
    if (ancho == 0 || Caracteres(texto) <= ancho) return;
    throw std::length_error("El texto del campo " + campo + " de InconsisImpTmp tiene " +
                            std::to_string(Caracteres(texto)) + " caracteres y caben " + std::to_string(ancho) +
                            ": \"" + texto + "\"");
}

}  // namespace

void RegistraInconsistencia(Sesion& s, const std::string& referencia, int fuente, const std::string& clasif,
                            const std::string& poliza, const std::string& tipo, const std::optional<Fecha>& fecha,
                            const std::string& cuenta) {
    if (!s.DbInconsistencias)
        throw std::logic_error("El registro de inconsistencias (InconsisImpTmp) no está abierto; no se pudo registrar: " +
                               referencia);
    std::string fuenteError = FuenteError(fuente);
    std::string formateada = s.SeparadorEmpresa.empty() ? cuenta : FormateaCuenta(s, cuenta);
    // Only the dated form cleans the voucher number, as it always has.
    std::string numero = fecha ? QuitaCaracteresEspeciales(poliza) : poliza;
    for (auto& [campo, texto] : {std::pair<const char*, const std::string&>{"Referencia", referencia},
                                 {"FuenteError", fuenteError},
                                 {"ClasifError", clasif},
                                 {"Poliza", numero},
                                 {"Tipo", tipo},
                                 {"Cuenta", cuenta},
                                 {"Cuenta_Fmtda", formateada}})
        VerificaAncho(campo, texto);
    if (fecha) {
        s.DbInconsistencias->ejecuta(
            "INSERT INTO InconsisImpTmp (Referencia, FuenteError, ClasifError, Poliza, Tipo, Fecha, Cuenta, "
            "Cuenta_Fmtda) VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
            referencia, fuenteError, clasif, numero, tipo, *fecha, cuenta, formateada);
    } else {
        s.DbInconsistencias->ejecuta(
            "INSERT INTO InconsisImpTmp (Referencia, FuenteError, ClasifError, Poliza, Tipo, Cuenta, Cuenta_Fmtda) "
            "VALUES (?, ?, ?, ?, ?, ?, ?)",
            referencia, fuenteError, clasif, numero, tipo, cuenta, formateada);
    }
}

bool ExisteInconsistenciaCuenta(Sesion& s, const std::string& cuenta) {
    const std::string sql = "SELECT 1 FROM InconsisImpTmp WHERE Cuenta = ? LIMIT 1";
    if (s.DbInconsistencias) return !s.DbInconsistencias->escalar(sql, cuenta).esNulo();
    std::string ruta = RutaAlmacen(s, kInconsisImpTmp);
    if (!ExisteArchivo(ruta)) return false;
    BaseDatos db(ruta, BaseDatos::Modo::SoloLectura);
    return !db.escalar(sql, cuenta).esNulo();
}

}  // namespace velmorant
