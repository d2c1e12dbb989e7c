"""Networks of a test's own, which nobody outside sees and which go with its process."""

import os
import shutil
import subprocess
import sys

SKIPPED = 77


def run(command: str) -> str:
    return subprocess.run(command.split(), check=True, capture_output=True, text=True).stdout


def alone() -> None:
    """Starts this program again where it can make networks, and becomes that. Without root the test is skipped."""
    if "--alone" not in sys.argv:
        if os.geteuid() != 0 or not shutil.which("ip"):
            print("needs root and iproute2")
            sys.exit(SKIPPED)
        apart = ["unshare", "--net", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc"]
        os.execvp(apart[0], [*apart, sys.executable, "-B", sys.argv[0], "--alone", *sys.argv[1:]])
    sys.argv.remove("--alone")
    # Names of namespaces are files.
    os.makedirs("/run/netns", exist_ok=True)
    run("mount -t tmpfs tmpfs /run/netns")
    run("ip link set lo up")
