#include "importers/coi/ImportadorCoiFirebird.h"

#include <algorithm>
#include <filesystem>

#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"
#include "importers/Recorrido.h"
#include "platform/ErrorLectura.h"
#include "platform/Texto.h"
#include "platform/fuentes/BaseFirebird.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

// The cells of a query's rows by field name, whatever the case the
// database gives its names in.
class Campos {
public:
    explicit Campos(const FuenteRegistros& fuente) {
        const auto nombres = fuente.nombresColumnas();
        for (size_t i = 0; i < nombres.size(); ++i) indices_[Mayusculas(nombres[i])] = static_cast<int>(i) + 1;
    }
    const Celda& operator()(const Fila& f, const std::string& campo) const { return f[indice(campo)]; }
    std::string texto(const Fila& f, const std::string& campo) const { return f.campo(indice(campo)); }

private:
    std::map<std::string, int> indices_;
    int indice(const std::string& campo) const {
        auto it = indices_.find(Mayusculas(campo));
        if (it == indices_.end()) throw FalloFila("la tabla no tiene el campo " + campo);
        return it->second;
    }
};

std::string DosDigitos(int n) {
    n %= 100;
    return std::string(1, static_cast<char>('0' + n / 10)) + static_cast<char>('0' + n % 10);
}

// A whole number of a cell: integers as numbers or as digits in a text.
std::optional<long long> Entero(const Celda& c) {
    std::string t = RecortaEspacios(c.comoTexto());
    if (t.empty()) return std::nullopt;
    if (auto m = Moneda::desdeTexto(t)) return m->diezmilesimas() / Moneda::kEscala;
    return std::nullopt;
}

Moneda Importe(const Celda& c, const std::string& campo) {
    if (c.esNula() || RecortaEspacios(c.comoTexto()).empty()) return Moneda{};
    if (auto m = c.comoMoneda()) return *m;
    throw FalloFila(campo + " tiene \"" + c.comoTexto() + "\", que no es un importe");
}

// Refuses a table the database does not have, saying what the name is made of.
void ExigeTabla(BaseFirebird& base, const std::string& tabla, const Sesion& s) {
    const auto tablas = base.tablas();
    for (const auto& t : tablas)
        if (Mayusculas(t) == Mayusculas(tabla)) return;
    throw ErrorLectura("La base de datos " + base.ruta() + " no contiene la tabla " + tabla +
                           " del ejercicio " + std::to_string(s.EjercicioActual) +
                           ". Revise el ejercicio de la empresa y la versión de COI (en COI 8 los nombres de las "
                           "tablas no llevan el número de la empresa).",
                       base.ruta(), 0);
}

// The code of a source account, cut to `nivel` levels, and its formatted
// form; both empty when it does not fit the company's format.
std::pair<std::string, std::string> CodigoCoi(Sesion& s, const std::string& numCta, int nivel,
                                             const std::vector<int>& separadores) {
    if (numCta.empty()) return {};
    std::string sin = CuentaHastaNivel(s, numCta, nivel);
    if (sin.empty()) return {};
    std::string con = FormateaCuenta(s, sin);
    if (!CuentaCumpleFormato(s, con, separadores)) return {};
    return {sin, con};
}

}  // namespace

TablasCoi NombresTablasCoi(const std::string& ruta, int ejercicio, bool version8) {
    std::string sufijo = DosDigitos(ejercicio);
    if (!version8) {
        const std::string nombre = std::filesystem::path(RecortaEspacios(ruta)).filename().string();
        const size_t punto = nombre.rfind('.');
        const std::string base = punto == std::string::npos ? nombre : nombre.substr(0, punto);
        const std::string digitos = base.size() >= 2 ? base.substr(base.size() - 2) : "";
        if (digitos.size() != 2 || !std::isdigit(static_cast<unsigned char>(digitos[0])) ||
            !std::isdigit(static_cast<unsigned char>(digitos[1])))
            throw ParametroInvalido("El nombre del archivo " + nombre +
                                    " no termina en los dos dígitos de la empresa que llevan las tablas de COI 7; "
                                    "si la base de datos es de COI 8 indíquelo.");
        sufijo += digitos;
    }
    return {"CUENTAS" + sufijo, "SALDOS" + sufijo, "POLIZAS" + sufijo, "AUXILIAR" + sufijo};
}

std::map<std::string, std::string> ImportaCatalogoCoi(Sesion& s, DestinoTmp& d, BaseFirebird& base,
                                                      const TablasCoi& t) {
    ExigeTabla(base, t.cuentas, s);
    auto fuente = base.consulta("SELECT * FROM " + t.cuentas);
    const Campos c(*fuente);
    const auto separadores = PosicionesSeparador(s);
    std::map<std::string, std::string> cuentas;
    RecorreFilas(s, *fuente, {"Importando Catálogo de Cuentas ..."}, [&](const Fila& f) {
        const std::string numCta = c.texto(f, "NUM_CTA");
        const int nivel = static_cast<int>(Entero(c(f, "NIVEL")).value_or(0));
        auto [sin, con] = CodigoCoi(s, numCta, nivel, separadores);
        if (sin.empty()) return;
        CuentaLeida r;
        r.CuentaSinSeparadores = sin;
        r.Cuenta = con;
        r.Descripcion = c.texto(f, "NOMBRE");
        r.Nivel = nivel;
        // 0 is a debtor account; anything else, Null included, a creditor one.
        r.Naturaleza = Entero(c(f, "NATURALEZA")) == 0 ? "D" : "A";
        r.Saldo = Moneda{};
        d.agregaCuenta(r);
        cuentas.emplace(numCta, con);
    });
    return cuentas;
}

void ImportaSaldosInicialesCoi(Sesion& s, DestinoTmp& d, BaseFirebird& base, const TablasCoi& t,
                               const std::map<std::string, std::string>& cuentas) {
    ExigeTabla(base, t.saldos, s);
    auto fuente = base.consulta("SELECT * FROM " + t.saldos);
    const Campos c(*fuente);
    RecorreFilas(s, *fuente, {"Importando Saldos Iniciales ..."}, [&](const Fila& f) {
        auto it = cuentas.find(c.texto(f, "NUM_CTA"));
        if (it == cuentas.end()) return;
        // A balance that is no number counts as 0, as it always did.
        const Celda& inicial = c(f, "INICIAL");
        d.asignaSaldoInicial(it->second, inicial.comoMoneda().value_or(Moneda{}));
    });
}

void ImportaPolizasCoi(Sesion& s, DestinoTmp& d, BaseFirebird& base, const TablasCoi& t, int hastaMes) {
    ExigeTabla(base, t.polizas, s);
    ExigeTabla(base, t.auxiliar, s);
    const int anio = s.EjercicioActual;
    const std::vector<Valor> condicion = {Valor(static_cast<long long>(anio)), Valor(static_cast<long long>(hastaMes))};
    const Fecha cierre(anio, 12, 31);

    // The head of a row of either table: period 13 is dated at the year's close.
    auto cabeza = [&](const Campos& c, const Fila& f) {
        PolizaLeida p;
        p.Poliza = c.texto(f, "NUM_POLIZ");
        p.Tipo = c.texto(f, "TIPO_POLI");
        p.Concepto = c.texto(f, "CONCEP_PO");
        const auto periodo = Entero(c(f, "PERIODO"));
        if (!periodo || *periodo < 1 || *periodo > 13)
            throw FalloFila("PERIODO tiene \"" + c(f, "PERIODO").comoTexto() + "\", que no es un mes de 1 a 13");
        if (*periodo == 13) {
            p.Fecha = cierre;
            p.Mes13 = true;
        } else {
            auto fecha = c(f, "FECHA_POL").comoFecha();
            if (!fecha) throw FalloFila("FECHA_POL tiene \"" + c(f, "FECHA_POL").comoTexto() + "\", que no es una fecha");
            p.Fecha = *fecha;
        }
        return p;
    };

    {
        auto fuente = base.consulta("SELECT * FROM " + t.polizas + " WHERE EJERCICIO = ? AND PERIODO <= ? "
                                    "ORDER BY PERIODO, TIPO_POLI, NUM_POLIZ", condicion);
        const Campos c(*fuente);
        RecorreFilas(s, *fuente, {"Importando el archivo de Pólizas"}, [&](const Fila& f) {
            PolizaLeida p = cabeza(c, f);
            EtiquetaProgreso(s, "Importando Póliza ... " + p.Poliza + " - " + p.Tipo);
            d.poliza(p);
        });
    }

    const auto separadores = PosicionesSeparador(s);
    auto fuente = base.consulta("SELECT EJERCICIO, PERIODO, NUM_POLIZ, TIPO_POLI, FECHA_POL, CONCEP_PO, DEBE_HABER, "
                                "NUM_CTA, MONTOMOV FROM " + t.auxiliar + " WHERE EJERCICIO = ? AND PERIODO <= ? "
                                "ORDER BY PERIODO, TIPO_POLI, NUM_POLIZ, NUM_PART", condicion);
    const Campos c(*fuente);
    RecorreFilas(s, *fuente, {"Importando Movimientos de Pólizas ..."}, [&](const Fila& f) {
        // A line whose head is missing makes its voucher from its own fields.
        const long id = d.poliza(cabeza(c, f));
        const std::string numCta = c.texto(f, "NUM_CTA");
        auto [sin, con] = CodigoCoi(s, numCta, CalculaNivelCuenta(s, numCta, true), separadores);
        if (sin.empty()) return;
        PartidaLeida l;
        l.Cuenta = sin;
        l.TipoMov = Mayusculas(c.texto(f, "DEBE_HABER"));
        l.Importe = Importe(c(f, "MONTOMOV"), "MONTOMOV");
        l.Referencia = c.texto(f, "CONCEP_PO");
        d.agregaPartida(id, l);
    });
}

// ------------------------------------------------------------ The importer

namespace {

const char* const kConfirmeRuta = "Confirme la Ruta del archivo de Base de Datos.";

template <class F>
void LeeBase(Sesion& s, const ArchivosImportacion& a, const OpcionesCoiFirebird& o, F&& lector) {
    try {
        const std::string ruta = RecortaEspacios(a.ruta("base-datos"));
        TablasCoi t = NombresTablasCoi(ruta, s.EjercicioActual, o.version8);
        BaseFirebird base(ruta, o.usuario, o.contrasena);
        lector(base, t);
    } catch (const ErrorLectura& e) {
        MsgCritico(s, e.what());
        throw;
    } catch (const ParametroInvalido& e) {
        MsgCritico(s, e.what());
        throw ErrorLectura(e.what(), a.ruta("base-datos"), 0);
    }
}

}  // namespace

bool ImportadorCoiFirebird::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    const std::string ruta = RecortaEspacios(a.ruta("base-datos"));
    if (ruta.empty() || !ExisteArchivo(ruta)) {
        MsgAviso(s, kConfirmeRuta);
        return false;
    }
    if (o_.hastaMes == 0) {
        MsgAviso(s, "Especifique por favor el mes hasta el cual deberá importarse el detalle de pólizas");
        return false;
    }
    try {
        NombresTablasCoi(ruta, s.EjercicioActual, o_.version8);
    } catch (const ParametroInvalido& e) {
        MsgAviso(s, e.what());
        return false;
    }
    return true;
}

void ImportadorCoiFirebird::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    LeeBase(s, a, o_, [&](BaseFirebird& base, const TablasCoi& t) {
        auto cuentas = ImportaCatalogoCoi(s, d, base, t);
        ImportaSaldosInicialesCoi(s, d, base, t, cuentas);
    });
}

void ImportadorCoiFirebird::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    LeeBase(s, a, o_, [&](BaseFirebird& base, const TablasCoi& t) { ImportaPolizasCoi(s, d, base, t, o_.hastaMes); });
}

OpcionesCoiFirebird OpcionesCoiFirebirdDe(const ArchivosImportacion& a) {
    OpcionesCoiFirebird o;
    o.hastaMes = MesHastaElegido(a);
    o.version8 = a.casilla("ver8");
    o.usuario = RecortaEspacios(a.parametro("usuario").value_or(""));
    o.contrasena = a.parametro("contrasena").value_or("");
    return o;
}

DescriptorImportador DescriptorCoiFirebird() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceCoiFirebird;
    d.titulo = "COI Win. 7.0, 8.0 - Base de Datos (*.FDB)";
    d.tipo = TipoImportacion::ArchivoUnico;
    d.archivos = {{.papel = "base-datos",
                   .etiqueta = "Base de datos de la empresa (*.FDB)",
                   .control = "txtDBPath",
                   .boton = "cmdCatalogo",
                   .selector = {"Búsqueda: Base Empresa *.FDB - Directorio COI", "*.FDB|*.FDB", kClaveCatalogo},
                   .faltante = kConfirmeRuta,
                   .avisoFaltante = true}};
    d.casillas = {{.control = "chkVer8", .titulo = "COI 8", .opcionCli = "ver8"}};
    d.parametros = {
        {.opcionCli = "hasta-mes",
         .valor = "MM",
         .descripcion = "Importar las pólizas hasta el mes (13: con las de cierre)",
         .tipo = ParametroDescrito::Tipo::Mes,
         .requerido = true,
         .control = "cboMeses"},
        {.opcionCli = "usuario",
         .valor = "USUARIO",
         .descripcion = "Usuario de la base de datos (vacío: SYSDBA)",
         .control = "txtUsuario"},
        {.opcionCli = "contrasena",
         .valor = "CONTRASEÑA",
         .descripcion = "Contraseña (no se pide para un archivo local)",
         .tipo = ParametroDescrito::Tipo::Clave,
         .control = "txtPassword"},
    };
    // A month out of range is refused before the company is opened.
    d.verificaEntradas = [](const ArchivosImportacion& a) { OpcionesCoiFirebirdDe(a); };
    d.crea = [](Sesion&, const ArchivosImportacion& a) {
        return std::make_unique<ImportadorCoiFirebird>(OpcionesCoiFirebirdDe(a));
    };
    return d;
}

}  // namespace velmorant
