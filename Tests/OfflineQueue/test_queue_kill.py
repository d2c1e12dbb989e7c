# SPDX-License-Identifier: MIT
"""Kills a queue at any moment of its saves and drains, and counts what is left: test_queue_kill.py SERVER QUEUE

The list on the disk is always the one of before or after a step, and the home server ends up with each message
exactly once.
"""

import json
import os
import random
import subprocess
import sys
import tempfile
import time
import urllib.request
from collections import Counter
from pathlib import Path

RUNS = 300
EACH = 3
SEED = 20240601


class Server:
    def __init__(self, program: str, folder: Path) -> None:
        command = [program, "--listen", "127.0.0.1", "--data", str(folder)]
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.base = self.process.stdout.readline().split("http=")[1].split()[0]
        self.token = ""
        anna = self.call("/api/auth/register", {"username": "anna", "password": "secret-1", "device_id": "device-1"})
        self.token, self.user = anna["token"], anna["user"]["id"]
        # The lobby has everybody in it, and a message there needs nobody else.
        self.chat = "lobby"

    def call(self, path: str, body: dict | None = None) -> dict:
        data = None if body is None else json.dumps(body).encode()
        headers = {"Content-Type": "application/json", "Authorization": f"Bearer {self.token}"}
        with urllib.request.urlopen(urllib.request.Request(self.base + path, data, headers), timeout=60) as answer:
            return json.load(answer)

    def arrived(self) -> Counter[str]:
        """How often each text is in the chat."""
        texts: Counter[str] = Counter()
        before = ""
        while page := self.call(f"/api/messenger/chats/{self.chat}/messages?limit=50{before}")["messages"]:
            texts.update(message["content"] for message in page)
            before = "&before=" + min(page, key=lambda message: message["created_at"])["id"]
        return texts


class Queue:
    def __init__(self, program: str, folder: Path, server: Server) -> None:
        self.server = server
        self.process = subprocess.Popen(
            [program, str(folder), server.base, server.token], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True
        )
        self.found: list[str] = self.line("found").split()[1:]

    def line(self, start: str) -> str:
        for line in self.process.stdout:
            if line.startswith(start):
                return line
        raise AssertionError(f"the queue ended before it said {start!r}")

    def order(self, ids: list[str]) -> None:
        lines = [f"enqueue {one} {self.server.chat} {self.server.user}\n" for one in ids]
        self.process.stdin.write("".join(lines) + "drain\n")
        self.process.stdin.flush()

    def kill(self) -> list[str]:
        """What it had said until then."""
        self.process.kill()
        said = self.process.stdout.read().splitlines()
        self.process.stdin.close()
        self.process.wait()
        return said


def main() -> None:
    chance = random.Random(SEED)
    stages: Counter[str] = Counter()
    took, lists, durable, longest = 0.0, [[]], set(), 0
    with tempfile.TemporaryDirectory() as root:
        folder = Path(root) / "queue"
        folder.mkdir()
        server = Server(sys.argv[1], Path(root) / "server")
        try:
            for run in range(RUNS + 1):
                queue = Queue(sys.argv[2], folder, server)
                assert queue.found in lists, f"run {run}: found {queue.found}, not one of {lists}"
                durable.update(queue.found)
                longest = max(longest, len(queue.found))
                ids = [f"{run}-{number}" for number in range(EACH)]
                begin = time.monotonic()
                queue.order(ids)
                if run % 20 == 0:
                    # How long it all takes, so that a kill can come at any moment of it.
                    queue.line("drained")
                    took = time.monotonic() - begin
                    said = ["drained"]
                    queue.kill()
                    durable.update(ids)
                else:
                    time.sleep(chance.uniform(0, took))
                    said = queue.kill()
                kept = sum("Queued" in line for line in said)
                durable.update(ids[:kept])
                if "drained" in said:
                    stages["after all"] += 1
                    lists = [[]]
                else:
                    stages["in a drain" if kept == EACH else "in a save"] += 1
                    lists = [queue.found + ids[:more] for more in range(kept, EACH + 1)]
                    lists += [[]] if kept == EACH else []
            last = Queue(sys.argv[2], folder, server)
            assert last.found in lists
            durable.update(last.found)
            last.order([])
            last.line("drained")
            last.kill()
            arrived = server.arrived()
        finally:
            server.process.terminate()
            server.process.wait()
    arrived = Counter({text: times for text, times in arrived.items() if text[0].isdigit()})
    print(f"{RUNS} runs: {dict(stages)}; {len(arrived)} messages arrived, up to {longest} waited at once")
    assert stages["in a save"] > 20 and stages["in a drain"] > 20, "the kills missed what they were for"
    assert not (lost := durable - set(arrived)), f"lost: {lost}"
    assert not (twice := {text for text, times in arrived.items() if times > 1}), f"more than once: {twice}"


if __name__ == "__main__":
    main()
