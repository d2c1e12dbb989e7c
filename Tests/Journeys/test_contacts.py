# SPDX-License-Identifier: MIT
"""Two people find each other: a request that is rejected, one that is accepted, and an address book from vCards."""

import shutil
from pathlib import Path

from harness.journey import Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import BUTTONS, FOCUSED, ROWS, TEXTS

# Three numbers, of which the same one stands on both cards, and counts for the first by given name.
CARDS = Path(__file__).with_name("fixtures") / "friends.vcf"
IMPORT = "Import address book"


class Contacts(Journey):
    def test_finding_each_other(self) -> None:
        anna, boris = self.person("anna"), self.person("boris")
        self.server.register("anna", "Анна")
        self.server.register("boris", "Boris Longbeard of the Northern Hills and of the Southern Sea")
        self.server.register("dorit", "דורית 👋🏽")
        for person in (anna, boris):
            person.open_client()
            self.enter_by_password(person)
            person.screen.find(ROWS, "Lobby(,.*)?")

        self.import_address_book(anna)
        for by_keys in (False, True):
            self.ask(anna)
            self.answer(boris, by_keys)
        self.look_at_each_other(anna, boris)

    def open_contacts(self, person: Person) -> None:
        person.screen.button("Contacts").press()
        person.screen.find_focused("Search users...")

    def close_contacts(self, person: Person) -> None:
        person.screen.button("Done").press()
        person.screen.wait_without(BUTTONS, IMPORT)

    def import_address_book(self, person: Person) -> None:
        self.open_contacts(person)
        self.look_over(person, "contacts-01")
        person.screen.button(IMPORT).press()
        self.find_alert(person, "В адресной книге нет контактов для импорта.")
        folder = Path(person.environment["XDG_DATA_HOME"]) / "contacts" / "friends"
        folder.mkdir(parents=True)
        shutil.copy(CARDS, folder)
        person.screen.button(IMPORT).press()
        self.find_alert(person, "Imported contacts: 2")
        self.close_contacts(person)

    def find_alert(self, person: Person, words: str) -> None:
        eventually(words, lambda: any(title == words and node.shown for node, title in person.screen.titled()))

    def ask(self, anna: Person) -> None:
        self.open_contacts(anna)
        anna.type("bor")
        anna.screen.find(ROWS, "Boris .*, @boris")
        self.look_over(anna, "found")
        # From the field down to the row, and ask.
        anna.key("Down")
        anna.screen.find(ROWS, "Boris .*, @boris", FOCUSED)
        anna.key("Return")
        anna.screen.find(TEXTS, "Request sent")
        self.close_contacts(anna)

    def answer(self, boris: Person, by_keys: bool) -> None:
        request = "Анна, wants to connect"
        self.open_contacts(boris)
        boris.screen.button("Requests (1)").press()
        boris.screen.find(ROWS, request)
        self.look_over(boris, "requests")
        if by_keys:
            boris.key("Tab")
            boris.screen.find(ROWS, request, FOCUSED)
            boris.key("Return")
        else:
            boris.click(boris.screen.button("Reject Анна"))
        boris.screen.wait_without(ROWS, request)
        eventually("the words for no requests", lambda: "No pending requests" in boris.screen.dump())
        self.close_contacts(boris)

    def look_at_each_other(self, anna: Person, boris: Person) -> None:
        for person, other in ((anna, "Boris .*, online"), (boris, "Анна, online")):
            self.open_contacts(person)
            person.screen.find(ROWS, other)
        # In the one's search field and the other's: Esc empties it first and then closes.
        anna.type("dor")
        anna.screen.find(ROWS, ".*, @dorit")
        anna.key("Escape")
        anna.key("Escape")
        anna.screen.wait_without(BUTTONS, IMPORT)
        self.close_contacts(boris)
