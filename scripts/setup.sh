#!/usr/bin/env bash
# Installs the Debian packages Velmorant needs (only those missing), then
# configures and builds. Safe to run again: it does nothing that is done.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORANT_BUILD:-$ROOT/build}"

PACKAGES=(
  build-essential cmake ninja-build pkg-config
  libsqlite3-dev            # every store
  qt6-base-dev              # desktop program, settings, text codecs, PDF
  libgl-dev                 # Qt6Gui's CMake package asks for OpenGL headers
  libgtest-dev              # core tests
  fonts-dejavu-core         # offscreen rendering of forms and reports
  poppler-utils             # pdftotext, to check rendered reports in tests
  qt6-translations-l10n     # Spanish texts of the toolkit's own dialogs (file chooser, printing)
  ccache                    # compiler cache: repeated builds of the same sources are quick
  libzip-dev                # .xlsx workbooks are zip packages
  libpugixml-dev            # the XML parts of an .xlsx
  libfreexl-dev             # .xls workbooks
  libxlsxwriter-dev         # tests write their .xlsx fixtures with it
  python3-xlwt              # tests write their .xls fixtures with it (run by /usr/bin/python3)
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if ((${#missing[@]})); then
  echo "setup: installing ${missing[*]}" >&2
  SUDO=""
  if [[ $(id -u) -ne 0 ]]; then SUDO="sudo"; fi
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$BUILD" -j"$(nproc)"
