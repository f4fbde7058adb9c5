#!/usr/bin/env python3
"""Writes measured text into a page of the docs, between a marker <!-- NAME --> and the next <!-- end -->.

Usage: page.py PAGE.md NAME <TEXT
"""
import pathlib
import re
import sys


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
