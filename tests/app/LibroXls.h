#pragma once
// Workbooks for the form tests, in the older format, written by python-xlwt:
// the rows as a Python list of lists (None for an empty cell, datetime
// values as dates with their time of day).

#include <QProcess>
#include <QStringList>

#include <filesystem>
#include <string>

namespace velmorant::prueba {

inline bool EscribeXls(const std::string& ruta, const std::string& filas) {
    std::filesystem::create_directories(std::filesystem::path(ruta).parent_path());
    const std::string guion =
        "import xlwt, datetime\n"
        "from datetime import datetime as fecha\n"
        "wb = xlwt.Workbook(encoding='utf-8')\n"
        "ws = wb.add_sheet('Hoja1')\n"
        "formato = xlwt.easyxf(num_format_str='dd/mm/yyyy hh:mm:ss')\n"
        "for r, fila in enumerate(" + filas + "):\n"
        "    for c, v in enumerate(fila):\n"
        "        if v is None: continue\n"
        "        if isinstance(v, datetime.datetime): ws.write(r, c, v, formato)\n"
        "        else: ws.write(r, c, v)\n"
        "wb.save(r'" + ruta + "')\n";
    QProcess p;
    p.start("/usr/bin/python3", {"-c", QString::fromStdString(guion)});
    return p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
}

}  // namespace velmorant::prueba
