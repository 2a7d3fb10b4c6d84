#include "pipeline/Respaldo.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <QDateTime>
#include <QSysInfo>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

#include "pipeline/Historial.h"
#include "pipeline/MesesPolizas.h"
#include "session/Funciones.h"
#include "session/Inicio.h"
#include "store/EsquemaEmpresa.h"

namespace velmorant {

namespace {

namespace fs = std::filesystem;

constexpr const char* kMarcaRespaldo = ".respaldo-";
constexpr const char* kAliasRespaldo = "Respaldo";
// The fields of the company row that a run writes, and an undo puts back.
constexpr const char* kCamposEmpresaDeCorrida[] = {"IdSistema", "MesPrevia1", "MesPrevia2", "MesPrevia3",
                                                   "MesFinal"};

fs::path ArchivoEmpresaDe(const Sesion& s) {
    if (!s.DbEmpresa) throw std::logic_error("Sin base de la empresa abierta");
    return s.DbEmpresa->ruta();
}

std::string Identificador(const std::string& nombre) {
    std::string r = "\"";
    for (char c : nombre) r += c == '"' ? std::string("\"\"") : std::string(1, c);
    return r + "\"";
}

// The online backup of `origen`'s main database into the file `destino`,
// in one step, waiting a little while another program writes.
void CopiaEnLinea(BaseDatos& origen, BaseDatos& destino) {
    sqlite3_backup* b = sqlite3_backup_init(destino.nativo(), "main", origen.nativo(), "main");
    if (!b) throw ErrorBaseDatos(sqlite3_errcode(destino.nativo()), sqlite3_errmsg(destino.nativo()), "backup");
    int rc = SQLITE_OK;
    for (int intento = 0; intento < 100; ++intento) {
        rc = sqlite3_backup_step(b, -1);
        if (rc != SQLITE_BUSY && rc != SQLITE_LOCKED) break;
        sqlite3_sleep(50);
    }
    sqlite3_backup_finish(b);
    if (rc != SQLITE_DONE) throw ErrorBaseDatos(rc, sqlite3_errstr(rc), "backup");
}

// The bytes of `origen` into the new file `destino`, copied by the system,
// with the system's own error when one stops it (a full disk reads as one).
void CopiaBytes(const fs::path& origen, const fs::path& destino) {
    auto falla = [&](int error) {
        throw fs::filesystem_error("No se pudo copiar el archivo", origen, destino,
                                   std::error_code(error, std::generic_category()));
    };
    const int de = ::open(origen.c_str(), O_RDONLY | O_CLOEXEC);
    if (de < 0) falla(errno);
    const int a = ::open(destino.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (a < 0) {
        const int error = errno;
        ::close(de);
        falla(error);
    }
    int error = 0;
    ssize_t n;
    while ((n = ::copy_file_range(de, nullptr, a, nullptr, std::size_t{1} << 30, 0)) > 0) {
    }
    if (n < 0) error = errno;
    // A system or file system without the call: by hand, from where it stopped.
    if (error == ENOSYS || error == EXDEV || error == EINVAL || error == EOPNOTSUPP) {
        error = 0;
        std::vector<char> bloque(1 << 20);
        while (!error && (n = ::read(de, bloque.data(), bloque.size())) != 0) {
            if (n < 0) {
                if (errno != EINTR) error = errno;
                continue;
            }
            for (ssize_t hecho = 0; !error && hecho < n;) {
                const ssize_t w = ::write(a, bloque.data() + hecho, static_cast<size_t>(n - hecho));
                if (w >= 0) hecho += w;
                else if (errno != EINTR) error = errno;
            }
        }
    }
    if (::close(a) != 0 && !error) error = errno;
    ::close(de);
    if (error) falla(error);
}

// The company's file copied as it stands, under a read lock that keeps every
// writer out while the bytes go across: the system copies them, where the
// online backup reads and writes each page through the engine. Only for a
// file in a rollback-journal mode, whose file alone holds the database (the
// first read has rolled back any journal a killed writer left). False,
// copying nothing, when that does not apply; the caller then backs up online.
bool CopiaArchivoBloqueado(BaseDatos& origen, const fs::path& destino) {
    if (origen.enTransaccion()) return false;
    const std::string modo = origen.escalar("PRAGMA main.journal_mode").texto();
    if (modo != "delete" && modo != "truncate" && modo != "persist") return false;
    origen.ejecutaScript("BEGIN");
    try {
        origen.escalar("SELECT count(*) FROM main.sqlite_schema");
        CopiaBytes(origen.ruta(), destino);
    } catch (...) {
        origen.ejecutaScript("ROLLBACK");
        throw;
    }
    origen.ejecutaScript("COMMIT");
    return true;
}

// The company's row as a run leaves it to be restored.
void GuardaFilaEmpresa(Sesion& s, BaseDatos& copia) {
    if (!s.DbEmpresas) return;
    std::string campos = "IdEmpresa";
    for (const char* c : kCamposEmpresaDeCorrida) campos += std::string(", ") + c;
    copia.ejecutaScript(std::string("CREATE TABLE ") + kTablaRespaldoEmpresa +
                        " (IdEmpresa INTEGER, IdSistema INTEGER, MesPrevia1 INTEGER, MesPrevia2 INTEGER, "
                        "MesPrevia3 INTEGER, MesFinal INTEGER)");
    Consulta fila = s.DbEmpresas->consulta("SELECT " + campos + " FROM Empresas WHERE IdEmpresa = ?", s.IdEmpresaActual);
    if (fila.vacia()) return;
    copia.ejecuta(std::string("INSERT INTO ") + kTablaRespaldoEmpresa + " (" + campos + ") VALUES (?, ?, ?, ?, ?, ?)",
                  fila["IdEmpresa"], fila["IdSistema"], fila["MesPrevia1"], fila["MesPrevia2"], fila["MesPrevia3"],
                  fila["MesFinal"]);
}

std::vector<std::string> TablasDe(BaseDatos& db, const std::string& esquema) {
    std::vector<std::string> r;
    Consulta c = db.consulta("SELECT name FROM " + Identificador(esquema) +
                             ".sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\'");
    for (c.primero(); !c.eof(); c.siguiente()) r.push_back(c["name"].texto());
    return r;
}

bool EsDelHistorial(const std::string& tabla) {
    for (const auto& h : TablasHistorial())
        if (h == tabla) return true;
    return false;
}

bool TieneTabla(BaseDatos& db, const std::string& esquema, const std::string& tabla) {
    return !db.escalar("SELECT 1 FROM " + Identificador(esquema) + ".sqlite_master WHERE type = 'table' AND name = ?",
                       tabla)
                .esNulo();
}

// Every table of the company but the history gets the copy's rows; a table
// the copy lacks ends empty, as it was then. The AUTOINCREMENT counters go
// back too, so that new rows number as they would have.
void RestauraTablas(BaseDatos& db) {
    for (const auto& tabla : TablasDe(db, "main")) {
        if (EsDelHistorial(tabla)) continue;
        db.ejecuta("DELETE FROM main." + Identificador(tabla));
        if (!TieneTabla(db, kAliasRespaldo, tabla)) continue;
        auto copia = db.columnas(tabla, kAliasRespaldo);
        std::string columnas;
        for (const auto& c : db.columnas(tabla, "main"))
            if (std::find(copia.begin(), copia.end(), c) != copia.end())
                columnas += (columnas.empty() ? "" : ", ") + Identificador(c);
        if (columnas.empty()) continue;
        db.ejecuta("INSERT INTO main." + Identificador(tabla) + " (" + columnas + ") SELECT " + columnas + " FROM " +
                   Identificador(kAliasRespaldo) + "." + Identificador(tabla));
    }
    if (!TieneTabla(db, "main", "sqlite_sequence")) return;
    std::string historial;
    for (const auto& h : TablasHistorial()) historial += (historial.empty() ? "'" : ", '") + h + "'";
    db.ejecuta("DELETE FROM main.sqlite_sequence WHERE name NOT IN (" + historial + ")");
    if (TieneTabla(db, kAliasRespaldo, "sqlite_sequence"))
        db.ejecuta("INSERT INTO main.sqlite_sequence (name, seq) SELECT name, seq FROM " +
                   Identificador(kAliasRespaldo) + ".sqlite_sequence WHERE name NOT IN (" + historial + ")");
}

void RestauraFilaEmpresa(Sesion& s, BaseDatos& db) {
    if (!TieneTabla(db, kAliasRespaldo, kTablaRespaldoEmpresa)) return;
    Consulta fila = db.consulta("SELECT * FROM " + Identificador(kAliasRespaldo) + "." + kTablaRespaldoEmpresa +
                                " WHERE IdEmpresa = ?",
                                s.IdEmpresaActual);
    if (fila.vacia()) return;
    for (const char* campo : kCamposEmpresaDeCorrida)
        db.ejecuta(std::string("UPDATE ") + kAliasEmpresasRun + ".Empresas SET " + campo + " = ? WHERE IdEmpresa = ?",
                   fila[campo], s.IdEmpresaActual);
}

// A copy that SQLite reads whole and that holds the company's tables.
bool RespaldoLegible(const std::string& ruta) {
    try {
        BaseDatos copia(ruta, BaseDatos::Modo::SoloLectura);
        if (copia.escalar("PRAGMA quick_check").texto() != "ok") return false;
        return copia.existeTabla("Polizas") && copia.existeTabla("Cuentas");
    } catch (const std::exception&) {
        return false;
    }
}

void Separa(BaseDatos& db, const char* alias) {
    try {
        db.separa(alias);
    } catch (const std::exception&) {
        // Not attached.
    }
}

}  // namespace

std::string RutaRespaldo(const Sesion& s, long numero) {
    fs::path empresa = ArchivoEmpresaDe(s);
    std::string n = std::to_string(numero);
    if (n.size() < 4) n.insert(0, 4 - n.size(), '0');
    return (empresa.parent_path() / (empresa.stem().string() + kMarcaRespaldo + n + empresa.extension().string()))
        .string();
}

std::vector<RespaldoEmpresa> RespaldosDeEmpresa(const Sesion& s) {
    fs::path empresa = ArchivoEmpresaDe(s);
    const std::string prefijo = empresa.stem().string() + kMarcaRespaldo, extension = empresa.extension().string();
    std::vector<RespaldoEmpresa> r;
    std::error_code ec;
    for (auto it = fs::directory_iterator(empresa.parent_path(), ec); !ec && it != fs::directory_iterator();
         it.increment(ec)) {
        std::string nombre = it->path().filename().string();
        if (nombre.size() <= prefijo.size() + extension.size() || nombre.rfind(prefijo, 0) != 0 ||
            nombre.compare(nombre.size() - extension.size(), extension.size(), extension) != 0)
            continue;
        std::string numero = nombre.substr(prefijo.size(), nombre.size() - prefijo.size() - extension.size());
        if (numero.empty() || numero.size() > 9 ||
            !std::all_of(numero.begin(), numero.end(), [](unsigned char c) { return std::isdigit(c); }))
            continue;
        r.push_back({std::stol(numero), it->path().string()});
    }
    std::sort(r.begin(), r.end(), [](const auto& a, const auto& b) { return a.numero < b.numero; });
    return r;
}

void RespaldaEmpresa(Sesion& s, const std::string& destino) {
    BaseDatos& empresa = EmpresaAbierta(s);
    const std::string parcial = destino + ".parcial";
    std::error_code ec;
    fs::remove(parcial, ec);
    try {
        {
            const bool copiado = CopiaArchivoBloqueado(empresa, parcial);
            BaseDatos copia(parcial, copiado ? BaseDatos::Modo::Existente : BaseDatos::Modo::Crear);
            if (!copiado) CopiaEnLinea(empresa, copia);
            // Its commit also makes the copied bytes durable.
            GuardaFilaEmpresa(s, copia);
        }
        fs::rename(parcial, destino);
    } catch (...) {
        fs::remove(parcial, ec);
        throw;
    }
}

void RotaRespaldos(const Sesion& s, int conservar) {
    auto respaldos = RespaldosDeEmpresa(s);
    for (size_t i = 0; i + static_cast<size_t>(conservar) < respaldos.size(); ++i) fs::remove(respaldos[i].ruta);
}

ResultadoDeshacer DeshaceUltimaImportacion(Sesion& s, bool confirmada) {
    BaseDatos& db = EmpresaAbierta(s);
    auto corrida = ImportacionPorDeshacer(db);
    if (!corrida) {
        MsgAviso(s, "No hay ninguna importación que deshacer en la empresa " + s.NombreEmpresa + ".");
        return ResultadoDeshacer::NadaQueDeshacer;
    }
    const std::string numero = std::to_string(corrida->id);
    const std::string ruta = RutaRespaldo(s, corrida->id);
    if (!ExisteArchivo(ruta)) {
        MsgAviso(s, "No se encontró la copia de la empresa anterior a la importación " + numero + " (" +
                        NombreDeArchivo(ruta) + "); se conservan las de las últimas " +
                        std::to_string(kRespaldosConservados) + " importaciones.");
        return ResultadoDeshacer::SinRespaldo;
    }
    if (!RespaldoLegible(ruta)) {
        MsgCritico(s, "La copia de la empresa anterior a la importación " + numero + " (" + NombreDeArchivo(ruta) +
                          ") está dañada; no se puede deshacer la importación.");
        return ResultadoDeshacer::SinRespaldo;
    }
    if (!confirmada && !MsgPregunta(s, "Se restaurará la empresa " + s.NombreEmpresa + " (" + std::to_string(s.EjercicioActual) +
                            ") como estaba antes de la importación " + numero + " del " + corrida->fechaHora +
                            (corrida->usuario.empty() ? "" : " (" + corrida->usuario + ")") +
                            ".\r\nSe perderá todo lo que se haya modificado en la empresa después de esa "
                            "importación.\r\n¿Desea deshacer la importación?"))
        return ResultadoDeshacer::NoConfirmada;

    const auto inicio = std::chrono::steady_clock::now();
    RegistroHistorial r;
    r.id = static_cast<long>(db.escalar("SELECT COALESCE(MAX(IdImportacion), 0) + 1 FROM HistorialImportaciones").entero());
    r.fechaHora = QDateTime::currentDateTime().toString("yyyy-MM-dd HH:mm:ss").toStdString();
    r.usuario = UsuarioDelSistema();
    r.equipo = QSysInfo::machineHostName().toStdString();
    r.programa = VersionDelPrograma();
    r.nombCorto = s.NombCortoEmpresa;
    r.nombre = s.NombreEmpresa;
    r.ejercicio = s.EjercicioActual;
    r.idSistema = corrida->idSistema;
    r.operacion = kOperacionDeshacer;
    r.decision = "Confirmada por el usuario";
    r.resultado = kResultadoRestaurada;
    r.detalle = "La empresa volvió al estado anterior a la importación " + numero + " del " + corrida->fechaHora + ".";
    r.deshace = corrida->id;
    r.respaldo = NombreDeArchivo(ruta);
    ArchivoHistorial copia;
    copia.papel = "respaldo";
    copia.ruta = ruta;
    copia.tamano = static_cast<std::int64_t>(fs::file_size(ruta));
    copia.sha256 = Sha256Archivo(ruta);
    r.archivos.push_back(copia);

    db.adjunta(ruta, kAliasRespaldo);
    try {
        db.adjunta(RutaBaseDatos(s.RutaBase, kArchivoEmpresas), kAliasEmpresasRun);
    } catch (...) {
        Separa(db, kAliasRespaldo);
        throw;
    }
    try {
        Transaccion t(db);
        RestauraTablas(db);
        RestauraFilaEmpresa(s, db);
        r.duracionMs =
            std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - inicio).count();
        EscribeRegistroHistorial(db, r);
        t.confirma();
    } catch (const std::exception& e) {
        Separa(db, kAliasEmpresasRun);
        Separa(db, kAliasRespaldo);
        MsgCritico(s, "No fue posible deshacer la importación " + numero + ":\r\n" + e.what() +
                          "\r\nLa información de la empresa quedó como estaba.");
        return ResultadoDeshacer::Fallida;
    }
    Separa(db, kAliasEmpresasRun);
    Separa(db, kAliasRespaldo);

    // The session learns the restored state, as a start-up would read it.
    s.UltimoMesImportado = static_cast<std::int16_t>(MesesConPolizas(db));
    if (s.DbEmpresas) {
        Consulta fila = s.DbEmpresas->consulta(
            "SELECT MesPrevia1, MesPrevia2, MesPrevia3, MesFinal FROM Empresas WHERE IdEmpresa = ?", s.IdEmpresaActual);
        if (!fila.vacia()) {
            s.MesPrevia1 = static_cast<int>(SiNuloCero(fila["MesPrevia1"]).entero());
            s.MesPrevia2 = static_cast<int>(SiNuloCero(fila["MesPrevia2"]).entero());
            s.MesPrevia3 = static_cast<int>(SiNuloCero(fila["MesPrevia3"]).entero());
            s.MesFinal = static_cast<int>(SiNuloCero(fila["MesFinal"]).entero());
        }
    }
    MsgInformacion(s, "Se deshizo la importación " + numero + ": la empresa " + s.NombreEmpresa +
                          " quedó como estaba antes de ella.");
    return ResultadoDeshacer::Deshecha;
}

}  // namespace velmorant
