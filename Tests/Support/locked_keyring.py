# SPDX-License-Identifier: MIT
"""A keyring that is locked: locked_keyring.py '{"account": "secret"}'. It says "ready" when it can be asked and "asked"
when its dialog opens, which is answered on standard input: "open" unlocks it, "dismiss" does not."""

import json
import sys
from pathlib import Path

from gi.repository import Gio, GLib

INTERFACES = Gio.DBusNodeInfo.new_for_xml(Path(__file__).with_suffix(".xml").read_text())
ROOT = "/org/freedesktop/secrets"
COLLECTION = ROOT + "/collection/login"
PROMPT = ROOT + "/prompt/p1"


class LockedKeyring:
    def __init__(self, items: dict[str, str]) -> None:
        self._secrets = {f"{COLLECTION}/{account}": secret for account, secret in items.items()}
        self._locked = True
        self._wanted: list[str] = []
        self._bus = Gio.bus_get_sync(Gio.BusType.SESSION, None)
        self._publish(ROOT, "Service")
        self._publish(PROMPT, "Prompt")
        self._publish(COLLECTION, "Collection")
        for path in self._secrets:
            self._publish(path, "Item")
        Gio.bus_own_name_on_connection(
            self._bus, "org.freedesktop.secrets", Gio.BusNameOwnerFlags.NONE, lambda *_: print("ready", flush=True), None
        )

    def _publish(self, path: str, interface: str) -> None:
        info = INTERFACES.lookup_interface("org.freedesktop.Secret." + interface)
        self._bus.register_object(path, info, self._call, lambda *_: GLib.Variant("b", self._locked), None)

    def _call(self, _bus, _sender, _path, _interface, method, parameters, invocation) -> None:
        answer = getattr(self, method)(*parameters.unpack())
        if answer is None and method == "OpenSession":
            invocation.return_dbus_error("org.freedesktop.DBus.Error.NotSupported", "plain only")
        else:
            invocation.return_value(answer)

    def OpenSession(self, algorithm: str, _) -> GLib.Variant | None:
        return GLib.Variant("(vo)", (GLib.Variant("s", ""), ROOT + "/session/s1")) if algorithm == "plain" else None

    def SearchItems(self, attributes: dict[str, str]) -> GLib.Variant:
        found = [path for path in self._secrets if path == f"{COLLECTION}/{attributes['account']}"]
        return GLib.Variant("(aoao)", ([], found) if self._locked else (found, []))

    def Unlock(self, paths: list[str]) -> GLib.Variant:
        self._wanted = paths
        return GLib.Variant("(aoo)", ([], PROMPT) if self._locked else (paths, "/"))

    def GetSecrets(self, paths: list[str], session: str) -> GLib.Variant:
        secrets = {path: (session, b"", self._secrets[path].encode(), "text/plain") for path in paths}
        return GLib.Variant("(a{o(oayays)})", ({} if self._locked else secrets,))

    def ReadAlias(self, _) -> GLib.Variant:
        return GLib.Variant("(o)", (COLLECTION,))

    def Prompt(self, _) -> None:
        print("asked", flush=True)

    def Dismiss(self) -> None:
        self.complete("dismiss")

    def complete(self, word: str) -> None:
        dismissed = word != "open"
        self._locked = self._locked and dismissed
        answer = GLib.Variant("(bv)", (dismissed, GLib.Variant("ao", [] if dismissed else self._wanted)))
        self._bus.emit_signal(None, PROMPT, "org.freedesktop.Secret.Prompt", "Completed", answer)


keyring = LockedKeyring(json.loads(sys.argv[1]))
loop = GLib.MainLoop()


def heard(stream, condition) -> bool:
    word = stream.readline().strip()
    if not word:
        loop.quit()
        return False
    keyring.complete(word)
    return True


GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, heard)
loop.run()
