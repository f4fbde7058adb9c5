"""Couples a multibody host with the "Veltrix 3D" magnetostatic solver of the QUORIX Vantor Desktop.

    from kinora_veltrix import Body, Coupling, Material, Pose

    with Coupling() as coupling:
        coupling.create_project("pull.vtdk", "cube-magnets.obj", "mm")
        ...

docs/python.md has a whole session. Metres, newtons, newton metres; the rows of a rotation are the body's axes seen from
the global frame, loads are components in these axes.
"""

from ._coupling import Coupling, Severity, build, script_error_text, version
from ._errors import (
    BadArgument,
    BadText,
    Code,
    CouplingError,
    DesktopBusy,
    DesktopNotInstalled,
    DesktopNotStarted,
    IncompleteLoads,
    InternalError,
    NoSuchFile,
    OperationFailed,
    OutOfMemory,
    SolverFailed,
)
from ._native import LibraryNotFound
from ._records import Body, Load, Material, Pose, loads_as_arrays

__all__ = [
    "BadArgument",
    "BadText",
    "Body",
    "Code",
    "Coupling",
    "CouplingError",
    "DesktopBusy",
    "DesktopNotInstalled",
    "DesktopNotStarted",
    "IncompleteLoads",
    "InternalError",
    "LibraryNotFound",
    "Load",
    "Material",
    "NoSuchFile",
    "OperationFailed",
    "OutOfMemory",
    "Pose",
    "Severity",
    "SolverFailed",
    "build",
    "loads_as_arrays",
    "script_error_text",
    "version",
]
