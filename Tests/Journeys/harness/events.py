# SPDX-License-Identifier: MIT
"""An event socket of a device that no window belongs to."""

import base64
import json
import os
import socket


class EventSocket:
    """Connected, with its token looked at, once it is entered."""

    def __init__(self, url: str, token: str) -> None:
        self._address = url.removeprefix("ws://").strip("/").split(":")
        self._token = token

    def __enter__(self) -> "EventSocket":
        host, port = self._address
        self._socket = socket.create_connection((host, int(port)), timeout=20)
        key = base64.b64encode(os.urandom(16)).decode()
        wanted = "Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13"
        self._socket.sendall(f"GET / HTTP/1.1\r\nHost: {host}\r\n{wanted}\r\nSec-WebSocket-Key: {key}\r\n\r\n".encode())
        heard = self._socket.recv(4096)
        assert b" 101 " in heard, heard
        self.send({"type": "auth", "token": self._token})
        self.send({"type": "ping"})
        # The answer to the ping comes after the token has been looked at.
        while b"pong" not in heard:
            heard += self._socket.recv(4096)
        return self

    def send(self, message: dict) -> None:
        text = json.dumps(message).encode()
        length = bytes([0x80 | len(text)]) if len(text) < 126 else b"\xfe" + len(text).to_bytes(2, "big")
        # Final, text, masked with zeros.
        self._socket.sendall(b"\x81" + length + bytes(4) + text)

    def __exit__(self, *_: object) -> None:
        self._socket.close()
