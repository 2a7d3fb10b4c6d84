#pragma once
// Workbooks the tests write: a sheet as rows of cells (text, number, date
// with its time of day, or nothing), saved as .xlsx by libxlsxwriter or as
// .xls by python-xlwt, the way a spreadsheet saves them.

#include <gtest/gtest.h>
#include <xlsxwriter.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "support/Entorno.h"

namespace velmorant::prueba {

struct CeldaLibro {
    enum class Tipo { Vacia, Texto, Numero, Fecha } tipo = Tipo::Vacia;
    std::string texto;
    double numero = 0;
    int anio = 0, mes = 0, dia = 0, hora = 0, minuto = 0;
};

inline CeldaLibro T(std::string t) { return {CeldaLibro::Tipo::Texto, std::move(t)}; }
inline CeldaLibro N(double n) { return {CeldaLibro::Tipo::Numero, "", n}; }
inline CeldaLibro F(int anio, int mes, int dia, int hora = 0, int minuto = 0) {
    return {CeldaLibro::Tipo::Fecha, "", 0, anio, mes, dia, hora, minuto};
}
inline CeldaLibro V() { return {}; }

using HojaLibro = std::vector<std::vector<CeldaLibro>>;

/// Writes the sheet as `ruta`; the extension chooses the format.
inline void EscribeLibro(const std::string& ruta, const HojaLibro& hoja) {
    const bool xlsx = ruta.size() > 5 && ruta.substr(ruta.size() - 5) == ".xlsx";
    if (xlsx) {
        lxw_workbook* libro = workbook_new(ruta.c_str());
        lxw_worksheet* ws = workbook_add_worksheet(libro, "Datos");
        lxw_format* formato = workbook_add_format(libro);
        format_set_num_format(formato, "dd/mm/yyyy hh:mm:ss");
        for (size_t r = 0; r < hoja.size(); ++r)
            for (size_t c = 0; c < hoja[r].size(); ++c) {
                const CeldaLibro& x = hoja[r][c];
                auto fila = static_cast<lxw_row_t>(r);
                auto col = static_cast<lxw_col_t>(c);
                if (x.tipo == CeldaLibro::Tipo::Texto) worksheet_write_string(ws, fila, col, x.texto.c_str(), nullptr);
                if (x.tipo == CeldaLibro::Tipo::Numero) worksheet_write_number(ws, fila, col, x.numero, nullptr);
                if (x.tipo == CeldaLibro::Tipo::Fecha) {
                    lxw_datetime f{x.anio, static_cast<uint8_t>(x.mes), static_cast<uint8_t>(x.dia),
                                   static_cast<uint8_t>(x.hora), static_cast<uint8_t>(x.minuto), 0};
                    worksheet_write_datetime(ws, fila, col, &f, formato);
                }
            }
        ASSERT_EQ(workbook_close(libro), LXW_NO_ERROR);
        return;
    }
    std::string guion = ruta + ".py";
    std::ofstream g(guion);
    g << "import xlwt, datetime\nwb = xlwt.Workbook(encoding='utf-8')\nws = wb.add_sheet('Datos')\n"
         "fechaHora = xlwt.easyxf(num_format_str='dd/mm/yyyy hh:mm:ss')\n";
    for (size_t r = 0; r < hoja.size(); ++r)
        for (size_t c = 0; c < hoja[r].size(); ++c) {
            const CeldaLibro& x = hoja[r][c];
            const std::string lugar = "ws.write(" + std::to_string(r) + ", " + std::to_string(c) + ", ";
            if (x.tipo == CeldaLibro::Tipo::Texto) {
                std::string t;
                for (char ch : x.texto) t += (ch == '\\' || ch == '\'') ? std::string("\\") + ch : std::string(1, ch);
                g << lugar << "'" << t << "')\n";
            }
            if (x.tipo == CeldaLibro::Tipo::Numero) {
                char n[64];
                std::snprintf(n, sizeof n, "%.17g", x.numero);
                g << lugar << n << ")\n";
            }
            if (x.tipo == CeldaLibro::Tipo::Fecha)
                g << lugar << "datetime.datetime(" << x.anio << ", " << x.mes << ", " << x.dia << ", " << x.hora
                  << ", " << x.minuto << "), fechaHora)\n";
        }
    g << "wb.save('" << ruta << "')\n";
    g.close();
    auto r = CorreProceso("/usr/bin/python3 '" + guion + "'");
    ASSERT_EQ(r.estado, 0) << r.salida;
}

}  // namespace velmorant::prueba
