#!/usr/bin/env python3
"""Runs clang-tidy over the project's own sources and remembers what was clean.

usage: tidy.py STAMPS DATABASE...

DATABASE is a folder with compile_commands.json; a source that stands in several is checked with the first one's
flags. STAMPS is a folder that keeps an empty file for each source that was found clean, named by a hash of everything
that its verdict depends on: its text, the project's headers that it includes, its flags, the list of checks and the
version of clang-tidy. Prints the findings; exit status 1 when there are any.
"""
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import subprocess
import sys

INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
ROOT = pathlib.Path(__file__).resolve().parents[2]


def own_sources():
    """The project's C++ sources, new ones included, except the tests'."""
    listing = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "*.cpp"], cwd=ROOT,
                             check=True, capture_output=True, text=True)
    return {str(ROOT / line) for line in listing.stdout.splitlines() if not line.startswith("tests/")}


def commands(databases):
    """The first compile command of each own source, with its database."""
    sources, found = own_sources(), {}
    for database in databases:
        for entry in json.loads((pathlib.Path(database) / "compile_commands.json").read_text()):
            if entry["file"] in sources:
                found.setdefault(entry["file"], (database, entry["command"]))
    return found


def add_text(path, search, digest, seen):
    """Adds a file and, in turn, the files that it includes by quotes."""
    path = path.resolve()
    if path in seen or not path.is_file():
        return
    seen.add(path)
    text = path.read_bytes()
    digest.update(text)
    for name in INCLUDE.findall(text):
        for folder in [path.parent, *search]:
            add_text(folder / os.fsdecode(name), search, digest, seen)


def key(source, command, version):
    digest = hashlib.sha256(version + command.encode())
    for folder in pathlib.Path(source).parents:
        settings = folder / ".clang-tidy"
        if settings.is_file():
            digest.update(settings.read_bytes())
    search = [pathlib.Path(folder) for folder in re.findall(r"-I(\S+)", command)]
    add_text(pathlib.Path(source), search, digest, set())
    return digest.hexdigest()


def check(source, database, stamp):
    """The findings of one source, as text."""
    run = subprocess.run(["clang-tidy", "--quiet", "-p", database, source], cwd=ROOT, capture_output=True, text=True)
    if run.returncode == 0:
        stamp.touch()
        return ""
    return (run.stdout or run.stderr).replace(f"{ROOT}/", "")


def main(arguments):
    if len(arguments) < 2:
        sys.exit(__doc__)
    stamps = pathlib.Path(arguments[0])
    stamps.mkdir(parents=True, exist_ok=True)
    version = subprocess.run(["clang-tidy", "--version"], check=True, capture_output=True).stdout
    pending = []
    found = commands(arguments[1:])
    for source, (database, command) in found.items():
        stamp = stamps / key(source, command, version)
        if not stamp.exists():
            pending.append((source, database, stamp))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = 0
        for text in pool.map(lambda task: check(*task), pending):
            print(text, end="", flush=True)
            findings += text != ""
    print(f"clang-tidy: {len(found)} sources, {len(found) - len(pending)} of them unchanged, {findings} with findings")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
