#!/usr/bin/env bash
# Side-by-side measure of an import, printed as one table:
#   - the floor of the machine: sqlite3 .import of the same files into one table;
#   - the peer: hledger's balance report over the same vouchers as a journal;
#   - Velmorant's first import of the year (link 82, trial balance included);
#   - Velmorant's re-import of the client's second delivery, every comparison run.
# Each figure is the median of several runs; peak memory is that of the
# import's own process (GNU time's maximum resident set).
#
#   bench/compara.sh [--tamanos 10000,100000,1000000] [--corridas 3] [--sin-par] [--salida F.md]
#
# Installs what it needs (sqlite3, hledger, GNU time) when missing, builds,
# and works in a temporary folder it removes at the end.
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORANT_BUILD:-$ROOT/build}"
TAMANOS="10000,100000,1000000"
CORRIDAS=3
CON_PAR=1
SALIDA=""
while (($#)); do
  case "$1" in
    --tamanos) TAMANOS="$2"; shift 2 ;;
    --corridas) CORRIDAS="$2"; shift 2 ;;
    --sin-par) CON_PAR=0; shift ;;
    --salida) SALIDA="$2"; shift 2 ;;
    -h|--help) sed -n 2,13p "${BASH_SOURCE[0]}" | sed 's/^# \{0,1\}//'; exit 0 ;;
    *) echo "compara.sh: opción desconocida $1" >&2; exit 2 ;;
  esac
done

if [[ -z "${VELMORANT_SIN_INSTALAR:-}" ]]; then
  faltan=()
  for p in sqlite3 time; do dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || faltan+=("$p"); done
  if ((CON_PAR)); then dpkg-query -W -f='${Status}' hledger 2>/dev/null | grep -q "ok installed" || faltan+=(hledger); fi
  if ((${#faltan[@]})); then
    SUDO=""; [[ $(id -u) -ne 0 ]] && SUDO="sudo"
    export DEBIAN_FRONTEND=noninteractive
    $SUDO apt-get update -qq && $SUDO apt-get install -y -qq --no-install-recommends "${faltan[@]}"
  fi
  "$ROOT/scripts/setup.sh" >/dev/null
fi
CLI="$BUILD/src/velmorant-cli"
GENERA="$BUILD/tools/velmorant-genera-demo"

TRABAJO="$(mktemp -d)"
trap 'rm -rf "$TRABAJO"' EXIT
export XDG_CONFIG_HOME="$TRABAJO/config" VELMORANT_DATOS="$TRABAJO/datos" QT_QPA_PLATFORM=offscreen
MESES=(ENE FEB MZO ABR MAY JUN JUL AGO SEP OCT NOV DIC)

# Seconds of wall time of a command, its peak memory in kB into $PICO.
mide() {
  local f="$TRABAJO/tiempo"
  /usr/bin/time -f "%e %M" -o "$f" "$@" >/dev/null 2>"$TRABAJO/errores" || {
    cat "$TRABAJO/errores" >&2; echo "compara.sh: falló: $*" >&2; exit 1; }
  read -r SEG PICO <"$f"
}

mediana() { printf '%s\n' "$@" | sort -g | awk '{v[NR]=$1} END {print (NR%2) ? v[(NR+1)/2] : (v[NR/2]+v[NR/2+1])/2}'; }

# The vouchers as an hledger journal: one transaction per voucher (number,
# type and date), a balancing posting for a voucher that does not balance.
diario() {
  awk -F'|' 'FNR==1 {next}
    function cierra() { if (clave == "") return; printf "%s", texto; if (suma != 0) printf "    descuadre  %.2f\n", -suma; print ""; }
    { k = $1 "|" $2 "|" $3 "|" $4 "|" $5
      if (k != clave) { cierra(); clave = k; suma = 0
        texto = sprintf("%04d-%02d-%02d %s %s\n", $5, $4, $3, $2, $1) }
      importe = $9 - $10; suma += importe
      texto = texto sprintf("    %s  %.2f\n", $6, importe) }
    END { cierra() }' "$@"
}

nueva_empresa() {
  rm -rf "$TRABAJO/base" "$XDG_CONFIG_HOME"
  "$CLI" base crear "$TRABAJO/base" >/dev/null
  "$CLI" --base "$TRABAJO/base" empresa crear --nombre-corto BENCH --nombre "Banco de pruebas" --ejercicio 2025 \
    --formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros >/dev/null
  "$CLI" --base "$TRABAJO/base" empresa abrir BENCH 2025 >/dev/null
  "$CLI" configuracion mostrar BENCH >/dev/null 2>&1 || "$CLI" configuracion crear BENCH --enlace 82 --si \
    PIniCuenta=1 PIniDescripcion=2 PIniNaturaleza=3 PIniNivel=4 PIniSdoIni=6 \
    PIniNumPol=1 PIniTipo=2 PIniDia=3 PIniMes=4 PIniAnio=5 PIniCtaPol=6 PIniRef=7 PIniConcept=8 \
    PIniCargo=9 PIniAbono=10 >/dev/null
}

importa() {
  local dir="$1" args=() i=1
  for m in "${MESES[@]}"; do args+=(--mes "$(printf %02d $i)=$dir/pol_$m.txt"); i=$((i + 1)); done
  mide "$CLI" importar --enlace 82 --separador '|' --configuracion BENCH --catalogo "$dir/catalogo.txt" "${args[@]}" --continuar
}

linea() { printf '| %s | %s | %s | %s | %s | %s | %s | %s | %s |\n' "$@"; }
TABLA="$TRABAJO/tabla.md"
{
  echo "Machine: $(nproc) cores, $(awk '/MemTotal/ {printf "%.0f GB", $2/1048576}' /proc/meminfo), $(uname -sr); $(date -u +%Y-%m-%d)"
  echo "Medians of $CORRIDAS runs; ratios against the floor (sqlite3 .import) and the peer (hledger)."
  echo
  linea "lines" "floor: sqlite3 .import" "peer: hledger bal" "first import" "first / floor" "peer / first" \
    "re-import" "re-import / first" "peak memory"
  linea "---:" "---:" "---:" "---:" "---:" "---:" "---:" "---:" "---:"
} >"$TABLA"

IFS=',' read -ra LISTA <<<"$TAMANOS"
for n in "${LISTA[@]}"; do
  d1="$TRABAJO/entrega1" d2="$TRABAJO/entrega2"
  rm -rf "$d1" "$d2"
  "$GENERA" "$d1" --lineas "$n" >/dev/null
  "$GENERA" "$d2" --lineas "$n" --variante 2 >/dev/null
  lineas=$(cat "$d1"/pol_*.txt | grep -vc '^Poliza|')
  piso=() par=() primera=() reimporta=() picos=()
  ((CON_PAR)) && diario "$d1"/pol_*.txt >"$TRABAJO/diario.journal"
  { echo ".separator |"; echo ".import $d1/catalogo.txt catalogo"
    for m in "${MESES[@]}"; do echo ".import $d1/pol_$m.txt polizas"; done; } >"$TRABAJO/piso.sql"
  for ((c = 1; c <= CORRIDAS; c++)); do
    rm -f "$TRABAJO/piso.db"
    mide sqlite3 -batch "$TRABAJO/piso.db" ".read $TRABAJO/piso.sql"
    piso+=("$SEG")
    if ((CON_PAR)); then mide hledger -f "$TRABAJO/diario.journal" bal; par+=("$SEG"); fi
    nueva_empresa
    importa "$d1"; primera+=("$SEG"); picos+=("$PICO")
    importa "$d2"; reimporta+=("$SEG"); picos+=("$PICO")
  done
  p=$(mediana "${piso[@]}") a=$(mediana "${primera[@]}") r=$(mediana "${reimporta[@]}") m=$(mediana "${picos[@]}")
  h="—" hp="—"
  if ((CON_PAR)); then h="$(mediana "${par[@]}") s"; hp=$(awk -v h="${h% s}" -v a="$a" 'BEGIN {printf "%.2f", h/a}'); fi
  razon() { awk -v x="$1" -v y="$2" 'BEGIN {printf "%.2f", x/y}'; }
  linea "$lineas" "$p s" "$h" "$a s" "$(razon "$a" "$p")" "$hp" "$r s" "$(razon "$r" "$a")" "$((m / 1024)) MB" >>"$TABLA"
done
cat "$TABLA"
[[ -n "$SALIDA" ]] && cp "$TABLA" "$SALIDA"
exit 0
