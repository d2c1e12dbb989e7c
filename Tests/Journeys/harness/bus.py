# SPDX-License-Identifier: MIT
"""The session bus of one person, with a keyring and with assistive technology on it."""

import subprocess
import sys
from pathlib import Path

from gi.repository import Gio, GLib

from . import processes

QUIET_BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir={folder}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def start_bus(folder: Path, environment: dict[str, str]) -> str:
    """A bus that activates nothing, least of all a service of the desktop that the tests run on."""
    configuration = folder / "bus.conf"
    configuration.write_text(QUIET_BUS.format(folder=folder))
    bus = processes.start(
        ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--print-address"],
        environment,
        folder / "bus.log",
        stdout=subprocess.PIPE,
    )
    return processes.first_line(bus.stdout, "dbus-daemon")


def connect(address: str) -> Gio.DBusConnection:
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def has_name(address: str, name: str) -> bool:
    bus = connect(address)
    try:
        return bus.call_sync(
            "org.freedesktop.DBus",
            "/org/freedesktop/DBus",
            "org.freedesktop.DBus",
            "NameHasOwner",
            GLib.Variant("(s)", (name,)),
            None,
            Gio.DBusCallFlags.NONE,
            10_000,
            None,
        ).unpack()[0]
    finally:
        bus.close_sync(None)


def start_keyring(folder: Path, environment: dict[str, str]) -> subprocess.Popen:
    """An unlocked keyring on the bus of the environment, its file under the environment's HOME."""
    keyring = processes.start(
        ["gnome-keyring-daemon", "--foreground", "--unlock", "--components=secrets", f"--control-directory={folder}/keyring"],
        environment,
        folder / "keyring.log",
        stdin=subprocess.PIPE,
    )
    keyring.stdin.write(b"known password")
    keyring.stdin.close()
    address = environment["DBUS_SESSION_BUS_ADDRESS"]
    processes.eventually("the keyring answers", lambda: has_name(address, "org.freedesktop.secrets"))
    return keyring


class LockedKeyring:
    """A keyring whose items, secrets by account in JSON, are locked until its dialog is answered."""

    def __init__(self, items: str, folder: Path, environment: dict[str, str]) -> None:
        program = Path(__file__).parents[2] / "Support/locked_keyring.py"
        self._process = processes.start(
            [sys.executable, "-B", str(program), items],
            environment,
            folder / "locked-keyring.log",
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
        )
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
    processes.start(
        ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"], environment, folder / "accessibility.log"
    )
    session = environment["DBUS_SESSION_BUS_ADDRESS"]
    processes.eventually("the accessibility bus answers", lambda: has_name(session, "org.a11y.Bus"))
    answer = connect(session).call_sync(
        "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, Gio.DBusCallFlags.NONE, 10_000, None
    )
    return connect(answer.unpack()[0])


def keyring(address: str) -> dict[str, bytes]:
    """What is in the keyring: each item's label, as a person sees it, and its secret."""
    bus = connect(address)

    def call(path: str, interface: str, method: str, *arguments: GLib.Variant):
        given = GLib.Variant.new_tuple(*arguments)
        service = "org.freedesktop.secrets"
        return bus.call_sync(service, path, interface, method, given, None, Gio.DBusCallFlags.NONE, 10_000, None).unpack()

    def ask(path: str, interface: str, name: str):
        wanted = (GLib.Variant("s", f"org.freedesktop.Secret.{interface}"), GLib.Variant("s", name))
        return call(path, "org.freedesktop.DBus.Properties", "Get", *wanted)[0]

    try:
        root, interface = "/org/freedesktop/secrets", "org.freedesktop.Secret"
        plain = (GLib.Variant("s", "plain"), GLib.Variant("v", GLib.Variant("s", "")))
        session = GLib.Variant("o", call(root, interface + ".Service", "OpenSession", *plain)[1])
        items = [item for collection in ask(root, "Service", "Collections") for item in ask(collection, "Collection", "Items")]
        secrets = {ask(item, "Item", "Label"): call(item, interface + ".Item", "GetSecret", session)[0][2] for item in items}
        return {label: bytes(secret) for label, secret in secrets.items()}
    finally:
        bus.close_sync(None)
