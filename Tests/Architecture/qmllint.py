# SPDX-License-Identifier: MIT
"""Fails on what qmllint finds in the screens, but for what its version 6.4 gets wrong: qmllint.py ROOT BUILD"""

import json
import re
import subprocess
import sys
from pathlib import Path

QMLLINT = "/usr/lib/qt6/bin/qmllint"

# Said of sound code: types that have no QML name but convert all the same, and a call that takes a function.
MISTAKEN = re.compile(
    r'Type "(qlonglong|orvane::RecordListModel)" of property "\w+" not found.*'
    r'|Property "callLater" is a QJSValue property.*'
    r"|Cannot assign binding of type QSizeF to QSize"
)


def is_mistaken(warning: dict, lines: list[str]) -> bool:
    if MISTAKEN.fullmatch(warning["message"]):
        return True
    if warning["message"].startswith("Unqualified access"):
        # An id of the same file is in reach of its inline components; only 6.5 can be told so.
        column = warning["column"] - 1
        name = re.match(r"\w+", lines[warning["line"] - 1][column:])
        return bool(name) and any(re.search(rf"\bid:\s*{name[0]}\b", line) for line in lines)
    return False


def main() -> int:
    root, build = Path(sys.argv[1]), Path(sys.argv[2])
    files = sorted(map(str, (root / "Sources").rglob("*.qml")))
    command = [QMLLINT, "--json", "-", "--deferred-property-id", "disable", "-I", str(build / "qml"), *files]
    answer = json.loads(subprocess.run(command, capture_output=True, text=True).stdout)
    found = 0
    for file in answer["files"]:
        lines = Path(file["filename"]).read_text().splitlines()
        for warning in file["warnings"]:
            if warning["type"] != "info" and not is_mistaken(warning, lines):
                found += 1
                print(f"{file['filename']}:{warning.get('line', 1)}: {warning['message']}")
    print(f"{len(answer['files'])} screens, {found} findings")
    return 1 if found or not answer["files"] else 0


if __name__ == "__main__":
    sys.exit(main())
