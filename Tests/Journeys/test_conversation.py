# SPDX-License-Identifier: MIT
"""Two people talk: answers, edits, reactions, pins, stars, polls, stickers, a summary, and a server that goes away."""

import json
import os
import re
import threading
import unittest
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from harness.journey import Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import BUTTONS, ENTRIES, FOCUSED, ROWS

MENU_ITEMS = {"menu item"}
TEXTS = {"static", "label", "text", "heading"}


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
        for person in (anna, boris):
            self.register(person)
            person.close_client()
        one, other = self.sign_in("anna"), self.sign_in("boris")
        members = [one["user"]["id"], other["user"]["id"]]
        self.call(
            "/api/messenger/chats",
            {"user_id": members[0], "type": "group", "title": "Tea", "participants": members},
            one["token"],
        )
        for person in (anna, boris):
            person.open_client()
            self.open_chat(person, "Tea")
        self.assert_all_named(anna, "open chat")

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
        for person in (anna, boris):
            person.close_client()

    def test_what_comes_from_others(self) -> None:
        anna, boris = self.person("anna"), self.person("boris")
        for person in (anna, boris):
            self.register(person)
            person.close_client()
        self.meet("anna", "boris")
        anna.open_client()
        self.open_chat(anna, "Boris")
        anna.type("A cup of tea?")
        anna.key("Return")
        anna.screen.find(ROWS, "You, A cup of tea.*, sent")
        # Whoever opens the chat has read it.
        boris.open_client()
        self.open_chat(boris, "Anna")
        anna.screen.find(ROWS, "You, A cup of tea.*, read")
        self.picture(anna, "45-read")

        self.menu(boris, "A cup of tea?", "Translate")
        boris.screen.find(TEXTS, "Чашку чая.")
        self.picture(boris, "46-translated")
        for person in (anna, boris):
            person.close_client()

    def say(self, speaker: Person, text: str, listener: Person) -> None:
        speaker.type(text)
        speaker.key("Return")
        speaker.screen.find(ROWS, f"You, {re.escape(text)}, .*, sent")
        listener.screen.find(ROWS, f".*, {re.escape(text)}, .*, received")

    def menu(self, person: Person, message: str, *ways: str) -> None:
        """Opens the menu of a message, and picks by name."""
        row = person.screen.find(ROWS, f".*, {re.escape(message)}, .*, (sent|received|read)")
        person.click(row, button=3)
        for way in ways:
            person.click(person.screen.find(MENU_ITEMS, way))

    def answer(self, person: Person, other: Person) -> None:
        self.menu(person, "Shall we have tea?")
        person.screen.find(MENU_ITEMS, "Copy")
        self.assert_all_named(person, "message menu")
        self.assertIsNone(person.screen.look(MENU_ITEMS, "Edit"), "others' messages can't be edited")
        self.picture(person, "30-menu")
        person.click(person.screen.find(MENU_ITEMS, "Reply"))
        person.screen.button("Cancel reply")
        person.screen.find(ENTRIES, re.escape("Message..."), FOCUSED)
        self.picture(person, "31-reply-banner")
        self.say(person, "At five", other)
        eventually("the banner is closed", lambda: not person.screen.look(BUTTONS, "Cancel reply"))

    def edit(self, person: Person, other: Person) -> None:
        person.key("Up")
        person.screen.find(ENTRIES, "Message", FOCUSED)
        self.assert_all_named(person, "edit")
        self.picture(person, "32-edit")
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
        self.picture(person, "33-pinned")
        self.menu(person, "At five")
        person.screen.find(MENU_ITEMS, "Unstar")
        person.screen.find(MENU_ITEMS, "Unpin")
        person.key("Escape")
        person.screen.button("Unpin").press()
        eventually("the panel is gone", lambda: not person.screen.look(BUTTONS, "Unpin"))

    def forward(self, person: Person) -> None:
        self.menu(person, "At five", "Forward")
        person.screen.find({"heading"}, re.escape("Forward to..."))
        person.screen.find(ROWS, "Orvane AI", FOCUSED)
        person.key("Down")
        person.screen.find(ROWS, "Echo", FOCUSED)
        self.assert_all_named(person, "forward")
        self.picture(person, "34-forward")
        person.key("Return")
        eventually("it went out", lambda: "[Forward] Message forwarded" in person.client_log())

    def poll(self, person: Person) -> None:
        person.screen.button("Poll").press()
        person.screen.find(ENTRIES, re.escape("Вопрос опроса..."), FOCUSED)
        self.assert_all_named(person, "new poll")
        person.type("Green or black?")
        person.fill("Вариант 1", "Green")
        person.fill("Вариант 2", "Black")
        self.picture(person, "35-new-poll")
        person.click(person.screen.button("Создать"))
        person.screen.find(TEXTS, "0 голосов")
        self.picture(person, "36-poll")
        person.click(person.screen.find(BUTTONS, "Green.*"))
        person.screen.find(TEXTS, "1 голосов")
        self.assert_all_named(person, "poll")
        self.picture(person, "37-poll-voted")

    def sticker(self, person: Person, other: Person) -> None:
        person.screen.button("Stickers").press()
        person.screen.find(ENTRIES, re.escape("Поиск стикеров..."))
        self.assert_all_named(person, "stickers")
        self.picture(person, "38-stickers")
        person.click(person.screen.button("любовь, love"))
        person.screen.find(ROWS, "You, 😍, .*, sent")
        other.screen.find(ROWS, ".*, 😍, .*, received")
        person.screen.button("Stickers").press()
        self.picture(other, "39-sticker")

    def summary(self, person: Person) -> None:
        person.screen.button("Summary").press()
        person.click(person.screen.find(MENU_ITEMS, "Everything"))
        person.screen.find({"panel", "grouping"}, "Summary")
        person.screen.button("Close")
        self.assert_all_named(person, "summary")
        self.picture(person, "40-summary")
        person.screen.button("Close").press()

    def ask_the_agent(self, person: Person) -> None:
        person.screen.button("AI").press()
        person.screen.find(ENTRIES, "Ask AI.*", FOCUSED)
        person.type("/search tea")
        person.key("Return")
        person.screen.find({"heading"}, "Search results")
        self.assert_all_named(person, "agent")
        self.picture(person, "41-agent")
        person.screen.button("Close").press()
        person.screen.button("AI").press()

    def delete(self, person: Person, other: Person) -> None:
        person.click(person.screen.find(ENTRIES, re.escape("Message...")))
        self.say(person, "Never mind", other)
        self.menu(person, "Never mind", "Delete")
        person.screen.find({"heading"}, re.escape("Delete Message?"))
        self.picture(person, "42-delete")
        person.click(person.screen.button("Delete"))
        for each in (person, other):
            eventually("it is gone", lambda e=each: not e.screen.look(ROWS, ".*, Never mind, .*"))

    def export(self, person: Person) -> None:
        person.click(person.screen.find(ENTRIES, re.escape("Message...")))
        person.type("/export")
        person.key("Return")
        save = person.screen.button("Save")
        self.picture(person, "43-export")
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
        self.picture(person, "44-failed")
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


if __name__ == "__main__":
    unittest.main()
