#!/usr/bin/env python3
"""Runs clang-tidy over the project's own sources, but for tests and benchmarks, and remembers what was clean.

Most of clang-tidy's time goes into the headers of others, which it looks through again for every source. So sources that
are compiled alike are first looked at together, written into one file behind each other (the analyzer follows the paths of a
main file only, not of what it includes); when anything is found there, or they cannot stand together, each half is looked at
by itself, down to single sources, and only that counts. For the same reason templates are looked into where they are used only.

usage: tidy.py STAMPS DATABASE...

DATABASE is a folder with compile_commands.json; a source that stands in several is checked with the first one's
flags. STAMPS is a folder that keeps an empty file for each source that was found clean, named by a hash of everything
that its verdict depends on: its text, the project's headers that it includes, its flags, the list of checks, this program and
the version of clang-tidy. Prints the findings; exit status 1 when there are any.
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
OUTSIDE = ("tests", "bench")
TOGETHER = 30
ROOT = pathlib.Path(__file__).resolve().parents[2]


def own_sources(*patterns, all_rooms=False):
    """The project's sources of some names, new ones included: those that users run, or all."""
    listing = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", *patterns], cwd=ROOT,
                             check=True, capture_output=True, text=True)
    return {str(ROOT / line) for line in listing.stdout.splitlines() if all_rooms or line.split("/")[0] not in OUTSIDE}


def commands(databases):
    """The first compile command of each own source."""
    sources, found = own_sources("*.cpp"), {}
    for database in databases:
        for entry in json.loads((pathlib.Path(database) / "compile_commands.json").read_text()):
            if entry["file"] in sources:
                found.setdefault(entry["file"], entry["command"])
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


def checks(words):
    """What is asked of sources with some flags, beyond their settings. CLI11's own functions take most arguments by value, and
    finding out which of them need not takes longer than everything that is ours."""
    return ["--checks=-performance-unnecessary-value-param"] if any(word.endswith("/cli11") for word in words) else []


def look(file, words, config=()):
    """Has one file looked at as with some flags: whether it is clean, and what is said."""
    run = subprocess.run(["clang-tidy", "--quiet", *config, *checks(words), str(file), "--", *words, "-fdelayed-template-parsing"],
                         cwd=ROOT, capture_output=True, text=True)
    return run.returncode == 0, (run.stdout or run.stderr).replace(f"{ROOT}/", "")


def check(source, words, stamp):
    """The findings of one source, as text."""
    clean, findings = look(source, words)
    if clean:
        stamp.touch()
    return "" if clean else findings


def flags(source, command):
    """How a source is read: its flags without the compiler, what names the source itself and its output, what is compiled
    ahead, and how much is optimised."""
    words = shlex.split(command)
    kept, skip = [], False
    for word in words[next(i for i, word in enumerate(words) if "clang" in word or "g++" in word or "c++" in word) + 1:]:
        with_value = word in ("-o", "-MF", "-MT", "-Xclang")
        if not (skip or with_value or word in ("-c", "-MD", "-Winvalid-pch", source) or word.startswith("-O")):
            kept.append(word)
        skip = with_value and not skip
    return tuple(kept)


class Group:
    """Tasks, which begin with a source and its flags, that may be looked at together; with the flags of all."""

    def __init__(self):
        self.tasks, self.pairs = [], []

    def takes(self, words):
        macros = macros_of(self.flags())
        return all(macros.get(name, value) == value for name, value in macros_of(words).items())

    def add(self, task):
        """Search folders and macros of one do not trouble the others."""
        self.tasks.append(task)
        self.pairs += [pair for pair in pairs(task[1]) if pair not in self.pairs]

    def flags(self):
        return tuple(word for pair in self.pairs for word in pair)


def pairs(words):
    """Flags as tuples: one with its value, or one alone."""
    words = iter(words)
    for word in words:
        yield (word, next(words)) if word == "-isystem" else (word,)


def macros_of(words):
    return dict(word[2:].partition("=")[::2] for word in words if word.startswith("-D"))


def grouped(tasks, together):
    """Pending tasks in groups, of no more than so many: sources of one room or of the tests of one, of which the same is asked,
    whose flags are the same but for search folders and for macros that do not contradict. A source in C stands by itself."""
    open_groups, groups = {}, []
    for task in tasks:
        source, words = pathlib.Path(task[0]), task[1]
        folders = source.relative_to(ROOT).parts[:-1]
        key = (folders[:2 if folders[0] in OUTSIDE else 1], settings(source)[0], *checks(words), source if source.suffix == ".c" else None,
               tuple(pair for pair in pairs(words) if not pair[0].startswith(("-I", "-isystem", "-D"))))
        group = open_groups.get(key)
        if group is None or len(group.tasks) == together or not group.takes(words):
            group = open_groups[key] = Group()
            groups.append(group)
        group.add(task)
    return groups


def check_together(tasks, words, folder):
    """The findings of sources, as text."""
    if len(tasks) == 1:
        return check(*tasks[0])
    sources = [pathlib.Path(source) for source, _, _ in tasks]
    text = "\n".join(source.read_text() for source in sources)
    unit = folder / (hashlib.sha256(text.encode()).hexdigest() + ".cpp")
    unit.write_text(text)
    clean, _ = look(unit, words, [f"--config-file={settings(sources[0])[0]}"])
    unit.unlink()
    if not clean:
        middle = len(tasks) // 2
        return check_together(tasks[:middle], words, folder) + check_together(tasks[middle:], words, folder)
    for _, _, stamp in tasks:
        stamp.touch()
    return ""


def report(name, count, pending, look):
    """Has pending groups of sources looked at, on all processors, and prints the findings; the exit status.

    `look` gives the findings of a group, as text; `count` is the number of all sources.
    """
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = 0
        # The largest first, so that none of them is the last, alone.
        for text in pool.map(look, sorted(pending, key=lambda group: -len(group.tasks))):
            print(text, end="", flush=True)
            findings += text != ""
    print(f"{name}: {count} sources, {count - sum(len(group.tasks) for group in pending)} of them unchanged, "
          f"{'findings' if findings else 'no findings'}")
    return 1 if findings else 0


def main(arguments):
    if len(arguments) < 2:
        sys.exit(__doc__)
    stamps = pathlib.Path(arguments[0])
    stamps.mkdir(parents=True, exist_ok=True)
    version = subprocess.run(["clang-tidy", "--version"], check=True, capture_output=True).stdout + pathlib.Path(__file__).read_bytes()
    pending = []
    found = commands(arguments[1:])
    for source, command in found.items():
        stamp = stamps / key(source, command, version)
        if not stamp.exists():
            pending.append((source, flags(source, command), stamp))
    return report("clang-tidy", len(found), grouped(pending, TOGETHER),
                  lambda group: check_together(group.tasks, group.flags(), stamps))


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
