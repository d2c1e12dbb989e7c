# SPDX-License-Identifier: MIT
"""A person keeps house: channels, folders, a group, the saved chat, a search, stars, the menu of a row, all by keys."""

import re

from harness.journey import Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import BUTTONS, ENABLED, MENU_ITEMS, ROWS, SELECTED, SENSITIVE, TEXTS


class ChatList(Journey):
    def test_keeping_house(self) -> None:
        anna = self.person("anna")
        self.server.register("boris")
        self.register(anna)
        self.look_over(anna, "empty")

        self.make_channel(anna)
        self.make_folder(anna)
        self.make_group(anna)
        self.work_by_actions(anna)
        self.open_saved_chat_twice(anna)
        self.search_and_open(anna)
        self.use_the_row_menu(anna)
        self.look_at_stars(anna)
        anna.key("ctrl+1")
        anna.screen.find_focused("Message...")
        anna.key("alt+Down")
        anna.screen.find_focused("Message...")

    def make_channel(self, person: Person) -> None:
        person.screen.button("New Channel").press()
        person.screen.find_focused("Channel name")
        create = person.screen.find(BUTTONS, "Create")
        self.assertFalse(create.is_all(ENABLED) or create.is_all(SENSITIVE))
        person.type("News of the house")
        person.screen.find(BUTTONS, "Create", ENABLED, SENSITIVE)
        self.look_over(person, "new-channel")
        person.key("Return")
        person.screen.find(ROWS, "News of the house, Channel").press()
        person.screen.find(ROWS, "News of the house, Channel", SELECTED)

    def make_folder(self, person: Person) -> None:
        person.screen.button("New folder").press()
        person.screen.find_focused("Название")
        self.look_over(person, "new-folder")
        # Nothing typed: Esc closes, and the focus is where it was.
        person.key("Escape")
        person.screen.button("New folder").press()
        person.screen.find_focused("Название")
        person.type("Work")
        person.key("Return")
        person.screen.find({"radio button"}, "📁 Work")
        eventually("an empty folder shows no chats", lambda: not self.rows_like(person, "Lobby.*"))
        person.screen.find({"radio button"}, "All chats").press()
        person.screen.find(ROWS, "Lobby(,.*)?")

    def make_group(self, person: Person) -> None:
        person.screen.button("New Group").press()
        person.screen.find_focused("Group name")
        person.type("Gardeners")
        person.screen.find({"check box"}, "Orvane AI").press()
        self.look_over(person, "new-group")
        person.screen.button("Create").press()
        person.screen.find_focused("Message...")
        person.screen.find(ROWS, "Gardeners(,.*)?")
        self.say(person, "The roses want water")

    def work_by_actions(self, person: Person) -> None:
        """With nothing but what assistive technology can do to what it finds."""
        person.click(person.screen.find(ROWS, "Gardeners(,.*)?"), button=3)
        person.screen.find(MENU_ITEMS, "Add to folder").press()
        person.screen.find(MENU_ITEMS, "📁 Work").press()
        person.screen.wait_without(MENU_ITEMS, "Pin")
        person.click(person.screen.find(ROWS, "Echo(,.*)?"), button=3)
        person.screen.find(MENU_ITEMS, "Delete").press()
        eventually("the row is gone", lambda: "list item 'Echo" not in person.screen.dump())

    def open_saved_chat_twice(self, person: Person) -> None:
        for _ in range(2):
            person.click(person.screen.find(ROWS, "Saved Messages, Your personal space"))
            person.screen.find(TEXTS, "Saved Messages")
        eventually("one saved chat", lambda: len(self.rows_like(person, "Saved Messages(, [^Y].*)?")) == 1)

    def search_and_open(self, person: Person) -> None:
        person.key("ctrl+k")
        person.screen.find_focused("Search...")
        person.type("roses")
        hit = person.screen.find(ROWS, ".*, The roses want water")
        self.look_over(person, "search")
        person.click(hit)
        person.screen.find(ROWS, "You, The roses want water, .*")
        person.key("ctrl+k")
        person.key("Escape")
        person.screen.find(ROWS, "Lobby(,.*)?")

    def use_the_row_menu(self, person: Person) -> None:
        person.key("ctrl+k")
        for _ in range(len(self.rows_like(person, ".*")) + 3):
            person.key("Down")
        person.key("shift+F10")
        person.screen.find(MENU_ITEMS, "Pin")
        self.look_over(person, "row-menu")
        person.key("Down")
        person.key("Return")
        chats = "(?!Orvane AI, Your|Saved Messages, Your|Starred Messages, ).*"
        eventually("the chats are there", lambda: self.rows_like(person, chats))

    def look_at_stars(self, person: Person) -> None:
        person.close_client()
        # Stars come with the start.
        token = self.sign_in(person.name)["token"]
        found = self.server.call("/api/messenger/search/global?q=roses&user_id=0", None, token)["messages"][0]
        self.server.call(f"/api/messenger/messages/{found['id']}/star", {}, token)
        person.open_client()
        person.click(person.screen.find(ROWS, "Starred Messages, 1 starred"))
        person.screen.find(ROWS, ".*, The roses want water, .*")
        self.look_over(person, "starred")
        person.key("Escape")
        person.screen.wait_without(BUTTONS, "Done")

    def rows_like(self, person: Person, pattern: str) -> list[str]:
        return [name for name in person.screen.rows("Chats") if re.fullmatch(pattern, name, re.DOTALL)]
