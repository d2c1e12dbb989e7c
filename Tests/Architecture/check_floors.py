# SPDX-License-Identifier: MIT
"""Checks that every folder under Sources/ uses only lower floors, and that no file outgrows its limit.

check_floors.py ROOT prints one line per violation, "file:line: what is wrong", and fails if there is one.
"""

import re
import sys
from pathlib import Path
from typing import Iterator

FLOORS = {
    "Base": 0,
    "Model": 1,
    "Platform": 1,
    "Session": 2,
    "Server": 3,
    "Encryption": 4,
    "LocalNetwork": 4,
    "AI": 4,
    "OfflineQueue": 5,
    "RichContent": 5,
    "Calls": 5,
    "Extensions": 5,
    "Conversation": 6,
    "Account": 6,
    "ChatList": 7,
    "Application": 8,
}
# The kit stands beside the floors.
KIT = "Interface"
KIT_USES = {"Base", "Model"}
KIT_USED_FROM_FLOOR = 4

# Rooms within a room, lowest first: those of one floor do not use each other.
WITHIN = {
    "Conversation": [{"Chat"}, {"Actions", "Assistant", "Receiving", "Sending"}, {"Messages"}, {"Screen"}],
}

LIMITS = {".h": 300, ".cpp": 600, ".qml": 600}
LIMITED_ROOTS = ("Sources", "HomeServer", "Tests", "Benchmarks", "Fuzz")
EXCEPTIONS = "Tests/Architecture/long_files.txt"

INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]')
QML_IMPORT = re.compile(r"^\s*import\s+OrvaneTalk\.(\w+)")
QML_PATH_IMPORT = re.compile(r'^\s*import\s+"')
CODE = {".h", ".cpp", ".qml"}


def may_use(user: str, used: str) -> bool:
    if user == used:
        return True
    if user == KIT:
        return used in KIT_USES
    if used == KIT:
        return FLOORS[user] >= KIT_USED_FROM_FLOOR
    return FLOORS[used] < FLOORS[user]


def may_use_within(room: str, user: str, used: str) -> bool:
    """Whether one folder of a room may use another one of it."""
    floor = {name: number for number, names in enumerate(WITHIN[room]) for name in names}
    return user == used or (user in floor and used in floor and floor[used] < floor[user])


def lines_of(path: Path) -> list[str]:
    return path.read_text(encoding="utf-8").splitlines()


def files_under(folder: Path, suffixes: set[str]) -> Iterator[Path]:
    return (path for path in sorted(folder.rglob("*")) if path.suffix in suffixes and path.is_file())


class Check:
    def __init__(self, root: Path) -> None:
        self.root = root
        self.violations: list[str] = []
        self.rooms = {name for name in [*FLOORS, KIT] if (root / "Sources" / name).is_dir()}
        self.linked = {room: self.words_of_cmake(room) for room in self.rooms}

    def fault(self, path: Path, line: int, text: str) -> None:
        self.violations.append(f"{path.relative_to(self.root)}:{line}: {text}")

    def words_of_cmake(self, room: str) -> dict[str, int]:
        """The other rooms that a room's CMakeLists.txt names, each with its first line."""
        named: dict[str, int] = {}
        path = self.root / "Sources" / room / "CMakeLists.txt"
        if not path.exists():
            return named
        for number, line in enumerate(lines_of(path), 1):
            for word in re.findall(r"(?<![\w/.])(?:OrvaneTalk\.)?(\w+?)(?:plugin)?(?![\w/.])", line.split("#")[0]):
                if word in self.rooms and word != room:
                    named.setdefault(word, number)
        return named

    def reachable(self, room: str) -> set[str]:
        seen: set[str] = set()
        waiting = [room]
        while waiting:
            for other in self.linked[waiting.pop()]:
                if other not in seen:
                    seen.add(other)
                    waiting.append(other)
        return seen

    def check_rooms(self) -> None:
        for folder in sorted((self.root / "Sources").iterdir()):
            if folder.is_dir() and folder.name not in self.rooms:
                self.fault(folder, 1, "stands on no floor")
        for room in sorted(self.rooms):
            for used, line in self.linked[room].items():
                if not may_use(room, used):
                    self.fault(self.root / "Sources" / room / "CMakeLists.txt", line, f"{room} may not link {used}")
            reachable = self.reachable(room)
            for path in files_under(self.root / "Sources" / room, CODE):
                self.check_file(path, room, reachable)
        for path in sorted((self.root / "Sources").glob("*/**/*")):
            if path.suffix in CODE or path.name == "CMakeLists.txt":
                for number, line in enumerate(lines_of(path), 1):
                    if "Tests/" in line:
                        self.fault(path, number, "mentions Tests/")

    def check_file(self, path: Path, room: str, reachable: set[str]) -> None:
        for number, line in enumerate(lines_of(path), 1):
            if path.suffix == ".qml":
                match = QML_IMPORT.match(line)
                if QML_PATH_IMPORT.match(line):
                    self.fault(path, number, "imports by path, not by module")
                used = match.group(1) if match else None
            else:
                match = INCLUDE.match(line)
                used = match.group(1).split("/")[0] if match and "/" in match.group(1) else None
                if used in ("..", "HomeServer", "Sources"):
                    self.fault(path, number, f"may not include {match.group(1)}")
            if used == room and room in WITHIN and path.suffix != ".qml":
                user, inner = path.relative_to(self.root / "Sources" / room).parts[0], match.group(1).split("/")[1]
                if not may_use_within(room, user, inner):
                    self.fault(path, number, f"{room}/{user} may not use {room}/{inner}")
            if used not in self.rooms or used == room:
                continue
            if not may_use(room, used):
                self.fault(path, number, f"{room} may not use {used}")
            elif used not in reachable:
                self.fault(path, number, f"uses {used}, which the CMakeLists.txt of {room} does not link")

    def check_home_server(self) -> None:
        server = self.root / "HomeServer"
        for path in files_under(server, {".h", ".cpp"}):
            for number, line in enumerate(lines_of(path), 1):
                match = INCLUDE.match(line)
                if not match or "/" not in match.group(1):
                    continue
                name = match.group(1)
                own = (server / name).exists() or (path.parent / name).exists()
                if "Sources/" in name or ((self.root / "Sources" / name).exists() and not own):
                    self.fault(path, number, f"the home server may not include the client's {name}")

    def check_lengths(self) -> None:
        allowed: dict[str, int] = {}
        listed = self.root / EXCEPTIONS
        for number, line in enumerate(lines_of(listed) if listed.exists() else [], 1):
            name, _, reason = line.split("#")[0].strip().partition(" ")
            if name and not reason.strip():
                self.fault(listed, number, f"{name} is listed without a reason")
            if name:
                allowed[name] = number
        for root in LIMITED_ROOTS:
            for path in files_under(self.root / root, CODE):
                name = str(path.relative_to(self.root))
                length, limit = len(lines_of(path)), LIMITS[path.suffix]
                if length <= limit:
                    continue
                if allowed.pop(name, None) is None:
                    self.fault(path, limit + 1, f"has {length} lines, {limit} are allowed")
        for name, number in allowed.items():
            self.fault(listed, number, f"{name} is listed, but is not too long")


def violations(root: Path) -> list[str]:
    check = Check(root)
    check.check_rooms()
    check.check_home_server()
    check.check_lengths()
    return check.violations


if __name__ == "__main__":
    found = violations(Path(sys.argv[1]).resolve())
    print("\n".join(found) or "Every folder keeps to its floor.")
    sys.exit(1 if found else 0)
