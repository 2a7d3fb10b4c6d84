#include "importers/contabilidad_electronica/ArchivosSat.h"

#include <cctype>

#include "importers/Limpieza.h"
#include "platform/ErrorLectura.h"
#include "session/ProgramaTerminado.h"

namespace velmorant {

namespace {

bool TerminaEn(const std::string& t, const std::string& fin) {
    return t.size() >= fin.size() && t.compare(t.size() - fin.size(), fin.size(), fin) == 0;
}

// "1_3" of ".../ContabilidadE/1_3/PolizasPeriodo" as "1.3"; empty when the
// namespace is not one of the electronic accounting's.
std::string VersionDeEspacio(const std::string& espacio) {
    static const std::string prefijo = "www.sat.gob.mx/esquemas/ContabilidadE/";
    std::string resto = espacio;
    if (resto.rfind("http://", 0) == 0) resto = resto.substr(7);
    if (resto.rfind(prefijo, 0) != 0) return "";
    resto = resto.substr(prefijo.size());
    size_t barra = resto.find('/');
    if (barra == std::string::npos || barra == 0) return "";
    std::string v = resto.substr(0, barra);
    for (char& c : v)
        if (c == '_') c = '.';
    return v;
}

struct ClaseConocida {
    const char* raiz;
    const char* espacio;  // last part of the namespace
    std::optional<ClaseSat> clase;
    const char* descripcion;
};

// The files of the electronic accounting, and the ones a user may pick by
// mistake, by root element and namespace.
const ClaseConocida kClases[] = {
    {"Catalogo", "/CatalogoCuentas", ClaseSat::Catalogo, "el catálogo de cuentas"},
    {"Balanza", "/BalanzaComprobacion", ClaseSat::Balanza, "la balanza de comprobación"},
    {"Polizas", "/PolizasPeriodo", ClaseSat::Polizas, "las pólizas del periodo"},
    {"AuxiliarCtas", "/AuxiliarCtas", std::nullopt, "el auxiliar de cuentas"},
    {"RepAuxFol", "/AuxiliarFolios", std::nullopt, "el auxiliar de folios"},
};

Moneda Importe(const ElementoXml& e, const char* nombre) {
    const std::string& texto = e.atributo(nombre);
    if (texto.empty()) return Moneda();
    auto m = ConvierteImporte(texto);
    if (!m) throw FalloFila(std::string("el importe ") + nombre + "=\"" + texto + "\" no es numérico");
    return *m;
}

bool EsTextoDeDigitos(const std::string& t) {
    if (t.empty()) return false;
    for (char c : t)
        if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    return true;
}

}  // namespace

// ------------------------------------------------------------ Headers

EncabezadoSat EncabezadoDe(const ElementoXml& raiz) {
    EncabezadoSat e;
    e.raiz = raiz.nombre;
    e.espacio = raiz.espacio;
    e.linea = raiz.linea;
    e.versionEspacio = VersionDeEspacio(raiz.espacio);
    e.Version = raiz.atributo("Version");
    e.RFC = raiz.atributo("RFC");
    e.Mes = raiz.atributo("Mes");
    e.Anio = raiz.atributo("Anio");
    e.TipoEnvio = raiz.atributo("TipoEnvio");
    for (const auto& c : kClases)
        if (e.raiz == c.raiz && !e.versionEspacio.empty() && TerminaEn(e.espacio, c.espacio)) {
            e.clase = c.clase;
            e.descripcion = c.descripcion;
            return e;
        }
    if (e.raiz == "Comprobante" && e.espacio.rfind("http://www.sat.gob.mx/cfd/", 0) == 0)
        e.descripcion = "un comprobante fiscal (CFDI)";
    else
        e.descripcion = "un XML con el elemento raíz <" + e.raiz + ">";
    return e;
}

EncabezadoSat LeeEncabezadoSat(const std::string& ruta) {
    LectorXml lector(ruta);
    ElementoXml raiz;
    if (!lector.siguiente(raiz)) throw ErrorLectura(lector.mensajeError(1, "el XML no tiene elementos"), ruta, 1);
    return EncabezadoDe(raiz);
}

std::string NombreClaseSat(ClaseSat c) {
    for (const auto& k : kClases)
        if (k.clase == c) return k.descripcion;
    return "";
}

std::optional<int> MesDeEncabezado(const EncabezadoSat& e) {
    if (!EsTextoDeDigitos(e.Mes) || e.Mes.size() > 2) return std::nullopt;
    int mes = std::stoi(e.Mes);
    if (mes < 1 || mes > 13) return std::nullopt;
    return mes;
}

std::string RevisaEncabezado(const EncabezadoSat& e, ClaseSat esperada, const std::string& ruta, int ejercicio) {
    const std::string archivo = "El archivo " + ruta;
    if (e.clase != esperada)
        return archivo + " no es " + NombreClaseSat(esperada) + " de la contabilidad electrónica: es " + e.descripcion +
               ".";
    if (e.Version != "1.1" && e.Version != "1.3")
        return archivo + " es de la versión \"" + e.Version +
               "\" de la contabilidad electrónica; se leen las versiones 1.1 y 1.3.";
    if (e.Version != e.versionEspacio)
        return archivo + " declara la versión " + e.Version + " con el espacio de nombres de la versión " +
               e.versionEspacio + ".";
    if (!EsTextoDeDigitos(e.Anio) || e.Anio.size() != 4) return archivo + " no declara su ejercicio (Anio).";
    int anio = std::stoi(e.Anio);
    if (esperada == ClaseSat::Catalogo) {
        if (anio > ejercicio)
            return archivo + " es del ejercicio " + e.Anio + ", posterior al ejercicio " + std::to_string(ejercicio) +
                   " que se importa.";
        return "";
    }
    if (anio != ejercicio)
        return archivo + " es del ejercicio " + e.Anio + " y se importa el ejercicio " + std::to_string(ejercicio) + ".";
    if (!MesDeEncabezado(e)) return archivo + " declara el mes \"" + e.Mes + "\"; los meses van de 01 a 13.";
    return "";
}

// ------------------------------------------------------------ Records

ArchivoSat::ArchivoSat(const std::string& ruta, ClaseSat clase, int ejercicio) : lector_(ruta) {
    ElementoXml raiz;
    if (!lector_.siguiente(raiz)) throw ErrorLectura(lector_.mensajeError(1, "el XML no tiene elementos"), ruta, 1);
    encabezado_ = EncabezadoDe(raiz);
    std::string motivo = RevisaEncabezado(encabezado_, clase, ruta, ejercicio);
    if (!motivo.empty()) throw ErrorLectura(motivo, ruta, raiz.linea);
}

template <class F>
void ArchivoSat::recorre(F&& alElemento) {
    ElementoXml e;
    long linea = encabezado_.linea;
    try {
        while (lector_.siguiente(e)) {
            linea = e.linea;
            alElemento(e);
        }
    } catch (const ErrorLectura&) {
        throw;
    } catch (const ProgramaTerminado&) {
        throw;
    } catch (const std::exception& x) {
        throw ErrorLectura(lector_.mensajeError(linea, x.what()), ruta(), linea);
    }
}

void ArchivoSat::cuentas(const std::function<void(const CuentaSat&)>& f) {
    recorre([&](const ElementoXml& e) {
        if (e.evento != ElementoXml::Evento::Inicio || e.profundidad != 1 || e.nombre != "Ctas") return;
        CuentaSat c;
        c.NumCta = e.atributo("NumCta");
        c.Desc = e.atributo("Desc");
        c.SubCtaDe = e.atributo("SubCtaDe");
        c.Natur = e.atributo("Natur");
        c.CodAgrup = e.atributo("CodAgrup");
        c.Nivel = e.atributo("Nivel");
        c.linea = e.linea;
        f(c);
    });
}

void ArchivoSat::renglones(const std::function<void(const RenglonBalanzaSat&)>& f) {
    recorre([&](const ElementoXml& e) {
        if (e.evento != ElementoXml::Evento::Inicio || e.profundidad != 1 || e.nombre != "Ctas") return;
        RenglonBalanzaSat r;
        r.NumCta = e.atributo("NumCta");
        r.SaldoIni = Importe(e, "SaldoIni");
        r.Debe = Importe(e, "Debe");
        r.Haber = Importe(e, "Haber");
        r.SaldoFin = Importe(e, "SaldoFin");
        r.linea = e.linea;
        f(r);
    });
}

void ArchivoSat::polizas(const std::function<void(const PolizaSat&)>& f) {
    PolizaSat p;
    bool enPoliza = false;
    recorre([&](const ElementoXml& e) {
        const bool inicio = e.evento == ElementoXml::Evento::Inicio;
        if (e.profundidad == 1 && e.nombre == "Poliza") {
            if (inicio) {
                p = PolizaSat{};
                p.Numero = e.tieneAtributo("NumUnIdenPol") ? e.atributo("NumUnIdenPol") : e.atributo("Num");
                p.Tipo = e.atributo("Tipo");
                p.Fecha = e.atributo("Fecha");
                p.Concepto = e.atributo("Concepto");
                p.linea = e.linea;
                enPoliza = true;
            } else if (enPoliza) {
                enPoliza = false;
                f(p);
            }
            return;
        }
        if (!inicio || !enPoliza) return;
        if (e.profundidad == 2 && e.nombre == "Transaccion") {
            TransaccionSat t;
            t.NumCta = e.atributo("NumCta");
            t.DesCta = e.atributo("DesCta");
            t.Concepto = e.atributo("Concepto");
            t.Debe = Importe(e, "Debe");
            t.Haber = Importe(e, "Haber");
            t.linea = e.linea;
            p.transacciones.push_back(std::move(t));
            return;
        }
        if (e.profundidad != 3 || p.transacciones.empty()) return;
        std::string folio;
        if (e.nombre == "CompNal" || e.nombre == "Comprobantes") folio = e.atributo("UUID_CFDI");
        else if (e.nombre == "CompNalOtr") folio = e.atributo("CFD_CBB_Serie") + e.atributo("CFD_CBB_NumFol");
        else if (e.nombre == "CompExt") folio = e.atributo("NumFactExt");
        if (!folio.empty()) p.transacciones.back().folios.push_back(folio);
    });
}

}  // namespace velmorant
