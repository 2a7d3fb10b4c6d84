#!/usr/bin/python3
"""Writes the seed corpora of the fuzz targets into corpus/<target>/.

Run with Debian's /usr/bin/python3 (python3-dbf and python3-xlwt live
there). The files written are committed; run it again only to change them.
"""
import io
import os
import shutil
import struct
import sys
import tempfile
import zipfile

import dbf
import xlwt

AQUI = os.path.dirname(os.path.abspath(__file__))
RAIZ = os.path.normpath(os.path.join(AQUI, "..", ".."))
CORPUS = os.path.join(AQUI, "corpus")


def carpeta(nombre):
    ruta = os.path.join(CORPUS, nombre)
    shutil.rmtree(ruta, ignore_errors=True)
    os.makedirs(ruta)
    return ruta


def escribe(nombre, casos):
    ruta = carpeta(nombre)
    for i, datos in enumerate(casos):
        if isinstance(datos, str):
            datos = datos.encode("utf-8")
        with open(os.path.join(ruta, "%s_%02d" % (nombre, i)), "wb") as f:
            f.write(datos)


# ------------------------------------------------------------------ Amounts
escribe("importes", [
    "1234.56", "-1,234.56", "$ 10", "1e3", "(500.00)", "0.00005", "-0.00015",
    "922337203685477.5807", "922337203685477.5808", "-922337203685477.5808",
    "1.5E-3", "$-45.10", "12-", "  7,000,000.1234  ", "", "-", ".", "1..2", "1,2,3.4",
    "99999999999999999999999999999", "0x10", "&H10", "1D2", "Ø",
    "922337203685477.5807" + "9" * 60,
])

# -------------------------------------------------------------------- Dates
escribe("fechas", [
    "15/01/2024", "15-1-24", "150124", "2024-01-15", "15-ene-2024", "15 de enero de 2024",
    "15/01/2024 00:00:00", "31/12/2024 3:05 p.m.", "29/02/2023", "29/02/2024", "31/ENE/2024",
    "5-Feb-24", "31 DICIEMBRE 2024", "01/13/2024", "00/00/0000", "2024-02-30", "9999-12-31",
    "1/1/99", "31.12.2024", "31 MZO 2024",
    "2024-" + "4" * 40 + "01-15\t",
])

# ---------------------------------------------------------- Account codes
escribe("cuentas", [
    "999-99-99\n100-01-01\n100-01-01\n",
    "999-99-99\n1000101\n1000101\n",
    "999-99-99\n1-1-1\n1 -1\n",
    "99999-99\n1E99901\nABCDE-12\n",
    "XXX.XX.XX\nA01.B2.C3\nA01.B2\n",
    "9999999\n0001\n12\n\x03\x03\x02\x02",
    "999-" + "9" * 40 + "\n100" + "9" * 40 + "\n1\n",
    "999/999/999\n12/3/4\nÑ12/3\n\x05\x00\xfd\x03",
    "\n\n\n",
])

# --------------------------------------------------------- Delimited text
# The first byte chooses the delimiter: 0 ",", 1 "|", 2 tab, 3 ";", 4 "||";
# with 0x80 the double quotes are removed.
escribe("texto_delimitado", [
    b"\x00100-00-00,Activo,1,D,1500.50\r\n100-01-00,Bancos,2,D,-20\r\n",
    b"\x01Cuenta|Fecha|Poliza|Debe|Haber\n10001|15/01/2024|D 1|100.00|0\n10002|15/01/2024|D 1|0|100.00\n",
    b"\x02100\t\xc1ctivo\t1\t1,234.00\n",
    b"\x83\"100\";\"Caja; chica\";\"1\"\r\n",
    b"\x04100||A||1\n\n\n",
    b"\xff\xfe1\x000\x000\x00,\x00A\x00\r\x00\n\x00",
    b"\x00linea sin fin",
    "\x00caf\u00e9,ni\u00f1o,\x00,\xe9".encode("utf-8") + b"\xe9\x00\r",
])

# ------------------------------------------------------------ Fixed text
# First byte: number of fields; then (position, length) byte pairs.
escribe("texto_fijo", [
    b"\x03\x01\x09\x0a\x14\x1e\x0c" + b"100-01-01 Bancos nacionales       1500.00\n400-00-00 Ventas             -20\n",
    b"\x02\x01\x03\x00\x05" + "\u00d1and\u00fa 12\n".encode("utf-8"),
    b"\x02\xff\x05\x03\xfe" + b"abc\r\ndef\rghi",
    b"\x01\x01\x7f" + b"\xef\xbb\xbfx" * 3,
])


# --------------------------------------------------------------- Workbooks
def xlsx(filas, formula=False):
    b = io.BytesIO()
    z = zipfile.ZipFile(b, "w", zipfile.ZIP_DEFLATED)

    def parte(nombre, texto):  # a fixed date, so that the seeds do not change on every run
        info = zipfile.ZipInfo(nombre, (2024, 1, 1, 0, 0, 0))
        info.compress_type = zipfile.ZIP_DEFLATED
        z.writestr(info, texto)
    parte("[Content_Types].xml",
               '<?xml version="1.0" encoding="UTF-8"?><Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
               '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
               '<Default Extension="xml" ContentType="application/xml"/>'
               '<Override PartName="/xl/workbook.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.sheet.main+xml"/>'
               '<Override PartName="/xl/worksheets/sheet1.xml" ContentType="application/vnd.openxmlformats-officedocument.spreadsheetml.worksheet+xml"/>'
               '</Types>')
    parte("_rels/.rels",
               '<?xml version="1.0" encoding="UTF-8"?><Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
               '<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/>'
               '</Relationships>')
    parte("xl/workbook.xml",
               '<?xml version="1.0" encoding="UTF-8"?><workbook xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main" '
               'xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships"><sheets>'
               '<sheet name="Hoja1" sheetId="1" r:id="rId1"/></sheets></workbook>')
    parte("xl/_rels/workbook.xml.rels",
               '<?xml version="1.0" encoding="UTF-8"?><Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">'
               '<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet" Target="worksheets/sheet1.xml"/>'
               '<Relationship Id="rId2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings" Target="sharedStrings.xml"/>'
               '<Relationship Id="rId3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/>'
               '</Relationships>')
    parte("xl/styles.xml",
               '<?xml version="1.0" encoding="UTF-8"?><styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">'
               '<numFmts count="1"><numFmt numFmtId="164" formatCode="dd/mm/yyyy"/></numFmts>'
               '<cellXfs count="2"><xf numFmtId="0"/><xf numFmtId="164" applyNumberFormat="1"/></cellXfs></styleSheet>')
    textos = []
    filas_xml = []
    for r, fila in enumerate(filas, 1):
        celdas = []
        for c, v in enumerate(fila):
            ref = "%s%d" % (chr(65 + c), r)
            if isinstance(v, str):
                textos.append(v)
                celdas.append('<c r="%s" t="s"><v>%d</v></c>' % (ref, len(textos) - 1))
            elif isinstance(v, tuple):  # a date serial
                celdas.append('<c r="%s" s="1"><v>%s</v></c>' % (ref, v[0]))
            else:
                celdas.append('<c r="%s"><v>%s</v></c>' % (ref, v))
        if formula:
            celdas.append('<c r="%s%d"><f>SUM(B1:B2)</f><v>3</v></c>' % (chr(65 + len(fila)), r))
        filas_xml.append('<row r="%d">%s</row>' % (r, "".join(celdas)))
    parte("xl/sharedStrings.xml",
               '<?xml version="1.0" encoding="UTF-8"?><sst xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">' +
               "".join("<si><t>%s</t></si>" % t for t in textos) + "</sst>")
    parte("xl/worksheets/sheet1.xml",
               '<?xml version="1.0" encoding="UTF-8"?><worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">'
               '<dimension ref="A1:E4"/><sheetData>' + "".join(filas_xml) + "</sheetData></worksheet>")
    z.close()
    return b.getvalue()


def xls(filas):
    libro = xlwt.Workbook()
    hoja = libro.add_sheet("Hoja1")
    fecha = xlwt.easyxf(num_format_str="dd/mm/yyyy")
    for r, fila in enumerate(filas):
        for c, v in enumerate(fila):
            if isinstance(v, tuple):
                hoja.write(r, c, v[0], fecha)
            else:
                hoja.write(r, c, v)
    b = io.BytesIO()
    libro.save(b)
    return b.getvalue()


FILAS = [["Cuenta", "Importe", "Fecha", "Nombre"],
         ["100-01-01", 1500.5, (45306,), "Bancos"],
         ["400-00-00", -20, (45307.5,), "Ventas \u00f1"],
         [10001, "1,234.56", "15/01/2024", ""]]
escribe("libro", [xlsx(FILAS), xlsx(FILAS, formula=True), xls(FILAS), xls([["a"], [1]])])


# ------------------------------------------------------------ Zip archives
def zip_de(partes):
    b = io.BytesIO()
    with zipfile.ZipFile(b, "w", zipfile.ZIP_DEFLATED) as z:
        for nombre, datos in partes:
            info = zipfile.ZipInfo(nombre, (2024, 1, 1, 0, 0, 0))
            info.compress_type = zipfile.ZIP_DEFLATED
            z.writestr(info, datos)
    return b.getvalue()


escribe("zip", [
    zip_de([("CATALOGO.TXT", "100,Activo\r\n"), ("POLIZAS/ENE.TXT", "1,2\r\n")]),
    zip_de([("A\u00d1O.TXT", "x")]),
    zip_de([("../fuera.txt", "x")]),
    zip_de([("carpeta/", ""), ("carpeta/b.txt", "b" * 300)]),
])

# ------------------------------------------------------------------ Tables
def tabla(campos, registros, version, borra=None):
    d = tempfile.mkdtemp()
    try:
        ruta = os.path.join(d, "TABLA.DBF")
        t = dbf.Table(ruta, campos, dbf_type=version, codepage="cp1252")
        t.open(dbf.READ_WRITE)
        for r in registros:
            t.append(r)
        if borra is not None:
            with t[borra] as reg:
                dbf.delete(reg)
        t.close()
        datos = open(ruta, "rb").read()
        for memo in ("TABLA.DBT", "TABLA.FPT", "tabla.dbt", "tabla.fpt"):
            if os.path.exists(os.path.join(d, memo)):
                datos += b"#MEMO#" + open(os.path.join(d, memo), "rb").read()
                break
        return datos
    finally:
        shutil.rmtree(d)


import datetime
from decimal import Decimal
escribe("dbf", [
    tabla("CUENTA C(20); NOMBRE C(30); SALDO N(14,2); FECHA D; ACTIVA L",
          [("100-01-01", "Bancos", 1500.5, datetime.date(2024, 1, 15), True),
           ("400-00-00", "Ventas \u00f1", -20, None, False)], "db3", borra=1),
    tabla("CUENTA C(10); NOTA M", [("100", "una nota larga " * 5)], "db3"),
    tabla("CUENTA C(10); IMPORTE Y NULL; ALTA T; N I; NOTA M; R B NULL",
          [("100", Decimal("12.3456"), datetime.datetime(2024, 1, 15, 10, 30), 7, "memo", 1.25)], "vfp"),
    tabla("CUENTA C(10); SALDO N(12,2); NOTA M", [("200", 3.5, "fox")], "fp"),
])

# --------------------------------------------------------------- XML files
ESPACIO = "http://www.sat.gob.mx/esquemas/ContabilidadE/1_3/"


def sat(raiz, archivo, mes, cuerpo, extra=""):
    return ('<?xml version="1.0" encoding="UTF-8"?>\n<sat:%s xmlns:sat="%s%s" Version="1.3" RFC="AAA010101AAA" '
            'Mes="%s" Anio="2024"%s>\n%s</sat:%s>\n' % (raiz, ESPACIO, archivo, mes, extra, cuerpo, raiz))


escribe("xml_sat", [
    sat("Catalogo", "CatalogoCuentas", "01",
        '<sat:Ctas CodAgrup="100" NumCta="100-00-00" Desc="Activo" Nivel="1" Natur="D"/>\n'
        '<sat:Ctas CodAgrup="100" NumCta="100-01-00" Desc="Bancos" SubCtaDe="100-00-00" Nivel="2" Natur="D"/>\n'),
    sat("Balanza", "BalanzaComprobacion", "02",
        '<sat:Ctas NumCta="100-01-00" SaldoIni="10.5" Debe="100" Haber="0.25" SaldoFin="110.25"/>\n',
        ' TipoEnvio="N"'),
    sat("Polizas", "PolizasPeriodo", "01",
        '<sat:Poliza NumUnIdenPol="1" Fecha="2024-01-15" Concepto="Pago">\n'
        '<sat:Transaccion NumCta="100-01-00" DesCta="Bancos" Concepto="x" Debe="100.00" Haber="0">\n'
        '<sat:CompNal UUID_CFDI="6F1E0B2A-1111-2222-3333-444455556666" RFC="AAA010101AAA" MontoTotal="100"/>\n'
        '<sat:CompNalOtr CFD_CBB_Serie="A" CFD_CBB_NumFol="12" RFC="AAA010101AAA" MontoTotal="1"/>\n'
        '<sat:CompExt NumFactExt="F-9" MontoTotal="1"/>\n'
        '</sat:Transaccion>\n</sat:Poliza>\n', ' TipoSolicitud="AF" NumOrden="ABC6912345/12"'),
    '<?xml version="1.0" encoding="windows-1252"?>\n<sat:Catalogo xmlns:sat="x" Version="1.1" Mes="13" Anio="2024">'
    '<sat:Ctas NumCta="&#209;" Desc="\xe1"/></sat:Catalogo>'.encode("latin-1"),
    '<?xml version="1.0"?><!DOCTYPE a [<!ENTITY e SYSTEM "file:///etc/passwd">]><a>&e;</a>',
])

# --------------------------------------------------- Report descriptions
descripciones = sorted(f for f in os.listdir(os.path.join(RAIZ, "data", "reportes")) if f.endswith(".toml"))
escribe("descripcion_reporte", [open(os.path.join(RAIZ, "data", "reportes", f), "rb").read() for f in descripciones])

# --------------------------------------------------------------- Reports
# The first byte chooses the description (sorted by name) and the month.
casos = []
datos = os.path.join(RAIZ, "tests", "data", "reportes")
for i, f in enumerate(descripciones):
    base = f[:-5]
    for sufijo in (".txt", ".polizas.txt"):
        ruta = os.path.join(datos, base + "_ene" + sufijo)
        if os.path.exists(ruta):
            casos.append(bytes([i]) + open(ruta, "rb").read())
escribe("reporte", casos)
print("semillas escritas en", CORPUS, file=sys.stderr)
