#include "importers/coi/ImportadorCoi35.h"

#include <optional>
#include <vector>

#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"
#include "importers/Recorrido.h"
#include "importers/texto_delimitado/ImportadorTextoDelimitado.h"
#include "pipeline/Inconsistencias.h"
#include "platform/ArchivoTexto.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteLineas.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

const CamposCoi35& C = kCamposCoi35;

// The fields of a record split at its commas; the field `ultimo` (from 1)
// takes the rest of the line. Each is trimmed.
std::vector<std::string> Campos(const std::string& linea, int ultimo) {
    std::vector<std::string> r;
    size_t desde = 0;
    while (true) {
        size_t coma = ultimo > 0 && static_cast<int>(r.size()) + 1 >= ultimo ? std::string::npos : linea.find(',', desde);
        r.push_back(RecortaEspacios(linea.substr(desde, coma == std::string::npos ? std::string::npos : coma - desde)));
        if (coma == std::string::npos) break;
        desde = coma + 1;
    }
    return r;
}

// "Enero", ..., or "Mes 13".
std::string NombreMesOTrece(int mes) { return NombreMesDosDigitos(DosDigitos(mes)); }

std::string Campo(const std::vector<std::string>& c, int n) {
    return n >= 1 && static_cast<size_t>(n) <= c.size() ? c[n - 1] : "";
}

char Marca(const std::string& linea) {
    return linea.size() >= static_cast<size_t>(C.posicionMarca) ? linea[C.posicionMarca - 1] : '\0';
}

bool EsMes13(const std::string& fecha) { return Mayusculas(RecortaEspacios(fecha)) == "MES 13"; }

// The head of a voucher record; the date of "Mes 13" is the year's close.
struct Encabezado {
    PolizaLeida p;
    std::string textoFecha;
};

Encabezado LeeEncabezado(const std::string& linea, int anio) {
    const auto c = Campos(linea, 0);
    if (static_cast<int>(c.size()) != C.camposEncabezado)
        throw FalloFila("el registro de póliza tiene " + std::to_string(c.size()) + " campos y debe tener " +
                        std::to_string(C.camposEncabezado));
    Encabezado e;
    e.p.Tipo = RecortaEspacios(Campo(c, 1).substr(std::min<size_t>(Campo(c, 1).size(), C.posicionTipo - 1),
                                                  C.largoTipo));
    e.p.Poliza = Campo(c, C.campoNumero);
    e.textoFecha = Campo(c, C.campoFecha);
    if (EsMes13(e.textoFecha)) {
        e.p.Fecha = Fecha(anio, 12, 31);
        e.p.Mes13 = true;
    } else {
        auto f = LeeFecha(e.textoFecha);
        if (!f) throw FalloFila("la fecha " + e.textoFecha + " de la póliza " + e.p.Poliza + " no es válida");
        e.p.Fecha = *f;
    }
    return e;
}

}  // namespace

void ImportaPolizasCoi35(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) {
    if (!ExisteArchivo(ruta)) {
        MsgAviso(s, "No se pudo encontrar el archivo " + ruta);
        return;
    }
    FuenteLineas fuente(ruta);
    std::optional<PolizaLeida> abierta;  // read, not stored until its concept or its first line
    bool conConcepto = false;
    long id = 0;

    // Stores the open voucher; without its concept it is logged.
    auto guarda = [&] {
        if (!abierta || id) return;
        if (!conConcepto)
            RegistraInconsistencia(s,
                                   "No se logró leer el concepto de la póliza, revise por favor pólizas " +
                                       abierta->Poliza,
                                   kFuentePolizas, "O", Izquierda(abierta->Poliza, 20), Izquierda(abierta->Tipo, 10),
                                   abierta->Fecha, "");
        id = d.poliza(*abierta);
    };

    RecorreFilas(s, fuente, {"Importando Pólizas del mes de: " + NombreMesOTrece(mes)},
                 [&](const Fila& fila) {
                     const std::string& linea = fila.texto;
                     switch (Marca(linea)) {
                         case '1': {
                             guarda();
                             Encabezado e = LeeEncabezado(linea, s.EjercicioActual);
                             EtiquetaProgreso(s, "Importando Póliza: " + e.p.Poliza + " Tipo: " + e.p.Tipo);
                             abierta = e.p;
                             conConcepto = false;
                             id = 0;
                             break;
                         }
                         case '2': {
                             if (!abierta || id) break;  // a concept of no voucher, or late: passed over
                             abierta->Concepto = Campo(Campos(linea, C.campoConcepto), C.campoConcepto);
                             conConcepto = true;
                             guarda();
                             break;
                         }
                         case '3': {
                             if (!abierta) throw FalloFila("movimiento antes de la primera póliza del archivo");
                             guarda();
                             const auto c = Campos(linea, C.campoReferencia);
                             PartidaLeida l;
                             l.Cuenta = LimpiaCuenta(s, Campo(c, C.campoCuenta), OrdenLimpieza::RellenoYSeparador, true);
                             int nivel = 0;
                             ReglaLongitudCompleta(s, l.Cuenta, nivel);
                             const std::string dh = Mayusculas(Campo(c, C.campoDebeHaber));
                             if (dh != "D" && dh != "H")
                                 throw FalloFila("el movimiento debe ser D o H y es \"" + Campo(c, C.campoDebeHaber) +
                                                 "\"");
                             l.TipoMov = dh;
                             l.Importe = ImporteRequerido(LimpiaImporte(Campo(c, C.campoImporte), "0"));
                             l.Referencia = Campo(c, C.campoReferencia);
                             d.agregaPartida(id, l);
                             break;
                         }
                         default:
                             break;
                     }
                 });
    // The last voucher of the file, when no line made it.
    Transaccion t(*s.DbEmpresa);
    guarda();
    t.confirma();
}

int MesDelArchivoCoi35(const std::string& ruta) {
    try {
        FuenteLineas fuente(ruta);
        Fila fila;
        while (fuente.siguiente(fila)) {
            if (Marca(fila.texto) != '1') continue;
            const auto c = Campos(fila.texto, 0);
            const std::string fecha = Campo(c, C.campoFecha);
            if (EsMes13(fecha)) return 13;
            auto f = LeeFecha(fecha);
            return f ? f->mes() : 0;
        }
    } catch (const std::exception&) {
    }
    return 0;
}

// ------------------------------------------------------------ The importer

ReglasDestino ImportadorCoi35::reglasDestino() const { return ReglasTextoDelimitado(); }

bool ImportadorCoi35::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (catalogo_.separador.empty()) {
        MsgAviso(s, "Especifique por favor el caracter separador");
        return false;
    }
    if (!Importador::validaArchivos(s, a)) return false;
    // Each month's file must hold that month's vouchers.
    for (int m = 1; m <= 13; ++m) {
        const std::string& ruta = a.meses[m - 1];
        if (ruta.empty()) continue;
        if (!ExisteArchivo(ruta)) {
            MsgAviso(s, "No se pudo encontrar el archivo " + ruta);
            return false;
        }
        const int enArchivo = MesDelArchivoCoi35(ruta);
        if (enArchivo != m) {
            MsgAviso(s, "El archivo " + ruta + " no contiene pólizas del mes de " + NombreMesOTrece(m) +
                            (enArchivo == 0 ? ": no se encontró ninguna póliza con fecha legible."
                                            : ": su primera póliza es del mes de " + NombreMesOTrece(enArchivo) + "."));
            return false;
        }
    }
    return true;
}

void ImportadorCoi35::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaCatalogoTexto(s, d, a.catalogo, catalogo_, !a.saldosIniciales.empty());
}

void ImportadorCoi35::ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImportaSaldosInicialesTexto(s, d, a.saldosIniciales, catalogo_);
}

void ImportadorCoi35::ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) {
    ImportaPolizasCoi35(s, d, mes, ruta);
}

DescriptorImportador DescriptorCoi35() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceCoi35;
    d.titulo = "COI WIN Ver. 1, 2, 3, 3.5, 4";
    d.tipo = TipoImportacion::MesPorMes;
    d.archivos = ArchivosCatalogoDelimitado();
    d.meses = true;
    d.mes13 = true;
    d.selectorMes = {"Búsqueda del Archivo de Pólizas del mes de ", "*.txt;*.A*|*.txt;*.A*", kClavePolizasMes};
    d.casillas = CasillasLecturaDelimitada();
    d.parametros = ParametrosLecturaDelimitada();
    d.verificaEntradas = [](const ArchivosImportacion& a) { VerificaDelimitador(a, false); };
    d.crea = [](Sesion& s, const ArchivosImportacion& a) -> std::unique_ptr<Importador> {
        auto lectura = LecturaDelimitadaElegida(s, a);
        if (!lectura) return nullptr;
        return std::make_unique<ImportadorCoi35>(*lectura);
    };
    return d;
}

}  // namespace velmorant
