#include "platform/fuentes/BaseAccess.h"

// glib first: mdbtools.h uses its types without including it.
#include <glib.h>
#include <mdbtools.h>

#include <cmath>
#include <filesystem>
#include <memory>

#include "platform/ErrorLectura.h"
#include "platform/fuentes/DecimalExacto.h"

namespace velmorant {

namespace {

// Room for one bound value. A memo is read whole up to this size: the
// desktop engine caps a typed memo at 65,535 characters, which UTF-8 holds
// in under 200 KB. A value that fills it was cut, and is reported.
constexpr size_t kLargoLigado = 256 * 1024;

struct CierraBase {
    void operator()(MdbHandle* h) const { mdb_close(h); }
};
struct LiberaTabla {
    void operator()(MdbTableDef* t) const { mdb_free_tabledef(t); }
};

// The codes above are the library's own.
static_assert(kJetSiNo == static_cast<int>(MDB_BOOL) &&
              kJetByte == static_cast<int>(MDB_BYTE) &&
              kJetEntero == static_cast<int>(MDB_INT) &&
              kJetEnteroLargo == static_cast<int>(MDB_LONGINT) &&
              kJetMoneda == static_cast<int>(MDB_MONEY) &&
              kJetSimple == static_cast<int>(MDB_FLOAT) &&
              kJetDoble == static_cast<int>(MDB_DOUBLE) &&
              kJetFechaHora == static_cast<int>(MDB_DATETIME) &&
              kJetBinario == static_cast<int>(MDB_BINARY) &&
              kJetTexto == static_cast<int>(MDB_TEXT) &&
              kJetOle == static_cast<int>(MDB_OLE) &&
              kJetMemo == static_cast<int>(MDB_MEMO) &&
              kJetIdReplica == static_cast<int>(MDB_REPID) &&
              kJetDecimal == static_cast<int>(MDB_NUMERIC) &&
              kJetComplejo == static_cast<int>(MDB_COMPLEX));

}  // namespace

AlmacenColumna AlmacenColumnaAccess(int tipo, int escala) {
    switch (tipo) {
        case kJetSiNo: return AlmacenColumna::Logico;
        case kJetByte:
        case kJetEntero:
        case kJetEnteroLargo:
        case kJetComplejo: return AlmacenColumna::Entero;
        case kJetMoneda: return AlmacenColumna::Diezmilesimas;
        case kJetDecimal: return AlmacenNumero(escala);
        case kJetSimple:
        case kJetDoble: return AlmacenColumna::Real;
        case kJetFechaHora: return AlmacenColumna::FechaHora;
        case kJetTexto:
        case kJetMemo:
        case kJetIdReplica: return AlmacenColumna::Texto;
        default: return AlmacenColumna::Binario;
    }
}

std::optional<Valor> ValorAccessDesdeTexto(AlmacenColumna almacen, std::string_view texto) {
    if (texto.empty() || almacen == AlmacenColumna::Binario) return Valor();
    switch (almacen) {
        case AlmacenColumna::Logico: {
            bool verdadero = texto != "0" && texto != "FALSE" && texto != "false";
            return Valor(verdadero);
        }
        case AlmacenColumna::Entero:
        case AlmacenColumna::Diezmilesimas:
        case AlmacenColumna::Decimal:
        case AlmacenColumna::Real: {
            auto decimal = DecimalExacto(texto);
            if (!decimal) return Valor(std::string(texto));
            return ValorEnColumna(Celda::numero(*decimal), almacen);
        }
        default: return Valor(std::string(texto));
    }
}

std::optional<std::string> FechaHoraDesdeSerial(double serial) {
    if (!std::isfinite(serial) || std::fabs(serial) > 3e6) return std::nullopt;
    double entero = std::trunc(serial);
    auto segundos = static_cast<long>(std::llround(std::fabs(serial - entero) * 86400.0));
    auto dias = static_cast<long>(entero);
    if (segundos >= 86400) {
        // A time that rounds to midnight belongs to the next day.
        segundos -= 86400;
        ++dias;
    }
    Fecha f = Fecha::desdeSerial(dias);
    if (!f.valida()) return std::nullopt;
    return TextoFechaHora(f, static_cast<int>(segundos));
}

void CargaBaseAccess(BaseDatos& memoria, const std::string& ruta, const std::vector<std::string>& tablas) {
    std::error_code ec;
    std::unique_ptr<MdbHandle, CierraBase> base(
        std::filesystem::is_regular_file(ruta, ec) ? mdb_open(ruta.c_str(), MDB_NOFLAGS) : nullptr);
    if (!base) throw ErrorLectura("No se pudo abrir la base de datos " + ruta + ".", ruta, 0);
    MdbHandle* mdb = base.get();
    mdb_set_bind_size(mdb, kLargoLigado);
    mdb_set_boolean_fmt_numbers(mdb);
    if (!mdb_read_catalog(mdb, MDB_TABLE))
        throw ErrorLectura("El archivo " + ruta + " no es una base de datos de Access que se pueda leer.", ruta, 0);

    Transaccion transaccion(memoria);
    for (const auto& nombre : tablas) {
        std::string nombreMdb = nombre;
        std::unique_ptr<MdbTableDef, LiberaTabla> tabla(mdb_read_table_by_name(mdb, nombreMdb.data(), MDB_TABLE));
        if (!tabla || !mdb_read_columns(tabla.get()))
            throw ErrorLectura("La base de datos " + ruta + " no tiene la tabla " + nombre + ".", ruta, 0);
        MdbTableDef* t = tabla.get();
        mdb_rewind_table(t);

        std::vector<MdbColumn*> columnasMdb;
        std::vector<ColumnaCarga> columnas;
        std::vector<std::vector<char>> ligados(t->num_cols);
        for (unsigned i = 0; i < t->num_cols; ++i) {
            auto* col = static_cast<MdbColumn*>(g_ptr_array_index(t->columns, i));
            columnasMdb.push_back(col);
            AlmacenColumna almacen = AlmacenColumnaAccess(col->col_type, col->col_scale);
            columnas.push_back({col->name, almacen});
            // Reals and dates are read from their stored bits, binaries not at all.
            if (almacen != AlmacenColumna::Real && almacen != AlmacenColumna::FechaHora &&
                almacen != AlmacenColumna::Binario) {
                ligados[i].assign(kLargoLigado, '\0');
                mdb_bind_column(t, static_cast<int>(i) + 1, ligados[i].data(), nullptr);
            }
        }

        TablaEnMemoria destino(memoria, nombre, columnas);
        std::vector<Valor> valores(columnas.size());
        long fila = 0;
        while (mdb_fetch_row(t)) {
            ++fila;
            for (size_t i = 0; i < columnas.size(); ++i) {
                MdbColumn* col = columnasMdb[i];
                auto falla = [&](const std::string& que) {
                    throw ErrorLectura("La base de datos " + ruta + " tiene " + que + " en el campo " +
                                           columnas[i].nombre + " de la tabla " + nombre + ", fila " +
                                           std::to_string(fila) + ".",
                                       ruta, fila);
                };
                std::optional<Valor> v;
                switch (columnas[i].almacen) {
                    case AlmacenColumna::Binario: v = Valor(); break;
                    case AlmacenColumna::Real:
                        if (col->cur_value_len == 0)
                            v = Valor();
                        else if (col->col_type == kJetSimple)
                            v = Valor(static_cast<double>(mdb_pg_get_single(mdb, col->cur_value_start)));
                        else
                            v = Valor(mdb_pg_get_double(mdb, col->cur_value_start));
                        break;
                    case AlmacenColumna::FechaHora:
                        if (col->cur_value_len == 0) {
                            v = Valor();
                        } else {
                            auto texto = FechaHoraDesdeSerial(mdb_pg_get_double(mdb, col->cur_value_start));
                            if (!texto) falla("una fecha fuera del calendario");
                            v = Valor(*texto);
                        }
                        break;
                    default: {
                        std::string_view texto(ligados[i].data());
                        if (texto.size() + 1 >= kLargoLigado) falla("un texto más largo de lo que se puede leer");
                        v = ValorAccessDesdeTexto(columnas[i].almacen, texto);
                        if (!v) falla("el número " + std::string(texto) + ", que no cabe en un importe,");
                    }
                }
                valores[i] = std::move(*v);
            }
            destino.agrega(valores);
        }
    }
    transaccion.confirma();
}

}  // namespace velmorant
