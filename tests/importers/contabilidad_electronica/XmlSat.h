#pragma once
// Electronic-accounting XML files for the tests, written as the published
// schemas of versions 1.1 and 1.3 lay them out: the namespace of each
// version (1.1 here without the leading "http://", as such files are met
// with), a prefix on every element, the root's Version, RFC, Mes and Anio.

#include <string>

namespace velmorant::prueba {

inline std::string EspacioSat(const std::string& version, const std::string& archivo) {
    return std::string(version == "1.1" ? "" : "http://") + "www.sat.gob.mx/esquemas/ContabilidadE/" +
           (version == "1.1" ? "1_1" : "1_3") + "/" + archivo;
}

/// A whole file: root `raiz` ("Catalogo", "Balanza", "Polizas") in the
/// namespace of `archivo` ("CatalogoCuentas", "BalanzaComprobacion",
/// "PolizasPeriodo"), prefix "sat"; `cuerpo` writes its elements with it.
inline std::string XmlSat(const std::string& raiz, const std::string& archivo, const std::string& version,
                              const std::string& mes, const std::string& cuerpo, const std::string& rfc = "AAA010101AAA",
                              const std::string& anio = "2025") {
    std::string extra = raiz == "Balanza" ? " TipoEnvio=\"N\"" : raiz == "Polizas" ? " TipoSolicitud=\"AF\" NumOrden=\"ABC6912345/12\"" : "";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<sat:" + raiz + " xmlns:sat=\"" + EspacioSat(version, archivo) +
           "\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" Version=\"" + version + "\" RFC=\"" + rfc +
           "\" Mes=\"" + mes + "\" Anio=\"" + anio + "\"" + extra + ">\n" + cuerpo + "</sat:" + raiz + ">\n";
}

inline std::string CatalogoSat(const std::string& cuerpo, const std::string& version = "1.3") {
    return XmlSat("Catalogo", "CatalogoCuentas", version, "01", cuerpo);
}
inline std::string BalanzaSat(const std::string& mes, const std::string& cuerpo, const std::string& version = "1.3") {
    return XmlSat("Balanza", "BalanzaComprobacion", version, mes, cuerpo);
}
inline std::string PolizasSat(const std::string& mes, const std::string& cuerpo, const std::string& version = "1.3") {
    return XmlSat("Polizas", "PolizasPeriodo", version, mes, cuerpo);
}

inline std::string CtaSat(const std::string& numCta, const std::string& desc, const std::string& natur, int nivel,
                          const std::string& padre = "") {
    return "<sat:Ctas CodAgrup=\"" + numCta.substr(0, 3) + "\" NumCta=\"" + numCta + "\" Desc=\"" + desc + "\"" +
           (padre.empty() ? "" : " SubCtaDe=\"" + padre + "\"") + " Nivel=\"" + std::to_string(nivel) + "\" Natur=\"" +
           natur + "\"/>\n";
}

inline std::string RenglonSat(const std::string& numCta, const std::string& ini, const std::string& debe,
                              const std::string& haber, const std::string& fin) {
    return "<sat:Ctas NumCta=\"" + numCta + "\" SaldoIni=\"" + ini + "\" Debe=\"" + debe + "\" Haber=\"" + haber +
           "\" SaldoFin=\"" + fin + "\"/>\n";
}

/// The chart of the tests: two branches of three levels, mask 999-99-99.
inline std::string CuerpoCatalogo() {
    return CtaSat("100-00-00", "Activo", "D", 1) + CtaSat("100-01-00", "Bancos", "D", 2, "100-00-00") +
           CtaSat("100-01-01", "Banco uno", "D", 3, "100-01-00") + CtaSat("400-00-00", "Ventas", "A", 1) +
           CtaSat("400-01-00", "Ventas nacionales", "A", 2, "400-00-00") +
           CtaSat("400-01-01", "Mostrador", "A", 3, "400-01-00");
}

}  // namespace velmorant::prueba
