#include "importers/softex/ImportadorSoftex.h"

#include "accounts/CodigosCuenta.h"
#include "importers/FilasTabla.h"
#include "importers/Limpieza.h"
#include "importers/Recorrido.h"
#include "platform/ErrorLectura.h"
#include "platform/fuentes/BaseAccess.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

long Cuenta(BaseDatos& tablas, const std::string& tabla) {
    return static_cast<long>(tablas.escalar("SELECT COUNT(*) FROM " + tabla).entero());
}

// F_EMISION, "yyyymmdd": day from characters 7-8, month 5-6, year 1-4.
Fecha FechaEmision(const FilasTabla& f) {
    const std::string t = f.texto("F_EMISION");
    auto numero = [&](size_t desde, size_t largo) {
        std::string pieza = t.size() >= desde + largo ? t.substr(desde, largo) : "";
        return pieza.find_first_not_of("0123456789") == std::string::npos && !pieza.empty() ? std::stoi(pieza) : 0;
    };
    int anio = numero(0, 4), mes = numero(4, 2), dia = numero(6, 2);
    if (t.size() != 8 || mes < 1 || mes > 12 || dia < 1 || dia > Fecha::DiasDelMes(anio, mes))
        f.falla("F_EMISION tiene \"" + t + "\", que no es una fecha aaaammdd");
    return Fecha(anio, mes, dia);
}

}  // namespace

void ImportaCatalogoSoftex(Sesion& s, DestinoTmp& d, BaseDatos& tablas, const std::string& ruta) {
    AvanceLectura avance(s, "Importando Catálogo de Cuentas ...", Cuenta(tablas, "Cuentas"));
    Transaccion t(*s.DbEmpresa);
    FilasTabla f(tablas.preparada("SELECT rowid, * FROM Cuentas").con(), ruta, "Cuentas");
    long n = 0;
    while (f.siguiente()) {
        avance.valor(++n);
        const std::string codigo = f.texto("Cve_Cuenta") + f.texto("Cve_SCuenta") + f.texto("Cve_SSCuenta");
        if (codigo.empty()) continue;
        CuentaLeida c;
        c.CuentaSinSeparadores = CuentaHastaNivel(s, codigo, f.entero("Nivel"));
        if (c.CuentaSinSeparadores.empty()) continue;
        c.Cuenta = FormateaCuenta(s, c.CuentaSinSeparadores);
        c.Descripcion = f.texto("Descripcion");
        if (!f.nulo("Tipo_Cta")) c.Naturaleza = f.valor("Tipo_Cta").texto();
        c.Saldo = f.importe("Saldo");
        d.agregaCuenta(c);
    }
    t.confirma();
}

void ImportaPolizasSoftex(Sesion& s, DestinoTmp& d, BaseDatos& tablas, const std::string& ruta) {
    AvanceLectura avance(s, "Importando el archivo de Pólizas", Cuenta(tablas, "PolizasEnc"));
    // The lines of each head are sought by number, type and date.
    tablas.ejecutaScript("CREATE INDEX IF NOT EXISTS PolizasPar_Poliza ON PolizasPar (NO_POL, CVE_TIPO, FECHA)");
    Transaccion t(*s.DbEmpresa);
    FilasTabla enc(tablas.preparada("SELECT rowid, * FROM PolizasEnc ORDER BY F_EMISION, CVE_TIPO, NO_POL").con(),
                   ruta, "PolizasEnc");
    long n = 0;
    while (enc.siguiente()) {
        avance.valor(++n);
        PolizaLeida p;
        p.Poliza = enc.texto("NO_POL");
        p.Tipo = enc.texto("CVE_TIPO");
        p.Concepto = enc.texto("Concepto") + enc.texto("CONCEPT2");
        p.Fecha = FechaEmision(enc);
        EtiquetaProgreso(s, "Importando Póliza: " + p.Poliza + " Tipo: " + p.Tipo + " Fecha: " + p.Fecha.ddmmaaaa());
        const long id = d.nuevaPoliza(p);

        FilasTabla par(tablas.preparada("SELECT rowid, * FROM PolizasPar WHERE NO_POL=? AND CVE_TIPO=? AND FECHA=? "
                                        "ORDER BY rowid")
                           .con(ValEntero(p.Poliza), enc.valor("CVE_TIPO"), enc.valor("F_EMISION")),
                       ruta, "PolizasPar");
        while (par.siguiente()) {
            PartidaLeida l;
            l.Cuenta = par.texto("CVE_CTA");
            if (!l.Cuenta.empty()) l.Cuenta = CuentaHastaNivel(s, l.Cuenta, CalculaNivelCuenta(s, l.Cuenta, true));
            if (l.Cuenta.empty()) continue;
            l.Referencia = par.texto("Concepto");
            l.TipoMov = par.texto("D_H");
            l.Importe = par.importe("Importe");
            d.agregaPartida(id, l);
        }
    }
    t.confirma();
}

// ------------------------------------------------------------ The importer

void ImportadorSoftex::cargaTablas(BaseDatos& memoria, const std::string& ruta, const std::vector<std::string>& tablas) {
    CargaBaseAccess(memoria, ruta, tablas);
}

template <class F>
void ImportadorSoftex::lee(Sesion& s, const std::string& ruta, const std::vector<std::string>& tablas, F&& lector) {
    try {
        BaseDatos memoria;
        cargaTablas(memoria, ruta, tablas);
        lector(memoria);
    } catch (const ErrorLectura& e) {
        MsgCritico(s, e.what());
        throw;
    }
}

void ImportadorSoftex::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    const std::string ruta = a.ruta("base-datos");
    lee(s, ruta, {"Cuentas"}, [&](BaseDatos& m) { ImportaCatalogoSoftex(s, d, m, ruta); });
}

void ImportadorSoftex::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    const std::string ruta = a.ruta("base-datos");
    lee(s, ruta, {"PolizasEnc", "PolizasPar"}, [&](BaseDatos& m) { ImportaPolizasSoftex(s, d, m, ruta); });
}

DescriptorImportador DescriptorSoftex() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceSoftex;
    d.titulo = "Softex";
    d.tipo = TipoImportacion::ArchivoUnico;
    // One database serves chart and vouchers; its message names the file
    // as the system always named it.
    d.archivos = {{.papel = "base-datos",
                   .etiqueta = "Base de datos de la empresa (*.mdb)",
                   .control = "eloRutaArchCat",
                   .boton = "cmdCatalogo",
                   .selector = {"Búsqueda del Archivo *.mdb - Base de Datos de la Empresa", "*.mdb|*.mdb",
                                kClaveCatalogo},
                   .faltante = "Indique la ruta del archivo CATCTAS.DBF para poder continuar."}};
    d.crea = [](Sesion&, const ArchivosImportacion&) { return std::make_unique<ImportadorSoftex>(); };
    return d;
}

}  // namespace velmorant
