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

# The fuzz targets' smoke runs, in a clang build of the core with libFuzzer,
# AddressSanitizer and UBSan (only the core and the targets; tests/fuzz).
FUZZ_BUILD="${VELMORANT_FUZZ_BUILD:-$ROOT/build-fuzz}"
cmake -S "$ROOT" -B "$FUZZ_BUILD" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELMORANT_FUZZ=ON \
  -DCMAKE_CXX_COMPILER=clang++-14 >/dev/null
cmake --build "$FUZZ_BUILD" -j"$(nproc)" --target fuzz_todos
ctest --test-dir "$FUZZ_BUILD" --output-on-failure -j"$(nproc)"
