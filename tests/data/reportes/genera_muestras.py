#!/usr/bin/python3
# Writes the synthetic sample reports of the shipped descriptions, and for
# each one the same vouchers as a clean delimited file (the layout of the
# report tests: Num|Cta|Fecha|Tipo|Concepto|Ref|Cargo|Abono). No real
# report of these systems is at hand: each sample follows the markers and
# positions its description gives, with the page breaks of a printed
# report (repeated heads, titles, rules, totals). Run it from this folder
# after changing a layout; the files it writes are kept in the repository.

CATALOGO = [
    ("101", "Caja", "D", 1, "0"), ("10101", "Caja general", "D", 2, "0"),
    ("1010101", "Caja chica", "D", 3, "5000.00"),
    ("102", "Bancos", "D", 1, "0"), ("10201", "Bancos nacionales", "D", 2, "0"),
    ("1020101", "Banco del Norte", "D", 3, "120000.00"),
    ("115", "IVA acreditable", "D", 1, "0"), ("11501", "IVA por acreditar", "D", 2, "0"),
    ("1150101", "IVA 16%", "D", 3, "0"),
    ("201", "Proveedores", "A", 1, "0"), ("20101", "Proveedores nacionales", "A", 2, "0"),
    ("2010101", "Proveedor uno", "A", 3, "-125000.00"),
    ("209", "IVA trasladado", "A", 1, "0"), ("20901", "IVA por trasladar", "A", 2, "0"),
    ("2090101", "IVA 16% trasladado", "A", 3, "0"),
    ("401", "Ventas", "A", 1, "0"), ("40101", "Ventas nacionales", "A", 2, "0"),
    ("4010101", "Ventas de contado", "A", 3, "0"),
    ("601", "Gastos de operacion", "D", 1, "0"), ("60101", "Sueldos", "D", 2, "0"),
    ("6010101", "Sueldos administrativos", "D", 3, "0"), ("60201", "Rentas", "D", 2, "0"),
    ("6020101", "Renta de oficinas", "D", 3, "0"),
]

# (number, type index, day, concept, [(account, debit, credit, reference)])
# Type index: 0 journal, 1 income, 2 expense. 6990101 is not in the chart.
POLIZAS = [
    (1, 0, 15, "Provision de nomina de la primera quincena", [
        ("6010101", "15,000.00", "", "Nomina 1a quincena"),
        ("2010101", "", "15,000.00", "Por pagar"),
    ]),
    (2, 2, 20, "Pago de renta de enero", [
        ("6020101", "8,000.00", "", "Renta enero"),
        ("1150101", "1,280.00", "", "IVA de la renta"),
        ("1020101", "", "9,280.00", "Cheque 1234"),
        ("6990101", "100.00", "", "Sin cuenta en catalogo"),
        ("1020101", "", "100.00", "Ajuste"),
        ("6020101", "250.50", "", "Mantenimiento"),
        ("1020101", "", "250.50", "Cheque 1235"),
    ]),
    (3, 1, 31, "Ventas del mes", [
        ("1010101", "11,600.00", "", "Ventas de contado"),
        ("4010101", "", "10,000.00", "Ventas"),
        ("2090101", "", "1,600.00", "IVA trasladado"),
        ("1010101", "75.00", "75.00", "Cargo y abono a la vez"),
    ]),
]


def fecha(dia):
    return "%02d/01/2024" % dia


def campo(texto, largo, derecha=False):
    texto = texto[:largo]
    return texto.rjust(largo) if derecha else texto.ljust(largo)


def en(linea, pos, texto):
    """Puts `texto` at character position `pos` (from 1) of `linea`."""
    linea = linea.ljust(pos - 1 + len(texto))
    return linea[:pos - 1] + texto + linea[pos - 1 + len(texto):]


def suma(lineas, i):
    total = 0
    for l in lineas:
        if l[i]:
            total += int(l[i].replace(",", "").replace(".", ""))
    return "{:,}.{:02d}".format(total // 100, total % 100)


def importes(linea, debe, haber, fin_debe, fin_haber):
    """Puts the debit and the credit, when given, each right-aligned to end
    just before its column."""
    if debe:
        linea = en(linea, fin_debe - len(debe), debe)
    if haber:
        linea = en(linea, fin_haber - len(haber), haber)
    return linea


def totales(linea, partidas, fin_debe, fin_haber):
    """A voucher's totals line: the sums of its debits and credits placed as
    its lines' amounts are."""
    return importes(linea, suma(partidas, 1), suma(partidas, 2), fin_debe, fin_haber)


def escribe(nombre, lineas, codificacion="utf-8"):
    with open(nombre, "w", encoding=codificacion, newline="") as f:
        f.write("\r\n".join(lineas) + "\r\n")


def delimitado(nombre, numero, tipos, conConcepto=True):
    filas = ["Num|Cta|Fecha|Tipo|Concepto|Ref|Cargo|Abono"]
    for n, t, dia, concepto, partidas in POLIZAS:
        for cta, debe, haber, ref in partidas:
            filas.append("|".join([numero(n), cta, fecha(dia), tipos[t], concepto if conConcepto else "", ref,
                                   debe.replace(",", ""), haber.replace(",", "")]))
    escribe(nombre, filas)


# ------------------------------------------------------------ link 76, Sistema PASC
# Head: "POLIZA NUMERO" at 3, type (2) at 19, number (3) at 21, date (11) at 44;
# the concept on the next line, 80 characters at 19; a line: account (16) at
# 1, reference (55) at 44, debit (14) at 100, credit (17) at 116.

def pasc():
    tipos = ["Dr", "Ig", "Eg"]
    meses = "ENE"
    salida, hoja = [], [0]

    def titulos():
        hoja[0] += 1
        salida.append(en("\fGRUPO CE, S.A. DE C.V.", 110, "HOJA: %4d" % hoja[0]))
        salida.append(en("", 36, "POLIZAS DEL MES DE ENERO DE 2024"))
        salida.append("")
        salida.append(en(en(en("CUENTA", 19, "NOMBRE DE LA CUENTA"), 44, "REFERENCIA"), 100,
                         "        CARGOS           ABONOS"))
        salida.append("-" * 16 + " " + "-" * 26 + " " + "-" * 55 + " " + "-" * 14 + "  " + "-" * 17)

    def encabezado(n, t, dia, concepto):
        l = en(en(en("", 3, "POLIZA NUMERO"), 19, tipos[t] + "%03d" % n), 30, "FECHA:")
        salida.append(en(l, 44, "%02d/%s/2024" % (dia, meses)))
        salida.append(en("", 19, campo(concepto, 80)))

    titulos()
    renglones = 0
    for n, t, dia, concepto, partidas in POLIZAS:
        encabezado(n, t, dia, concepto)
        for i, (cta, debe, haber, ref) in enumerate(partidas):
            if renglones and renglones % 6 == 0:
                # Page break inside the voucher: the head comes again.
                salida.append(en("", 90, "CONTINUA EN LA SIGUIENTE HOJA"))
                titulos()
                encabezado(n, t, dia, concepto)
            l = en(en(campo(cta, 16), 19, "Nombre de la cuenta " + cta[:3]), 44, campo(ref, 55))
            l = importes(l, debe, haber, 114, 133)
            salida.append(l)
            renglones += 1
        salida.append(totales(en("", 60, "TOTAL DE LA POLIZA"), partidas, 114, 133))
        salida.append("")
    salida.append(en("", 30, "*** FIN DEL REPORTE ***"))
    escribe("076_pasc_ene.txt", salida)
    delimitado("076_pasc_ene.polizas.txt", lambda n: "%03d" % n, tipos)


# ------------------------------------------------------------ link 98, Sistema ARPON
# Head searched anywhere: "liza :" the number, "Fecha :" the date, "Tipo:"
# up to a second "Fecha :" the type; the voucher stays open up to its
# totals. A line: the account at 1 (seven digits, or formatted with "-" at
# 4), its name at 14, the debit's point between 60 and 75, the credit's
# between 76 and 95. The report comes in Windows-1252, and one head
# carries the accented letter as another code page left it.

def arpon():
    tipos = ["Diario", "Ingresos", "Egresos"]
    salida, hoja = [], [0]

    def titulos():
        hoja[0] += 1
        salida.append(en("\fSISTEMA ARPON - CONTABILIDAD", 80, "Página %d" % hoja[0]))
        salida.append("Libro de pólizas del 01/01/2024 al 31/01/2024")
        salida.append(en(en(en("Cuenta", 14, "Nombre"), 66, "Debe"), 86, "Haber"))
        salida.append("=" * 95)

    def cuenta(cta, n):
        # Vouchers of even number print the code formatted.
        return cta[:3] + "-" + cta[3:5] + "-" + cta[5:] if n % 2 == 0 else cta

    titulos()
    renglones = 0
    for n, t, dia, concepto, partidas in POLIZAS:
        marca = "P¢liza :" if n == 3 else "Póliza :"
        salida.append(en(en(en(marca + " %05d" % n, 25, "Fecha : " + fecha(dia)), 48, "Tipo: " + tipos[t]),
                         70, "Fecha : 02/02/2024"))
        for cta, debe, haber, ref in partidas:
            if renglones and renglones % 6 == 0:
                salida.append(en("", 60, "Continúa en la página %d" % (hoja[0] + 1)))
                titulos()
                salida.append(en(en("Póliza : %05d (continuación)" % n, 40, "Fecha : " + fecha(dia)), 70, "Tipo: " + tipos[t]))
            l = en(campo(cuenta(cta, n), 12), 14, campo(ref, 40))
            l = importes(l, debe, haber, 78, 98)
            salida.append(l)
            renglones += 1
            if n == 2 and cta == "6990101":
                # A line that looks like a voucher line and cannot be read.
                salida.append(en(en("101-99-XX", 14, "Cuenta mal impresa"), 75 - 6 + 3, "100.00"))
        salida.append(totales(en("", 20, "Sumas de la póliza"), partidas, 78, 98))
        salida.append("-" * 95)
    escribe("098_arpon_ene.txt", salida, "cp1252")
    # The report prints no concept of the voucher.
    delimitado("098_arpon_ene.polizas.txt", lambda n: "%05d" % n, tipos, False)


# ------------------------------------------------------------ the markers of other systems
# Each of these follows the marker its importer is known by, and positions
# chosen for the sample.

def microsip():
    # "(Continuacion)" marks a page that carries on the voucher. Head: type
    # at 3, number right-aligned in 7-12, date at 15, concept at 27. Line:
    # account at 7, name at 24, debit ending at 61, credit ending at 75.
    tipos = ["Dr", "Ig", "Eg"]
    salida, hoja = [], [0]

    def titulos():
        hoja[0] += 1
        salida.append(en(en("\fMICROSIP 6.0", 38, "DIARIO DE POLIZAS"), 76, "Pag. %3d" % hoja[0]))
        salida.append(en(en(en("Tipo", 7, "Numero"), 15, "Fecha"), 27, "Concepto"))
        salida.append("=" * 84)

    titulos()
    renglones = 0
    for n, t, dia, concepto, partidas in POLIZAS:
        cabeza = en(en(en("", 3, tipos[t]), 7, campo(str(n), 6, True)), 15, fecha(dia))
        salida.append(en(cabeza, 27, concepto))
        salida.append(en(en(en(en("", 7, "Cuenta"), 24, "Nombre"), 54, "Cargos"), 70, "Abonos"))
        for cta, debe, haber, ref in partidas:
            if renglones and renglones % 5 == 0:
                titulos()
                salida.append(en(cabeza, 27, "(Continuacion)"))
            l = en(en("", 7, cta[:3] + "-" + cta[3:5] + "-" + cta[5:]), 24, campo(ref, 24))
            l = importes(l, debe, haber, 62, 76)
            salida.append(l)
            renglones += 1
        salida.append(en(en("", 51, "-" * 11), 65, "-" * 11))
        salida.append(totales("", partidas, 62, 76))
        salida.append("")
    escribe("015_microsip_ene.txt", salida, "cp1252")
    delimitado("015_microsip_ene.polizas.txt", lambda n: str(n), tipos)


def starcon():
    # "===" rule lines. Head "POLIZA No. n   TIPO t   FECHA f", the concept on
    # the next line behind "CONCEPTO:". Line: a numeric account at 1, its
    # name at 10, the debit's point at 49, the credit's at 64.
    tipos = ["DIARIO", "INGRESOS", "EGRESOS"]
    salida, hoja = [], [0]

    def titulos():
        hoja[0] += 1
        salida.append(en("\fSTARCON 3.0   CONTABILIDAD GENERAL", 62, "HOJA %d" % hoja[0]))
        salida.append("REGISTRO DE POLIZAS DE ENERO DE 2024")

    def cabeza(n, t, dia, concepto):
        salida.append("=" * 74)
        salida.append(en(en("POLIZA No. %05d" % n, 20, "TIPO " + tipos[t]), 37, "FECHA " + fecha(dia).replace("/", "-")))
        salida.append("CONCEPTO: " + concepto)
        salida.append("=" * 74)

    titulos()
    renglones = 0
    for n, t, dia, concepto, partidas in POLIZAS:
        cabeza(n, t, dia, concepto)
        for cta, debe, haber, ref in partidas:
            if renglones and renglones % 5 == 0:
                titulos()
                cabeza(n, t, dia, concepto)
            l = en(cta, 10, campo(ref, 30))
            l = importes(l, debe, haber, 52, 67)
            salida.append(l)
            renglones += 1
        salida.append("-" * 74)
        salida.append(totales(en("", 10, "SUMA POLIZA"), partidas, 52, 67))
    escribe("029_starcon_ene.txt", salida, "cp1252")
    delimitado("029_starcon_ene.polizas.txt", lambda n: "%05d" % n, tipos)


def proscai():
    # "===" rule lines around the headings, whose "Cargo" and "Abono" give the
    # amount columns. Head "Póliza: Dr-000001  Fecha: dd/mm/aaaa" and the
    # concept at 39. Line: a numeric account at 1, its name at 14.
    tipos = ["Dr", "Ig", "Eg"]
    salida, hoja = [], [0]

    def titulos():
        hoja[0] += 1
        salida.append(en(en("\fPROSCAI", 43, "Pólizas contables"), 74, "Hoja %d" % hoja[0]))
        salida.append("=" * 80)
        salida.append(en(en(en("Cuenta", 14, "Descripción"), 55, "Cargo"), 70, "Abono"))
        salida.append("=" * 80)

    def cabeza(n, t, dia, concepto):
        salida.append(en(en("Póliza: %s-%06d" % (tipos[t], n), 20, "Fecha: " + fecha(dia)), 39, concepto))

    titulos()
    renglones = 0
    for n, t, dia, concepto, partidas in POLIZAS:
        cabeza(n, t, dia, concepto)
        for cta, debe, haber, ref in partidas:
            if renglones and renglones % 6 == 0:
                titulos()
                cabeza(n, t, dia, concepto)
            l = en(cta, 14, campo(ref, 38))
            l = importes(l, debe, haber, 62, 77)
            salida.append(l)
            renglones += 1
        salida.append(totales(en("", 43, "Total"), partidas, 62, 77))
    escribe("042_proscai_ene.txt", salida, "cp1252")
    delimitado("042_proscai_ene.polizas.txt", lambda n: "%06d" % n, tipos)


def magic():
    # "TOTALES DE CONTROL" closes a voucher. Head "POL: tt nnnnnn  FECHA: f
    # CONCEPTO: c", repeated on a page that carries on the voucher. Line: the
    # account formatted at 4, its name at 16, debit in 46-57, credit in 60-74.
    tipos = ["DR", "IN", "EG"]
    salida, hoja = [], [0]

    def titulos():
        hoja[0] += 1
        salida.append(en(en("\fADISYS - MAGIC", 33, "AUXILIAR DE POLIZAS"), 68, "Pag. %d" % hoja[0]))
        salida.append("")

    def cabeza(n, t, dia, concepto):
        salida.append("POL: %s %06d   FECHA: %s   CONCEPTO: %s" % (tipos[t], n, fecha(dia), concepto))

    titulos()
    renglones = 0
    for n, t, dia, concepto, partidas in POLIZAS:
        cabeza(n, t, dia, concepto)
        for cta, debe, haber, ref in partidas:
            if renglones and renglones % 5 == 0:
                titulos()
                cabeza(n, t, dia, concepto)
            l = en(en("", 4, cta[:3] + "-" + cta[3:5] + "-" + cta[5:]), 16, campo(ref, 28))
            l = importes(l, debe, haber, 58, 75)
            salida.append(l)
            renglones += 1
        salida.append(totales(en("", 4, "TOTALES DE CONTROL"), partidas, 58, 75))
        salida.append("")
    escribe("101_magic_ene.txt", salida, "cp1252")
    delimitado("101_magic_ene.polizas.txt", lambda n: "%06d" % n, tipos)


# ------------------------------------------------------------ link 2, COI 5
# The amount columns by the positions of "Debe" and "Haber" in the heading
# that starts with "No. de cuenta"; amounts right-aligned under them. Head:
# "Póliza" in the first 7 characters, type (2) at 12, number (6) at 18, date
# (9) at 35, concept from 57. A line: the account as long as the format at
# 1, its reference from 76. A page that carries on a voucher ends with
# "CONTINUA EN EL FOLIO" and repeats the head.

def coi50():
    tipos = ["Dr", "Ig", "Eg"]
    salida, hoja = [], [0]

    def titulos():
        hoja[0] += 1
        salida.append(en("\fCOMPAÑIA DEMO, S.A. DE C.V.", 70, "Folio: %d" % hoja[0]))
        salida.append("Pólizas del mes de Enero de 2024")
        salida.append(en(en(en("No. de cuenta", 16, "Nombre de la cuenta"), 50, "Debe"), 65, "Haber") + "      Referencia")
        salida.append("-" * 100)

    def cabeza(n, t, dia, concepto):
        l = en(en(en("Póliza", 12, tipos[t]), 18, "%6d" % n), 35, "%02d/Ene/24" % dia)
        salida.append(en(l, 57, concepto))

    titulos()
    renglones = 0
    for n, t, dia, concepto, partidas in POLIZAS:
        cabeza(n, t, dia, concepto)
        for cta, debe, haber, ref in partidas:
            if renglones and renglones % 6 == 0:
                salida.append(en("", 40, "CONTINUA EN EL FOLIO %d" % (hoja[0] + 1)))
                titulos()
                cabeza(n, t, dia, concepto)
            l = en(cta[:3] + "-" + cta[3:5] + "-" + cta[5:], 16, campo("Cuenta " + cta[:3], 25))
            l = importes(l, debe, haber, 54, 70)
            salida.append(en(l, 76, ref))
            renglones += 1
        salida.append(en(en("", 45, "-" * 9), 61, "-" * 9))
        salida.append(totales("Total de la póliza", partidas, 54, 70))
    escribe("002_coi50_ene.txt", salida, "cp1252")
    delimitado("002_coi50_ene.polizas.txt", lambda n: str(n), tipos)


# ------------------------------------------------------------ link 100, COI 6
# Every position comes from the heading, which moves between versions: the
# line with the number's heading ("Número", or "N?mero" and "Nzmero" as
# other code pages leave it) gives "Tipo", the number, the first "Fecha" and
# "Concepto de la p"; the line with "Debe" and "Haber" gives those and
# "Concepto del movimiento". A head: a number under its heading. Amounts
# by their decimal point near their heading; "Totales:" closes a voucher.

def coi60():
    tipos = ["Dr", "Ig", "Eg"]
    numeros = ["Número", "N?mero", "Nzmero"]
    salida, hoja = [], [0]

    def titulos():
        hoja[0] += 1
        # Each page prints its heading with the columns a little moved.
        d = hoja[0] - 1
        salida.append(en("\fEMPRESA DEMO COI 6", 80, "Hoja: %d" % hoja[0]))
        salida.append(en(en(en(en("", 3 + d, "Tipo"), 9 + d, numeros[d % 3]), 17 + d, "Fecha"),
                         30 + d, "Concepto de la póliza"))
        salida.append(en(en(en("No. de cuenta", 15 + d, "Concepto del movimiento"), 52 + d, "Debe"), 68 + d, "Haber"))
        salida.append("=" * 90)
        return d

    def cabeza(d, n, t, dia, concepto):
        l = en(en(en(en("", 3 + d, tipos[t]), 9 + d, "%d" % n), 17 + d, fecha(dia)), 30 + d, concepto)
        salida.append(l)

    d = titulos()
    renglones = 0
    for n, t, dia, concepto, partidas in POLIZAS:
        cabeza(d, n, t, dia, concepto)
        for cta, debe, haber, ref in partidas:
            if renglones and renglones % 5 == 0:
                salida.append(en("", 40, "CONTINUA EN EL FOLIO %d" % (hoja[0] + 1)))
                d = titulos()
                cabeza(d, n, t, dia, concepto)
            l = en(cta[:3] + "-" + cta[3:5] + "-" + cta[5:], 15 + d, campo(ref, 30))
            l = importes(l, debe, haber, 56 + d, 73 + d)
            salida.append(l)
            renglones += 1
        salida.append(totales(en("", 30, "Totales:"), partidas, 56 + d, 73 + d))
        salida.append("")
    salida.append(en("", 20, "Total de la póliza y del mes"))
    escribe("100_coi60_ene.txt", salida, "cp1252")
    delimitado("100_coi60_ene.polizas.txt", lambda n: str(n), tipos)


def catalogo():
    filas = ["Cuenta|Descripcion|Naturaleza|Nivel|Saldo"]
    for cta, nombre, nat, nivel, saldo in CATALOGO:
        filas.append("|".join([cta, nombre, nat, str(nivel), saldo]))
    escribe("catalogo.txt", filas)


if __name__ == "__main__":
    catalogo()
    pasc()
    arpon()
    microsip()
    starcon()
    proscai()
    magic()
    coi50()
    coi60()
