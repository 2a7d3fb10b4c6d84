// velmorant-genera-demo: writes a realistic client's year in the delimited
// text layout of the demo ("|" separated, a title row, Windows-1252), from a
// fixed seed, so the same command always writes the same bytes.
//
//   velmorant-genera-demo DIR [--variante 2] [--lineas N] [--xml]
//   velmorant-genera-demo --trabajo-revision EMPRESA.sqlite
//
// Variant 1 is the first delivery of the client's books; variant 2 is the
// same year delivered again with the changes an auditor meets on a
// re-import (a concept edited, a voucher dropped, one added, an amount
// changed, a line added on a new account, a line moved within its voucher).
// --lineas asks for roughly N voucher lines over the year (benchmarks).
// --xml writes the same year also as the electronic-accounting XML files
// of version 1.3 (link 135): catalogo.xml, balanza_01.xml to
// balanza_12.xml (balances signed by the account's nature, as the
// country's systems write them) and polizas_01.xml to polizas_12.xml (the
// voucher type before its number, "Ig-12"; each sale's invoice folio on
// the customer's line).
// --trabajo-revision writes the auditor's review work into a company that
// holds the first delivery (see TrabajoRevision.h).

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "platform/Fecha.h"
#include "platform/Moneda.h"
#include "EntregaGenerada.h"
#include "TrabajoRevision.h"

namespace {

using velmorant::Fecha;
using velmorant::Moneda;

// splitmix64: portable and deterministic, unlike the standard distributions.
class Azar {
public:
    explicit Azar(std::uint64_t semilla) : s_(semilla) {}
    std::uint64_t siguiente() {
        std::uint64_t z = (s_ += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }
    long entre(long a, long b) { return a + static_cast<long>(siguiente() % static_cast<std::uint64_t>(b - a + 1)); }
    template <class T>
    const T& elige(const std::vector<T>& v) {
        return v[static_cast<size_t>(entre(0, static_cast<long>(v.size()) - 1))];
    }

private:
    std::uint64_t s_;
};

// UTF-8 source text to Windows-1252 bytes (the Latin-1 range is enough here).
std::string Cp1252(const std::string& utf8) {
    std::string r;
    for (size_t i = 0; i < utf8.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(utf8[i]);
        if (c < 0x80) {
            r += static_cast<char>(c);
        } else if ((c & 0xE0) == 0xC0 && i + 1 < utf8.size()) {
            unsigned cp = ((c & 0x1Fu) << 6) | (static_cast<unsigned char>(utf8[++i]) & 0x3Fu);
            r += static_cast<char>(cp < 256 ? cp : '?');
        } else {
            r += '?';
        }
    }
    return r;
}

struct Cuenta {
    std::string codigo;  // "102-01-03"
    std::string nombre;
    char naturaleza;
    int nivel;
    std::string padre;
    Moneda saldo;
};

struct Grupo {
    int mayor;
    const char* nombre;
    char naturaleza;
    std::vector<const char*> subcuentas;
    std::vector<const char*> detalles;
};

// The chart: level 1 groups, level 2 sub-accounts, level 3 detail accounts.
std::vector<Grupo> Grupos() {
    return {
        {101, "Caja", 'D', {"Caja general", "Fondos fijos"}, {"Matriz", "Sucursal Norte", "Sucursal Sur"}},
        {102, "Bancos", 'D', {"Banco del Norte", "Banco Mercantil", "Banco del Pacífico"},
         {"Cuenta de cheques", "Cuenta de inversión", "Cuenta en dólares"}},
        {105, "Clientes", 'D', {"Clientes nacionales", "Clientes extranjeros", "Partes relacionadas"},
         {"Distribuidora Álamo", "Comercial Benítez", "Grupo Cárdenas", "Ferretería Núñez", "Abarrotes Peña"}},
        {107, "Deudores diversos", 'D', {"Funcionarios y empleados", "Otros deudores"}, {"Préstamos", "Gastos por comprobar"}},
        {115, "Inventarios", 'D', {"Materia prima", "Producto terminado", "Mercancía en tránsito"},
         {"Almacén central", "Almacén regional"}},
        {118, "IVA acreditable", 'D', {"IVA acreditable pagado", "IVA pendiente de acreditar"}, {"Tasa general", "Importaciones"}},
        {120, "Pagos anticipados", 'D', {"Seguros", "Rentas"}, {"Vigentes", "Por devengar"}},
        {151, "Mobiliario y equipo", 'D', {"Mobiliario de oficina", "Equipo de almacén"}, {"Matriz", "Sucursales"}},
        {152, "Equipo de transporte", 'D', {"Automóviles", "Camiones de reparto"}, {"Flotilla 1", "Flotilla 2", "Flotilla 3"}},
        {153, "Equipo de cómputo", 'D', {"Servidores", "Equipo personal"}, {"Matriz", "Sucursales"}},
        {171, "Depreciación acumulada", 'A', {"De mobiliario", "De transporte", "De cómputo"}, {"Histórica", "Actualización"}},
        {201, "Proveedores", 'A', {"Proveedores nacionales", "Proveedores extranjeros"},
         {"Aceros del Bajío", "Empaques Orozco", "Transportes Ibarra", "Químicos Saldaña", "Papelería Ortíz"}},
        {205, "Acreedores diversos", 'A', {"Acreedores varios", "Honorarios por pagar"}, {"Nacionales", "Extranjeros"}},
        {208, "IVA trasladado", 'A', {"IVA cobrado", "IVA por cobrar"}, {"Tasa general", "Tasa fronteriza"}},
        {213, "Impuestos por pagar", 'A', {"ISR por pagar", "Cuotas IMSS", "Impuesto sobre nóminas"}, {"Del ejercicio", "Actualizaciones"}},
        {216, "Retenciones", 'A', {"ISR retenido", "IVA retenido"}, {"Por sueldos", "Por honorarios", "Por arrendamiento"}},
        {301, "Capital social", 'A', {"Capital fijo", "Capital variable"}, {"Serie A", "Serie B"}},
        {304, "Resultados de ejercicios anteriores", 'A', {"Utilidades acumuladas", "Pérdidas acumuladas"}, {"Histórico", "Reexpresión"}},
        {401, "Ventas", 'A', {"Ventas nacionales", "Ventas de exportación"}, {"Línea industrial", "Línea comercial", "Línea hogar"}},
        {402, "Devoluciones sobre ventas", 'D', {"Devoluciones", "Descuentos"}, {"Línea industrial", "Línea comercial"}},
        {501, "Costo de ventas", 'D', {"Costo nacional", "Costo de exportación"}, {"Línea industrial", "Línea comercial", "Línea hogar"}},
        {601, "Gastos de venta", 'D', {"Sueldos de ventas", "Publicidad", "Fletes", "Comisiones"}, {"Matriz", "Sucursal Norte", "Sucursal Sur"}},
        {602, "Gastos de administración", 'D', {"Sueldos administrativos", "Renta", "Luz y teléfono", "Honorarios", "Depreciación"},
         {"Matriz", "Sucursales"}},
        {701, "Gastos financieros", 'D', {"Comisiones bancarias", "Intereses pagados"}, {"Banco del Norte", "Banco Mercantil"}},
        {702, "Productos financieros", 'A', {"Intereses ganados", "Utilidad cambiaria"}, {"Banco del Norte", "Banco Mercantil"}},
    };
}

std::string Codigo(int mayor, int sub, int det) {
    char b[16];
    std::snprintf(b, sizeof b, "%03d-%02d-%02d", mayor, sub, det);
    return b;
}

// Text for an XML attribute value.
std::string Atributo(const std::string& t) {
    std::string r;
    for (char c : t) {
        switch (c) {
            case '&': r += "&amp;"; break;
            case '<': r += "&lt;"; break;
            case '>': r += "&gt;"; break;
            case '"': r += "&quot;"; break;
            default: r += c;
        }
    }
    return r;
}

std::string DosDigitos(int n) {
    char b[8];
    std::snprintf(b, sizeof b, "%02d", n);
    return b;
}

constexpr const char* kRfcDemo = "CDE010101AB1";
constexpr const char* kEspacioSat = "http://www.sat.gob.mx/esquemas/ContabilidadE/1_3/";

class Generador {
public:
    Generador(int variante, long lineasPedidas) : variante_(variante), lineasPedidas_(lineasPedidas), azar_(20250101) {}

    void escribe(const std::filesystem::path& dir, bool xml) {
        armaCatalogo();
        std::filesystem::create_directories(dir);
        escribeCatalogo(dir / "catalogo.txt");
        if (xml) escribeCatalogoXml(dir / "catalogo.xml");
        long lineas = 0;
        for (int mes = 1; mes <= 12; ++mes) {
            std::vector<Poliza> polizas = polizasDelMes(mes);
            lineas += escribeMes(velmorant::demo::ArchivoDelMes(dir, mes), polizas);
            if (!xml) continue;
            escribePolizasXml(dir / ("polizas_" + DosDigitos(mes) + ".xml"), mes, polizas);
            acumula(mes, polizas);
        }
        if (xml)
            for (int mes = 1; mes <= 12; ++mes) escribeBalanzaXml(dir / ("balanza_" + DosDigitos(mes) + ".xml"), mes);
        std::cout << "Catálogo: " << cuentas_.size() << " cuentas; pólizas: " << polizas_ << "; partidas: " << lineas
                  << " (variante " << variante_ << ")" << (xml ? "; también en XML" : "") << "\n";
    }

private:
    int variante_;
    long lineasPedidas_;
    Azar azar_;
    std::vector<Cuenta> cuentas_;
    std::map<int, std::vector<std::string>> detalles_;  // level 1 → detail codes
    long polizas_ = 0;

    void armaCatalogo() {
        for (auto& g : Grupos()) {
            std::string mayor = Codigo(g.mayor, 0, 0);
            cuentas_.push_back({mayor, g.nombre, g.naturaleza, 1, "", Moneda()});
            for (size_t s = 0; s < g.subcuentas.size(); ++s) {
                std::string sub = Codigo(g.mayor, static_cast<int>(s + 1), 0);
                cuentas_.push_back({sub, g.subcuentas[s], g.naturaleza, 2, mayor, Moneda()});
                for (size_t d = 0; d < g.detalles.size(); ++d) {
                    std::string det = Codigo(g.mayor, static_cast<int>(s + 1), static_cast<int>(d + 1));
                    cuentas_.push_back({det, g.detalles[d], g.naturaleza, 3, sub, Moneda()});
                    detalles_[g.mayor].push_back(det);
                }
            }
        }
        // The re-import brings one new detail account, used by a new line.
        if (variante_ == 2) {
            cuentas_.push_back({Codigo(602, 6, 1), "Capacitación", 'D', 3, Codigo(602, 6, 0), Moneda()});
            cuentas_.push_back({Codigo(602, 6, 0), "Capacitación y desarrollo", 'D', 2, Codigo(602, 0, 0), Moneda()});
        }
        asignaSaldosIniciales();
    }

    // Opening balances on detail accounts of the balance sheet, adding to
    // zero: capital absorbs the difference.
    void asignaSaldosIniciales() {
        Moneda suma;
        Cuenta* capital = nullptr;
        for (auto& c : cuentas_) {
            if (c.nivel != 3) continue;
            int mayor = std::atoi(c.codigo.c_str());
            if (mayor >= 400) continue;
            if (c.codigo == Codigo(301, 1, 1)) {
                capital = &c;
                continue;
            }
            Moneda importe = Moneda::desdeDiezmilesimas(azar_.entre(5000, 90000000) * 100);
            c.saldo = c.naturaleza == 'D' ? importe : -importe;
            suma += c.saldo;
        }
        capital->saldo = -suma;
        // A parent shows the sum of its children, as a client's chart does.
        for (int nivel = 2; nivel >= 1; --nivel)
            for (auto& padre : cuentas_) {
                if (padre.nivel != nivel) continue;
                padre.saldo = Moneda();
                for (auto& hija : cuentas_)
                    if (hija.padre == padre.codigo) padre.saldo += hija.saldo;
            }
    }

    void escribeCatalogo(const std::filesystem::path& ruta) {
        std::ofstream f(ruta, std::ios::binary);
        f << "Cuenta|Descripcion|Naturaleza|Nivel|CuentaPadre|SaldoInicial\r\n";
        for (auto& c : cuentas_)
            f << Cp1252(c.codigo + "|" + c.nombre + "|" + c.naturaleza + "|" + std::to_string(c.nivel) + "|" + c.padre +
                        "|" + c.saldo.texto())
              << "\r\n";
    }

    struct Linea {
        std::string cuenta, referencia;
        Moneda cargo, abono;
    };
    struct Poliza {
        std::string numero, tipo, concepto;
        Fecha fecha;
        std::vector<Linea> lineas;
    };

    Moneda Importe(long minimo, long maximo) { return Moneda::desdeDiezmilesimas(azar_.entre(minimo, maximo) * 100); }
    Moneda Iva(Moneda base) { return base.multiplica(0.16).multiplica(0.01, velmorant::Redondeo::MitadLejosDeCero).multiplica(100); }
    const std::string& Det(int mayor) { return azar_.elige(detalles_[mayor]); }

    Poliza Venta(int n) {
        Moneda base = Importe(50000, 4000000), iva = Iva(base);
        std::string cliente = Det(105);
        return {"", "Ig", "Venta factura A-" + std::to_string(n), {},
                {{cliente, "Factura A-" + std::to_string(n), base + iva, {}},
                 {Det(401), "Venta de mercancía", {}, base},
                 {Det(208), "IVA trasladado", {}, iva}}};
    }
    Poliza Compra(int n) {
        Moneda base = Importe(30000, 2500000), iva = Iva(base);
        return {"", "Eg", "Compra de mercancía pedido " + std::to_string(n), {},
                {{Det(115), "Entrada al almacén", base, {}},
                 {Det(118), "IVA acreditable", iva, {}},
                 {Det(201), "Pedido " + std::to_string(n), {}, base + iva}}};
    }
    Poliza Gasto(int n) {
        Moneda base = Importe(5000, 600000), iva = Iva(base);
        int mayor = azar_.entre(0, 1) ? 601 : 602;
        return {"", "Eg", "Pago de gastos varios " + std::to_string(n), {},
                {{Det(mayor), "Gasto según comprobante", base, {}},
                 {Det(118), "IVA acreditable", iva, {}},
                 {Det(102), "Cheque " + std::to_string(1000 + n), {}, base + iva}}};
    }
    Poliza Cobranza(int n) {
        Moneda importe = Importe(20000, 3000000);
        return {"", "Ig", "Cobranza a clientes " + std::to_string(n), {},
                {{Det(102), "Depósito", importe, {}}, {Det(105), "Abono a factura", {}, importe}}};
    }
    Poliza Nomina(int mes) {
        Poliza p{"", "Dr", "Nómina del mes " + std::to_string(mes), {}, {}};
        Moneda total;
        for (int i = 0; i < 6; ++i) {
            Moneda sueldo = Importe(800000, 2500000);
            p.lineas.push_back({Det(i % 2 ? 601 : 602), "Sueldos y salarios", sueldo, {}});
            total += sueldo;
        }
        Moneda retencion = total.multiplica(0.1).multiplica(0.01).multiplica(100);
        p.lineas.push_back({Det(216), "ISR retenido", {}, retencion});
        p.lineas.push_back({Det(102), "Pago de nómina", {}, total - retencion});
        return p;
    }
    Poliza Depreciacion(int mes) {
        Moneda importe = Importe(100000, 900000);
        return {"", "Dr", "Depreciación del mes " + std::to_string(mes), {},
                {{Det(602), "Depreciación", importe, {}}, {Det(171), "Depreciación acumulada", {}, importe}}};
    }

    std::vector<Poliza> polizasDelMes(int mes) {
        long porMes = lineasPedidas_ > 0 ? lineasPedidas_ / 12 : 2600;
        std::vector<Poliza> r;
        long lineas = 0;
        int n = 0;
        // The defects and the second delivery's changes reach the 14th
        // voucher of a month: a small year still has that many.
        while (lineas < porMes || r.size() < 14) {
            ++n;
            Poliza p;
            switch (azar_.entre(0, 3)) {
                case 0: p = Venta(mes * 1000 + n); break;
                case 1: p = Compra(mes * 1000 + n); break;
                case 2: p = Gasto(mes * 1000 + n); break;
                default: p = Cobranza(mes * 1000 + n); break;
            }
            p.fecha = Fecha(2025, mes, static_cast<int>(azar_.entre(1, Fecha::DiasDelMes(2025, mes))));
            lineas += static_cast<long>(p.lineas.size());
            r.push_back(std::move(p));
        }
        r.push_back(Nomina(mes));
        r.back().fecha = Fecha(2025, mes, Fecha::DiasDelMes(2025, mes));
        r.push_back(Depreciacion(mes));
        r.back().fecha = Fecha(2025, mes, Fecha::DiasDelMes(2025, mes));
        numera(r);
        if (mes == 3) agregaDefectos(r);
        if (variante_ == 2) aplicaCambios(r, mes);
        return r;
    }

    // Vouchers are numbered per type within the month, in date order.
    static void numera(std::vector<Poliza>& v) {
        std::map<std::string, int> siguiente;
        std::stable_sort(v.begin(), v.end(), [](const Poliza& a, const Poliza& b) { return a.fecha < b.fecha; });
        for (auto& p : v) p.numero = std::to_string(++siguiente[p.tipo]);
    }

    // What a real client's books bring: an unbalanced voucher, a line on an
    // account the chart does not have, and a line on an accumulative one.
    void agregaDefectos(std::vector<Poliza>& v) {
        v[3].lineas[0].cargo += Moneda::desdeTexto("0.01").value();
        v[5].lineas.push_back({"999-01-01", "Cuenta inexistente", Moneda::desdeTexto("150").value(), {}});
        v[5].lineas.push_back({Det(601), "Contrapartida", {}, Moneda::desdeTexto("150").value()});
        v[7].lineas.push_back({Codigo(601, 1, 0), "Cargo a cuenta acumulativa", Moneda::desdeTexto("75.5").value(), {}});
        v[7].lineas.push_back({Det(102), "Contrapartida", {}, Moneda::desdeTexto("75.5").value()});
    }

    // The second delivery of the year: what the client changed since.
    // The random state is put back afterwards, so that every other voucher
    // of the year is the same as in the first delivery.
    void aplicaCambios(std::vector<Poliza>& v, int mes) {
        Azar guardado = azar_;
        cambia(v, mes);
        azar_ = guardado;
    }

    void cambia(std::vector<Poliza>& v, int mes) {
        if (mes == 2) v[10].concepto += " (corregido)";
        if (mes == 4) v.erase(v.begin() + 12);
        if (mes == 5) {
            Poliza nueva = Cobranza(5999);
            nueva.numero = "9001";
            nueva.fecha = Fecha(2025, 5, 20);
            v.push_back(nueva);
        }
        if (mes == 6) {
            auto& l = v[8].lineas;
            Moneda delta = Moneda::desdeTexto("100").value();
            l[0].cargo += delta;
            l[0].abono += Moneda();
            for (auto it = l.rbegin(); it != l.rend(); ++it)
                if (!it->abono.esCero()) {
                    it->abono += delta;
                    break;
                }
        }
        if (mes == 7) {
            Moneda curso = Moneda::desdeTexto("2500").value();
            v[9].lineas.push_back({Codigo(602, 6, 1), "Curso de capacitación", curso, {}});
            v[9].lineas.push_back({Det(102), "Pago curso", {}, curso});
        }
        if (mes == 8) std::swap(v[6].lineas.front(), v[6].lineas.back());
    }

    long escribeMes(const std::filesystem::path& ruta, const std::vector<Poliza>& polizas) {
        std::ofstream f(ruta, std::ios::binary);
        f << "Poliza|Tipo|Dia|Mes|Anio|Cuenta|Referencia|Concepto|Cargo|Abono\r\n";
        long lineas = 0;
        for (auto& p : polizas) {
            ++polizas_;
            for (auto& l : p.lineas) {
                f << Cp1252(p.numero + "|" + p.tipo + "|" + std::to_string(p.fecha.dia()) + "|" +
                            std::to_string(p.fecha.mes()) + "|" + std::to_string(p.fecha.anio()) + "|" + l.cuenta + "|" +
                            l.referencia + "|" + p.concepto + "|" + l.cargo.texto() + "|" + l.abono.texto())
                  << "\r\n";
                ++lineas;
            }
        }
        return lineas;
    }

    // ------------------------------------------------ Electronic accounting

    // Debits and credits of each account of the chart by month, with those
    // of the accounts below it, as the client's system adds them up: every
    // line on an account of the chart counts, on an accumulative one too.
    std::map<std::string, std::array<std::pair<Moneda, Moneda>, 12>> movimientos_;

    const Cuenta* BuscaCuenta(const std::string& codigo) const {
        for (auto& c : cuentas_)
            if (c.codigo == codigo) return &c;
        return nullptr;
    }

    void acumula(int mes, const std::vector<Poliza>& polizas) {
        for (auto& p : polizas)
            for (auto& l : p.lineas)
                for (const Cuenta* c = BuscaCuenta(l.cuenta); c; c = c->padre.empty() ? nullptr : BuscaCuenta(c->padre)) {
                    auto& m = movimientos_[c->codigo][static_cast<size_t>(mes - 1)];
                    m.first += l.cargo;
                    m.second += l.abono;
                }
    }

    static std::string Raiz(const std::string& raiz, const std::string& espacio, const std::string& atributos) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<" + raiz + " xmlns:" + raiz.substr(0, raiz.find(':')) +
               "=\"" + kEspacioSat + espacio + "\" Version=\"1.3\" RFC=\"" + kRfcDemo + "\" " + atributos + ">\n";
    }

    void escribeCatalogoXml(const std::filesystem::path& ruta) {
        std::ofstream f(ruta, std::ios::binary);
        f << Raiz("catalogocuentas:Catalogo", "CatalogoCuentas", "Mes=\"01\" Anio=\"2025\"");
        for (auto& c : cuentas_) {
            std::string agrupador = c.codigo.substr(0, 3) + (c.nivel > 1 ? "." + c.codigo.substr(4, 2) : "");
            f << "  <catalogocuentas:Ctas CodAgrup=\"" << agrupador << "\" NumCta=\"" << c.codigo << "\" Desc=\""
              << Atributo(c.nombre) << "\"" << (c.padre.empty() ? "" : " SubCtaDe=\"" + c.padre + "\"") << " Nivel=\""
              << c.nivel << "\" Natur=\"" << c.naturaleza << "\"/>\n";
        }
        f << "</catalogocuentas:Catalogo>\n";
    }

    void escribePolizasXml(const std::filesystem::path& ruta, int mes, const std::vector<Poliza>& polizas) {
        std::ofstream f(ruta, std::ios::binary);
        f << Raiz("PLZ:Polizas", "PolizasPeriodo",
                  "Mes=\"" + DosDigitos(mes) + "\" Anio=\"2025\" TipoSolicitud=\"AF\" NumOrden=\"ABC6912345/12\"");
        for (auto& p : polizas) {
            f << "  <PLZ:Poliza NumUnIdenPol=\"" << Atributo(p.tipo + "-" + p.numero) << "\" Fecha=\"" << p.fecha.iso()
              << "\" Concepto=\"" << Atributo(p.concepto) << "\">\n";
            for (auto& l : p.lineas) {
                const Cuenta* c = BuscaCuenta(l.cuenta);
                f << "    <PLZ:Transaccion NumCta=\"" << l.cuenta << "\" DesCta=\"" << Atributo(c ? c->nombre : "")
                  << "\" Concepto=\"" << Atributo(l.referencia) << "\" Debe=\"" << l.cargo.texto() << "\" Haber=\""
                  << l.abono.texto() << "\"";
                // A sale's customer line carries the folio of its invoice.
                const std::string factura = "Factura A-";
                if (l.referencia.rfind(factura, 0) == 0) {
                    char uuid[40];
                    std::snprintf(uuid, sizeof uuid, "A0000000-0000-4000-8000-%012ld",
                                  std::atol(l.referencia.c_str() + factura.size()));
                    f << ">\n      <PLZ:CompNal UUID_CFDI=\"" << uuid << "\" RFC=\"XAXX010101000\" MontoTotal=\""
                      << l.cargo.texto() << "\"/>\n    </PLZ:Transaccion>\n";
                } else {
                    f << "/>\n";
                }
            }
            f << "  </PLZ:Poliza>\n";
        }
        f << "</PLZ:Polizas>\n";
    }

    // Balances signed by the account's nature: a credit account in credit
    // shows a positive balance.
    void escribeBalanzaXml(const std::filesystem::path& ruta, int mes) {
        std::ofstream f(ruta, std::ios::binary);
        f << Raiz("BCE:Balanza", "BalanzaComprobacion", "Mes=\"" + DosDigitos(mes) + "\" Anio=\"2025\" TipoEnvio=\"N\"");
        for (auto& c : cuentas_) {
            Moneda inicial = c.saldo, debe, haber;
            auto it = movimientos_.find(c.codigo);
            if (it != movimientos_.end()) {
                for (int k = 0; k < mes - 1; ++k) inicial += it->second[static_cast<size_t>(k)].first - it->second[static_cast<size_t>(k)].second;
                debe = it->second[static_cast<size_t>(mes - 1)].first;
                haber = it->second[static_cast<size_t>(mes - 1)].second;
            }
            Moneda final = inicial + debe - haber;
            if (c.naturaleza == 'A') {
                inicial = -inicial;
                final = -final;
            }
            f << "  <BCE:Ctas NumCta=\"" << c.codigo << "\" SaldoIni=\"" << inicial.texto() << "\" Debe=\"" << debe.texto()
              << "\" Haber=\"" << haber.texto() << "\" SaldoFin=\"" << final.texto() << "\"/>\n";
        }
        f << "</BCE:Balanza>\n";
    }
};

}  // namespace

constexpr const char* kUso =
    "Uso: velmorant-genera-demo DIR [--variante 1|2] [--lineas N] [--xml]\n"
    "     velmorant-genera-demo --trabajo-revision EMPRESA.sqlite\n\n"
    "Escribe en DIR el ejercicio de un cliente de demostración en texto delimitado por '|'\n"
    "(variante 1: la primera entrega; 2: la segunda, con los cambios de una reimportación),\n"
    "con --xml también en los XML de contabilidad electrónica,\n"
    "o el trabajo de revisión del auditor en la base de la empresa.\n";

int main(int argc, char** argv) {
    std::string primero = argc > 1 ? argv[1] : "";
    if (primero == "--help" || primero == "-h") {
        std::cout << kUso;
        return 0;
    }
    // The folder comes first; an option in its place is a mistake, not a folder name.
    if (argc < 2 || (primero.rfind("-", 0) == 0 && primero != "--trabajo-revision")) {
        std::cerr << kUso;
        return 2;
    }
    if (std::string(argv[1]) == "--trabajo-revision" && argc == 3) {
        std::cout << velmorant::demo::EscribeTrabajoRevision(argv[2]) << "\n";
        return 0;
    }
    int variante = 1;
    long lineas = 0;
    bool xml = false;
    for (int i = 2; i < argc; ++i) {
        std::string op = argv[i];
        if (op == "--xml") xml = true;
        else if (op == "--variante" && i + 1 < argc) variante = std::atoi(argv[++i]);
        else if (op == "--lineas" && i + 1 < argc) lineas = std::atol(argv[++i]);
        else {
            std::cerr << "opción desconocida: " << op << "\n";
            return 2;
        }
    }
    Generador(variante, lineas).escribe(argv[1], xml);
    return 0;
}
