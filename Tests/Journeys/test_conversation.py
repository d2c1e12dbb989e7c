# SPDX-License-Identifier: MIT
"""Two people talk: answers, edits, reactions, pins, stars, polls, stickers, a summary, and a server that goes and comes."""

import json
import os
import re
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from harness.journey import Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import BUTTONS, ENTRIES, FOCUSED, MENU_ITEMS, ROWS, TEXTS


class Translator(BaseHTTPRequestHandler):
    """A model that knows one sentence, behind the interface that the home server speaks."""

    def do_POST(self) -> None:
        self.rfile.read(int(self.headers["Content-Length"]))
        body = json.dumps({"choices": [{"message": {"role": "assistant", "content": "Чашку чая."}}]}).encode()
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_: object) -> None:
        pass


class Conversation(Journey):
    def setUp(self) -> None:
        if "others" in self._testMethodName:
            model = ThreadingHTTPServer(("127.0.0.1", 0), Translator)
            threading.Thread(target=model.serve_forever, daemon=True).start()
            self.addCleanup(model.server_close)
            self.addCleanup(model.shutdown)
            os.environ["ORVANE_AI_URL"] = f"http://127.0.0.1:{model.server_port}/v1"
            self.addCleanup(os.environ.pop, "ORVANE_AI_URL")
        super().setUp()

    def test_two_people_talk(self) -> None:
        anna, boris = self.person("anna"), self.person("boris")
        self.registered(anna, boris)
        self.meet("anna", "boris", "Tea")
        for person in (anna, boris):
            person.open_client()
            self.open_chat(person, "Tea")
        self.look_over(anna, "open-chat")

        self.say(anna, "Shall we have tea?", boris)
        self.answer(boris, anna)
        self.edit(anna, boris)
        self.react(boris, anna)
        self.pin_and_star(anna)
        self.forward(anna)
        self.poll(anna)
        self.sticker(anna, boris)
        self.summary(anna)
        self.ask_the_agent(anna)
        self.delete(anna, boris)
        self.export(anna)
        self.lose_the_server(anna, boris)
        self.server.stop()
        self.server.start()
        self.speak_until_heard(anna, boris, "Back")
        self.speak_until_heard(boris, anna, "So am I")
        self.open_chat(anna, "Echo")
        self.say(anna, "anybody home?")
        anna.screen.find(ROWS, "Echo, anybody home[?], .*, received")

    def test_what_comes_from_others(self) -> None:
        anna, boris = self.person("anna"), self.person("boris")
        self.registered(anna, boris)
        self.meet("anna", "boris")
        anna.open_client()
        self.open_chat(anna, "Boris")
        self.say(anna, "A cup of tea?")
        # Whoever opens the chat has read it.
        boris.open_client()
        self.open_chat(boris, "Anna")
        anna.screen.find(ROWS, "You, A cup of tea.*, read")

        self.menu(boris, "A cup of tea?", "Translate")
        boris.screen.find(TEXTS, "Чашку чая.")

    def menu(self, person: Person, message: str, *ways: str) -> None:
        """Opens the menu of a message, and picks by name."""
        row = person.screen.find(ROWS, f".*, {re.escape(message)}, .*, (sent|received|read)")
        person.click(row, button=3)
        for way in ways:
            person.click(person.screen.find(MENU_ITEMS, way))

    def answer(self, person: Person, other: Person) -> None:
        self.menu(person, "Shall we have tea?")
        person.screen.find(MENU_ITEMS, "Copy")
        self.assertIsNone(person.screen.look(MENU_ITEMS, "Edit"), "others' messages can't be edited")
        self.look_over(person, "menu")
        person.click(person.screen.find(MENU_ITEMS, "Reply"))
        person.screen.button("Cancel reply")
        person.screen.find_focused("Message...")
        self.say(person, "At five", other)
        person.screen.wait_without(BUTTONS, "Cancel reply")

    def edit(self, person: Person, other: Person) -> None:
        person.key("Up")
        person.screen.find_focused("Message")
        self.look_over(person, "edit")
        person.key("End")
        person.type(" Or coffee?")
        person.key("Return")
        for each in (person, other):
            each.screen.find(ROWS, re.escape("Shall we have tea? Or coffee?").join((".*, ", ", .*")))

    def react(self, person: Person, other: Person) -> None:
        self.menu(person, "Shall we have tea? Or coffee?", "React", "🔥")
        for each in (person, other):
            each.screen.find(TEXTS, "🔥")

    def pin_and_star(self, person: Person) -> None:
        self.menu(person, "At five", "Pin")
        person.screen.find(BUTTONS, "Unpin")
        self.menu(person, "At five", "Star")
        self.menu(person, "At five")
        person.screen.find(MENU_ITEMS, "Unstar")
        person.screen.find(MENU_ITEMS, "Unpin")
        person.key("Escape")
        person.screen.button("Unpin").press()
        person.screen.wait_without(BUTTONS, "Unpin")

    def forward(self, person: Person) -> None:
        self.menu(person, "At five", "Forward")
        person.screen.find({"heading"}, re.escape("Forward to..."))
        person.screen.find(ROWS, "Orvane AI", FOCUSED)
        person.key("Down")
        person.screen.find(ROWS, "Echo", FOCUSED)
        self.look_over(person, "forward")
        person.key("Return")
        eventually("it went out", lambda: "[Forward] Message forwarded" in person.client_log())

    def poll(self, person: Person) -> None:
        person.screen.button("Poll").press()
        person.screen.find_focused("Вопрос опроса...")
        person.type("Green or black?")
        person.fill("Вариант 1", "Green")
        person.fill("Вариант 2", "Black")
        person.screen.find({"check box"}, "Анонимный").act("Toggle")
        self.look_over(person, "new-poll")
        person.click(person.screen.button("Создать"))
        person.screen.find(TEXTS, "Анонимный")
        person.screen.find(TEXTS, "0 голосов")
        person.click(person.screen.find(BUTTONS, "Green.*"))
        person.screen.find(TEXTS, "1 голосов")
        self.look_over(person, "poll-voted")

    def sticker(self, person: Person, other: Person) -> None:
        person.screen.button("Stickers").press()
        person.screen.find(ENTRIES, re.escape("Поиск стикеров..."))
        self.look_over(person, "stickers")
        person.click(person.screen.button("любовь, love"))
        person.screen.find(ROWS, "You, 😍, .*, sent")
        other.screen.find(ROWS, ".*, 😍, .*, received")
        person.screen.button("Stickers").press()

    def summary(self, person: Person) -> None:
        person.screen.button("Summary").press()
        person.click(person.screen.find(MENU_ITEMS, "Everything"))
        person.screen.find({"panel", "grouping"}, "Summary")
        person.screen.button("Close")
        self.look_over(person, "summary")
        person.screen.button("Close").press()

    def ask_the_agent(self, person: Person) -> None:
        person.screen.button("AI").press()
        person.screen.find(ENTRIES, "Ask AI.*", FOCUSED)
        person.type("/search tea")
        person.key("Return")
        person.screen.find({"heading"}, "Search results")
        self.look_over(person, "agent")
        person.screen.button("Close").press()
        person.screen.button("AI").press()

    def delete(self, person: Person, other: Person) -> None:
        person.click(person.screen.find(ENTRIES, re.escape("Message...")))
        self.say(person, "Never mind", other)
        self.menu(person, "Never mind", "Delete")
        person.screen.find({"heading"}, re.escape("Delete Message?"))
        person.click(person.screen.button("Delete"))
        for each in (person, other):
            each.screen.wait_without(ROWS, ".*, Never mind, .*")

    def export(self, person: Person) -> None:
        person.click(person.screen.find(ENTRIES, re.escape("Message...")))
        person.type("/export")
        person.key("Return")
        save = person.screen.button("Save")
        person.click(save)
        eventually("it is written", (person.home / "chat.md").exists)
        self.assertIn("At five\n", (person.home / "chat.md").read_text())

    def lose_the_server(self, person: Person, other: Person) -> None:
        self.server.stop()
        person.click(person.screen.find(ENTRIES, re.escape("Message...")))
        person.type("Is anybody there?")
        person.key("Return")
        person.screen.find(ROWS, "You, Is anybody there.*, failed")
        eventually("it waits", lambda: "[OfflineQueue] Queued 1 messages" in person.client_log())
        self.assertNotIn("anybody", person.client_log())
        person.close_client()
        self.server.start()
        # What waited goes out with the next start.
        person.open_client()
        eventually("it went out", lambda: "[OfflineQueue] Drain done: 1 sent, 0 remaining" in person.client_log())
        other.close_client()
        other.open_client()
        self.open_chat(other, "Tea")
        other.screen.find(ROWS, ".*, Is anybody there.*, received")
        self.open_chat(person, "Tea")
        self.assertEqual(self.said(person), self.said(other), "the same history on both sides, in the same order")

    def said(self, person: Person) -> list[str]:
        """Text and time of each message: who sent it and its state are told from each one's own side."""
        return [name.split(", ", 1)[1].rsplit(", ", 1)[0] for name in person.screen.rows("Messages")]

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
