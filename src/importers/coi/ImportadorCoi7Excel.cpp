#include "importers/coi/ImportadorCoi7Excel.h"

#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"
#include "importers/Recorrido.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteLibro.h"
#include "platform/fuentes/FuenteTexto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

const ColumnasCoi7Excel& K = kColumnasCoi7Excel;

struct TipoContaFiscal {
    const char* nombre;
    const char* codigo;
    const char* descripcion;
};
constexpr TipoContaFiscal kTipos[] = {{"Dr", "003", "Diario"}, {"Ig", "002", "Ingresos"}, {"Eg", "001", "Egresos"}};

// Walks the sheet's rows from the first row of data, up to a run of more
// than the allowed empty rows, inside one transaction; a row that cannot be
// read stops the reading with its file and row.
template <class F>
void RecorreHoja(Sesion& s, const std::string& ruta, const std::string& etiqueta, F&& procesa) {
    if (!ExisteArchivo(ruta)) {
        const std::string mensaje = "No se pudo encontrar el archivo " + ruta;
        MsgCritico(s, mensaje);
        throw ErrorLectura(mensaje, ruta, 0);
    }
    OpcionesLibro o;
    o.rango = "A" + std::to_string(K.filaInicial) + ":Z";
    o.encabezado = false;
    FuenteLibro fuente(ruta, o);
    long ultima = K.filaInicial - 1;  // the last row with data
    bool terminada = false;
    ReglasRecorrido reglas{etiqueta};
    reglas.saltaVacias = false;
    reglas.fallo = ReglasRecorrido::Fallo::FilaPoliza;
    RecorreFilas(s, fuente, reglas, [&](const Fila& fila) {
        if (terminada) return;
        if (FilaEnBlanco(fila)) return;
        if (fila.numero - ultima - 1 > K.filasVaciasMaximas) {
            terminada = true;
            return;
        }
        ultima = fila.numero;
        procesa(fila);
    });
}

// A code of the exports: COI's "." out, then the company's rules.
std::string CuentaCoi7(Sesion& s, std::string texto) {
    std::erase(texto, '.');
    return LimpiaCuenta(s, texto, OrdenLimpieza::RellenoSiempre, true);
}

std::optional<Moneda> ImporteCelda(const Fila& f, int columna) {
    const Celda& c = f[columna];
    if (c.esNula() || RecortaEspacios(c.comoTexto()).empty()) return std::nullopt;
    if (auto m = c.comoMoneda()) return m;
    return ImporteRequerido(LimpiaImporte(f.campo(columna), "0"));
}

}  // namespace

std::string CodigoTipoContaFiscal(const std::string& tipo) {
    const std::string t = RecortaEspacios(tipo);
    for (const auto& k : kTipos)
        if (Mayusculas(t) == Mayusculas(k.nombre) || Mayusculas(t) == Mayusculas(k.descripcion)) return k.codigo;
    return t;
}

void TrduceTiposContaFiscal(Sesion& s) {
    BaseDatos& db = EmpresaAbierta(s);
    Transaccion t(db);
    for (const auto& k : kTipos) {
        for (const char* tabla : {"Polizas", "CedAnalitica", "CedNoDeducibles"})
            db.ejecuta(std::string("UPDATE ") + tabla + " SET Tipo=? WHERE Tipo IN (?, ?)", k.codigo, k.nombre,
                       k.descripcion);
        db.ejecuta("DELETE FROM CatTipoPoliza WHERE Tipo IN (?, ?)", k.nombre, k.descripcion);
        db.ejecuta("UPDATE CatTipoPoliza SET Descripcion=? WHERE Tipo=?", k.descripcion, k.codigo);
    }
    t.confirma();
}

void ImpCatCuentasCoi7(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    RecorreHoja(s, ruta, "Importando Catálogo de Cuentas ...", [&](const Fila& f) {
        std::string codigo = CuentaCoi7(s, f.campo(K.catCuenta));
        if (codigo.empty()) return;
        int nivel = ValEntero(f.campo(K.catNivel));
        if (nivel <= 0) nivel = CalculaNivelCuenta(s, codigo, true);
        CuentaLeida c;
        c.CuentaSinSeparadores = CuentaHastaNivel(s, codigo, nivel);
        if (c.CuentaSinSeparadores.empty()) return;
        c.Cuenta = FormateaCuenta(s, c.CuentaSinSeparadores);
        c.Descripcion = f.campo(K.catNombre);
        c.Nivel = nivel;
        const std::string nat = Mayusculas(f.campo(K.catNaturaleza));
        c.Naturaleza = nat == "0" || nat == "D" || nat.starts_with("DEUDORA") ? "D" : "A";
        c.Saldo = Moneda{};
        d.agregaCuenta(c);
    });
}

void ImpSaldIniCoi7(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    RecorreHoja(s, ruta, "Importando Saldos Iniciales ...", [&](const Fila& f) {
        std::string codigo = CuentaCoi7(s, f.campo(K.sdoCuenta));
        if (codigo.empty()) return;
        const std::string cuenta = FormateaCuenta(s, CuentaHastaNivel(s, codigo, CalculaNivelCuenta(s, codigo, true)));
        d.asignaSaldoInicial(cuenta, ImporteCelda(f, K.sdoInicial).value_or(Moneda{}));
    });
}

namespace {

// One voucher line of the export, a row of the workbook or a line of text.
void LineaPolizaCoi7(Sesion& s, DestinoTmp& d, const Fila& f) {
    PolizaLeida p;
    p.Poliza = f.campo(K.polNumero);
    if (p.Poliza.empty()) return;
    p.Tipo = CodigoTipoContaFiscal(f.campo(K.polTipo));
    auto fecha = f[K.polFecha].comoFecha();
    if (!fecha) fecha = LeeFecha(f.campo(K.polFecha));
    if (!fecha) throw FalloFila("la fecha " + f.campo(K.polFecha) + " de la póliza " + p.Poliza + " no es válida");
    p.Fecha = *fecha;
    p.Concepto = f.campo(K.polConcepto);
    EtiquetaProgreso(s, "leyendo póliza " + p.Poliza);
    const long id = d.poliza(p);

    PartidaLeida l;
    std::string codigo = CuentaCoi7(s, f.campo(K.polCuenta));
    if (codigo.empty()) return;
    l.Cuenta = CuentaHastaNivel(s, codigo, CalculaNivelCuenta(s, codigo, true));
    l.Referencia = f.campo(K.polReferencia);
    const auto debe = ImporteCelda(f, K.polDebe), haber = ImporteCelda(f, K.polHaber);
    if (debe && !debe->esCero()) {
        l.TipoMov = "D";
        l.Importe = *debe;
    } else {
        l.TipoMov = "H";
        l.Importe = haber.value_or(Moneda{});
    }
    d.agregaPartida(id, l);
}

}  // namespace

void ImportPolizasCOI7(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    RecorreHoja(s, ruta, "Importando el archivo de Pólizas", [&](const Fila& f) { LineaPolizaCoi7(s, d, f); });
}

void ImportPolizasCOI7Texto(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    if (!ExisteArchivo(ruta)) {
        const std::string mensaje = "No se pudo encontrar el archivo " + ruta;
        MsgCritico(s, mensaje);
        throw ErrorLectura(mensaje, ruta, 0);
    }
    FuenteTextoDelimitado fuente(ruta, ",", true);
    ReglasRecorrido reglas{"Importando el archivo de Pólizas"};
    reglas.titulos = K.filaInicial > 1;
    reglas.fallo = ReglasRecorrido::Fallo::LineaPoliza;
    RecorreFilas(s, fuente, reglas, [&](const Fila& f) { LineaPolizaCoi7(s, d, f); });
}

// ------------------------------------------------------------ The importer

bool ImportadorCoi7Excel::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (a.catalogo.empty()) {
        MsgInformacion(s, "Especifique por favor el archivo que contiene el catálogo de cuentas");
        return false;
    }
    if (a.ruta("polizas").empty()) {
        MsgInformacion(s, "Especifique por favor la ubicación del archivo que contiene las pólizas");
        return false;
    }
    return true;
}

void ImportadorCoi7Excel::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImpCatCuentasCoi7(s, d, a.catalogo);
}

void ImportadorCoi7Excel::ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ImpSaldIniCoi7(s, d, a.saldosIniciales);
}

void ImportadorCoi7Excel::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    if (polizasEnTexto_)
        ImportPolizasCOI7Texto(s, d, a.ruta("polizas"));
    else
        ImportPolizasCOI7(s, d, a.ruta("polizas"));
}

void ImportadorCoi7Excel::confirmaPropio(Sesion& s, MomentoConfirmacion momento) {
    if (momento == MomentoConfirmacion::Etapas) TrduceTiposContaFiscal(s);
}

}  // namespace velmorant
