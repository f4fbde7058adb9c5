"""What a call of the library came to, as exceptions."""

from __future__ import annotations

import enum
from collections.abc import Sequence
from typing import TYPE_CHECKING

if TYPE_CHECKING:
    from ._records import Load


class Code(enum.IntEnum):
    """The codes of the C interface. A later library may have further ones."""

    OK = 0
    FAILED = 1
    INCOMPLETE = 2
    SOLVER = 3
    NOT_INSTALLED = 4
    NOT_STARTED = 5
    NO_SUCH_FILE = 6
    BAD_ARGUMENT = 7
    BAD_TEXT = 8
    BUSY = 9
    NO_MEMORY = 10
    INTERNAL = 11


class CouplingError(RuntimeError):
    """A call of the library failed. One of the classes below, but for a code that this package does not know."""

    #: A code of :class:`Code`, or a later one.
    code: int = Code.FAILED
    #: Operation, cause and cure, in several lines; also the exception's text.
    text: str
    #: The desktop's warnings and errors for the open project, where the desktop had refused something.
    messages: tuple[str, ...]

    def __init__(self, text: str, code: int | None = None, messages: Sequence[str] = ()) -> None:
        super().__init__(text)
        self.text = text
        self.messages = tuple(messages)
        if code is not None:
            self.code = code


class OperationFailed(CouplingError):
    """The desktop refused something, does not answer any more, or the calls came in the wrong order."""

    code = Code.FAILED


class IncompleteLoads(CouplingError):
    """The step was solved, but there are fewer loads than bodies."""

    code = Code.INCOMPLETE
    #: The loads that there are, in the order of the poses.
    loads: Sequence[Load] = ()


class SolverFailed(CouplingError):
    """The solver failed at a step."""

    code = Code.SOLVER
    #: The solver's error code; :func:`kinora_veltrix.script_error_text` tells what it means.
    solver_status: int = 0


class DesktopNotInstalled(CouplingError):
    """No desktop of this version is installed."""

    code = Code.NOT_INSTALLED


class DesktopNotStarted(CouplingError):
    """The desktop is installed and does not start (a licence, its configuration)."""

    code = Code.NOT_STARTED


class NoSuchFile(CouplingError, FileNotFoundError):
    """A file or folder that was named is not there."""

    code = Code.NO_SUCH_FILE


class BadArgument(CouplingError, ValueError):
    """An argument breaks a rule of its function, or the coupling is closed. Nothing was done."""

    code = Code.BAD_ARGUMENT


class BadText(CouplingError, ValueError):
    """A text has characters that the system's code page lacks, or none at all (a lone surrogate). Nothing was done."""

    code = Code.BAD_TEXT


class DesktopBusy(CouplingError):
    """The desktop turned calls away for longer than ``busy_wait``: a dialog is open, or it is at work."""

    code = Code.BUSY


class OutOfMemory(CouplingError, MemoryError):
    """Out of memory, or of threads."""

    code = Code.NO_MEMORY


class InternalError(CouplingError):
    """An error of the library."""

    code = Code.INTERNAL


_CLASSES: dict[int, type[CouplingError]] = {kind.code: kind for kind in CouplingError.__subclasses__()}


def error_for(code: int, text: str, messages: Sequence[str] = ()) -> CouplingError:
    """The exception of a code; of an unknown one the base class."""
    return _CLASSES.get(code, CouplingError)(text, code, messages)
