"""The coupling itself."""

from __future__ import annotations

import ctypes
import enum
import os
import threading
import weakref
from collections.abc import Callable, Iterable, Mapping, Sequence
from types import TracebackType
from typing import Union

from . import _native
from ._errors import BadArgument, BadText, Code, CouplingError, IncompleteLoads, SolverFailed, error_for
from ._records import Body, Load, Material, Pose, Vector

Path = Union[str, "os.PathLike[str]"]

# What the desktop may be asked about after a failure, for it is there and answers.
_DESKTOP_ANSWERS = (Code.FAILED, Code.INCOMPLETE, Code.SOLVER)


class Severity(enum.IntEnum):
    """How grave a message of the desktop is."""

    INFORMATION = 0
    WARNING = 1
    ERROR = 2
    FATAL = 3


class Coupling:
    """A connection to a desktop and its magnetostatic solver.

    The calls in their order: :meth:`launch` where it is not to be the usual desktop, :meth:`create_project` or
    :meth:`open_project`, :meth:`init_magnetic_objects`, :meth:`analyze` or :meth:`run`, :meth:`save_project`,
    :meth:`close_project`, :meth:`quit` or :meth:`release`, :meth:`close`; as a context manager the last is done at the
    end, which saves nothing and leaves the desktop running.

    Calls may come from any thread; those of one coupling wait for each other, other Python threads go on meanwhile.
    Every call raises a :class:`CouplingError` when it fails, and ``BadArgument`` after :meth:`close`.
    """

    def __init__(self, *, busy_wait: float | None = 60.0, library: Path | None = None) -> None:
        """
        :param busy_wait: how long a call is repeated that a busy desktop turns away, in seconds; None: for ever
        :param library: path of the library; without it the one that is found
        :raises LibraryNotFound: without a library that can be used
        :raises ValueError: for a time that is negative, or longer than 49 days
        """
        options = _native.Options(ctypes.sizeof(_native.Options), _milliseconds(busy_wait), 0)
        self._library = _native.load(library)
        self._lock = threading.Lock()
        handle = ctypes.c_void_p()
        status = self._library.call("kv_new", _native.API_VERSION, ctypes.byref(options), ctypes.byref(handle))
        if status != Code.OK:
            raise error_for(status, self._library.text("kv_error_text", None) or "")
        self._handle = handle
        self._process = os.getpid()
        # Of a coupling that nobody closed, when it is forgotten or the interpreter ends.
        self._delete = weakref.finalize(self, _delete, self._library, handle, self._process)

    def __enter__(self) -> Coupling:
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        self.close()

    @property
    def closed(self) -> bool:
        """Whether :meth:`close` was called."""
        return not self._delete.alive

    def close(self) -> None:
        """Lets go of the desktop as :meth:`release` does, and ends the coupling, after the call that is under way."""
        with self._lock:
            self._delete()

    def launch(self, version: str | None = None) -> None:
        """Starts the desktop, or finds the one that runs.

        :param version: which one, for example "Simulator"; an empty text is the plain desktop, None what the
            environment variable KINORA_VELTRIX_VTDK_VERSION says
        :raises DesktopNotInstalled:
        :raises DesktopNotStarted:
        """
        self._call("kv_launch", None if version is None else _bytes(version))

    def create_project(self, project: Path, geometry: Path, units: str) -> None:
        """Makes a project, starting the desktop if need be, saves it and imports the geometry.

        :param project: path of the project, where no file may be
        :param units: length unit of the model, for example "mm"
        :raises NoSuchFile: when there is no such geometry file; the new project stays open
        """
        self._call("kv_create_project", _bytes(project), _bytes(geometry), _bytes(units))

    def open_project(self, project: Path, design: str = "") -> None:
        """Opens a project, starting the desktop if need be, and activates a design if one is named.

        :raises NoSuchFile: when there is no such project
        """
        self._call("kv_open_project", _bytes(project), _bytes(design))

    def designs(self, project: Path) -> list[str]:
        """Opens a project as :meth:`open_project` does, and tells its designs' names in ascending order."""
        return self._texts("kv_get_designs", _bytes(project))

    def init_geometry(self, geometry: Path, units: str) -> None:
        """Adds geometry to an opened project that has none yet.

        :raises NoSuchFile: when there is no such geometry file
        """
        self._call("kv_init_geometry", _bytes(geometry), _bytes(units))

    def init_magnetic_objects(self, bodies: Sequence[Body], materials: Mapping[str, Material]) -> None:
        """Builds the field model. Once per design, after the geometry and before :meth:`analyze`.

        :param bodies: with their poses as drawn
        :param materials: by the names of their objects
        """
        groups = (_native.Group * len(bodies))(*map(_group, bodies))
        wanted = (_native.Material * len(materials))(*(_material(*item) for item in materials.items()))
        self._call("kv_init_magnetic_objects", groups, len(groups), wanted, len(wanted))

    def analyze(self, time: float, poses: Sequence[Pose]) -> list[Load]:
        """One step: moves the bodies, solves, records the step.

        :param time: in seconds; exactly 0.0 starts a new run
        :param poses: of all bodies, the same bodies in the same order at every step of a run
        :return: the loads, in the order of the poses
        :raises SolverFailed: has the solver's status
        :raises IncompleteLoads: has the loads that there are
        """
        places = (_native.Pose * len(poses))(*map(_pose, poses))
        loads = (_native.Load * len(poses))()
        for load in loads:
            load.size = ctypes.sizeof(load)
        count, solver_status = ctypes.c_size_t(), ctypes.c_int32()
        try:
            self._call(
                "kv_analyze", time, places, len(places), loads, ctypes.byref(count), ctypes.byref(solver_status)
            )
        except SolverFailed as error:
            error.solver_status = solver_status.value
            raise
        except IncompleteLoads as error:
            error.loads = _loads(loads, count.value)
            raise
        return _loads(loads, count.value)

    def run(
        self,
        times: Iterable[float],
        poses_at: Callable[[float], Sequence[Pose]],
        progress: Callable[[int, int, float], None] | None = None,
    ) -> list[list[Load]]:
        """One :meth:`analyze` per time.

        :param times: the first is 0.0
        :param poses_at: gives the poses at a time
        :param progress: called after each step with how many are done, how many there are, and the time; what it raises
            ends the run
        :return: the loads, step by step
        """
        steps = list(times)
        history = []
        for done, time in enumerate(steps, 1):
            history.append(self.analyze(time, poses_at(time)))
            if progress is not None:
                progress(done, len(steps), time)
        return history

    def messages(self, severity: Severity = Severity.INFORMATION) -> list[str]:
        """The desktop's messages for the open project and its active design, of this severity and graver ones."""
        return self._texts("kv_get_messages", int(severity))

    def save_project(self) -> None:
        """Saves the open project."""
        self._call("kv_save_project")

    def close_project(self) -> None:
        """Closes the open project without saving it."""
        self._call("kv_close_project")

    def quit(self) -> None:
        """Saves and closes the open project, if any, and ends the desktop."""
        self._call("kv_quit")

    def release(self) -> None:
        """Lets go of project and desktop, which keeps running; nothing is saved or closed."""
        self._call("kv_release")

    def _call(self, function: str, *arguments: object) -> None:
        # Under the lock, so that the error's text is that of this call.
        with self._lock:
            if self.closed:
                raise BadArgument(f"{function}: this coupling is closed; make another one")
            if os.getpid() != self._process:
                raise BadArgument(f"{function}: this coupling is of process {self._process}; make one in this process")
            status = self._library.call(function, self._handle, *arguments)
            if status != Code.OK:
                raise self._error(status)

    def _error(self, status: int) -> CouplingError:
        text = self._library.text("kv_error_text", self._handle) or self._library.text("kv_code_text", status) or ""
        messages: list[str] = []
        if status in _DESKTOP_ANSWERS:
            texts = ctypes.c_void_p()
            if self._library.call("kv_get_messages", self._handle, Severity.WARNING, ctypes.byref(texts)) == Code.OK:
                messages = self._library.take_texts(texts)
        return error_for(status, text, messages)

    def _texts(self, function: str, argument: object) -> list[str]:
        texts = ctypes.c_void_p()
        self._call(function, argument, ctypes.byref(texts))
        return self._library.take_texts(texts)


def version(library: Path | None = None) -> str:
    """The library's version, for example "0.1.0"."""
    return _native.load(library).version


def build(library: Path | None = None) -> str:
    """How the library was built: version, system, compiler."""
    return _native.load(library).text("kv_build") or ""


def script_error_text(code: int, library: Path | None = None) -> str:
    """The text of a script error code of the desktop, such as "0x0202: Bad argument value".

    :raises ValueError: for a code that the desktop does not have
    """
    text = _native.load(library).text("kv_script_error_text", code)
    if text is None:
        raise ValueError(f"the desktop has no script error code {code}")
    return text


def _delete(library: _native.Library, handle: ctypes.c_void_p, process: int) -> None:
    # A forked process has a copy of the handle, and nothing of the thread that would answer it.
    if os.getpid() == process:
        library.call("kv_delete", handle)


def _milliseconds(seconds: float | None) -> int:
    if seconds is None:
        return _native.WAIT_FOREVER
    if not 0 <= 1000 * seconds < _native.WAIT_FOREVER:
        raise ValueError(f"busy_wait is {seconds} seconds; give 0 or more, or None to wait for ever")
    return int(1000 * seconds)


def _bytes(text: Path) -> bytes:
    """A text for the library, which refuses what is no UTF-8: file names of other bytes, lone surrogates."""
    data = os.fspath(text).encode("utf-8", "surrogatepass")
    if b"\0" in data:
        raise BadText(f"{os.fspath(text)!r} has a zero character, which no text may have")
    return data


def _group(body: Body) -> _native.Group:
    names = (ctypes.c_char_p * len(body.objects))(*map(_bytes, body.objects))
    rotation = sum(body.rotation, ())
    return _native.Group(
        ctypes.sizeof(_native.Group), _bytes(body.name), body.position, rotation, names, len(names)
    )


def _material(name: str, material: Material) -> _native.Material:
    return _native.Material(
        ctypes.sizeof(_native.Material), _bytes(name), _bytes(material.name), material.coercivity_direction
    )


def _pose(pose: Pose) -> _native.Pose:
    rotation = sum(pose.rotation, ())
    return _native.Pose(ctypes.sizeof(_native.Pose), _bytes(pose.body), pose.position, rotation)


def _loads(loads: ctypes.Array[_native.Load], count: int) -> list[Load]:
    return [Load(_vector(load.force), _vector(load.torque)) for load in loads[:count]]


def _vector(numbers: Sequence[float]) -> Vector:
    x, y, z = numbers
    return x, y, z
