"""Files that are there whole or not at all."""

from __future__ import annotations

import contextlib
import json
import os
from collections.abc import Iterator
from pathlib import Path
from typing import IO, Any

from .errors import StudyError


@contextlib.contextmanager
def replacing(file: Path, is_precious: bool = True) -> Iterator[IO[str]]:
    """A file to write to; it takes the place of the wanted one when all of it is written. Raises StudyError.

    is_precious: not before it is on the disk, so that it outlives a power cut; that takes some milliseconds.
    """
    with replaced_by_path(file) as temporary, temporary.open("w", encoding="utf-8", newline="") as stream:
        yield stream
        stream.flush()
        if is_precious:
            os.fsync(stream.fileno())


@contextlib.contextmanager
def replaced_by_path(file: Path) -> Iterator[Path]:
    """Where to write a file that then takes the place of the wanted one.

    Raises StudyError when it cannot be written: the wanted one is as it was, and nothing lies beside it.
    """
    temporary = file.with_name(file.name + ".new")
    try:
        try:
            yield temporary
            temporary.replace(file)
        except BaseException:
            with contextlib.suppress(OSError):
                temporary.unlink()
            raise
    except OSError as error:
        raise StudyError(f"{file}: cannot be written ({error.strerror}); what was there is as it was.") from None


def write_json(file: Path, value: Any, is_precious: bool = True) -> None:
    """Replaces a file by a value as JSON. Raises StudyError."""
    with replacing(file, is_precious) as stream:
        json.dump(value, stream, indent=1, ensure_ascii=False)
        stream.write("\n")


def make_folder(folder: Path) -> None:
    """Makes a folder and those above it. Raises StudyError."""
    try:
        folder.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise StudyError(f"{folder}: the folder cannot be made ({error.strerror}).") from None
