#!/usr/bin/env python3
"""Writes a version into the files that name it, and gives the changelog's "Unreleased" its name.

usage: release.py VERSION DATE [ROOT]

VERSION is X.Y.Z or, of a candidate, X.Y.Z-rcN, and higher than the one that is there. Everything is checked before anything is
written: exit status 2 and a line that says what, where and what to do.
"""

from __future__ import annotations

import re
import sys
from pathlib import Path

FORM = re.compile(r"(\d+)\.(\d+)\.(\d+)(?:-rc(\d+))?")
PROJECT = re.compile(r"^(project\(\w+ VERSION )([\d.]+)", re.MULTILINE)
SUFFIX = re.compile(r'^(set\(KINORA_VERSION_SUFFIX ")([^"]*)(")', re.MULTILINE)
UNRELEASED = "## [Unreleased]\n"
# Further files that name the version, and how.
NAMED = {
    "study/kinora_study/__init__.py": r'(VERSION = ")[^"]+',
    "packaging/vcpkg/kinora-veltrix-coupling/vcpkg.json": r'("version-semver": ")[^"]+',
    "packaging/winget/KinoraVeltrixCoupling.KinoraVeltrixCoupling.yaml": r"(PackageVersion: )\S+",
    "packaging/winget/KinoraVeltrixCoupling.KinoraVeltrixCoupling.installer.yaml":
        r"(PackageVersion: |KinoraVeltrixCoupling-)\d[^\s]*?(?=-windows|$)",
    "packaging/winget/KinoraVeltrixCoupling.KinoraVeltrixCoupling.locale.en-GB.yaml": r"(PackageVersion: )\S+",
}


class Refusal(Exception):
    """What is wrong, where, and what to do."""


def rank(version: str) -> tuple[int, int, int, float]:
    """What orders versions: a candidate comes before its release."""
    found = FORM.fullmatch(version)
    if not found:
        raise Refusal(f'"{version}" is no version: X.Y.Z, or X.Y.Z-rcN for a candidate.')
    major, minor, patch, candidate = found.groups()
    return int(major), int(minor), int(patch), float(candidate) if candidate else float("inf")


def with_version(text: str, version: str) -> str:
    """The root CMakeLists.txt with another version."""
    numbers, suffix = PROJECT.search(text), SUFFIX.search(text)
    if not numbers or not suffix:
        raise Refusal("CMakeLists.txt names no version: project(... VERSION X.Y.Z) and KINORA_VERSION_SUFFIX.")
    present = numbers[2] + suffix[2]
    if rank(version) <= rank(present):
        raise Refusal(f"CMakeLists.txt has {present} already: choose a version that is higher than that.")
    plain, dash, candidate = version.partition("-")
    return SUFFIX.sub(rf"\g<1>{dash}{candidate}\g<3>", PROJECT.sub(rf"\g<1>{plain}", text))


def with_section(text: str, version: str, date: str) -> str:
    """The changelog, in which what was unreleased is the version's, and a new section stands open."""
    begin = text.find(UNRELEASED)
    if begin < 0:
        raise Refusal(f'CHANGELOG.md has no section "{UNRELEASED.strip()}": add it, with what is new.')
    after = begin + len(UNRELEASED)
    following = re.compile(r"^## ", re.MULTILINE).search(text, after)
    if not re.search(r"^- ", text[after:following.start() if following else len(text)], re.MULTILINE):
        raise Refusal('CHANGELOG.md says nothing under "Unreleased": write down what is new.')
    return f"{text[:after]}\n## [{version}] - {date}\n{text[after:]}"


def changes(root: Path, version: str, date: str) -> dict[Path, str]:
    """The new texts of all files."""
    rank(version)
    texts = {root / "CMakeLists.txt": with_version((root / "CMakeLists.txt").read_text("utf-8"), version),
             root / "CHANGELOG.md": with_section((root / "CHANGELOG.md").read_text("utf-8"), version, date)}
    for name, pattern in NAMED.items():
        text, count = re.subn(pattern, rf"\g<1>{version}", (root / name).read_text("utf-8"), flags=re.MULTILINE)
        if not count:
            raise Refusal(f"{name} names no version.")
        texts[root / name] = text
    return texts


def main(arguments: list[str]) -> int:
    if len(arguments) not in (2, 3):
        print(__doc__, file=sys.stderr)
        return 2
    root = Path(arguments[2]) if len(arguments) == 3 else Path(__file__).resolve().parents[2]
    try:
        for file, text in changes(root, arguments[0], arguments[1]).items():
            file.write_text(text, "utf-8")
    except Refusal as refusal:
        print(f"error: {refusal}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
