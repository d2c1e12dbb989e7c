# SPDX-License-Identifier: MIT
"""Direct delivery is switched on, finds who is on the same network, and links with whoever answers."""

import os
import re
import subprocess

from harness.journey import BUILD, Journey
from harness.network import alone, run
from harness.person import Person
from harness.processes import eventually, first_line, start
from harness.screen import ENTRIES, LISTS, TEXTS
from harness.server import HomeServer

PEERS = "Соседи в Wi‑Fi"
# Says what it hears, as a neighbour who never talks.
NEIGHBOUR = """
import socket
with socket.create_server(("", 9477)) as server:
    print("listening", flush=True)
    link = server.accept()[0]
    while heard := link.recv(4096):
        print(heard, flush=True)
"""
# These tests have a network for themselves.
setUpModule = alone


class LocalNetwork(Journey):
    def test_switching_it_on(self) -> None:
        run("ip netns add neighbour")
        run("ip link add en0 type veth peer name en0 netns neighbour")
        self.addCleanup(run, "ip link del en0")
        run("ip link set en0 up")
        run("ip -n neighbour address add 10.77.0.2/24 dev en0")
        run("ip -n neighbour link set en0 up")
        anna = self.person("anna")
        self.register(anna)
        anna.screen.button("P2P").press()
        switch = anna.screen.button("P2P-режим (LAN)")
        self.look_over(anna, "lan-off")

        anna.click(switch)
        anna.screen.find(TEXTS, "LAN IP не найден \\(нужен Wi‑Fi: 192.168.x.x / 10.x.x.x\\)")

        run("ip address add 10.77.0.1/24 dev en0")
        anna.key("space")
        for text in ("Локальный IP: 10.77.0.1", "Подсеть: 10.77.0.0/24", "TCP связано: 0", "Никого не найдено.*"):
            anna.screen.find(TEXTS, text)

        neighbour = start(
            ["ip", "netns", "exec", "neighbour", "python3", "-c", NEIGHBOUR],
            dict(os.environ),
            self.folder / "neighbour.log",
            stdout=subprocess.PIPE,
        )
        self.assertEqual("listening", first_line(neighbour.stdout, "the neighbour"))
        self.arrive("boris", "10.77.0.2")
        self.arrive("dmitri", "10.77.0.4")
        anna.screen.button("Обновить").press()
        self.assertIn('"type":"hello"', first_line(neighbour.stdout, "the neighbour"))
        anna.screen.find(TEXTS, "TCP связано: 1")
        anna.screen.button("Обновить").press()
        expected = ["Boris, 10.77.0.2, 🔗 связан", "Dmitri, 10.77.0.4, ⚪ offline"]
        eventually("two neighbours", lambda: anna.screen.rows(PEERS) == expected)
        self.look_over(anna, "neighbours")

        anna.screen.button("P2P-режим (LAN)").press()
        anna.screen.wait_without(LISTS, PEERS)

    def test_talking_without_the_server(self) -> None:
        run("ip link add switch type bridge")
        run("ip link set switch up")
        run("ip address add 10.77.0.254/24 dev switch")
        self.server.stop()
        self.server = HomeServer(BUILD / "bin/orvanetalk-homeserver", self.folder / "reachable", "10.77.0.254")
        self.server.start()
        anna, boris = self.at_a_host("anna", "10.77.0.1"), self.at_a_host("boris", "10.77.0.2")
        self.registered(anna, boris)
        self.meet("anna", "boris")
        for person, peer in ((boris, "Anna"), (anna, "Boris")):
            person.open_client()
            self.open_chat(person, peer)
            person.screen.button("P2P").press()
            person.click(person.screen.button("P2P-режим (LAN)"))
            person.screen.find(TEXTS, "Подсеть: 10.77.0.0/24")
        for person in (anna, boris):
            person.screen.find(TEXTS, "TCP связано: 1")
            person.key("Escape")
            person.screen.wait_without(TEXTS, "TCP связано: 1")

        self.server.stop()
        for speaker, listener, text in ((anna, boris, "Still there?"), (boris, anna, "Still here")):
            speaker.click(speaker.screen.find(ENTRIES, re.escape("Message...")))
            self.say(speaker, text, listener)

    def at_a_host(self, name: str, address: str) -> Person:
        """Somebody whose client runs on a host of its own."""
        run(f"ip netns add {name}")
        run(f"ip link add port-{name} type veth peer name en0 netns {name}")
        run(f"ip link set port-{name} master switch up")
        run(f"ip -n {name} link set lo up")
        run(f"ip -n {name} address add {address}/24 dev en0")
        run(f"ip -n {name} link set en0 up")
        person = self.person(name)
        person.started_by = ["ip", "netns", "exec", name]
        return person

    def arrive(self, name: str, address: str) -> None:
        """Somebody who has told the server where they are."""
        token = self.server.register(name)["token"]
        self.server.call("/api/messenger/p2p/register", {"local_ip": address, "device_id": name}, token)
