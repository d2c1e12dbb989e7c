# SPDX-License-Identifier: MIT
"""What is on a screen, as assistive technology sees it."""

import re
from typing import Callable, Iterator

from gi.repository import Gio, GLib

from . import bus
from .processes import eventually

BUTTONS = {"push button", "button", "toggle button", "radio button", "check box", "link"}
ENTRIES = {"entry", "text", "password text"}
LISTS = {"list"}
ROWS = {"list item"}
TEXTS = {"label", "static", "text", "heading", "alert message"}
MENU_ITEMS = {"menu item"}
INTERACTIVE = BUTTONS | ENTRIES | LISTS | ROWS | MENU_ITEMS | {"combo box", "spin button", "slider", "page tab"}

# Bits of an object's state set.
CHECKED, ENABLED, FOCUSED, SELECTED, SENSITIVE, SHOWING, VISIBLE = 4, 8, 12, 23, 24, 25, 30

SCREEN_COORDINATES = GLib.Variant("u", 0)


class Gone(Exception):
    """The object or its whole client is no longer there."""


class Node:
    """One object of the tree. Nothing is remembered: each question is asked of the client."""

    def __init__(self, connection: Gio.DBusConnection, owner: str, path: str) -> None:
        self._bus, self._place = connection, owner + path

    def _ask(self, interface: str, method: str, *arguments: GLib.Variant, kind: str = "org.a11y.atspi."):
        try:
            return bus.call(self._bus, self._place, kind + interface, method, *arguments)
        except GLib.Error as problem:
            raise Gone(f"{self._place}: {problem.message}") from None

    @property
    def name(self) -> str:
        wanted = GLib.Variant("s", "org.a11y.atspi.Accessible"), GLib.Variant("s", "Name")
        return self._ask("Properties", "Get", *wanted, kind="org.freedesktop.DBus.")[0]

    @property
    def role(self) -> str:
        return self._ask("Accessible", "GetRoleName")[0]

    def children(self) -> list["Node"]:
        return [Node(self._bus, *place) for place in self._ask("Accessible", "GetChildren")[0]]

    def is_all(self, *states: int) -> bool:
        low, high = self._ask("Accessible", "GetState")[0]
        return all((low | high << 32) >> state & 1 for state in states)

    @property
    def shown(self) -> bool:
        return self.is_all(SHOWING, VISIBLE)

    def middle(self) -> tuple[int, int]:
        x, y, width, height = self._ask("Component", "GetExtents", SCREEN_COORDINATES)[0]
        if width <= 0 or height <= 0:
            raise AssertionError(f"{self.name!r} has no place on the screen")
        return x + width // 2, y + height // 2

    def press(self) -> None:
        self.act("Press")

    def act(self, action: str) -> None:
        actions = [name for name, _, _ in self._ask("Action", "GetActions")[0]]
        if action not in actions:
            raise AssertionError(f"{self.name!r} has no {action}, only {actions}")
        self._ask("Action", "DoAction", GLib.Variant("i", actions.index(action)))

    def text(self) -> str:
        return self._ask("Text", "GetText", GLib.Variant("i", 0), GLib.Variant("i", -1))[0]

    def walk(self, depth: int = 0) -> Iterator[tuple[int, "Node"]]:
        """This object and all below it, but for what goes away meanwhile."""
        yield depth, self
        try:
            children = self.children()
        except Gone:
            return
        for child in children:
            yield from child.walk(depth + 1)

    def __str__(self) -> str:
        try:
            return f"{self.role} {self.name!r}" + ("" if self.shown else " (hidden)")
        except Gone:
            return "(gone)"


class Screen:
    """The window of the one client on a person's accessibility bus."""

    def __init__(self, connection: Gio.DBusConnection, found: Callable[[str], None]) -> None:
        self._found = found
        registry = Node(connection, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
        self.root = eventually("the client shows itself", registry.children, 30)[0]

    def nodes(self) -> Iterator[Node]:
        return (node for _, node in self.root.walk())

    def look(self, roles: set[str], name: str, *states: int) -> Node | None:
        """The shown object of one of the roles whose whole name the pattern matches."""
        for node in self.nodes():
            try:
                if node.role in roles and re.fullmatch(name, node.name, re.DOTALL) and node.is_all(SHOWING, *states):
                    return node
            except Gone:
                continue
        return None

    def find(self, roles: set[str], name: str, *states: int) -> Node:
        node = eventually(f"{'/'.join(sorted(roles))} {name!r} is shown", lambda: self.look(roles, name, *states))
        self._found(name)
        return node

    def wait_without(self, roles: set[str], name: str) -> None:
        eventually(f"{'/'.join(sorted(roles))} {name!r} is gone", lambda: not self.look(roles, name))

    def find_focused(self, entry: str) -> Node:
        return self.find(ENTRIES, re.escape(entry), FOCUSED)

    def button(self, name: str) -> Node:
        return self.find(BUTTONS, re.escape(name), ENABLED)

    def entry(self, name: str) -> Node:
        """The entry of that name; the toolkit keeps a secret entry's own name back, so its panel's counts too."""

        def look() -> Node | None:
            for node, title in self.titled():
                if title == name and node.role in ENTRIES and node.shown:
                    return node
            return None

        return eventually(f"entry {name!r} is shown", look)

    def rows(self, list_name: str) -> list[str]:
        """The names of the rows of a list, in its order; nothing while it is not shown."""
        try:
            found = self.look(LISTS, re.escape(list_name))
            return [row.name for row in found.children() if row.role in ROWS] if found else []
        except Gone:
            return []

    def titled(self) -> Iterator[tuple[Node, str]]:
        """Each object with the name that a person hears for it: its own, or that of the panel around it alone."""
        trail: list[Node] = []
        for depth, node in self.root.walk():
            trail[depth:] = [node]
            try:
                name = node.name.strip()
                if not name and node.role in ENTRIES and trail[-2].role == "panel":
                    name = trail[-2].name.strip()
                yield node, name
            except Gone:
                continue

    def unnamed(self) -> list[str]:
        """Each shown control that a person who hears the screen would meet without a name."""
        return [str(node) for node, name in self.titled() if not name and node.shown and node.role in INTERACTIVE]

    def dump(self) -> str:
        return "\n".join("  " * depth + str(node) for depth, node in self.root.walk())
