"""What ends the program with a message."""

from __future__ import annotations


class InputError(Exception):
    """What the user gave cannot be used: exit status 2. One line for each finding."""


class StudyError(Exception):
    """The study could not be done: exit status 1."""
