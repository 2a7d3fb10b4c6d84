#include "importers/contpaq_windows/ImportadorContpaqWindows.h"

#include <cstdio>
#include <filesystem>
#include <tuple>

#include "accounts/CodigosCuenta.h"
#include "importers/Limpieza.h"
#include "importers/Recorrido.h"
#include "pipeline/Inconsistencias.h"
#include "pipeline/ReportesDecisiones.h"
#include "platform/ErrorLectura.h"
#include "platform/Texto.h"
#include "platform/fuentes/FuenteDbf.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant {

namespace fs = std::filesystem;

namespace {

const char* const kCuentas = "CTW10001";
const char* const kControles = "CTW10002";
const char* const kSaldos = "CTW10005";
const char* const kMovimientos = "CTW10004";
const char* const kTipos = "CTW10009";

// A code of these tables cut to the levels the company uses, the padding
// flag as the company's (the chart, parents, balances and lines alike).
std::string CuentaContpaq(Sesion& s, const std::string& texto) {
    std::string cuenta = RecortaEspacios(texto);
    if (cuenta.empty()) return cuenta;
    int nivel = CalculaNivelCuenta(s, cuenta, s.RellenaCeros);
    return nivel > 0 ? CuentaHastaNivel(s, cuenta, nivel) : cuenta;
}

FilasTabla Filas(TablasContpaq& t, Sentencia& consulta, const std::string& tabla) {
    auto it = t.almacenes.find(tabla);
    return FilasTabla(consulta, t.rutas[tabla], tabla, it == t.almacenes.end() ? FilasTabla::Almacenes{} : it->second);
}

long Cuenta(TablasContpaq& t, const std::string& sql, const Valor& a = Valor(), const Valor& b = Valor()) {
    Sentencia& c = t.memoria.preparada(sql);
    if (a.esNulo()) c.con();
    else if (b.esNulo()) c.con(a);
    else c.con(a, b);
    c.paso();
    return static_cast<long>(c.columna(0).entero());
}

// The month of the query: "Mes cierre" reads the twelve by date.
int MesDeConsulta(int hastaMes) { return hastaMes == 13 ? 12 : hastaMes; }

std::string Natural(const std::string& numero) {
    size_t i = numero.find_first_not_of(" 0");
    if (i == std::string::npos) return numero.empty() ? numero : "0";
    return numero.substr(i);
}

// Rewrites `campo` of each table by `cambio` (rows whose value changes).
template <class F>
int Reescribe(BaseDatos& db, const std::string& campo, const std::vector<std::string>& tablas, F&& cambio) {
    int cambiadas = 0;
    for (const auto& tabla : tablas) {
        if (!db.existeTabla(tabla)) continue;
        Consulta c = db.consulta("SELECT rowid AS Fila, " + campo + " AS Valor FROM " + tabla + " WHERE " + campo +
                                 " IS NOT NULL");
        for (c.primero(); !c.eof(); c.siguiente()) {
            const std::string antes = c["Valor"].texto();
            const std::string despues = cambio(antes);
            if (despues == antes) continue;
            db.ejecuta("UPDATE " + tabla + " SET " + campo + " = ? WHERE rowid = ?", despues, c["Fila"]);
            ++cambiadas;
        }
    }
    return cambiadas;
}

// The width step: the first 14 vouchers' `campo` of one width, with
// something in front of the number in at least one of them.
int AdaptaLongitud(BaseDatos& db, const std::string& campo) {
    Consulta c = db.consulta("SELECT " + campo + " AS Valor FROM Polizas ORDER BY IdPoliza LIMIT 14");
    if (c.vacia()) return 0;
    size_t ancho = std::string::npos;
    bool relleno = false;
    for (c.primero(); !c.eof(); c.siguiente()) {
        const std::string v = c["Valor"].texto();
        if (ancho == std::string::npos) ancho = v.size();
        if (v.size() != ancho) return 0;
        relleno = relleno || Natural(v) != v;
    }
    if (!relleno) return 0;
    return Reescribe(db, campo, {"Polizas", "CedAnalitica", "CedNoDeducibles"}, Natural);
}

// The line's text from its reference and concept.
std::string TextoLinea(const std::string& referencia, const std::string& concepto, bool incluirReferencia) {
    if (incluirReferencia && !referencia.empty() && !concepto.empty()) return referencia + " " + concepto;
    return concepto;
}

}  // namespace

// ------------------------------------------------------------ Files

ArchivosContpaq ArchivosJuntoAlCatalogo(const std::string& rutaCatalogo) {
    ArchivosContpaq r;
    r.cuentas = rutaCatalogo;
    std::error_code ec;
    const fs::path carpeta = fs::path(rutaCatalogo).parent_path();
    std::map<std::string, std::string> porNombre;
    for (const auto& e : fs::directory_iterator(carpeta.empty() ? fs::path(".") : carpeta, ec))
        if (e.is_regular_file(ec)) porNombre[Mayusculas(e.path().filename().string())] = e.path().string();
    auto busca = [&](const char* tabla) {
        auto it = porNombre.find(std::string(tabla) + ".DBF");
        return it == porNombre.end() ? std::string() : it->second;
    };
    r.controles = busca(kControles);
    r.saldos = busca(kSaldos);
    r.movimientos = busca(kMovimientos);
    r.tiposPoliza = busca(kTipos);
    return r;
}

// ------------------------------------------------------------ NatContpaq

std::string RutaNatContpaq(const Sesion& s) {
    char numero[16];
    std::snprintf(numero, sizeof numero, "%04d", static_cast<int>(s.IdEmpresaActual));
    const std::string carpeta = s.RutaBase + numero + "_" + std::to_string(s.EjercicioActual);
    return RutaBaseDatos(ConSeparadorFinal(carpeta), "NatContpaq");
}

void CreaBDNatContpaq(Sesion& s) {
    const fs::path ruta = RutaNatContpaq(s);
    if (fs::exists(ruta)) return;
    fs::create_directories(ruta.parent_path());
    // Made aside and moved in place whole, so a store half made is never found.
    const fs::path nueva = ruta.string() + ".nueva";
    fs::remove(nueva);
    {
        BaseDatos db(nueva, BaseDatos::Modo::Crear);
        Transaccion t(db);
        db.ejecutaScript(
            "CREATE TABLE NatContpaq (Tipo TEXT(1) COLLATE NOCASE, NaturalezaPre TEXT(1), NaturalezaModif TEXT(1));"
            "CREATE INDEX Tipo ON NatContpaq (Tipo);");
        // C and J belong to the rule but come through the question when met.
        for (const char* tipo : {"A", "B", "D", "E", "F", "G", "H", "I", "K", "L"}) {
            const std::string n = std::string("ACEGIK").find(tipo[0]) != std::string::npos ? "D" : "A";
            db.ejecuta("INSERT INTO NatContpaq (Tipo, NaturalezaPre, NaturalezaModif) VALUES (?, ?, ?)", tipo, n, n);
        }
        t.confirma();
    }
    fs::rename(nueva, ruta);
}

void RestableceNatContpaq(Sesion& s) {
    NaturalezasContpaq n(s);
    n.base().ejecuta("UPDATE NatContpaq SET NaturalezaModif = NaturalezaPre");
}

NaturalezasContpaq::NaturalezasContpaq(Sesion& s) : db_((CreaBDNatContpaq(s), fs::path(RutaNatContpaq(s)))) {}

std::string NaturalezasContpaq::busca(const std::string& tipo) {
    Consulta c = db_.consulta("SELECT NaturalezaModif FROM NatContpaq WHERE Tipo = ? LIMIT 1", tipo);
    if (c.vacia()) {
        db_.ejecuta("INSERT INTO NatContpaq (Tipo, NaturalezaPre, NaturalezaModif) VALUES (?, '', '')", tipo);
        return "";
    }
    return RecortaEspacios(c["NaturalezaModif"].texto());
}

void NaturalezasContpaq::fija(const std::string& tipo, const std::string& naturaleza) {
    db_.ejecuta("UPDATE NatContpaq SET NaturalezaPre = ?, NaturalezaModif = ? WHERE Tipo = ?", naturaleza, naturaleza,
                tipo);
}

void NaturalezasContpaq::modifica(const std::string& tipo, const std::string& naturaleza) {
    db_.ejecuta("UPDATE NatContpaq SET NaturalezaModif = ? WHERE Tipo = ?", naturaleza, tipo);
}

std::vector<std::array<std::string, 3>> NaturalezasContpaq::filas() {
    std::vector<std::array<std::string, 3>> r;
    Consulta c = db_.consulta("SELECT Tipo, NaturalezaPre, NaturalezaModif FROM NatContpaq ORDER BY Tipo");
    for (c.primero(); !c.eof(); c.siguiente())
        r.push_back({c["Tipo"].texto(), c["NaturalezaPre"].texto(), c["NaturalezaModif"].texto()});
    return r;
}

std::string TextoNaturalezaDesconocida(const std::string& cuenta, const std::string& nombre, const std::string& tipo) {
    return "No se logró identificar la naturaleza de la cuenta: \r\n" + cuenta + " - " + nombre +
           " conforme al Tipo de cuenta '" + tipo + "'";
}

// ------------------------------------------------------------ Tables

void TablasContpaq::carga(const std::string& tabla, const std::string& ruta) {
    const FuenteDbf encabezado(ruta);
    auto& almacen = almacenes[tabla];
    for (const auto& c : encabezado.campos()) {
        const AlmacenColumna a = AlmacenCampoDbf(c.tipo, c.decimales);
        if (a == AlmacenColumna::Entero || a == AlmacenColumna::Diezmilesimas) almacen[Mayusculas(c.nombre)] = a;
    }
    CargaTablaDbf(memoria, ruta, tabla);
    rutas[tabla] = ruta;
}

// ------------------------------------------------------------ Readers

std::map<std::string, std::string> ImportaCatalogoContpaq(Sesion& s, DestinoTmp& d, TablasContpaq& t,
                                                          const OpcionesContpaqWindows& o, NaturalezasContpaq& n) {
    std::map<std::string, std::string> naturalezas;
    const std::string condicion = o.filtroSistOrig ? " WHERE SISTORIG <> 0" : "";
    AvanceLectura avance(s, "Importando Catálogo de Cuentas ...",
                         Cuenta(t, std::string("SELECT COUNT(*) FROM ") + kCuentas + condicion));
    Transaccion tr(*s.DbEmpresa);
    FilasTabla f = Filas(
        t, t.memoria.preparada(std::string("SELECT rowid, * FROM ") + kCuentas + condicion + " ORDER BY Cuenta").con(),
        kCuentas);
    Sentencia& padre = t.memoria.preparada(std::string("SELECT CTASUP FROM ") + kControles +
                                           " WHERE SUBCTADE = ? ORDER BY rowid LIMIT 1");
    long leidas = 0;
    while (f.siguiente()) {
        avance.valor(++leidas);
        const std::string fuente = f.texto("Cuenta");
        if (fuente.empty() || fuente[0] == '_') continue;  // ContPAQ's own records
        CuentaLeida c;
        c.CuentaSinSeparadores = CuentaContpaq(s, fuente);
        if (c.CuentaSinSeparadores.empty()) continue;
        c.Cuenta = c.CuentaSinSeparadores;
        c.Descripcion = f.texto("Nombre");
        c.Nivel = CalculaNivelCuenta(s, c.CuentaSinSeparadores, s.RellenaCeros);
        const std::string tipo = f.texto("Tipo");
        if (!tipo.empty()) {
            std::string naturaleza = n.busca(tipo);
            if (naturaleza.empty()) {
                auto dada = o.naturalezas.find(Mayusculas(tipo));
                naturaleza = dada != o.naturalezas.end()
                                 ? dada->second
                                 : s.interaccion->decideNaturaleza(
                                       TituloMensajes(s),
                                       TextoNaturalezaDesconocida(c.CuentaSinSeparadores, c.Descripcion, tipo), tipo);
                if (naturaleza != "D" && naturaleza != "A") {
                    MsgAviso(s, TextoNaturalezaDesconocida(c.CuentaSinSeparadores, c.Descripcion, tipo) +
                                    "\r\nEspecifique por favor la naturaleza de la cuenta");
                    MsgInformacion(s, kMensajeImportacionCancelada);
                    throw ProgramaTerminado(kMensajeImportacionCancelada);
                }
                // The answer holds for every later account of the type.
                n.fija(tipo, naturaleza);
            }
            c.Naturaleza = naturaleza;
            naturalezas[c.CuentaSinSeparadores] = naturaleza;
        }
        padre.reinicia().con(fuente);
        if (padre.paso()) {
            const std::string superior = RecortaEspacios(padre.columna(0).texto());
            if (!superior.empty() && superior[0] != '_') c.CuentaAcumulativa = CuentaContpaq(s, superior);
        }
        d.agregaCuenta(c);
    }
    tr.confirma();
    return naturalezas;
}

void ImportaSaldosContpaq(Sesion& s, DestinoTmp& d, TablasContpaq& t,
                          const std::map<std::string, std::string>& naturalezas) {
    const Valor anio = static_cast<int>(s.EjercicioActual);
    const std::string condicion = std::string(" FROM ") + kSaldos + " WHERE EJE = ? and TIPO=1";
    AvanceLectura avance(s, "Importando Saldos Iniciales ...", Cuenta(t, "SELECT COUNT(*)" + condicion, anio));
    Transaccion tr(*s.DbEmpresa);
    FilasTabla f = Filas(t, t.memoria.preparada("SELECT rowid, *" + condicion).con(anio), kSaldos);
    long leidas = 0;
    while (f.siguiente()) {
        avance.valor(++leidas);
        const std::string cuenta = CuentaContpaq(s, f.texto("Cuenta"));
        if (cuenta.empty()) continue;
        Moneda saldo = f.importe("SALDOINI");
        auto nat = naturalezas.find(cuenta);
        if (nat != naturalezas.end() && nat->second == "A") saldo = -saldo;
        d.asignaSaldoInicial(cuenta, saldo);  // a balance without its account is skipped
    }
    tr.confirma();
}

void ImportaPolizasContpaq(Sesion& s, DestinoTmp& d, TablasContpaq& t, const OpcionesContpaqWindows& o) {
    const Valor anio = static_cast<int>(s.EjercicioActual), mes = MesDeConsulta(o.hastaMes);
    const std::string condicion = std::string(" FROM ") + kMovimientos + " WHERE EJE = ? and Month(Fecha)<= ?";
    AvanceLectura avance(s, "Importando el archivo de Pólizas", Cuenta(t, "SELECT COUNT(*)" + condicion, anio, mes));
    Transaccion tr(*s.DbEmpresa);
    // The order of the query groups the lines: a voucher ends where type,
    // number or date change.
    FilasTabla f =
        Filas(t, t.memoria.preparada("SELECT rowid, *" + condicion + " ORDER BY PERIODO, TIPOPOL, NUMPOL, MOVTO, rowid")
                     .con(anio, mes),
              kMovimientos);
    std::optional<std::tuple<std::string, std::string, std::string>> anterior;
    long id = 0, leidas = 0;
    while (f.siguiente()) {
        avance.valor(++leidas);
        const auto fecha = f.fecha("Fecha");
        if (!fecha) f.falla("el movimiento no tiene fecha");  // the month's test leaves none; kept for safety
        auto clave = std::make_tuple(f.texto("TIPOPOL"), f.texto("NUMPOL"), fecha->iso());
        const std::string referencia = f.texto("Referencia"), concepto = f.texto("Concepto");
        if (clave != anterior) {
            PolizaLeida p;
            p.Tipo = std::get<0>(clave);
            p.Poliza = std::get<1>(clave);
            p.Fecha = *fecha;
            p.Concepto = concepto;
            const long periodo = f.entero("PERIODO");
            p.Mes13 = periodo == 13 || periodo == 14;
            id = d.nuevaPoliza(p);
            anterior = clave;
        }
        PartidaLeida l;
        l.Cuenta = CuentaContpaq(s, f.texto("Cuenta"));
        l.TipoMov = f.entero("TipoMov") == 0 ? "D" : "H";
        l.Importe = f.importe("Importe");
        l.Referencia = TextoLinea(referencia, concepto, o.incluirReferencia);
        d.agregaPartida(id, l);
    }
    tr.confirma();
}

std::vector<std::pair<std::string, std::string>> ImportaTiposPolizaContpaq(TablasContpaq& t) {
    std::vector<std::pair<std::string, std::string>> tipos;
    FilasTabla f = Filas(t, t.memoria.preparada(std::string("SELECT rowid, * FROM ") + kTipos).con(), kTipos);
    while (f.siguiente()) tipos.emplace_back(f.texto("NUMERO"), f.texto("DESCRIP"));
    return tipos;
}

void ImportaSaldosAnioAntContpaq(Sesion& s, DestinoTmp& d, TablasContpaq& t) {
    const Valor anio = static_cast<int>(s.EjercicioActual) - 1;
    const std::string condicion = std::string(" FROM ") + kSaldos + " WHERE EJE = ? AND TIPO=1";
    AvanceLectura avance(s, "Verificando saldos finales año anterior ...",
                         Cuenta(t, "SELECT COUNT(*)" + condicion, anio));
    Transaccion tr(*s.DbEmpresa);
    FilasTabla f = Filas(t, t.memoria.preparada("SELECT rowid, *" + condicion + " ORDER BY CUENTA ASC").con(anio), kSaldos);
    long leidas = 0;
    while (f.siguiente()) {
        avance.valor(++leidas);
        const std::string cuenta = CuentaContpaq(s, f.texto("Cuenta"));
        if (cuenta.empty()) continue;
        SaldoAnioAnteriorLeido r;
        r.Cuenta = r.CuentaSinSeparadores = cuenta;
        r.Nivel = CalculaNivelCuenta(s, cuenta, s.RellenaCeros);
        r.SaldoFinAnioAnt = f.importe("IMP13");
        Consulta empresa = s.DbEmpresa->consulta("SELECT Descripcion, Naturaleza FROM main.Cuentas WHERE Cuenta = ?", cuenta);
        if (empresa.vacia()) {
            r.Descripcion = "Sin Descripción";
            RegistraInconsistencia(s,
                                   "La Cuenta " + cuenta +
                                       " no existe, contiene el saldo final del año anterior y será necesario "
                                       "agregarla al catalogo actual",
                                   kFuenteCatalogo, "O", "", "", std::nullopt, cuenta);
        } else {
            r.Descripcion = empresa["Descripcion"].texto();
            if (RecortaEspacios(empresa["Naturaleza"].texto()) == "A") r.SaldoFinAnioAnt = -r.SaldoFinAnioAnt;
        }
        d.agregaSaldoAnioAnterior(r);
    }
    tr.confirma();
}

std::vector<std::pair<std::string, int>> MesesContpaq(const Sesion& s, const std::string& rutaMovimientos) {
    TablasContpaq t;
    t.carga(kMovimientos, rutaMovimientos);
    std::vector<std::pair<std::string, int>> meses;
    Sentencia& c = t.memoria.preparada(std::string("SELECT Periodo FROM ") + kMovimientos +
                                       " WHERE EJE = ? GROUP BY Periodo ORDER BY Periodo");
    c.con(static_cast<int>(s.EjercicioActual));
    bool cierre = false;
    while (c.paso()) {
        const auto periodo = c.columna(0).entero();
        if (periodo >= 1 && periodo <= 12) meses.emplace_back(NombreDelMes(static_cast<int>(periodo)), periodo);
        else if ((periodo == 13 || periodo == 14) && !cierre) {
            meses.emplace_back("Mes cierre", 13);
            cierre = true;
        }
    }
    return meses;
}

// ------------------------------------------------------------ Upgrade steps

int AdaptaLongitudPoliza(BaseDatos& db) { return AdaptaLongitud(db, "Poliza"); }

int AdaptaLongitudTipoPoliza(BaseDatos& db) { return AdaptaLongitud(db, "Tipo"); }

int AdaptaRefyConceptoMovtoPoliza(BaseDatos& db, bool incluirReferencia) {
    const long conTexto =
        static_cast<long>(db.escalar("SELECT COUNT(*) FROM Polizas_Detalle WHERE COALESCE(Referencia, '') <> ''").entero());
    const long unidas = static_cast<long>(
        db.escalar("SELECT COUNT(*) FROM Polizas_Detalle WHERE instr(COALESCE(Referencia, ''), ' - ') > 0").entero());
    if (conTexto == 0 || unidas != conTexto) return 0;
    return Reescribe(db, "Referencia", {"Polizas_Detalle", "CedAnalitica", "CedNoDeducibles"},
                     [&](const std::string& texto) {
                         const size_t i = texto.find(" - ");
                         if (i == std::string::npos) return texto;
                         return TextoLinea(RecortaEspacios(texto.substr(0, i)), RecortaEspacios(texto.substr(i + 3)),
                                           incluirReferencia);
                     });
}

// ------------------------------------------------------------ The importer

ReglasDestino ImportadorContpaqWindows::reglasDestino() const {
    ReglasDestino r;
    r.avisoCuentaInexistente = ReglasDestino::AvisoCuentaInexistente::CuentaNoExiste;
    return r;
}

bool ImportadorContpaqWindows::validaArchivos(Sesion& s, const ArchivosImportacion& a) {
    const ArchivosContpaq f = a.catalogo.empty() ? ArchivosContpaq{} : ArchivosJuntoAlCatalogo(a.catalogo);
    const std::pair<const std::string*, const char*> pasos[] = {
        {&f.cuentas, "Especifique por favor el archivo que contiene las cuentas de registro"},
        {&f.controles, "Especifique por favor el archivo que contiene las cuentas de control"},
        {&f.saldos, "Especifique por favor el archivo que contiene los saldos iniciales"},
        {&f.movimientos, "Especifique por favor el archivo que contiene el detalle de movimientos de pólizas"},
        {&f.tiposPoliza, "Especifique por favor el archivo que contiene el catálogo de tipos de póliza"},
    };
    for (const auto& [ruta, mensaje] : pasos)
        if (ruta->empty()) {
            MsgAviso(s, mensaje);
            return false;
        }
    if (opciones_.hastaMes == 0) {
        MsgAviso(s, "Especifique por favor el mes hasta el cual deberá importarse el detalle de pólizas");
        return false;
    }
    return true;
}

void ImportadorContpaqWindows::ajustaSesion(Sesion& s) const {
    s.SeparadorEmpresa.clear();
    s.CatalogoArbol = false;
    if (opciones_.ctasRellenas) s.RellenaCeros = *opciones_.ctasRellenas;
}

namespace {

template <class F>
void Lee(Sesion& s, F&& lector) {
    try {
        TablasContpaq t;
        lector(t);
    } catch (const ErrorLectura& e) {
        MsgCritico(s, e.what());
        throw;
    }
}

}  // namespace

void ImportadorContpaqWindows::ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    ajustaSesion(s);
    const ArchivosContpaq f = ArchivosJuntoAlCatalogo(a.catalogo);
    NaturalezasContpaq natContpaq(s);
    Lee(s, [&](TablasContpaq& t) {
        t.carga(kCuentas, f.cuentas);
        t.carga(kControles, f.controles);
        auto naturalezas = ImportaCatalogoContpaq(s, d, t, opciones_, natContpaq);
        t.carga(kSaldos, f.saldos);
        ImportaSaldosContpaq(s, d, t, naturalezas);
    });
}

void ImportadorContpaqWindows::ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) {
    const ArchivosContpaq f = ArchivosJuntoAlCatalogo(a.catalogo);
    Lee(s, [&](TablasContpaq& t) {
        t.carga(kMovimientos, f.movimientos);
        ImportaPolizasContpaq(s, d, t, opciones_);
        t.carga(kTipos, f.tiposPoliza);
        tipos_ = ImportaTiposPolizaContpaq(t);
        conTipos_ = true;
    });
}

void ImportadorContpaqWindows::ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) {
    if (Mayusculas(fs::path(ruta).filename().string()) != std::string(kSaldos) + ".DBF") {
        MsgAviso(s, "Error: El nombre del archivo no coincide.");
        throw ProgramaTerminado("Error: El nombre del archivo no coincide.");
    }
    ajustaSesion(s);
    Lee(s, [&](TablasContpaq& t) {
        t.carga(kSaldos, ruta);
        ImportaSaldosAnioAntContpaq(s, d, t);
    });
}

void ImportadorContpaqWindows::confirmaPropio(Sesion& s, MomentoConfirmacion momento) {
    if (momento != MomentoConfirmacion::Inicio) return;
    BaseDatos& db = *s.DbEmpresa;
    AdaptaLongitudPoliza(db);
    AdaptaLongitudTipoPoliza(db);
    AdaptaRefyConceptoMovtoPoliza(db, opciones_.incluirReferencia);
    db.ejecuta("UPDATE Empresas SET Separador='', CatArbol=? WHERE IdEmpresa=?", false, s.IdEmpresaActual);
    if (opciones_.ctasRellenas)
        db.ejecuta("UPDATE Empresas SET RellenaCtaCeros=? WHERE IdEmpresa=?", *opciones_.ctasRellenas,
                   s.IdEmpresaActual);
    if (conTipos_) {
        db.ejecuta("DELETE FROM CatTipoPoliza");
        for (const auto& [tipo, descripcion] : tipos_)
            db.ejecuta("INSERT INTO CatTipoPoliza (Tipo, Descripcion) VALUES (?, ?)", tipo, descripcion);
    }
}

// ------------------------------------------------------------ Descriptor

OpcionesContpaqWindows OpcionesContpaqDe(const ArchivosImportacion& a) {
    OpcionesContpaqWindows o;
    o.hastaMes = MesHastaElegido(a);
    if (auto lista = a.parametro("naturaleza")) {
        size_t inicio = 0;
        while (inicio <= lista->size()) {
            size_t fin = lista->find('\n', inicio);
            if (fin == std::string::npos) fin = lista->size();
            const std::string par = RecortaEspacios(lista->substr(inicio, fin - inicio));
            inicio = fin + 1;
            if (par.empty()) continue;
            const size_t igual = par.find('=');
            const std::string tipo = igual == std::string::npos ? "" : Mayusculas(RecortaEspacios(par.substr(0, igual)));
            const std::string nat = igual == std::string::npos ? "" : Mayusculas(RecortaEspacios(par.substr(igual + 1)));
            if (tipo.empty() || (nat != "D" && nat != "A"))
                throw ParametroInvalido("--naturaleza espera TIPO=D (deudora) o TIPO=A (acreedora): " + par);
            o.naturalezas[tipo] = nat;
        }
    }
    o.filtroSistOrig = !a.casilla("sin-filtro-sistorig");
    o.incluirReferencia = a.casilla("incluir-referencia");
    if (a.casilla("ctas-rellenas")) o.ctasRellenas = true;
    // The form says both ways; the command line only turns it on.
    if (auto r = a.parametro("rellena-ceros")) o.ctasRellenas = *r == "1";
    return o;
}

DescriptorImportador DescriptorContpaqWindows() {
    DescriptorImportador d;
    d.IdSistema = kEnlaceContpaqWindows;
    d.titulo = "ContPAQ Windows";
    d.tipo = TipoImportacion::ArchivoUnico;
    d.archivos = {{.papel = "catalogo",
                   .etiqueta = "Cuentas de registro (CTW10001.DBF); las demás tablas se toman de su carpeta",
                   .control = "eloRutaArchCat",
                   .boton = "cmdCatalogo",
                   .selector = {"Búsqueda del Archivo CTW10001.DBF - Catálogo de cuentas",
                                "CTW10001.DBF|CTW10001.dbf", kClaveCatalogo},
                   .faltante = "Especifique por favor el archivo que contiene las cuentas de registro"}};
    d.anioAnterior = ArchivoDescrito{
        .papel = "saldos-anterior",
        .etiqueta = "Saldos (CTW10005.DBF)",
        .control = "eloSdosAnteriorFinal",
        .boton = "cmdSaldosFinAnioAnt",
        .selector = {"Búsqueda del Archivo CTW10005.DBF - Saldos", "CTW10005.DBF|CTW10005.dbf", kClaveSaldosAnioAnterior}};
    d.casillas = {
        {.control = "chkCtasRellenas", .titulo = "Cuentas rellenas con ceros", .opcionCli = "ctas-rellenas"},
        {.control = "chkSinFiltroSistOrig",
         .titulo = "Sin el filtro de cuentas por sistema de origen (SISTORIG)",
         .opcionCli = "sin-filtro-sistorig"},
        {.control = "chkInlcuirRef", .titulo = "Incluir la referencia en el concepto del movimiento",
         .opcionCli = "incluir-referencia"},
    };
    d.parametros = {{.opcionCli = "hasta-mes",
                     .valor = "MM",
                     .descripcion = "Importar el detalle de pólizas hasta el mes (13: Mes cierre)",
                     .tipo = ParametroDescrito::Tipo::Mes,
                     .control = "cboMeses"},
                    {.opcionCli = "naturaleza",
                     .valor = "TIPO=D|A",
                     .descripcion = "naturaleza (D deudora, A acreedora) de un tipo de cuenta que no se conoce",
                     .repetible = true}};
    d.crea = [](Sesion&, const ArchivosImportacion& a) {
        return std::make_unique<ImportadorContpaqWindows>(OpcionesContpaqDe(a));
    };
    return d;
}

}  // namespace velmorant
