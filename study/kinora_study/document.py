"""JSON with comments, as scenarios are written, and findings about it."""

from __future__ import annotations

import difflib
import json
import re
from collections.abc import Iterable
from pathlib import Path
from typing import Any

from .errors import InputError

# A text as a whole, so that what looks like a comment inside one stays; or a comment.
_TEXT_OR_COMMENT = re.compile(r'"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.DOTALL)


def _blanked(match: re.Match[str]) -> str:
    found = match.group()
    return found if found.startswith('"') else re.sub(r"[^\n]", " ", found)


def _once(pairs: list[tuple[str, Any]]) -> dict[str, Any]:
    members = dict(pairs)
    if len(members) < len(pairs):
        keys = [key for key, _ in pairs]
        twice = next(key for key in keys if keys.count(key) > 1)
        raise ValueError(f'the key "{twice}" stands twice; remove one.')
    return members


def read_json(file: Path) -> Any:
    """The content of a JSON file; comments are allowed. Raises InputError."""
    try:
        text = file.read_text(encoding="utf-8-sig")
    except (OSError, UnicodeDecodeError) as error:
        raise InputError(f"{file}: cannot be read ({error}).") from None
    try:
        return json.loads(_TEXT_OR_COMMENT.sub(_blanked, text), object_pairs_hook=_once)
    except json.JSONDecodeError as error:
        raise InputError(f"{file}:{error.lineno}: not valid JSON: {error.msg}.") from None
    except (ValueError, RecursionError) as error:
        raise InputError(f"{file}: {error}") from None


def suggestion(name: str, candidates: Iterable[str]) -> str:
    """' Did you mean "..."?' with the nearest name, or nothing."""
    near = difflib.get_close_matches(name, list(candidates), n=1)
    return f' Did you mean "{near[0]}"?' if near else ""


class Findings:
    """What is wrong with a file, so that all of it can be said at once."""

    def __init__(self, file: Path) -> None:
        self._file = file
        self._lines: list[str] = []

    def add(self, pointer: str, text: str) -> None:
        """Notes what is wrong with the value at a JSON pointer."""
        self._lines.append(f"{self._file}: {pointer or '/'}: {text}")

    def require_keys(self, pointer: str, members: dict[str, Any], allowed: Iterable[str]) -> None:
        """Notes every key that is none of these."""
        known = list(allowed)
        for key in members:
            if key not in known:
                self.add(f"{pointer}/{key}", f'the key "{key}" is unknown here.{suggestion(key, known)}')

    def throw(self) -> None:
        """Raises InputError when anything has been noted."""
        if self._lines:
            raise InputError("\n".join(self._lines))
