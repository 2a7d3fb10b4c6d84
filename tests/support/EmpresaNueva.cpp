#include "support/EmpresaNueva.h"

#include "session/Inicio.h"

namespace velmorant::prueba {

DatosEmpresaNueva EmpresaAcme() {
    DatosEmpresaNueva d;
    d.nombreCorto = "ACME";
    d.nombre = "Acme";
    d.ejercicio = 2025;
    d.formatoCta = "999-99-99";
    d.separador = "-";
    d.niveles = {3, 2, 2};
    d.catArbol = true;
    return d;
}

std::string AbreEmpresaNueva(Sesion& s, InteraccionGuionada& ui, const CarpetaTemporal& dir,
                             const DatosEmpresaNueva& datos) {
    const std::string base = CreaBase(dir.texto() + "base");
    CreaEmpresa(base, datos);
    s.interaccion = &ui;
    IniciaSesion(s, {dir.texto() + "base", datos.nombreCorto, std::to_string(datos.ejercicio)});
    return base;
}

}  // namespace velmorant::prueba
