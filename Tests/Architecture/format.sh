#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Every C++ file is as clang-format would write it, and every script passes shellcheck: format.sh ROOT
set -euo pipefail
cd "$1"
find Sources HomeServer Tests Benchmarks Fuzz \( -name '*.h' -o -name '*.cpp' \) -print0 \
    | xargs -0 clang-format --dry-run -Werror
{
    find cmake Tests packaging -name '*.sh' -print0
    printf '%s\0' run test .ci/run
} | xargs -0 shellcheck
