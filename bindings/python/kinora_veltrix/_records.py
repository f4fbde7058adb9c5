"""Bodies, materials, poses and loads.

Metres, newtons and newton metres. The rows of a rotation are the body's axes x, y, z seen from the global frame.
Vectors may be given as any three numbers, rotations as three rows or as nine numbers; numpy arrays will do.
"""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from numbers import Real
from typing import TYPE_CHECKING, Any, Union

if TYPE_CHECKING:
    import numpy
    from numpy.typing import NDArray

Vector = tuple[float, float, float]
Matrix = tuple[Vector, Vector, Vector]
Numbers = Iterable[float]
Rotation = Union[Iterable[float], Iterable[Iterable[float]]]

IDENTITY: Matrix = ((1.0, 0.0, 0.0), (0.0, 1.0, 0.0), (0.0, 0.0, 1.0))


@dataclass(frozen=True, init=False)
class Pose:
    """Where a body is at a time, and how it is turned."""

    body: str
    position: Vector
    rotation: Matrix

    def __init__(self, body: str, position: Numbers = (0.0, 0.0, 0.0), rotation: Rotation = IDENTITY) -> None:
        """
        :param position: the body's origin in the global frame
        :param rotation: the rows are the body's axes seen from the global frame
        :raises ValueError: for another number of numbers, and what is no number
        """
        _set(self, body=body, **_placed("pose", body, position, rotation))


@dataclass(frozen=True, init=False)
class Body:
    """A rigid body, the modeler's objects that move with it, and its pose as they are drawn in the geometry file."""

    name: str
    objects: tuple[str, ...]
    position: Vector
    rotation: Matrix

    def __init__(
        self,
        name: str,
        objects: Iterable[str],
        position: Numbers = (0.0, 0.0, 0.0),
        rotation: Rotation = IDENTITY,
    ) -> None:
        """
        :param name: a letter followed by letters, digits and underscores
        :param objects: names of the objects; no object belongs to two bodies
        :param position: the body's origin as drawn
        :param rotation: the body's axes as drawn; the identity where these are to be the global ones
        :raises ValueError: as :class:`Pose`, and for objects that are one text instead of a list
        """
        if isinstance(objects, str):
            raise ValueError(f'objects of body "{name}" is the text "{objects}"; give a list of names')
        _set(self, name=name, objects=tuple(objects), **_placed("body", name, position, rotation))


@dataclass(frozen=True, init=False)
class Material:
    """The material wanted for an object."""

    name: str
    coercivity_direction: Vector

    def __init__(self, name: str, coercivity_direction: Numbers = (0.0, 0.0, 0.0)) -> None:
        """
        :param name: of a material that the desktop knows
        :param coercivity_direction: wanted components of its coercivity, in the axes of the object's body; of no
            meaning for materials without coercivity
        :raises ValueError: as :class:`Pose`
        """
        direction = _vector(f'coercivity_direction of material "{name}"', coercivity_direction)
        _set(self, name=name, coercivity_direction=direction)


@dataclass(frozen=True)
class Load:
    """Force in newtons, and torque in newton metres about the body's origin, both in the body's axes."""

    force: Vector
    torque: Vector

    def __array__(self, dtype: Any = None, copy: Any = None) -> NDArray[numpy.float64]:
        """Two rows, force and torque."""
        import numpy

        if copy is False:
            raise ValueError("a load becomes an array only by copying")
        return numpy.array((self.force, self.torque), dtype=dtype)


def loads_as_arrays(
    loads: Sequence[Load] | Sequence[Sequence[Load]],
) -> tuple[NDArray[numpy.float64], NDArray[numpy.float64]]:
    """The forces and the torques as two numpy arrays: body by component, of what ``Coupling.analyze`` gave; step by
    body by component, of what ``Coupling.run`` gave.

    :raises ImportError: without numpy
    """
    import numpy

    plain = [_plain(item) if isinstance(item, Load) else [_plain(load) for load in item] for item in loads]
    values = numpy.array(plain, dtype=numpy.float64)
    if values.size == 0:
        values = values.reshape((*values.shape, 2, 3))
    return values[..., 0, :], values[..., 1, :]


def _plain(load: Load) -> tuple[Vector, Vector]:
    return load.force, load.torque


def _set(record: object, **fields: Any) -> None:
    """Gives a frozen record its fields."""
    for name, value in fields.items():
        object.__setattr__(record, name, value)


def _placed(kind: str, name: str, position: Numbers, rotation: Rotation) -> Any:
    return {
        "position": _vector(f'position of {kind} "{name}"', position),
        "rotation": _matrix(f'rotation of {kind} "{name}"', rotation),
    }


def _number(what: str, value: Any) -> float:
    if not isinstance(value, Real):  # neither a text nor a row
        raise ValueError(f"{what} has {value!r} where a number belongs")
    return float(value)


def _items(what: str, values: Any) -> list[Any]:
    try:
        return list(values)
    except TypeError:
        raise ValueError(f"{what} is {values!r}; it takes several numbers") from None


def _vector(what: str, values: Any) -> Vector:
    numbers = [_number(what, value) for value in _items(what, values)]
    if len(numbers) != 3:
        raise ValueError(f"{what} has {len(numbers)} numbers, and takes 3")
    return numbers[0], numbers[1], numbers[2]


def _matrix(what: str, values: Any) -> Matrix:
    rows = _items(what, values)
    if len(rows) == 9:
        rows = [rows[0:3], rows[3:6], rows[6:9]]
    if len(rows) != 3:
        raise ValueError(f"{what} has {len(rows)} items, and takes 3 rows of 3 numbers, or 9 numbers")
    return (
        _vector(f"row 1 of {what}", rows[0]),
        _vector(f"row 2 of {what}", rows[1]),
        _vector(f"row 3 of {what}", rows[2]),
    )
