// The electronic-accounting XML files: the bytes as a chart of accounts, a
// trial balance and a month of vouchers, each walked to its end, and as a
// bare element stream.
#include <string>

#include "Apoyo.h"
#include "importers/contabilidad_electronica/ArchivosSat.h"
#include "platform/ErrorLectura.h"
#include "platform/fuentes/LectorXml.h"

using namespace velmorant;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    std::string ruta = fuzz::EscribeArchivo(datos, largo, "sat.xml");
    try {
        LectorXml lector(ruta);
        ElementoXml e;
        while (lector.siguiente(e)) (void)e.atributo("NumCta");
    } catch (const ErrorLectura&) {
    }
    for (ClaseSat clase : {ClaseSat::Catalogo, ClaseSat::Balanza, ClaseSat::Polizas}) {
        try {
            ArchivoSat archivo(ruta, clase, 2024);
            (void)MesDeEncabezado(archivo.encabezado());
            switch (clase) {
                case ClaseSat::Catalogo: archivo.cuentas([](const CuentaSat&) {}); break;
                case ClaseSat::Balanza: archivo.renglones([](const RenglonBalanzaSat&) {}); break;
                case ClaseSat::Polizas: archivo.polizas([](const PolizaSat&) {}); break;
            }
        } catch (const ErrorLectura&) {
        }
    }
    return 0;
}
