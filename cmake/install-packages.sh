#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what the given package lists name and this system lacks: install-packages.sh LIST...
set -euo pipefail

mapfile -t wanted < <(sed -e 's/#.*//' -e 's/[[:space:]]//g' "$@" | grep -v '^$' | sort -u)

if ! command -v dpkg-query >/dev/null; then
    echo "This is no Debian system: make sure that it has what $* name." >&2
    exit 0
fi

installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null \
    | sed -n 's/ installed$//p' | sort -u || true)
mapfile -t missing < <(comm -23 <(printf '%s\n' "${wanted[@]}") <(printf '%s\n' "$installed"))
((${#missing[@]})) || exit 0

as_root=()
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
        echo "Missing packages, and no way to become root here. As root, run:" >&2
        echo "  apt-get update && apt-get install --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
    # Nobody is there to type a password.
    [[ -t 0 ]] || as_root+=(-n)
fi

echo "Installing ${missing[*]}" >&2
apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o DPkg::Lock::Timeout=300)
"${apt[@]}" update >&2 </dev/null
"${apt[@]}" install -y --no-install-recommends "${missing[@]}" >&2 </dev/null
