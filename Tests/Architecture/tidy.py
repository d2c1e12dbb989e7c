# SPDX-License-Identifier: MIT
"""Runs clang-tidy over what changed since it last passed: tidy.py ROOT BUILD [FILE-PATTERN]

A translation unit is checked again when its command, its headers of this tree, or the settings changed.
"""

import concurrent.futures
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys
from pathlib import Path

TIDY = "clang-tidy-19"
CHECKED = ("Sources", "HomeServer")


def sha(*parts: bytes) -> str:
    total = hashlib.sha256()
    for part in parts:
        total.update(hashlib.sha256(part).digest())
    return total.hexdigest()


def headers_by_object(root: Path, build: Path) -> dict[str, list[Path]]:
    """What the compiler read for each object, as far as it lies in this tree."""
    listing = subprocess.run(["ninja", "-C", build, "-t", "deps"], capture_output=True, text=True, check=True).stdout
    objects: dict[str, list[Path]] = {}
    current: list[Path] = []
    for line in listing.splitlines():
        if line.startswith("    "):
            path = (build / line.strip()).resolve()
            if path.is_relative_to(root):
                current.append(path)
        elif ":" in line:
            current = objects.setdefault(line.split(":")[0], [])
    return objects


def command_for_clang(entry: dict[str, str]) -> list[str]:
    words = shlex.split(entry["command"])
    first = next(i for i, word in enumerate(words) if re.search(r"(g|clang)\+\+|c\+\+", Path(word).name))
    # What GCC makes an error is GCC's to report, and what it precompiled nobody else can read.
    dropped = {"-Werror", "-Wno-tsan", "-Winvalid-pch"}
    for place, word in enumerate(words):
        if word.endswith("cmake_pch.hxx"):
            dropped |= {word, words[place - 1]}
    return ["clang++", *(word for word in words[first + 1 :] if word not in dropped)]


def main() -> int:
    root, build = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    pattern = re.compile(sys.argv[3] if len(sys.argv) > 3 else ".")
    stamps = build / "tidy"
    stamps.mkdir(exist_ok=True)
    settings = (root / ".clang-tidy").read_bytes()
    version = subprocess.run([TIDY, "--version"], capture_output=True, check=True).stdout
    headers = headers_by_object(root, build)
    digests: dict[Path, bytes] = {}

    def digest(path: Path) -> bytes:
        if path not in digests:
            digests[path] = sha(path.read_bytes()).encode() if path.exists() else b""
        return digests[path]

    database, due = [], []
    for entry in json.loads((build / "compile_commands.json").read_text()):
        path = Path(entry["file"])
        if not any(path.is_relative_to(root / folder) for folder in CHECKED) or not pattern.search(str(path)):
            continue
        command = command_for_clang(entry)
        database.append({"directory": entry["directory"], "file": entry["file"], "arguments": command})
        read = sorted(set(headers.get(entry.get("output", ""), [])) | {path})
        key = sha(settings, version, shlex.join(command).encode(), *(digest(one) for one in read))
        if not (stamps / key).exists():
            due.append((path, key))
    (stamps / "compile_commands.json").write_text(json.dumps(database))

    told: set[str] = set()

    def check(item: tuple[Path, str]) -> bool:
        path, key = item
        done = subprocess.run([TIDY, "--quiet", "-p", stamps, path], capture_output=True, text=True)
        if done.returncode == 0:
            (stamps / key).touch()
        else:
            # A finding in a header comes with each file that includes it.
            text = done.stdout.strip() or done.stderr
            if text not in told:
                told.add(text)
                print(text, flush=True)
        return done.returncode == 0

    with concurrent.futures.ThreadPoolExecutor(int(os.environ.get("ORVANETALK_TIDY_JOBS", "2"))) as pool:
        passed = list(pool.map(check, due))
    print(f"{len(database)} files, {len(due)} checked, {passed.count(False)} with findings")
    return 0 if database and all(passed) else 1


if __name__ == "__main__":
    sys.exit(main())
