#include "importers/contabilidad_electronica/ImportadorContabilidadElectronica.h"

#include <cctype>
#include <filesystem>
#include <map>
#include <set>

#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"
#include "importers/Marco.h"
#include "pipeline/Inconsistencias.h"
#include "platform/ErrorLectura.h"
#include "platform/Texto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

bool EsAlfanumerico(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0; }

// What is left of a number after its type: without the marks that part them.
std::string SinSeparadorInicial(const std::string& t) {
    size_t i = 0;
    while (i < t.size() && std::string(" -/_.").find(t[i]) != std::string::npos) ++i;
    return t.substr(i);
}

// The progress of one file: its size in kilobytes, moved every 64 records.
class AvanceArchivo {
public:
    AvanceArchivo(Sesion& s, const std::string& etiqueta, const ArchivoSat& archivo) : p_(s.progreso), a_(archivo) {
        if (!p_) return;
        p_->etiqueta(etiqueta);
        p_->maximo(static_cast<long>(archivo.tamano() / 1024) + 1);
        p_->valor(0);
    }
    void paso() {
        if (!p_ || ++n_ % 64 != 0) return;
        p_->valor(static_cast<long>(a_.bytesLeidos() / 1024));
        p_->cede();
    }

private:
    Progreso* p_;
    const ArchivoSat& a_;
    long n_ = 0;
};

std::string NombreDelMesSat(int mes) { return mes == 13 ? "Mes 13" : NombreDelMes(mes); }

// The reference of a line: its concept, then its fiscal folios.
std::string Referencia(const TransaccionSat& t) {
    std::string r = RecortaEspacios(t.Concepto);
    for (const auto& folio : t.folios) {
        std::string f = RecortaEspacios(folio);
        if (f.empty()) continue;
        r += (r.empty() ? "" : " ") + f;
    }
    return r;
}

std::string ClaveDeRuta(const std::string& ruta) {
    std::error_code ec;
    auto canonica = std::filesystem::weakly_canonical(ruta, ec);
    return ec ? ruta : canonica.string();
}

}  // namespace

// ------------------------------------------------------------ Type rule

ReglaTipoPoliza ReglaTipoPoliza::Desde(const std::string& texto) {
    ReglaTipoPoliza r;
    const std::string regla = RecortaEspacios(texto);
    if (regla.empty()) return r;
    if (regla.find_first_not_of("0123456789") == std::string::npos) {
        r.largo_ = regla.size() > 3 ? 1000 : std::stoul(regla);
        if (r.largo_ == 0 || r.largo_ > 20)
            throw ParametroInvalido("--tipo-prefijo: la longitud del tipo va de 1 a 20 caracteres: " + regla);
        r.clase_ = Clase::Longitud;
        return r;
    }
    if (regla == "letras") {
        r.clase_ = Clase::Letras;
        return r;
    }
    try {
        r.expresion_ = std::regex(regla, std::regex::ECMAScript);
    } catch (const std::regex_error& e) {
        throw ParametroInvalido("--tipo-prefijo: la expresión " + regla + " no es válida (" + e.what() + ")");
    }
    if (r.expresion_.mark_count() < 1)
        throw ParametroInvalido("--tipo-prefijo: la expresión " + regla + " necesita un grupo entre paréntesis con el tipo");
    r.clase_ = Clase::Expresion;
    return r;
}

ReglaTipoPoliza::Partes ReglaTipoPoliza::separa(const std::string& numero) const {
    Partes p{"", numero};
    std::string tipo, resto;
    switch (clase_) {
        case Clase::Ninguna:
            return p;
        case Clase::Longitud:
            if (numero.size() <= largo_) return p;
            tipo = numero.substr(0, largo_);
            resto = numero.substr(largo_);
            break;
        case Clase::Letras: {
            size_t i = 0;
            while (i < numero.size() && std::isalpha(static_cast<unsigned char>(numero[i]))) ++i;
            tipo = numero.substr(0, i);
            resto = numero.substr(i);
            break;
        }
        case Clase::Expresion: {
            std::smatch m;
            if (!std::regex_match(numero, m, expresion_) || !m[1].matched) return p;
            tipo = m[1].str();
            resto = m.size() > 2 && m[2].matched ? m[2].str() : numero;
            break;
        }
    }
    resto = SinSeparadorInicial(resto);
    if (tipo.empty() || resto.empty()) return p;
    return {tipo, resto};
}

// ------------------------------------------------------------ Accounts

std::string CuentaDeArchivoSat(Sesion& s, const std::string& numCta) {
    std::string cuenta = LimpiaCuenta(s, numCta, OrdenLimpieza::SeparadorYRelleno, true);
    if (cuenta.empty()) return cuenta;
    int nivel = CalculaNivelCuenta(s, cuenta, true);
    return nivel > 0 ? CuentaHastaNivel(s, cuenta, nivel) : cuenta;
}

// ------------------------------------------------------------ The importer

ImportadorContabilidadElectronica::ImportadorContabilidadElectronica(ReglaTipoPoliza regla, const std::string& rfc)
    : regla_(std::move(regla)), rfc_(Mayusculas(RecortaEspacios(rfc))) {}

bool ImportadorContabilidadElectronica::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    if (!Importador::validaArchivos(s, a)) return false;
    std::vector<std::pair<std::string, ClaseSat>> archivos{{a.catalogo, ClaseSat::Catalogo}};
    for (const auto& r : a.rutas("balanza")) archivos.emplace_back(r, ClaseSat::Balanza);
    for (const auto& r : a.rutas("polizas")) archivos.emplace_back(r, ClaseSat::Polizas);

    std::set<std::string> elegidos;
    std::map<int, std::string> balanzaDelMes;
    std::string rfcComun, rutaRfc;
    for (const auto& [ruta, clase] : archivos) {
        if (!elegidos.insert(ClaveDeRuta(ruta)).second) {
            MsgAviso(s, "El archivo ya ha sido seleccionado: " + ruta);
            return false;
        }
        EncabezadoSat e;
        try {
            e = LeeEncabezadoSat(ruta);
        } catch (const ErrorLectura& x) {
            MsgAviso(s, x.what());
            return false;
        }
        std::string motivo = RevisaEncabezado(e, clase, ruta, s.EjercicioActual);
        if (!motivo.empty()) {
            MsgAviso(s, motivo);
            return false;
        }
        const std::string rfc = Mayusculas(RecortaEspacios(e.RFC));
        if (!rfc_.empty()) {
            if (rfc != rfc_) {
                MsgAviso(s, "El archivo " + ruta + " es del RFC " + rfc + " y no del RFC " + rfc_ + " de la empresa.");
                return false;
            }
        } else if (rutaRfc.empty()) {
            rfcComun = rfc;
            rutaRfc = ruta;
        } else if (rfc != rfcComun) {
            MsgAviso(s, "El archivo " + ruta + " es del RFC " + rfc + " y el archivo " + rutaRfc + " del RFC " + rfcComun +
                            ": los archivos deben ser de la misma empresa.");
            return false;
        }
        if (clase == ClaseSat::Balanza) {
            int mes = *MesDeEncabezado(e);
            auto [it, nueva] = balanzaDelMes.emplace(mes, ruta);
            if (!nueva) {
                MsgAviso(s, "Las balanzas " + it->second + " y " + ruta + " son del mismo mes (" + DosDigitos(mes) +
                                "); indique una sola balanza por mes.");
                return false;
            }
        }
    }
    return true;
}

void ImportadorContabilidadElectronica::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    catalogo_ = {};
    saldosIniciales_.clear();
    balanzas_.clear();
    movimientos_ = {};
    try {
        ArchivoSat archivo(a.catalogo, ClaseSat::Catalogo, s.EjercicioActual);
        AvanceArchivo avance(s, "Importando Catálogo de Cuentas ...", archivo);
        std::vector<CuentaLeida> cuentas;
        std::set<std::string> codigos;
        archivo.cuentas([&](const CuentaSat& c) {
            avance.paso();
            CuentaLeida r;
            r.CuentaSinSeparadores = CuentaDeArchivoSat(s, c.NumCta);
            if (r.CuentaSinSeparadores.empty()) return;
            r.Cuenta = FormateaCuenta(s, r.CuentaSinSeparadores);
            r.Descripcion = RecortaEspacios(c.Desc);
            r.CuentaAcumulativa = CuentaDeArchivoSat(s, c.SubCtaDe);
            int nivel = ValEntero(c.Nivel);
            r.Nivel = nivel > 0 ? nivel : CalculaNivelCuenta(s, r.CuentaSinSeparadores, true);
            r.Naturaleza = Mayusculas(RecortaEspacios(c.Natur));
            codigos.insert(r.CuentaSinSeparadores);
            cuentas.push_back(std::move(r));
        });
        // The parent of each account for the reconciliation: the one the
        // file names when the chart has it, else the nearest by its code.
        for (const auto& c : cuentas) {
            std::string padre = *c.CuentaAcumulativa;
            if (!codigos.count(padre)) {
                padre.clear();
                for (int n = CalculaNivelCuenta(s, c.CuentaSinSeparadores, true) - 1; n >= 1 && padre.empty(); --n) {
                    std::string ancestro = CuentaHastaNivel(s, c.CuentaSinSeparadores, n);
                    if (ancestro != c.CuentaSinSeparadores && codigos.count(ancestro)) padre = ancestro;
                }
            }
            catalogo_.agrega(c.CuentaSinSeparadores, *c.Naturaleza, padre);
        }
        for (const auto& ruta : a.rutas("balanza")) balanzas_.push_back(leeBalanza(s, ruta));
        for (const auto& b : balanzas_)
            if (b.mes == 1)
                for (const auto& r : b.renglones) saldosIniciales_.emplace(r.cuenta, r.SaldoIni);
        Transaccion t(*s.DbEmpresa);
        for (auto& c : cuentas) {
            if (auto it = saldosIniciales_.find(c.CuentaSinSeparadores); it != saldosIniciales_.end())
                c.Saldo = it->second;
            d.agregaCuenta(c);
        }
        t.confirma();
    } catch (const ErrorLectura& e) {
        MsgCritico(s, e.what());
        throw;
    }
}

BalanzaLeida ImportadorContabilidadElectronica::leeBalanza(Sesion& s, const std::string& ruta) {
    ArchivoSat archivo(ruta, ClaseSat::Balanza, s.EjercicioActual);
    BalanzaLeida b;
    b.mes = MesDeEncabezado(archivo.encabezado()).value_or(0);
    b.ruta = ruta;
    AvanceArchivo avance(s, "Importando Balanza de Comprobación del mes de: " + NombreDelMesSat(b.mes), archivo);
    std::vector<RenglonBalanza> renglones;
    archivo.renglones([&](const RenglonBalanzaSat& r) {
        avance.paso();
        std::string cuenta = CuentaDeArchivoSat(s, r.NumCta);
        if (cuenta.empty()) return;
        if (!catalogo_.tiene(cuenta)) {
            b.fueraDeCatalogo.push_back(cuenta);
            return;
        }
        renglones.push_back({cuenta, r.SaldoIni, r.Debe, r.Haber, r.SaldoFin});
    });
    b.signo = DeduceSignoBalanza(renglones, catalogo_);
    for (auto& r : renglones) {
        const std::string& naturaleza = catalogo_.naturaleza(r.cuenta);
        r.SaldoIni = SaldoDeudor(r.SaldoIni, naturaleza, b.signo);
        r.SaldoFin = SaldoDeudor(r.SaldoFin, naturaleza, b.signo);
    }
    b.renglones = std::move(renglones);
    return b;
}

void ImportadorContabilidadElectronica::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    try {
        for (const auto& ruta : a.rutas("polizas")) leePolizas(s, d, ruta);
    } catch (const ErrorLectura& e) {
        MsgCritico(s, e.what());
        throw;
    }
    if (balanzas_.empty()) return;
    if (s.progreso) s.progreso->etiqueta("Conciliando las balanzas con las pólizas ...");
    Transaccion t(*s.DbEmpresa);
    for (const auto& dif : ConciliaBalanzas(catalogo_, saldosIniciales_, movimientos_, balanzas_))
        RegistraInconsistencia(s, dif.referencia, dif.fuente, "O", "", "", std::nullopt, dif.cuenta);
    t.confirma();
}

void ImportadorContabilidadElectronica::leePolizas(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    ArchivoSat archivo(ruta, ClaseSat::Polizas, s.EjercicioActual);
    const int mesArchivo = MesDeEncabezado(archivo.encabezado()).value_or(0);
    const bool mes13 = mesArchivo == 13;
    const int ejercicio = s.EjercicioActual;
    AvanceArchivo avance(s, "Importando Pólizas del mes de: " + NombreDelMesSat(mesArchivo), archivo);
    Transaccion t(*s.DbEmpresa);
    archivo.polizas([&](const PolizaSat& p) {
        avance.paso();
        auto falla = [&](const std::string& causa) {
            throw ErrorLectura(archivo.mensajeError(p.linea, causa), ruta, p.linea);
        };
        if (RecortaEspacios(p.Numero).empty()) falla("la póliza no tiene número (NumUnIdenPol)");
        auto fecha = p.Fecha.size() == 10 ? Fecha::desdeIso(p.Fecha) : std::nullopt;
        if (!fecha) falla("la fecha \"" + p.Fecha + "\" de la póliza " + p.Numero + " no es válida");
        if (fecha->anio() != ejercicio)
            falla("la póliza " + p.Numero + " tiene fecha " + fecha->ddmmaaaa() + ", fuera del ejercicio " +
                  std::to_string(ejercicio));
        if (mes13 && fecha->mes() != 12)
            falla("la póliza " + p.Numero + " es del mes 13 y tiene fecha " + fecha->ddmmaaaa() +
                  "; las pólizas del mes 13 llevan fecha de diciembre");
        auto partes = regla_.separa(RecortaEspacios(p.Numero));
        PolizaLeida poliza;
        poliza.Poliza = partes.numero;
        poliza.Tipo = regla_.vacia() ? RecortaEspacios(p.Tipo) : partes.tipo;
        poliza.Fecha = *fecha;
        poliza.Concepto = RecortaEspacios(p.Concepto);
        poliza.Mes13 = mes13;
        const long id = d.nuevaPoliza(poliza);
        const int mes = mes13 ? 13 : fecha->mes();
        for (const auto& tr : p.transacciones) {
            PartidaLeida l;
            l.Cuenta = CuentaDeArchivoSat(s, tr.NumCta);
            if (l.Cuenta.empty()) continue;
            l.Referencia = Referencia(tr);
            auto agrega = [&](const char* tipoMov, Moneda importe) {
                l.TipoMov = tipoMov;
                l.Importe = importe;
                d.agregaPartida(id, l);
                movimientos_.agrega(l.Cuenta, mes, l.TipoMov, importe);
            };
            const bool conHaber = !tr.Haber.esCero();
            if (!tr.Debe.esCero() || !conHaber) agrega("D", tr.Debe);
            if (conHaber) agrega("H", tr.Haber);
        }
    });
    t.confirma();
}

// ------------------------------------------------------------ Descriptor

namespace {

std::unique_ptr<Importador> CreaContabilidadElectronica(Sesion&, const ArchivosImportacion& a) {
    ReglaTipoPoliza regla = ReglaTipoPoliza::Desde(a.parametro("tipo-prefijo").value_or(""));
    std::string rfc = Mayusculas(RecortaEspacios(a.parametro("rfc").value_or("")));
    for (char c : rfc)
        if (!EsAlfanumerico(c) && c != '&')
            throw ParametroInvalido("--rfc: el RFC " + rfc + " lleva un carácter que no es letra ni número");
    return std::make_unique<ImportadorContabilidadElectronica>(std::move(regla), rfc);
}

}  // namespace

DescriptorImportador DescriptorContabilidadElectronica() {
    const std::string filtro = "*.xml|*.xml";
    DescriptorImportador d;
    d.IdSistema = kEnlaceContabilidadElectronica;
    d.titulo = "Contabilidad electrónica (XML)";
    d.tipo = TipoImportacion::ArchivoUnico;
    d.archivos = {
        {.papel = "catalogo",
         .etiqueta = "Catálogo de cuentas (XML)",
         .control = "eloRutaArchCat",
         .boton = "cmdCatalogo",
         .selector = {"Búsqueda del Archivo *.XML - Catálogo de cuentas", filtro, kClaveCatalogo},
         .faltante = "Especifique por favor el archivo XML que contiene el Catálogo de cuentas",
         .avisoFaltante = true},
        {.papel = "balanza",
         .etiqueta = "Balanza de comprobación (XML)",
         .control = "eloRutaArchBalanzaINI",
         .boton = "cmdBalanzaIni",
         .selector = {"Búsqueda del Archivo *.XML - Balanza de Comprobación", filtro, kClaveSaldosIniciales},
         .repetible = true},
        {.papel = "polizas",
         .etiqueta = "Pólizas del periodo (XML)",
         .control = "eloRutaArchPol",
         .boton = "cmdPolizas",
         .selector = {"Búsqueda del Archivo *.XML - Pólizas del periodo", filtro, kClavePolizas},
         .faltante = "Especifique por favor el archivo XML que contiene las pólizas",
         .avisoFaltante = true,
         .repetible = true},
    };
    d.parametros = {
        {.opcionCli = "tipo-prefijo", .valor = "REGLA",
         .descripcion = "tipo de póliza al inicio de su número: N caracteres, 'letras' o una expresión regular "
                        "con el tipo en su primer grupo",
         .control = "txtTipoPrefijo"},
        {.opcionCli = "rfc", .valor = "RFC", .descripcion = "RFC de la empresa, que deben llevar todos los archivos",
         .control = "txtRFC"},
    };
    d.crea = CreaContabilidadElectronica;
    return d;
}

}  // namespace velmorant
