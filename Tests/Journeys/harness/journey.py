# SPDX-License-Identifier: MIT
"""The frame of one journey: what is started before it and ended after it, and what it leaves on failure."""

import os
import re
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

from . import processes
from .person import Person
from .screen import ENTRIES, FOCUSED, LISTS, ROWS
from .server import PASSWORD, HomeServer

BUILD = Path(os.environ["ORVANETALK_BUILD"])


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

    def sign_in(self, name: str) -> dict:
        """`token` and `user` of a device beside the client."""
        return self.server.call("/api/auth/login", {"username": name, "password": PASSWORD, "device_id": "another"})

    def meet(self, one: str, other: str, group: str | None = None) -> None:
        """A direct chat of two who have registered, or a group of that title."""
        first, second = self.sign_in(one), self.sign_in(other)
        chat = {"type": "group" if group else "direct", "title": group}
        people = {"user_id": first["user"]["id"], "participants": [second["user"]["id"]]}
        self.server.call("/api/messenger/chats", chat | people, first["token"])

    def register(self, person: Person) -> None:
        """Through the window, up to the main screen."""
        screen = person.open_client()
        screen.button("Нет аккаунта? Зарегистрироваться")
        self.look_over(person, "sign-in")
        screen.button("Нет аккаунта? Зарегистрироваться").press()
        screen.entry("Имя для отображения")
        self.look_over(person, "registration")
        person.fill("Логин", person.name)
        person.fill("Пароль", PASSWORD)
        person.fill("Имя для отображения", person.name.title())
        person.click(screen.button("Создать аккаунт"))
        screen.find(LISTS, "Chats")
        screen.find(ROWS, "Lobby(,.*)?")

    def registered(self, *people: Person) -> None:
        """They have been there once."""
        for person in people:
            self.register(person)
            person.close_client()

    def enter_by_password(self, person: Person) -> None:
        person.screen.button("Нет аккаунта? Зарегистрироваться")
        person.fill("Логин", person.name)
        person.fill("Пароль", PASSWORD)
        person.key("Return")

    def open_chat(self, person: Person, chat: str) -> None:
        """By a pattern for the beginning of its row's name."""

        def opened() -> bool:
            # Chats that are still arriving may move the row away under the pointer.
            person.click(person.screen.find(ROWS, f"{chat}(,.*)?"))
            return person.screen.look(ENTRIES, re.escape("Message..."), FOCUSED) is not None

        processes.eventually(f"{chat} is open", opened)

    def say(self, speaker: Person, text: str, *listeners: Person) -> None:
        """Written where the cursor stands, sent by Enter, and heard by all."""
        speaker.type(text)
        speaker.key("Return")
        speaker.screen.find(ROWS, f"You, {re.escape(text)}, .*, sent")
        for listener in listeners:
            listener.screen.find(ROWS, f".*, {re.escape(text)}, .*, received")

    def look_over(self, person: Person, what: str) -> None:
        """A person who hears the screen meets nothing on it without a name."""
        self.assertEqual([], person.screen.unnamed(), f"controls without a name: {what}")

    def run(self, result: unittest.TestResult | None = None) -> unittest.TestResult | None:
        self._result = result or self.defaultTestResult()
        return super().run(self._result)

    def tearDown(self) -> None:
        if not any(test is self for test, _ in self._result.failures + self._result.errors):
            # Whoever is still there leaves in order.
            for person in self.people:
                if person.has_client:
                    person.close_client()
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
