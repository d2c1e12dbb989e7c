# SPDX-License-Identifier: MIT
"""The home server that a journey talks to."""

import json
import os
import re
import subprocess
import urllib.request
from pathlib import Path

from . import processes

PASSWORD = "correct-horse-9"


class HomeServer:
    def __init__(self, program: Path, folder: Path, address: str = "127.0.0.1") -> None:
        self._program = program
        self._folder = folder
        self._address = address
        self._ports = ("0", "0")
        self._process: subprocess.Popen | None = None
        self.http = ""
        self.events = ""
        folder.mkdir(exist_ok=True)

    def start(self) -> None:
        """Starts it; once more after a stop on the same data and ports."""
        command = [str(self._program), "--listen", self._address, "--data", str(self._folder / "data")]
        command += ["--http-port", self._ports[0], "--ws-port", self._ports[1]]
        log = self._folder / "server.log"
        self._process = processes.start(command, dict(os.environ), log, stdout=subprocess.PIPE)
        line = processes.first_line(self._process.stdout, "the home server")
        said = re.fullmatch(r"listening http=(http://[\d.]+:(\d+)) ws=(ws://[\d.]+:(\d+)/?)", line)
        if not said:
            raise AssertionError(f"the home server said {line!r}")
        self.http, self.events = said[1], said[3]
        self._ports = (said[2], said[4])

    def stop(self) -> None:
        code = processes.end(self._process)
        if code != 0:
            raise AssertionError(f"the home server ended with {code}")

    def call(self, path: str, body: dict | None = None, token: str = "") -> dict:
        """One request, past the client: a POST where it has a body."""
        data = json.dumps(body).encode() if body is not None else None
        request = urllib.request.Request(self.http + path, data, {"Content-Type": "application/json"})
        if token:
            request.add_header("Authorization", "Bearer " + token)
        with urllib.request.urlopen(request, timeout=20) as answer:
            return json.load(answer)

    def register(self, name: str, shown: str = "") -> dict:
        """`token` and `user` of somebody who has no window."""
        who = {"username": name, "password": PASSWORD, "display_name": shown or name.title(), "device_id": name}
        return self.call("/api/auth/register", who)
