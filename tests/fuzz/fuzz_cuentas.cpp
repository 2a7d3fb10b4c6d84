// Account formatting on any company format: the first line of the input is
// the mask, the second the code, the third a second code for the mask
// checks. A format whose stored levels disagree with its mask (a damaged
// company row) is tried as well.
#include <algorithm>
#include <string>

#include "Apoyo.h"
#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"

using namespace velmorant;

namespace {

std::string Linea(const std::string& t, size_t& p) {
    size_t fin = t.find('\n', p);
    std::string r = t.substr(p, fin == std::string::npos ? std::string::npos : fin - p);
    p = fin == std::string::npos ? t.size() : fin + 1;
    return r;
}

void Prueba(const FormatoCuenta& f, const std::string& codigo, const std::string& otro) {
    (void)RellenaCuenta(f, codigo);
    (void)QuitaSeparadores(f, codigo);
    (void)NivelesPorLongitud(f, codigo);
    for (auto orden : {OrdenLimpieza::SeparadorYRelleno, OrdenLimpieza::RellenoYSeparador,
                       OrdenLimpieza::RellenoSiempre, OrdenLimpieza::RellenoConSeparador})
        (void)LimpiaCuenta(f, codigo, orden, true);
    try {
        NivelesCuenta n = NivelesDeCuenta(f, codigo, true);
        fuzz::Exige(n.niveles >= 0 && n.niveles <= std::max(f.niveles, 0), "niveles fuera del formato");
        (void)NivelesDeCuenta(f, codigo, false);
        (void)FormateaCuenta(f, codigo);
    } catch (const CuentaAlfanumerica&) {
    }
    for (int nivel = -1; nivel <= f.niveles; ++nivel) (void)CuentaHastaNivel(f, codigo, nivel);
    bool fuera = false;
    try {
        (void)CuentaHastaNivel(f, codigo, f.niveles + 1);
    } catch (const NivelFueraDeFormato&) {
        fuera = true;
    }
    fuzz::Exige(fuera, "un nivel sobre el formato no se rechazó");
    auto lista = PosicionesSeparador(f);
    (void)CuentaCumpleFormato(f, otro, lista);
    (void)CuentaCumpleFormato(f, codigo, lista);
    for (int p = -1; p <= static_cast<int>(otro.size()) + 1; ++p) {
        (void)CaracterCumpleMascara(f, p, otro.substr(0, 1));
        (void)EsPosicionSeparador(f, p, otro.substr(0, 1), lista);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, size_t largo) {
    std::string t(reinterpret_cast<const char*>(datos), largo);
    size_t p = 0;
    std::string mascara = Linea(t, p), codigo = Linea(t, p), otro = Linea(t, p);
    if (mascara.size() > 64) return -1;
    FormatoCuenta f = fuzz::FormatoDeMascara(mascara);
    Prueba(f, codigo, otro);
    f.rellenaCeros = false;
    f.catalogoArbol = false;
    Prueba(f, codigo, otro);
    // A damaged structure: levels and lengths out of step, lengths of 0 or below.
    std::string resto = t.substr(p);
    if (!resto.empty()) {
        FormatoCuenta d = f;
        d.rellenaCeros = d.catalogoArbol = true;
        d.niveles = static_cast<unsigned char>(resto[0]) % 12;
        d.longitudes.clear();
        for (size_t i = 1; i < resto.size() && i < 12; ++i) d.longitudes.push_back(static_cast<signed char>(resto[i]) % 40);
        Prueba(d, codigo, otro);
    }
    return 0;
}
