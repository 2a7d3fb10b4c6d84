#include "Apoyo.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "importers/Limpieza.h"
#include "session/Funciones.h"

namespace velmorant::fuzz {

namespace {

class InteraccionMuda : public Interaccion {
public:
    bool mensaje(TipoMensaje, const std::string&, const std::string&) override { return false; }
    std::string eligeArchivo(const std::string&, const std::string&) override { return ""; }
};

/// The process's folder for its inputs, removed at exit.
struct Carpeta {
    std::filesystem::path ruta;
    Carpeta() {
        ruta = std::filesystem::temp_directory_path() / ("velmorant-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(ruta);
    }
    ~Carpeta() {
        std::error_code ec;
        std::filesystem::remove_all(ruta, ec);
    }
};

Carpeta& CarpetaProceso() {
    static Carpeta c;
    return c;
}

}  // namespace

std::string EscribeArchivo(std::string_view bytes, const std::string& nombre) {
    std::filesystem::path p = CarpetaProceso().ruta / nombre;
    std::ofstream o(p, std::ios::binary | std::ios::trunc);
    o.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return p.string();
}

Sesion& SesionFuzz() {
    static InteraccionMuda interaccion;
    static ProgresoMudo progreso;
    static Sesion s = [] {
        Sesion r;
        r.VersionPrograma = "1.0.0";
        r.EjercicioTexto = "2024";
        r.EjercicioActual = 2024;
        r.FormatoCtaEmpresa = "999-99-99";
        r.SeparadorEmpresa = "-";
        r.NumeroNiveles = 3;
        r.LongitudesNivel = {3, 2, 2};
        r.CatalogoArbol = true;
        r.RellenaCeros = true;
        r.interaccion = &interaccion;
        r.progreso = &progreso;
        return r;
    }();
    return s;
}

FormatoCuenta FormatoDeMascara(const std::string& mascara) {
    FormatoCuenta f;
    f.mascara = mascara;
    for (char c : mascara)
        if (c != '9' && c != 'X' && c != 'A') {
            f.separador = std::string(1, c);
            break;
        }
    int largo = 0;
    for (char c : mascara + (f.separador.empty() ? std::string(1, '\0') : f.separador)) {
        if ((f.separador.empty() && c == '\0') || (!f.separador.empty() && c == f.separador[0])) {
            f.longitudes.push_back(largo);
            largo = 0;
        } else {
            ++largo;
        }
    }
    f.niveles = static_cast<int>(f.longitudes.size());
    f.rellenaCeros = f.catalogoArbol = true;
    return f;
}

void UsaFila(const Fila& fila) {
    static const FormatoCuenta formato = FormatoCuenta::De(SesionFuzz());
    for (const Celda& c : fila.celdas) {
        std::string t = c.comoTexto();
        (void)c.comoMoneda();
        (void)c.comoFecha();
        (void)LeeFecha(t);
        try {
            (void)ConvierteImporte(LimpiaImporte(t, "0"));
        } catch (const FalloFila&) {
            // an amount beyond Currency: a fault of its row
        }
        for (auto orden : {OrdenLimpieza::SeparadorYRelleno, OrdenLimpieza::RellenoYSeparador,
                           OrdenLimpieza::RellenoSiempre, OrdenLimpieza::RellenoConSeparador})
            (void)LimpiaCuenta(formato, t, orden, true);
    }
}

void Exige(bool condicion, const std::string& que) {
    if (condicion) return;
    std::fprintf(stderr, "propiedad violada: %s\n", que.c_str());
    std::abort();
}

}  // namespace velmorant::fuzz
