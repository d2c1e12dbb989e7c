# SPDX-License-Identifier: MIT
"""Start-up of the signed-in client with 200 chats against a bare window, both measured in one run.

    ORVANETALK_BUILD=build/release /usr/bin/python3 Benchmarks/startup.py [rounds]

Tells the medians of exec to first painted frame and of the memory two seconds later (PSS), and their ratios. Both are
drawn by the processor, as the client is; the client drawn by GL is measured beside them.
"""

import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
import urllib.request
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "Tests/Journeys"))

from harness import processes  # noqa: E402
from harness.person import Person  # noqa: E402
from harness.screen import LISTS  # noqa: E402
from harness.server import HomeServer  # noqa: E402

BUILD = Path(os.environ["ORVANETALK_BUILD"]).resolve()
CHATS = 200
PASSWORD = "correct-horse-9"

# Told by the scene graph itself, so that nothing is added to the programs.
FRAME_LOG = {"QT_LOGGING_RULES": "qt.scenegraph.time.renderloop.debug=true"}


def post(server: HomeServer, path: str, body: dict, token: str = "") -> dict:
    request = urllib.request.Request(server.http + path, json.dumps(body).encode(), {"Content-Type": "application/json"})
    if token:
        request.add_header("Authorization", f"Bearer {token}")
    with urllib.request.urlopen(request) as answer:
        return json.load(answer)


def sign_in_with_chats(person: Person, server: HomeServer) -> None:
    account = {"username": "anna", "password": PASSWORD, "device_id": "d", "device_name": "n", "platform": "p"}
    signed_in = post(server, "/api/auth/register", account)
    user, token = signed_in["user"]["id"], signed_in["token"]
    for number in range(CHATS - 3):
        body = {"user_id": user, "type": "group", "title": f"Group {number}", "participants": [user]}
        chat = post(server, "/api/messenger/chats", body, token)
        chat_id = chat.get("id") or chat["chat"]["id"]
        message = {"user_id": user, "content": f"The last word of chat {number}", "type": "text"}
        post(server, f"/api/messenger/chats/{chat_id}/messages", message, token)
    screen = person.open_client()
    person.fill("Логин", "anna")
    person.fill("Пароль", PASSWORD)
    person.click(screen.button("Войти"))
    screen.find(LISTS, "Chats")
    processes.eventually("all chats are listed", lambda: len(screen.rows("Chats")) > 5)
    person.close_client()


def measure(program: Path, environment: dict[str, str]) -> tuple[float, int]:
    """Seconds to the first frame, and KiB of memory two seconds later."""
    began = time.monotonic()
    process = subprocess.Popen([str(program)], env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    try:
        for line in process.stderr:
            if b"rendered" in line or b"Frame" in line:
                first_frame = time.monotonic() - began
                break
        else:
            raise AssertionError(f"{program.name} painted nothing")
        time.sleep(2)
        rollup = Path(f"/proc/{process.pid}/smaps_rollup").read_text()
        return first_frame, int(re.search(r"^Pss:\s+(\d+)", rollup, re.MULTILINE)[1])
    finally:
        process.stderr.close()
        processes.end(process)


def main() -> None:
    rounds = int(sys.argv[1]) if len(sys.argv) > 1 else 10
    processes.adopt_orphans()
    with tempfile.TemporaryDirectory(prefix="startup-") as name:
        folder = Path(name)
        try:
            server = HomeServer(BUILD / "bin/orvanetalk-homeserver", folder / "server")
            server.start()
            (folder / "anna").mkdir()
            person = Person("anna", BUILD / "bin/orvanetalk", folder / "anna", server)
            sign_in_with_chats(person, server)
            # As people run it: without somebody who reads the screen aloud.
            environment = {k: v for k, v in person.environment.items() if not k.startswith("QT_LINUX_ACC")} | FRAME_LOG
            programs = {
                "bare window": ("bare_window", environment | {"QT_QUICK_BACKEND": "software"}),
                "client": ("orvanetalk", environment),
                "client by GL": ("orvanetalk", environment | {"QT_QUICK_BACKEND": "rhi"}),
            }
            rows = {name: [] for name in programs}
            for _ in range(rounds):
                for name, (program, surroundings) in programs.items():
                    rows[name].append(measure(BUILD / "bin" / program, surroundings))
        finally:
            processes.end_all()
    for what, unit, at in (("first frame", "s", 0), ("memory", "KiB", 1)):
        medians = {name: statistics.median(row[at] for row in measured) for name, measured in rows.items()}
        told = ", ".join(f"{name} {median:.3f} {unit}" for name, median in medians.items())
        ratio = medians["client"] / medians["bare window"]
        print(f"{what}: {told}; client / bare window {ratio:.2f}")


if __name__ == "__main__":
    main()
