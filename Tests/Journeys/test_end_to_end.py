"""The end-to-end layer is off until the environment turns it on; then two people share a group nobody else reads."""

import json
import re
import unittest
import urllib.request

from harness.journey import Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import ENTRIES, FOCUSED, LISTS, ROWS

PASSWORD = "correct-horse-9"
SECRET = "meet at the old mill"


class EndToEnd(Journey):
    def test_switched_off_no_key_is_made(self) -> None:
        anna = self.person("anna")
        self.register(anna)
        self.open_chat(anna, "Lobby")
        self.assertIsNone(anna.screen.look({"push button", "button"}, "CRYPTO EXP"))
        anna.screen.button("New Group").press()
        anna.screen.find(ENTRIES, "Group name", FOCUSED)
        self.assertIsNone(anna.screen.look({"check box", "toggle button"}, ".*Zero-Knowledge.*"))
        anna.key("Escape")
        anna.close_client()
        token = self.sign_in("anna")
        self.assertEqual(0, self.call(f"/api/messenger/keys/{token['user']['id']}/count", token=token)["pre_keys_remaining"])
        keys = [label for label in anna.keyring_labels() if "key" in label.lower()]
        self.assertEqual([], keys, "items of the keyring that only the end-to-end layer makes")

    def test_a_group_that_only_its_members_read(self) -> None:
        anna, boris = self.person("anna"), self.person("boris")
        for person in (anna, boris):
            person.environment["ORVANETALK_ENABLE_EXPERIMENTAL_CRYPTO"] = "1"
            self.register(person)
        for person in (anna, boris):
            token = self.sign_in(person.name)
            eventually(
                f"{person.name}'s keys are on the server",
                lambda t=token: self.call(f"/api/messenger/keys/{t['user']['id']}/count", token=t)["pre_keys_remaining"] >= 99,
            )
        # A zero-knowledge identity is told to the server when its owner makes a group, so Boris makes one first.
        self.make_group(boris, "Boris alone", [])
        anna.close_client()
        anna.open_client()
        self.make_group(anna, "The mill", ["Boris"])
        anna.type(SECRET)
        anna.key("Return")
        anna.screen.find(ROWS, f"You, {SECRET}, .*")
        self.look_at_the_fingerprint(anna)

        boris.close_client()
        boris.open_client()
        self.open_chat(boris, ".*(ZK Group|The mill)")
        boris.screen.find(ROWS, f".*, {SECRET}, .*")
        boris.type("I will be there")
        boris.key("Return")
        anna.screen.find(ROWS, ".*, I will be there, .*")
        self.picture(anna, "20-zero-knowledge")

        database = b"".join(
            path.read_bytes() for path in (self.folder / "server" / "data").rglob("*") if path.is_file()
        )
        self.assertIn("🔒 Encrypted".encode(), database)
        self.assertNotIn(SECRET.encode(), database)
        for person in (anna, boris):
            self.assertNotIn(SECRET, person.client_log())
            person.close_client()

    def sign_in(self, name: str) -> dict:
        return self.call("/api/auth/login", {"username": name, "password": PASSWORD, "device_id": "looker"})

    def call(self, path: str, body: dict | None = None, token: dict | None = None) -> dict:
        request = urllib.request.Request(self.server.http + path, method="POST" if body is not None else "GET")
        request.add_header("Content-Type", "application/json")
        if token:
            request.add_header("Authorization", "Bearer " + token["token"])
        data = json.dumps(body).encode() if body is not None else None
        with urllib.request.urlopen(request, data, timeout=20) as answer:
            return json.load(answer)

    def register(self, person: Person) -> None:
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
        person.click(person.screen.find(ROWS, f"{chat}(,.*)?"))
        person.screen.find(ENTRIES, re.escape("Message..."), FOCUSED)

    def make_group(self, person: Person, name: str, members: list[str]) -> None:
        person.screen.button("New Group").press()
        person.screen.find(ENTRIES, "Group name", FOCUSED)
        person.type(name)
        for member in members:
            person.screen.find({"check box"}, member).press()
        person.screen.find({"check box", "toggle button", "push button"}, "🔒 Zero-Knowledge .*").press()
        self.picture(person, "21-new-zk-group")
        self.assert_all_named(person, "new zero-knowledge group")
        person.screen.button("Create").press()
        person.screen.find(ENTRIES, re.escape("Message..."), FOCUSED)
        person.screen.button("ZK EXP")

    def look_at_the_fingerprint(self, person: Person) -> None:
        person.screen.button("CRYPTO EXP").press()
        person.screen.find({"label", "static", "text"}, "([0-9a-f]{4} ){15}[0-9a-f]{4}")
        self.assert_all_named(person, "fingerprint")
        self.picture(person, "22-fingerprint")
        person.key("Escape")
        person.screen.button("CRYPTO EXP")


if __name__ == "__main__":
    unittest.main()
