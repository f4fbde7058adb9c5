#!/usr/bin/env python3
"""Runs clang-tidy over the project's own sources, but for tests and benchmarks, and remembers what was clean.

Most of clang-tidy's time goes into the headers of others, which it looks through again for every source. So the sources of
a folder that are compiled alike are first looked at together, written into one file behind each other (the analyzer follows
the paths of a main file only, not of what it includes); when anything is found there, or they cannot stand together, each is
looked at by itself, and only that counts.

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
import shlex
import subprocess
import sys

INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
TOGETHER = 20
ROOT = pathlib.Path(__file__).resolve().parents[2]


def own_sources(*patterns, all_rooms=False):
    """The project's sources of some names, new ones included: those that users run, or all."""
    listing = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", *patterns], cwd=ROOT,
                             check=True, capture_output=True, text=True)
    return {str(ROOT / line) for line in listing.stdout.splitlines() if all_rooms or not line.startswith(("tests/", "bench/"))}


def commands(databases):
    """The first compile command of each own source, with its database."""
    sources, found = own_sources("*.cpp"), {}
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


def settings(source):
    """The files with the settings for a source, the nearest first."""
    return [folder / ".clang-tidy" for folder in pathlib.Path(source).parents if (folder / ".clang-tidy").is_file()]


def key(source, command, version):
    digest = hashlib.sha256(version + command.encode())
    for file in settings(source):
        digest.update(file.read_bytes())
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


def flags(source, command):
    """A source's flags without what names the source itself, its output, and the compiler."""
    words = shlex.split(command)
    kept, skip = [], False
    for word in words[next(i for i, word in enumerate(words) if "clang" in word or "g++" in word or "c++" in word) + 1:]:
        if skip or word in ("-o", "-MF", "-MT", "-c", "-MD", source):
            skip = word in ("-o", "-MF", "-MT")
            continue
        kept.append(word)
    return tuple(kept)


def groups(pending):
    """The pending sources in lists that may be looked at together."""
    together = {}
    for task in pending:
        source, _, command, _ = task
        together.setdefault((pathlib.Path(source).parent, flags(source, command)), []).append(task)
    for tasks in together.values():
        for first in range(0, len(tasks), TOGETHER):
            yield tasks[first:first + TOGETHER]


def check_group(tasks, folder):
    """The findings of sources, as text."""
    if len(tasks) > 1:
        sources = [pathlib.Path(source) for source, _, _, _ in tasks]
        text = "\n".join(source.read_text() for source in sources)
        unit = folder / (hashlib.sha256(text.encode()).hexdigest() + ".cpp")
        unit.write_text(text)
        run = subprocess.run(["clang-tidy", "--quiet", f"--config-file={settings(sources[0])[0]}", str(unit), "--",
                              *flags(tasks[0][0], tasks[0][2])], cwd=ROOT, capture_output=True, text=True)
        unit.unlink()
        if run.returncode == 0:
            for _, _, _, stamp in tasks:
                stamp.touch()
            return ""
    return "".join(check(source, database, stamp) for source, database, _, stamp in tasks)


def report(name, count, pending, look):
    """Has pending groups of sources looked at, on all processors, and prints the findings; the exit status.

    `look` gives the findings of a group, as text; `count` is the number of all sources.
    """
    pending = list(pending)
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = 0
        for text in pool.map(look, pending):
            print(text, end="", flush=True)
            findings += text != ""
    print(f"{name}: {count} sources, {count - sum(map(len, pending))} of them unchanged, "
          f"{'findings' if findings else 'no findings'}")
    return 1 if findings else 0


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
            pending.append((source, database, command, stamp))
    return report("clang-tidy", len(found), groups(pending), lambda tasks: check_group(tasks, stamps))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
