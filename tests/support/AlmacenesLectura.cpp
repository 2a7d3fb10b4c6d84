#include "support/AlmacenesLectura.h"

#include <memory>
#include <stdexcept>

#include "store/AlmacenesTemporales.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant::prueba {

void AbreAlmacenesDeLectura(Sesion& s, InteraccionGuionada& ui, const CarpetaTemporal& carpeta, int ejercicio) {
    s.interaccion = &ui;
    s.VersionPrograma = "1.0.0";
    s.RutaEmpresa = carpeta.texto();
    s.EjercicioActual = ejercicio;
    s.EjercicioTexto = std::to_string(ejercicio);
    s.FormatoCtaEmpresa = "999-99-99";
    s.SeparadorEmpresa = "-";
    s.NumeroNiveles = 3;
    s.LongitudesNivel = {3, 2, 2};
    s.CatalogoArbol = true;
    s.RellenaCeros = true;
    s.DbEmpresa = std::make_unique<BaseDatos>(carpeta.ruta() / ("ACME_" + s.EjercicioTexto + ".sqlite"),
                                              BaseDatos::Modo::Crear);
    CreaEsquemaEmpresa(*s.DbEmpresa);
    CreaInconsisImpTmp(s);
    CreaCuentasTmp(s);
    CreaPolizasTmp(s);
    CreaPolizasDetalleTmp(s);
    if (!AbreInconsistencias(s) || !AbreCuentasTmp(s) || !AbrePolizasTmp(s))
        throw std::runtime_error("no se abrieron los almacenes de la corrida en " + carpeta.texto());
}

std::vector<std::string> FilasComoTexto(BaseDatos& db, const std::string& sql) {
    std::vector<std::string> r;
    Consulta c = db.consulta(sql);
    for (c.primero(); !c.eof(); c.siguiente()) {
        std::string fila;
        for (int i = 0; i < c.numCampos(); ++i) fila += (i ? "|" : "") + c.campo(i).texto();
        r.push_back(fila);
    }
    return r;
}

}  // namespace velmorant::prueba
