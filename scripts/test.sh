#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test (core and forms).
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD="${VELMORANT_BUILD:-$ROOT/build}"
"$ROOT/scripts/setup.sh"
# Settings written by tests stay inside the build tree.
export XDG_CONFIG_HOME="$BUILD/test-config"
export QT_QPA_PLATFORM=offscreen
mkdir -p "$XDG_CONFIG_HOME"
ctest --test-dir "$BUILD" --output-on-failure -j"$(nproc)"
