"""Two cube magnets as a model, and the loads on them by formulas that have nothing to do with the library."""

import itertools
from pathlib import Path

import magnets
from kinora_veltrix import Body, Coupling, Material, Pose

ROOT = Path(__file__).resolve().parents[2]
GEOMETRY = ROOT / "examples" / "cube-magnets" / "cube-magnets.obj"
HALF = [0.005] * 3
OBJECTS = ("lower_magnet", "upper_magnet")
BODIES = [Body("lower", ["lower_magnet"]), Body("upper", ["upper_magnet"], (0, 0, 0.012))]
MATERIALS = {name: Material("magnet_1T", (0, 0, 1)) for name in OBJECTS}


def start(coupling: Coupling, folder: Path) -> Coupling:
    """Makes the model of examples/cube-magnets in a new project."""
    coupling.launch("Simulator")
    coupling.create_project(folder / "pair.vtdk", GEOMETRY, "mm")
    coupling.init_magnetic_objects(BODIES, MATERIALS)
    return coupling


def poses(distance: float) -> list[Pose]:
    return [Pose("lower"), Pose("upper", (0, 0, distance))]


def closed_form(distance: float) -> float:
    """Force along z on the upper one, 1 T each."""
    return magnets.cuboid_force(HALF, HALF, [0.0, 0.0, distance], 1.0, 1.0)[2]


def rows_of(axis, angle):
    """The axes of a body that is turned about an axis, as rows."""
    return [list(column) for column in zip(*magnets.rotation(axis, angle))]


def placed(rows, position, point):
    """A point of a body in global coordinates."""
    return [position[i] + sum(rows[k][i] * point[k] for k in range(3)) for i in range(3)]


def write_cubes(path: Path, cubes) -> None:
    """An OBJ file in millimetres of 10 mm cubes: (name, position, rows of axes)."""
    faces = "1 5 7 3|2 4 8 6|1 2 6 5|3 7 8 4|1 3 4 2|5 6 8 7".split("|")
    lines = []
    for number, (name, position, rows) in enumerate(cubes):
        lines.append(f"o {name}")
        for z, y, x in itertools.product((-0.005, 0.005), repeat=3):
            lines.append("v " + " ".join(f"{1000 * value:.17g}" for value in placed(rows, position, (x, y, z))))
        lines += ["f " + " ".join(str(8 * number + int(corner)) for corner in face.split()) for face in faces]
    path.write_text("\n".join(lines) + "\n")


def loads_on(target, source):
    """Force and torque on a cube, in its axes about its centre, by Coulomb's law in the global frame; both are
    (position, rows of axes, direction x, y or z of magnetisation), 1 T each."""
    (position, rows, axis), (other_position, other_rows, other_axis) = target, source
    origin = [0.0] * 3
    charges = magnets.block_charges(origin, HALF, axis, 1.0, 12, lambda p: placed(rows, position, p))
    others = magnets.block_charges(origin, HALF, other_axis, 1.0, 12, lambda p: placed(other_rows, other_position, p))
    return [magnets.turned(rows, load) for load in magnets.charge_load(others, charges, position)]
