# SPDX-License-Identifier: MIT
"""Two people find each other: a request that is rejected, one that is accepted, and an address book from vCards."""

import sqlite3
import unittest
from pathlib import Path

from harness.journey import PASSWORD, Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import BUTTONS, ENTRIES, FOCUSED, ROWS

# The same number stands on two cards, and counts for the first by given name.
CARDS = """BEGIN:VCARD\r
VERSION:2.1\r
N:Same;Яков;;;\r
TEL:+7 900-123\r
END:VCARD\r
BEGIN:VCARD\r
VERSION:3.0\r
N:Ветрова;Анна;;;\r
ORG:Ромашка\r
TEL;TYPE=CELL:+7 (900) 123\r
TEL;TYPE=WORK:8 900 124\r
END:VCARD\r
"""


class Contacts(Journey):
    def test_finding_each_other(self) -> None:
        anna, boris = self.person("anna"), self.person("boris")
        self.register(anna, "Анна")
        self.register(boris, "Boris Longbeard of the Northern Hills and of the Southern Sea")
        self.call("/api/auth/register", {"username": "dorit", "password": PASSWORD, "display_name": "דורית 👋🏽"})

        self.import_address_book(anna)
        self.ask(anna)
        self.answer(boris, by_keys=False)
        self.ask(anna)
        self.answer(boris, by_keys=True)
        self.look_at_each_other(anna, boris)
        anna.close_client()
        boris.close_client()

    def register(self, person: Person, display_name: str) -> None:
        self.call(
            "/api/auth/register", {"username": person.name, "password": PASSWORD, "display_name": display_name}
        )
        screen = person.open_client()
        screen.button("Нет аккаунта? Зарегистрироваться")
        person.fill("Логин", person.name)
        person.fill("Пароль", PASSWORD)
        person.key("Return")
        screen.find(ROWS, "Lobby(,.*)?")

    def open_contacts(self, person: Person) -> None:
        person.screen.button("Contacts").press()
        person.screen.find(ENTRIES, r"Search users\.\.\.", FOCUSED)

    def close_contacts(self, person: Person) -> None:
        person.screen.button("Done").press()
        eventually("the sheet is closed", lambda: not person.screen.look(BUTTONS, "Import address book"))

    def import_address_book(self, person: Person) -> None:
        self.open_contacts(person)
        self.assert_all_named(person, "contacts")
        self.picture(person, "contacts-01")
        person.screen.button("Import address book").press()
        self.find_alert(person, "В адресной книге нет контактов для импорта.")
        self.picture(person, "contacts-02-empty-book")
        folder = Path(person.environment["XDG_DATA_HOME"]) / "contacts" / "friends"
        folder.mkdir(parents=True)
        (folder / "all.vcf").write_text(CARDS, newline="")
        person.screen.button("Import address book").press()
        self.find_alert(person, "Imported contacts: 2")
        self.picture(person, "contacts-03-imported")
        self.close_contacts(person)
        database = self.folder / "server" / "data"
        stored = [row for file in database.rglob("*") if file.is_file() for row in self.address_book(file)]
        self.assertEqual([("Анна Ветрова", "Ромашка")] * 2, stored)

    def find_alert(self, person: Person, words: str) -> None:
        eventually(words, lambda: any(title == words and node.shown for node, title in person.screen.titled()))

    def address_book(self, file: Path) -> list[tuple[str, str]]:
        try:
            with sqlite3.connect(f"file:{file}?mode=ro", uri=True) as database:
                return database.execute("SELECT display_name, organization FROM address_book").fetchall()
        except sqlite3.DatabaseError:
            return []

    def ask(self, anna: Person) -> None:
        self.open_contacts(anna)
        anna.type("bor")
        anna.screen.find(ROWS, "Boris .*, @boris")
        self.assert_all_named(anna, "found people")
        self.picture(anna, "contacts-04-found")
        # From the field down to the row, and ask.
        anna.key("Down")
        anna.screen.find(ROWS, "Boris .*, @boris", FOCUSED)
        anna.key("Return")
        anna.screen.find({"label", "static", "text"}, "Request sent")
        self.picture(anna, "contacts-05-asked")
        self.close_contacts(anna)

    def answer(self, boris: Person, by_keys: bool) -> None:
        self.open_contacts(boris)
        boris.screen.button("Requests (1)").press()
        boris.screen.find(ROWS, "Анна, wants to connect")
        self.assert_all_named(boris, "requests")
        self.picture(boris, "contacts-06-requests")
        if by_keys:
            boris.key("Tab")
            boris.screen.find(ROWS, "Анна, wants to connect", FOCUSED)
            boris.key("Return")
        else:
            boris.click(boris.screen.button("Reject Анна"))
        eventually("the request is gone", lambda: not boris.screen.look(ROWS, "Анна, wants to connect"))
        eventually("the words for no requests", lambda: "No pending requests" in boris.screen.dump())
        self.picture(boris, "contacts-07-no-requests")
        self.close_contacts(boris)

    def look_at_each_other(self, anna: Person, boris: Person) -> None:
        for person, other in ((anna, "Boris .*, online"), (boris, "Анна, online")):
            self.open_contacts(person)
            person.screen.find(ROWS, other)
            self.picture(person, f"contacts-08-{person.name}")
        # In the one's search field and the other's: Esc empties it first and then closes.
        anna.type("dor")
        anna.screen.find(ROWS, ".*, @dorit")
        self.picture(anna, "contacts-09-right-to-left")
        anna.key("Escape")
        anna.key("Escape")
        eventually("the sheet is closed", lambda: not anna.screen.look(BUTTONS, "Import address book"))
        self.close_contacts(boris)


if __name__ == "__main__":
    unittest.main()
