#!/usr/bin/env bash
# The main job on the bundled demo: installs what is missing, builds, creates
# a demo base with the company DEMO, opens it as the audit product would (so
# that `velmorant` starts on it) and shows the session.
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORANT_BUILD:-$ROOT/build}"
DEMO="${VELMORANT_DEMO:-$ROOT/demo}"
"$ROOT/scripts/setup.sh"
CLI="$BUILD/src/velmorant-cli"

echo "== Demo base in $DEMO"
rm -rf "$DEMO"
"$CLI" base crear "$DEMO"
"$CLI" --base "$DEMO" empresa crear --nombre-corto DEMO --nombre "Comercializadora Demo, S.A. de C.V." \
  --ejercicio 2025 --formato 999-99-99 --separador - --niveles 3,2,2 --cat-arbol --rellena-ceros \
  --meses-revision 6,0,0,12
"$CLI" --base "$DEMO" empresa abrir DEMO 2025
echo "== Session"
"$CLI" sesion
