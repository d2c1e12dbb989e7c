# SPDX-License-Identifier: MIT
"""The frame of one journey: what is started before it and ended after it, and what it leaves on failure."""

import json
import os
import re
import shutil
import sys
import tempfile
import unittest
import urllib.request
from pathlib import Path

from . import processes
from .person import Person
from .screen import ENTRIES, FOCUSED, LISTS, ROWS
from .server import HomeServer

BUILD = Path(os.environ["ORVANETALK_BUILD"])
PASSWORD = "correct-horse-9"


class Journey(unittest.TestCase):
    def setUp(self) -> None:
        processes.adopt_orphans()
        # Short, since the path of a bus's socket has little room.
        self.folder = Path(tempfile.mkdtemp(prefix="journey-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.addCleanup(processes.end_all)
        self.people: list[Person] = []
        self.server = HomeServer(BUILD / "bin/orvanetalk-homeserver", self.folder / "server")
        self.server.start()

    def person(self, name: str) -> Person:
        folder = self.folder / name
        folder.mkdir()
        person = Person(name, BUILD / "bin/orvanetalk", folder, self.server)
        self.people.append(person)
        return person

    def call(self, path: str, body: dict | None = None, token: str = "") -> dict:
        """One request to the home server, past the client."""
        request = urllib.request.Request(self.server.http + path, method="POST" if body is not None else "GET")
        request.add_header("Content-Type", "application/json")
        if token:
            request.add_header("Authorization", "Bearer " + token)
        data = json.dumps(body).encode() if body is not None else None
        with urllib.request.urlopen(request, data, timeout=20) as answer:
            return json.load(answer)

    def sign_in(self, name: str) -> dict:
        """`token` and `user` of a device beside the client."""
        return self.call("/api/auth/login", {"username": name, "password": PASSWORD, "device_id": "another"})

    def meet(self, one: str, other: str) -> None:
        """A direct chat of two who have registered."""
        first, second = self.sign_in(one), self.sign_in(other)
        people = {"user_id": first["user"]["id"], "participants": [second["user"]["id"]]}
        self.call("/api/messenger/chats", people | {"type": "direct", "title": None}, first["token"])

    def register(self, person: Person) -> None:
        """Through the window, up to the main screen."""
        screen = person.open_client()
        screen.button("Нет аккаунта? Зарегистрироваться").press()
        screen.entry("Имя для отображения")
        person.fill("Логин", person.name)
        person.fill("Пароль", PASSWORD)
        person.fill("Имя для отображения", person.name.title())
        person.click(screen.button("Создать аккаунт"))
        screen.find(LISTS, "Chats")
        screen.find(ROWS, "Lobby(,.*)?")

    def open_chat(self, person: Person, chat: str) -> None:
        """By a pattern for the beginning of its row's name."""

        def opened() -> bool:
            # Chats that are still arriving may move the row away under the pointer.
            person.click(person.screen.find(ROWS, f"{chat}(,.*)?"))
            return person.screen.look(ENTRIES, re.escape("Message..."), FOCUSED) is not None

        processes.eventually(f"{chat} is open", opened)

    def picture(self, person: Person, name: str) -> None:
        """For whoever wants to look: kept only where ORVANETALK_PICTURES names a folder."""
        if folder := os.environ.get("ORVANETALK_PICTURES"):
            person.take_picture(Path(folder) / f"{name}.png")

    def assert_all_named(self, person: Person, screen_name: str) -> None:
        unnamed = person.screen.unnamed()
        self.assertEqual([], unnamed, f"controls without a name on the {screen_name} screen")

    def run(self, result: unittest.TestResult | None = None) -> unittest.TestResult | None:
        self._result = result or self.defaultTestResult()
        return super().run(self._result)

    def tearDown(self) -> None:
        if not any(test is self for test, _ in self._result.failures + self._result.errors):
            return
        evidence = BUILD / "journeys" / self.id()
        evidence.mkdir(parents=True, exist_ok=True)
        print(f"What was seen last is in {evidence}", file=sys.stderr)
        for log in self.folder.rglob("*.log"):
            shutil.copy(log, evidence / "-".join(log.relative_to(self.folder).parts))
        for person in self.people:
            try:
                person.save_evidence(evidence)
            except Exception as problem:  # The journey's own failure must stay the one that is told.
                print(f"no evidence of {person.name}: {problem}", file=sys.stderr)
