# SPDX-License-Identifier: MIT
"""A person keeps house: channels, folders, a group, the saved chat, a search, stars, the menu of a row, all by keys."""

import re
import unittest

from harness.journey import PASSWORD, Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import BUTTONS, CHECKED, ENABLED, ENTRIES, FOCUSED, ROWS, SELECTED, SENSITIVE

DIALOGS = {"dialog", "alert"}


class ChatList(Journey):
    def test_keeping_house(self) -> None:
        anna = self.person("anna")
        boris = self.call("/api/auth/register", {"username": "boris", "password": PASSWORD, "display_name": "Boris"})
        self.register(anna)
        self.assert_all_named(anna, "main")
        self.picture(anna, "01-empty")

        self.make_channel(anna)
        self.make_folder(anna)
        self.make_group(anna)
        self.work_by_actions(anna)
        self.open_saved_chat_twice(anna)
        self.search_and_open(anna, boris)
        self.use_the_row_menu(anna)
        self.look_at_stars(anna)
        self.walk_by_keys(anna)
        anna.close_client()

    def make_channel(self, person: Person) -> None:
        person.screen.button("New Channel").press()
        person.screen.find(ENTRIES, "Channel name", FOCUSED)
        self.assert_all_named(person, "new channel")
        self.assertFalse(person.screen.find(BUTTONS, "Create").is_all(ENABLED))
        self.assertFalse(person.screen.find(BUTTONS, "Create").is_all(SENSITIVE))
        person.type("News of the house")
        person.screen.find(BUTTONS, "Create", ENABLED, SENSITIVE)
        self.picture(person, "02-new-channel")
        person.key("Return")
        person.screen.find(ROWS, "News of the house, Channel").press()
        person.screen.find(ROWS, "News of the house, Channel", SELECTED)
        self.picture(person, "02-open-channel")

    def make_folder(self, person: Person) -> None:
        person.screen.button("New folder").press()
        person.screen.find(ENTRIES, "Название", FOCUSED)
        self.assert_all_named(person, "new folder")
        self.picture(person, "03-new-folder")
        # Nothing typed: Esc closes, and the focus is where it was.
        person.key("Escape")
        person.screen.button("New folder").press()
        person.screen.find(ENTRIES, "Название", FOCUSED)
        person.type("Work")
        person.key("Return")
        person.screen.find({"radio button"}, "📁 Work")
        eventually("an empty folder shows no chats", lambda: not self.rows_like(person, "Lobby.*"))
        self.picture(person, "04-empty-folder")
        person.screen.find({"radio button"}, "All chats").press()
        person.screen.find(ROWS, "Lobby(,.*)?")

    def make_group(self, person: Person) -> None:
        person.screen.button("New Group").press()
        person.screen.find(ENTRIES, "Group name", FOCUSED)
        self.assert_all_named(person, "new group")
        person.type("Gardeners")
        person.screen.find({"check box"}, "Orvane AI").press()
        self.picture(person, "05-new-group")
        person.screen.button("Create").press()
        person.screen.find(ENTRIES, re.escape("Message..."), FOCUSED)
        person.screen.find(ROWS, "Gardeners(,.*)?")
        person.type("The roses want water")
        person.key("Return")
        person.screen.find(ROWS, "You, The roses want water, .*")
        self.picture(person, "06-group")

    def work_by_actions(self, person: Person) -> None:
        """With nothing but what assistive technology can do to what it finds."""
        person.screen.button("Poll").press()
        person.screen.find(ENTRIES, re.escape("Вопрос опроса..."), FOCUSED)
        for text in ("Roses or tulips?", "Roses", "Tulips"):
            person.type(text)
            person.key("Return")
        person.screen.find({"check box"}, "Анонимный").act("Toggle")
        person.screen.find({"check box"}, "Анонимный", CHECKED)
        self.picture(person, "06-poll")
        person.screen.button("Создать").press()
        person.screen.find({"static", "label", "text"}, "Анонимный")
        self.picture(person, "06-anonymous-poll")

        person.click(person.screen.find(ROWS, "Gardeners(,.*)?"), button=3)
        person.screen.find({"menu item"}, "Add to folder").press()
        person.screen.find({"menu item"}, "📁 Work").press()
        eventually("the menu is closed", lambda: not person.screen.look({"menu item"}, "Pin"))
        person.click(person.screen.find(ROWS, "Echo(,.*)?"), button=3)
        person.screen.find({"menu item"}, "Delete").press()
        eventually("the row is gone", lambda: "list item 'Echo" not in person.screen.dump())

    def open_saved_chat_twice(self, person: Person) -> None:
        for _ in range(2):
            person.click(person.screen.find(ROWS, "Saved Messages, Your personal space"))
            person.screen.find({"heading", "label", "static"}, "Saved Messages")
        eventually("one saved chat", lambda: len(self.rows_like(person, "Saved Messages(, [^Y].*)?")) == 1)

    def search_and_open(self, person: Person, other: dict) -> None:
        person.key("ctrl+k")
        person.screen.find(ENTRIES, re.escape("Search..."), FOCUSED)
        person.type("roses")
        hit = person.screen.find(ROWS, ".*, The roses want water")
        self.assert_all_named(person, "search results")
        self.picture(person, "07-search")
        person.click(hit)
        person.screen.find(ROWS, "You, The roses want water, .*")
        person.key("ctrl+k")
        person.key("Escape")
        person.screen.find(ROWS, "Lobby(,.*)?")

    def use_the_row_menu(self, person: Person) -> None:
        person.key("ctrl+k")
        person.key("Down")
        for _ in range(len(self.rows_like(person, ".*")) + 2):
            person.key("Down")
        person.key("shift+F10")
        person.screen.find({"menu item"}, "Pin")
        self.assert_all_named(person, "row menu")
        self.picture(person, "08-row-menu")
        person.key("Down")
        person.key("Return")
        last = eventually("the last row", lambda: self.chat_rows(person))
        self.assertTrue(last)

    def look_at_stars(self, person: Person) -> None:
        person.close_client()
        # Stars come with the start.
        token = self.sign_in(person.name)["token"]
        found = self.call("/api/messenger/search/global?q=roses&user_id=0", None, token)["messages"][0]
        self.call(f"/api/messenger/messages/{found['id']}/star", {}, token)
        person.open_client()
        person.click(person.screen.find(ROWS, "Starred Messages, 1 starred"))
        person.screen.find(ROWS, ".*, The roses want water, .*")
        self.assert_all_named(person, "starred messages")
        self.picture(person, "09-starred")
        person.key("Escape")
        eventually("the sheet is closed", lambda: not person.screen.look({"push button", "button"}, "Done"))

    def walk_by_keys(self, person: Person) -> None:
        person.key("ctrl+1")
        person.screen.find(ENTRIES, re.escape("Message..."), FOCUSED)
        person.key("alt+Down")
        person.screen.find(ENTRIES, re.escape("Message..."), FOCUSED)
        self.picture(person, "10-second-chat")

    def rows_like(self, person: Person, pattern: str) -> list[str]:
        return [name for name in person.screen.rows("Chats") if re.fullmatch(pattern, name, re.DOTALL)]

    def chat_rows(self, person: Person) -> list[str]:
        return self.rows_like(person, "(?!Orvane AI, Your|Saved Messages, Your|Starred Messages, ).*")


if __name__ == "__main__":
    unittest.main()
