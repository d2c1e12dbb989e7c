# SPDX-License-Identifier: MIT
"""Scrolling a conversation in a real window, drawn by the processor against drawn by GL without a graphics card.

    ORVANETALK_BUILD=build/release /usr/bin/python3 Benchmarks/scrolling_window.py [seconds]

Tells, for several windows, the processor's time that each takes for the same scrolling, their ratio, and the frames.
"""

import os
import re
import statistics
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "Tests/Journeys"))

from harness import processes  # noqa: E402
from harness.person import Person  # noqa: E402
from harness.screen import LISTS, ROWS, Node, Screen  # noqa: E402
from harness.server import HomeServer  # noqa: E402
from startup import FRAME_LOG, PASSWORD, post  # noqa: E402

BUILD = Path(os.environ["ORVANETALK_BUILD"]).resolve()
MESSAGES = 50
WINDOWS = (("1280x800", "1"), ("3840x2160", "1"), ("3840x2160", "2"))


def fill(server: HomeServer) -> None:
    account = {"username": "anna", "password": PASSWORD, "device_id": "d", "device_name": "n", "platform": "p"}
    signed_in = post(server, "/api/auth/register", account)
    user, token = signed_in["user"]["id"], signed_in["token"]
    body = {"user_id": user, "type": "group", "title": "Scrolled", "participants": [user]}
    chat = post(server, "/api/messenger/chats", body, token)
    path = f"/api/messenger/chats/{chat.get('id') or chat['chat']['id']}/messages"
    for number in range(MESSAGES):
        words = "words of an ordinary length 🙂 " * (1 + number * 7 % 9)
        post(server, path, {"user_id": user, "content": f"{number}: {words}", "type": "text"}, token)


def seconds_of_processor(pid: int) -> float:
    fields = Path(f"/proc/{pid}/stat").read_text().rsplit(") ", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def open_client(person: Person, backend: str) -> Screen:
    person.environment["QT_QUICK_BACKEND"] = backend
    screen = person.open_client()
    window = ("search", "--sync", "--onlyvisible", "--name", "^OrvaneTalk$")
    person.xdotool(*window, "windowmove", "0", "0", "windowsize", "100%", "100%")
    return screen


def scroll(person: Person, seconds: float) -> tuple[float, list[int]]:
    """Seconds of the processor a second, and the milliseconds of each frame."""
    processes.eventually("the newest message shows", lambda: person.screen.look(ROWS, "You, 49:.*"))
    person.xdotool("mousemove", *middle(person, person.screen.find(LISTS, "Messages")))
    before = seconds_of_processor(person.client_pid())
    lines_before = len(person.client_log().splitlines())
    began = time.monotonic()
    while time.monotonic() - began < seconds:
        for button in ("4", "5"):
            person.xdotool("click", "--repeat", "60", "--delay", "16", button)
    spent = (seconds_of_processor(person.client_pid()) - before) / (time.monotonic() - began)
    told = person.client_log().splitlines()[lines_before:]
    return spent, [int(found[1]) for line in told if (found := re.search(r"rendered.* in (\d+)ms", line))]


def middle(person: Person, node: Node) -> list[str]:
    """Assistive technology is told of places before they are scaled."""
    return [str(place * int(person.environment["QT_SCALE_FACTOR"])) for place in node.middle()]


def measure(folder: Path, size: str, scale: str, seconds: float) -> dict[str, tuple[float, list[int]]]:
    server = HomeServer(BUILD / "bin/orvanetalk-homeserver", folder / "server")
    server.start()
    fill(server)
    (folder / "anna").mkdir()
    person = Person("anna", BUILD / "bin/orvanetalk", folder / "anna", server, size)
    person.environment |= FRAME_LOG
    screen = open_client(person, "software")
    person.fill("Логин", "anna")
    person.fill("Пароль", PASSWORD)
    person.click(screen.button("Войти"))
    screen.find(LISTS, "Chats")
    person.environment["QT_SCALE_FACTOR"] = scale
    measured = {}
    for name, backend in (("processor", "software"), ("GL", "rhi")):
        person.close_client()
        screen = open_client(person, backend)
        screen.find(LISTS, "Chats")
        person.xdotool("mousemove", *middle(person, screen.find(ROWS, "Scrolled(,.*)?")), "click", "1")
        measured[name] = scroll(person, seconds)
    return measured


def main() -> None:
    seconds = float(sys.argv[1]) if len(sys.argv) > 1 else 10
    processes.adopt_orphans()
    for size, scale in WINDOWS:
        with tempfile.TemporaryDirectory(prefix="scrolling-") as folder:
            try:
                measured = measure(Path(folder), size, scale, seconds)
            finally:
                processes.end_all()
        for name, (spent, frames) in measured.items():
            print(
                f"{size} at {scale}, {name}: {spent:.2f} s of the processor a second, {len(frames)} frames, "
                f"median {statistics.median(frames)} ms, longest {max(frames)} ms"
            )
        print(f"{size} at {scale}: GL / processor {measured['GL'][0] / measured['processor'][0]:.1f}", flush=True)


if __name__ == "__main__":
    main()
