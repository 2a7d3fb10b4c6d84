#include "importers/contpaq_i/NaturalezasContpaq.h"

#include "platform/BaseDatos.h"
#include "platform/Texto.h"
#include "session/Funciones.h"
#include "store/AlmacenesTemporales.h"

namespace velmorant::contpaqi {

namespace {

// The letter rule: A, C, E, G, I, K debtor; B, D, F, H, J, L creditor.
std::string NaturalezaDeLetra(const std::string& tipo) {
    if (tipo.size() != 1 || tipo[0] < 'A' || tipo[0] > 'L') return "";
    return (tipo[0] - 'A') % 2 == 0 ? "D" : "A";
}

}  // namespace

std::string RutaNatContpaq(const Sesion& s) { return RutaAlmacen(s, "NatContpaq"); }

void CreaBDNatContpaq(const Sesion& s) {
    const std::string ruta = RutaNatContpaq(s);
    if (ExisteArchivo(ruta)) return;
    BaseDatos db(ruta, BaseDatos::Modo::Crear);
    Transaccion t(db);
    db.ejecutaScript(
        "CREATE TABLE IF NOT EXISTS NatContpaq (Tipo TEXT(1), NaturalezaPre TEXT(1), NaturalezaModif TEXT(1));"
        "CREATE INDEX IF NOT EXISTS Tipo ON NatContpaq (Tipo);");
    // C and J follow the rule but are not loaded: they come when met.
    for (const char* tipo : {"A", "B", "D", "E", "F", "G", "H", "I", "K", "L"}) {
        const std::string n = NaturalezaDeLetra(tipo);
        db.ejecuta("INSERT INTO NatContpaq (Tipo, NaturalezaPre, NaturalezaModif) VALUES (?, ?, ?)", tipo, n, n);
    }
    t.confirma();
}

NaturalezasContpaq::NaturalezasContpaq(const Sesion& s) : ruta_(RutaNatContpaq(s)) {
    CreaBDNatContpaq(s);
    BaseDatos db(ruta_);
    for (Consulta c = db.consulta("SELECT Tipo, NaturalezaModif FROM NatContpaq"); !c.eof(); c.siguiente())
        natural_.emplace(c.campo(0).texto(), c.campo(1).texto());
}

std::string NaturalezasContpaq::busca(const std::string& tipo) {
    auto it = natural_.find(tipo);
    if (it != natural_.end()) return it->second;
    const std::string n = NaturalezaDeLetra(tipo);
    BaseDatos db(ruta_);
    db.ejecuta("INSERT INTO NatContpaq (Tipo, NaturalezaPre, NaturalezaModif) VALUES (?, ?, ?)", tipo, n, n);
    natural_.emplace(tipo, n);
    return n;
}

}  // namespace velmorant::contpaqi
