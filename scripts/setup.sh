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
  libxml2-dev               # streaming reader of the electronic-accounting XML files
  fonts-dejavu-core         # offscreen rendering of forms and reports
  poppler-utils             # pdftotext, to check rendered reports in tests
  qt6-translations-l10n     # Spanish texts of the toolkit's own dialogs (file chooser, printing)
  ccache                    # compiler cache: repeated builds of the same sources are quick
  sqlite3 time              # the benchmark harness's floor (sqlite3 .import) and peak memory (GNU time)
  firebird-dev              # headers of the Firebird engine's interface (client databases .FDB)
  libfbclient2              # Firebird client library, loaded when a .FDB is first opened
  firebird3.0-server-core   # the embedded engine the client library runs in-process (no server)
  firebird3.0-utils         # isql-fb, to create test databases
  mdbtools-dev              # Access source databases (LGPL library, with glib's headers)
  python3-dbf               # tests write dBase, FoxPro and Visual FoxPro tables with it (/usr/bin/python3 only)
  libtomlplusplus-dev       # descriptions of printed reports (TOML), with the line of each value for messages
  libzip-dev                # zip archives a client delivers in place of its files (extracted before reading)
  libpugixml-dev            # the XML parts of an .xlsx
  libfreexl-dev             # .xls workbooks
  libssl-dev                # SHA-256 of the files a run reads and of the company's backup (libcrypto)
  libxlsxwriter-dev         # tests write their .xlsx fixtures with it
  python3-xlwt              # tests write their .xls fixtures with it (run by /usr/bin/python3)
  clang-14 libclang-rt-14-dev  # fuzz targets: libFuzzer, AddressSanitizer and UBSan (build-fuzz, tests/fuzz)
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
