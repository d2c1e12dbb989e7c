#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs a program in a network of its own, where it may also mount, or skips it where that is forbidden: in_own_network.sh PROGRAM…
set -euo pipefail
apart=(unshare --map-root-user --net --mount)
if ! refusal=$("${apart[@]}" ip link show lo 2>&1); then
    echo "Skipped, since no network can be made here: $refusal"
    exit 77
fi
exec "${apart[@]}" "$@"
