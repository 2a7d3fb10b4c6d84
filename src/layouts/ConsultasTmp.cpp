#include "layouts/ConsultasTmp.h"

#include <stdexcept>
#include <vector>

namespace velmorant {

namespace {

BaseDatos& Abierto(BaseDatos* db, const char* almacen) {
    if (!db) throw std::logic_error(std::string("El almacén temporal ") + almacen + " no está abierto");
    return *db;
}

// Leading columns of every index of Polizas_Tmp.
std::vector<std::vector<std::string>> IndicesPolizasTmp(BaseDatos& db) {
    std::vector<std::vector<std::string>> indices;
    auto lista = db.consulta("SELECT name FROM pragma_index_list('Polizas_Tmp', 'Polizas_Tmp')");
    for (lista.primero(); !lista.eof(); lista.siguiente()) {
        auto info = db.consulta("SELECT name FROM pragma_index_info(?, 'Polizas_Tmp') ORDER BY seqno",
                                lista.campo(0).texto());
        std::vector<std::string> columnas;
        for (info.primero(); !info.eof(); info.siguiente()) columnas.push_back(info.campo(0).texto());
        indices.push_back(columnas);
    }
    return indices;
}

bool Empieza(const std::vector<std::string>& columnas, const std::vector<std::string>& prefijo) {
    if (columnas.size() < prefijo.size()) return false;
    for (size_t i = 0; i < prefijo.size(); ++i)
        if (columnas[i] != prefijo[i]) return false;
    return true;
}

}  // namespace

bool ExisteCuentaTmpProvisional(Sesion& s, const std::string& cuenta) {
    Sentencia& st = Abierto(s.DbCuentasTmp, "CuentasTmp")
                        .preparada("SELECT 1 FROM CuentasTmp.Cuentas WHERE CuentaSinSeparadores = ? LIMIT 1");
    st.con(cuenta);
    bool existe = st.paso();
    st.reinicia();
    return existe;
}

long SiguienteIdPolizaProvisional(Sesion& s) {
    Valor v = Abierto(s.DbPolizasTmp, "Polizas_Tmp").escalar("SELECT MAX(IdPoliza) FROM Polizas_Tmp.Polizas_Tmp");
    return v.esNulo() ? 1 : static_cast<long>(v.entero()) + 1;
}

void AseguraIndicesPolizasTmp(Sesion& s) {
    BaseDatos& db = Abierto(s.DbPolizasTmp, "Polizas_Tmp");
    bool porId = false, porIdentidad = false;
    for (auto& columnas : IndicesPolizasTmp(db)) {
        porId = porId || Empieza(columnas, {"IdPoliza"});
        porIdentidad = porIdentidad || Empieza(columnas, {"Poliza", "Tipo", "Fecha"});
    }
    if (!porId) db.ejecutaScript("CREATE INDEX IF NOT EXISTS Polizas_Tmp.Polizas_Tmp_Orden ON Polizas_Tmp (IdPoliza)");
    if (!porIdentidad)
        db.ejecutaScript(
            "CREATE INDEX IF NOT EXISTS Polizas_Tmp.Polizas_Tmp_Identidad ON Polizas_Tmp (Poliza, Tipo, Fecha)");
}

}  // namespace velmorant
