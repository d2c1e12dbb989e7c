# SPDX-License-Identifier: MIT
"""The end-to-end layer is off until the environment turns it on; then two people share a group nobody else reads."""

import base64

from harness.bus import keyring
from harness.journey import Journey
from harness.person import Person
from harness.processes import eventually
from harness.screen import BUTTONS, ROWS, TEXTS

SECRET = "meet at the old mill"


class EndToEnd(Journey):
    def test_switched_off_no_key_is_made(self) -> None:
        anna = self.person("anna")
        self.register(anna)
        self.open_chat(anna, "Lobby")
        self.assertIsNone(anna.screen.look(BUTTONS, "CRYPTO EXP"))
        anna.screen.button("New Group").press()
        anna.screen.find_focused("Group name")
        self.assertIsNone(anna.screen.look(BUTTONS, ".*Zero-Knowledge.*"))
        anna.key("Escape")
        anna.close_client()
        self.assertEqual(0, self.keys_left("anna"))
        keys = [label for label in keyring(anna.environment["DBUS_SESSION_BUS_ADDRESS"]) if "key" in label.lower()]
        self.assertEqual([], keys, "items of the keyring that only the end-to-end layer makes")

    def test_a_group_that_only_its_members_read(self) -> None:
        anna, boris = self.person("anna"), self.person("boris")
        for person in (anna, boris):
            person.environment["ORVANETALK_ENABLE_EXPERIMENTAL_CRYPTO"] = "1"
            self.register(person)
        for person in (anna, boris):
            eventually(f"{person.name}'s keys are on the server", lambda name=person.name: self.keys_left(name) >= 99)
        # A zero-knowledge identity is told to the server when its owner makes a group, so Boris makes one first.
        self.make_group(boris, "Boris alone", [])
        anna.close_client()
        anna.open_client()
        self.make_group(anna, "The mill", ["Boris"])
        self.say(anna, SECRET)
        self.look_at_the_fingerprint(anna)

        boris.close_client()
        boris.open_client()
        # The server names no zero-knowledge group; the other one is his own, and he has read it.
        self.open_chat(boris, ".*ZK Group, .*1 unread")
        boris.screen.find(ROWS, f".*, {SECRET}, .*")
        self.say(boris, "I will be there", anna)

        database = b"".join(
            path.read_bytes() for path in (self.folder / "server" / "data").rglob("*") if path.is_file()
        )
        self.assertIn("🔒 Encrypted".encode(), database)
        self.assertNotIn(SECRET.encode(), database)
        for person in (anna, boris):
            self.assertNotIn(SECRET, person.client_log())
            self.assert_no_key_in(person)
            person.close_client()

    def assert_no_key_in(self, person: Person) -> None:
        """Neither what the client said nor any file of its own holds a secret of the keyring, in any usual form."""
        secrets = {label: secret for label, secret in keyring(person.environment["DBUS_SESSION_BUS_ADDRESS"]).items() if len(secret) >= 16}
        self.assertGreater(len(secrets), 2, "the keys that this is about")
        files = [path for path in person.folder.rglob("*") if path.is_file() and "keyrings" not in path.parts]
        self.assertIn("client.log", [path.name for path in files])
        for path in files:
            content = path.read_bytes()
            for label, secret in secrets.items():
                for form in (secret, secret.hex().encode(), base64.b64encode(secret), base64.urlsafe_b64encode(secret)):
                    self.assertNotIn(form.rstrip(b"="), content, f"{label} in {path.name}")

    def keys_left(self, name: str) -> int:
        account = self.sign_in(name)
        return self.server.call(f"/api/messenger/keys/{account['user']['id']}/count", token=account["token"])["pre_keys_remaining"]

    def make_group(self, person: Person, name: str, members: list[str]) -> None:
        person.screen.button("New Group").press()
        person.screen.find_focused("Group name")
        person.type(name)
        for member in members:
            person.screen.find({"check box"}, member).press()
        person.screen.find(BUTTONS, "🔒 Zero-Knowledge .*").press()
        self.look_over(person, "new-zk-group")
        person.screen.button("Create").press()
        person.screen.find_focused("Message...")
        person.screen.button("ZK EXP")

    def look_at_the_fingerprint(self, person: Person) -> None:
        person.screen.button("CRYPTO EXP").press()
        person.screen.find(TEXTS, "([0-9a-f]{4} ){15}[0-9a-f]{4}")
        self.look_over(person, "fingerprint")
        person.key("Escape")
        person.screen.button("CRYPTO EXP")
