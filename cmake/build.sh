#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Configures a preset where that is due, and builds it: build.sh PRESET [cmake --build options]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
# A clone elsewhere finds in the cache what another one compiled.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
# Without this it passes over all that begins with precompiled headers.
export CCACHE_SLOPPINESS=pch_defines,time_macros
preset=$1
shift

# Ninja itself sees a changed CMakeLists.txt; the presets it does not know.
configured=build/$preset/.configured
if [[ ! -e build/$preset/build.ninja || ! $configured -nt CMakePresets.json ]]; then
    cmake --preset "$preset"
    touch "$configured"
fi
cmake --build --preset "$preset" "$@"
