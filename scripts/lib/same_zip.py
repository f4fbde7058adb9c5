#!/usr/bin/env python3
"""Packs a ZIP anew, so that equal files give equal bytes whoever packed them, where and when.

usage: same_zip.py ZIP SECONDS

Without it a ZIP tells the time zone and the user of the machine, and has its files in the order of the machine's file system.
SECONDS, since 1970, becomes the time of every file. What was there is replaced once the new one is whole.
"""

from __future__ import annotations

import sys
import time
import zipfile
from pathlib import Path


def pack_anew(file: Path, seconds: int) -> None:
    when = time.gmtime(max(seconds, 315532800))  # a ZIP knows no time before 1980
    fresh = file.with_name(f"{file.name}.new")
    with zipfile.ZipFile(file) as old, zipfile.ZipFile(fresh, "w", zipfile.ZIP_DEFLATED) as new:
        for entry in sorted(old.infolist(), key=lambda one: one.filename):
            same = zipfile.ZipInfo(entry.filename, when[:6])
            same.create_system = 3  # whose permissions follow
            runs = entry.is_dir() or entry.external_attr >> 16 & 0o100
            same.external_attr = ((0o040000 if entry.is_dir() else 0o100000) | (0o755 if runs else 0o644)) << 16
            same.compress_type = zipfile.ZIP_STORED if entry.is_dir() else zipfile.ZIP_DEFLATED
            new.writestr(same, old.read(entry))
    fresh.replace(file)


def main(arguments: list[str]) -> int:
    if len(arguments) != 2 or not arguments[1].isdigit():
        print(__doc__, file=sys.stderr)
        return 2
    try:
        pack_anew(Path(arguments[0]), int(arguments[1]))
    except (OSError, zipfile.BadZipFile) as error:
        print(f"error: {arguments[0]} cannot be packed anew: {error}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
