#include "session/Despacho.h"

#include "session/Funciones.h"

namespace velmorant {

bool HayCatalogo(Sesion& s) {
    if (!s.DbEmpresa) return false;
    return !s.DbEmpresa->escalar("SELECT 1 FROM Cuentas LIMIT 1").esNulo();
}

std::string EnlaceAnterior(Sesion& s) {
    if (!s.DbEmpresas) return "";
    Valor id = s.DbEmpresas->escalar("SELECT IdSistema FROM Empresas WHERE IdEmpresa=?", s.IdEmpresaActual);
    if (id.esNulo()) return "";
    if (id.entero() == kEnlaceContPaqIAnterior) return "Anterior";
    if (id.entero() == kEnlaceContPaqIMejorado) return "Mejorado";
    return "";
}

namespace {

void AvisaEnlaceExcluido(Sesion& s, const std::string& otro) {
    MsgInformacion(s, "Esta empresa ya cuenta con una importación Previa utilizando el enlace de CONPAQ i - " + otro +
                          ".\r\nPara no perder la integridad de su información (Trabajo de Revisión), deberá utlizar "
                          "el mismo enlace.");
}

}  // namespace

bool AceptaEnlace(Sesion& s, int idSistema) {
    s.IdSistemaElegido = idSistema;
    if (idSistema == kEnlaceContPaqIAnterior && EnlaceAnterior(s) == "Mejorado") {
        AvisaEnlaceExcluido(s, "Mejorado");
        return false;
    }
    if (idSistema == kEnlaceContPaqIMejorado && EnlaceAnterior(s) == "Anterior") {
        AvisaEnlaceExcluido(s, "Anterior");
        return false;
    }
    return true;
}

}  // namespace velmorant
