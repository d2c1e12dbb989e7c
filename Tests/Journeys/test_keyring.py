# SPDX-License-Identifier: MIT
"""Desktops whose keyring keeps silent, stays locked or is gone: a person gets a window, and their sign-in in the end."""

import json
import re
import signal

from harness import bus, processes
from harness.journey import Journey
from harness.screen import BUTTONS, ENTRIES, LISTS, ROWS, TEXTS

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
        self.registered(self.anna)

    def test_a_keyring_that_keeps_silent(self) -> None:
        self.anna.keyring.send_signal(signal.SIGSTOP)
        self.expect_sign_in()
        self.anna.keyring.send_signal(signal.SIGCONT)
        self.anna.screen.find(LISTS, "Chats")

    def test_a_keyring_that_asks_for_its_password(self) -> None:
        stored = bus.keyring(self.anna.environment["DBUS_SESSION_BUS_ADDRESS"])
        items = {account: stored[label].decode() for account, label in ITEMS.items()}
        processes.end(self.anna.keyring)
        keyring = bus.LockedKeyring(json.dumps(items), self.anna.folder / "run", self.anna.environment)
        self.expect_sign_in()
        keyring.open()
        self.anna.screen.find(LISTS, "Chats")

    def test_a_keyring_that_is_gone(self) -> None:
        processes.end(self.anna.keyring)
        self.expect_sign_in()
        self.assertIsNone(self.anna.screen.look(BUTTONS, CHOICE))
        self.enter_by_password(self.anna)
        self.anna.screen.find(TEXTS, "Ошибка сохранения: There is no keyring on this desktop[.]")
        self.look_over(self.anna, "gone")
        self.anna.click(self.anna.screen.find(BUTTONS, CHOICE))
        self.anna.click(self.anna.screen.button("Войти"))
        self.anna.screen.find(ROWS, "Lobby(,.*)?")
        self.anna.close_client()
        self.anna.open_client()
        self.anna.screen.find(ROWS, "Lobby(,.*)?")

    def expect_sign_in(self) -> None:
        screen = self.anna.open_client()
        processes.eventually("the sign-in shows", lambda: screen.look(ENTRIES, "Логин"), 10)
        screen.find(TEXTS, "Закрытая beta")
        screen.button("Нет аккаунта? Зарегистрироваться").press()
        screen.find(TEXTS, re.escape("Имя (отображаемое)"))
        screen.button("Уже есть аккаунт? Войти").press()
