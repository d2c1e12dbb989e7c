# SPDX-License-Identifier: MIT
"""The session bus of one person, with a keyring and with assistive technology on it."""

import subprocess
import sys
from pathlib import Path

from gi.repository import Gio, GLib

from . import processes

SUPPORT = Path(__file__).parents[2] / "Support"
# The bus itself.
BUS = "org.freedesktop.DBus/org/freedesktop/DBus"


def start_bus(folder: Path, environment: dict[str, str]) -> str:
    """A bus that activates nothing, least of all a service of the desktop that the tests run on."""
    configuration = folder / "bus.conf"
    configuration.write_text((SUPPORT / "quiet_bus.conf").read_text().replace("{folder}", str(folder)))
    command = ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--print-address"]
    bus = processes.start(command, environment, folder / "bus.log", stdout=subprocess.PIPE)
    return processes.first_line(bus.stdout, "dbus-daemon")


def connect(address: str) -> Gio.DBusConnection:
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def call(bus: Gio.DBusConnection, place: str, interface: str, method: str, *arguments: GLib.Variant) -> tuple:
    """The answer of an object, its place a bus name with a path behind it."""
    name, path = place.split("/", 1)
    given = GLib.Variant.new_tuple(*arguments)
    timeout = int(10_000 * processes.SLOWNESS)
    return bus.call_sync(name, f"/{path}", interface, method, given, None, Gio.DBusCallFlags.NONE, timeout, None).unpack()


def ask(bus: Gio.DBusConnection, place: str, interface: str, name: str):
    """A property of an object."""
    wanted = GLib.Variant("s", interface), GLib.Variant("s", name)
    return call(bus, place, "org.freedesktop.DBus.Properties", "Get", *wanted)[0]


def has_name(address: str, name: str) -> bool:
    bus = connect(address)
    try:
        return call(bus, BUS, "org.freedesktop.DBus", "NameHasOwner", GLib.Variant("s", name))[0]
    finally:
        bus.close_sync(None)


def start_keyring(folder: Path, environment: dict[str, str]) -> subprocess.Popen:
    """An unlocked keyring on the bus of the environment, its file under the environment's HOME."""
    command = ["gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets"]
    command.append(f"--control-directory={folder}/keyring")
    keyring = processes.start(command, environment, folder / "keyring.log", stdin=subprocess.PIPE)
    keyring.stdin.write(b"known password")
    keyring.stdin.close()
    address = environment["DBUS_SESSION_BUS_ADDRESS"]
    processes.eventually("the keyring answers", lambda: has_name(address, "org.freedesktop.secrets"))
    return keyring


class LockedKeyring:
    """A keyring whose items, secrets by account in JSON, are locked until its dialog is answered."""

    def __init__(self, items: str, folder: Path, environment: dict[str, str]) -> None:
        command = [sys.executable, "-B", str(SUPPORT / "locked_keyring.py"), items]
        pipes = {"stdin": subprocess.PIPE, "stdout": subprocess.PIPE}
        self._process = processes.start(command, environment, folder / "locked-keyring.log", **pipes)
        self._expect("ready")

    def _expect(self, word: str) -> None:
        said = processes.first_line(self._process.stdout, "the locked keyring")
        assert said == word, said

    def open(self) -> None:
        self._expect("asked")
        self._process.stdin.write(b"open\n")
        self._process.stdin.flush()


def start_assistive_technology(folder: Path, environment: dict[str, str]) -> Gio.DBusConnection:
    """Makes the bus of the environment say that somebody listens, and listens there."""
    launcher = ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"]
    processes.start(launcher, environment, folder / "accessibility.log")
    session = environment["DBUS_SESSION_BUS_ADDRESS"]
    processes.eventually("the accessibility bus answers", lambda: has_name(session, "org.a11y.Bus"))
    return connect(call(connect(session), "org.a11y.Bus/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0])


def keyring(address: str) -> dict[str, bytes]:
    """What is in the keyring: each item's label, as a person sees it, and its secret."""
    bus = connect(address)
    service = "org.freedesktop.secrets"
    secret = "org.freedesktop.Secret."
    try:
        plain = GLib.Variant("s", "plain"), GLib.Variant("v", GLib.Variant("s", ""))
        root = f"{service}/org/freedesktop/secrets"
        session = GLib.Variant("o", call(bus, root, secret + "Service", "OpenSession", *plain)[1])
        found = {}
        for collection in ask(bus, root, secret + "Service", "Collections"):
            for item in ask(bus, service + collection, secret + "Collection", "Items"):
                label = ask(bus, service + item, secret + "Item", "Label")
                found[label] = bytes(call(bus, service + item, secret + "Item", "GetSecret", session)[0][2])
        return found
    finally:
        bus.close_sync(None)
