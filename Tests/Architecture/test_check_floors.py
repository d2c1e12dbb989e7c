# SPDX-License-Identifier: MIT
"""A tree with one violation of a kind must fail with its file and line, and the sound tree must pass."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOUND = {
    "Sources/Base/CMakeLists.txt": "orvane_library(Base SOURCES Json.h LINK Qt6::Core)\n",
    "Sources/Base/Json.h": "#pragma once\n",
    "Sources/Model/CMakeLists.txt": "orvane_module(Model SOURCES Chat.h LINK Base)\n",
    "Sources/Model/Chat.h": '#pragma once\n#include "Base/Json.h"\n',
    "Sources/Platform/CMakeLists.txt": "orvane_library(Platform SOURCES Store.h LINK Base)\n",
    "Sources/Platform/Store.h": "#pragma once\n",
    "Sources/Server/CMakeLists.txt": "orvane_library(Server SOURCES Api.h LINK Platform)\n",
    "Sources/Server/Api.h": '#pragma once\n#include "Base/Json.h" // reached through Platform\n',
    "Sources/Interface/CMakeLists.txt": "orvane_module(Interface QML Avatar.qml LINK Model)\n",
    "Sources/Interface/Avatar.qml": "import QtQuick\nimport OrvaneTalk.Model\nItem {}\n",
    "Sources/ChatList/CMakeLists.txt": "orvane_module(ChatList QML List.qml LINK Interface Server)\n",
    "Sources/ChatList/List.qml": "import QtQuick\nimport OrvaneTalk.Interface\nItem {}\n",
    "Sources/Conversation/CMakeLists.txt": "orvane_module(Conversation SOURCES Chat/Talk.h LINK Interface Server)\n",
    "Sources/Conversation/Chat/Talk.h": "#pragma once\n",
    "Sources/Conversation/Sending/Sender.h": '#include "Conversation/Chat/Talk.h"\n',
    "Sources/Conversation/Screen/Screen.cpp": '#include "Conversation/Sending/Sender.h"\n',
    "HomeServer/Server/Api.h": "#pragma once\n",
    "HomeServer/Main.cpp": '#include "Server/Api.h"\n',
    "Tests/Architecture/long_files.txt": "# path reason\nTests/tst_table.cpp one table of cases\n",
    "Tests/tst_table.cpp": "//\n" * 601,
}

# What is changed, and the place and the words that the answer must name.
VIOLATIONS = {
    "an include upwards": (
        {"Sources/Base/Json.h": '#pragma once\n#include "Model/Chat.h"\n'},
        "Sources/Base/Json.h:2: Base may not use Model",
    ),
    "an include sideways": (
        {"Sources/Platform/Store.h": '#pragma once\n\n#include "Model/Chat.h"\n'},
        "Sources/Platform/Store.h:3: Platform may not use Model",
    ),
    "an include upwards in angle brackets": (
        {"Sources/Model/Chat.h": "#pragma once\n# include <Server/Api.h>\n"},
        "Sources/Model/Chat.h:2: Model may not use Server",
    ),
    "an include by a path out of the folder": (
        {"Sources/Model/Chat.h": '#pragma once\n#include "../Server/Api.h"\n'},
        "Sources/Model/Chat.h:2: may not include ../Server/Api.h",
    ),
    "a part that knows its screen": (
        {"Sources/Conversation/Sending/Sender.h": '#include "Conversation/Screen/Screen.h"\n'},
        "Sources/Conversation/Sending/Sender.h:1: Conversation/Sending may not use Conversation/Screen",
    ),
    "a part that knows another one": (
        {"Sources/Conversation/Sending/Sender.h": '#include "Conversation/Actions/Pins.h"\n'},
        "Sources/Conversation/Sending/Sender.h:1: Conversation/Sending may not use Conversation/Actions",
    ),
    "a folder on no floor of its room": (
        {"Sources/Conversation/Misc/Misc.h": '#include "Conversation/Chat/Talk.h"\n'},
        "Sources/Conversation/Misc/Misc.h:1: Conversation/Misc may not use Conversation/Chat",
    ),
    "an import upwards": (
        {"Sources/Interface/Avatar.qml": "import QtQuick\nimport OrvaneTalk.ChatList\nItem {}\n"},
        "Sources/Interface/Avatar.qml:2: Interface may not use ChatList",
    ),
    "an import by path": (
        {"Sources/Interface/Avatar.qml": 'import "../ChatList"\nItem {}\n'},
        "Sources/Interface/Avatar.qml:1: imports by path, not by module",
    ),
    "the kit used too low": (
        {"Sources/Server/Api.h": '#include "Interface/Theme.h"\n'},
        "Sources/Server/Api.h:1: Server may not use Interface",
    ),
    "the kit using an engine": (
        {"Sources/Interface/Theme.cpp": '#include "Platform/Store.h"\n'},
        "Sources/Interface/Theme.cpp:1: Interface may not use Platform",
    ),
    "a link upwards": (
        {"Sources/Base/CMakeLists.txt": "orvane_library(Base\n    SOURCES Json.h\n    LINK Server)\n"},
        "Sources/Base/CMakeLists.txt:3: Base may not link Server",
    ),
    "a use that is not declared": (
        {"Sources/Model/CMakeLists.txt": "orvane_module(Model SOURCES Chat.h LINK Qt6::Core) # Base\n"},
        "Sources/Model/Chat.h:2: uses Base, which the CMakeLists.txt of Model does not link",
    ),
    "a folder on no floor": (
        {"Sources/Misc/Misc.h": "#pragma once\n"},
        "Sources/Misc:1: stands on no floor",
    ),
    "the client using the server": (
        {"Sources/Server/Api.h": '#include "HomeServer/Main.h"\n'},
        "Sources/Server/Api.h:1: may not include HomeServer/Main.h",
    ),
    "the server using the client": (
        {"HomeServer/Main.cpp": '#include "Server/Api.h"\n#include "Base/Json.h"\n'},
        "HomeServer/Main.cpp:2: the home server may not include the client's Base/Json.h",
    ),
    "a source that knows the tests": (
        {"Sources/Base/Json.h": "#pragma once\n// see Tests/Base\n"},
        "Sources/Base/Json.h:2: mentions Tests/",
    ),
    "a long header": (
        {"Sources/Base/Json.h": "//\n" * 301},
        "Sources/Base/Json.h:301: has 301 lines, 300 are allowed",
    ),
    "a long screen": (
        {"Sources/Interface/Avatar.qml": "//\n" * 601},
        "Sources/Interface/Avatar.qml:601: has 601 lines, 600 are allowed",
    ),
    "an exception without a reason": (
        {"Tests/Architecture/long_files.txt": "Tests/tst_table.cpp\n"},
        "Tests/Architecture/long_files.txt:1: Tests/tst_table.cpp is listed without a reason",
    ),
    "an exception that is no longer needed": (
        {"Tests/tst_table.cpp": "//\n"},
        "Tests/Architecture/long_files.txt:2: Tests/tst_table.cpp is listed, but is not too long",
    ),
}


def answer(changes: dict[str, str]) -> tuple[int, list[str]]:
    with tempfile.TemporaryDirectory() as folder:
        for name, text in (SOUND | changes).items():
            path = Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        script = Path(__file__).with_name("check_floors.py")
        done = subprocess.run([sys.executable, script, folder], capture_output=True, text=True)
        return done.returncode, done.stdout.splitlines()


class CheckFloors(unittest.TestCase):
    def test_the_sound_tree_passes(self) -> None:
        self.assertEqual(answer({}), (0, ["Every folder keeps to its floor."]))

    def test_each_violation_is_named(self) -> None:
        for kind, (changes, expected) in VIOLATIONS.items():
            with self.subTest(kind):
                self.assertEqual(answer(changes), (1, [expected]))


if __name__ == "__main__":
    unittest.main()
