#!/usr/bin/env bash
# Configures a preset where that is due, and builds it: build.sh PRESET [cmake --build options]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset=$1
shift

# Ninja itself sees a changed CMakeLists.txt; the presets it does not know.
configured=build/$preset/.configured
if [[ ! -e build/$preset/build.ninja || ! $configured -nt CMakePresets.json ]]; then
    cmake --preset "$preset"
    touch "$configured"
fi
cmake --build --preset "$preset" "$@"
