#!/usr/bin/env bash
# The main job on the bundled demo: installs what is missing and builds;
# writes the demo client's year with the generator; creates a demo base with
# the company DEMO and opens it as the audit product would (so that
# `velmorant` starts on it); imports the year through the delimited-text
# link; writes the auditor's review work; then imports it again from the
# client's second delivery, shows what changed and what review work survived,
# and checks the trial balance each time. Last, the second delivery is read
# again from the tax authority's electronic-accounting XML files (link 135)
# into a second company, whose trial balance must be the same.
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORANT_BUILD:-$ROOT/build}"
DEMO="${VELMORANT_DEMO:-$ROOT/demo}"
"$ROOT/scripts/setup.sh"
CLI="$BUILD/src/velmorant-cli"
GENERA="$BUILD/tools/velmorant-genera-demo"

rm -rf "$DEMO"
echo "== The client's books (generated, always the same bytes)"
"$GENERA" "$DEMO/archivos/entrega1"
"$GENERA" "$DEMO/archivos/entrega2" --variante 2 --xml

echo "== Demo base and company in $DEMO/base"
"$CLI" base crear "$DEMO/base"
"$CLI" --base "$DEMO/base" empresa crear --nombre-corto DEMO --nombre "Comercializadora Demo, S.A. de C.V." \
  --ejercicio 2025 --formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros \
  --meses-revision 6,0,0,12
"$CLI" --base "$DEMO/base" empresa abrir DEMO 2025
"$CLI" sesion

echo "== The layout of the client's files (kept in the program's layout catalogue)"
"$CLI" configuracion mostrar DEMO >/dev/null 2>&1 || "$CLI" configuracion crear DEMO --enlace 82 --si \
  PIniCuenta=1 PIniDescripcion=2 PIniNaturaleza=3 PIniNivel=4 PIniSdoIni=6 \
  PIniNumPol=1 PIniTipo=2 PIniDia=3 PIniMes=4 PIniAnio=5 PIniCtaPol=6 PIniRef=7 PIniConcept=8 \
  PIniCargo=9 PIniAbono=10

importa() {
  local dir="$1"
  local meses=() i=1
  for m in ENE FEB MZO ABR MAY JUN JUL AGO SEP OCT NOV DIC; do
    meses+=(--mes "$(printf %02d $i)=$dir/pol_$m.txt")
    i=$((i + 1))
  done
  "$CLI" importar --enlace 82 --separador '|' --configuracion DEMO --catalogo "$dir/catalogo.txt" \
    "${meses[@]}" --continuar --reporte "$dir/inconsistencias.pdf" --reporte-detalle "$dir/perdidos.pdf"
}

echo "== First import of the year"
importa "$DEMO/archivos/entrega1"
"$CLI" resumen

echo "== The auditor's review work on the first import"
"$GENERA" --trabajo-revision "$DEMO/base/2025_DEMO/DEMO_2025.sqlite"
"$CLI" seleccion --mes 12
"$CLI" cedula

echo "== Re-import from the client's second delivery"
importa "$DEMO/archivos/entrega2"
"$CLI" inconsistencias
"$CLI" resumen
echo "== The review work, rebuilt on the new vouchers and balances"
"$CLI" seleccion --mes 12
"$CLI" cedula
echo "== Schedule rows that could not be found again"
"$CLI" inconsistencias --detalle

echo "== The second delivery as electronic-accounting XML files (link 135), into the company DEMOXML"
XML=(--base "$DEMO/base" --empresa DEMOXML --ejercicio 2025)
"$CLI" --base "$DEMO/base" empresa crear --nombre-corto DEMOXML --nombre "Comercializadora Demo, S.A. de C.V. (XML)" \
  --ejercicio 2025 --formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros \
  --meses-revision 6,0,0,12
archivos=(--catalogo "$DEMO/archivos/entrega2/catalogo.xml")
for m in 01 02 03 04 05 06 07 08 09 10 11 12; do
  archivos+=(--balanza "$DEMO/archivos/entrega2/balanza_$m.xml" --polizas "$DEMO/archivos/entrega2/polizas_$m.xml")
done
"$CLI" "${XML[@]}" importar --enlace 135 "${archivos[@]}" --tipo-prefijo letras --rfc CDE010101AB1 --continuar
"$CLI" "${XML[@]}" resumen
if diff <("$CLI" balanza --mes 12 --csv) <("$CLI" "${XML[@]}" balanza --mes 12 --csv) >/dev/null; then
  echo "The trial balance read from the XML files is the same as the one read from the delimited text."
else
  echo "The trial balances of DEMO and DEMOXML differ." >&2
  exit 1
fi
echo "== Done. The desktop program starts on the demo company: $BUILD/src/velmorant"
