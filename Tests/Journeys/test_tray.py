# SPDX-License-Identifier: MIT
"""A person closes the window: the client stays in the tray where there is one, and goes on counting."""

from gi.repository import Gio, GLib

from harness import bus
from harness.journey import Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import ROWS

ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
WATCHER = """<node><interface name="org.kde.StatusNotifierWatcher">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
</interface></node>"""


class Tray:
    """The tray of a person's desktop. It answers while `has_item` is asked."""

    def __init__(self, person: Person) -> None:
        self._bus = bus.connect(person.environment["DBUS_SESSION_BUS_ADDRESS"])
        self._item = ""
        self._watched = False
        watcher = Gio.DBusNodeInfo.new_for_xml(WATCHER).interfaces[0]
        self._bus.register_object("/StatusNotifierWatcher", watcher, self._take_item, self._tell_of_host, None)
        name = GLib.Variant("s", "org.kde.StatusNotifierWatcher"), GLib.Variant("u", 0)
        bus.call(self._bus, bus.BUS, "org.freedesktop.DBus", "RequestName", *name)

    def _take_item(self, _bus, _sender, _path, _interface, _method, parameters, invocation) -> None:
        self._item = parameters.unpack()[0]
        invocation.return_value(None)

    def _tell_of_host(self, *_) -> GLib.Variant:
        self._watched = True
        return GLib.Variant("b", True)

    def end(self) -> None:
        self._bus.close_sync(None)

    def has_item(self) -> bool:
        while GLib.MainContext.default().iteration(False):
            pass
        return self._item != "" and self._watched

    def look(self, what: str):
        return bus.ask(self._bus, self._item + "/StatusNotifierItem", ITEM, what)

    def click(self) -> None:
        nowhere = GLib.Variant("i", 0)
        bus.call(self._bus, self._item + "/StatusNotifierItem", ITEM, "Activate", nowhere, nowhere)

    def choose(self, label: str) -> None:
        menu = self._item + self.look("Menu")
        whole = GLib.Variant("i", 0), GLib.Variant("i", -1), GLib.Variant("as", [])
        entries = bus.call(self._bus, menu, MENU, "GetLayout", *whole)[1][2]
        entry = next(number for number, shown, _ in entries if shown["label"] == label)
        clicked = GLib.Variant("(isvu)", (entry, "clicked", GLib.Variant("i", 0), 0))
        bus.call(self._bus, menu, MENU, "Event", *(clicked.get_child_value(index) for index in range(4)))


class TrayJourney(Journey):
    def test_closing_the_window(self) -> None:
        anna = self.person("anna")
        # Without a tray it ends with its window.
        self.registered(anna)

        tray = Tray(anna)
        anna.open_client()
        self.open_chat(anna, "Lobby")
        eventually("the client is in the tray", tray.has_item)
        # Whatever the tray said before, the client has heard once it answers this.
        self.assertEqual("", tray.look("ToolTip")[3])
        plain = tray.look("IconPixmap")
        anna.close_window()
        self.write_to_lobby()
        eventually("the message is counted", lambda: tray.look("ToolTip")[3] == "1 unread")
        self.assertNotEqual(plain, tray.look("IconPixmap"))

        tray.click()
        anna.screen.find(ROWS, "Lobby, .*, 1 unread")
        anna.close_window()
        tray.choose("Open OrvaneTalk")
        anna.screen.find(ROWS, "Lobby, .*, 1 unread")
        # Started once more, the client is still one.
        anna.close_window()
        anna.start_again()
        anna.screen.find(ROWS, "Lobby, .*, 1 unread")
        tray.choose("Quit")
        anna.wait_for_end()

        # A window that is hidden where no tray shows it any more could not be reached.
        tray.end()
        tray = Tray(anna)
        anna.open_client()
        eventually("the client is in the tray again", tray.has_item)
        eventually("the message counts again", lambda: tray.look("ToolTip")[3] == "1 unread")
        anna.close_window()
        tray.end()
        anna.screen.find(ROWS, "Lobby.*")

    def write_to_lobby(self) -> None:
        token = self.server.register("boris")["token"]
        chats = self.server.call("/api/messenger/chats", None, token)["chats"]
        lobby = next(chat["id"] for chat in chats if chat["title"] == "Lobby")
        self.server.call(f"/api/messenger/chats/{lobby}/messages", {"content": "Are you there?"}, token)
