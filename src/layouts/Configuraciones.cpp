#include "layouts/Configuraciones.h"

#include <filesystem>

#include "platform/Texto.h"
#include "platform/Ajustes.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant {

namespace {

using E = EstructuraDatosTxt;

// The predetermined rows, as the value strings of their INSERT: catalogue
// pairs, voucher pairs, then the balance pairs with the link. PIniTipoMov
// and PIniCargo overlap at 80 in the fixed one on purpose: only one of the
// two amount schemes is read at a time.
struct Predeterminada {
    int idEnlace;
    const char* nombre;
    const char* catalogo;
    const char* polizas;
    const char* saldos;
};

constexpr const char* kPolizasColumnas =
    "0, 0, 1, 0, 3, 0, 0, 0, 0, 0, 2, 0, 9, 0, 6, 0, 7, 0, 8, 0, 0, 0, 0, 0, ";

constexpr Predeterminada kPredeterminadas[] = {
    {kEnlaceTxtPersonalizado, kConfigPredeterminada, "1, 20, 21, 40, 61, 20, 81, 1, 82, 1, 83, 20, ",
     "1, 5, 6, 10, 16, 2, 19, 2, 22, 2, 24, 20, 44, 6, 50, 30, 80, 1, 81, 20, 80, 20, 100, 20, ",
     "1, 20, 21, 40, 61, 20, 25);"},
    {kEnlaceTextoGenerico, kConfigPredeterminadaTexto, "1, 0, 3, 0, 0, 0, 2, 0, 0, 0, 4, 0, ", kPolizasColumnas,
     "1, 0, 3, 0, 7, 0, 82);"},
    {kEnlaceExcelGenerico, kConfigPredeterminadaExcel, "1, 0, 3, 0, 0, 0, 2, 0, 0, 0, 4, 0, ", kPolizasColumnas,
     "1, 0, 3, 0, 7, 0, 102);"},
};

const Predeterminada* PredeterminadaDe(int idEnlace) {
    for (auto& p : kPredeterminadas)
        if (p.idEnlace == idEnlace) return &p;
    return nullptr;
}

std::int16_t EnteroCorto(const Valor& v) { return v.esNulo() ? 0 : static_cast<std::int16_t>(v.entero()); }

FilaConfiguracion FilaDe(const Consulta& c) {
    FilaConfiguracion f;
    f.Nombre = c["Nombre"].texto();
    for (auto& par : ParesConfiguracion()) {
        f.pares.*par.pIni = EnteroCorto(c[std::string("PIni") + par.nombre]);
        f.pares.*par.longitud = EnteroCorto(c[std::string("Long") + par.nombre]);
    }
    for (int i = 0; i < c.numCampos(); ++i)
        if (Mayusculas(c.nombreCampo(i)) == "IDENLACE") f.IdEnlace = EnteroCorto(c.campo(i));
    return f;
}

}  // namespace

const std::array<ParConfiguracion, 21>& ParesConfiguracion() {
    static const std::array<ParConfiguracion, 21> pares{{
        {"Cuenta", &E::PIniCuenta, &E::LongCuenta},
        {"Descripcion", &E::PIniDescripcion, &E::LongDescripcion},
        {"CtaAcum", &E::PIniCtaAcum, &E::LongCtaAcum},
        {"Nivel", &E::PIniNivel, &E::LongNivel},
        {"Naturaleza", &E::PIniNaturaleza, &E::LongNaturaleza},
        {"SdoIni", &E::PIniSdoIni, &E::LongSdoIni},
        {"Tipo", &E::PIniTipo, &E::LongTipo},
        {"NumPol", &E::PIniNumPol, &E::LongNumPol},
        {"Dia", &E::PIniDia, &E::LongDia},
        {"Mes", &E::PIniMes, &E::LongMes},
        {"Anio", &E::PIniAnio, &E::LongAnio},
        {"CtaPol", &E::PIniCtaPol, &E::LongCtaPol},
        {"Ref", &E::PIniRef, &E::LongRef},
        {"Concept", &E::PIniConcept, &E::LongConcept},
        {"TipoMov", &E::PIniTipoMov, &E::LongTipoMov},
        {"Importe", &E::PIniImporte, &E::LongImporte},
        {"Cargo", &E::PIniCargo, &E::LongCargo},
        {"Abono", &E::PIniAbono, &E::LongAbono},
        {"CtaSdoAnt", &E::PIniCtaSdoAnt, &E::LongCtaSdoAnt},
        {"DescSdoAnt", &E::PIniDescSdoAnt, &E::LongDescSdoAnt},
        {"SdoFinAnt", &E::PIniSdoFinAnt, &E::LongSdoFinAnt},
    }};
    return pares;
}

std::int16_t EstructuraDatosTxt::*CampoConfiguracion(const std::string& columna) {
    std::string buscada = Mayusculas(columna);
    for (auto& par : ParesConfiguracion()) {
        if (buscada == Mayusculas(std::string("PIni") + par.nombre)) return par.pIni;
        if (buscada == Mayusculas(std::string("Long") + par.nombre)) return par.longitud;
    }
    return nullptr;
}

std::string ListaColumnasPares() {
    std::string r;
    for (auto& par : ParesConfiguracion()) {
        if (!r.empty()) r += ", ";
        r += std::string("PIni") + par.nombre + ", Long" + par.nombre;
    }
    return r;
}

std::string NombrePredeterminado(int idEnlace) {
    auto p = PredeterminadaDe(idEnlace);
    return p ? p->nombre : "";
}

// ------------------------------------------------------------- The stores

std::string RutaBaseConfiguraciones() { return RutaBaseDatos(CarpetaDatosPrograma(), kArchivoConfiguraciones); }

void CreaBaseConfiguraciones() { BaseDatos nueva(RutaBaseConfiguraciones(), BaseDatos::Modo::Crear); }

bool AbreBaseConfiguraciones(Sesion& s) {
    try {
        s.DbConfiguraciones = std::make_unique<BaseDatos>(RutaBaseConfiguraciones(), BaseDatos::Modo::Existente);
        s.DbConfiguraciones->escalar("SELECT count(*) FROM sqlite_master");  // a corrupt file fails here
        return true;
    } catch (const std::exception&) {
        s.DbConfiguraciones.reset();
        return false;
    }
}

void CierraBaseConfiguraciones(Sesion& s) { s.DbConfiguraciones.reset(); }

void CreaTablaConfiguraciones(BaseDatos& db) {
    // Names compare without case, as the legacy engine did: typing an
    // existing name in lower case finds it.
    std::string sql = "CREATE TABLE Configuraciones (Nombre TEXT(50) COLLATE NOCASE, ";
    for (auto& par : ParesConfiguracion())
        sql += std::string("PIni") + par.nombre + " SMALLINT, Long" + par.nombre + " SMALLINT, ";
    sql += "IdEnlace SMALLINT, CONSTRAINT Configuraciones_PK PRIMARY KEY (Nombre));";
    db.ejecutaScript(sql);
}

void AgregaIdEnlace(BaseDatos& db) { db.ejecutaScript("ALTER TABLE Configuraciones ADD COLUMN IdEnlace SHORT"); }

std::string InsertaConfigPredeterminada(BaseDatos& db, int idEnlace) {
    auto p = PredeterminadaDe(idEnlace);
    if (!p) return "";
    // Constants only: nothing of the user's reaches this text.
    db.ejecutaScript("INSERT OR IGNORE INTO Configuraciones (Nombre, " + ListaColumnasPares() +
                     ", IdEnlace) VALUES ('" + p->nombre + "', " + p->catalogo + p->polizas + p->saldos);
    return p->nombre;
}

std::string ConfigPredeterminadaEnlace(Sesion& s) { return InsertaConfigPredeterminada(*s.DbEmpresa, s.IdSistemaElegido); }

std::vector<std::string> LlenaComboConfiguraciones(Sesion& s) {
    std::string sql = "SELECT * FROM Configuraciones WHERE IdEnlace = ?";
    // The legacy list asked for the rows of no link this way; "= Null" matches
    // no row, and the list keeps that behaviour.
    if (s.IdSistemaElegido == kEnlaceTxtPersonalizado) sql += " OR IdEnlace = Null";
    std::vector<std::string> nombres;
    auto c = s.DbConfiguraciones->consulta(sql, s.IdSistemaElegido);
    for (c.primero(); !c.eof(); c.siguiente()) nombres.push_back(c["Nombre"].texto());
    return nombres;
}

bool ExisteConfiguracion(Sesion& s, const std::string& nombre) {
    return s.DbConfiguraciones->consulta("SELECT Nombre FROM Configuraciones WHERE Nombre = ?", nombre).cuentaRegistros() >
           0;
}

bool CopiaConfiguracion(Sesion& s, BaseDatos& origen, BaseDatos& destino, const std::string& nombre) {
    auto c = origen.consulta("SELECT * FROM Configuraciones WHERE Nombre = ?", nombre);
    if (c.eof()) {
        MsgAviso(s, "No fue posible concluir el proceso");
        return false;
    }
    std::string columnas, marcas;
    for (int i = 0; i < c.numCampos(); ++i) {
        columnas += (i ? ", " : "") + c.nombreCampo(i);
        marcas += i ? ", ?" : "?";
    }
    Sentencia& insercion = destino.preparada("INSERT INTO Configuraciones (" + columnas + ") VALUES (" + marcas + ")");
    insercion.reinicia();
    for (int i = 0; i < c.numCampos(); ++i) {
        const Valor& v = c.campo(i);
        insercion.liga(i + 1, i == 0 ? v : SiNuloCero(v));
    }
    insercion.ejecuta();
    return true;
}

std::optional<FilaConfiguracion> LeeConfiguracion(BaseDatos& db, const std::string& nombre) {
    auto c = db.consulta("SELECT * FROM Configuraciones WHERE Nombre = ?", nombre);
    if (c.eof()) return std::nullopt;
    return FilaDe(c);
}

std::vector<FilaConfiguracion> TodasLasConfiguraciones(BaseDatos& db) {
    std::vector<FilaConfiguracion> filas;
    auto c = db.consulta("SELECT * FROM Configuraciones");
    for (c.primero(); !c.eof(); c.siguiente()) filas.push_back(FilaDe(c));
    return filas;
}

bool CargaConfigEmpresa(Sesion& s, const std::string& nombre, EstructuraDatosTxt& registro) {
    auto fila = LeeConfiguracion(*s.DbEmpresa, nombre);
    if (!fila) {
        MsgAviso(s, "No se encontro la configuracion actual");
        return false;
    }
    registro = fila->pares;
    return true;
}

namespace {

// Creates the table, or adds the column a table made before it existed
// lacks. Returns true when the table was created.
bool PreparaTabla(BaseDatos& db, int idEnlace) {
    if (!ExisteTabla(db, "Configuraciones")) {
        CreaTablaConfiguraciones(db);
        InsertaConfigPredeterminada(db, idEnlace);
        return true;
    }
    if (!ExisteCampo(db, "Configuraciones", "IdEnlace")) AgregaIdEnlace(db);
    return false;
}

}  // namespace

void PreparaCatalogoConfiguraciones(Sesion& s) {
    if (!ExisteArchivo(RutaBaseConfiguraciones())) CreaBaseConfiguraciones();
    if (!AbreBaseConfiguraciones(s)) {
        const std::string mensaje = "No fue posible abrir la Base Configuraciones.";
        MsgCritico(s, mensaje);
        throw ProgramaTerminado(mensaje);
    }
    BaseDatos& catalogo = *s.DbConfiguraciones;
    if (!PreparaTabla(catalogo, s.IdSistemaElegido)) {
        std::string predeterminada = NombrePredeterminado(s.IdSistemaElegido);
        if (!predeterminada.empty() && !LeeConfiguracion(catalogo, predeterminada))
            InsertaConfigPredeterminada(catalogo, s.IdSistemaElegido);
    }
}

InicioConfiguraciones IniciaConfiguraciones(Sesion& s) {
    PreparaCatalogoConfiguraciones(s);
    PreparaTabla(*s.DbEmpresa, s.IdSistemaElegido);

    InicioConfiguraciones inicio;
    inicio.Configuracion = ConfigPredeterminadaEnlace(s);
    if (ExisteConfiguracion(s, inicio.Configuracion))
        inicio.lista = LlenaComboConfiguraciones(s);
    else
        inicio.abreParametros = true;
    return inicio;
}

bool UsaConfiguracion(Sesion& s, int idEnlace, const std::string& nombre, EstructuraDatosTxt& registro) {
    s.IdSistemaElegido = idEnlace;
    IniciaConfiguraciones(s);
    auto fila = LeeConfiguracion(*s.DbConfiguraciones, nombre);
    if (!fila) {
        MsgAviso(s, "No se encontro la configuracion actual");
        return false;
    }
    if (fila->IdEnlace != 0 && fila->IdEnlace != idEnlace) {
        MsgAviso(s, "La configuración " + nombre + " es del enlace " + std::to_string(fila->IdEnlace) +
                        ", no del enlace " + std::to_string(idEnlace) + ".");
        return false;
    }
    s.DbEmpresa->ejecuta("DELETE FROM Configuraciones WHERE Nombre = ?", nombre);
    if (!CopiaConfiguracion(s, *s.DbConfiguraciones, *s.DbEmpresa, nombre)) return false;
    return CargaConfigEmpresa(s, nombre, registro);
}

}  // namespace velmorant
