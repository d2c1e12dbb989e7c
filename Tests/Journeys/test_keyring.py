# SPDX-License-Identifier: MIT
"""Desktops whose keyring keeps silent, stays locked or is gone: a person gets a window, and their sign-in in the end."""

import json
import re
import unittest

from harness.bus import LockedKeyring
from harness.journey import PASSWORD, Journey
from harness.processes import eventually
from harness.screen import BUTTONS, ENTRIES, LISTS, ROWS

ITEMS = {
    "auth_token": "OrvaneTalk JWT token",
    "auth_username": "OrvaneTalk username",
    "auth_user_id": "OrvaneTalk user ID",
}
CHOICE = "Keep sign-ins in a file"


class KeyringJourney(Journey):
    def setUp(self) -> None:
        super().setUp()
        self.anna = self.person("anna")
        self.register(self.anna)
        self.anna.close_client()

    def test_a_keyring_that_keeps_silent(self) -> None:
        self.anna.pause_keyring()
        self.expect_sign_in()
        self.anna.resume_keyring()
        self.anna.screen.find(LISTS, "Chats")
        self.anna.close_client()

    def test_a_keyring_that_asks_for_its_password(self) -> None:
        stored = self.anna.keyring()
        items = {account: stored[label].decode() for account, label in ITEMS.items()}
        self.anna.end_keyring()
        keyring = LockedKeyring(json.dumps(items), self.anna.folder / "run", self.anna.environment)
        self.expect_sign_in()
        self.picture(self.anna, "keyring-01-sign-in")
        keyring.open()
        self.anna.screen.find(LISTS, "Chats")
        self.anna.close_client()

    def test_a_keyring_that_is_gone(self) -> None:
        self.anna.end_keyring()
        self.expect_sign_in()
        self.assertIsNone(self.anna.screen.look(BUTTONS, CHOICE))
        self.anna.fill("Логин", "anna")
        self.anna.fill("Пароль", PASSWORD)
        self.anna.key("Return")
        self.anna.screen.find({"alert message"}, "Ошибка сохранения: There is no keyring on this desktop[.]")
        self.assert_all_named(self.anna, "sign-in without a keyring")
        self.picture(self.anna, "keyring-02-gone")
        self.anna.click(self.anna.screen.find(BUTTONS, CHOICE))
        self.anna.click(self.anna.screen.button("Войти"))
        self.anna.screen.find(ROWS, "Lobby(,.*)?")
        self.anna.close_client()
        self.anna.open_client()
        self.anna.screen.find(ROWS, "Lobby(,.*)?")
        self.anna.close_client()

    def expect_sign_in(self) -> None:
        screen = self.anna.open_client()
        eventually("the sign-in shows", lambda: screen.look(ENTRIES, "Логин"), 10)
        screen.find({"label", "static"}, "Закрытая beta")
        screen.button("Нет аккаунта? Зарегистрироваться").press()
        screen.find({"label", "static"}, re.escape("Имя (отображаемое)"))
        screen.button("Уже есть аккаунт? Войти").press()


if __name__ == "__main__":
    unittest.main()
