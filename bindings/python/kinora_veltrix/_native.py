"""The library as ctypes sees it: what capi/kinora_veltrix.h declares, and where the library is found."""

from __future__ import annotations

import ctypes
import functools
import os
import sys
from ctypes import POINTER, c_char_p, c_double, c_int32, c_size_t, c_uint32, c_void_p
from pathlib import Path
from typing import Any

API_VERSION = 1
WAIT_FOREVER = 0xFFFFFFFF

LIBRARY_NAME = "kinora_veltrix.dll" if sys.platform == "win32" else "libkinora_veltrix.so"
LIBRARY_VARIABLE = "KINORA_VELTRIX_LIBRARY"
TREE_BUILDS = ("msvc", "mingw") if sys.platform == "win32" else ("native-release",)


class LibraryNotFound(OSError):
    """There is no library where it was looked for, or what is there cannot be used."""


class Options(ctypes.Structure):
    _fields_ = [("size", c_size_t), ("busy_wait_ms", c_uint32), ("reserved", c_uint32)]


class Group(ctypes.Structure):
    _fields_ = [
        ("size", c_size_t),
        ("body", c_char_p),
        ("position", c_double * 3),
        ("rotation", c_double * 9),
        ("objects", POINTER(c_char_p)),
        ("object_count", c_size_t),
    ]


class Material(ctypes.Structure):
    _fields_ = [
        ("size", c_size_t),
        ("object", c_char_p),
        ("material", c_char_p),
        ("coercivity_direction", c_double * 3),
    ]


class Pose(ctypes.Structure):
    _fields_ = [("size", c_size_t), ("body", c_char_p), ("position", c_double * 3), ("rotation", c_double * 9)]


class Load(ctypes.Structure):
    _fields_ = [("size", c_size_t), ("force", c_double * 3), ("torque", c_double * 3)]


RECORDS = {"kv_options": Options, "kv_group": Group, "kv_material": Material, "kv_pose": Pose, "kv_load": Load}

# Every function returns a kv_status. Handles and lists of texts are nothing but addresses here.
FUNCTIONS: dict[str, list[Any]] = {
    "kv_version": [POINTER(c_int32), POINTER(c_char_p)],
    "kv_build": [POINTER(c_char_p)],
    "kv_new": [c_int32, POINTER(Options), POINTER(c_void_p)],
    "kv_delete": [c_void_p],
    "kv_launch": [c_void_p, c_char_p],
    "kv_create_project": [c_void_p, c_char_p, c_char_p, c_char_p],
    "kv_open_project": [c_void_p, c_char_p, c_char_p],
    "kv_get_designs": [c_void_p, c_char_p, POINTER(c_void_p)],
    "kv_init_geometry": [c_void_p, c_char_p, c_char_p],
    "kv_init_magnetic_objects": [c_void_p, POINTER(Group), c_size_t, POINTER(Material), c_size_t],
    "kv_analyze": [c_void_p, c_double, POINTER(Pose), c_size_t, POINTER(Load), POINTER(c_size_t), POINTER(c_int32)],
    "kv_get_messages": [c_void_p, c_int32, POINTER(c_void_p)],
    "kv_save_project": [c_void_p],
    "kv_close_project": [c_void_p],
    "kv_quit": [c_void_p],
    "kv_release": [c_void_p],
    "kv_texts_count": [c_void_p, POINTER(c_size_t)],
    "kv_texts_at": [c_void_p, c_size_t, POINTER(c_char_p)],
    "kv_texts_free": [c_void_p],
    "kv_error_text": [c_void_p, POINTER(c_char_p)],
    "kv_code_text": [c_int32, POINTER(c_char_p)],
    "kv_script_error_text": [c_int32, POINTER(c_char_p)],
}


class Library:
    """A loaded library.

    :raises LibraryNotFound: when it cannot be loaded, lacks a function, or knows an older interface only
    """

    def __init__(self, path: str) -> None:
        self.path = path
        try:
            self._library = ctypes.CDLL(path)
            for name, arguments in FUNCTIONS.items():
                function = getattr(self._library, name)
                function.argtypes = arguments
                function.restype = c_int32
        except (OSError, AttributeError) as error:
            raise LibraryNotFound(f'"{path}" is no library that this package can use: {error}') from error
        api, version = c_int32(), c_char_p()
        self.call("kv_version", ctypes.byref(api), ctypes.byref(version))
        self.version = _decoded(version)
        if api.value < API_VERSION:
            raise LibraryNotFound(
                f'"{path}", version {self.version}, knows the interface up to {api.value} only; '
                f"this package needs {API_VERSION}: use a library as new as the package"
            )

    def call(self, function: str, *arguments: Any) -> int:
        """Calls a function, other Python threads running meanwhile.

        :return: its status
        """
        return int(getattr(self._library, function)(*arguments))

    def text(self, function: str, *arguments: Any) -> str | None:
        """What a function gives through its last argument, a text; None when it fails."""
        text = c_char_p()
        return _decoded(text) if self.call(function, *arguments, ctypes.byref(text)) == 0 else None

    def take_texts(self, texts: c_void_p) -> list[str]:
        """The texts of a list, which is freed."""
        try:
            count = c_size_t()
            self.call("kv_texts_count", texts, ctypes.byref(count))
            return [self.text("kv_texts_at", texts, index) or "" for index in range(count.value)]
        finally:
            self.call("kv_texts_free", texts)


def _decoded(text: c_char_p) -> str:
    return (text.value or b"").decode("utf-8", "replace")


def load(path: str | os.PathLike[str] | None = None) -> Library:
    """The library at a path, or the one that is found; each is loaded once.

    :raises LibraryNotFound:
    """
    return _load(os.path.abspath(find() if path is None else path))


@functools.lru_cache(maxsize=None)
def _load(path: str) -> Library:
    return Library(path)


def find() -> Path:
    """The library that KINORA_VELTRIX_LIBRARY names; without it the one inside this package, or of the source tree in
    which this package lies.

    :raises LibraryNotFound: says where it was looked for
    """
    package = Path(__file__).resolve().parent
    named = os.environ.get(LIBRARY_VARIABLE)
    if named:
        places = [Path(named)]
    else:
        places = [package / "_library" / LIBRARY_NAME]
        tree = package.parents[2]
        if (tree / "capi" / "kinora_veltrix.h").is_file():
            places += [tree / "build" / build / "bin" / LIBRARY_NAME for build in TREE_BUILDS]
    for place in places:
        if place.is_file():
            return place
    looked = ", ".join(f'"{place}"' for place in places)
    origin = f"that {LIBRARY_VARIABLE} names" if named else "of the coupling"
    raise LibraryNotFound(
        f"the library {origin} is not there; looked for {looked}. "
        "Install a wheel, which has it inside, build the target kinora_veltrix, "
        f"or let {LIBRARY_VARIABLE} name the file"
    )
