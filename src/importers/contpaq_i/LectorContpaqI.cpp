#include "importers/contpaq_i/LectorContpaqI.h"

#include <sstream>
#include <vector>

#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"
#include "importers/Recorrido.h"
#include "importers/contpaq_i/DisenosContpaqI.h"
#include "importers/contpaq_windows/ImportadorContpaqWindows.h"
#include "pipeline/Inconsistencias.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteLineas.h"
#include "session/Funciones.h"

namespace velmorant::contpaqi {

namespace {

// The nature in force of an account type. A type the store does not know
// takes the letter rule (A, C, E, G, I, K debtor; B, D, F, H, J, L
// creditor), kept in the store for the next run; other letters stay
// without a nature.
std::string NaturalezaDelTipo(velmorant::NaturalezasContpaq& naturalezas, const std::string& tipo) {
    std::string n = naturalezas.busca(tipo);
    if (!n.empty() || tipo.size() != 1 || tipo[0] < 'A' || tipo[0] > 'L') return n;
    n = (tipo[0] - 'A') % 2 == 0 ? "D" : "A";
    naturalezas.fija(tipo, n);
    return n;
}

// A missing file is said, and its reader ends: the run goes on with what
// it has.
bool Existe(Sesion& s, const std::string& ruta) {
    if (ExisteArchivo(ruta)) return true;
    MsgAviso(s, "No se pudo encontrar el archivo " + ruta);
    return false;
}

// A code cut to the levels it uses.
std::string CuentaUsada(Sesion& s, const std::string& codigo, int* nivel = nullptr) {
    if (codigo.empty()) return "";
    const int n = CalculaNivelCuenta(s, codigo, true);
    if (nivel) *nivel = n;
    return CuentaHastaNivel(s, codigo, n);
}

// The code of a movement line: a code as long as a whole code is cut to
// the levels it uses; a shorter one is taken as it stands.
std::string CuentaMovimiento(Sesion& s, std::string codigo) {
    if (LongitudCaracteres(codigo) == LongitudCompleta(s)) {
        int nivel = 0;
        ReglaLongitudCompleta(s, codigo, nivel);
    }
    return codigo;
}

std::vector<std::string> Fichas(const std::string& texto) {
    std::vector<std::string> r;
    std::istringstream in(texto);
    for (std::string f; in >> f;) r.push_back(f);
    return r;
}

// Amounts of the file come with cents: an amount is rounded to them, halves
// to the even cent.
Moneda RedondeaCentavos(Moneda m) {
    const std::int64_t d = m.diezmilesimas();
    std::int64_t q = d / 100, r = d % 100;
    if (r < 0) {
        r += 100;
        --q;
    }
    if (r > 50 || (r == 50 && (q % 2 != 0))) ++q;
    return Moneda::desdeDiezmilesimas(q * 100);
}

Moneda Importe(const std::string& texto) {
    auto m = Moneda::desdeTexto(texto);
    if (!m) throw FalloFila("el importe \"" + texto + "\" no es un número");
    return RedondeaCentavos(*m);
}

// "P " heads: "P  yyyymmdd  x  TIPO  NUMERO ... concept".
PolizaLeida LeePoliza(const std::string& linea, bool incluirUuid) {
    const size_t blanco = linea.find(' ');
    const std::string resto = RecortaEspacios(blanco == std::string::npos ? "" : linea.substr(blanco + 1));
    const std::string f = resto.substr(0, 8);
    auto numero = [&](size_t desde, size_t largo) {
        const std::string p = f.size() >= desde + largo ? f.substr(desde, largo) : "";
        return !p.empty() && p.find_first_not_of("0123456789") == std::string::npos ? std::stoi(p) : 0;
    };
    const int anio = numero(0, 4), mes = numero(4, 2), dia = numero(6, 2);
    if (f.size() != 8 || mes < 1 || mes > 12 || dia < 1 || dia > Fecha::DiasDelMes(anio, mes))
        throw FalloFila("la póliza no empieza con una fecha aaaammdd: \"" + f + "\"");
    const std::vector<std::string> fichas = Fichas(resto.substr(8));
    if (fichas.size() < 3) throw FalloFila("a la póliza le falta su tipo o su número");
    PolizaLeida p;
    p.Fecha = Fecha(anio, mes, dia);
    p.Tipo = fichas[1];
    p.Poliza = fichas[2];
    p.Concepto = Campo(DisenoPoliza(), linea, "concepto");
    if (incluirUuid) {
        const std::string uuid = Campo(DisenoPoliza(), linea, "uuid");
        if (!uuid.empty()) p.Concepto = RecortaEspacios(p.Concepto + " " + uuid);
    }
    return p;
}

// Where the current layout's amount field starts: column 56, or, in a line
// whose first 53 columns hold a tab, at the kind marker " 1 " (or " 0 ")
// after the first blank from column 4 on.
std::string CampoImporte(const std::string& linea) {
    if (Columnas(linea, 1, 53).find('\t') == std::string::npos)
        return RecortaEspacios(Columnas(linea, DisenoMovimiento().campo("importe").desde, 0));
    const std::string t = Columnas(linea, 4, 0);
    const size_t blanco = t.find(' ');
    if (blanco == std::string::npos) return "";
    const std::string resto = t.substr(blanco + 1);
    size_t k = resto.find(" 1 ");
    if (k == std::string::npos) k = resto.find(" 0 ");
    return k == std::string::npos ? "" : RecortaEspacios(resto.substr(k));
}

}  // namespace

std::string TextoMovimiento(const std::string& referencia, const std::string& concepto) {
    const std::string union_ = !referencia.empty() && !concepto.empty() ? " - " : " ";
    return RecortaEspacios(referencia + union_ + concepto);
}

std::optional<ImporteMovimiento> LeeImporteMovimiento(const std::string& linea) {
    const std::string campo = CampoImporte(linea);
    if (campo.empty()) return std::nullopt;
    ImporteMovimiento r;
    r.TipoMov = campo[0] == '0' ? "D" : "H";
    const std::string resto = RecortaEspacios(Columnas(campo, 2, 0));
    if (resto.empty()) return std::nullopt;
    std::string importe;
    const size_t punto = resto.find('.');
    if (resto.find("       ") != std::string::npos || punto == std::string::npos)
        importe = resto.substr(0, resto.find_first_of(" \t"));
    else
        importe = resto.substr(0, punto + 3);
    r.Importe = Importe(importe);
    return r;
}

DisenoPolizas DeterminaDisenoPolizas(Sesion& s, const std::string& ruta) {
    EtiquetaProgreso(s, "Determinando Lectura de pólizas...");
    FuenteLineas fuente(ruta);
    Fila fila;
    while (fuente.siguiente(fila)) {
        const std::string m = Marca(RecortaEspacios(fila.texto));
        if (m == "M1") return DisenoPolizas::Actual;
        if (m == "M ") return DisenoPolizas::Anterior;
    }
    return DisenoPolizas::Anterior;
}

void ImportaCatalogoContpaqI(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    if (!Existe(s, ruta)) return;
    // The store of natures by account type is the one ContPAQ Windows keeps.
    velmorant::NaturalezasContpaq naturalezas(s);
    FuenteLineas fuente(ruta);
    const DisenoRegistro& c = DisenoCuenta();
    RecorreFilas(s, fuente, {"Importando Catálogo de Cuentas ..."}, [&](const Fila& fila) {
        const std::string linea = RecortaEspacios(fila.texto);
        if (RecortaEspacios(Columnas(linea, 1, 2)) != "C") return;
        int nivel = 0;
        CuentaLeida r;
        r.CuentaSinSeparadores = CuentaUsada(s, Campo(c, linea, "cuenta"), &nivel);
        if (r.CuentaSinSeparadores.empty()) return;
        r.Cuenta = FormateaCuenta(s, r.CuentaSinSeparadores);
        r.Nivel = nivel;
        r.Descripcion = Campo(c, linea, "nombre");
        r.CuentaAcumulativa = CuentaUsada(s, Campo(c, linea, "cuenta-padre"));
        const std::string tipo = Campo(c, linea, "tipo");
        r.Naturaleza = tipo.empty() ? "" : NaturalezaDelTipo(naturalezas, tipo);
        d.agregaCuenta(r);
        // A type without a nature is said rather than guessed.
        if (r.Naturaleza->empty())
            RegistraInconsistencia(s, "La Cuenta " + r.CuentaSinSeparadores + " no tiene asignada Naturaleza.",
                                   kFuenteCatalogo, "O", "", "", std::nullopt, r.CuentaSinSeparadores);
    });
}

void ImportaPolizasContpaqI(Sesion& s, DestinoTmp& d, const std::string& ruta, const OpcionesPolizasContpaqI& o) {
    if (!Existe(s, ruta)) return;
    const DisenoPolizas diseno = DeterminaDisenoPolizas(s, ruta);
    const size_t largo = LongitudCompleta(s);
    const std::string marcaMovimiento = diseno == DisenoPolizas::Actual ? "M1" : "M ";
    long id = 0;
    std::string conceptoPoliza;
    FuenteLineas fuente(ruta);
    RecorreFilas(s, fuente, {"Importando el archivo de Pólizas"}, [&](const Fila& fila) {
        const std::string linea = RecortaEspacios(fila.texto);
        const std::string marca = Marca(linea);
        if (marca == "P ") {
            PolizaLeida p = LeePoliza(linea, o.incluirUuid);
            id = d.poliza(p);
            conceptoPoliza = p.Concepto;
            return;
        }
        if (marca == "MC") {
            if (!id) throw FalloFila("texto de concepto antes de la primera póliza");
            d.anexaConcepto(id, " MC- " + Columnas(linea, 5, 0));
            return;
        }
        if (marca != "M1" && marca != "M ") return;
        if (marca != marcaMovimiento)
            throw FalloFila("el movimiento \"" + RecortaEspacios(marca) + "\" no es del formato del archivo, que empieza con \"" +
                            RecortaEspacios(marcaMovimiento) + "\"");
        if (!id) throw FalloFila("movimiento antes de la primera póliza");

        PartidaLeida l;
        std::string referencia, concepto, uuid;
        if (diseno == DisenoPolizas::Actual) {
            const DisenoRegistro& m = DisenoMovimiento();
            l.Cuenta = RecortaEspacios(Columnas(linea, kColumnaCuentaMovimiento,
                                                kColumnaCuentaMovimiento + static_cast<int>(largo) - 1));
            referencia = Campo(m, linea, "referencia");
            concepto = Campo(m, linea, "concepto");
            uuid = Campo(m, linea, "uuid");
            auto importe = LeeImporteMovimiento(linea);
            if (!importe) return;
            l.TipoMov = importe->TipoMov;
            l.Importe = importe->Importe;
        } else {
            const DisenoRegistro& m = DisenoMovimientoAnterior();
            l.Cuenta = Campo(m, linea, "cuenta");
            referencia = Campo(m, linea, "referencia");
            concepto = Campo(m, linea, "concepto");
            const std::string tipo = Campo(m, linea, "tipo-mov");
            const bool ceroUno = o.codigoTipoMov == CodigoTipoMov::CeroUno;
            if (tipo == (ceroUno ? "0" : "1")) l.TipoMov = "D";
            else if (tipo == (ceroUno ? "1" : "2")) l.TipoMov = "H";
            else
                throw FalloFila("el tipo de movimiento \"" + tipo + "\" no es " + (ceroUno ? "0 ni 1" : "1 ni 2") +
                                "; revise la opción Tipo de Movimiento");
            const std::string importe = Campo(m, linea, "importe");
            if (importe.empty()) return;
            l.Importe = Importe(importe);
        }
        l.Cuenta = CuentaMovimiento(s, l.Cuenta);
        std::string texto = TextoMovimiento(referencia, concepto);
        if (o.incluirUuid && !uuid.empty()) texto = RecortaEspacios(texto + " " + uuid);
        l.Referencia = o.replicaConceptos ? conceptoPoliza : texto;
        d.agregaPartida(id, l);
    });
}

// ------------------------------------------------------------ The report

namespace {

// The columns of a heading in the report's header line.
struct Encabezado {
    int iniciales = 0, actuales = 0;  // first column of each heading, from 1
};

constexpr const char* kIniciales = "Saldos  Iniciales";
constexpr const char* kActuales = "Saldos  Actuales";

int ColumnaDe(const std::string& linea, const std::string& texto) {
    const size_t p = linea.find(texto);
    return p == std::string::npos ? 0 : static_cast<int>(LongitudCaracteres(linea.substr(0, p))) + 1;
}

// The amount whose decimal point stands under the heading that starts at
// `columna` and is `ancho` characters wide; "0.00" when none does.
std::string ImporteBajo(const std::string& linea, int columna, size_t ancho) {
    const std::string tramo = Columnas(linea, 1, columna + static_cast<int>(ancho) - 1);
    const int n = static_cast<int>(LongitudCaracteres(tramo));
    for (int punto = columna; punto <= n; ++punto) {
        if (Columnas(linea, punto, punto) != ".") continue;
        int ini = punto, fin = punto;
        auto numerico = [](const std::string& c) { return c.size() == 1 && (isdigit(static_cast<unsigned char>(c[0])) || c == "," || c == "-"); };
        while (ini > 1 && numerico(Columnas(linea, ini - 1, ini - 1))) --ini;
        while (numerico(Columnas(linea, fin + 1, fin + 1))) ++fin;
        if (fin > punto || ini < punto) return Columnas(linea, ini, fin);
    }
    return "0.00";
}

struct RenglonBalanza {
    std::string codigo;   // cut to the levels it uses, without separators
    std::string nombre;
    Moneda inicial, actual;
};

// Walks the report: each line below the header that begins with an account
// code gives `procesa` its code and the amounts under the two headings.
template <class F>
void RecorreBalanza(Sesion& s, const std::string& ruta, const std::string& etiqueta, F&& procesa) {
    Encabezado e;
    FuenteLineas fuente(ruta);
    RecorreFilas(s, fuente, {etiqueta}, [&](const Fila& fila) {
        const std::string& linea = fila.texto;
        if (linea.find("C u e n t a") != std::string::npos) {
            e.iniciales = ColumnaDe(linea, kIniciales);
            e.actuales = ColumnaDe(linea, kActuales);
            if (!e.iniciales || !e.actuales)
                throw FalloFila(std::string("el encabezado no tiene las columnas \"") + kIniciales + "\" y \"" + kActuales + "\"");
            return;
        }
        if (!e.iniciales) return;
        const std::vector<std::string> fichas = Fichas(linea);
        if (fichas.empty()) return;
        std::string codigo = QuitaCaracter(fichas[0], s.SeparadorEmpresa.empty() ? "-" : s.SeparadorEmpresa);
        if (codigo.empty() || codigo.find_first_not_of("0123456789") != std::string::npos) return;
        RenglonBalanza r;
        r.codigo = CuentaUsada(s, codigo);
        const size_t tras = linea.find(fichas[0]) + fichas[0].size();
        r.nombre = RecortaEspacios(Columnas(linea.substr(tras), 1,
                                            e.iniciales - static_cast<int>(LongitudCaracteres(linea.substr(0, tras))) - 1));
        r.inicial = Importe(ImporteBajo(linea, e.iniciales, LongitudCaracteres(std::string(kIniciales))));
        r.actual = Importe(ImporteBajo(linea, e.actuales, LongitudCaracteres(std::string(kActuales))));
        procesa(r);
    });
}

}  // namespace

void ImportaSaldosInicialesContpaqI(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    if (!Existe(s, ruta)) return;
    RecorreBalanza(s, ruta, "Importando Saldos iniciales...", [&](const RenglonBalanza& r) {
        auto naturaleza = d.asignaSaldoPorCodigo(r.codigo, r.inicial);
        if (!naturaleza)
            RegistraInconsistencia(s, "La Cuenta " + r.codigo + " no existe en el catálogo.", kFuenteSaldosIniciales, "O", "",
                                   "", std::nullopt, r.codigo);
        else if (naturaleza->empty())
            RegistraInconsistencia(s, "La Cuenta " + r.codigo + " no tiene asignada Naturaleza.", kFuenteSaldosIniciales,
                                   "O", "", "", std::nullopt, r.codigo);
    });
}

void ImportaSaldosAnioAnteriorContpaqI(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    if (!Existe(s, ruta)) return;
    RecorreBalanza(s, ruta, "Verificando Saldos Finales año anterior...", [&](const RenglonBalanza& r) {
        SaldoAnioAnteriorLeido a;
        a.CuentaSinSeparadores = r.codigo;
        a.Cuenta = FormateaCuenta(s, r.codigo);
        a.Descripcion = r.nombre;
        a.Nivel = CalculaNivelCuenta(s, r.codigo, true);
        a.SaldoFinAnioAnt = r.actual;
        d.agregaSaldoAnioAnterior(a);
    });
}

}  // namespace velmorant::contpaqi
