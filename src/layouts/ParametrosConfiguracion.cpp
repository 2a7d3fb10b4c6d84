#include "layouts/ParametrosConfiguracion.h"

#include "platform/Texto.h"
#include "session/Funciones.h"

namespace velmorant {

namespace {

using E = EstructuraDatosTxt;
using Miembro = std::int16_t E::*;

bool EsFijo(FormularioParametros t) { return t == FormularioParametros::TxtPersonalizado; }

std::string NombreTecleado(const std::string& texto) { return Mayusculas(RecortaEspacios(texto)); }

// ------------------------------------------------------------ Validation

// One box to check: the tail of its message, the pair it fills, its tab.
// Without `longitud` only the position is checked; `mensaje` replaces the
// composed text where the form has words of its own.
struct Requisito {
    const char* cola;
    Miembro pIni;
    Miembro longitud;
    int pestana;
    const char* mensaje = nullptr;
};

std::vector<Requisito> RequisitosFijos(const CajasParametros& c) {
    std::vector<Requisito> r{{"la Cuenta", &E::PIniCuenta, &E::LongCuenta, 0},
                             {"la Descripción de la cuenta", &E::PIniDescripcion, &E::LongDescripcion, 0}};
    if (c.chkCtaCtrl) r.push_back({"la Cuenta Acumulativa", &E::PIniCtaAcum, &E::LongCtaAcum, 0});
    if (c.chkNivel) r.push_back({"el Nivel", &E::PIniNivel, &E::LongNivel, 0});
    if (c.chkNat) r.push_back({"la Naturaleza", &E::PIniNaturaleza, nullptr, 0});
    if (c.chkSaldosIni) r.push_back({"el Saldo Inicial", &E::PIniSdoIni, &E::LongSdoIni, 0});
    r.push_back({"el Tipo de Póliza", &E::PIniTipo, &E::LongTipo, 1});
    r.push_back({"el Número de la Póliza", &E::PIniNumPol, &E::LongNumPol, 1});
    r.push_back({"el Día", &E::PIniDia, &E::LongDia, 1});
    r.push_back({"el Mes", &E::PIniMes, &E::LongMes, 1});
    r.push_back({"el Año", &E::PIniAnio, &E::LongAnio, 1});
    r.push_back({"la Cuenta de la Póliza", &E::PIniCtaPol, &E::LongCtaPol, 1});
    if (c.chkReferencia) r.push_back({"la Referencia de la partida", &E::PIniRef, &E::LongRef, 1});
    r.push_back({"el Concepto de la Póliza", &E::PIniConcept, &E::LongConcept, 1});
    if (c.chkTipoMov) {
        r.push_back({"el Tipo de Movimiento", &E::PIniTipoMov, &E::LongTipoMov, 1});
        r.push_back({"el Importe ", &E::PIniImporte, &E::LongImporte, 1});
    } else {
        r.push_back({"el Importe Cargo", &E::PIniCargo, &E::LongCargo, 1});
        r.push_back({"el Importe Abono", &E::PIniAbono, &E::LongAbono, 1});
    }
    return r;
}

std::vector<Requisito> RequisitosColumnas(const CajasParametros& c) {
    std::vector<Requisito> r{{"la Cuenta", &E::PIniCuenta, nullptr, 0},
                             {"la Descripción de la cuenta", &E::PIniDescripcion, nullptr, 0}};
    if (c.chkCtaCtrl) r.push_back({"la Cuenta Acumulativa", &E::PIniCtaAcum, nullptr, 0});
    if (c.chkNivel) r.push_back({"el Nivel", &E::PIniNivel, nullptr, 0});
    if (c.chkNat) r.push_back({"la Naturaleza", &E::PIniNaturaleza, nullptr, 0});
    // With a file of opening balances the catalogue's balance box is disabled.
    if (c.chkSaldosIni && c.pestana != PestanaSaldos::SaldosIniciales)
        r.push_back({"el Saldo Inicial", &E::PIniSdoIni, nullptr, 0});
    r.push_back({"el Número de la Póliza", &E::PIniNumPol, nullptr, 1});
    r.push_back({"el Concepto de la Póliza", &E::PIniConcept, nullptr, 1});
    r.push_back({"el Tipo de Póliza", &E::PIniTipo, nullptr, 1});
    if (c.optFechaCompleta) {
        r.push_back({"la Fecha", &E::PIniDia, nullptr, 1});
    } else {
        r.push_back({"el Día", &E::PIniDia, nullptr, 1});
        r.push_back({"el Mes", &E::PIniMes, nullptr, 1});
        r.push_back({"el Año", &E::PIniAnio, nullptr, 1});
    }
    r.push_back({"la Cuenta de la Póliza", &E::PIniCtaPol, nullptr, 1});
    if (c.chkReferencia) r.push_back({"la Referencia de la partida", &E::PIniRef, nullptr, 1});
    if (c.chkTipoMov) {
        r.push_back({"el Tipo de Movimiento", &E::PIniTipoMov, nullptr, 1});
        r.push_back({"el Importe ", &E::PIniImporte, nullptr, 1});
    } else {
        r.push_back({"el Importe Cargo", &E::PIniCargo, nullptr, 1});
        // The credit box kept the fixed form's words.
        r.push_back({"", &E::PIniAbono, nullptr, 1, "Es necesario indicar la Posición Inicial para el Importe Abono"});
    }
    if (c.pestana != PestanaSaldos::Ninguna) {
        r.push_back({"la Cuenta", &E::PIniCtaSdoAnt, nullptr, 2});
        r.push_back({"la Descripción de la cuenta", &E::PIniDescSdoAnt, nullptr, 2});
        r.push_back({"el Saldo",
                     c.pestana == PestanaSaldos::SaldosIniciales ? &E::PIniSdoIni : &E::PIniSdoFinAnt, nullptr, 2});
    }
    return r;
}

std::string NombreMiembro(Miembro m) {
    for (auto& par : ParesConfiguracion()) {
        if (par.pIni == m) return std::string("PIni") + par.nombre;
        if (par.longitud == m) return std::string("Long") + par.nombre;
    }
    return "";
}

// ------------------------------------------------------------ Saving

void BorraConfiguracion(BaseDatos& db, const std::string& nombre) {
    db.ejecuta("DELETE FROM Configuraciones WHERE Nombre = ?", nombre);
}

void BorraConfiguracion(BaseDatos& db, const std::string& nombre, int idEnlace) {
    db.ejecuta("DELETE FROM Configuraciones WHERE Nombre = ? AND IdEnlace = ?", nombre, idEnlace);
}

// Deletes the row from both databases, the link condition as the form
// writes it (the fixed form deletes by name alone).
void BorraDeAmbas(Sesion& s, FormularioParametros tipo, const std::string& nombre, int idEnlaceBorrado) {
    for (BaseDatos* db : {s.DbEmpresa.get(), s.DbConfiguraciones.get()}) {
        if (EsFijo(tipo))
            BorraConfiguracion(*db, nombre);
        else
            BorraConfiguracion(*db, nombre, idEnlaceBorrado);
    }
}

void GuardaEnAmbas(Sesion& s, const FormularioConfiguracion& f, const std::string& nombre) {
    GuardaNvaConfiguracion(f.tipo, *s.DbEmpresa, f.cajas, nombre);
    GuardaNvaConfiguracion(f.tipo, *s.DbConfiguraciones, f.cajas, nombre);
}

bool PreguntaGuardarCambios(Sesion& s, const std::string& nombre) {
    return MsgPregunta(s, "Desea Guardar los cambios realizados para la configuración: " + nombre);
}

// The company's copy becomes the row `nombre` of the catalogue, and the
// form follows it.
void CambiaAConfiguracion(Sesion& s, FormularioConfiguracion& f, const std::string& nombre) {
    s.DbEmpresa->ejecuta("DELETE FROM Configuraciones");
    f.Configuracion = nombre;
    CopiaConfiguracion(s, *s.DbConfiguraciones, *s.DbEmpresa, nombre);
    CargaConfigEmpresa(s, nombre, f.registro);
    f.cajas = InicializaParametros(f.tipo, f.registro, f.cajas.pestana);
    f.lista = LlenaComboConfiguraciones(s);
    f.textoLista = nombre;
    f.filaElegida = true;
}

}  // namespace

int IdEnlaceDe(FormularioParametros f) {
    switch (f) {
        case FormularioParametros::TxtPersonalizado: return kEnlaceTxtPersonalizado;
        case FormularioParametros::TextoGenerico: return kEnlaceTextoGenerico;
        case FormularioParametros::ExcelGenerico: return kEnlaceExcelGenerico;
    }
    return 0;
}

CajasParametros InicializaParametros(FormularioParametros tipo, const EstructuraDatosTxt& registro,
                                     PestanaSaldos pestana) {
    CajasParametros c;
    c.valores = registro;
    c.pestana = EsFijo(tipo) ? PestanaSaldos::Ninguna : pestana;
    c.chkCtaCtrl = registro.PIniCtaAcum != 0;
    c.chkNivel = registro.PIniNivel != 0;
    c.chkNat = registro.PIniNaturaleza != 0;
    c.chkSaldosIni = registro.PIniSdoIni != 0 && c.pestana != PestanaSaldos::SaldosIniciales;
    c.chkReferencia = registro.PIniRef != 0;
    c.chkTipoMov = registro.PIniTipoMov != 0;
    c.optFechaCompleta = !EsFijo(tipo) && (registro.PIniMes == 0 || registro.PIniAnio == 0);
    return c;
}

EstructuraDatosTxt RegistroDeCajas(FormularioParametros tipo, const CajasParametros& c) {
    const E& v = c.valores;
    E r;
    auto copia = [&](Miembro pIni, Miembro longitud, bool presente = true) {
        if (!presente) return;
        r.*pIni = v.*pIni;
        if (EsFijo(tipo)) r.*longitud = v.*longitud;
    };
    copia(&E::PIniCuenta, &E::LongCuenta);
    copia(&E::PIniDescripcion, &E::LongDescripcion);
    copia(&E::PIniCtaAcum, &E::LongCtaAcum, c.chkCtaCtrl);
    copia(&E::PIniNivel, &E::LongNivel, c.chkNivel);
    copia(&E::PIniNaturaleza, &E::LongNaturaleza, c.chkNat);
    copia(&E::PIniSdoIni, &E::LongSdoIni, c.chkSaldosIni || c.pestana == PestanaSaldos::SaldosIniciales);
    copia(&E::PIniTipo, &E::LongTipo);
    copia(&E::PIniNumPol, &E::LongNumPol);
    copia(&E::PIniDia, &E::LongDia);
    copia(&E::PIniMes, &E::LongMes, EsFijo(tipo) || !c.optFechaCompleta);
    copia(&E::PIniAnio, &E::LongAnio, EsFijo(tipo) || !c.optFechaCompleta);
    copia(&E::PIniCtaPol, &E::LongCtaPol);
    copia(&E::PIniRef, &E::LongRef, c.chkReferencia);
    copia(&E::PIniConcept, &E::LongConcept);
    copia(&E::PIniTipoMov, &E::LongTipoMov, c.chkTipoMov);
    copia(&E::PIniImporte, &E::LongImporte, c.chkTipoMov);
    copia(&E::PIniCargo, &E::LongCargo, !c.chkTipoMov);
    copia(&E::PIniAbono, &E::LongAbono, !c.chkTipoMov);
    // The fixed form has no balance boxes: its rows end in zeros.
    bool tercera = !EsFijo(tipo) && c.pestana != PestanaSaldos::Ninguna;
    copia(&E::PIniCtaSdoAnt, &E::LongCtaSdoAnt, tercera);
    copia(&E::PIniDescSdoAnt, &E::LongDescSdoAnt, tercera);
    copia(&E::PIniSdoFinAnt, &E::LongSdoFinAnt, tercera && c.pestana == PestanaSaldos::SaldosFinalesAnioAnterior);
    return r;
}

std::optional<CajaFallida> ParametrosValidos(Sesion& s, FormularioParametros tipo, const CajasParametros& cajas,
                                             const std::string& nombre) {
    const bool fijo = EsFijo(tipo);
    auto falla = [&](const std::string& mensaje, Miembro m, int pestana) {
        MsgAviso(s, mensaje);
        return CajaFallida{pestana, NombreMiembro(m)};
    };
    for (const Requisito& r : fijo ? RequisitosFijos(cajas) : RequisitosColumnas(cajas)) {
        if (cajas.valores.*r.pIni <= 0) {
            if (r.mensaje) return falla(r.mensaje, r.pIni, r.pestana);
            return falla(std::string(fijo ? "Es necesario indicar la Posición Inicial para "
                                          : "Es necesario indicar el número de la Columna para ") +
                             r.cola,
                         r.pIni, r.pestana);
        }
        if (fijo && r.longitud && cajas.valores.*r.longitud <= 0)
            return falla(std::string("Es necesario indicar la Longitud para ") + r.cola, r.longitud, r.pestana);
    }
    if (RecortaEspacios(nombre).empty()) {
        MsgAviso(s, "Es necesario indicar el Nombre para la Nueva Configuración");
        return CajaFallida{-1, "Nombre"};
    }
    return std::nullopt;
}

bool ParametrosIguales(const FormularioConfiguracion& f) {
    // What the boxes hold against what they would show for the record, so
    // that values the form never shows do not count as changes.
    CajasParametros delRegistro = InicializaParametros(f.tipo, f.registro, f.cajas.pestana);
    return RegistroDeCajas(f.tipo, f.cajas) == RegistroDeCajas(f.tipo, delRegistro);
}

bool ExisteConfigConOtroNombre(Sesion& s, FormularioConfiguracion& f, const std::string& nombre) {
    EstructuraDatosTxt r = RegistroDeCajas(f.tipo, f.cajas);
    std::string sql = "SELECT Nombre FROM Configuraciones WHERE ";
    bool primero = true;
    for (auto& par : ParesConfiguracion()) {
        sql += std::string(primero ? "" : " AND ") + "PIni" + par.nombre + " = ? AND Long" + par.nombre + " = ?";
        primero = false;
    }
    Sentencia& st = s.DbConfiguraciones->preparada(sql);
    st.reinicia();
    int i = 1;
    for (auto& par : ParesConfiguracion()) {
        st.liga(i++, Valor(static_cast<int>(r.*par.pIni)));
        st.liga(i++, Valor(static_cast<int>(r.*par.longitud)));
    }
    Consulta c(st);
    if (c.eof() || c.campo(0).esNulo()) return false;
    std::string existente = c.campo(0).texto();
    if (MsgPregunta(s, "La configuración que desea guardar ya existe con otro nombre: - " + existente + " - \r\n" +
                           "¿Desea guardar la configuración con el nuevo nombre: - " + nombre + " - ?")) {
        BorraConfiguracion(*s.DbEmpresa, existente);
        BorraConfiguracion(*s.DbConfiguraciones, existente);
        GuardaEnAmbas(s, f, nombre);
        f.Configuracion = nombre;
    } else {
        f.Configuracion = existente;
    }
    return true;
}

void GuardaNvaConfiguracion(FormularioParametros tipo, BaseDatos& db, const CajasParametros& cajas,
                            const std::string& nombre) {
    EstructuraDatosTxt r = RegistroDeCajas(tipo, cajas);
    std::string marcas;
    for (size_t i = 0; i < ParesConfiguracion().size(); ++i) marcas += ", ?, ?";
    Sentencia& st = db.preparada("INSERT OR IGNORE INTO Configuraciones (Nombre, " + ListaColumnasPares() +
                                 ", IdEnlace) VALUES (?" + marcas + ", ?)");
    st.reinicia();
    int i = 1;
    st.liga(i++, Valor(QuitaCaracteresEspeciales(NombreTecleado(nombre))));
    for (auto& par : ParesConfiguracion()) {
        st.liga(i++, Valor(static_cast<int>(r.*par.pIni)));
        st.liga(i++, Valor(static_cast<int>(r.*par.longitud)));
    }
    st.liga(i, Valor(IdEnlaceDe(tipo)));
    st.ejecuta();
}

namespace {

bool EsUtf8(const std::string& t) {
    for (size_t i = 0; i < t.size();) {
        const auto c = static_cast<unsigned char>(t[i]);
        size_t n;
        if (c < 0x80) n = 0;
        else if (c >= 0xC2 && c < 0xE0) n = 1;
        else if ((c & 0xF0) == 0xE0) n = 2;
        else if (c >= 0xF0 && c < 0xF5) n = 3;
        else return false;
        if (i + n >= t.size()) return false;
        for (size_t k = 1; k <= n; ++k)
            if ((static_cast<unsigned char>(t[i + k]) & 0xC0) != 0x80) return false;
        i += n + 1;
    }
    return true;
}

}  // namespace

std::string ProblemaNombreConfiguracion(const std::string& nombre) {
    if (!EsUtf8(nombre)) return "El nombre de la configuración tiene caracteres que no son texto válido";
    if (QuitaCaracteresEspeciales(nombre) != nombre)
        return "El nombre de la configuración no puede llevar los caracteres ' | ~";
    return "";
}

Aceptacion AceptaParametros(Sesion& s, FormularioConfiguracion& f) {
    const std::string t = NombreTecleado(f.textoLista);
    const int enlace = IdEnlaceDe(f.tipo);
    if (!f.filaElegida) {
        if (t.empty()) {
            MsgAviso(s, "Es necesario indicar el Nombre para la Nueva Configuración");
            return {false, CajaFallida{-1, "Nombre"}};
        }
        if (auto problema = ProblemaNombreConfiguracion(f.textoLista); !problema.empty()) {
            MsgAviso(s, problema);
            return {false, CajaFallida{-1, "Nombre"}};
        }
        if (auto fallo = ParametrosValidos(s, f.tipo, f.cajas, t)) return {false, fallo};
        if (t != f.Configuracion) {
            if (ExisteConfiguracion(s, t)) return {false, std::nullopt};
            if (!ExisteConfigConOtroNombre(s, f, t)) {
                GuardaEnAmbas(s, f, t);
                f.Configuracion = t;
            }
            return {true, std::nullopt};
        }
        if (!ParametrosIguales(f)) {
            if (PreguntaGuardarCambios(s, t)) {
                // The workbook form deletes here with the delimited form's link,
                // so its rows are not replaced on this path; that stays so.
                BorraDeAmbas(s, f.tipo, t, kEnlaceTextoGenerico);
                GuardaEnAmbas(s, f, t);
            }
        } else if (!ExisteConfiguracion(s, t) && !ExisteConfigConOtroNombre(s, f, t)) {
            GuardaNvaConfiguracion(f.tipo, *s.DbConfiguraciones, f.cajas, t);
            f.Configuracion = t;
        }
        return {true, std::nullopt};
    }
    if (auto fallo = ParametrosValidos(s, f.tipo, f.cajas, t)) return {false, fallo};
    if (ParametrosIguales(f)) return {true, std::nullopt};
    if (ExisteConfigConOtroNombre(s, f, t)) return {true, std::nullopt};
    if (f.Configuracion == NombrePredeterminado(enlace)) {
        MsgAviso(s, "No es posible modificar los parametros para la Configuración predeterminada.");
        return {false, std::nullopt};
    }
    if (PreguntaGuardarCambios(s, f.Configuracion)) {
        BorraDeAmbas(s, f.tipo, f.Configuracion, enlace);
        GuardaEnAmbas(s, f, f.Configuracion);
    }
    return {true, std::nullopt};
}

void CancelaParametrosFijos(Sesion& s, FormularioConfiguracion& f) {
    const std::string t = NombreTecleado(f.textoLista);
    if (ParametrosValidos(s, f.tipo, f.cajas, t)) return;
    if (ExisteConfiguracion(s, t) || ExisteConfigConOtroNombre(s, f, t)) return;
    GuardaNvaConfiguracion(f.tipo, *s.DbConfiguraciones, f.cajas, t);
    f.Configuracion = t;
}

bool EligeConfiguracion(Sesion& s, FormularioConfiguracion& f, const std::string& texto) {
    const std::string t = RecortaEspacios(texto);
    if (t == f.Configuracion || !ExisteConfiguracion(s, t)) return false;
    if (!MsgPregunta(s, "Usted ha elegido una nueva configuración. ¿Esta seguro que desea ejecutar los cambios?")) {
        f.textoLista = f.Configuracion;
        f.filaElegida = true;
        return false;
    }
    CambiaAConfiguracion(s, f, t);
    return true;
}

bool TecleaNombreConfiguracion(Sesion& s, FormularioConfiguracion& f, const std::string& texto) {
    if (f.filaElegida) return false;
    const std::string anterior = f.textoLista;
    const std::string t = NombreTecleado(texto);
    f.textoLista = t;
    if (t == f.Configuracion || !ExisteConfiguracion(s, t)) return false;
    if (!MsgPregunta(s, "Ya existe una configuración con el nombre: - " + t + " - \r\n" +
                           "¿Desea cambiar a la configuración existente?")) {
        f.textoLista = anterior;
        return false;
    }
    CambiaAConfiguracion(s, f, t);
    return true;
}

std::int16_t ValidaLongitudNaturaleza(Sesion& s, std::int16_t valor) {
    if (valor == 1) return valor;
    MsgAviso(s, "Valor No permitido para este parametro.");
    return 1;
}

std::int16_t ValidaLongitudNivel(Sesion& s, std::int16_t valor) {
    if (valor == 1 || valor == 2) return valor;
    MsgAviso(s, "Valores permitidos para este parametro: 1 y 2 ");
    return 1;
}

}  // namespace velmorant
