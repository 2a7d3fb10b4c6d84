#include "session/Enlaces.h"

#include <map>

#include "importers/Registro.h"

namespace velmorant {

namespace {

// Title of each importer form, without a leading "Importar". An empty text
// marks a system written for one accounting firm.
const std::map<int, std::string>& Titulos() {
    static const std::map<int, std::string> t = {
        {1, "COI WIN Ver. 1, 2, 3, 3.5, 4"},
        {2, "COI WIN Ver. 5.0, 5.5, 5.6, 5.7"},
        {3, "COI 2.0 DOS"},
        {4, "COI 6.5 DOS"},
        {6, "ContaFiscal 2000 ver. 1.9"},
        {7, "ContaFiscal 2000 3.0"},
        {8, "ContaFiscal 2000"},
        {9, "ContaFiscal 2000 6.0 DOS"},
        {11, "Contavision Windows"},
        {12, "INTEGRA"},
        {13, "Macro Pro Suite 1.94"},
        {14, "Macro Pro Suite MS-DOS"},
        {15, "Microsip 6.0"},
        {16, "Pacioli 2000 MSDOS"},
        {17, "Siconta"},
        {18, "SUPRA"},
        {19, "AS400-RPG"},
        {20, "Softex"},
        {21, "ContaWin 3.05 - ContaWin 10.Q.1"},
        {22, ""},
        {23, "SCG para Municipios"},
        {24, "CUMMINS"},
        {25, "texto personalizado"},
        {26, "CONTAD 99"},
        {27, "Dealler"},
        {28, ""},
        {29, "StarCon 3.0"},
        {30, "Alaro 1.2.68"},
        {31, "ESMA"},
        {32, "SAF (SISTEMA DE AUTOMATIZACIÓN FINANCIERA) 2000 Ver. 2.0"},
        {33, "SAMI Ver. 6.0 y 7.0"},
        {34, "Multivisión UNIX"},
        {35, "Solomon"},
        {36, "ContPAQ i"},
        {37, "Rapsodia"},
        {38, "Microsip Windows 2006 NG"},
        {39, "Sistema PANCHOS"},
        {40, "ContPAQ Windows"},
        {41, "Contasix"},
        {42, "Proscai - OMNIS7 (2009)"},
        {43, "EXPERT"},
        {44, ""},
        {45, "NKONTROL"},
        {46, "Contabilidad Vital Sistemas 1.0"},
        {47, "Coral"},
        {48, "Sistema Integral de Contabilidad"},
        {49, "CYAN MCBA Ver. 7.0"},
        {50, "Super Contabilidad"},
        {51, "Sistema LOMAS 2.02"},
        {52, "Conta Plus"},
        {53, "Total Control"},
        {54, "M A P I"},
        {55, "VisualSoft"},
        {56, "Quorvel 4.0"},
        {57, "Quorvel 5.0"},
        {58, "Mega DOS Ver. ¿?"},
        {59, "Proscai"},
        {60, "Gestión Vital 3.1"},
        {61, "Sistema LOMAS 2000"},
        {62, ""},
        {63, "DEYCO"},
        {64, "INTELESIS"},
        {65, "Sistema de Contabilidad"},
        {66, "Sistema de Contabilidad Prosisnet"},
        {67, "DBCONTA"},
        {68, ""},
        {69, ""},
        {70, "Sistema INTEGRA INTELECSIS Ver. 4.41"},
        {71, "JD Edwards"},
        {72, "Sistema Epicor"},
        {73, "Neodata V1M1R383"},
        {74, "Arex v10.1"},
        {75, "Manufacturing Pro"},
        {76, "Sistema PASC"},
        {77, "Sistema Alix"},
        {78, "Adisys"},
        {79, "Business Pro - Contabilidad"},
        {80, "Total Dealer1005.5"},
        {81, "LIS 5.2.7"},
        {82, "Texto Generico delimitado por caracter"},
        {83, "Microsoft Dynamics SL versión 6.50.2723  Solomon Professional"},
        {84, "Avance"},
        {85, "Grupo HOLA"},
        {86, ""},
        {87, "ERP - ECA Contadores"},
        {88, "Grupo SAI"},
        {89, "Contador Ver. 1.0"},
        {90, "El Salvador - PCCMulti"},
        {91, "Master Business Administration (MBA3)"},
        {92, "Sistema INTEGRA INTELECSIS Ver.5.1"},
        {93, "ICAVV WIN"},
        {94, "Sistema Pyme de Softland"},
        {95, "ContPAQ i - Mejorado"},
        {96, "Sistema ERP de Softland"},
        {97, ""},
        {98, "Sistema ARPON"},
        {100, "COI WIN Ver. 6.0, 7.0"},
        {101, "Adisys"},
        {102, "Excel Genérico por Columnas"},
        {103, "NHD"},
        {104, "Great Plais Microsoft"},
        {105, "Sistema SIA"},
        {106, "Sistema AVANCE - HCSOA"},
        {107, "TOUS"},
        {108, "INNSIST Sofware (Sistema de Información Integral para Hoteles)"},
        {109, "Contab - Marpa"},
        {110, "Fussion Pro"},
        {111, "Sistema SIRE"},
        {112, "Intelisis"},
        {113, ""},
        {114, "ERP - Grupo Day"},
        {115, "Macro Pro Windows"},
        {116, ""},
        {117, "Phronesys V2.0 (2.0.0.413)"},
        {118, "Enlace ARGU"},
        {119, "SAP (A la medida)"},
        {120, "SIRE"},
        {121, "Sistema Integral Meta"},
        {122, ""},
        {123, "Bussines ProContabilidad Ver. 2.12.5"},
        {124, "SAP Bussines ONE"},
        {125, "EUCSA"},
        {126, "Microsoft Dynamics - CBC"},
        {127, "Sistema AVANCE-RJ"},
        {128, "Contafacil"},
        {129, "COI Win. 7.0, 8.0 - Base de Datos (*.FDB)"},
        {130, "Sistema SIRE - C.E. Arba."},
        {131, "Sistema SAI Confiaa"},
        {132, "Epicor - MAC"},
        {134, "INTEGRRA"},
        {135, "Contabilidad electrónica (XML)"},
    };
    return t;
}

Enlace LeeEnlace(const Consulta& c) {
    return {static_cast<int>(c["IdSistema"].entero()), c["Descripcion"].texto(), c["Liberado"].booleano(),
            c["Comercial"].booleano()};
}

std::vector<Enlace> Lee(Consulta c) {
    std::vector<Enlace> r;
    for (c.primero(); !c.eof(); c.siguiente()) r.push_back(LeeEnlace(c));
    return r;
}

// A LIKE pattern for "contains `texto`", with the legacy wildcards "*" and
// "?" kept as wildcards and every other character taken literally.
std::string PatronContiene(const std::string& texto) {
    std::string p = "%";
    for (char c : texto) {
        if (c == '*') p += '%';
        else if (c == '?') p += '_';
        else if (c == '%' || c == '_' || c == '\\') p += std::string("\\") + c;
        else p += c;
    }
    return p + "%";
}

}  // namespace

std::vector<Enlace> EnlacesConocidos() {
    std::vector<Enlace> r;
    const auto& disponibles = ImportadoresDisponibles();
    for (auto& [id, titulo] : Titulos()) {
        bool propio = titulo.empty();
        r.push_back({id, propio ? "Sistema propio de despacho " + std::to_string(id) : titulo,
                     disponibles.count(id) > 0, !propio});
    }
    return r;
}

void ActualizaCatalogoEnlaces(BaseDatos& catalogo) {
    Transaccion t(catalogo);
    for (auto& e : EnlacesConocidos())
        catalogo.ejecuta(
            "INSERT INTO Enlaces (IdSistema, Descripcion, Liberado, Comercial) VALUES (?, ?, ?, ?) "
            "ON CONFLICT(IdSistema) DO UPDATE SET Descripcion=excluded.Descripcion, Liberado=excluded.Liberado, "
            "Comercial=excluded.Comercial",
            e.IdSistema, e.Descripcion, e.Liberado, e.Comercial);
    t.confirma();
}

std::vector<Enlace> ListaEnlaces(BaseDatos& catalogo, bool soloComerciales, const std::string& buscar) {
    std::string sql = "SELECT * FROM Enlaces WHERE Liberado";
    if (soloComerciales) sql += " and Comercial";
    if (buscar.empty()) return Lee(catalogo.consulta(sql + " ORDER BY Descripcion"));
    sql += " and Descripcion LIKE ? ESCAPE '\\' ORDER BY Descripcion";
    return Lee(catalogo.consulta(sql, PatronContiene(buscar)));
}

std::vector<Enlace> TodosLosEnlaces(BaseDatos& catalogo) {
    return Lee(catalogo.consulta("SELECT * FROM Enlaces ORDER BY IdSistema"));
}

}  // namespace velmorant
