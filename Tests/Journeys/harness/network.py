# SPDX-License-Identifier: MIT
"""Networks of a test's own, which nobody outside sees and which go with its process."""

import os
import subprocess
import sys

SKIPPED = 77


def run(command: str) -> str:
    return subprocess.run(command.split(), check=True, capture_output=True, text=True).stdout


def alone() -> None:
    """Starts this program again where it can make networks, and becomes that. Where it may not, the test is skipped."""
    if "ORVANETALK_ALONE" not in os.environ:
        apart = ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc"]
        # Names of namespaces are files, which may not stay behind.
        attempt = [*apart, "sh", "-c", "mount -t tmpfs tmpfs /run && mkdir /run/netns && ip netns add attempt"]
        refused = subprocess.run(attempt, capture_output=True, text=True)
        if refused.returncode != 0:
            print("Skipped, since no network can be made here:", refused.stderr.strip())
            sys.exit(SKIPPED)
        os.environ["ORVANETALK_ALONE"] = "1"
        os.execvp(apart[0], [*apart, *sys.orig_argv])
    run("mount -t tmpfs tmpfs /run")
    os.mkdir("/run/netns")
    run("ip link set lo up")
