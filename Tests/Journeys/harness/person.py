# SPDX-License-Identifier: MIT
"""One person at a desk of their own: home, display, session bus, keyring, and the client in a window."""

import os
import re
import subprocess
from pathlib import Path

from . import processes
from .bus import start_assistive_technology, start_bus, start_keyring
from .screen import Node, Screen
from .server import HomeServer

DESKTOP_VARIABLES = ("DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "QT_QPA_PLATFORM")

FOLDERS = {"HOME": "home", "XDG_RUNTIME_DIR": "run"}
FOLDERS |= {f"XDG_{name.upper()}_HOME": name for name in ("config", "data", "cache")}


class Person:
    def __init__(
        self, name: str, program: Path, folder: Path, server: HomeServer, screen_size: str = "1280x800"
    ) -> None:
        self.name = name
        self._screen_size = screen_size
        self.home = folder / "home"
        self._program = program
        self.folder = folder
        # What the client is started by, where that is not this process alone.
        self.started_by: list[str] = []
        self._client: subprocess.Popen | None = None
        self._screen: Screen | None = None
        self._pictures = 0

        self.environment = {key: value for key, value in os.environ.items() if key not in DESKTOP_VARIABLES}
        self.environment |= {
            "LANG": "C.UTF-8",
            "LIBGL_ALWAYS_SOFTWARE": "1",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "QT_FORCE_STDERR_LOGGING": "1",
            "ORVANETALK_API_BASE": server.http,
            "ORVANETALK_WS_URL": server.events,
        }
        if processes.SLOWNESS > 1:
            # The sanitizers need not look at what the driver makes up as it goes.
            self.environment["QT_QUICK_BACKEND"] = "software"
        for variable, name in FOLDERS.items():
            (folder / name).mkdir(parents=True, mode=0o700)
            self.environment[variable] = str(folder / name)
        self._start_desktop()

    def _start_desktop(self) -> None:
        reading, writing = os.pipe()
        command = ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{self._screen_size}x24"]
        command += ["-nolisten", "tcp", "-noreset"]
        processes.start(command, self.environment, self.folder / "display.log", pass_fds=(writing,))
        os.close(writing)
        with open(reading, "rb") as stream:
            self.environment["DISPLAY"] = ":" + processes.first_line(stream, "Xvfb")
        run = self.folder / "run"
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = start_bus(run, self.environment)
        self.keyring = start_keyring(run, self.environment)
        self._accessibility = start_assistive_technology(run, self.environment)
        processes.start(["openbox"], self.environment, self.folder / "openbox.log")
        processes.eventually("the window manager is up", lambda: self.xdotool("get_num_desktops", fails=True))

    def xdotool(self, *words: str, fails: bool = False) -> str | None:
        done = subprocess.run(["xdotool", *words], env=self.environment, capture_output=True, text=True)
        if done.returncode != 0 and not fails:
            raise AssertionError(f"xdotool {words[0]}: {done.stderr}")
        return done.stdout if done.returncode == 0 else None

    def open_client(self) -> Screen:
        self._client = processes.start([*self.started_by, str(self._program)], self.environment, self.folder / "client.log")
        self._screen = Screen(self._accessibility, self._keep_picture)
        return self._screen

    @property
    def has_client(self) -> bool:
        return self._client is not None

    @property
    def screen(self) -> Screen:
        assert self._screen, f"{self.name} has no open client"
        return self._screen

    def close_client(self) -> None:
        """Closes the window as its frame does; the client must then end by itself and in order."""
        self.close_window()
        self.wait_for_end()

    def close_window(self) -> None:
        self.xdotool("key", "--clearmodifiers", "alt+F4")
        gone = lambda: not self.xdotool("search", "--onlyvisible", "--name", "^OrvaneTalk$", fails=True)
        processes.eventually("the window is closed", gone)

    def start_again(self) -> None:
        """Starts a second client, which must leave it at the first one's window."""
        again = subprocess.run([*self.started_by, str(self._program)], env=self.environment, timeout=20 * processes.SLOWNESS)
        assert again.returncode == 0, f"{self.name}'s second client ended with {again.returncode}"

    def wait_for_end(self) -> None:
        assert self._client
        try:
            code = self._client.wait(20 * processes.SLOWNESS)
        except subprocess.TimeoutExpired:
            raise AssertionError(f"{self.name}'s client outlived its window") from None
        self._client = self._screen = None
        if code != 0:
            raise AssertionError(f"{self.name}'s client ended with {code}:\n{self.client_log()[-4000:]}")

    def client_pid(self) -> int:
        assert self._client
        return self._client.pid

    def client_log(self) -> str:
        log = self.folder / "client.log"
        return log.read_text(errors="replace") if log.exists() else ""

    def click(self, node: Node, button: int = 1) -> None:
        x, y = node.middle()
        self.xdotool("mousemove", str(x), str(y), "click", str(button))

    def type(self, text: str) -> None:
        self.xdotool("type", "--delay", "15", text)

    def key(self, name: str) -> None:
        self.xdotool("key", name)

    def fill(self, entry_name: str, text: str) -> None:
        """Writes into an empty field, key by key."""
        self.click(self.screen.entry(entry_name))
        self.type(text)

    def save_evidence(self, folder: Path) -> None:
        """What the person saw and heard last."""
        self.take_picture(folder / f"{self.name}.png")
        (folder / f"{self.name}.log").write_text(self.client_log())
        if self._screen:
            (folder / f"{self.name}.txt").write_text(self._screen.dump())

    def _keep_picture(self, found: str) -> None:
        """Of each thing that was found, where ORVANETALK_PICTURES names a folder for whoever wants to look."""
        if folder := os.environ.get("ORVANETALK_PICTURES"):
            self._pictures += 1
            words = re.sub(r"[^\w ]+", "", found)
            self.take_picture(Path(folder) / f"{self.name}-{self._pictures:03}-{words}.png")

    def take_picture(self, path: Path) -> None:
        subprocess.run(["import", "-window", "root", str(path)], env=self.environment, timeout=30, check=True)
