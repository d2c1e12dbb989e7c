# SPDX-License-Identifier: MIT
"""Every process that a journey starts, so that all of them end with it."""

import ctypes
import os
import signal
import subprocess
import time
from pathlib import Path
from typing import IO, Callable, TypeVar

Answer = TypeVar("Answer")

# Programs under a sanitizer are several times slower.
SLOWNESS = float(os.environ.get("ORVANETALK_SLOWNESS", "1"))

_PR_SET_CHILD_SUBREAPER = 36


def eventually(what: str, question: Callable[[], Answer], seconds: float = 15) -> Answer:
    """The first answer that counts as true; an error that says what never came true after the deadline."""
    deadline = time.monotonic() + seconds * SLOWNESS
    while True:
        answer = question()
        if answer:
            return answer
        if time.monotonic() > deadline:
            raise AssertionError(f"never happened: {what}")
        time.sleep(0.05)


def adopt_orphans() -> None:
    """Services that a bus activates become children of this process, where end_all finds them."""
    if ctypes.CDLL(None, use_errno=True).prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")


def start(command: list[str], environment: dict[str, str], log: Path, **more: object) -> subprocess.Popen:
    with open(log, "ab") as output:
        streams: dict = {"stdin": subprocess.DEVNULL, "stdout": output, "stderr": output} | more
        process = subprocess.Popen(command, env=environment, **streams)
    _started.append(process)
    return process


def first_line(stream: IO[bytes], what: str) -> str:
    """The first line that a started program prints: all of ours flush it at once."""
    line = stream.readline().decode().strip()
    if not line:
        raise AssertionError(f"{what} ended without a word")
    return line


def end(process: subprocess.Popen) -> int:
    """Asks a process to end, then insists; tells its exit code."""
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(10 * SLOWNESS)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
    for stream in (process.stdin, process.stdout):
        if stream:
            stream.close()
    return process.returncode


def _children() -> list[int]:
    return [int(pid) for pid in Path(f"/proc/self/task/{os.getpid()}/children").read_text().split()]


_started: list[subprocess.Popen] = []


def end_all() -> None:
    """Ends whatever is left, the last first, grandchildren that come to this process meanwhile included."""
    for process in reversed(_started):
        end(process)
    _started.clear()
    while children := _children():
        for pid in children:
            try:
                os.kill(pid, signal.SIGKILL)
                os.waitpid(pid, 0)
            except (ProcessLookupError, ChildProcessError):
                pass
