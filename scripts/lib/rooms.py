#!/usr/bin/env python3
"""Holds the includes to the table of rooms in docs/architecture.md.

The table's first column names a room by its folder, its last one the folders that the room's sources may include from, its own
always among them; "everything" allows all. Files of the library's, the programs' and the tests' rooms that include from anywhere
else are printed, and rooms that include one another in a circle; exit status 1 when there are any.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = "docs/architecture.md"
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+/[^"]+)"', re.MULTILINE)


def table():
    """Room to the rooms that it may use; None for everything."""
    rooms = {}
    for line in (ROOT / PAGE).read_text(encoding="utf-8").splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        folders = re.findall(r"`([a-z/]+/)`", cells[0])
        if line.startswith("|") and len(cells) == 3:
            allowed = None if "everything" in cells[2] else re.findall(r"`([a-z/]+/)`", cells[2])
            rooms.update({folder: allowed for folder in folders})
    return rooms


def room_of(path, rooms):
    """The innermost room that holds a file; empty when none does."""
    return max((room for room in rooms if path.startswith(room)), key=len, default="")


def sources():
    listing = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "*.cpp", "*.h"], cwd=ROOT,
                             check=True, capture_output=True, text=True)
    return [line for line in listing.stdout.splitlines() if (ROOT / line).is_file()]


def circle(uses, start):
    """The way from a room back to it, over others; nothing when there is none."""
    ways = [[start]]
    seen = set()
    while ways:
        way = ways.pop()
        for room in sorted(uses.get(way[-1], ())):
            if room == start:
                return way + [room]
            if room not in seen:
                seen.add(room)
                ways.append(way + [room])
    return []


def main():
    rooms, uses, findings = table(), {}, []
    if not rooms:
        sys.exit(f"{PAGE}: the table of rooms is gone")
    for path in sources():
        room = room_of(path, rooms)
        if not room:
            findings.append(f"{path}: stands in no room of {PAGE}")
            continue
        for name in INCLUDE.findall((ROOT / path).read_text(encoding="utf-8")):
            other = room_of(name, rooms)
            if not other or other == room:
                continue
            uses.setdefault(room, set()).add(other)
            if rooms[room] is not None and not any(name.startswith(folder) for folder in rooms[room]):
                findings.append(f'{path}: includes "{name}", which {PAGE} does not allow {room}')
    for room in rooms:
        way = circle({one: others for one, others in uses.items() if rooms[one] is not None}, room)
        if way and room == min(way):
            findings.append("rooms that include one another in a circle: " + " -> ".join(way))
    print("\n".join(findings), end="\n" if findings else "")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
