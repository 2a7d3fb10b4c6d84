#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

#include "layouts/Configuraciones.h"
#include "layouts/ParametrosConfiguracion.h"
#include "session/Funciones.h"
#include "session/ProgramaTerminado.h"
#include "support/Entorno.h"

using namespace velmorant;
using velmorant::prueba::AjustesAislados;
using velmorant::prueba::CarpetaTemporal;
using velmorant::prueba::InteraccionGuionada;

namespace {

using Pares = std::array<int, 42>;

Pares ComoArreglo(const EstructuraDatosTxt& r) {
    Pares a{};
    size_t i = 0;
    for (auto& par : ParesConfiguracion()) {
        a[i++] = r.*par.pIni;
        a[i++] = r.*par.longitud;
    }
    return a;
}

class Configuraciones : public ::testing::Test {
protected:
    AjustesAislados ajustes;
    CarpetaTemporal carpeta;
    InteraccionGuionada ui;
    Sesion s;

    void SetUp() override {
        s.interaccion = &ui;
        s.VersionPrograma = "1.0.0";
        s.DbEmpresa = std::make_unique<BaseDatos>(carpeta.ruta() / "ACME_2024.sqlite", BaseDatos::Modo::Crear);
        s.IdSistemaElegido = kEnlaceTextoGenerico;
    }

    std::vector<std::string> Textos() const {
        std::vector<std::string> r;
        for (auto& m : ui.mensajes) r.push_back(m.texto);
        return r;
    }

    // A parameter form of link `enlace` just started, as its importer opens it.
    FormularioConfiguracion Forma(int enlace) {
        s.IdSistemaElegido = enlace;
        FormularioConfiguracion f;
        f.tipo = enlace == 25 ? FormularioParametros::TxtPersonalizado
                              : enlace == 82 ? FormularioParametros::TextoGenerico : FormularioParametros::ExcelGenerico;
        auto inicio = IniciaConfiguraciones(s);
        f.Configuracion = inicio.Configuracion;
        f.lista = inicio.lista;
        EXPECT_TRUE(CargaConfigEmpresa(s, f.Configuracion, f.registro));
        f.cajas = InicializaParametros(f.tipo, f.registro);
        f.textoLista = f.Configuracion;
        f.filaElegida = true;
        return f;
    }

    // Delimited boxes of a complete layout, distinct from the predetermined one.
    static CajasParametros CajasColumnas(int desplazamiento = 0) {
        CajasParametros c;
        auto& v = c.valores;
        auto n = [&](int k) { return static_cast<std::int16_t>(k + desplazamiento); };
        v.PIniCuenta = n(1), v.PIniDescripcion = n(2), v.PIniTipo = n(3), v.PIniNumPol = n(4), v.PIniDia = n(5);
        v.PIniCtaPol = n(6), v.PIniConcept = n(7), v.PIniTipoMov = n(8), v.PIniImporte = n(9);
        c.chkTipoMov = true;
        c.optFechaCompleta = true;
        return c;
    }

    size_t Filas(BaseDatos& db, const std::string& nombre) {
        return db.consulta("SELECT Nombre FROM Configuraciones WHERE Nombre = ?", nombre).cuentaRegistros();
    }
};

TEST_F(Configuraciones, FilasPredeterminadasConSusValoresExactos) {
    struct Caso {
        int enlace;
        const char* nombre;
        Pares pares;
    } casos[] = {
        {25, "CONFIGURACION PREDETERMINADA",
         {1, 20, 21, 40, 61, 20, 81, 1, 82, 1, 83, 20, 1, 5, 6, 10, 16, 2, 19, 2, 22,
          2, 24, 20, 44, 6, 50, 30, 80, 1, 81, 20, 80, 20, 100, 20, 1, 20, 21, 40, 61, 20}},
        {82, "CONFIGURACION PREDETERMINADA TEXTO GENERICO",
         {1, 0, 3, 0, 0, 0, 2, 0, 0, 0, 4, 0, 0, 0, 1, 0, 3, 0, 0, 0, 0,
          0, 2, 0, 9, 0, 6, 0, 7, 0, 8, 0, 0, 0, 0, 0, 1, 0, 3, 0, 7, 0}},
        {102, "CONFIGURACION PREDETERMINADA EXCEL GENERICO",
         {1, 0, 3, 0, 0, 0, 2, 0, 0, 0, 4, 0, 0, 0, 1, 0, 3, 0, 0, 0, 0,
          0, 2, 0, 9, 0, 6, 0, 7, 0, 8, 0, 0, 0, 0, 0, 1, 0, 3, 0, 7, 0}},
    };
    for (auto& c : casos) {
        s.IdSistemaElegido = c.enlace;
        auto inicio = IniciaConfiguraciones(s);
        EXPECT_EQ(inicio.Configuracion, c.nombre);
        EXPECT_FALSE(inicio.abreParametros);
        EXPECT_EQ(inicio.lista, std::vector<std::string>{c.nombre});
        for (BaseDatos* db : {s.DbConfiguraciones.get(), s.DbEmpresa.get()}) {
            auto fila = LeeConfiguracion(*db, c.nombre);
            ASSERT_TRUE(fila) << c.nombre;
            EXPECT_EQ(ComoArreglo(fila->pares), c.pares) << c.nombre;
            EXPECT_EQ(fila->IdEnlace, c.enlace);
        }
    }
    // A second start inserts nothing twice.
    IniciaConfiguraciones(s);
    EXPECT_EQ(TodasLasConfiguraciones(*s.DbConfiguraciones).size(), 3u);
    EXPECT_TRUE(ui.mensajes.empty());
}

TEST_F(Configuraciones, ElInicioSiempreTomaLaPredeterminadaYNoPisaLaExistente) {
    auto f = Forma(82);
    f.cajas = CajasColumnas();
    f.textoLista = "MIA";
    f.filaElegida = false;
    ASSERT_TRUE(AceptaParametros(s, f).cierra);
    // The company now holds MIA only; a new start selects the predetermined row again.
    s.DbEmpresa->ejecuta("DELETE FROM Configuraciones WHERE Nombre <> 'MIA'");
    s.DbConfiguraciones->ejecuta("UPDATE Configuraciones SET PIniCuenta = 5 WHERE Nombre = ?",
                                 "CONFIGURACION PREDETERMINADA TEXTO GENERICO");
    auto inicio = IniciaConfiguraciones(s);
    EXPECT_EQ(inicio.Configuracion, "CONFIGURACION PREDETERMINADA TEXTO GENERICO");
    EXPECT_EQ(inicio.lista, (std::vector<std::string>{"CONFIGURACION PREDETERMINADA TEXTO GENERICO", "MIA"}));
    EXPECT_EQ(LeeConfiguracion(*s.DbConfiguraciones, inicio.Configuracion)->pares.PIniCuenta, 5);
}

TEST_F(Configuraciones, LaActualizacionAgregaIdEnlaceYLasFilasViejasNoSeListan) {
    std::string columnas;
    for (auto& par : ParesConfiguracion())
        columnas += std::string(", PIni") + par.nombre + " SMALLINT, Long" + par.nombre + " SMALLINT";
    {
        BaseDatos viejo(RutaBaseConfiguraciones(), BaseDatos::Modo::Crear);
        viejo.ejecutaScript("CREATE TABLE Configuraciones (Nombre TEXT(50)" + columnas + ", PRIMARY KEY (Nombre))");
        viejo.ejecuta("INSERT INTO Configuraciones (Nombre, PIniCuenta) VALUES ('VIEJA', 3)");
    }
    s.DbEmpresa->ejecutaScript("CREATE TABLE Configuraciones (Nombre TEXT(50)" + columnas + ", PRIMARY KEY (Nombre))");
    s.IdSistemaElegido = kEnlaceTxtPersonalizado;
    auto inicio = IniciaConfiguraciones(s);
    EXPECT_TRUE(ExisteCampo(*s.DbConfiguraciones, "Configuraciones", "IdEnlace"));
    EXPECT_TRUE(ExisteCampo(*s.DbEmpresa, "Configuraciones", "IdEnlace"));
    EXPECT_EQ(inicio.lista, std::vector<std::string>{"CONFIGURACION PREDETERMINADA"});
    auto vieja = LeeConfiguracion(*s.DbConfiguraciones, "VIEJA");
    ASSERT_TRUE(vieja);
    EXPECT_EQ(vieja->IdEnlace, 0);
    EXPECT_EQ(vieja->pares.PIniCuenta, 3);
    EXPECT_EQ(vieja->pares.LongCuenta, 0);  // Null reads as 0
    EXPECT_TRUE(s.DbConfiguraciones->escalar("SELECT IdEnlace FROM Configuraciones WHERE Nombre='VIEJA'").esNulo());
}

TEST_F(Configuraciones, UnCatalogoIlegibleTerminaElPrograma) {
    {
        std::FILE* f = std::fopen(RutaBaseConfiguraciones().c_str(), "w");
        std::fputs("esto no es una base de datos, sino texto suficiente para no parecer vacia.....", f);
        std::fclose(f);
    }
    EXPECT_THROW(IniciaConfiguraciones(s), ProgramaTerminado);
    ASSERT_EQ(ui.mensajes.size(), 1u);
    EXPECT_EQ(ui.mensajes[0].texto, "No fue posible abrir la Base Configuraciones.\r");
}

// Empties every box, then fills the faulty one after each message: the
// messages come out in the form's fixed order.
std::vector<std::string> OrdenDeMensajes(Sesion& s, InteraccionGuionada& ui, FormularioParametros tipo,
                                         CajasParametros cajas, std::vector<std::string>* focos = nullptr) {
    std::vector<std::string> mensajes;
    for (int vuelta = 0; vuelta < 60; ++vuelta) {
        ui.mensajes.clear();
        auto fallo = ParametrosValidos(s, tipo, cajas, "NUEVA");
        if (!fallo) break;
        mensajes.push_back(ui.mensajes.at(0).texto);
        if (focos) focos->push_back(std::to_string(fallo->pestana) + ":" + fallo->caja);
        auto miembro = CampoConfiguracion(fallo->caja);
        cajas.valores.*miembro = 1;
    }
    return mensajes;
}

TEST_F(Configuraciones, ValidacionEnSuOrdenFijo) {
    const std::string p = "Es necesario indicar la Posición Inicial para ";
    const std::string l = "Es necesario indicar la Longitud para ";
    CajasParametros fijas;
    fijas.chkCtaCtrl = fijas.chkNivel = fijas.chkNat = fijas.chkSaldosIni = fijas.chkReferencia = true;
    std::vector<std::string> focos;
    auto mensajesFijos = OrdenDeMensajes(s, ui, FormularioParametros::TxtPersonalizado, fijas, &focos);
    std::vector<std::string> esperados;
    for (const char* cola : {"la Cuenta", "la Descripción de la cuenta", "la Cuenta Acumulativa", "el Nivel"}) {
        esperados.push_back(p + cola + "\r");
        esperados.push_back(l + cola + "\r");
    }
    esperados.push_back(p + "la Naturaleza\r");
    for (const char* cola : {"el Saldo Inicial", "el Tipo de Póliza", "el Número de la Póliza", "el Día", "el Mes",
                             "el Año", "la Cuenta de la Póliza", "la Referencia de la partida",
                             "el Concepto de la Póliza", "el Importe Cargo", "el Importe Abono"}) {
        esperados.push_back(p + cola + "\r");
        esperados.push_back(l + cola + "\r");
    }
    EXPECT_EQ(mensajesFijos, esperados);
    EXPECT_EQ(focos.front(), "0:PIniCuenta");
    EXPECT_EQ(focos[1], "0:LongCuenta");
    EXPECT_EQ(focos.back(), "1:LongAbono");

    const std::string c = "Es necesario indicar el número de la Columna para ";
    CajasParametros columnas;
    columnas.chkCtaCtrl = columnas.chkNivel = columnas.chkNat = columnas.chkSaldosIni = columnas.chkReferencia = true;
    columnas.chkTipoMov = true;
    columnas.pestana = PestanaSaldos::SaldosFinalesAnioAnterior;
    esperados.clear();
    for (const char* cola :
         {"la Cuenta", "la Descripción de la cuenta", "la Cuenta Acumulativa", "el Nivel", "la Naturaleza",
          "el Saldo Inicial", "el Número de la Póliza", "el Concepto de la Póliza", "el Tipo de Póliza", "el Día",
          "el Mes", "el Año", "la Cuenta de la Póliza", "la Referencia de la partida", "el Tipo de Movimiento",
          "el Importe ", "la Cuenta", "la Descripción de la cuenta", "el Saldo"})
        esperados.push_back(c + cola + "\r");
    focos.clear();
    EXPECT_EQ(OrdenDeMensajes(s, ui, FormularioParametros::TextoGenerico, columnas, &focos), esperados);
    EXPECT_EQ(focos.back(), "2:PIniSdoFinAnt");

    // Whole date, no indicator: the credit column keeps the fixed form's words.
    CajasParametros sinIndicador;
    sinIndicador.optFechaCompleta = true;
    auto mensajes = OrdenDeMensajes(s, ui, FormularioParametros::ExcelGenerico, sinIndicador);
    ASSERT_EQ(mensajes.size(), 9u);
    EXPECT_EQ(mensajes[5], c + "la Fecha\r");
    EXPECT_EQ(mensajes[7], c + "el Importe Cargo\r");
    EXPECT_EQ(mensajes[8], "Es necesario indicar la Posición Inicial para el Importe Abono\r");

    // The name comes last.
    ui.mensajes.clear();
    auto fallo = ParametrosValidos(s, FormularioParametros::TextoGenerico, CajasColumnas(), "  ");
    ASSERT_TRUE(fallo);
    EXPECT_EQ(fallo->caja, "Nombre");
    EXPECT_EQ(Textos(), std::vector<std::string>{"Es necesario indicar el Nombre para la Nueva Configuración\r"});
}

TEST_F(Configuraciones, NombreNuevoSeGuardaEnAmbasBases) {
    auto f = Forma(82);
    f.cajas = CajasColumnas();
    f.filaElegida = false;
    f.textoLista = "  mi formato ";
    auto a = AceptaParametros(s, f);
    EXPECT_TRUE(a.cierra);
    EXPECT_EQ(f.Configuracion, "MI FORMATO");
    for (BaseDatos* db : {s.DbConfiguraciones.get(), s.DbEmpresa.get()}) {
        auto fila = LeeConfiguracion(*db, "MI FORMATO");
        ASSERT_TRUE(fila);
        EXPECT_EQ(fila->IdEnlace, 82);
        EXPECT_EQ(fila->pares, RegistroDeCajas(f.tipo, f.cajas));
        EXPECT_EQ(fila->pares.PIniCargo, 0);
        EXPECT_EQ(fila->pares.PIniSdoFinAnt, 0);
    }
    EXPECT_TRUE(ui.mensajes.empty());

    // An existing name typed again, other than the current one, stops silently.
    f.Configuracion = "CONFIGURACION PREDETERMINADA TEXTO GENERICO";
    f.cajas = CajasColumnas(3);
    f.textoLista = "mi formato";
    a = AceptaParametros(s, f);
    EXPECT_FALSE(a.cierra);
    EXPECT_FALSE(a.foco);
    EXPECT_TRUE(ui.mensajes.empty());
    EXPECT_EQ(LeeConfiguracion(*s.DbConfiguraciones, "MI FORMATO")->pares.PIniCuenta, 1);
}

TEST_F(Configuraciones, ValoresIgualesConOtroNombre) {
    auto f = Forma(82);
    f.cajas = CajasColumnas();
    f.filaElegida = false;
    f.textoLista = "PRIMERA";
    ASSERT_TRUE(AceptaParametros(s, f).cierra);
    for (bool respuesta : {false, true}) {
        ui.mensajes.clear();
        f.textoLista = "SEGUNDA";
        ui.respuestas = {respuesta};
        ASSERT_TRUE(AceptaParametros(s, f).cierra);
        EXPECT_EQ(Textos(), std::vector<std::string>{
                                "La configuración que desea guardar ya existe con otro nombre: - PRIMERA - \r\n"
                                "¿Desea guardar la configuración con el nuevo nombre: - SEGUNDA - ?"});
        EXPECT_EQ(f.Configuracion, respuesta ? "SEGUNDA" : "PRIMERA");
        for (BaseDatos* db : {s.DbConfiguraciones.get(), s.DbEmpresa.get()}) {
            EXPECT_EQ(Filas(*db, "PRIMERA"), respuesta ? 0u : 1u);
            EXPECT_EQ(Filas(*db, "SEGUNDA"), respuesta ? 1u : 0u);
        }
    }
}

TEST_F(Configuraciones, LaPredeterminadaNoSeModificaYLasDemasSiTrasLaPregunta) {
    auto f = Forma(82);
    f.cajas.valores.PIniCuenta = 5;
    f.cajas.valores.PIniTipo = 10;  // the predetermined row has no type column
    auto a = AceptaParametros(s, f);
    EXPECT_FALSE(a.cierra);
    EXPECT_EQ(Textos(),
              std::vector<std::string>{"No es posible modificar los parametros para la Configuración predeterminada.\r"});
    EXPECT_EQ(LeeConfiguracion(*s.DbConfiguraciones, f.Configuracion)->pares.PIniCuenta, 1);

    // Unchanged boxes on a selected row close with nothing to save.
    f.textoLista = "PROPIA";
    f.filaElegida = false;
    ASSERT_TRUE(AceptaParametros(s, f).cierra);
    CargaConfigEmpresa(s, "PROPIA", f.registro);
    f.cajas = InicializaParametros(f.tipo, f.registro);
    f.filaElegida = true;
    ui.mensajes.clear();
    EXPECT_TRUE(AceptaParametros(s, f).cierra);
    EXPECT_TRUE(ui.mensajes.empty());

    // A changed selected row asks, and is replaced in both databases on yes.
    f.cajas.valores.PIniConcept = 12;
    ui.respuestas = {true};
    EXPECT_TRUE(AceptaParametros(s, f).cierra);
    EXPECT_EQ(Textos(), std::vector<std::string>{"Desea Guardar los cambios realizados para la configuración: PROPIA"});
    for (BaseDatos* db : {s.DbConfiguraciones.get(), s.DbEmpresa.get()})
        EXPECT_EQ(LeeConfiguracion(*db, "PROPIA")->pares.PIniConcept, 12);
}

TEST_F(Configuraciones, ElegirOTeclearOtraConfiguracion) {
    auto f = Forma(82);
    f.cajas = CajasColumnas();
    f.filaElegida = false;
    f.textoLista = "OTRA";
    ASSERT_TRUE(AceptaParametros(s, f).cierra);
    f.Configuracion = "CONFIGURACION PREDETERMINADA TEXTO GENERICO";
    CargaConfigEmpresa(s, f.Configuracion, f.registro);

    ui.respuestas = {false};
    EXPECT_FALSE(EligeConfiguracion(s, f, "OTRA "));
    EXPECT_EQ(f.textoLista, "CONFIGURACION PREDETERMINADA TEXTO GENERICO");
    EXPECT_EQ(TodasLasConfiguraciones(*s.DbEmpresa).size(), 2u);

    ui.respuestas = {true};
    EXPECT_TRUE(EligeConfiguracion(s, f, "OTRA"));
    EXPECT_EQ(ui.mensajes.back().texto,
              "Usted ha elegido una nueva configuración. ¿Esta seguro que desea ejecutar los cambios?");
    auto empresa = TodasLasConfiguraciones(*s.DbEmpresa);
    ASSERT_EQ(empresa.size(), 1u);
    EXPECT_EQ(empresa[0].Nombre, "OTRA");
    EXPECT_EQ(f.Configuracion, "OTRA");
    EXPECT_EQ(f.registro.PIniImporte, 9);
    EXPECT_TRUE(f.cajas.chkTipoMov);

    // Typing an existing name in lower case is that name.
    ui.mensajes.clear();
    f.filaElegida = false;
    ui.respuestas = {true};
    EXPECT_TRUE(TecleaNombreConfiguracion(s, f, " configuracion predeterminada texto generico"));
    EXPECT_EQ(Textos(), std::vector<std::string>{"Ya existe una configuración con el nombre: - CONFIGURACION "
                                                 "PREDETERMINADA TEXTO GENERICO - \r\n"
                                                 "¿Desea cambiar a la configuración existente?"});
    EXPECT_EQ(f.Configuracion, "CONFIGURACION PREDETERMINADA TEXTO GENERICO");
    EXPECT_EQ(f.registro.PIniImporte, 8);
}

TEST_F(Configuraciones, FilasAusentesDanSusMensajes) {
    Forma(82);
    EstructuraDatosTxt registro;
    registro.PIniCuenta = 7;
    EXPECT_FALSE(CargaConfigEmpresa(s, "NO EXISTE", registro));
    EXPECT_EQ(registro.PIniCuenta, 7);
    EXPECT_FALSE(CopiaConfiguracion(s, *s.DbConfiguraciones, *s.DbEmpresa, "NO EXISTE"));
    EXPECT_EQ(Textos(), (std::vector<std::string>{"No se encontro la configuracion actual\r",
                                                  "No fue posible concluir el proceso\r"}));
}

TEST_F(Configuraciones, LongitudesFijasPermitidas) {
    EXPECT_EQ(ValidaLongitudNaturaleza(s, 1), 1);
    EXPECT_EQ(ValidaLongitudNaturaleza(s, 2), 1);
    EXPECT_EQ(ValidaLongitudNivel(s, 2), 2);
    EXPECT_EQ(ValidaLongitudNivel(s, 3), 1);
    EXPECT_EQ(Textos(), (std::vector<std::string>{"Valor No permitido para este parametro.\r",
                                                  "Valores permitidos para este parametro: 1 y 2 \r"}));
}

}  // namespace
