// historial [--detalle N [--salida ARCHIVO.pdf|.html]]

#include <algorithm>
#include <filesystem>
#include <ostream>

#include "cli/Comando.h"
#include "pipeline/ConstanciaImportacion.h"
#include "pipeline/Historial.h"

namespace velmorant::cli {
namespace {

std::string Numero(const std::optional<std::int64_t>& n) { return n ? std::to_string(*n) : "—"; }

// One run a line: number, when, who, what, how it ended.
void EscribeLinea(std::ostream& o, const RegistroHistorial& r) {
    o << r.id << "  " << r.fechaHora << "  " << (r.usuario.empty() ? "?" : r.usuario) << "  " << r.operacion;
    if (r.operacion == kOperacionDeshacer) {
        o << " de la importación " << (r.deshace ? std::to_string(*r.deshace) : "?");
    } else {
        o << " (enlace " << r.idSistema << ")";
    }
    o << "  " << r.resultado;
    if (!r.decision.empty() && r.operacion != kOperacionDeshacer) o << " [" << r.decision << "]";
    if (r.polizas) o << "  " << *r.polizas << " pólizas, " << Numero(r.partidas) << " partidas";
    o << "  " << TextoDuracion(r.duracionMs);
    if (r.deshechaPor) o << "  (deshecha por " << *r.deshechaPor << ")";
    o << "\n";
}

void EscribeDetalle(std::ostream& o, const RegistroHistorial& r) {
    o << kTituloConstancia << " " << r.id << "\n"
      << "Empresa:    " << r.nombCorto << " - " << r.nombre << "\n"
      << "Ejercicio:  " << r.ejercicio << "\n"
      << "Operación:  " << r.operacion << "\n"
      << "Enlace:     " << TextoEnlace(r.idSistema) << "\n"
      << "Fecha:      " << r.fechaHora << "\n"
      << "Usuario:    " << r.usuario << (r.equipo.empty() ? "" : " en " + r.equipo) << "\n"
      << "Programa:   VELMORANT " << r.programa << "\n"
      << "Decisión:   " << (r.decision.empty() ? "—" : r.decision) << "\n"
      << "Resultado:  " << r.resultado << "\n";
    if (!r.detalle.empty()) o << "Detalle:    " << r.detalle << "\n";
    o << "Duración:   " << TextoDuracion(r.duracionMs) << "\n";
    if (!r.respaldo.empty()) o << "Copia:      " << r.respaldo << "\n";
    if (r.deshace) o << "Deshace:    la importación " << *r.deshace << "\n";
    if (r.deshechaPor) o << "Deshecha por la operación " << *r.deshechaPor << "\n";

    o << "\nArchivos:\n";
    if (r.archivos.empty()) o << "  ninguno\n";
    for (const auto& a : r.archivos)
        o << "  " << a.papel << "  " << a.ruta << "\n    "
          << (a.tamano ? std::to_string(*a.tamano) + " bytes" : std::string("no existe"))
          << (a.sha256.empty() ? "" : "  SHA-256 " + a.sha256) << "\n";
    if (r.operacion == kOperacionDeshacer) return;

    o << "\nLeído: " << Numero(r.cuentas) << " cuentas (" << Numero(r.saldosIniciales) << " con saldo inicial), "
      << Numero(r.polizas) << " pólizas, " << Numero(r.partidas) << " partidas";
    if (r.saldosAnioAnterior) o << ", " << *r.saldosAnioAnterior << " saldos del año anterior";
    o << "\n";
    if (!r.totales.empty()) {
        o << "\nTotales de control:\n";
        Moneda cargos, abonos;
        for (const auto& m : r.totales) {
            std::string mes = NombreMesTotales(m.mes);
            mes.resize(std::max<size_t>(mes.size(), 12), ' ');
            o << "  " << mes << m.polizas << " pólizas, " << m.partidas << " partidas, cargos " << m.cargos.texto()
              << ", abonos " << m.abonos.texto() << "\n";
            cargos += m.cargos;
            abonos += m.abonos;
        }
        o << "  Total       cargos " << cargos.texto() << ", abonos " << abonos.texto() << "\n";
    }
    o << "\nInconsistencias:";
    if (r.inconsistencias.empty()) o << " ninguna";
    for (const auto& [clase, n] : r.inconsistencias) o << " " << clase << "=" << n;
    o << "\n";
}

class HistorialComando : public Comando {
public:
    std::string nombre() const override { return "historial"; }
    std::string descripcion() const override {
        return "Lista las importaciones de la empresa, una por línea, la más reciente al final. Con\n"
               "--detalle N muestra la importación N completa: sus archivos con tamaño y huella SHA-256,\n"
               "lo leído, los totales de control por mes, las inconsistencias, la decisión y el resultado;\n"
               "con --salida escribe además su constancia de importación (.pdf o .html).";
    }
    std::vector<Opcion> opciones() const override {
        return {{"detalle", "N", "la importación N completa"},
                {"salida", "ARCHIVO", "con --detalle: escribe la constancia en ARCHIVO.pdf o ARCHIVO.html"}};
    }
    int ejecuta(const Argumentos& args, Contexto& ctx) override {
        std::optional<std::string> salida = args.valor("salida");
        if (salida && !args.tiene("detalle")) throw ErrorUso("--salida va con --detalle N");
        if (salida) {
            std::string ext = std::filesystem::path(*salida).extension().string();
            std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
            if (ext != ".pdf" && ext != ".html" && ext != ".htm")
                throw ErrorUso("--salida: la constancia se escribe como .pdf o .html ('" + *salida + "')");
        }
        std::optional<long> numero;
        if (auto n = args.valor("detalle")) numero = EnteroDeOpcion(*n, "detalle", 1, 999999999);
        Sesion s;
        IniciaSesionCli(s, ctx);
        BaseDatos& db = *s.DbEmpresa;
        if (!numero) {
            auto todos = LeeHistorial(db);
            if (todos.empty()) ctx.salida << "La empresa " << s.NombreEmpresa << " no tiene importaciones registradas.\n";
            for (const auto& r : todos) EscribeLinea(ctx.salida, r);
            return kHecho;
        }
        auto r = LeeRegistroHistorial(db, *numero);
        if (!r) throw Rehusado("La empresa " + s.NombreEmpresa + " no tiene la importación " + std::to_string(*numero) + ".");
        EscribeDetalle(ctx.salida, *r);
        if (salida) {
            try {
                GuardaReporte(ConstanciaImportacion(*r, s.FechaSesion), *salida);
            } catch (const std::runtime_error& e) {
                throw Rehusado(e.what());
            }
            ctx.salida << "\n" << kTituloConstancia << " escrita en " << *salida << "\n";
        }
        return kHecho;
    }
};

RegistraComando registro([] { return std::make_unique<HistorialComando>(); });

}  // namespace
}  // namespace velmorant::cli
