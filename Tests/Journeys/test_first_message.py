# SPDX-License-Identifier: MIT
"""Two newcomers register, meet in the Lobby and talk; one comes back later; the server goes and comes."""

import re
import unittest

from harness.journey import Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import ENTRIES, FOCUSED, LISTS, ROWS

PASSWORD = "correct-horse-9"


class FirstMessage(Journey):
    def test_two_people_meet_and_talk(self) -> None:
        anna, boris = self.person("anna"), self.person("boris")
        self.register(anna, "Anna")
        self.register(boris, "Boris")

        self.talk_to_the_echo_bot(anna)

        # Still signed in, and from now on she knows who joined meanwhile.
        anna.close_client()
        anna.open_client()
        self.open_chat(anna, "Lobby")
        self.open_chat(boris, "Lobby")
        self.say(anna, "Hello, is anybody here?")
        self.expect(boris, "Anna", "Hello, is anybody here?")
        self.say(boris, "Yes - good to see you :)")
        self.expect(anna, "Boris", "Yes - good to see you :)")

        boris.close_client()
        boris.open_client()
        self.open_chat(boris, "Lobby")
        self.expect(boris, "Anna", "Hello, is anybody here?")
        self.expect(anna, "Boris", "Yes - good to see you :)")
        self.assertEqual(self.said(anna), self.said(boris), "the same history on both sides, in the same order")

        self.server.stop()
        self.server.start()
        self.speak_until_heard(anna, boris, "Back")
        self.speak_until_heard(boris, anna, "So am I")

        anna.close_client()
        boris.close_client()

    def register(self, person: Person, shown_name: str) -> None:
        screen = person.open_client()
        screen.entry("Логин")
        self.assert_all_named(person, "sign-in")
        screen.button("Нет аккаунта? Зарегистрироваться").press()
        screen.entry("Имя для отображения")
        self.assert_all_named(person, "registration")
        person.fill("Логин", person.name)
        person.fill("Пароль", PASSWORD)
        person.fill("Имя для отображения", shown_name)
        person.click(screen.button("Создать аккаунт"))
        screen.find(LISTS, "Chats")
        self.assert_all_named(person, "empty main")

    def open_chat(self, person: Person, chat: str) -> None:
        row = person.screen.find(ROWS, f"{chat}(,.*)?")
        person.click(row)
        person.screen.find(ENTRIES, re.escape("Message..."), FOCUSED)
        self.assert_all_named(person, chat)

    def say(self, person: Person, text: str) -> None:
        """Writes where the cursor stands after a chat was opened, and presses Enter."""
        person.type(text)
        person.screen.button("Send")
        self.assert_all_named(person, "conversation with a text written")
        person.key("Return")
        self.expect(person, ".*", text)

    def expect(self, person: Person, sender: str, text: str) -> None:
        row = re.compile(rf"{sender}, {re.escape(text)}, \d\d:\d\d, .*", re.DOTALL)
        eventually(
            f"{person.name} sees {text!r} by {sender}",
            lambda: any(row.fullmatch(name) for name in person.screen.rows("Messages")),
            30,
        )

    def said(self, person: Person) -> list[str]:
        """Text and time of each message: who sent it and its state are told from each one's own side."""
        return [name.split(", ", 1)[1].rsplit(", ", 1)[0] for name in person.screen.rows("Messages")]

    def talk_to_the_echo_bot(self, person: Person) -> None:
        self.open_chat(person, "Echo")
        self.say(person, "anybody home?")
        self.expect(person, "Echo", "anybody home?")

    def speak_until_heard(self, speaker: Person, listener: Person, words: str) -> None:
        """A client that is still reconnecting misses what is said meanwhile, so it is said again."""
        heard = re.compile(rf".*, {words} \d+, .*")
        for attempt in range(1, 9):
            self.say(speaker, f"{words} {attempt}")
            try:
                eventually("heard", lambda: any(heard.fullmatch(name) for name in listener.screen.rows("Messages")), 4)
                return
            except AssertionError:
                continue
        self.fail(f"{listener.name} no longer hears {speaker.name}")


if __name__ == "__main__":
    unittest.main()
