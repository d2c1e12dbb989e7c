# SPDX-License-Identifier: MIT
"""Machines of one local network, each a network namespace with an interface en0, run the real service.

This process has a network of its own too, with the switch that their cables lead to and the home server on it.
Everything goes with the process.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import unittest
import urllib.request
from pathlib import Path
from typing import Callable

sys.path.insert(0, str(Path(__file__).parents[1] / "Journeys"))

from harness.network import alone, run
from harness.processes import SLOWNESS, eventually

BUILD = Path(os.environ["ORVANETALK_BUILD"])
HOST = BUILD / "tests/lan_host"


class Machine:
    """A namespace on the switch."""

    def __init__(self, name: str, address: str) -> None:
        self.name, self.cable = name, f"cable-{name}"
        self.address = ""
        run(f"ip netns add {name}")
        run(f"ip link add {self.cable} type veth peer name en0 netns {name}")
        run(f"ip link set {self.cable} master switch up")
        run(f"ip -n {name} link set lo up")
        run(f"ip -n {name} link set en0 up")
        self.move(address)

    def move(self, address: str) -> None:
        if self.address:
            run(f"ip -n {self.name} address del {self.address}/24 dev en0")
        run(f"ip -n {self.name} address add {address}/24 dev en0")
        self.address = address

    def plug(self, plugged: bool) -> None:
        run(f"ip link set {self.cable} {'up' if plugged else 'down'}")

    def dialled(self) -> set[str]:
        """The addresses that this machine has open links to, at the port that all listen on."""
        told = run(f"ip netns exec {self.name} ss -Htn state established ( dport = :9477 )")
        return set(re.findall(r"([\d.]+)\]?:9477", told))

    def remove(self) -> None:
        # The kernel ends a namespace when it finds the time, and its cable with it.
        run(f"ip link del {self.cable}")
        run(f"ip netns del {self.name}")


class Service:
    """The running service of one user on a machine, and the state that it told last."""

    def __init__(self, machine: Machine, server: str, user: dict, folder: str) -> None:
        self.id = str(user["user"]["id"])
        self.machine = machine
        self.state: dict = {}
        command = ["ip", "netns", "exec", machine.name, str(HOST), server, user["token"], self.id, "200"]
        # One that is killed leaves its own folders there.
        environment = os.environ | {"TMPDIR": folder}
        self.process = subprocess.Popen(
            command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True, env=environment
        )
        self._reader = threading.Thread(target=self._read)
        self._reader.start()

    def _read(self) -> None:
        for line in self.process.stdout:
            if line.startswith("{"):
                self.state = json.loads(line)

    def do(self, what: str, **more: str) -> None:
        print(json.dumps({"do": what} | more), file=self.process.stdin, flush=True)

    def enable(self) -> None:
        self.do("enable")
        self.wait("it is on", lambda state: state["enabled"])

    def send(self, to: "Service", text: str, taken: bool = True) -> None:
        before = len(self.state["sent"])
        self.do("send", to=to.id, chat="c", text=text)
        self.wait("the message was looked at", lambda state: len(state["sent"]) > before)
        assert self.state["sent"][-1] is taken, f"{self.id} to {to.id}: {self.state}"

    def wait(self, what: str, question: Callable[[dict], object]) -> None:
        try:
            eventually(f"at {self.id}: {what}", lambda: self.state and question(self.state))
        except AssertionError as problem:
            raise AssertionError(f"{problem}\n{self.state}") from None

    def hears(self, sender: "Service", text: str) -> None:
        expected = {"peer_id": sender.id, "chat_id": "c", "message": {"content": text}}
        self.wait(f"{text!r} from {sender.id}", lambda state: expected in state["messages"])
        assert self.state["messages"].count(expected) == 1

    def is_linked_with(self, *others: "Service") -> None:
        ids = sorted(other.id for other in others)
        self.wait(f"links with {ids}", lambda state: state["connected"] == ids)

    def end(self, kill: bool = False) -> int:
        if kill:
            self.process.kill()
        self.process.stdin.close()
        code = self.process.wait(20 * SLOWNESS)
        self._reader.join()
        self.process.stdout.close()
        return code


class Hosts(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        run("ip link add switch type bridge")
        run("ip address add 10.77.0.1/24 dev switch")
        run("ip link set switch up")
        cls.folder = tempfile.mkdtemp(prefix="lan-")
        cls.ports = "0", "0"
        cls.start_server()
        cls.users: dict[int, dict] = {}
        while len(cls.users) == 0 or max(cls.users) < 100:
            cls.register(f"user{len(cls.users)}")

    @classmethod
    def tearDownClass(cls) -> None:
        cls.stop_server()
        shutil.rmtree(cls.folder)

    @classmethod
    def start_server(cls) -> None:
        program = [BUILD / "bin/orvanetalk-homeserver", "--listen", "10.77.0.1", "--data", cls.folder]
        program += ["--http-port", cls.ports[0], "--ws-port", cls.ports[1]]
        cls.process = subprocess.Popen(program, stdout=subprocess.PIPE, text=True)
        line = cls.process.stdout.readline()
        said = re.match(r"listening http=(http://[^:]+:(\d+)) ws=ws://[^:]+:(\d+)", line)
        cls.server, cls.ports = said[1], (said[2], said[3])

    @classmethod
    def stop_server(cls) -> None:
        cls.process.terminate()
        cls.process.wait(20 * SLOWNESS)
        cls.process.stdout.close()

    @classmethod
    def register(cls, name: str) -> None:
        body = {"username": name, "password": "correct-horse-9", "device_id": f"device-{name}"}
        request = urllib.request.Request(cls.server + "/api/auth/register", json.dumps(body).encode())
        request.add_header("Content-Type", "application/json")
        with urllib.request.urlopen(request, timeout=20) as answer:
            user = json.load(answer)
        cls.users[user["user"]["id"]] = user

    def service(self, machine: Machine, user: int) -> Service:
        service = Service(machine, self.server, self.users[user], self.folder)
        self.addCleanup(lambda: service.process.returncode is None and service.end(kill=True))
        return service

    def machine(self, number: int) -> Machine:
        machine = Machine(f"m{number}", f"10.77.0.{number}")
        self.addCleanup(machine.remove)
        return machine

    def pair(self) -> tuple[Service, Service]:
        """Ten dials nine."""
        nine = self.service(self.machine(9), 9)
        ten = self.service(self.machine(10), 10)
        for service in (nine, ten):
            service.enable()
        nine.is_linked_with(ten)
        ten.is_linked_with(nine)
        return nine, ten

    def test_who_dials_whom_and_delivery_without_the_server(self) -> None:
        hosts = {number: self.service(self.machine(number), number) for number in (9, 10, 99, 100)}
        for host in hosts.values():
            host.enable()
        for host in hosts.values():
            host.is_linked_with(*(other for other in hosts.values() if other is not host))
        address = {number: host.machine.address for number, host in hosts.items()}
        for number, dials in {9: (99,), 10: (9, 99, 100), 99: (), 100: (9, 99)}.items():
            self.assertEqual({address[other] for other in dials}, hosts[number].machine.dialled(), f"{number} dialled")
        for host in hosts.values():
            others = {other.id: other.machine.address for other in hosts.values() if other is not host}
            host.wait("the others' addresses", lambda state: state["peers"] == others)

        self.stop_server()
        for sender in hosts.values():
            for receiver in hosts.values():
                if receiver is not sender:
                    text = f"{sender.id} to {receiver.id}"
                    sender.send(receiver, text)
                    receiver.hears(sender, text)
        for host in hosts.values():
            host.wait("the server is missed", lambda state: state["error"])
        self.assertTrue(all(host.state["enabled"] and len(host.state["peers"]) == 3 for host in hosts.values()))
        self.start_server()
        hosts[9].do("disable")
        hosts[10].is_linked_with(hosts[99], hosts[100])
        hosts[10].wait("nine is not there any more", lambda state: set(state["peers"]) == {"99", "100"})
        for host in hosts.values():
            self.assertEqual(0, host.end())

    def test_a_cable_is_cut_and_restored(self) -> None:
        nine, ten = self.pair()
        nine.machine.plug(False)
        ten.wait("the server is there without nine", lambda state: state["enabled"])
        ten.send(nine, "over the gap")
        nine.send(ten, "and back")
        nine.machine.plug(True)
        nine.hears(ten, "over the gap")
        ten.hears(nine, "and back")
        ten.is_linked_with(nine)

    def test_one_side_is_killed(self) -> None:
        nine, ten = self.pair()
        nine.end(kill=True)
        ten.is_linked_with()
        ten.send(nine, "to nobody", taken=False)
        nine = self.service(nine.machine, 9)
        nine.enable()
        nine.is_linked_with(ten)
        ten.end(kill=True)
        nine.is_linked_with()
        ten = self.service(ten.machine, 10)
        ten.enable()
        nine.is_linked_with(ten)
        nine.send(ten, "welcome back")
        ten.hears(nine, "welcome back")

    def test_an_address_changes(self) -> None:
        nine, ten = self.pair()
        nine.machine.move("10.77.0.42")
        nine.wait("the new address", lambda state: state["ip"] == "10.77.0.42")
        ten.wait("the new address of nine", lambda state: state["peers"] == {"9": "10.77.0.42"})
        # A link to the old address is the old one's until it ends.
        for service in (nine, ten):
            service.do("disable")
            service.wait("it is off", lambda state: not state["enabled"])
            service.enable()
        nine.is_linked_with(ten)
        self.assertEqual({"10.77.0.42"}, ten.machine.dialled())
        ten.send(nine, "moved")
        nine.hears(ten, "moved")

    def test_no_private_address(self) -> None:
        machine = self.machine(9)
        machine.move("8.8.8.9")
        lonely = self.service(machine, 9)
        lonely.do("enable")
        lonely.wait("words for it", lambda state: state["error"].startswith("LAN IP не найден"))
        self.assertFalse(lonely.state["enabled"])

    def test_which_interfaces_are_told(self) -> None:
        run("ip netns add plain")
        names = ("en0", "enp3s0", "wlan0", "eth1", "docker0", "veth1", "tun0")
        for number, name in enumerate(names):
            run(f"ip -n plain link add {name} type " + ("bridge" if name == "docker0" else f"veth peer name other{number}"))
            run(f"ip -n plain address add 10.0.{number}.1/24 dev {name}")
        run("ip -n plain address add 10.1.0.1/24 dev eth1 label eth1:1")
        # No hardware can be made here, so that what the kernel says of it is.
        for name in names:
            (Path(self.folder) / "net" / name / ("device" if name in ("wlan0", "eth1") else "queues")).mkdir(parents=True)
        script = f"mount --bind {self.folder}/net /sys/class/net && exec {HOST} --interfaces"
        said = subprocess.run(["ip", "netns", "exec", "plain", "sh", "-c", script], check=True, capture_output=True)
        told = json.loads(said.stdout)
        self.assertEqual(
            {"en0": "10.0.0.1", "enp3s0": "10.0.1.1", "enwlan0": "10.0.2.1", "eneth1": "10.0.3.1", "eneth1:1": "10.1.0.1"},
            told,
        )


if __name__ == "__main__":
    alone()
    unittest.main()
