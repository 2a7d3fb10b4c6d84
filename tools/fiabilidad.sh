#!/usr/bin/env bash
# Writes docs/fiabilidad.md from a run of the reliability tests: the kill
# test at VELMORANT_MUERTES points (50 unless given), the hostile inputs and
# the failing environment. The section of the fuzzers, between its two
# marks, is kept as it stands (the fuzzing job writes it).
#
#   tools/fiabilidad.sh            # 50 kills, some minutes
#   VELMORANT_MUERTES=8 tools/fiabilidad.sh
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORANT_BUILD:-$ROOT/build}"
DOC="$ROOT/docs/fiabilidad.md"
CIFRAS="$(mktemp)"
trap 'rm -f "$CIFRAS"' EXIT

ninja -C "$BUILD" velmorant_tests >/dev/null
export VELMORANT_MUERTES="${VELMORANT_MUERTES:-50}" VELMORANT_FIABILIDAD_CIFRAS="$CIFRAS"
export QT_QPA_PLATFORM=offscreen
set +e
"$BUILD/tests/velmorant_tests" --gtest_filter='MuertesCli.*:TextoHostilCli.*:EntornoCli.*' --gtest_brief=1
ESTADO=$?
set -e

# "clave=valor" of the line of CIFRAS starting with $1, or 0.
valor() { grep -m1 "^$1 " "$CIFRAS" | tr ' ' '\n' | sed -n "s/^$2=//p" | head -1 | grep . || echo 0; }

# Taken before the document is rewritten, which would make the tree dirty.
VERSION="$(git -C "$ROOT" describe --always --dirty)"
FUZZ_INICIO='<!-- fuzz: inicio -->'
FUZZ_FIN='<!-- fuzz: fin -->'
FUZZ="$FUZZ_INICIO
_Las cifras de los fuzzers las escribe su propia corrida._
$FUZZ_FIN"
if [[ -f "$DOC" ]] && grep -q "$FUZZ_INICIO" "$DOC"; then
  FUZZ="$(sed -n "/$FUZZ_INICIO/,/$FUZZ_FIN/p" "$DOC")"
fi

p_m=$(valor "muertes primera" muertes); p_s=$(valor "muertes primera" sobrevividas)
p_c=$(valor "muertes primera" cortes); p_cs=$(valor "muertes primera" cortes_sobrevividos)
p_n=$(valor "muertes primera" puntos)
r_m=$(valor "muertes reimportacion" muertes); r_s=$(valor "muertes reimportacion" sobrevividas)
r_c=$(valor "muertes reimportacion" cortes); r_cs=$(valor "muertes reimportacion" cortes_sobrevividos)
r_n=$(valor "muertes reimportacion" puntos)
fases() { grep -m1 "^muertes $1 " "$CIFRAS" | tr ' ' '\n' | sed -n 's/^fase_\(.\)=\(.*\)/\1: \2/p' | paste -sd, - | sed 's/,/, /g'; }
h_a=$(valor "hostiles archivos" entradas); h_r=$(valor "hostiles rutas" entradas); h_t=$(valor "hostiles tecleado" entradas)
disco="$(grep -m1 '^entorno disco_lleno' "$CIFRAS" || true)"
res() { grep -q "^entorno $1" "$CIFRAS" && echo "$2" || echo "no corrió"; }
disco_txt() {
  [[ -z "$disco" ]] && { echo "no corrió"; return; }
  local metodo llenos completas
  metodo=$(echo "$disco" | tr ' ' '\n' | sed -n 's/^metodo=//p')
  llenos=$(echo "$disco" | tr ' ' '\n' | sed -n 's/^llenos=//p')
  completas=$(echo "$disco" | tr ' ' '\n' | sed -n 's/^completas=//p')
  echo "$((llenos + completas)) espacios libres al empezar ($metodo): $llenos corridas rehusadas por falta de espacio con la empresa como estaba y repetidas al haber espacio, $completas completas"
}
# How a hostile input ended, by the exit status of the run.
desenlace() {
  case "$1" in
    0) echo "importada" ;;
    1) echo "rehusada" ;;
    2) echo "rehusada antes de importar, con el archivo nombrado" ;;
    3) echo "rehusada con archivo y línea; la empresa como estaba" ;;
    *) echo "estado $1" ;;
  esac
}

{
  echo "# Fiabilidad"
  echo
  echo "Cifras de la última corrida de \`tools/fiabilidad.sh\` ($(date -u +%Y-%m-%d), $VERSION); el resultado de las pruebas fue $([[ $ESTADO == 0 ]] && echo 'correcto' || echo "FALLIDO (estado $ESTADO)")."
  echo
  echo "## Importaciones matadas"
  echo
  echo "\`velmorant-cli importar\` (enlace 82, el año de demostración generado) recibe SIGKILL en un punto"
  echo "nombrado de la corrida (\`VELMORANT_PUNTO_PRUEBA\`, ver \`src/platform/PuntoPrueba.h\`). Tras cada muerte"
  echo "la empresa está como antes o como la deja la confirmación, pasa \`PRAGMA integrity_check\`, no queda"
  echo "diario (journal) y una nueva importación termina. El corte de luz repite la prueba sobre la copia del"
  echo "disco (diarios incluidos) tomada en el punto de la muerte."
  echo
  echo "| Corrida | Puntos de la corrida | Muertes | Sobrevividas | Cortes de luz | Sobrevividos | Por fase |"
  echo "|---|---|---|---|---|---|---|"
  echo "| Primera importación | $p_n | $p_m | $p_s | $p_c | $p_cs | $(fases primera) |"
  echo "| Reimportación con trabajo de revisión | $r_n | $r_m | $r_s | $r_c | $r_cs | $(fases reimportacion) |"
  echo
  echo "Fases: A lectura y revisión, B confirmación, C reconstrucción del trabajo de revisión (B y C en una"
  echo "transacción), F después de confirmar. En CI corren 8 puntos; todos con"
  echo "\`VELMORANT_MUERTES=50 build/tests/velmorant_tests --gtest_filter='MuertesCli.*'\` o con este guion."
  echo
  echo "## Entradas hostiles"
  echo
  echo "| Dónde | Entradas probadas |"
  echo "|---|---|"
  echo "| Archivos del cliente (comillas, comodines, NUL, no UTF-8, 10 kB, 1 MB, fines de línea, binarios, importes) | $h_a |"
  echo "| Rutas (vacío, carpeta, dispositivo) | $h_r |"
  echo "| Lo que teclea el usuario (configuraciones, empresas, rutas) | $h_t |"
  echo
  echo "Cada archivo hostil, sobre una empresa con una importación confirmada. Ninguno dio un error de SQL"
  echo "ni terminó el programa por una señal; un importe que no se puede leer queda, con archivo y línea, en"
  echo "el registro de inconsistencias, que el auditor ve antes de decidir:"
  echo
  echo "| Entrada | Desenlace |"
  echo "|---|---|"
  grep '^hostil estado=' "$CIFRAS" | while read -r _ estado nombre; do
    echo "| $nombre | $(desenlace "${estado#estado=}") |"
  done
  echo
  echo "## Fallas del entorno"
  echo
  echo "| Falla | Resultado |"
  echo "|---|---|"
  echo "| Carpeta base de sólo lectura | $(res solo_lectura "rehusada con su mensaje; la empresa como estaba; se importa al devolver el permiso") |"
  echo "| Disco lleno | $(disco_txt) |"
  echo "| Empresa ocupada por otra conexión (EXCLUSIVE y RESERVED) | $(res ocupada "tras la espera, \"ocupada por otro programa\"; la empresa como estaba") |"
  echo "| Empresa borrada, o dañada (cabecera, página, cortada), entre órdenes | $(res borrada_danada "su mensaje; nunca se crea otra ni se escribe en la dañada") |"
  echo
  echo "## Fuzzers"
  echo
  echo "$FUZZ"
} >"$DOC"
echo "escrito $DOC"
exit $ESTADO
