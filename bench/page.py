#!/usr/bin/env python3
"""Writes measured text into a page of the docs, between a marker <!-- NAME --> and the next <!-- end -->.

Usage: page.py PAGE.md NAME <TEXT
"""
import pathlib
import re
import subprocess
import sys


def table(head, rows):
    """Markdown."""
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(str(cell) for cell in line) + " |" for line in lines)


def gnuplot(script, target):
    """Draws by the script, in the pages' size and fonts."""
    head = f"set terminal svg size 720,420 font 'sans,13' background 'white'\nset output '{target}'\n"
    subprocess.run(["gnuplot"], input=head + script, text=True, check=True)


def processor():
    """Of this machine, by its name."""
    return re.search(r"^model name\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.M)[1]


def fill(page, figures):
    """Puts figures (marker: text) into the page (a path); ends the program when a marker is missing."""
    text = page.read_text()
    for name, figure in figures.items():
        text, found = re.subn(rf"(<!-- {name} -->\n).*?(<!-- end -->)", lambda match: match[1] + figure + "\n" + match[2],
                              text, flags=re.S)
        if found != 1:
            sys.exit(f"{page}: the markers of '{name}' are missing")
    page.write_text(text)


if __name__ == "__main__":
    fill(pathlib.Path(sys.argv[1]), {sys.argv[2]: sys.stdin.read().strip()})
