#include "importers/RegistroSistemas.h"

#include <algorithm>

#include "importers/Registro.h"

namespace velmorant {

const std::vector<SistemaRegistrado>& RegistroSistemas() {
    // T text read line by line (an export, or a printed report saved as
    // text), C comma-separated text, E a workbook read cell by cell, X a
    // workbook read as a table, D dBase, F FoxPro, V Visual FoxPro tables,
    // P Paradox tables, B a Firebird database, M an Access database.
    static const std::vector<SistemaRegistrado> registro = {
        {1, "COI WIN Ver. 1, 2, 3, 3.5, 4", "T"},
        {2, "COI WIN Ver. 5.0, 5.5, 5.6, 5.7", "T"},
        {3, "COI 2.0 DOS", "T"},
        {4, "COI 6.5 DOS", "T"},
        {6, "ContaFiscal 2000 ver. 1.9", "ET"},
        {7, "ContaFiscal 2000 3.0", "ET"},
        {8, "ContaFiscal 2000", "ET"},
        {9, "ContaFiscal 2000 6.0 DOS", "D"},
        {11, "Contavision Windows", "E"},
        {12, "INTEGRA", "E"},
        {13, "Macro Pro Suite 1.94", "T"},
        {14, "Macro Pro Suite MS-DOS", "T"},
        {15, "Microsip 6.0", "T"},
        {16, "Pacioli 2000 MSDOS", "T"},
        {17, "Siconta", "D"},
        {18, "SUPRA", "E"},
        {19, "AS400-RPG", "T"},
        {20, "Softex", "M"},
        {21, "ContaWin 3.05 - ContaWin 10.Q.1", "V"},
        {22, "", "T"},
        {23, "SCG para Municipios", "T"},
        {24, "CUMMINS", "T"},
        {25, "texto personalizado", "T"},
        {26, "CONTAD 99", "T"},
        {27, "Dealler", "T"},
        {28, "", "T"},
        {29, "StarCon 3.0", "T"},
        {30, "Alaro 1.2.68", "CT"},
        {31, "ESMA", "T"},
        {32, "SAF (SISTEMA DE AUTOMATIZACIÓN FINANCIERA) 2000 Ver. 2.0", "CT"},
        {33, "SAMI Ver. 6.0 y 7.0", "D"},
        {34, "Multivisión UNIX", "T"},
        {35, "Solomon", "T"},
        {36, "ContPAQ i", "T"},
        {37, "Rapsodia", "E"},
        {38, "Microsip Windows 2006 NG", "EX"},
        {39, "Sistema PANCHOS", "T"},
        {40, "ContPAQ Windows", "D"},
        {41, "Contasix", "F"},
        {42, "Proscai - OMNIS7 (2009)", "ET"},
        {43, "EXPERT", "E"},
        {44, "", "T"},
        {45, "NKONTROL", "E"},
        {46, "Contabilidad Vital Sistemas 1.0", "T"},
        {47, "Coral", "CT"},
        {48, "Sistema Integral de Contabilidad", "E"},
        {49, "CYAN MCBA Ver. 7.0", "T"},
        {50, "Super Contabilidad", "M"},
        {51, "Sistema LOMAS 2.02", "T"},
        {52, "Conta Plus", "DT"},
        {53, "Total Control", "T"},
        {54, "M A P I", "T"},
        {55, "VisualSoft", "M"},
        {56, "Quorvel 4.0", "D"},
        {57, "Quorvel 5.0", "M"},
        {58, "Mega DOS Ver. ¿?", "D"},
        {59, "Proscai", "ET"},
        {60, "Gestión Vital 3.1", "E"},
        {61, "Sistema LOMAS 2000", "T"},
        {62, "", "T"},
        {63, "DEYCO", "D"},
        {64, "INTELESIS", "E"},
        {65, "Sistema de Contabilidad", "D"},
        {66, "Sistema de Contabilidad Prosisnet", "D"},
        {67, "DBCONTA", "F"},
        {68, "", "F"},
        {69, "", "T"},
        {70, "Sistema INTEGRA INTELECSIS Ver. 4.41", "T"},
        {71, "JD Edwards", "E"},
        {72, "Sistema Epicor", "CET"},
        {73, "Neodata V1M1R383", "E"},
        {74, "Arex v10.1", "E"},
        {75, "Manufacturing Pro", "T"},
        {76, "Sistema PASC", "T"},
        {77, "Sistema Alix", "E"},
        {78, "Adisys", "ET"},
        {79, "Business Pro - Contabilidad", "T"},
        {80, "Total Dealer1005.5", "T"},
        {81, "LIS 5.2.7", "T"},
        {82, "Texto Generico delimitado por caracter", "T"},
        {83, "Microsoft Dynamics SL versión 6.50.2723  Solomon Professional", "ET"},
        {84, "Avance", "T"},
        {85, "Grupo HOLA", "T"},
        {86, "", "T"},
        {87, "ERP - ECA Contadores", "CT"},
        {88, "Grupo SAI", "T"},
        {89, "Contador Ver. 1.0", "E"},
        {90, "El Salvador - PCCMulti", "CDT"},
        {91, "Master Business Administration (MBA3)", "E"},
        {92, "Sistema INTEGRA INTELECSIS Ver.5.1", "T"},
        {93, "ICAVV WIN", "E"},
        {94, "Sistema Pyme de Softland", "E"},
        {95, "ContPAQ i - Mejorado", "T"},
        {96, "Sistema ERP de Softland", "E"},
        {97, "", "ET"},
        {98, "Sistema ARPON", "ET"},
        {100, "COI WIN Ver. 6.0, 7.0", "ET"},
        {101, "Adisys", "ET"},
        {102, "Excel Genérico por Columnas", "X"},
        {103, "NHD", "E"},
        {104, "Great Plais Microsoft", "E"},
        {105, "Sistema SIA", "E"},
        {106, "Sistema AVANCE - HCSOA", "T"},
        {107, "TOUS", "E"},
        {108, "INNSIST Sofware (Sistema de Información Integral para Hoteles)", "T"},
        {109, "Contab - Marpa", "T"},
        {110, "Fussion Pro", "ET"},
        {111, "Sistema SIRE", "E"},
        {112, "Intelisis", "ET"},
        {113, "", "ET"},
        {114, "ERP - Grupo Day", "ET"},
        {115, "Macro Pro Windows", "T"},
        {116, "", "T"},
        {117, "Phronesys V2.0 (2.0.0.413)", "E"},
        {118, "Enlace ARGU", "E"},
        {119, "SAP (A la medida)", "ET"},
        {120, "SIRE", "E"},
        {121, "Sistema Integral Meta", "E"},
        {122, "", "ET"},
        {123, "Bussines ProContabilidad Ver. 2.12.5", "E"},
        {124, "SAP Bussines ONE", "E"},
        {125, "EUCSA", "T"},
        {126, "Microsoft Dynamics - CBC", "E"},
        {127, "Sistema AVANCE-RJ", "T"},
        {128, "Contafacil", "EPT"},
        {129, "COI Win. 7.0, 8.0 - Base de Datos (*.FDB)", "B"},
        {130, "Sistema SIRE - C.E. Arba.", "ET"},
        {131, "Sistema SAI Confiaa", "E"},
        {132, "Epicor - MAC", "E"},
        {134, "INTEGRRA", "E"},
        {135, "Contabilidad electrónica (XML)", "S"},
    };
    return registro;
}

const SistemaRegistrado* BuscaSistema(int idSistema) {
    const auto& r = RegistroSistemas();
    auto it = std::lower_bound(r.begin(), r.end(), idSistema,
                               [](const SistemaRegistrado& s, int id) { return s.IdSistema < id; });
    return it != r.end() && it->IdSistema == idSistema ? &*it : nullptr;
}

bool ImportadorConstruido(int idSistema) { return ImportadoresDisponibles().count(idSistema) > 0; }

std::string FuentesDescritas(const std::string& letras) {
    std::string r;
    for (char c : letras) {
        const char* t = "";
        switch (c) {
            case 'T': t = "texto"; break;
            case 'C': t = "texto separado por comas"; break;
            case 'E': t = "Excel celda por celda"; break;
            case 'X': t = "Excel como tabla"; break;
            case 'D': t = "dBase"; break;
            case 'F': t = "FoxPro"; break;
            case 'V': t = "Visual FoxPro"; break;
            case 'P': t = "Paradox"; break;
            case 'B': t = "Firebird"; break;
            case 'M': t = "base de Access"; break;
            case 'S': t = "XML de contabilidad electrónica"; break;
            default: continue;
        }
        r += (r.empty() ? "" : ", ") + std::string(t);
    }
    return r;
}

}  // namespace velmorant
