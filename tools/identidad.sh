#!/usr/bin/env bash
# Runs the same two imports (a first import of a generated year through
# link 82, then the re-import of the client's second delivery) with two
# builds of the command-line program, and compares everything they leave:
# the company, its log of inconsistencies, the review stores and the
# program's own stores, table by table and row by row. The history's
# timestamp and duration are the only fields left out. For a change meant to
# make a run faster and leave every result as it was.
#
#   tools/identidad.sh CLI_ANTES CLI_DESPUES [LINEAS]     # LINEAS: 10000
#
# Prints "idénticas" and exits 0, or prints the first differences and exits 1.
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORANT_BUILD:-$ROOT/build}"
ANTES="$1" DESPUES="$2" LINEAS="${3:-10000}"
GENERA="$BUILD/tools/velmorant-genera-demo"
TRABAJO="$(mktemp -d)"
trap 'rm -rf "$TRABAJO"' EXIT
export QT_QPA_PLATFORM=offscreen
MESES=(ENE FEB MZO ABR MAY JUN JUL AGO SEP OCT NOV DIC)

"$GENERA" "$TRABAJO/entrega1" --lineas "$LINEAS" >/dev/null
"$GENERA" "$TRABAJO/entrega2" --lineas "$LINEAS" --variante 2 >/dev/null

# Both imports with one program, in a folder of its own.
importa() {
  local cli="$1" dir="$2"
  export XDG_CONFIG_HOME="$dir/config" VELMORANT_DATOS="$dir/datos"
  "$cli" base crear "$dir/base" >/dev/null
  "$cli" --base "$dir/base" empresa crear --nombre-corto BENCH --nombre "Banco de pruebas" --ejercicio 2025 \
    --formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros >/dev/null
  "$cli" --base "$dir/base" empresa abrir BENCH 2025 >/dev/null
  "$cli" configuracion crear BENCH --enlace 82 --si \
    PIniCuenta=1 PIniDescripcion=2 PIniNaturaleza=3 PIniNivel=4 PIniSdoIni=6 \
    PIniNumPol=1 PIniTipo=2 PIniDia=3 PIniMes=4 PIniAnio=5 PIniCtaPol=6 PIniRef=7 PIniConcept=8 \
    PIniCargo=9 PIniAbono=10 >/dev/null
  for entrega in entrega1 entrega2; do
    local args=() i=1
    for m in "${MESES[@]}"; do args+=(--mes "$(printf %02d $i)=$TRABAJO/$entrega/pol_$m.txt"); i=$((i + 1)); done
    "$cli" importar --enlace 82 --separador '|' --configuracion BENCH --catalogo "$TRABAJO/$entrega/catalogo.txt" \
      "${args[@]}" --continuar >/dev/null 2>&1
  done
}

# Every table of every store the runs left (the company's backups are copies
# of the company and are left out), rows in table order, the history's
# timestamp and duration blanked.
vuelca() {
  local dir="$1"
  find "$dir/base" "$dir/datos" -name '*.sqlite' ! -name '*respaldo*' | sort | while read -r f; do
    echo "=== ${f#"$dir"/}"
    for t in $(sqlite3 "$f" "SELECT name FROM sqlite_master WHERE type='table' ORDER BY name"); do
      echo "--- $t"
      sqlite3 -header "$f" "SELECT * FROM \"$t\" ORDER BY rowid" 2>/dev/null || sqlite3 "$f" "SELECT * FROM \"$t\"" | sort
    done
  done | sed -E 's/^([0-9]+)\|20[0-9-]+ [0-9:]+\|(.*)\|\|[0-9]+\|\|([^|]*respaldo)/\1|-|\2||-||\3/'
}

importa "$ANTES" "$TRABAJO/antes"
importa "$DESPUES" "$TRABAJO/despues"
if diff <(vuelca "$TRABAJO/antes") <(vuelca "$TRABAJO/despues") >"$TRABAJO/diferencias"; then
  echo "idénticas ($LINEAS líneas, dos importaciones)"
else
  echo "diferentes ($LINEAS líneas):"
  head -40 "$TRABAJO/diferencias"
  exit 1
fi
